"""Prints the host's switches, the ports of each switch, and the ports' rates over a second.

Runs on a real host, and anywhere on the embedded one: script/run examples/inventory.py
"""

import ctypes
import sys
import time

import _libqdp
from display import end_with_the_reader, table


def lcores(queues):
    return " ".join(str(lcore) for lcore in queues) or "-"


def port_rates(switch, ports, seconds):
    """Packets and bits a second of each port, sent and received."""
    keys = ["txPkts", "txBytes", "rxPkts", "rxBytes"]
    start = time.monotonic()
    before = {port["portID"]: _libqdp.GetPortStats(switch, port["portID"]) for port in ports}
    time.sleep(seconds)
    after = {port["portID"]: _libqdp.GetPortStats(switch, port["portID"]) for port in ports}
    elapsed = time.monotonic() - start
    for port in ports:
        # A port that went away meanwhile has no counters.
        old, new = before[port["portID"]], after[port["portID"]]
        if old and new:
            sent, sent_bytes, received, received_bytes = [(new[key] - old[key]) / elapsed for key in keys]
            yield port, sent, sent_bytes * 8 / 1e6, received, received_bytes * 8 / 1e6


def main():
    end_with_the_reader()
    # The process that uses the module loads the switch configuration, once, before it names a switch by its alias.
    status = ctypes.PyDLL(_libqdp.__file__).LibraryInit()
    if status != 0:
        sys.exit(f"The switch configuration could not be loaded: status {status:#x}")

    switches = _libqdp.ListSwitches()
    if switches is None:
        sys.exit(1)  # the module has said why

    print("Switches")
    headings = ["switch", "name", "MTU", "ports", "active", "lcores"]
    table(headings, [[s["swID"], s["name"], s["mtu"], s["numPorts"], s["numActivePorts"], s["numLcores"]] for s in switches])

    for switch in switches:
        ports = _libqdp.ListPorts(switch["swID"]) or []
        print(f"\nPorts of switch {switch['swID']}, {switch['name']}")
        headings = ["port", "client", "MAC address", "MACs", "TX queues on lcores", "RX queues on lcores"]
        table(
            headings,
            [[p["portID"], p["clientType"], p["hwAddr"], p["numMACs"], lcores(p["txQLM"]), lcores(p["rxQLM"])] for p in ports],
        )

    switch = switches[0]
    print(f"\nRates of switch {switch['swID']} over a second")
    rates = port_rates(switch["swID"], _libqdp.ListPorts(switch["swID"]), 1)
    headings = ["port", "client", "TX packets/s", "TX Mbit/s", "RX packets/s", "RX Mbit/s"]
    table(headings, [[p["portID"], p["clientType"]] + [f"{rate:,.0f}" for rate in values] for p, *values in rates])


if __name__ == "__main__":
    main()
