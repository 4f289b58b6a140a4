"""Looks into the built ProductServices.dll: what a host and Windows find there."""

import os
import pathlib
import re
import struct
import unittest

import pefile

REPOSITORY = pathlib.Path(__file__).parent.parent
BITMAP, ICON, ICON_GROUP, ENGLISH_US = 2, 3, 14, 1033
ALLOWED_IMPORTS = {f"{name}.dll".encode() for name in (
    "advapi32", "bcrypt", "comctl32", "crypt32", "gdi32", "kernel32", "msvcrt", "ole32", "oleaut32",
    "shell32", "shlwapi", "user32", "ws2_32")}


def resource(file, kind, number):
    """The bytes of an English resource."""
    level = file.DIRECTORY_ENTRY_RESOURCE
    for wanted in (kind, number, ENGLISH_US):
        found, = (entry for entry in level.entries if entry.id == wanted)
        level = getattr(found, "directory", None)
    return file.get_data(found.data.struct.OffsetToData, found.data.struct.Size)


class LibraryFileTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.file = pefile.PE(pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"], "ProductServices.dll"))

    def test_it_is_a_64_bit_library_for_hardened_processes(self):
        self.assertEqual(self.file.FILE_HEADER.Machine, pefile.MACHINE_TYPE["IMAGE_FILE_MACHINE_AMD64"])
        for name in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
            self.assertTrue(getattr(self.file.OPTIONAL_HEADER, f"IMAGE_DLLCHARACTERISTICS_{name}"), name)

    def test_it_exports_the_two_functions_and_needs_windows_alone(self):
        exports = [symbol.name for symbol in self.file.DIRECTORY_ENTRY_EXPORT.symbols]
        self.assertEqual(exports, [b"CheckForUpdates", b"Upgrade"])
        imports = {entry.dll.lower() for entry in self.file.DIRECTORY_ENTRY_IMPORT}
        self.assertEqual(imports - ALLOWED_IMPORTS, set(), "DLLs that Windows does not bring")

    def test_its_icon_has_every_size(self):
        entries = list(struct.iter_unpack("<BBBBHHIH", resource(self.file, ICON_GROUP, 340)[6:]))
        self.assertEqual([width or 256 for width, *_ in entries], [16, 24, 32, 48, 64, 96, 128, 256])
        for width, height, _, _, _, depth, size, number in entries:
            self.assertEqual((height, depth), (width, 32))
            self.assertEqual(len(resource(self.file, ICON, number)), size)

    def test_its_backgrounds_are_the_familys_pictures(self):
        for number in (332, 333, 335, 343, 1077):
            picture = REPOSITORY / "product_family" / "sample" / f"background_{number}.bmp"
            self.assertTrue(resource(self.file, BITMAP, number) == picture.read_bytes()[14:], picture.name)

    def test_its_version_is_the_public_headers(self):
        header = (REPOSITORY / "include/product_services/version.h").read_text("utf-8")
        version = [int(re.search(rf"PRODUCT_SERVICES_VERSION_{part} (\d+)", header)[1])
                   for part in ("MAJOR", "MINOR", "PATCH")]
        fixed = self.file.VS_FIXEDFILEINFO[0]
        self.assertEqual([fixed.FileVersionMS, fixed.FileVersionLS], [version[0] << 16 | version[1], version[2] << 16])
        shown = self.file.FileInfo[0][0].StringTable[0].entries[b"FileVersion"]
        self.assertEqual(shown.decode(), ".".join(map(str, version)))


if __name__ == "__main__":
    unittest.main()
