#!/usr/bin/env bash
# Fuzzes the reading of replies and language files, natively with clang's sanitizers: scripts/fuzz.sh [SECONDS], 20
# without. What it learns stays in build/fuzz/corpus; an input that breaks something is written to build/fuzz.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/say.sh

./setup.sh clang libclang-rt-14-dev
mkdir -p build/fuzz/corpus
say "Building the fuzz target"
clang++ -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
  -Isrc -isystem build/deps/json -o build/fuzz/reply_fuzz \
  tests/fuzz/reply_fuzz.cpp src/service/service_reply.cpp src/text/utf16.cpp
printf '%s' '[{"name":"X","version":"2","url":"u"}]' >build/fuzz/corpus/offer
printf '%s' '{"status":0,"error":"no"}' >build/fuzz/corpus/refusal
say "Fuzzing for ${1:-20} seconds"
(cd build/fuzz && ./reply_fuzz -max_total_time="${1:-20}" -print_final_stats=1 corpus) >build/fuzz/fuzz.log 2>&1 \
  || { tail -n 40 build/fuzz/fuzz.log >&2; fail "The fuzzer found something; see build/fuzz."; }
grep -E 'cov:|number_of_executed_units' build/fuzz/fuzz.log | tail -n 2
