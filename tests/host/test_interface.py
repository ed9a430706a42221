"""The Python interface of the embedded host: wrong arguments are refused in words, and change nothing."""

import ctypes
import json
import os

import pytest

import _libqdp
import qdp_host as package
from host.command import qdp_host
from qdp_host import HostError

# Qdp_Get_Port_List has one output; DVS_ClassName returns a text and has none.
LIST, TEXT = "Qdp_Get_Port_List", "DVS_ClassName"

FROM = "nth counts from 1, and times from 0, which is for ever; "


def status_of(host):
    """What the host answers to the operation that the tests script: 0, unless something is planned."""
    size = ctypes.c_uint32(65536)
    return host.libqdp.Qdp_Get_Port_List(0, ctypes.create_string_buffer(65536), ctypes.byref(size))


@pytest.mark.parametrize(
    "arguments, options, error, message",
    [
        ((LIST,), {"outputs": b"abc"}, TypeError, "outputs: give a list of bytes, one for each output, not b'abc'"),
        ((LIST,), {"outputs": [1]}, TypeError, "outputs[0]: give bytes, not 1"),
        ((LIST,), {"outputs": ["x"]}, TypeError, "outputs[0]: give bytes, not 'x'"),
        ((LIST,), {"outputs": [b"", b""]}, ValueError, "outputs: Qdp_Get_Port_List has 1, not 2"),
        ((LIST,), {"sizes": {9: 1}}, ValueError, "sizes: Qdp_Get_Port_List has 1 outputs, none of index 9"),
        (
            (LIST,),
            {"sizes": {0: -1}},
            ValueError,
            "sizes[0] is the size that an output reports: 0 to 4294967295, not -1",
        ),
        ((LIST,), {"sizes": [1]}, TypeError, "sizes: give a dict of an output's index and its size, not [1]"),
        ((LIST,), {"text": b"x"}, ValueError, "text: Qdp_Get_Port_List returns no text"),
        ((TEXT,), {"text": "hello"}, TypeError, "text: give bytes, not 'hello'"),
        ((LIST, -1), {}, ValueError, "status is what Qdp_Get_Port_List returns: 0 to 4294967295, not -1"),
        ((LIST, 1 << 32), {}, ValueError, "status is what Qdp_Get_Port_List returns: 0 to 4294967295, not 4294967296"),
        ((LIST, "7"), {}, TypeError, "status is what Qdp_Get_Port_List returns: give an int, not '7'"),
        ((None,), {}, TypeError, "operation: give a name as a str, not None"),
    ],
)
def test_script_checks_its_arguments_and_queues_nothing(host, arguments, options, error, message):
    with pytest.raises(error) as raised:
        host.script(*arguments, **options)
    assert str(raised.value) == message
    # An empty answer in the queue would return 0 without a list.
    size, buffer = ctypes.c_uint32(65536), ctypes.create_string_buffer(65536)
    assert host.libqdp.Qdp_Get_Port_List(0, buffer, ctypes.byref(size)) == 0
    assert size.value == 12 + 36 * 156


@pytest.mark.parametrize(
    "arguments, options, error, message",
    [
        ((LIST,), {"status": 0}, ValueError, "status is the status of a failure: 1 to 4294967295, not 0"),
        (
            (LIST,),
            {"status": 1 << 40},
            ValueError,
            "status is the status of a failure: 1 to 4294967295, not 1099511627776",
        ),
        ((LIST,), {"status": "x"}, TypeError, "status is the status of a failure: give an int, not 'x'"),
        ((None,), {}, TypeError, "operation: give a name as a str, not None"),
        ((LIST,), {"nth": 0}, ValueError, FROM + "not 0 and 1"),
        ((LIST,), {"nth": 1 << 32}, ValueError, FROM + "not 4294967296 and 1"),
        ((LIST,), {"times": -1}, ValueError, FROM + "not 1 and -1"),
        ((LIST,), {"times": 1.5}, TypeError, "times counts calls: give an int, not 1.5"),
    ],
)
def test_fail_checks_its_arguments_and_plans_nothing(host, arguments, options, error, message):
    with pytest.raises(error) as raised:
        host.fail(*arguments, **options)
    assert (str(raised.value), status_of(host)) == (message, 0)


def test_a_pointer_fails_with_null_whatever_the_status(host):
    host.fail(TEXT, 0)
    with host.recording() as calls:
        host.libqmtPublic.DVS_ClassName(None)
    assert [call.result for call in calls] == [None]
    with pytest.raises(ValueError, match="^status is the status of a failure: 0 to 4294967295, not -1$"):
        host.fail(TEXT, -1)


@pytest.mark.parametrize(
    "call, error, message",
    [
        (lambda host: host.restore(3), TypeError, "snapshot: give what EmbeddedHost.snapshot() returned, not 3"),
        (lambda host: host.advance("5"), TypeError, "seconds: give a number, not '5'"),
        (lambda host: host.delay(LIST, None), TypeError, "seconds: give a number, not None"),
        (
            lambda host: host.load(b"mux"),
            TypeError,
            "scenario: give a path as a str or a pathlib.Path, a name or a dict, not b'mux'",
        ),
        (lambda host: host.check(3), TypeError, "scenario: give a path as a str or a pathlib.Path or a name, not 3"),
        (
            lambda host: host.completed(None),
            TypeError,
            "scenario: give a path as a str or a pathlib.Path or a name, not None",
        ),
        (lambda host: host.replay(7), TypeError, "capture: give a path as a str or a pathlib.Path, not 7"),
        (
            lambda host: package.running("mux", "capture").__enter__(),
            ValueError,
            "scenario and replay exclude each other",
        ),
    ],
)
def test_wrong_arguments_are_refused_in_words(host, call, error, message):
    with pytest.raises(error) as raised:
        call(host)
    assert str(raised.value) == message


class TestRecording:
    def test_nested_blocks_each_see_their_calls(self, host):
        with host.recording() as outer:
            _libqdp.GetFlowTimeout()
            with host.recording() as inner:
                _libqdp.SetFlowTimeout(9)
            _libqdp.GetFlowTimeout()
        get, put = ("Qdp_Get_Flow_Timeout", []), ("Qdp_Set_Flow_Timeout", [9])
        assert [(call.operation, [a for a in call.arguments if isinstance(a, int)]) for call in outer] == [
            get,
            put,
            get,
        ]
        assert [(call.operation, call.arguments) for call in inner] == [put]

    def test_a_call_carries_its_status_and_its_answer(self, host):
        _libqdp.SetFlowTimeout(258)
        host.fail("Qdp_Get_Flow_Timeout", 7, nth=2)
        with host.recording() as calls:
            word = ctypes.c_uint32()
            host.libqdp.Qdp_Get_Flow_Timeout(ctypes.byref(word))
            host.libqdp.Qdp_Get_Flow_Timeout(ctypes.byref(word))
        assert [(call.result, call.outputs) for call in calls] == [(0, [b"\2\1\0\0"]), (7, [None])]

    def test_a_text_is_the_result(self, host):
        host.script(TEXT, text=b"vswitch\0")
        with host.recording() as calls:
            host.libqmtPublic.DVS_ClassName(None)
            host.fail(TEXT)
            host.libqmtPublic.DVS_ClassName(None)
        assert [(call.result, call.outputs) for call in calls] == [(b"vswitch", []), (None, [])]

    def test_a_text_without_its_nul_ends_with_its_bytes(self, host):
        host.script(TEXT, text=b"i" * 72)
        with host.recording() as calls:
            host.libqmtPublic.DVS_ClassName(None)
        assert [call.result for call in calls] == [b"i" * 72]

    @pytest.mark.parametrize(
        "script, word, recorded",
        [
            ({"outputs": [b"value"]}, 5, b"value"),
            ({"outputs": [b"value"], "sizes": {0: 2}}, 2, b"va"),
            ({"outputs": [b"value"], "sizes": {0: 0xFFFFFFFF}}, 0xFFFFFFFF, b"value"),
            ({"outputs": [b""]}, 0, b""),
            ({"sizes": {0: 9}}, 9, None),
            ({}, 3, None),
        ],
    )
    def test_a_value_is_recorded_as_far_as_there_are_bytes(self, host, script, word, recorded):
        host.script("DVSData_Data", **script)
        # The caller's words before the call: an address that nothing lies at, and 3.
        value, length = ctypes.c_void_p(8), ctypes.c_uint32(3)
        with host.recording() as calls:
            host.libqmtPublic.DVSData_Data(None, ctypes.byref(value), ctypes.byref(length))
        assert (length.value, value.value == 8) == (word, recorded is None)
        assert [call.outputs for call in calls] == [[recorded]]


class TestScenarioAsDict:
    def test_load(self, host):
        host.load({"switches": [{"alias": "lab", "ports": [{}, {}]}]})
        assert [switch["alias"] for switch in host.scenario()["switches"]] == ["lab"]

    def test_what_is_wrong_names_the_place(self, host):
        with pytest.raises(HostError, match="^scenario: /switches: expected a list, found 3$"):
            host.load({"switches": 3})

    def test_what_is_wrong_is_said_as_long_as_nothing_answers(self, host):
        with pytest.raises(HostError):
            host.load({"switches": [{"alias": "lab", "mtu": "large"}]})
        wrong = 'scenario: /switches/0/mtu: expected a whole number from 0 to 4294967295, found "large"'
        with pytest.raises(HostError) as raised:
            host.summary()
        assert str(raised.value) == wrong and status_of(host) != 0

    def test_what_json_cannot_say(self, host):
        with pytest.raises(HostError, match="^scenario: Object of type set is not JSON serializable$"):
            host.load({"switches": {1}})
        assert status_of(host) == 0


class TestDuringReplay:
    @pytest.fixture
    def replaying(self, host, tmp_path):
        (tmp_path / "capture").write_text('{"capture": 1}\n')
        self.snapshot = host.snapshot()
        host.replay(tmp_path / "capture")
        return host

    @pytest.mark.parametrize("name", ["snapshot", "restore", "summary", "scenario"])
    def test_there_is_no_state(self, replaying, name):
        arguments = [self.snapshot] if name == "restore" else []
        with pytest.raises(HostError) as raised:
            getattr(replaying, name)(*arguments)
        assert str(raised.value) == "a capture answers, not a state; replay(None) goes back to the state"

    def test_the_state_is_there_again_afterwards(self, replaying):
        replaying.replay(None)
        replaying.restore(self.snapshot)
        assert status_of(replaying) == 0


class TestCaptureFiles:
    SCRIPT = "import _libqdp; _libqdp.GetFlowTimeout()"

    @pytest.fixture
    def script(self, tmp_path):
        (tmp_path / "script.py").write_text(self.SCRIPT)
        return tmp_path / "script.py"

    def test_an_older_capture_is_kept(self, build, tmp_path, script):
        capture = tmp_path / "capture"
        assert qdp_host(build, "run", "--capture", capture, script)[0] == 0
        first = capture.read_bytes()
        message = f"qdp-host: {capture} is there already; give --overwrite, or another name\n"
        assert qdp_host(build, "run", "--capture", capture, script) == (2, "", message)
        assert capture.read_bytes() == first

    def test_overwrite_replaces_it(self, build, tmp_path, script):
        capture = tmp_path / "capture"
        capture.write_text("older\n")
        assert qdp_host(build, "run", "--capture", capture, "--overwrite", script)[0] == 0
        assert json.loads(capture.read_text().splitlines()[0]) == {"capture": 1}

    @pytest.mark.parametrize(
        "make, reason",
        [
            (lambda path: path.mkdir(), ": not a capture: a directory"),
            (lambda path: path.write_text('{"switches": []}\n'), ": line 1: not a capture"),
            (lambda path: path.write_text('{\n  "switches": []\n}\n'), ": line 1: not a capture"),
            (lambda path: path.write_bytes(bytes(range(256)) * 40), ": line 1: not a capture"),
            (lambda path: path.write_bytes(b"\x7fELF" + bytes(5000)), ": line 1: not a capture"),
        ],
    )
    def test_what_is_no_capture(self, build, tmp_path, script, make, reason):
        path = tmp_path / "other"
        make(path)
        assert qdp_host(build, "run", "--replay", path, script) == (2, "", f"qdp-host: {path}{reason}\n")

    def test_a_pipe_is_refused_without_waiting(self, build, tmp_path, script):
        os.mkfifo(str(tmp_path / "pipe"))
        path = tmp_path / "pipe"
        message = f"qdp-host: {path}: not a capture: not a regular file\n"
        assert qdp_host(build, "run", "--replay", path, script) == (2, "", message)

    def test_a_truncated_line_is_reported_once(self, build, tmp_path, script):
        capture = tmp_path / "capture"
        assert qdp_host(build, "run", "--capture", capture, script)[0] == 0
        capture.write_bytes(capture.read_bytes() + b'{"operation"')
        number = len(capture.read_text().splitlines())
        message = f"qdp-host: {capture}: line {number} is cut off, and left out\n"
        assert qdp_host(build, "run", "--replay", capture, script) == (0, "", message)
