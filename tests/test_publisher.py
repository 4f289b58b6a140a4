"""Verifies and starts files that are signed under a root certificate that only the tests' Wine trusts, meanwhile."""

import itertools
import shutil
import ssl
import struct

import pefile
import pytest

from conftest import NEW_KEY, load_cases, run, trust_root

MAKER = "Example Maker"
CASES = load_cases("guard/publishers.json")


def pad_signature(signed):
    """The signed program with data in its signature, behind what is verified; both sizes include it."""
    padding = b"padding!" * 8
    directory = pefile.PE(data=signed, fast_load=True).OPTIONAL_HEADER.DATA_DIRECTORY[4]
    data = bytearray(signed + padding)
    struct.pack_into("<I", data, directory.get_field_absolute_offset("Size"), directory.Size + len(padding))
    length, = struct.unpack_from("<I", data, directory.VirtualAddress)
    struct.pack_into("<I", data, directory.VirtualAddress, length + len(padding))
    return data


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    return tmp_path_factory.mktemp("publisher")


@pytest.fixture(scope="module")
def outcomes(build, wine, folder):
    """What the host says of each case, in one process, because Wine reads all roots again in each."""
    host = build / "bin/publisher_host.exe"

    def call(command, *arguments):
        status, output = run(*command.split(), *arguments, cwd=folder)
        assert status == 0, f"{command}: {output}"

    def sign(file, subject, days="9"):
        call("openssl req -new -key key -out request -subj", subject)
        call("openssl x509 -req -in request -CA root -CAkey key -CAcreateserial -out certificate -days", days)
        call("osslsigncode sign -certs certificate -key key -in unsigned.exe -out", file)

    shutil.copy(host, folder / "unsigned.exe")
    shutil.copy(build / "bin/ProductServicesGuard.dll", folder)  # which the started program needs, too
    call("openssl req -x509", *NEW_KEY, *"-nodes -keyout key -subj /CN=Root -out root".split())
    sign("signed.exe", f"/CN={MAKER}")
    sign("limited.exe", f"/CN={MAKER} Ltd")
    sign("organization.exe", f"/O={MAKER}")
    sign("expired.exe", f"/CN={MAKER}", days="0")
    call("openssl req -x509 -key key -out certificate -subj", f"/CN={MAKER}")
    call("osslsigncode sign -certs certificate -key key -in unsigned.exe -out self-signed.exe")
    signed = (folder / "signed.exe").read_bytes()
    (folder / "changed.exe").write_bytes(signed.replace(b"DOS mode", b"DOS mood"))
    (folder / "appended.exe").write_bytes(signed + b"appended")
    (folder / "padded.exe").write_bytes(pad_signature(signed))
    (folder / "signed.txt").write_bytes(signed)
    (folder / "installer.exe").write_bytes(signed)  # of its own, because a program that runs is open
    (folder / "link.exe").symlink_to("installer.exe")
    root = ssl.PEM_cert_to_DER_cert((folder / "root").read_text())
    calls = [(row["file"], row["publisher"], row["option"]) for row in CASES.values()]
    with trust_root(wine, root):
        status, output = wine(host, *itertools.chain(*calls), cwd=folder)
    assert status == 0, output
    return dict(zip(CASES, output.splitlines()))


@pytest.mark.parametrize("case", CASES)
def test_outcome(outcomes, case):
    assert outcomes[case] == CASES[case]["outcome"]


def test_only_trusted_files_are_started(outcomes, folder):
    assert run("bash", "-c", "until [ -e link.exe.started ]; do sleep 0.1; done", cwd=folder)[0] == 0
    assert sorted(path.name for path in folder.glob("*.started")) == ["installer.exe.started", "link.exe.started"]
