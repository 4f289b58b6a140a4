"""Talks to the development product service over HTTPS."""

import http.client
import json
import signal
import socket
import ssl
import sys

import pytest

from conftest import ADDRESS, REPOSITORY, catalogue, end, run

OFFERS = json.dumps(json.loads(catalogue())["DRAFT-2026-DEMO"]["2026.1"]).encode()
UNKNOWN, MALFORMED, REFUSED = (json.dumps({"status": 0, "error": error}).encode() for error in (
    "unknown product key", "malformed query", "refused on request"))
UPDATES, TLS = "/get_updates.php", ssl._create_unverified_context()


def query(key="DRAFT-2026-DEMO", version="2026.1", up="1", api_key="a"):
    return f"api_key={api_key}&key={key}&hardware_id=h&version={version}&up={up}".encode()


def ask(service, path, body=b"", method="POST"):
    connection = http.client.HTTPSConnection(ADDRESS, service.port, timeout=20, context=TLS)
    connection.request(method, path, body)
    response = connection.getresponse()
    return response.status, response.read()


def test_each_request_has_its_answer_and_its_line(service):
    cases = [
        ("/check.php", b"", (200, b"1"), '-> "1"'),
        (UPDATES, query(), (200, OFFERS), "  key=DRAFT-2026-DEMO version=2026.1 up=1 (update check) -> 3 offers"),
        (UPDATES, query(up="0", api_key="a&up=0&version=9"), (200, OFFERS), "version=2026.1 up=0 (upgrade center)"),
        (UPDATES, query(version="2026.2"), (200, b""), "-> nothing newer"),
        (UPDATES, query(version="1999"), (200, b""), "-> version not in the catalogue"),
        (UPDATES, query(key="A&B=%41+\u00e9\n"), (200, UNKNOWN), r"key=A&B=%41+é\x0a version="),
        (UPDATES, query(up="2"), (400, MALFORMED), "query=api_key=a&key=D"),
        (UPDATES, b"api_key=a&key=b&hardware_id=h&up=1", (400, MALFORMED), "query=api_key=a&key=b"),
        ("/other", b"", (404, b"No such path.\n"), "404")]
    running = service()
    assert [ask(running, path, body) for path, body, _, _ in cases] == [answer for _, _, answer, _ in cases]
    assert b"<h1>model-2026-1</h1>" in ask(running, "/buy/model-2026-1", method="GET")[1]
    for line, (path, _, _, logged) in zip(end(running), cases):
        assert line.startswith(f"POST {path} ") and logged in line


def test_options_override_the_answers(service, tmp_path):
    (tmp_path / "file").write_bytes(b"\xffany bytes\0")
    for option, value, expected in (("--answer", "offers", OFFERS), ("--answer", "refusal", REFUSED),
                                    ("--answer-file", tmp_path / "file", b"\xffany bytes\0")):
        running = service("--check-answer", "1 ", option, value)
        assert (ask(running, UPDATES), ask(running, "/check.php")) == ((200, expected), (200, b"1 "))
    with pytest.raises(http.client.RemoteDisconnected):
        ask(service("--answer", "close"), UPDATES)


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_bad_clients_hold_up_nothing_and_both_signals_end_it_in_order(service, number):
    running = service()
    silent, plain, slow, good = (socket.create_connection((ADDRESS, running.port), timeout=20) for _ in range(4))
    with silent, plain, TLS.wrap_socket(slow) as slow, TLS.wrap_socket(good, suppress_ragged_eofs=False) as good:
        slow.sendall(b"POST /check.php HTTP/1.1\r\n")
        plain.sendall(b"GET / HTTP/1.0\r\n\r\n")
        assert "connection without a TLS handshake" in running.stdout.readline()
        good.sendall(b"POST /check.php HTTP/1.1\r\nContent-Length: 0\r\n\r\n")
        # One record, and then the end of TLS.
        assert good.recv(16384).endswith(b"\r\n\r\n1") and good.recv(1) == b""
        end(running, number)


def test_what_it_cannot_start_with_is_said_in_one_sentence(tmp_path):
    file, offers = tmp_path / "file", '{"K": {"1": [{"name": "n"}]}}'
    with socket.create_server((ADDRESS, 0)) as used:
        for option, value, text, reason in (("--port", used.getsockname()[1], "", ": Address already in use"),
                                            ("--answer-file", tmp_path, "", f"{tmp_path}: Is a directory"),
                                            ("--catalogue", file, "{\n!", "line 2"),
                                            ("--catalogue", file, offers, '"K" version "1", offer 1')):
            file.write_text(text, "utf-8")
            command = [sys.executable, REPOSITORY / "tools/product_service.py", "--address", ADDRESS, option, value]
            status, output = run(*command)
            assert (status, output.count("\n"), output[:17]) == (1, 1, "product_service: ") and reason in output
