"""The table and the chart of a run's figures, and which of them are not what they should be."""

import datetime
import math
import os
import pathlib
import platform
import statistics

import command
from workloads import FLOWS, LONG, LONGEST, SHORT

NAMES = {"_libqdp": "the module", "checked": "checked, by hand", "floor": "floor, by hand", "with_cython": "Cython",
         "with_nanobind": "nanobind", "with_pybind11": "pybind11", "with_cffi": "cffi and struct",
         "with_numpy": "ctypes and numpy", "with_struct": "ctypes and struct", "with_ctypes": "ctypes",
         "empty": "an empty extension"}


def median(values):
    return statistics.median(values)


def spread(values):
    """Half the distance between the quartiles, as a share of the median."""
    low, middle, high = statistics.quantiles(values, n=4)
    return (high - low) / 2 / middle


def instructions_text(count):
    return f"{count:,.0f} instructions"


def time_text(seconds):
    for unit, size in ("s", 1), ("ms", 1e-3), ("µs", 1e-6):
        if seconds >= size:
            return f"{seconds / size:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def ratio(times, other, workload):
    """How much longer another way takes than the module: the median of the rounds' ratios, which all ways share."""
    return median([theirs / ours for theirs, ours in zip(times[other][workload], times["_libqdp"][workload])])


def fitted(points):
    """The least-squares line through points: slope, start, and the largest distance as a share of the highest value."""
    xs, ys = zip(*points)
    slope, start = statistics.linear_regression(xs, ys)
    return slope, start, max(abs(y - slope * x - start) for x, y in points) / max(ys)


WHAT_IS_MEASURED = """\
The platform libraries answer with fixed records at next to no cost, so that the binding alone is measured. Every way
gives the same results, which are compared first. *Checked* is the contract with all its checks, written out by hand;
*floor* the interpreter's and the platform's calls of a successful call, without any check. The head of each file in
`bench/native/` says what it does and leaves out. In a list both do what the module does: the first dict's keys are
set from their texts, the later dicts take over these key objects. So the floor of a list of one dict is that of a
single dict, and the floor of a long list is that of dicts whose keys exist.

The other ways are written as an expert in each would. Cython, nanobind and pybind11 make the objects of their keys
once and keep them for the life of the process; behind the wrappers of the latter two stands the interpreter's
interface. The ways in Python take records apart whole, by compiled formats of `struct` or by structured arrays, and
keep their buffers, so that none is cleared for a call; *ctypes* alone reads field by field. All compiled ways write
the texts of flows by one header, without `printf`: the texts are not what the ways differ in."""

ABOUT_BUDGETS = """\
Where a figure is out of reach, the ways by hand say so too: the floor does not reach it either. Beside the ways by
hand lists, dumps of flows and `GetSwitchBurstSize` have wider budgets than single dicts. A dict whose keys exist
costs half of one whose keys are made, so that what the module pays for reading a table's row weighs twice as much;
`checked` itself is up to a tenth above the floor there, and in `GetSwitchBurstSize`, which is little more than its
checks."""

WHO_KEEPS_KEYS = """\
All ways are timed in one process, in which the ways that keep their keys have made these strings already, as a script
that reads the results has: interning the module's keys finds them. The contract sets the keys of a single dict, and
of a list's first, from their texts, which makes, hashes and interns a string each time. That is most of what a single
dict costs, and why the ways that keep their keys are ahead there. The dicts of flows come from `Py_BuildValue`, which
makes each key anew for each dict and does not intern it: a page of flows shares no keys."""

WITHOUT_KEYS = """\
The same without any key alive: a process of its own, in which nothing else has made these strings and each result is
dropped before the next call. Interning then adds each key to the interpreter's table and takes it out again. The ways
that keep their keys cannot be measured so."""

WHAT_IS_COUNTED = """\
Counted by callgrind, the ways other than those by hand in processes of their own, in which no other way keeps keys.
callgrind counts the instructions that run, not what they cost: a large `memset` or `memcpy` runs by 32 bytes an
instruction and counts as so few, though it waits for memory and for pages; one that a processor does as `rep stosb`
counts once. A buffer of megabytes that is cleared for each call therefore shows in times, hardly in counts. The
module clears only the header of such buffers."""

HOW_IT_GROWS = """\
Of each method the time, and below it the instructions, in which the growth is judged: the time is also that of the
caches, and of the pages that the interpreter asks the kernel for and gives back."""

# The most that the module may take of the instructions of `checked` and of `floor`. The later dicts of a list cost half
# of what a dict of its own does, and a flow a third of what printf would take, so that reading a table's row instead of
# a line of code weighs twice and thrice there; and `checked` itself is up to a tenth above the floor.
MOST, WIDER = (1.03, 1.05), {
    "ListPorts, 2 ports": (1.04, 1.15),
    "ListPorts, 16 ports": (1.05, 1.10),
    "ListPorts, 1024 ports": (1.05, 1.10),
    "ListPorts, 16384 ports": (1.05, 1.10),
    "DumpFlowTable, 16 flows": (1.09, 1.13),
    "DumpLBStats, 3 chunks": (1.04, 1.12),
    "GetSwitchBurstSize": (1.03, 1.12),  # little more than its checks
}


def budget(workload):
    """The most of a workload's instructions, by the name of the way by hand."""
    return dict(zip(("checked", "floor"), WIDER.get(workload, MOST)))



class Targets:
    """What is to be reached, and what has been."""

    def __init__(self):
        self.rows, self.missed = [], []

    def at_most(self, what, value, bound, text="{:.3f}".format):
        self.add(what, f"at most {text(bound)}", text(value), value <= bound)

    def at_least(self, what, value, bound):
        self.add(what, f"at least {bound:.2f}", f"{value:.2f}", value >= bound)

    def add(self, what, wanted, found, reached):
        self.rows.append([what, wanted, found, "yes" if reached else "**no**"])
        if not reached:
            self.missed.append(f"{what}: {found}, wanted {wanted}")

    def out_of_reach(self, what, wanted, found, why):
        """A figure that is shown as not reached, and is no failure, since the ways by hand do not reach it either."""
        self.rows.append([what, wanted, found, f"**no**: {why}"])


# How long other ways take at least, as a multiple of the module, by workload.
OTHERS = ["with_nanobind", "with_pybind11", "with_cffi", "with_numpy", "with_struct", "with_ctypes"]
AHEAD = [(LONG.name, "with_cython", 1 / 1.1), (LONGEST.name, "with_cython", 1),
         *((workload.name, way, 1) for workload in (SHORT, LONG, LONGEST) for way in OTHERS),
         *((FLOWS.name, way, 1) for way in ["with_cython", *OTHERS])]


def targets(found, workloads):
    aim = Targets()
    counts, times = found["instructions"], found["times"]
    for workload in workloads:
        for way, most in budget(workload).items():
            share = counts["_libqdp"][workload] / counts[way][workload]
            aim.at_most(f"instructions to {way}: {workload}", share, most)
    for workload in workloads:
        aim.at_most(f"time to checked: {workload}", 1 / ratio(times, "checked", workload),
                    budget(workload)["checked"] + 0.02)
    over = median([ours - bare for ours, bare in zip(found["empty_list"], found["platform_call"])])
    aim.at_most("an empty list, over the platform's call", over, 0.1e-6, time_text)
    for workload, way, bound in AHEAD:
        if way in times:
            what, share = f"{NAMES[way]} to the module: {workload}", ratio(times, way, workload)
            floor_share = share / ratio(times, "floor", workload)
            if share < bound and floor_share < bound:
                aim.out_of_reach(what, f"at least {bound:.2f}", f"{share:.2f}", f"to the floor {floor_share:.2f}")
            else:
                aim.at_least(what, share, bound)
    imports = found["imports"]
    aim.at_most("import, over an empty extension's",
                median([ours - bare for ours, bare in zip(imports["_libqdp"], imports["empty"])]), 0.3e-3, time_text)
    aim.at_most("stripped file, bytes", found["files"]["_libqdp"]["bytes"], 192 * 1024, "{:,.0f}".format)
    needs = found["files"]["_libqdp"]["needs_cpp"]
    aim.add("C++ runtime", "not needed", "needed" if needs else "not needed", not needs)
    aim.at_most("bytes kept a port entry", found["kept_bytes"]["_libqdp"], 860, "{:,.0f}".format)
    starts = found["command"]
    for name in sorted(command.LINES):
        aim.at_most(f"start of {name}, to `import argparse`", starts[name] / starts["import argparse"], command.START)
    snapshot = starts["qdp snapshot"] / starts["import argparse"]
    aim.at_most("qdp snapshot of the default host, to `import argparse`", snapshot, command.SNAPSHOT)
    aim.at_most("a TAB in the shell", starts["TAB"], 30e-3, time_text)
    for method, points in found["instructions_growth"].items():
        aim.at_most(f"instructions' distance from linear growth: {method}", fitted(points)[2], 0.01)
    return aim


