#!/usr/bin/env bash
# Runs a Windows program under Wine, in the Wine prefix of the build tree: scripts/run_wine.sh PROGRAM [ARGUMENT...]
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib/wine.sh"

if ! is_prefix_whole; then
  echo "error: There is no Wine prefix in $WINEPREFIX: ./test.sh makes it." >&2
  exit 1
fi

# Services that Wine starts keep the output that they were started with: a pipe would never end.
output=$(mktemp)
trap 'rm -f "$output"' EXIT
wine_run "$@" >"$output" 2>&1
status=$?
cat "$output"
exit "$status"
