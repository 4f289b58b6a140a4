"""Guarded calls from a host in C: replies that make no sense, texts of any length, libraries that cannot be called."""

import http.server
import os
import pathlib
import shutil
import socket
import struct
import subprocess
import sys
import threading
import types

import pytest

REPOSITORY = pathlib.Path(__file__).parent.parent
sys.path.insert(0, str(REPOSITORY / "tools"))
import product_service  # noqa: E402

BIN = pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"])
RECORD = r"HKCU\Software\Example Maker\Products\Guarded\1"
CONNECTIONS = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections"
OFFER = b'[{"name":"n","version":"2","url":"https://u.example"}]'


class Service(product_service.ProductServer):
    """The sample family's service, which gives the next of `answers` to each query."""

    fixed_answer = property(lambda self: product_service.Answer("next", self.answers.pop(0)), lambda *_: None)

    def __init__(self):
        super().__init__(types.SimpleNamespace(port=18443, catalogue=REPOSITORY / "tools/catalogue.json",
                                               answer=None, answer_file=None, check_answer="1"))
        self.tls = product_service.make_tls_context()


class Proxy(http.server.BaseHTTPRequestHandler):
    """A proxy that connects where it is told to, and keeps what it was told."""

    def do_CONNECT(self):
        self.server.told.append(self.requestline)
        with socket.create_connection(self.path.split(":")) as service:
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
    return lambda *arguments, cwd=tmp_path: run_wine(tmp_path / "guard_host.exe", *arguments, cwd=cwd)


@pytest.mark.parametrize("reply, check, upgrade", [
    (b"<html>503</html>", "json.exception.parse_error.101", "json.exception.parse_error.101"),
    (b"\xff", "last read: '<FFFD>'", "last read: '<FFFD>'"),
    (b'{"status":"0"}', "type_error.302", "type_error.302"),
    (b'{"name":"n"}', "type_error.305", None),
    (b"[]", "type_error.302", None),
    (b'[{"name":"n","version":2,"url":"u"}]', "type_error.302", "type_error.302"),
    (b"[1e999]", "out_of_range.406", "out_of_range.406"),
    ('[{"name":"\U0001F600","version":"2","url":"u"}]'.encode(), "bad conversion", "bad conversion"),
])
def test_a_reply_that_makes_no_sense(service, host, reply, check, upgrade):
    service.answers = [OFFER, reply, reply, reply, reply, OFFER]
    lines = host("bare", "check", "check", "check", "upgrade", "bare")
    print(lines)


def test_texts_of_any_length(service, host, tmp_path):
    language = tmp_path / "lang/EN/Vemo_EN.lang"
    language.parent.mkdir(parents=True)
    language.write_text("\n" * 70 + "\U0001F600" * 100_000 + "\n" * 17, "utf-16-le")
    rooms = ("r300000", "r200001", "r200000", "r4", "r1", "r0")
    service.answers = [b""] * 7
    print(host(*(argument for room in rooms for argument in (room, "upgrade")), "r8", "0", "upgrade", "s8", "upgrade"))
    language.write_bytes(language.read_bytes()[:280] + b"n\0" * 30_000_000)
    print(host("upgrade"))


@pytest.mark.parametrize("damage, sentence", [
    (None, "is not in the folder"),
    (lambda data: b"", "is damaged"),
    (lambda data: data[:5000], "is damaged"),
    (lambda data: data.replace(b"PE\0\0\x64\x86", b"PE\0\0\x4C\x01", 1), "not for 64-bit"),
    (lambda data: (BIN / "ProductServicesGuard.dll").read_bytes(), "another library"),
    (lambda data: data.replace(struct.pack("<4I", 0xFEEF04BD, 0x10000, 0x10000, 0),
                               struct.pack("<4I", 0xFEEF04BD, 0x10000, 0x20000, 0)), "another major version"),
])
def test_a_library_that_cannot_be_called(host, tmp_path, damage, sentence):
    library = tmp_path / "ProductServices.dll"
    library.write_bytes(damage(library.read_bytes())) if damage else library.unlink()
    # In the working directory there is one that could.
    print(host("check", cwd=BIN))


@pytest.mark.parametrize("bypass, hosts", [
    ("<local>;*.example.com; 10.*", "example.com,10.0.0.0/8"),
    ("127.0.*", "127.0.0.0/16"),
])
def test_the_proxy_of_windows(service, host, bypass, hosts):
    proxy = http.server.ThreadingHTTPServer(("127.0.0.1", 18480), Proxy)
    proxy.told = []
    threading.Thread(target=proxy.serve_forever, daemon=True).start()
    settings = struct.pack("<3I", 0x46, 1, 3)
    for text in ("http=127.0.0.1:1;https=127.0.0.1:18480", bypass, ""):
        settings += struct.pack("<I", len(text)) + text.encode()
    run_wine("reg", "add", CONNECTIONS, "/v", "DefaultConnectionSettings", "/t", "REG_BINARY", "/d", settings.hex(), "/f")
    service.answers = [OFFER] * 2
    print(host("check", "proxy", "no_proxy", "check", "proxy"))
    run_wine("reg", "delete", CONNECTIONS, "/v", "DefaultConnectionSettings", "/f")
    proxy.shutdown()
    proxy.server_close()
    print(proxy.told)
