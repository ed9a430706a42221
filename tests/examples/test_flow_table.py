"""The example that prints flow tables."""

import os
import pty
import re
import runpy
import subprocess
import sys

import pytest

FLOWS = sum(24 + lcore * 11 % 30 for lcore in range(16))  # of the embedded host


@pytest.fixture
def run(root, build):
    """Runs the example on the embedded host, in a process of its own."""
    paths = {"LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build)}

    def run(*options, **streams):
        command = [sys.executable, str(root / "examples" / "flow_table.py"), *options]
        return subprocess.run(
            command,
            stdout=subprocess.PIPE,
            stderr=streams.get("stderr", subprocess.PIPE),
            text=True,
            timeout=60,
            env={**os.environ, **paths},
        )

    return run


def cells(line):
    return re.split(" {2,}", line.strip())


def test_all_flows_of_all_lcores(run):
    done = run()
    assert (done.returncode, done.stderr) == (0, "")
    headings, *lines = done.stdout.splitlines()
    assert len(lines) == FLOWS
    assert sorted({int(cells(line)[0]) for line in lines}) == list(range(16))
    assert {len(cells(line)) for line in lines} == {len(headings.split())}


def test_columns_are_aligned(run):
    headings, *lines = run().stdout.splitlines()
    for heading in ("layer", "source-MAC", "destination", "protocol", "actions"):
        start = re.search(rf"(?<=  ){heading}(?=  |$)", headings).start()
        assert all(line[start - 1] == " " != line[start] for line in lines)
    for heading in ("lcore", "SW-hits", "HW-bytes"):
        end = re.search(rf"{heading}(?=  )", headings).end()
        assert all(line[end - 1].isdigit() and line[end] == " " for line in lines)


def test_a_flow(run):
    (line,) = [line for line in run("--lcore", "0").stdout.splitlines() if "8443" in line and "10.0.1.2 " in line]
    shown = cells(line)
    assert shown[:12] == "0 L4 02:1b:21:00:00:01 02:1b:21:00:00:06 0 0 10.0.1.2 10.0.17.8 6 69633 32899 8443".split()
    assert int(shown[12]) > 1000 and shown[14:16] == ["0", "0"]
    assert shown[16].endswith("; VNI: 69633; GENEVE DECAP; IPFIX Egress")


@pytest.mark.parametrize(
    "options, lcores, column, value",
    [
        (["--lcore", "3", "--lcore", "9"], {"3", "9"}, 1, None),
        (["--source", "10.0.4.5"], {"0"}, 6, "10.0.4.5"),
        (["--destination", "2001:db8:0:12::100f", "--lcore", "0"], {"0"}, 7, "2001:db8:0:12::100f"),
    ],
)
def test_options(run, options, lcores, column, value):
    lines = run(*options).stdout.splitlines()[1:]
    assert {cells(line)[0] for line in lines} == lcores
    assert value is None or {cells(line)[column] for line in lines} == {value}


def test_a_lcore_that_there_is_not(run):
    done = run("--lcore", "40")
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr.endswith("error: no switch forwards on lcore 40\n")


def test_a_terminal_sees_how_far_the_dump_has_come(run):
    terminal, end = pty.openpty()
    done = run("--lcore", "3", stderr=end)
    os.close(end)
    shown = os.read(terminal, 4096).decode()
    os.close(terminal)
    assert re.findall(r"\r\x1b\[Klcore 3: (\d+) flows so far", shown)[-1] == "27"
    assert shown.endswith("\r\x1b[K")
    assert len(done.stdout.splitlines()) == 1 + 27


def test_a_table_that_ends_early(root, host, monkeypatch, capfd):
    host.fail("Qdp_Dump_Flow_Table", nth=2)
    monkeypatch.syspath_prepend(root / "examples")  # as when the script is started
    monkeypatch.setattr(sys, "argv", ["flow_table.py", "--lcore", "3", "--lcore", "4"])
    with pytest.raises(SystemExit) as end:
        runpy.run_path(str(root / "examples" / "flow_table.py"), run_name="__main__")
    printed, said = capfd.readouterr()
    assert end.value.code == 1
    assert said == "Failed to retrieve flow table.\n\nflow_table: the flow table of lcore 3 ends early\n"
    first_page, other_lcore = [[line[:5] for line in printed.splitlines()].count(f"{lcore:>5}") for lcore in (3, 4)]
    assert 0 < first_page < 27
    assert other_lcore == 24 + 4 * 11 % 30
