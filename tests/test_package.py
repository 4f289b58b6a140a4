"""Makes the package for host developers, unpacks it, and builds and runs hosts against it alone."""

import hashlib
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import textwrap
import time
import xml.etree.ElementTree
import zipfile

import pefile
import pytest

from conftest import (ADDRESS, OUTPUT, REPOSITORY, load_cases, parametrize_from, read_certificate, run, stop_service,
                      trust_root, write_host_project)

sys.path.insert(0, f"{REPOSITORY}/scripts")
from check_documents import broken_links  # noqa: E402

CATCHING_HOST = """#include <product_services/product_services.h>
extern "C" void Say(const char*);
void Check(HostContext* context) { try { CheckForUpdates(context); } catch (...) { Say("the handler"); } }"""
TEXT_SUFFIXES = ".c .cpp .cs .go .iss .json .md .nsi .pas .po .pot .py .rs .wxs".split()
SAMPLE_JSON = REPOSITORY / "product_family/sample/product_family.json"
# The library under test asks the tests' address, and looks for records in the sample's place.
OTHER_FAMILY = {**load_cases("product_family/special_characters.json"),
                "service_base_address": "https://strange.example:8443",
                "record_registry_path": "Software\\Example Maker\\Products"}


@pytest.fixture(scope="module")
def package(build, tmp_path_factory):
    folder = tmp_path_factory.mktemp("package")
    status, output = run("cpack", "-B", folder, cwd=build)
    assert status == 0, output
    archive, = folder.glob("product-services-ExampleMaker.ProductServices-*-windows-x64.zip")
    shutil.unpack_archive(archive, folder)
    return folder / archive.stem


def brand(family, folder):
    """Makes the texts in a folder another family's, as cpack does; its JSON is put beside the folder."""
    family_json = folder.with_name("product_family.json")
    family_json.write_text(json.dumps(family), "utf-8")
    return run(sys.executable, "-B", REPOSITORY / "cmake/brand_package.py", SAMPLE_JSON, family_json, folder)


@pytest.fixture(scope="module")
def other_family_package(package, tmp_path_factory):
    kit = shutil.copytree(package, tmp_path_factory.mktemp("strange") / "my kit")
    assert brand(OTHER_FAMILY, kit) == (0, "")
    return kit


def read(path):
    return path.read_text("utf-8")


def test_package_has_the_expected_files(package):
    names = {str(path.relative_to(package)) for path in package.rglob("*") if path.is_file()}
    assert set(load_cases("package/files.json")) <= names
    assert not [name for name in names if re.search(r"spec|build/|\.bmp$|__pycache__|[Tt]ests", name)]


def test_nuget_package_layout(package, tmp_path):
    archive, = package.parent.glob("ExampleMaker.ProductServices.1.*.nupkg")
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
    version, = re.findall(r"<version>(\d+)\.(\d+)", read(tmp_path / "ExampleMaker.ProductServices.nuspec"))
    library = pefile.PE(tmp_path / "runtimes/win-x64/native/ProductServicesGuard.dll")
    assert library.VS_FIXEDFILEINFO[0].FileVersionMS == int(version[0]) << 16 | int(version[1])


def test_checksums_match(package):
    assert run("sha256sum", "--check", "--quiet", "SHA256SUMS", cwd=package.parent) == (0, "")
    assert len(read(package.parent / "SHA256SUMS").splitlines()) == 2


@pytest.mark.parametrize("kind", ["zip", "nupkg"])
def test_archive_is_reproducible(package, kind):
    with zipfile.ZipFile(next(package.parent.glob(f"*.{kind}"))) as archive:
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
    library = pefile.PE(package / f"bin/{name}.dll")
    symbols = run("x86_64-w64-mingw32-nm", package / f"lib/{name}.lib")[1]
    assert sorted(re.findall(r"(?m)^(\S+):\n(?:.+\n)*?.* I __imp_(\w+)$", symbols)) == [
        (f"{name}.dll", symbol.name.decode()) for symbol in library.DIRECTORY_ENTRY_EXPORT.symbols]


def compile_as_visual_studio(package, folder, source, *options, taken_out=""):
    """The object file of a host that Visual Studio's settings in options compile, with something taken out of the
    headers."""
    headers = shutil.copytree(package / "include", folder / "include")
    for header in headers.rglob("*.h"):
        header.write_text(read(header).replace(taken_out, ""), "utf-8")
    for name in ("assert.h", "sal.h"):  # clang brings no such headers
        (headers / name).touch()
    compiler = "clang++ --target=x86_64-pc-windows-msvc -std=c++20 -ffreestanding -fexceptions -fcxx-exceptions -O2"
    assert run(*compiler.split(), *options, "-I", headers, *"-xc++ -c - -o host.obj".split(),
               cwd=folder, input=source) == (0, "")
    return folder / "host.obj"


@pytest.mark.parametrize("taken_out, is_kept", [
    pytest.param("", True, id="as it is"), pytest.param("noexcept(false)", False, id="without noexcept(false)")])
def test_msvc_keeps_catch_handlers(package, tmp_path, taken_out, is_kept):
    host = compile_as_visual_studio(
        package, tmp_path, CATCHING_HOST, "-Xclang", "-fexternc-nounwind", taken_out=taken_out)
    assert (b"the handler" in host.read_bytes()) == is_kept


@pytest.mark.parametrize("header, call", [
    pytest.param("product_services.h", "Upgrade(nullptr)", id="a direct call"),
    pytest.param("guarded_calls.h", "GuardedUpgrade(nullptr)", id="a guarded call"),
    pytest.param("publisher.h", 'VerifyPublisher(L"", L"", nullptr, 0)', id="a publisher")])
def test_vectorcall_default_keeps_the_names(package, tmp_path, header, call):
    host = compile_as_visual_studio(
        package, tmp_path, f"#include <product_services/{header}>\nvoid Call() {{ {call}; }}\n",
        "-Xclang", "-fdefault-calling-conv=vectorcall")
    names = run("x86_64-w64-mingw32-nm", "--undefined-only", host)[1].split()
    assert call.partition("(")[0] in {name.removeprefix("__imp_") for name in names}, names


def test_other_family_package_does_not_name_the_sample(other_family_package):
    sample = re.compile("localhost:18443|Example Draft|Example Model|DRAFT-|draft20|ExampleMaker")
    for path in other_family_package.rglob("*.*"):
        if path.suffix in TEXT_SUFFIXES:
            assert not sample.search(read(path)), path


def test_other_family_installer_has_different_guids(package, other_family_package):
    guid = "[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}"
    ours = re.findall(guid, read(package / "samples/installer/sample_host.wxs"))
    theirs = re.findall(guid, read(other_family_package / "samples/installer/sample_host.wxs"))
    assert len(set(theirs)) == len(ours) > 10
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
                             "repository": {"type": "git", "url": OTHER_FAMILY["repository"]}}.items()


def test_getting_started_leads_to_the_first_call(other_family_package, build, wine, request):
    """The guide's record, the development service and the two minimal hosts, as a host developer has them."""
    sources, hosts = other_family_package / "samples/minimal_hosts", other_family_package / "hosts"
    toolchain = f"-DCMAKE_TOOLCHAIN_FILE={REPOSITORY}/cmake/mingw-w64.cmake"
    assert run("cmake", "-G", "Ninja", toolchain, "-S", sources, "-B", hosts)[0] == 0
    status, output = run("cmake", "--build", hosts)
    assert status == 0 and "warning" not in output, output
    shutil.copy(build / "https_sample/ProductServicesGuard.dll", hosts)
    guide = read(other_family_package / "docs/getting-started.md")
    record_key = re.search('(?m)^reg delete "(.*)" /f$', guide)[1]
    request.addfinalizer(lambda: wine("reg", "delete", record_key, "/f"))
    for record in re.findall('(?m)^reg add "(.*)" (/v) (.*) (/d) (.*) (/f)$', guide):
        assert wine("reg", "add", *record)[0] == 0
    certificate = other_family_package / "service.pem"
    service = subprocess.Popen([
        sys.executable, "-B", other_family_package / "tools/product_service.py", "--address", ADDRESS,
        "--port", "18443", "--check-answer", "0", "--certificate", certificate], **OUTPUT)
    assert "ready" in service.stdout.readline()
    with trust_root(wine, read_certificate(certificate)):
        outputs = [wine(hosts / name)[1] for name in ("host_c.exe", "host_cpp.exe")]
    log = stop_service(service)
    for output in outputs:
        assert "CheckForUpdates: a newer release is at https://strange.example:8443/buy/" in output
    assert "key=DEMO-2026 version=2026.1" in log[0]


def test_find_package_deploys_the_linked_dll(package, restricted_toolchain, tmp_path):
    found = f"-DProductServices_DIR={package}/lib/cmake/ProductServices"
    for library, dll in (("Guard", "ProductServicesGuard.dll"), ("ProductServices", "ProductServices.dll")):
        folder = tmp_path / library
        folder.mkdir()
        write_host_project(folder, "find_package(ProductServices CONFIG REQUIRED)", library)
        for command in (["-G", "Ninja", restricted_toolchain, found, "-B", "built", "."], ["--build", "built"]):
            status, output = run("cmake", *command, cwd=folder)
            assert status == 0, output
        programs = {path.name for path in (folder / "built").iterdir() if path.suffix in (".exe", ".dll")}
        assert programs == {"host.exe", dll}


@pytest.mark.parametrize("machine", [
    pytest.param("-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=4", id="32-bit Windows"),
    pytest.param("-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=8 -DCMAKE_C_COMPILER_ARCHITECTURE_ID=ARM64", id="ARM64"),
    pytest.param("-DCMAKE_SIZEOF_VOID_P=8", id="another system")])
def test_host_for_another_architecture_is_refused(package, tmp_path, machine):
    script = tmp_path / "find.cmake"
    script.write_text(f"""include("{package}/lib/cmake/ProductServices/ProductServicesConfig.cmake")
message("${{ProductServices_NOT_FOUND_MESSAGE}}")""")
    refusal = "This ProductServices is for 64-bit Windows, x64.\n"
    assert run("cmake", *machine.split(), "-P", script) == (0, refusal)


def test_vcpkg_port_installs_language_files_and_usage(package, tmp_path):
    """With stubs for vcpkg's functions, of which one installs the package."""
    port = REPOSITORY / "packaging/vcpkg"
    names = set(re.findall(r"(?m)^vcpkg_\w+", read(port / "portfile.cmake"))) - {"vcpkg_cmake_install"}
    functions = "".join(f"function({name})\nendfunction()\n" for name in names)
    (tmp_path / "install.cmake").write_text(f"""{functions}function(vcpkg_cmake_install)
    file(COPY "{package}/" DESTINATION "${{CURRENT_PACKAGES_DIR}}")
endfunction()
include("{port}/portfile.cmake")""")
    assert run("cmake", f"-DCURRENT_PORT_DIR={port}", f"-DCURRENT_PACKAGES_DIR={tmp_path}/installed",
               "-DPORT=product-services", "-P", tmp_path / "install.cmake") == (0, "")
    shared = tmp_path / "installed/share/product-services"
    assert (shared / "lang/DE/Vemo_DE.lang").is_file()
    write_host_project(tmp_path, "find_package(ProductServices CONFIG REQUIRED)")
    told = re.findall("(?m)^    (.*)$", read(shared / "usage").replace("main", "host"))
    assert len(told) == 3 and set(told) <= set(read(tmp_path / "CMakeLists.txt").splitlines())


def test_packaged_sample_host_builds(package, restricted_toolchain, tmp_path):
    kit = shutil.copytree(package, tmp_path / "my kit")
    for command in (["-G", "Ninja", restricted_toolchain, "-S", "samples/host", "-B", "built"], ["--build", "built"]):
        status, output = run("cmake", *command, cwd=kit)
        assert status == 0, output
    assert {"SampleHost.exe", "ProductServicesGuard.dll"} < set(os.listdir(kit / "built"))


def test_pkgconf_finds_a_moved_package(package, tmp_path):
    kit = shutil.copytree(package, tmp_path / "my kit")
    status, options = run("pkgconf", "--define-prefix", "--cflags", "--libs", "product-services-guard",
                          env={**os.environ, "PKG_CONFIG_PATH": str(kit / "lib/pkgconfig")})
    assert status == 0 and str(package) not in options, options
    compiler = ["x86_64-w64-mingw32-gcc-posix", package / "samples/minimal_hosts/host.c", "-o", tmp_path / "host.exe"]
    assert run(*compiler, *shlex.split(options)) == (0, "")


@pytest.mark.parametrize("page", ["README.md", "docs/host-guide.md", "cmake/nuget/readme.md"])
def test_document_examples_compile(package, page):
    blocks = re.findall(r"(?ms)^( *)```cpp\n(.*?)^ *```", read(REPOSITORY / page))
    examples = [textwrap.dedent(code) for _, code in blocks if "#include" in code]
    assert examples
    compiler = ("x86_64-w64-mingw32-g++-posix", "-std=c++20", "-Wall", "-Wextra", f"-I{package}/include",
                "-fsyntax-only", "-xc++", "-")
    for code in examples:
        # What is shown as statements belongs into a function.
        includes, statements = re.match(r"(?s)((?:#include.*?\n|\n)+)(.*)", code).groups()
        if statements.startswith("const auto"):
            code = f"{includes}void OpenDownloadPage(const std::wstring&);\nvoid Show() {{\n{statements}\n}}"
        assert run(*compiler, input=code) == (0, "")
