"""Prints the rates of ports, the busiest first: once, or again and again on a terminal, until Ctrl-C.

    port_rates.py
    port_rates.py --switch 0 --interval 5 --count 12 --json

A rate is the growth of a port's counters, those of the fast path and of the slow path, between two readings, divided by
the time between them.
"""

import argparse
import itertools
import shutil
import signal
import sys
import time
from typing import Dict, Iterable, Iterator, Optional, Tuple

import _libqdp
from command import Datapath, Parser, Row, integer, run, seconds
from counters import Reading
from display import say, table

# A rate: its key in JSON, the counters that it is the growth of, and its factor.
RATES = [
    ("txPktsPerSecond", ("txPkts", "spTxPkts"), 1),
    ("txBitsPerSecond", ("txBytes", "spTxBytes"), 8),
    ("rxPktsPerSecond", ("rxPkts", "spRxPkts"), 1),
    ("rxBitsPerSecond", ("rxBytes", "spRxBytes"), 8),
    ("dropsPerSecond", ("txDrops", "rxDrops", "spTxDrops", "spRxDrops"), 1),
]
HEADINGS = "switch, port, client, TX pkts/s, TX Mbit/s, RX pkts/s, RX Mbit/s, drops/s".split(", ")
LINES_AROUND = 4  # the title and the headings above a table, how many more ports there are, and the cursor


def add_options(parser: Parser) -> None:
    parser.add_switches()
    parser.add_argument("--interval", type=seconds, default=1.0, metavar="SECONDS", help="between samples (default: 1)")
    parser.add_argument(
        "--count", type=integer(1), metavar="N", help="so many samples (default: 1; until Ctrl-C, on a terminal)"
    )


def readings(datapath: Datapath, options: argparse.Namespace) -> Dict[Tuple[int, int], Tuple[Row, Reading]]:
    """Each port with its counters, by switch and port."""
    found = {}
    for switch in datapath.switches(options.switch):
        for port in datapath.ask(_libqdp.ListPorts, switch["swID"]) or []:
            number = switch["swID"], port["portID"]
            counters = datapath.ask(_libqdp.GetPortStats, *number)
            if counters:
                row = {"swID": switch["swID"], "portID": port["portID"], "clientType": port["clientType"]}
                found[number] = (row, Reading(counters))
    return found


def rates(port: Row, old: Reading, new: Reading) -> Optional[Row]:
    """The port with its rates; None where its counters were set back meanwhile."""
    row = dict(port)
    for key, counters, factor in RATES:
        rate = new.rate(old, *counters)
        if rate is None:
            return None
        row[key] = rate * factor
    return row


def wait(duration: float) -> bool:
    """Waits. Not to the end, when Ctrl-C is pressed."""
    before = signal.signal(signal.SIGINT, signal.default_int_handler)
    try:
        time.sleep(max(duration, 0))
        return True
    except KeyboardInterrupt:
        return False
    finally:
        signal.signal(signal.SIGINT, before)


def is_live(options: argparse.Namespace) -> bool:
    return sys.stdout.isatty() and not options.json


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each sample, with the ports that were there all the time."""
    start = time.monotonic()
    before = readings(datapath, options)
    samples = itertools.count(1) if is_live(options) and not options.count else range(1, (options.count or 1) + 1)
    for sample in samples:
        if not wait(start + sample * options.interval - time.monotonic()):
            return
        after = readings(datapath, options)
        ports = [rates(port, before[key][1], reading) for key, (port, reading) in after.items() if key in before]
        yield {"sample": sample, "ports": [port for port in ports if port]}
        before = after


def bits(port: Row) -> float:
    """What the ports are ordered by."""
    return float(port["txBitsPerSecond"] + port["rxBitsPerSecond"])


def show(samples: Iterable[Row], options: argparse.Namespace) -> None:
    for sample in samples:
        rows = [
            [port["swID"], port["portID"], port["clientType"]]
            + [f"{port[key] / (1e6 if 'Bits' in key else 1):,.1f}" for key, _, _ in RATES]
            for port in sorted(sample["ports"], key=bits, reverse=True)
        ]
        shown = rows
        if is_live(options):
            print("\033[H\033[J", end="")  # from the top of the terminal again
            shown = rows[: max(shutil.get_terminal_size().lines - LINES_AROUND, 1)]
        elif sample["sample"] > 1:
            say()
        say(f"Rates over {options.interval:g} s, sample {sample['sample']}")
        table(HEADINGS, shown)
        if len(rows) > len(shown):
            say(f"  ... and {len(rows) - len(shown)} more")
        sys.stdout.flush()


if __name__ == "__main__":
    run(__doc__, read, show, add_options)
