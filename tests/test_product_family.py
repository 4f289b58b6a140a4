"""Gives the build product families of other makers: broken ones, which it must name, and good ones."""

import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest

import pefile

from test_library_file import BITMAP, resource

REPOSITORY = pathlib.Path(__file__).parent.parent
PROJECT = f"""\
cmake_minimum_required(VERSION 3.25)
project(Check NONE)
include("{REPOSITORY.as_posix()}/cmake/CheckProductFamily.cmake")
check_product_family("${{PRODUCT_FAMILY_DIR}}")
"""
KEY = 'L"draft20-7k2m9q-x4v8p1w",'
MISSING_SIZES = "library.ico has no 32-bit picture of these sizes: "


def patched(offset, layout, value):
    """Puts a number into a file."""
    def change(path):
        data = bytearray(path.read_bytes())
        struct.pack_into(layout, data, offset, value)
        path.write_bytes(data)
    return change


def replaced(old, new):
    """Replaces a text in a file that holds it."""
    def change(path):
        text = path.read_text("utf-8")
        assert old in text, f"{path.name} has no {old}"
        path.write_text(text.replace(old, new), "utf-8")
    return change


class ProductFamilyTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.family = self.folder / "family"
        self.renew_family()

    def renew_family(self):
        shutil.rmtree(self.family, ignore_errors=True)
        shutil.copytree(REPOSITORY / "product_family" / "sample", self.family,
                        ignore=shutil.ignore_patterns("artwork"))

    def run_cmake(self, *arguments):
        """Exit status and output; cmake wraps its messages, so white space is made one blank."""
        run = subprocess.run(["cmake", *map(str, arguments)], cwd=REPOSITORY, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, encoding="utf-8", check=False)
        return run.returncode, " ".join(run.stdout.split())

    def check_family(self):
        (self.folder / "CMakeLists.txt").write_text(PROJECT, "utf-8")
        return self.run_cmake("-G", "Ninja", "-S", self.folder, "-B", self.folder / "check",
                              f"-DPRODUCT_FAMILY_DIR={self.family}")

    def test_what_is_wrong_with_a_broken_family_is_named(self):
        header, icon, bitmap = "product_family.h", "library.ico", "background_335.bmp"
        for name, change, sentence in (
                *((name, pathlib.Path.unlink, f"folder {self.family} has no file {name}.")
                  for name in (header, icon, "background_332.bmp", "background_1077.bmp")),
                (bitmap, patched(18, "<i", 725), f"{bitmap} is 725 x 463 pixels with 24 bits each;"),
                (bitmap, patched(22, "<i", 464), f"{bitmap} is 726 x 464 pixels with 24 bits each;"),
                (bitmap, patched(28, "<H", 32), f"{bitmap} is 726 x 463 pixels with 32 bits each;"),
                (bitmap, patched(30, "<I", 1), f"{bitmap} is not an uncompressed bitmap."),
                (bitmap, lambda path: path.write_bytes(b""), f"{bitmap} is not an uncompressed bitmap."),
                (bitmap, lambda path: path.write_bytes(path.read_bytes()[:-1]), f"{bitmap} is cut short."),
                # The entry of the picture with 32 pixels, and the number of pictures.
                (icon, patched(6 + 16 * 2 + 6, "<H", 8), f"{MISSING_SIZES}32."),
                (icon, patched(4, "<H", 6), f"{MISSING_SIZES}128, 256."),
                (icon, patched(2, "<H", 2), f"{icon} is not an icon."),
                (header, replaced("KnownApiKeys", "Other"), f"{header} does not define KnownApiKeys."),
                (header, replaced(KEY, ""), f"{header} has 5 texts in KnownApiKeys; there must be 6.")):
            with self.subTest(name, sentence=sentence):
                self.renew_family()
                change(self.family / name)
                status, output = self.check_family()
                self.assertNotEqual(status, 0, output)
                self.assertIn(sentence, output)
                self.assertEqual(output.count("CMake Error"), 1, output)

    def test_a_good_family_passes_without_a_word_unless_its_address_is_not_https(self):
        warning = "CMake Warning"
        status, output = self.check_family()
        self.assertEqual((status, output.count(warning)), (0, 0), output)
        replaced("https:", "http:")(self.family / "product_family.h")
        status, output = self.check_family()
        self.assertEqual((status, output.count(warning)), (0, 1), output)

    def test_another_makers_library_is_built_from_outside_the_repository(self):
        theirs, samples = "https://updates.example.net/products", "https://127.0.0.1:18443"
        replaced(samples, theirs)(self.family / "product_family.h")
        picture = self.family / "background_332.bmp"
        patched(1000, "<I", 0x40404040)(picture)
        build = self.folder / "build"
        quick = [f"-DCMAKE_{language}_FLAGS_MINSIZEREL=-O0" for language in ("C", "CXX")]
        for arguments in (["--preset", "mingw", "-B", build, f"-DPRODUCT_FAMILY_DIR={self.family}",
                           "-DBUILD_TESTING=OFF", *quick],
                          ["--build", build, "--target", "ProductServices", "--parallel", 2]):
            status, output = self.run_cmake(*arguments)
            self.assertEqual(status, 0, f"cmake {arguments[0]}: {output[-3000:]}")
        library = build / "bin" / "ProductServices.dll"
        self.assertIn(theirs.encode("utf-16-le"), library.read_bytes())
        self.assertNotIn(samples.encode("utf-16-le"), library.read_bytes())
        self.assertTrue(resource(pefile.PE(library), BITMAP, 332) == picture.read_bytes()[14:],
                        "the other family's picture is not in its library")


if __name__ == "__main__":
    unittest.main()
