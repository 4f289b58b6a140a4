"""What the hosts in other languages declare, held against the headers in C."""

import re

import pytest

from conftest import REPOSITORY

# How a language declares a member of a record, and the parameters of a function. Go names the latter in comments.
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
UNSIGNED = r"\b(uint32_t|uint|uint32|UInt32|c_uint32|u32)\b"
SIGNED = r"\b(int32_t|int|int32|Int32|c_int32|i32)\b"
HEADERS = "".join((REPOSITORY / f"include/product_services/{name}.h").read_text("utf-8")
                  for name in ("guarded_calls", "publisher"))
each_host = pytest.mark.parametrize("host", sorted(MEMBERS))


def read_host(name):
    return (REPOSITORY / "samples/other_languages" / name).read_text("utf-8")


def kind_of(declaration):
    if re.search(UNSIGNED, declaration):
        return "unsigned"
    return "signed" if re.search(SIGNED, declaration) else "pointer"


def plain(name):
    """A name as all languages have it, whatever case and underscores they use."""
    return name.replace("_", "").lower()


@each_host
def test_the_record_has_the_members_of_the_header(host):
    expected = [(name, kind_of(kind)) for kind, name in re.findall(r"(?m)^    (?:const )?(\w+\*?) (\w+);", HEADERS)]
    found = re.finditer(rf"(?m)^{MEMBERS[host]}(?: *//.*)?$", read_host(host))
    assert [(member["name"], kind_of(member["type"])) for member in found] == expected


@each_host
def test_the_outcomes_have_the_numbers_of_the_header(host):
    known = {plain(name): number for name, number in re.findall(r"PRODUCT_SERVICES_(\w+) = (\d+)", HEADERS)}
    found = {plain(name): number for name, number in re.findall(r"(\w+)(?:: u32)? += (\d+)\b", read_host(host))}
    names = "nothingreported", "reported", "untrustedaddress", "messagewithheld", "publishertrusted"
    assert {name: found.get(name) for name in names} == {name: known[name] for name in names}


@each_host
@pytest.mark.parametrize("function", ["GuardedCheckForUpdates", "GuardedUpgrade", "UseWindowsProxy", "VerifyPublisher"])
def test_the_functions_have_the_parameters_of_the_header(host, function):
    expected = re.search(rf"(?m)^uint32_t {function}\((.*)\);", HEADERS)[1]
    found = re.search(f"(?m){PARAMETERS[host].replace('FUNCTION', function)}", read_host(host))[1]
    assert [kind_of(part) for part in re.split("[,;]", found)] == [kind_of(part) for part in expected.split(",")]
