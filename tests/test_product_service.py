"""Talks to the development product service over HTTPS: its answers, what it logs, and what it ends with."""

import json
import os
import shutil
import socket
import ssl
import stat

from conftest import (ADDRESS, CATALOGUE, NEW_KEY, REPOSITORY, TERMINATION, WINDOWS, debian_only, load_cases,
                      parametrize_from, root_store_entry, run, stop_service)

UPDATES = "POST /get_updates.php"
CHECK = "key=DRAFT-2026-DEMO version=2026.1 up=1 (update check)"
OFFERS = json.dumps(json.loads(CATALOGUE)["DRAFT-2026-DEMO"]["2026.1"])
TLS = ssl._create_unverified_context()
TLS.options &= ~ssl.OP_IGNORE_UNEXPECTED_EOF


def query(key="DRAFT-2026-DEMO", version="2026.1", up=1):
    return f"api_key=a&key={key}&hardware_id=h&version={version}&up={up}"


def ask(port, request, body=""):
    """Status and body of a reply, which must come as one TLS record and with the end of TLS after it."""
    with TLS.wrap_socket(socket.create_connection((ADDRESS, port), 20), suppress_ragged_eofs=False) as client:
        client.sendall(f"{request} HTTP/1.1\r\nContent-Length: {len(body.encode())}\r\n\r\n{body}".encode())
        head, _, reply = client.recv(16384).partition(b"\r\n\r\n")
        assert client.recv(1) == b""
        headers = {f"Content-Length: {len(reply)}", "Connection: close"}
        assert not head or headers <= set(head.decode().splitlines())
        assert not head or (b"Content-Type: application/json" in head) == (request == UPDATES)
        return head[9:12].decode(), reply


def test_requests_are_answered_and_logged_while_a_client_is_silent(service):
    running = service()
    exchanges = load_cases("service/exchanges.json")
    with socket.create_connection((ADDRESS, running.port)):
        for name, row in exchanges.items():
            reply = row["reply"].replace("OFFERS", OFFERS).encode()
            assert ask(running.port, row["request"], row["body"]) == (row["status"], reply), name
        log = stop_service(running)
    for (name, row), line in zip(exchanges.items(), log, strict=True):
        assert line.startswith(row["request"] + " ") and row["logged"] in line, name


def test_base_path_is_accepted(service_command, service, tmp_path):
    tool = service_command[2].read_text("utf-8")
    service_command[2] = shutil.copytree(service_command[2].parent, tmp_path / "tools") / "product_service.py"
    service_command[2].write_text(tool.replace("https://localhost:18443", "https://localhost:18443/base"), "utf-8")
    assert ask(service().port, "POST /base/check.php") == ("200", b"1")


@parametrize_from("service/fixed_answers.json", "options, reply, logged")
def test_fixed_answer(service, tmp_path, options, reply, logged):
    (tmp_path / "answer").write_text("ÿ in Latin-1", "latin-1")
    running = service(*options)
    expected = reply.replace("OFFERS", OFFERS).encode("latin-1")
    assert ask(running.port, UPDATES, query(version="any")) == ("200", expected)
    assert stop_service(running) == [f"{UPDATES}  {CHECK} -> {logged}".replace("2026.1", "any")]


def test_close_and_unreachable_answers(service):
    running = service("--answer", "close", "--check-answer", "0")
    assert ask(running.port, "POST /check.php") == ("200", b"0")
    assert ask(running.port, UPDATES, query()) == ("", b"")
    assert stop_service(running, TERMINATION) == [
        'POST /check.php -> "0"', f"{UPDATES}  {CHECK} -> closed without an answer"]


def test_invalid_clients_are_logged(service):
    running = service()
    with socket.create_connection((ADDRESS, running.port), 20) as client:
        client.sendall(b"POST /check.php HTTP/1.1\r\n\r\n")
        assert running.stdout.readline().startswith("connection without a TLS handshake: ")
    ask(running.port, "nonsense /")
    assert stop_service(running)[0].startswith("request not served: ")


@parametrize_from("service/invalid_catalogues.json", "catalogue, message")
def test_invalid_catalogue_is_reported(service_command, tmp_path, catalogue, message):
    (tmp_path / "catalogue.json").write_text(catalogue, "utf-8")
    status, output = run(*service_command, "--port", "0", "--answer", "offers")
    assert status == 1 and output.startswith(f"product_service: the catalogue {tmp_path / 'catalogue.json'} {message}")


def test_start_failure_is_reported(service, service_command):
    taken = service().port
    for option, value, what in (("--port", taken, f"{ADDRESS}:{taken}"), ("--catalogue", "none.json", "none.json"),
                                ("--answer-file", "none", "none")):
        status, output = run(*service_command, option, value)
        assert status == 1 and output.startswith(f"product_service: cannot open {what}: ")


def test_failed_certificate_creation_leaves_no_files(service_command, tmp_path):
    before = os.listdir(tmp_path)
    status, output = run(*service_command, "--port", "0", "--certificate", tmp_path / "kept.pem",
                         env={**os.environ, "PATH": "/nowhere"})
    assert status == 1 and output.startswith("product_service: openssl could not create the certificate: ")
    assert os.listdir(tmp_path) == before


def test_kept_certificate_is_reused_and_strictly_valid(service, tmp_path):
    kept, seen = tmp_path / "kept.pem", []
    for start in ("first", "second"):
        running = service("--certificate", kept)
        client = ssl.create_default_context(cafile=kept)
        client.verify_flags |= ssl.VERIFY_X509_STRICT
        assert client.cert_store_stats() == {"x509": 1, "crl": 0, "x509_ca": 0}, start
        for host in (ADDRESS, "localhost"):
            with client.wrap_socket(socket.create_connection((ADDRESS, running.port), 20), server_hostname=host) as tls:
                seen.append(tls.getpeercert())
        stop_service(running)
    assert seen == seen[:1] * 4
    assert ("DNS", ADDRESS) in seen[0]["subjectAltName"]  # for Wine
    days = (ssl.cert_time_to_seconds(seen[0]["notAfter"]) - ssl.cert_time_to_seconds(seen[0]["notBefore"])) / 86400
    assert days == 365
    assert WINDOWS or stat.S_IMODE(kept.stat().st_mode) == 0o600
    assert sorted(os.listdir(tmp_path)) == ["catalogue.json", "kept.pem"]


def test_unusable_certificate_file_is_reported(service_command, tmp_path):
    good, expired, file = tmp_path / "good.pem", tmp_path / "expired.pem", tmp_path / "kept.pem"
    for command in (["req", "-x509", *NEW_KEY, "-nodes", "-keyout", good, "-out", good,
                     "-subj", "/CN=localhost", "-addext", f"subjectAltName=IP:{ADDRESS},DNS:localhost"],
                    ["x509", "-in", good, "-signkey", good, "-days", "0", "-out", expired]):
        assert run("openssl", *command)[0] == 0, command
    key, begin, certificate = good.read_text().partition("-----BEGIN CERTIFICATE-----")
    without = f"{file} does not contain a usable certificate with its key: "
    refused = f"the certificate in {file} cannot be used "
    for name, text, address, message in (
            ("expired", key + expired.read_text(), ADDRESS, f"{refused}(certificate has expired): "),
            ("for another address", key + begin + certificate, "127.0.0.1", f"{refused}(IP address mismatch, "),
            ("without its key", begin + certificate, ADDRESS, without),
            ("without a certificate", key, ADDRESS, without)):
        file.write_text(text)
        status, output = run(*service_command, "--port", "0", "--address", address, "--certificate", file)
        assert status == 1 and output.startswith(f"product_service: {message}"), (name, output)
        assert "delete" in output and output.endswith(" start again, which creates a new one\n"), (name, output)


@debian_only
def test_trust_and_untrust_in_wine(service_command, wine, tmp_path):
    kept = tmp_path / "kept.pem"

    def change(option, program):
        return run(*service_command, "--certificate", kept, option, env={**os.environ, "WINE": str(program)})

    status, output = change("--trust", "/nowhere/wine")
    assert status == 1 and output.startswith("product_service: cannot start /nowhere/wine: "), output
    text, emulator = kept.read_text(), REPOSITORY / "scripts/run_wine.sh"
    value, stored = root_store_entry(ssl.PEM_cert_to_DER_cert(text[text.index("-----BEGIN CERTIFICATE-----"):]))
    try:
        assert change("--trust", emulator)[0] == 0
        assert stored.hex() in wine("reg", "query", *value)[1].lower()
        assert change("--untrust", emulator)[0] == 0
        assert wine("reg", "query", *value)[0] == 1
        assert change("--untrust", emulator)[0] == 1
    finally:
        wine("reg", "delete", value[0], "/f")
    assert run(*service_command, "--trust")[0] == 2
