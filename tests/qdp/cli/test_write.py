"""Writing: before and after, dry runs, questions, and refusal where nobody can be asked."""

import io
import json

import pytest

import _libqdp

MAC = "02:00:5e:10:00:01"
NUMBER = 0x0100105E0002  # the first byte is the lowest


def entries(switch=0):
    return [(each["macAddr"], each["vlanID"]) for each in _libqdp.ListSwitchMACTable(switch)["MacTableList"]]


def test_before_and_after(qdp_command):
    assert qdp_command.lines("mac", "add", "0", "3", MAC, "--vlan", "7") == [
        "what                                                               before  after",
        "add 02:00:5e:10:00:01 in VLAN 7 at port 3 of switch 0 (portset-0)  absent  present",
    ]
    assert (MAC, 7) in entries()


@pytest.mark.parametrize("switch", [0, 1])
def test_entry_is_added_to_the_switch_that_is_named(qdp_command, switch):
    with qdp_command.host.recording() as calls:
        rows = qdp_command.rows("mac", "add", switch, "3", MAC.upper().replace(":", "-"), "--vlan", "7")
    (row,) = rows
    assert (row["before"], row["after"], row["changed"], row["done"]) == ("absent", "present", True, True)
    assert rows[0]["arguments"] == [switch, 3, NUMBER, switch << 16 | 7]
    assert (MAC, 7) in entries(switch)
    assert (MAC, 7) not in entries(1 - switch)
    assert "Qdp_MAC_Entry_Ops" in [call.operation for call in calls]


def test_dry_run_changes_nothing(qdp_command):
    before = entries()
    with qdp_command.host.recording() as calls:
        rows = qdp_command.rows("mac", "clear", "0", "--dry-run")
    assert {call.operation for call in calls} == {
        "Qdp_Get_Switch_List",
        "Qdp_Dump_Switch_MAC_Table",
    }
    assert entries() == before
    assert rows[0]["before"] == "{} entries".format(len(before))
    assert (rows[0]["after"], rows[0]["changed"], rows[0]["done"]) == (None, None, False)


DANGEROUS = [
    "mac del 0 3 " + MAC,
    "mac clear 0",
    "mac clear 0 3",
    "flow clear 0",
    "balancer flush 0",
    "slowpath reset 0",
    "port reset 0 3",
    "nic port del 64",
    "nic pf set 1 2",
    "nic lif add 40 --source-port 40 --rep-port 41 --lif-type 2",
    "table invalidate 0 0 2",
    "call SetFlowTimeout 30",
]


@pytest.mark.parametrize("line", DANGEROUS)
def test_what_is_dangerous_is_refused_without_a_terminal(qdp_command, line):
    before = qdp_command.host.scenario()
    code, text = qdp_command.error(*line.split())
    assert code == 1 and text.endswith("; add --yes to do it, or --dry-run to see what would be done")
    assert qdp_command.host.scenario() == before


@pytest.mark.parametrize("line", DANGEROUS)
def test_what_is_dangerous_is_done_with_yes(qdp_command, line):
    _libqdp.AddMACEntry(0, 3, NUMBER, 0)
    _libqdp.AdvStatsSetEnabled(0, 1)
    code, out, err = qdp_command(*line.split(), "--yes", "-j")
    assert (code, err) == (0, "")
    if not line.startswith("call"):
        assert [row["done"] for row in json.loads(out)] == [True]


class Terminal(io.StringIO):
    def isatty(self):
        return True


@pytest.mark.parametrize(
    "answer, is_done", [("y\n", True), ("yes\n", True), ("n\n", False), ("", False), ("\n", False)]
)
def test_question_on_a_terminal(qdp_command, monkeypatch, answer, is_done):
    asked = Terminal()
    monkeypatch.setattr("sys.stdin", Terminal(answer))
    monkeypatch.setattr("sys.stderr", asked)
    code, out, _ = qdp_command("mac", "clear", "0", "3")
    assert "  clear the MAC table of port 3 of switch 0 (portset-0)\n" in asked.getvalue()
    assert "Traffic to forgotten addresses is flooded until they are learned again. Go on? [y/N] " in asked.getvalue()
    assert (code, bool(out)) == ((0, True) if is_done else (2, False))
    assert asked.getvalue().endswith("qdp: nothing was changed\n") == (not is_done)
    assert (_libqdp.ListPortMACTable(0, 3)["MacTableList"] == []) == is_done


def test_refusal_of_the_platform(qdp_command):
    qdp_command.host.fail("Qdp_MAC_Entry_Ops", status=7)
    code, out, err = qdp_command("mac", "add", "0", "3", MAC, "-j")
    assert (code, json.loads(out)) == (2, [])
    assert json.loads(err)["error"]["text"] == "Failed to add a MAC entry."


def test_what_is_not_named_stays(qdp_command):
    def lif():
        return next(each for each in _libqdp.LifPortList(0)["liflist"] if each["lifID"] == 64)

    before = lif()
    wanted = (before["flowKeyType"] + 1) % 3
    qdp_command.rows("nic", "lif", "set", "64", "--flow-key-type", wanted)
    assert lif() == dict(before, flowKeyType=wanted)


@pytest.mark.parametrize(
    "line, error",
    [
        ("mac add 0 3 {} --vlan 4096".format(MAC), "qdp: a VLAN is 0 to 4095, not 4096"),
        ("nic lif set 64", "qdp: nothing is to be changed; give one of --flow-key-type, --mux-pf, --fwd-mode"),
        (
            "nic vlan add 900 --source-port 50 --rep-port 51 --pf-lif-0 300 -y",
            "qdp: a PF LIF is 0 to 255 here, not 300: the SmartNIC gets its low 8 bits alone",
        ),
        ("nic pf set 1 2 3 4 5 -y", "qdp: the host has four physical functions; 5 LIFs were given"),
        ("port migrate 0 3", "qdp: give FROM and TO, the lcores, or --filter; see `qdp port migrate --help`"),
    ],
)
def test_wrong_values_are_refused_before_any_write(qdp_command, line, error):
    before = qdp_command.host.scenario()
    assert qdp_command.error(*line.split()) == (1, error)
    assert qdp_command.host.scenario() == before
