"""Runs the sample host under Wine against the development service: real HTTPS, real windows."""

import os
import re

import pytest

from conftest import ADDRESS, MAKER_KEY, REPOSITORY, end, run

CHECKED = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up=1 (update check) -> {}"
LISTED = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up=0 (upgrade center) -> {}"
PROBED = 'POST /check.php -> "1"'
OFFERS = ["upgrade center: Example Draft - Upgrade center", "  offer: Example Draft 2026.2",
          "  offer: Example Model 2026.1", "  offer: Example Layout Studio 2026.1"]
NO_INTERNET = ['message box "Example Draft": No internet found!', "outcome: nothing was reported"]
NO_CONNECTION = ["outcome: 940: For upgrade center to appear, you need a stable internet connection!"]
NO_JSON = ["outcome: the call ended with an error: [json.exception.parse_error.101] parse error at line 1, column 1: "
           "syntax error while parsing value - invalid literal; last read: '<'"]


@pytest.fixture(scope="module", autouse=True)
def records(wine):
    for name, value in (("key", "DRAFT-2026-DEMO"), ("version", "2026.1")):
        wine("reg", "add", rf"{MAKER_KEY}\Products\Example Draft\2026.1", "/v", name, "/d", value, "/f")


@pytest.fixture
def host(build, wine, tmp_path):
    (tmp_path / "page").write_text("<!DOCTYPE html><title>Sign in to the network</title>", "utf-8")

    def run_host(*arguments, **options):
        status, output = wine(build / "over_tls/SampleHost.exe", *arguments, "--unattended", cwd=tmp_path,
                              env={**os.environ, **options})
        return output.splitlines() if status == 0 else status
    return run_host


@pytest.mark.parametrize("options, arguments, expected, requests", [
    ("", "check", [f"outcome: 200: a newer release is at https://{ADDRESS}:18443/buy/draft-2026-2"],
     [CHECKED.format("3 offers")]),
    ("", "check --language 12x", 2, []),
    ("--answer close", "check", NO_INTERNET, [CHECKED.format("closed without an answer")]),
    ("--answer-file page", "upgrade", NO_JSON, [PROBED, LISTED.format("52 bytes of page")]),
    ("--check-answer 0", "upgrade", NO_CONNECTION, ['POST /check.php -> "0"']),
    ("", "upgrade", [*OFFERS, "  pressing: Exit", "outcome: 540: User chose to quit!"],
     [PROBED, LISTED.format("3 offers")])])
def test_the_outcome_and_the_requests_of_each_call(host, service, options, arguments, expected, requests):
    running = service(*options.split(), port=18443)
    assert (host(*arguments.split()), end(running)) == (expected, requests)


def test_without_a_service(host):
    assert (host("check"), host("upgrade")) == (NO_INTERNET, NO_CONNECTION)


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
