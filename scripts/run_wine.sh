#!/usr/bin/env bash
# Runs a Windows program under Wine, in the Wine prefix of the build folder: scripts/run_wine.sh PROGRAM [ARGUMENT...]
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib/wine.sh"

if ! is_prefix_complete; then
  echo "error: No Wine prefix at $WINEPREFIX. Run ./test.sh to create it." >&2
  exit 1
fi

# Services that Wine starts inherit the program's output. With a pipe, its reader would wait for them, too. The output is
# also printed when a timeout stops the process group; without the subshell, the trap would print into the file.
output=$(mktemp)
trap 'trap "" TERM; cat "$output"; rm -f "$output"' EXIT
(wine_run "$@") >"$output" 2>&1
