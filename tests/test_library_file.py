"""Looks into the built ProductServices.dll: what a host and Windows find there."""

import re
import struct

import pefile
import pytest

from conftest import REPOSITORY

BITMAP, ICON, ICON_GROUP = 2, 3, 14
SYSTEM_LIBRARIES = ("advapi32 bcrypt comctl32 crypt32 gdi32 kernel32 msvcrt ole32 oleaut32 shell32 shlwapi user32 "
                    "ws2_32").split()


@pytest.fixture(scope="module")
def library(build):
    return pefile.PE(build / "bin/ProductServices.dll")


def resource(library, kind, number):
    """The bytes of a resource, which has one language."""
    level = library.DIRECTORY_ENTRY_RESOURCE
    for wanted in (kind, number):
        level, = (entry.directory for entry in level.entries if entry.id == wanted)
    return library.get_data(level.entries[0].data.struct.OffsetToData, level.entries[0].data.struct.Size)


def test_it_is_a_64_bit_library_for_hardened_processes_with_two_exports(library):
    assert library.FILE_HEADER.Machine == pefile.MACHINE_TYPE["IMAGE_FILE_MACHINE_AMD64"]
    for name in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
        assert getattr(library.OPTIONAL_HEADER, f"IMAGE_DLLCHARACTERISTICS_{name}"), name
    assert [symbol.name for symbol in library.DIRECTORY_ENTRY_EXPORT.symbols] == [b"CheckForUpdates", b"Upgrade"]
    imports = {entry.dll.decode().lower() for entry in library.DIRECTORY_ENTRY_IMPORT}
    assert imports <= {f"{name}.dll" for name in SYSTEM_LIBRARIES}


def test_its_pictures_are_the_familys(library):
    family = REPOSITORY / "product_family/sample"
    for number in (332, 333, 335, 343, 1077):
        assert resource(library, BITMAP, number) == (family / f"background_{number}.bmp").read_bytes()[14:], number
    file = (family / "library.ico").read_bytes()
    entries = list(struct.iter_unpack("<BBBBHHIH", resource(library, ICON_GROUP, 340)[6:]))
    assert [width or 256 for width, *_ in entries] == [16, 24, 32, 48, 64, 96, 128, 256]
    for (*shown, number), (*drawn, at) in zip(entries, struct.iter_unpack("<BBBBHHII", file[6:6 + 16 * len(entries)])):
        assert shown == drawn and resource(library, ICON, number) == file[at:at + drawn[-1]]


def test_its_version_is_the_public_headers(library):
    header = (REPOSITORY / "include/product_services/version.h").read_text("utf-8")
    version = re.findall(r"#define PRODUCT_SERVICES_VERSION_\w+ (\d+)", header)
    fixed = library.VS_FIXEDFILEINFO[0]
    assert [fixed.FileVersionMS >> 16, fixed.FileVersionMS & 65535, fixed.FileVersionLS >> 16] == list(map(int, version))
    assert library.FileInfo[0][0].StringTable[0].entries[b"FileVersion"].decode() == ".".join(version)
