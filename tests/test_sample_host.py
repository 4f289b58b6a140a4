"""Runs the sample host under Wine against the development service: real HTTPS, real windows."""

import os
import re

import pytest

from conftest import ADDRESS, MAKER_KEY, REPOSITORY, end, run

ASKED = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up="
OFFERS = ["upgrade center: Example Draft - Upgrade center", "  offer: Example Draft 2026.2",
          "  offer: Example Model 2026.1", "  offer: Example Layout Studio 2026.1"]
NO_INTERNET = ['message box "Example Draft": No internet found!', "outcome: nothing was reported"]


@pytest.fixture(scope="module", autouse=True)
def records(wine):
    for name, value in (("key", "DRAFT-2026-DEMO"), ("version", "2026.1")):
        wine("reg", "add", rf"{MAKER_KEY}\Products\Example Draft\2026.1", "/v", name, "/d", value, "/f")


@pytest.fixture
def host(build, wine, tmp_path):
    def run_host(*arguments, **options):
        status, output = wine(build / "over_tls/SampleHost.exe", *arguments, "--unattended", cwd=tmp_path,
                              env={**os.environ, **options})
        assert status == 0, output
        return output.splitlines()
    return run_host


@pytest.mark.parametrize("options, arguments, expected, requests", [
    ("", "check", [f"outcome: 200: a newer release is at https://{ADDRESS}:18443/buy/draft-2026-2"],
     [ASKED + "1 (update check) -> 3 offers"]),
    ("--answer close", "check", NO_INTERNET, [ASKED + "1 (update check) -> closed without an answer"]),
    ("", "upgrade", [*OFFERS, "  pressing: Exit", "outcome: 540: User chose to quit!"],
     ['POST /check.php -> "1"', ASKED + "0 (upgrade center) -> 3 offers"])])
def test_the_outcome_and_the_requests_of_each_call(host, service, options, arguments, expected, requests):
    running = service(*options.split(), port=18443)
    assert (host(*arguments.split()), end(running)) == (expected, requests)


# Wine accepts every certificate; but it traces what the library asks for, 8 being SCH_CRED_MANUAL_CRED_VALIDATION.
def test_windows_is_asked_not_to_verify_certificates(host, service):
    service(port=18443)
    trace = "\n".join(host("check", WINEDEBUG="-all,trace+secur32"))
    assert int(re.search(r"\bdwFlags = (\w+)", trace)[1], 16) & 8


def test_buying_hands_the_offers_address_to_the_browser(host, service, tmp_path):
    service(port=18443)
    opened, path = tmp_path / "opened", f"{REPOSITORY}/scripts/lib/browser:{os.environ['PATH']}"
    assert host("upgrade", "--buy", "2", OPENED_ADDRESSES=str(opened), PATH=path)[-1].startswith("outcome: 930: ")
    run("bash", "-c", f"until [ -s '{opened}' ]; do sleep 0.1; done")
    assert opened.read_text() == f"https://{ADDRESS}:18443/buy/model-2026-1\n"
