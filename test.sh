#!/usr/bin/env bash
# Builds everything and runs every test: the Windows programs under Wine on a display of their own. What follows goes
# to ctest. PRESET=ubsan or PRESET=coverage in the environment tests another build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

preset=${PRESET:-mingw}

begin_session
build_project "build/$preset"
start_windows
say "Running the tests"
attend ctest --preset "$preset" --no-tests=error "$@"
