"""A host that cannot load ProductServicesGuard.dll, such as a script or a 32-bit program. It runs ProductServicesTool,
which is in the same folder or passed as an argument.

    python check_for_updates.py [PATH_OF_TOOL]
"""

import json
import pathlib
import subprocess
import sys

PRODUCT = ["--product", "Example Draft", "--version", "2026.1", "--api-key", "draft20-7k2m9q-x4v8p1w",
           "--trusted-hosts", "localhost:18443"]


def check(tool):
    """Returns the result of an update check, with the members outcome, code and text."""
    completed = subprocess.run([tool, "check", *PRODUCT, "--time-limit", "15", "--json"], stdout=subprocess.PIPE,
                               stdin=subprocess.DEVNULL, encoding="utf-8", check=False)
    if completed.returncode not in (0, 1):  # invalid usage, which the tool has reported on stderr
        sys.exit(f"{tool} exited with status {completed.returncode}")
    return json.loads(completed.stdout)


def describe(outcome, text):
    if outcome == "NEWER_RELEASE":  # the URL is https and on a trusted host, so it may be opened
        return f"a newer release is at {text}"
    if outcome == "UP_TO_DATE":
        return "up to date"
    if outcome in ("UNTRUSTED_CERTIFICATE", "UNTRUSTED_ADDRESS"):
        return f"not secure, ask your administrator: {text}"
    if outcome in ("UNREACHABLE", "TIMED_OUT"):
        return f"no connection, try again later: {text}"
    return f"failed with {outcome}: {text}"


def main():
    default = pathlib.Path(__file__).resolve().with_name("ProductServicesTool.exe")
    result = check(sys.argv[1] if len(sys.argv) > 1 else default)
    print(describe(result["outcome"], result["text"]))


if __name__ == "__main__":
    main()
