"""A host in Python for 64-bit Windows: both calls, guarded. ProductServicesGuard.dll must be in the
same folder. The declarations are those of guarded_calls.h and publisher.h, which describe them."""

import concurrent.futures
import ctypes
import pathlib
import sys
from ctypes import POINTER, c_int32, c_uint32, c_wchar, c_wchar_p

OUTCOME_NEWER_RELEASE = 1
OUTCOME_UP_TO_DATE = 2
OUTCOME_BROWSER_OPENED = 3
OUTCOME_USER_QUIT = 4
OUTCOME_UNREACHABLE = 9
OUTCOME_TIMED_OUT = 10
OUTCOME_CANCELLED = 11
OUTCOME_UNTRUSTED_CERTIFICATE = 12
OUTCOME_UNTRUSTED_ADDRESS = 13
OPTION_QUIET = 1
OPTION_SYSTEM_PROXY = 8
PUBLISHER_TRUSTED = 100
LANGUAGE_EN = 120


class GuardedCallParams(ctypes.Structure):
    _fields_ = [
        ("size", c_uint32),
        ("languageId", c_int32),
        ("productName", c_wchar_p),
        ("productVersion", c_wchar_p),
        ("apiKey", c_wchar_p),
        ("trustedHosts", c_wchar_p),
        ("options", c_uint32),
        ("timeLimitMs", c_uint32),
        ("cancelFlag", POINTER(c_uint32)),
        ("resultText", POINTER(c_wchar)),
        ("resultTextCapacity", c_uint32),
        ("resultCode", c_uint32),
        ("isTextTruncated", c_uint32),
        ("reserved", c_uint32),
    ]


PARAMETERS = {
    "GuardedCheckForUpdates": (POINTER(GuardedCallParams),),
    "GuardedUpgrade": (POINTER(GuardedCallParams),),
    "VerifyPublisher": (c_wchar_p, c_wchar_p, POINTER(c_wchar), c_uint32),
}


def load(path):
    guard = ctypes.CDLL(str(path))
    for name, parameters in PARAMETERS.items():
        function = getattr(guard, name)
        function.argtypes, function.restype = parameters, c_uint32
    return guard


def call(function, options, is_ending):
    text = ctypes.create_unicode_buffer(4096)
    params = GuardedCallParams(
        size=ctypes.sizeof(GuardedCallParams), languageId=LANGUAGE_EN, options=options | OPTION_SYSTEM_PROXY,
        timeLimitMs=15000, cancelFlag=ctypes.pointer(is_ending), resultText=text, resultTextCapacity=len(text),
        productName="Example Draft", productVersion="2026.1", apiKey="draft20-7k2m9q-x4v8p1w",
        trustedHosts="localhost:18443")
    return describe(function(params), text.value)


def describe(outcome, text):
    if outcome == OUTCOME_NEWER_RELEASE:  # the URL is https and on a trusted host, so it may be opened
        return f"a newer release is at {text}"
    if outcome == OUTCOME_UP_TO_DATE:
        return "up to date"
    if outcome == OUTCOME_BROWSER_OPENED:
        return "the browser shows the purchase page"
    if outcome == OUTCOME_USER_QUIT:
        return "left by the user"
    if outcome in (OUTCOME_UNTRUSTED_CERTIFICATE, OUTCOME_UNTRUSTED_ADDRESS):
        return f"not secure, ask your administrator: {text}"
    if outcome in (OUTCOME_UNREACHABLE, OUTCOME_TIMED_OUT):
        return f"no connection, try again later: {text}"
    if outcome == OUTCOME_CANCELLED:
        return "cancelled"
    return f"failed with outcome {outcome}: {text}"


def main():
    guard = load(pathlib.Path(__file__).resolve().with_name("ProductServicesGuard.dll"))
    sys.stdout.reconfigure(encoding="utf-8")  # pipes have an older encoding
    is_ending = c_uint32(0)
    with concurrent.futures.ThreadPoolExecutor() as workers:
        check = workers.submit(call, guard.GuardedCheckForUpdates, OPTION_QUIET, is_ending)
        # The host's window is open here. When it is closed, is_ending.value = 1 ends a check that is still running.
        print("CheckForUpdates:", check.result())
    print("Upgrade:", call(guard.GuardedUpgrade, 0, is_ending))  # on the thread that shows the host's windows


if __name__ == "__main__":
    main()
