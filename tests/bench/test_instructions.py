"""What the module's calls cost in instructions, beside the same contract written by hand, and as lists grow.

Counts, unlike times, are steady on a shared machine. `checked` is the contract with all its checks, `floor` the calls
of a successful call without any; see bench/native/.
"""

import itertools

import pytest

import instructions
from report import budget
from workloads import WORKLOADS, list_of_macs, list_of_ports

COMPARED = [workload for workload in WORKLOADS if workload.counted > 1]
GROWING = {
    "ListPorts": (list_of_ports, (256, 1024, 4096)),
    "ListSwitchMACTable": (list_of_macs, (1024, 4096, 16384)),
}
FULL = 4  # times as many: all that a switch may have


@pytest.fixture(scope="module")
def counts(build):
    """Instructions per call by (way, workload). All are counted in one process, whose results are compared first."""
    return instructions.measured(
        build, [(way, each) for each in COMPARED for way in ("_libqdp", "checked", "floor")], rounds=3
    )


@pytest.mark.parametrize("way", ["checked", "floor"])
@pytest.mark.parametrize("workload", COMPARED, ids=lambda workload: workload.name)
def test_instructions_are_near_those_of_the_ways_by_hand(counts, workload, way):
    assert counts["_libqdp", workload] <= budget(workload.name)[way] * counts[way, workload]


# Instructions by which an entry of a long list may cost more than one of a short list: the collector of garbage looks
# at what is there already.
MOST_GROWTH = 200


@pytest.mark.parametrize("times", [1, pytest.param(FULL, marks=pytest.mark.long)])
@pytest.mark.parametrize("method", GROWING)
def test_every_further_entry_costs_the_same(build, method, times):
    list_of, lengths = GROWING[method]
    lists = {count * times: list_of(count * times) for count in lengths}
    counts = instructions.measured(build, [("_libqdp", workload) for workload in lists.values()], rounds=1)
    points = [(count, counts["_libqdp", workload]) for count, workload in lists.items()]
    costs = [(more - less) / (longer - shorter) for (shorter, less), (longer, more) in itertools.pairwise(points)]
    assert max(costs) - min(costs) <= MOST_GROWTH
