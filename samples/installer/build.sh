#!/usr/bin/env bash
# Builds the sample host's installer: samples/installer/build.sh OUTPUT.msi [BIN_DIR [RELEASE]]
# BIN_DIR holds what was built, with the language files in lang (build/mingw/bin); RELEASE is the product version in
# the record (2026.1).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/../../scripts/lib/say.sh"

(($# >= 1 && $# <= 3)) || fail "usage: samples/installer/build.sh OUTPUT.msi [BIN_DIR [RELEASE]]"
output=$1
bin_dir=${2:-$here/../../build/mingw/bin}
release=${3:-2026.1}
lang_dir=$bin_dir/lang

[[ $release =~ ^20[0-9]{2}\.[0-9]+$ ]] || fail "A release is a year and a number, such as 2026.1, not \"$release\"."
command -v wixl >/dev/null || fail "wixl is missing; install Debian's package wixl."
for file in "$bin_dir/SampleHost.exe" "$bin_dir/ProductServices.dll" "$lang_dir/DE/Vemo_DE.lang"; do
  [ -f "$file" ] || fail "There is no $file; build the project first, or name the folder of what was built."
done

# Windows Installer's major versions end at 255: release 2026.1 is package version 26.1.0.
# wixl takes relative paths only, and ends well where it could not write.
relative() { realpath --relative-to=. "$1"; }
rm -f "$output" 2>/dev/null || fail "$output could not be replaced."
messages=$(wixl -a x64 -o "$output" -D "Release=$release" -D "PackageVersion=${release#20}.0" \
  -D "BinDir=$(relative "$bin_dir")" -D "LangDir=$(relative "$lang_dir")" "$here/sample_host.wxs" 2>&1) \
  || fail "The installer could not be built: ${messages##*$'\n'}"
[ -s "$output" ] || fail "$output could not be written."
