#!/usr/bin/env python3
"""A development service for trying applications that use ProductServices without the real
service. It uses HTTPS with its own certificate, which openssl creates, and prints a line
for each request.

  POST /check.php        connectivity probe: returns 1
  POST /get_updates.php  returns the catalogue's offers for the product key and version, an
                         empty body if nothing is newer, or a refusal for an unknown key
  GET  /buy/...          a page with the name of the product that would be bought

If the library's service address has a path, requests may start with it.

The catalogue is JSON: {"KEY": {"INSTALLED VERSION": [OFFER, ...]}}. Each OFFER is an object
with the strings "name", "version" and "url". With the number "percent", only that share of
the computers sees the offer. A string in place of a key's versions refuses the key for that
reason. URLs are sent unchanged, so if you use another --address or --port, pass a
--catalogue with matching URLs.

  product_service.py export FOLDER [--catalogue FILE]

writes the catalogue as static files and a configuration for nginx, which serves them
without any program.

Applications that verify the service's certificate must trust it. Keep it in a file, and add
it to your trusted certificates once. --untrust removes it again:

  product_service.py --certificate service.pem --trust
  product_service.py --certificate service.pem

Press Ctrl-C to stop the service. Exit status: 0 stopped, 1 failed, 2 invalid usage."""

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
from product_catalogue import QUERY, fail, find_offers, load_catalogue, offer_list, offer_lists, refusal

# The service address of the library.
SERVICE_URL = urllib.parse.urlsplit("https://localhost:18443")

CATALOGUE = pathlib.Path(__file__).with_name("catalogue.json")

# The openssl configuration for the certificate. Deliberate: it is not a CA certificate. Windows and Wine trust it
# anyway once it is among the trusted roots, some browsers reject a server with a CA certificate, and anybody with the
# key of a CA could issue certificates for any name. It has an RSA key, because Wine 8 rejects some valid signatures of
# elliptic-curve keys.
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

# The registry key of the user's trusted root certificates in Wine.
WINE_ROOTS = r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates"


def log(line):
    """Print one line without buffering, in a single write because several threads print. Ignore a closed output."""
    with contextlib.suppress(OSError):
        os.write(1, (line + "\n").encode("utf-8", "backslashreplace"))


def printable(text):
    return "".join(c if c.isprintable() else f"\\x{ord(c):02x}" for c in text)[:200]


def fixed_answer(options, catalogue):
    """Return the answer that the options specify for every query, or None."""
    if options.answer_file:
        data = pathlib.Path(options.answer_file).read_bytes()
        return f"{len(data)} bytes of {options.answer_file}", data
    if options.answer == "offers":
        lists = (offers for offers in offer_lists(catalogue) if offers)
        return offer_list(next(lists, None) or fail(f"the catalogue {options.catalogue} contains no offers"))
    return {"refusal": refusal("refused on request"), "empty": ("empty body", b""),
            "close": ("closed without an answer", None)}.get(options.answer)


class RequestHandler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    # A reply is sent in one write, which results in one TLS record (up to 16 KiB), because the library keeps only the
    # last piece of a reply that arrives in several.
    wbufsize = 1 << 20

    def parse_request(self):
        is_parsed = super().parse_request()
        if is_parsed:
            self.path = self.path.removeprefix(SERVICE_URL.path)
        return is_parsed

    def do_GET(self):
        if not self.path.startswith("/buy/"):
            return self.reply("405 use POST", b"Use POST.\n", 405)
        product = printable(self.path[len("/buy/"):])
        page = f"<!DOCTYPE html><title>Purchase</title><h1>{html.escape(product)}</h1><p>Nothing is sold here.</p>\n"
        self.reply(f"page for {product}", page.encode("utf-8"), kind="text/html; charset=utf-8")

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0))).decode("utf-8", "replace")
        if self.path in self.server.options.no_response:
            log(f"POST {self.path} -> no response")
            self.connection.settimeout(None)
            self.rfile.read()  # until the client closes the connection
            self.close_connection = True
        elif self.path == "/check.php":
            text = self.server.options.check_answer
            self.reply(f'"{printable(text)}"', text.encode("utf-8", "surrogateescape"))
        elif self.path == "/get_updates.php":
            query = QUERY.fullmatch(body)
            details = f"  query={printable(body)}" if not query else "  key={1} version={3} up={4} ({5})".format(
                *map(printable, query.groups()), "update check" if query[5] == "1" else "upgrade center")
            catalogue = self.server.catalogue
            answer = fixed_answer(self.server.options, catalogue) or find_offers(catalogue, query)
            self.reply(*answer, kind="application/json", details=details)
        else:
            self.reply("404 no such path", b"No such path.\n", 404)

    def reply(self, summary, body, status=200, kind="text/plain; charset=utf-8", details=""):
        """Log the request with its answer, send the answer, and close the connection."""
        log(f"{self.command} {printable(self.path)}{details} -> {summary}")
        self.close_connection = True
        if body is None:
            self.connection.settimeout(0)  # send the end of TLS, but do not wait for the client's
        else:
            self.send_response_only(status)
            self.send_header("Content-Type", kind)
            self.send_header("Content-Length", str(len(body)))
            self.send_header("Connection", "close")
            self.end_headers()
            self.wfile.write(body)

    def log_message(self, format, *args):
        log("request not served: " + printable(format % args))


# Deliberate: not http.server's server, which looks up the host name of its address.
class ProductServer(socketserver.ThreadingTCPServer):
    allow_reuse_address = os.name == "posix"  # on Windows it would allow sharing a port that is in use
    daemon_threads = True  # a slow client does not delay the exit

    def __init__(self, options):
        try:
            self.options, self.catalogue = options, load_catalogue(options.catalogue)
            fixed_answer(options, self.catalogue)  # reports an invalid answer at once
            super().__init__((options.address, options.port), RequestHandler)
        except (OSError, OverflowError) as error:
            what = getattr(error, "filename", None) or f"{options.address}:{options.port}"
            fail(f"cannot open {what}: {getattr(error, 'strerror', error)}")
        self.tls = make_tls_context(options)

    def finish_request(self, request, client_address):
        """Do the TLS handshake in the connection's thread, serve, and end TLS before the connection is closed."""
        request.settimeout(10)  # seconds without data before the connection is closed
        trouble = "connection without a TLS handshake"
        try:
            with self.tls.wrap_socket(request, server_side=True) as connection:
                trouble = "connection closed early"
                super().finish_request(connection, client_address)
                with contextlib.suppress(OSError):
                    connection.unwrap()
        except OSError as error:
            log(f"{trouble}: {error.strerror or error}")


def make_tls_context(options):
    """Return a server context with the certificate in the file of --certificate, which is created if it is missing.
    Without the option, the certificate is new and is kept only in memory."""
    with tempfile.TemporaryDirectory(prefix="product_service-") as folder:
        file = pathlib.Path(options.certificate or f"{folder}/certificate.pem")
        try:
            if not file.exists():
                make_certificate(file, options.address)
            return load_certificate(file, options.address)
        except ssl.SSLCertVerificationError as error:
            reason = error.verify_message.rstrip(".")
            fail(f"the certificate in {file} cannot be used ({reason}): run --untrust if it is trusted, then delete "
                 "the file and start again, which creates a new one")
        except ssl.SSLError:
            fail_without_certificate(file)
        except OSError as error:
            fail(f"cannot open {file}: {error.strerror}")


def make_certificate(file, address):
    """Create a key and its certificate in a temporary file, and rename it when it is complete."""
    hosts = dict.fromkeys((address, "localhost", SERVICE_URL.hostname))
    names = [f"DNS:{host}" for host in hosts]  # IP addresses are DNS names, too, because Wine compares only those
    for host in hosts:
        with contextlib.suppress(ValueError):
            names.append(f"IP:{ipaddress.ip_address(host)}")
    with tempfile.TemporaryDirectory(prefix="product_service-", dir=file.parent) as folder:
        new = pathlib.Path(folder, "new.pem")
        pathlib.Path(folder, "request.cnf").write_text(REQUEST.format(names=",".join(names)), "utf-8")
        try:
            subprocess.run(
                ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "365", "-config", "request.cnf",
                 "-keyout", new.name, "-out", new.name],
                cwd=folder, capture_output=True, text=True, timeout=60, check=True)
        except (OSError, subprocess.SubprocessError) as error:
            reason = getattr(error, "stderr", None) or str(error)
            fail("openssl could not create the certificate: " + " ".join(reason.split()))
        new.chmod(0o600)
        new.replace(file)


def load_certificate(file, address):
    """Return a server context with the certificate, after a handshake in memory with a client that trusts it."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(file, password="")  # rejects an encrypted key instead of asking for its password
    trusting = ssl.create_default_context(cafile=file)
    trusting.verify_flags |= ssl.VERIFY_X509_PARTIAL_CHAIN
    for host in address, SERVICE_URL.hostname:
        to_server, to_client = ssl.MemoryBIO(), ssl.MemoryBIO()
        client = trusting.wrap_bio(to_client, to_server, server_hostname=host)
        server = context.wrap_bio(to_server, to_client, server_side=True)
        for side in client, server, client:
            with contextlib.suppress(ssl.SSLWantReadError):
                side.do_handshake()
    return context


def fail_without_certificate(file):
    fail(f"{file} does not contain a usable certificate with its key: use another file, or delete this one and start "
         "again, which creates a new one")


def read_certificate(file):
    """Return the certificate in the file as DER, even if it has expired, because its trust must be removable."""
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
    log(f"The certificate in {options.certificate} is {trusted} (SHA-1 {sha1})")


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
    """Run a program. If it fails, report only the last line of its output."""
    with tempfile.TemporaryFile() as output:  # Deliberate: services that Wine starts would keep a pipe open.
        try:
            status = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output).returncode
        except OSError as error:
            fail(f"cannot start {command[0]}: {error.strerror}"
                 + ("" if os.name == "nt" else "; install Wine, or set the environment variable WINE to its program"))
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
        nginx_export.write(load_catalogue(options.catalogue), urllib.parse.unquote(SERVICE_URL.path),
                           options.folder)
    except OSError as error:
        fail(f"cannot write {error.filename}: {error.strerror}")


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--address", default="127.0.0.1", metavar="A", help="address to listen on (default: %(default)s)")
    add("--port", type=int, default=SERVICE_URL.port or 443, metavar="N",
        help="port (default: %(default)s; 0 for any free port)")
    add("--catalogue", metavar="FILE", default=CATALOGUE,
        help="the offers (default: catalogue.json in the folder of this script)")
    add("--certificate", metavar="FILE",
        help="keep the key and the certificate in FILE, which the first start creates; valid for 365 days "
        "(default: a new certificate for each start, not stored)")
    add("--check-answer", default="1", metavar="TEXT",
        help="answer to the connectivity probe (default: %(default)s, reachable; any other text: not reachable)")
    add("--no-response", action="append", default=[], metavar="PATH",
        help="never answer requests for PATH, such as /check.php; can be used more than once")
    add = parser.add_mutually_exclusive_group().add_argument
    add("--trust", action="store_true",
        help="add the certificate in FILE to this user's trusted root certificates, and exit. Windows asks you to "
        "confirm. On other systems, use the certificates of Wine, whose program can be set in the environment variable "
        "WINE (default: wine)")
    add("--untrust", action="store_true",
        help="remove the certificate in FILE from the trusted root certificates, and exit")
    add = parser.add_mutually_exclusive_group().add_argument
    add("--answer", choices=("offers", "refusal", "empty", "close"),
        help="fixed answer to every update query: the catalogue's first offers, a refusal, an empty body, or none")
    add("--answer-file", metavar="FILE",
        help="answer every update query with the content of FILE, which is read each time")
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
        log(f"Product service ready at https://{options.address}:{server.server_address[1]} (press Ctrl-C to stop)")
        server.serve_forever()


if __name__ == "__main__":
    main()
