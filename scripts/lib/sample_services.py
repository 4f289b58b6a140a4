"""Runs the sample services for the tests and the benchmark: "php" is samples/service with nginx, and "nginx" is the
output of product_service.py export. setup.sh has unpacked nginx."""

import contextlib
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent.parent
NGINX = REPOSITORY / "build/deps/nginx/usr/sbin/nginx"
PHP_PORT = 18445
PHP_LOCATION = """location ~ \\.php$ {{
    fastcgi_pass {address}:{port};
    fastcgi_param SCRIPT_FILENAME $document_root$fastcgi_script_name;
    fastcgi_param REQUEST_METHOD $request_method;
    fastcgi_param CONTENT_TYPE $content_type;
    fastcgi_param CONTENT_LENGTH $content_length;
    fastcgi_param REDIRECT_STATUS 200;
    {buffers}
}}"""
# The settings that docs/service.md recommends.
BUFFERS = "fastcgi_buffer_size 32k; fastcgi_buffers 4 32k;"
CONFIGURATION = """daemon off;
master_process off;
error_log stderr;
pid nginx.pid;
events {{}}
http {{
    access_log off;
    client_body_temp_path body;
    fastcgi_temp_path fastcgi;
    proxy_temp_path proxy;
    uwsgi_temp_path uwsgi;
    scgi_temp_path scgi;
    {maps}
    server {{
        listen {address}:{port} ssl;
        ssl_certificate "{certificate}";
        ssl_certificate_key "{certificate}";
        root "{root}";
        {locations}
    }}
}}
"""


@contextlib.contextmanager
def running(*command, address, port, folder=None):
    """Runs a program in a folder within the context, and waits until it listens. Returns its process."""
    with tempfile.TemporaryFile() as output:  # nobody reads a pipe, so it would fill up
        process = subprocess.Popen([str(word) for word in command], cwd=folder, stdout=output, stderr=output)
        try:
            for _ in range(100):
                with contextlib.suppress(OSError), socket.create_connection((address, port)):
                    break
                if process.poll() is not None:
                    output.seek(0)
                    raise RuntimeError(output.read().decode())
                time.sleep(0.1)
            yield process
        finally:
            process.terminate()
            process.wait()


def export(folder, catalogue):
    tool = REPOSITORY / "tools/product_service.py"
    subprocess.run([sys.executable, "-B", tool, "export", folder, "--catalogue", catalogue], check=True)
    return ["include maps.conf;", "include locations.conf;"]


def copy_php(root, catalogue):
    shutil.copytree(REPOSITORY / "samples/service", root)
    guard = (root / "catalogue.php").read_text("utf-8").partition("\n")[0]
    (root / "catalogue.php").write_text(f"{guard}\n{catalogue.read_text('utf-8')}", "utf-8")


@contextlib.contextmanager
def sample_service(kind, folder, catalogue, certificate, address, port, buffers=BUFFERS):
    """Runs a service with a catalogue within the context, in an empty folder. The file of the certificate also contains
    the key. Returns the service's root folder and its processes."""
    root = folder / "www"
    with contextlib.ExitStack() as stack:
        processes = []
        if kind == "php":
            copy_php(root, catalogue)
            # By default, it exits after 500 requests.
            command = ("env", "PHP_FCGI_MAX_REQUESTS=0", "php-cgi", "-b", f"{address}:{PHP_PORT}")
            php = running(*command, address=address, port=PHP_PORT)
            processes.append(stack.enter_context(php))
            maps, locations = "", PHP_LOCATION.format(address=address, port=PHP_PORT, buffers=buffers)
        else:
            maps, locations = export(folder, catalogue)
        (folder / "nginx.conf").write_text(CONFIGURATION.format(
            maps=maps, address=address, port=port, certificate=certificate, root=root, locations=locations), "utf-8")
        # nginx takes an included file's full path for a pattern if it has a [, so its path begins with this folder.
        nginx = running(NGINX, "-p", "./", "-c", "nginx.conf", address=address, port=port, folder=folder)
        processes.append(stack.enter_context(nginx))
        yield root, processes
