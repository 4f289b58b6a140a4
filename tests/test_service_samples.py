"""The sample services, PHP with nginx and nginx alone, queried by the library."""

import json
import socket
import ssl
import sys

import pytest

from conftest import ADDRESS, MAKER_KEY, REPOSITORY, load_cases

sys.path.append(str(REPOSITORY / "scripts/lib"))
from sample_services import sample_service  # noqa: E402

pytest_plugins = ["tool_fixtures"]
ANSWERS = load_cases("service/sample_answers.json")
RECORD = MAKER_KEY + r"\Products\Guarded\1"


@pytest.fixture(scope="module", params=["php", "nginx"])
def root(request, certificates, tmp_path_factory):
    """Runs a service, and returns the folder with its files."""
    folder = tmp_path_factory.mktemp("service")
    catalogue, certificate = folder / "catalogue.json", folder / "service.pem"
    catalogue.write_text(json.dumps(load_cases("service/sample_catalogue.json")).replace("LONG", "N" * 15_950), "utf-8")
    certificate.write_text("".join((certificates / f"trusted.{kind}").read_text() for kind in ("key", "pem")))
    with sample_service(request.param, folder, catalogue, certificate, ADDRESS, 18443) as (root, _):
        yield root


def ask(method, path, body=""):
    """Returns the status and the reply of a request that the library does not send. The reply must arrive as one TLS
    record, because the library needs it in one piece."""
    connection = socket.create_connection((ADDRESS, 18443), 20)
    with ssl._create_unverified_context().wrap_socket(connection) as client:
        client.sendall(f"{method} {path} HTTP/1.1\r\nHost: a\r\nConnection: close\r\n"
                       f"Content-Length: {len(body)}\r\n\r\n{body}".encode())
        head, _, reply = client.recv(16384).partition(b"\r\n\r\n")
        assert client.recv(1) == b"", "one record"
        return int(head[9:12]), reply.decode()


def query(version, computer=""):
    return f"api_key=a&key=KEY&hardware_id={computer}&version={version}&up=1"


def test_each_query_has_its_answer(root, host):
    words = [word for row in ANSWERS.values() for word in (f"key={row['key']}", f"version={row['version']}", "check")]
    assert dict(zip(ANSWERS, host(*words), strict=True)) == {name: row["answer"] for name, row in ANSWERS.items()}
    (root / "maintenance").touch()
    answer = host("check")
    (root / "maintenance").unlink()
    assert answer == ["check 8 -1: The service answered with status 1."]


def test_body_of_1_mb_is_refused(root, host, wine, tmp_path):
    record, key = RECORD.replace("HKCU", "HKEY_CURRENT_USER"), "K" * 1_000_000
    (tmp_path / "record.reg").write_text(f'REGEDIT4\n[{record}]\n"key"="{key}"\n', "ascii")
    status, output = wine("reg", "import", tmp_path / "record.reg")
    assert status == 0, output
    assert host("check") == ["check 7 -1: malformed query"]


def test_other_requests_and_a_tenth_of_the_computers(root):
    assert ask("POST", "/check.php") == (200, "1")
    for path in ("/check.php", "/get_updates.php"):
        assert ask("GET", path)[0] == 405
    assert "KEY" not in ask("GET", "/catalogue.php")[1] + ask("GET", "/maps.conf")[1]
    for computer, names in (("00", "AB"), ("19", "AB"), ("1a", "B"), ("ff", "B"), ("", "B")):
        reply = ask("POST", "/get_updates.php", query("3", computer))[1]
        assert [offer["name"] for offer in json.loads(reply)] == list(names), computer
    refusal = json.loads(ask("POST", "/get_updates.php", query("3") + "&more=1")[1])
    assert refusal == {"status": 0, "error": "malformed query"}
    assert len(ask("POST", "/get_updates.php", query("long"))[1]) > 16_000
