"""What the tests share: the folder of the build, programs under Wine, and the development service."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys

import pytest

REPOSITORY = pathlib.Path(__file__).parent.parent
ADDRESS = os.environ["TESTS_ADDRESS"]
OUTPUT = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "encoding": "utf-8"}
CATALOGUE = (REPOSITORY / "tools/catalogue.json").read_text("utf-8")
MAKER_KEY = r"HKCU\Software\Example Maker"
# Another maker's product family, with characters that mean something to CMake, C, C++, resource scripts, XML, JSON,
# Markdown or a shell, and with characters of one to four bytes.
STRANGE_FAMILY = {
    "maker": 'Mü & "Co" <*> ; ${maker} @MAKER@ 50% \\n??= \\_/',
    "package_id": "Mue-Kit.3",
    "product": 'Möbel "3"; [c] ${product} $(y) @ID@ 50% 图abc',
    "service_base_address": "https://[::1]:8443/a;b/$c/@KEY_1@/%20",
    "record_registry_path": "Software\\Mü & Söhne\\[𠮷];",
    "known_api_keys": ['"1" & \\?图', "back\\slash\\", "üabc0123", "a&b=%41", "Ключ;鍵", "] [' <?> //"],
}


def pytest_sessionfinish(session, exitstatus):
    """Empties the tests' folders, which stay below the build only where a test has failed."""
    if exitstatus == 0 and session.config.option.basetemp:
        shutil.rmtree(session.config.option.basetemp, ignore_errors=True)


def run(*command, **options):
    """Exit status and output of a program, which ends with all that it started when it takes too long."""
    ended = subprocess.run(["/usr/bin/timeout", "30", *map(str, command)], **OUTPUT, check=False, **options)
    return ended.returncode, ended.stdout


def end(service, number=signal.SIGINT):
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
    def run_windows_program(*command, **options):
        return run(REPOSITORY / "scripts/run_wine.sh", *command, **options)
    return run_windows_program


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
        started = subprocess.Popen([*service_command, "--port", str(port), *options], cwd=tmp_path, **OUTPUT)
        services.append(started)
        ready = started.stdout.readline()
        assert re.fullmatch(rf"Product service ready at https://{ADDRESS}:\d+ \(Ctrl-C ends it\)\n", ready)
        started.port = int(re.search(r":(\d+) ", ready)[1])
        return started

    yield start
    for started in services:
        started.kill()
        started.communicate()
