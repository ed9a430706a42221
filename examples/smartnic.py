"""Prints the SmartNIC's port model, its counters, and how long the programming of its tables takes.

Runs on a real host, and anywhere on the embedded one:

    script/run examples/smartnic.py
    script/run examples/smartnic.py --section lifs --section ports --all
    script/run examples/smartnic.py --section latency --collect 10
    script/run examples/smartnic.py --json

What the module's answers have a key for goes by that key, in the headings of the tables as in JSON.
"""

import argparse
import contextlib
import json
import re
import shutil
import signal
import sys
import time
from collections import namedtuple

import _libqdp
from display import bars, end_with_the_reader, table

USAGE, REFUSED = 1, 2  # exit codes
DAY = 24 * 60 * 60
FIRST_ROWS = 20  # of a table, unless all are asked for


class Datapath:
    """Asks the datapath, and says on standard error what it refuses."""

    def __init__(self):
        self.refusals = 0

    def ask(self, method, *arguments):
        """The answer of a method; None where it is refused, which the module may have explained already."""
        answer = getattr(_libqdp, method)(*arguments)
        if answer is None:
            self.refusals += 1
            print(f"smartnic: the datapath refuses {method}({', '.join(map(str, arguments))})", file=sys.stderr)
        return answer

    def listed(self, source):
        """All entries of a list, page by page.

        How the last page is marked is the datapath's own affair. The list ends where a page brings no new entry, and
        where the next index does not advance or is none that the method takes.
        """
        seen = set()
        start, next_start = -1, 0
        while start < next_start < source.end:
            start = next_start
            page = self.ask(source.method, start)
            if page is None:
                return
            new = [entry for entry in page[source.entries] if entry[source.number] not in seen]
            if not new:
                return
            yield from new
            seen.update(entry[source.number] for entry in new)
            next_start = page["nextIndex"]


# A list of the port model: the method that returns a page of it, the key of the page's entries, the key of an entry's
# own number, and the end of the indexes at which a page may start.
Listing = namedtuple("Listing", "method entries number end")
LIFS = Listing("LifPortList", "liflist", "lifID", 1024)
VLAN_PORTS = Listing("VlanPortList", "vlanlist", "muxVLAN", 65535)
OUTPUT_PORTS = Listing("PortList", "portlist", "dstPort", 1024)


# --- What is read: each section's rows, as dicts of the same keys ---


def host_pfs(datapath, _):
    for slot, pf in enumerate(datapath.ask("HostPFGet") or []):
        yield {"slot": slot, "pf": pf}


def lifs(datapath, _):
    return datapath.listed(LIFS)


def vlan_ports(datapath, _):
    return datapath.listed(VLAN_PORTS)


def output_ports(datapath, _):
    return datapath.listed(OUTPUT_PORTS)


def mux_modes(datapath, _):
    for switch in datapath.ask("ListSwitches") or []:
        mode = datapath.ask("GetSwitchMuxMode", switch["swID"])
        if mode:
            yield {"swID": switch["swID"], "name": switch["name"], "enabled": mode["enabled"]}


def statistics(datapath, source, method):
    """(number, counters) of each entry of a list."""
    for entry in datapath.listed(source):
        counters = datapath.ask(method, entry[source.number])
        if counters:
            yield entry[source.number], counters


def traffic(datapath, source, method):
    """The sums over unicast, multicast and broadcast, of the entries that have counted anything."""
    for number, counters in statistics(datapath, source, method):
        if any(counters.values()):
            row = {source.number: number}
            for way in ("rx", "tx"):
                for what in ("Pkts", "Bytes", "DropPkts"):
                    row[way + what] = sum(counters[way + cast + what] for cast in ("Ucast", "Mcast", "Bcast"))
            yield row


def lif_traffic(datapath, _):
    return traffic(datapath, LIFS, "LifStatsGet")


def port_traffic(datapath, _):
    return traffic(datapath, OUTPUT_PORTS, "PortStatsGet")


def pipeline_totals(datapath, _):
    for way, method in [("ingress", "P4IStatsGet"), ("egress", "P4EStatsGet")]:
        for counter, count in (datapath.ask(method) or {}).items():
            yield {"way": way, "counter": counter, "count": count}


IS_LOSS = re.compile("DropPkts|Queue|Desc|CsumErr|Malformed|wrongReinject|^drop$")


def drops(datapath, _):
    """The counters of what was lost, wherever one has counted anything, the highest first."""
    places = [("ingress", datapath.ask("P4IStatsGet") or {}), ("egress", datapath.ask("P4EStatsGet") or {})]
    places += [(f"LIF {lif}", counters) for lif, counters in statistics(datapath, LIFS, "LifStatsGet")]
    places += [(f"port {port}", counters) for port, counters in statistics(datapath, OUTPUT_PORTS, "PortStatsGet")]
    rows = [
        {"where": where, "counter": counter, "count": count}
        for where, counters in places
        for counter, count in counters.items()
        if count and IS_LOSS.search(counter)
    ]
    return sorted(rows, key=lambda row: row["count"], reverse=True)


def latency(datapath, options):
    """One row: the histogram."""
    histogram = datapath.ask("P4UKLatencyDump", options.selector)
    if histogram:
        yield histogram


@contextlib.contextmanager
def collecting(datapath, seconds):
    """Collects latencies for some seconds before the block, and until its end. To interrupt is to shorten it."""
    if not seconds or not datapath.ask("P4UKLatencySet", 1):
        yield
        return
    try:
        signal.signal(signal.SIGTERM, signal.default_int_handler)  # so that it does not stay on
        with contextlib.suppress(KeyboardInterrupt):
            time.sleep(seconds)
        yield
    finally:
        datapath.ask("P4UKLatencySet", 0)


# --- How it is shown ---


def show_rows(rows, cells_of, limit):
    if not rows:
        print("  none")
        return
    table(list(rows[0]), [cells_of(list(row.values())) for row in rows[:limit]])
    if len(rows) > len(rows[:limit]):
        print(f"  ... and {len(rows) - limit:,} more, which --all shows")


def records(rows, limit):
    show_rows(rows, lambda cells: cells, limit)


def counters(rows, limit):
    """The first cell of a row says whose counters they are."""

    def cells_of(row):
        return row[:1] + [f"{cell:,}" if isinstance(cell, int) else cell for cell in row[1:]]

    show_rows(rows, cells_of, limit)


def histogram(rows, _):
    for row in rows:
        if not row["totalSample"]:
            print("  no samples; --collect SECONDS collects some")
            continue
        bounds = [int(key[:-2]) for key in row if key.endswith("us")]
        buckets = [(f"{lower:>4} - {upper:>4} us", row[f"{upper}us"]) for lower, upper in zip([0] + bounds, bounds)]
        buckets.append((f"     > {bounds[-1]:>4} us", row["outOfBucket"]))
        bars(buckets, shutil.get_terminal_size().columns)
        totals = ("totalSample", "totalTime", "minLatency", "maxLatency")
        print("  " + ", ".join(f"{key} {row[key]:,}" for key in totals))


Section = namedtuple("Section", "name title read show")
SECTIONS = [
    Section("pfs", "Host PFs", host_pfs, records),
    Section("lifs", "LIFs", lifs, records),
    Section("vlan-ports", "Mux VLAN ports", vlan_ports, records),
    Section("ports", "Output ports", output_ports, records),
    Section("mux", "Mux mode of the switches", mux_modes, records),
    Section("lif-counters", "LIFs with traffic", lif_traffic, counters),
    Section("port-counters", "Ports with traffic", port_traffic, counters),
    Section("pipeline", "Totals of the pipeline", pipeline_totals, counters),
    Section("drops", "Drops and errors, the highest counts first", drops, counters),
    Section("latency", "Latency of table programming", latency, histogram),
]
LATENCY = SECTIONS[-1]

Reading = namedtuple("Reading", "section rows is_complete")


def read(section, datapath, options):
    before = datapath.refusals
    rows = list(section.read(datapath, options))
    return Reading(section, rows, datapath.refusals == before)


def show(readings, limit):
    for i, (section, rows, is_complete) in enumerate(readings):
        print(("\n" if i else "") + section.title + ("" if is_complete else " (incomplete)"))
        if rows or is_complete:
            section.show(rows, limit)


def as_json(readings):
    return [
        {"section": section.name, "title": section.title, "complete": is_complete, "rows": rows}
        for section, rows, is_complete in readings
    ]


# --- The command line ---


class Parser(argparse.ArgumentParser):
    def error(self, message):
        self.print_usage(sys.stderr)
        self.exit(USAGE, f"{self.prog}: error: {message}\n")


def duration(text):
    seconds = float(text)
    if not 0 < seconds <= DAY:
        raise ValueError
    return seconds


def parsed_options():
    parser = Parser(
        description="Prints the SmartNIC's port model, its counters, and the latency of table programming.",
        epilog="Exit codes: 0, 1 for a wrong command line, 2 when the datapath refused something.",
    )
    names = [section.name for section in SECTIONS]
    parser.add_argument(
        "--section",
        action="append",
        choices=names,
        metavar="NAME",
        help="this section only; may be given again: " + ", ".join(names),
    )
    parser.add_argument("--all", action="store_true", help=f"all rows of each table, not only the first {FIRST_ROWS}")
    parser.add_argument("--json", action="store_true", help="one JSON array, an object for each section, with all rows")
    parser.add_argument(
        "--collect",
        type=duration,
        metavar="SECONDS",
        help="switch the collection of latencies on, for so long, and then off; Ctrl-C ends it early",
    )
    parser.add_argument(
        "--selector",
        type=int,
        default=0,
        metavar="NUMBER",
        help="which latency histogram, as the datapath numbers them (default: 0)",
    )
    options = parser.parse_args()
    options.sections = [section for section in SECTIONS if not options.section or section.name in options.section]
    if options.collect and LATENCY not in options.sections:
        parser.error("--collect is for the section latency")
    if not 0 <= options.selector < 1 << 32:
        parser.error("--selector is a number of 32 bits")
    return options


def main():
    options = parsed_options()
    datapath = Datapath()
    with collecting(datapath, options.collect):
        readings = [read(section, datapath, options) for section in options.sections]

    end_with_the_reader()
    if options.json:
        print(json.dumps(as_json(readings), indent=2))
    else:
        show(readings, None if options.all else FIRST_ROWS)
    sys.exit(REFUSED if datapath.refusals else 0)


if __name__ == "__main__":
    main()
