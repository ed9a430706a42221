"""Prints the host's switches, and the ports of each switch.

    inventory.py
    inventory.py --switch 0 --json
"""

import argparse
from typing import Iterable, Iterator, List

from command import Datapath, Parser, Row, run
from display import say, table


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each switch, with its ports."""
    for switch in datapath.switches(options.switch):
        yield dict(switch.info, ports=[port.info for port in datapath.ask(switch.ports) or []])


def lcores(queues: List[int]) -> str:
    return " ".join(str(lcore) for lcore in queues) or "-"


def show(rows: Iterable[Row], options: argparse.Namespace) -> None:
    switches = list(rows)
    say("Switches")
    headings = ["switch", "name", "MTU", "ports", "active", "lcores"]
    keys = ["swID", "name", "mtu", "numPorts", "numActivePorts", "numLcores"]
    table(headings, [[switch[key] for key in keys] for switch in switches])

    for switch in switches:
        say()
        say(f"Ports of switch {switch['swID']}, {switch['name']}")
        table(
            ["port", "client", "MAC address", "MACs", "TX queues on lcores", "RX queues on lcores"],
            [
                [port[key] for key in ("portID", "clientType", "hwAddr", "numMACs")]
                + [lcores(port["txQLM"]), lcores(port["rxQLM"])]
                for port in switch["ports"]
            ],
        )


if __name__ == "__main__":
    run(__doc__, read, show, Parser.add_switches)
