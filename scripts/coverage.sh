#!/usr/bin/env bash
# Runs the tests in a build that measures coverage, and prints the coverage of the library and the guard.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

./setup.sh gcovr
[ ! -d build/coverage ] || find build/coverage -name '*.gcda' -delete
# The programs contain counters and their paths, so they are not as the tests of the built files expect.
PRESET=coverage ./test.sh -E '^python.built_files$' "$@"
gcovr --root . --filter src/ --filter guard/ --filter compat/ --gcov-executable x86_64-w64-mingw32-gcov-posix build/coverage
