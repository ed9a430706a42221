"""Warns of the ports that drop what they receive: looks at all ports twice, and names those whose drops grow.

    rx_drops.py [--seconds 60] [--limit 1]

Exit codes: 0 when no port drops more packets a second than the limit, 1 when a port does, 2 when not all ports could be
looked at.
"""

import argparse
import sys
import time
from typing import Dict, Iterable, List, Optional, Tuple

import _libqdp

Port = Tuple[int, int]  # numbers of switch and port


def ports() -> Tuple[List[Port], bool]:
    """Every port; and whether these are all."""
    found: List[Port] = []
    are_all = True
    switches = _libqdp.ListSwitches()
    for switch in switches or []:
        listed = _libqdp.ListPorts(switch["swID"])
        found += [(switch["swID"], port["portID"]) for port in listed or []]
        are_all = are_all and listed is not None
    return found, are_all and switches is not None


def drops(watched: Iterable[Port]) -> Dict[Port, int]:
    """The receive drops of the ports so far. A port that has gone meanwhile has none."""
    counters = {port: _libqdp.GetPortStats(*port) for port in watched}
    return {port: each["rxDrops"] for port, each in counters.items() if each}


def main(arguments: Optional[List[str]] = None) -> int:
    parser = argparse.ArgumentParser(description="Warns of the ports that drop what they receive.")
    parser.add_argument("--seconds", type=float, default=60, help="how long to watch")
    parser.add_argument("--limit", type=float, default=1, help="drops a second that are no reason to worry")
    options = parser.parse_args(arguments)

    watched, are_all = ports()
    before = drops(watched)
    time.sleep(options.seconds)
    after = drops(before)

    is_fine = True
    for (switch, port), count in after.items():
        grown = count - before[switch, port]
        if grown < 0:
            grown = count  # the counter began anew
        if grown / options.seconds > options.limit:
            is_fine = False
            print("switch {}, port {}: drops {:.1f} packets a second".format(switch, port, grown / options.seconds))
    return 2 if not are_all else 0 if is_fine else 1


if __name__ == "__main__":
    sys.exit(main())
