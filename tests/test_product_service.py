"""Talks to the development product service over HTTPS."""

import json
import socket
import ssl

from conftest import ADDRESS, catalogue, end

OFFERS = json.dumps(json.loads(catalogue())["DRAFT-2026-DEMO"]["2026.1"]).encode()
UNKNOWN, MALFORMED = (b'{"status": 0, "error": "%s"}' % error for error in (b"unknown product key", b"malformed query"))
UPDATES, TLS = "/get_updates.php", ssl._create_unverified_context()
TLS.options &= ~ssl.OP_IGNORE_UNEXPECTED_EOF


def query(key="DRAFT-2026-DEMO", version="2026.1", up="1", api_key="a"):
    return f"api_key={api_key}&key={key}&hardware_id=h&version={version}&up={up}".encode()


def ask(service, path, body=b"", method="POST"):
    """Status and body of a reply, which must come as one TLS record and with the end of TLS after it."""
    connection = socket.create_connection((ADDRESS, service.port), timeout=20)
    with TLS.wrap_socket(connection, suppress_ragged_eofs=False) as client:
        client.sendall(f"{method} {path} HTTP/1.1\r\nContent-Length: {len(body)}\r\n\r\n".encode() + body)
        head, _, reply = client.recv(16384).partition(b"\r\n\r\n")
        assert client.recv(1) == b""
        return head[9:12].decode(), reply


def test_each_request_has_its_answer_and_its_line(service):
    cases = [
        ("/check.php", b"", ("200", b"1"), '-> "1"'),
        (UPDATES, query(), ("200", OFFERS), "  key=DRAFT-2026-DEMO version=2026.1 up=1 (update check) -> 3 offers"),
        (UPDATES, query(up="0", api_key="a&up=0&version=9"), ("200", OFFERS), "version=2026.1 up=0 (upgrade center)"),
        (UPDATES, query(version="2026.2"), ("200", b""), "-> nothing newer"),
        (UPDATES, query(key="A&key=%41+\u00e9\n"), ("200", UNKNOWN), r"key=A&key=%41+é\x0a version="),
        (UPDATES, b"api_key=a&key=b&hardware_id=h&up=1", ("400", MALFORMED), "query=api_key=a&key=b")]
    running = service()
    assert [ask(running, path, body) for path, body, _, _ in cases] == [answer for _, _, answer, _ in cases]
    assert b"<h1>model-2026-1</h1>" in ask(running, "/buy/model-2026-1", method="GET")[1]
    for line, (path, _, _, logged) in zip(end(running), cases):
        assert line.startswith(f"POST {path} ") and logged in line
