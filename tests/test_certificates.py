"""Verification of the service's certificate by guarded calls, with a root that only the tests' Wine trusts."""

import contextlib
import datetime
import http.server
import secrets
import socket
import ssl
import threading

import pytest

from conftest import ADDRESS, NEW_KEY, run, trust_root

OFFER = b'[{"name":"X","version":"2","url":"https://shop.example/x"}]'
REPLY = b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: %d\r\n\r\n%s"
DAY = datetime.timedelta(days=1)
CA_SETTINGS = """[ca]
default_ca = tests
[tests]
database = database
unique_subject = no
serial = serial
new_certs_dir = .
certificate = root.pem
private_key = key.pem
default_md = sha256
policy = any
[any]
commonName = supplied
"""
# Wine compares the service's host with DNS names only, whatever the host is.
FOR_SERVERS = f"subjectAltName = DNS:{ADDRESS}\nextendedKeyUsage = serverAuth\n"
INVALID = f"check 12 -1: The certificate of {ADDRESS} is not valid: "
TIMED_OUT = [["check 10 -1: The time limit was exceeded.", f"after {seconds} s"] for seconds in (1, 2)]
NEWER_RELEASE = "check 1 200: https://shop.example/x"
ISSUED = "It is for the service, issued by Tests Root."


class CertificateAuthority:
    """Issues certificates with openssl, in its own folder."""

    def __init__(self, folder, name="Tests Root"):
        self.folder = folder
        (folder / "settings").write_text(CA_SETTINGS)
        (folder / "database").touch()
        # Wine caches revocations by issuer and serial number.
        (folder / "serial").write_text(f"{secrets.randbits(60) + 2**60:X}\n")
        self.openssl("req", "-x509", *NEW_KEY, "-nodes", "-keyout", "key.pem", "-out", "root.pem",
                     "-days", "9", "-subj", f"/CN={name}")
        self.openssl("req", "-new", "-key", "key.pem", "-out", "request", "-subj", "/CN=the service")

    def openssl(self, *arguments):
        status, output = run("openssl", *arguments, cwd=self.folder)
        assert status == 0, output

    def root(self):
        return ssl.PEM_cert_to_DER_cert((self.folder / "root.pem").read_text())

    def issue(self, name, extensions=FOR_SERVERS, start=-DAY, end=DAY):
        """Returns the file of a certificate that is valid from `start` to `end`, relative to now."""
        now = datetime.datetime.now(datetime.timezone.utc)
        (self.folder / "extensions").write_text(extensions)
        self.openssl("ca", "-batch", "-notext", "-config", "settings", "-in", "request", "-out", name,
                     "-startdate", f"{now + start:%y%m%d%H%M%SZ}", "-enddate", f"{now + end:%y%m%d%H%M%SZ}",
                     "-extfile", "extensions")
        return self.folder / name


@contextlib.contextmanager
def tls_service(certificate, key):
    """Runs a service that answers every request with an offer. Returns a list that receives the requests."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    requests = []

    def serve(listener):
        with contextlib.suppress(OSError):
            while True:
                connection = listener.accept()[0]
                with contextlib.suppress(OSError), context.wrap_socket(connection, server_side=True) as client:
                    if request := client.recv(4096):
                        requests.append(request)
                        client.sendall(REPLY % (len(OFFER), OFFER))

    with socket.create_server((ADDRESS, 18443)) as listener:
        threading.Thread(target=serve, args=[listener], daemon=True).start()
        try:
            yield requests
        finally:
            listener.shutdown(socket.SHUT_RDWR)


@pytest.fixture(scope="module")
def authority(wine, tmp_path_factory):
    """An authority whose root certificate Wine trusts while the tests run."""
    trusted = CertificateAuthority(tmp_path_factory.mktemp("authority"))
    with trust_root(wine, trusted.root()):
        yield trusted


@pytest.fixture(scope="module")
def untrusted_authority(tmp_path_factory):
    return CertificateAuthority(tmp_path_factory.mktemp("untrusted authority"), "Other Root")


class CrlRequestHandler(http.server.BaseHTTPRequestHandler):
    """Serves the authority's revoked.crl, and records that there was a request."""

    def do_GET(self):
        self.server.was_asked = True
        crl = (self.server.folder / "revoked.crl").read_bytes()
        self.send_response(200)
        self.send_header("Content-Length", str(len(crl)))
        self.end_headers()
        self.wfile.write(crl)


@pytest.fixture
def crl_server(authority):
    """Serves the authority's list of revoked certificates. Has the extension with its URL."""
    with http.server.ThreadingHTTPServer((ADDRESS, 0), CrlRequestHandler) as server:
        server.folder, server.was_asked = authority.folder, False
        server.url = f"http://{ADDRESS}:{server.server_port}/revoked.crl"
        server.extension = f"crlDistributionPoints = URI:{server.url}\n"
        threading.Thread(target=server.serve_forever, daemon=True).start()
        yield server
        server.shutdown()


@pytest.mark.parametrize("properties, reason", [
    pytest.param({"end": -DAY / 2}, "it has expired", id="expired"),
    pytest.param({"start": DAY / 2}, "it is not valid yet", id="not valid yet"),
    pytest.param({"extensions": FOR_SERVERS.replace(ADDRESS, "other.example")}, "it is for another host name",
                 id="another host name"),
    pytest.param({"extensions": FOR_SERVERS.replace("server", "client")}, "it is not for servers",
                 id="not for servers"),
])
def test_invalid_certificate_is_rejected_before_the_request(host, authority, properties, reason):
    certificate = authority.issue("certificate.pem", **properties)
    with tls_service(certificate, authority.folder / "key.pem") as requests:
        assert host("check") == [f"{INVALID}{reason}. {ISSUED}"]
        assert requests == []


def test_valid_certificate_is_accepted_without_online_revocation_check(host, authority, crl_server):
    certificate = authority.issue("certificate.pem", extensions=FOR_SERVERS + crl_server.extension)
    with tls_service(certificate, authority.folder / "key.pem") as requests:
        assert host("check") == [NEWER_RELEASE]
        assert len(requests) == 1
        assert not crl_server.was_asked


def test_untrusted_root_is_accepted_only_with_any_certificate(host, untrusted_authority):
    certificate = untrusted_authority.issue("certificate.pem")
    untrusted = f"{INVALID}its issuer is not trusted. It is for the service, issued by Other Root."
    with tls_service(certificate, untrusted_authority.folder / "key.pem") as requests:
        assert host("check", "any-certificate", "check") == [untrusted, NEWER_RELEASE]
        assert len(requests) == 1, "the one with any certificate"


def test_self_signed_certificate_is_rejected(host, service):
    service(port=18443)
    untrusted = f"{INVALID}its issuer is not trusted. It is for localhost, issued by localhost."
    assert host("check", "upgrade") == [untrusted, untrusted.replace("check", "upgrade")]


def test_cached_revocation_is_respected(host, authority, crl_server):
    certificate = authority.issue("certificate.pem", extensions=FOR_SERVERS + crl_server.extension)
    authority.openssl("ca", "-config", "settings", "-revoke", "certificate.pem")
    authority.openssl("ca", "-config", "settings", "-gencrl", "-crldays", "9", "-out", "crl.pem")
    authority.openssl("crl", "-in", "crl.pem", "-outform", "DER", "-out", "revoked.crl")
    with tls_service(certificate, authority.folder / "key.pem") as requests:
        assert host(f"fetch={crl_server.url}", "check") == ["fetched", f"{INVALID}it has been revoked. {ISSUED}"]
        assert requests == []


@pytest.mark.parametrize("stage", ["before TLS", "within TLS"])
def test_time_limit_covers_a_silent_service(host, stage):
    def be_silent(listener):
        with contextlib.suppress(OSError):
            connection = listener.accept()[0]
            if stage == "within TLS":
                connection.recv(4096)
                connection.sendall(b"\x16\x03\x03\x00\x40\x02")  # the beginning of a ServerHello
            while connection.recv(4096):
                pass

    with socket.create_server((ADDRESS, 18443)) as listener:
        threading.Thread(target=be_silent, args=[listener], daemon=True).start()
        assert host("limit=1000", "check") in TIMED_OUT
