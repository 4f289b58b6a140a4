#!/usr/bin/env bash
# Renders the SVG files in this folder to the family's bitmaps and icon in the parent folder. The results are in the
# repository, and the build only reads them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

fail() { printf 'error: %s\n' "$*" >&2; exit 1; }

require() { command -v "$1" >/dev/null || fail "$1 not found. Install the package $2."; }
require rsvg-convert librsvg2-bin
require convert imagemagick

# Paper, panel and contour lines are the same in every picture. Only the attribute `color` of the root element differs.
frame() { sed -n '/<g id="frame">/,/^  <\/g>/p' "$1"; }

rendered=$(mktemp -d)
trap 'rm -rf "$rendered"' EXIT

for picture in background_*.svg; do
  [ "$(frame "$picture")" = "$(frame background_343.svg)" ] \
    || fail "The frame in $picture differs from the one in background_343.svg."
  rsvg-convert "$picture" -o "$rendered/picture.png"
  # The format that every resource compiler reads: 24 bits, bottom-up, uncompressed. ImageMagick rounds the density down to
  # whole pixels per metre; 3780 are 96 DPI.
  convert "$rendered/picture.png" -alpha off -type TrueColor -compress None -units PixelsPerInch -density 96.02 \
    "BMP3:../${picture%.svg}.bmp"
done

layers=()
for size in 16 24 32 48 64 96 128 256; do
  source=icon.svg
  [ "$size" -ge 32 ] || source=icon_small.svg
  rsvg-convert --width "$size" --height "$size" "$source" -o "$rendered/icon_$size.png"
  layers+=("$rendered/icon_$size.png")
done
# ImageMagick stores the largest image as PNG.
convert "${layers[@]}" -type TrueColorAlpha ../library.ico
