# SPDX-License-Identifier: GPL-3.0-or-later
# Two commands do all the set-up on a fresh Debian/Ubuntu machine:
#   make run [MUSIC=DIR]   install what is missing, build, start Tarnwell
#   make test              install what is missing, build, run every test
#   make package           build the Debian package build/tarnwell_<version>_<arch>.deb

BUILD := build
JOBS ?= $(shell nproc)
MUSIC ?=

.PHONY: all deps configure build run test package bench screenshots fuzz format clean

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

package: build
	cd $(BUILD) && cpack
	@ls $(BUILD)/tarnwell_*.deb

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
