#!/usr/bin/env bash
# Builds everything and runs all tests, with the Windows programs under Wine on a virtual display. The arguments go to ctest.
# PRESET=ubsan or PRESET=coverage in the environment selects another build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

preset=${PRESET:-mingw}

begin_session
build_project "build/$preset"
start_machines
log "Running the tests"
run_and_wait ctest --preset "$preset" --no-tests=error "$@"
