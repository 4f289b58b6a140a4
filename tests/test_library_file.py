"""Looks into the built ProductServices.dll: what a host and Windows find there."""

import os
import pathlib
import re
import struct
import unittest

from support import pe

REPOSITORY = pathlib.Path(__file__).parent.parent
ENGLISH_US = 1033
ALLOWED_IMPORTS = {f"{name}.dll" for name in (
    "advapi32", "bcrypt", "comctl32", "crypt32", "gdi32", "kernel32", "msvcrt", "ole32", "oleaut32",
    "shell32", "shlwapi", "user32", "ws2_32")}


class Reader:
    """Takes a dialog template's fields one after the other."""

    def __init__(self, data):
        self.data, self.position = data, 0

    def take(self, layout):
        fields = struct.unpack_from("<" + layout, self.data, self.position)
        self.position += struct.calcsize("<" + layout)
        return fields if len(fields) > 1 else fields[0]

    def text_or_number(self):
        """A text up to its NUL, or the number that stands for one after 0xFFFF."""
        units = []
        while unit := self.take("H"):
            if unit == 0xFFFF:
                return self.take("H")
            units.append(unit)
        return "".join(map(chr, units))

    def align(self):
        self.position = (self.position + 3) & ~3


def read_control(reader):
    """(id, class, (x, y, width, height), style, text) of the next control."""
    reader.align()
    _help, _extended, style = reader.take("III")
    rectangle, number = reader.take("hhhh"), reader.take("I")
    window_class, text = reader.text_or_number(), reader.text_or_number()
    extra_size = reader.take("H")
    reader.position += extra_size
    if isinstance(window_class, str):
        window_class = window_class.lower()  # its case means nothing, and windres changes it
    return number, window_class, rectangle, hex(style), text


class LibraryFileTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.file = pe.PeFile(pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"], "ProductServices.dll"))
        cls.resources = cls.file.resources()

    def resource(self, kind, number):
        key = (kind, number, ENGLISH_US)
        self.assertIn(key, self.resources, "no such (type, id, language) in the library")
        return self.resources[key]

    def test_it_is_a_64_bit_library_for_hardened_processes(self):
        self.assertEqual((hex(self.file.machine), hex(self.file.magic)), ("0x8664", "0x20b"))
        self.assertTrue(self.file.characteristics & 0x2000, "not marked as a DLL")
        for name, bit in (("HIGH_ENTROPY_VA", 0x20), ("DYNAMIC_BASE", 0x40), ("NX_COMPAT", 0x100)):
            self.assertTrue(self.file.dll_characteristics & bit, f"built without {name}")

    def test_it_exports_the_two_functions_and_needs_windows_alone(self):
        self.assertEqual(self.file.exports(), (["CheckForUpdates", "Upgrade"], 2))
        self.assertEqual(self.file.imports() - ALLOWED_IMPORTS, set(), "DLLs that Windows does not bring")
        self.assertIn("bcrypt.dll", self.file.imports())

    def test_its_icon_has_every_size(self):
        group = self.resource(pe.ICON_GROUP, 340)
        _, kind, count = struct.unpack_from("<HHH", group)
        self.assertEqual((kind, len(group)), (1, 6 + 14 * count))
        sizes = []
        for i in range(count):
            width, height, _, _, _, depth, size, number = struct.unpack_from("<BBBBHHIH", group, 6 + 14 * i)
            self.assertEqual((depth, height), (32, width), f"picture {i + 1}: depth and height")
            self.assertEqual(len(self.resource(pe.ICON, number)), size)
            sizes.append(width or 256)
        self.assertEqual(sorted(sizes), [16, 24, 32, 48, 64, 96, 128, 256])

    def test_its_backgrounds_are_the_familys_pictures(self):
        for number in (332, 333, 335, 343, 1077):
            with self.subTest(number):
                bitmap = self.resource(pe.BITMAP, number)
                self.assertEqual(struct.unpack_from("<IiiHH", bitmap), (40, 726, 463, 1, 24))
                picture = REPOSITORY / "product_family" / "sample" / f"background_{number}.bmp"
                self.assertTrue(bitmap == picture.read_bytes()[14:], f"not the pixels of {picture.name}")

    def test_its_dialog_is_the_upgrade_center(self):
        reader = Reader(self.resource(pe.DIALOG, 331))
        self.assertEqual(reader.take("HH"), (1, 0xFFFF), "not an extended template")
        _help, _extended, style, count, *rectangle = reader.take("IIIHhhhh")
        self.assertEqual(hex(style), "0x8088004c")  # a popup with border and system menu, no caption
        self.assertEqual((rectangle, count), ([0, 0, 442, 259], 4))
        menu, window_class, caption = (reader.text_or_number() for _ in range(3))
        self.assertEqual((menu, window_class, caption), ("", "", ""))
        self.assertEqual(reader.take("HHBB"), (8, 400, 0, 1))
        self.assertEqual(reader.text_or_number(), "MS Shell Dlg")
        button, label, visible_child = 0x80, 0x82, 0x50000000
        tab_stop, group, border = 0x10000, 0x20000, 0x800000
        report_single_left = 0x1 | 0x4 | 0x800
        self.assertEqual([read_control(reader) for _ in range(count)], [
            (1, button, (316, 238, 50, 14), hex(visible_child | tab_stop | 1), "Upgrade"),
            (2, button, (376, 238, 50, 14), hex(visible_child | tab_stop), "Cancel"),
            (1031, "syslistview32", (166, 30, 259, 201),
             hex(visible_child | tab_stop | border | report_single_left), ""),
            (1021, label, (167, 13, 258, 8), hex(visible_child | group), "Static"),
        ])

    def test_its_version_is_the_public_headers(self):
        header = (REPOSITORY / "include/product_services/version.h").read_text("utf-8")
        version = [int(re.search(rf"PRODUCT_SERVICES_VERSION_{part} (\d+)", header)[1])
                   for part in ("MAJOR", "MINOR", "PATCH")]
        data = self.resource(pe.VERSION, 1)
        fixed = data.index(struct.pack("<I", 0xFEEF04BD))
        minor, major, build, patch = struct.unpack_from("<HHHH", data, fixed + 8)
        self.assertEqual([major, minor, patch, build], [*version, 0])
        shown = "FileVersion\0" + ".".join(map(str, version)) + "\0"
        self.assertIn(shown, data.decode("utf-16-le").replace("\0\0", "\0"))


if __name__ == "__main__":
    unittest.main()
