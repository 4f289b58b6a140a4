"""What a package is made of as CycloneDX 1.6, with what BSI TR-03183-2 asks for, from make_sbom.py's SPDX document."""

import hashlib
import uuid

RUNTIME = "gcc-mingw-w64-x86-64-posix-runtime", "mingw-w64-x86-64-dev"
LIBRARIES = "curl", "nlohmann-json3-dev", *RUNTIME
# The programs and DLLs of the package, each with the parts that are linked into it.
FILES = {
    "bin/ProductServices.dll": LIBRARIES,
    "bin/ProductServicesGuard.dll": LIBRARIES,
    "bin/SampleHost.exe": ("ProductServicesGuard.dll", *RUNTIME),
    "tools/ProductServicesTool.exe": (*LIBRARIES, "libcli11-dev"),
}
# Who makes the parts; the supplier is the distribution, which patches and builds them.
WEBSITES = {
    "curl": "https://curl.se/",
    "gcc-mingw-w64-x86-64-posix-runtime": "https://gcc.gnu.org/",
    "libcli11-dev": "https://github.com/CLIUtils/CLI11",
    "mingw-w64-x86-64-dev": "https://www.mingw-w64.org/",
    "nlohmann-json3-dev": "https://json.nlohmann.me/",
}


def entity(name, website):
    return {"name": name, "url": [website]} if website else {"name": name}


def component(package, kind, manufacturer, **more):
    """What an SPDX package and a component have in common."""
    licenses = [{"expression": package["licenseConcluded"], "acknowledgement": "concluded"}]
    return {"type": kind, "bom-ref": package["name"], "manufacturer": manufacturer, "name": package["name"],
            "version": package["versionInfo"], "licenses": licenses, **more}


def file_component(path, own, manufacturer):
    digest = [{"alg": "SHA-512", "content": hashlib.sha512(path.read_bytes()).hexdigest()}]
    properties = {"filename": path.name, "executable": "executable", "archive": "no archive",
                  "structured": "unstructured"}
    return component(
        {**own, "name": path.name}, "library" if path.suffix == ".dll" else "application", manufacturer, hashes=digest,
        externalReferences=[{"type": "distribution", "url": f"{path.parent.name}/{path.name}", "hashes": digest}],
        properties=[{"name": f"bsi:component:{name}", "value": value} for name, value in properties.items()])


def linked_component(package, source_files):
    supplier = package["supplier"].partition(": ")[2]
    references = [{"type": "source-distribution", "url": name, "hashes": [{"alg": "SHA-256", "content": checksum}]}
                  for checksum, name in source_files]
    more = {"externalReferences": references} if references else {}
    return component(package, "library", entity(package["name"], WEBSITES[package["name"]]),
                     supplier={"name": supplier}, purl=package["externalRefs"][0]["referenceLocator"], **more)


def document_of(spdx, folder, family, commit, curl_files):
    """The document for the unpacked package in a folder. The files of curl's source come with their SHA-256 values."""
    own, *linked = spdx["packages"]
    maker = entity(family["maker"], family.get("website"))
    whole = component(own, "library", maker, purl=f"pkg:nuget/{family['package_id']}@{own['versionInfo']}")
    if commit:
        whole["pedigree"] = {"commits": [{"uid": commit}]}
    if "repository" in family:
        whole["externalReferences"] = [{"type": kind, "url": family["repository"]}
                                       for kind in ("vcs", "source-distribution")]
    parts = [*(file_component(folder / name, own, maker) for name in FILES),
             *(linked_component(package, curl_files if package["name"] == "curl" else []) for package in linked)]
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
            "component": whole,
        },
        "components": parts,
        "dependencies": [{"ref": name, "dependsOn": used} for name, used in uses.items()],
        "compositions": [{"aggregate": "complete", "dependencies": list(uses)}],
    }
