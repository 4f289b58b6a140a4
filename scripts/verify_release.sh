#!/usr/bin/env bash
# verify_release.sh ZIP [OPTION...]: builds the version that a package says it is once more, in a clone in another folder,
# libcurl too, and says whether that package, and a NuGet package beside it, is the same, or the first file that differs.
# The options go to cmake, such as -DPRODUCT_FAMILY_DIR=FOLDER for another family's package.
set -euo pipefail
[ -f "${1:-}" ] || { echo "usage: scripts/verify_release.sh ZIP [OPTION...]" >&2; exit 2; }
zip=$(realpath "$1")
shift
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/say.sh
. scripts/lib/process.sh
trap 'end_groups "${groups[@]}"' EXIT
readonly work="$PWD/build/verified release"
readonly log="$PWD/build/verify_release.log"

# unpack ZIP FOLDER
unpack() { python3 -c 'import shutil, sys; shutil.unpack_archive(sys.argv[1], sys.argv[2], "zip")' "$1" "$2"; }

# With nothing of this checkout's own build.
build_again() {
  cd "$work/clone"
  ./setup.sh && cmake --preset mingw -DBUILD_TESTING=OFF "$@" && cmake --build --preset mingw \
    && cd build/mingw && cpack
}

rm -rf "$work"
mkdir -p "$work"
unpack "$zip" "$work/given" || fail "$zip is no zip."
commit=$(sed -n 's/.*"sourceInfo": "commit \([0-9a-f]*\)".*/\1/p' "$work"/given/*/product-services.spdx.json)
[ -n "$commit" ] || fail "$zip does not say which commit it was made from."
git clone -q . "$work/clone"
git -C "$work/clone" checkout -q "$commit" || fail "This checkout does not have the commit $commit."
say "Building commit $commit once more (a few minutes)"
attend build_again "$@" >"$log" 2>&1 || fail "The build failed; see $log."
again="$work/clone/build/mingw/package"
unpack "$again"/*.zip "$work/built"

different=$(diff -rq "$work/given" "$work/built" | head -n 1) || true
[ -z "$different" ] || fail "It is not the same: ${different//"$work/"/}."
for built in "$again"/*.zip "$again"/*.nupkg; do
  given=$zip
  [[ $built != *.nupkg ]] || given=$(dirname "$zip")/${built##*/}
  [ ! -f "$given" ] || cmp -s "$given" "$built" \
    || fail "${given##*/} is packed in another way (another order, other times), or names another package."
done
sha256sum "$again"/*.zip "$again"/*.nupkg | sed "s|  .*/|  |"
rm -rf "$work"
say "the same"
