"""Runs the development product service for real and talks to it over HTTPS."""

import http.client
import json
import pathlib
import signal
import socket
import ssl
import struct
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).parent.parent / "tools" / "product_service.py"
OFFERS = json.loads(SCRIPT.with_name("catalogue.json").read_text("utf-8"))["DRAFT-2026-DEMO"]["2026.1"]
COMMAND = [sys.executable, SCRIPT]
CLOSED = "closed without an answer"


def query(key="DRAFT-2026-DEMO", version="2026.1", up="1", api_key="a"):
    return f"api_key={api_key}&key={key}&hardware_id=h&version={version}&up={up}".encode()


class Service:
    """The running service on a free port."""

    def __init__(self, *options):
        self.process = subprocess.Popen([*COMMAND, "--port", "0", *options], encoding="utf-8",
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.port = int(self.process.stdout.readline().split("127.0.0.1:")[1].split()[0])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.communicate()

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=20)

    def ask(self, path, body=b"", method="POST"):
        """(status, body) of one request, JSON decoded, or CLOSED."""
        connection = http.client.HTTPSConnection("127.0.0.1", self.port, timeout=20,
                                                 context=ssl._create_unverified_context())
        try:
            connection.request(method, path, body)
            response = connection.getresponse()
            reply = response.read()
            return response.status, json.loads(reply) if reply[:1] in (b"[", b"{") else reply
        except http.client.RemoteDisconnected:
            return CLOSED
        finally:
            connection.close()


class AnswersTest(unittest.TestCase):
    def test_each_request_has_its_answer_and_its_line(self):
        updates, unknown = "/get_updates.php", {"status": 0, "error": "unknown product key"}
        malformed = {"status": 0, "error": 'malformed query: no field "version" in its place'}
        cases = [
            ("/check.php", b"", 200, b"1", '-> "1"'),
            (updates, query(), 200, OFFERS, "version=2026.1 up=1 (update check) -> 3 offers"),
            (updates, query(up="0"), 200, OFFERS, "up=0 (upgrade center) -> 3 offers"),
            (updates, query(version="2026.2"), 200, b"", "-> nothing newer"),
            (updates, query(version="1999"), 200, b"", "-> version not in the catalogue"),
            (updates, query(key="A&B=%41+\u00e9\r\n"), 200, unknown, r"key=A&B=%41+é\x0d\x0a version="),
            (updates, query(api_key="a&up=0&version=9"), 200, OFFERS, "version=2026.1 up=1"),
            (updates, b"api_key=a&key=b&hardware_id=h&up=1", 400, malformed, "query=api_key=a&key=b"),
            ("/other", b"", 404, b"No such path.\n", "404"),
        ]
        with Service() as service:
            for path, body, status, expected, logged in cases:
                with self.subTest(path=path, body=body):
                    self.assertEqual(service.ask(path, body), (status, expected))
                    line = service.process.stdout.readline()
                    self.assertTrue(line.startswith(f"POST {path} "), line)
                    self.assertIn(logged, line)
            self.assertEqual(service.ask("/check.php", method="GET")[0], 405)
            page = service.ask(OFFERS[1]["url"].removeprefix("https://127.0.0.1:18443"), method="GET")[1]
            self.assertIn(f'<h1>{OFFERS[1]["name"]} {OFFERS[1]["version"]}</h1>', page.decode("utf-8"))

    def test_options_override_the_answers(self):
        with tempfile.NamedTemporaryFile() as file:
            file.write(b"\xffany bytes\0")
            file.flush()
            refusal = {"status": 0, "error": "refused on request"}
            for options, expected in ((("--answer", "offers"), (200, OFFERS)),
                                      (("--answer", "refusal"), (200, refusal)),
                                      (("--answer", "empty"), (200, b"")),
                                      (("--answer", "close"), CLOSED),
                                      (("--answer-file", file.name), (200, b"\xffany bytes\0"))):
                with self.subTest(options), Service(*options, "--check-answer", "1 ") as service:
                    self.assertEqual(service.ask("/get_updates.php", query(key="unknown")), expected)
                    self.assertEqual(service.ask("/check.php"), (200, b"1 "))


class ConnectionsTest(unittest.TestCase):
    def test_bad_clients_hold_up_nothing_and_both_signals_end_cleanly(self):
        tls = ssl._create_unverified_context()
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number), Service() as service, \
                    service.connect(), tls.wrap_socket(service.connect()) as slow:
                slow.sendall(b"POST /check.php HTTP/1.1\r\n")
                with service.connect() as plain:
                    plain.sendall(b"GET / HTTP/1.0\r\n\r\n")
                    plain.recv(100)
                with tls.wrap_socket(service.connect()) as cut:
                    cut.sendall(b"POST /get_updates.php HTTP/1.1\r\nContent-Length: 9\r\n\r\nab")
                    cut.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
                self.assertEqual(service.ask("/check.php"), (200, b"1"))
                service.process.send_signal(number)
                log, errors = service.process.communicate(timeout=20)
                self.assertEqual((service.process.returncode, errors), (0, ""))
                self.assertIn("connection without a TLS handshake", log)

    def test_what_it_cannot_start_with_is_said_in_one_sentence(self):
        with tempfile.TemporaryDirectory() as folder, socket.create_server(("127.0.0.1", 0)) as used:
            port, catalogue = used.getsockname()[1], pathlib.Path(folder, "catalogue.json")
            cases = [("--port", port, None, f"127.0.0.1:{port}: Address already in use"),
                     ("--answer-file", folder, None, f"{folder}: Is a directory"),
                     ("--catalogue", catalogue, "{\n!", "line 2"),
                     ("--catalogue", catalogue, '{"K": {"1": [{"name": "n"}]}}', '"K" version "1", offer 1'),
                     ("--catalogue", catalogue, '{"K": {}, "K": {}}', '"K" stands there twice')]
            for option, value, text, reason in cases:
                catalogue.write_text(text or "", "utf-8")
                with self.subTest(option, reason=reason):
                    run = subprocess.run([*COMMAND, option, str(value)], capture_output=True,
                                         encoding="utf-8", timeout=20, check=False)
                    self.assertEqual((run.returncode, run.stdout), (1, ""))
                    self.assertRegex(run.stderr, r"\Aproduct_service: [^\n]+\n\Z")
                    self.assertIn(reason, run.stderr)


if __name__ == "__main__":
    unittest.main()
