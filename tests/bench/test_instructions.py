"""What the module's calls cost in instructions, beside the same contract written by hand.

Counts, unlike times, are steady on a shared machine. `checked` is the contract with all its checks, `floor` the
interpreter's calls without any; see bench/native/.
"""

import sys

import pytest

NOT_THE_RELEASE = ["QDP_SANITIZE:BOOL=ON", "QDP_COVERAGE:BOOL=ON"]
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
def counts(build, root):
    """Instructions per call by (way, workload). All are counted in one process, whose results are compared first."""
    if any(option in (build / "CMakeCache.txt").read_text() for option in NOT_THE_RELEASE):
        pytest.skip("the sanitizers' or the coverage's own instructions would be counted")
    sys.path.insert(0, str(root / "bench"))
    try:
        import instructions
    finally:
        sys.path.pop(0)
    return instructions.measured(build, [(way, name) for name in WORKLOADS for way in ("_libqdp", "checked", "floor")])


@pytest.mark.parametrize("workload", WORKLOADS)
class TestInstructionsPerCall:
    def test_against_the_checked_version(self, counts, workload):
        assert counts["_libqdp", workload] <= MOST_OF_CHECKED * counts["checked", workload]

    def test_against_the_floor(self, counts, workload):
        assert counts["_libqdp", workload] <= MOST_OF_FLOOR * counts["floor", workload]
