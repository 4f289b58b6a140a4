#!/usr/bin/env bash
# Builds the library and shows it at work with the sample host under Wine, against the development service on
# loopback: update checks and the upgrade center, on a display of its own, with screenshots in build/.
# With --interactive it opens the sample host on your display instead, until you close it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

readonly bin=build/mingw/bin # where the language files are, too
readonly opened=$PWD/build/opened-addresses.txt

run_host() { (cd "$bin" && wine_run ./SampleHost.exe "$@") >build/run.log 2>&1; }

print_host_output() { sed 's/\r$//; s/^/    /' build/run.log; }

# show SENTENCE ARGUMENT...: says what is tried, runs the sample host, prints what it printed.
show() {
  say "$1"
  attend run_host "${@:2}" --unattended || fail "The sample host failed: $(cat build/run.log)"
  print_host_output
}

# show_window SENTENCE TITLE PICTURE ARGUMENT...: as show, and keeps a picture of the window with that title.
show_window() {
  say "$1"
  launch run_host "${@:4}" --unattended --look 2500
  local host=$launched
  keep_picture "^$2\$" "$3"
  await "$host" || fail "The sample host failed: $(cat build/run.log)"
  print_host_output
  printf '    picture: %s\n' "$3"
}

show_checks() {
  show "A product that has a newer release" check --version 2026.1
  show "The same product when nothing newer exists" check --version 2026.2
  show "A product without a stored record" check --product "Example Unknown"
}

show_upgrades() {
  rm -f "$opened"
  export OPENED_ADDRESSES=$opened
  show_window "The upgrade center; the second offer is bought" "Example Draft - Upgrade center" \
    build/upgrade-center.png upgrade --buy 2
  for _ in $(seq 50); do [ -s "$opened" ] && break; sleep 0.1; done
  printf '    the browser was given: %s\n' "$(cat "$opened")"
  show_window "The same in German, left with Exit" "Example Draft - Upgrade-Center" \
    build/upgrade-center-de.png upgrade --language 140
}

run_unattended() {
  start_windows
  attend register_products
  PATH=$PWD/scripts/lib/browser:$PATH
  show_checks
  show_upgrades
  say "What the service was asked"
  sed -n 's/^POST/    POST/p' build/service.log
  say "What you may want next"
  printf '    %s\n' "./run.sh --interactive        the sample host on your display" \
    "(cd build/mingw && cpack)     the package, whose docs/host-guide.md leads to your first call" \
    "./test.sh                     every test"
}

run_interactive() {
  prepare_wine_prefix
  attend register_products
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
start_service build/service.log
$mode
