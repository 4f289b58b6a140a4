"""Measures the cost of an update query for a service: for the two samples and for the development service. Each query
has its own TLS connection on loopback.

service.py TABLE: the file to which the table is also written.

The result is the CPU time of the service's processes, so that the client does not count, and other programs have little
influence. The last column is for a million applications that start within five minutes and send one query each. Most of
the cost of a query is the TLS handshake, which mainly depends on the kind of the certificate's key, so both kinds are
measured.
"""

import concurrent.futures
import contextlib
import http.client
import os
import pathlib
import ssl
import subprocess
import sys
import tempfile

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
sys.path.append(str(REPOSITORY / "scripts/lib"))
from sample_services import running, sample_service  # noqa: E402

ADDRESS, PORT = "127.0.0.1", 18453
QUERY = f"api_key=draft20-7k2m9q-x4v8p1w&key=DRAFT-2026-DEMO&hardware_id={'0' * 64}&version=2026.1&up=1"
CATALOGUE = REPOSITORY / "tools/catalogue.json"
DEVELOPMENT_SERVICE = (sys.executable, "-B", REPOSITORY / "tools/product_service.py", "--address", ADDRESS, "--port",
                       PORT)
SERVICES = {"nginx": "nginx without a program", "php": "nginx with php-cgi", "development": "development service"}
KEYS = {"ECDSA P-256": ["ec", "-pkeyopt", "ec_paramgen_curve:P-256"], "RSA 2048": ["rsa:2048"]}
QUERIES, CLIENTS = 1000, 4
STARTS_PER_SECOND = 1_000_000 / (5 * 60)
TABLE = pathlib.Path(sys.argv[1])


def ask(_):
    client = http.client.HTTPSConnection(ADDRESS, PORT, timeout=60, context=ssl._create_unverified_context())
    with contextlib.closing(client):
        client.request("POST", "/get_updates.php", QUERY)
        reply = client.getresponse().read()
        if not reply.startswith(b"["):
            sys.exit(f"error: the service answered {reply}")


def cpu_seconds(processes):
    """Returns the user and system time of processes."""
    fields = [pathlib.Path(f"/proc/{process.pid}/stat").read_text().rpartition(")")[2].split() for process in processes]
    return sum(int(field[11]) + int(field[12]) for field in fields) / os.sysconf("SC_CLK_TCK")


def measure(processes):
    """Returns the CPU time of a query in seconds."""
    with concurrent.futures.ThreadPoolExecutor(CLIENTS) as clients:
        list(clients.map(ask, range(QUERIES // 10)))  # not measured: what is done only once
        before = cpu_seconds(processes)
        list(clients.map(ask, range(QUERIES)))
        return (cpu_seconds(processes) - before) / QUERIES


def write_row(*cells):
    row = "{:<40} {:>12} {:>22} {:>22}".format(*cells)
    print(row, flush=True)
    with TABLE.open("a") as table:
        table.write(row + "\n")


def report(name, seconds):
    write_row(name, f"{seconds * 1000:.2f} ms", f"{1 / seconds:,.0f}", f"{seconds * STARTS_PER_SECOND:.1f} cores")


def make_certificate(file, key):
    subprocess.run(["openssl", "req", "-x509", "-nodes", "-subj", "/CN=localhost", "-addext",
                    f"subjectAltName=DNS:localhost,IP:{ADDRESS}", "-newkey", *key, "-keyout", file, "-out", file],
                   check=True, capture_output=True)


def measure_service(kind, folder, certificate):
    if kind == "development":
        command = (*DEVELOPMENT_SERVICE, "--certificate", certificate)
        with running(*command, address=ADDRESS, port=PORT) as process:
            return measure([process])
    folder.mkdir()
    with sample_service(kind, folder, CATALOGUE, certificate, ADDRESS, PORT) as (_, processes):
        return measure(processes)


TABLE.write_text("")
write_row("service", "CPU per query", "queries per core and s", "a million starts need")
with tempfile.TemporaryDirectory() as work:
    for key_name, key in KEYS.items():
        certificate = pathlib.Path(work, f"{key_name}.pem".replace(" ", "-"))
        make_certificate(certificate, key)
        for kind, name in SERVICES.items():
            folder = pathlib.Path(work, f"{kind}-{certificate.stem}")
            report(f"{name}, {key_name}", measure_service(kind, folder, certificate))
