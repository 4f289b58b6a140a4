"""What the tests share: the folder of the build, programs under Wine, and the development service."""

import os
import pathlib
import re
import signal
import subprocess
import sys

import pytest

REPOSITORY = pathlib.Path(__file__).parent.parent
ADDRESS = os.environ["TESTS_ADDRESS"]
OUTPUT = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "encoding": "utf-8"}
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


def run(*command, **options):
    """Exit status and output of a program, which ends with all that it started when it takes too long."""
    ended = subprocess.run(["/usr/bin/timeout", "30", *map(str, command)], **OUTPUT, check=False, **options)
    return ended.returncode, ended.stdout


def end(service):
    """The rest of what a service logged, once it has ended in order."""
    service.send_signal(signal.SIGINT)
    log = service.communicate(timeout=20)[0].splitlines()
    assert service.returncode == 0, log
    return log


@pytest.fixture(scope="session")
def build():
    return pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"]).parent


@pytest.fixture(scope="session")
def wine():
    """Runs a Windows program as run() does."""
    return lambda *command, **options: run(REPOSITORY / "scripts/run_wine.sh", *command, **options)


@pytest.fixture
def service(tmp_path):
    """Starts development services, whose offers have the tests' own address."""
    services, offers = [], (REPOSITORY / "tools/catalogue.json").read_text("utf-8")
    (tmp_path / "catalogue.json").write_text(re.sub("https://[^:/]+", f"https://{ADDRESS}", offers), "utf-8")

    def start(*options, port=0):
        command = [sys.executable, "-B", REPOSITORY / "tools/product_service.py", "--catalogue", "catalogue.json",
                   "--address", ADDRESS, "--port", str(port), *options]
        services.append(subprocess.Popen(command, cwd=tmp_path, **OUTPUT))
        ready = services[-1].stdout.readline()
        services[-1].port = int(re.match(r"Product service ready at https://[0-9.]+:(\d+) ", ready)[1])
        return services[-1]
    yield start
    for started in services:
        started.kill()
        started.communicate()
