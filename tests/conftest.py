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
MAKER_KEY = r"HKCU\Software\Example Maker"


def run(*command, **options):
    """Exit status and output of a program, which ends with all that it started when it takes too long."""
    ended = subprocess.run(["/usr/bin/timeout", "30", *map(str, command)], stdout=subprocess.PIPE,
                           stderr=subprocess.STDOUT, encoding="utf-8", check=False, **options)
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
    def run_wine(*command, **options):
        status, output = run(REPOSITORY / "scripts/run_wine.sh", *command, **options)
        return status, output.splitlines()
    return run_wine


@pytest.fixture
def service(tmp_path):
    services, offers = [], tmp_path / "catalogue.json"
    offers.write_text(catalogue(), "utf-8")

    def start(*options, port=0):
        command = [sys.executable, "-B", REPOSITORY / "tools/product_service.py", "--address", ADDRESS, "--port",
                   str(port), "--catalogue", offers, *options]
        started = subprocess.Popen(command, encoding="utf-8", cwd=tmp_path, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT)
        services.append(started)
        ready = started.stdout.readline()
        started.port = int(re.match(r"Product service ready at https://[0-9.]+:(\d+) ", ready)[1])
        return started
    yield start
    for started in services:
        started.kill()
        started.communicate()
