#!/usr/bin/env python3
"""Creates the NuGet package for Visual Studio from the unpacked package for host developers.

    make_nupkg.py PACKAGE_FOLDER OUTPUT_FOLDER --sample JSON --family JSON --icon library.ico [--commit COMMIT]

JSON is the product_family.json of the sample and of the family for which the package is built.
"""

import argparse
import pathlib
import re
import struct
import sys
import xml.sax.saxutils

import brand_package
import reproducible_zip

TEMPLATES = pathlib.Path(__file__).parent / "nuget"
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"
RELATIONSHIPS = """<?xml version="1.0" encoding="utf-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
  <Relationship Type="http://schemas.microsoft.com/packaging/2010/07/manifest" Target="/{}" Id="manifest" />
</Relationships>
"""


def read_version(package):
    header = (package / "include/product_services/version.h").read_text("utf-8")
    return ".".join(re.findall(r"#define PRODUCT_SERVICES_VERSION_\w+ (\d+)", header))


def read_icon_png(path):
    """Returns the image of 256 pixels, which the icon stores as PNG."""
    data = path.read_bytes()
    for entry in range(struct.unpack_from("<H", data, 4)[0]):
        size, offset = struct.unpack_from("<II", data, 6 + 16 * entry + 8)
        if data[offset:offset + len(PNG_SIGNATURE)] == PNG_SIGNATURE:
            return data[offset:offset + size]
    sys.exit(f"make_nupkg.py: {path} has no image in PNG format.")


def fill_template(name, values):
    text = (TEMPLATES / name).read_text("utf-8")
    return re.sub("@([A-Z]+)@", lambda key: xml.sax.saxutils.escape(values[key[1]]), text).encode()


def make_nuspec(values):
    """Omits what the family has no value for: elements, the commit, and a repository without a URL."""
    text = fill_template("package.nuspec", values).decode()
    return re.sub(r'    <repository .* url="".*\n| commit=""|    <(\w+)></\1>\n', "", text).encode()


def collect_files(package, values, pairs, icon):
    """Returns the content of each file in the archive by its name."""
    identifier = values["ID"]
    files = {
        f"{identifier}.nuspec": make_nuspec(values),
        f"build/native/{identifier}.targets": fill_template("package.targets", values),
        "readme.md": brand_package.brand_markdown((TEMPLATES / "readme.md").read_text("utf-8"), pairs).encode(),
        "icon.png": read_icon_png(icon),
    }
    for pattern, folder in (("LICENSE", ""), ("product-services.*.json", ""), ("licenses/*", "licenses/"),
                            ("bin/ProductServicesGuard.dll", "runtimes/win-x64/native/"),
                            ("lib/ProductServicesGuard.lib", "build/native/lib/"),
                            ("tools/*.exe", "tools/"),
                            ("include/product_services/*", "build/native/include/product_services/")):
        found = sorted(package.glob(pattern))
        if not found:
            sys.exit(f"make_nupkg.py: {package / pattern} not found.")
        files.update((folder + path.name, path.read_bytes()) for path in found)
    for path in sorted(package.glob("lang/*/*.lang")):
        files[f"build/native/{path.relative_to(package).as_posix()}"] = path.read_bytes()
    return files


def content_types(names):
    suffixes = sorted({name.rpartition(".")[2] for name in names if "." in name} | {"rels"})
    types = {"rels": "application/vnd.openxmlformats-package.relationships+xml"}
    lines = [f'  <Default Extension="{suffix}" ContentType="{types.get(suffix, "application/octet")}" />'
             for suffix in suffixes]
    lines += [f'  <Override PartName="/{name}" ContentType="application/octet" />' for name in names if "." not in name]
    return "\n".join(['<?xml version="1.0" encoding="utf-8"?>',
                      '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">',
                      *lines, "</Types>", ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("package", type=pathlib.Path)
    parser.add_argument("output", type=pathlib.Path)
    for name in ("--sample", "--family", "--icon"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    parser.add_argument("--commit", default="")
    options = parser.parse_args()
    sample, family = map(brand_package.read_family, (options.sample, options.family))
    values = {"ID": family["package_id"], "VERSION": read_version(options.package), "AUTHORS": family["maker"],
              "WEBSITE": family.get("website", ""), "REPOSITORY": family.get("repository", ""),
              "COMMIT": options.commit}
    files = collect_files(options.package, values, brand_package.replacements(sample, family), options.icon)
    archive = options.output / f"{values['ID']}.{values['VERSION']}.nupkg"
    parts = [("_rels/.rels", RELATIONSHIPS.format(f"{values['ID']}.nuspec")),
             ("[Content_Types].xml", content_types(files))]
    reproducible_zip.write_zip(archive, parts + sorted(files.items()))


if __name__ == "__main__":
    main()
