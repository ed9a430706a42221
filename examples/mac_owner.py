"""Prints which port owns a MAC address: as its own address, or because traffic from it was seen there.

    mac_owner.py 02:20:00:00:03:01
    mac_owner.py 02-10-00-00-00-03 0220.0000.0301 --json

An address that an uplink owns is outside of this host.
"""

import argparse
import itertools
from typing import Iterable, Iterator, List, Tuple

from command import Datapath, Parser, Row, mac_address, run
from display import table


def add_options(parser: Parser) -> None:
    parser.add_argument("mac", type=mac_address, nargs="+", metavar="MAC", help="a MAC address, in any usual form")


def owners(datapath: Datapath) -> Iterator[Tuple[str, Row]]:
    """Every MAC address of the host's switches, with who owns it."""
    for switch in datapath.switches():
        ports = [port.info for port in datapath.ask(switch.ports) or []]
        by_id = {port.qdpPortID: port for port in ports}
        own = [(port.hwAddr, "own address", None, port.qdpPortID) for port in ports]
        seen = [
            (each.macAddr, "MAC table", each.vlanID, each.qdpPortID) for each in datapath.ask(switch.macs) or []
        ]
        for mac, source, vlan, qdp_port in itertools.chain(own, seen):
            port = by_id.get(qdp_port)  # a port may have gone since its addresses were learned
            yield mac, {
                "macAddr": mac,
                "knownFrom": source,
                "vlanID": vlan,
                "swID": switch.number,
                "name": switch.name,
                "qdpPortID": qdp_port,
                "portID": port.portID if port else None,
                "clientType": port.clientType if port else None,
            }


def read(datapath: Datapath, options: argparse.Namespace) -> List[Row]:
    """A row for each owner, in the order of the addresses that are asked for."""
    known = list(owners(datapath))
    found: List[Row] = []
    for wanted in options.mac:
        of_this = [row for mac, row in known if mac == wanted]
        if not of_this:
            datapath.refuse(f"no port owns {wanted}")
        found += of_this
    return found


def show(rows: Iterable[Row], options: argparse.Namespace) -> None:
    keys = ["macAddr", "knownFrom", "vlanID", "swID", "name", "portID", "clientType"]
    headings = ["MAC address", "known from", "VLAN", "switch", "name", "port", "client"]
    table(headings, [["-" if row[key] is None else row[key] for key in keys] for row in rows], indent="")


if __name__ == "__main__":
    run(__doc__, read, show, add_options)
