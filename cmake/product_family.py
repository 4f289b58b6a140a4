"""Reads and checks a product family, for the build and for the packages.

    product_family.py headers FILE FOLDER [--allow-http]   writes headers with the constants in a product_family.json
    product_family.py images FOLDER                        checks the icon and the background pictures
    product_family.py image-files                          prints their names

Prints an error message to stderr and exits with 1 if something cannot be used."""

import argparse
import json
import pathlib
import re
import struct
import sys
import unicodedata
import urllib.parse

STRINGS = "maker", "package_id", "product", "service_base_address", "record_registry_path"
MEMBERS = *STRINGS, "known_api_keys"
OPTIONAL_URLS = "website", "repository"
KEY_COUNT = 6
EXAMPLE = "example: https://updates.example.com"
TEMPLATES = pathlib.Path(__file__).parent / "family"

ICON, ICON_SIZES = "library.ico", (16, 24, 32, 48, 64, 96, 128, 256)
BACKGROUNDS = tuple(f"background_{number}.bmp" for number in (332, 333, 335, 343, 1077))
BACKGROUND_SIZE, BACKGROUND_DEPTH = (726, 463), 24
# Magic number, offset of the pixels, width, height (negative: top-down), bits per pixel, compression.
BITMAP_HEADER = struct.Struct("<2s8xI4xii2xHI")
# Type (1: icon) and number of images. For each image: width (0: 256), bits per pixel, size in bytes and offset.
ICON_HEADER = struct.Struct("<2xHH")
ICON_ENTRY = struct.Struct("<B5xHII")


class FamilyError(Exception):
    """The message says what cannot be used and why."""


def type_name(value):
    names = {dict: "an object", list: "an array", str: "a string", bool: "a boolean", type(None): "null"}
    return names.get(type(value), "a number")


def unique_members(pairs):
    members = {}
    for name, value in pairs:
        if name in members:
            raise FamilyError(f"duplicate member {name}.")
        members[name] = value
    return members


def parse(data):
    """Returns the JSON object in the content of the file."""
    try:
        family = json.loads(data.decode("utf-8-sig"), object_pairs_hook=unique_members)
    except UnicodeDecodeError as error:
        line = data.count(b"\n", 0, error.start) + 1
        raise FamilyError(f"line {line} is not valid UTF-8.") from None
    except json.JSONDecodeError as error:
        raise FamilyError(f"invalid JSON at line {error.lineno}, column {error.colno}: {error.msg}.") from None
    except RecursionError:
        raise FamilyError("invalid JSON: nested too deeply.") from None
    if not isinstance(family, dict):
        raise FamilyError(f"the file must be a single JSON object, but is {type_name(family)}.")
    return family


def check_string(name, value):
    if not isinstance(value, str):
        raise FamilyError(f"{name} must be a string, but is {type_name(value)}.")
    if any(unicodedata.category(character) in ("Cc", "Cs") for character in value):
        raise FamilyError(f"{name} must be valid UTF-8 without control characters.")
    if not value.strip(" "):
        raise FamilyError(f"{name} must not be empty.")


def check_keys(keys):
    if not isinstance(keys, list):
        raise FamilyError(f"known_api_keys must be an array, but is {type_name(keys)}.")
    if len(keys) != KEY_COUNT:
        raise FamilyError(f"known_api_keys must have exactly {KEY_COUNT} entries, but has {len(keys)}.")
    for number, key in enumerate(keys, 1):
        check_string(f"known_api_keys: key {number}", key)
        if max(key) > "\uffff":
            raise FamilyError(
                f"known_api_keys: key {number} contains a character outside the Basic Multilingual Plane.")
        first = keys.index(key) + 1
        if first != number:
            raise FamilyError(f"known_api_keys: keys {first} and {number} are the same.")


def check_service_base_address(address, allow_http):
    name = "service_base_address"
    scheme, separator, rest = address.partition("://")
    if not separator or scheme not in (("https", "http") if allow_http else ("https",)):
        raise FamilyError(f"{name} must be an https URL; {EXAMPLE}.")
    if not rest or rest[0] in ":/?#":
        raise FamilyError(f"{name} has no host; {EXAMPLE}.")
    if address.endswith("/"):
        raise FamilyError(f"{name} must not end with a slash; {EXAMPLE}.")
    label = "[A-Za-z0-9_-]+"
    host = rf"(?:{label}(?:\.{label})*\.?|\[[0-9A-Fa-f:.]+\])"
    path = r"(?:/(?:[A-Za-z0-9._~!$&'()*+,;=:@/-]|%[0-9A-Fa-f]{2})*)?"
    parts = re.fullmatch(rf"{host}(?::([1-9][0-9]*))?{path}", rest)
    if not parts:
        raise FamilyError(f"{name} must consist of a host, a port and a path, without blanks, quotes, umlauts, user "
                          "names, ? or #, and with % only before two hexadecimal digits.")
    if parts[1] and int(parts[1]) > 65535:
        raise FamilyError(f"{name} has an invalid port (1 to 65535).")


def check(family, allow_http):
    expected = ", ".join(MEMBERS)
    for name in family:
        if name not in (*MEMBERS, *OPTIONAL_URLS):
            raise FamilyError(f'unknown member "{name}"; expected {expected}.')
    for name in MEMBERS:
        if name not in family:
            raise FamilyError(f"missing member {name}; expected {expected}.")
    for name in STRINGS:
        check_string(name, family[name])
    check_keys(family["known_api_keys"])
    for name in set(OPTIONAL_URLS) & set(family):
        check_string(name, family[name])
        if not re.fullmatch(r"https://\w[\w.~:/?#@!$&()*+,;=%\[\]-]*", family[name], re.ASCII):
            raise FamilyError(f"{name} must be an https URL without blanks, quotes and umlauts.")
    if not re.fullmatch(r"[A-Za-z0-9]+([.-][A-Za-z0-9]+)*", family["package_id"]):
        raise FamilyError("package_id must consist of letters and digits with single dots or dashes between them.")
    check_service_base_address(family["service_base_address"], allow_http)
    if re.search(r"^[\\ ]|[\\ ]$|\\\\", family["record_registry_path"]):
        raise FamilyError(r"record_registry_path must be a registry path such as Software\Example Maker\Products, with "
                          "single backslashes (in JSON each is written twice), and without a backslash or blank at its "
                          "beginning and end.")


def read_family(path, allow_http=False):
    """Returns the members of a product_family.json. Raises FamilyError, with the path of the file in its message."""
    try:
        family = parse(pathlib.Path(path).read_bytes())
        check(family, allow_http)
    except OSError:
        raise FamilyError(f"{path}: file not found in PRODUCT_FAMILY_DIR.") from None
    except FamilyError as error:
        raise FamilyError(f"{path}: {error}") from None
    return family


def escape_for_rc(text):
    """Returns the text for use within L"..." in a resource script. Most characters become hexadecimal UTF-16 escapes,
    which do not depend on a code page or locale."""
    units = struct.unpack(f"<{len(text.encode('utf-16-le')) // 2}H", text.encode("utf-16-le"))
    return "".join(chr(unit) if re.fullmatch("[A-Za-z0-9 .,:/_-]", chr(unit)) else f"\\x{unit:04x}" for unit in units)


def escape_for_cpp(text):
    """Returns the text for use within L"..." in C++, where a hexadecimal escape ends only with the literal."""
    return re.sub(r"\\x....", r'\g<0>" L"', escape_for_rc(text))


def policy_registry_path(family):
    """Where administrators disable calls, below both hives."""
    return rf"Software\Policies\{family['maker']}\{family['package_id']}"


def write_headers(family, folder):
    address = family["service_base_address"]
    values = {
        "MAKER": escape_for_rc(family["maker"]),
        "PACKAGE_ID": family["package_id"],
        "PRODUCT": escape_for_cpp(family["product"]),
        "SERVICE_BASE_ADDRESS": escape_for_cpp(address),
        "SERVICE_HOST": escape_for_cpp(urllib.parse.urlsplit(address).netloc),
        "RECORD_REGISTRY_PATH": escape_for_cpp(family["record_registry_path"]),
        "POLICY_REGISTRY_PATH": escape_for_cpp(policy_registry_path(family)),
        "MAKER_IN_CPP": escape_for_cpp(family["maker"]),
        **{f"KEY_{number}": escape_for_cpp(key) for number, key in enumerate(family["known_api_keys"], 1)},
    }
    folder.mkdir(parents=True, exist_ok=True)
    for template in TEMPLATES.glob("*.h.in"):
        text = re.sub("@([A-Z_0-9]+)@", lambda name: values[name[1]], template.read_text("utf-8"))
        header = folder / template.stem
        # An unchanged header keeps its timestamp, so that nothing is rebuilt.
        if not header.exists() or header.read_text("utf-8") != text:
            header.write_text(text, "utf-8", newline="\n")


def check_background(path):
    data = path.read_bytes()
    if not data.startswith(b"BM"):
        raise FamilyError(f"{path}: this is not an uncompressed bitmap.")
    if len(data) < BITMAP_HEADER.size:
        raise FamilyError(f"{path}: the file is truncated.")
    _, pixels, width, height, depth, compression = BITMAP_HEADER.unpack_from(data)
    if compression != 0:
        raise FamilyError(f"{path}: this is not an uncompressed bitmap.")
    if (width, abs(height), depth) != (*BACKGROUND_SIZE, BACKGROUND_DEPTH):
        raise FamilyError(f"{path}: the image has {width} x {abs(height)} pixels with {depth} bits each; it must have "
                          f"{BACKGROUND_SIZE[0]} x {BACKGROUND_SIZE[1]} with {BACKGROUND_DEPTH}.")
    if height < 0:
        raise FamilyError(f"{path}: top-down bitmaps are not supported; save it bottom-up.")
    bytes_of_row = (width * BACKGROUND_DEPTH // 8 + 3) // 4 * 4
    if len(data) < pixels + bytes_of_row * height:
        raise FamilyError(f"{path}: the file is truncated.")


def check_icon(path):
    data = path.read_bytes()
    kind, count = ICON_HEADER.unpack_from(data) if len(data) >= ICON_HEADER.size else (0, 0)
    if kind != 1:
        raise FamilyError(f"{path}: this is not an icon.")
    entries = data[ICON_HEADER.size:ICON_HEADER.size + count * ICON_ENTRY.size]
    if len(entries) < count * ICON_ENTRY.size:
        raise FamilyError(f"{path}: the file is truncated.")
    sizes = set()
    for width, depth, length, offset in ICON_ENTRY.iter_unpack(entries):
        if offset + length > len(data):
            raise FamilyError(f"{path}: the file is truncated.")
        if depth == 32:
            sizes.add(width or 256)
    missing = [str(size) for size in ICON_SIZES if size not in sizes]
    if missing:
        raise FamilyError(f"{path}: no 32-bit image of these sizes: {', '.join(missing)}.")


def check_images(folder):
    for name in (ICON, *BACKGROUNDS):
        if not (folder / name).is_file():
            raise FamilyError(f"{folder / name}: file not found in PRODUCT_FAMILY_DIR.")
    check_icon(folder / ICON)
    for name in BACKGROUNDS:
        check_background(folder / name)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    headers = commands.add_parser("headers")
    headers.add_argument("file")
    headers.add_argument("folder", type=pathlib.Path)
    headers.add_argument("--allow-http", action="store_true")
    commands.add_parser("images").add_argument("folder", type=pathlib.Path)
    commands.add_parser("image-files")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    try:
        if arguments.command == "headers":
            write_headers(read_family(arguments.file, arguments.allow_http), arguments.folder)
        elif arguments.command == "images":
            check_images(arguments.folder)
        else:
            print(";".join((ICON, *BACKGROUNDS)), end="")
    except FamilyError as error:
        sys.exit(str(error))


if __name__ == "__main__":
    main()
