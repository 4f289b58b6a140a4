"""The tool for language files."""

import codecs
import re
import shutil
import sys

import polib
import pytest

from conftest import REPOSITORY, debian_only, parametrize_from, replace_once, run

sys.path.insert(0, f"{REPOSITORY}/tools")
import language_files  # noqa: E402

LANGUAGES = REPOSITORY / "languages"
HEADER = (REPOSITORY / "include/product_services/product_services.h").read_text("utf-8")
IDS = dict(re.findall(r"PRODUCT_SERVICES_LANGUAGE_(\w+) = (\d+)", HEADER))
GERMAN = "lang/DE/Vemo_DE.lang"


@pytest.fixture
def tool(tmp_path, monkeypatch, capsys):
    """Runs the tool in the test's folder: returns its exit status and its output."""
    monkeypatch.chdir(tmp_path)

    def run_tool(*arguments):
        monkeypatch.setattr(sys, "argv", ["language_files.py", *map(str, arguments)])
        return language_files.main(), capsys.readouterr().out
    return run_tool


@pytest.fixture
def german(tmp_path):
    """A copy of the German translation."""
    return shutil.copy(LANGUAGES / "de.po", tmp_path / "de.po")


@pytest.fixture
def german_file(tool, german, tmp_path):
    assert tool("build", german) == (0, "")
    return tmp_path / GERMAN


def replace_line(path, text_id, *texts):
    """Puts texts in the place of one line of a language file."""
    lines = read_lines(path)
    lines[text_id:text_id + 1] = texts
    path.write_bytes("\n".join(lines).encode("utf-16-le", "surrogatepass"))


def read_lines(path):
    return path.read_bytes().decode("utf-16-le").split("\n")


def test_language_file_is_utf_16_with_a_line_per_text(german_file):
    lines = read_lines(german_file)
    assert len(lines) == 88
    assert lines[:2] == ["(reserved 0)", "(reserved 1)"]
    assert lines[12] == "Schließen"
    assert lines[86:] == ["(reserved 86)", "(reserved 87)"]


@parametrize_from("languages/valid_translations.json", "find, replace, line")
def test_valid_translation_is_built(tool, german, tmp_path, find, replace, line):
    replace_once(german, find, replace)
    replace_once(german, "Keine Internetverbindung", r"Keine\nVerbindung")
    assert tool("build", german) == (0, "")
    assert read_lines(tmp_path / GERMAN)[12] == line
    assert read_lines(tmp_path / GERMAN)[57] == "Keine|Verbindung gefunden.", "a line break is a bar"


@parametrize_from("languages/invalid_translations.json", "find, replace, message")
def test_invalid_translation_is_rejected(tool, german, tmp_path, find, replace, message):
    replace_once(german, find, replace)
    status, output = tool("build", german, LANGUAGES / "fr.po")
    assert status == 1 and output.startswith(f"{german}{message}")
    assert list(tmp_path.iterdir()) == [german]


@pytest.mark.parametrize("name, code", [
    ("fr_CA", "FR"), ("zh-Hant", "TW"), ("zh_HK", "TW"), ("zh_Hans", "ZH"), ("en_US", "US"), ("en_GB", "EN")])
def test_file_name_selects_the_code(tool, german, tmp_path, name, code):
    german.rename(tmp_path / f"{name}.po")
    assert tool("build", f"{name}.po") == (0, "")
    assert [path.name for path in tmp_path.rglob("*.lang")] == [f"Vemo_{code}.lang"]


def test_other_languages_use_the_fallback_code(tool, german, tmp_path):
    portuguese = german.rename(tmp_path / "pt.po")
    assert "pt.po: no language code for this file name. Known: en, cs" in tool("build", "pt.po")[1]
    assert tool("build", "--code", "US", "pt.po") == (0, "")
    replace_once(portuguese, "Language: de", r'X-Language-Code: US\n"' '\n"Language: pt')
    assert tool("build", "pt.po") == (0, ""), "by its header"
    assert tool("import", "lang/US/Vemo_US.lang", "gl.po") == (0, "")
    assert tool("build", "gl.po") == (0, ""), "which an import writes"
    assert read_lines(tmp_path / "lang/US/Vemo_US.lang")[12] == "Schließen"
    assert "pt.po and gl.po both have the code US" in tool("build", "pt.po", "gl.po")[1]


def test_existing_files_are_replaced_only_with_force(tool, german, german_file):
    assert tool("build", german) == (0, ""), "it is the same"
    german_file.write_bytes(b"mine")
    assert tool("build", LANGUAGES / "cs.po", german) == (
        1, f"{GERMAN} already exists and differs; use --force to replace it.\n")
    assert german_file.read_bytes() == b"mine"
    assert not german_file.parent.with_name("CZ").exists(), "if one file must not be replaced, none is written"
    german_file.chmod(0o444)
    assert tool("build", german, "--force") == (1, f"{GERMAN} is read-only.\n")
    german_file.chmod(0o644)
    assert tool("build", german, "--force") == (0, "")
    assert read_lines(german_file)[12] == "Schließen"
    assert list(german_file.parent.iterdir()) == [german_file]
    assert f"{german}/DE/Vemo_DE.lang cannot be written: " in tool("build", german, "--output", german)[1]


@parametrize_from("languages/invalid_language_files.json", "text_id, lines, message")
def test_check_reports_invalid_texts(tool, german_file, text_id, lines, message):
    assert tool("check", "lang") == (0, "")
    replace_line(german_file, text_id, *lines)
    status, output = tool("check", "lang")
    assert status == 1 and f"{GERMAN}, {message}" in output


def test_check_reports_swapped_lines(tool, german_file):
    replace_line(german_file, 22, "Produktname")
    replace_line(german_file, 23, "Upgrade-Center")
    assert tool("check", GERMAN) == (1, f'{GERMAN}, line 23: this is "Produktname", which belongs in line 24.\n'
                                     f'{GERMAN}, line 24: this is "Upgrade-Center", which belongs in line 23.\n')


@pytest.mark.parametrize("encoding, mark, detected", [
    ("utf-8", b"", "UTF-8"), ("cp1252", b"", "in a single-byte code page"),
    ("utf-16-be", codecs.BOM_UTF16_BE, "UTF-16 big-endian"), ("utf-16-be", b"", "UTF-16 big-endian")])
def test_check_detects_the_encoding(tool, german_file, encoding, mark, detected):
    german_file.write_bytes(mark + german_file.read_text("utf-16-le").encode(encoding))
    assert tool("check", GERMAN)[1].startswith(f"{GERMAN} is {detected}, not UTF-16 little-endian")


def test_check_reports_unusable_files(tool, german_file, tmp_path):
    german_file.write_bytes(german_file.read_bytes() + b"x")
    assert f"{GERMAN}, line 88: truncated UTF-16 character" in tool("check", GERMAN)[1]
    german_file.chmod(0o444)
    assert f"{GERMAN} is not writable, so the library uses English" in tool("check", GERMAN)[1]
    (tmp_path / "folder").mkdir()
    assert tool("check", "folder", "none.lang") == (
        1, "folder contains no language files.\nnone.lang not found.\n")
    assert tool("build", "folder") == (1, "folder is a folder.\n")


def test_check_accepts_po_files(tool, german):
    replace_once(german, "Schließen", "Anwendung schließen")
    assert "line 17: the text is about 106 pixels wide" in tool("check", german)[1]
    assert tool("build", german) == (0, ""), "the width is an estimate"
    german.write_bytes(german.read_text("utf-8").encode("latin-1"))
    assert tool("check", german) == (1, f"{german}, line 19: the file is not valid UTF-8.\n")


@pytest.mark.parametrize("start, line_end, end", [
    pytest.param("", "\n", "", id="unchanged"),
    pytest.param("\ufeff", "\r\n", "\r\n", id="saved by an editor on Windows")])
def test_import_restores_the_translation(tool, german_file, tmp_path, start, line_end, end):
    replace_line(german_file, 57, "Keine|Verbindung")
    replace_line(german_file, 38, "Buy now")
    wanted = german_file.read_bytes()
    german_file.write_bytes((start + line_end.join(read_lines(german_file)) + end).encode("utf-16-le"))
    assert tool("import", GERMAN, "new/de.po") == (0, "")
    texts = {entry.msgctxt: entry.msgstr for entry in polib.pofile(str(tmp_path / "new/de.po"))}
    assert (texts["12"], texts["57"], texts["38"]) == ("Schließen", "Keine\nVerbindung", "")
    assert tool("build", "new/de.po", "--output", "again") == (0, "")
    assert (tmp_path / "again/DE/Vemo_DE.lang").read_bytes() == wanted


def test_import_rejects_incomplete_files(tool, german, german_file, tmp_path):
    assert "differs; use --force to replace it" in tool("import", GERMAN, german)[1]
    assert "no language code" in tool("import", GERMAN, "pt.po")[1]
    replace_line(german_file, 40)
    assert "a line is missing before it" in tool("import", GERMAN, "fr.po")[1]
    assert not list(tmp_path.glob("[fp]*.po"))


def test_template_matches_the_built_in_texts(tool, tmp_path):
    assert tool("update-template", "new.pot") == (0, "")
    assert (tmp_path / "new.pot").read_bytes() == (LANGUAGES / "product_services.pot").read_bytes()


def test_missing_polib_is_reported():
    command = [sys.executable, "-B", "-S", REPOSITORY / "tools/language_files.py"]
    status, text = run(*command, "--help")
    assert status == 0 and "Exit status: 0 success" in text
    status, output = run(*command, "check", ".")
    assert status == 1 and f"polib not found for {sys.executable}. Install it with: {sys.executable} -m pip" in output


@debian_only
def test_language_tables_agree(build):
    codes = language_files.CODES
    assert set(codes.values()) == {*IDS, "US"}
    codes_in_script = run("bash", REPOSITORY / "scripts/language_screenshots.sh", "XX")[1]
    assert set(re.findall(r"\b[A-Z]{2}\b", codes_in_script)) == {*IDS, "US", "XX"}
    host = (REPOSITORY / "samples/host/user_language.cpp").read_text("utf-8")
    assert set(re.findall(r"PRODUCT_SERVICES_LANGUAGE_(\w+)", host)) == set(IDS)
    page = (REPOSITORY / "docs/language-files.md").read_text("utf-8")
    names = re.findall(r"`(\w+)\.po` \| ([A-Z]{2}) \| (\d+)", page)
    assert {codes[name]: number for name, _, number in names} == {code: number for _, code, number in names} == IDS
    built = {path.name for path in (build / "bin/lang").iterdir()}
    installer = (REPOSITORY / "samples/installer/language_files.wxi").read_text("utf-8")
    assert set(re.findall(r'<\?define Code="(\w+)"', installer)) == built
    for name in re.findall(r"(?m)^ +zh-\w+: (\w+)", (REPOSITORY / "crowdin.yml").read_text("utf-8")):
        assert (LANGUAGES / f"{name}.po").exists()
