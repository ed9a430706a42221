"""Prints what the SmartNIC has lost: the counters of drops and errors of its pipeline, its LIFs and its ports that have
counted anything, the highest first.

    smartnic_drops.py
    smartnic_drops.py --interval 10        what is lost now: the growth over ten seconds
    smartnic_drops.py --top 5 --json
"""

import argparse
import re
import time
from typing import Any, Callable, Dict, Iterable, Iterator, List

from command import Datapath, Parser, Row, integer, run, seconds
from display import say, table
from qdp.rates import Reading

IS_LOSS = re.compile("DropPkts|Queue|Desc|CsumErr|Malformed|wrongReinject|^drop$")
SHOWN = 20  # counters in a table, where nothing else is asked for


def add_options(parser: Parser) -> None:
    parser.add_argument("--interval", type=seconds, metavar="SECONDS", help="what has been counted within so long")
    parser.add_argument("--top", type=integer(1), metavar="N", help=f"so many counters (default: {SHOWN}, in JSON all)")


def readings(datapath: Datapath) -> Dict[str, Reading]:
    """The counters of every place that has some."""
    nic = datapath.host.nic
    found: Dict[str, Reading] = {}

    def add(place: str, read: Callable[..., Any], *arguments: int) -> None:
        counters = datapath.ask(read, *arguments)
        if counters:
            found[place] = Reading(counters)

    add("ingress", nic.ingress_stats)
    add("egress", nic.egress_stats)
    for lif in datapath.each(nic.lifs()):
        add(f"LIF {lif.lifID}", nic.lif_stats, lif.lifID)
    for port in datapath.each(nic.ports()):
        add(f"port {port.dstPort}", nic.port_stats, port.dstPort)
    return found


def totals(new: Dict[str, Reading]) -> Iterator[Row]:
    for place, reading in new.items():
        for counter in reading:
            yield {"where": place, "counter": counter, "count": reading[counter]}


def growths(old: Dict[str, Reading], new: Dict[str, Reading]) -> Iterator[Row]:
    for place, reading in new.items():
        if place not in old:
            continue
        for counter in reading:
            grown = reading.growth(old[place], counter) or 0
            per_second = grown / (reading.time - old[place].time)
            yield {"where": place, "counter": counter, "count": grown, "perSecond": per_second}


def read(datapath: Datapath, options: argparse.Namespace) -> List[Row]:
    """A row for each counter, the highest first."""
    rows = readings(datapath)
    if options.interval:
        time.sleep(options.interval)
        counted = growths(rows, readings(datapath))
    else:
        counted = totals(rows)
    losses = [row for row in counted if row["count"] and IS_LOSS.search(row["counter"])]
    return sorted(losses, key=lambda row: int(row["count"]), reverse=True)[: options.top]


def show(rows: Iterable[Row], options: argparse.Namespace) -> None:
    found = list(rows)
    losses = found if options.top else found[:SHOWN]
    headings = ["where", "counter", "count"] + (["a second"] if options.interval else [])
    cells = [[row["where"], row["counter"], f"{row['count']:,}"] for row in losses]
    if options.interval:
        cells = [cell + [f"{row['perSecond']:,.1f}"] for cell, row in zip(cells, losses)]
    table(headings, cells, indent="")
    if len(found) > len(losses):
        say(f"and {len(found) - len(losses):,} more, which --top shows")


if __name__ == "__main__":
    run(__doc__, read, show, add_options)
