"""Exports a catalogue as files that nginx serves without any other program. The folder contains

  www/answers/...  the answers; the name of an unchanged answer does not change
  maps.conf        the answer to each query; include it in http { }
  locations.conf   the two URLs of the service; include it in server { }, with www as its root

After a change, export to the same folder again and make nginx reload its configuration."""

import hashlib
import json
import re

from product_catalogue import QUERY, fail, first_hidden, offer_list, offer_lists, refusal, visible_offers

DIGITS = "0123456789abcdef"
# The fields of a query, as variables of nginx.
NAMES = [f"update_{name}" for name in ("api_key", "key", "computer", "version", "kind")]
# The maximum size of a request. A query has a few hundred bytes.
LIMIT = "8k"

MAPS = r"""# Written by product_service.py export.
map_hash_bucket_size 512;
map_hash_max_size 65536;

map $request_body $update_product {{
    default "";
    "~(?s)^{query}\z" "$update_key&$update_version";
}}

# The percentage of computers that get the same offers as this one.
map $update_computer $update_stage {{
    default 100;
{stages}}}

map $update_key $update_answer_to_version {{
    default {unknown_key};
{keys}}}

# $update_product comes first, because it sets the other variables.
map "$update_product&$update_stage" $update_answer {{
    default $update_answer_to_version;
    "~^&" {malformed};
{answers}}}
"""

LOCATIONS = """# Written by product_service.py export.
# The file does not exist, so nginx sends the answer as the error page. It only reads the body because of the mirror.
location = {check} {{
    if ($request_method != POST) {{ return 405; }}
    client_max_body_size {limit};
    log_not_found off;
    error_page 404 =200 /answers/{one};
    error_page 405 /answers/{method};
}}
location = {updates} {{
    if ($request_method != POST) {{ return 405; }}
    if (-f $document_root/maintenance) {{ return 503; }}
    client_max_body_size {limit};
    client_body_buffer_size {limit};
    client_body_timeout 10s;
    mirror /mirror;
    log_not_found off;
    error_page 404 =200 /answers/$update_answer;
    error_page 405 /answers/{method};
    error_page 413 /answers/{malformed};
    error_page 500 502 503 504 =200 /answers/{later};
}}
location = /mirror {{ internal; return 204; }}
location /answers/ {{ internal; default_type application/json; }}
"""


class Answers:
    """The files in www/answers, which are named by the hash of their content."""

    def __init__(self, folder):
        self.folder = folder
        folder.mkdir(parents=True, exist_ok=True)

    def add(self, body):
        name = hashlib.sha256(body).hexdigest()[:16]
        (self.folder / name).write_bytes(body)
        return name


def check_names(catalogue):
    """nginx ignores case when it looks up names, and & separates them."""
    groups = [catalogue, *(versions for versions in catalogue.values() if not isinstance(versions, str))]
    for name in (name for group in groups for name in group):
        if "&" in name or not name.isprintable():
            fail(f'"{name}" must not contain & or control characters, because nginx could not look it up')
    for group in groups:
        if len({name.lower() for name in group}) < len(group):
            fail("keys and versions must not differ only in case, because nginx ignores case")


def quote(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def numbers_below(number):
    """Returns a pattern for two leading hexadecimal digits that are less than a number."""
    high, low = divmod(number, 16)
    alternatives = [f"[{DIGITS[:high]}][{DIGITS}]"] if high else []
    if low:
        alternatives.append(f"{DIGITS[high]}[{DIGITS[:low]}]")
    return f"^({'|'.join(alternatives)})"


def query_pattern():
    names = iter(NAMES)
    return re.sub(r"\(", lambda _: f"(?<{next(names)}>", QUERY.pattern)


def version_rows(catalogue, percents, answers):
    """Yields a line for each version and each stage of its offers."""
    for key, versions in catalogue.items():
        for version, offers in () if isinstance(versions, str) else versions.items():
            for stage in (*percents, 100):
                # The offers of the last computer in the stage.
                body = offer_list(visible_offers(offers, first_hidden(stage) - 1))[1]
                yield f"    {quote(f'{key}&{version}&{stage}')} {answers.add(body)};\n"


def key_rows(catalogue, answers):
    """Yields a line for each key, with the answer to a version that is not in the catalogue."""
    for key, versions in catalogue.items():
        body = refusal(versions)[1] if isinstance(versions, str) else b""
        yield f"    {quote(key)} {answers.add(body)};\n"


def write(catalogue, path, folder):
    """Writes the files. `path` is the path in the service's address, which precedes the names of the two URLs."""
    check_names(catalogue)
    answers = Answers(folder / "www/answers")
    percents = sorted({offer.get("percent", 100) for offers in offer_lists(catalogue) for offer in offers} - {100})
    malformed = answers.add(refusal("malformed query")[1])
    maps = MAPS.format(
        query=query_pattern(), unknown_key=answers.add(refusal("unknown product key")[1]), malformed=malformed,
        stages="".join(f'    "~{numbers_below(first_hidden(percent))}" {percent};\n' for percent in percents),
        keys="".join(key_rows(catalogue, answers)), answers="".join(version_rows(catalogue, percents, answers)))
    locations = LOCATIONS.format(
        check=quote(path + "/check.php"), updates=quote(path + "/get_updates.php"), limit=LIMIT,
        one=answers.add(b"1"), method=answers.add(b"Use POST.\n"), malformed=malformed,
        later=answers.add(json.dumps({"status": 1}).encode()))
    (folder / "maps.conf").write_text(maps, "utf-8", newline="\n")
    (folder / "locations.conf").write_text(locations, "utf-8", newline="\n")
