#!/usr/bin/env bash
# Takes screenshots of everything that the library shows, in each of its languages, into build/language-screenshots: the
# upgrade center and the two message boxes of the update check. language_screenshots.sh DE US takes only these languages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/session.sh

readonly bin=build/mingw/bin screenshots=$PWD/build/language-screenshots
targets=(ProductServicesGuard ProductServicesTool language_files)
# The ids in the public header. Every other id selects US.
declare -A ids=([US]=0)
while read -r code id; do
  ids[$code]=$id
done < <(sed -nE 's/^ *PRODUCT_SERVICES_LANGUAGE_(\w+) = ([0-9]+).*/\1 \2/p' include/product_services/product_services.h)

# The tool's checks do not show a message box.
build_check() {
  x86_64-w64-mingw32-gcc-posix -Iinclude -o "$bin/check_for_updates.exe" scripts/lib/check_for_updates.c \
    "$bin/ProductServicesGuard.dll"
}

run_program() { (cd "$bin" && wine_run "$@") >build/language-screenshots.log 2>&1; }

# capture NAME CODE KEY PROGRAM ARGUMENT...: runs the program, takes a screenshot of its window, and closes it with the key.
capture() {
  start run_program "${@:4}"
  local program=$started
  take_screenshot '^Example Draft' "$screenshots/$1-$2.png"
  xdotool key "$3"
  wait_for "$program" || fail "A program failed; see build/language-screenshots.log."
}

capture_message() { capture "$1" "$2" Return ./check_for_updates.exe "${ids[$2]}"; }

capture_upgrade_center() {
  capture upgrade-center "$1" Escape ./ProductServicesTool.exe upgrade --product "Example Draft" --version 2026.1 \
    --api-key draft20-7k2m9q-x4v8p1w --language "${ids[$1]}"
}

codes=("$@")
[ $# -gt 0 ] || mapfile -t codes < <(printf '%s\n' "${!ids[@]}" | sort)
for code in "${codes[@]}"; do
  [ -n "${ids[$code]:-}" ] || fail "Unknown language code $code. Known codes: ${!ids[*]}."
done

begin_session
require_free_port
build_project build/mingw
run_and_wait build_check
start_wine_session
run_and_wait register_products
mkdir -p "$screenshots"
log "Taking screenshots of ${codes[*]} (five seconds each)"
for code in "${codes[@]}"; do capture_message no-internet "$code"; done
start_service build/service.log
for code in "${codes[@]}"; do
  capture_message latest-version "$code"
  capture_upgrade_center "$code"
done
rm "$bin/check_for_updates.exe"
log "The screenshots are in build/language-screenshots."
