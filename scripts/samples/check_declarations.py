#!/usr/bin/env python3
"""Compares what the samples in other languages declare but do not use with the C headers."""

import pathlib
import re
import sys

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
# The declaration of VerifyPublisher in each language. Go has the parameters in a comment.
DECLARATIONS = {
    "host.cs": r"extern uint VerifyPublisher\((.*)\);",
    "host.go": r'NewProc\("VerifyPublisher"\) +// (.*)',
    "host.pas": r"function VerifyPublisher\((.*)\): UInt32; cdecl; external Guard;",
    "host.py": r'"VerifyPublisher": \((.*?)\),$',
    "host.rs": r"fn VerifyPublisher\((.*)\) -> u32;",
}
INTEGER = r"\b(uint32_t|uint|uint32|UInt32|c_uint32|u32)\b"


def parameter_kinds(parameters):
    return ["integer" if re.search(INTEGER, parameter) else "pointer" for parameter in re.split("[,;]", parameters)]


def main():
    header = (REPOSITORY / "include/product_services/publisher.h").read_text("utf-8")
    expected = parameter_kinds(re.search(r"\bVerifyPublisher\(([^;]*)\);", header)[1])
    trusted = re.search(r"PRODUCT_SERVICES_PUBLISHER_TRUSTED = (\d+)", header)[1]
    for host, pattern in DECLARATIONS.items():
        source = (REPOSITORY / "samples/bindings" / host).read_text("utf-8")
        declaration = re.search(f"(?m){pattern}", source)
        if not declaration or parameter_kinds(declaration[1]) != expected:
            sys.exit(f"{host} does not declare VerifyPublisher like publisher.h.")
        if not re.search(rf"(?i)\bpublisher_?trusted(: u32)? += {trusted}\b", source):
            sys.exit(f"{host} does not have the value of PRODUCT_SERVICES_PUBLISHER_TRUSTED.")


if __name__ == "__main__":
    main()
