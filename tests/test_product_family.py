"""Gives the build product families of other makers: broken ones, which it must name."""

import shutil

from conftest import REPOSITORY, run

HEADER, ICON, BITMAP = "product_family.h", "library.ico", "background_335.bmp"
FIRST_KEY, KEYS = b'L"draft20-7k2m9q-x4v8p1w",', "KnownApiKeys must be six keys"
PROJECT = f"""cmake_minimum_required(VERSION 3.25)
project(Check NONE)
include("{REPOSITORY}/cmake/CheckProductFamily.cmake")
check_product_family("${{CMAKE_SOURCE_DIR}}/family")"""


def copy_family(folder):
    return shutil.copytree(REPOSITORY / "product_family/sample", folder / "family", dirs_exist_ok=True)


def test_pictures_that_the_build_cannot_use_are_named(tmp_path):
    (tmp_path / "CMakeLists.txt").write_text(PROJECT, "utf-8")
    for name, offset, value, sentence in (
            (ICON, 0, b"", ""), *((name, 0, None, f"has no file {name}.") for name in (HEADER, ICON, BITMAP)),
            (BITMAP, 18, b"\xd5", f"{BITMAP} is 725 x 463 pixels with 24 bits each;"),
            (BITMAP, 22, b"\xd0\1\0\0\1\0\x20", f"{BITMAP} is 726 x 464 pixels with 32 bits each;"),
            (BITMAP, 30, b"\x01", f"{BITMAP} is not an uncompressed bitmap."),
            (BITMAP, -1, b"", f"{BITMAP} is cut short."),
            # The entry of the picture with 32 pixels, and the number of pictures.
            (ICON, 6 + 16 * 2 + 6, b"\x08", "sizes: 32."), (ICON, 4, b"\x06", "sizes: 128, 256."),
            (ICON, 2, b"\x02", f"{ICON} is not an icon.")):
        file = copy_family(tmp_path) / name
        good = file.read_bytes()
        file.unlink()
        if value is not None:
            file.write_bytes(good[:offset] + value + good[offset + len(value):len(good) + min(offset, 0)])
        status, output = run("cmake", "-G", "Ninja", "-S", tmp_path, "-B", tmp_path / "check")
        assert (status != 0, output.count("CMake Error")) == (bool(sentence),) * 2, output
        assert sentence in " ".join(output.split())  # cmake wraps its messages


def test_a_header_that_the_library_cannot_use_is_refused(tmp_path):
    header = copy_family(tmp_path) / HEADER
    good = header.read_bytes()
    for old, new, sentence in ((b"https:", b"http:", "ServiceBaseAddress must be an https address"),
                               (b':18443"', b':18443/"', "ServiceBaseAddress must not end with a slash"),
                               (b'Products"', b'Products\\\\"', "RecordRegistryPath must be the path of a key"),
                               (FIRST_KEY, b"nullptr,", KEYS), (FIRST_KEY, b'L"",', KEYS), (FIRST_KEY, b"", KEYS)):
        header.write_bytes(good.replace(old, new))
        status, output = run("x86_64-w64-mingw32-g++-posix", "-std=c++20", "-fsyntax-only", f"-I{header.parent}",
                             "-Isrc", "src/platform/family.cpp", cwd=REPOSITORY)
        assert status and sentence in output, (new, output)
