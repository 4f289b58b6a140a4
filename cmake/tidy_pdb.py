#!/usr/bin/env python3
"""Takes the machine out of a PDB that GNU ld has written, so that two builds of the same sources are the same bytes.

    tidy_pdb.py FILE [FOLDER=NAME...]

ld writes the time of the build, and the full paths of what it linked: a path in FOLDER gets NAME in its place, that of
the first FOLDER that fits. A debugger matches a PDB by its GUID, which stays: it is made from the DLL's bytes.
"""

import pathlib
import struct
import sys

MAGIC = b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0"
HEADER = struct.Struct(f"<{len(MAGIC)}s6I")
INFO_STREAM, MODULES_STREAM = 1, 3
SIGNATURE = slice(4, 8)
MODULES_HEADER, MODULE_HEADER = 64, 64  # what stands before the modules, and before the two names of each
MODULES_SIZE = slice(24, 28)
MODULE_STREAM = 34  # in its header: the number of a module's stream, and how long the records in that are
LINKER, RECORDS = b"* Linker *", 4
UNUSED = 0xFFFFFFFF


def block_count(size, block_size):
    return 0 if size == UNUSED else -(-size // block_size)


def read_streams(data):
    """The block size, and the streams of a file that consists of blocks."""
    magic, block_size, _, _, directory_size, _, map_block = HEADER.unpack_from(data)
    if magic != MAGIC:
        sys.exit("tidy_pdb.py: this is no PDB.")

    def join(blocks, size):
        return b"".join(data[block * block_size:][:block_size] for block in blocks)[:size]

    count = block_count(directory_size, block_size)
    directory = join(struct.unpack_from(f"<{count}I", data, map_block * block_size), directory_size)
    numbers = list(struct.unpack(f"<{directory_size // 4}I", directory))
    sizes, blocks = numbers[1:numbers[0] + 1], iter(numbers[numbers[0] + 1:])
    counts = [block_count(size, block_size) for size in sizes]
    return block_size, [join([next(blocks) for _ in range(count)], size if count else 0)
                        for size, count in zip(sizes, counts)]


def rename(path, folders):
    for folder, name in folders:
        if (path + b"/").startswith(folder + b"/"):
            return name + path[len(folder):]
    return path


def tidy_modules(streams, folders):
    """Renames the modules. The linker's own loses its records, which hold the folder that it ran in."""
    stream = streams[MODULES_STREAM]
    end = MODULES_HEADER + struct.unpack("<I", stream[MODULES_SIZE])[0]
    modules, at = b"", MODULES_HEADER
    while at < end:
        header = bytearray(stream[at:at + MODULE_HEADER])
        module, archive = stream[at + MODULE_HEADER:end].split(b"\0", 2)[:2]
        if module == LINKER:
            number, records_end = struct.unpack_from("<HI", header, MODULE_STREAM)
            streams[number] = streams[number][:RECORDS] + streams[number][records_end:]
            struct.pack_into("<I", header, MODULE_STREAM + 2, RECORDS)
        names = b"".join(rename(path, folders) + b"\0" for path in (module, archive))
        modules += header + names + bytes(-len(names) % 4)
        size = MODULE_HEADER + len(module) + len(archive) + 2
        at += size + -size % 4
    header = bytearray(stream[:MODULES_HEADER])
    header[MODULES_SIZE] = struct.pack("<I", len(modules))
    streams[MODULES_STREAM] = bytes(header) + modules + stream[end:]


def write_streams(block_size, streams):
    """Two blocks of each interval tell free blocks from used ones: none is free, so all their bits are 0."""
    image = [bytes(block_size)] * 3

    def store(content):
        numbers = []
        for start in range(0, len(content), block_size):
            while len(image) % block_size in (1, 2):
                image.append(bytes(block_size))
            numbers.append(len(image))
            image.append(content[start:start + block_size].ljust(block_size, b"\0"))
        return numbers

    blocks = [number for stream in streams for number in store(stream)]
    directory = struct.pack(f"<{1 + len(streams) + len(blocks)}I", len(streams), *map(len, streams), *blocks)
    directory_blocks = store(directory)
    map_block, = store(struct.pack(f"<{len(directory_blocks)}I", *directory_blocks))
    image[0] = HEADER.pack(MAGIC, block_size, 1, len(image), len(directory), 0, map_block).ljust(block_size, b"\0")
    return b"".join(image)


def main(file, *mappings):
    path = pathlib.Path(file)
    block_size, streams = read_streams(path.read_bytes())
    info = bytearray(streams[INFO_STREAM])
    info[SIGNATURE] = bytes(4)
    streams[INFO_STREAM] = bytes(info)
    folders = [tuple(part.encode() for part in mapping.rsplit("=", 1)) for mapping in mappings]
    tidy_modules(streams, folders)
    path.write_bytes(write_streams(block_size, streams))


if __name__ == "__main__":
    main(*sys.argv[1:])
