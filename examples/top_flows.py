"""Prints the flows of the lcores' flow tables that have carried the most bytes, in software and in hardware.

    top_flows.py
    top_flows.py --lcore 3 --lcore 9 --source 10.1.2.93 --top 100 --json

A flow that the hardware carries too has "hwFlowIdx" among its actions, the number to give to follow_flow.py.
"""

import argparse
import heapq
import sys
from typing import Iterable, Iterator

from command import Datapath, Parser, Row, integer, ip_address, run
from display import table

HEADINGS = """
    lcore bytes hits layer source-MAC destination-MAC VLAN tag source destination protocol VNI source-port
    destination-port actions
""".split()
TO_THE_RIGHT = HEADINGS[:3]


def add_options(parser: Parser) -> None:
    parser.add_argument("--top", type=integer(1), default=10, metavar="N", help="so many flows (default: 10)")
    parser.add_argument(
        "--lcore", type=integer(0), action="append", metavar="N", help="this lcore only; may be given again"
    )
    parser.add_argument("--source", type=ip_address, metavar="ADDRESS", help="flows from this address only")
    parser.add_argument("--destination", type=ip_address, metavar="ADDRESS", help="flows to this one only")


def progress(text: str) -> None:
    """Says on a terminal how far the dump has come; elsewhere it is silent."""
    if sys.stderr.isatty():
        print(f"\r\033[K{text}", end="", file=sys.stderr, flush=True)


def flows(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """All flows of the lcores that are asked for."""
    lcores = [lcore for switch in datapath.switches() for lcore in switch.lcores()]
    for missing in sorted(set(options.lcore or []) - {lcore.number for lcore in lcores}):
        datapath.refuse(f"no switch forwards on lcore {missing}")
    for lcore in lcores:
        if not options.lcore or lcore.number in options.lcore:
            progress(f"lcore {lcore.number}")
            for flow in datapath.each(lcore.flows(source=options.source, destination=options.destination)):
                yield dict(flow, swID=flow.switch, lcoreID=flow.lcore)
    progress("")


def size(flow: Row) -> int:
    return int(flow["swBytes"] + flow["hwBytes"])


def read(datapath: Datapath, options: argparse.Namespace) -> Iterable[Row]:
    """A row for each flow, the one with the most bytes first."""
    return heapq.nlargest(options.top, flows(datapath, options), key=size)


def show(rows: Iterable[Row], options: argparse.Namespace) -> None:
    # The key text is eleven columns as wide as the longest address; here each gets the width it needs.
    table(
        HEADINGS,
        [
            [row["lcoreID"], f"{size(row):,}", f"{row['swHits'] + row['hwHits']:,}"]
            + row["key"].split()
            + [row["actions"].rstrip("; ")]
            for row in rows
        ],
        indent="",
        to_the_right=TO_THE_RIGHT,
    )


if __name__ == "__main__":
    run(__doc__, read, show, add_options)
