#!/usr/bin/env python3
"""Language files of ProductServices.dll: made from the PO files of translators, and checked."""

import argparse
import collections
import os
import pathlib
import re
import sys

from language_file_check import (TEXT_COUNT, FileError, at, file_problems, is_read_only, read_bytes, read_lines, shown,
                                 structure_problems, text_problems)

try:
    import polib
except ImportError:
    sys.exit("language_files: Python's polib is missing; install Debian's python3-polib, or: pip install polib")

HERE = pathlib.Path(__file__).resolve().parent
CODES = {"en": "EN", "cs": "CZ", "de": "DE", "es": "ES", "fr": "FR", "it": "IT", "ja": "JA", "pl": "PL", "ru": "RU",
         "zh_TW": "TW", "zh_HK": "TW", "zh_Hant": "TW", "zh_CN": "ZH", "zh_Hans": "ZH", "en_US": "US"}
EPILOG = """\
Translators need build alone, makers check, too; what gettext has is left to it: msgfmt -c, msgmerge.
A file that is there already and differs stays as it is without --overwrite.
Exit status: 0 all is well, 1 something is wrong, 2 wrong usage."""


def write_bytes(path, data, overwrite):
    """Replaces the file as a whole; what differs from `data` is replaced only where the user said so."""
    if path.exists():
        if read_bytes(path) == data:
            return
        if not overwrite:
            raise FileError(f"{path} is there already and differs; --overwrite replaces it.")
        if is_read_only(path):
            raise FileError(f"{path} is read-only.")
    new = path.with_name(path.name + ".new")
    try:
        path.parent.mkdir(parents=True, exist_ok=True)
        new.write_bytes(data)
        os.replace(new, path)
    except OSError as error:
        if new.exists():
            new.unlink()
        raise FileError(f"{path} cannot be written: {error.strerror}.") from error


def read_po(path):
    """The entries of a PO file or template that are in use."""
    data = read_bytes(path)
    try:
        data.decode("utf-8")
        entries = polib.pofile(str(path), encoding="utf-8-sig")
    except UnicodeDecodeError as error:
        raise FileError(at(path, data[:error.start].count(b"\n") + 1, "this is not UTF-8")) from error
    except (OSError, ValueError, IndexError) as error:
        line = re.search(r"\(line (\d+)\)", str(error))
        raise FileError(at(path, line[1] if line else 1, "this is not PO")) from error
    charset = re.search(r"charset=(\S+)", entries.metadata.get("Content-Type", "charset=UTF-8"))
    if charset and charset[1].upper() not in ("UTF-8", "CHARSET"):
        raise FileError(at(path, 1, f"the header says {charset[1]}; save the file as UTF-8"))
    entries, rows = [entry for entry in entries if not entry.obsolete], data.splitlines()
    for entry in entries:  # polib has the line of an entry's comments
        while entry.linenum < len(rows) and not rows[entry.linenum - 1].lstrip().startswith(b"msg"):
            entry.linenum += 1
    if not entries:
        raise FileError(at(path, 1, "this is not PO, or holds no texts"))
    return entries


def read_english(template):
    """The English texts of the template by their ids."""
    english = {}
    for entry in read_po(template):
        if not re.fullmatch("[0-9]{1,2}", entry.msgctxt or "") or int(entry.msgctxt) >= TEXT_COUNT:
            raise FileError(at(template, entry.linenum, f"msgctxt is no text id from 0 to {TEXT_COUNT - 1}"))
        english[int(entry.msgctxt)] = entry.msgid
    return english


def read_translation(path, english):
    """The texts of a PO file by their ids, English where there is no translation, and what is wrong with them."""
    texts, lines, problems = dict(english), {}, []
    for entry in read_po(path):
        line = entry.linenum
        if entry.msgctxt not in map(str, english):
            raise FileError(at(path, line, f'msgctxt "{entry.msgctxt or ""}" is the id of no text'))
        text_id = int(entry.msgctxt)
        if text_id in lines:
            raise FileError(at(path, line, f"text {text_id} is in line {lines[text_id]} already"))
        if entry.msgid != english[text_id]:
            raise FileError(at(path, line, f'text {text_id} is "{english[text_id]}" in English, not "{entry.msgid}"; '
                               "msgmerge brings the file up to date"))
        lines[text_id] = line
        if entry.translated():
            texts[text_id] = entry.msgstr
            problems += [at(path, line, what) for what in text_problems(text_id, entry.msgstr, english[text_id])]
    return texts, problems


def known_texts(path, english, folder):
    """Where texts belong: the English ones, and those of the file's language in the PO file beside the template."""
    homes = collections.defaultdict(set)
    code = re.fullmatch(r"Vemo_(\w\w)\.lang", path.name)
    files = [po for po in folder.glob("*.po") if code and CODES.get(po.stem) == code[1]]
    for texts in [english, *(read_translation(po, english)[0] for po in files)]:
        for text_id, text in texts.items():
            homes[text.replace("\n", "|")].add(text_id)
    return homes


def check_file(path, english, folder):
    try:
        if path.suffix == ".po":
            return read_translation(path, english)[1]
        return list(file_problems(path, english, known_texts(path, english, folder)))
    except FileError as error:
        return [str(error)]


def check(options):
    """A folder stands for the language files below it."""
    english = read_english(options.template)
    problems = []
    for path in options.files:
        found = sorted(path.rglob("Vemo_*.lang")) if path.is_dir() else [path]
        if not found:
            problems.append(f"{path} is a folder without language files.")
        for each in found:
            problems += check_file(each, english, options.template.parent)
    return problems


def code_of(path):
    """The language code of a PO file, from its name: fr.po and fr_CA.po are both for FR."""
    name = path.stem.replace("-", "_")
    code = CODES.get(name) or CODES.get(name.split("_")[0])
    if not code:
        raise FileError(f"{path} is for no language that a host can ask for; these are {', '.join(CODES)}.")
    return code


def build(options):
    english = read_english(options.template)
    made, problems = {}, []
    for path in options.files:
        texts, found = read_translation(path, english)
        problems += found
        code = code_of(path)
        if code in made:
            raise FileError(f"{path} is one translation too many for {code}.")
        lines = [texts.get(i, f"(reserved {i})").replace("\n", "|") for i in range(TEXT_COUNT)]
        made[code] = "\n".join(lines).encode("utf-16-le")
    for code, data in made.items() if not problems else ():
        write_bytes(options.into / code / f"Vemo_{code}.lang", data, options.overwrite)
    return problems


def po_bytes(entries, language=""):
    file = polib.POFile(wrapwidth=110)
    file.header = "Texts of the update check and the upgrade center."
    file.metadata = {"Project-Id-Version": "ProductServices", "Language": language, "MIME-Version": "1.0",
                     "Content-Type": "text/plain; charset=UTF-8", "Content-Transfer-Encoding": "8bit"}
    file.extend(entries)
    return f"{file}".encode("utf-8")


def import_file(options):
    """What an editor may have added is left away: byte-order mark, carriage returns, last line feed."""
    entries, english = read_po(options.template), read_english(options.template)
    code_of(options.target)
    lines, problems = read_lines(options.source)
    if lines[TEXT_COUNT:] in ([""], ["\r"]):
        lines.pop()
    homes = known_texts(options.source, english, options.template.parent)
    problems += structure_problems(options.source, lines, english, homes)
    if not problems:
        for entry in entries:
            text = shown(lines[int(entry.msgctxt)])
            entry.msgstr = "" if text == entry.msgid else text
        write_bytes(options.target, po_bytes(entries, options.target.stem), options.overwrite)
    return problems


def built_in_entries(sources):
    """An entry for each built-in text that is shown, from the library's sources."""
    names, table = (read_bytes(sources / name).decode("utf-8").replace("\r", "")
                    for name in ("text_ids.h", "default_texts.cpp"))
    texts = dict(re.findall(r'\{text_ids::(\w+),\s*L"((?:[^"\\]|\\.)*)"\}', table))
    ids = re.findall(r"((?:^/// .*\n)+)inline constexpr TextId (\w+) = (\d+);", names, re.MULTILINE)
    if not len(texts) == len(ids) == names.count("constexpr") or {name for _, name, _ in ids} != set(texts):
        raise FileError(f"{sources}: text_ids.h and default_texts.cpp differ in their texts, or a comment is missing.")
    for comment, name, text_id in ids:
        if not comment.startswith("/// Not shown"):
            yield polib.POEntry(msgctxt=text_id, msgid=polib.unescape(texts[name]), flags=["c-format"],
                                comment=comment.replace("/// ", "").strip())


def make_template(options):
    write_bytes(options.target, po_bytes(built_in_entries(options.sources)), options.overwrite)
    return []


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__, epilog=EPILOG, allow_abbrev=False,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    english = HERE.parent / "languages" / "product_services.pot"
    for name, action, text, arguments in (
            ("build", build, "makes lang/FR/Vemo_FR.lang of fr.po", ("files FILE.po",)),
            ("check", check, "says what a user would see wrong", ("files FILE.lang|FILE.po|FOLDER",)),
            ("import", import_file, "makes a PO file of a language file", ("source FILE.lang", "target FILE.po")),
            ("template", make_template, "writes the built-in texts' template", ("target FILE.pot",))):
        command = commands.add_parser(name, help=text, description=text, allow_abbrev=False)
        command.set_defaults(action=action)
        for argument, metavar in map(str.split, arguments):
            command.add_argument(argument, type=pathlib.Path, metavar=metavar,
                                 nargs="+" if argument == "files" else None)
        if name == "template":
            command.add_argument("--sources", type=pathlib.Path, default=HERE.parent / "src" / "text", metavar="FOLDER")
        else:
            command.add_argument("--template", type=pathlib.Path, default=english, metavar="FILE.pot",
                                 help="the English texts (%(default)s)")
        if name == "build":
            command.add_argument("--into", type=pathlib.Path, default=pathlib.Path("lang"), metavar="FOLDER",
                                 help="(%(default)s)")
        if name != "check":
            command.add_argument("--overwrite", action="store_true", help="replace files that are there and differ")
    return parser.parse_args()


def main():
    options = parse_options()
    sys.stdout.reconfigure(errors="backslashreplace")  # for consoles of Windows
    try:
        problems = options.action(options)
    except FileError as error:
        problems = [error]
    for sentence in problems:
        print(sentence)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
