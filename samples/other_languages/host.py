"""A host in Python for 64-bit Windows: both calls, guarded. The two DLLs lie beside it.
A test compares the declarations of this file with guarded_calls.h and publisher.h, which say what they mean."""

import ctypes
import pathlib
import sys
from ctypes import POINTER, c_int32, c_uint32, c_wchar, c_wchar_p

NOTHING_REPORTED = 0
REPORTED = 1
UNTRUSTED_ADDRESS = 5
MESSAGE_WITHHELD = 6
PUBLISHER_TRUSTED = 100


class GuardedCall(ctypes.Structure):
    _fields_ = [
        ("size", c_uint32),
        ("languageId", c_int32),
        ("productName", c_wchar_p),
        ("productVersion", c_wchar_p),
        ("apiKey", c_wchar_p),
        ("text", POINTER(c_wchar)),
        ("textCapacity", c_uint32),
        ("resultCode", c_uint32),
        ("isTextCut", c_uint32),
        ("options", c_uint32),
        ("trustedHosts", c_wchar_p),
    ]


PARAMETERS = {
    "GuardedCheckForUpdates": (POINTER(GuardedCall),),
    "GuardedUpgrade": (POINTER(GuardedCall),),
    "UseWindowsProxy": (c_wchar_p, POINTER(c_wchar), c_uint32),
    "VerifyPublisher": (c_wchar_p, c_wchar_p, POINTER(c_wchar), c_uint32),
}


def load(path):
    guard = ctypes.CDLL(str(path))
    for name, parameters in PARAMETERS.items():
        function = getattr(guard, name)
        function.argtypes, function.restype = parameters, c_uint32
    return guard


def describe(outcome, call, text):
    sentences = {
        NOTHING_REPORTED: "nothing was reported",
        REPORTED: f"{call.resultCode}: {text}",  # with 200 a trusted address to download from
        UNTRUSTED_ADDRESS: f"not to be opened: {text}",
        MESSAGE_WITHHELD: f"not shown, since the check is quiet: {text}",
    }
    return sentences.get(outcome, f"error: {text}")


def main():
    guard = load(pathlib.Path(__file__).resolve().with_name("ProductServicesGuard.dll"))
    text = ctypes.create_unicode_buffer(65536)
    call = GuardedCall(size=ctypes.sizeof(GuardedCall), languageId=120, productName="Example Draft",
                       productVersion="2026.1", apiKey="draft20-7k2m9q-x4v8p1w", text=text,
                       textCapacity=len(text), trustedHosts="localhost:18443")
    sys.stdout.reconfigure(encoding="utf-8")  # pipes have an older encoding
    print("CheckForUpdates:", describe(guard.GuardedCheckForUpdates(call), call, text.value))
    print("Upgrade:", describe(guard.GuardedUpgrade(call), call, text.value))  # on the thread that shows windows


if __name__ == "__main__":
    main()
