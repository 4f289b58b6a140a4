"""The proxy that is configured in Windows, in guarded calls of a host in C."""

import contextlib
import functools
import http.server
import re
import socket
import socketserver
import struct
import threading

import pytest

from conftest import ADDRESS

PROXY_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections"
PROXY_VALUE = "/v", "DefaultConnectionSettings"
FIXED, SCRIPT = 3, 5  # flags of the settings
TIMED_OUT = [["check 10 -1: The time limit was exceeded.", f"after {seconds} s", "https_proxy: not set"]
             for seconds in (1, 2)]
UP_TO_DATE = "check 2 -1: You are running the latest version"
CALL = "any-certificate", "system-proxy", "check", "environment"


class Tunnel(socketserver.BaseRequestHandler):
    """An HTTP proxy that records the targets of CONNECT requests and connects to them."""

    def handle(self):
        request = self.request.recv(4096).decode()
        target = re.match(r"CONNECT ([\d.]+):(\d+) HTTP/1.1\r\n", request)
        if target:
            self.server.targets.append(f"{target[1]}:{target[2]}")
            with socket.create_connection((target[1], int(target[2]))) as service:
                self.request.sendall(b"HTTP/1.1 200 OK\r\n\r\n")
                threading.Thread(target=self.forward, args=[service, self.request], daemon=True).start()
                self.forward(self.request, service)

    @staticmethod
    def forward(source, sink):
        with contextlib.suppress(OSError):
            while data := source.recv(4096):
                sink.sendall(data)
            sink.shutdown(socket.SHUT_WR)


@pytest.fixture
def proxy():
    """Runs a proxy. Has its address, and the targets of the requests."""
    with socketserver.ThreadingTCPServer((ADDRESS, 0), Tunnel) as server:
        server.daemon_threads = True
        server.targets = []
        server.address = f"{ADDRESS}:{server.server_address[1]}"
        threading.Thread(target=server.serve_forever, daemon=True).start()
        yield server
        server.shutdown()


@pytest.fixture(scope="module")
def windows_proxy(wine, tmp_path_factory):
    """Changes the user's proxy settings, which are restored after the last test."""
    saved = tmp_path_factory.mktemp("settings") / "settings.reg"
    wine("reg", "export", PROXY_KEY, saved)

    def change(flags, proxies="", bypass_list="", script_url=""):
        value = struct.pack("<3I", 0x46, 1, flags)
        for text in (proxies, bypass_list, script_url):
            value += struct.pack("<I", len(text)) + text.encode()
        status, output = wine("reg", "add", PROXY_KEY, *PROXY_VALUE, "/t", "REG_BINARY", "/d", value.hex(), "/f")
        assert status == 0, output
    yield change
    wine("reg", "delete", PROXY_KEY, *PROXY_VALUE, "/f")
    if saved.exists():
        wine("reg", "import", saved)


@pytest.fixture
def script(tmp_path):
    """A configuration script, as its URL and its file."""
    handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=tmp_path)
    with http.server.ThreadingHTTPServer((ADDRESS, 0), handler) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        yield f"http://{ADDRESS}:{server.server_port}/proxy.pac", tmp_path / "proxy.pac"
        server.shutdown()


def test_configured_proxy_is_used(host, service, windows_proxy, proxy):
    service("--answer", "empty", port=18443)
    windows_proxy(FIXED, f"http=a:1;https={proxy.address}", "*.example")
    assert host("any-certificate", "check") == [UP_TO_DATE]
    assert proxy.targets == [], "without the option"
    assert host(*CALL) == [UP_TO_DATE, "https_proxy: not set"]
    assert proxy.targets == [f"{ADDRESS}:18443"]


def test_pac_script_falls_back_to_the_next_proxy(host, service, windows_proxy, proxy, script):
    service("--answer", "empty", port=18443)
    url, file = script
    # Wine passes on what is before a blank or a semicolon; Windows has semicolons between the script's proxies.
    file.write_text(f"function FindProxyForURL() {{ return 'PROXY {ADDRESS}:1\\t{proxy.address}'; }}")
    windows_proxy(SCRIPT, script_url=url)
    assert host(*CALL) == [UP_TO_DATE, "https_proxy: not set"]
    assert proxy.targets == [f"{ADDRESS}:18443"]


def test_time_limit_covers_the_pac_script(host, service, windows_proxy):
    service("--answer", "empty", port=18443)
    with socket.create_server((ADDRESS, 0)) as silent:
        windows_proxy(SCRIPT, script_url=f"http://{ADDRESS}:{silent.getsockname()[1]}/proxy.pac")
        assert host("limit=1000", *CALL) in TIMED_OUT


def test_certificate_is_verified_through_a_proxy(host, service, windows_proxy, proxy):
    service(port=18443)
    windows_proxy(FIXED, proxy.address)
    line, = host("system-proxy", "check")
    assert line.startswith(f"check 12 -1: The certificate of {ADDRESS} is not valid: its issuer is not trusted.")
    assert proxy.targets == [f"{ADDRESS}:18443"]
