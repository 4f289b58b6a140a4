#!/usr/bin/env bash
# Builds the DLLs again, from a clone in another folder, and compares them with those in build/mingw byte by byte.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/log.sh

readonly clone=$PWD/build/another/folder
log "Building the DLLs again (a minute)"
rm -rf "$clone"
git clone -q . "$clone"
mkdir "$clone/build"
cp -r build/deps "$clone/build/"
{ cmake --preset mingw -S "$clone" -B "$clone/build/mingw" -DBUILD_TESTING=OFF \
    && cmake --build "$clone/build/mingw" --target ProductServices ProductServicesGuard; } >build/another/build.log 2>&1 \
  || fail "The build failed; see build/another/build.log."
for name in ProductServices.dll ProductServicesGuard.dll; do
  cmp "build/mingw/bin/$name" "$clone/build/mingw/bin/$name" || fail "The two builds of $name differ."
done
