#!/usr/bin/env bash
# Builds the sample host's installer: samples/installer/build.sh [--all-users] [OUTPUT.msi [BIN_DIR [RELEASE]]]
# OUTPUT.msi defaults to build/example-draft.msi, or build/example-draft-all-users.msi. BIN_DIR is the folder with the build
# output, with the language files in lang (default: build/mingw/bin). RELEASE is the product version in the record
# (default: 2026.1, which the sample host uses).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=${here%/samples/installer}
. "$root/scripts/lib/log.sh"

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

# The highest version of Windows Installer is 255.255, so release 2026.1 is package version 26.1.0.
[[ $release =~ ^20[0-9]{2}\.(0|[1-9][0-9]{0,2})$ && ${release#*.} -le 255 ]] \
  || fail "Invalid release \"$release\": it must be a year and a number up to 255, such as 2026.1."
command -v wixl >/dev/null || fail "wixl not found. Install Debian's package wixl."
for file in "$bin_dir"/{SampleHost.exe,ProductServicesGuard.dll,lang/DE/Vemo_DE.lang}; do
  [ -f "$file" ] || fail "$file not found. Build the project first, or pass the folder with the build output."
done
[ -f "$license_dir/curl.txt" ] || fail "$license_dir/curl.txt not found. Run setup.sh first."
[ ! -d "$output" ] || fail "$output is a folder. Pass the path of a file."

folder=$(dirname -- "$output")
mkdir -p -- "$folder" 2>/dev/null || fail "The folder $folder could not be created."
work=$(mktemp -d -p "$folder" .installer.XXXXXX 2>/dev/null) || fail "The folder $folder is not writable."
trap 'rm -rf -- "$work"' EXIT

# wixl accepts only relative paths and parses them as XML, so it gets symbolic links with simple names.
ln -s "$(realpath -- "$bin_dir")" "$work/bin"
ln -s "$root" "$work/root"
messages=$(cd "$work" && wixl -a x64 -o new.msi -D "Scope=$scope" -D "Release=$release" \
  -D "PackageVersion=${release#20}.0" -D BinDir=bin -D LangDir=bin/lang \
  -D LicenseDir=root/build/deps/licenses -D License=root/LICENSE root/samples/installer/sample_host.wxs 2>&1) \
  || fail "The installer could not be built: ${messages##*$'\n'}"
# wixl also exits with status 0 if it skipped something with a warning, or could not write.
[ -z "$messages" ] || fail "wixl reported problems: ${messages##*$'\n'}"
[ -s "$work/new.msi" ] || fail "The installer could not be written in $folder."
mv -fT -- "$work/new.msi" "$output" 2>/dev/null || fail "$output could not be replaced."
