#!/usr/bin/env python3
"""Replaces the sample family's names in the package's text files with those of the family that is packaged. The sources
use the sample's names so that they can be read and run as they are.

    brand_package.py SAMPLE FAMILY FOLDER   every text file of the unpacked package in FOLDER

SAMPLE and FAMILY are product_family.json files. A link to a file that is not in the package becomes plain text."""

import json
import pathlib
import re
import sys
import urllib.parse
import uuid
import xml.sax.saxutils

from product_family import FamilyError, read_family

NAMES = "maker", "package_id", "product"
LINK = re.compile(r"\[([^]]+)\]\(([^)\s]+)\)")
# A block of code with its language, or code within a line.
CODE = re.compile(r"^```(\w*)\n.*?^```$|`[^`]*`", re.MULTILINE | re.DOTALL)


def family_strings(family):
    address, path = family["service_base_address"], family["record_registry_path"]
    return [address, urllib.parse.urlsplit(address).netloc, path, path.rpartition("\\")[0] or path,
            *family["known_api_keys"], *(family[name] for name in NAMES)]


def replacements(sample, family):
    """Returns pairs of a string of the sample and the corresponding string of the family."""
    if family == sample:
        return []
    # The names of other products, and the key of the installed product.
    others = [("Example ", f"{family['maker']} "), ("DRAFT-2026-DEMO", "DEMO-2026")]
    return [*zip(family_strings(sample), family_strings(family)), *others]


def escape_c(text):
    """For C and C++, independent of the encoding of the source. ?? may begin a trigraph."""
    text = re.sub(r'["\\?]', r"\\\g<0>", text)
    return re.sub(r"[^ -~]", lambda found: f"\\u{ord(found[0]):04x}" if found[0] < "\U00010000" else
                  f"\\U{ord(found[0]):08x}", text)


def escape_json(text):
    return json.dumps(text, ensure_ascii=False)[1:-1]


def escape_pascal(text):
    """For a quoted string. Other characters than ASCII become numbers outside of the quotes, which do not depend on the
    encoding of the source."""
    def number(characters):
        return "'" + re.sub("....", r"#$\g<0>", characters[0].encode("utf-16-be").hex()) + "'"
    return re.sub(r"[^ -~]+", number, text.replace("'", "''"))


def escape_wix(text):
    """For the value of an attribute; $( would begin a variable."""
    return xml.sax.saxutils.escape(text.replace("$(", "$$("), {'"': "&quot;"})


def escape_inno(text):
    """For a quoted string; { would begin a constant."""
    return text.replace('"', '""').replace("{", "{{")


def escape_nsis(text):
    """For a quoted string; $ would begin a variable."""
    return text.replace("$", "$$").replace('"', '$\\"')


def escape_markdown(text):
    """For Markdown outside of code: puts a backslash before characters that have a meaning."""
    return re.sub(r"\\(?=[!-/:-@[-`{-~]|$)|[*`\[\]<]|(?<!\w)_|_(?!\w)|&(?=#?\w+;)", r"\\\g<0>", text)


def substitute(text, pairs, escape=str):
    """Replaces in one pass, so that replacements are not replaced again."""
    news = {escape(old): escape(new) for old, new in pairs}
    olds = "|".join(map(re.escape, sorted(news, key=len, reverse=True)))
    return re.sub(olds, lambda found: news[found[0]], text) if news else text


def brand_markdown(text, pairs):
    filled, end = "", 0
    for code in CODE.finditer(text):
        filled += substitute(text[end:code.start()], pairs, escape_markdown)
        filled += substitute(code[0], pairs, escape_c if code[1] == "cpp" else str)
        end = code.end()
    return fix_content_length(filled + substitute(text[end:], pairs, escape_markdown))


def fix_content_length(text):
    """Corrects the Content-Length of a complete request in a document."""
    return re.sub(r"(?m)^Content-Length: \d+((?:\n.+)*\n\n)(api_key=.*)$",
                  lambda found: f"Content-Length: {len(found[2].encode())}{found[1]}{found[2]}", text)


def derive_guids(text, family):
    """Replaces an installer's GUIDs. If two vendors shared them, removing one product would break the other."""
    def derive(guid):
        return f'{guid[1]}="{str(uuid.uuid5(uuid.UUID(guid[2]), family["package_id"])).upper()}"'
    return re.sub(r'(Guid|UpgradeCode)="([0-9A-F-]{36})"', derive, text)


def unlink_missing(text, folder):
    def replace(link):
        exists = "://" in link[2] or (folder / link[2].partition("#")[0]).exists()
        return link[0] if exists else link[1]
    return LINK.sub(replace, text)


# In translations, only comments name a product.
ESCAPES = {**dict.fromkeys((".c", ".cpp", ".h", ".hpp"), escape_c),
           **dict.fromkeys((".cs", ".go", ".json", ".php", ".py", ".rs"), escape_json),
           **dict.fromkeys((".po", ".pot", ".txt"), str),
           ".pas": escape_pascal, ".wxs": escape_wix, ".wxi": escape_wix, ".iss": escape_inno, ".nsi": escape_nsis}


def main(sample_file, family_file, folder):
    try:
        sample, family = read_family(sample_file), read_family(family_file)
    except FamilyError as error:
        sys.exit(str(error))
    for name in NAMES:
        if family != sample and family[name] == sample[name]:
            sys.exit(f"{family_file}: {name} still has the sample's value; set your own.")
    pairs = replacements(sample, family)
    for path in sorted(pathlib.Path(folder).rglob("*")):
        if "licenses" in path.parts:
            continue
        if path.suffix == ".md":
            text = brand_markdown(unlink_missing(path.read_text("utf-8"), path.parent), pairs)
        elif path.suffix in ESCAPES:
            text = substitute(path.read_text("utf-8"), pairs, ESCAPES[path.suffix])
            if path.suffix in (".wxs", ".wxi") and family != sample:
                text = derive_guids(text, family)
        else:
            continue
        path.write_text(text, "utf-8", newline="")


if __name__ == "__main__":
    main(*sys.argv[1:])
