#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs every package that building, running and testing Tarnwell need.
# Idempotent: packages already present are skipped, so a second run is quick.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build pkg-config clang libclang-rt-14-dev
  libgtest-dev libbenchmark-dev
  # Qt 6
  qt6-base-dev qt6-declarative-dev qt6-svg-dev libxkbcommon-dev
  qt6-image-formats-plugins  # WebP and TIFF pictures from the web services
  qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
  qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-controls
  qml6-module-qtquick-templates qml6-module-qtquick-layouts qml6-module-qtquick-dialogs
  qml6-module-qtquick-shapes qml6-module-qttest qml6-module-qt-labs-platform
  qml6-module-qt-labs-folderlistmodel
  # playback
  libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev gstreamer1.0-tools
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
  gstreamer1.0-plugins-ugly gstreamer1.0-libav gstreamer1.0-alsa gstreamer1.0-pulseaudio
  libavformat-dev libavcodec-dev libswresample-dev libavutil-dev
  # tags, coroutines
  libtag1-dev qcoro-qt6-dev
  # the desktop's reduced-motion setting (GSettings)
  libglib2.0-dev
  # fonts and icons
  fonts-inter fonts-materialdesignicons-webfont
  # test and screenshot tools
  xvfb xauth xdotool x11-apps imagemagick sox flac ffmpeg python3-mutagen dbus playerctl
  pulseaudio-utils
  # the accessibility test: the accessibility bus and its Python client
  at-spi2-core python3-pyatspi
  # the Debian package: icons drawn from the SVG, man pages, and the validators
  # and tools its test uses
  librsvg2-bin scdoc dpkg-dev appstream desktop-file-utils man-db zsh libglib2.0-bin
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: everything is installed"
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
$SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
