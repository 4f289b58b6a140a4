#!/usr/bin/env python3
"""Makes the texts of the package those of its product family. In the sources they name the sample family, and so can
be read and tried there; its texts stand for those of any other.

    family_texts.py pairs PAIRS SAMPLE FAMILY NAME ID PRODUCT   from the sections .family of family_values.cpp
    family_texts.py fill PAIRS FOLDER                           every text file of the unpacked package

A link to what is not in the package becomes plain text."""

import json
import pathlib
import re
import sys
import urllib.parse
import xml.sax.saxutils

SAMPLE_NAMES = "Example Maker", "ExampleMaker.ProductServices", "Example Draft"
TEXTS = 2 + 6
LINK = re.compile(r"\[([^]]+)\]\(([^)\s]+)\)")


def in_c(text):
    text = re.sub(r'["\\]', r"\\\g<0>", text)
    return re.sub(r"[^ -~]", lambda sign: f"\\u{ord(sign[0]):04x}" if sign[0] < "\U00010000" else
                  f"\\U{ord(sign[0]):08x}", text)


def in_json(text):
    return json.dumps(text)[1:-1]


ESCAPES = {**dict.fromkeys((".c", ".cpp", ".h", ".hpp"), in_c), ".json": in_json, ".wxs": xml.sax.saxutils.escape,
           **dict.fromkeys((".md", ".py", ".po", ".pot", ".txt", ".iss", ".nsi"), str)}


def texts_of(values, names):
    # The section may be filled up behind the last of them.
    address, path, *keys = pathlib.Path(values).read_bytes().decode("utf-16-le").split("\0")[:TEXTS]
    return [address, urllib.parse.urlsplit(address).netloc, path, path.rpartition("\\")[0] or path, *keys, *names]


def write_pairs(file, sample, family, *names):
    pairs = list(zip(texts_of(sample, SAMPLE_NAMES), texts_of(family, names)))
    if any(old != new for old, new in pairs):
        # The names of further products, and the key of the installed one.
        pairs += [("Example ", f"{names[0]} "), ("DRAFT-2026-DEMO", "DEMO-2026")]
    file.write_text(json.dumps(pairs), "utf-8")


def fill_text(text, pairs, escape=str):
    """In one go, so that what is filled in stays as it is. A C text within a document is escaped as in C."""
    news = {escape(old): new for old, new in pairs}
    olds = "|".join(map(re.escape, sorted(news, key=len, reverse=True)))
    return re.sub(f'(L")?({olds})', lambda found: (found[1] or "") + (
        in_c if found[1] else escape)(news[found[2]]), text)


def count_body(text):
    """The request that a document shows in full is as long as it says."""
    return re.sub(r"(?m)^Content-Length: \d+((?:\n.+)*\n\n)(api_key=.*)$",
                  lambda found: f"Content-Length: {len(found[2].encode())}{found[1]}{found[2]}", text)


def drop_link(path):
    def replace(link):
        is_there = "://" in link[2] or (path.parent / link[2].partition("#")[0]).exists()
        return link[0] if is_there else link[1]
    return replace


def fill_folder(folder, pairs):
    unnamed = [old for old, new in pairs if old in SAMPLE_NAMES and old == new]
    if unnamed and any(old != new for old, new in pairs):
        sys.exit(f"family_texts.py: this is another family's package, and {unnamed[0]} the sample's name: give yours "
                 "with -DPRODUCT_FAMILY_NAME, -DPRODUCT_FAMILY_ID and -DPRODUCT_FAMILY_PRODUCT.")
    for path in sorted(folder.rglob("*")):
        if path.suffix in ESCAPES and "licenses" not in path.parts:
            text = fill_text(path.read_text("utf-8"), pairs, ESCAPES[path.suffix])
            if path.suffix == ".md":
                text = LINK.sub(drop_link(path), count_body(text))
            path.write_text(text, "utf-8", newline="")


def main(command, pairs, *arguments):
    pairs = pathlib.Path(pairs)
    if command == "pairs":
        write_pairs(pairs, *arguments)
    else:
        fill_folder(pathlib.Path(*arguments), json.loads(pairs.read_text("utf-8")))


if __name__ == "__main__":
    main(*sys.argv[1:])
