"""Guarded calls from a host in C, with signed libraries; the proxy of Windows; the declarations for other languages."""

import functools
import http.server
import re
import struct
import threading

import pytest

from conftest import ADDRESS, MAKER_KEY, REPOSITORY, run

PROXY_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Internet Settings\Connections"
PROXY_VALUE = "/v", "DefaultConnectionSettings", "/f"
VERSION, MACHINE = b"\xbd\x04\xef\xfe\0\0\1\0\0\0%c\0", b"PE\0\0%b"
C_TYPES = {"uint": "uint32_t", "uint32": "uint32_t", "int": "int32_t", "int32": "int32_t",
           "string": "wchar_t*", "intptr": "wchar_t*", "pwidechar": "wchar_t*"}
NO_UPGRADES = "u 1 920 0 No upgrades found!\0"
NO_CONNECTION = "u 1 940 0 For upgrade center to appear, you need a stable internet connection!\0"


@pytest.fixture
def host(build, tmp_path, wine):
    """Runs the host with its libraries, all signed, in a folder of its own. Its lines, long repeats as counts."""
    for name in ("key", "version"):
        wine("reg", "add", rf"{MAKER_KEY}\Products\Guarded\1", "/v", name, "/d", "any", "/f")
    run(*"openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=C -keyout key -out certificate".split(), cwd=tmp_path)
    for file in ("over_tls/ProductServices.dll", "bin/ProductServicesGuard.dll", "bin/guard_host.exe"):
        signed = ("-in", build / file, "-out", (build / file).name)
        assert run(*"osslsigncode sign -certs certificate -key key".split(), *signed, cwd=tmp_path)[0] == 0

    def run_host(*calls, cwd=tmp_path):
        status, output = wine(tmp_path / "guard_host.exe", *calls, cwd=cwd)
        assert status == 0, output
        return [re.sub(r"(.)\1{9,}", lambda repeat: f"{repeat[1]}*{len(repeat[0])}", line.rstrip("#"))
                for line in output.split("\n")[:-1]]
    return run_host


def test_replies_that_make_no_sense_leave_as_values(host, service, tmp_path):
    (tmp_path / "reply").touch()
    service("--answer-file", "reply", port=18443)
    for reply, error in (("<html>503</html>", "last read: '<'"), ('{"status":"0"}', "must be number, but is string"),
                         ('[{"name":"\U0001F600","version":"2","url":"u"}]', "bad conversion")):
        (tmp_path / "reply").write_text(reply, "utf-8")
        bare, *guarded = host("bare", "check", "check", "upgrade")
        assert bare == "b 0 0 0 "
        assert all(re.fullmatch(rf"[cu] 2 -1 0 .*{error}\0", line) for line in guarded), guarded


def test_texts_of_any_length(host, service, tmp_path):
    service("--answer", "empty", port=18443)
    language = tmp_path / "lang/EN/Vemo_EN.lang"
    language.parent.mkdir(parents=True)
    language.write_text("\n" * 70 + "\U0001F600" * 100_000 + "\n" * 17, "utf-16-le")
    assert host("u200001", "u200000", "u3", "u2", "u1", "u0", "t1", "u9,55", "0") == [
        "u 1 920 0 \U0001F600*100000\0", "u 1 920 1 \U0001F600*99999\0", "u 1 920 1 \U0001F600\0",
        *["u 1 920 1 \0"] * 2, "u 1 920 1 ", "t 1 920 1 ", "u 4 0 0 ", "0 4 0 0 "]
    # 60 MB, far beyond the room that the library has without such a file.
    language.write_bytes(b"\n\0" * 70 + b"n\0" * 30_000_000)
    assert host("upgrade") == ["u 1 920 1 n*299999\0"]


def test_a_library_that_cannot_be_called(build, host, tmp_path):
    library = tmp_path / "ProductServices.dll"
    good, guard = library.read_bytes(), (tmp_path / "ProductServicesGuard.dll").read_bytes()
    for bad, sentence in (
            (good[:5000], "is damaged"), (guard, "another library"), (None, "is not in the folder"),
            (good.replace(MACHINE % b"\x64\x86", MACHINE % b"\x4c\1"), "not for 64-bit"),
            (good.replace(VERSION % 1, VERSION % 9), "another major version")):
        library.write_bytes(bad) if bad else library.unlink()
        line, = host("check", cwd=build / "over_tls")  # where there is one that could be called
        assert re.fullmatch(rf"c 3 -1 0 .*{sentence}.*\.\0", line), line


@pytest.fixture
def windows_proxy(wine, tmp_path):
    """Changes the user's proxy settings, which are put back at the end."""
    saved = tmp_path / "settings.reg"
    wine("reg", "export", PROXY_KEY, saved)

    def change(flags, *texts):
        value = struct.pack("<3I", 0x46, 1, flags)
        value += b"".join(struct.pack("<I", len(text)) + text.encode() for text in texts)
        status, output = wine("reg", "add", PROXY_KEY, *PROXY_VALUE, "/t", "REG_BINARY", "/d", value.hex())
        assert status == 0, output
    yield change
    wine("reg", "delete", PROXY_KEY, *PROXY_VALUE)
    if saved.exists():
        wine("reg", "import", saved)


@pytest.fixture
def script(tmp_path):
    """A configuration script, as its address and its file."""
    handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=tmp_path)
    with http.server.ThreadingHTTPServer((ADDRESS, 0), handler) as server:
        threading.Thread(target=server.serve_forever).start()
        yield f"http://{ADDRESS}:{server.server_port}/proxy.pac", tmp_path / "proxy.pac"
        server.shutdown()


def test_the_proxy_of_windows(host, service, windows_proxy, script):
    service("--answer", "empty", port=18443)
    proxy = service()  # which says what it was asked for, in the words of OpenSSL, and gives no tunnel
    proxy_address = f"{ADDRESS}:{proxy.port}"
    calls = "upgrade", f"phttps://{ADDRESS}:18443", "no_proxy", "upgrade", "phttps://service.example"

    windows_proxy(3, f"http=a:1;https={proxy_address}", "127.*", "")
    assert host(*calls) == [
        NO_UPGRADES, f"p 1 0 0 {proxy_address}\0", f"n {len(ADDRESS)} 0 0 {ADDRESS}\0", NO_UPGRADES, "p 2 0 0 \0"]

    # Wine passes on what is before a blank or a semicolon; Windows has semicolons between the script's proxies.
    address, file = script
    file.write_text(f"function FindProxyForURL() {{ return 'PROXY {ADDRESS}:1\\t{proxy_address}'; }}")
    windows_proxy(5, "", "", address)
    assert host(*calls) == [NO_UPGRADES, f"p 1 0 0 {proxy_address}\0", "n 0 0 0 ", NO_CONNECTION, "p 2 0 0 \0"]
    log = [proxy.stdout.readline(), proxy.stdout.readline()]  # of the connection that tried it and of the request
    assert ["https proxy request" in line for line in log].count(True) == 1, log


def test_the_declarations_for_other_languages():
    header = (REPOSITORY / "include/product_services/guarded_calls.h").read_text("utf-8")
    members = re.findall(r"(?m)^    (?:const )?(\w+\*?) (\w+);", header)
    for suffix, member in ((".cs", r"public (\w+) (\w+);"), (".pas", r"(?m)^    (?=\w+: (\w+);)(\w+)")):
        text = (REPOSITORY / f"samples/declarations/ProductServicesGuard{suffix}").read_text("utf-8")
        assert [(C_TYPES[kind.lower()], name) for kind, name in re.findall(member, text)] == members
        assert all(f" {name}(" in text for name in ("GuardedCheckForUpdates", "GuardedUpgrade", "UseWindowsProxy"))
