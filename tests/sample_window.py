"""Operates the sample host's window under Wine with real clicks and keys. They reach the right window only if no other
test shows a window at the same time."""

import contextlib
import re
import subprocess
import time

from conftest import REPOSITORY, run

TITLE = "Example Draft 2026.1 – sample host"
START = '. "$0/scripts/lib/wine.sh" && exec /usr/lib/wine/wine64 "$1" --check-now'
# A click here, on the left of the title bar, activates a window.
TITLE_BAR = "100", "10"


def find_window(title):
    """Returns the id of the visible window with this title, or "". It may not have the focus yet."""
    output = run("xdotool", "search", "--onlyvisible", "--name", f"^{re.escape(title)}$")[1]
    return (re.findall(r"(?m)^\d+$", output) or [""])[0]


def wait_for(condition, expected):
    end = time.monotonic() + 60
    while not condition():
        assert time.monotonic() < end, f"{expected} after a minute"
        time.sleep(0.1)


def wait_for_window(title):
    """Waits until the window with this title is visible, and returns its id."""
    wait_for(lambda: find_window(title), f"{title!r} is not visible")
    return find_window(title)


def press(window, *keys):
    """Activates a window, which may be covered by another one, and presses keys. Wine can take a window for active that
    does not have the focus of X, and then a click does not change it."""
    def is_active():
        run("xdotool", "windowraise", window, "mousemove", "--window", window, *TITLE_BAR, "click", "1",
            "windowfocus", window)
        return run("xdotool", "getwindowfocus")[1].strip() == window

    wait_for(is_active, f"window {window} does not get the focus")
    for key in keys:
        assert run("xdotool", "key", key) == (0, "")


def press_until_opened(window, keys, title):
    """Presses the keys of a menu until they have opened the window with this title, and returns its id. On a busy
    machine, a menu that is still opening can miss a key."""
    for _ in range(5):
        press(window, *keys)
        end = time.monotonic() + 12
        while time.monotonic() < end:
            if opened := find_window(title):
                return opened
            time.sleep(0.1)
        press(window, "Escape")
    raise AssertionError(f"{title!r} was not opened")


def close_message(window):
    """Presses Return in a message box, and waits until the box no longer exists."""
    press(window, "Return")
    wait_for(lambda: run("xdotool", "getwindowname", window)[0] != 0, f"message {window} is still open")


@contextlib.contextmanager
def open_sample_host(program):
    """Starts a sample host. Returns the process and the id of its window."""
    process = subprocess.Popen(["bash", "-c", START, REPOSITORY, program], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    try:
        yield process, wait_for_window(TITLE)
    finally:
        process.kill()
        process.wait()
