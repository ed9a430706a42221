"""Prints the rates of ports, the busiest first: once, or again and again on a terminal, until Ctrl-C.

    port_rates.py
    port_rates.py --switch 0 --interval 5 --count 12 --json

A rate is the growth of a port's counters, those of the fast path and of the slow path, between two readings, divided by
the time between them.
"""

import argparse
import shutil
import signal
import sys
from typing import Iterable, Iterator, Optional

from command import Datapath, Parser, Row, integer, run, seconds
from display import say, table
from qdp.rates import PortRates

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


def row_of(rates: PortRates) -> Optional[Row]:
    """A port with its rates; None where its counters were set back meanwhile."""
    info = rates.port.info
    row: Row = {"swID": rates.port.switch.number, "portID": info.portID, "clientType": info.clientType}
    for key, counters, factor in RATES:
        rate = rates.rate(*counters)
        if rate is None:
            return None
        row[key] = rate * factor
    return row


def is_live(options: argparse.Namespace) -> bool:
    return sys.stdout.isatty() and not options.json


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each sample, with the ports that were there all the time."""
    switches = [switch.number for switch in datapath.switches(options.switch)]
    if not switches:
        return
    signal.signal(signal.SIGINT, signal.default_int_handler)  # Ctrl-C ends the samples
    count = options.count or (None if is_live(options) else 1)
    try:
        for sample in datapath.host.rates(options.interval, count, switches):
            for failure in sample.failures:
                datapath.fail(failure)
            yield {"sample": sample.number, "ports": [row for row in map(row_of, sample.ports) if row]}
    except KeyboardInterrupt:
        return


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
