"""Runs the translators' tool under Wine: text files, language files and their check."""

import shutil

from conftest import REPOSITORY


def test_the_german_set_and_the_template_are_what_the_tool_makes(build, wine, tmp_path):
    lang = shutil.copytree(REPOSITORY / "samples/lang", tmp_path / "lang")
    for arguments, made, kept in (("build lang/DE/de.txt built.lang", "built.lang", "DE/Vemo_DE.lang"),
                                  ("export back.txt --from lang/DE/Vemo_DE.lang", "back.txt", "DE/de.txt"),
                                  ("export template.txt", "template.txt", "template.txt")):
        assert wine(build / "bin/LanguageFileTool.exe", *arguments.split(), cwd=tmp_path) == (0, "")
        assert (tmp_path / made).read_bytes() == (lang / kept).read_bytes()


def test_what_a_user_would_see_wrong_is_said(build, wine, tmp_path):
    (tmp_path / "x.lang").write_bytes("\n%d\r".encode("utf-16-le") + b"x")
    said = wine(build / "bin/LanguageFileTool.exe", "check", "x.lang", cwd=tmp_path)[1]
    assert all(part in said for part in ("is empty", "a carriage return", "placeholders are %d", "half a character"))
