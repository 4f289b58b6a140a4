#!/usr/bin/env bash
# Builds the library and shows it at work under Wine, against the development service on loopback: update checks by the
# command-line tool, then the sample host's window and the upgrade center, on a display of its own, with screenshots in
# build/. With --interactive it opens the sample host on your display instead, until you close it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

readonly bin=build/mingw/bin # where the language files are, too
readonly opened=$PWD/build/opened-addresses.txt log=build/service.log
targets=(ProductServices ProductServicesGuard ProductServicesTool SampleHost language_files)
api_key=$(sed -n '/known_api_keys/{n;s/.*"\(.*\)".*/\1/p}' product_family/sample/product_family.json)
readonly api_key

run_tool() {
  (cd "$bin" && wine_run ./ProductServicesTool.exe "$@" --api-key "$api_key" --trusted-hosts "localhost:$service_port") \
    >build/run.log 2>&1
}

run_host() { (cd "$bin" && wine_run ./SampleHost.exe --check-now) >build/run.log 2>&1; }

print_output() { sed 's/\r$//; s/^/    /' build/run.log; }

# show_check SENTENCE STATUS ARGUMENT...: says what is tried, and prints what the tool prints and its exit status.
show_check() {
  local status=0
  say "$1"
  attend run_tool check "${@:3}" || status=$?
  [ "$status" -eq "$2" ] || fail "The tool ended with status $status: $(cat build/run.log)"
  print_output
  printf '    exit status: %s\n' "$status"
}

# take_picture PATTERN FILE: of the window with such a title.
take_picture() {
  keep_picture "$1" "$2"
  printf '    picture: %s\n' "$2"
}

show_checks() {
  show_check "A product that has a newer release" 0 --product "Example Draft" --version 2026.1
  show_check "The same product if nothing newer exists" 0 --product "Example Draft" --version 2026.2
  show_check "A product without a stored record" 1 --product "Example Unknown" --version 2026.1
}

count_checks() { grep -c '(update check)' "$log"; }

has_checked() { [ "$(count_checks)" -gt "$checks" ]; }

has_opened() { [ -s "$opened" ]; }

show_window() {
  rm -f "$opened"
  export OPENED_ADDRESSES=$opened
  checks=$(count_checks)
  say "The sample host's window, which checks quietly when it opens"
  launch run_host
  local host=$launched
  wait_until "The sample host has not asked the service." has_checked
  take_picture 'sample host$' build/sample-host.png
  say "The upgrade center, opened through its menu; the second offer is bought"
  xdotool key alt+h u
  take_picture '^Example Draft - Upgrade center$' build/upgrade-center.png
  xdotool key shift+Tab Down Down Return
  wait_until "No browser was opened." has_opened
  printf '    the browser was given: %s\n' "$(cat "$opened")"
  wait_for_window 'sample host$'
  xdotool key alt+F4
  await "$host" || fail "The sample host failed: $(cat build/run.log)"
}

show_german_center() {
  say "The tool's upgrade center in German, left with Exit"
  launch run_tool upgrade --product "Example Draft" --version 2026.1 --language 140
  local tool=$launched
  take_picture '^Example Draft - Upgrade-Center$' build/upgrade-center-de.png
  xdotool key Escape
  await "$tool" || fail "The tool failed: $(cat build/run.log)"
  print_output
}

run_unattended() {
  start_windows
  attend register_products
  start_service "$log"
  PATH=$PWD/scripts/lib/browser:$PATH
  show_checks
  show_window
  show_german_center
  say "What the service was asked"
  sed -n 's/^POST/    POST/p' "$log"
  say "What you may want next"
  printf '    %s\n' "./run.sh --interactive        the sample host on your display" \
    "(cd build/mingw && cpack)     the package, whose docs/host-guide.md leads to your first call" \
    "./test.sh                     every test"
}

run_interactive() {
  prepare_wine_prefix
  attend register_products
  start_service "$log"
  say "The sample host is open; its Help menu calls the library. Close it to end."
  attend run_host || fail "The sample host failed: $(cat build/run.log)"
}

case "${1:-}" in
  '') mode=run_unattended ;;
  --interactive)
    [ -n "${DISPLAY:-}" ] || fail "There is no display here; run ./run.sh without --interactive."
    mode=run_interactive
    ;;
  *) fail "usage: ./run.sh [--interactive]" ;;
esac

begin_session
require_free_port
build_project build/mingw
$mode
