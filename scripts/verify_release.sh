#!/usr/bin/env bash
# verify_release.sh ZIP [OPTION...]: rebuilds the commit from which a package was built, with libcurl, in a clone in another
# folder. Compares the result with the package, and with a NuGet package in the same folder, and reports the first file that
# differs. The options go to cmake, such as -DPRODUCT_FAMILY_DIR=FOLDER for another family's package.
set -euo pipefail
[ -f "${1:-}" ] || { echo "usage: scripts/verify_release.sh ZIP [OPTION...]" >&2; exit 2; }
zip=$(realpath "$1")
shift
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/log.sh
. scripts/lib/process.sh
trap 'stop_groups "${groups[@]}"' EXIT
readonly work="$PWD/build/verified release"
readonly log="$PWD/build/verify_release.log"

# unpack ZIP FOLDER
unpack() { python3 -c 'import shutil, sys; shutil.unpack_archive(sys.argv[1], sys.argv[2], "zip")' "$1" "$2"; }

# Uses nothing from this checkout's build folder.
build_again() {
  cd "$work/clone"
  ./setup.sh && cmake --preset mingw -DBUILD_TESTING=OFF "$@" && cmake --build --preset mingw \
    && cd build/mingw && cpack
}

rm -rf "$work"
mkdir -p "$work"
unpack "$zip" "$work/given" || fail "$zip is not a zip archive."
commit=$(sed -n 's/.*"sourceInfo": "commit \([0-9a-f]*\)".*/\1/p' "$work"/given/*/product-services.spdx.json)
[ -n "$commit" ] || fail "$zip does not name the commit from which it was built."
git clone -q . "$work/clone"
git -C "$work/clone" checkout -q "$commit" || fail "This checkout does not have the commit $commit."
log "Rebuilding commit $commit (a few minutes)"
run_and_wait build_again "$@" >"$log" 2>&1 || fail "The build failed; see $log."
again="$work/clone/build/mingw/package"
unpack "$again"/*.zip "$work/built"

different=$(diff -rq "$work/given" "$work/built" | head -n 1) || true
[ -z "$different" ] || fail "The packages differ: ${different//"$work/"/}."
for built in "$again"/*.zip "$again"/*.nupkg; do
  given=$zip
  [[ $built != *.nupkg ]] || given=$(dirname "$zip")/${built##*/}
  [ ! -f "$given" ] || cmp -s "$given" "$built" \
    || fail "${given##*/} has the same files but different archive metadata (order, timestamps) or another package name."
done
sha256sum "$again"/*.zip "$again"/*.nupkg | sed "s|  .*/|  |"
rm -rf "$work"
log "The packages are identical."
