#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The Debian package as a user gets it: its files, dependencies, validators'
# verdicts, and man pages and completion against the packaged tarnwell-cli.
# Usage: package.sh BUILD_DIR SOURCE_DIR   (run through tests/support/isolated.sh)
set -euo pipefail
build=$(cd "$1" && pwd)
source_dir=$2

command -v dpkg-deb > /dev/null || { echo "FAIL: dpkg-deb is missing, so no Debian package can be built"; exit 1; }

work=$(mktemp -d "${TARNWELL_TEST_ROOT:-${TMPDIR:-/tmp}}/package.XXXXXX")
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
reported=0
ok() {
  [ "$failures" -eq "$reported" ] && echo "ok: $*"
  reported=$failures
}

cpack --config "$build/CPackConfig.cmake" -B "$work/out" > "$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log"; echo "FAIL: cpack did not build the package"; exit 1; }
deb=$(echo "$work"/out/tarnwell_*.deb)
[ -f "$deb" ] || { cat "$work/cpack.log"; echo "FAIL: no tarnwell_*.deb"; exit 1; }

dpkg-deb --contents "$deb" | awk '{ print $6 }' | sed 's|^\./|/|' | grep -v '/$' | sort > "$work/files"
root="$work/root"
dpkg-deb --extract "$deb" "$root"
expected=(
  /usr/bin/tarnwell /usr/bin/tarnwell-cli /usr/lib/tarnwell/tarnwell-cli-library.so
  /usr/lib/tarnwell/tarnwell-cli-media.so
  /usr/share/applications/org.tarnwell.tarnwell.desktop
  /usr/share/metainfo/org.tarnwell.tarnwell.metainfo.xml
  /usr/share/icons/hicolor/scalable/apps/org.tarnwell.tarnwell.svg
  /usr/share/icons/hicolor/symbolic/apps/org.tarnwell.tarnwell-symbolic.svg
  /usr/share/man/man1/tarnwell.1.gz /usr/share/man/man1/tarnwell-cli.1.gz
  /usr/share/bash-completion/completions/tarnwell-cli
  /usr/share/zsh/vendor-completions/_tarnwell-cli
  /usr/share/doc/tarnwell/copyright /usr/share/doc/tarnwell/changelog.gz
)
sizes=(16 22 24 32 48 64 128 256 512)
for size in "${sizes[@]}"; do expected+=("/usr/share/icons/hicolor/${size}x${size}/apps/org.tarnwell.tarnwell.png"); done
missing=$(comm -23 <(printf '%s\n' "${expected[@]}" | sort) "$work/files")
extra=$(comm -13 <(printf '%s\n' "${expected[@]}" | sort) "$work/files")
[ -z "$missing" ] || fail "missing from the package: $missing"
[ -z "$extra" ] || fail "not meant to be in the package: $extra"
ok "the package holds exactly its ${#expected[@]} files"

# Only the two programs and the command line's modules run.
programs=$(find "$root" -type f \( -perm -u+x -o -name '*.so*' \) -printf '/%P\n' | sort | tr '\n' ' ')
[ "$programs" = "/usr/bin/tarnwell /usr/bin/tarnwell-cli /usr/lib/tarnwell/tarnwell-cli-library.so /usr/lib/tarnwell/tarnwell-cli-media.so " ] || fail "programs in the package: $programs"
if readelf --sections "$root/usr/bin/tarnwell" | grep -q '\.debug_info'; then fail "the programs carry debug information"; fi
[ "$("$root/usr/bin/tarnwell" --version)" = "tarnwell $(dpkg-deb --field "$deb" Version)" ] ||
  fail "the packaged tarnwell says $("$root/usr/bin/tarnwell" --version)"

# Dependencies: the libraries linked (dpkg-shlibdeps) and those loaded by name.
depends=$(dpkg-deb --field "$deb" Depends)
for package in libqt6core6 libqt6quick6 libgstreamer1.0-0 libtag1v5 libavformat59 \
  qml6-module-qtquick-controls qml6-module-qtquick-dialogs \
  gstreamer1.0-plugins-good gstreamer1.0-libav fonts-inter fonts-materialdesignicons-webfont; do
  [[ ", $depends," == *", $package"[\ ,]* ]] || fail "Depends lacks $package: $depends"
done
ok "Depends names the libraries, QML modules, GStreamer plugins and fonts"

desktop-file-validate "$root/usr/share/applications/org.tarnwell.tarnwell.desktop" > "$work/desktop.log" 2>&1 ||
  fail "desktop-file-validate: $(cat "$work/desktop.log")"
[ -s "$work/desktop.log" ] && fail "desktop-file-validate: $(cat "$work/desktop.log")"
appstreamcli validate --pedantic --no-net "$root/usr/share/metainfo/org.tarnwell.tarnwell.metainfo.xml" \
  > "$work/metainfo.log" 2>&1 || fail "appstreamcli validate: $(cat "$work/metainfo.log")"
grep -q '^[EWIP]:' "$work/metainfo.log" && fail "appstreamcli validate --pedantic: $(cat "$work/metainfo.log")"
appstreamcli validate-tree --pedantic --no-net "$root/usr" > "$work/tree.log" 2>&1 ||
  fail "appstreamcli validate-tree: $(cat "$work/tree.log")"
ok "desktop-file-validate and appstreamcli validate --pedantic pass"

version=$(dpkg-deb --field "$deb" Version)
release=$(grep -o '<release version="[^"]*"' "$root/usr/share/metainfo/org.tarnwell.tarnwell.metainfo.xml" |
  head -1 | cut -d'"' -f2)
[ "$release" = "$version" ] || fail "the metainfo's newest release is $release, the package's $version"
# Man pages and completion name every command and option the program knows.
for page in tarnwell tarnwell-cli; do
  LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l "$root/usr/share/man/man1/$page.1.gz" \
    > "$work/$page.txt" 2> "$work/$page.warnings" || fail "man $page does not render"
  [ -s "$work/$page.warnings" ] && fail "man $page: $(cat "$work/$page.warnings")"
done
cli="$root/usr/bin/tarnwell-cli"
"$cli" > /dev/null 2> "$work/usage" || true
mapfile -t commands < <(awk '/^  [a-z]/ { print $1 }' "$work/usage")
[ "${#commands[@]}" -ge 7 ] || fail "tarnwell-cli names only ${commands[*]}"
completion="$root/usr/share/bash-completion/completions/tarnwell-cli"
zsh_completion="$root/usr/share/zsh/vendor-completions/_tarnwell-cli"
complete_words() { # the words bash offers after: tarnwell-cli WORD...
  bash -c 'source "$1"; shift; COMP_WORDS=(tarnwell-cli "$@"); COMP_CWORD=$#; _tarnwell_cli; echo "${COMPREPLY[*]}"' \
    - "$completion" "$@"
}
[ "$(complete_words "")" = "${commands[*]}" ] ||
  fail "bash completes the commands as \"$(complete_words "")\", tarnwell-cli has \"${commands[*]}\""
for command in "${commands[@]}"; do
  options=$(grep -E "^  $command " "$work/usage" | grep -oE -- '--[a-z][a-z-]*' | tr '\n' ' ' | sed 's/ $//' || true)
  [ "$(complete_words "$command" --)" = "$options" ] ||
    fail "bash completes $command -- as \"$(complete_words "$command" --)\", not \"$options\""
  grep -qE "^ +$command( |$)" "$work/tarnwell-cli.txt" || fail "man tarnwell-cli lacks the command $command"
  grep -q "'$command:" "$zsh_completion" || fail "zsh does not complete the command $command"
  for option in $options; do
    grep -q -- "$option" "$work/tarnwell-cli.txt" || fail "man tarnwell-cli lacks $command $option"
    grep -q -- "'$option\|\"$option" "$zsh_completion" || fail "zsh does not complete $command $option"
  done
done
zsh -n "$zsh_completion" || fail "the zsh completion does not parse"
ok "man pages and completion agree with tarnwell-cli's ${#commands[@]} commands"

if [ "$failures" -gt 0 ]; then
  echo "--- package files"
  cat "$work/files"
  echo "$failures failed"
  exit 1
fi
echo "PASS"
