"""Opens the sample host's window under Wine and uses its menu, against the development service."""

import pefile
import pytest

from conftest import MAKER_KEY, end
from sample_window import wait_for_window, open_sample_host, press

CHECK = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up=1 (update check) -> "
OPEN_CHECK = "alt+h", "c"


@pytest.fixture(scope="module", autouse=True)
def record(wine):
    """What an installer of the sample product writes, while the tests run."""
    for name, value in (("key", "DRAFT-2026-DEMO"), ("version", "2026.1")):
        wine("reg", "add", rf"{MAKER_KEY}\Products\Example Draft\2026.1", "/v", name, "/d", value, "/f")
    yield
    wine("reg", "delete", rf"{MAKER_KEY}\Products\Example Draft", "/f")


def test_a_call_refuses_a_second_one_and_keeps_the_window_open(build, trusted_service):
    running = trusted_service("--answer", "empty")
    with open_sample_host(build / "over_tls/SampleHost.exe") as (process, window):
        assert running.stdout.readline() == f"{CHECK}empty body\n", "the quiet check at start"
        press(window, *OPEN_CHECK)
        box = wait_for_window("Example Draft")
        press(window, *OPEN_CHECK)
        press(window, "alt+F4")
        press(box, "Return")

        press(window, *OPEN_CHECK)
        press(wait_for_window("Example Draft"), "Return")
        press(window, "alt+F4")
        assert process.wait(timeout=10) == 0
    assert end(running) == [f"{CHECK}empty body"] * 2, "one for each choice while no call was in progress"


def test_closing_ends_a_check_that_the_service_does_not_answer(build, trusted_service):
    running = trusted_service("--hang", "/get_updates.php")
    with open_sample_host(build / "over_tls/SampleHost.exe") as (process, window):
        assert running.stdout.readline() == "POST /get_updates.php -> hangs\n"
        press(window, "alt+F4")
        assert process.wait(timeout=10) == 0, "long before the time limit of the call"


def test_windows_does_not_stretch_the_window(build):
    program = pefile.PE(build / "bin/SampleHost.exe")
    manifests = [leaf.data.struct for kind in program.DIRECTORY_ENTRY_RESOURCE.entries
                 if kind.id == pefile.RESOURCE_TYPE["RT_MANIFEST"]
                 for name in kind.directory.entries for leaf in name.directory.entries]
    assert len(manifests) == 1
    manifest = program.get_data(manifests[0].OffsetToData, manifests[0].Size).decode()
    assert "<dpiAwareness" in manifest and ">PerMonitorV2<" in manifest
