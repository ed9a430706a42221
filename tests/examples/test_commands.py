"""What all examples have in common: their command lines, exit codes, and what they are written in."""

import ast
import json
import os
import re
import signal
import subprocess
import sys

import pytest

import checker

# Each example with arguments with which it succeeds, and an operation that it cannot do without, with the call and the
# text of its failure.
EXAMPLES = {
    "inventory.py": ([], "Qdp_Get_Switch_List", "ListSwitches()", "Failed to retrieve list of switches"),
    "port_rates.py": ([], "Qdp_Get_Switch_List", "ListSwitches()", "Failed to retrieve list of switches"),
    "top_flows.py": ([], "Qdp_Get_Switch_List", "ListSwitches()", "Failed to retrieve list of switches"),
    "mac_owner.py": (
        ["02:10:00:02:00:10"],
        "Qdp_Dump_Switch_MAC_Table",
        "ListSwitchMACTable(0)",
        "Failed to retrieve switch mac table",
    ),
    "balancer_load.py": (
        [],
        "Qdp_DumpLBStats",
        "DumpLBStats(0, 0, 16384, 0, 64)",
        "Failed to dump LB stats. Please see hostcore.log",
    ),
    "offload_health.py": (
        [],
        "Qdp_Get_FPO_Uplink_Status",
        "GetFPOUplinkStatus(0, 0)",
        "Failed to get FPO uplink status",
    ),
    "smartnic_drops.py": ([], "Qdp_P4I_Stats_Get", "P4IStatsGet()", "Failed to get p4 ingress stats"),
    "follow_flow.py": ([], "Qdp_P4_Cmd", "TableFlowInfoGet(0)", "Failed to get table data"),
}
ONCE = {"port_rates.py": ["--count", "1"]}  # where a terminal is drawn again and again
CLEAR = "\x1b[H\x1b[J"
FROM_ALL = pytest.mark.parametrize("name", EXAMPLES)


def test_no_example_is_forgotten(root):
    sources = {path.name: path.read_text() for path in (root / "examples").glob("*.py")}
    assert {name for name, text in sources.items() if '\nif __name__ == "__main__":\n' in text} == set(EXAMPLES)


@FROM_ALL
class TestEach:
    def test_text(self, printed, name):
        assert len(printed(name, *EXAMPLES[name][0]).splitlines()) > 1

    def test_json_is_one_array_of_objects(self, rows, name):
        array = rows(name, *EXAMPLES[name][0])
        assert array and {type(row) for row in array} == {dict}

    def test_as_it_is_started(self, command, name):
        """Without anything prepared, in real time, as on a real host."""
        line, environment = command(name, *EXAMPLES[name][0])
        done = subprocess.run(line, env=environment, capture_output=True, text=True, timeout=120)
        assert (done.returncode, done.stderr) == (0, "") and done.stdout

    def test_help(self, root, printed, name):
        shown = printed(name, "--help")
        documentation = ast.get_docstring(ast.parse((root / "examples" / name).read_text()), clean=False).strip()
        assert shown.startswith(f"usage: {name} [-h] [--json]")
        assert documentation in shown
        assert f"    {name}" in documentation  # an example of use
        assert "exit codes: 0, 1 for a wrong command line, 2 where the datapath refuses or lacks something" in shown

    def test_wrong_usage(self, run, name):
        done = run(name, "--colour")
        assert (done.returncode, done.stdout) == (1, "")
        assert done.stderr.startswith(f"usage: {name} [-h] [--json]")
        assert f"\n{name}: error: " in done.stderr

    def test_refused(self, run, refused, name):
        arguments, operation, call, text = EXAMPLES[name]
        done = run(name, "--json", *arguments, prepare=f"host.fail('{operation}')")
        assert (done.returncode, done.stderr) == (2, refused(name, call, text))
        assert type(json.loads(done.stdout)) is list

    def test_refused_in_text(self, run, refused, name):
        arguments, operation, call, text = EXAMPLES[name]
        done = run(name, *arguments, prepare=f"host.fail('{operation}')")
        assert (done.returncode, done.stderr) == (2, refused(name, call, text))

    @pytest.mark.parametrize("options", [[], ["--json"]], ids=["text", "json"])
    def test_a_reader_that_has_seen_enough(self, command, name, options):
        line, environment = command(name, *EXAMPLES[name][0], *options)
        process = subprocess.Popen(line, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        process.stdout.close()
        with process.stderr:
            said = process.stderr.read()
        assert (process.wait(timeout=120), said) == (-signal.SIGPIPE, b"")

    @pytest.mark.parametrize("columns", [80, 60])
    def test_a_line_that_is_too_long_for_the_terminal_is_cut_with_a_mark(self, on_a_terminal, command, name, columns):
        options = [*EXAMPLES[name][0], *ONCE.get(name, [])]
        line, environment = command(name, *options, prepare="", columns=columns)
        piped = subprocess.run(line, env=environment, capture_output=True, text=True, timeout=120, check=True).stdout
        shown = on_a_terminal(name, *options, columns=columns, lines=1000)
        assert "".join(shown).startswith(CLEAR) == (name == "port_rates.py")
        shown[0] = shown[0].replace(CLEAR, "")
        assert [(each, len(each)) for each in shown if len(each) > columns] == []
        assert shown == [
            each if len(each) <= columns else each[: columns - 1] + ">" for each in piped.splitlines()
        ]

    def test_a_full_disk(self, run, name):
        with open("/dev/full", "w") as full:
            done = run(name, *EXAMPLES[name][0], stdout=full)
        said = f"{name}: cannot write to standard output: No space left on device\n"
        assert (done.returncode, done.stderr) == (3, said)

    def test_a_closed_output(self, command, name):
        line, environment = command(name, *EXAMPLES[name][0])
        closing = ["/bin/sh", "-c", 'exec "$@" >&-', "sh", *line]
        done = subprocess.run(closing, env=environment, stderr=subprocess.PIPE, text=True, timeout=120)
        said = f"{name}: standard output is closed; open it, or write to /dev/null\n"
        assert (done.returncode, done.stderr) == (3, said)

    def test_is_short(self, root, name):
        assert len((root / "examples" / name).read_text().splitlines()) <= 170


@pytest.mark.parametrize("name", ["inventory.py", "port_rates.py", "balancer_load.py", "offload_health.py"])
def test_a_switch_that_there_is_not(run, name):
    done = run(name, "--json", "--switch", "1", "--switch", "9")
    assert done.returncode == 2
    assert set(done.stderr.splitlines()) == {f"{name}: the datapath has no switch 9"}
    assert re.findall(r'"swID": (\d+)', done.stdout) and set(re.findall(r'"swID": (\d+)', done.stdout)) == {"1"}


@pytest.mark.parametrize("name", ["port_rates.py", "offload_health.py", "smartnic_drops.py"])
@pytest.mark.parametrize("value", ["0", "-1", "nan", "86401", "soon"])
def test_an_interval_that_is_none(run, name, value):
    done = run(name, f"--interval={value}")
    assert (done.returncode, done.stdout) == (1, "")
    wanted = "is not a number of seconds above 0 and up to 86400"
    assert done.stderr.endswith(f"{name}: error: argument --interval: '{value}' {wanted}\n")


@pytest.mark.parametrize(
    "name, option", [("port_rates.py", "--count"), ("top_flows.py", "--top"), ("smartnic_drops.py", "--top")]
)
@pytest.mark.parametrize("value", ["0", "-3", "2.5"])
def test_a_count_that_is_none(run, name, option, value):
    done = run(name, f"{option}={value}")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.endswith(f"{name}: error: argument {option}: '{value}' is not an integer of at least 1\n")


@pytest.mark.parametrize(
    "name, option", [("inventory.py", "--switch"), ("balancer_load.py", "--switch"), ("top_flows.py", "--lcore")]
)
@pytest.mark.parametrize("value", ["-1", "0x1", "one", ""])
def test_a_number_that_is_none(run, name, option, value):
    done = run(name, f"{option}={value}")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.endswith(f"{name}: error: argument {option}: '{value}' is not an integer of at least 0\n")


def test_json_without_rows_is_an_empty_array(run):
    done = run("inventory.py", "--json", prepare="host.fail('Qdp_Get_Switch_List')")
    assert (done.returncode, done.stdout) == (2, "[]\n")


@pytest.mark.parametrize("name", ["inventory.py", "mac_owner.py"])
def test_json_is_indented_by_two(rows, printed, name):
    assert printed(name, "--json", *EXAMPLES[name][0]) == json.dumps(rows(name, *EXAMPLES[name][0]), indent=2) + "\n"


def test_examples_pass_the_strict_type_checker(root, build, tmp_path):
    sources = list((root / "examples").rglob("*.py"))
    assert len(sources) > len(EXAMPLES)
    done = checker.checked(build, tmp_path, [root / "typings", build], "--strict", root / "examples")
    assert done.stdout + done.stderr == f"Success: no issues found in {len(sources)} source files\n"


def test_examples_are_for_python_3_6(root):
    for path in (root / "examples").rglob("*.py"):
        text = path.read_text()
        ast.parse(text, feature_version=(3, 6))
        assert max(map(len, text.splitlines())) <= 120, path
