"""Looks at a product family's pictures and ends with one sentence where one is missing or of another kind.

    check_family_pictures.py FOLDER NAME:SIZES...   such as library.ico:16,32 and background_332.bmp:726x463
"""

import pathlib
import struct
import sys

DEPTH = 24

# Magic number, offset of the pixels; width, height (negative: top-down), bits of a pixel, compression.
BITMAP_HEADER = struct.Struct("<2s8xI4xii2xHI")
# Type (1: icon) and number of pictures; then for each its width (0: 256), bits of a pixel, bytes and offset.
ICON_HEADER = struct.Struct("<2xHH")
ICON_ENTRY = struct.Struct("<B5xHII")


def refuse(what, problem):
    sys.exit(f"The product family's {what} {problem}")


def check_background(path, size):
    must_be = tuple(map(int, size.split("x")))
    data = path.read_bytes()
    if not data.startswith(b"BM"):
        refuse(path, "is not an uncompressed bitmap.")
    if len(data) < BITMAP_HEADER.size:
        refuse(path, "is cut short.")
    _, pixels, width, height, depth, compression = BITMAP_HEADER.unpack_from(data)
    if compression != 0:
        refuse(path, "is not an uncompressed bitmap.")
    if (width, abs(height), depth) != (*must_be, DEPTH):
        refuse(path, f"is {width} x {abs(height)} pixels with {depth} bits each; "
                     f"it must be {must_be[0]} x {must_be[1]} with {DEPTH}.")
    if height < 0:
        refuse(path, "is stored from the top down; it must be from the bottom up.")
    row_bytes = (width * DEPTH // 8 + 3) // 4 * 4
    if len(data) < pixels + row_bytes * height:
        refuse(path, "is cut short.")


def check_icon(path, must_have):
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
            sizes.add(str(width or 256))
    missing = [size for size in must_have.split(",") if size not in sizes]
    if missing:
        refuse(path, f"has no 32-bit picture of these sizes: {', '.join(missing)}.")


def main(folder, *pictures):
    for picture in pictures:
        name, sizes = picture.split(":")
        path = pathlib.Path(folder) / name
        if not path.is_file():
            refuse("folder", f"{folder} has no file {name}.")
        if path.suffix == ".ico":
            check_icon(path, sizes)
        else:
            check_background(path, sizes)


if __name__ == "__main__":
    main(*sys.argv[1:])
