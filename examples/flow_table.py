"""Prints the flow tables of the host's lcores: what each flow's packets look like, their counters, and its actions.

Runs on a real host, and anywhere on the embedded one:

    script/run examples/flow_table.py
    script/run examples/flow_table.py --lcore 3 --lcore 9 --source 10.1.2.93
"""

import argparse
import ipaddress
import sys

import _libqdp
from display import end_with_the_reader, table

NO_MORE = 0xFFFFFFFF  # the start index behind the last page
HEADINGS = """
    lcore layer source-MAC destination-MAC VLAN tag source destination protocol VNI source-port destination-port
    SW-hits SW-bytes HW-hits HW-bytes actions
""".split()
TO_THE_RIGHT = {"lcore"} | set(HEADINGS[12:16])


def address_filter(address):
    """The two arguments of a filter: the version, 0 for no filter, and the address."""
    return (address.version, str(address)) if address else (0, "")


def pages(switch, lcore, source, destination):
    """The pages of a lcore's flow table. Ends early when the module has said why."""
    no_mac = (0, "")
    start = 0
    while start != NO_MORE:
        page = _libqdp.DumpFlowTable(
            switch, lcore, start, 0, *no_mac, *no_mac, *address_filter(source), *address_filter(destination), 0, 0, 0, 0, 0
        )
        if page is None:
            raise LookupError(f"the flow table of lcore {lcore} ends early")
        yield page["list"]
        if page["startIndex"] <= start:
            raise LookupError(f"the flow table of lcore {lcore} goes round in circles")
        start = page["startIndex"]


class Progress:
    """Says on a terminal how far the dump has come; elsewhere it is silent."""

    def __init__(self):
        self.is_shown = sys.stderr.isatty()

    def show(self, lcore, flows):
        if self.is_shown:
            print(f"\r\033[Klcore {lcore}: {flows:,} flows so far", end="", file=sys.stderr, flush=True)

    def clear(self):
        if self.is_shown:
            print("\r\033[K", end="", file=sys.stderr, flush=True)


def row(lcore, flow):
    # The key text is eleven columns as wide as the longest address; here each gets the width it needs.
    counters = [flow["swHits"], flow["swBytes"], flow["hwHits"], flow["hwBytes"]]
    return [lcore, *flow["key"].split(), *counters, flow["actions"].rstrip("; ")]


def lcores_of_switches():
    """(switch number, lcore) of all lcores that forward for a switch."""
    for switch in _libqdp.ListSwitches() or []:
        mask = switch["lcores"] & (1 << 64) - 1  # reads negative when lcore 63 is in it
        for lcore in range(64):
            if mask >> lcore & 1:
                yield switch["swID"], lcore


def main():
    end_with_the_reader()
    parser = argparse.ArgumentParser(description="Prints the flow tables of the host's lcores.")
    parser.add_argument("--lcore", type=int, action="append", help="this lcore only; may be given again")
    parser.add_argument("--source", type=ipaddress.ip_address, help="flows from this address only")
    parser.add_argument("--destination", type=ipaddress.ip_address, help="flows to this address only")
    options = parser.parse_args()

    lcores = list(lcores_of_switches())
    if options.lcore:
        missing = set(options.lcore) - {lcore for _, lcore in lcores}
        if missing:
            parser.error(f"no switch forwards on lcore {min(missing)}")
        lcores = [(switch, lcore) for switch, lcore in lcores if lcore in options.lcore]

    progress = Progress()
    rows, failures = [], []
    for switch, lcore in lcores:
        try:
            for page in pages(switch, lcore, options.source, options.destination):
                rows += [row(lcore, flow) for flow in page]
                progress.show(lcore, len(rows))
        except LookupError as failure:
            failures.append(failure)
    progress.clear()

    table(HEADINGS, rows, indent="", to_the_right=TO_THE_RIGHT)
    for failure in failures:
        print(f"flow_table: {failure}", file=sys.stderr)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
