"""Builds the sample host's installer, installs it under Wine, uses what was installed and removes it."""

import os
import pathlib
import struct

import pytest

from conftest import ADDRESS, MAKER_KEY, REPOSITORY, run

DRIVE = pathlib.Path(os.environ.get("PRODUCT_SERVICES_WINEPREFIX", REPOSITORY / "build/wine"), "drive_c")
BUILD = REPOSITORY / "samples/installer/build.sh"
KEYS = (MAKER_KEY, r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall")


@pytest.fixture
def installers(build, tmp_path, wine):
    paths = [tmp_path / "2026.1.msi", tmp_path / "2026.2.msi"]
    for path in paths:
        assert run(BUILD, path, build / "over_tls", path.stem) == (0, "")
    wine("reg", "delete", MAKER_KEY, "/f")
    yield paths
    for path in paths:
        wine("msiexec", "/x", path, "/qn")


def left(wine):
    """Files and registry lines of the installed product."""
    lines = [line for key in KEYS for line in wine("reg", "query", key, "/s")[1]]
    return ([path for path in DRIVE.rglob("*") if "Example" in path.name],
            [line.split() for line in lines if "Example" in line])


def test_what_is_wrong_is_said_in_a_sentence(build, tmp_path):
    output, missing, over_tls = tmp_path / "installer.msi", tmp_path / "none/x.msi", build / "over_tls"
    for arguments, message in (((output, tmp_path), f"error: There is no {tmp_path}/SampleHost.exe; build the project "),
                               ((output, over_tls, "1.0"), "error: A release is a year and a number, such as 2026.1"),
                               ((missing, over_tls), f"error: {missing} could not be written.\n")):
        status, said = run(BUILD, *arguments)
        assert (status, said[:len(message)], said.count("\n"), output.exists()) == (1, message, 1, False)


def test_a_product_is_installed_used_upgraded_and_leaves_nothing_behind(installers, service, wine):
    old, new = installers
    assert left(wine) == ([], [])
    assert wine("msiexec", "/i", old, "/qn")[0] == 0
    folder, = DRIVE.glob("users/*/AppData/Local/Programs/Example Draft")
    service(port=18443)
    assert wine(folder / "SampleHost.exe", "check", "--unattended", cwd=folder) == (
        0, [f"outcome: 200: a newer release is at https://{ADDRESS}:18443/buy/draft-2026-2"])
    status, lines = wine(folder / "SampleHost.exe", "upgrade", "--language", "140", "--unattended", cwd=folder)
    assert (status, lines[-1]) == (0, "outcome: 540: Der Benutzer hat abgebrochen!")
    assert wine("msiexec", "/i", new, "/qn")[0] == 0
    assert wine("msiexec", "/i", old, "/qn")[0] != 0, "an older release over a newer one"
    record = wine("reg", "query", rf"{MAKER_KEY}\Products", "/s")[1]
    assert [line.split() for line in record if line[:1] == " "] == [
        ["key", "REG_SZ", "DRAFT-2026-DEMO"], ["version", "REG_SZ", "2026.2"]]
    files, registry = left(wine)
    assert ["DisplayName", "REG_SZ", "Example", "Draft"] in registry
    link, = (path for path in files if path.match("Start Menu/Programs/Example Maker/Example Draft.lnk"))
    directory = "C:\\" + str(folder.relative_to(DRIVE)).replace("/", "\\") + "\\"
    for text in ("--version 2026.2\0", f"{directory}\0"):
        assert struct.pack("<H", len(text)) + text.encode("utf-16-le") in link.read_bytes(), text
    assert wine("msiexec", "/x", new, "/qn")[0] == 0
    assert left(wine) == ([], [])
