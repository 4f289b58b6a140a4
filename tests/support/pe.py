"""Reads what the tests ask about a 64-bit Windows program file."""

import struct

BITMAP, ICON, DIALOG, ICON_GROUP, VERSION = 2, 3, 5, 14, 16


class PeFile:
    """A PE32+ image: its header fields, exports, imports and resources."""

    def __init__(self, path):
        self.data = path.read_bytes()
        header, = self.unpack("<I", 0x3C)
        assert self.data[:2] == b"MZ" and self.data[header:header + 4] == b"PE\0\0", path
        self.machine, section_count = self.unpack("<HH", header + 4)
        optional_size, = self.unpack("<H", header + 20)
        optional = header + 24
        self.magic, = self.unpack("<H", optional)
        self.dll_characteristics, = self.unpack("<H", optional + 70)
        self.tables = optional + 112
        self.sections = [self.unpack("<IIII", optional + optional_size + 40 * i + 8)
                         for i in range(section_count)]

    def unpack(self, layout, offset):
        return struct.unpack_from(layout, self.data, offset)

    def offset(self, address):
        """Where in the file an address relative to the image is."""
        for _, start, size, position in self.sections:
            if start <= address < start + size:
                return address - start + position
        raise ValueError(f"no section holds address {address:#x}")

    def table(self, number):
        """The file offset of a data directory: 0 of the exports, 1 of the imports, 2 of the resources."""
        return self.offset(self.unpack("<I", self.tables + 8 * number)[0])

    def text(self, address):
        start = self.offset(address)
        return self.data[start:self.data.index(b"\0", start)].decode("ascii")

    def exports(self):
        """The names, sorted as the file has them, and the number of exported functions."""
        table = self.table(0)
        function_count, name_count, _, names = self.unpack("<IIII", table + 20)
        addresses = self.unpack(f"<{name_count}I", self.offset(names))
        return [self.text(address) for address in addresses], function_count

    def imports(self):
        """The names of the DLLs, in lower case."""
        dlls, entry = set(), self.table(1)
        while name := self.unpack("<I", entry + 12)[0]:
            dlls.add(self.text(name).lower())
            entry += 20
        return dlls

    def resources(self):
        """{(type, id, language): bytes}; all three are numbers."""
        root = self.table(2)

        def entries(table):
            named, numbered = self.unpack("<HH", table + 12)
            for i in range(named + numbered):
                number, child = self.unpack("<II", table + 16 + 8 * i)
                yield number, root + (child & 0x7FFFFFFF)

        found = {}
        for kind, kind_table in entries(root):
            for number, number_table in entries(kind_table):
                for language, leaf in entries(number_table):
                    address, size = self.unpack("<II", leaf)
                    start = self.offset(address)
                    found[kind, number, language] = self.data[start:start + size]
        return found
