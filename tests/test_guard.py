"""The proxy of Windows, taken over by a host in C."""

import functools
import http.server
import shutil
import struct
import threading

import pytest

from conftest import ADDRESS, MAKER_KEY

PROXY_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections"
PROXY_VALUE = "/v", "DefaultConnectionSettings", "/f"
NO_UPGRADES = "upgrade 1 920: No upgrades found!"
NO_CONNECTION = "upgrade 1 940: For upgrade center to appear, you need a stable internet connection!"


@pytest.fixture
def host(build, tmp_path, wine):
    """Runs the host with its libraries in a folder of its own, and returns its lines."""
    record = MAKER_KEY + r"\Products\Guarded\1"
    wine("reg", "add", record, "/v", "key", "/d", "any", "/f")
    wine("reg", "add", record, "/v", "version", "/d", "any", "/f")
    for file in ("over_tls/ProductServices.dll", "bin/ProductServicesGuard.dll", "bin/guard_host.exe"):
        shutil.copy(build / file, tmp_path)

    def run_host(*calls):
        status, output = wine(tmp_path / "guard_host.exe", *calls, cwd=tmp_path)
        assert status == 0, output
        return output.splitlines()
    yield run_host
    wine("reg", "delete", MAKER_KEY + r"\Products\Guarded", "/f")


@pytest.fixture
def windows_proxy(wine, tmp_path):
    """Changes the user's proxy settings, which are put back at the end."""
    saved = tmp_path / "settings.reg"
    wine("reg", "export", PROXY_KEY, saved)

    def change(flags, *texts):
        value = struct.pack("<3I", 0x46, 1, flags)
        value += b"".join(struct.pack("<I", len(text)) + text.encode() for text in texts)
        status, output = wine("reg", "add", PROXY_KEY, *PROXY_VALUE, "/t", "REG_BINARY", "/d", value.hex())
        assert status == 0, output
    yield change
    wine("reg", "delete", PROXY_KEY, *PROXY_VALUE)
    if saved.exists():
        wine("reg", "import", saved)


@pytest.fixture
def script(tmp_path):
    """A configuration script, as its address and its file."""
    handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=tmp_path)
    with http.server.ThreadingHTTPServer((ADDRESS, 0), handler) as server:
        threading.Thread(target=server.serve_forever).start()
        yield f"http://{ADDRESS}:{server.server_port}/proxy.pac", tmp_path / "proxy.pac"
        server.shutdown()


def test_the_proxy_of_windows(host, service, windows_proxy, script):
    service("--answer", "empty", port=18443)
    proxy = service()  # which says what it was asked for, in the words of OpenSSL, and gives no tunnel
    proxy_address = f"{ADDRESS}:{proxy.port}"
    calls = "upgrade", f"https://{ADDRESS}:18443", "no_proxy", "upgrade", "https://service.example"

    windows_proxy(3, f"http=a:1;https={proxy_address}", "127.*", "")
    assert host(*calls) == [
        NO_UPGRADES, f"proxy 1: {proxy_address}", f"no_proxy: {ADDRESS}", NO_UPGRADES, "proxy 2: "]

    # Wine passes on what is before a blank or a semicolon; Windows has semicolons between the script's proxies.
    address, file = script
    file.write_text(f"function FindProxyForURL() {{ return 'PROXY {ADDRESS}:1\\t{proxy_address}'; }}")
    windows_proxy(5, "", "", address)
    assert host(*calls) == [
        NO_UPGRADES, f"proxy 1: {proxy_address}", "no_proxy: ", NO_CONNECTION, "proxy 2: "]
    log = [proxy.stdout.readline(), proxy.stdout.readline()]  # of the connection that tried it and of the request
    assert ["https proxy request" in line for line in log].count(True) == 1, log
