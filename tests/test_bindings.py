"""Compares what the samples in other languages declare but do not use with the C headers. lint.sh runs the samples."""

import re

import pytest

from conftest import REPOSITORY

# The declaration of VerifyPublisher in each language. Go has the parameters in a comment.
DECLARATIONS = {
    "host.cs": r"extern uint VerifyPublisher\((.*)\);",
    "host.go": r'NewProc\("VerifyPublisher"\) +// (.*)',
    "host.pas": r"function VerifyPublisher\((.*)\): UInt32; cdecl; external Guard;",
    "host.py": r'"VerifyPublisher": \((.*?)\),$',
    "host.rs": r"fn VerifyPublisher\((.*)\) -> u32;",
}
HEADER = (REPOSITORY / "include/product_services/publisher.h").read_text("utf-8")
INTEGER = r"\b(uint32_t|uint|uint32|UInt32|c_uint32|u32)\b"


def parameter_kinds(parameters):
    return ["integer" if re.search(INTEGER, parameter) else "pointer" for parameter in re.split("[,;]", parameters)]


@pytest.mark.parametrize("host", DECLARATIONS)
def test_declarations_match_the_header(host):
    source = (REPOSITORY / "samples/bindings" / host).read_text("utf-8")
    expected = re.search(r"\bVerifyPublisher\(([^;]*)\);", HEADER)[1]
    found = re.search(f"(?m){DECLARATIONS[host]}", source)[1]
    assert parameter_kinds(found) == parameter_kinds(expected)
    value = re.search(r"PRODUCT_SERVICES_PUBLISHER_TRUSTED = (\d+)", HEADER)[1]
    assert re.search(rf"(?i)\bpublisher_?trusted(: u32)? += {value}\b", source)
