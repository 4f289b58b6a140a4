"""VerifyPublisher, with files signed under a root certificate that only the tests' Wine trusts, and only meanwhile."""

import hashlib
import itertools
import shutil
import ssl
import struct

import pytest

from conftest import run, table

MAKER = "Example Maker"
ROOTS = r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates"
DEEP = f"{'a' * 150}/{'b' * 150}"
CASES = table("guard/publishers.json")


@pytest.fixture(scope="module")
def outcomes(build, wine, tmp_path_factory):
    """What the host says of each case, in one process: since Wine reads all roots anew in each."""
    folder, host = tmp_path_factory.mktemp("publisher"), build / "bin/publisher_host.exe"

    def call(command, *arguments):
        assert run(*command.split(), *arguments, cwd=folder)[0] == 0, command

    def sign(file, subject, days="9"):
        call("openssl req -new -key key -out request -subj", f"/CN={subject}")
        call("openssl x509 -req -in request -CA root -CAkey key -out certificate -days", days)
        call("osslsigncode sign -certs certificate -key key -in unsigned.exe -out", file)

    shutil.copy(host, folder / "unsigned.exe")
    call("openssl req -x509 -newkey rsa:2048 -nodes -keyout key -subj /CN=Root -out root")
    sign("signed.exe", MAKER)
    sign("limited.exe", f"{MAKER} Ltd")
    sign("expired.exe", MAKER, days="-1")
    call("openssl req -x509 -key key -out certificate -subj", f"/CN={MAKER}")
    call("osslsigncode sign -certs certificate -key key -in unsigned.exe -out self-signed.exe")
    signed = (folder / "signed.exe").read_bytes()
    (folder / "changed.exe").write_bytes(signed.replace(b"DOS mode", b"DOS mood"))
    (folder / DEEP).mkdir(parents=True)
    shutil.copy(folder / "signed.exe", folder / DEEP)
    root = ssl.PEM_cert_to_DER_cert((folder / "root").read_text())
    calls = [(row["file"].replace("DEEP", DEEP), row["publisher"], row["option"]) for row in CASES.values()]
    place, stored = rf"{ROOTS}\{hashlib.sha1(root).hexdigest().upper()}", struct.pack("<3I", 32, 1, len(root)) + root
    wine("reg", "add", place, "/v", "Blob", "/t", "REG_BINARY", "/d", stored.hex(), "/f")
    try:
        status, output = wine(host, *itertools.chain(*calls), cwd=folder)
    finally:
        wine("reg", "delete", place, "/f")
    assert status == 0, output
    return dict(zip(CASES, output.splitlines()))


@pytest.mark.parametrize("case", CASES)
def test_the_outcome_for(outcomes, case):
    assert outcomes[case] == CASES[case]["outcome"]
