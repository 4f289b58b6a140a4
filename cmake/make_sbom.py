#!/usr/bin/env python3
"""Writes SBOMs in SPDX 2.3 and CycloneDX 1.6 format into the folder of the unpacked package. They list this project at
its commit, and what is linked in.

    SOURCE_DATE_EPOCH=SECONDS make_sbom.py FOLDER --family JSON --version VERSION --commit COMMIT --deps build/deps

The details of libcurl come from the file that setup.sh wrote when it downloaded the source, the others from dpkg and
apt."""

import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import subprocess
import sys
import urllib.parse
import uuid

import cyclonedx

MINGW_LICENSE = "LicenseRef-mingw-w64"
# The distribution's packages, with the license of what is linked into the DLLs and the tool.
PACKAGES = {
    "nlohmann-json3-dev": "MIT",
    "gcc-mingw-w64-x86-64-posix-runtime": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "mingw-w64-x86-64-dev": MINGW_LICENSE,
    "libcli11-dev": "BSD-3-Clause",
}


def run(*command):
    return subprocess.run(command, capture_output=True, encoding="utf-8", check=False).stdout


def make_package(name, version, license_name, checksum="", **more):
    package = {"SPDXID": f"SPDXRef-{name}", "name": name, "versionInfo": version, "downloadLocation": "NOASSERTION",
               "filesAnalyzed": False, "licenseDeclared": license_name, "licenseConcluded": license_name,
               "copyrightText": "NOASSERTION", **more}
    if checksum:
        package["checksums"] = [{"algorithm": "SHA256", "checksumValue": checksum}]
    return package


def distribution():
    """Returns Debian or Ubuntu, also for distributions that use their packages."""
    system = platform.freedesktop_os_release()
    for name in (system["ID"], *system.get("ID_LIKE", "").split()):
        if name in ("debian", "ubuntu"):
            return name.capitalize()
    sys.exit(f"make_sbom.py: {system['NAME']} is not based on Debian or Ubuntu.")


def supplier_and_purl(kind, name, version):
    """Returns the supplier of a package, and a package URL, by which scanners find vulnerabilities."""
    locator = f"pkg:deb/{distribution().lower()}/{name}@{urllib.parse.quote(version)}?arch={kind}"
    return {"supplier": f"Organization: {distribution()}", "externalRefs": [
        {"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": locator}]}


def read_curl_record(path):
    """Returns the version, and the checksum and name of each file of the source, which are in sha256sum's format."""
    version, *lines = path.read_text("utf-8").splitlines()
    return version, [line.split() for line in lines]


def describe_curl(version, files):
    checksum = next(value for value, name in files if name.endswith(".dsc"))
    source_files = ", ".join(f"{name} (SHA256 {value})" for value, name in files)
    source = f"built by setup.sh from {distribution()}'s source, with the patches in its debian.tar: {source_files}"
    return make_package(
        "curl", version, "curl", checksum, sourceInfo=source, **supplier_and_purl("source", "curl", version))


def installed_versions():
    """Returns the versions of the packages by name."""
    versions = {name: run("dpkg-query", "-W", "-f=${Version}", name) for name in PACKAGES}
    for name, version in versions.items():
        if not version:
            sys.exit(f"make_sbom.py: package {name} is not installed; run ./setup.sh first.")
    return versions


def archive_checksums(versions):
    """Returns the SHA-256 of the packages by name. apt may no longer know a version that is still installed."""
    records = run("apt-cache", "show", *(f"{name}={version}" for name, version in versions.items())).split("\n\n")
    fields = (dict(re.findall(r"(?m)^(Package|SHA256): (\S+)", record)) for record in records)
    return {record["Package"]: record.get("SHA256", "") for record in fields if "Package" in record}


def describe_package(name, version, checksum):
    source = run("dpkg-query", "-W", "-f=${source:Package} ${source:Version}", name)
    return make_package(
        name, version, PACKAGES[name], checksum,
        sourceInfo=f"{distribution()}'s package, from its source {source}", **supplier_and_purl("all", name, version))


def make_document(options, family, curl_record):
    maker = f"Organization: {family['maker']}"
    own = make_package("ProductServices", options.version, "MIT", supplier=maker,
                       sourceInfo=f"commit {options.commit or 'unknown'}")
    versions = installed_versions()
    checksums = archive_checksums(versions)
    used = [describe_curl(*curl_record),
            *(describe_package(name, version, checksums.get(name, "")) for name, version in versions.items())]
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
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--version", required=True)
    parser.add_argument("--commit", required=True)
    for name in ("--family", "--deps"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    options = parser.parse_args()
    family = json.loads(options.family.read_text("utf-8-sig"))
    curl_record = read_curl_record(options.deps / "x86_64-w64-mingw32/source.txt")
    spdx = make_document(options, family, curl_record)
    cdx = cyclonedx.make_document(spdx, options.folder, family, options.commit, curl_record[1])
    for kind, document in (("spdx", spdx), ("cdx", cdx)):
        text = json.dumps(document, ensure_ascii=False, indent=2)
        (options.folder / f"product-services.{kind}.json").write_text(text + "\n", "utf-8")


if __name__ == "__main__":
    main()
