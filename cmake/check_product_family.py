"""Looks at what a maker brings and ends with one sentence where something is missing or of another kind.

    check_product_family.py FOLDER FILE...      the icon, the pictures and the header that FOLDER must hold

product_family.h is only looked for here: the compiler checks what it says.
"""

import pathlib
import struct
import sys

WIDTH, HEIGHT, DEPTH = 726, 463, 24
ROW_BYTES = (WIDTH * DEPTH // 8 + 3) // 4 * 4
ICON_SIZES = 16, 24, 32, 48, 64, 96, 128, 256

# Magic number, offset of the pixels; width, height (negative: top-down), bits of a pixel, compression.
BITMAP_HEADER = struct.Struct("<2s8xI4xii2xHI")
# Type (1: icon) and number of pictures; then for each its width (0: 256), bits of a pixel, bytes and offset.
ICON_HEADER = struct.Struct("<2xHH")
ICON_ENTRY = struct.Struct("<B5xHII")


def refuse(what, problem):
    sys.exit(f"The product family's {what} {problem}")


def check_background(path):
    data = path.read_bytes()
    if not data.startswith(b"BM"):
        refuse(path, "is not an uncompressed bitmap.")
    if len(data) < BITMAP_HEADER.size:
        refuse(path, "is cut short.")
    _, pixels, width, height, depth, compression = BITMAP_HEADER.unpack_from(data)
    if compression != 0:
        refuse(path, "is not an uncompressed bitmap.")
    if (width, abs(height), depth) != (WIDTH, HEIGHT, DEPTH):
        refuse(path, f"is {width} x {abs(height)} pixels with {depth} bits each; "
                     f"it must be {WIDTH} x {HEIGHT} with {DEPTH}.")
    if height < 0:
        refuse(path, "is stored from the top down; it must be from the bottom up.")
    if len(data) < pixels + ROW_BYTES * HEIGHT:
        refuse(path, "is cut short.")


def check_icon(path):
    data = path.read_bytes()
    kind, count = ICON_HEADER.unpack_from(data) if len(data) >= ICON_HEADER.size else (0, 0)
    if kind != 1:
        refuse(path, "is not an icon.")
    entries = data[ICON_HEADER.size:ICON_HEADER.size + count * ICON_ENTRY.size]
    if len(entries) < count * ICON_ENTRY.size:
        refuse(path, "is cut short.")
    sizes = set()
    for width, depth, length, offset in ICON_ENTRY.iter_unpack(entries):
        if offset + length > len(data):
            refuse(path, "is cut short.")
        if depth == 32:
            sizes.add(width or 256)
    missing = [str(size) for size in ICON_SIZES if size not in sizes]
    if missing:
        refuse(path, f"has no 32-bit picture of these sizes: {', '.join(missing)}.")


def main(folder, *names):
    folder = pathlib.Path(folder)
    if not folder.is_dir():
        refuse("folder", f"{folder} does not exist.")
    for name in names:
        if not (folder / name).is_file():
            refuse("folder", f"{folder} has no file {name}.")
    for name in names:
        if name.endswith(".bmp"):
            check_background(folder / name)
        elif name.endswith(".ico"):
            check_icon(folder / name)


if __name__ == "__main__":
    main(*sys.argv[1:])
