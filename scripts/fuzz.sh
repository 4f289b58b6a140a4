#!/usr/bin/env bash
# Fuzzes the parsers of replies, language files and URLs, natively with clang's sanitizers: scripts/fuzz.sh [SECONDS]
# fuzzes each of the two targets for so many seconds (default: 10). The corpus is kept in build/fuzz/TARGET, where an input
# that causes a failure is saved, too.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/log.sh

# fuzz SECONDS TARGET SOURCE...: builds scripts/fuzz/TARGET.cpp with the sources and runs it.
fuzz() {
  local folder=build/fuzz/$2
  mkdir -p "$folder/corpus"
  log "Building $2"
  clang++ -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
    -Isrc -Iguard -isystem build/deps/json -o "$folder/$2" "scripts/fuzz/$2.cpp" "${@:3}"
  cp "scripts/fuzz/seeds/$2"/* "$folder/corpus/"
  log "Fuzzing for $1 seconds"
  (cd "$folder" && "./$2" -max_total_time="$1" -print_final_stats=1 corpus) >"$folder/fuzz.log" 2>&1 \
    || { tail -n 40 "$folder/fuzz.log" >&2; fail "The fuzzer found a failure; see $folder."; }
  grep -E 'cov:|number_of_executed_units' "$folder/fuzz.log" | tail -n 2
}

./setup.sh clang libclang-rt-14-dev
fuzz "${1:-10}" reply_fuzz src/service/service_reply.cpp src/text/utf16.cpp
fuzz "${1:-10}" url_fuzz guard/url/strict_url.cpp guard/url/trusted_hosts.cpp
