"""Looks into the built ProductServices.dll: what a host and Windows find there."""

import re
import struct

import pefile
import pytest

from conftest import REPOSITORY, load_cases, run
from pe_file import read_pe

SAMPLE = REPOSITORY / "product_family/sample"
VERSIONS = load_cases("library/versions.json")
WINDOWS = "advapi32 bcrypt comctl32 crypt32 gdi32 kernel32 msvcrt ole32 oleaut32 shell32 shlwapi user32 ws2_32".split()


EXPORTS = {
    "ProductServices": [b"CheckForUpdates", b"Upgrade"],
    "ProductServicesGuard": [b"GetDisabledCalls", b"GetStartCheckDelay", b"GuardedCheckForUpdates", b"GuardedUpgrade",
                             b"StartVerifiedFile", b"VerifyPublisher"],
}


@pytest.fixture(scope="module")
def libraries(build):
    """Returns the DLLs by name."""
    return {name: read_pe(build / f"bin/{name}.dll", "EXPORT", "IMPORT", "RESOURCE", "DEBUG") for name in EXPORTS}


@pytest.fixture(params=EXPORTS)
def library(request, libraries):
    return libraries[request.param]


def test_dll_is_64_bit_and_hardened(library):
    assert library.FILE_HEADER.Machine == pefile.MACHINE_TYPE["IMAGE_FILE_MACHINE_AMD64"]
    for flag in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
        assert getattr(library.OPTIONAL_HEADER, f"IMAGE_DLLCHARACTERISTICS_{flag}"), flag


@pytest.mark.parametrize("name, exports", EXPORTS.items())
def test_exports_match_the_headers(libraries, name, exports):
    library = libraries[name]
    assert [symbol.name for symbol in library.DIRECTORY_ENTRY_EXPORT.symbols] == exports
    assert library.DIRECTORY_ENTRY_EXPORT.struct.TimeDateStamp == 0, "not the time of the build"


def test_guard_adds_at_most_150_kb(build):
    bare, guarded = ((build / f"bin/{name}.dll").stat().st_size for name in EXPORTS)
    assert guarded - bare <= 150 * 1024


def test_dll_imports_only_windows(library):
    assert {entry.dll.decode().lower().removesuffix(".dll") for entry in library.DIRECTORY_ENTRY_IMPORT} <= set(WINDOWS)
    imported = {symbol.name for entry in library.DIRECTORY_ENTRY_IMPORT for symbol in entry.imports}
    assert b"InitCommonControlsEx" in imported, "it registers the class of its list view itself"


def test_images_are_those_of_the_family(library):
    for number in (332, 333, 335, 343, 1077):
        assert (SAMPLE / f"background_{number}.bmp").read_bytes()[14:] in library.__data__[:], number
    icon = (SAMPLE / "library.ico").read_bytes()
    for width, size, start in struct.iter_unpack("<B7xII", icon[6:6 + 16 * icon[4]]):
        assert icon[start:start + size] in library.__data__[:], width


@pytest.mark.parametrize("kind", ["dll", "dll.debug", "pdb"])
@pytest.mark.parametrize("name", ["ProductServices", "ProductServicesGuard"])
def test_no_build_paths_in_binaries(build, name, kind):
    data = (build / f"bin/{name}.{kind}").read_bytes()
    assert [path for path in (bytes(REPOSITORY), b"/tmp/", b"ca-certificates") if path in data] == []


@pytest.mark.parametrize("name, function", [
    pytest.param("ProductServices", "RunUpgradeCenter", id="the library"),
    pytest.param("ProductServicesGuard", "GuardedUpgrade", id="the guard"),
])
def test_pdb_matches_the_dll_and_names_functions(build, libraries, name, function):
    pdb = build / f"bin/{name}.pdb"
    assert pdb.read_bytes().startswith(b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0")
    directory, = libraries[name].DIRECTORY_ENTRY_DEBUG
    assert directory.entry.PdbFileName.rstrip(b"\0").decode() == pdb.name, "without a folder"
    told = run("llvm-pdbutil", "dump", "-summary", "-publics", pdb)[1]
    assert re.search(r"GUID: \{(.*)\}", told)[1].replace("-", "") == directory.entry.Signature_String[:32]
    assert re.search(r"Signature: (\d+)", told)[1] == "0", "not the time of the build"
    assert re.search(rf"S_PUB32 .*{function}.*\n +flags = function", told)


@pytest.mark.parametrize("name", EXPORTS)
def test_dialog_template_is_unchanged(build, name):
    status, resources = run("x86_64-w64-mingw32-windres", "-J", "coff", "-O", "rc", build / f"bin/{name}.dll")
    assert status == 0
    numbers = load_cases("library/dialog.json")["styles"]
    expected = re.sub(r"[A-Z]+_\w+( \| \w+)*", lambda styles: f"{sum(map(numbers.get, styles[0].split(' | '))):#x}",
                      "\n".join(load_cases("library/dialog.json")["lines"]))
    assert re.findall(r"(?ms)^\d+ DIALOG.*?^END$", resources) == [expected]


@pytest.mark.parametrize("name", VERSIONS)
def test_version_resource(libraries, name):
    header = (REPOSITORY / "include/product_services/version.h").read_text("utf-8")
    version = re.findall(r"#define PRODUCT_SERVICES_VERSION_\w+ (\d+)", header)
    library = libraries[name]
    strings, = (info.StringTable[0] for info in library.FileInfo[0] if info.Key == b"StringFileInfo")
    assert strings.LangID == b"040904b0", "in English and Unicode"
    texts = {key.decode(): text.decode().replace(".".join(version), "VERSION") for key, text in strings.entries.items()}
    assert texts == VERSIONS[name]
    fixed = library.VS_FIXEDFILEINFO[0]
    numbers = (fixed.FileVersionMS >> 16, fixed.FileVersionMS & 65535, fixed.FileVersionLS >> 16)
    assert ".".join(map(str, numbers)) == ".".join(version)
    assert (fixed.ProductVersionMS, fixed.ProductVersionLS) == (fixed.FileVersionMS, fixed.FileVersionLS)
    assert (fixed.FileOS, fixed.FileType) == (0x40004, 2), "a DLL for Windows NT"
