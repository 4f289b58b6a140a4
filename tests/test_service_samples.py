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
PRODUCT = MAKER_KEY + r"\Products\Samples"


@pytest.fixture(scope="module", params=["php", "nginx"])
def root(request, certificates, tmp_path_factory):
    """Runs a service, and returns the folder with its files."""
    folder = tmp_path_factory.mktemp("service")
    catalogue, certificate = folder / "catalogue.json", folder / "service.pem"
    catalogue.write_text(json.dumps(load_cases("service/sample_catalogue.json")).replace("LONG", "N" * 15_950), "utf-8")
    certificate.write_text("".join((certificates / f"trusted.{kind}").read_text() for kind in ("key", "pem")))
    with sample_service(request.param, folder, catalogue, certificate, ADDRESS, 18443) as (root, _):
        yield root


@pytest.fixture(scope="module")
def check(https_sample, wine, tmp_path_factory):
    """Checks for updates with the record of a case, and returns the outcome and the text."""
    lines = ["REGEDIT4"]
    for name, row in ANSWERS.items():
        key = row["key"].replace("MEGABYTE", "K" * 1_000_000)
        lines += [f"[{PRODUCT.replace('HKCU', 'HKEY_CURRENT_USER')}\\{name}]", f'"key"="{key}"',
                  f'"version"="{row["version"]}"']
    file = tmp_path_factory.mktemp("records") / "records.reg"
    file.write_text("\n".join(lines) + "\n", "ascii")
    assert wine("reg", "import", file)[0] == 0

    def run_check(name):
        status, output = wine(https_sample / "ProductServicesTool.exe", "check", "--json", "--product", "Samples",
                              "--version", name, "--api-key", "any", "--trusted-hosts", "localhost:18443")
        assert output.startswith("{"), f"{name}: exit status {status}, {output!r}"
        result = json.loads(output)
        return result["outcome"], result["text"]
    yield run_check
    wine("reg", "delete", PRODUCT, "/f")


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


def test_each_query_has_its_answer(root, check):
    for name, row in ANSWERS.items():
        assert check(name) == (row["outcome"], row["text"]), name
    (root / "maintenance").touch()
    result = check("an offer")
    (root / "maintenance").unlink()
    assert result == ("OTHER_STATUS", "The service answered with status 1.")


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
