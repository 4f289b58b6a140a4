"""The tool for language files: what it makes of translations, what it says about them, and what it never overwrites."""

import codecs
import re
import shutil
import sys

import polib
import pytest

from conftest import REPOSITORY, change, each_case, needs_debian, run

sys.path.insert(0, f"{REPOSITORY}/tools")
import language_files  # noqa: E402

LANGUAGES = REPOSITORY / "languages"
HEADER = (REPOSITORY / "include/product_services/product_services.h").read_text("utf-8")
IDS = dict(re.findall(r"PRODUCT_SERVICES_LANGUAGE_(\w+) = (\d+)", HEADER))
GERMAN = "lang/DE/Vemo_DE.lang"


@pytest.fixture
def tool(tmp_path, monkeypatch, capsys):
    """Runs the tool in the test's folder: its exit status and its sentences."""
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


def put_line(path, text_id, *texts):
    """Puts texts in the place of one line of a language file."""
    lines = lines_of(path)
    lines[text_id:text_id + 1] = texts
    path.write_bytes("\n".join(lines).encode("utf-16-le", "surrogatepass"))


def lines_of(path):
    return path.read_bytes().decode("utf-16-le").split("\n")


def test_a_language_file_has_a_line_for_each_text_in_utf_16_without_a_byte_order_mark(german_file):
    lines = lines_of(german_file)
    assert len(lines) == 88
    assert lines[:2] == ["(reserved 0)", "(reserved 1)"]
    assert lines[12] == "Schließen"
    assert lines[86:] == ["(reserved 86)", "(reserved 87)"]


@each_case("languages/taken_translations.json", "replaced, by, line")
def test_the_text_of_a_translation(tool, german, tmp_path, replaced, by, line):
    change(german, replaced, by)
    change(german, "Keine Internetverbindung", r"Keine\nVerbindung")
    assert tool("build", german) == (0, "")
    assert lines_of(tmp_path / GERMAN)[12] == line
    assert lines_of(tmp_path / GERMAN)[57] == "Keine|Verbindung gefunden.", "a line break is a bar"


@each_case("languages/wrong_translations.json", "replaced, by, says")
def test_a_wrong_translation_is_told_and_nothing_is_written(tool, german, tmp_path, replaced, by, says):
    change(german, replaced, by)
    status, sentences = tool("build", german, LANGUAGES / "fr.po")
    assert status == 1 and sentences.startswith(f"{german}{says}")
    assert list(tmp_path.iterdir()) == [german]


@pytest.mark.parametrize("name, code", [
    ("fr_CA", "FR"), ("zh-Hant", "TW"), ("zh_HK", "TW"), ("zh_Hans", "ZH"), ("en_US", "US"), ("en_GB", "EN")])
def test_the_name_of_a_translation_tells_its_code(tool, german, tmp_path, name, code):
    german.rename(tmp_path / f"{name}.po")
    assert tool("build", f"{name}.po") == (0, "")
    assert [path.name for path in tmp_path.rglob("*.lang")] == [f"Vemo_{code}.lang"]


def test_a_language_without_a_code_takes_that_of_unknown_ids(tool, german, tmp_path):
    portuguese = german.rename(tmp_path / "pt.po")
    assert "pt.po is for no language that a host can ask for; these are en, cs" in tool("build", "pt.po")[1]
    assert tool("build", "--as", "US", "pt.po") == (0, "")
    change(portuguese, "Language: de", r'X-Language-Code: US\n"' '\n"Language: pt')
    assert tool("build", "pt.po") == (0, ""), "the same by its header"
    assert tool("import", "lang/US/Vemo_US.lang", "gl.po") == (0, "")
    assert tool("build", "gl.po") == (0, ""), "which an import writes"
    assert lines_of(tmp_path / "lang/US/Vemo_US.lang")[12] == "Schließen"
    assert "pt.po and gl.po are both for US, for which hosts find one file" in tool("build", "pt.po", "gl.po")[1]


def test_what_is_there_stays_without_overwrite(tool, german, german_file):
    assert tool("build", german) == (0, ""), "it is the same"
    german_file.write_bytes(b"mine")
    assert tool("build", LANGUAGES / "cs.po", german) == (
        1, f"{GERMAN} is there already and differs; --overwrite replaces it.\n")
    assert german_file.read_bytes() == b"mine"
    assert not german_file.parent.with_name("CZ").exists(), "none is written where one must stay"
    german_file.chmod(0o444)
    assert tool("build", german, "--overwrite") == (1, f"{GERMAN} is read-only.\n")
    german_file.chmod(0o644)
    assert tool("build", german, "--overwrite") == (0, "")
    assert lines_of(german_file)[12] == "Schließen"
    assert list(german_file.parent.iterdir()) == [german_file]
    assert f"{german}/DE/Vemo_DE.lang cannot be written: " in tool("build", german, "--into", german)[1]


@each_case("languages/wrong_files.json", "text_id, lines, says")
def test_check_says_what_a_user_would_see(tool, german_file, text_id, lines, says):
    assert tool("check", "lang") == (0, "")
    put_line(german_file, text_id, *lines)
    status, sentences = tool("check", "lang")
    assert status == 1 and f"{GERMAN}, {says}" in sentences


def test_check_tells_lines_that_took_each_others_place(tool, german_file):
    put_line(german_file, 22, "Produktname")
    put_line(german_file, 23, "Upgrade-Center")
    assert tool("check", GERMAN) == (1, f'{GERMAN}, line 23: this is "Produktname", which belongs in line 24.\n'
                                     f'{GERMAN}, line 24: this is "Upgrade-Center", which belongs in line 23.\n')


@pytest.mark.parametrize("encoding, mark, said", [
    ("utf-8", b"", "UTF-8"), ("cp1252", b"", "text in a code page of one byte a character"),
    ("utf-16-be", codecs.BOM_UTF16_BE, "UTF-16 big-endian"), ("utf-16-be", b"", "UTF-16 big-endian")])
def test_check_names_another_encoding(tool, german_file, encoding, mark, said):
    german_file.write_bytes(mark + german_file.read_text("utf-16-le").encode(encoding))
    assert tool("check", GERMAN)[1].startswith(f"{GERMAN} is {said}, not UTF-16 little-endian")


def test_check_names_files_that_the_library_cannot_read(tool, german_file, tmp_path):
    german_file.write_bytes(german_file.read_bytes() + b"x")
    assert f"{GERMAN}, line 88: reading stops here, at half a character" in tool("check", GERMAN)[1]
    german_file.chmod(0o444)
    assert f"{GERMAN} cannot be opened for writing: the library shows" in tool("check", GERMAN)[1]
    (tmp_path / "folder").mkdir()
    assert tool("check", "folder", "none.lang") == (
        1, "folder is a folder without language files.\nnone.lang does not exist.\n")
    assert tool("build", "folder") == (1, "folder is a folder.\n")


def test_check_looks_into_a_translation_too(tool, german):
    change(german, "Schließen", "Anwendung schließen")
    assert "line 17: the text takes about 106 pixels" in tool("check", german)[1]
    assert tool("build", german) == (0, ""), "the width is an estimate"
    german.write_bytes(german.read_text("utf-8").encode("latin-1"))
    assert tool("check", german) == (1, f"{german}, line 19: this is not UTF-8.\n")


@pytest.mark.parametrize("start, line_end, end", [
    pytest.param("", "\n", "", id="as it was made"),
    pytest.param("\ufeff", "\r\n", "\r\n", id="saved by an editor of Windows")])
def test_a_language_file_becomes_the_translation_it_was_made_of(tool, german_file, tmp_path, start, line_end, end):
    put_line(german_file, 57, "Keine|Verbindung")
    put_line(german_file, 38, "Buy now")
    wanted = german_file.read_bytes()
    german_file.write_bytes((start + line_end.join(lines_of(german_file)) + end).encode("utf-16-le"))
    assert tool("import", GERMAN, "new/de.po") == (0, "")
    texts = {entry.msgctxt: entry.msgstr for entry in polib.pofile(str(tmp_path / "new/de.po"))}
    assert (texts["12"], texts["57"], texts["38"]) == ("Schließen", "Keine\nVerbindung", "")
    assert tool("build", "new/de.po", "--into", "again") == (0, "")
    assert (tmp_path / "again/DE/Vemo_DE.lang").read_bytes() == wanted


def test_import_writes_nothing_where_texts_would_be_lost(tool, german, german_file, tmp_path):
    assert "differs; --overwrite replaces it" in tool("import", GERMAN, german)[1]
    assert "is for no language" in tool("import", GERMAN, "pt.po")[1]
    put_line(german_file, 40)
    assert "an earlier one is missing" in tool("import", GERMAN, "fr.po")[1]
    assert not list(tmp_path.glob("[fp]*.po"))


def test_the_template_has_the_built_in_texts_that_are_shown(tool, tmp_path):
    assert tool("template", "new.pot") == (0, "")
    assert (tmp_path / "new.pot").read_bytes() == (LANGUAGES / "product_services.pot").read_bytes()


def test_help_needs_no_polib_and_what_needs_it_names_the_interpreter():
    command = [sys.executable, "-B", "-S", REPOSITORY / "tools/language_files.py"]
    status, text = run(*command, "--help")
    assert status == 0 and "Exit status: 0 all is well" in text
    status, sentence = run(*command, "check", ".")
    assert status == 1 and f"missing for {sys.executable}. Get it with: {sys.executable} -m pip" in sentence


@needs_debian
def test_all_that_repeats_the_languages_agrees(build):
    codes = language_files.CODES
    assert set(codes.values()) == {*IDS, "US"}
    pictures = run("bash", REPOSITORY / "scripts/language_pictures.sh", "XX")[1]
    assert set(re.findall(r"\b[A-Z]{2}\b", pictures)) == {*IDS, "US", "XX"}
    host = (REPOSITORY / "samples/host/user_language.cpp").read_text("utf-8")
    assert set(re.findall(r"PRODUCT_SERVICES_LANGUAGE_(\w+)", host)) == set(IDS)
    page = (REPOSITORY / "docs/language-files.md").read_text("utf-8")
    names = re.findall(r"`(\w+)\.po` \| ([A-Z]{2}) \| (\d+)", page)
    assert {codes[name]: number for name, _, number in names} == {code: number for _, code, number in names} == IDS
    built = {path.name for path in (build / "bin/lang").iterdir()}
    installer = (REPOSITORY / "samples/installer/sample_host.wxs").read_text("utf-8")
    for place in r'<\?define Code="(\w+)"', r'<ComponentRef Id="([A-Z]{2})"':
        assert set(re.findall(place, installer)) == built, place
    for name in re.findall(r"(?m)^ +zh-\w+: (\w+)", (REPOSITORY / "crowdin.yml").read_text("utf-8")):
        assert (LANGUAGES / f"{name}.po").exists()
