"""Gives the build what other makers may bring: what cannot be used is refused, and odd texts arrive whole."""

import json
import os
import sys

import pytest

from conftest import REPOSITORY, STRANGE_FAMILY, run

SAMPLE = REPOSITORY / "product_family/sample"
SAMPLE_JSON = (SAMPLE / "product_family.json").read_text("utf-8")
PICTURES = ("library.ico", *(f"background_{number}.bmp" for number in (332, 333, 335, 343, 1077)))
VERSION_FILES = {"version_info.rc", "family_names.h", "version.h"}
PLAIN_LOCALE = {**os.environ, "LC_ALL": "C"}
CHECK = """cmake_minimum_required(VERSION 3.25)
list(APPEND CMAKE_MODULE_PATH "${REPOSITORY}/cmake")
include(ProductFamily)
make_family_headers("product_family.json" headers ${ALLOWED})
check_family_pictures(.)
"""


@pytest.fixture
def check(tmp_path):
    """Runs the build's check of a family with the sample's pictures, as a CMake script. Gives what it says."""
    (tmp_path / "check.cmake").write_text(CHECK)
    for name in PICTURES:
        (tmp_path / name).symlink_to(SAMPLE / name)

    def run_check(family, allowed=""):
        if family is not None:
            (tmp_path / "product_family.json").write_bytes(family if isinstance(family, bytes) else family.encode())
        status, output = run("cmake", f"-DREPOSITORY={REPOSITORY}", f"-DPython3_EXECUTABLE={sys.executable}",
                             f"-DALLOWED={allowed}", "-P", "check.cmake", cwd=tmp_path, env=PLAIN_LOCALE)
        assert bool(status) == bool(output), output
        return " ".join(output.split())
    return run_check


def edited(old, new):
    assert old in SAMPLE_JSON
    return SAMPLE_JSON.replace(old, new)


def with_keys(keys):
    return json.dumps({**json.loads(SAMPLE_JSON), "known_api_keys": keys})


EXAMPLE = "such as https://updates.example.com."
STRUCTURE = "the file must be one JSON object with nothing behind it, no comments and no comma too many."
NO_TEXT = "product must be a text in UTF-8 without control characters."
ADDRESS_PARTS = "service_base_address must be a host, a port and a path in the characters of an address: no"
REGISTRY_PATH = "record_registry_path must be a registry path such as Software\\Example Maker\\Products, with single"
REFUSED_FAMILIES = {
    "no file": (None, "the file must be there, in the folder that PRODUCT_FAMILY_DIR"),
    "an empty file": ("", "the file must be JSON, and is not in line 1, column 1: Syntax error"),
    "a comma missing": (edited('Draft",', 'Draft"'), "the file must be JSON, and is not in line 5, column 3: Missing"),
    "an array": ("[]", "the file must be one JSON object, and is of JSON's type array."),
    "a comma too many": (edited("]\n}", "],\n}"), STRUCTURE),
    "two objects": (SAMPLE_JSON + "{}", STRUCTURE),
    "a comment": ("/* ours */" + SAMPLE_JSON, STRUCTURE),
    "no member": ("{}", "the member maker is missing; the members must be maker, package_id,"),
    "a missing member": (edited('"product": "Example Draft",', ""), "the member product is missing; the members must"),
    "an unknown member": (edited('"maker"', '"M"'), 'the member "M" is unknown; the members must be maker'),
    "a member twice": (edited("{", '{"maker" : "B",'), "the member maker must be there once, and is there 2 times."),
    "a number": (edited('"Example Maker"', "7"), "maker must be a text in quotes, and is of JSON's type number."),
    "a blank maker": (edited('"Example Maker"', '" "'), "maker must be a text that is not empty."),
    "an empty product": (edited('"Example Draft"', '""'), "product must be a text that is not empty."),
    "a control character of Latin-1": (edited("Example Draft", "Draft\u0085"), NO_TEXT),
    "another encoding": (edited("Example Draft", "Möbel").encode("latin-1"), NO_TEXT),
    "a package id with two dots": (edited("eMaker.", "eMaker.."), "package_id must be letters and digits with"),
    "http": (edited("https:", "http:"), f"service_base_address must be an https address, {EXAMPLE}"),
    "no host": (edited("localhost", ""), f"service_base_address must name a host, {EXAMPLE}"),
    "a slash": (edited(":18443", "/"), f"service_base_address must end without a slash, {EXAMPLE}"),
    "an address with a blank": (edited("localhost:", "local host:"), ADDRESS_PARTS),
    "an address with a query": (edited(":18443", "/a?b"), ADDRESS_PARTS),
    "an address with a stray percent sign": (edited(":18443", "/50%"), ADDRESS_PARTS),
    "a high port": (edited(":18443", ":65536"), "service_base_address must have a port up to 65535."),
    "no registry path": (edited("Software\\\\Example Maker\\\\Products", ""), "record_registry_path must be a text"),
    "a backslash before the registry path": (edited('"Software', '"\\\\Software'), REGISTRY_PATH),
    "a backslash behind the registry path": (edited('Products"', 'Products\\\\"'), REGISTRY_PATH),
    "a doubled backslash": (edited("e\\\\", "e\\\\\\\\"), REGISTRY_PATH),
    "a blank behind the registry path": (edited('Products"', 'Products "'), REGISTRY_PATH),
    "a key for all": (with_keys("A"), "known_api_keys must be an array of six keys, and is of JSON's type string."),
    "five keys": (with_keys([*"ABCDE"]), "known_api_keys must be six keys, and is 5."),
    "seven keys": (with_keys([*"ABCDEFG"]), "known_api_keys must be six keys, and is 7."),
    "a null": (with_keys([*"ABCDE", None]), "known_api_keys: key 6 must be a text in quotes, and is of JSON's type"),
    "an empty key": (with_keys([*"ABC", "", *"EF"]), "known_api_keys: key 4 must be a text that is not empty."),
    "a key twice": (with_keys([*"ABCDEA"]), "known_api_keys must be six different keys, and keys 1 and 6 are the"),
    "an emoji": (with_keys([*"ABCDE", "😀"]), "known_api_keys: key 6 must be in characters of the basic plane, as no"),
}


@pytest.mark.parametrize("family, sentence", REFUSED_FAMILIES.values(), ids=REFUSED_FAMILIES)
def test_a_family_that_cannot_be_used_is_refused_with_one_sentence(check, family, sentence):
    assert f"product_family.json: {sentence}" in check(family)


def test_a_byte_order_mark_is_taken(check):
    assert check("\ufeff" + SAMPLE_JSON) == ""


def test_the_tests_own_family_may_go_without_tls(check):
    assert check(edited("https:", "http:"), allowed="http") == ""


@pytest.mark.parametrize("name", PICTURES)
def test_a_picture_that_is_missing_is_named(check, tmp_path, name):
    (tmp_path / name).unlink()
    assert f"has no file {name}." in check(SAMPLE_JSON)


BITMAP, ICON = "background_335.bmp", "library.ico"
REFUSED_PICTURES = {
    "no bitmap": (BITMAP, 0, b"PM", "is not an uncompressed bitmap."),
    "a compressed bitmap": (BITMAP, 30, b"\1", "is not an uncompressed bitmap."),
    "a narrow bitmap": (BITMAP, 18, b"\xd5", "is 725 x 463 pixels with 24 bits each; it must be 726 x 463 with 24."),
    "a bitmap upside down": (BITMAP, 22, b"\x31\xfe\xff\xff", "is stored from the top down; it must be from the"),
    "half a bitmap": (BITMAP, 10, b"\x37", "is cut short."),
    "a pointer": (ICON, 2, b"\2", "is not an icon."),
    "a small icon": (ICON, 4, b"\6", "has no 32-bit picture of these sizes: 128, 256."),
}


@pytest.mark.parametrize("name, at, data, sentence", REFUSED_PICTURES.values(), ids=REFUSED_PICTURES)
def test_a_picture_that_cannot_be_used_is_refused_with_its_reason(check, tmp_path, name, at, data, sentence):
    picture = (SAMPLE / name).read_bytes()
    (tmp_path / name).unlink()
    (tmp_path / name).write_bytes(picture[:at] + data + picture[at + len(data):])
    assert f"{name} {sentence}" in check(SAMPLE_JSON)


def test_odd_texts_arrive_whole_in_the_library_its_version_and_hosts(check, tmp_path):
    assert check(json.dumps(STRANGE_FAMILY, ensure_ascii=False)) == ""
    (tmp_path / "host.cpp").write_text("""#include "sample_product.h"
        extern const wchar_t* const Host[]{
            SAMPLE_PRODUCT_NAME, L"Example Maker", L"Software\\\\Example Maker\\\\Products"};""")
    assert run(sys.executable, "-B", REPOSITORY / "cmake/family_texts.py", SAMPLE / "product_family.json",
               "product_family.json", ".", cwd=tmp_path) == (0, "")
    folders = [f"-I{folder}" for folder in (
        "headers", REPOSITORY / "src", REPOSITORY / "include", REPOSITORY / "product_family")]
    assert run("x86_64-w64-mingw32-windres", *folders, REPOSITORY / "guard/product_services_guard.rc", "version.o",
               cwd=tmp_path, env=PLAIN_LOCALE) == (0, "")
    assert run("x86_64-w64-mingw32-g++-posix", "-std=c++20", *folders, "-c", REPOSITORY / "src/platform/family.cpp",
               "host.cpp", cwd=tmp_path, env=PLAIN_LOCALE) == (0, "")
    maker, package_id, product, address, path, keys = STRANGE_FAMILY.values()
    for name, texts in {"family.o": [address, path, *keys], "host.o": [product, maker, path],
                        "version.o": [maker, f"{maker} ProductServices", package_id]}.items():
        data = (tmp_path / name).read_bytes()
        assert [text for text in texts if f"{text}\0".encode("utf-16-le") not in data] == [], name


@pytest.mark.parametrize("target, inputs", [
    pytest.param("build.ninja", {"sample/product_family.json", *PICTURES}, id="the configuration"),
    pytest.param("bin/ProductServices.dll", {*VERSION_FILES, *PICTURES}, id="the library"),
    pytest.param("bin/ProductServicesGuard.dll", VERSION_FILES, id="the guard"),
])
def test_what_the_maker_brings_is_followed_when_it_changes(build, target, inputs):
    listed = run("ninja", "-C", build, "-t", "inputs", target)[1]
    assert [name for name in inputs if f"/{name}\n" not in listed] == []
