"""Runs the sample host under Wine against the development service: real HTTPS, real windows."""

import os
import re

import pytest

from conftest import MAKER_KEY, REPOSITORY, end, run

PROBE = 'POST /check.php -> "1"'
CHECK = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up=1 (update check) -> "
CENTER = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up=0 (upgrade center) -> "
NO_INTERNET = ['message box "Example Draft": No internet found!', "outcome: nothing was reported"]
NOT_SHOWN = "outcome: not shown: You are running the latest version"
NOT_OPENED = "outcome: not opened, since it leads to no trusted host: https://localhost:18443/buy/draft-2026-2"
LATEST = ['message box "Example Draft": You are running the latest version', "outcome: nothing was reported"]
NO_JSON = ("outcome: the call ended with an error: [json.exception.parse_error.101] parse error at line 1, column 1: "
           "syntax error while parsing value - invalid literal; last read: '<'")
OFFERS = ["upgrade center: Example Draft - Upgrade center", "  offer: Example Draft 2026.2",
          "  offer: Example Model 2026.1", "  offer: Example Layout Studio 2026.1"]


@pytest.fixture(scope="module", autouse=True)
def records(wine):
    """What an installer of the sample product writes."""
    for name, value in (("key", "DRAFT-2026-DEMO"), ("version", "2026.1")):
        wine("reg", "add", rf"{MAKER_KEY}\Products\Example Draft\2026.1", "/v", name, "/d", value, "/f")


@pytest.fixture
def host(build, wine, tmp_path):
    """Runs the sample host with a user who presses its buttons: the lines that it prints."""
    def run_host(*arguments, **environment):
        status, output = wine(build / "over_tls/SampleHost.exe", *arguments, "--unattended", cwd=tmp_path,
                              env={**os.environ, **environment})
        assert status == 0, output
        return output.splitlines()
    return run_host


@pytest.mark.parametrize("answer, call, lines, requests", [
    pytest.param("", "check", ["outcome: 200: a newer release is at https://localhost:18443/buy/draft-2026-2"],
                 [CHECK + "3 offers"], id="a newer release"),
    pytest.param("--answer empty", "check --quiet", [NOT_SHOWN], [CHECK + "empty body"], id="nothing newer, quietly"),
    pytest.param("", "check --trusted-hosts a.example", [NOT_OPENED], [CHECK + "3 offers"], id="an untrusted address"),
    pytest.param("--answer empty", "check", LATEST, [CHECK + "empty body"], id="nothing newer"),
    pytest.param("--answer close", "check", NO_INTERNET, [CHECK + "closed without an answer"], id="no reply"),
    pytest.param("--answer-file reply", "check", [NO_JSON], [CHECK + "1 bytes of reply"], id="no JSON"),
    pytest.param("", "upgrade", [*OFFERS, "  pressing: Exit", "outcome: 540: User chose to quit!"],
                 [PROBE, CENTER + "3 offers"], id="offers"),
    pytest.param("--answer empty", "upgrade", ["outcome: 920: No upgrades found!"], [PROBE, CENTER + "empty body"],
                 id="no offers")])
def test_the_outcome_and_the_requests_of_each_call(host, service, tmp_path, answer, call, lines, requests):
    (tmp_path / "reply").write_text("<", "utf-8")
    running = service(*answer.split(), port=18443)
    assert host(*call.split()) == lines
    assert end(running) == requests


# Wine accepts every certificate; but it traces what the library asks for, 8 being SCH_CRED_MANUAL_CRED_VALIDATION.
def test_windows_is_asked_not_to_verify_certificates(host, service):
    service(port=18443)
    trace = "\n".join(host("check", WINEDEBUG="-all,trace+secur32"))
    assert int(re.search(r"\bdwFlags = (\w+)", trace)[1], 16) & 8


def test_buying_hands_the_offers_address_to_the_browser(host, service, tmp_path):
    service(port=18443)
    opened = tmp_path / "opened"
    path = f"{REPOSITORY}/scripts/lib/browser:{os.environ['PATH']}"
    outcome = host("upgrade", "--buy", "2", OPENED_ADDRESSES=str(opened), PATH=path)[-1]
    assert outcome == "outcome: 930: Browser opened, continue running!"
    assert run("bash", "-c", f"until [ -s '{opened}' ]; do sleep 0.1; done")[0] == 0
    assert opened.read_text() == "https://localhost:18443/buy/model-2026-1\n"
