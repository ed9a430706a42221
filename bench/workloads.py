"""What is measured: calls of the module's methods on platform libraries with fixed answers."""

import importlib
from typing import NamedTuple


class Workload(NamedTuple):
    """A call, what the platform lists for it, and over how many calls its instructions are counted."""

    name: str
    method: str
    arguments: tuple
    counted: int = 1
    ports: int = 16
    macs: int = 0

    def prepare(self, fixed):
        """Sets the fixed platform's lists to the workload's lengths."""
        fixed.set_ports(self.ports)
        fixed.set_macs(self.macs)

    def call_of(self, way):
        """The method as a way to do the module's work offers it."""
        return getattr(importlib.import_module(way), self.method)


def list_of_ports(count, counted=1):
    return Workload(f"ListPorts, {count} ports", "ListPorts", (0,), counted, ports=count)


def list_of_macs(count):
    return Workload(f"ListSwitchMACTable, {count} entries", "ListSwitchMACTable", (0,), macs=count)


FLOW_PAGE = (0, 0, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
EMPTY, PAIR, SHORT = list_of_ports(0, 50), list_of_ports(2, 20), list_of_ports(16, 8)
LONG, LONGEST = list_of_ports(1024), list_of_ports(16384)
FLOWS = Workload("DumpFlowTable, 16 flows", "DumpFlowTable", FLOW_PAGE, 10)

WORKLOADS = [
    Workload("GetPortStats", "GetPortStats", (0, 1), 40),
    Workload("TableFlowInfoGet", "TableFlowInfoGet", (7,), 40),
    EMPTY,
    PAIR,
    SHORT,
    LONG,
    LONGEST,
    FLOWS,
    Workload("GetSwitchBurstSize", "GetSwitchBurstSize", ("vswitch-1",), 50),
    Workload("DumpLBStats, 3 chunks", "DumpLBStats", (0, 0, 48, 0, 8), 5),
]

# Lists of more and more entries, by method: pairs of length and workload.
GROWTH = {
    "ListPorts": [(i * 2048, list_of_ports(i * 2048)) for i in range(9)],
    "ListSwitchMACTable": [(i * 8192, list_of_macs(i * 8192)) for i in range(9)],
}


def same_result(way, workload, fixed):
    """Fails unless a way's result is the module's, to the types and the order of keys."""
    workload.prepare(fixed)
    expected = workload.call_of("_libqdp")(*workload.arguments)
    result = workload.call_of(way)(*workload.arguments)
    if expected is None or repr(result) != repr(expected):
        raise RuntimeError(f"{way}: {workload.name} has another result than the module's")
