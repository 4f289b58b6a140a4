"""The doctor of ProductServicesTool, on a healthy machine and on broken ones."""

import fnmatch
import functools
import http.server
import json
import re
import socket
import struct
import threading

import pytest

from conftest import ADDRESS, API_KEY, KEY, parametrize_from, run

pytest_plugins = ["tool_fixtures"]
PROXY_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections"
PROXY_VALUE = "/v", "DefaultConnectionSettings", "/f"
PAGE = "docs/troubleshooting.md"
LANGUAGE_FILE = "lang/DE/Vemo_DE.lang"
HEALTHY_MACHINE = [
    ("ok", "program folder"), ("ok", "library"), ("warning", "signature"), ("ok", "API key"), ("ok", "record"),
    ("ok", "product key"), ("ok", "stored version"), ("ok", "policy"), ("ok", "language file"),
    ("ok", "display scaling"), ("ok", "proxy variables"), ("ok", "system proxy"), ("ok", "connection"),
    ("ok", "certificate"), ("ok", "probe"), ("ok", "update query"), ("ok", "quiet check")]


@pytest.fixture(scope="module")
def faulty_files(build, certificates, tmp_path_factory):
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


def diagnose(tool, *options, **machine):
    return tool("doctor", "--language", "140", "--trusted-hosts", "localhost:18443", *options, **machine)


def read_folder(folder):
    return {str(path): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def test_healthy_machine(tool, folder, start_service):
    start_service()
    before = read_folder(folder)
    status, output = diagnose(tool, "--json")
    findings = json.loads(output)
    assert [(finding["severity"], finding["check"]) for finding in findings] == HEALTHY_MACHINE
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


@parametrize_from("tool/doctor_faults.json", "machine, findings")
def test_faults_are_reported_with_their_anchor(tool, folder, start_service, faulty_files, machine, findings):
    machine = json.loads(json.dumps(machine).replace("ADDRESS", ADDRESS))
    replace_files(folder, faulty_files, machine.pop("files", {}))
    service = machine.pop("service", {})
    if service is not None:
        start_service(**service)
    before = read_folder(folder)
    status, output = diagnose(tool, *machine.pop("options", []), **machine)
    assert read_folder(folder) == before
    assert not re.search(rf"{KEY}|{API_KEY}|swordfish", output), output
    expect_findings(output, [finding.replace("ADDRESS", ADDRESS) for finding in findings])
    assert status == any(finding.startswith("error") for finding in findings)


def replace_files(folder, faulty_files, names):
    for name, faulty_file in names.items():
        if faulty_file:
            (folder / name).write_bytes(faulty_files[faulty_file])
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


def test_pac_script_falls_back_to_the_next_proxy(tool, start_service, proxy_script):
    start_service()
    with socket.create_server((ADDRESS, 0)) as proxy:
        address = f"{ADDRESS}:{proxy.getsockname()[1]}"
        # Wine passes on what is before a blank or a semicolon; Windows has semicolons between the script's proxies.
        proxy_script.write_text(f"function FindProxyForURL() {{ return 'PROXY a:swordfish@{ADDRESS}:1\\t{address}'; }}")
        finding = (f"ok       system proxy: Windows' configuration script names {address}; tried ...@{ADDRESS}:1 "
                   f"(no connection), {address} (connected)")
        status, output = diagnose(tool, "--time-limit", "1")
        assert f"{finding}\nerror    connection: {address} accepted the connection, but sent nothing" in output, output
        assert status == 1
        status, output = diagnose(tool, "--no-system-proxy")
        assert f"{finding}; not used: --no-system-proxy is set\nok       connection: {ADDRESS} " in output, output
        assert status == 0


def test_findings_are_printed_immediately(tool, folder, start_service):
    printed, seen = folder / "printed", []
    start_service().at_request = lambda path: seen.append(printed.read_text("utf-8"))
    diagnose(tool, ">", printed.name, variables={"unused": "1"})
    probe, query, _ = seen
    assert probe.count("\n") >= HEALTHY_MACHINE.index(("ok", "system proxy")) + 1, probe
    assert "\nok       probe: " in query, query


def test_dns_timeout_is_reported(tool, slow_resolver):
    status, output = diagnose(tool, "--time-limit", "1", **slow_resolver)
    line = "error    connection: the DNS lookup of the service or of its proxy timed out after 1 second"
    assert line in output, output
    assert status == 1
