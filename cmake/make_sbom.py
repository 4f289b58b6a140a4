#!/usr/bin/env python3
"""Writes what a package is made of, as SPDX 2.3: this project at its commit, and what is linked into the DLLs.

    SOURCE_DATE_EPOCH=SECONDS make_sbom.py OUTPUT --family JSON --version VERSION --commit COMMIT --deps build/deps

libcurl is told from what setup.sh recorded when it fetched the source, the rest from dpkg and apt."""

import argparse
import datetime
import json
import os
import pathlib
import re
import subprocess
import sys
import urllib.parse
import uuid

MINGW_LICENSE = "LicenseRef-mingw-w64"
# Debian's packages, with the licence of what ends up in the DLLs.
PACKAGES = {
    "nlohmann-json3-dev": "MIT",
    "gcc-mingw-w64-x86-64-posix-runtime": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "mingw-w64-x86-64-dev": MINGW_LICENSE,
}


def ask(*command):
    return subprocess.run(command, capture_output=True, encoding="utf-8", check=False).stdout


def package_of(name, version, license_name, checksum="", **more):
    package = {"SPDXID": f"SPDXRef-{name}", "name": name, "versionInfo": version, "downloadLocation": "NOASSERTION",
               "filesAnalyzed": False, "licenseDeclared": license_name, "licenseConcluded": license_name,
               "copyrightText": "NOASSERTION", **more}
    if checksum:
        package["checksums"] = [{"algorithm": "SHA256", "checksumValue": checksum}]
    return package


def debian_name(kind, name, version):
    """A purl, by which scanners find what is known about a package."""
    locator = f"pkg:deb/debian/{name}@{urllib.parse.quote(version)}?arch={kind}"
    return [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": locator}]


def curl(record):
    """The record has the version, then the files of the source, as sha256sum writes them."""
    version, *lines = record.read_text("utf-8").splitlines()
    files = [line.split() for line in lines]
    checksum = next(value for value, name in files if name.endswith(".dsc"))
    told = ", ".join(f"{name} (SHA256 {value})" for value, name in files)
    return package_of("curl", version, "curl", checksum, supplier="Organization: Debian",
                      sourceInfo=f"built by setup.sh from Debian's source, with the patches in its debian.tar: {told}",
                      externalRefs=debian_name("source", "curl", version))


def debian_package(name, license_name):
    version = ask("dpkg-query", "-W", "-f=${Version}", name)
    if not version:
        sys.exit(f"make_sbom.py: dpkg does not know {name}: run ./setup.sh first.")
    source = ask("dpkg-query", "-W", "-f=${source:Package} ${source:Version}", name)
    # apt may have forgotten a version that is still installed.
    checksum = re.search(r"(?m)^SHA256: (\w+)", ask("apt-cache", "show", f"{name}={version}"))
    return package_of(name, version, license_name, checksum[1] if checksum else "", supplier="Organization: Debian",
                      sourceInfo=f"Debian's package, from its source {source}",
                      externalRefs=debian_name("all", name, version))


def document_of(options):
    family = json.loads(options.family.read_text("utf-8-sig"))
    maker = f"Organization: {family['maker']}"
    own = package_of("ProductServices", options.version, "MIT", supplier=maker,
                     sourceInfo=f"commit {options.commit or 'unknown'}")
    used = [curl(options.deps / "x86_64-w64-mingw32/source.txt"),
            *(debian_package(name, license_name) for name, license_name in PACKAGES.items())]
    created = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    relations = [("SPDXRef-DOCUMENT", "DESCRIBES", own), *((own["SPDXID"], "STATIC_LINK", package) for package in used)]
    parts = "\n".join([json.dumps([own, *used]), *map(str, (family["package_id"], created))])
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"{family['package_id']}-{options.version}",
        "documentNamespace": uuid.uuid5(uuid.NAMESPACE_OID, parts).urn,
        "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"), "creators": [maker, "Tool: make_sbom.py"]},
        "packages": [own, *used],
        "hasExtractedLicensingInfos": [{
            "licenseId": MINGW_LICENSE, "name": "Licenses of the mingw-w64 runtime",
            "extractedText": (options.deps / "licenses/mingw-w64.txt").read_text("utf-8")}],
        "relationships": [{"spdxElementId": element, "relationshipType": kind, "relatedSpdxElement": package["SPDXID"]}
                          for element, kind, package in relations],
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("--version", required=True)
    parser.add_argument("--commit", required=True)
    for name in ("--family", "--deps"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    options = parser.parse_args()
    text = json.dumps(document_of(options), ensure_ascii=False, indent=2)
    options.output.write_text(text + "\n", "utf-8")


if __name__ == "__main__":
    main()
