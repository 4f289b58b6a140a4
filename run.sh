#!/usr/bin/env bash
# Builds the library and demonstrates it under Wine with the development service on loopback: update checks by the
# command-line tool, then the sample host's window and the upgrade center, on a virtual display, with screenshots in build/.
# With --interactive, it opens the sample host on your display instead, and waits until you close it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

readonly bin=build/mingw/bin # also contains the language files
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

# demo_check TITLE STATUS ARGUMENT...: runs a check and prints its output. STATUS is the expected exit status.
demo_check() {
  local status=0
  log "$1"
  run_and_wait run_tool check "${@:3}" || status=$?
  [ "$status" -eq "$2" ] || fail "The tool exited with status $status: $(cat build/run.log)"
  print_output
  printf '    exit status: %s\n' "$status"
}

# show_screenshot PATTERN FILE: takes a screenshot of the window with a matching title.
show_screenshot() {
  take_screenshot "$1" "$2"
  printf '    screenshot: %s\n' "$2"
}

demo_checks() {
  demo_check "A product that has a newer release" 0 --product "Example Draft" --version 2026.1
  demo_check "The same product, with no newer release" 0 --product "Example Draft" --version 2026.2
  demo_check "A product without a record in the registry" 1 --product "Example Unknown" --version 2026.1
}

count_checks() { grep -c '(update check)' "$log"; }

has_checked() { [ "$(count_checks)" -gt "$checks" ]; }

has_opened() { [ -s "$opened" ]; }

demo_window() {
  rm -f "$opened"
  export OPENED_ADDRESSES=$opened
  checks=$(count_checks)
  log "Sample host: a quiet check when the window opens"
  start run_host
  local host=$started
  wait_until "The sample host did not query the service." has_checked
  show_screenshot 'sample host$' build/sample-host.png
  log "Upgrade center: buying the second offer"
  xdotool key alt+h u
  show_screenshot '^Example Draft - Upgrade center$' build/upgrade-center.png
  xdotool key shift+Tab Down Down Return
  wait_until "No URL was opened in the browser." has_opened
  printf '    opened in the browser: %s\n' "$(cat "$opened")"
  wait_for_window 'sample host$'
  xdotool key alt+F4
  wait_for "$host" || fail "The sample host failed: $(cat build/run.log)"
}

demo_german_center() {
  log "Upgrade center in German, closed with Exit"
  start run_tool upgrade --product "Example Draft" --version 2026.1 --language 140
  local tool=$started
  show_screenshot '^Example Draft - Upgrade-Center$' build/upgrade-center-de.png
  xdotool key Escape
  wait_for "$tool" || fail "The tool failed: $(cat build/run.log)"
  print_output
}

run_unattended() {
  start_wine_session
  run_and_wait register_products
  start_service "$log"
  PATH=$PWD/scripts/lib/browser:$PATH
  demo_checks
  demo_window
  demo_german_center
  log "Requests received by the service"
  sed -n 's/^POST/    POST/p' "$log"
  log "Next steps"
  printf '    %s\n' "./run.sh --interactive        opens the sample host on your display" \
    "(cd build/mingw && cpack)     builds the package; start with its docs/getting-started.md" \
    "./test.sh                     runs all tests"
}

run_interactive() {
  prepare_wine_prefix
  run_and_wait register_products
  start_service "$log"
  log "The sample host is open. Its Help menu calls the library. Close the window to stop."
  run_and_wait run_host || fail "The sample host failed: $(cat build/run.log)"
}

case "${1:-}" in
  '') mode=run_unattended ;;
  --interactive)
    [ -n "${DISPLAY:-}" ] || fail "DISPLAY is not set. Run ./run.sh without --interactive."
    mode=run_interactive
    ;;
  *) fail "usage: ./run.sh [--interactive]" ;;
esac

begin_session
require_free_port
build_project build/mingw
$mode
