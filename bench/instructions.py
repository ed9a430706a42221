"""Instructions per call, counted by callgrind.

One process under callgrind makes all the calls. Between two measurements it calls Fixed_Mark of the fixed platform
library, at which callgrind writes down what it has counted and begins anew. Each workload is measured without a call
and with many; the difference is the calls'. Hashes are fixed and the collector is off, so that the counts are steady.

The ways take turns, forwards and backwards, and the median of the rounds stands: now and then the interpreter makes its
table of interned strings anew, which has nothing to do with the call that it happens in.

As a program, this is that process; it takes a JSON list of [way, workload] on standard input.
"""

import gc
import importlib
import itertools
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile

from workloads import Workload, same_result

HERE = pathlib.Path(__file__).resolve().parent
WARM_UP = 10  # calls, of workloads that are counted over many


def environment(build):
    """In which a process finds the fixed platform libraries, the module and the other ways."""
    return {
        **os.environ,
        "LD_LIBRARY_PATH": str(build / "bench" / "fixed"),
        "PYTHONPATH": os.pathsep.join(map(str, [build, build / "bench", HERE / "ways"])),
        "PYTHONHASHSEED": "0",
        "PYTHONDONTWRITEBYTECODE": "1",
    }


def measured(build, pairs, rounds=5):
    """Instructions per call of each pair (way, workload), by the pair."""
    calls = [pair for round_ in range(rounds) for pair in (pairs if round_ % 2 == 0 else reversed(pairs))]
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder, "counts")
        command = ["valgrind", "--tool=callgrind", "--dump-before=Fixed_Mark", f"--callgrind-out-file={out}",
                   "/usr/bin/python3", __file__]
        run = subprocess.run(command, env=environment(build), input=json.dumps(calls), text=True, capture_output=True)
        if run.returncode != 0:
            raise RuntimeError(f"the process under callgrind failed:\n{run.stderr[-3000:]}")
        counts = {pair: [] for pair in pairs}
        for i, (way, workload) in enumerate(calls):
            # Three marks each; what precedes the first is preparation.
            none, many = (total(pathlib.Path(f"{out}.{3 * i + part}")) for part in (2, 3))
            counts[way, workload].append((many - none) / workload.counted)
        return {pair: statistics.median(found) for pair, found in counts.items()}


def total(dump):
    """The instructions of one of callgrind's files."""
    return int(re.search(r"^(?:summary|totals): (\d+)", dump.read_text(), re.MULTILINE)[1])


def call(function, arguments, count):
    for _ in itertools.repeat(None, count):
        function(*arguments)


def main():
    fixed = importlib.import_module("fixed")
    # JSON has no tuples, and a call with a list of arguments makes one.
    calls = [(way, Workload(name, method, tuple(arguments), *rest))
             for way, (name, method, arguments, *rest) in json.load(sys.stdin)]
    for way, workload in {(way, workload.name): (way, workload) for way, workload in calls}.values():
        if workload.counted > 1:  # the largest are compared where their times are taken
            same_result(way, workload, fixed)
    gc.disable()
    for way, workload in calls:
        workload.prepare(fixed)
        function = workload.call_of(way)
        call(function, workload.arguments, WARM_UP if workload.counted > 1 else 1)
        fixed.mark()
        call(function, workload.arguments, 0)
        fixed.mark()
        call(function, workload.arguments, workload.counted)
        fixed.mark()


if __name__ == "__main__":
    main()
