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
        for name, bit in (("HIGH_ENTROPY_VA", 0x20), ("DYNAMIC_BASE", 0x40), ("NX_COMPAT", 0x100)):
            self.assertTrue(self.file.dll_characteristics & bit, f"built without {name}")

    def test_it_exports_the_two_functions_and_needs_windows_alone(self):
        self.assertEqual(self.file.exports(), (["CheckForUpdates", "Upgrade"], 2))
        self.assertEqual(self.file.imports() - ALLOWED_IMPORTS, set(), "DLLs that Windows does not bring")
        self.assertIn("bcrypt.dll", self.file.imports())

    def test_its_icon_has_every_size(self):
        group = self.resource(pe.ICON_GROUP, 340)
        entries = list(struct.iter_unpack("<BBBBHHIH", group[6:]))
        self.assertEqual([width or 256 for width, *_ in entries], [16, 24, 32, 48, 64, 96, 128, 256])
        for width, height, _, _, _, depth, size, number in entries:
            self.assertEqual((height, depth), (width, 32))
            self.assertEqual(len(self.resource(pe.ICON, number)), size)

    def test_its_backgrounds_are_the_familys_pictures(self):
        for number in (332, 333, 335, 343, 1077):
            with self.subTest(number):
                bitmap = self.resource(pe.BITMAP, number)
                picture = REPOSITORY / "product_family" / "sample" / f"background_{number}.bmp"
                self.assertTrue(bitmap == picture.read_bytes()[14:], f"not the pixels of {picture.name}")

    def test_its_dialog_is_an_extended_template_with_four_controls(self):
        template = self.resource(pe.DIALOG, 331)
        version, signature, _, _, style, *size = struct.unpack_from("<HHIIIHhhhh", template)
        self.assertEqual((version, signature, size), (1, 0xFFFF, [4, 0, 0, 442, 259]))
        self.assertEqual(hex(style), "0x8088004c")  # a popup with border and system menu, no caption

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
