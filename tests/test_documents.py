"""The documents, held against what they speak of."""

import json
import re

import pytest

from conftest import REPOSITORY, broken_links

PAGES = sorted([*REPOSITORY.glob("*.md"), *REPOSITORY.glob("docs/*.md")])
# The package's own test follows their links, which lead to its folders.
PACKAGED = [REPOSITORY / "cmake/package/README.md", REPOSITORY / "cmake/nuget/readme.md"]
FOLDERS = [path for path in REPOSITORY.iterdir() if path.is_dir() and path.name not in (".git", "build")]
FILES = [path for folder in FOLDERS for path in folder.rglob("*")] + [*REPOSITORY.glob("*.*")]
# A path in a document begins in one of these.
BASES = REPOSITORY, REPOSITORY / "src", REPOSITORY / "include"
SOURCES = [path for path in FILES if path.suffix in (".cpp", ".h") and REPOSITORY / "src" in path.parents]
each_page = pytest.mark.parametrize("page", PAGES + PACKAGED, ids=lambda page: str(page.relative_to(REPOSITORY)))


def code_of(page):
    """What a page shows as commands or names in its text."""
    text = page.read_text("utf-8")
    commands = re.findall(r"(?ms)^ *```(?:sh|bat)\n(.*?)^ *```", text)
    return "\n".join(commands + re.findall("`([^`]+)`", re.sub(r"(?ms)^ *```.*?^ *```", "", text)))


def text_of(*patterns):
    return "\n".join(path.read_text("utf-8") for pattern in patterns for path in sorted(REPOSITORY.glob(pattern)))


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_links_lead_to_files_and_headings(page):
    assert broken_links(page) == []


@each_page
def test_named_files_are_there(page):
    roots = {path.name for base in BASES for path in base.iterdir() if path.is_dir()} - {"build"}
    paths = [path for path in re.findall(r"[\w.*/-]+", code_of(page)) if path.partition("/")[0] in roots]
    scripts = re.findall(r"(?<![\w./])\./([\w.]+)", code_of(page))
    # Programs are in the build and in the package.
    sources = [path for path in paths + scripts if not path.endswith(".exe")]
    missing = [path for path in sources if not any(any(base.glob(path.rstrip("/"))) for base in BASES)]
    assert missing == []
    names = re.findall(r"(?<![\w./<>*-])\w+\.(?:sh|py|h|hpp|cpp|cmake)\b", code_of(page))
    assert set(names) - {path.name for path in FILES} == set(), "without a folder"


@each_page
def test_examples_say_whose_urls_they_trust(page):
    calls = re.findall(r"(?s)CheckForUpdates\(\{.*?\}\)", page.read_text("utf-8"))
    assert [call for call in calls if '.trustedHosts = L"localhost:18443"' not in call] == []


@each_page
def test_commands_name_presets_tests_and_variables_that_are_there(page):
    commands = code_of(page).replace("PRESET=", "ctest --preset ")  # which test.sh takes
    presets = json.loads((REPOSITORY / "CMakePresets.json").read_text("utf-8"))
    kinds = {"cmake": "configurePresets", "cmake --build": "buildPresets", "ctest": "testPresets"}
    for command, preset in re.findall(r"(cmake --build|cmake|ctest) --preset ([\w-]+)", commands):
        assert preset in [known["name"] for known in presets[kinds[command]]], command
    tests = re.findall(r"ENTRY (\w+)", text_of("tests/CMakeLists.txt"))
    tests += [f"python.{path.stem}" for path in REPOSITORY.glob("tests/test_*.py")]
    for pattern in re.findall(r" -R (\S+)", commands):
        assert [test for test in tests if re.search(pattern, test)], pattern
    known = text_of("CMakeLists.txt", "cmake/*.cmake", "include/*/*.h")
    for name in re.findall(r"-D(?!CMAKE_)(\w+)=|\b(PRODUCT_[A-Z_]+)\b", commands):
        assert re.search(rf"\b{''.join(name)}\b", known), name


def test_the_architecture_names_functions_of_the_library():
    library = re.sub("//.*", "", "".join(path.read_text("utf-8") for path in SOURCES))
    page = (REPOSITORY / "docs/architecture.md").read_text("utf-8")
    names = [name for span in re.findall(r"`([A-Z][\w:]*)(?:\([^`]*\))?`", page) for name in span.split("::")]
    assert len(names) > 20
    assert [name for name in names if not re.search(rf"\b{name}\b", library)] == []


def test_the_architecture_shows_every_arrow_between_folders():
    rows = re.findall(r"(?m)^\| `([\w./]+)`[^|]*\|[^|]*\|(.*)\|$", text_of("docs/architecture.md"))
    parts = [part for part, _ in rows]
    shown = {f"{part} -> {folder}" for part, includes in rows for folder in re.findall(r"`(\w+)`", includes)}
    found = set()
    for path in SOURCES:
        file, folder = str(path.relative_to(REPOSITORY / "src")), path.parent.name
        part = file if file in parts else folder
        included = re.findall(r'(?m)^#include [<"](\w+)/', path.read_text("utf-8"))
        found |= {f"{part} -> {to}" for to in included if to not in (part, "product_services")}
    assert found == shown
