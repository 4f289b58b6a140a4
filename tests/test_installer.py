"""Builds the sample host's installers, installs them under Wine, uses what was installed and removes it."""

import os
import pathlib
import re
import shutil

import pytest

from conftest import MAKER_KEY, REPOSITORY, run

DRIVE = pathlib.Path(os.environ.get("PRODUCT_SERVICES_WINEPREFIX", REPOSITORY / "build/wine"), "drive_c")
USERS_KEY, MACHINES_KEY = MAKER_KEY, MAKER_KEY.replace("HKCU", "HKLM")
UNINSTALL_KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall"
BUILD = REPOSITORY / "samples/installer/build.sh"


@pytest.fixture
def installers(build, tmp_path, wine):
    """The installers of two releases for one user, and one for all users; removes what is installed."""
    built = shutil.copytree(build / "over_tls", tmp_path / "größe & 'maß'")
    old, new, for_all = (tmp_path / name for name in ("2026.1.msi", "2026.2.msi", "all users.msi"))
    assert run(BUILD, old, built) == (0, "")
    assert run(BUILD, new, built, "2026.2") == (0, "")
    assert run(BUILD, "--all-users", for_all, built) == (0, "")
    shutil.rmtree(built / "lang/ZH")
    assert run(BUILD, old, built)[0] == 1, "and leaves the one that is there"
    wine("reg", "delete", MAKER_KEY, "/f")
    yield old, new, for_all
    for path in (old, new, for_all):
        wine("msiexec", "/x", path, "/qn")


def left_behind(wine):
    """Files and registry lines of the installed product."""
    keys = "\n".join(wine("reg", "query", key, "/s")[1] for key in (USERS_KEY, MACHINES_KEY, UNINSTALL_KEY))
    return [*DRIVE.rglob("*Example*")] + re.findall(".*Example.*", keys)


def record(wine, key):
    return re.findall(r"REG_SZ +(.+)", wine("reg", "query", rf"{key}\Products", "/s")[1])


def test_a_product_is_installed_used_upgraded_and_leaves_nothing_behind(installers, service, wine):
    old, new, for_all = installers
    assert left_behind(wine) == []

    assert wine("msiexec", "/i", old, "/qn")[0] == 0
    assert wine("msiexec", "/i", for_all, "/qn")[0] == 0
    folder, = DRIVE.glob("users/*/AppData/Local/Programs/Example Draft")
    assert len(list(folder.glob("licenses/*.txt"))) == 5
    assert len(list(DRIVE.glob("Program Files/Example Draft/licenses/*.txt"))) == 5

    service(port=18443)
    german = wine(folder / "SampleHost.exe", "upgrade", "--language", "140", "--unattended", cwd=folder)[1]
    assert german.endswith("outcome: 540: Der Benutzer hat das Upgrade-Center verlassen.\n")

    assert wine("msiexec", "/i", new, "/qn")[0] == 0
    assert record(wine, USERS_KEY) == ["DRAFT-2026-DEMO", "2026.2"]
    assert record(wine, MACHINES_KEY) == ["DRAFT-2026-DEMO", "2026.1"]
    assert len(list(DRIVE.rglob("Start Menu/Programs/Example Maker/Example Draft.lnk"))) == 1

    assert wine("msiexec", "/x", new, "/qn")[0] == 0
    assert wine("msiexec", "/x", for_all, "/qn")[0] == 0
    assert left_behind(wine) == []
