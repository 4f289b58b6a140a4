#!/usr/bin/env python3
"""Makes the texts of the package those of its product family. In the sources they name the sample family, and so can
be read and tried there; its texts stand for those of any other.

    family_texts.py SAMPLE FAMILY FOLDER   every text file of the unpacked package in FOLDER

SAMPLE and FAMILY are files product_family.json. A link to what is not in the package becomes plain text."""

import json
import pathlib
import re
import sys
import urllib.parse
import uuid
import xml.sax.saxutils

NAMES = "maker", "package_id", "product"
LINK = re.compile(r"\[([^]]+)\]\(([^)\s]+)\)")
# A block of code with its language, or code within a line.
CODE = re.compile(r"^```(\w*)\n.*?^```$|`[^`]*`", re.MULTILINE | re.DOTALL)


def read_family(path):
    return json.loads(path.read_text("utf-8-sig"))


def texts_of(family):
    address, path = family["service_base_address"], family["record_registry_path"]
    return [address, urllib.parse.urlsplit(address).netloc, path, path.rpartition("\\")[0] or path,
            *family["known_api_keys"], *(family[name] for name in NAMES)]


def pairs_of(sample, family):
    """The sample's texts, each with what another family has in its place."""
    if family == sample:
        return []
    # The names of further products, and the key of the installed one.
    further = [("Example ", f"{family['maker']} "), ("DRAFT-2026-DEMO", "DEMO-2026")]
    return [*zip(texts_of(sample), texts_of(family)), *further]


def in_c(text):
    """For any C or C++ and any encoding of its source. ?? may begin a trigraph."""
    text = re.sub(r'["\\?]', r"\\\g<0>", text)
    return re.sub(r"[^ -~]", lambda sign: f"\\u{ord(sign[0]):04x}" if sign[0] < "\U00010000" else
                  f"\\U{ord(sign[0]):08x}", text)


def in_json(text):
    return json.dumps(text, ensure_ascii=False)[1:-1]


def in_pascal(text):
    """For a text in quotes; what is not ASCII goes outside of them, by number, for any encoding of the source."""
    def number(signs):
        return "'" + re.sub("....", r"#$\g<0>", signs[0].encode("utf-16-be").hex()) + "'"
    return re.sub(r"[^ -~]+", number, text.replace("'", "''"))


def in_wix(text):
    """For an attribute's value; $( would begin a variable."""
    return xml.sax.saxutils.escape(text.replace("$(", "$$("), {'"': "&quot;"})


def in_inno(text):
    """For a text in quotes; { would begin a constant."""
    return text.replace('"', '""').replace("{", "{{")


def in_nsis(text):
    """For a text in quotes; $ would begin a variable."""
    return text.replace("$", "$$").replace('"', '$\\"')


def in_prose(text):
    """For Markdown outside code: a backslash before what would mean something there."""
    return re.sub(r"\\(?=[!-/:-@[-`{-~]|$)|[*`\[\]<]|(?<!\w)_|_(?!\w)|&(?=#?\w+;)", r"\\\g<0>", text)


def fill_text(text, pairs, escape=str):
    """In one go, so that what is filled in stays as it is."""
    news = {escape(old): escape(new) for old, new in pairs}
    olds = "|".join(map(re.escape, sorted(news, key=len, reverse=True)))
    return re.sub(olds, lambda found: news[found[0]], text) if news else text


def fill_markdown(text, pairs):
    filled, end = "", 0
    for code in CODE.finditer(text):
        filled += fill_text(text[end:code.start()], pairs, in_prose)
        filled += fill_text(code[0], pairs, in_c if code[1] == "cpp" else str)
        end = code.end()
    return count_body(filled + fill_text(text[end:], pairs, in_prose))


def count_body(text):
    """The request that a document shows in full is as long as it says."""
    return re.sub(r"(?m)^Content-Length: \d+((?:\n.+)*\n\n)(api_key=.*)$",
                  lambda found: f"Content-Length: {len(found[2].encode())}{found[1]}{found[2]}", text)


def own_guids(text, family):
    """An installer's identifiers, which no other maker's may share: removing one product would leave files of both."""
    def own(guid):
        return f'{guid[1]}="{str(uuid.uuid5(uuid.UUID(guid[2]), family["package_id"])).upper()}"'
    return re.sub(r'(Guid|UpgradeCode)="([0-9A-F-]{36})"', own, text)


def drop_links(text, folder):
    def replace(link):
        is_there = "://" in link[2] or (folder / link[2].partition("#")[0]).exists()
        return link[0] if is_there else link[1]
    return LINK.sub(replace, text)


# Comments of translations alone name a product.
ESCAPES = {**dict.fromkeys((".c", ".cpp", ".h", ".hpp"), in_c),
           **dict.fromkeys((".cs", ".go", ".json", ".py", ".rs"), in_json),
           **dict.fromkeys((".po", ".pot", ".txt"), str),
           ".pas": in_pascal, ".wxs": in_wix, ".iss": in_inno, ".nsi": in_nsis}


def main(sample_file, family_file, folder):
    sample, family = read_family(pathlib.Path(sample_file)), read_family(pathlib.Path(family_file))
    for name in NAMES:
        if family != sample and family[name] == sample[name]:
            sys.exit(f"{family_file}: {name} must be your own, and is still the sample's.")
    pairs = pairs_of(sample, family)
    for path in sorted(pathlib.Path(folder).rglob("*")):
        if "licenses" in path.parts:
            continue
        if path.suffix == ".md":
            text = fill_markdown(drop_links(path.read_text("utf-8"), path.parent), pairs)
        elif path.suffix in ESCAPES:
            text = fill_text(path.read_text("utf-8"), pairs, ESCAPES[path.suffix])
            if path.suffix == ".wxs" and family != sample:
                text = own_guids(text, family)
        else:
            continue
        path.write_text(text, "utf-8", newline="")


if __name__ == "__main__":
    main(*sys.argv[1:])
