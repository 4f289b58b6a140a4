"""Finds problems in a language file of ProductServices.dll that a user would see."""

import codecs
import collections
import os
import re

from text_width import width_problems

TEXT_COUNT = 88
SINGLE_LINE_TEXTS = (12, 22, 23, 24, 38)  # the texts of the upgrade center
BUTTON_TEXTS, TITLE_TEXT = (12, 38), 22
PLACEHOLDER = re.compile(r"%(?:%|(?:\d+\$)?[-+#0]*(?:\d+|\*)?(?:\.(?:\d+|\*)?)?(?:hh|h|ll|l|w|I64|I32|j|z|t)?"
                         r"[cCdeEfFgGaAinopsSuxX])")
RESERVED = re.compile(r"\(\w+ (\d+)\)")


class FileError(Exception):
    """The message says why a file cannot be used."""


def located(path, line, problem):
    return f"{path}, line {line}: {problem}."


def is_read_only(path):
    return not path.stat().st_mode & 0o222 or not os.access(path, os.W_OK)  # root can write to read-only files


def read_bytes(path):
    """Returns the content of a file. Raises FileError."""
    try:
        if path.is_dir():
            raise FileError(f"{path} is a folder.")
        return path.read_bytes()
    except FileNotFoundError as error:
        raise FileError(f"{path} not found.") from error
    except OSError as error:
        raise FileError(f"{path} cannot be read: {error.strerror}.") from error


def strip_editor_additions(line):
    """Removes a byte-order mark and a carriage return, which an editor may have added."""
    return line.strip("\ufeff\r")


def displayed_text(line):
    """Returns a line of a language file as the user sees it."""
    return strip_editor_additions(line).replace("|", "\n")


def placeholders(text):
    return [match for match in PLACEHOLDER.findall(text) if match != "%%"]


def placeholder_problems(text, english):
    if re.search(r"%\d+\$", text):
        yield "its placeholders are numbered, but they are filled in the order of the English text"
    elif placeholders(text) != placeholders(english):
        found, expected = (" ".join(placeholders(each)) or "none" for each in (text, english))
        yield f'its placeholders are {found}, but those of the English text "{english}" are {expected}'


def access_key_problems(text_id, text):
    keys = re.findall("&(.?)", text.replace("&&", ""))
    if text_id in BUTTON_TEXTS and keys and (len(keys) > 1 or not keys[0].isalnum()):
        yield '"&" marks the access key of a button; write "&&" to show an ampersand'
    if text_id == TITLE_TEXT and "&" in text:
        yield '"&" marks an access key in the heading, but not in the title; write a word instead'


def text_problems(text_id, text, english):
    """Yields the problems of a text that is displayed. Its line breaks are line feeds."""
    if not text.strip() and english:
        yield f'the text is empty; in English it is "{english}"'
    else:
        yield from placeholder_problems(text, english)
    if "|" in text:
        yield 'the text contains "|", which is a line break in a language file'
    if "\r" in text:
        yield "the text contains a carriage return"
    if "\n" in text and text_id in SINGLE_LINE_TEXTS:
        yield "the text has a line break, but is displayed in one line"
    yield from access_key_problems(text_id, text)


def text_and_width_problems(text_id, text, english):
    """Like text_problems, and also reports texts that seem too wide. The width is an estimate, so build ignores it."""
    yield from text_problems(text_id, text, english)
    yield from width_problems(text_id, text)


def detect_encoding(data):
    """Returns the encoding of a file that is not UTF-16 little-endian, or None."""
    code_units = collections.Counter(zip(data[::2], data[1::2]))
    if data.startswith(codecs.BOM_UTF16_BE) or code_units[0, 10] > code_units[10, 0]:
        return "UTF-16 big-endian"
    if not data or b"\0" in data:
        return None
    try:
        data.decode("utf-8")
        return "UTF-8"
    except UnicodeDecodeError:
        return "in a single-byte code page"


def read_lines(path):
    """Returns the lines that the library reads from a language file, and the problem of a damaged file in a list."""
    data = read_bytes(path)
    encoding = detect_encoding(data)
    if encoding:
        raise FileError(f"{path} is {encoding}, not UTF-16 little-endian: users would see garbled text.")
    try:
        return data.decode("utf-16-le").split("\n"), []
    except UnicodeDecodeError as error:
        lines = data[:error.start].decode("utf-16-le").split("\n")
        damage = "truncated UTF-16 character" if error.start + 1 == len(data) else "unpaired surrogate"
        return lines, [located(path, len(lines), f"{damage}; all later texts are empty")]


def count_problems(path, lines):
    count = len(lines)
    if count == TEXT_COUNT + 1 and not lines[-1]:
        yield located(path, count, "the line feed before this line adds an empty text; remove it")
    elif count > TEXT_COUNT:
        yield located(path, TEXT_COUNT + 1, f"the file has {count} lines, expected {TEXT_COUNT}; the rest is ignored")
    elif count < TEXT_COUNT:
        yield located(path, count, f"the file has {count} lines, expected {TEXT_COUNT}; all later texts are empty")


def encoding_problems(path, lines):
    if lines[0].startswith("\ufeff"):
        yield located(path, 1, "the text starts with a byte-order mark, which is displayed as a character")
    returns = [i for i, line in enumerate(lines) if "\r" in line]
    if returns:
        yield located(path, returns[0] + 1, f"the text ends with a carriage return, as in {len(returns)} of the lines; "
                      "lines must end with a line feed only")


def line_offsets(lines, expected_ids, english):
    """Yields (text id, offset) for each line whose right place is known from its text. The offset is the number of
    lines by which it is misplaced."""
    texts = [strip_editor_additions(line) for line in lines[:TEXT_COUNT]]
    for i, text in enumerate(texts):
        reserved = RESERVED.fullmatch(text)
        if reserved:
            ids = {int(reserved[1])}
        elif i in english:
            ids = expected_ids[text]
        else:
            ids = set()
        # A text may belong in several places.
        if any(text_id < len(texts) and texts[text_id] == text for text_id in ids):
            yield i, 0
        elif ids:
            yield i, min((text_id - i for text_id in ids), key=abs)


def misplaced_line_problems(path, lines, expected_ids, english):
    """A missing or an extra line shifts all lines after it, so the first two known lines with the same offset are
    reported as one problem. A single misplaced line has neighbours that are in place."""
    known = list(line_offsets(lines, expected_ids, english))
    previous = -1
    for position, (i, offset) in enumerate(known):
        is_last = position + 1 == len(known)
        if offset != 0 and (is_last or known[position + 1][1] == offset):
            first = f"{i + 1}" if i == previous + 1 else f"{i + 1}, or from an earlier one after line {previous + 1},"
            cause = "a line is missing" if offset > 0 else "there is an extra line"
            yield located(path, i + 1, f"every text from line {first} on is misplaced, because {cause} before it; this "
                          f'one, "{lines[i]}", belongs in line {i + offset + 1}')
            return
        if offset != 0:
            yield located(path, i + 1, f'this is "{lines[i]}", which belongs in line {i + offset + 1}')
        previous = i


def structure_problems(path, lines, english, expected_ids):
    """`expected_ids` has the text ids of each known text."""
    return [*count_problems(path, lines), *misplaced_line_problems(path, lines, expected_ids, english)]


def file_problems(path, english, expected_ids):
    """Yields messages. `english` has the texts that are displayed, by their ids."""
    if path.is_file() and is_read_only(path):
        yield f"{path} is not writable, so the library uses English."
    lines, damage = read_lines(path)
    yield from damage
    yield from structure_problems(path, lines, english, expected_ids)
    yield from encoding_problems(path, lines)
    for i, text in english.items():
        if i < len(lines):
            for problem in text_and_width_problems(i, displayed_text(lines[i]), text):
                yield located(path, i + 1, problem)
