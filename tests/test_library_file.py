"""Looks into the built ProductServices.dll: what a host and Windows find there."""

import hashlib
import re
import struct

import pefile
import pytest

from conftest import REPOSITORY

WINDOWS = "advapi32 bcrypt comctl32 crypt32 gdi32 kernel32 msvcrt ole32 oleaut32 shell32 shlwapi user32 ws2_32".split()
TEMPLATE = "6fcdb99fa008ebec45a043287260231a5db9ce7082323ae89b22a2cc287827bb"


@pytest.fixture(scope="module")
def library(build):
    return pefile.PE(build / "bin/ProductServices.dll")


def test_it_is_a_64_bit_library_for_hardened_processes_with_two_exports(library):
    assert library.FILE_HEADER.Machine == pefile.MACHINE_TYPE["IMAGE_FILE_MACHINE_AMD64"]
    # High-entropy and any base address, and no code in data.
    assert library.OPTIONAL_HEADER.DllCharacteristics & 0x160 == 0x160
    assert [symbol.name for symbol in library.DIRECTORY_ENTRY_EXPORT.symbols] == [b"CheckForUpdates", b"Upgrade"]
    assert {entry.dll.decode().lower()[:-4] for entry in library.DIRECTORY_ENTRY_IMPORT} <= set(WINDOWS)
    imported = {symbol.name for entry in library.DIRECTORY_ENTRY_IMPORT for symbol in entry.imports}
    assert b"InitCommonControlsEx" in imported, "it registers the class of its list view itself"


def test_its_pictures_are_the_familys_and_no_path_is_the_machines(build):
    data, family = (build / "bin/ProductServices.dll").read_bytes(), REPOSITORY / "product_family/sample"
    for number in (332, 333, 335, 343, 1077):
        assert (family / f"background_{number}.bmp").read_bytes()[14:] in data, number
    icon = (family / "library.ico").read_bytes()
    for width, size, at in struct.iter_unpack("<B7xII", icon[6:6 + 16 * icon[4]]):
        assert icon[at:at + size] in data, width
    assert not [path for path in (bytes(REPOSITORY), b"/tmp/", b"ca-certificates") if path in data], "the machine's"


def test_the_template_of_its_dialog_is_the_one_that_hosts_know(library):
    dialogs, = (kind for kind in library.DIRECTORY_ENTRY_RESOURCE.entries if kind.id == 5)
    dialog, = dialogs.directory.entries
    at = dialog.directory.entries[0].data.struct
    template = library.get_data(at.OffsetToData, at.Size)
    assert (dialog.id, hashlib.sha256(template).hexdigest()) == (331, TEMPLATE)


@pytest.mark.parametrize("name, description", [
    pytest.param("ProductServices", "Update check and upgrade center", id="the library"),
    pytest.param("ProductServicesGuard", "Guarded calls of ProductServices.dll", id="the guard"),
])
def test_its_version_says_what_it_is_and_whose(build, name, description):
    header = (REPOSITORY / "include/product_services/version.h").read_text("utf-8")
    version = re.findall(r"#define PRODUCT_SERVICES_VERSION_\w+ (\d+)", header)
    library = pefile.PE(build / f"bin/{name}.dll")
    strings, = (info.StringTable[0] for info in library.FileInfo[0] if info.Key == b"StringFileInfo")
    assert strings.LangID == b"040904b0", "in English and Unicode"
    assert {key.decode(): text.decode() for key, text in strings.entries.items()} == {
        "Comments": "ExampleMaker.ProductServices",
        "CompanyName": "Example Maker",
        "FileDescription": description,
        "FileVersion": ".".join(version),
        "InternalName": name,
        "LegalCopyright": "MIT License",
        "OriginalFilename": f"{name}.dll",
        "ProductName": "Example Maker ProductServices",
        "ProductVersion": ".".join(version),
    }
    fixed = library.VS_FIXEDFILEINFO[0]
    numbers = (fixed.FileVersionMS >> 16, fixed.FileVersionMS & 65535, fixed.FileVersionLS >> 16)
    assert ".".join(map(str, numbers)) == ".".join(version)
    assert (fixed.ProductVersionMS, fixed.ProductVersionLS) == (fixed.FileVersionMS, fixed.FileVersionLS)
    assert (fixed.FileOS, fixed.FileType) == (0x40004, 2), "a DLL for Windows NT"
