"""Makes the package for host developers, unpacks it, and builds and runs hosts against it alone."""

import re
import shutil

import pytest

from conftest import MAKER_KEY, run

FILES = set("""LICENSE SECURITY.md docs/host-guide.md lang/ZH/Vemo_ZH.lang languages/de.po tools/product_service.py tools/catalogue.json
tools/language_files.py tools/language_file_check.py languages/product_services.pot
licenses/curl.txt licenses/gcc-runtime.txt licenses/mingw-w64.txt licenses/nlohmann-json.txt""".split())


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


def test_the_visual_studio_library_has_exactly_the_two_names(package):
    symbols = run("x86_64-w64-mingw32-nm", package / "lib/ProductServices.lib")[1]
    members = re.findall(r"(?m)^(\S+):\n(?:.+\n)*?.* I __imp_(\w+)$", symbols)
    assert sorted(members) == [("ProductServices.dll", "CheckForUpdates"), ("ProductServices.dll", "Upgrade")]


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
