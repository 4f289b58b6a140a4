"""Converts make_sbom.py's SPDX document to CycloneDX 1.6, with the data that BSI TR-03183-2 requires."""

import hashlib
import uuid

RUNTIME = "gcc-mingw-w64-x86-64-posix-runtime", "mingw-w64-x86-64-dev"
LIBRARIES = "curl", "nlohmann-json3-dev", *RUNTIME
# The programs and DLLs of the package, each with the components that are linked into it.
FILES = {
    "bin/ProductServices.dll": LIBRARIES,
    "bin/ProductServicesGuard.dll": LIBRARIES,
    "bin/SampleHost.exe": ("ProductServicesGuard.dll", *RUNTIME),
    "tools/ProductServicesTool.exe": (*LIBRARIES, "libcli11-dev"),
}
# The websites of the manufacturers. The supplier is the distribution, which patches and builds the components.
WEBSITES = {
    "curl": "https://curl.se/",
    "gcc-mingw-w64-x86-64-posix-runtime": "https://gcc.gnu.org/",
    "libcli11-dev": "https://github.com/CLIUtils/CLI11",
    "mingw-w64-x86-64-dev": "https://www.mingw-w64.org/",
    "nlohmann-json3-dev": "https://json.nlohmann.me/",
}


def make_entity(name, website):
    return {"name": name, "url": [website]} if website else {"name": name}


def make_component(package, kind, manufacturer, **more):
    """Converts an SPDX package to a component."""
    licenses = [{"expression": package["licenseConcluded"], "acknowledgement": "concluded"}]
    return {"type": kind, "bom-ref": package["name"], "manufacturer": manufacturer, "name": package["name"],
            "version": package["versionInfo"], "licenses": licenses, **more}


def make_file_component(path, own, manufacturer):
    digest = [{"alg": "SHA-512", "content": hashlib.sha512(path.read_bytes()).hexdigest()}]
    properties = {"filename": path.name, "executable": "executable", "archive": "no archive",
                  "structured": "unstructured"}
    return make_component(
        {**own, "name": path.name}, "library" if path.suffix == ".dll" else "application", manufacturer, hashes=digest,
        externalReferences=[{"type": "distribution", "url": f"{path.parent.name}/{path.name}", "hashes": digest}],
        properties=[{"name": f"bsi:component:{name}", "value": value} for name, value in properties.items()])


def make_linked_component(package, source_files):
    supplier = package["supplier"].partition(": ")[2]
    references = [{"type": "source-distribution", "url": name, "hashes": [{"alg": "SHA-256", "content": checksum}]}
                  for checksum, name in source_files]
    more = {"externalReferences": references} if references else {}
    return make_component(package, "library", make_entity(package["name"], WEBSITES[package["name"]]),
                          supplier={"name": supplier}, purl=package["externalRefs"][0]["referenceLocator"], **more)


def make_document(spdx, folder, family, commit, curl_files):
    """Returns the document for the unpacked package in a folder. `curl_files` has the checksum and name of each file of
    curl's source."""
    own, *linked = spdx["packages"]
    maker = make_entity(family["maker"], family.get("website"))
    product = make_component(own, "library", maker, purl=f"pkg:nuget/{family['package_id']}@{own['versionInfo']}")
    if commit:
        product["pedigree"] = {"commits": [{"uid": commit}]}
    if "repository" in family:
        product["externalReferences"] = [{"type": kind, "url": family["repository"]}
                                         for kind in ("vcs", "source-distribution")]
    parts = [*(make_file_component(folder / name, own, maker) for name in FILES),
             *(make_linked_component(package, curl_files if package["name"] == "curl" else []) for package in linked)]
    uses = {own["name"]: [name.rpartition("/")[2] for name in FILES],
            **{name.rpartition("/")[2]: list(used) for name, used in FILES.items()},
            **{package["name"]: [] for package in linked}}
    return {
        "$schema": "http://cyclonedx.org/schema/bom-1.6.schema.json",
        "bomFormat": "CycloneDX",
        "specVersion": "1.6",
        "serialNumber": uuid.uuid5(uuid.UUID(spdx["documentNamespace"]), "CycloneDX").urn,
        "version": 1,
        "metadata": {
            "timestamp": spdx["creationInfo"]["created"],
            "tools": {"components": [{"type": "application", "name": "make_sbom.py"}]},
            "manufacturer": maker,
            "component": product,
        },
        "components": parts,
        "dependencies": [{"ref": name, "dependsOn": used} for name, used in uses.items()],
        "compositions": [{"aggregate": "complete", "dependencies": list(uses)}],
    }
