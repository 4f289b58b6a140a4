"""Writes reproducible zip archives: sorted, with the same time for all files and no further attributes."""

import os
import pathlib
import sys
import time
import zipfile

EARLIEST = 315532800  # 1980, the first year that a zip archive can store


def write_zip(archive, files):
    """`files` has pairs of names and contents. The time is SOURCE_DATE_EPOCH, or the earliest possible one."""
    moment = time.gmtime(max(EARLIEST, int(os.environ.get("SOURCE_DATE_EPOCH", 0))))[:6]
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED) as target:
        for name, data in files:
            entry = zipfile.ZipInfo(name, moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = (0o100755 if name.endswith((".exe", ".dll", ".py")) else 0o100644) << 16
            target.writestr(entry, data)


def main(archive, folder):
    """Writes an archive of a folder."""
    folder = pathlib.Path(folder)
    files = {path.relative_to(folder.parent).as_posix(): path for path in folder.rglob("*") if path.is_file()}
    write_zip(archive, [(name, files[name].read_bytes()) for name in sorted(files)])


if __name__ == "__main__":
    main(*sys.argv[1:])
