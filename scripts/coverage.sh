#!/usr/bin/env bash
# Runs the tests on a build that counts lines, and prints how much of the library and the guard they reach.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

./setup.sh gcovr
[ ! -d build/coverage ] || find build/coverage -name '*.gcda' -delete
PRESET=coverage ./test.sh "$@"
gcovr --root . --filter src/ --filter guard/ --filter compat/ --gcov-executable x86_64-w64-mingw32-gcov-posix build/coverage
