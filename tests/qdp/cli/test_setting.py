"""`qdp setting`: shown, set, tried and applied, with what the platform is asked to do."""

import json
import os
import signal
import subprocess

import jsonschema
import pytest

import _libqdp
from qdp.cli.setting import schema_of
from qdp.settings import SETTINGS

BURST = "dvs-production/burst-size"


def timeout():
    return _libqdp.GetFlowTimeout()


def test_show_by_name_part_and_pattern(qdp_command):
    assert [row["path"] for row in qdp_command.rows("setting", "show", BURST)] == [BURST]
    assert [row["value"] for row in qdp_command.rows("setting", "show", "flow-timeout")] == [timeout()]
    of_part = {row["path"] for row in qdp_command.rows("setting", "show", "burst")}
    assert of_part >= {BURST, "dvs-storage/burst-size"}
    assert all("burst" in path for path in of_part)
    assert of_part == {row["path"] for row in qdp_command.rows("setting", "show", "*burst*")}


def test_uplink_that_no_list_has_is_shown_by_its_name(qdp_command):
    (row,) = qdp_command.rows("setting", "show", "dvs-production/uplink/nic0/tx-ring-size")
    assert (row["value"], row["unit"]) == (2048, "entries")


def test_mask_is_hexadecimal_and_can_be_given_back(qdp_command, tmp_path):
    (row,) = qdp_command.rows("setting", "show", "dvs-production/fpo-models")
    assert int(row["value"], 16) == _libqdp.GetFPOEnabled("dvs-production")["models"] != 3
    assert row["value"].startswith("0x")
    file = tmp_path / "desired.json"
    file.write_text(json.dumps({row["path"]: "0x3"}))
    qdp_command.rows("setting", "apply", file)
    assert qdp_command.rows("setting", "show", row["path"])[0]["value"] == "0x3"


def test_set_shows_before_and_after_and_writes_once(qdp_command):
    assert timeout() != 33
    before = timeout()
    with qdp_command.host.recording() as calls:
        rows = qdp_command.rows("setting", "set", "flow-timeout", "33")
        again = qdp_command.rows("setting", "set", "flow-timeout", "33")
    assert rows == [{"path": "flow-timeout", "before": before, "after": 33, "changed": True, "done": True}]
    assert again == []
    assert [call.arguments for call in calls if call.operation == "Qdp_Set_Flow_Timeout"] == [[33]]


def test_dry_run_writes_nothing(qdp_command):
    before = timeout()
    rows = qdp_command.rows("setting", "set", "flow-timeout", "33", "--dry-run")
    assert [(row["before"], row["after"], row["done"]) for row in rows] == [(before, 33, False)]
    assert timeout() == before


def test_dangerous_setting_is_refused_without_yes(qdp_command):
    line = "setting", "set", "dvs-production/panic-on-tx-hang", "on"
    _libqdp.SetPanicOnTxHang(0, 0)
    code, text = qdp_command.error(*line)
    assert (code, text) == (
        1,
        "qdp: dvs-production/panic-on-tx-hang: on stops the whole host when an uplink hangs on transmission; "
        "add --yes to do it, or --dry-run to see what would be done",
    )
    assert _libqdp.GetPanicOnTxHang(0) == 0
    assert qdp_command.rows(*line, "--yes")[0]["after"] is True
    assert _libqdp.GetPanicOnTxHang(0) == 1


@pytest.mark.parametrize(
    "line, error",
    [
        (["nosuch", "1"], "qdp: a host has no setting 'nosuch'; it has "),
        (["flow-timeout", "x"], "qdp: flow-timeout is 0 to 4294967295, not 'x'; "),
        (["nosuch/burst-size", "1"], "qdp: no switch nosuch; it has "),
    ],
)
def test_wrong_setting(qdp_command, line, error):
    code, text = qdp_command.error("setting", "set", *line)
    assert code == 2 and text.startswith(error)


@pytest.fixture
def desired(tmp_path):
    def desired(text):
        file = tmp_path / "desired.json"
        file.write_text(text if isinstance(text, str) else json.dumps(text))
        return file

    return desired


def test_plan_writes_nothing_and_apply_is_idempotent(qdp_command, desired):
    before = timeout()
    file = desired({"$schema": "x", "flow-timeout": 33, BURST: 77})
    changes = [("flow-timeout", before, 33), (BURST, qdp_command.rows("setting", "show", BURST)[0]["value"], 77)]

    def seen(rows):
        return [(row["path"], row["before"], row["after"]) for row in rows]

    assert seen(qdp_command.rows("setting", "plan", file)) == changes
    assert timeout() == before
    assert seen(qdp_command.rows("setting", "apply", file)) == changes
    assert qdp_command.rows("setting", "apply", file) == []
    assert qdp_command.rows("setting", "plan", file) == []
    assert timeout() == 33


def test_apply_rolls_back_when_one_fails(qdp_command, desired):
    before = timeout()
    qdp_command.host.fail("Qdp_Set_Offload_ICMP_Echo", status=7)
    wanted = not _libqdp.GetOffloadICMPEcho()
    code, out, err = qdp_command("setting", "apply", desired({"flow-timeout": 33, "offload-icmp-echo": wanted}), "-j")
    assert (code, out) == (2, "[]\n")
    assert json.loads(err)["error"]["method"] == "SetOffloadICMPEcho"
    assert timeout() == before


@pytest.mark.parametrize(
    "text, error",
    [
        ("[]", "not an object of paths and values; `qdp setting schema` prints its schema"),
        ('{"flow-timeout": 1, "flow-timeout": 2}', "a key stands there twice"),
        ("{", "Expecting property name enclosed in double quotes: line 1 column 2 (char 1)"),
    ],
)
def test_file_that_is_none(qdp_command, desired, text, error):
    file = desired(text)
    assert qdp_command.error("setting", "apply", file) == (1, "qdp: {}: {}".format(file, error))


def test_schema_accepts_what_the_settings_take_and_nothing_else(qdp_command):
    schema = schema_of()
    jsonschema.Draft7Validator.check_schema(schema)
    assert json.loads(qdp_command("setting", "schema")[1]) == schema
    assert len(schema["patternProperties"]) == len(SETTINGS)
    fits = jsonschema.Draft7Validator(schema).is_valid
    rows = [row for row in qdp_command.rows("setting", "show") if row["value"] is not None]
    assert len(rows) > 100
    for row in rows:
        if not row["path"].endswith("filter-vlan-mac"):  # may be off, and be turned on only
            assert fits({row["path"]: row["value"]}), row
        assert not fits({row["path"]: {}})
        assert not fits({row["path"] + "x": row["value"]})
    assert fits({"aging-interval:1": 5}) and not fits({"flow-timeout:1": 5})
    assert fits({"a/b/burst-size": 5, "a/uplink/nic0/tx-ring-size": 64})
    assert not fits({"a/uplink/nic0/tx-ring-size": 65})


# --- Trying, as processes of their own, of which every platform call is recorded ---


@pytest.fixture
def trial(process, root, build, tmp_path):
    """Starts a trial, and says which values were set."""
    capture = tmp_path / "calls"

    def start(*options, **streams):
        line, environment = process("setting", "try", "flow-timeout", "33", *options)
        environment["PYTHONPATH"] = str(root / "host" / "python")
        environment["QDP_HOST_LIBRARIES"] = str(build / "host")
        line = [line[0], "-m", "qdp_host", "run", "--capture", str(capture), *line[1:]]
        streams = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        return subprocess.Popen(line, env=environment, text=True, **streams)

    def values():
        text = capture.read_text()
        return [
            record["in"][0]
            for record in map(json.loads, text.splitlines())
            if record.get("operation") == "Qdp_Set_Flow_Timeout"
        ]

    start.values = values
    return start


def read_until(stream, text):
    """The lines up to one with a text."""
    lines = []
    while not (lines and text in lines[-1]):
        line = stream.readline()
        assert line, lines
        lines.append(line)
    return lines


def test_trial_goes_back_in_time(trial):
    done = trial("--for", "0.2s", "-j", stdin=subprocess.DEVNULL)
    out, err = done.communicate(timeout=60)
    assert done.returncode == 2
    assert json.loads(out)[0]["kept"] is False
    assert err.endswith("qdp: set back: not confirmed\n")
    assert trial.values() == [33, 10]


def test_trial_is_kept_when_confirmed(trial):
    child = trial("--for", "60s")
    read_until(child.stderr, "write `keep`")
    out, err = child.communicate("what\nkeep\n", timeout=60)
    assert (child.returncode, err) == (0, "qdp: write `keep` or `back`\nqdp: kept\n")
    assert trial.values() == [33]


def test_trial_goes_back_on_demand(trial):
    child = trial("--for", "60s")
    read_until(child.stderr, "write `keep`")
    _, err = child.communicate("back\n", timeout=60)
    assert (child.returncode, err) == (2, "qdp: set back: not confirmed\n")
    assert trial.values() == [33, 10]


@pytest.mark.parametrize(
    "number, code", [(signal.SIGTERM, 2), (signal.SIGHUP, 2), (signal.SIGINT, 130)], ids=lambda value: str(value)
)
def test_trial_goes_back_when_the_process_is_ended(trial, number, code):
    child = trial("--for", "60s")
    read_until(child.stderr, "write `keep`")
    child.send_signal(number)
    child.communicate(timeout=60)
    assert child.returncode == code
    assert trial.values() == [33, 10]


def test_trial_goes_back_when_the_terminal_is_closed(trial):
    master, slave = os.openpty()
    child = trial("--for", "60s", stdin=slave, stdout=slave, stderr=slave, start_new_session=True)
    os.close(slave)
    seen = b""
    while b"write `keep`" not in seen:
        seen += os.read(master, 1024)
    os.close(master)
    assert child.wait(timeout=60) == 2
    assert trial.values() == [33, 10]


def test_dry_run_of_a_trial_confirms_nothing(trial):
    child = trial("--dry-run", "-j")
    out, err = child.communicate("keep\n", timeout=60)
    assert (child.returncode, err) == (0, "")
    assert [(row["after"], row["done"]) for row in json.loads(out)] == [(33, False)]
    assert trial.values() == []


def test_what_cannot_be_read_cannot_be_tried(qdp_command):
    assert qdp_command.error("setting", "try", "dvs-production/flow-cache", "off") == (
        1,
        "qdp: dvs-production/flow-cache cannot be read, and so not gone back to; use `qdp setting set`",
    )
