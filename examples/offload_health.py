"""Prints how well the offload of flows to the uplinks' NICs works: what the NICs offload, how full their tables are,
and which counters of trouble have grown between two readings.

    offload_health.py
    offload_health.py --switch 0 --interval 10 --json
    offload_health.py --alias dvs-production       with that switch's settings
"""

import argparse
import re
import time
from typing import Dict, Iterable, Iterator, List, Tuple

import qdp
from command import Datapath, Parser, Row, run, seconds
from display import say, table
from qdp.rates import Reading

IS_TROUBLE = re.compile("Full$|Failed|Exceeded|[mM]ismatched|DisabledState")


def add_options(parser: Parser) -> None:
    parser.add_switches()
    parser.add_argument("--alias", action="append", metavar="NAME", help="settings of this switch; may be given again")
    parser.add_argument("--interval", type=seconds, default=1.0, metavar="SECONDS", help="for the trouble (default: 1)")


def settings(datapath: Datapath, aliases: List[str]) -> Iterator[Row]:
    for alias in aliases:
        switch = datapath.ask(datapath.host.switch, alias)
        offloads = datapath.ask(switch.settings["offload-flows"].get) if switch else None
        if offloads is not None:
            fpo = datapath.ask(qdp.methods.GetFPOEnabled, alias)
            yield {"alias": alias, "fpo": dict(fpo or {}), "offloadFlows": offloads}


def readings(datapath: Datapath, switch: qdp.Switch) -> Tuple[Dict[int, Reading], Dict[int, Reading]]:
    """The counters of a switch's uplinks, and of its lcores."""
    stats = {uplink.number: datapath.ask(uplink.offload_stats) for uplink in datapath.ask(switch.uplinks) or []}
    uplinks = {number: Reading(counters) for number, counters in stats.items() if counters}
    return uplinks, {stats.lcoreID: Reading(stats) for stats in datapath.ask(switch.fpo_stats) or []}


def trouble(old: Reading, new: Reading) -> Dict[str, int]:
    """The counters of trouble that have grown, and how much."""
    grown = {key: new.growth(old, key) for key in new if IS_TROUBLE.search(key)}
    return {key: growth for key, growth in grown.items() if growth}


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each alias, and one for each switch, with its uplinks and its lcores."""
    yield from settings(datapath, options.alias or [])
    switches = datapath.switches(options.switch)
    before = [readings(datapath, switch) for switch in switches]
    time.sleep(options.interval)
    for switch, (old_uplinks, old_lcores) in zip(switches, before):
        row: Row = {"swID": switch.number, "name": switch.name, "uplinks": [], "lcores": []}
        uplinks, lcores = readings(datapath, switch)
        for port, new in uplinks.items():
            status = datapath.ask(qdp.methods.GetFPOUplinkStatus, switch.number, port)
            if status and port in old_uplinks:
                row["uplinks"].append(dict(status, portID=port, trouble=trouble(old_uplinks[port], new)))
        for lcore, new in lcores.items():
            if lcore in old_lcores:
                hits = new.rate(old_lcores[lcore], "hits")
                grown = trouble(old_lcores[lcore], new)
                row["lcores"].append({"lcoreID": lcore, "hitsPerSecond": hits, "trouble": grown})
        yield row


def in_words(grown: Dict[str, int]) -> str:
    return ", ".join(f"{key} {count:,}" for key, count in grown.items()) or "none"


def show(rows: Iterable[Row], options: argparse.Namespace) -> None:
    for i, row in enumerate(rows):
        if i:
            say()
        if "alias" in row:
            fpo = "".join(f", {key} {value}" for key, value in row["fpo"].items())
            say(f"Settings of {row['alias']}: offloadFlows {row['offloadFlows']}{fpo}")
            continue
        say(f"Offload of switch {row['swID']}, {row['name']}, over {options.interval:g} s")
        table(
            ["uplink", "flows", "capacity", "models", "trouble"],
            [
                [each["portID"], f"{each['numFlowsOffloaded']:,}", f"{each['maxFlowsSupported']:,}"]
                + [each["models"].rstrip(", "), in_words(each["trouble"])]
                for each in row["uplinks"]
            ],
        )
        table(
            ["lcore", "hits/s", "trouble"],
            [[each["lcoreID"], f"{each['hitsPerSecond']:,.0f}", in_words(each["trouble"])] for each in row["lcores"]],
        )


if __name__ == "__main__":
    run(__doc__, read, show, add_options)
