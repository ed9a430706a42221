"""What is measured: calls of the module's methods on platform libraries with fixed answers."""

import importlib
from typing import NamedTuple


class Workload(NamedTuple):
    name: str
    method: str
    arguments: tuple
    ports: int  # how many the platform lists
    calls: int  # a round of time; instructions are counted over fewer
    counted: int


FLOW_PAGE = (0, 0, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)

WORKLOADS = [
    Workload("GetPortStats", "GetPortStats", (0, 1), 16, 2000, 40),
    Workload("TableFlowInfoGet", "TableFlowInfoGet", (7,), 16, 2000, 40),
    Workload("ListPorts, 0 ports", "ListPorts", (0,), 0, 20000, 50),
    Workload("ListPorts, 16 ports", "ListPorts", (0,), 16, 500, 8),
    Workload("ListPorts, 16384 ports", "ListPorts", (0,), 16384, 1, 1),
    Workload("DumpFlowTable, 16 flows", "DumpFlowTable", FLOW_PAGE, 16, 200, 10),
    Workload("GetSwitchBurstSize", "GetSwitchBurstSize", ("vswitch-1",), 16, 20000, 50),
    Workload("DumpLBStats, 3 chunks", "DumpLBStats", (0, 0, 48, 0, 8), 16, 50, 5),
]
BY_NAME = {workload.name: workload for workload in WORKLOADS}



def same_result(way, workload, fixed):
    """Fails unless a way's result is the module's, to the types and the order of keys."""
    fixed.set_ports(workload.ports)
    expected = getattr(importlib.import_module("_libqdp"), workload.method)(*workload.arguments)
    result = getattr(way, workload.method)(*workload.arguments)
    if expected is None or repr(result) != repr(expected):
        raise RuntimeError(f"{way.__name__}: {workload.name} has another result than the module's")
