"""Runs the development product service for real and talks to it over HTTPS."""

import http.client
import json
import os
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
CATALOGUE = json.loads(SCRIPT.with_name("catalogue.json").read_text("utf-8"))
OFFERS = CATALOGUE["DRAFT-2026-DEMO"]["2026.1"]
CLOSED = "closed without an answer"


def query(key="DRAFT-2026-DEMO", version="2026.1", up="1", api_key="a"):
    return f"api_key={api_key}&key={key}&hardware_id=h&version={version}&up={up}".encode()


def command(*options):
    return [sys.executable, str(SCRIPT), *map(str, options)]


class Service:
    """The running service on a free port, with a temporary folder of its own."""

    def __init__(self, *options):
        self.folder = tempfile.TemporaryDirectory()
        self.process = subprocess.Popen(
            command("--port", 0, *options), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            encoding="utf-8", env={**os.environ, "TMPDIR": self.folder.name})
        self.ready = self.process.stdout.readline()
        self.port = int(self.ready.split("127.0.0.1:")[1].split()[0]) if self.ready else 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.communicate()
        self.folder.cleanup()

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=20)

    def ask(self, method, path, body=None):
        """(status, headers, body) of one request, or CLOSED."""
        tls = ssl._create_unverified_context()
        connection = http.client.HTTPSConnection("127.0.0.1", self.port, timeout=20, context=tls)
        try:
            connection.request(method, path, body)
            response = connection.getresponse()
            return response.status, response.headers, response.read()
        except http.client.RemoteDisconnected:
            return CLOSED
        finally:
            connection.close()

    def end(self, number):
        """Exit status, the rest of the log, standard error, what the temporary folder keeps."""
        self.process.send_signal(number)
        log, errors = self.process.communicate(timeout=20)
        return self.process.returncode, log, errors, os.listdir(self.folder.name)


class AnswersTest(unittest.TestCase):
    def read(self, body):
        return json.loads(body.decode("utf-8")) if body[:1] in (b"[", b"{") else body

    def test_each_request_has_its_answer_and_its_line(self):
        malformed = {"status": 0, "error": 'malformed query: no field "version" in its place'}
        unknown = {"status": 0, "error": "unknown product key"}
        cases = [
            ("POST", "/check.php", b"", 200, b"1", '-> "1"'),
            ("POST", "/get_updates.php", query(), 200, OFFERS,
             "  key=DRAFT-2026-DEMO version=2026.1 up=1 (update check) -> 3 offers"),
            ("POST", "/get_updates.php", query(up="0"), 200, OFFERS,
             "up=0 (upgrade center) -> 3 offers"),
            ("POST", "/get_updates.php", query(version="2026.2"), 200, b"", "-> nothing newer"),
            ("POST", "/get_updates.php", query(version="1999"), 200, b"",
             "-> version not in the catalogue"),
            ("POST", "/get_updates.php", query(key="A&B=%41+\u00e9"), 200, unknown,
             "key=A&B=%41+\u00e9 version=2026.1"),
            ("POST", "/get_updates.php", query(api_key="a&up=0&version=9"), 200, OFFERS,
             "version=2026.1 up=1"),
            ("POST", "/get_updates.php", query(key="K&hardware_id=1"), 200, unknown,
             "key=K version=2026.1"),
            ("POST", "/get_updates.php", query(key="K\r\nX"), 200, unknown, r"key=K\x0d\x0aX"),
            ("POST", "/get_updates.php", b"api_key=a&key=b&hardware_id=h&up=1", 400, malformed,
             "query=api_key=a&key=b"),
            ("POST", "/get_updates.php", query(up="2"), 400,
             {"status": 0, "error": 'malformed query: "up" is neither 0 nor 1'}, "refusal"),
            ("POST", "/get_updates.php", b"x" + query(), 400,
             {"status": 0, "error": 'malformed query: it does not start with "api_key="'}, "refusal"),
            ("POST", "/other", b"", 404, b"No such path.\n", "404"),
            ("GET", "/check.php", None, 405, b"Use POST.\n", "405"),
        ]
        with Service() as service:
            for method, path, body, status, expected, logged in cases:
                with self.subTest(path=path, body=body):
                    got, headers, reply = service.ask(method, path, body)
                    self.assertEqual((got, self.read(reply)), (status, expected))
                    self.assertEqual(headers["Content-Length"], str(len(reply)))
                    self.assertEqual(headers["Connection"], "close")
                    line = service.process.stdout.readline()
                    self.assertTrue(line.startswith(f"{method} {path} "), line)
                    self.assertIn(logged, line)

    def test_an_offers_address_shows_what_would_be_bought(self):
        with Service() as service:
            for offer in OFFERS:
                path = offer["url"].removeprefix("https://127.0.0.1:18443")
                status, _, page = service.ask("GET", path)
                self.assertEqual(status, 200)
                self.assertIn(f'<h1>{offer["name"]} {offer["version"]}</h1>', page.decode("utf-8"))
            self.assertIn(b"&lt;b&gt;", service.ask("GET", "/buy/<b>")[2])

    def test_options_override_the_answers(self):
        with tempfile.NamedTemporaryFile() as file:
            file.write(b"\xffany bytes\0")
            file.flush()
            cases = [
                (("--answer", "offers"), OFFERS),
                (("--answer", "refusal"), {"status": 0, "error": "refused on request"}),
                (("--answer", "empty"), b""),
                (("--answer", "close"), CLOSED),
                (("--answer-file", file.name), b"\xffany bytes\0"),
            ]
            for options, expected in cases:
                with self.subTest(options), Service(*options, "--check-answer", "1 ") as service:
                    reply = service.ask("POST", "/get_updates.php", query(key="unknown"))
                    self.assertEqual(reply if reply == CLOSED else self.read(reply[2]), expected)
                    self.assertEqual(service.ask("POST", "/check.php", b"")[2], b"1 ")

    def test_the_certificate_names_the_loopback(self):
        with Service() as service:
            tls = ssl.create_default_context(
                cadata=ssl.get_server_certificate(("127.0.0.1", service.port)))
            tls.hostname_checks_common_name = False
            for name in ("127.0.0.1", "localhost"):
                with tls.wrap_socket(service.connect(), server_hostname=name) as connection:
                    self.assertIsNotNone(connection.getpeercert())


class EndsTest(unittest.TestCase):
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
                self.assertEqual(service.ask("POST", "/check.php", b"")[2], b"1")
                status, log, errors, kept = service.end(number)
                self.assertEqual((status, errors, kept), (0, "", []))
                self.assertIn("connection without a TLS handshake", log)

    def test_what_it_cannot_start_with_is_said_in_one_sentence(self):
        catalogues = {
            "{\n!": "line 2",
            "[]": "not an object of product keys",
            '{"K": []}': '"K" is not an object',
            '{"K": {"1": {}}}': '"K" version "1"',
            '{"K": {"1": [{"name": "n", "version": "2"}]}}': '"K" version "1", offer 1',
            '{"K": {}, "K": {}}': '"K" stands there twice',
        }
        with tempfile.TemporaryDirectory() as folder, socket.create_server(("127.0.0.1", 0)) as used:
            port = used.getsockname()[1]
            absent = os.path.join(folder, "absent")
            cases = [(("--port", port), 1, f"127.0.0.1:{port}: Address already in use"),
                     (("--catalogue", absent), 1, f"{absent}: No such file"),
                     (("--answer-file", folder), 1, f"{folder}: Is a directory"),
                     (("--port", "70000"), 2, "70000"),
                     (("--answer", "empty", "--answer-file", absent), 2, "not allowed with")]
            for number, (text, reason) in enumerate(catalogues.items()):
                path = pathlib.Path(folder, f"{number}.json")
                path.write_text(text, "utf-8")
                cases.append((("--catalogue", path), 1, reason))
            for options, status, reason in cases:
                with self.subTest(options):
                    self.check_failure(options, status, reason)
            with self.subTest("no openssl"):
                self.check_failure(("--port", 0), 1, "openssl", PATH=folder)

    def check_failure(self, options, status, reason, **environment):
        run = subprocess.run(command(*options), capture_output=True, encoding="utf-8", timeout=20,
                             env={**os.environ, **environment})
        self.assertEqual((run.returncode, run.stdout), (status, ""))
        self.assertIn(reason, run.stderr)
        if status == 1:
            self.assertRegex(run.stderr, r"\Aproduct_service: [^\n]+\n\Z")


if __name__ == "__main__":
    unittest.main()
