"""Runs the sample host under Wine against the development service: real HTTPS, real windows.

It needs a display and the Wine prefix of tools/lib/wine.sh, as test.sh prepares them.
"""

import os
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

REPOSITORY = pathlib.Path(__file__).parent.parent
HOST = pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"], "SampleHost.exe").absolute()
WINE = REPOSITORY / "scripts" / "run_wine.sh"
SERVICE = REPOSITORY / "tools" / "product_service.py"
RECORDS = r"HKCU\Software\Example Maker\Products\Example Draft"

CHECKED = "POST /get_updates.php  key=DRAFT-2026-DEMO version={} up=1 (update check) -> {}"
OFFERS_ASKED = "POST /get_updates.php  key=DRAFT-2026-DEMO version=2026.1 up=0 (upgrade center) -> {}"
PROBED = 'POST /check.php -> "1"'
OFFERS = ["upgrade center: Example Draft - Upgrade center", "  offer: Example Draft 2026.2",
          "  offer: Example Model 2026.1", "  offer: Example Layout Studio 2026.1"]
NO_INTERNET = ['message box "Example Draft": No internet found!', "outcome: nothing was reported"]
NO_CONNECTION = "outcome: 940: For upgrade center to appear, you need a stable internet connection!"


class Service:
    """The development service while a `with` block runs; afterwards `log` has a line for each request."""

    def __init__(self, *options):
        self.process = subprocess.Popen([sys.executable, "-B", SERVICE, *options], stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT, encoding="utf-8")
        ready, self.log = self.process.stdout.readline(), []
        assert ready.startswith("Product service ready"), ready

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGINT)
        self.log = self.process.communicate(timeout=20)[0].splitlines()


def run_wine(*arguments, **options):
    """Exit status and lines of a Windows program under Wine."""
    run = subprocess.run([WINE, *map(str, arguments)], stdout=subprocess.PIPE, encoding="utf-8",
                         stderr=subprocess.STDOUT, timeout=60, check=False, **options)
    return run.returncode, run.stdout.splitlines()


def answer_hello(server, answer):
    """Answers the first TLS message of one client with these bytes and hangs up."""
    server.settimeout(20)
    connection, _ = server.accept()
    with connection:
        connection.recv(16384)
        connection.sendall(answer)


class SampleHostTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for version in ("2026.1", "2026.2"):
            for name, value in (("key", "DRAFT-2026-DEMO"), ("version", version)):
                status, lines = run_wine("reg", "add", rf"{RECORDS}\{version}", "/v", name, "/d", value, "/f")
                assert status == 0, f"the sample product's record could not be written: {lines}"

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_host(self, *arguments, **options):
        status, lines = run_wine(HOST, *arguments, "--unattended", cwd=self.folder, **options)
        self.assertEqual(status, 0, lines)
        return lines

    def test_the_outcome_and_the_requests_of_each_call(self):
        for service_options, arguments, expected, requests in (
                ("", "check",
                 ["outcome: 200: a newer release is at https://127.0.0.1:18443/buy/draft-2026-2"],
                 [CHECKED.format("2026.1", "3 offers")]),
                ("", "check --version 2026.2",
                 ['message box "Example Draft": You are running the latest version',
                  "outcome: nothing was reported"], [CHECKED.format("2026.2", "nothing newer (empty body)")]),
                ("", "check --version 1999",
                 ["outcome: 950: No data of the installed product was found."], []),
                ("--answer refusal", "check", NO_INTERNET,
                 [CHECKED.format("2026.1", "refusal: refused on request")]),
                ("", "upgrade", [*OFFERS, "  pressing: Exit", "outcome: 540: User chose to quit!"],
                 [PROBED, OFFERS_ASKED.format("3 offers")]),
                ("--answer empty", "upgrade", ["outcome: 920: No upgrades found!"],
                 [PROBED, OFFERS_ASKED.format("empty body")]),
                ("--check-answer 0", "upgrade", [NO_CONNECTION], ['POST /check.php -> "0"'])):
            with self.subTest(service=service_options, host=arguments):
                with Service(*service_options.split()) as service:
                    lines = self.run_host(*arguments.split())
                self.assertEqual(lines, expected)
                self.assertEqual(service.log, requests)

    def test_without_a_service(self):
        self.assertEqual(self.run_host("check"), NO_INTERNET)
        self.assertEqual(self.run_host("upgrade"), [NO_CONNECTION])

    def test_a_tls_handshake_that_fails(self):
        for answer in (b"", b"HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\n1",
                       b"\x15\x03\x03\x00\x02\x02\x28",  # the fatal alert handshake_failure
                       b"\x16\x03\x03\x00\x20 the start of a record"):
            with self.subTest(answer=answer), socket.create_server(("127.0.0.1", 18443)) as server:
                thread = threading.Thread(target=answer_hello, args=(server, answer))
                thread.start()
                self.assertEqual(self.run_host("check"), NO_INTERNET)
                thread.join(10)
                self.assertFalse(thread.is_alive(), "the host never connected")

    def test_an_answer_that_is_no_json_ends_the_call_with_an_error(self):
        page = self.folder / "page.html"
        page.write_text("<!DOCTYPE html><title>Sign in to the network</title>", "utf-8")
        with Service("--answer-file", page):
            for command in ("check", "upgrade"):
                outcome, = self.run_host(command)
                self.assertIn("outcome: the call ended with an error: [json.exception.parse_error.101] "
                              "parse error at line 1, column 1: ", outcome)

    def test_buying_hands_the_offers_address_to_the_browser(self):
        opened = self.folder / "opened"
        environment = {**os.environ, "OPENED_ADDRESSES": str(opened),
                       "PATH": f"{REPOSITORY}/scripts/lib/browser:{os.environ['PATH']}"}
        with Service():
            lines = self.run_host("upgrade", "--buy", "2", env=environment)
        self.assertEqual(lines[-1], "outcome: 930: Browser opened, continue running!")
        end = time.monotonic() + 20
        while not (opened.exists() and opened.read_text().endswith("\n")) and time.monotonic() < end:
            time.sleep(0.05)
        self.assertEqual(opened.read_text(), "https://127.0.0.1:18443/buy/model-2026-1\n")

    def test_wrong_usage(self):
        for arguments in (("frobnicate",), ("check", "--version"), ("check", "--language", "12x"),
                          ("upgrade", "--buy", ""), ("check", "upgrade")):
            status, lines = run_wine(HOST, *arguments)
            self.assertEqual(status, 2, (arguments, lines))
            self.assertIn("SampleHost upgrade ...     calls Upgrade and prints the outcome", lines)


if __name__ == "__main__":
    unittest.main()
