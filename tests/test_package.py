"""Makes the package for host developers, unpacks it, and builds and runs hosts against it alone."""

import os
import re
import shutil

import pefile
import pytest

from conftest import MAKER_KEY, run

FILES = set("""LICENSE SECURITY.md docs/host-guide.md lang/ZH/Vemo_ZH.lang languages/de.po
tools/product_service.py tools/catalogue.json tools/language_files.py tools/language_file_check.py languages/product_services.pot
licenses/curl.txt licenses/gcc-runtime.txt licenses/mingw-w64.txt licenses/nlohmann-json.txt""".split())
CATCHING_HOST = """#include <product_services/product_services.h>
extern "C" void Say(const char*);
void Check(HostContext* context) { try { CheckForUpdates(context); } catch (...) { Say("the handler"); } }"""


@pytest.fixture(scope="module")
def package(build, tmp_path_factory):
    folder = tmp_path_factory.mktemp("package")
    assert run("cpack", "-B", folder, cwd=build)[0] == 0
    archive, = folder.glob("product-services-*-windows-x64.zip")
    shutil.unpack_archive(archive, folder)
    return folder / archive.stem


def test_it_holds_what_a_host_developer_needs(package):
    names = {str(path.relative_to(package)) for path in package.rglob("*") if path.is_file()}
    assert FILES <= names
    assert not [name for name in names if re.search(r"spec|build/|\.bmp$|__pycache__|[Tt]ests", name)]


def test_the_nuget_package_is_what_visual_studio_takes(package, tmp_path):
    archive, = package.parent.glob("ExampleMaker.ProductServices.1.*.nupkg")
    shutil.unpack_archive(archive, tmp_path, "zip")
    files = {str(path.relative_to(tmp_path)) for path in tmp_path.rglob("*") if path.is_file()}
    targets = (tmp_path / "build/native/ExampleMaker.ProductServices.targets").read_text("utf-8")
    named = {os.path.normpath("build/native/" + name.replace("\\", "/").replace("**/*", "DE/Vemo_DE"))
             for name in re.findall(r'\$\(MSBuildThisFileDirectory\)([^;"<]+\.\w+)', targets)}
    assert len(named) == 5 and named | {"LICENSE", "readme.md", "icon.png", "[Content_Types].xml", "_rels/.rels"} < files
    for name in ("ProductServices", "ProductServicesGuard"):
        library = pefile.PE(tmp_path / f"runtimes/win-x64/native/{name}.dll")
        symbols = run("x86_64-w64-mingw32-nm", tmp_path / f"build/native/lib/{name}.lib")[1]
        assert sorted(re.findall(r"(?m)^(\S+):\n(?:.+\n)*?.* I __imp_(\w+)$", symbols)) == [
            (f"{name}.dll", symbol.name.decode()) for symbol in library.DIRECTORY_ENTRY_EXPORT.symbols]
    version, = re.findall(r"<version>(\d+)\.(\d+)", next(tmp_path.glob("*.nuspec")).read_text("utf-8"))
    assert library.VS_FIXEDFILEINFO[0].FileVersionMS == int(version[0]) << 16 | int(version[1])


@pytest.mark.parametrize("taken_out, is_kept", [("", True), ("noexcept(false)", False)])
def test_a_handler_survives_the_usual_settings_of_visual_studio(package, tmp_path, taken_out, is_kept):
    header = shutil.copytree(package / "include", tmp_path / "include") / "product_services/product_services.h"
    header.write_text(header.read_text("utf-8").replace(taken_out, ""), "utf-8")
    (tmp_path / "include/assert.h").touch()  # clang brings no such header
    compiler = "clang++ --target=x86_64-pc-windows-msvc -std=c++20 -ffreestanding -fexceptions -fcxx-exceptions"
    options = "-Xclang -fexternc-nounwind -O2 -I include -xc++ -c - -o host.obj"
    assert run(*compiler.split(), *options.split(), cwd=tmp_path, input=CATCHING_HOST) == (0, "")
    assert (b"the handler" in (tmp_path / "host.obj").read_bytes()) == is_kept


def test_hosts_in_c_and_cpp_build_and_run(package, tmp_path, wine):
    # A copy, as a user would have it: nothing of the repository is in reach but the toolchain.
    hosts = shutil.copytree(package / "samples/minimal_hosts", tmp_path / "hosts")
    settings = [f"-DCMAKE_{name}" for name in (
        f"PREFIX_PATH={package}", "SYSTEM_NAME=Windows", "C_COMPILER=x86_64-w64-mingw32-gcc-posix",
        "CXX_COMPILER=x86_64-w64-mingw32-g++-posix")]
    for command in (["-G", "Ninja", "-S", hosts, "-B", tmp_path, *settings], ["--build", tmp_path]):
        status, output = run("cmake", *command)
        assert status == 0 and "warning" not in output, output
    # Without a record of the product there is no request and no window.
    wine("reg", "delete", MAKER_KEY, "/f")
    for host in ("host_c.exe", "host_cpp.exe"):
        assert wine(tmp_path / host) == (0, "".join(
            f"{call}: 950: No data of the installed product was found.\n" for call in ("CheckForUpdates", "Upgrade")))
