"""Follows docs/getting-started.md in another family's package."""

import re
import shutil
import subprocess
import sys

from conftest import ADDRESS, OUTPUT, REPOSITORY, read_certificate, run, stop_service, trust_root


def test_getting_started_leads_to_the_first_call(other_family_package, https_sample, wine, request):
    """The guide's record, the development service and the two minimal hosts, as a host developer has them."""
    sources, hosts = other_family_package / "samples/minimal_hosts", other_family_package / "hosts"
    toolchain = f"-DCMAKE_TOOLCHAIN_FILE={REPOSITORY}/cmake/mingw-w64.cmake"
    assert run("cmake", "-G", "Ninja", toolchain, "-S", sources, "-B", hosts)[0] == 0
    status, output = run("cmake", "--build", hosts)
    assert status == 0 and "warning" not in output, output
    shutil.copy(https_sample / "ProductServicesGuard.dll", hosts)
    guide = (other_family_package / "docs/getting-started.md").read_text("utf-8")
    record_key = re.search('(?m)^reg delete "(.*)" /f$', guide)[1]
    request.addfinalizer(lambda: wine("reg", "delete", record_key, "/f"))
    for record in re.findall('(?m)^reg add "(.*)" (/v) (.*) (/d) (.*) (/f)$', guide):
        assert wine("reg", "add", *record)[0] == 0
    certificate = other_family_package / "service.pem"
    service = subprocess.Popen([
        sys.executable, "-B", other_family_package / "tools/product_service.py", "--address", ADDRESS,
        "--port", "18443", "--check-answer", "0", "--certificate", certificate], **OUTPUT)
    assert "ready" in service.stdout.readline()
    with trust_root(wine, read_certificate(certificate)):
        outputs = [wine(hosts / name)[1] for name in ("host_c.exe", "host_cpp.exe")]
    log = stop_service(service)
    for output in outputs:
        assert "CheckForUpdates: a newer release is at https://strange.example:8443/buy/" in output
    assert "key=DEMO-2026 version=2026.1" in log[0]
