"""ProductServicesTool: the JSON and exit status of checks, and the upgrade center."""

import fnmatch
import json
import re
import sys
import threading
import time
import xml.etree.ElementTree

import pytest

from conftest import REPOSITORY, run
from sample_window import press, wait_for_window

pytest_plugins = ["tool_fixtures"]


@pytest.mark.parametrize("service, options, outcome, code, text, status", [
    pytest.param({}, [], "NEWER_RELEASE", 200, "https://localhost:18443/buy", 0, id="a newer release"),
    pytest.param({"updates": [""]}, ["--language", "140"], "UP_TO_DATE", None, "Sie verwenden die *", 0,
                 id="nothing newer, in German"),
    pytest.param({"updates": ['{"status":0,"error":"für Sie nicht"}']}, [], "REFUSED", None, "für Sie nicht", 1,
                 id="a refusal"),
    pytest.param({"updates": None}, ["--time-limit", "1"], "TIMED_OUT", None, "The time limit was exceeded.", 1,
                 id="a silent service"),
    pytest.param({"certificate": "untrusted"}, [], "UNTRUSTED_CERTIFICATE", None, "*its issuer is not trusted*", 1,
                 id="a forged service"),
    pytest.param({"certificate": "untrusted"}, ["--any-certificate"], "NEWER_RELEASE", 200,
                 "https://localhost:18443/buy", 0, id="a forged service, if any certificate will do"),
    pytest.param({}, ["--trusted-hosts", "a.example"], "UNTRUSTED_ADDRESS", None, "https://localhost:18443/buy", 1,
                 id="an untrusted address"),
])
def test_check(tool, start_service, service, options, outcome, code, text, status):
    start_service(**service)
    ended, output = tool("check", "--json", *options)
    assert ended == status, output
    result = json.loads(output)
    assert (result["outcome"], result["code"]) == (outcome, code)
    assert fnmatch.fnmatchcase(result["text"], text), output


def test_time_limit_covers_dns(tool, slow_resolver):
    start = time.monotonic()
    status, output = tool("check", "--time-limit", "1", "--json", **slow_resolver)
    assert json.loads(output) == {"outcome": "TIMED_OUT", "code": None, "text": "The time limit was exceeded."}
    assert status == 1
    assert time.monotonic() - start < 60


def test_time_limit_does_not_close_the_upgrade_center(tool, folder, start_service):
    start_service()
    results = []
    thread = threading.Thread(target=lambda: results.append(tool("upgrade", "--time-limit", "5", "--json")))
    thread.start()
    window = wait_for_window("Healthy - Upgrade center")
    thread.join(timeout=6)
    assert results == []
    assert run("import", "-window", window, folder / "window.png")[0] == 0
    press(window, "Escape")
    thread.join()
    status, output = results[0]
    assert json.loads(output)["outcome"] == "USER_QUIT"
    assert status == 0
    colours = int(run("identify", "-format", "%k", folder / "window.png")[1])
    assert colours > 1000, "the product line's picture"


def test_usage_error_goes_to_stderr(folder, wine):
    status, output = wine("cmd", "/c", "ProductServicesTool check --product x 2> errors", cwd=folder)
    assert (status, output) == (2, "")
    assert (folder / "errors").read_text("utf-8") == "ProductServicesTool: --version is required\n"


def test_version(folder, wine):
    header = (REPOSITORY / "include/product_services/version.h").read_text("utf-8")
    version = ".".join(re.findall(r"(?m)^#define PRODUCT_SERVICES_VERSION_\w+ (\d+)", header))
    assert wine("ProductServicesTool", "version", cwd=folder) == (
        0, f"ProductServicesTool {version} (ExampleMaker.ProductServices)\n")


def test_script_host_reads_the_result(folder, start_service):
    start_service()
    tool = folder / "tool"
    tool.write_text(f'#!/bin/sh\nexec "{REPOSITORY}/scripts/run_wine.sh" "{folder}/ProductServicesTool.exe" "$@"\n')
    tool.chmod(0o755)
    status, output = run(sys.executable, "-B", REPOSITORY / "samples/script_host/check_for_updates.py", tool)
    assert (status, output) == (0, "a newer release is at https://localhost:18443/buy\n")


def test_policy_templates_name_what_disables_a_check(tool, folder, start_service, wine):
    start_service()
    assert run(sys.executable, "-B", REPOSITORY / "cmake/policy_templates.py",
               REPOSITORY / "product_family/sample/product_family.json", folder / "policies") == (0, "")
    template, = folder.glob("policies/*.admx")
    uses = set(re.findall(r"\$\(string\.(\w+)\)", template.read_text("utf-8")))
    translations = list(folder.glob("policies/*/*.adml"))
    assert len(translations) == 11
    for file in translations:
        strings = xml.etree.ElementTree.parse(file).findall(".//{*}stringTable/{*}string")
        assert {string.get("id") for string in strings} == uses, file
    policy = xml.etree.ElementTree.parse(template).find(".//{*}policy[@name='DisableUpdateCheck']")
    key = "HKCU\\" + policy.get("key")
    try:
        for state, outcome in (("enabledValue", "DISABLED_BY_POLICY"), ("disabledValue", "NEWER_RELEASE")):
            value = policy.find(f"{{*}}{state}/{{*}}decimal").get("value")
            wine("reg", "add", key, "/v", policy.get("valueName"), "/t", "REG_DWORD", "/d", value, "/f")
            assert json.loads(tool("check", "--json")[1])["outcome"] == outcome
            is_told = "warning  policy: " in tool("doctor")[1]
            assert is_told == (state == "enabledValue")
    finally:
        wine("reg", "delete", key.rpartition("\\")[0], "/f")
