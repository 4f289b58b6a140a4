#!/usr/bin/env bash
# Builds the DLLs once more, from a clone in another folder, and compares them with those of build/mingw byte for byte.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/say.sh

readonly clone=$PWD/build/another/folder
say "Building the DLLs once more (a minute)"
rm -rf "$clone"
git clone -q . "$clone"
mkdir "$clone/build"
cp -r build/deps "$clone/build/"
{ cmake --preset mingw -S "$clone" -B "$clone/build/mingw" -DBUILD_TESTING=OFF \
    && cmake --build "$clone/build/mingw" --target ProductServices ProductServicesGuard; } >build/another/build.log 2>&1 \
  || fail "The build failed; see build/another/build.log."
for name in ProductServices.dll ProductServicesGuard.dll; do
  cmp "build/mingw/bin/$name" "$clone/build/mingw/bin/$name" || fail "Two builds of $name differ."
done
