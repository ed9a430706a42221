"""The command as a whole: exit codes, errors on one line, help, standard streams that are closed or full."""

import json
import os
import signal
import subprocess
import time

import pytest

from qdp.cli import object_names


def test_overview_names_each_object(qdp_command):
    for line in (["--help"], [], ["help"]):
        out = "\n".join(qdp_command.lines(*line))
        for name in object_names():
            assert "\n  {} ".format(name) in out


def test_version(qdp_command):
    import qdp

    assert qdp_command.lines("--version") == ["qdp " + qdp.__version__]


def test_switch_of_a_named_verb_is_no_verb(qdp_command):
    expected = "qdp: there is no switch 'nosuch'; `qdp switch show` lists the switches"
    assert qdp_command.error("port", "show", "nosuch") == (2, expected)


@pytest.mark.parametrize(
    "line, error",
    [
        ("nosuch", "qdp: there is no object 'nosuch'; there are " + ", ".join(object_names())),
        (
            "port nosuch",
            "qdp: there is no switch 'nosuch'; `qdp switch show` lists the switches, `qdp port --help` the verbs",
        ),
        ("port show 0 x", "qdp: argument PORT: invalid number value: 'x'; see `qdp port show --help`"),
        ("port show 0 99", "qdp: switch 0 (portset-0) has no port 99; `qdp port show 0` lists them"),
        ("port show 0 1 2", "qdp: unrecognized arguments: 2; see `qdp port show --help`"),
        ("port stats --sort nosuch", "qdp: there is no column 'nosuch'; there are "),
        ("table", "qdp: qdp table needs a verb: list, dump, get, invalidate"),
        ("table get nosuch 1", "qdp: there is no table 'nosuch'; there are lif-stats, "),
        ("table get flow-info", "qdp: table flow-info takes index=N; index is missing"),
        ("mac find xx", "qdp: argument MAC: invalid mac value: 'xx'; see `qdp mac find --help`"),
        ("call NoSuch", "qdp: there is no method 'NoSuch'; did you mean "),
        ("call ListPort 0", "qdp: there is no method 'ListPort'; did you mean ListPorts, "),
        ("flow trace 9999999", "qdp: a flow's index is 0 to 4194303, not 9999999"),
    ],
)
def test_error_is_one_line(qdp_command, line, error):
    code, text = qdp_command.error(*line.split())
    assert text.startswith(error)
    assert code == (2 if "no switch" in error or "no port" in error else 1)


def test_platform_error_has_text_and_hint(qdp_command):
    assert qdp_command.error("call", "ListPorts", "9") == (
        2,
        "qdp: ListPorts(9): Failed to retrieve list of ports.; check the switch number against ListSwitches",
    )


def test_platform_error_as_json(qdp_command):
    code, out, err = qdp_command("call", "ListPorts", "9", "-j")
    about = {"method": "ListPorts", "arguments": [9], "text": "Failed to retrieve list of ports.", "class": "Refused"}
    assert (code, out, json.loads(err)) == (2, "[]\n", {"error": about})


@pytest.mark.parametrize(
    "line",
    [
        "port show nosuch",
        "port show 0 99",
        "mac find 02:10:00:00:00:99",
        "balancer debug nosuch",
        "port reset 0 99",
        "setting set nosuch 1",
    ],
)
def test_refusal_is_an_empty_array(qdp_command, line):
    code, out, err = qdp_command(*line.split(), "-j")
    assert (code, out) == (2, "[]\n")
    assert err.count("\n") == 1 and set(json.loads(err)["error"]) == {"method", "arguments", "text", "class"}


@pytest.mark.parametrize("line", ["switch", "port show 0", "port stats", "mac show", "uplink stats", "nic lif"])
def test_host_that_refuses_everything_is_an_empty_array(qdp_command, line):
    for operation in qdp_command.host.operations():
        qdp_command.host.fail(operation, times=0)
    code, out, err = qdp_command(*line.split(), "-j")
    assert (code, out) == (2, "[]\n")
    assert all(set(json.loads(each)) == {"error"} for each in err.splitlines()) and err


def test_usage_error_as_json(qdp_command):
    code, text = qdp_command.error("port", "show", "0", "x", "-j")
    message = "argument PORT: invalid number value: 'x'; see `qdp port show --help`"
    about = {"method": None, "arguments": None, "text": message, "class": "UsageError"}
    assert (code, json.loads(text)) == (1, {"error": about})


def test_what_could_be_read_is_printed(qdp_command):
    qdp_command.host.fail("Qdp_Get_Port_List", status=7, nth=2)
    code, out, err = qdp_command("port", "show", "-j")
    assert code == 2
    assert err.count("\n") == 1 and json.loads(err)["error"]["arguments"] == [1]
    assert sorted({row["swID"] for row in json.loads(out)}) == [0, 2]


def test_rows_before_a_failure_are_printed(qdp_command, monkeypatch):
    from qdp.cli import load
    from qdp.errors import Refused

    def read(context):
        yield {"swID": 7, "name": "seven"}
        raise Refused("no more")

    monkeypatch.setattr(load("switch").verbs["show"], "read", read)
    code, out, err = qdp_command("switch", "--columns", "switch,name", "--no-header")
    assert (code, out) == (2, "7  seven\n")
    assert err.startswith("qdp: no more; ")


def test_nothing_is_an_empty_array(qdp_command):
    assert qdp_command.rows("switch", "show", "--where", "mtu=1") == []
    assert qdp_command("switch", "show", "--where", "mtu=1", "-j")[1] == "[]\n"


def test_pretty_json(qdp_command):
    flat, pretty = qdp_command.rows("switch"), qdp_command("switch", "-p")[1]
    assert json.loads(pretty) == flat and pretty.count("\n") > len(flat) * 8


def test_no_internal_error_for_a_defect(qdp_command, monkeypatch):
    """A defect of the command itself is one line, too."""
    from qdp.cli import switch

    monkeypatch.setattr(switch.OBJECT.verbs["show"], "read", lambda context: 1 / 0)
    assert qdp_command.error("switch") == (
        2,
        "qdp: internal error: ZeroDivisionError: division by zero; please report this with the command line",
    )


# --- Processes ---


def test_module_runs_as_a_process(run_process):
    done = run_process("switch", "show", "-j")
    assert (done.returncode, done.stderr) == (0, "")
    assert [row["swID"] for row in json.loads(done.stdout)] == [0, 1, 2]


@pytest.mark.parametrize("line", ["switch show", "port stats 0 -j", "lcore", "mac find 02:10:00:00:00:03"])
def test_start_loads_no_more_than_it_needs(process, line):
    """Each of these costs a start milliseconds."""
    (python, script, *words), environment = process(*line.split())
    program = "import sys; from qdp.cli.main import main; main(sys.argv[1:]); print(*sys.modules, file=sys.stderr)"
    # -S: what is installed beside the interpreter may load anything.
    line = [python, "-S", "-c", program, *words]
    done = subprocess.run(line, env=environment, cwd="/", stdout=-1, stderr=-1, timeout=60)
    loaded = set(done.stderr.decode().split())
    assert {"qdp.cli.main", "qdp._call", "argparse"} <= loaded
    heavy = {"typing", "logging", "difflib", "ipaddress", "tempfile", "subprocess", "inspect", "qdp.methods"}
    assert loaded & heavy == set()


def test_closed_pipe_is_quiet(process):
    line, environment = process("flow", "show")
    reader, writer = os.pipe()
    child = subprocess.Popen(line, env=environment, stdout=writer, stderr=subprocess.PIPE)
    os.close(writer)
    os.close(reader)
    assert child.communicate(timeout=60)[1] == b""
    assert child.returncode == 0


def test_full_device_is_an_error(run_process):
    with open("/dev/full", "w") as full:
        done = run_process("switch", stdout=full)
    assert done.returncode == 2
    assert done.stderr == "qdp: cannot write: [Errno 28] No space left on device\n"


@pytest.mark.parametrize("closed", [1, 2])
def test_closed_standard_stream(process, closed):
    line, environment = process("switch")
    done = subprocess.run(
        ["sh", "-c", '"$@" {}>&-'.format(closed), "sh", *line], env=environment, stdout=-1, stderr=-1, timeout=60
    )
    if closed == 1:
        assert (done.returncode, done.stderr) == (2, b"qdp: standard output is closed\n")
    else:
        assert done.returncode == 0 and done.stdout.startswith(b"switch ")


def test_interrupt_ends_quietly(process):
    line, environment = process("port", "stats", "-w", "60", "-j")
    child = subprocess.Popen(line, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    for _ in range(600):  # until it has begun to wait, which is the one long sleep of it
        with open("/proc/{}/wchan".format(child.pid)) as file:
            if "nanosleep" in file.read():
                break
        time.sleep(0.05)
    child.send_signal(signal.SIGINT)
    assert child.communicate(timeout=60) == (b"", b"")
    assert child.returncode == 130


def test_names_beyond_the_encoding_are_escaped(run_process):
    done = run_process("table", "get", "süd", variables={"PYTHONIOENCODING": "ascii", "LC_ALL": "C"})
    assert done.returncode == 1 and "Traceback" not in done.stderr and "s\\xfcd" in done.stderr
