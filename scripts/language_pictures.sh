#!/usr/bin/env bash
# Takes pictures of everything that the library shows, in each of its languages, into build/language-pictures: the
# upgrade center and the two message boxes of the update check. Languages can be named: language_pictures.sh DE US
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/session.sh

readonly bin=build/mingw/bin pictures=$PWD/build/language-pictures
targets=(ProductServicesGuard ProductServicesTool language_files)
# The ids of the public header; US is what every other id selects.
declare -A ids=([US]=0)
while read -r code id; do
  ids[$code]=$id
done < <(sed -nE 's/^ *PRODUCT_SERVICES_LANGUAGE_(\w+) = ([0-9]+).*/\1 \2/p' include/product_services/product_services.h)

# The tool's checks show no message box.
build_check() {
  x86_64-w64-mingw32-gcc-posix -Iinclude -o "$bin/check_for_updates.exe" scripts/lib/check_for_updates.c \
    "$bin/ProductServicesGuard.dll"
}

run_program() { (cd "$bin" && wine_run "$@") >build/language-pictures.log 2>&1; }

# take_picture NAME CODE KEY PROGRAM ARGUMENT...: of the program's window, which the key closes.
take_picture() {
  launch run_program "${@:4}"
  local program=$launched
  keep_picture '^Example Draft' "$pictures/$1-$2.png"
  xdotool key "$3"
  await "$program" || fail "A program failed; see build/language-pictures.log."
}

take_message_picture() { take_picture "$1" "$2" Return ./check_for_updates.exe "${ids[$2]}"; }

take_center_picture() {
  take_picture upgrade-center "$1" Escape ./ProductServicesTool.exe upgrade --product "Example Draft" --version 2026.1 \
    --api-key draft20-7k2m9q-x4v8p1w --language "${ids[$1]}"
}

codes=("$@")
[ $# -gt 0 ] || mapfile -t codes < <(printf '%s\n' "${!ids[@]}" | sort)
for code in "${codes[@]}"; do
  [ -n "${ids[$code]:-}" ] || fail "No host can ask for $code; these are the languages: ${!ids[*]}."
done

begin_session
require_free_port
build_project build/mingw
attend build_check
start_windows
attend register_products
mkdir -p "$pictures"
say "Taking pictures of ${codes[*]} (five seconds each)"
for code in "${codes[@]}"; do take_message_picture no-internet "$code"; done
start_service build/service.log
for code in "${codes[@]}"; do
  take_message_picture latest-version "$code"
  take_center_picture "$code"
done
rm "$bin/check_for_updates.exe"
say "The pictures are in build/language-pictures."
