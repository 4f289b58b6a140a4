"""What a user would see wrong in a language file of ProductServices.dll."""

import codecs
import collections
import os
import re

from text_width import width_problems

TEXT_COUNT = 88
SINGLE_LINE_TEXTS = (12, 22, 23, 24, 38)  # what the upgrade center shows
BUTTON_TEXTS, TITLE_TEXT = (12, 38), 22
PLACEHOLDER = re.compile(r"%(?:%|(?:\d+\$)?[-+#0]*(?:\d+|\*)?(?:\.(?:\d+|\*)?)?(?:hh|h|ll|l|w|I64|I32|j|z|t)?"
                         r"[cCdeEfFgGaAinopsSuxX])")
RESERVED = re.compile(r"\(\w+ (\d+)\)")


class FileError(Exception):
    """What is wrong with a file, in one sentence."""


def at(path, line, what):
    return f"{path}, line {line}: {what}."


def is_read_only(path):
    return not path.stat().st_mode & 0o222 or not os.access(path, os.W_OK)  # root may write to read-only files


def read_bytes(path):
    """The bytes of a file, or the sentence why there are none."""
    try:
        if path.is_dir():
            raise FileError(f"{path} is a folder.")
        return path.read_bytes()
    except FileNotFoundError as error:
        raise FileError(f"{path} does not exist.") from error
    except OSError as error:
        raise FileError(f"{path} cannot be read: {error.strerror}.") from error


def shown(line):
    """A line of a language file as its text, without what an editor may have added."""
    return line.strip("\ufeff\r").replace("|", "\n")


def placeholders(text):
    return [match for match in PLACEHOLDER.findall(text) if match != "%%"]


def text_problems(text_id, text, english):
    """What a user would see wrong in a text that is shown, whose line breaks are line feeds."""
    if not text.strip() and english:
        yield f'the text is empty, in English it is "{english}"'
    elif re.search(r"%\d+\$", text):
        yield "its placeholders are numbered, but they are filled in the order of the English text"
    elif placeholders(text) != placeholders(english):
        found, wanted = (" ".join(placeholders(each)) or "none" for each in (text, english))
        yield f'its placeholders are {found}, those of the English text "{english}" are {wanted}'
    if "|" in text:
        yield 'it holds "|", which a language file has for a line break'
    if "\r" in text:
        yield "it holds a carriage return"
    if "\n" in text and text_id in SINGLE_LINE_TEXTS:
        yield "it has a line break, but is shown in one line"
    keys = re.findall("&(.?)", text.replace("&&", ""))
    if text_id in BUTTON_TEXTS and keys and (len(keys) > 1 or not keys[0].isalnum()):
        yield 'the button takes "&" for the mark of one letter, its key, and does not show it; "&&" shows one'
    if text_id == TITLE_TEXT and "&" in text:
        yield 'the heading takes "&" for the mark of a key, the title does not; write a word'


def window_problems(text_id, text, english):
    """Adds where a text seems too long for its place. It is an estimate, which keeps nobody from building."""
    yield from text_problems(text_id, text, english)
    yield from width_problems(text_id, text)


def other_encoding(data):
    """What the file is where it is not UTF-16 little-endian."""
    units = collections.Counter(zip(data[::2], data[1::2]))
    if data.startswith(codecs.BOM_UTF16_BE) or units[0, 10] > units[10, 0]:
        return "UTF-16 big-endian"
    if not data or b"\0" in data:
        return None
    try:
        data.decode("utf-8")
        return "UTF-8"
    except UnicodeDecodeError:
        return "text in a code page of one byte a character"


def read_lines(path):
    """The lines of a language file that the library reads, and the sentence about damage, if there is any."""
    data = read_bytes(path)
    encoding = other_encoding(data)
    if encoding:
        raise FileError(f"{path} is {encoding}, not UTF-16 little-endian: a user would see signs without a meaning.")
    try:
        return data.decode("utf-16-le").split("\n"), []
    except UnicodeDecodeError as error:
        lines = data[:error.start].decode("utf-16-le").split("\n")
        half = "half a character" if error.start + 1 == len(data) else "half a surrogate pair"
        return lines, [at(path, len(lines), f"reading stops here, at {half}; later texts are empty")]


def count_problems(path, lines):
    count = len(lines)
    if count == TEXT_COUNT + 1 and not lines[-1]:
        yield at(path, count, "the line feed before it makes one more, empty, text")
    elif count > TEXT_COUNT:
        yield at(path, TEXT_COUNT + 1, f"of {count} lines {TEXT_COUNT} must be there; nothing shows the rest")
    elif count < TEXT_COUNT:
        yield at(path, count, f"this is the last line, {TEXT_COUNT} must be there; later texts are empty")


def sign_problems(path, lines):
    if lines[0].startswith("\ufeff"):
        yield at(path, 1, "the text starts with a byte-order mark, a character like any other here")
    returns = [i for i, line in enumerate(lines) if "\r" in line]
    if returns:
        yield at(path, returns[0] + 1, f"a carriage return is part of the text, as in {len(returns)} of the lines; "
                 "a line ends with a line feed alone")


def displacements(lines, homes, english):
    """(text id, by how many lines it is misplaced) of each line whose place can be told from its text."""
    lines = [line.strip("\ufeff\r") for line in lines[:TEXT_COUNT]]
    for i, text in enumerate(lines):
        reserved = RESERVED.fullmatch(text)
        places = {int(reserved[1])} if reserved else homes[text] if i in english else set()
        if any(text in lines[place:place + 1] for place in places):
            yield i, 0
        elif places:
            yield i, min((place - i for place in places), key=abs)


def place_problems(path, lines, homes, english):
    """A line that was lost or added shifts all that follow; a single misplaced line has its neighbours in place."""
    known = [(-1, 0), *displacements(lines, homes, english)]
    for (right, _), (i, by), (_, next_by) in zip(known, known[1:], known[2:] + known[-1:]):
        if by and by == next_by:
            first = f"{i + 1}" if right + 1 == i else f"{i + 1} on, or from one after line {right + 1}"
            what = "an earlier one is missing" if by > 0 else "an earlier one is too many"
            yield at(path, i + 1, f"every text from line {first} on is in the wrong place, since {what}; this one, "
                     f'"{lines[i]}", belongs in line {i + by + 1}')
            return
        if by:
            yield at(path, i + 1, f'this is "{lines[i]}", which belongs in line {i + by + 1}')


def structure_problems(path, lines, english, homes):
    """`homes` has the ids where a text belongs."""
    return [*count_problems(path, lines), *place_problems(path, lines, homes, english)]


def file_problems(path, english, homes):
    """Sentences; `english` has the texts that are shown, by their ids."""
    if path.is_file() and is_read_only(path):
        yield f"{path} cannot be opened for writing: the library shows its English texts instead."
    lines, damage = read_lines(path)
    yield from damage
    yield from structure_problems(path, lines, english, homes)
    yield from sign_problems(path, lines)
    for i, text in english.items():
        for what in window_problems(i, shown(lines[i]), text) if i < len(lines) else ():
            yield at(path, i + 1, what)
