"""Runs the benchmark program under Wine and prints the table of what it measured.

run.py BIN TABLE: the folder of the built programs; the file that takes the table too.

A row is a line of a table below; benchmark.cpp has the series. Ratios are of neighbouring measurements, so that a busy
machine meets both sides. "Required calls" are what a check cannot do without, made with nothing around them: the
record's key opened, read twice and closed, the wait cursor loaded and set twice, two parses of the reply.

Checks beside bare posts are over their target under Wine, and on a busy machine the check without the network, since
each required call is a trip to another process: twelve a check, 10 to 25 us each, of which eight are the cursor's. The
library adds about 5 us of its own, which the row beside them shows. A cursor handle kept between calls would halve the
time, but it is loaded anew each time on purpose, as the record is read anew.
"""

import json
import pathlib
import statistics
import subprocess
import sys

import pefile

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
BIN, TABLE = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
LANGUAGE_FILE = pathlib.Path("lang/DE/Vemo_DE.lang")
UNITS = {"us": 1, "ms": 1000, "MB": 2**20}
SIZES = 1, 10, 100, 1000, 10000
HTTP = dict(dll="BenchHttp.dll", rounds=400, address="http://127.0.0.1:18451/get_updates.php")
GUARDED = dict(HTTP, rounds=200, processes=2)
HTTPS = dict(dll="BenchHttps.dll", rounds=200, address="https://127.0.0.1:18452/get_updates.php")

# What; the series measured and the one beside it; the most that is good of their ratio; how they are run.
RATIOS = (
    ("update check over HTTP", "check", "bare post", 1.03, HTTP),
    ("update check over HTTP", "check", "post and required calls", 1.03, HTTP),
    ("update check over HTTPS", "check", "bare post", 1.03, HTTPS),
    ("update check over HTTPS", "check", "post and required calls", 1.03, HTTPS),
    ("guarded update check over HTTP", "guarded check", "check", 1.02, GUARDED),
    ("guarded update check over HTTPS, certificate verified", "verifying check", "guarded check", 1.5, HTTPS),
    ("update check without the network", "check", "required calls", 1.1, dict(rounds=500)),
    ("the same with 10,000 offers", "check", "required calls", 1.1, dict(rounds=15, offers=10000)),
    ("reply to painted upgrade center", "upgrade center", "bare dialog", 1.0, dict(rounds=7, processes=6, offers=3)),
)
# What; the series; the most that is good; how it is run.
AMOUNTS = (
    ("update check without the network", "check", 100, "us", dict(rounds=500)),
    ("first call of a process, 88 lines", "check", 2, "ms", dict(processes=7, language_files=1)),
    ("reply to painted upgrade center, first time", "upgrade center", 100, "ms", dict(processes=7, offers=3)),
    ("10,000 offers shown", "upgrade center", 1000, "ms", dict(rounds=7, offers=10000)),
    ("working set that loading adds", "working set", 9.5, "MB", dict(processes=25, dll="ProductServices.dll")),
)
# What; the series; what grows and to which sizes; how it is run.
GROWTH = (
    ("offers shown, 1 to 10,000", "upgrade center", "offers", SIZES, dict(rounds=3)),
    ("offers in a reply, 1 to 10,000", "check", "offers", SIZES, dict(rounds=7)),
    ("language file, 88 to 88,000 lines", "check", "language_files", SIZES[:4], {}),
)
# The most that the last step of ten may cost; n log n would be 13.3.
LINEAR = 12.5


def prepare_folder(offers, language_files):
    """A working directory with a reply of so many offers and a language file as long as so many samples."""
    folder = BIN / f"language-{language_files}"
    file = folder / LANGUAGE_FILE
    file.parent.mkdir(parents=True, exist_ok=True)
    if language_files:
        sample = (BIN / LANGUAGE_FILE).read_text("utf-16-le")
        file.write_text("\n".join([sample] * language_files), "utf-16-le")
    (folder / "reply.json").write_text(json.dumps(
        [{"name": f"Example Product {i}", "version": "2026.2", "url": f"https://shop.example/buy?offer={i}"}
         for i in range(offers)]))
    return folder


def run(*series, dll="BenchOffline.dll", rounds=1, processes=1, address="none", offers=1, language_files=0):
    """The numbers of each series, which took turns, also in coming first, which pays for what stays in a process."""
    folder = prepare_folder(offers, language_files)
    command = [REPOSITORY / "scripts/run_wine.sh", BIN / "benchmark.exe", dll, address, str(rounds)]
    measured = {name: [] for name in series}
    for process in range(processes):
        turns = series if process % 2 == 0 else reversed(series)
        done = subprocess.run([*command, *turns], cwd=folder, stdout=subprocess.PIPE, text=True)
        if done.returncode:
            sys.exit(f"error: measuring {series} with {dll} failed: {done.stdout}")
        for line in done.stdout.splitlines():
            name, number = line.split(": ")
            measured[name].append(float(number))
    return measured.values()


def median(numbers, unit):
    return statistics.median(numbers) / UNITS[unit]


def write_row(*cells):
    row = "{:<58} {:>9} {:>9}  {:<5} {}".format(*cells).rstrip()
    print(row, flush=True)
    with TABLE.open("a") as table:
        table.write(row + "\n")


def report(what, measured, at_most, unit="", medians=""):
    digits = 2 if measured < 100 else 0
    write_row(what, f"{measured:.{digits}f} {unit}".rstrip(), f"{at_most} {unit}".rstrip(),
              "ok" if measured <= at_most else "over", medians)


def report_ratio(what, measured, base, at_most):
    """The median of the ratios of neighbours: a busy moment of the machine meets both."""
    ratio = statistics.median(a / b for a, b in zip(measured, base, strict=True))
    report(what, ratio, at_most, medians=f"{median(measured, 'ms'):.3g} / {median(base, 'ms'):.3g} ms")


def report_growth(what, rounds):
    """Each round goes through all sizes, so that the last two of it are neighbours."""
    step = statistics.median(each[-1] / each[-2] for each in rounds)
    medians = " ".join(f"{median(each, 'ms'):.3g}" for each in zip(*rounds))
    report(f"{what}: 10 times as many", step, LINEAR, "x", f"{medians} ms")


def load(dll):
    (duration,), = run("load", dll=dll)
    return duration


TABLE.write_text("")
write_row("what", "measured", "at most", "", "medians")
for what, measured, base, at_most, how in RATIOS:
    report_ratio(f"{what} / {base}", *run(measured, base, **how), at_most)
loads = [(load("ProductServices.dll"), load("CurlAlone.dll")) for _ in range(25)]
report_ratio("loading the DLL / libcurl alone", *zip(*loads), 1.1)
for what, series, at_most, unit, how in AMOUNTS:
    report(what, median(*run(series, **how), unit), at_most, unit)
for what, series, grows, sizes, how in GROWTH:
    report_growth(what, [[statistics.median(*run(series, **{grows: size}, **how)) for size in sizes]
                         for _ in range(7)])
dll = BIN / "ProductServices.dll"
resources, = (section for section in pefile.PE(dll).sections if section.Name.startswith(b".rsrc"))
report("size of the DLL without its resources", (dll.stat().st_size - resources.SizeOfRawData) / 1024, 640, "KB")
