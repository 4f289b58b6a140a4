"""Runs the benchmark programs under Wine and prints the table of what they measured.

run.py BIN TABLE: the folder of the built programs; the file that takes the table too.
"""

import pathlib
import statistics
import subprocess
import sys

import pefile

REPOSITORY = pathlib.Path(__file__).parent.parent
BIN, TABLE = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
LANGUAGE_FILE = pathlib.Path("lang/DE/Vemo_DE.lang")
SIZES = (1, 10, 100, 1000, 10000)
# The most that the last step of ten may cost; n log n would be 13.3.
LINEAR = 12.5
rows = []


def run(program, *arguments, folder=BIN):
    """{series: numbers} that a program printed."""
    command = [REPOSITORY / "scripts/run_wine.sh", BIN / program, *map(str, arguments)]
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, text=True)
    if done.returncode:
        sys.exit(f"error: {program} {' '.join(map(str, arguments))} failed: {done.stdout}")
    series = {}
    for line in done.stdout.splitlines():
        name, number = line.split()
        series.setdefault(name, []).append(float(number))
    return series


def ratio(measured, base):
    """The median of the ratios of neighbours: a busy moment of the machine meets both."""
    return statistics.median(a / b for a, b in zip(measured, base, strict=True))


def medians(unit, name, *series):
    return " / ".join(f"{statistics.median(each) / unit:.3g}" for each in series) + f" {name}"


def report(what, measured, target, unit="", note=""):
    """A row of the table; a target is the most that is good."""
    digits = 2 if measured < 100 else 0
    verdict = "ok" if measured <= target else "over"
    rows.append((what, f"{measured:.{digits}f}{unit}", f"{target:g}{unit}", verdict, note))


def measure_calls():
    for scheme, port, rounds in (("http", 18451, 400), ("https", 18452, 200)):
        series = run("call_benchmark.exe", f"Bench{scheme.capitalize()}.dll",
                     f"{scheme}://127.0.0.1:{port}/get_updates.php", rounds)
        for base, calls in (("bare", series["library"][0::2]), ("required", series["library"][1::2])):
            what = "bare post" if base == "bare" else "bare post and required calls"
            report(f"update check over {scheme.upper()} / {what}", ratio(calls, series[base]), 1.03,
                   note=medians(1000, "ms", calls, series[base]))


def measure_own_part():
    series = run("own_part_benchmark.exe", 1, 500)
    calls, parts = series["call"], [series[part] for part in ("record", "cursor", "parses")]
    report("update check without the network", statistics.median(calls), 100, " us")
    report("the same / required calls alone", ratio(calls, map(sum, zip(*parts))), 1.1,
           note=medians(1, "us: record, cursor, two parses", *parts))


def measure_loading():
    series = {"ProductServices.dll": [], "CurlAlone.dll": []}
    for _ in range(25):
        for dll, results in series.items():
            results.append(run("load_benchmark.exe", dll))
    library, bare = ([sum(result["load"]) for result in results] for results in series.values())
    added = [sum(result["working-set"]) for result in series["ProductServices.dll"]]
    report("loading the DLL / libcurl alone", ratio(library, bare), 1.1,
           note=medians(1000, "ms", library, bare))
    report("working set that loading adds", statistics.median(added) / 2**20, 9.5, " MB")


def measure_dialog():
    first, library, bare = [], [], []
    for _ in range(5):
        series = run("dialog_benchmark.exe", 3, 7)
        first.append(series["library"][0])
        library += series["library"][1:]
        bare += series["bare"][1:]
    report("reply to painted upgrade center, first time", statistics.median(first) / 1000, 100, " ms")
    report("reply to painted upgrade center / bare dialog", ratio(library, bare), 1.2,
           note=medians(1000, "ms", library, bare))


def measure_growth(what, measure, sizes=SIZES):
    """The medians in ms for each size, of rounds that go through them all."""
    rounds = [[measure(size) / 1000 for size in sizes] for _ in range(7)]
    *_, fewer, most = by_size = list(zip(*rounds))
    times = [statistics.median(size) for size in by_size]
    report(f"{what}: 10 times as many", ratio(most, fewer), LINEAR, " x",
           " ".join(f"{time:.3g}" for time in times) + " ms")
    return times


def shown_offers(count):
    return statistics.median(run("dialog_benchmark.exe", count, 3)["library"])


def read_offers(count):
    return statistics.median(run("own_part_benchmark.exe", count, 7)["call"])


def report_parses(count):
    series = run("own_part_benchmark.exe", count, 15)
    report(f"{count:,} offers in a reply / two parses of it", ratio(series["call"], series["parses"]), 1.1,
           note=medians(1000, "ms", series["call"], series["parses"]))


def first_call(factor):
    """The first call of a process, with a language file of so many times the sample's lines."""
    folder = BIN / f"lang-{factor}"
    (folder / LANGUAGE_FILE).parent.mkdir(parents=True, exist_ok=True)
    text = (REPOSITORY / "samples" / LANGUAGE_FILE).read_text("utf-16-le")
    (folder / LANGUAGE_FILE).write_text("\n".join([text] * factor), "utf-16-le")
    return run("own_part_benchmark.exe", 1, 1, folder=folder)["call"][0]


def measure_size():
    dll = BIN / "ProductServices.dll"
    resources, = (section for section in pefile.PE(dll).sections if section.Name.startswith(b".rsrc"))
    report("size of the DLL without its resources",
           (dll.stat().st_size - resources.SizeOfRawData) / 1024, 640, " KB")


def print_table():
    lines = ["{:<56} {:>9} {:>9}  {:<5} {}".format(*row).rstrip()
             for row in [("what", "measured", "at most", "", "medians"), *rows]]
    TABLE.write_text("\n".join(lines) + "\n")
    print(TABLE.read_text(), end="")


def step(sentence):
    print(f"==> {sentence}", flush=True)


step("Update checks beside bare posts (some seconds)")
measure_calls()
measure_own_part()
step("Loading, in fresh processes (some seconds)")
measure_loading()
step("The upgrade center beside a bare dialog (some seconds)")
measure_dialog()
step("Growth: offers, replies, language files (a minute)")
shown = measure_growth("offers shown, 1 to 10,000", shown_offers)
report("10,000 offers shown", shown[-1], 1000, " ms")
measure_growth("offers in a reply, 1 to 10,000", read_offers)
report_parses(SIZES[-1])
first = measure_growth("language file, 88 to 88,000 lines", first_call, SIZES[:4])
report("first call of a process, 88 lines", first[0], 2, " ms")
measure_size()
print_table()
