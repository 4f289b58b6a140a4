"""ProductServicesTool: checks with their JSON and statuses, and its doctor on a healthy machine and on broken ones."""

import contextlib
import fnmatch
import functools
import http.server
import json
import os
import re
import shutil
import socket
import ssl
import struct
import sys
import threading
import time

import pytest

from conftest import ADDRESS, MAKER_KEY, REPOSITORY, anchors, each_case, run, trust_root
from sample_window import press, wait_for_window

KEY, API_KEY = "DRAFT-2026-DEMO", "draft20-7k2m9q-x4v8p1w"
PRODUCTS = MAKER_KEY + r"\Products"
PROXY_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections"
PROXY_VALUE = "/v", "DefaultConnectionSettings", "/f"
PAGE = "docs/troubleshooting.md"
LANGUAGE_FILE = "lang/DE/Vemo_DE.lang"
OFFERS = '[{"name":"A","version":"2","url":"https://localhost:18443/buy"}]'
HEALTHY = [
    ("ok", "program folder"), ("ok", "library"), ("warning", "signature"), ("ok", "API key"), ("ok", "record"),
    ("ok", "product key"), ("ok", "stored version"), ("ok", "language file"), ("ok", "display scaling"),
    ("ok", "proxy variables"), ("ok", "system proxy"), ("ok", "connection"), ("ok", "certificate"), ("ok", "probe"),
    ("ok", "update query"), ("ok", "quiet check")]
# What an installer would write, by the product's name.
RECORDS = {
    "Healthy": {"key": KEY, "version": "2026.1"},
    "Number as key": {"key": 1, "version": "2026.1"},
    "No version": {"key": KEY},
    "Example Draft": {"key": KEY, "version": "2026.1"},
}


def run_openssl(folder, *arguments):
    status, output = run("openssl", *arguments, cwd=folder)
    assert status == 0, output


@pytest.fixture(scope="module")
def certificates(wine, tmp_path_factory):
    """A folder with the keys and certificates of a service that Wine trusts meanwhile, and of another one."""
    folder = tmp_path_factory.mktemp("certificates")
    for name in ("trusted", "untrusted"):
        run_openssl(folder, "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "9", "-subj", f"/CN={name}",
                    "-addext", f"subjectAltName=DNS:{ADDRESS}", "-keyout", f"{name}.key", "-out", f"{name}.pem")
    with trust_root(wine, ssl.PEM_cert_to_DER_cert((folder / "trusted.pem").read_text())):
        yield folder


@pytest.fixture(scope="module", autouse=True)
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


@pytest.fixture(scope="module")
def odd_files(build, certificates, tmp_path_factory):
    """Files that do not belong on a machine, by name."""
    folder = tmp_path_factory.mktemp("odd")
    dll = (build / "bin/ProductServicesGuard.dll").read_bytes()
    status, output = run("osslsigncode", "sign", "-certs", certificates / "untrusted.pem", "-key",
                         certificates / "untrusted.key", "-in", build / "bin/ProductServicesGuard.dll", "-out",
                         folder / "signed.dll")
    assert status == 0, output
    header = dll.index(b"PE\0\0")
    maker, another = ("ExampleMaker".encode("utf-16-le"), "AnotherMaker".encode("utf-16-le"))
    texts = (build / "bin" / LANGUAGE_FILE).read_text("utf-16-le")
    return {
        "language file in UTF-8": texts.encode("utf-8"),
        "DLL for x86": dll[:header + 4] + b"\x4c\x01" + dll[header + 6:],
        "DLL of another maker": dll.replace(maker, another),
        "changed DLL": (folder / "signed.dll").read_bytes().replace(b"DOS mode", b"DOS mood"),
    }


class Service:
    """A product service in this process. Replies are lists of pieces; None in the place of one hangs."""

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
                connection.sendall(b"\x16\x03\x03\x00\x40\x02")  # the beginning of a ServerHello
            if self.hangs:
                self.wait_for_end(connection)
            with self.context.wrap_socket(connection, server_side=True) as client:
                self.reply(client)

    def wait_for_end(self, connection):
        while connection.recv(4096):
            pass

    def reply(self, client):
        request = client.recv(4096)
        while b"\r\n\r\n" not in request or b"Content-Length: 0" not in request and b"&up=" not in request:
            request += client.recv(4096)
        path = request.split()[1].decode()
        self.at_request(path)
        pieces = self.replies[path] or [None]
        body = [(piece or "").replace("KEYS", f"{API_KEY} {KEY}").encode() for piece in pieces]
        if pieces[0] is not None:
            client.sendall(f"HTTP/1.1 {self.status}\r\nLocation: https://elsewhere.example/\r\nContent-Length: "
                           f"{sum(map(len, body)) + (None in pieces)}\r\n\r\n".encode() + body[0])
        for piece in body[1:]:
            time.sleep(0.1)  # so that it is a piece of its own
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
def folder(build, tmp_path):
    """A program's folder, with the tool in it."""
    shutil.copy(build / "over_tls/ProductServicesTool.exe", tmp_path)
    shutil.copy(build / "bin/ProductServicesGuard.dll", tmp_path)
    shutil.copytree(build / "bin/lang/DE", tmp_path / "lang/DE")
    return tmp_path


@pytest.fixture
def tool(folder, wine):
    """Runs the tool for a product: its status and what it prints."""
    def run_tool(command, *options, product="Healthy", api_key=API_KEY, variables=None, **more):
        arguments = [command, "--product", product, "--version", "2026.1", "--api-key", api_key, *options]
        program = ["ProductServicesTool.exe"]
        if variables:
            settings = "".join(f"set {name}={value}&& " for name, value in variables.items())
            program = ["cmd", "/c", settings + program[0]]
        return wine(*program, *arguments, cwd=folder, **more)
    return run_tool


def diagnose(tool, *options, **machine):
    return tool("doctor", "--language", "140", "--trusted-hosts", "localhost:18443", *options, **machine)


def read_folder(folder):
    return {str(path): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def test_healthy_machine(tool, folder, start_service):
    start_service()
    before = read_folder(folder)
    status, output = diagnose(tool, "--json")
    findings = json.loads(output)
    assert [(finding["severity"], finding["check"]) for finding in findings] == HEALTHY
    assert status == 0
    assert read_folder(folder) == before
    messages = {finding["check"]: finding["message"] for finding in findings}
    assert messages["product key"] == "DRAF... (15 characters)"
    assert messages["API key"] == "draf... (22 characters)"
    assert messages["display scaling"] == "100 %"
    assert messages["quiet check"] == "NEWER_RELEASE: https://localhost:18443/buy"
    assert re.fullmatch(r"a guarded call accepts it \(.*\): Subject:CN=trusted, Issuer:CN=trusted, Expire .*",
                        messages["certificate"])
    assert {finding["link"].partition("#")[0] for finding in findings} == {PAGE}


@each_case("tool/broken_machines.json", "machine, findings")
def test_broken_machine(tool, folder, start_service, odd_files, machine, findings):
    machine = json.loads(json.dumps(machine).replace("ADDRESS", ADDRESS))
    replace_files(folder, odd_files, machine.pop("files", {}))
    service = machine.pop("service", {})
    if service is not None:
        start_service(**service)
    before = read_folder(folder)
    status, output = diagnose(tool, *machine.pop("options", []), **machine)
    assert read_folder(folder) == before
    assert not re.search(rf"{KEY}|{API_KEY}|swordfish", output), output
    expect_findings(output, [finding.replace("ADDRESS", ADDRESS) for finding in findings])
    assert status == any(finding.startswith("error") for finding in findings)


def replace_files(folder, odd_files, names):
    for name, odd_file in names.items():
        if odd_file:
            (folder / name).write_bytes(odd_files[odd_file])
        else:
            (folder / name).unlink()


def expect_findings(output, expected):
    """Compares all findings but those of a healthy machine, each with the link to its help, and the last line."""
    *lines, last = output.splitlines()
    found = [line for line in lines if not line.startswith(("ok ", "warning  signature: "))]
    assert len(found) == len(expected), output
    for line, pattern in zip(found, expected):
        assert fnmatch.fnmatchcase(line, f"{pattern} -> {PAGE}#*"), output
    errors = [line.removeprefix("error").strip().partition(":")[0] for line in lines if line.startswith("error")]
    if errors:
        assert last.startswith(f"{len(errors)} error"), output
        assert f'Begin with "{errors[0]}": ' in last, output
    else:
        assert last.startswith("All is well"), output


@pytest.fixture
def proxy_script(wine, tmp_path_factory):
    """A file with the configuration script that Windows has set meanwhile."""
    folder = tmp_path_factory.mktemp("script")
    wine("reg", "export", PROXY_KEY, folder / "settings.reg")
    handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=folder)
    with http.server.ThreadingHTTPServer((ADDRESS, 0), handler) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        url = f"http://{ADDRESS}:{server.server_port}/proxy.pac".encode()
        value = struct.pack("<6I", 0x46, 1, 5, 0, 0, len(url)) + url
        status, output = wine("reg", "add", PROXY_KEY, *PROXY_VALUE, "/t", "REG_BINARY", "/d", value.hex())
        assert status == 0, output
        yield folder / "proxy.pac"
        server.shutdown()
    wine("reg", "delete", PROXY_KEY, *PROXY_VALUE)
    if (folder / "settings.reg").exists():
        wine("reg", "import", folder / "settings.reg")


def test_each_proxy_of_a_script_is_tried_and_the_first_that_accepts_is_used(tool, start_service, proxy_script):
    start_service()
    with socket.create_server((ADDRESS, 0)) as proxy:
        address = f"{ADDRESS}:{proxy.getsockname()[1]}"
        # Wine passes on what is before a blank or a semicolon; Windows has semicolons between the script's proxies.
        proxy_script.write_text(f"function FindProxyForURL() {{ return 'PROXY {ADDRESS}:1\\t{address}'; }}")
        finding = (f"ok       system proxy: Windows' configuration script names {address}; tried {ADDRESS}:1 "
                   f"(no connection), {address} (connected)")
        status, output = diagnose(tool, "--time-limit", "1")
        assert f"{finding}\nerror    connection: {address} accepted the connection, but sent nothing" in output
        assert status == 1
        status, output = diagnose(tool, "--no-system-proxy")
        assert f"{finding}; not used: --no-system-proxy is set\nok       connection: {ADDRESS} " in output
        assert status == 0


def test_findings_are_printed_as_they_are_made(tool, folder, start_service):
    printed, seen = folder / "printed", []
    start_service().at_request = lambda path: seen.append(printed.read_text("utf-8"))
    diagnose(tool, ">", printed.name, variables={"unused": "1"})
    probe, query, _ = seen
    assert probe.count("\n") >= HEALTHY.index(("ok", "system proxy")) + 1, probe
    assert "\nok       probe: " in query, query


@pytest.mark.parametrize("service, options, outcome, code, text, status", [
    pytest.param({}, [], "NEWER_RELEASE", 200, "https://localhost:18443/buy", 0, id="a newer release"),
    pytest.param({"updates": [""]}, ["--language", "140"], "UP_TO_DATE", None, "Sie verwenden die *", 0,
                 id="nothing newer, in German"),
    pytest.param({"updates": ['{"status":0,"error":"für Sie nicht"}']}, [], "REFUSED", None, "für Sie nicht", 1,
                 id="a refusal"),
    pytest.param({"updates": None}, ["--time-limit", "1"], "TIMED_OUT", None, "The time limit was exceeded.", 1,
                 id="a silent service"),
    pytest.param({"certificate": "untrusted"}, [], "UNTRUSTED_CERTIFICATE", None, "*its issuer is not trusted*", 1,
                 id="a forged service"),
    pytest.param({"certificate": "untrusted"}, ["--any-certificate"], "NEWER_RELEASE", 200,
                 "https://localhost:18443/buy", 0, id="a forged service, if any certificate will do"),
    pytest.param({}, ["--trusted-hosts", "a.example"], "UNTRUSTED_ADDRESS", None, "https://localhost:18443/buy", 1,
                 id="an untrusted address"),
])
def test_check(tool, start_service, service, options, outcome, code, text, status):
    start_service(**service)
    ended, output = tool("check", "--json", *options)
    result = json.loads(output)
    assert (result["outcome"], result["code"], ended) == (outcome, code, status)
    assert fnmatch.fnmatchcase(result["text"], text), output


@pytest.fixture(scope="module")
def slow_resolver(tmp_path_factory):
    """A library that has the look-up of a name take ten minutes."""
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
    return {"env": {**os.environ, "LD_PRELOAD": str(folder / "slow.so")},
            "variables": {"https_proxy": "http://proxy.example:1"}}


def test_time_limit_holds_while_a_name_is_looked_up(tool, slow_resolver):
    start = time.monotonic()
    status, output = tool("check", "--time-limit", "1", "--json", **slow_resolver)
    assert json.loads(output) == {"outcome": "TIMED_OUT", "code": None, "text": "The time limit was exceeded."}
    assert status == 1
    assert time.monotonic() - start < 10


def test_doctor_tells_that_a_name_is_looked_up_for_too_long(tool, slow_resolver):
    status, output = diagnose(tool, "--time-limit", "1", **slow_resolver)
    assert "error    connection: the DNS lookup of the service or of its proxy timed out after 1 second" in output
    assert status == 1


def test_upgrade_center_stays_open_beyond_the_time_limit(tool, folder, start_service):
    start_service()
    results = []
    thread = threading.Thread(target=lambda: results.append(tool("upgrade", "--time-limit", "1", "--json")))
    thread.start()
    window = wait_for_window("Healthy - Upgrade center")
    thread.join(timeout=4)
    assert results == []
    assert run("import", "-window", window, folder / "window.png")[0] == 0
    press(window, "Escape")
    thread.join()
    status, output = results[0]
    assert json.loads(output)["outcome"] == "USER_QUIT"
    assert status == 0
    colours = int(run("identify", "-format", "%k", folder / "window.png")[1])
    assert colours > 1000, "the product line's picture"


def test_wrong_usage_is_told_on_the_standard_error(folder, wine):
    status, output = wine("cmd", "/c", "ProductServicesTool check --product x 2> errors", cwd=folder)
    assert (status, output) == (2, "")
    assert (folder / "errors").read_text("utf-8") == "ProductServicesTool: --version is required\n"


def test_version(folder, wine):
    header = (REPOSITORY / "include/product_services/version.h").read_text("utf-8")
    version = ".".join(re.findall(r"(?m)^#define PRODUCT_SERVICES_VERSION_\w+ (\d+)", header))
    assert wine("ProductServicesTool", "version", cwd=folder) == (
        0, f"ProductServicesTool {version} (ExampleMaker.ProductServices)\n")


def test_script_host_reads_the_result(folder, start_service):
    start_service()
    tool = folder / "tool"
    tool.write_text(f'#!/bin/sh\nexec "{REPOSITORY}/scripts/run_wine.sh" "{folder}/ProductServicesTool.exe" "$@"\n')
    tool.chmod(0o755)
    status, output = run(sys.executable, "-B", REPOSITORY / "samples/script_host/check_for_updates.py", tool)
    assert (status, output) == (0, "a newer release is at https://localhost:18443/buy\n")


def test_links_lead_to_headings_of_the_page():
    header = (REPOSITORY / "tools/command/doctor/help_anchors.h").read_text("utf-8")
    used = re.findall('= L"(.*)"', header)
    assert used
    assert set(used) <= set(anchors(REPOSITORY / PAGE))
