"""The example that prints the flows with the most bytes."""

import json
import os
import pty
import re

import _libqdp
import pytest

LCORES = {lcore: 24 + lcore * 11 % 30 for lcore in range(16)}  # with their flows, of the embedded host
FLOWS = sum(LCORES.values())
ALL = ["--top", "10000"]


def dumped():
    """All flows, as the method answers."""
    for lcore in LCORES:
        switch = 0 if lcore < 8 else 1 if lcore < 12 else 2
        start = 0
        while start != 0xFFFFFFFF:
            page = _libqdp.DumpFlowTable(switch, lcore, start, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
            yield from [dict(flow, swID=switch, lcoreID=lcore) for flow in page["list"]]
            start = page["startIndex"]


def cells(line):
    return re.split(" {2,}", line.strip())


def test_all_flows_the_largest_first(frozen, rows):
    found = rows("top_flows.py", *ALL)
    sizes = [flow["swBytes"] + flow["hwBytes"] for flow in found]
    assert sizes == sorted(sizes, reverse=True) and len(found) == FLOWS
    by_name = sorted(found, key=lambda flow: (flow["lcoreID"], flow["key"]))
    assert by_name == sorted(dumped(), key=lambda flow: (flow["lcoreID"], flow["key"]))


@pytest.mark.parametrize("options, flows", [([], 10), (["--top", "3"], 3)])
def test_the_top(frozen, rows, options, flows):
    sizes = sorted((flow["swBytes"] + flow["hwBytes"] for flow in dumped()), reverse=True)
    assert [flow["swBytes"] + flow["hwBytes"] for flow in rows("top_flows.py", *options)] == sizes[:flows]


def test_text_is_of_the_same_flows(printed, rows):
    headings, *lines = printed("top_flows.py").splitlines()
    assert len(headings.split()) == len(cells(headings)) == 15
    for line, flow in zip(lines, rows("top_flows.py")):
        lcore, size, hits, *key, actions = cells(line)
        assert int(lcore) == flow["lcoreID"] and key == flow["key"].split()
        assert int(size.replace(",", "")) == flow["swBytes"] + flow["hwBytes"]
        assert int(hits.replace(",", "")) == flow["swHits"] + flow["hwHits"]
        assert actions == flow["actions"].rstrip("; ")
    assert len(lines) == 10


def test_columns_are_aligned(printed):
    headings, *lines = printed("top_flows.py", *ALL).splitlines()
    for heading in ("layer", "source-MAC", "destination", "protocol", "actions"):
        start = re.search(rf"(?<=  ){heading}(?=  |$)", headings).start()
        assert all(line[start - 1] == " " != line[start] for line in lines)
    for heading in ("lcore", "bytes", "hits"):
        end = re.search(rf"{heading}(?=  )", headings).end()
        assert all(line[end - 1].isdigit() and line[end] == " " for line in lines)


def test_a_flow(printed):
    (line,) = [line for line in printed("top_flows.py", *ALL, "--lcore", "0").splitlines() if "10.0.1.2 " in line]
    shown = cells(line)
    assert shown[0] == "0" and int(shown[1].replace(",", "")) > 1000
    assert shown[3:14] == "L4 02:10:00:00:00:01 02:10:00:00:00:06 0 0 10.0.1.2 10.0.17.8 6 69633 32899 8443".split()
    assert shown[14].endswith("; VNI: 69633; GENEVE DECAP; IPFIX Egress")


@pytest.mark.parametrize(
    "options, lcores, column, value",
    [
        (["--lcore", "3", "--lcore", "9"], {"3", "9"}, 0, None),
        (["--source", "10.0.4.5"], {"0"}, 8, "10.0.4.5"),
        (["--destination", "2001:db8:0:12::100f", "--lcore", "0"], {"0"}, 9, "2001:db8:0:12::100f"),
    ],
)
def test_options(printed, options, lcores, column, value):
    lines = printed("top_flows.py", *ALL, *options).splitlines()[1:]
    assert {cells(line)[0] for line in lines} == lcores
    assert value is None or {cells(line)[column] for line in lines} == {value}


def test_a_lcore_that_there_is_not(run):
    done = run("top_flows.py", "--lcore", "40", "--lcore", "3", *ALL)
    assert (done.returncode, done.stderr) == (2, "top_flows.py: no switch forwards on lcore 40\n")
    assert len(done.stdout.splitlines()) == 1 + LCORES[3]


def test_what_is_no_address(run):
    done = run("top_flows.py", "--source", "10.0.4")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.endswith(
        "error: argument --source: '10.0.4' is not an IP address such as 10.0.0.1 or 2001:db8::1\n"
    )


def test_a_table_that_ends_early(run):
    options = [*ALL, "--lcore", "3", "--lcore", "4", "--json"]
    done = run("top_flows.py", *options, prepare="host.fail('Qdp_Dump_Flow_Table', nth=2)")
    assert done.returncode == 2
    assert re.fullmatch(
        r"top_flows.py: DumpFlowTable\(0, 3, \d+, 0, .*\): Failed to retrieve flow table; check that .*\n",
        done.stderr,
    )
    lcores = [flow["lcoreID"] for flow in json.loads(done.stdout)]
    assert 0 < lcores.count(3) < LCORES[3]
    assert lcores.count(4) == LCORES[4]


def test_lcore_63(run):
    """The mask of a switch's lcores reads negative then."""
    prepare = """
import _libqdp
(switch, *_) = _libqdp.ListSwitches()
_libqdp.ListSwitches = lambda: [dict(switch, lcores=-(1 << 63) + 1)]
"""
    done = run("top_flows.py", *ALL, "--json", prepare=prepare)
    assert {flow["lcoreID"] for flow in json.loads(done.stdout)} == {0}
    assert "top_flows.py: DumpFlowTable(0, 63, 0," in done.stderr


def test_a_terminal_sees_how_far_the_dump_has_come(run):
    terminal, end = pty.openpty()
    done = run("top_flows.py", "--lcore", "3", "--lcore", "5", stderr=end)
    os.close(end)
    shown = os.read(terminal, 4096).decode()
    os.close(terminal)
    assert shown == "\r\x1b[Klcore 3\r\x1b[Klcore 5\r\x1b[K"
    assert done.returncode == 0
