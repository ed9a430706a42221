"""The page about the module's speed, from figures that are made up."""

import command
import pytest
import report
import run
from workloads import FLOWS, LONG, LONGEST, WORKLOADS

NAMES = [workload.name for workload in WORKLOADS]


def figures(ways):
    """Every way is as fast as the module, the floor takes 0.4 of its time, and every bound is kept. The longest list is
    counted by hand only."""
    starts = {name: 0.02 for name in ["import argparse", "qdp snapshot", "TAB", *command.LINES]}
    times = {way: {name: [0.4e-6 if way == "floor" else 1e-6] * 4 for name in NAMES} for way in ways}
    return {
        "instructions": {
            way: {name: 1000.0 for name in NAMES if way in run.BY_HAND or name != LONGEST.name} for way in ways
        },
        "times": times,
        "times_alone": {way: {name: [3e-6] * 4 for name in NAMES} for way in run.BY_HAND},
        "empty_list": [9e-8] * 4,
        "platform_call": [5e-8] * 4,
        "imports": {way: [1e-4] * 4 for way in ["empty", *ways]},
        "files": {way: {"bytes": 1000, "needs_cpp": False} for way in run.FILES},
        "kept_bytes": dict.fromkeys(ways, 600.0),
        "command": starts,
        "growth": {"ListPorts": [(0, 0.0), (10, 1e-3), (20, 2e-3)]},
        "instructions_growth": {"ListPorts": [(0, 0.0), (10, 1e6), (20, 2e6)]},
    }


def test_figures_within_all_bounds_miss_nothing():
    page, missed = report.table(figures(run.WAYS), NAMES, run.WAYS)
    assert missed == []
    assert "| GetPortStats | 3 µs | 3 µs | 3 µs | 3.00 |" in page  # without keys alive
    assert "**no**" not in page


@pytest.mark.parametrize("way", run.WAYS[3:])
def test_a_way_ahead_in_flows_is_missed(way):
    found = figures(run.WAYS)
    found["times"][way][FLOWS.name] = [0.5e-6] * 4
    page, missed = report.table(found, NAMES, run.WAYS)
    assert missed == [f"{report.NAMES[way]} to the module: {FLOWS.name}: 0.50, wanted at least 1.00"]
    assert f"- {report.NAMES[way]}: {FLOWS.name} (0.50)" in page


def test_a_way_ahead_of_the_floor_as_well_is_shown_and_no_failure():
    found = figures(run.WAYS)
    found["times"]["with_cython"][FLOWS.name] = [0.5e-6] * 4
    found["times"]["floor"][FLOWS.name] = [0.8e-6] * 4
    page, missed = report.table(found, NAMES, run.WAYS)
    assert missed == []
    assert f"| Cython to the module: {FLOWS.name} | at least 1.00 | 0.50 | **no**: to the floor 0.62 |" in page


@pytest.mark.parametrize("workload, share, is_missed", [(LONG, 0.95, False), (LONG, 0.9, True), (LONGEST, 0.95, True)])
def test_cython_may_be_a_tenth_ahead_in_a_thousand_ports_only(workload, share, is_missed):
    found = figures(run.WAYS)
    found["times"]["with_cython"][workload.name] = [share * 1e-6] * 4
    assert bool(report.table(found, NAMES, run.WAYS)[1]) == is_missed


@pytest.mark.parametrize("way", ["checked", "floor"])
def test_budgets_of_instructions_bite(way):
    found = figures(run.WAYS)
    for name in NAMES:
        found["instructions"]["_libqdp"][name] = 1001 * report.budget(name)[way]
    missed = report.table(found, NAMES, run.WAYS)[1]
    assert {f"instructions to {way}: {name}" for name in NAMES} <= {text.rpartition(": ")[0] for text in missed}


def test_a_way_that_could_not_be_built_is_left_out():
    ways = [way for way in run.WAYS if way != "with_nanobind"]
    page, missed = report.table(figures(ways), NAMES, ways)
    assert missed == []
    assert "nanobind to" not in page


def test_the_chart_has_a_bar_for_every_way():
    chart = report.chart(figures(run.WAYS), NAMES, run.WAYS)
    for way in run.WAYS:
        assert chart.count(f'fill="{report.COLOURS[way]}"') == 1 + len(NAMES)
