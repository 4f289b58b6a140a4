"""Gives the build product families of other makers: broken ones, which it must name, and good ones."""

import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

from support import pe

REPOSITORY = pathlib.Path(__file__).parent.parent
SAMPLE = REPOSITORY / "product_family" / "sample"
BACKGROUNDS = [f"background_{number}.bmp" for number in (332, 333, 335, 343, 1077)]
PROJECT = f"""\
cmake_minimum_required(VERSION 3.25)
project(Check NONE)
include("{REPOSITORY.as_posix()}/cmake/CheckProductFamily.cmake")
check_product_family("${{PRODUCT_FAMILY_DIR}}")
"""


def patched(offset, layout, value):
    """Puts a number into a file."""
    def change(path):
        data = bytearray(path.read_bytes())
        struct.pack_into(layout, data, offset, value)
        path.write_bytes(data)
    return change


def replaced(old, new, count=-1):
    """Replaces a text in a file that holds it."""
    def change(path):
        text = path.read_text("utf-8")
        assert old in text, f"{path.name} has no {old}"
        path.write_text(text.replace(old, new, count), "utf-8")
    return change


def holding(data):
    return lambda path: path.write_bytes(data)


def icon_entry(index):
    return 6 + 16 * index


def folder_instead(path):
    path.unlink()
    path.mkdir()


class FamilyTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.family = self.folder / "family"
        self.renew_family()

    def renew_family(self):
        shutil.rmtree(self.family, ignore_errors=True)
        shutil.copytree(SAMPLE, self.family, ignore=shutil.ignore_patterns("artwork"))

    def run_cmake(self, *arguments):
        """Exit status and output; cmake wraps its messages, so white space is made one blank."""
        run = subprocess.run(["cmake", *map(str, arguments)], cwd=REPOSITORY, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, encoding="utf-8", check=False)
        return run.returncode, " ".join(run.stdout.split())

    def check_family(self):
        project = self.folder / "project"
        project.mkdir(exist_ok=True)
        (project / "CMakeLists.txt").write_text(PROJECT, "utf-8")
        return self.run_cmake("-G", "Ninja", "-S", project, "-B", project / "build",
                              f"-DPRODUCT_FAMILY_DIR={self.family}")


class BrokenFamilyTest(FamilyTest):
    def expect(self, name, change, sentence):
        with self.subTest(name, sentence=sentence):
            self.renew_family()
            change(self.family / name)
            status, output = self.check_family()
            self.assertNotEqual(status, 0, output)
            self.assertIn(sentence, output)
            self.assertEqual(output.count("CMake Error"), 1, output)

    def test_a_missing_file(self):
        for name in ["product_family.h", "library.ico", *BACKGROUNDS]:
            sentence = f"The product family's folder {self.family} has no file {name}."
            self.expect(name, pathlib.Path.unlink, sentence)
        self.expect("library.ico", folder_instead, f"{self.family} has no file library.ico.")

    def test_a_wrong_picture(self):
        no_bitmap = "is not an uncompressed bitmap."
        must_be = "it must be 726 x 463 with 24."
        cases = [
            (patched(18, "<i", 725), f"is 725 x 463 pixels with 24 bits each; {must_be}"),
            (patched(22, "<i", 464), f"is 726 x 464 pixels with 24 bits each; {must_be}"),
            (patched(28, "<H", 32), f"is 726 x 463 pixels with 32 bits each; {must_be}"),
            (patched(30, "<I", 1), no_bitmap),
            (holding(b"\x89PNG\r\n\x1a\n" + bytes(100)), no_bitmap),
            (holding(b""), no_bitmap),
            (lambda path: path.write_bytes(path.read_bytes()[:-1]), "is cut short."),
        ]
        for name, (change, sentence) in zip(BACKGROUNDS * 2, cases):
            self.expect(name, change, f"The product family's {self.family / name} {sentence}")

    def test_a_wrong_icon(self):
        cases = [
            (patched(icon_entry(0), "<B", 17), "has no 32-bit picture of these sizes: 16."),
            (patched(icon_entry(7), "<B", 255), "has no 32-bit picture of these sizes: 256."),
            (patched(icon_entry(2) + 6, "<H", 8), "has no 32-bit picture of these sizes: 32."),
            (patched(4, "<H", 6), "has no 32-bit picture of these sizes: 128, 256."),
            (patched(2, "<H", 2), "is not an icon."),
            (holding(b""), "is not an icon."),
        ]
        for change, sentence in cases:
            self.expect("library.ico", change, f"The product family's {self.family}/library.ico {sentence}")

    def test_a_wrong_header(self):
        key = 'L"draft20-7k2m9q-x4v8p1w",'
        cases = [(replaced(name, "Other"), f"does not define {name}.")
                 for name in ("ServiceBaseAddress", "RecordRegistryPath", "KnownApiKeys")]
        cases += [(replaced(key, text), f"has {count} texts in KnownApiKeys; there must be 6.")
                  for text, count in (("", 5), (key + key, 7))]
        for change, sentence in cases:
            self.expect("product_family.h", change,
                        f"The product family's {self.family}/product_family.h {sentence}")


class GoodFamilyTest(FamilyTest):
    def test_it_passes_without_a_word_unless_its_address_is_not_https(self):
        status, output = self.check_family()
        self.assertEqual((status, re.findall("CMake (?:Error|Warning)", output)), (0, []), output)
        replaced("https:", "http:")(self.family / "product_family.h")
        status, output = self.check_family()
        self.assertEqual(status, 0, output)
        self.assertIn("product_family.h is not https: good for tests alone.", output)

    def test_another_makers_library_is_built_from_outside_the_repository(self):
        theirs, samples = "https://updates.example.net/products", "https://127.0.0.1:18443"
        replaced(samples, theirs)(self.family / "product_family.h")
        picture = self.family / "background_332.bmp"
        sample_picture = picture.read_bytes()
        picture.write_bytes(sample_picture[:54] + b"\x40" * (len(sample_picture) - 54))
        build = self.folder / "build"
        quick = [f"-DCMAKE_{language}_FLAGS_MINSIZEREL=-O0" for language in ("C", "CXX")]
        for arguments in (["--preset", "mingw", "-B", build, f"-DPRODUCT_FAMILY_DIR={self.family}",
                           "-DBUILD_TESTING=OFF", *quick],
                          ["--build", build, "--target", "ProductServices", "--parallel", 2]):
            status, output = self.run_cmake(*arguments)
            self.assertEqual(status, 0, f"cmake {arguments[0]}: {output[-3000:]}")
        library = pe.PeFile(build / "bin" / "ProductServices.dll")
        self.assertIn(theirs.encode("utf-16-le"), library.data)
        self.assertNotIn(samples.encode("utf-16-le"), library.data)
        self.assertTrue(library.resources()[pe.BITMAP, 332, 1033] == picture.read_bytes()[14:],
                        "the other family's picture is not in its library")


if __name__ == "__main__":
    unittest.main()
