"""Runs the benchmark program under Wine and prints a table of the results.

run.py BIN TABLE: the folder with the built programs, and the file to which the table is also written.

Each row of the table is one of the benchmarks below; the series that they name are in benchmark.cpp. Ratios compare
measurements that follow each other directly, so that a busy machine affects both. "Required calls" are the calls that a
check cannot avoid, made on their own: opening the key of the record, reading it twice and closing it, loading and
setting the wait cursor twice, and parsing the reply twice.

Under Wine, update checks compared with bare posts exceed their limit, and on a busy machine so does the check without
the network, because each required call is a round trip to another process: twelve in each check, 10 to 25 us each, of
which eight are for the cursor. The library itself adds about 5 us, as the row with the required calls shows. Keeping
the cursor's handle between calls would halve the time, but it is deliberately loaded again each time, as the record is
read again.
"""

import dataclasses
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
# A factor of ten in the size may cost this factor in time; with n log n it would be 13.3.
MAX_GROWTH_PER_DECADE = 12.5
MAX_DLL_SIZE_KB = 640
MAX_LOAD_RATIO = 1.1


@dataclasses.dataclass(frozen=True)
class Setup:
    """How the benchmark program is run: the DLL, the URL of bare posts, and the sizes of the reply and the language
    file, which is as long as so many copies of the sample's."""
    dll: str = "BenchOffline.dll"
    url: str = "none"
    rounds: int = 1
    processes: int = 1
    offers: int = 1
    language_files: int = 0


@dataclasses.dataclass(frozen=True)
class Ratio:
    """The median of the ratios of two series must not exceed the limit."""
    name: str
    series: str
    baseline: str
    limit: float
    setup: Setup


@dataclasses.dataclass(frozen=True)
class Absolute:
    """The median of a series must not exceed the limit."""
    name: str
    series: str
    limit: float
    unit: str
    setup: Setup


@dataclasses.dataclass(frozen=True)
class Scaling:
    """From each size to the next, ten times as large, the time must not grow by more than MAX_GROWTH_PER_DECADE."""
    name: str
    series: str
    member: str  # of Setup, which has the sizes
    sizes: tuple
    setup: Setup


HTTP = Setup(dll="BenchHttp.dll", rounds=400, url="http://127.0.0.1:18451/get_updates.php")
GUARDED = dataclasses.replace(HTTP, rounds=200, processes=2)
HTTPS = Setup(dll="BenchHttps.dll", rounds=200, url="https://127.0.0.1:18452/get_updates.php")

RATIOS = (
    Ratio("update check over HTTP", "check", "bare post", 1.03, HTTP),
    Ratio("update check over HTTP", "check", "post and required calls", 1.03, HTTP),
    Ratio("update check over HTTPS", "check", "bare post", 1.03, HTTPS),
    Ratio("update check over HTTPS", "check", "post and required calls", 1.03, HTTPS),
    Ratio("guarded update check over HTTP", "guarded check", "check", 1.02, GUARDED),
    Ratio("guarded update check over HTTPS, certificate verified", "verifying check", "guarded check", 1.5, HTTPS),
    Ratio("update check without the network", "check", "required calls", 1.1, Setup(rounds=500)),
    Ratio("the same with 10,000 offers", "check", "required calls", 1.1, Setup(rounds=15, offers=10000)),
    Ratio("reply to painted upgrade center", "upgrade center", "bare dialog", 1.0,
          Setup(rounds=7, processes=6, offers=3)),
)
ABSOLUTE = (
    Absolute("update check without the network", "check", 100, "us", Setup(rounds=500)),
    Absolute("first call of a process, 88 lines", "check", 2, "ms", Setup(processes=7, language_files=1)),
    Absolute("reply to painted upgrade center, first time", "upgrade center", 100, "ms", Setup(processes=7, offers=3)),
    Absolute("10,000 offers shown", "upgrade center", 1000, "ms", Setup(rounds=7, offers=10000)),
    Absolute("working set added by loading", "working set", 9.5, "MB", Setup(processes=25, dll="ProductServices.dll")),
)
SCALING = (
    Scaling("offers shown, 1 to 10,000", "upgrade center", "offers", (1, 10, 100, 1000, 10000), Setup(rounds=3)),
    Scaling("offers in a reply, 1 to 10,000", "check", "offers", (1, 10, 100, 1000, 10000), Setup(rounds=7)),
    Scaling("language file, 88 to 88,000 lines", "check", "language_files", (1, 10, 100, 1000), Setup()),
)


def prepare_folder(setup):
    """Returns a working directory with the reply and the language file."""
    folder = BIN / f"language-{setup.language_files}"
    file = folder / LANGUAGE_FILE
    file.parent.mkdir(parents=True, exist_ok=True)
    if setup.language_files:
        sample = (BIN / LANGUAGE_FILE).read_text("utf-16-le")
        file.write_text("\n".join([sample] * setup.language_files), "utf-16-le")
    offers = [{"name": f"Example Product {i}", "version": "2026.2", "url": f"https://shop.example/buy?offer={i}"}
              for i in range(setup.offers)]
    (folder / "reply.json").write_text(json.dumps(offers))
    return folder


def measure(setup, *series):
    """Returns the measurements of each series. They alternate, and so does their order in each process, because the
    first one pays for what a process keeps."""
    folder = prepare_folder(setup)
    command = [REPOSITORY / "scripts/run_wine.sh", BIN / "benchmark.exe", setup.dll, setup.url, str(setup.rounds)]
    measurements = {name: [] for name in series}
    for process in range(setup.processes):
        order = series if process % 2 == 0 else reversed(series)
        completed = subprocess.run([*command, *order], cwd=folder, stdout=subprocess.PIPE, text=True)
        if completed.returncode:
            sys.exit(f"error: measuring {series} with {setup.dll} failed: {completed.stdout}")
        for line in completed.stdout.splitlines():
            name, number = line.split(": ")
            measurements[name].append(float(number))
    return list(measurements.values())


def median(numbers, unit):
    return statistics.median(numbers) / UNITS[unit]


def write_row(*cells):
    row = "{:<58} {:>9} {:>9}  {:<8} {}".format(*cells).rstrip()
    print(row, flush=True)
    with TABLE.open("a") as table:
        table.write(row + "\n")


def report(name, measured, limit, unit="", medians=""):
    digits = 2 if measured < 100 else 0
    write_row(name, f"{measured:.{digits}f} {unit}".rstrip(), f"{limit} {unit}".rstrip(),
              "ok" if measured <= limit else "exceeded", medians)


def report_ratio(name, measured, baseline, limit):
    ratio = statistics.median(a / b for a, b in zip(measured, baseline, strict=True))
    report(name, ratio, limit, medians=f"{median(measured, 'ms'):.3g} / {median(baseline, 'ms'):.3g} ms")


def report_scaling(scaling):
    """Each round measures all sizes, so that the last two of it follow each other."""
    rounds = []
    for _ in range(7):
        setups = [dataclasses.replace(scaling.setup, **{scaling.member: size}) for size in scaling.sizes]
        rounds.append([statistics.median(measure(setup, scaling.series)[0]) for setup in setups])
    growth = statistics.median(times[-1] / times[-2] for times in rounds)
    medians = " ".join(f"{median(times, 'ms'):.3g}" for times in zip(*rounds))
    report(f"{scaling.name}: 10 times as many", growth, MAX_GROWTH_PER_DECADE, "x", f"{medians} ms")


def measure_load(dll):
    return measure(Setup(dll=dll), "load")[0][0]


def measure_dll_size():
    """Returns the size without resources in KB."""
    dll = BIN / "ProductServices.dll"
    resources, = (section for section in pefile.PE(dll).sections if section.Name.startswith(b".rsrc"))
    return (dll.stat().st_size - resources.SizeOfRawData) / 1024


def main():
    TABLE.write_text("")
    write_row("benchmark", "measured", "limit", "", "medians")
    for ratio in RATIOS:
        measured, baseline = measure(ratio.setup, ratio.series, ratio.baseline)
        report_ratio(f"{ratio.name} / {ratio.baseline}", measured, baseline, ratio.limit)
    loads = [(measure_load("ProductServices.dll"), measure_load("CurlBaseline.dll")) for _ in range(25)]
    report_ratio("loading the DLL / libcurl alone", *zip(*loads), MAX_LOAD_RATIO)
    for absolute in ABSOLUTE:
        measured, = measure(absolute.setup, absolute.series)
        report(absolute.name, median(measured, absolute.unit), absolute.limit, absolute.unit)
    for scaling in SCALING:
        report_scaling(scaling)
    report("size of the DLL without its resources", measure_dll_size(), MAX_DLL_SIZE_KB, "KB")


main()
