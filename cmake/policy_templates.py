#!/usr/bin/env python3
"""Writes the group policy templates of a product family: an .admx file and an .adml file with its texts for each
language of the library. The texts are English in all of them.

    policy_templates.py FAMILY FOLDER   FAMILY is a product_family.json; FOLDER is made if it is missing"""

import pathlib
import re
import sys
import xml.sax.saxutils

from product_family import FamilyError, policy_registry_path, read_family

TEMPLATES = pathlib.Path(__file__).parent / "policies"
# The folders in which Windows looks for the texts of its user's language; en-US is for all others.
CULTURES = "cs-CZ de-DE en-US es-ES fr-FR it-IT ja-JP pl-PL ru-RU zh-CN zh-TW".split()


def fill(template, family):
    values = {"MAKER": family["maker"], "PACKAGE_ID": family["package_id"],
              "SERVICE_BASE_ADDRESS": family["service_base_address"],
              "POLICY_REGISTRY_PATH": policy_registry_path(family)}
    return re.sub("@([A-Z_]+)@", lambda name: xml.sax.saxutils.escape(values[name[1]], {'"': "&quot;"}),
                  (TEMPLATES / template).read_text("utf-8"))


def main(family_file, folder):
    try:
        family = read_family(family_file)
    except FamilyError as error:
        sys.exit(str(error))
    files = {f"{family['package_id']}.admx": "policies.admx.in"}
    files.update({f"{culture}/{family['package_id']}.adml": "policies.adml.in" for culture in CULTURES})
    for name, template in files.items():
        path = pathlib.Path(folder, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(fill(template, family), "utf-8", newline="\r\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
