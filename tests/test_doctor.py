"""The sample host's doctor, on a machine where all is well and on broken ones."""

import json
import re
import shutil

import pytest

from conftest import MAKER_KEY, REPOSITORY, anchors, each_case

KEY = "DRAFT-2026-DEMO"
RECORD = MAKER_KEY + r"\Products\Doctor\2026.1"
PAGE = "docs/troubleshooting.md"
WELL = {"key": ("REG_SZ", KEY), "encoding": "utf-16-le", "service": (), "library": "ProductServices.dll",
        "guard": "ProductServicesGuard.dll", "trusted": "localhost:18443"}


@pytest.fixture
def doctor(build, wine, service, tmp_path):
    """Runs the doctor on a machine that is well but for what is given: its status and what it prints."""
    def examine(*arguments, **broken):
        machine = {**WELL, **broken}
        shutil.copy(build / "over_tls/HostOverTls.exe", tmp_path)
        shutil.copy(build / "bin/ProductServicesGuard.dll", tmp_path / machine["guard"])
        shutil.copy(build / "over_tls/ProductServices.dll", tmp_path / machine["library"])
        if machine["encoding"]:
            texts = (build / "over_tls/lang/DE/Vemo_DE.lang").read_text("utf-16-le")
            (tmp_path / "lang/DE").mkdir(parents=True)
            (tmp_path / "lang/DE/Vemo_DE.lang").write_bytes(texts.encode(machine["encoding"]))
        if machine["key"]:
            wine("reg", "add", RECORD, "/v", "version", "/d", "2026.1", "/f")
            wine("reg", "add", RECORD, "/v", "key", "/t", machine["key"][0], "/d", machine["key"][1], "/f")
        printed = tmp_path / "printed"  # the service can answer with it
        printed.touch()
        if machine["service"] is not None:
            service(*machine["service"], port=18443)
        command = f"HostOverTls doctor --product Doctor --language 140 --trusted-hosts {machine['trusted']}"
        status = wine("cmd", "/c", command, *arguments, ">", printed.name, cwd=tmp_path)[0]
        return status, printed.read_text("utf-8")
    yield examine
    wine("reg", "delete", MAKER_KEY + r"\Products\Doctor", "/f")


def test_a_healthy_machine_is_well_and_its_keys_stay_secret(doctor):
    status, output = doctor("--json")
    findings = json.loads(output)
    sentences = {finding["check"]: finding["sentence"] for finding in findings}
    assert [finding for finding in findings if finding["state"] == "wrong"] == []
    assert status == 0
    assert sentences["record's key"] == "REG_SZ, DRAF... (15 characters)"
    assert sentences["update query"] == "3 offers, all to trusted hosts"
    assert "https://localhost:18443/buy/" in sentences["quiet check"]
    assert KEY not in str(findings)


@each_case("sample_host/broken_machines.json", "broken, says")
def test_what_is_broken_is_called_wrong_and_leads_to_its_row(doctor, broken, says):
    status, output = doctor(**broken)
    for beginning, row in says.items():
        assert re.search(rf"(?m)^{re.escape(beginning)}.* -> {PAGE}#{row}$", output), output
    assert output.count("wrong  ") == str(says).count("wrong  "), output
    assert status == 1


@pytest.mark.parametrize("arguments", [["--unknown", "x"], ["--version"]], ids=["an unknown option", "no value"])
def test_wrong_usage_is_named(build, wine, arguments):
    status, output = wine(build / "over_tls/HostOverTls.exe", "doctor", *arguments)
    assert status == 2
    assert output.endswith(f"unknown, without a value, or not a number: {arguments[0]}\n")


def test_the_doctor_knows_the_headings_of_the_page():
    rows = (REPOSITORY / "samples/host/doctor/rows.h").read_text("utf-8")
    assert re.findall('= L"(.*)"', rows) == anchors(REPOSITORY / PAGE)[1:]
