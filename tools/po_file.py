"""Reads and writes PO files, and checks their syntax."""

import re
import sys

from language_file_check import FileError, located, read_bytes

try:
    import polib
except ImportError:
    polib = None

LINE = re.compile(r'\s*(?:#.*|(?:(?P<keyword>msgctxt|msgid|msgstr)\s*)?"(?P<text>(?:[^"\\]|\\[\\"abfnrtv])*)")?\s*')
FIRST_KEYWORDS = "msgctxt", "msgid"
NEXT_KEYWORDS = {"msgctxt": ("msgid",), "msgid": ("msgstr",), "msgstr": ("msgctxt", "msgid")}


def require_polib():
    if not polib:
        raise FileError(f"polib not found for {sys.executable}. Install it with: {sys.executable} -m pip install "
                        "polib; for Debian's Python with: apt install python3-polib.")


def check_syntax(path, rows):
    """Raises FileError for the first line that is not valid. polib ignores some errors and loses characters."""
    last_keyword, keyword_line = None, 0
    for number, row in enumerate(rows, 1):
        match = LINE.fullmatch(row)
        if not match:
            raise FileError(located(path, number, "syntax error: expected msgctxt, msgid or msgstr followed by a "
                                    'string in double quotes (write \\" for a quote inside it)'))
        keyword = match["keyword"]
        if keyword:
            expected = NEXT_KEYWORDS.get(last_keyword, FIRST_KEYWORDS)
            if keyword not in expected:
                raise FileError(located(path, number, f"{' or '.join(expected)} is missing before this line"))
            last_keyword, keyword_line = keyword, number
        elif match["text"] is not None and not last_keyword:
            raise FileError(located(path, number, f"{' or '.join(FIRST_KEYWORDS)} is missing before this line"))
    if last_keyword in ("msgctxt", "msgid"):
        missing = NEXT_KEYWORDS[last_keyword][0]
        raise FileError(located(path, keyword_line, f"the file ends after this text, without its {missing}"))


def parse_po(path):
    """Returns the lines of a PO file and polib's object for it."""
    data = read_bytes(path)
    try:
        rows = re.split("\r\n|\r|\n", data.decode("utf-8-sig"))
        check_syntax(path, rows)
        return rows, polib.pofile(str(path), encoding="utf-8-sig")
    except UnicodeDecodeError as error:
        line = data[:error.start].count(b"\n") + 1
        raise FileError(located(path, line, "the file is not valid UTF-8")) from error
    except (OSError, ValueError, IndexError) as error:
        line = re.search(r"\(line (\d+)\)", str(error))
        raise FileError(located(path, line[1] if line else 1, "syntax error")) from error


def read_po(path):
    """Returns polib's object for a PO file or template, with only the entries that are not obsolete."""
    rows, entries = parse_po(path)
    charset = re.search(r"charset=(\S+)", entries.metadata.get("Content-Type", "charset=UTF-8"))
    if charset and charset[1].upper() not in ("UTF-8", "CHARSET"):
        raise FileError(located(path, 1, f"the header specifies {charset[1]}; save the file as UTF-8"))
    entries[:] = [entry for entry in entries if not entry.obsolete]
    for entry in entries:  # polib's line number is that of the entry's comments
        while entry.linenum < len(rows) and not rows[entry.linenum - 1].lstrip().startswith("msg"):
            entry.linenum += 1
    if not entries:
        raise FileError(located(path, 1, "the file is not a PO file, or contains no texts"))
    return entries


def serialize_po(entries, language="", code=None):
    """Returns the bytes of a PO file."""
    file = polib.POFile(wrapwidth=110)
    file.header = "Texts of the update check and the upgrade center."
    file.metadata = {"Project-Id-Version": "ProductServices", "Language": language, "MIME-Version": "1.0",
                     "Content-Type": "text/plain; charset=UTF-8", "Content-Transfer-Encoding": "8bit"}
    if code:
        file.metadata["X-Language-Code"] = code
    file.extend(entries)
    return f"{file}".encode("utf-8")


def new_entry(text_id, english, comment):
    return polib.POEntry(msgctxt=text_id, msgid=polib.unescape(english), flags=["c-format"], comment=comment)
