#!/usr/bin/env bash
# Builds everything and runs every test: the Windows programs under Wine on a display of their own.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. tools/lib/say.sh
. tools/lib/wine.sh

clean_up() {
  stop_wine_services
  stop_display
}

./setup.sh
say "Building (a few minutes the first time)"
{ cmake --preset mingw && cmake --build --preset mingw; } >build/build.log 2>&1 \
  || { tail -n 40 build/build.log >&2; fail "The build failed; see build/build.log."; }

trap clean_up EXIT
start_display
prepare_wine_prefix
start_wine_services
say "Running the tests"
ctest --preset mingw "$@"
