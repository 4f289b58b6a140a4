"""Builds the sample host's installer, installs it under Wine, uses what was installed and removes it."""

import os
import pathlib
import re
import shutil

import pytest

from conftest import MAKER_KEY, REPOSITORY, run

DRIVE = pathlib.Path(os.environ.get("PRODUCT_SERVICES_WINEPREFIX", REPOSITORY / "build/wine"), "drive_c")
KEYS = (MAKER_KEY, MAKER_KEY.replace("HKCU", "HKLM"), r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall")


@pytest.fixture
def installers(build, tmp_path, wine):
    paths = [tmp_path / "2026.1.msi", tmp_path / "2026.2.msi", tmp_path / "all users.msi"]
    built = shutil.copytree(build / "over_tls", tmp_path / "größe & 'maß'")
    for arguments in ((paths[0], built), (paths[1], built, "2026.2"), ("--all-users", paths[2], built)):
        assert run(REPOSITORY / "samples/installer/build.sh", *arguments) == (0, "")
    shutil.rmtree(built / "lang/ZH")
    assert run(REPOSITORY / "samples/installer/build.sh", paths[0], built)[0] == 1, "and leaves the one that is there"
    wine("reg", "delete", MAKER_KEY, "/f")
    yield paths
    for path in paths:
        wine("msiexec", "/x", path, "/qn")


def left(wine):
    """Files and registry lines of the installed product."""
    lines = [line for key in KEYS for line in wine("reg", "query", key, "/s")[1].split("\n")]
    return [path for path in DRIVE.rglob("*") if "Example" in path.name], [line for line in lines if "Example" in line]


def test_a_product_is_installed_used_upgraded_and_leaves_nothing_behind(installers, service, wine):
    old, new, for_all = installers
    assert left(wine) == ([], [])
    assert [wine("msiexec", "/i", path, "/qn")[0] for path in (old, for_all)] == [0, 0]
    folder, = DRIVE.glob("users/*/AppData/Local/Programs/Example Draft")
    assert len(list(DRIVE.rglob("Example Draft/licenses/*.txt"))) == 2 * 5
    service(port=18443)
    german = wine(folder / "SampleHost.exe", "upgrade", "--language", "140", "--unattended", cwd=folder)[1]
    assert german.endswith("outcome: 540: Der Benutzer hat das Upgrade-Center verlassen.\n")
    assert wine("msiexec", "/i", new, "/qn")[0] == 0
    records = [re.findall(r"REG_SZ +(.+)", wine("reg", "query", rf"{key}\Products", "/s")[1]) for key in KEYS[:2]]
    assert records == [["DRAFT-2026-DEMO", "2026.2"], ["DRAFT-2026-DEMO", "2026.1"]]
    assert [path for path in left(wine)[0] if path.match("Start Menu/Programs/Example Maker/Example Draft.lnk")]
    assert [wine("msiexec", "/x", path, "/qn")[0] for path in (new, for_all)] == [0, 0]
    assert left(wine) == ([], [])
