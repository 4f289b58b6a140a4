#!/usr/bin/env bash
# Builds the sample host's installer: samples/installer/build.sh [--all-users] [OUTPUT.msi [BIN_DIR [RELEASE]]]
# OUTPUT.msi is build/example-draft.msi, or build/example-draft-all-users.msi, unless it is named. BIN_DIR holds what
# was built, with the language files in lang (default: build/mingw/bin); RELEASE is the product version in the record
# (default: 2026.1, the sample host's own).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=${here%/samples/installer}
. "$root/scripts/lib/say.sh"

scope=perUser
output=$root/build/example-draft.msi
if [ "${1:-}" = --all-users ]; then
  scope=perMachine
  output=$root/build/example-draft-all-users.msi
  shift
fi
[[ $# -le 3 && ${1:-} != -* ]] \
  || fail "usage: samples/installer/build.sh [--all-users] [OUTPUT.msi [BIN_DIR [RELEASE]]]"
output=${1:-$output}
bin_dir=${2:-$root/build/mingw/bin}
release=${3:-2026.1}
license_dir=$root/build/deps/licenses

# Windows Installer's versions end at 255.255: release 2026.1 is package version 26.1.0.
[[ $release =~ ^20[0-9]{2}\.(0|[1-9][0-9]{0,2})$ && ${release#*.} -le 255 ]] \
  || fail "A release is a year and a number up to 255, such as 2026.1, not \"$release\"."
command -v wixl >/dev/null || fail "wixl is missing; install Debian's package wixl."
for file in "$bin_dir"/{SampleHost.exe,ProductServicesGuard.dll,lang/DE/Vemo_DE.lang}; do
  [ -f "$file" ] || fail "There is no $file; build the project first, or name the folder of what was built."
done
[ -f "$license_dir/curl.txt" ] || fail "There is no $license_dir/curl.txt; run setup.sh first."
[ ! -d "$output" ] || fail "$output is a folder; name the file to write."

folder=$(dirname -- "$output")
mkdir -p -- "$folder" 2>/dev/null || fail "The folder $folder could not be made."
work=$(mktemp -d -p "$folder" .installer.XXXXXX 2>/dev/null) || fail "The folder $folder cannot be written to."
trap 'rm -rf -- "$work"' EXIT

# wixl takes relative paths only, and reads & and the like in them as XML: it sees links with plain names.
ln -s "$(realpath -- "$bin_dir")" "$work/bin"
ln -s "$root" "$work/root"
messages=$(cd "$work" && wixl -a x64 -o new.msi -D "Scope=$scope" -D "Release=$release" \
  -D "PackageVersion=${release#20}.0" -D BinDir=bin -D LangDir=bin/lang \
  -D LicenseDir=root/build/deps/licenses -D License=root/LICENSE root/samples/installer/sample_host.wxs 2>&1) \
  || fail "The installer could not be built: ${messages##*$'\n'}"
# wixl also ends with status 0 if it left something out with a warning, or could not write.
[ -z "$messages" ] || fail "The installer could not be built whole: ${messages##*$'\n'}"
[ -s "$work/new.msi" ] || fail "The installer could not be written in $folder."
mv -fT -- "$work/new.msi" "$output" 2>/dev/null || fail "$output could not be replaced."
