"""Uses the menu of the sample host's window under Wine, with the development service."""

import pefile
import pytest

from conftest import MAKER_KEY, stop_service
from pe_file import read_pe
from sample_window import close_message, open_sample_host, press, press_until_opened

CHECK = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up=1 (update check) -> "
OPEN_CHECK = "alt+h", "c"
IDM_CHECK = 101


@pytest.fixture(scope="module", autouse=True)
def record(wine):
    """Writes the record that an installer of the sample product writes, while the tests run."""
    record = MAKER_KEY + r"\Products\Example Draft\2026.1"
    for name, value in (("key", "DRAFT-2026-DEMO"), ("version", "2026.1")):
        status, output = wine("reg", "add", record, "/v", name, "/d", value, "/f")
        assert status == 0, output
    yield
    wine("reg", "delete", rf"{MAKER_KEY}\Products\Example Draft", "/f")


def test_one_call_at_a_time(https_sample, trusted_service, wine):
    running = trusted_service("--answer", "empty")
    with open_sample_host(https_sample / "SampleHost.exe") as (process, window):
        assert running.stdout.readline() == f"{CHECK}empty body\n", "the quiet check at start"
        box = press_until_opened(window, OPEN_CHECK, "Example Draft")
        press(window, *OPEN_CHECK)
        # The menu's items are grey, but programs that operate windows can send the command.
        assert wine("guard_host.exe", f"choose={IDM_CHECK}", cwd=https_sample) == (0, "done\n")
        press(window, "alt+F4")
        close_message(box)

        close_message(press_until_opened(window, OPEN_CHECK, "Example Draft"))
        press(window, "alt+F4")
        assert process.wait(timeout=10) == 0
    assert stop_service(running) == [f"{CHECK}empty body"] * 2, "one for each choice while no call was in progress"


def test_closing_cancels_a_pending_check(https_sample, trusted_service):
    running = trusted_service("--no-response", "/get_updates.php")
    with open_sample_host(https_sample / "SampleHost.exe") as (process, window):
        assert running.stdout.readline() == "POST /get_updates.php -> no response\n"
        press(window, "alt+F4")
        assert process.wait(timeout=10) == 0, "long before the time limit of the call"


def test_manifest_declares_dpi_awareness(build):
    program = read_pe(build / "bin/SampleHost.exe", "RESOURCE")
    manifests = [leaf.data.struct for kind in program.DIRECTORY_ENTRY_RESOURCE.entries
                 if kind.id == pefile.RESOURCE_TYPE["RT_MANIFEST"]
                 for name in kind.directory.entries for leaf in name.directory.entries]
    assert len(manifests) == 1
    manifest = program.get_data(manifests[0].OffsetToData, manifests[0].Size).decode()
    assert "<dpiAwareness" in manifest and ">PerMonitorV2<" in manifest
