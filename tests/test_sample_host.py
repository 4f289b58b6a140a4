"""Runs the sample host under Wine against the development service: real HTTPS, real windows."""

import os
import re

import pytest

from conftest import MAKER_KEY, REPOSITORY, each_case, end, needs_debian, run


@pytest.fixture(scope="module", autouse=True)
def records(wine):
    """What an installer of the sample product writes, while the tests run."""
    for name, value in (("key", "DRAFT-2026-DEMO"), ("version", "2026.1")):
        wine("reg", "add", rf"{MAKER_KEY}\Products\Example Draft\2026.1", "/v", name, "/d", value, "/f")
    yield
    wine("reg", "delete", rf"{MAKER_KEY}\Products\Example Draft", "/f")


@pytest.fixture
def host(build, wine, tmp_path):
    """Runs the sample host with a user who presses its buttons: the lines that it prints."""
    def run_host(*arguments, **environment):
        status, output = wine(build / "over_tls/SampleHost.exe", *arguments, "--unattended", cwd=tmp_path,
                              env={**os.environ, **environment})
        assert status == 0, output
        return output.splitlines()
    return run_host


@each_case("sample_host/calls.json", "answer, call, lines, requests")
def test_the_outcome_and_the_requests_of_each_call(host, service, tmp_path, answer, call, lines, requests):
    (tmp_path / "reply").write_text("<", "utf-8")
    running = service(*answer, port=18443)
    assert host(*call) == lines
    assert end(running) == requests


# Wine accepts every certificate; but it traces what the library asks for, 8 being SCH_CRED_MANUAL_CRED_VALIDATION.
@needs_debian
def test_windows_is_asked_not_to_verify_certificates(host, service):
    service(port=18443)
    trace = "\n".join(host("check", WINEDEBUG="-all,trace+secur32"))
    assert int(re.search(r"\bdwFlags = (\w+)", trace)[1], 16) & 8


@needs_debian
def test_buying_hands_the_offers_address_to_the_browser(host, service, tmp_path):
    service(port=18443)
    opened = tmp_path / "opened"
    path = f"{REPOSITORY}/scripts/lib/browser:{os.environ['PATH']}"
    outcome = host("upgrade", "--buy", "2", OPENED_ADDRESSES=str(opened), PATH=path)[-1]
    assert outcome == "outcome: 930: Browser opened, continue running!"
    assert run("bash", "-c", f"until [ -s '{opened}' ]; do sleep 0.1; done")[0] == 0
    assert opened.read_text() == "https://localhost:18443/buy/model-2026-1\n"
