"""Builds the sample host's installer, installs it under Wine, uses what was installed and removes it."""

import os
import pathlib
import re

import pytest

from conftest import MAKER_KEY, REPOSITORY, run

DRIVE = pathlib.Path(os.environ.get("PRODUCT_SERVICES_WINEPREFIX", REPOSITORY / "build/wine"), "drive_c")
KEYS = (MAKER_KEY, r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall")


@pytest.fixture
def installers(build, tmp_path, wine):
    paths = [tmp_path / "2026.1.msi", tmp_path / "2026.2.msi"]
    for path in paths:
        assert run(REPOSITORY / "samples/installer/build.sh", path, build / "over_tls", path.stem) == (0, "")
    wine("reg", "delete", MAKER_KEY, "/f")
    yield paths
    for path in paths:
        wine("msiexec", "/x", path, "/qn")


def left(wine):
    """Files and registry lines of the installed product."""
    lines = [line for key in KEYS for line in wine("reg", "query", key, "/s")[1].split("\n")]
    return [path for path in DRIVE.rglob("*") if "Example" in path.name], [line for line in lines if "Example" in line]


def test_a_product_is_installed_used_upgraded_and_leaves_nothing_behind(installers, service, wine):
    old, new = installers
    assert left(wine) == ([], [])
    assert wine("msiexec", "/i", old, "/qn")[0] == 0
    folder, = DRIVE.glob("users/*/AppData/Local/Programs/Example Draft")
    service(port=18443)
    german = wine(folder / "SampleHost.exe", "upgrade", "--language", "140", "--unattended", cwd=folder)[1]
    assert german.endswith("outcome: 540: Der Benutzer hat abgebrochen!\n")
    assert wine("msiexec", "/i", new, "/qn")[0] == 0
    assert wine("msiexec", "/i", old, "/qn")[0] != 0, "an older release over a newer one"
    record = wine("reg", "query", rf"{MAKER_KEY}\Products", "/s")[1]
    assert re.findall(r"(\w+) +REG_SZ +(.+)", record) == [("key", "DRAFT-2026-DEMO"), ("version", "2026.2")]
    files, registry = left(wine)
    assert "    DisplayName    REG_SZ    Example Draft" in registry
    link, = (path for path in files if path.match("Start Menu/Programs/Example Maker/Example Draft.lnk"))
    for text in ("--version 2026.2\0", "\\AppData\\Local\\Programs\\Example Draft\\\0"):
        assert text.encode("utf-16-le") in link.read_bytes(), text
    assert wine("msiexec", "/x", new, "/qn")[0] == 0
    assert left(wine) == ([], [])
