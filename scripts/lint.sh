#!/usr/bin/env bash
# Checks the format of our C and C++ sources and what clang-tidy says of the library; --fix formats them.
# Needs a configured mingw build (test.sh makes one) and the packages clang-format and clang-tidy.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/say.sh

for tool in clang-format clang-tidy; do
  command -v "$tool" >/dev/null || fail "$tool is missing; install Debian's package $tool."
done

mapfile -t sources < <(git ls-files '*.cpp' '*.c' '*.h' '*.hpp')
if [ "${1:-}" = --fix ]; then
  clang-format -i "${sources[@]}"
  exit 0
fi

say "Checking the format of ${#sources[@]} files"
clang-format --dry-run -Werror "${sources[@]}" || fail "Run scripts/lint.sh --fix."

say "Running clang-tidy over the library (a few minutes)"
readonly gcc=/usr/lib/gcc/x86_64-w64-mingw32/12-posix/include/c++
git ls-files 'src/*.cpp' 'guard/*.cpp' 'samples/*.cpp' \
  | xargs -P 2 -n 4 clang-tidy -p build/mingw --quiet --extra-arg=--target=x86_64-w64-windows-gnu \
      --extra-arg=-isystem"$gcc" --extra-arg=-isystem"$gcc/x86_64-w64-mingw32" \
      --extra-arg=-isystem/usr/x86_64-w64-mingw32/include >build/tidy.log 2>&1 \
  || { grep -E -A3 'error:|warning:' build/tidy.log >&2; fail "clang-tidy found something; see build/tidy.log."; }
say "Nothing to mend."
