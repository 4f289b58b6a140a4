#!/usr/bin/env bash
# Checks the sources: C and C++ with clang-format and clang-tidy, Python with flake8, shell scripts with shellcheck, the
# public headers with doxygen for missing documentation, the documents with check_documents.py, and the samples in other
# languages with check_samples.sh. With --fix, it only formats C and C++.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/log.sh

readonly tree=build/lint log=build/tidy.log

# The tree is only configured, not built. Each source is checked by itself, so an include that is missing is seen here. The
# tree includes the benchmarks, which other builds omit.
configure_tree() {
  cmake --preset mingw -B "$tree" -DCMAKE_UNITY_BUILD=OFF -DPRODUCT_SERVICES_BUILD_BENCHMARKS=ON >"$tree.log" 2>&1 \
    || fail "The sources could not be configured; see $tree.log."
}

# Prints an option for each folder of the cross compiler's C++ headers.
cxx_headers() {
  x86_64-w64-mingw32-g++-posix -E -x c++ -v /dev/null 2>&1 >/dev/null \
    | sed -n 's|^ \(/.*/c++.*\)|--extra-arg=-cxx-isystem\1|p'
}

# No tree compiles the minimal hosts, which only use the package, and the fuzz targets, so their options are listed here.
run_clang_tidy() {
  local status=0 command=(clang-tidy --quiet --extra-arg=--target=x86_64-w64-windows-gnu)
  mapfile -t -O "${#command[@]}" command < <(cxx_headers)
  printf '%s\0' "${units[@]}" | xargs -0 -P 2 -n 2 "${command[@]}" -p "$tree" || status=1
  "${command[@]}" samples/minimal_hosts/host.c -- -Iinclude || status=1
  "${command[@]}" samples/minimal_hosts/host.cpp -- -std=c++20 -Iinclude || status=1
  "${command[@]}" scripts/fuzz/*.cpp -- -std=c++20 -Isrc -Iguard -isystem build/deps/json || status=1
  return "$status"
}

check_documentation() {
  doxygen - <<'SETTINGS'
INPUT = include/product_services
FILE_PATTERNS = *.h *.hpp
EXCLUDE_SYMBOLS = product_services::detail
MACRO_EXPANSION = YES
EXPAND_ONLY_PREDEF = YES
PREDEFINED = _Inout_= "static_assert(a,b)=" PRODUCT_SERVICES_THROWS= PRODUCT_SERVICES_CALL= PRODUCT_SERVICES_ENUM_TYPE= \
  PRODUCT_SERVICES_INOUT= PRODUCT_SERVICES_INOUT_OPT= PRODUCT_SERVICES_IN_TEXT= PRODUCT_SERVICES_IN_TEXT_OPT= \
  "PRODUCT_SERVICES_OUT_TEXT(n)="
GENERATE_HTML = NO
GENERATE_LATEX = NO
GENERATE_XML = YES
OUTPUT_DIRECTORY = build/lint
QUIET = YES
WARN_AS_ERROR = FAIL_ON_WARNINGS
SETTINGS
}

# Debian's doxygen does not warn about undocumented constants, but its output shows them.
check_constants() {
  python3 - build/lint/xml/*_8h*.xml <<'PROGRAM'
import sys
import xml.etree.ElementTree

constants = [value for page in sys.argv[1:] for value in xml.etree.ElementTree.parse(page).iter("enumvalue")]
bare = [value.findtext("name") for value in constants if value.find(".//para") is None]
sys.exit(f"Constants without documentation: {bare} of {len(constants)}" if bare or not constants else 0)
PROGRAM
}

./setup.sh clang-format clang-tidy doxygen flake8 shellcheck \
  golang-go rustc libstd-rust-dev-windows fp-compiler fp-units-rtl mono-mcs
mapfile -t sources < <(git ls-files '*.c' '*.cpp' '*.h' '*.hpp')
mapfile -t units < <(git ls-files '*.cpp' ':!samples/minimal_hosts' ':!scripts/fuzz')
mapfile -t python < <(git ls-files '*.py')
mapfile -t shell < <(git ls-files '*.sh' .ci/run)

if [ "${1:-}" = --fix ]; then
  clang-format -i "${sources[@]}"
  exit 0
fi

log "Checking the format of ${#sources[@]} C and C++ files"
clang-format --dry-run -Werror "${sources[@]}" || fail "Run scripts/lint.sh --fix."

log "Running flake8 over ${#python[@]} files and shellcheck over ${#shell[@]}"
flake8 --max-line-length 120 "${python[@]}" || fail "flake8 reported problems."
shellcheck --shell=bash --severity=warning "${shell[@]}" || fail "shellcheck reported problems."

log "Checking the documents"
/usr/bin/python3 -B scripts/check_documents.py || fail "The documents do not match the sources."

log "Compiling and running the samples in other languages"
scripts/check_samples.sh

log "Running doxygen over the public headers"
mkdir -p "$tree"
{ check_documentation && check_constants; } || fail "doxygen reported problems."

log "Running clang-tidy (about ten minutes)"
configure_tree
run_clang_tidy >"$log" 2>&1 \
  || { grep -E -A3 'error:|warning:' "$log" >&2 || true; fail "clang-tidy reported problems; see $log."; }
log "All checks passed."
