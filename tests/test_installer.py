"""Builds the sample host's installer, installs it under Wine, uses what was installed and removes it.

It needs a display, wixl, and the functions of tools/lib/wine.sh, with which it makes a Wine prefix of its own.
"""

import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest

from test_sample_host import OFFERS, REPOSITORY, Service, run_wine

BIN = pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"]).absolute()
BUILD_INSTALLER = REPOSITORY / "samples" / "installer" / "build.sh"
PREFIX = REPOSITORY / "build" / "wine-installer"
ENVIRONMENT = {**os.environ, "PRODUCT_SERVICES_WINEPREFIX": str(PREFIX)}
MAKER_KEY = r"HKEY_CURRENT_USER\Software\Example Maker"
RECORDS = rf"{MAKER_KEY}\Products\Example Draft"
UNINSTALL_KEYS = [rf"{root}\Software\Microsoft\Windows\CurrentVersion\Uninstall" for root in ("HKCU", "HKLM")]


def build_installer(*arguments, **options):
    run = subprocess.run(["/bin/bash", BUILD_INSTALLER, *map(str, arguments)], stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, encoding="utf-8", timeout=60, check=False, **options)
    return run.returncode, run.stdout


class BuildTest(unittest.TestCase):
    def test_what_is_wrong_is_said_in_a_sentence(self):
        with tempfile.TemporaryDirectory() as folder:
            output = pathlib.Path(folder, "installer.msi")
            without_wixl = pathlib.Path(folder, "bin")
            without_wixl.mkdir()
            (without_wixl / "dirname").symlink_to(shutil.which("dirname"))
            for arguments, environment, message in (
                    ((), None, "usage: samples/installer/build.sh OUTPUT.msi [BIN_DIR [RELEASE]]"),
                    ((output, folder), None, f"There is no {folder}/SampleHost.exe; build the project first, or "
                                             "name the folder of what was built."),
                    ((output, BIN, "1.0"), None, 'A release is a year and a number, such as 2026.1, not "1.0".'),
                    ((f"{folder}/none/x.msi", BIN), None, f"{folder}/none/x.msi could not be written."),
                    ((output, BIN), {"PATH": str(without_wixl)}, "wixl is missing; install Debian's package wixl.")):
                with self.subTest(message):
                    self.assertEqual(build_installer(*arguments, env=environment), (1, f"error: {message}\n"))
                    self.assertFalse(output.exists())


class InstallerTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.remove_prefix()
        cls.call_wine_library("prepare_wine_prefix")
        cls.addClassCleanup(cls.remove_prefix)
        # Wine would copy start-menu shortcuts to the desktop of whoever runs the test.
        status, lines = cls.wine("reg", "add", r"HKCU\Software\Wine\DllOverrides", "/v", "winemenubuilder.exe",
                                 "/d", "", "/f")
        assert status == 0, lines
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.installers = {release: f"{folder.name}/{release}.msi" for release in ("2026.1", "2026.2")}
        for release, path in cls.installers.items():
            status, output = build_installer(path, BIN, release)
            assert (status, output) == (0, ""), output

    @classmethod
    def remove_prefix(cls):
        if PREFIX.exists():
            cls.call_wine_library("stop_wine_services")
            shutil.rmtree(PREFIX)

    @staticmethod
    def call_wine_library(function):
        subprocess.run(["bash", "-c", f"set -e; . scripts/lib/session.sh; {function}"],
                       cwd=REPOSITORY, env=ENVIRONMENT, check=True, timeout=200)

    @staticmethod
    def wine(*arguments, **options):
        return run_wine(*arguments, env=ENVIRONMENT, **options)

    def msiexec(self, action, release):
        return self.wine("msiexec", action, "Z:" + self.installers[release].replace("/", "\\"), "/qn")[0]

    def query(self, key):
        status, lines = self.wine("reg", "query", key, "/s")
        return [line.strip() for line in lines if line] if status == 0 else []

    def uninstall_entries(self):
        return [line for key in UNINSTALL_KEYS for line in self.query(key)
                if "DisplayVersion" in line or "Example" in line]

    def files(self):
        """Everything on the drive but Windows Installer's own folder, as sorted paths."""
        drive = PREFIX / "drive_c"
        return sorted(str(path.relative_to(drive)) for path in drive.rglob("*")
                      if not path.is_relative_to(drive / "windows" / "Installer"))

    def run_host(self, folder, *arguments):
        status, lines = self.wine(folder / "SampleHost.exe", *arguments, "--unattended", cwd=folder)
        self.assertEqual(status, 0, lines)
        return lines

    def install(self, release):
        """Installs it and checks what came; the installed folder, as the start menu has it."""
        self.addCleanup(self.msiexec, "/x", release)
        self.assertEqual(self.msiexec("/i", release), 0)
        self.assertEqual(
            [line.split() for line in self.query(RECORDS) if not line.startswith("HKEY")],
            [["key", "REG_SZ", "DRAFT-2026-DEMO"], ["version", "REG_SZ", release]])
        self.assertIn(rf"{RECORDS}\{release}", self.query(RECORDS))
        self.assertEqual([line.split(maxsplit=2)[2] for line in self.uninstall_entries()],
                         ["Example Draft", f"{release[2:]}.0", "Example Maker"])
        links = list(PREFIX.rglob("Start Menu/Programs/Example Maker/*.lnk"))
        self.assertEqual([link.name for link in links], ["Example Draft.lnk"])
        folder, = PREFIX.glob("drive_c/users/*/AppData/Local/Programs/Example Draft")
        directory = "C:\\" + str(folder.relative_to(PREFIX / "drive_c")).replace("/", "\\") + "\\"
        for text in (f"--version {release}\0", f"{directory}\0"):
            counted = struct.pack("<H", len(text)) + text.encode("utf-16-le")
            self.assertTrue(counted in links[0].read_bytes(), f"the shortcut has no argument or directory {text}")
        return folder

    def remove(self, release, files_before):
        self.assertEqual(self.msiexec("/x", release), 0)
        self.assertEqual(self.files(), files_before)
        self.assertEqual(self.query(MAKER_KEY), [])
        self.assertEqual(self.uninstall_entries(), [])

    def test_an_installed_product_works_and_leaves_nothing_behind(self):
        before = self.files()
        folder = self.install("2026.1")
        self.assertEqual(sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file()),
                         ["ProductServices.dll", "SampleHost.exe", "lang/DE/Vemo_DE.lang"])
        with Service():
            self.assertEqual(self.run_host(folder, "check"),
                             ["outcome: 200: a newer release is at https://127.0.0.1:18443/buy/draft-2026-2"])
            self.assertEqual(self.run_host(folder, "upgrade"),
                             [*OFFERS, "  pressing: Exit", "outcome: 540: User chose to quit!"])
            self.assertEqual(self.run_host(folder, "upgrade", "--language", "140"),
                             [OFFERS[0].replace("Upgrade center", "Upgrade-Center"), *OFFERS[1:],
                              "  pressing: Beenden", "outcome: 540: Der Benutzer hat abgebrochen!"])
        self.remove("2026.1", before)

    def test_a_newer_release_replaces_an_older_one(self):
        before = self.files()
        self.install("2026.1")
        self.install("2026.2")
        self.assertNotEqual(self.msiexec("/i", "2026.1"), 0, "an older release over a newer one")
        self.assertIn(rf"{RECORDS}\2026.2", self.query(RECORDS))
        self.remove("2026.2", before)


if __name__ == "__main__":
    unittest.main()
