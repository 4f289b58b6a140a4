#!/usr/bin/env bash
# check_sbom.sh [ZIP]: validates the CycloneDX SBOM in a package (default: the one in build/mingw/package) with the schema that
# CycloneDX publishes on npm. The exit status is 3 if the schema cannot be downloaded.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/log.sh

readonly work=$PWD/build/sbom schemas=@cyclonedx/cyclonedx-library@10.3.0
shopt -s nullglob
packages=("${1:-}")
[ -n "${1:-}" ] || packages=(build/mingw/package/product-services-*.zip)
[ -f "${packages[0]:-}" ] || fail "No package in build/mingw/package. Run cpack in build/mingw."

validate() {
  python3 -W ignore - "$work"/package/res/schema "${packages[@]}" <<'PROGRAM'
import json
import pathlib
import sys
import zipfile

import jsonschema

schemas = [json.loads(path.read_text("utf-8")) for path in pathlib.Path(sys.argv[1]).glob("*.schema.json")]
known = {schema["$id"]: schema for schema in schemas}
schema = known["http://cyclonedx.org/schema/bom-1.6.schema.json"]
validator = jsonschema.Draft7Validator(schema, resolver=jsonschema.RefResolver.from_schema(schema, store=known),
                                       format_checker=jsonschema.FormatChecker())
for package in sys.argv[2:]:
    with zipfile.ZipFile(package) as archive:
        lists = [name for name in archive.namelist() if name.endswith(".cdx.json")]
        errors = [error for name in lists for error in validator.iter_errors(json.loads(archive.read(name)))]
    for error in errors:
        print(f"{package}: {error.json_path}: {error.message}")
    if errors or not lists:
        sys.exit(f"{package}: {len(errors)} errors in {len(lists)} SBOMs")
PROGRAM
}

./setup.sh python3-jsonschema
command -v npm >/dev/null || ./setup.sh npm
log "Downloading the schema of CycloneDX"
rm -rf "$work"
mkdir -p "$work"
(cd "$work" && npm pack --silent "$schemas" && tar -xzf ./*.tgz) >"$work/npm.log" 2>&1 \
  || { log "$schemas could not be downloaded (no network?); see $work/npm.log."; exit 3; }
validate || fail "The SBOM is not valid CycloneDX."
log "The SBOM is valid CycloneDX."
