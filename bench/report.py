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
hand lists have wider budgets than single dicts: a dict whose keys exist costs half of one whose keys are made, so that
what the module pays for reading a table's row weighs twice as much. Beside the floor dumps of flows and
`GetSwitchBurstSize`, which is little more than its checks, have wider budgets too; `checked` itself is 1.03 to 1.10
of the floor in all of these. No wider budget lies more than a hundredth above what has been measured."""

WHY_PEERS_ARE_AHEAD = """\
What the peers that are ahead in dumps of flows and short lists leave out is set by the contract. The flows' dicts come
from `Py_BuildValue`, which reads its format and makes six keys for each flow; fresh keys differ from shared ones by
identity and by the length of a pickle, so that they stay fresh. For 16 flows the format takes 26,000 of the floor's
230,000 instructions and the fresh keys take 36,000: a floor whose flows share their keys takes 169,000, less than any
peer. In a list of 16 ports making the first dict's keys takes 7,400 of the floor's 69,000 instructions: with keys kept
between calls it takes 61,500, about what Cython takes and less than nanobind and pybind11. At 1024 ports the floor
takes less than both; the module's 3.5 % more are the bounds and the objects that they do not check."""

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

# The most that the module may take of the instructions of `checked` and of `floor`. A wider budget lies at most a
# hundredth above what has been measured. Most of the width beside the floor is what `checked` takes as well: 1.03 to
# 1.10 of the floor in the workloads named here.
MOST, WIDER = (1.03, 1.05), {
    # The first dict's keys are compared with their texts and owned, and one other dict alone gains by it.
    "ListPorts, 2 ports": (1.03, 1.135),
    # A dict whose keys exist costs half of another, so that reading a row of the table weighs twice as much. The floor
    # also looks at no object that it has made.
    "ListPorts, 16 ports": (1.04, 1.09),
    "ListPorts, 1024 ports": (1.035, 1.07),
    "ListPorts, 16384 ports": (1.035, 1.07),
    # The floor does not look whether an entry lies in the response, the module at each member that it shows.
    "DumpFlowTable, 16 flows": (1.03, 1.07),
    # Dicts of few keys, each made by a call of what fills the dicts of all tables.
    "DumpLBStats, 3 chunks": (1.04, 1.115),
    # Little more than its checks, none of which the floor makes.
    "GetSwitchBurstSize": (1.03, 1.11),
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


def rows_text(heads, rows):
    lines = ["| " + " | ".join(heads) + " |", "|" + "|".join([" --- "] + [" ---: "] * (len(heads) - 1)) + "|"]
    lines += ["| " + " | ".join(map(str, row)) + " |" for row in rows]
    return "\n".join(lines)


def machine():
    model = next((line.split(":")[1].strip() for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines()
                  if line.startswith("model name")), platform.machine())
    load = os.getloadavg()[0]
    return (f"{model}, {os.cpu_count()} processors, Linux {platform.release()}, Python {platform.python_version()}; "
            f"load {load:.1f} at the end")


def ahead(found, workloads, ways):
    """The ways that take less time than the module, by hand or not."""
    for way in ways:
        faster = [f"{workload} ({ratio(found['times'], way, workload):.2f})" for workload in workloads
                  if ratio(found["times"], way, workload) < 0.98]
        if faster:
            yield f"- {NAMES[way]}: {'; '.join(faster)}"


def table(found, workloads, ways):
    """The whole text, and what has been missed."""
    aim = targets(found, workloads)
    times, counts = found["times"], found["instructions"]
    heads = ["", *(NAMES[way] for way in ways)]

    def cells(cell):
        return rows_text(heads, [[workload, *(cell(workload, way) for way in ways)] for workload in workloads])

    def time_of(workload, way):
        found_times = times[way][workload]
        return f"{time_text(median(found_times))} ±{spread(found_times):.0%}"

    parts = [
        "# What the module's calls cost",
        f"Measured by `script/bench` on {datetime.date.today()}:\n{machine()}.",
        WHAT_IS_MEASURED,
        "## What is to be reached",
        rows_text(["", "wanted", "found", "reached"], aim.rows),
        ABOUT_BUDGETS,
        WHY_PEERS_ARE_AHEAD,
        "## Time of a call",
        "Processor time: medians of interleaved rounds, and half the distance between their quartiles.",
        cells(time_of),
        "## Time of a call, as a multiple of the module's",
        cells(lambda workload, way: f"{ratio(times, way, workload):.2f}"),
        "Ahead of the module by more than 2%:",
        "\n".join(ahead(found, workloads, ways)),
        WHO_KEEPS_KEYS,
        "## Time of a call without keys alive",
        WITHOUT_KEYS,
        rows_text(["", *(NAMES[way] for way in found["times_alone"]), "to the time with keys alive"],
                  [alone_row(found, workload) for workload in workloads]),
        "## Instructions of a call",
        WHAT_IS_COUNTED,
        cells(lambda workload, way: f"{counts[way][workload]:,.0f}" if workload in counts[way] else ""),
        "## Import, file, memory",
        rows_text(["", "import", "stripped file, bytes", "needs the C++ runtime", "bytes kept a port entry"],
                  [facts_row(found, way) for way in ["empty", *ways]]),
        "## Growth with the number of entries",
        rows_text(["", "to", "an entry", "at the start", "largest distance from the line"],
                  [growth_row(method, found[what][method], text) for method in found["growth"]
                   for what, text in (("growth", time_text), ("instructions_growth", instructions_text))]),
        HOW_IT_GROWS,
    ]
    return "\n\n".join(parts) + "\n", aim.missed


def alone_row(found, workload):
    alone = {way: median(times[workload]) for way, times in found["times_alone"].items()}
    share = alone["_libqdp"] / median(found["times"]["_libqdp"][workload])
    return [workload, *(time_text(seconds) for seconds in alone.values()), f"{share:.2f}"]


def facts_row(found, way):
    facts = found["files"].get(way)
    kept = found["kept_bytes"].get(way)
    return [NAMES[way], time_text(median(found["imports"][way])), f"{facts['bytes']:,}" if facts else "",
            ("yes" if facts["needs_cpp"] else "no") if facts else "", f"{kept:.0f}" if kept else ""]


def growth_row(method, points, text):
    slope, start, distance = fitted(points)
    return [method, f"{points[-1][0]:,} entries", text(slope), text(start) if start > 0 else "0", f"{distance:.1%}"]


# --- The chart: for each workload a group of bars, the time as a multiple of the module's, on a logarithmic scale ---

COLOURS = {
    "_libqdp": "#1b6ca8",
    "checked": "#6fa8dc",
    "floor": "#b8cfe5",
    "with_cython": "#3c9d5b",
    "with_nanobind": "#e0b040",
    "with_pybind11": "#d98c21",
    "with_numpy": "#a64d79",
    "with_cffi": "#c0504d",
    "with_struct": "#8064a2",
    "with_ctypes": "#5a5a5a",
}
LEFT, WIDTH, BAR, GAP, TOP = 190, 560, 11, 14, 60


def chart(found, workloads, ways):
    ratios = {(workload, way): ratio(found["times"], way, workload) for workload in workloads for way in ways}
    lowest, highest = 0.5, max(ratios.values()) * 1.3

    def x(value):
        return LEFT + WIDTH * math.log(max(value, lowest) / lowest) / math.log(highest / lowest)

    height = TOP + len(workloads) * (len(ways) * BAR + GAP) + 30
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 70}" height="{height}" '
             'font-family="sans-serif" font-size="11">',
             '<rect width="100%" height="100%" fill="white"/>',
             '<text x="10" y="18" font-size="14">Time of a call, as a multiple of the module\'s</text>']
    for i, way in enumerate(ways):
        place = 10 + i * 101
        parts.append(f'<rect x="{place}" y="30" width="10" height="10" fill="{COLOURS[way]}"/>'
                     f'<text x="{place + 14}" y="39" font-size="10">{NAMES[way]}</text>')
    for power in range(0, math.ceil(math.log10(highest))):
        parts.append(f'<line x1="{x(10 ** power):.1f}" x2="{x(10 ** power):.1f}" y1="{TOP - 8}" y2="{height - 22}" '
                     f'stroke="#ccc"/><text x="{x(10 ** power):.1f}" y="{height - 8}" text-anchor="middle">'
                     f'{10 ** power}</text>')
    y = TOP
    for workload in workloads:
        parts.append(f'<text x="{LEFT - 8}" y="{y + len(ways) * BAR / 2 + 4:.1f}" text-anchor="end">{workload}</text>')
        for way in ways:
            value = ratios[workload, way]
            parts.append(f'<rect x="{LEFT}" y="{y}" width="{x(value) - LEFT:.1f}" height="{BAR - 2}" '
                         f'fill="{COLOURS[way]}"/><text x="{x(value) + 4:.1f}" y="{y + BAR - 3}" font-size="9">'
                         f'{value:.2f}</text>')
            y += BAR
        y += GAP
    return "\n".join([*parts, "</svg>"]) + "\n"
