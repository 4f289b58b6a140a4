#!/usr/bin/env python3
"""Language files of ProductServices.dll: made from the PO files of translators, and checked."""

import argparse
import collections
import os
import pathlib
import re
import sys

from language_file_check import (TEXT_COUNT, FileError, at, file_problems, is_read_only, read_bytes, read_lines, shown,
                                 structure_problems, text_problems, window_problems)
from po_file import new_entry, po_bytes, read_po, require_polib

HERE = pathlib.Path(__file__).resolve().parent
# The code of a PO file by its name; a header "X-Language-Code: US" in it wins, and --as over both.
CODES = {"en": "EN", "cs": "CZ", "de": "DE", "es": "ES", "fr": "FR", "it": "IT", "ja": "JA", "pl": "PL", "ru": "RU",
         "zh_TW": "TW", "zh_HK": "TW", "zh_Hant": "TW", "zh_CN": "ZH", "zh_Hans": "ZH", "en_US": "US"}
EPILOG = """\
Translators need build alone, makers check, too; what gettext has is left to it: msgfmt -c, msgmerge.
A file that is there already and differs stays as it is without --overwrite.
Exit status: 0 all is well, 1 something is wrong, 2 wrong usage."""


def keep_what_is_there(path, data, overwrite):
    """Ends where writing `data` would replace another file without the user's leave."""
    if not path.exists() or read_bytes(path) == data:
        return
    if not overwrite:
        raise FileError(f"{path} is there already and differs; --overwrite replaces it.")
    if is_read_only(path):
        raise FileError(f"{path} is read-only.")


def write_files(files, overwrite):
    """Replaces each file as a whole, and none where one must not be replaced."""
    for path, data in files.items():
        keep_what_is_there(path, data, overwrite)
    for path, data in files.items():
        new = path.with_name(path.name + ".new")
        try:
            path.parent.mkdir(parents=True, exist_ok=True)
            new.write_bytes(data)
            os.replace(new, path)
        except OSError as error:
            if new.exists():
                new.unlink()
            raise FileError(f"{path} cannot be written: {error.strerror}.") from error


def read_english(template):
    """The English texts of the template by their ids."""
    english = {}
    for entry in read_po(template):
        if not re.fullmatch("[0-9]{1,2}", entry.msgctxt or "") or int(entry.msgctxt) >= TEXT_COUNT:
            raise FileError(at(template, entry.linenum, f"msgctxt is no text id from 0 to {TEXT_COUNT - 1}"))
        english[int(entry.msgctxt)] = entry.msgid
    return english


def read_translation(path, english, problems_of=text_problems):
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
            problems += [at(path, line, what) for what in problems_of(text_id, entry.msgstr, english[text_id])]
    missing = [str(text_id) for text_id in english if text_id not in lines]
    if missing:
        problems.append(f"{path} lacks the texts {', '.join(missing)}: the file is cut off, or msgmerge must bring it "
                        "up to date.")
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
            return read_translation(path, english, window_problems)[1]
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


def code_of(path, given=None):
    """The language code of a PO file: what is given, or from its name, where fr.po and fr_CA.po are both for FR."""
    name = path.stem.replace("-", "_")
    code = given or CODES.get(name) or CODES.get(name.split("_")[0])
    if code not in CODES.values():
        raise FileError(f"{path} is for no language that a host can ask for; these are {', '.join(CODES)}. Every other "
                        "one can be built with --as US, which hosts show for ids that they do not know.")
    return code


def build(options):
    english = read_english(options.template)
    sources, made, problems = {}, {}, []
    for path in options.files:
        texts, found = read_translation(path, english)
        problems += found
        code = code_of(path, options.code or read_po(path).metadata.get("X-Language-Code"))
        if code in sources:
            raise FileError(f"{sources[code]} and {path} are both for {code}, for which hosts find one file; choose.")
        sources[code] = path
        lines = [texts.get(i, f"(reserved {i})").replace("\n", "|") for i in range(TEXT_COUNT)]
        made[options.into / code / f"Vemo_{code}.lang"] = "\n".join(lines).encode("utf-16-le")
    write_files(made if not problems else {}, options.overwrite)
    return problems


def import_file(options):
    """What an editor may have added is left away: byte-order mark, carriage returns, last line feed."""
    entries, english = read_po(options.template), read_english(options.template)
    code = "US" if options.source.name == "Vemo_US.lang" else None
    code_of(options.target, code)
    lines, problems = read_lines(options.source)
    if lines[TEXT_COUNT:] in ([""], ["\r"]):
        lines.pop()
    homes = known_texts(options.source, english, options.template.parent)
    problems += structure_problems(options.source, lines, english, homes)
    if not problems:
        for entry in entries:
            text = shown(lines[int(entry.msgctxt)])
            entry.msgstr = "" if text == entry.msgid else text
        write_files({options.target: po_bytes(entries, options.target.stem, code)}, options.overwrite)
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
            yield new_entry(text_id, texts[name], comment.replace("/// ", "").strip())


def make_template(options):
    write_files({options.target: po_bytes(built_in_entries(options.sources))}, options.overwrite)
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
            command.add_argument("--as", dest="code", metavar="CODE", choices=sorted(set(CODES.values())),
                                 help="makes the file of another code: US, for a language that no host can ask for")
        if name != "check":
            command.add_argument("--overwrite", action="store_true", help="replace files that are there and differ")
    return parser.parse_args()


def main():
    options = parse_options()
    sys.stdout.reconfigure(errors="backslashreplace")  # for consoles of Windows
    try:
        require_polib()
        problems = options.action(options)
    except FileError as error:
        problems = [error]
    for sentence in problems:
        print(sentence)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
