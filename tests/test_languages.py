import sys

import pytest

from conftest import REPOSITORY, run


def run_tool(folder, *arguments):
    return run(sys.executable, "-B", REPOSITORY / "tools/language_files.py", *arguments, cwd=folder)


@pytest.mark.parametrize("line, texts, encoding, said", [  # what takes the place of a line
    (1, [], "utf-8", " is UTF-8"), (41, [], "utf-16-le", "line 41: every text from line 41 on"),
    *[(13, [text], "utf-16-le", "line 13: " + said) for text, said in (
        ("", "the text is empty"), ("%s", "its placeholders are %s"), ("\ud800", "reading stops"),
        ("&Ende", 'the button takes "&"'), ("a|b", "it has a line break"), ("a\r", "a carriage return"))]])
def test_check_says_what_a_user_would_see(tmp_path, line, texts, encoding, said):
    file = tmp_path / "lang/DE/Vemo_DE.lang"
    assert run_tool(tmp_path, "build", REPOSITORY / "languages/de.po") == (0, "")
    assert run_tool(tmp_path, "check", file) == (0, "")
    assert run_tool(tmp_path, "import", file, "de.po") == run_tool(tmp_path, "build", "de.po") == (0, "")
    lines = file.read_text("utf-16-le").split("\n")
    lines[line - 1:line] = texts
    file.write_bytes("\n".join(lines).encode(encoding, "surrogatepass"))
    status, sentences = run_tool(tmp_path, "check", file)
    assert status == 1 and said in sentences
