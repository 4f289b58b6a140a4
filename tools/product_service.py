#!/usr/bin/env python3
"""Development product service: answers ProductServices.dll on loopback over HTTPS."""

import argparse
import html
import http.server
import json
import os
import pathlib
import re
import signal
import socketserver
import ssl
import subprocess
import sys
import tempfile
from typing import NamedTuple, Optional

HOST = "127.0.0.1"
QUERY_FIELDS = ("api_key", "key", "hardware_id", "version", "up")
QUERY_KINDS = {"1": "update check", "0": "upgrade center"}
OFFER_MEMBERS = {"name", "version", "url"}

DESCRIPTION = """\
A product service for trying host applications of ProductServices.dll without
the real one. It speaks HTTPS on 127.0.0.1 only, with a certificate of its own
(made with openssl at each start), and prints one line per request.

  POST /check.php        the connectivity probe: answers 1
  POST /get_updates.php  looks the product key and version up in the catalogue:
                         the offers, an empty body where nothing is newer,
                         a refusal for an unknown key
  GET  /buy/...          a page that says what would be bought"""

EPILOG = """\
The catalogue is JSON: {"KEY": {"INSTALLED VERSION": [OFFER, ...]}}, each OFFER
an object with the texts "name", "version" and "url"; an empty list means that
nothing is newer. Addresses go out as they stand: with another --port, give a
--catalogue whose addresses name that port.

Ctrl-C ends the service. Exit status: 0 ended, 1 could not start, 2 usage."""


class StartError(Exception):
    """Why the service cannot start, in one sentence."""


class Answer(NamedTuple):
    """A reply and how the log names it; a body of None closes the connection."""

    summary: str
    body: Optional[bytes]
    content_type: str = "text/plain; charset=utf-8"
    status: int = 200


def say(line):
    """Print one line at once, whole even when several threads print."""
    try:
        os.write(1, (line + "\n").encode("utf-8", "backslashreplace"))
    except OSError:
        pass  # nobody reads the log any more; the service goes on


def printable(text):
    """The text on one line and of a bearable length."""
    shown = "".join(c if c.isprintable() else f"\\x{ord(c):02x}" for c in text)
    return shown if len(shown) <= 200 else shown[:200] + "..."


def split_query(body):
    """Split api_key=A&key=K&hardware_id=H&version=V&up=1 into its five values.

    The values are not escaped, so each reaches to the first "&name=" of the next
    field, a "&" or "=" of its own included, and is taken as it is.
    """
    before, _, rest = ("&" + body).partition("&api_key=")
    if before:
        raise ValueError('it does not start with "api_key="')
    values = []
    for name in QUERY_FIELDS[1:]:
        value, marker, rest = rest.partition(f"&{name}=")
        if not marker:
            raise ValueError(f'no field "{name}" in its place')
        values.append(value)
    fields = dict(zip(QUERY_FIELDS, values + [rest]))
    if fields["up"] not in QUERY_KINDS:
        raise ValueError('"up" is neither 0 nor 1')
    return fields


def without_duplicates(pairs):
    """Build a JSON object, refusing the second of two equal names."""
    members = {}
    for name, value in pairs:
        if name in members:
            raise ValueError(f'"{name}" stands there twice')
        members[name] = value
    return members


def is_text(value):
    """Whether a JSON value is a string that UTF-8 can carry."""
    return isinstance(value, str) and not re.search("[\ud800-\udfff]", value)


def check_offers(offers, where):
    """Refuse a version's offers unless each has exactly its three texts."""
    if not isinstance(offers, list):
        raise ValueError(f"{where}: the offers are not a list")
    for number, offer in enumerate(offers, 1):
        if not (isinstance(offer, dict) and set(offer) == OFFER_MEMBERS
                and all(map(is_text, offer.values()))):
            raise ValueError(f'{where}, offer {number}: it must have the texts "name", '
                             '"version" and "url" and nothing else')


def read_file(path, what):
    """The bytes of a file, or the sentence why there are none."""
    try:
        return pathlib.Path(path).read_bytes()
    except OSError as error:
        raise StartError(f"cannot read the {what} {path}: {error.strerror}") from error


def load_catalogue(path):
    """Read {key: {version: [offer, ...]}} and check its shape."""
    data = read_file(path, "catalogue")
    try:
        catalogue = json.loads(data.decode("utf-8-sig"), object_pairs_hook=without_duplicates)
        if not isinstance(catalogue, dict):
            raise ValueError("it is not an object of product keys")
        for key, versions in catalogue.items():
            if not isinstance(versions, dict):
                raise ValueError(f'"{key}" is not an object of installed versions')
            for version, offers in versions.items():
                check_offers(offers, f'"{key}" version "{version}"')
    except (ValueError, RecursionError) as error:
        raise StartError(f"the catalogue {path} is broken: {error}") from error
    return catalogue


def refusal(error, status=200):
    """The service declines."""
    document = json.dumps({"status": 0, "error": error}).encode()
    return Answer(f"refusal: {error}", document, "application/json", status)


def offer_list(offers):
    """The service offers; without offers the reply is empty, not an empty array."""
    if not offers:
        return Answer("nothing newer (empty body)", b"", "application/json")
    summary = "1 offer" if len(offers) == 1 else f"{len(offers)} offers"
    document = json.dumps(offers, ensure_ascii=False).encode("utf-8")
    return Answer(summary, document, "application/json")


def look_up(catalogue, key, version):
    """Answer a query from the catalogue."""
    if key not in catalogue:
        return refusal("unknown product key")
    if version not in catalogue[key]:
        return Answer("version not in the catalogue (empty body)", b"", "application/json")
    return offer_list(catalogue[key][version])


def all_offer_lists(catalogue):
    """Every non-empty list of offers, in the catalogue's order."""
    return [offers for versions in catalogue.values() for offers in versions.values() if offers]


def fixed_answer(options, catalogue):
    """The answer to every query that the options ask for, or None."""
    if options.answer_file is not None:
        data = read_file(options.answer_file, "answer file")
        return Answer(f"{len(data)} bytes of {options.answer_file}", data, "application/json")
    if options.answer == "offers":
        lists = all_offer_lists(catalogue)
        if not lists:
            raise StartError(f"the catalogue {options.catalogue} has no offers to answer with")
        return offer_list(lists[0])
    return {
        "refusal": refusal("refused on request"),
        "empty": Answer("empty body", b"", "application/json"),
        "close": Answer("closed without an answer", None),
    }.get(options.answer)


def purchase_page(catalogue, path):
    """The page behind an offer's address."""
    bought = printable(path[len("/buy/"):])
    for offer in (offer for offers in all_offer_lists(catalogue) for offer in offers):
        if offer["url"].endswith(path):
            bought = f'{offer["name"]} {offer["version"]}'
    text = (f"<!DOCTYPE html><title>Purchase</title><h1>{html.escape(bought)}</h1>"
            "<p>This is where it would be bought. Nothing is sold here.</p>\n")
    return Answer(f"page for {bought}", text.encode("utf-8"), "text/html; charset=utf-8")


class RequestHandler(http.server.BaseHTTPRequestHandler):
    """One connection: handshake, one request, one reply."""

    protocol_version = "HTTP/1.1"
    server_version, sys_version = "product_service", ""
    error_message_format, error_content_type = "%(code)d %(message)s\n", "text/plain"
    timeout = 10  # seconds of silence before a client is given up
    disable_nagle_algorithm = True

    def handle(self):
        """Shake hands here, in the connection's own thread, then serve."""
        try:
            self.connection.do_handshake()
        except OSError as error:
            say(f"connection without a TLS handshake: {error.strerror or error}")
            return
        super().handle()

    def do_GET(self):
        path = self.path.partition("?")[0]
        if path.startswith("/buy/"):
            self.reply(purchase_page(self.server.catalogue, path))
        else:
            self.reply(Answer("405 use POST", b"Use POST.\n", status=405))

    def do_POST(self):
        length = self.headers.get("Content-Length", "")
        if not re.fullmatch("[0-9]{1,5}", length):
            self.reply(Answer("400 no usable length", b"No usable Content-Length.\n", status=400))
            return
        body = self.rfile.read(int(length))
        if len(body) < int(length):
            raise ConnectionError("the request body was cut short")
        path = self.path.partition("?")[0]
        if path == "/check.php":
            self.reply(self.server.check_answer)
        elif path == "/get_updates.php":
            self.answer_query(body)
        else:
            self.reply(Answer("404 no such path", b"No such path.\n", status=404))

    def answer_query(self, body):
        try:
            fields = split_query(body.decode("utf-8"))
        except ValueError as error:
            shown = "query=" + printable(body.decode("utf-8", "replace"))
            answer = refusal(f"malformed query: {error}", status=400)
        else:
            key, version, up = fields["key"], fields["version"], fields["up"]
            shown = f"key={printable(key)} version={printable(version)} up={up} ({QUERY_KINDS[up]})"
            answer = look_up(self.server.catalogue, key, version)
        self.reply(self.server.fixed_answer or answer, shown)

    def reply(self, answer, details=""):
        """Log the request with its answer, then send it; the connection ends after it."""
        request = f"{self.command} {printable(self.path)}"
        say(f"{request}  {details} -> {answer.summary}" if details
            else f"{request} -> {answer.summary}")
        self.close_connection = True
        if answer.body is None:
            return
        self.send_response(answer.status)
        self.send_header("Content-Type", answer.content_type)
        self.send_header("Content-Length", str(len(answer.body)))
        self.send_header("Connection", "close")
        if answer.status == 405:
            self.send_header("Allow", "POST")
        self.end_headers()
        # One write makes one TLS record (up to 16 KiB): the library keeps only the last
        # piece of a reply that reaches it in several.
        self.wfile.write(answer.body)

    def log_request(self, code="-", size="-"):
        """reply() has logged it."""

    def log_message(self, format, *args):  # pylint: disable=redefined-builtin
        say("request not served: " + printable(format % args))


class ProductServer(socketserver.ThreadingTCPServer):
    """Accepts on loopback; each connection has its own thread."""

    allow_reuse_address = os.name == "posix"  # on Windows it would share a port in use
    daemon_threads = True  # a slow client does not hold up the end
    request_queue_size = 32
    timeout = 0.2  # how often the loop looks for a stop signal

    def __init__(self, options):
        self.catalogue = load_catalogue(options.catalogue)
        self.fixed_answer = fixed_answer(options, self.catalogue)
        text = options.check_answer
        self.check_answer = Answer(f'"{printable(text)}"', text.encode("utf-8", "surrogateescape"))
        self.tls = None
        try:
            super().__init__((HOST, options.port), RequestHandler)
        except OSError as error:
            raise StartError(f"cannot listen on {HOST}:{options.port}: {error.strerror}") from error

    def get_request(self):
        connection, address = super().get_request()
        return self.tls.wrap_socket(connection, server_side=True,
                                    do_handshake_on_connect=False), address

    def handle_error(self, request, client_address):
        error = sys.exc_info()[1]
        if isinstance(error, OSError):
            say(f"connection ended early: {error.strerror or error}")
        else:
            super().handle_error(request, client_address)


def make_tls_context():
    """A server context with a fresh certificate, which is in memory only afterwards."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    try:
        with tempfile.TemporaryDirectory(prefix="product_service-") as folder:
            key, certificate = os.path.join(folder, "key.pem"), os.path.join(folder, "cert.pem")
            # A session of its own keeps the terminal's Ctrl-C from breaking it off.
            subprocess.run(
                ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "30",
                 "-subj", "/CN=localhost", "-addext", f"subjectAltName=IP:{HOST},DNS:localhost",
                 "-keyout", key, "-out", certificate],
                check=True, capture_output=True, stdin=subprocess.DEVNULL, timeout=60,
                start_new_session=True)
            context.load_cert_chain(certificate, key)
    except FileNotFoundError as error:
        raise StartError("openssl, which makes the certificate, was not found") from error
    except (OSError, subprocess.SubprocessError) as error:
        reason = (getattr(error, "stderr", None) or b"").decode("utf-8", "replace").split("\n")
        raise StartError("openssl could not make the certificate: "
                         + (" ".join(reason[-2:]).strip() or str(error))) from error
    return context


def port_number(text):
    """A TCP port; 0 takes a free one."""
    if not text.isdecimal() or int(text) > 65535:
        raise argparse.ArgumentTypeError(f"{text!r} is not a port from 0 to 65535")
    return int(text)


def parse_options():
    parser = argparse.ArgumentParser(
        description=DESCRIPTION, epilog=EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter, allow_abbrev=False)
    parser.add_argument("--port", type=port_number, default=18443, metavar="N",
                        help="port to listen on (default: %(default)s; 0: any free one)")
    parser.add_argument("--catalogue", metavar="FILE",
                        default=pathlib.Path(__file__).with_name("catalogue.json"),
                        help="the offers (default: catalogue.json beside this script)")
    answer = parser.add_mutually_exclusive_group()
    answer.add_argument("--answer", choices=("offers", "refusal", "empty", "close"),
                        help="answer every update query so: the catalogue's first offers, a "
                             "refusal, an empty body, or close without an answer")
    answer.add_argument("--answer-file", metavar="FILE",
                        help="answer every update query with the bytes of FILE")
    parser.add_argument("--check-answer", default="1", metavar="TEXT",
                        help="what the probe answers (default: %(default)s, which is reachable; "
                             "any other text is not)")
    return parser.parse_args()


def main():
    options = parse_options()
    stop_signals = []
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda received, _frame: stop_signals.append(received))
    try:
        with ProductServer(options) as server:
            server.tls = make_tls_context()
            port = server.server_address[1]
            say(f"Product service ready at https://{HOST}:{port} (Ctrl-C ends it)")
            while not stop_signals:
                server.handle_request()
    except StartError as error:
        print(f"product_service: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
