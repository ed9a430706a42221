"""The example that prints the host's switches, ports and rates."""

import os
import re
import subprocess
import sys

import pytest


@pytest.fixture(scope="module")
def printed(root, build):
    """What the example prints on the embedded host, in blocks of lines."""
    done = subprocess.run(
        [sys.executable, str(root / "examples" / "inventory.py")],
        env={**os.environ, "LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build)},
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        timeout=60,
    )
    assert (done.returncode, done.stderr) == (0, "")
    return [block.splitlines() for block in done.stdout.strip("\n").split("\n\n")]


def test_switches(printed):
    assert printed[0] == [
        "Switches",
        "  switch  name                                              MTU  ports  active  lcores",
        "       0  DvsPortset-0                                     9000     36      36       8",
        "       1  dvs-storage                                      1500      8       8       4",
        "       2  50 2e 8a 10 6b 61 3f 4c-a1 9d 22 7e 05 b8 c4 03  1500     35      35       4",
    ]


@pytest.mark.parametrize("block, ports", [(1, 36), (2, 8), (3, 35)])
def test_ports(printed, block, ports):
    title, headings, *lines = printed[block]
    assert title.startswith(f"Ports of switch {block - 1}, ")
    assert re.split(" {2,}", headings.strip())[:4] == ["port", "client", "MAC address", "MACs"]
    assert [int(line[:6]) for line in lines] == list(range(ports))
    assert {line.index(" 02:1b:21:") for line in lines} == {headings.index(" MAC address")}


def test_rates(printed):
    title, headings, *lines = printed[4]
    assert title == "Rates of switch 0 over a second"
    assert len(lines) == 36
    ends = {len(line) for line in [headings, *lines]}
    assert len(ends) == 1
    rates = [re.split(" {2,}", line.strip()) for line in lines]
    assert [int(port) for port, *_ in rates] == list(range(36))
    assert all(re.fullmatch(r"\d[\d,]*", rate) for _, _, *row in rates for rate in row)

@pytest.mark.parametrize("script", ["inventory.py", "flow_table.py", "smartnic.py"])
def test_a_pager_that_is_closed_early_ends_a_script_quietly(root, build, script):
    environment = dict(os.environ, LD_LIBRARY_PATH=str(build / "host"), PYTHONPATH=str(build))
    running = subprocess.Popen(
        [sys.executable, "-u", str(root / "examples" / script)],
        env=environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
    )
    assert running.stdout.readline() != b""
    running.stdout.close()
    with running.stderr:
        assert running.stderr.read() == b""
    running.wait(timeout=60)
