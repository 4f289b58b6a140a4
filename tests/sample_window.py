"""The sample host's window under Wine, worked by real clicks and keys. They reach the right window only if no other
test shows one at the same time."""

import contextlib
import subprocess
import time

from conftest import REPOSITORY, run

TITLE = "Example Draft 2026.1 – sample host"
START = '. "$0/scripts/lib/wine.sh" && exec /usr/lib/wine/wine64 "$1" --check-now'
# A place on the left of a title bar, which makes its window active.
TITLE_BAR = "100", "10"


def window_title(window):
    status, title = run("xdotool", "getwindowname", window)
    return title.strip() if status == 0 else "no window"


def focused_window():
    """The number of the window that gets the keys."""
    return run("xdotool", "getwindowfocus")[1].strip()


def wait_for(condition, expected):
    end = time.monotonic() + 20
    while not condition():
        assert time.monotonic() < end, f"the keys go to {window_title(focused_window())!r} instead of {expected!r}"
        time.sleep(0.1)


def wait_for_window(title):
    """The number of the window with this title, once it has come up and gets the keys."""
    wait_for(lambda: window_title(focused_window()) == title, title)
    return focused_window()


def press(window, *keys):
    """Activates a window, which may be behind another one, and presses keys."""
    def is_active():
        run("xdotool", "windowraise", window, "mousemove", "--window", window, *TITLE_BAR, "click", "1")
        return focused_window() == window

    wait_for(is_active, window_title(window))
    for key in keys:
        assert run("xdotool", "key", key) == (0, "")


@contextlib.contextmanager
def open_sample_host(program):
    """The process of a sample host and the number of its window."""
    process = subprocess.Popen(["bash", "-c", START, REPOSITORY, program], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    try:
        yield process, wait_for_window(TITLE)
    finally:
        process.kill()
        process.wait()
