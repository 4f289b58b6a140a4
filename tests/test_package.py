"""Makes the package for host developers, unpacks it, and builds and runs hosts against it alone."""

import re
import shlex
import shutil
import subprocess
import sys

import pytest

from conftest import ADDRESS, OUTPUT, REPOSITORY, end, run

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


def test_another_makers_package_leads_from_its_readme_to_the_first_call(package, build, tmp_path, wine):
    kit = shutil.copytree(package, tmp_path / "my kit")
    (tmp_path / "product_family.h").write_text(f"""#include <array> // KnownApiKeys[6]{{L"none"}};
        namespace product_family {{ constexpr auto ServiceBaseAddress = L"https://" L"{ADDRESS}:18443";
        constexpr wchar_t RecordRegistryPath[] = L"Software\\\\Example Maker\\\\Products";
        constexpr std::array KnownApiKeys{{L"a;b", L"2", L"3", L"4", L"5", L"6"}}; }}""", "utf-8")
    fill, cross = f"{sys.executable} -B {REPOSITORY}/cmake/family_texts.py", "x86_64-w64-mingw32-"
    (tmp_path / "readme.cpp").write_text(re.search(r"(?s)```cpp\n(.*?)```", (REPOSITORY / "README.md").read_text())[1])
    for command in (f"{cross}g++-posix -fsyntax-only -I{package}/include readme.cpp",
                    f"{cross}g++-posix -std=c++20 -I. -c {REPOSITORY}/cmake/family_values.cpp",
                    f"{cross}objcopy -O binary -j .family family_values.o theirs",
                    f"{fill} pairs pairs.json {build}/sample_family.values theirs 'Mü & Co' Mue.Kit 'Möbel 3'",
                    f"{fill} fill pairs.json '{kit}'", f"cmake -G Ninja -S '{kit}/samples/minimal_hosts' -B '{kit}'"
                    f" -DCMAKE_TOOLCHAIN_FILE={REPOSITORY}/cmake/mingw-w64.cmake", f"cmake --build '{kit}'"):
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
