"""Compares the hosts in other languages with the C headers, and what they print with the host in C."""

import re

import pytest

from conftest import REPOSITORY

# How each language declares a member of the structure and the parameters of a function. Go has the latter in comments.
MEMBERS = {
    "host.cs": r"    public (?P<type>\w+) (?P<name>\w+);",
    "host.go": r"\t(?P<name>\w+) +(?P<type>\*?u?int\d+)",
    "host.pas": r"    (?P<name>\w+): (?P<type>\w+);",
    "host.py": r'        \("(?P<name>\w+)", (?P<type>.+)\),',
    "host.rs": r"    (?P<name>\w+): (?P<type>\S.*),",
}
PARAMETERS = {
    "host.cs": r"extern uint FUNCTION\((.*)\);",
    "host.go": r'NewProc\("FUNCTION"\) +// (.*)',
    "host.pas": r"function FUNCTION\((.*)\): UInt32; cdecl; external Guard;",
    "host.py": r'"FUNCTION": \((.*?),?\),$',
    "host.rs": r"fn FUNCTION\((.*)\) -> u32;",
}
POINTER = r"\*|POINTER"
UNSIGNED = r"\b(uint32_t|uint|uint32|UInt32|c_uint32|u32)\b"
SIGNED = r"\b(int32_t|int|int32|Int32|c_int32|i32)\b"
CONSTANTS = """
    OUTCOME_NEWER_RELEASE OUTCOME_UP_TO_DATE OUTCOME_BROWSER_OPENED OUTCOME_USER_QUIT OUTCOME_UNREACHABLE
    OUTCOME_TIMED_OUT OUTCOME_CANCELLED OUTCOME_UNTRUSTED_CERTIFICATE OUTCOME_UNTRUSTED_ADDRESS
    OPTION_QUIET OPTION_SYSTEM_PROXY LANGUAGE_EN PUBLISHER_TRUSTED
""".split()
each_host = pytest.mark.parametrize("host", sorted(MEMBERS))


def read_header(name):
    return (REPOSITORY / "include/product_services" / name).read_text("utf-8")


def read_host(name):
    folder = "samples/minimal_hosts" if name in ("host.c", "host.cpp") else "samples/other_languages"
    return (REPOSITORY / folder / name).read_text("utf-8")


def kind_of(declaration):
    if re.search(POINTER, declaration):
        return "pointer"
    if re.search(UNSIGNED, declaration):
        return "unsigned"
    # Names of structures and strings remain: these are passed as pointers.
    return "signed" if re.search(SIGNED, declaration) else "pointer"


def without_style(name):
    """A constant's name without the case and the underscores in which the languages differ."""
    return name.replace("_", "").lower()


@each_host
def test_structure_has_the_members_of_the_header(host):
    members = re.findall(r"(?m)^    ((?:const |volatile )*\w+\*?) (\w+);", read_header("guarded_calls.h"))
    expected = [(name, kind_of(kind)) for kind, name in members]
    structure = re.search(r"(?is)GuardedCallParams.*?\n\n", read_host(host))[0]
    found = re.finditer(rf"(?m)^{MEMBERS[host]}(?: *//.*)?$", structure)
    assert [(member["name"], kind_of(member["type"])) for member in found] == expected


@each_host
def test_constants_have_the_values_of_the_headers(host):
    headers = "".join(map(read_header, ("guarded_calls.h", "publisher.h", "product_services.h")))
    expected = {name: re.search(rf"PRODUCT_SERVICES_{name} = (\d+)", headers)[1] for name in CONSTANTS}
    constants = re.findall(r"(\w+)(?:: [iu]32)? += (\d+)\b", read_host(host))
    values = {without_style(name): value for name, value in constants}
    assert {name: values.get(without_style(name)) for name in CONSTANTS} == expected


@each_host
@pytest.mark.parametrize("function, header", [
    ("GuardedCheckForUpdates", "guarded_calls.h"),
    ("GuardedUpgrade", "guarded_calls.h"),
    ("VerifyPublisher", "publisher.h")])
def test_functions_have_the_parameters_of_the_header(host, function, header):
    expected = re.search(rf"\b{function}\(([^;]*)\);", read_header(header))[1]
    found = re.search(f"(?m){PARAMETERS[host].replace('FUNCTION', function)}", read_host(host))[1]
    assert [kind_of(part) for part in re.split("[,;]", found)] == [kind_of(part) for part in expected.split(",")]


@pytest.mark.parametrize("host", ["host.cpp", *sorted(MEMBERS)])
def test_every_host_prints_the_sentences_of_the_host_in_c(host):
    sentences = re.findall(r'wprintf\(L"%ls: (.+?)(?:%|\\n)', read_host("host.c"))
    assert sentences
    assert [sentence for sentence in sentences if sentence not in read_host(host)] == []
