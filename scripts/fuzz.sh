#!/usr/bin/env bash
# Fuzzes what reads replies, language files and URLs, natively with clang's sanitizers: scripts/fuzz.sh [SECONDS]
# for each of the two targets, 10 without. What they learn stays in build/fuzz/TARGET; an input that breaks something is
# written there.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/say.sh

# fuzz SECONDS TARGET SOURCE...: builds scripts/fuzz/TARGET.cpp with the sources and runs it.
fuzz() {
  local folder=build/fuzz/$2
  mkdir -p "$folder/corpus"
  say "Building $2"
  clang++ -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
    -Isrc -Iguard -isystem build/deps/json -o "$folder/$2" "scripts/fuzz/$2.cpp" "${@:3}"
  cp "scripts/fuzz/seeds/$2"/* "$folder/corpus/"
  say "Fuzzing for $1 seconds"
  (cd "$folder" && "./$2" -max_total_time="$1" -print_final_stats=1 corpus) >"$folder/fuzz.log" 2>&1 \
    || { tail -n 40 "$folder/fuzz.log" >&2; fail "The fuzzer found something; see $folder."; }
  grep -E 'cov:|number_of_executed_units' "$folder/fuzz.log" | tail -n 2
}

./setup.sh clang libclang-rt-14-dev
fuzz "${1:-10}" reply_fuzz src/service/service_reply.cpp src/text/utf16.cpp
fuzz "${1:-10}" url_fuzz guard/url/strict_url.cpp guard/url/trusted_hosts.cpp
