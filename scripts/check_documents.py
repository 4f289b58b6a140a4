#!/usr/bin/env python3
"""Checks that the documents match the sources: links, paths, commands, the tables of the architecture, and examples,
which are compiled.

Prints each problem, and exits with 1 if there is one. lint.sh runs it."""

import json
import pathlib
import re
import subprocess
import sys
import textwrap

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
PAGES = sorted([*REPOSITORY.glob("*.md"), *REPOSITORY.glob("docs/*.md")])
# The links of these lead to folders of the package, whose test checks them.
PACKAGE_PAGES = [REPOSITORY / "cmake/package/README.md", REPOSITORY / "cmake/nuget/readme.md"]
FOLDERS = [path for path in REPOSITORY.iterdir() if path.is_dir() and path.name not in (".git", "build")]
FILES = [path for folder in FOLDERS for path in folder.rglob("*")] + [*REPOSITORY.glob("*.*")]
# The paths in documents are relative to one of these.
BASES = REPOSITORY, REPOSITORY / "src", REPOSITORY / "include"
SOURCES = [path for path in FILES if path.suffix in (".cpp", ".h") and REPOSITORY / "src" in path.parents]
CODE_BLOCK = re.compile(r"(?ms)^ *```.*?^ *```")
EXAMPLE_PAGES = [REPOSITORY / name for name in ("README.md", "docs/host-guide.md", "cmake/nuget/readme.md")]
PRESET_KINDS = {"cmake": "configurePresets", "cmake --build": "buildPresets", "ctest": "testPresets"}
TRUSTED_HOSTS = '.trustedHosts = L"localhost:18443"'
COMPILER = ("x86_64-w64-mingw32-g++-posix", "-std=c++20", "-Wall", "-Wextra", "-fsyntax-only",
            f"-I{REPOSITORY}/include", "-xc++", "-")


def read_all(*patterns):
    return "\n".join(path.read_text("utf-8") for pattern in patterns for path in sorted(REPOSITORY.glob(pattern)))


def heading_anchors(page):
    """Returns the anchors by which links refer to the headings of a page."""
    headings = re.findall(r"(?m)^#+ (.*)", page.read_text("utf-8"))
    return [re.sub(r"[^\w-]", "", heading.lower().replace(" ", "-")) for heading in headings]


def broken_links(page):
    """Returns the links of a page whose file or heading does not exist."""
    broken = []
    prose = CODE_BLOCK.sub("", page.read_text("utf-8"))
    for name, anchor in re.findall(r'(?:\]\(|src=")(?!https:)([^)#"]*)#?([^)"]*)[)"]', prose):
        target = page.parent / name if name else page
        if not target.exists() or anchor and anchor not in heading_anchors(target):
            broken.append(f"{name}#{anchor}")
    return broken


def extract_code(page):
    """Returns the commands of a page, and what its text shows as code."""
    text = page.read_text("utf-8")
    commands = re.findall(r"(?ms)^ *```(?:sh|bat)\n(.*?)^ *```", text)
    return "\n".join(commands + re.findall("`([^`]+)`", CODE_BLOCK.sub("", text)))


def missing_files(page):
    """Yields the paths and the file names in the code of a page that do not exist."""
    code = extract_code(page)
    roots = {path.name for base in BASES for path in base.iterdir() if path.is_dir()} - {"build"}
    paths = [path for path in re.findall(r"[\w.*/-]+", code) if path.partition("/")[0] in roots]
    paths += re.findall(r"(?<![\w./])\./([\w.]+)", code)
    for path in paths:
        # Programs exist only in the build and in the package.
        if not path.endswith(".exe") and not any(any(base.glob(path.rstrip("/"))) for base in BASES):
            yield path
    known = {path.name for path in FILES}
    for name in re.findall(r"(?<![\w./<>*-])\w+\.(?:sh|py|h|hpp|cpp|cmake)\b", code):
        if name not in known:
            yield name


def examples_without_trusted_hosts(page):
    """Yields the C++ examples that do not set trustedHosts to the sample's host."""
    for call in re.findall(r"(?s)CheckForUpdates\(\{.*?\}\)", page.read_text("utf-8")):
        if TRUSTED_HOSTS not in call:
            yield call


def examples_with_errors(page):
    """Compiles the C++ examples that include a header, and yields what the compiler says."""
    examples = re.findall(r"(?ms)^ *```cpp\n(.*?)^ *```", page.read_text("utf-8"))
    complete = [textwrap.dedent(example) for example in examples if "#include" in example]
    if page in EXAMPLE_PAGES and not complete:
        yield "there is none"
    for code in complete:
        includes, rest = re.match(r"(?s)((?:#include.*?\n|\n)+)(.*)", code).groups()
        if rest.startswith("const auto"):  # statements, which belong into a function
            code = f"{includes}void OpenDownloadPage(const std::wstring&);\nvoid Show() {{\n{rest}\n}}"
        compiled = subprocess.run(COMPILER, input=code, capture_output=True, encoding="utf-8", check=False)
        if compiled.returncode or compiled.stderr:
            yield compiled.stderr


def unknown_presets(commands):
    presets = json.loads((REPOSITORY / "CMakePresets.json").read_text("utf-8"))
    for command, name in re.findall(r"(cmake --build|cmake|ctest) --preset ([\w-]+)", commands):
        if name not in [preset["name"] for preset in presets[PRESET_KINDS[command]]]:
            yield f"{command} --preset {name}"


def unknown_tests(commands):
    tests = re.findall(r"CTEST_NAME (\w+)", read_all("tests/CMakeLists.txt"))
    groups = re.findall(r"(?m)^add_python_tests\((\w+)", read_all("tests/python_tests.cmake"))
    tests += [f"python.{group}" for group in groups]
    for pattern in re.findall(r" -R (\S+)", commands):
        if not any(re.search(pattern, test) for test in tests):
            yield f"-R {pattern}"


def unknown_variables(commands):
    known = read_all("CMakeLists.txt", "cmake/*.cmake", "include/*/*.h")
    for name in map("".join, re.findall(r"-D(?!CMAKE_)(\w+)=|\b(PRODUCT_[A-Z_]+)\b", commands)):
        if not re.search(rf"\b{name}\b", known):
            yield name


def unknown_options(page):
    """Yields the presets, tests and CMake variables in the commands of a page that do not exist."""
    commands = extract_code(page).replace("PRESET=", "ctest --preset ")  # test.sh uses PRESET for the test preset
    yield from unknown_presets(commands)
    yield from unknown_tests(commands)
    yield from unknown_variables(commands)


def unknown_functions():
    """Yields the functions and classes in the architecture that the library does not have."""
    library = re.sub("//.*", "", "".join(path.read_text("utf-8") for path in SOURCES))
    page = (REPOSITORY / "docs/architecture.md").read_text("utf-8")
    for span in re.findall(r"`([A-Z][\w:]*)(?:\([^`]*\))?`", page):
        for name in span.split("::"):
            if not re.search(rf"\b{name}\b", library):
                yield name


def include_differences():
    """Yields the includes between folders of src that the architecture's table and the sources do not share."""
    rows = re.findall(r"(?m)^\| `([\w./]+)`[^|]*\|[^|]*\|(.*)\|$", read_all("docs/architecture.md"))
    parts = [part for part, _ in rows]
    documented = {f"{part} includes {folder}" for part, folders in rows for folder in re.findall(r"`(\w+)`", folders)}
    actual = set()
    for path in SOURCES:
        file, folder = str(path.relative_to(REPOSITORY / "src")), path.parent.name
        part = file if file in parts else folder
        for included in re.findall(r'(?m)^#include [<"](\w+)/', path.read_text("utf-8")):
            if included not in (part, "product_services"):
                actual.add(f"{part} includes {included}")
    return sorted(documented ^ actual)


def missing_help_anchors():
    """Yields the anchors of the doctor's help links that troubleshooting.md does not have."""
    anchors = heading_anchors(REPOSITORY / "docs/troubleshooting.md")
    used = re.findall('= L"(.*)"', read_all("tools/command/doctor/help_anchors.h"))
    return [anchor for anchor in used if anchor not in anchors] if used else ["help_anchors.h has no anchors"]


def main():
    problems = []

    def report(page, problem, found):
        problems.extend(f"{page.relative_to(REPOSITORY)}: {problem}: {each}" for each in found)

    for page in PAGES:
        report(page, "broken link", broken_links(page))
    for page in PAGES + PACKAGE_PAGES:
        report(page, "file not found", missing_files(page))
        report(page, "example without trustedHosts of the sample", examples_without_trusted_hosts(page))
        report(page, "example with errors", examples_with_errors(page))
        report(page, "unknown preset, test or variable", unknown_options(page))
    architecture = REPOSITORY / "docs/architecture.md"
    report(architecture, "not found in src", unknown_functions())
    report(architecture, "only in the table or only in the sources", include_differences())
    report(REPOSITORY / "docs/troubleshooting.md", "heading not found for the doctor's link", missing_help_anchors())
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
