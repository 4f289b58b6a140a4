#!/usr/bin/env python3
"""Packs rendered PNG files into the classic Windows formats.

pack.py bmp OUTPUT PNG        24-bit bottom-up bitmap
pack.py ico OUTPUT PNG...     32-bit icon, one image per PNG

Both use the 40-byte BITMAPINFOHEADER, which every resource compiler reads.
"""
import struct
import sys
import zlib
from pathlib import Path

PIXELS_PER_METRE = 3780  # 96 dpi
SAMPLES = {2: 3, 6: 4}  # per pixel, by PNG colour type: RGB, RGBA
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def png_chunks(data):
    at = len(PNG_SIGNATURE)
    while at < len(data):
        length, kind = struct.unpack_from(">I4s", data, at)
        yield kind, data[at + 8:at + 8 + length]
        at += 12 + length


def paeth(left, up, corner):
    guess = left + up - corner
    to_left, to_up, to_corner = abs(guess - left), abs(guess - up), abs(guess - corner)
    if to_left <= to_up and to_left <= to_corner:
        return left
    return up if to_up <= to_corner else corner


def unfilter(kind, row, above, step):
    for i in range(len(row)):
        left = row[i - step] if i >= step else 0
        corner = above[i - step] if i >= step else 0
        if kind == 1:
            row[i] = (row[i] + left) & 255
        elif kind == 2:
            row[i] = (row[i] + above[i]) & 255
        elif kind == 3:
            row[i] = (row[i] + (left + above[i]) // 2) & 255
        elif kind == 4:
            row[i] = (row[i] + paeth(left, above[i], corner)) & 255


def read_png(path):
    """Returns width, height and the rows, top first, as RGB or RGBA bytes."""
    data = Path(path).read_bytes()
    if not data.startswith(PNG_SIGNATURE):
        sys.exit(f"{path} is not a PNG file.")
    chunks = list(png_chunks(data))
    width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", chunks[0][1])
    if depth != 8 or colour not in SAMPLES or interlace:
        sys.exit(f"{path} is not an 8-bit RGB or RGBA PNG without interlacing.")
    step = SAMPLES[colour]
    raw = zlib.decompress(b"".join(body for kind, body in chunks if kind == b"IDAT"))
    stride = width * step
    rows, above = [], bytearray(stride)
    for start in range(0, height * (stride + 1), stride + 1):
        row = bytearray(raw[start + 1:start + 1 + stride])
        unfilter(raw[start], row, above, step)
        rows.append(row)
        above = row
    return width, height, rows


def swizzle(row, step, channels):
    """Picks the given channels of a row with `step` samples per pixel, in that order."""
    out = bytearray(len(row) // step * len(channels))
    for place, channel in enumerate(channels):
        out[place::len(channels)] = row[channel::step]
    return bytes(out)


def padded(row):
    return row + bytes(-len(row) % 4)


def info_header(width, height, bits, size):
    return struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, 0, size,
                       PIXELS_PER_METRE, PIXELS_PER_METRE, 0, 0)


def bitmap(path):
    width, height, rows = read_png(path)
    pixels = b"".join(padded(swizzle(row, len(row) // width, (2, 1, 0))) for row in reversed(rows))
    start = 14 + 40
    file_header = struct.pack("<2sIHHI", b"BM", start + len(pixels), 0, 0, start)
    return file_header + info_header(width, height, 24, len(pixels)) + pixels


def mask_row(row):
    """One bit per pixel, set where the image is fully transparent."""
    alpha = row[3::4]
    bits = "".join("0" if value else "1" for value in alpha)
    bits += "0" * (-len(bits) % 32)
    return int(bits, 2).to_bytes(len(bits) // 8, "big")


def icon_image(path):
    width, height, rows = read_png(path)
    if width == 256:
        return width, Path(path).read_bytes()
    if len(rows[0]) != width * 4:
        sys.exit(f"{path} has no transparency; an icon needs it.")
    colour = b"".join(swizzle(row, 4, (2, 1, 0, 3)) for row in reversed(rows))
    mask = b"".join(mask_row(row) for row in reversed(rows))
    # The header counts both halves: colour above, mask below.
    return width, info_header(width, height * 2, 32, len(colour) + len(mask)) + colour + mask


def icon(paths):
    images = [icon_image(path) for path in paths]
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, data in images:
        # A byte cannot hold 256; the format writes it as 0.
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    return directory + b"".join(data for _, data in images)


def main(kind, output, *sources):
    packed = bitmap(sources[0]) if kind == "bmp" else icon(sources)
    Path(output).write_bytes(packed)


if __name__ == "__main__":
    if len(sys.argv) < 4 or sys.argv[1] not in ("bmp", "ico"):
        sys.exit(__doc__)
    main(*sys.argv[1:])
