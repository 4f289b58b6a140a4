"""VerifyPublisher, with files signed under a root certificate that only the tests' Wine trusts, and only meanwhile."""

import hashlib
import shutil
import ssl
import struct

import pytest

from conftest import run

MAKER = "Example Maker"
ROOTS = r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates"
DEEP = f"{'a' * 150}/{'b' * 150}"
TRUSTED = f"100 The file is signed by {MAKER} and unchanged."
NOT_TRUSTED = "3 The signature is not trusted: its certificate "
ANOTHER = f"4 The file is signed by another publisher: {MAKER}"
UNKNOWN = f"5 The file is signed by {MAKER}, but whether a certificate has been revoked could not be found out."
EMPTY = "0 The path or the publisher is empty."

# What is verified: a file, the publisher that is expected and an option of publisher_host.cpp; then the outcome.
CASES = {
    "the publisher's": ("signed.exe", MAKER, "0", TRUSTED),
    "kept open by the caller": ("signed.exe", MAKER, "read", TRUSTED),
    "a path of more than 260 characters": (f"{DEEP}/signed.exe", MAKER, "0", TRUSTED),
    "another's, whose name begins with the publisher's": ("limited.exe", MAKER, "0", f"{ANOTHER} Ltd"),
    "another's, with the beginning of the name": ("signed.exe", f"{MAKER} Ltd", "0", ANOTHER),
    "another's, in other case": ("signed.exe", MAKER.lower(), "0", ANOTHER),
    "another's, while offline": ("limited.exe", MAKER, "1000040", f"{ANOTHER} Ltd"),
    "offline": ("signed.exe", MAKER, "1000040", UNKNOWN),
    "revoked": ("signed.exe", MAKER, "4", f"{NOT_TRUSTED}has been revoked."),
    "expired": ("expired.exe", MAKER, "0", f"{NOT_TRUSTED}has expired, and no time stamp covers it."),
    "self-signed": ("self-signed.exe", MAKER, "0", f"{NOT_TRUSTED}comes from an unknown issuer."),
    "changed": ("changed.exe", MAKER, "0", "2 The file was changed after it was signed."),
    "unsigned": ("unsigned.exe", MAKER, "0", "1 The file is not signed."),
    "a text": ("root", MAKER, "0", "1 The file is of a kind that cannot be signed."),
    "a hundred times, which leave nothing behind": ("signed.exe", MAKER, "repeat", TRUSTED),
    "in use": ("signed.exe", MAKER, "write", "0 The file is in use: another program may write to it."),
    "missing": ("missing.exe", MAKER, "0", "0 There is no such file."),
    "a folder": (".", MAKER, "0", "0 The path is that of a folder."),
    "a device": ("NUL", MAKER, "0", "0 The path is that of a device."),
    "no path": ("", MAKER, "0", EMPTY),
    "no publisher": ("signed.exe", "", "0", EMPTY)}


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
    place, stored = rf"{ROOTS}\{hashlib.sha1(root).hexdigest().upper()}", struct.pack("<3I", 32, 1, len(root)) + root
    wine("reg", "add", place, "/v", "Blob", "/t", "REG_BINARY", "/d", stored.hex(), "/f")
    try:
        status, output = wine(host, *(text for case in CASES.values() for text in case[:3]), cwd=folder)
    finally:
        wine("reg", "delete", place, "/f")
    assert status == 0, output
    return dict(zip(CASES, output.splitlines()))


@pytest.mark.parametrize("case", CASES)
def test_the_outcome_for(outcomes, case):
    assert outcomes[case] == CASES[case][-1]
