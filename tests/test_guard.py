"""Guarded calls from a host in C, with signed libraries; the proxy of Windows, the declarations, the NuGet package."""

import contextlib
import http.server
import os
import pathlib
import re
import shutil
import socket
import struct
import subprocess
import sys
import threading
import types
import zipfile

import pefile
import pytest

REPOSITORY = pathlib.Path(__file__).parent.parent
BIN = pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"])
sys.path.insert(0, str(REPOSITORY / "tools"))
import product_service  # noqa: E402

RECORD = r"HKCU\Software\Example Maker\Products\Guarded\1"
PROXY_VALUE = (r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections", "/v",
               "DefaultConnectionSettings", "/f")
OFFER = b'[{"name":"n","version":"2","url":"https://u.example"}]'
SENSELESS = [  # with the end of the error's text
    (b"<html>503</html>", "last read: '<'"), (b"\xff", "last read: '<FFFD>'"), (b"[1e999]", "overflow parsing '1e999'"),
    (b'{"status":"0"}', "type must be number, but is string"), (b'{"name":"n"}', "a numeric argument with object"),
    (b'[{"name":"n","version":2,"url":"u"}]', "type must be string, but is number"),
    ('[{"name":"\U0001F600","version":"2","url":"u"}]'.encode(), "wrote 15 bad conversion")]


class Service(product_service.ProductServer):
    """The sample family's service, which gives the next of `answers` to each query."""
    fixed_answer = property(lambda self: product_service.Answer("next", self.answers.pop(0)), lambda *_: None)


class Proxy(http.server.BaseHTTPRequestHandler):
    def do_CONNECT(self):
        self.server.told.append(self.requestline)
        with socket.create_connection(self.path.split(":")) as service:
            self.send_response(200)
            self.end_headers()
            threading.Thread(target=pump, args=(self.connection, service), daemon=True).start()
            pump(service, self.connection)


def pump(source, target):
    with contextlib.suppress(OSError):
        while data := source.recv(65536):
            target.sendall(data)


def run(*command, **options):
    result = subprocess.run(list(map(str, command)), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            encoding="utf-8", timeout=120, check=False, **options)
    assert result.returncode == 0, result.stdout
    return result.stdout.splitlines()


def run_wine(*command, **options):
    return run(REPOSITORY / "scripts/run_wine.sh", *command, **options)


@pytest.fixture(scope="module")
def service():
    for name in ("key", "version"):
        run_wine("reg", "add", RECORD, "/v", name, "/d", "any", "/f")
    with Service(types.SimpleNamespace(port=18443, catalogue=REPOSITORY / "tools/catalogue.json",
                                       answer=None, answer_file=None, check_answer="1")) as server:
        server.tls = product_service.make_tls_context()
        threading.Thread(target=server.serve_forever, daemon=True).start()
        yield server
        server.shutdown()
    run_wine("reg", "delete", RECORD, "/f")


@pytest.fixture
def host(tmp_path):
    """The host with its libraries, which are signed, in a folder of its own."""
    key, certificate = tmp_path / "key", tmp_path / "certificate"
    run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=C", "-keyout", key, "-out", certificate)
    for name in ("ProductServices.dll", "ProductServicesGuard.dll"):
        run("osslsigncode", "sign", "-certs", certificate, "-key", key, "-in", BIN / name, "-out", tmp_path / name)
    shutil.copy(BIN / "guard_host.exe", tmp_path)
    return lambda *arguments, cwd=tmp_path: run_wine(tmp_path / "guard_host.exe", *arguments, cwd=cwd)


def test_replies_that_make_no_sense(service, host):
    service.answers = [answer for reply, _ in SENSELESS for answer in (OFFER, reply, reply, reply)]
    lines = host(*["bare", "check", "check", "upgrade"] * len(SENSELESS))
    for number, (_, end) in enumerate(SENSELESS):
        bare, *guarded = lines[4 * number:4 * number + 4]
        assert bare.startswith("b 200") and bare.endswith(" https://u.example")
        assert all(re.fullmatch(rf"[cu] 2 code -1 cut 0 .*{re.escape(end)}", line) for line in guarded), guarded


def test_texts_of_any_length(service, host, tmp_path):
    language = tmp_path / "lang/EN/Vemo_EN.lang"
    language.parent.mkdir(parents=True)
    language.write_text("\n" * 70 + "\U0001F600" * 100_000 + "\n" * 17, "utf-16-le")
    service.answers = [b""] * 7
    lines = host("u200001", "u200000", "u3", "u2", "u1", "u0", "u9,55", "0")
    assert [re.sub("(<D83D><DE00>)+$", "whole", line) for line in lines] == [
        "u 1 code 920 cut 0 wrote 200001 whole", "u 1 code 920 cut 1 wrote 199999 whole",
        "u 1 code 920 cut 1 wrote 3 whole", *["u 1 code 920 cut 1 wrote 1 "] * 2, "u 1 code 920 cut 1 wrote 0 ",
        "u 4 code 0 cut 0 wrote 0 ", "0 4 code 0 cut 0 wrote 0 "]
    # 60 MB, far beyond the room that the library has without such a file.
    language.write_bytes(b"\n\0" * 70 + b"n\0" * 30_000_000)
    assert host("upgrade")[0].startswith("u 1 code 920 cut 1 wrote 300000 nnn")


@pytest.mark.parametrize("damage, sentence", [
    (None, "is not in the folder"),
    (lambda data: data[:5000], "is damaged"),
    (lambda data: data.replace(b"PE\0\0\x64\x86", b"PE\0\0\x4C\x01", 1), "not for 64-bit"),
    (lambda data: (BIN / "ProductServicesGuard.dll").read_bytes(), "another library"),
    (lambda data: data.replace(struct.pack("<3I", 0xFEEF04BD, 1 << 16, 1 << 16),
                               struct.pack("<3I", 0xFEEF04BD, 1 << 16, 9 << 16)), "another major version")])
def test_a_library_that_cannot_be_called(host, tmp_path, damage, sentence):
    library = tmp_path / "ProductServices.dll"
    library.write_bytes(damage(library.read_bytes())) if damage else library.unlink()
    line, = host("check", cwd=BIN)  # where there is one that could be called
    assert line.startswith("c 3 code -1 cut 0 wrote ") and sentence in line and line.endswith(".")


@pytest.mark.parametrize("bypass, hosts, told", [
    ("<local>;*.Example.com http://x.example; 10.*;a*b", "example.com,10.0.0.0/8", ["CONNECT 127.0.0.1:18443 HTTP/1.1"]),
    ("127.0.*", "127.0.0.0/16", [])])
def test_the_proxy_of_windows(service, host, bypass, hosts, told):
    texts = [struct.pack("<I", len(text)) + text for text in (b"http=a:1;https=127.0.0.1:18480", bypass.encode(), b"")]
    settings = struct.pack("<3I", 0x46, 1, 3) + b"".join(texts)
    run_wine("reg", "add", *PROXY_VALUE, "/t", "REG_BINARY", "/d", settings.hex())
    service.answers = [OFFER] * 2
    with http.server.ThreadingHTTPServer(("127.0.0.1", 18480), Proxy) as proxy:
        proxy.told = []
        threading.Thread(target=proxy.serve_forever, daemon=True).start()
        lines = [line.split() for line in host("check", "proxy", "no_proxy", "check", "proxy")]
        proxy.shutdown()
    run_wine("reg", "delete", *PROXY_VALUE)
    assert [line[1] for line in lines] == ["1", "1", str(len(hosts)), "1", "2"]
    assert (lines[1][-1], lines[2][-1], proxy.told) == ("127.0.0.1:18480", hosts, told)


@pytest.mark.parametrize("language, member", [
    ("csharp", r"public (\w+) (\w+);"), ("pascal", r"(?m)^    (?=\w+: (\w+);)(\w+)")])
def test_the_declarations_for_other_languages(language, member):
    guide = (REPOSITORY / "docs/host-guide.md").read_text("utf-8")
    text = re.search(rf"```{language}\n(.*?)```", guide, re.DOTALL)[1]
    members = [(kind.lower(), name) for kind, name in re.findall(member, text)]
    code = ['#include "product_services/guarded_calls.h"', "typedef uint32_t uint, uint32;", "typedef int32_t int32;",
            "typedef wchar_t *intptr, *string, *pwidechar;", "typedef struct {", *map("%s %s;".__mod__, members), "} Other;",
            *(f'_Static_assert(offsetof(Other, {name}) == offsetof(GuardedCall, {name}), "{name}");'
              for _, name in members), '_Static_assert(sizeof(Other) == sizeof(GuardedCall), "size");']
    run("x86_64-w64-mingw32-gcc-posix", "-I", REPOSITORY / "include", "-fsyntax-only", "-xc", "-", input="\n".join(code))
    assert all(f" {name}(" in text for name in ("GuardedCheckForUpdates", "GuardedUpgrade", "UseWindowsProxy"))


def test_the_nuget_package(tmp_path):
    run("cpack", "-B", tmp_path, cwd=BIN.parent)
    with zipfile.ZipFile(next(tmp_path.glob("ExampleMaker.ProductServices.1.*.nupkg"))) as archive:
        files = {name: archive.read(name) for name in archive.namelist()}
    manifest = files["ExampleMaker.ProductServices.nuspec"].decode()
    targets = files["build/native/ExampleMaker.ProductServices.targets"].decode()
    named = {os.path.normpath("build/native/" + name.replace("\\", "/").replace("**/*", "DE/Vemo_DE"))
             for name in re.findall(r'\$\(MSBuildThisFileDirectory\)([^;"<]+\.\w+)', targets)}
    assert len(named) == 5 and named | {"LICENSE", "readme.md", "icon.png", "[Content_Types].xml", "_rels/.rels"} < set(files)
    assert not [name for name in files if name.endswith("/")]
    for name in ("ProductServices", "ProductServicesGuard"):
        library = pefile.PE(data=files[f"runtimes/win-x64/native/{name}.dll"])
        version = library.VS_FIXEDFILEINFO[0].FileVersionMS
        assert f"<version>{version >> 16}.{version & 0xFFFF}." in manifest and library.FILE_HEADER.Machine == 0x8664
        assert all(b"__imp_" + symbol.name + b"\0" in files[f"build/native/lib/{name}.lib"]
                   for symbol in library.DIRECTORY_ENTRY_EXPORT.symbols)
