"""What the module's calls cost in instructions, beside the same contract written by hand.

Counts, unlike times, are steady on a shared machine. `checked` is the contract with all its checks, `floor` the
interpreter's calls without any; see bench/native/. To be run on the build that script/bench makes.
"""

import pathlib
import sys

import pytest

HERE = pathlib.Path(__file__).resolve().parent
BUILD = HERE.parent / "build" / "bench"
MOST_OF_CHECKED = 1.03
MOST_OF_FLOOR = 1.05
WORKLOADS = [
    "GetPortStats",
    "TableFlowInfoGet",
    "ListPorts, 0 ports",
    "ListPorts, 16 ports",
    "DumpFlowTable, 16 flows",
    "GetSwitchBurstSize",
    "DumpLBStats, 3 chunks",
]


@pytest.fixture(scope="module")
def counts():
    """Instructions per call by (way, workload). All are counted in one process, whose results are compared first."""
    sys.path.insert(0, str(HERE))
    try:
        import instructions
    finally:
        sys.path.pop(0)
    return instructions.measured(BUILD, [(way, name) for name in WORKLOADS for way in ("_libqdp", "checked", "floor")])


@pytest.mark.parametrize("workload", WORKLOADS)
class TestInstructionsPerCall:
    def test_against_the_checked_version(self, counts, workload):
        assert counts["_libqdp", workload] <= MOST_OF_CHECKED * counts["checked", workload]

    def test_against_the_floor(self, counts, workload):
        assert counts["_libqdp", workload] <= MOST_OF_FLOOR * counts["floor", workload]
