"""Fixtures and functions that the tests share: the build folder, programs under Wine, and the development service."""

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
# Signals that stop a service cleanly.
INTERRUPT = getattr(signal, "CTRL_BREAK_EVENT", signal.SIGINT)
TERMINATION = getattr(signal, "CTRL_BREAK_EVENT", signal.SIGTERM)
debian_only = pytest.mark.skipif(WINDOWS, reason="needs Wine or Debian's tools")
MAKER_KEY = r"HKCU\Software\Example Maker"
# Options of openssl for a new key. Three primes are found four times as fast as two.
NEW_KEY = "-newkey", "rsa:2048", "-pkeyopt", "rsa_keygen_primes:3"
# The product key and the API key of the sample product.
KEY, API_KEY = "DRAFT-2026-DEMO", "draft20-7k2m9q-x4v8p1w"
WINE_PREFIX = pathlib.Path(os.environ.get("PRODUCT_SERVICES_WINEPREFIX", REPOSITORY / "build/wine"))
if "TEST_MACHINE" in os.environ:
    WINE_PREFIX = WINE_PREFIX.with_name(f"{WINE_PREFIX.name}-{os.environ['TEST_MACHINE']}")
if (WINE_PREFIX / "display").exists():
    os.environ["DISPLAY"] = (WINE_PREFIX / "display").read_text().strip()
SAMPLE_JSON = REPOSITORY / "product_family/sample/product_family.json"
# Another family, for the sample's DLL: the service of the tests replaces its service, and its records are the sample's.
OTHER_FAMILY = {**json.loads((REPOSITORY / "tests/product_family/special_characters.json").read_text("utf-8")),
                "service_base_address": "https://strange.example:8443",
                "record_registry_path": "Software\\Example Maker\\Products"}


def pytest_sessionfinish(session, exitstatus):
    """Removes the tests' folders unless a test has failed."""
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
    """Runs a program and returns its exit status and output. A timeout stops it and its child processes."""
    limit = [] if WINDOWS else ["/usr/bin/timeout", "300"]
    completed = subprocess.run([*limit, *map(str, command)], **OUTPUT, check=False, timeout=310, **options)
    return completed.returncode, completed.stdout


def stop_service(service, number=INTERRUPT):
    """Stops a service, which must exit cleanly, and returns the rest of its log."""
    service.send_signal(number)
    log = service.communicate(timeout=60)[0].splitlines()
    assert service.returncode == 0, log
    return log


@pytest.fixture(scope="session")
def build():
    return pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"]).parent


@pytest.fixture(scope="session")
def https_sample(build, tmp_path_factory):
    """Returns a folder with the sample family's programs, whose service has the address of the tests."""
    folder = tmp_path_factory.mktemp("sample")
    address = "https://localhost:18443", f"https://{ADDRESS}:18443"
    built, replacement = (text.encode("utf-16-le") for text in address)
    for program in ("ProductServicesGuard.dll", "ProductServicesTool.exe", "SampleHost.exe", "guard_host.exe"):
        # As in the package, without the debug symbols, which are most of a program.
        status, output = run("x86_64-w64-mingw32-strip", "-o", folder / program, build / "bin" / program)
        assert status == 0, output
        content = (folder / program).read_bytes()
        assert built in content or program in ("SampleHost.exe", "guard_host.exe"), program
        (folder / program).write_bytes(content.replace(built, replacement))
    shutil.copytree(build / "bin/lang", folder / "lang")
    return folder


@pytest.fixture(scope="session")
def wine():
    """Like run(), for a Windows program."""
    emulator = [] if WINDOWS else [REPOSITORY / "scripts/run_wine.sh"]

    def run_windows_program(program, *arguments, **options):
        # Wine starts a second program, which searches for a name without a path.
        program = r"C:\windows\system32\reg.exe" if program == "reg" else program
        return run(*emulator, program, *arguments, **options)
    return run_windows_program


def root_store_entry(der):
    """Returns the registry value for a certificate among the user's trusted roots in Wine, as arguments of reg, and its
    content."""
    roots = r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates"
    key = rf"{roots}\{hashlib.sha1(der).hexdigest().upper()}"
    return [key, "/v", "Blob"], struct.pack("<3I", 32, 1, len(der)) + der


@contextlib.contextmanager
def trust_root(wine, der):
    """Makes Wine trust a root certificate within the context."""
    value, stored = root_store_entry(der)
    try:
        status, output = wine("reg", "add", *value, "/t", "REG_BINARY", "/d", stored.hex(), "/f")
        assert status == 0, output
        yield
    finally:
        wine("reg", "delete", value[0], "/f")


def read_certificate(file):
    """Returns the certificate in a PEM file, which may also contain a key, as DER."""
    pattern = "-----BEGIN CERTIFICATE.*?END CERTIFICATE-----"
    return ssl.PEM_cert_to_DER_cert(re.search(pattern, file.read_text(), re.DOTALL)[0])


# The smallest hosts in C, by the library that they link.
HOSTS = {
    "Guard": """#include <product_services/guarded_calls.h>
int main(void) { GuardedCallParams params = {0}; return (int)GuardedUpgrade(&params); }
""",
    "ProductServices": """#include <product_services/product_services.h>
int main(void) { HostContext context = {0}; CheckForUpdates(&context); return 0; }
""",
}


def write_host_project(folder, command, library="Guard", target="host"):
    """Writes a CMake project of a host in C that links one of the libraries, which the command makes available."""
    (folder / "host.c").write_text(HOSTS[library], "utf-8")
    (folder / "CMakeLists.txt").write_text(f"""cmake_minimum_required(VERSION 3.16)
project(Host LANGUAGES C)
{command}
add_executable({target} host.c)
target_link_libraries({target} PRIVATE ProductServices::{library})
product_services_deploy({target})
""", "utf-8")


@pytest.fixture(scope="session")
def restricted_toolchain(tmp_path_factory):
    """Returns cmake's option for a toolchain file that only searches packages in the compiler's folders."""
    compilers = {"C": "gcc-posix", "CXX": "g++-posix", "RC": "windres"}
    lines = [f"set(CMAKE_{language}_COMPILER x86_64-w64-mingw32-{name})" for language, name in compilers.items()]
    lines += ["set(CMAKE_SYSTEM_NAME Windows)", "set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)"]
    lines += [f"set(CMAKE_FIND_ROOT_PATH_MODE_{kind} ONLY)" for kind in ("PACKAGE", "LIBRARY", "INCLUDE")]
    file = tmp_path_factory.mktemp("toolchain") / "restricted toolchain.cmake"
    file.write_text("\n".join(lines), "utf-8")
    return f"-DCMAKE_TOOLCHAIN_FILE={file}"


@pytest.fixture(scope="session")
def host(https_sample, wine):
    """Runs the host that makes guarded calls, whose product has a record, and returns the lines of its output."""
    record = MAKER_KEY + r"\Products\Guarded\1"
    wine("reg", "add", record, "/v", "key", "/d", "any", "/f")
    wine("reg", "add", record, "/v", "version", "/d", "any", "/f")

    def run_host(*words):
        status, output = wine("guard_host.exe", *words, cwd=https_sample)
        assert status == 0, output
        return output.splitlines()
    yield run_host
    wine("reg", "delete", MAKER_KEY + r"\Products\Guarded", "/f")


@pytest.fixture
def service_command(tmp_path):
    """Returns the command line of the development service without options."""
    (tmp_path / "catalogue.json").write_text(CATALOGUE, "utf-8")
    return [sys.executable, "-B", REPOSITORY / "tools/product_service.py", "--catalogue", tmp_path / "catalogue.json",
            "--address", ADDRESS]


@pytest.fixture(scope="session")
def service_certificate(tmp_path_factory):
    """Returns the file with the key and the certificate that services use by default."""
    file = tmp_path_factory.mktemp("service certificate") / "service.pem"
    status, output = run("openssl", "req", "-x509", *NEW_KEY, "-nodes", "-subj", "/CN=localhost", "-addext",
                         f"subjectAltName=DNS:{ADDRESS},IP:{ADDRESS},DNS:localhost", "-keyout", file, "-out", file)
    assert status == 0, output
    return file


@pytest.fixture
def service(service_command, service_certificate, tmp_path):
    """Starts development services. Those that still run are killed at the end of the test."""
    services = []

    def start(*options, port=0):
        if "--certificate" not in options:
            options = ("--certificate", service_certificate, *options)
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


@pytest.fixture(scope="session")
def trusted_certificate(wine, service_certificate):
    """Creates the certificate of services and makes Wine trust it while the tests of a file run."""
    status, output = run(sys.executable, "-B", REPOSITORY / "tools/product_service.py", "--address", ADDRESS,
                         "--certificate", service_certificate, "--trust",
                         env={**os.environ, "WINE": str(REPOSITORY / "scripts/run_wine.sh")})
    assert status == 0, output
    yield
    wine("reg", "delete", root_store_entry(read_certificate(service_certificate))[0][0], "/f")


@pytest.fixture
def trusted_service(service, trusted_certificate):
    """Starts the development service on the sample family's port, with a certificate that Wine trusts."""
    return lambda *options: service(*options, port=18443)


@pytest.fixture(scope="session")
def archives(build):
    """Returns the folder with the packages, which ctest has created with cpack."""
    return build / "packages"


@pytest.fixture(scope="session")
def package(archives, tmp_path_factory):
    """Unpacks the package for host developers, and returns its folder."""
    archive, = archives.glob("product-services-ExampleMaker.ProductServices-*-windows-x64.zip")
    folder = tmp_path_factory.mktemp("package")
    shutil.unpack_archive(archive, folder)
    return folder / archive.stem


def brand(family, folder):
    """Replaces the sample family's names in a folder, as cpack does. Writes the family's JSON next to the folder."""
    family_json = folder.with_name("product_family.json")
    family_json.write_text(json.dumps(family), "utf-8")
    return run(sys.executable, "-B", REPOSITORY / "cmake/brand_package.py", SAMPLE_JSON, family_json, folder)


@pytest.fixture(scope="session")
def other_family_package(package, tmp_path_factory):
    """Returns a copy of the package with another family's names."""
    folder = shutil.copytree(package, tmp_path_factory.mktemp("other family") / "my kit")
    assert brand(OTHER_FAMILY, folder) == (0, "")
    return folder
