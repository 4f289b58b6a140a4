"""What the tests share: the folder of the build, programs under Wine, and the development service."""

import functools
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


def run(*command, **options):
    """Exit status and output of a program, which ends with all that it started when it takes too long."""
    ended = subprocess.run(["/usr/bin/timeout", "30", *map(str, command)], **OUTPUT, check=False, **options)
    return ended.returncode, ended.stdout


def catalogue():
    """The sample catalogue, its addresses at the tests' own."""
    return re.sub("https://[^:/]+", f"https://{ADDRESS}", (REPOSITORY / "tools/catalogue.json").read_text("utf-8"))


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
    return functools.partial(run, REPOSITORY / "scripts/run_wine.sh")


@pytest.fixture
def service(tmp_path):
    services = []
    (tmp_path / "catalogue.json").write_text(catalogue(), "utf-8")

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
