import sys

import pytest

from conftest import REPOSITORY, run


def run_tool(folder, *arguments):
    return run(sys.executable, "-B", REPOSITORY / "tools/language_files.py", *arguments, cwd=folder)


@pytest.mark.parametrize("parts, encoding, said", [  # slices of the file's lines, and texts in between
    (("0:",), "utf-16-be", " is UTF-16 big-endian"), (("0:",), "utf-8", " is UTF-8"), (("0:",), "utf-16", "line 1: "),
    (("0:40", "41:"), "", "line 41: every text from line 41 on"), (("0:12", "Exit", "12:"), "", "line 15: every text"),
    (("0:12", "38:39", "13:38", "12:13", "39:"), "", "line 13: this is"), (("0:87",), "", "line 87: this is the last"),
    *[(("0:12", text, "13:"), "", "line 13: " + said) for text, said in (
        ("", "the text is empty"), ("%s", "its placeholders are %s"), ("%2$s", "its placeholders are num"),
        ("\ud800", "reading stops"), ("&Ende", 'the button takes "&"'), ("a|b", "it has a line break"),
        ("a\r", "a carriage return"))]])
def test_check_says_what_a_user_would_see(tmp_path, parts, encoding, said):
    file = tmp_path / "lang/DE/Vemo_DE.lang"
    assert run_tool(tmp_path, "build", REPOSITORY / "languages/de.po") == (0, "")
    assert run_tool(tmp_path, "check", file) == (0, "")
    assert run_tool(tmp_path, "import", file, "de.po") == run_tool(tmp_path, "build", "de.po") == (0, "")
    whole = file.read_text("utf-16-le").split("\n")
    slices = {part: slice(*(int(n) if n else None for n in part.split(":"))) for part in parts if ":" in part}
    lines = sum((whole[slices[part]] if part in slices else [part] for part in parts), [])
    file.write_bytes("\n".join(lines).encode(encoding or "utf-16-le", "surrogatepass"))
    status, sentences = run_tool(tmp_path, "check", file)
    assert status == 1 and said in sentences
