"""Prints how well the offload of flows to the uplinks' NICs works: what the NICs offload, how full their tables are,
and which counters of trouble have grown between two readings.

    offload_health.py
    offload_health.py --switch 0 --interval 10 --json
    offload_health.py --alias dvs-production       with that switch's settings
"""

import argparse
import ctypes
import re
import time
from typing import TYPE_CHECKING, Dict, Iterable, Iterator, List

import _libqdp
from command import Datapath, Parser, Row, lcores, run, seconds
from counters import Reading
from display import say, table

if TYPE_CHECKING:
    from _libqdp import SwitchInfo

IS_TROUBLE = re.compile("Full$|Failed|Exceeded|[mM]ismatched|DisabledState")
LCORES_AT_ONCE = 32  # as many as an answer of GetFPOStats holds
OF_32_BITS = {"hits", "markMismatched", "pnicMismatched"}  # of a counter in GetFPOStats, its low half


def add_options(parser: Parser) -> None:
    parser.add_switches()
    parser.add_argument("--alias", action="append", metavar="NAME", help="settings of this switch; may be given again")
    parser.add_argument("--interval", type=seconds, default=1.0, metavar="SECONDS", help="for the trouble (default: 1)")


def load_switch_configuration(datapath: Datapath) -> bool:
    """Once in a process, before the first method that takes an alias."""
    status = ctypes.PyDLL(_libqdp.__file__).LibraryInit()
    if status:
        datapath.refuse(f"the switch configuration could not be loaded: status {status:#x}")
    return not status


def settings(datapath: Datapath, aliases: List[str]) -> Iterator[Row]:
    if aliases and load_switch_configuration(datapath):
        for alias in aliases:
            fpo = datapath.ask(_libqdp.GetFPOEnabled, alias)
            yield {"alias": alias, "fpo": fpo, "offloadFlows": datapath.ask(_libqdp.GetOffloadFlows, alias)}


def uplink_readings(datapath: Datapath, switch: int) -> Dict[int, Reading]:
    ports = datapath.ask(_libqdp.ListPorts, switch) or []
    uplinks = [port["portID"] for port in ports if port["clientType"] == "UPLINK"]
    stats = [(port, datapath.ask(_libqdp.GetFPOUplinkStats, switch, port)) for port in uplinks]
    return {port: Reading(counters) for port, counters in stats if counters}


def lcore_readings(datapath: Datapath, switch: "SwitchInfo") -> Dict[int, Reading]:
    wanted, found = lcores(switch), {}
    for i in range(0, len(wanted), LCORES_AT_ONCE):
        for stats in datapath.ask(_libqdp.GetFPOStats, switch["swID"], tuple(wanted[i : i + LCORES_AT_ONCE])) or []:
            found[stats["lcoreID"]] = Reading(stats)
    return found


def trouble(old: Reading, new: Reading) -> Dict[str, int]:
    """The counters of trouble that have grown, and how much."""
    keys = filter(IS_TROUBLE.search, new.counters)
    grown = {key: new.growth(old, key, bits=32 if key in OF_32_BITS else 64) for key in keys}
    return {key: growth for key, growth in grown.items() if growth}


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each alias, and one for each switch, with its uplinks and its lcores."""
    yield from settings(datapath, options.alias or [])
    switches = datapath.switches(options.switch)
    before = [(uplink_readings(datapath, each["swID"]), lcore_readings(datapath, each)) for each in switches]
    time.sleep(options.interval)
    for switch, (old_uplinks, old_lcores) in zip(switches, before):
        row: Row = {"swID": switch["swID"], "name": switch["name"], "uplinks": [], "lcores": []}
        for port, new in uplink_readings(datapath, switch["swID"]).items():
            status = datapath.ask(_libqdp.GetFPOUplinkStatus, switch["swID"], port)
            if status and port in old_uplinks:
                row["uplinks"].append(dict(status, portID=port, trouble=trouble(old_uplinks[port], new)))
        for lcore, new in lcore_readings(datapath, switch).items():
            if lcore in old_lcores:
                hits = new.rate(old_lcores[lcore], "hits", bits=32)
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
            fpo = "".join(f", {key} {value}" for key, value in (row["fpo"] or {}).items())
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
