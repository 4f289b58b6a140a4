"""PO files: their form, which every line must have, and their entries."""

import re
import sys

from language_file_check import FileError, at, read_bytes

try:
    import polib
except ImportError:
    polib = None

LINE = re.compile(r'\s*(?:#.*|(?:(?P<keyword>msgctxt|msgid|msgstr)\s*)?"(?P<text>(?:[^"\\]|\\[\\"abfnrtv])*)")?\s*')
FOLLOWERS = {None: ("msgctxt", "msgid"), "msgctxt": ("msgid",), "msgid": ("msgstr",), "msgstr": ("msgctxt", "msgid")}


def require_polib():
    if not polib:
        raise FileError(f"Python's polib is missing for {sys.executable}. Get it with: {sys.executable} -m pip install "
                        "polib; for Debian's own Python with: apt install python3-polib.")


def check_form(path, rows):
    """Ends at the first line that is not PO, since polib passes over some and loses their letters."""
    last, keyword_line = None, 0
    for number, row in enumerate(rows, 1):
        form = LINE.fullmatch(row)
        if not form:
            raise FileError(at(path, number, "this is not PO: a text stands between two quotation marks, behind "
                               'msgctxt, msgid or msgstr, and a quotation mark in it is \\"'))
        is_stray = form["text"] is not None and not last
        if form["keyword"] not in FOLLOWERS[last] if form["keyword"] else is_stray:
            raise FileError(at(path, number, f"{' or '.join(FOLLOWERS[last])} is missing before this line"))
        if form["keyword"]:
            last, keyword_line = form["keyword"], number
    if last in ("msgctxt", "msgid"):
        raise FileError(at(path, keyword_line, f"the file ends after this text, without its {FOLLOWERS[last][0]}"))


def read_po(path):
    """The entries of a PO file or template that are in use, with the file's header."""
    data = read_bytes(path)
    try:
        rows = re.split("\r\n|\r|\n", data.decode("utf-8-sig"))
        check_form(path, rows)
        entries = polib.pofile(str(path), encoding="utf-8-sig")
    except UnicodeDecodeError as error:
        raise FileError(at(path, data[:error.start].count(b"\n") + 1, "this is not UTF-8")) from error
    except (OSError, ValueError, IndexError) as error:
        line = re.search(r"\(line (\d+)\)", str(error))
        raise FileError(at(path, line[1] if line else 1, "this is not PO")) from error
    charset = re.search(r"charset=(\S+)", entries.metadata.get("Content-Type", "charset=UTF-8"))
    if charset and charset[1].upper() not in ("UTF-8", "CHARSET"):
        raise FileError(at(path, 1, f"the header says {charset[1]}; save the file as UTF-8"))
    entries[:] = [entry for entry in entries if not entry.obsolete]
    for entry in entries:  # polib has the line of an entry's comments
        while entry.linenum < len(rows) and not rows[entry.linenum - 1].lstrip().startswith("msg"):
            entry.linenum += 1
    if not entries:
        raise FileError(at(path, 1, "this is not PO, or holds no texts"))
    return entries


def po_bytes(entries, language="", code=None):
    file = polib.POFile(wrapwidth=110)
    file.header = "Texts of the update check and the upgrade center."
    file.metadata = {"Project-Id-Version": "ProductServices", "Language": language, "MIME-Version": "1.0",
                     "Content-Type": "text/plain; charset=UTF-8", "Content-Transfer-Encoding": "8bit",
                     **({"X-Language-Code": code} if code else {})}
    file.extend(entries)
    return f"{file}".encode("utf-8")


def new_entry(text_id, english, comment):
    return polib.POEntry(msgctxt=text_id, msgid=polib.unescape(english), flags=["c-format"], comment=comment)
