"""Warns of the ports that drop what they receive: looks at all ports twice, and names those whose drops grow.

    rx_drops.py [--seconds 60] [--limit 1]

Exit codes: 0 when no port drops more packets a second than the limit, 1 when a port does, 2 when not all ports could be
looked at.
"""

import argparse
import sys
from typing import List, Optional

import qdp


def main(arguments: Optional[List[str]] = None) -> int:
    parser = argparse.ArgumentParser(description="Warns of the ports that drop what they receive.")
    parser.add_argument("--seconds", type=float, default=60, help="how long to watch")
    parser.add_argument("--limit", type=float, default=1, help="drops a second that are no reason to worry")
    options = parser.parse_args(arguments)

    (sample,) = qdp.Host().rates(every=options.seconds, count=1)
    is_fine = True
    for rates in sample.ports:
        drops = rates["rxDrops"]
        if drops is None:
            drops = rates.after["rxDrops"] / options.seconds  # the counter began anew
        if drops > options.limit:
            is_fine = False
            place = rates.port.switch.number, rates.port.number
            print("switch {}, port {}: drops {:.1f} packets a second".format(*place, drops))
    for failure in sample.failures:
        print("rx_drops.py: {}".format(failure), file=sys.stderr)
    return 2 if sample.failures else 0 if is_fine else 1


if __name__ == "__main__":
    sys.exit(main())
