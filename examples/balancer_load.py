"""Prints how the thread load balancer has spread the load of a switch over its lcores, a bar for each.

    balancer_load.py
    balancer_load.py --switch 0 --by cpu
    balancer_load.py --json

The balancer calls an lcore of a switch a context, and numbers them from 0 for each switch, as the queues of ports do.
"""

import argparse
import itertools
from collections import Counter
from typing import Iterable, Iterator

from command import Datapath, Parser, Row, run
from display import bars, say

MEASURES = {"count": "count load", "cpu": "raw CPU", "packets": "pkts", "bytes": "bytes"}


def add_options(parser: Parser) -> None:
    parser.add_switches()
    parser.add_argument(
        "--by",
        choices=list(MEASURES),
        default="count",
        help="what the bars show: the count loads of an lcore's queues (default), its CPU load in percent, the packets "
        "or the bytes that it has forwarded",
    )


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each lcore of each switch."""
    for switch in datapath.switches(options.switch):
        stats = datapath.ask(switch.balancer_stats)
        if stats is None:
            continue
        ports, uplinks, contexts = stats
        # Filters and offloaded RSS only spread packets over the receive queues, which count them.
        queues = [(q["ctx ID"], q["count load"]) for port in ports for q in port["vnicRxQ"] + port["vnicTxQ"]]
        queues += [(q["ctx ID"], q["count load"]) for uplink in uplinks for q in uplink["uplinkRx"]]
        load: "Counter[int]" = Counter()
        for context, count in queues:
            load[context] += count
        number = Counter(context for context, _ in queues)
        for each in contexts:
            place = {"swID": switch.number, "name": switch.name, "queues": number[each["ctx ID"]]}
            yield dict(each, **place, **{"count load": load[each["ctx ID"]]})


def show(rows: Iterable[Row], options: argparse.Namespace) -> None:
    key = MEASURES[options.by]
    for i, (switch, group) in enumerate(itertools.groupby(rows, lambda row: row["swID"])):
        contexts = list(group)
        if i:
            say()
        say(f"Load of switch {switch}, {contexts[0]['name']}, by {key}")
        bars([(f"lcore {row['ctx ID']:>2}, {row['queues']:>3} queues", row[key]) for row in contexts])
        loads = [row[key] for row in contexts]
        if sum(loads):
            say(f"  The busiest carries {max(loads) * len(loads) / sum(loads):.2f} times the mean.")


if __name__ == "__main__":
    run(__doc__, read, show, add_options)
