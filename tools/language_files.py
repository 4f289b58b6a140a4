#!/usr/bin/env python3
"""Builds the language files of ProductServices.dll from translators' PO files, and checks them."""

import argparse
import collections
import os
import pathlib
import re
import sys

from language_file_check import (TEXT_COUNT, FileError, displayed_text, file_problems, is_read_only, located,
                                 read_bytes, read_lines, structure_problems, text_and_width_problems, text_problems)
from po_file import new_entry, read_po, require_polib, serialize_po

HERE = pathlib.Path(__file__).resolve().parent
TEMPLATE = HERE.parent / "languages" / "product_services.pot"
# The language code for the name of a PO file. A header "X-Language-Code: US" overrides it, and --code overrides both.
CODES = {"en": "EN", "cs": "CZ", "de": "DE", "es": "ES", "fr": "FR", "it": "IT", "ja": "JA", "pl": "PL", "ru": "RU",
         "zh_TW": "TW", "zh_HK": "TW", "zh_Hant": "TW", "zh_CN": "ZH", "zh_Hans": "ZH", "en_US": "US"}
EPILOG = """\
Translators need only build, vendors also need check. For everything else there is gettext: msgfmt -c, msgmerge.
Files that already exist and differ are not replaced without --force.
Exit status: 0 success, 1 a problem was found, 2 invalid usage."""


def refuse_overwrite(path, data, force):
    """Raises FileError if the file exists with other content and must not be replaced."""
    if not path.exists() or read_bytes(path) == data:
        return
    if not force:
        raise FileError(f"{path} already exists and differs; use --force to replace it.")
    if is_read_only(path):
        raise FileError(f"{path} is read-only.")


def write_files(files, force):
    """Replaces each file as a whole. Writes none if one of them must not be replaced."""
    for path, data in files.items():
        refuse_overwrite(path, data, force)
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
    """Returns the English texts of the template by their ids."""
    english = {}
    for entry in read_po(template):
        if not re.fullmatch("[0-9]{1,2}", entry.msgctxt or "") or int(entry.msgctxt) >= TEXT_COUNT:
            raise FileError(located(template, entry.linenum, f"msgctxt must be a text id from 0 to {TEXT_COUNT - 1}"))
        english[int(entry.msgctxt)] = entry.msgid
    return english


def validate_entry(path, entry, english, earlier):
    """Returns the text id of an entry. Raises FileError if it does not match the template."""
    line = entry.linenum
    if entry.msgctxt not in map(str, english):
        raise FileError(located(path, line, f"unknown text id {entry.msgctxt or '(none)'} in msgctxt"))
    text_id = int(entry.msgctxt)
    if text_id in earlier:
        raise FileError(located(path, line, f"text {text_id} already appears in line {earlier[text_id].linenum}"))
    if entry.msgid != english[text_id]:
        raise FileError(located(path, line, f'text {text_id} is "{english[text_id]}" in English, not "{entry.msgid}"; '
                                "update the file with msgmerge"))
    return text_id


def read_translation(path, english):
    """Returns the entries of a PO file by their text ids. Raises FileError if they do not match the template."""
    entries = {}
    for entry in read_po(path):
        entries[validate_entry(path, entry, english, entries)] = entry
    return entries


def translated_texts(entries, english):
    """Returns the texts by their ids, in English if there is no translation."""
    texts = dict(english)
    for text_id, entry in entries.items():
        if entry.translated():
            texts[text_id] = entry.msgstr
    return texts


def translation_problems(path, entries, english, check_width=False):
    check = text_and_width_problems if check_width else text_problems
    problems = []
    for text_id, entry in entries.items():
        if entry.translated():
            problems += [located(path, entry.linenum, problem)
                         for problem in check(text_id, entry.msgstr, english[text_id])]
    missing = [str(text_id) for text_id in english if text_id not in entries]
    if missing:
        problems.append(f"{path} lacks the texts {', '.join(missing)}: it is truncated, or must be updated with "
                        "msgmerge.")
    return problems


def load_known_texts(path, english, folder):
    """Returns the text ids of the English texts, and of those in the file's language in the template's folder."""
    known = [english]
    code = re.fullmatch(r"Vemo_(\w\w)\.lang", path.name)
    for po_file in folder.glob("*.po"):
        if code and CODES.get(po_file.stem) == code[1]:
            known.append(translated_texts(read_translation(po_file, english), english))
    expected_ids = collections.defaultdict(set)
    for texts in known:
        for text_id, text in texts.items():
            expected_ids[text.replace("\n", "|")].add(text_id)
    return expected_ids


def check_file(path, english, folder):
    try:
        if path.suffix == ".po":
            return translation_problems(path, read_translation(path, english), english, check_width=True)
        return list(file_problems(path, english, load_known_texts(path, english, folder)))
    except FileError as error:
        return [str(error)]


def check(options):
    """Checks files, and all language files in folders."""
    english = read_english(options.template)
    problems = []
    for path in options.files:
        files = sorted(path.rglob("Vemo_*.lang")) if path.is_dir() else [path]
        if not files:
            problems.append(f"{path} contains no language files.")
        for file in files:
            problems += check_file(file, english, options.template.parent)
    return problems


def language_code(path, code=None):
    """Returns the code of a PO file, which is `code` if given. fr.po and fr_CA.po both have FR."""
    name = path.stem.replace("-", "_")
    code = code or CODES.get(name) or CODES.get(name.split("_")[0])
    if code not in CODES.values():
        raise FileError(f"{path}: no language code for this file name. Known: {', '.join(CODES)}. Build any other "
                        "language with --code US, the fallback for unknown ids.")
    return code


def build(options):
    english = read_english(options.template)
    sources, outputs, problems = {}, {}, []
    for path in options.files:
        entries = read_translation(path, english)
        problems += translation_problems(path, entries, english)
        code = language_code(path, options.code or read_po(path).metadata.get("X-Language-Code"))
        if code in sources:
            raise FileError(f"{sources[code]} and {path} both have the code {code}; use only one of them.")
        sources[code] = path
        texts = translated_texts(entries, english)
        lines = [texts.get(i, f"(reserved {i})").replace("\n", "|") for i in range(TEXT_COUNT)]
        outputs[options.output / code / f"Vemo_{code}.lang"] = "\n".join(lines).encode("utf-16-le")
    if not problems:
        write_files(outputs, options.force)
    return problems


def import_file(options):
    """Ignores what an editor may have added: a byte-order mark, carriage returns and a final line feed."""
    entries, english = read_po(options.template), read_english(options.template)
    code = "US" if options.source.name == "Vemo_US.lang" else None
    language_code(options.target, code)
    lines, problems = read_lines(options.source)
    if lines[TEXT_COUNT:] in ([""], ["\r"]):
        lines.pop()
    expected_ids = load_known_texts(options.source, english, options.template.parent)
    problems += structure_problems(options.source, lines, english, expected_ids)
    if not problems:
        for entry in entries:
            text = displayed_text(lines[int(entry.msgctxt)])
            entry.msgstr = "" if text == entry.msgid else text
        write_files({options.target: serialize_po(entries, options.target.stem, code)}, options.force)
    return problems


def read_source(path):
    return read_bytes(path).decode("utf-8").replace("\r", "")


def built_in_entries(sources):
    """Yields an entry for each built-in text that is displayed, from the sources of the library."""
    ids_header, table = read_source(sources / "text_ids.h"), read_source(sources / "default_texts.cpp")
    texts = dict(re.findall(r'\{text_ids::(\w+),\s*L"((?:[^"\\]|\\.)*)"\}', table))
    declarations = re.findall(r"((?:^/// .*\n)+)inline constexpr TextId (\w+) = (\d+);", ids_header, re.MULTILINE)
    if len(declarations) != ids_header.count("constexpr"):
        raise FileError(f"{sources / 'text_ids.h'}: a text id has no comment.")
    if {name for _, name, _ in declarations} != set(texts):
        raise FileError(f"{sources}: text_ids.h and default_texts.cpp do not have the same texts.")
    for comment, name, text_id in declarations:
        if not comment.startswith("/// Not shown"):
            yield new_entry(text_id, texts[name], comment.replace("/// ", "").strip())


def update_template(options):
    write_files({options.target: serialize_po(built_in_entries(options.sources))}, options.force)
    return []


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__, epilog=EPILOG, allow_abbrev=False,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(required=True, metavar="COMMAND")

    def add_command(name, action, description):
        command = commands.add_parser(name, help=description, description=description, allow_abbrev=False)
        command.set_defaults(action=action)
        return command

    def add_path(command, name, metavar, **properties):
        command.add_argument(name, type=pathlib.Path, metavar=metavar, **properties)

    def add_template(command):
        add_path(command, "--template", "FILE.pot", default=TEMPLATE, help="the English texts (default: %(default)s)")

    def add_force(command):
        command.add_argument("--force", action="store_true", help="replace existing files that differ")

    command = add_command("build", build, "build lang/FR/Vemo_FR.lang from fr.po")
    add_path(command, "files", "FILE.po", nargs="+")
    add_template(command)
    add_path(command, "--output", "FOLDER", default=pathlib.Path("lang"), help="(default: %(default)s)")
    command.add_argument("--code", metavar="CODE", choices=sorted(set(CODES.values())),
                         help="the language code, such as US for a language without a code")
    add_force(command)

    command = add_command("check", check, "report problems that a user would see")
    add_path(command, "files", "FILE.lang|FILE.po|FOLDER", nargs="+")
    add_template(command)

    command = add_command("import", import_file, "convert a language file to a PO file")
    add_path(command, "source", "FILE.lang")
    add_path(command, "target", "FILE.po")
    add_template(command)
    add_force(command)

    command = add_command("update-template", update_template, "write the template of the built-in texts")
    add_path(command, "target", "FILE.pot")
    add_path(command, "--sources", "FOLDER", default=HERE.parent / "src" / "text")
    add_force(command)
    return parser.parse_args()


def main():
    options = parse_options()
    sys.stdout.reconfigure(errors="backslashreplace")  # for consoles on Windows
    try:
        require_polib()
        problems = options.action(options)
    except FileError as error:
        problems = [error]
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
