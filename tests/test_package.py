"""Makes the package for host developers, unpacks it, and builds and runs hosts against it alone."""

import os
import re
import shlex
import shutil
import subprocess
import sys

import pefile
import pytest

from conftest import ADDRESS, OUTPUT, REPOSITORY, end, run

FILES = set("""LICENSE SECURITY.md docs/host-guide.md bin/SampleHost.exe lang/ZH/Vemo_ZH.lang
languages/de.po languages/product_services.pot tools/language_files.py tools/language_file_check.py
tools/product_service.py tools/catalogue.json
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
    assert len(named) == 5
    assert named | {"LICENSE", "readme.md", "icon.png", "[Content_Types].xml", "_rels/.rels"} < files
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


def test_another_makers_package_leads_from_its_readme_to_the_first_call(package, build, tmp_path, wine):
    kit = shutil.copytree(package, tmp_path / "my kit")
    (tmp_path / "product_family.h").write_text(f"""#include <array> // KnownApiKeys[6]{{L"none"}};
        namespace product_family {{ constexpr auto ServiceBaseAddress = L"https://" L"{ADDRESS}:18443";
        constexpr wchar_t RecordRegistryPath[] = L"Software\\\\Example Maker\\\\Products";
        constexpr std::array KnownApiKeys{{L"a;b", L"2", L"3", L"4", L"5", L"6"}}; }}""", "utf-8")
    fill, cross = f"{sys.executable} -B '{REPOSITORY}/cmake/family_texts.py'", "x86_64-w64-mingw32-"
    (tmp_path / "readme.cpp").write_text(re.search(r"(?s)```cpp\n(.*?)```", (REPOSITORY / "README.md").read_text())[1])
    for command in (f"{cross}g++-posix -fsyntax-only -I'{package}/include' readme.cpp",
                    f"{cross}g++-posix -std=c++20 -I. -c '{REPOSITORY}/cmake/family_values.cpp'",
                    f"{cross}objcopy -O binary -j .family family_values.o theirs",
                    f"{fill} pairs pairs.json '{build}/sample_family.values' theirs 'Mü & Co' Mue.Kit 'Möbel 3'",
                    f"{fill} fill pairs.json '{kit}'", f"cmake -G Ninja -S '{kit}/samples/minimal_hosts' -B '{kit}'"
                    f" '-DCMAKE_TOOLCHAIN_FILE={REPOSITORY}/cmake/mingw-w64.cmake'", f"cmake --build '{kit}'"):
        status, output = run(*shlex.split(command), cwd=tmp_path)
        assert status == 0 and "warning" not in output, output
    texts = {path: path.read_text("utf-8") for path in kit.rglob("*.*") if path.suffix in (".md", ".py", ".json")}
    for path, text in texts.items():
        assert not re.search(r"localhost:18443|Example Draft|DRAFT-|draft20|ExampleMaker", text), path
        assert path.suffix != ".md" or path.stem == "CHANGELOG" or "1.0.0" not in text, path
        for to, anchor in re.findall(r"\]\((?!https:)([^)#]*)#?([^)]*)\)", text):
            headings = re.findall("(?m)^#+ (.*)", texts[path.parent / to if to else path]) if anchor else ()
            assert (path.parent / to).exists(), (path, to)
            assert not anchor or anchor in [re.sub(r"[^\w-]", "", name.lower().replace(" ", "-")) for name in headings]
    shutil.copy(build / "over_tls/ProductServices.dll", kit)
    for record in re.findall('(?m)^reg add "(.*?)" (/v) (.*) (/d) (.*) (/f)$', texts[kit / "docs/host-guide.md"]):
        wine("reg", "add", *record)
    asked = subprocess.Popen([*shlex.split(fill)[:2], kit / "tools/product_service.py", "--address", ADDRESS,
                              "--check-answer", "0"], **OUTPUT)
    assert "ready" in asked.stdout.readline()
    for host in ("host_c.exe", "host_cpp.exe"):
        assert f"CheckForUpdates: 200: https://{ADDRESS}:18443/buy/" in wine(kit / host)[1]
    assert "key=DEMO-2026 version=2026.1" in end(asked)[0]
