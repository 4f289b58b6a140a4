#!/usr/bin/env bash
# On Windows, in Git's bash: runs the tests of a build that was made on Debian and copied here, without Wine. Tests with the
# label debian are skipped.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

readonly entries=build/mingw/tests/CTestTestfile.cmake
here=$(cygpath -m "$PWD")
python=$(cygpath -m "$(command -v python)")
there=$(sed -n 's|^# Source directory: \(.*\)/tests$|\1|p' "$entries")

sed -i -e "s|\"$there/cmake/../scripts/run_wine.sh\" ||" -e 's| "--gtest_brief=1"||' \
  -e "s|\"/usr/bin/python3\"|\"$python\"|" -e "s|$there/|$here/|g" "$entries"
mkdir -p build/mingw/pytest
PYTEST_ADDOPTS=-vv ctest --test-dir build/mingw/tests --label-exclude debian --no-tests=error --verbose
