# SPDX-License-Identifier: GPL-3.0-or-later
# Two commands do all the set-up on a fresh Debian/Ubuntu machine:
#   make run [MUSIC=DIR]   install what is missing, build, start Tarnwell
#   make test              install what is missing, build, run every test

BUILD := build
JOBS ?= $(shell nproc)
MUSIC ?=

.PHONY: all deps configure build run test bench screenshots fuzz format clean

all: build

deps:
	@bash scripts/install-deps.sh

configure: deps
	@if [ ! -f $(BUILD)/build.ninja ]; then cmake --preset default; fi

build: configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	./$(BUILD)/bin/tarnwell $(MUSIC)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

bench: build
	bash bench/run.sh $(BUILD)

screenshots: build
	bash scripts/screenshots.sh $(BUILD)

fuzz: deps
	bash scripts/fuzz.sh $(or $(FUZZ_SECONDS),60)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) build-debug build-fuzz
