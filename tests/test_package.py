"""Checks the content of the packages for host developers, also with another family's names."""

import hashlib
import json
import os
import re
import shutil
import sys
import time
import xml.etree.ElementTree
import zipfile

import pefile
import pytest

from conftest import OTHER_FAMILY, REPOSITORY, SAMPLE_JSON, brand, load_cases, parametrize_from, run
from pe_file import read_pe

sys.path.insert(0, f"{REPOSITORY}/scripts")
from check_documents import broken_links  # noqa: E402

TEXT_SUFFIXES = ".c .cpp .cs .go .iss .json .md .nsi .pas .po .pot .py .rs .wxi .wxs".split()


def read(path):
    return path.read_text("utf-8")


def test_package_has_the_expected_files(package):
    names = {str(path.relative_to(package)) for path in package.rglob("*") if path.is_file()}
    assert set(load_cases("package/files.json")) <= names
    assert not [name for name in names if re.search(r"spec|build/|\.bmp$|__pycache__|[Tt]ests", name)]


def test_nuget_package_layout(archives, package, tmp_path):
    archive, = archives.glob("ExampleMaker.ProductServices.1.*.nupkg")
    shutil.unpack_archive(archive, tmp_path, "zip")
    files = {str(path.relative_to(tmp_path)) for path in tmp_path.rglob("*") if path.is_file()}
    targets = read(tmp_path / "build/native/ExampleMaker.ProductServices.targets")
    named = {os.path.normpath("build/native/" + name.replace("\\", "/").replace("**/*", "DE/Vemo_DE"))
             for name in re.findall(r'\$\(MSBuildThisFileDirectory\)([^;"<]+\.\w+)', targets)}
    assert len(named) == 3, "one DLL, its import library, and the language files"
    licenses = {f"licenses/{path.name}" for path in (package / "licenses").iterdir()}
    others = licenses | {"LICENSE", "readme.md", "icon.png", "product-services.cdx.json", "[Content_Types].xml",
                         "_rels/.rels"}
    assert named | others < files
    assert not [name for name in files if name.endswith((".pdb", ".debug"))]
    assert (tmp_path / "icon.png").read_bytes().startswith(b"\x89PNG")
    nuspec = read(tmp_path / "ExampleMaker.ProductServices.nuspec")
    assert "<repository" not in nuspec, "the sample family has no URL for it"
    version, = re.findall(r"<version>(\d+)\.(\d+)", nuspec)
    library = read_pe(tmp_path / "runtimes/win-x64/native/ProductServicesGuard.dll", "RESOURCE")
    assert library.VS_FIXEDFILEINFO[0].FileVersionMS == int(version[0]) << 16 | int(version[1])


def test_checksums_match(archives):
    assert run("sha256sum", "--check", "--quiet", "SHA256SUMS", cwd=archives) == (0, "")
    assert len(read(archives / "SHA256SUMS").splitlines()) == 2


@pytest.mark.parametrize("kind", ["zip", "nupkg"])
def test_archive_is_reproducible(archives, kind):
    with zipfile.ZipFile(next(archives.glob(f"*.{kind}"))) as archive:
        entries = archive.infolist()
        programs = [pefile.PE(data=archive.read(entry), fast_load=True) for entry in entries
                    if entry.filename.endswith((".dll", ".exe"))]
    names = [entry.filename for entry in entries if entry.filename not in ("_rels/.rels", "[Content_Types].xml")]
    assert names == sorted(names)
    commit_time = int(run("git", "-C", REPOSITORY, "log", "-1", "--format=%ct")[1]) // 2 * 2  # a zip counts in twos
    assert {entry.date_time for entry in entries} == {time.gmtime(commit_time)[:6]}
    assert {program.FILE_HEADER.TimeDateStamp // 2 * 2 for program in programs} <= {0, commit_time}


def test_sbom_matches_debian(package):
    parts = {part["name"]: part for part in json.loads(read(package / "product-services.spdx.json"))["packages"]}
    for name in ("nlohmann-json3-dev", "gcc-mingw-w64-x86-64-posix-runtime", "mingw-w64-x86-64-dev", "libcli11-dev"):
        assert parts[name]["versionInfo"] == run("dpkg-query", "-W", "-f=${Version}", name)[1]
    curl = read(REPOSITORY / "build/deps/x86_64-w64-mingw32/include/curl/curlver.h")
    upstream = re.search(r'#define LIBCURL_VERSION "(.*)"', curl)[1]
    assert re.fullmatch(rf"{re.escape(upstream)}-[\w.+~]+", parts["curl"]["versionInfo"])
    assert len(parts["curl"]["checksums"][0]["checksumValue"]) == 64
    commit = run("git", "-C", REPOSITORY, "log", "-1", "--format=commit %H")[1].strip()
    assert parts["ProductServices"]["sourceInfo"] == commit


def test_cyclonedx_sbom_lists_the_programs_and_their_components(package):
    document = json.loads(read(package / "product-services.cdx.json"))
    parts = {part["bom-ref"]: part for part in document["components"]}
    programs = {path.name: hashlib.sha512(path.read_bytes()).hexdigest()
                for path in package.rglob("*") if path.suffix in (".dll", ".exe")}
    assert {name: part["hashes"][0]["content"] for name, part in parts.items() if "hashes" in part} == programs
    uses = {entry["ref"]: entry["dependsOn"] for entry in document["dependencies"]}
    assert uses.keys() == {"ProductServices", *parts} == {"ProductServices", *sum(uses.values(), [])}


@pytest.mark.parametrize("name", ["ProductServices", "ProductServicesGuard"])
def test_msvc_import_library_names_the_exports(package, name):
    library = read_pe(package / f"bin/{name}.dll", "EXPORT")
    symbols = run("x86_64-w64-mingw32-nm", package / f"lib/{name}.lib")[1]
    assert sorted(re.findall(r"(?m)^(\S+):\n(?:.+\n)*?.* I __imp_(\w+)$", symbols)) == [
        (f"{name}.dll", symbol.name.decode()) for symbol in library.DIRECTORY_ENTRY_EXPORT.symbols]


def test_other_family_package_does_not_name_the_sample(other_family_package):
    sample = re.compile("localhost:18443|Example Draft|Example Model|DRAFT-|draft20|ExampleMaker")
    for path in other_family_package.rglob("*.*"):
        if path.suffix in TEXT_SUFFIXES:
            assert not sample.search(read(path)), path


def installer_guids(package):
    sources = "".join(map(read, sorted((package / "samples/installer").glob("*.wx?"))))
    return re.findall("[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}", sources)


def test_other_family_installer_has_different_guids(package, other_family_package):
    ours, theirs = installer_guids(package), installer_guids(other_family_package)
    assert len(set(theirs)) == len(ours) > 15
    assert set(theirs).isdisjoint(ours)


def test_other_family_documents_have_valid_links(other_family_package):
    for path in other_family_package.rglob("*.md"):
        assert path.stem == "CHANGELOG" or "1.0.0" not in read(path), path
        assert broken_links(path) == [], path


@parametrize_from("package/escaped_texts.json", "file, text")
def test_special_characters_are_escaped(other_family_package, file, text):
    assert text in read(other_family_package / file)


def test_sample_name_is_rejected(tmp_path):
    refusal = "product_family.json: product still has the sample's value; set your own.\n"
    assert brand({**OTHER_FAMILY, "product": "Example Draft"}, tmp_path / "kit")[1].endswith(refusal)


def test_other_family_nuget_package_names_the_maker(other_family_package, tmp_path):
    files = ("--sample", SAMPLE_JSON, "--family", other_family_package.with_name("product_family.json"),
             "--icon", SAMPLE_JSON.with_name("library.ico"))
    tool = REPOSITORY / "cmake/make_nupkg.py"
    assert run(sys.executable, "-B", tool, other_family_package, tmp_path, *files) == (0, "")
    with zipfile.ZipFile(next(tmp_path.glob("Mue-Kit.3.1.*.nupkg"))) as archive:
        assert r'L"M\u00f6bel \"3\"; [c]' in archive.read("readme.md").decode()
        metadata = xml.etree.ElementTree.fromstring(archive.read("Mue-Kit.3.nuspec"))[0]
    values = {element.tag.partition("}")[2]: element.text or element.attrib for element in metadata}
    assert values.items() > {"id": "Mue-Kit.3", "authors": OTHER_FAMILY["maker"], "projectUrl": OTHER_FAMILY["website"],
                             "repository": {"type": "git", "url": OTHER_FAMILY["repository"]}, "license": "MIT",
                             "licenseUrl": "https://licenses.nuget.org/MIT"}.items()
