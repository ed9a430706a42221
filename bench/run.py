"""Measures the module beside the other ways to do its work, and writes what was found: BUILD [--rounds N]."""

import argparse
import json
import pathlib
import subprocess
import sys
import tempfile

import command
import instructions
import report
from workloads import GROWTH, LONGEST, WORKLOADS

ROOT = pathlib.Path(__file__).resolve().parent.parent
BY_HAND = ["_libqdp", "checked", "floor"]  # which keep no keys
WAYS = [*BY_HAND, "with_cython", "with_nanobind", "with_pybind11", "with_cffi", "with_numpy", "with_struct",
        "with_ctypes"]
FILES = {"_libqdp": "_libqdp.abi3.so", "empty": "bench/empty.abi3.so", "checked": "bench/checked.abi3.so",
         "floor": "bench/floor.abi3.so", "with_cython": "bench/with_cython.so",
         "with_nanobind": "bench/with_nanobind.so", "with_pybind11": "bench/with_pybind11.so",
         "with_cffi": "bench/_with_cffi.so"}
IMPORT = """
import sys, time
begin = time.thread_time()
import {way}
print(time.thread_time() - begin)
"""


def say(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)


def child(build, *command, **options):
    run = subprocess.run(["/usr/bin/python3", *command], env=instructions.environment(build), text=True,
                         stdout=subprocess.PIPE, check=True, **options)
    return run.stdout


def timed(build, ways, rounds, growth_rounds):
    """Times, growth and memory from one process that does nothing else."""
    wanted = json.dumps({"ways": ways, "rounds": rounds, "growth_rounds": growth_rounds})
    return json.loads(child(build, str(ROOT / "bench" / "timing.py"), input=wanted))


def import_times(build, ways, rounds):
    """Seconds by way, each import in a process of its own."""
    times = {way: [] for way in ["empty", *ways]}
    for _ in range(rounds):
        for way, found in times.items():
            found.append(float(child(build, "-c", IMPORT.format(way=way))))
    return times


def file_facts(build):
    """By way: the bytes of the stripped file, and whether it needs the C++ runtime."""
    facts = {}
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder, "stripped")
        for way, name in FILES.items():
            if not (build / name).exists():
                continue
            subprocess.run(["strip", "-o", stripped, build / name], check=True)
            dynamic = subprocess.run(["readelf", "-d", stripped], check=True, capture_output=True, text=True).stdout
            facts[way] = {"bytes": stripped.stat().st_size, "needs_cpp": "libstdc++" in dynamic}
    return facts


def counted(build, ways, rounds):
    """Instructions per call, [way][workload]. The ways by hand share the module's process; the others are alone, since
    the strings that they keep would spare the module the making of its own. The longest list is counted by hand
    only."""
    counts = {}
    for some in BY_HAND, *([way] for way in ways if way not in BY_HAND):
        say(f"counting instructions: {', '.join(some)}")
        small = [(way, workload) for workload in WORKLOADS for way in some if workload.counted > 1]
        large = [(way, workload) for workload in WORKLOADS for way in some
                 if workload.counted == 1 and (way in BY_HAND or workload != LONGEST)]
        counts |= instructions.measured(build, small, rounds) | instructions.measured(build, large, 1)
    return {way: {workload.name: counts[way, workload] for workload in WORKLOADS if (way, workload) in counts}
            for way in ways}


def counted_growth(build):
    """Instructions of lists of several lengths, [method] as pairs of length and count: steady, where times are not. The
    longest are left out: where the fixed library copies two megabytes at once, that counts as one instruction."""
    growth = {}
    for method, lists in GROWTH.items():
        say(f"counting instructions of longer and longer lists: {method}")
        some = lists[:-1:2]
        counts = instructions.measured(build, [("_libqdp", workload) for _, workload in some], 1)
        growth[method] = [(length, counts["_libqdp", workload]) for length, workload in some]
    return growth


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=128, help="of times; a quarter of imports")
    options = parser.parse_args()
    build = options.build.resolve()

    ways = [way for way in WAYS if way != "with_nanobind" or (build / FILES[way]).exists()]
    found = {"instructions": counted(build, ways, 3), "instructions_growth": counted_growth(build)}
    say("measuring times, growth and memory")
    found |= timed(build, ways, options.rounds, max(options.rounds // 4, 1))
    say("measuring times without keys alive")
    found["times_alone"] = timed(build, BY_HAND, max(options.rounds // 2, 2), 0)["times"]
    say("measuring imports")
    found["imports"] = import_times(build, ways, max(options.rounds // 4, 2))
    found["files"] = file_facts(build)
    say("measuring starts of the command")
    found["command"] = command.measured(build, max(options.rounds // 4, 2))

    results = ROOT / "bench" / "results"
    workloads = [workload.name for workload in WORKLOADS]
    table, missed = report.table(found, workloads, ways)
    (results / "figures.json").write_text(json.dumps(found))
    (results / "table.md").write_text(table)
    (results / "chart.svg").write_text(report.chart(found, workloads, ways))
    (ROOT / "docs").mkdir(exist_ok=True)
    (ROOT / "docs" / "performance.md").write_text(table)
    print(table, flush=True)
    for text in missed:
        say(f"missed: {text}")
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
