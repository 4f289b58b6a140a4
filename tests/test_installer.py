"""Builds the sample host's installers, installs them under Wine, runs the installed program, and uninstalls it."""

import fnmatch
import re
import shutil
import xml.etree.ElementTree

import pytest

from conftest import MAKER_KEY, REPOSITORY, WINE_PREFIX, run
from sample_window import open_sample_host

DRIVE = WINE_PREFIX / "drive_c"
USERS_KEY, MACHINES_KEY = MAKER_KEY, MAKER_KEY.replace("HKCU", "HKLM")
UNINSTALL_KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall"
POLICIES = r"HKLM\Software\Policies\Example Maker"
INSTALLERS = REPOSITORY / "samples/installer"


@pytest.fixture(scope="module")
def installers(https_sample, tmp_path_factory):
    """Builds installers of two releases, for one user and for all users. Returns their paths by release and scope."""
    folder = tmp_path_factory.mktemp("installers")
    built = shutil.copytree(https_sample, folder / "größe & 'maß'")
    paths = {}
    for release in ("2026.1", "2026.2"):
        for scope in ("user", "machine"):
            paths[release, scope] = folder / f"{release} {scope}.msi"
            options = ["--all-users"] if scope == "machine" else []
            assert run(INSTALLERS / "build.sh", *options, paths[release, scope], built, release) == (0, "")
    return paths


def reg(wine, command, *keys, option):
    """Runs reg for each key, and returns all output."""
    return "".join(wine("reg", command, key, option)[1] for key in keys)


@pytest.fixture
def msiexec(installers, wine):
    """Installs and removes packages. At the end, those that are still installed and all records are removed."""
    reg(wine, "delete", USERS_KEY, option="/f")
    installed = {}

    def run_msiexec(option, release, scope, *properties):
        installed[scope] = release
        status, output = wine("msiexec", option, installers[release, scope], "/qn", *properties)
        assert status == 0, (option, release, scope, output)
        if option == "/x":
            del installed[scope]
    yield run_msiexec
    for scope, release in installed.items():
        wine("msiexec", "/x", installers[release, scope], "/qn")
    reg(wine, "delete", USERS_KEY, MACHINES_KEY, POLICIES, option="/f")


def leftovers(wine):
    """Returns the files and registry lines of the installed product."""
    lines = reg(wine, "query", USERS_KEY, MACHINES_KEY, UNINSTALL_KEY, POLICIES, option="/s")
    return [*DRIVE.rglob("*Example*")] + re.findall(".*Example.*", lines)


def records(wine):
    """Returns the root key of each record, with its values after it."""
    lines = reg(wine, "query", rf"{USERS_KEY}\Products", rf"{MACHINES_KEY}\Products", option="/s")
    found = re.findall(r"(?m)^(HKEY_\w+)\\.*\\Example Draft\\[\d.]+$|REG_SZ +(.+)$", lines)
    return [root or value for root, value in found]


def test_install_upgrade_and_uninstall(msiexec, trusted_service, wine):
    assert leftovers(wine) == []
    msiexec("/i", "2026.1", "user")
    msiexec("/i", "2026.1", "machine", "ADDLOCAL=Complete,DisableUpgradeCenter")
    assert re.findall(r"(\w+) +REG_DWORD +0x1", wine("reg", "query", POLICIES, "/s")[1]) == ["DisableUpgradeCenter"]
    folder, = DRIVE.glob("users/*/AppData/Local/Programs/Example Draft")
    for installed in (folder, DRIVE / "Program Files/Example Draft"):
        assert sorted(path.name for path in installed.glob("*.*")) == ["ProductServicesGuard.dll", "SampleHost.exe"]
        assert len(list(installed.glob("lang/*/*.lang"))) == 10
        assert len(list(installed.glob("licenses/*.txt"))) == 5

    service = trusted_service()
    with open_sample_host(folder / "SampleHost.exe"):
        assert "key=DRAFT-2026-DEMO version=2026.1 up=1 (update check)" in service.stdout.readline()

    msiexec("/i", "2026.2", "user")
    users_record = ["HKEY_CURRENT_USER", "DRAFT-2026-DEMO", "2026.2"]
    assert records(wine) == [*users_record, "HKEY_LOCAL_MACHINE", "DRAFT-2026-DEMO", "2026.1"]
    msiexec("/i", "2026.2", "machine")
    machines_record = ["HKEY_LOCAL_MACHINE", "DRAFT-2026-DEMO", "2026.2"]
    assert records(wine) == users_record + machines_record
    # In Wine, all users have the same start menu.
    assert len(list(DRIVE.rglob("Start Menu/Programs/Example Maker/Example Draft.lnk"))) == 1

    msiexec("/x", "2026.2", "user")
    assert records(wine) == machines_record
    msiexec("/x", "2026.2", "machine")
    assert leftovers(wine) == []


def test_failed_build_keeps_the_old_installer(installers, https_sample, tmp_path):
    incomplete = shutil.copytree(https_sample, tmp_path / "incomplete")
    shutil.rmtree(incomplete / "lang/ZH")
    old = shutil.copy(installers["2026.1", "user"], tmp_path / "old.msi")
    before = old.read_bytes()
    assert run(INSTALLERS / "build.sh", old, incomplete)[0] == 1
    assert old.read_bytes() == before


# Wine's icacls has no effect.
def test_all_users_installer_makes_only_language_files_writable(installers):
    actions = run("msiinfo", "export", installers["2026.1", "machine"], "CustomAction")[1]
    assert '"[LangFolder]." /grant *S-1-5-32-545:(OI)(IO)M' in actions
    sequence = dict(re.findall(r"(?m)^(\w+)\t[^\t]*\t(\d+)", run(
        "msiinfo", "export", installers["2026.1", "machine"], "InstallExecuteSequence")[1]))
    order = "InstallFiles", "LetUsersWriteLanguageFiles", "InstallFinalize"
    assert sorted(order, key=lambda name: int(sequence[name])) == list(order)


def read_wix():
    """Returns the paths of the files in the product's folder, and the values of the record, from the WiX source."""
    variables = "Scope=perUser Release=2026.1 PackageVersion=1 BinDir=. LangDir=. LicenseDir=. License=."
    options = [word for variable in variables.split() for word in ("-D", variable)]
    root = xml.etree.ElementTree.fromstring(run("wixl", "-E", *options, INSTALLERS / "sample_host.wxs")[1])

    def files(element, folder):
        for child in element:
            kind, name = child.tag.partition("}")[2], child.get("Name")
            if kind == "File":
                yield folder + (name or child.get("Source").rpartition("/")[2])
            else:
                yield from files(child, f"{folder}{name}\\" if kind == "Directory" else folder)

    values = [element.attrib for element in root.iter() if r"\Products" in element.get("Key", "")]
    return (list(files(root.find(".//{*}DirectoryRef"), "")),
            [(value["Key"], value["Name"], value["Value"]) for value in values])


def read_inno():
    """Returns the files that Inno Setup installs and removes, the registry values, and the keys that it removes."""
    script = (INSTALLERS / "sample_host.iss").read_text("utf-8")
    rows = [dict(re.findall(r'(\w+): "?([^";]+)"?', line)) for line in script.splitlines() if ";" in line]
    files = [f'{row["DestDir"]}\\{row.get("DestName") or row["Source"].rpartition(chr(92))[2]}'.removeprefix("{app}\\")
             for row in rows if "DestDir" in row]
    values = [(row["Subkey"], row["ValueName"], row["ValueData"]) for row in rows if "ValueData" in row
              and "Products" in row["Subkey"]]
    keys = [row["Subkey"] for row in rows if row.get("Flags") == "uninsdeletekey"]
    return files, files, values, keys


def read_nsis():
    """Like read_inno, for NSIS."""
    script = (INSTALLERS / "sample_host.nsi").read_text("utf-8")
    for name, text in re.findall(r'(?m)^!define (\w+) "(.*)"$', script):
        script = script.replace(f"${{{name}}}", text)
    files, removed = [], []
    for options, names in re.findall(r'(?m)^  File (/r )?(".*")$', script):
        if "/oname=" in names:
            files += re.findall('"/oname=(.*?)"', names)
        else:
            files += [name.rpartition("\\")[2] + ("\\*" if options else "") for name in re.findall('"(.*?)"', names)]
    for command, path in re.findall(r'(?m)^  (Delete|RMDir /r) "\$INSTDIR\\(.*)"$', script):
        removed.append(path if command == "Delete" else path + "\\*")
    values = re.findall(r'(?m)^  WriteRegStr HKCU "(.*Products.*)" "(.*)" "(.*)"$', script)
    return files, removed, values, re.findall(r'(?m)^  DeleteRegKey HKCU "(.*)"$', script)


@pytest.mark.parametrize("read_script", [read_inno, read_nsis])
def test_inno_and_nsis_install_the_files_of_wix(read_script):
    files, values = read_wix()
    assert len(files) == 17 and len(values) == 2
    installed, removed, script_values, removed_keys = read_script()
    for patterns in (installed, removed):
        assert [file for file in files if not any(fnmatch.fnmatchcase(file, pattern) for pattern in patterns)] == []
    assert [pattern for pattern in installed if not fnmatch.filter(files, pattern)] == []
    assert script_values == values
    assert {key for key, _, _ in values} <= set(removed_keys)
