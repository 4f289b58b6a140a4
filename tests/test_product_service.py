"""Talks to the development product service over HTTPS."""

import json
import socket
import ssl

from conftest import ADDRESS, end

UNKNOWN, MALFORMED = (b'{"status": 0, "error": "%s"}' % error for error in (b"unknown product key", b"malformed query"))
UPDATES, QUERY = "/get_updates.php", "api_key=a&key={}&hardware_id=h&version={}&up={}"
TLS = ssl._create_unverified_context()
TLS.options &= ~ssl.OP_IGNORE_UNEXPECTED_EOF


def ask(connection, path, body):
    """Status and body of a reply, which must come as one TLS record and with the end of TLS after it."""
    with TLS.wrap_socket(connection, suppress_ragged_eofs=False) as client:
        client.sendall(f"POST {path} HTTP/1.1\r\nContent-Length: {len(body.encode())}\r\n\r\n{body}".encode())
        head, _, reply = client.recv(16384).partition(b"\r\n\r\n")
        assert client.recv(1) == b""
        return head[9:12], reply


def test_each_request_has_its_answer_and_its_line_and_a_silent_client_holds_up_nothing(service, tmp_path):
    running = service()
    offers = json.dumps(json.loads((tmp_path / "catalogue.json").read_text())["DRAFT-2026-DEMO"]["2026.1"]).encode()
    cases = [("/check.php", "", b"200", b"1", '-> "1"'),
             (UPDATES, QUERY.format("DRAFT-2026-DEMO", "2026.1", 1), b"200", offers, "up=1 (update check) -> 3 offers"),
             (UPDATES, QUERY.format("DRAFT-2026-DEMO", "2026.2", 0), b"200", b"", "-> nothing newer"),
             (UPDATES, QUERY.format("A&key=%41+\u00e9\n", "1", 1), b"200", UNKNOWN, r"key=A&key=%41+é\x0a version=1"),
             (UPDATES, "api_key=a&key=b&hardware_id=h&up=1", b"400", MALFORMED, "query=api_key=a&key=b")]
    with socket.create_connection((ADDRESS, running.port)):
        for path, body, *answer, _ in cases:
            assert ask(socket.create_connection((ADDRESS, running.port), 20), path, body) == tuple(answer)
        for line, (path, *_, logged) in zip(end(running), cases, strict=True):
            assert line.startswith(f"POST {path} ") and logged in line
