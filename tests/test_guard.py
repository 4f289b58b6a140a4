"""Guarded calls from a host in C: replies that make no sense, texts of any length, libraries that cannot be called."""

import http.server
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import threading
import types

import pytest

REPOSITORY = pathlib.Path(__file__).parent.parent
BIN = pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"])
RECORD = r"HKCU\Software\Example Maker\Products\Guarded\1"
CONNECTIONS = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections"
OFFER = b'[{"name":"n","version":"2","url":"https://u.example"}]'
OFFERED = "bare 0 200 0 17 https://u.example"
ADDRESS = "https://a.example/" + "x" * 16000
MESSAGE = "No upgrades found! " * 10526 + "The end"  # 200,001 characters

sys.path.insert(0, str(REPOSITORY / "tools"))
import product_service  # noqa: E402


class Service(product_service.ProductServer):
    """The development service of the sample family, which gives the next of `answers` to each query."""

    fixed_answer = property(lambda self: product_service.Answer("next", self.answers.pop(0)), lambda self, value: None)

    def __init__(self):
        self.answers = []
        super().__init__(types.SimpleNamespace(
            port=18443, catalogue=REPOSITORY / "tools/catalogue.json", answer=None, answer_file=None, check_answer="1"))
        self.tls = product_service.make_tls_context()


class Proxy(http.server.BaseHTTPRequestHandler):
    """A proxy that connects where it is told to, and keeps what it was told."""

    def do_CONNECT(self):
        self.server.log.append(self.requestline)
        host, port = self.path.split(":")
        with socket.create_connection((host, int(port))) as service:
            self.send_response(200)
            self.end_headers()
            threading.Thread(target=pump, args=(service, self.connection)).start()
            pump(self.connection, service)


def pump(source, target):
    while data := source.recv(65536):
        target.sendall(data)
    target.shutdown(socket.SHUT_WR)


def run_wine(*arguments, **options):
    run = subprocess.run([REPOSITORY / "scripts/run_wine.sh", *map(str, arguments)], stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, encoding="utf-8", timeout=60, check=False, **options)
    assert run.returncode == 0, run.stdout
    return run.stdout.splitlines()


@pytest.fixture(scope="module")
def service():
    for name in ("key", "version"):
        run_wine("reg", "add", RECORD, "/v", name, "/d", "any", "/f")
    with Service() as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        yield server
        server.shutdown()
    run_wine("reg", "delete", RECORD, "/f")


@pytest.fixture
def host(tmp_path):
    """The host with its libraries, in a folder of its own."""
    for name in ("guard_host.exe", "ProductServices.dll", "ProductServicesGuard.dll"):
        shutil.copy(BIN / name, tmp_path)
    return lambda *arguments: run_wine(tmp_path / "guard_host.exe", *arguments, cwd=tmp_path)


@pytest.mark.parametrize("reply, check, upgrade", [
    (b"<html>503</html>", "json.exception.parse_error.101", "json.exception.parse_error.101"),
    (b"\xff", "parse_error.101", "parse_error.101"),
    (b'{"status":"0"}', "type_error.302", "type_error.302"),
    (b'{"name":"n"}', "type_error.305", "type_error.305"),
    (b"7", "type_error.305", "type_error.305"),
    (b'"text"', "type_error.305", "type_error.305"),
    (b"true", "type_error.305", "type_error.305"),
    (b"[]", "type_error.302", None),
    (b"null", "type_error.302", None),
    (b'[{"name":"n","version":2,"url":"u"}]', "type_error.302", "type_error.302"),
    (b"[1e999]", "out_of_range.406", "out_of_range.406"),
    ('[{"name":"\U0001F600","version":"2","url":"u"}]'.encode(), "bad conversion", "bad conversion"),
])
def test_a_reply_that_makes_no_sense_between_replies_that_do(service, host, reply, check, upgrade):
    service.answers = [OFFER, reply, reply, reply, reply, OFFER]
    lines = host("bare", "check", "check", "check", "upgrade", "bare")
    print(lines)
    assert lines[0] == lines[5] == OFFERED
    assert all(line.startswith("check 2 -1 0 ") and check in line for line in lines[1:4])
    assert lines[4].startswith("upgrade 2 -1 0 ") and upgrade in lines[4] if upgrade else lines[4] == "upgrade 0 -1 0 0 "


def test_trial(service, host):
    service.answers = [b""] * 6
    print(host("upgrade", "room=0", "upgrade", "room=1", "upgrade", "room=20", "upgrade", "null", "upgrade", "size=8", "upgrade"))
