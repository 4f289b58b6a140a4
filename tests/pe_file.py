"""Reads programs and DLLs."""

import pefile


def read_pe(path, *directories):
    """Parses the named data directories of a program or DLL. All of them would take half a second."""
    file = pefile.PE(path, fast_load=True)
    file.parse_data_directories([pefile.DIRECTORY_ENTRY[f"IMAGE_DIRECTORY_ENTRY_{name}"] for name in directories])
    return file
