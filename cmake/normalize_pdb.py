#!/usr/bin/env python3
"""Makes a PDB that GNU ld has written reproducible, so that two builds of the same sources result in the same bytes.

GNU ld 2.40 has only --pdb and no option for a reproducible PDB, neither for the time nor for the paths in it.
Converting the PDB with llvm-pdbutil (pdb2yaml, yaml2pdb) instead would lose the public symbols, which are all 2,229 of
ProductServices.dll.

    normalize_pdb.py FILE [FOLDER=NAME...]

ld writes the time of the build and the full paths of the files that it has linked. The time becomes 0. In a path below
FOLDER, NAME replaces FOLDER; if several match, the first one is used. A debugger matches a PDB with its DLL by the
GUID, which does not change: ld derives it from the content of the DLL.

The structures below have the names that LLVM's description of the PDB format gives them.
"""

import pathlib
import struct
import sys
import typing

INFO_STREAM, DBI_STREAM = 1, 3
INFO_SIGNATURE = slice(4, 8)  # the time of the build
UNUSED_STREAM = 0xFFFFFFFF  # the size of a stream that does not exist


class SuperBlock(typing.NamedTuple):
    """The first block of the file."""
    magic: bytes
    block_size: int
    free_block_map: int
    block_count: int
    directory_size: int
    reserved: int
    block_map: int  # the block with the numbers of the directory's blocks

    MAGIC = b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0"
    LAYOUT = struct.Struct(f"<{len(MAGIC)}s6I")


class Dbi:
    """The header of the stream that lists the modules, which are the linked object files."""
    HEADER_SIZE = 64
    MODULE_INFO_SIZE = slice(24, 28)


class ModuleInfo:
    """The header of a module. Two names follow it: the module's and that of its archive."""
    HEADER_SIZE = 64
    SYMBOLS = struct.Struct("<HI")  # the number of the module's stream, and the size of the symbols in it
    SYMBOLS_OFFSET = 34
    EMPTY_SYMBOLS_SIZE = 4  # a stream without symbols still has their signature
    LINKER = b"* Linker *"


def divide_rounding_up(dividend, divisor):
    return (dividend + divisor - 1) // divisor


def pad_to_words(data):
    return data + bytes(-len(data) % 4)


def read_blocks(data, block_size, numbers, size):
    blocks = [data[number * block_size:(number + 1) * block_size] for number in numbers]
    return b"".join(blocks)[:size]


def read_directory(data, super_block):
    block_size, size = super_block.block_size, super_block.directory_size
    count = divide_rounding_up(size, block_size)
    numbers = struct.unpack_from(f"<{count}I", data, super_block.block_map * block_size)
    directory = read_blocks(data, block_size, numbers, size)
    return struct.unpack(f"<{size // 4}I", directory)


def read_streams(data):
    """Returns the block size and the content of each stream."""
    super_block = SuperBlock(*SuperBlock.LAYOUT.unpack_from(data))
    if super_block.magic != SuperBlock.MAGIC:
        sys.exit("normalize_pdb.py: the file is not a PDB.")
    # The directory has the number of streams, their sizes, and then the blocks of each.
    stream_count, *rest = read_directory(data, super_block)
    sizes, block_numbers = rest[:stream_count], rest[stream_count:]
    streams = []
    for size in sizes:
        if size == UNUSED_STREAM:
            size = 0
        count = divide_rounding_up(size, super_block.block_size)
        streams.append(read_blocks(data, super_block.block_size, block_numbers[:count], size))
        block_numbers = block_numbers[count:]
    return super_block.block_size, streams


def replace_folder(path, folders):
    for folder, name in folders:
        if (path + b"/").startswith(folder + b"/"):
            return name + path[len(folder):]
    return path


def remove_symbols(header, streams):
    """Removes the symbols of the linker's own module, which contain the folder in which it ran."""
    number, size = ModuleInfo.SYMBOLS.unpack_from(header, ModuleInfo.SYMBOLS_OFFSET)
    empty = ModuleInfo.EMPTY_SYMBOLS_SIZE
    streams[number] = streams[number][:empty] + streams[number][size:]
    ModuleInfo.SYMBOLS.pack_into(header, ModuleInfo.SYMBOLS_OFFSET, number, empty)


def normalize_modules(streams, folders):
    dbi = streams[DBI_STREAM]
    module_info_size, = struct.unpack("<I", dbi[Dbi.MODULE_INFO_SIZE])
    rest = dbi[Dbi.HEADER_SIZE:Dbi.HEADER_SIZE + module_info_size]
    modules = b""
    while rest:
        header = bytearray(rest[:ModuleInfo.HEADER_SIZE])
        module, archive, _ = rest[ModuleInfo.HEADER_SIZE:].split(b"\0", 2)
        if module == ModuleInfo.LINKER:
            remove_symbols(header, streams)
        names = replace_folder(module, folders) + b"\0" + replace_folder(archive, folders) + b"\0"
        modules += pad_to_words(bytes(header) + names)
        rest = rest[len(pad_to_words(bytes(header) + module + b"\0" + archive + b"\0")):]
    dbi_header = bytearray(dbi[:Dbi.HEADER_SIZE])
    dbi_header[Dbi.MODULE_INFO_SIZE] = struct.pack("<I", len(modules))
    streams[DBI_STREAM] = bytes(dbi_header) + modules + dbi[Dbi.HEADER_SIZE + module_info_size:]


class Image:
    """The blocks of a new file: first the super block and the two free block maps, then those that are appended."""

    def __init__(self, block_size):
        self.block_size = block_size
        self.blocks = [bytes(block_size)] * 3

    def append(self, content):
        """Appends content, and returns the numbers of its blocks."""
        numbers = []
        for start in range(0, len(content), self.block_size):
            # Each interval of block_size blocks has two free block maps. No block is free, so all their bits are 0.
            while len(self.blocks) % self.block_size in (1, 2):
                self.blocks.append(bytes(self.block_size))
            numbers.append(len(self.blocks))
            self.blocks.append(content[start:start + self.block_size].ljust(self.block_size, b"\0"))
        return numbers


def write_streams(block_size, streams):
    image = Image(block_size)
    block_numbers = []
    for stream in streams:
        block_numbers += image.append(stream)
    numbers = [len(streams), *map(len, streams), *block_numbers]
    directory = struct.pack(f"<{len(numbers)}I", *numbers)
    directory_blocks = image.append(directory)
    block_map, = image.append(struct.pack(f"<{len(directory_blocks)}I", *directory_blocks))
    super_block = SuperBlock(SuperBlock.MAGIC, block_size, 1, len(image.blocks), len(directory), 0, block_map)
    image.blocks[0] = SuperBlock.LAYOUT.pack(*super_block).ljust(block_size, b"\0")
    return b"".join(image.blocks)


def main(file, *mappings):
    path = pathlib.Path(file)
    block_size, streams = read_streams(path.read_bytes())
    info = bytearray(streams[INFO_STREAM])
    info[INFO_SIGNATURE] = bytes(4)
    streams[INFO_STREAM] = bytes(info)
    folders = [tuple(part.encode() for part in mapping.rsplit("=", 1)) for mapping in mappings]
    normalize_modules(streams, folders)
    path.write_bytes(write_streams(block_size, streams))


if __name__ == "__main__":
    main(*sys.argv[1:])
