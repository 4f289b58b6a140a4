#!/usr/bin/env bash
# Runs a Windows program under Wine, in the Wine prefix of the build tree: scripts/run_wine.sh PROGRAM [ARGUMENT...]
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib/wine.sh"

# Services that Wine starts keep the output that they were started with: a pipe would never end.
output=$(mktemp)
trap 'rm -f "$output"' EXIT
wine_run "$@" >"$output" 2>&1
status=$?
cat "$output"
exit "$status"
