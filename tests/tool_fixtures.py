"""Fixtures for the tests of ProductServicesTool: a product service in this process, records, and the tool."""

import contextlib
import os
import shutil
import socket
import ssl
import threading
import time

import pytest

from conftest import ADDRESS, API_KEY, KEY, MAKER_KEY, NEW_KEY, run, trust_root

OFFERS = '[{"name":"A","version":"2","url":"https://localhost:18443/buy"}]'
PRODUCTS = MAKER_KEY + r"\Products"
# The values that an installer would write, by product name.
RECORDS = {
    "Healthy": {"key": KEY, "version": "2026.1"},
    "Number as key": {"key": 1, "version": "2026.1"},
    "No version": {"key": KEY},
    "Example Draft": {"key": KEY, "version": "2026.1"},
}


def run_openssl(folder, *arguments):
    status, output = run("openssl", *arguments, cwd=folder)
    assert status == 0, output


@pytest.fixture(scope="session")
def certificates(wine, tmp_path_factory):
    """Returns a folder with the keys and certificates of a service that Wine trusts, and of one that it does not."""
    folder = tmp_path_factory.mktemp("certificates")
    for name in ("trusted", "untrusted"):
        run_openssl(folder, "req", "-x509", *NEW_KEY, "-nodes", "-days", "9", "-subj", f"/CN={name}",
                    "-addext", f"subjectAltName=DNS:{ADDRESS}", "-keyout", f"{name}.key", "-out", f"{name}.pem")
    with trust_root(wine, ssl.PEM_cert_to_DER_cert((folder / "trusted.pem").read_text())):
        yield folder


@pytest.fixture(scope="session")
def records(wine, tmp_path_factory):
    lines = ["REGEDIT4"]
    for product, values in RECORDS.items():
        lines.append(f"[{PRODUCTS.replace('HKCU', 'HKEY_CURRENT_USER')}\\{product}\\2026.1]")
        lines += [f'"{name}"=' + (f"dword:{value}" if isinstance(value, int) else f'"{value}"')
                  for name, value in values.items()]
    file = tmp_path_factory.mktemp("records") / "records.reg"
    file.write_text("\n".join(lines) + "\n", "ascii")
    status, output = wine("reg", "import", file)
    assert status == 0, output
    yield
    for product in RECORDS:
        wine("reg", "delete", rf"{PRODUCTS}\{product}", "/f")


class Service:
    """A product service in this process. Replies are lists of pieces. At a piece that is None, the service hangs."""

    def __init__(self, certificates, certificate="trusted", probe=("1",), updates=(OFFERS,), status="200 OK", hangs=""):
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(certificates / f"{certificate}.pem", certificates / f"{certificate}.key")
        self.replies = {"/check.php": probe, "/get_updates.php": updates}
        self.status, self.hangs = status, hangs
        self.at_request = lambda path: None
        self.listener = socket.create_server((ADDRESS, 18443))
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        with contextlib.suppress(OSError):
            while True:
                threading.Thread(target=self.serve, args=self.listener.accept()[:1], daemon=True).start()

    def serve(self, connection):
        connection.settimeout(20)
        with contextlib.suppress(OSError):
            if self.hangs == "in TLS":
                connection.recv(4096)
                time.sleep(0.1)  # as over a network
                connection.sendall(b"\x16\x03\x03\x00\x40\x02")  # the beginning of a ServerHello
            if self.hangs:
                self.wait_for_end(connection)
            with self.context.wrap_socket(connection, server_side=True) as client:
                self.reply(client)

    def wait_for_end(self, connection):
        while connection.recv(4096):
            pass

    def reply(self, client):
        request = b""
        while b"\r\n\r\n" not in request or b"Content-Length: 0" not in request and b"&up=" not in request:
            received = client.recv(4096)
            if not received:
                return
            request += received
        path = request.split()[1].decode()
        self.at_request(path)
        pieces = self.replies[path] or [None]
        body = [(piece or "").replace("KEYS", f"{API_KEY} {KEY}").encode() for piece in pieces]
        if pieces[0] is not None:
            client.sendall(f"HTTP/1.1 {self.status}\r\nLocation: https://elsewhere.example/\r\nContent-Length: "
                           f"{sum(map(len, body)) + (None in pieces)}\r\n\r\n".encode() + body[0])
        for piece in body[1:]:
            time.sleep(0.1)  # so that it arrives as a separate piece
            client.sendall(piece)
        if None in pieces:
            self.wait_for_end(client)

    def close(self):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()


@pytest.fixture
def start_service(certificates):
    services = []

    def start(**properties):
        services.append(Service(certificates, **properties))
        return services[-1]
    yield start
    for started in services:
        started.close()


@pytest.fixture
def folder(build, https_sample, records, tmp_path):
    """Returns the folder of a program, with the tool, the DLL and language files. The records exist."""
    shutil.copy(https_sample / "ProductServicesTool.exe", tmp_path)
    shutil.copy(build / "bin/ProductServicesGuard.dll", tmp_path)
    shutil.copytree(build / "bin/lang/DE", tmp_path / "lang/DE")
    return tmp_path


@pytest.fixture
def tool(folder, wine):
    """Runs the tool for a product, and returns its exit status and output."""
    def run_tool(command, *options, product="Healthy", api_key=API_KEY, variables=None, **more):
        arguments = [command, "--product", product, "--version", "2026.1", "--api-key", api_key, *options]
        program = ["ProductServicesTool.exe"]
        if variables:
            settings = "".join(f"set {name}={value}&& " for name, value in variables.items())
            program = ["cmd", "/c", settings + program[0]]
        return wine(*program, *arguments, cwd=folder, **more)
    return run_tool


@pytest.fixture(scope="session")
def slow_resolver(tmp_path_factory):
    """Returns the environment with a library that makes a DNS lookup take ten minutes."""
    folder = tmp_path_factory.mktemp("resolver")
    (folder / "slow.c").write_text("""#include <netdb.h>
#include <unistd.h>
int getaddrinfo(const char *node, const char *service, const struct addrinfo *hints, struct addrinfo **result)
{
    sleep(600);
    return EAI_AGAIN;
}
""")
    status, output = run("clang", "-shared", "-fPIC", "-o", "slow.so", "slow.c", cwd=folder)
    assert status == 0, output
    # A path in LD_PRELOAD would end at a blank.
    return {"env": {**os.environ, "LD_PRELOAD": "slow.so", "LD_LIBRARY_PATH": str(folder)},
            "variables": {"https_proxy": "http://proxy.example:1"}}
