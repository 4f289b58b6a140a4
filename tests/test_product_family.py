"""Gives the build's checks what other makers may bring: what cannot be used must be refused with its reason."""

import sys

from conftest import REPOSITORY, run

SAMPLE = REPOSITORY / "product_family/sample"
ICON, BITMAP = "library.ico", "background_335.bmp"


def test_pictures_that_the_build_cannot_use_are_named(tmp_path):
    icon, bitmap = (SAMPLE / ICON).read_bytes(), (SAMPLE / BITMAP).read_bytes()
    for name, data, sentence in (
            (BITMAP, None, f"has no file {BITMAP}."), (BITMAP, bitmap, ""), (ICON, icon, ""),
            (BITMAP, bitmap[:18] + b"\xd5" + bitmap[19:], f"{BITMAP} is 725 x 463 pixels with 24 bits each;"),
            (BITMAP, bitmap[:30] + b"\1" + bitmap[31:], f"{BITMAP} is not an uncompressed bitmap."),
            (BITMAP, bitmap[:-1], f"{BITMAP} is cut short."), (ICON, icon[:4] + b"\6" + icon[5:], "sizes: 128, 256.")):
        if data:
            (tmp_path / name).write_bytes(data)
        status, output = run(sys.executable, "-B", REPOSITORY / "cmake/check_product_family.py", tmp_path, name)
        assert (status != 0) == bool(output) == bool(sentence) and sentence in output, (sentence, output)


def test_a_header_that_the_build_cannot_use_is_refused_by_the_compiler(tmp_path):
    good, compiler = (SAMPLE / "product_family.h").read_text("utf-8"), "x86_64-w64-mingw32-g++-posix -std=c++20 -I."
    for old, new, sentence in (("", "", ""), ("https:", "http:", "ServiceBaseAddress must be an https address"),
                               ('Products"', 'Products\\\\"', "RecordRegistryPath must be the path of a key"),
                               ('L"draft20-7k2m9q-x4v8p1w"', "nullptr", "KnownApiKeys must be six keys")):
        (tmp_path / "product_family.h").write_text(good.replace(old, new), "utf-8")
        status, output = run(*compiler.split(), "-fsyntax-only", f"-I{REPOSITORY}/src", f"-I{REPOSITORY}/include",
                             REPOSITORY / "src/platform/family.cpp", cwd=tmp_path)
        assert (status != 0) == bool(sentence) and sentence in output, (sentence, output)
