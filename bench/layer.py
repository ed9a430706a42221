"""Measures what `qdp` adds to the bare module, checks it against its bounds, and writes docs/performance.md: BUILD.

With a part's name behind BUILD, it is the process that measures that part.
"""

import json
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROUNDS = 31

# What is measured: the most that it may be, the unit, and in words. Ratios are of times that were taken in turns.
FIGURES = {
    "call": (100, "ns", "`qdp.call` on top of the bare call"),
    "redirecting": (None, "ns", "redirecting file descriptor 2 for the call, by hand, on top of the bare call"),
    "without_helper": (None, "ns", "`qdp.call` without its C helper, on top of the bare call"),
    "call_share": (1 / 20, "", "the first of these as a share of the redirecting by hand"),
    "record": (250, "ns", "making a record of a dictionary"),
    "import": (15, "ms", "`import qdp` on top of `import _libqdp`, CPU time"),
    "sweep": (1.25, "", "a sweep of the large scenario through `qdp`, as a multiple of the bare one"),
}


def best(function, repeats=300):
    """The nanoseconds of one call, in the best of a few runs."""
    found = []
    for _ in range(5):
        begin = time.perf_counter_ns()
        for _ in range(repeats):
            function()
        found.append((time.perf_counter_ns() - begin) / repeats)
    return min(found)


def differences(base, others, repeats):
    """By name: the least time of each function over its rounds, without that of `base`; they take turns."""
    functions = {"base": base, **others}
    found = {name: [] for name in functions}
    for _ in range(ROUNDS):
        for name, function in functions.items():
            found[name].append(best(function, repeats))
    return {name: min(found[name]) - min(found["base"]) for name in others}


def redirecting(function, *arguments):
    """What scripts do by hand to have a call's text."""
    with open("/tmp/qdp-bench-text", "w+b", buffering=0) as file:
        saved = os.dup(2)
        os.dup2(file.fileno(), 2)
        try:
            result = function(*arguments)
        finally:
            os.dup2(saved, 2)
            os.close(saved)
        file.seek(0)
        return result, file.read()


def measure_calls():
    import _libqdp
    import qdp
    from qdp import _capture

    bare, call = _libqdp.GetPanicOnTxHang, qdp.call
    module = sys.modules["qdp.call"]
    _capture.install(module._rows_by_name, module._other_row, module._settle)
    slow = {
        "redirecting": lambda: redirecting(bare, 0),
        "without_helper": lambda: _capture.call("GetPanicOnTxHang", 0),
    }
    found = differences(lambda: bare(0), {"call": lambda: call("GetPanicOnTxHang", 0)}, 2000)
    found.update(differences(lambda: bare(0), slow, 20))
    found["call_share"] = found["call"] / found["redirecting"]
    return found


def measure_records():
    from qdp import records
    from qdp.record import as_records, plan_of

    as_records = getattr(sys.modules.get("qdp._call"), "as_records", as_records)
    plan = plan_of(records.RESULTS["ListSwitchMACTable"])
    count = 1000
    tables = []

    def tables_made():
        tables[:] = [
            {"MacLimit": 1, "MacTableList": [{"macAddr": "a", "vlanID": i} for i in range(count)]} for _ in range(20)
        ]

    times = []
    for _ in range(ROUNDS):
        tables_made()
        begin = time.perf_counter_ns()
        for table in tables:
            as_records(plan, table)
        times.append((time.perf_counter_ns() - begin) / count / len(tables))
    return {"record": min(times)}


def sweep(call):
    """What a monitoring script reads of a host in a round."""
    for switch in call("ListSwitches"):
        number = switch["swID"]
        for port in call("ListPorts", number):
            call("GetPortStats", number, port["portID"])
        call("ListSwitchMACTable", number)
    for lcore in range(8):
        page = {"startIndex": 0, "list": [None]}
        while page["list"]:
            page = call("DumpFlowTable", 0, lcore, page["startIndex"], *[0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0])
            if page["startIndex"] == 0xFFFFFFFF:
                break


def measure_sweep():
    import _libqdp
    import qdp

    ways = [lambda name, *arguments: getattr(_libqdp, name)(*arguments), qdp.call]
    ratios = []
    for way in ways:
        sweep(way)
    for _ in range(ROUNDS // 4):
        times = []
        for way in ways:
            begin = time.process_time()
            sweep(way)
            times.append(time.process_time() - begin)
        ratios.append(times[1] / times[0])
    return {"sweep": statistics.median(ratios)}


def cpu_seconds_of_import(build, name):
    program = "import time; begin = time.process_time(); import {}; print(time.process_time() - begin)".format(name)
    return float(child(build, "-c", program))


def measure_import(build):
    times = {"_libqdp": [], "qdp": []}
    for _ in range(ROUNDS):
        for name, found in times.items():
            found.append(cpu_seconds_of_import(build, name))
    return {"import": (min(times["qdp"]) - min(times["_libqdp"])) * 1e3}


PARTS = {"calls": measure_calls, "records": measure_records, "sweep": measure_sweep}


def child(build, *command):
    environment = {
        **os.environ,
        "LD_LIBRARY_PATH": str(build / "host"),
        "PYTHONPATH": str(build),
        "QDP_HOST_SCENARIO": str(ROOT / "host" / "scenarios" / "large.json"),
    }
    run = subprocess.run(
        ["/usr/bin/python3", *command], env=environment, cwd=str(build), stdout=subprocess.PIPE, text=True, check=True
    )
    return run.stdout


def measured(build):
    figures = measure_import(build)
    for part in PARTS:
        figures.update(json.loads(child(build, __file__, str(build), part)))
    return figures


def rounded(number):
    """Three digits, without an exponent."""
    return f"{float(f'{number:.3g}'):,.10g}"


def table(figures):
    lines = ["| what | measured | at most |", "|---|---|---|"]
    for name, (most, unit, words) in FIGURES.items():
        numbers = ["" if number is None else f"{rounded(number)} {unit}".strip() for number in (figures[name], most)]
        lines.append(f"| {words} | {numbers[0]} | {numbers[1]} |")
    return "\n".join(lines) + "\n"


def faults(figures):
    return [f"{words} is {figures[name]:.3g} {unit}, more than {most:.3g}"
            for name, (most, unit, words) in FIGURES.items() if most is not None and figures[name] > most]


HEAD = "## What `qdp` adds"
SAID = """
The operator layer calls the same methods. `script/bench` holds these figures against their bounds.

"""


def write(figures):
    """Puts the figures at the end of the page that run.py writes."""
    page = ROOT / "docs" / "performance.md"
    text = page.read_text().partition(HEAD)[0].rstrip("\n")
    page.write_text(f"{text}\n\n{HEAD}\n{SAID}{table(figures)}")


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    if sys.argv[2:]:
        print(json.dumps(PARTS[sys.argv[2]]()))
        return
    figures = measured(build)
    print(table(figures), end="")
    write(figures)
    sys.exit("\n".join(faults(figures)) or 0)


if __name__ == "__main__":
    main()
