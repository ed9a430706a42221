"""Times of calls, how they grow, and the memory that results keep.

The ways take turns in many rounds, so that whatever else the machine does meets all of them. The collector is off: it
costs all ways the same. As a program it takes {"ways", "workloads", "rounds"} as JSON on standard input, and prints its
figures as JSON.
"""

import gc
import importlib
import itertools
import json
import sys
import time
import tracemalloc

from workloads import BY_NAME, same_result

SAMPLE = 0.02  # seconds
GROWTH_PORTS = [0, 1024, 2048, 4096, 6144, 8192, 10240, 12288, 14336, 16384]
GROWTH_MACS = [0, 4096, 8192, 16384, 24576, 32768, 40960, 49152, 57344, 65536]


def seconds(function, arguments, calls):
    """Of one call, over many."""
    turns = itertools.repeat(None, calls)
    begin = time.perf_counter()
    for _ in turns:
        function(*arguments)
    return (time.perf_counter() - begin) / calls


def calls_a_sample(function, arguments):
    once = max(min(seconds(function, arguments, 1) for _ in range(3)), 1e-8)
    return max(1, int(SAMPLE / once))


def interleaved(functions, arguments, rounds):
    """Lists of seconds a call, one of each function a round."""
    calls = [calls_a_sample(function, arguments) for function in functions]
    samples = [[] for _ in functions]
    for _ in range(rounds):
        for function, count, found in zip(functions, calls, samples):
            found.append(seconds(function, arguments, count))
        gc.collect()
    return samples


def growth(function, set_count, counts, rounds):
    """The best of some rounds' seconds a call, by count."""
    best = {}
    for count in counts * rounds:
        set_count(count)
        best[count] = min(seconds(function, (0,), 1), best.get(count, 1e9))
    return list(best.items())


def kept_bytes(function, arguments):
    """The memory that a result keeps."""
    function(*arguments)
    tracemalloc.start()
    before = tracemalloc.get_traced_memory()[0]
    result = function(*arguments)
    after = tracemalloc.get_traced_memory()[0]
    tracemalloc.stop()
    del result
    return after - before


def main():
    wanted = json.load(sys.stdin)
    rounds = wanted["rounds"]
    fixed = importlib.import_module("fixed")
    ways = [importlib.import_module(name) for name in wanted["ways"]]
    workloads = [BY_NAME[name] for name in wanted["workloads"]]
    for workload in workloads:
        for way in ways:
            same_result(way, workload, fixed)
    gc.disable()

    times = {name: {} for name in wanted["ways"]}
    for workload in workloads:
        print(f"bench: {workload.name}", file=sys.stderr, flush=True)
        fixed.set_ports(workload.ports)
        samples = interleaved([getattr(way, workload.method) for way in ways], workload.arguments, rounds)
        for name, found in zip(wanted["ways"], samples):
            times[name][workload.name] = found

    fixed.set_ports(0)
    module = importlib.import_module("_libqdp")
    empty_list, platform_call = interleaved([module.ListPorts, fixed.ask_for_ports], (0,), rounds)
    figures = {
        "times": times,
        "empty_list": empty_list,
        "platform_call": platform_call,
        "growth": {"ListPorts": growth(module.ListPorts, fixed.set_ports, GROWTH_PORTS, rounds),
                   "ListSwitchMACTable": growth(module.ListSwitchMACTable, fixed.set_macs, GROWTH_MACS, rounds)},
    }
    fixed.set_ports(16384)
    figures["kept_bytes"] = {name: kept_bytes(way.ListPorts, (0,)) / 16384 for name, way in zip(wanted["ways"], ways)}
    print(json.dumps(figures))


if __name__ == "__main__":
    main()
