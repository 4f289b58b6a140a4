#!/usr/bin/env python3
"""A product service for trying host applications of ProductServices.dll without the
real one: HTTPS with a certificate of its own (made with openssl), a line per request.

  POST /check.php        the connectivity probe: answers 1
  POST /get_updates.php  the catalogue's offers for the product key and version: an empty
                         body if nothing is newer, a refusal for an unknown key
  GET  /buy/...          a page that says what would be bought

A path in the library's service address may stand before each of them.

The catalogue is JSON, {"KEY": {"INSTALLED VERSION": [OFFER, ...]}}, each OFFER an object
with the texts "name", "version" and "url", and with "percent", a number, if only so many
of a hundred computers are to see it. A text in place of a key's versions refuses the key
for that reason. Addresses go out as they stand: with another
--address or --port, give a --catalogue whose addresses name it.

  product_service.py export FOLDER [--catalogue FILE]

writes the catalogue as static files and a configuration for nginx, which serves them
without any program.

Host applications that check the service's certificate have to trust it. Keep it in a file
and add that to your trusted certificates once; --untrust takes it out again:

  product_service.py --certificate service.pem --trust
  product_service.py --certificate service.pem

Ctrl-C ends the service. Exit status: 0 ended, 1 failed, 2 usage."""

import argparse
import contextlib
import hashlib
import html
import http.server
import ipaddress
import os
import pathlib
import re
import signal
import socketserver
import ssl
import struct
import subprocess
import sys
import tempfile
import urllib.parse

import nginx_export
from product_catalogue import QUERY, fail, load_catalogue, look_up, offer_list, offer_lists, refusal

# The address that the library asks.
LIBRARY_ASKS = urllib.parse.urlsplit("https://localhost:18443")

CATALOGUE = pathlib.Path(__file__).with_name("catalogue.json")

# What openssl makes the certificate from. Deliberate: it is not a CA's. Windows and Wine trust it all the same once it
# is among the roots, some browsers refuse a server with a CA's, and whoever gets at a CA's key can make certificates
# for any name.
REQUEST = """[req]
prompt = no
distinguished_name = subject
x509_extensions = extensions
[subject]
CN = localhost
[extensions]
subjectAltName = {names}
basicConstraints = critical, CA:FALSE
extendedKeyUsage = serverAuth
"""

# Where Wine keeps the user's trusted root certificates.
WINE_ROOTS = r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates"


def say(line):
    """Print one line at once, whole even when several threads print; without a reader the service goes on."""
    with contextlib.suppress(OSError):
        os.write(1, (line + "\n").encode("utf-8", "backslashreplace"))


def printable(text):
    return "".join(c if c.isprintable() else f"\\x{ord(c):02x}" for c in text)[:200]


def fixed_answer(options, catalogue):
    """The answer to every query that the options ask for, or None."""
    if options.answer_file:
        data = pathlib.Path(options.answer_file).read_bytes()
        return f"{len(data)} bytes of {options.answer_file}", data
    if options.answer == "offers":
        lists = (offers for offers in offer_lists(catalogue) if offers)
        return offer_list(next(lists, None) or fail(f"the catalogue {options.catalogue} has no offers to answer with"))
    return {"refusal": refusal("refused on request"), "empty": ("empty body", b""),
            "close": ("closed without an answer", None)}.get(options.answer)


class RequestHandler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    # A reply goes out in one write, which makes one TLS record (up to 16 KiB): the library keeps only the last
    # piece of a reply that reaches it in several.
    wbufsize = 1 << 20

    def parse_request(self):
        is_whole = super().parse_request()
        if is_whole:
            self.path = self.path.removeprefix(LIBRARY_ASKS.path)
        return is_whole

    def do_GET(self):
        if not self.path.startswith("/buy/"):
            return self.reply("405 use POST", b"Use POST.\n", 405)
        bought = printable(self.path[len("/buy/"):])
        page = f"<!DOCTYPE html><title>Purchase</title><h1>{html.escape(bought)}</h1><p>Nothing is sold here.</p>\n"
        self.reply(f"page for {bought}", page.encode("utf-8"), kind="text/html; charset=utf-8")

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0))).decode("utf-8", "replace")
        if self.path in self.server.options.hang:
            say(f"POST {self.path} -> hangs")
            self.connection.settimeout(None)
            self.rfile.read()  # until the client goes
            self.close_connection = True
        elif self.path == "/check.php":
            text = self.server.options.check_answer
            self.reply(f'"{printable(text)}"', text.encode("utf-8", "surrogateescape"))
        elif self.path == "/get_updates.php":
            query = QUERY.fullmatch(body)
            details = f"  query={printable(body)}" if not query else "  key={1} version={3} up={4} ({5})".format(
                *map(printable, query.groups()), "update check" if query[5] == "1" else "upgrade center")
            answer = fixed_answer(self.server.options, self.server.catalogue) or look_up(self.server.catalogue, query)
            self.reply(*answer, kind="application/json", details=details)
        else:
            self.reply("404 no such path", b"No such path.\n", 404)

    def reply(self, summary, body, status=200, kind="text/plain; charset=utf-8", details=""):
        """Log the request with its answer, then send it; the connection ends after it."""
        say(f"{self.command} {printable(self.path)}{details} -> {summary}")
        self.close_connection = True
        if body is None:
            self.connection.settimeout(0)  # the end of TLS goes out, and nobody waits for the client's
        else:
            self.send_response_only(status)
            self.send_header("Content-Type", kind)
            self.send_header("Content-Length", str(len(body)))
            self.send_header("Connection", "close")
            self.end_headers()
            self.wfile.write(body)

    def log_message(self, format, *args):
        say("request not served: " + printable(format % args))


# Deliberate: not http.server's own server, which asks the network for the name of its address.
class ProductServer(socketserver.ThreadingTCPServer):
    allow_reuse_address = os.name == "posix"  # on Windows it would share a port in use
    daemon_threads = True  # a slow client does not hold up the end

    def __init__(self, options):
        try:
            self.options, self.catalogue = options, load_catalogue(options.catalogue)
            fixed_answer(options, self.catalogue)  # what it cannot answer with is said at once
            super().__init__((options.address, options.port), RequestHandler)
        except (OSError, OverflowError) as error:
            what = getattr(error, "filename", None) or f"{options.address}:{options.port}"
            fail(f"cannot open {what}: {getattr(error, 'strerror', error)}")
        self.tls = make_tls_context(options)

    def finish_request(self, request, client_address):
        """Shake hands here, in the connection's own thread, then serve, and end TLS before the connection."""
        request.settimeout(10)  # seconds of silence before a client is given up
        trouble = "connection without a TLS handshake"
        try:
            with self.tls.wrap_socket(request, server_side=True) as connection:
                trouble = "connection ended early"
                super().finish_request(connection, client_address)
                with contextlib.suppress(OSError):
                    connection.unwrap()
        except OSError as error:
            say(f"{trouble}: {error.strerror or error}")


def make_tls_context(options):
    """A server context with the certificate in the file of --certificate, which is made if it is missing, or with a
    fresh one, which is in memory only afterwards."""
    with tempfile.TemporaryDirectory(prefix="product_service-") as folder:
        file = pathlib.Path(options.certificate or f"{folder}/certificate.pem")
        try:
            if not file.exists():
                make_certificate(file, options.address)
            return load_certificate(file, options.address)
        except ssl.SSLCertVerificationError as error:
            reason = error.verify_message.rstrip(".")
            fail(f"the certificate in {file} cannot be used ({reason}): run --untrust if it is trusted, then delete "
                 "the file and start again, which makes a new one")
        except ssl.SSLError:
            fail_without_certificate(file)
        except OSError as error:
            fail(f"cannot open {file}: {error.strerror}")


def make_certificate(file, address):
    """Make a key and its certificate elsewhere, and move them to the file when they are whole."""
    hosts = dict.fromkeys((address, "localhost", LIBRARY_ASKS.hostname))
    names = [f"DNS:{host}" for host in hosts]  # IP addresses too, since Wine looks at nothing else
    for host in hosts:
        with contextlib.suppress(ValueError):
            names.append(f"IP:{ipaddress.ip_address(host)}")
    with tempfile.TemporaryDirectory(prefix="product_service-", dir=file.parent) as folder:
        made = pathlib.Path(folder, "made.pem")
        pathlib.Path(folder, "request.cnf").write_text(REQUEST.format(names=",".join(names)), "utf-8")
        try:
            subprocess.run(
                ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "365", "-config", "request.cnf",
                 "-keyout", made.name, "-out", made.name],
                cwd=folder, capture_output=True, text=True, timeout=60, check=True)
        except (OSError, subprocess.SubprocessError) as error:
            reason = getattr(error, "stderr", None) or str(error)
            fail("openssl could not make the certificate: " + " ".join(reason.split()))
        made.chmod(0o600)
        made.replace(file)


def load_certificate(file, address):
    """A server context with the certificate, which a client that trusts it has taken in a handshake in memory."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(file, password="")  # an encrypted key is refused, and nobody is asked
    trusting = ssl.create_default_context(cafile=file)
    trusting.verify_flags |= ssl.VERIFY_X509_PARTIAL_CHAIN
    for host in address, LIBRARY_ASKS.hostname:
        to_server, to_client = ssl.MemoryBIO(), ssl.MemoryBIO()
        client = trusting.wrap_bio(to_client, to_server, server_hostname=host)
        server = context.wrap_bio(to_server, to_client, server_side=True)
        for side in client, server, client:
            with contextlib.suppress(ssl.SSLWantReadError):
                side.do_handshake()
    return context


def fail_without_certificate(file):
    fail(f"{file} does not hold a usable certificate with its key: name another file, or delete this one and start "
         "again, which makes a new one")


def read_certificate(file):
    """The certificate in the file, as DER: an expired one too, whose trust has to be ended."""
    try:
        text = pathlib.Path(file).read_text("utf-8", "replace")
        pem = re.search("-----BEGIN CERTIFICATE-----.*?-----END CERTIFICATE-----", text, re.DOTALL)
        return ssl.PEM_cert_to_DER_cert(pem[0])
    except (TypeError, ValueError):
        fail_without_certificate(file)
    except OSError as error:
        fail(f"cannot open {file}: {error.strerror}")


def change_trust(options):
    """Add the certificate to this user's trusted root certificates, or remove it."""
    if options.trust:
        make_tls_context(options)
    der = read_certificate(options.certificate)
    sha1 = hashlib.sha1(der).hexdigest().upper()
    change_roots = change_windows_roots if os.name == "nt" else change_wine_roots
    change_roots(options.trust, der, sha1)
    trusted = "now trusted" if options.trust else "no longer trusted"
    say(f"The certificate in {options.certificate} is {trusted} (SHA-1 {sha1})")


def change_windows_roots(is_trusted, der, sha1):
    if is_trusted:
        with tempfile.TemporaryDirectory(prefix="product_service-") as folder:
            certificate = pathlib.Path(folder, "certificate.cer")  # without the key
            certificate.write_bytes(der)
            run_program("certutil", "-user", "-addstore", "Root", certificate)
    else:
        run_program("certutil", "-user", "-delstore", "Root", sha1)


def change_wine_roots(is_trusted, der, sha1):
    program, key = os.environ.get("WINE") or "wine", rf"{WINE_ROOTS}\{sha1}"
    if is_trusted:
        blob = struct.pack("<3I", 32, 1, len(der)) + der  # a single property, CERT_CERT_PROP_ID
        run_program(program, "reg", "add", key, "/v", "Blob", "/t", "REG_BINARY", "/d", blob.hex(), "/f")
    else:
        run_program(program, "reg", "delete", key, "/f")


def run_program(*command):
    """Run a program to its end; of its output, only the last line of one that fails is told."""
    with tempfile.TemporaryFile() as output:  # Deliberate: the services that Wine starts would keep a pipe open.
        try:
            status = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output).returncode
        except OSError as error:
            fail(f"cannot start {command[0]}: {error.strerror}"
                 + ("" if os.name == "nt" else "; install Wine, or name its program in the environment variable WINE"))
        output.seek(0)
        lines = output.read().decode("utf-8", "replace").split("\n")
    if status:
        reason = next((line.strip() for line in reversed(lines) if line.strip()), f"exit status {status}")
        fail(f"{command[0]} could not change the trusted certificates: {printable(reason)}")


def export(arguments):
    parser = argparse.ArgumentParser(prog="product_service.py export", description=nginx_export.__doc__)
    parser.add_argument("folder", metavar="FOLDER", type=pathlib.Path)
    parser.add_argument("--catalogue", metavar="FILE", default=CATALOGUE)
    options = parser.parse_args(arguments)
    try:
        nginx_export.write(load_catalogue(options.catalogue), urllib.parse.unquote(LIBRARY_ASKS.path),
                           options.folder)
    except OSError as error:
        fail(f"cannot write {error.filename}: {error.strerror}")


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--address", default="127.0.0.1", metavar="A", help="address to listen on (default: %(default)s)")
    add("--port", type=int, default=LIBRARY_ASKS.port or 443, metavar="N",
        help="port (default: %(default)s; 0: any free one)")
    add("--catalogue", metavar="FILE", default=CATALOGUE,
        help="the offers (default: catalogue.json beside this script)")
    add("--certificate", metavar="FILE",
        help="keep the key and the certificate in FILE, which the first start makes, for 365 days "
        "(default: a new certificate for each start, kept nowhere)")
    add("--check-answer", default="1", metavar="TEXT",
        help="what the probe answers (default: %(default)s, which is reachable; any other text is not)")
    add("--hang", action="append", default=[], metavar="PATH",
        help="never answer a request for PATH, such as /check.php; may be given more than once")
    add = parser.add_mutually_exclusive_group().add_argument
    add("--trust", action="store_true",
        help="add the certificate in FILE to this user's trusted root certificates, and end: those of Windows, which "
        "asks you to confirm, or elsewhere those of Wine, whose program the environment variable WINE may name "
        "(default: wine)")
    add("--untrust", action="store_true", help="remove the certificate in FILE from them, and end")
    add = parser.add_mutually_exclusive_group().add_argument
    add("--answer", choices=("offers", "refusal", "empty", "close"),
        help="answer every update query so: the catalogue's first offers, a refusal, an empty body, or not at all")
    add("--answer-file", metavar="FILE", help="answer every update query with the bytes that FILE then has")
    options = parser.parse_args()
    if (options.trust or options.untrust) and not options.certificate:
        parser.error("--trust and --untrust need --certificate FILE")
    return options


def main():
    if sys.argv[1:2] == ["export"]:
        return export(sys.argv[2:])
    options = parse_options()
    if options.trust or options.untrust:
        return change_trust(options)
    for number in (signal.SIGINT, signal.SIGTERM, getattr(signal, "SIGBREAK", signal.SIGINT)):
        signal.signal(number, signal.default_int_handler)
    with contextlib.suppress(KeyboardInterrupt), ProductServer(options) as server:
        say(f"Product service ready at https://{options.address}:{server.server_address[1]} (Ctrl-C ends it)")
        server.serve_forever()


if __name__ == "__main__":
    main()
