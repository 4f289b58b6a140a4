#!/usr/bin/env bash
# Compiles the samples in other languages. Those in C#, Pascal, Python and Rust also run on Linux, with a stub for
# ProductServicesGuard.dll: they must fill in its structure correctly and describe each outcome in the same words. The
# sample in Go only runs on Windows, so its compiler compares the layout of the structure instead. What the samples declare
# for their readers, but do not use, is compared with the headers.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/log.sh
PATH=/usr/bin:$PATH # Debian's compilers, if there are others

readonly bindings=samples/bindings work=$PWD/build/samples

# compile COMMAND...
compile() { "$@" >"$work/build.log" 2>&1 || { cat "$work/build.log" >&2; fail "A sample could not be compiled."; }; }

# compile_stub FOLDER CHARACTER
compile_stub() {
  compile clang -Iinclude -DCharacter="$2" -fshort-wchar -shared -fPIC -o "$work/$1/ProductServicesGuard.dll" \
    scripts/samples/guard_stub.c
}

compile_samples() {
  compile mcs -warnaserror -platform:x64 -out:"$work/host_cs.exe" "$bindings/host.cs"
  compile rustc -D warnings -o "$work/host_rs" -L "$work" "$bindings/host.rs"
  compile rustc -D warnings --target x86_64-pc-windows-gnu --emit=metadata -o "$work/host_rs.rmeta" "$bindings/host.rs"
  # On Linux, threads and conversions of strings are units that a program must use; -Fa adds them. Debian has no units for
  # Windows.
  compile fpc -Sew -vew -Facthreads,cwstring -Fl"$work" -FE"$work" -o"$work/host_pas" "$bindings/host.pas"
  cp "$bindings/host.go" scripts/samples/layout.go "$work/go/"
  compile env GOOS=windows GOARCH=amd64 GOCACHE="$work/go/cache" go build -o "$work/host_go.exe" "$work/go"/*.go
  [ -z "$(gofmt -l "$bindings/host.go" scripts/samples/layout.go)" ] || fail "Run gofmt -w on the files in Go."
  cp "$bindings/host.py" "$work/python/"
}

# The words of the sample in C for an outcome.
describe() {
  case $1 in
    1) echo "a newer release is at 一 text" ;;
    2) echo "up to date" ;;
    3) echo "the browser shows the purchase page" ;;
    4) echo "left by the user" ;;
    9 | 10) echo "no connection, try again later: 一 text" ;;
    11) echo "cancelled" ;;
    12 | 13) echo "not secure, ask your administrator: 一 text" ;;
    *) echo "failed with outcome $1: 一 text" ;;
  esac
}

# check_output COMMAND...: runs a sample with each outcome.
check_output() {
  local outcome output expected
  for outcome in $(seq 14); do
    expected=$(printf '%s\n' "CheckForUpdates: $(describe "$outcome")" "Upgrade: $(describe "$outcome")")
    output=$(STUB_OUTCOME=$outcome LD_LIBRARY_PATH=$work "$@" 2>&1) \
      || fail "$1 ${2:-} failed with outcome $outcome: the stub's structure differs (status 9), or: $output"
    [ "$output" = "$expected" ] || fail "$1 ${2:-} prints with outcome $outcome: $output"
  done
}

python3 -B scripts/samples/check_declarations.py || fail "A sample's declarations differ from the C headers."

rm -rf "$work"/host* "$work"/*.dll
mkdir -p "$work/go" "$work/python"
compile_stub . uint16_t
compile_stub python uint32_t
# The names under which the linkers of Rust and Free Pascal look for the library.
ln -sf ProductServicesGuard.dll "$work/libProductServicesGuard.so"
ln -sf ProductServicesGuard.dll "$work/libProductServicesGuard.dll.so"
compile_samples
export LC_ALL=C.UTF-8
check_output mono "$work/host_cs.exe"
check_output "$work/host_rs"
check_output "$work/host_pas"
check_output python3 -B "$work/python/host.py"
