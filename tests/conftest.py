"""What the tests share: the folder of the build, programs under Wine, and the development service."""

import contextlib
import hashlib
import json
import os
import pathlib
import re
import shutil
import signal
import ssl
import struct
import subprocess
import sys

import pytest

WINDOWS = os.name == "nt"
REPOSITORY = pathlib.Path(__file__).parent.parent
ADDRESS = os.environ["TESTS_ADDRESS"]
OUTPUT = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "encoding": "utf-8", "errors": "surrogateescape"}
CATALOGUE = (REPOSITORY / "tools/catalogue.json").read_text("utf-8")
# What ends a service in order.
INTERRUPT = getattr(signal, "CTRL_BREAK_EVENT", signal.SIGINT)
TERMINATION = getattr(signal, "CTRL_BREAK_EVENT", signal.SIGTERM)
debian_only = pytest.mark.skipif(WINDOWS, reason="needs Wine, or tools of Debian")
MAKER_KEY = r"HKCU\Software\Example Maker"
# The installed product of the sample family.
KEY, API_KEY = "DRAFT-2026-DEMO", "draft20-7k2m9q-x4v8p1w"


def pytest_sessionfinish(session, exitstatus):
    """Empties the tests' folders, which stay below the build only where a test has failed."""
    if exitstatus == 0 and session.config.option.basetemp:
        shutil.rmtree(session.config.option.basetemp, ignore_errors=True)


def load_cases(file):
    """Returns the content of a JSON file in tests/, usually a table of cases by name."""
    return json.loads((REPOSITORY / "tests" / file).read_text("utf-8"))


def parametrize_from(file, members):
    """Runs a test once for each case in a JSON file. The named members of a case become the test's parameters."""
    rows = [[row[member] for member in members.split(", ")] for row in load_cases(file).values()]
    return pytest.mark.parametrize(members, rows, ids=load_cases(file))


def replace_once(path, pattern, text):
    """Replaces the only match of a pattern in a UTF-8 file. The pattern may span lines."""
    changed, count = re.subn(pattern, lambda match: text, path.read_text("utf-8"), flags=re.DOTALL)
    assert count == 1
    path.write_bytes(changed.encode("utf-8"))


def run(*command, **options):
    """Exit status and output of a program, which ends with all that it started when it takes too long."""
    limit = [] if WINDOWS else ["/usr/bin/timeout", "30"]
    ended = subprocess.run([*limit, *map(str, command)], **OUTPUT, check=False, timeout=40, **options)
    return ended.returncode, ended.stdout


def stop_service(service, number=INTERRUPT):
    """The rest of what a service logged, once it has ended in order."""
    service.send_signal(number)
    log = service.communicate(timeout=20)[0].splitlines()
    assert service.returncode == 0, log
    return log


@pytest.fixture(scope="session")
def build():
    return pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"]).parent


@pytest.fixture(scope="session")
def wine():
    """Runs a Windows program as run() does."""
    emulator = [] if WINDOWS else [REPOSITORY / "scripts/run_wine.sh"]

    def run_windows_program(*command, **options):
        return run(*emulator, *command, **options)
    return run_windows_program


def root_store_entry(der):
    """Where the tests' Wine keeps a certificate among its user's trusted roots, as arguments of reg, and its bytes."""
    roots = r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates"
    place = rf"{roots}\{hashlib.sha1(der).hexdigest().upper()}"
    return [place, "/v", "Blob"], struct.pack("<3I", 32, 1, len(der)) + der


@contextlib.contextmanager
def trust_root(wine, der):
    """Has the tests' Wine trust a root certificate meanwhile."""
    value, stored = root_store_entry(der)
    try:
        status, output = wine("reg", "add", *value, "/t", "REG_BINARY", "/d", stored.hex(), "/f")
        assert status == 0, output
        yield
    finally:
        wine("reg", "delete", value[0], "/f")


def read_certificate(file):
    """The certificate, in DER, of a PEM file that may have a key, too."""
    pattern = "-----BEGIN CERTIFICATE.*?END CERTIFICATE-----"
    return ssl.PEM_cert_to_DER_cert(re.search(pattern, file.read_text(), re.DOTALL)[0])


DIRECT_HOST = """#include <product_services/product_services.h>
int main(void) { HostContext context = {0}; CheckForUpdates(&context); return 0; }
"""


def write_host_project(folder, command, library="Guard"):
    """A host in C of one of the libraries, with the command by which its project takes the library in."""
    if library == "Guard":
        shutil.copy(REPOSITORY / "samples/minimal_hosts/host.c", folder)
    else:
        (folder / "host.c").write_text(DIRECT_HOST, "utf-8")
    (folder / "CMakeLists.txt").write_text(f"""cmake_minimum_required(VERSION 3.16)
project(Host LANGUAGES C)
{command}
add_executable(host host.c)
target_link_libraries(host PRIVATE ProductServices::{library})
product_services_deploy(host)
""", "utf-8")


@pytest.fixture
def restricted_toolchain(tmp_path):
    """The option of cmake for a toolchain that looks for packages in the compiler's own folders alone."""
    compilers = {"C": "gcc-posix", "CXX": "g++-posix", "RC": "windres"}
    lines = [f"set(CMAKE_{language}_COMPILER x86_64-w64-mingw32-{name})" for language, name in compilers.items()]
    lines += ["set(CMAKE_SYSTEM_NAME Windows)", "set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)"]
    lines += [f"set(CMAKE_FIND_ROOT_PATH_MODE_{kind} ONLY)" for kind in ("PACKAGE", "LIBRARY", "INCLUDE")]
    file = tmp_path / "plain toolchain.cmake"
    file.write_text("\n".join(lines), "utf-8")
    return f"-DCMAKE_TOOLCHAIN_FILE={file}"


@pytest.fixture(scope="module")
def host(build, wine):
    """Runs the host that makes guarded calls, whose product has a record, and returns its lines."""
    record = MAKER_KEY + r"\Products\Guarded\1"
    wine("reg", "add", record, "/v", "key", "/d", "any", "/f")
    wine("reg", "add", record, "/v", "version", "/d", "any", "/f")

    def run_host(*words):
        status, output = wine(build / "https_sample/guard_host.exe", *words, cwd=build / "https_sample")
        assert status == 0, output
        return output.splitlines()
    yield run_host
    wine("reg", "delete", MAKER_KEY + r"\Products\Guarded", "/f")


@pytest.fixture
def service_command(tmp_path):
    """The command line of a development service, before its options; its offers have the tests' own address."""
    (tmp_path / "catalogue.json").write_text(CATALOGUE, "utf-8")
    return [sys.executable, "-B", REPOSITORY / "tools/product_service.py", "--catalogue", tmp_path / "catalogue.json",
            "--address", ADDRESS]


@pytest.fixture
def service(service_command, tmp_path):
    """Starts development services, and ends those that run at the end of the test."""
    services = []

    def start(*options, port=0):
        started = subprocess.Popen([*service_command, "--port", str(port), *options], cwd=tmp_path, **OUTPUT,
                                   creationflags=getattr(subprocess, "CREATE_NEW_PROCESS_GROUP", 0))
        services.append(started)
        ready = started.stdout.readline()
        assert re.fullmatch(rf"Product service ready at https://{ADDRESS}:\d+ \(press Ctrl-C to stop\)\n", ready)
        started.port = int(re.search(r":(\d+) ", ready)[1])
        return started

    yield start
    for started in services:
        started.kill()
        started.communicate()


@pytest.fixture
def trusted_certificate(service_command, tmp_path):
    """The file of a service's key and certificate, which Wine trusts meanwhile."""
    certificate = tmp_path / "service.pem"
    environment = {**os.environ, "WINE": str(REPOSITORY / "scripts/run_wine.sh")}

    def change_trust(option):
        return run(*service_command, "--certificate", certificate, option, env=environment)

    status, output = change_trust("--trust")
    assert status == 0, output
    yield certificate
    change_trust("--untrust")


@pytest.fixture
def trusted_service(service, trusted_certificate):
    """Starts the development service on the sample family's port, with a certificate that Wine trusts."""
    return lambda *options: service("--certificate", trusted_certificate, *options, port=18443)
