"""Times of calls, how they grow, and the memory that results keep.

The ways take turns in many rounds, so that whatever else the machine does meets all of them, and the processor's time
is taken, not that of waiting for one. The collector is off: it costs all ways the same. As a program it takes {"ways",
"rounds", "growth_rounds"} as JSON on standard input, and prints its figures as JSON; without growth rounds only times.
"""

import gc
import importlib
import itertools
import json
import statistics
import sys
import time
import tracemalloc

from workloads import EMPTY, GROWTH, LONGEST, WORKLOADS, same_result

# Seconds: so short that the ways of one round mostly meet the same machine, which others share.
SAMPLE = 0.005


def seconds(function, arguments, calls):
    """Of one call, over many."""
    turns = itertools.repeat(None, calls)
    begin = time.thread_time()
    for _ in turns:
        function(*arguments)
    return (time.thread_time() - begin) / calls


def calls_a_sample(function, arguments):
    once = max(min(seconds(function, arguments, 1) for _ in range(3)), 1e-8)
    return max(1, int(SAMPLE / once))


def interleaved(functions, arguments, rounds):
    """Lists of seconds a call, one of each function a round. Each round begins with another function: what one leaves
    in the caches and in the allocator's lists meets every other."""
    calls = [calls_a_sample(function, arguments) for function in functions]
    samples = [[] for _ in functions]
    for round_ in range(rounds):
        for turn in range(len(functions)):
            i = (round_ + turn) % len(functions)
            samples[i].append(seconds(functions[i], arguments, calls[i]))
        gc.collect()
    return samples


def growth(lists, fixed, rounds):
    """By number of entries: the median of some rounds' seconds a call."""
    samples = {count: [] for count, _ in lists}
    for count, workload in lists * rounds:
        workload.prepare(fixed)
        samples[count].append(seconds(workload.call_of("_libqdp"), workload.arguments, 1))
    return [(count, statistics.median(found)) for count, found in samples.items()]


def kept_bytes(way, workload):
    """The memory that a result keeps."""
    function = workload.call_of(way)
    function(*workload.arguments)
    tracemalloc.start()
    before = tracemalloc.get_traced_memory()[0]
    result = function(*workload.arguments)
    after = tracemalloc.get_traced_memory()[0]
    tracemalloc.stop()
    del result
    return after - before


def main():
    wanted = json.load(sys.stdin)
    ways, rounds = wanted["ways"], wanted["rounds"]
    fixed = importlib.import_module("fixed")
    for workload in WORKLOADS:
        for way in ways:
            same_result(way, workload, fixed)
    gc.disable()

    times = {way: {} for way in ways}
    for workload in WORKLOADS:
        print(f"bench: {workload.name}", file=sys.stderr, flush=True)
        workload.prepare(fixed)
        samples = interleaved([workload.call_of(way) for way in ways], workload.arguments, rounds)
        for way, found in zip(ways, samples):
            times[way][workload.name] = found

    if wanted["growth_rounds"] == 0:
        print(json.dumps({"times": times}))
        return

    EMPTY.prepare(fixed)
    empty_list, platform_call = interleaved([EMPTY.call_of("_libqdp"), fixed.ask_for_ports], EMPTY.arguments, rounds)
    figures = {
        "times": times,
        "empty_list": empty_list,
        "platform_call": platform_call,
        "growth": {method: growth(lists, fixed, wanted["growth_rounds"]) for method, lists in GROWTH.items()},
    }
    LONGEST.prepare(fixed)
    figures["kept_bytes"] = {way: kept_bytes(way, LONGEST) / LONGEST.ports for way in ways}
    print(json.dumps(figures))


if __name__ == "__main__":
    main()
