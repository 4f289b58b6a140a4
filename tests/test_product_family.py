"""Product families of other vendors: invalid ones are rejected, and special characters survive."""

import os
import re
import shutil
import sys

import pytest

from conftest import REPOSITORY, debian_only, load_cases, parametrize_from, replace_once, run

sys.path.insert(0, f"{REPOSITORY}/cmake")
import product_family  # noqa: E402

SAMPLE = REPOSITORY / "product_family/sample"
# A product family with characters that have a meaning in CMake, C, C++, resource scripts, XML, JSON, Markdown or a
# shell, and with characters of one to four bytes.
SPECIAL_FAMILY = REPOSITORY / "tests/product_family/special_characters.json"
SAMPLE_JSON = (SAMPLE / "product_family.json").read_text("utf-8")
IMAGES = ("library.ico", *(f"background_{number}.bmp" for number in (332, 333, 335, 343, 1077)))
PLAIN_LOCALE = {**os.environ, "LC_ALL": "C"}
CONFIGURE = """cmake_minimum_required(VERSION 3.25)
list(APPEND CMAKE_MODULE_PATH "${REPOSITORY}/cmake")
include(ProductFamily)
make_family_headers("product_family.json" headers)
check_family_images(.)
message(FATAL_ERROR "not reached")
"""


@pytest.fixture
def family(tmp_path):
    """Returns a copy of the sample's family file, with its images in the same folder."""
    for name in IMAGES:
        (tmp_path / name).symlink_to(SAMPLE / name)
    return shutil.copy(SAMPLE / "product_family.json", tmp_path / "product_family.json")


@pytest.fixture
def check(family, tmp_path, monkeypatch):
    """Checks the family as the build does, and returns the error message."""
    monkeypatch.chdir(tmp_path)

    def run_check(*options):
        try:
            for arguments in (["headers", "product_family.json", "headers", *options], ["images", "."]):
                monkeypatch.setattr(sys, "argv", ["product_family.py", *arguments])
                product_family.main()
        except SystemExit as error:
            return str(error)
        return ""
    return run_check


def configure(folder):
    (folder / "check.cmake").write_text(CONFIGURE)
    status, output = run("cmake", f"-DREPOSITORY={REPOSITORY}", f"-DPython3_EXECUTABLE={sys.executable}",
                         "-P", "check.cmake", cwd=folder, env=PLAIN_LOCALE)
    assert status != 0
    return " ".join(output.split())


def test_configuration_stops_with_the_message_of_the_first_problem(family, tmp_path):
    assert "not reached" in configure(tmp_path)
    (tmp_path / "library.ico").unlink()
    output = configure(tmp_path)
    assert "library.ico: file not found in PRODUCT_FAMILY_DIR." in output and "not reached" not in output
    replace_once(family, "Example Draft", "")
    output = configure(tmp_path)
    assert "product_family.json: product must not be empty." in output and "library.ico" not in output


@parametrize_from("product_family/invalid_families.json", "find, replace, message")
def test_invalid_family_is_rejected(check, family, find, replace, message):
    replace_once(family, find, replace)
    assert f"product_family.json: {message}" in check()


def test_family_in_another_encoding_is_rejected(check, family):
    family.write_bytes(SAMPLE_JSON.replace("Draft", "Möbel").encode("latin-1"))
    assert "product_family.json: line 4 is not valid UTF-8." in check()


def test_missing_family_is_reported(check, family):
    family.unlink()
    assert "product_family.json: file not found in PRODUCT_FAMILY_DIR." in check()


def test_deeply_nested_family_is_rejected(check, family):
    family.write_text("[" * 100000, "utf-8")
    assert "product_family.json: invalid JSON: nested too deeply." in check()


def test_byte_order_mark_is_accepted(check, family):
    replace_once(family, "^", "\ufeff")
    assert check() == ""


def test_family_of_the_tests_may_use_http(check, family):
    replace_once(family, "https:", "http:")
    assert check("--allow-http") == ""


@pytest.mark.parametrize("name", IMAGES)
def test_missing_image_is_reported(check, tmp_path, name):
    (tmp_path / name).unlink()
    assert f"{name}: file not found in PRODUCT_FAMILY_DIR." in check()


@parametrize_from("product_family/invalid_images.json", "image, at, bytes, message")
def test_invalid_image_is_rejected(check, tmp_path, image, at, bytes, message):
    data = bytearray((SAMPLE / image).read_bytes())
    new = bytearray.fromhex(bytes)
    data[at:at + len(new)] = new
    (tmp_path / image).unlink()
    (tmp_path / image).write_bytes(data)
    assert f"{image}: {message}" in check()


@debian_only
def test_special_characters_survive(check, family, tmp_path):
    shutil.copy(SPECIAL_FAMILY, family)
    assert check() == ""
    (tmp_path / "host.cpp").write_text("""#include "sample_product.h"
        extern const wchar_t* const Host[]{
            SAMPLE_PRODUCT_NAME, L"Example Maker", L"Software\\\\Example Maker\\\\Products"};""")
    assert run(sys.executable, "-B", REPOSITORY / "cmake/brand_package.py", SAMPLE / "product_family.json",
               "product_family.json", ".", cwd=tmp_path) == (0, "")
    sources = [REPOSITORY / folder for folder in ("src", "src/ui", "include", "product_family")]
    folders = [f"-I{folder}" for folder in (".", "headers", *sources)]
    assert run("x86_64-w64-mingw32-windres", *folders, REPOSITORY / "guard/product_services_guard.rc", "version.o",
               cwd=tmp_path, env=PLAIN_LOCALE) == (0, "")
    assert run("x86_64-w64-mingw32-g++-posix", "-std=c++20", *folders, "-c", REPOSITORY / "src/platform/family.cpp",
               "host.cpp", cwd=tmp_path, env=PLAIN_LOCALE) == (0, "")
    special = load_cases("product_family/special_characters.json")
    maker, path = special["maker"], special["record_registry_path"]
    for name, texts in {"family.o": [special["service_base_address"], path, *special["known_api_keys"]],
                        "host.o": [special["product"], maker, path],
                        "version.o": [maker, f"{maker} ProductServices", special["package_id"]]}.items():
        data = (tmp_path / name).read_bytes()
        assert [text for text in texts if f"{text}\0".encode("utf-16-le") not in data] == [], name


@debian_only
@parametrize_from("product_family/dependencies.json", "target, inputs")
def test_build_depends_on_the_family(build, target, inputs):
    listed = run("ninja", "-C", build, "-t", "inputs", target)[1]
    # Names with a blank in their path stand in quotation marks.
    assert [name for name in inputs if not re.search(rf"(?m)/{re.escape(name)}'?$", listed)] == []
