"""Capture and replay: what a run records, and that a replay of it is the run again."""

import ctypes
import json
import os
import subprocess
import sys

import pytest

from host.command import qdp_host, started
from observe import standard_error
from qdp_host import HostError

EXAMPLES = ["inventory.py", "top_flows.py", "balancer_load.py", "follow_flow.py"]
HEADER = {"capture": 1}


def lines_of(capture):
    return [json.loads(line) for line in capture.read_text().splitlines()]


def replayable(path, *calls):
    path.write_text("".join(json.dumps(line) + "\n" for line in [HEADER, *calls]))
    return path


class TestRuns:
    @pytest.fixture(scope="class")
    def sweep(self, build, root, tmp_path_factory):
        """The capture of a sweep over all methods, and what it printed."""
        capture = tmp_path_factory.mktemp("sweep") / "capture"
        done = qdp_host(build, "run", "--capture", capture, root / "tests" / "host" / "sweep.py")
        assert done[0] == 0
        return capture, done

    def test_every_method_replayed(self, build, root, sweep):
        capture, done = sweep
        assert done[1].count("\n") == 8 and done[2].count("\n") > 147
        assert qdp_host(build, "run", "--replay", capture, root / "tests" / "host" / "sweep.py") == done

    def test_every_operation_is_recorded(self, host, sweep):
        header, *calls = lines_of(sweep[0])
        assert header == HEADER
        assert sorted({call["operation"] for call in calls}) == sorted(host.operations())

    def test_every_operation_succeeds_at_some_call(self, host, sweep):
        """Not only has each operation an answer: with arguments that make sense, the answer is that all is well."""
        returning_nothing = {"DVSState_SwitchForEach", "DVSState_GlobalPropForEach", "DVSHCK_DataFree"}
        succeeded = {
            call["operation"]
            for call in lines_of(sweep[0])[1:]
            if call["result"] == 0 or isinstance(call["result"], (str, dict))
        }
        assert sorted(succeeded | returning_nothing) == sorted(host.operations())

    def test_a_frozen_host_is_recorded_the_same_twice(self, build, root, sweep, tmp_path):
        again = tmp_path / "again"
        assert qdp_host(build, "run", "--capture", again, root / "tests" / "host" / "sweep.py") == sweep[1]
        assert again.read_bytes() == sweep[0].read_bytes()

    def test_recording_changes_nothing(self, build, root, sweep):
        assert qdp_host(build, "run", root / "tests" / "host" / "sweep.py") == sweep[1]

    def test_a_replay_can_be_recorded(self, build, root, sweep, tmp_path):
        again = tmp_path / "again"
        script = root / "tests" / "host" / "sweep.py"
        assert qdp_host(build, "run", "--replay", sweep[0], "--capture", again, script) == sweep[1]
        assert again.read_bytes() == sweep[0].read_bytes()

    @pytest.mark.parametrize("example", EXAMPLES)
    def test_examples_replayed(self, build, root, tmp_path, example):
        capture, script = tmp_path / "capture", root / "examples" / example
        code, printed, error = qdp_host(build, "run", "--capture", capture, script)
        assert (code, error) == (0, "") and printed
        assert qdp_host(build, "run", "--replay", capture, script) == (0, printed, "")


# A process on the embedded host that plays what a real library would do, and calls through the recorder.
CALLER = """
import ctypes, sys
from qdp_host import EmbeddedHost
host = EmbeddedHost()
platform = ctypes.CDLL(None)    # the recorder, which was loaded in front
word = lambda value: ctypes.byref(ctypes.c_uint32(value))
platform.DVS_ClassName.restype = ctypes.c_void_p
platform.DVS_ClassName.argtypes = platform.DVSHCK_DataFree.argtypes = [ctypes.c_void_p]
buffer = ctypes.create_string_buffer(b"#" * 8, 8)
"""


class TestRecorder:
    @pytest.fixture
    def recorded(self, build, tmp_path):
        """What is recorded of the calls of a piece of code: lines without the first, and what was printed."""

        def recorded(code):
            (tmp_path / "caller.py").write_text(CALLER + code)
            done = qdp_host(build, "run", "--capture", tmp_path / "capture", tmp_path / "caller.py")
            assert (done[0], done[2]) == (0, "")
            header, *calls = lines_of(tmp_path / "capture")
            assert header == HEADER
            return calls, done[1]

        return recorded

    def of(self, recorded, answer, call):
        """The one call that a scripted answer is for, as it is recorded."""
        (line,), _ = recorded(f"host.script({answer})\nplatform.{call}\n")
        return line

    def test_a_sized_answer(self, recorded):
        assert self.of(
            recorded, '"Qdp_Get_Port_List", outputs=[b"ab\\0c"]', "Qdp_Get_Port_List(3, buffer, word(8))"
        ) == {
            "operation": "Qdp_Get_Port_List",
            "in": [3],
            "out": [{"bytes": "61620063", "size": 4}],
            "result": 0,
        }

    @pytest.mark.parametrize(
        "size, expected",
        [
            (3, {"bytes": "6162", "zeros": 1, "size": 3}),
            (2, {"bytes": "6162", "size": 2}),
            (8, {"bytes": "61620000" + "23" * 4, "size": 8}),
            # A library that claims more than it was given room for.
            (100, {"bytes": "61620000" + "23" * 4, "size": 100}),
        ],
    )
    def test_as_much_as_the_size_word_says(self, recorded, size, expected):
        answer = f'"Qdp_Get_Port_List", outputs=[b"ab\\0\\0"], sizes={{0: {size}}}'
        assert self.of(recorded, answer, "Qdp_Get_Port_List(3, buffer, word(8))")["out"] == [expected]

    def test_a_fixed_record_is_recorded_whole(self, recorded):
        line = self.of(recorded, '"Qdp_Get_Flow_Timeout", outputs=[b"\\1"]', "Qdp_Get_Flow_Timeout(buffer)")
        assert line["out"] == [{"bytes": "01232323"}]

    @pytest.mark.parametrize("size, expected", [("None", None), ("{0: 64}", {"size": 64})])
    def test_a_failure_has_no_bytes(self, recorded, size, expected):
        line = self.of(
            recorded, f'"Qdp_Get_Port_List", 7, sizes={size}', "Qdp_Get_Port_List(3, buffer, word(8))"
        )
        assert (line["out"], line["result"]) == ([expected], 7)

    def test_what_goes_in(self, recorded):
        calls, _ = recorded("""
platform.Qdp_SetLBParam(b"a portset", 5, ctypes.c_uint64(1 << 63))
platform.Qdp_SetLBParam(None, 5, ctypes.c_uint64(0))
platform.Qdp_SetLBParam(b"\\xff", 5, ctypes.c_uint64(0))
platform.Qdp_MAC_Entry_Ops(0, 3, b"\\2\\x40\\0\\1\\2\\3\\4", 7, 1)
platform.Qdp_Get_Flow_Stats(0, (ctypes.c_uint32 * 2)(1, 2), 2, 9, buffer, word(8))
platform.Qdp_DumpLBDebugBuf(0, -1, buffer, word(8))
""")
        assert [call["in"] for call in calls] == [
            ["a portset", 5, 1 << 63],
            [None, 5, 0],
            [{"bytes": "ff"}, 5, 0],
            [0, 3, {"bytes": "024000010203"}, 7, 1],
            [0, {"bytes": "0100000002000000"}, 9],
            [0, (1 << 64) - 1],
        ]

    def test_texts_and_handles(self, recorded):
        calls, printed = recorded("""
host.script("DVS_ClassName", text=b"vswitch\\0")
print(ctypes.string_at(platform.DVS_ClassName(0x1234)))
host.fail("DVS_ClassName", times=0)
print(platform.DVS_ClassName(0x5678), platform.DVS_ClassName(0x1234), platform.DVS_ClassName(None))
""")
        assert printed == "b'vswitch'\nNone None None\n"
        assert [(call["in"], call["result"]) for call in calls] == [
            ([{"handle": 1}], "vswitch"),
            ([{"handle": 2}], None),
            ([{"handle": 1}], None),
            ([{"handle": 0}], None),
        ]

    @pytest.mark.parametrize(
        "script, length, expected",
        [
            ("outputs=[b'ab\\0\\0']", 0, {"bytes": "61620000", "size": 4}),
            # A library that tells no length.
            ("outputs=[b'text\\0rest'], sizes={0: 0xFFFFFFFF}", 0, {"bytes": "7465787400"}),
            ("outputs=[]", 0, None),
            ("outputs=[], status=3", 0, None),
            # A status that nobody looks at.
            ("outputs=[b'ab'], status=3", 0, {"bytes": "6162", "size": 2}),
        ],
    )
    def test_values(self, recorded, script, length, expected):
        calls, _ = recorded(f"""
value = ctypes.c_void_p()
host.script("DVSData_Data", {script})
platform.DVSData_Data(ctypes.c_void_p(0x1234), ctypes.byref(value), word({length}))
""")
        assert calls[0]["out"] == [expected]

    def test_a_walk(self, recorded):
        calls, printed = recorded("""
import _libqdp
ctypes.PyDLL(_libqdp.__file__).LibraryInit()
seen = []
@ctypes.CFUNCTYPE(ctypes.c_uint32, ctypes.c_void_p, ctypes.c_void_p)
def step(handle, context):
    seen.append((handle, context))
    print(platform.DVS_ClassName(handle) is not None)
    return len(seen) == 2
platform.DVSState_SwitchForEach(step, ctypes.c_void_p(77))
print([context for handle, context in seen], len({handle for handle, context in seen}))
""")
        assert printed == "True\nTrue\n[77, 77] 2\n"
        assert calls[3:] == [
            {"operation": "DVS_ClassName", "in": [{"handle": 1}], "out": [], "result": "vswitch"},
            {"operation": "DVS_ClassName", "in": [{"handle": 2}], "out": [], "result": "vswitch"},
            {"operation": "DVSState_SwitchForEach", "in": [], "out": [], "result": None, "steps": [1, 2]},
        ]

    def test_what_is_the_callers_own_is_not_recorded(self, recorded):
        calls, _ = recorded("platform.DVSHCK_DataFree(None)\n")
        assert calls == [{"operation": "DVSHCK_DataFree", "in": [], "out": [], "result": None}]

    def test_a_forked_child_leaves_the_file_to_its_parent(self, recorded):
        calls, _ = recorded("""
import os
platform.Qdp_Set_Flow_Timeout(1)
child = os.fork()
if child == 0:
    os._exit(platform.Qdp_Set_Flow_Timeout(2))
assert os.waitpid(child, 0)[1] == 0
platform.Qdp_Set_Flow_Timeout(3)
""")
        assert [call["in"] for call in calls] == [[1], [3]]

    def run(self, build, tmp_path, code, capture):
        shim = str(build / "host" / "libqdpcapture.so")
        preload = " ".join(filter(None, [os.environ.get("LD_PRELOAD"), shim]))
        done = started(
            [sys.executable, "-c", CALLER + code],
            build,
            variables={"LD_PRELOAD": preload, "QDP_HOST_CAPTURE": str(capture)},
        )
        return done.returncode, done.stdout, done.stderr

    def test_a_file_that_is_not_empty_is_left_alone(self, build, tmp_path):
        capture = tmp_path / "capture"
        capture.write_text("precious\n")
        code = "print([platform.Qdp_Set_Flow_Timeout(1) for _ in range(3)])"
        message = f"qdp-host: {capture}: the file is not empty; calls are not recorded\n"
        assert self.run(build, tmp_path, code, capture) == (0, "[0, 0, 0]\n", message)
        assert capture.read_text() == "precious\n"

    def test_a_file_that_cannot_be_made(self, build, tmp_path):
        capture = tmp_path / "nowhere" / "capture"
        code = "print([platform.Qdp_Set_Flow_Timeout(1) for _ in range(3)])"
        message = f"qdp-host: {capture}: No such file or directory; calls are not recorded\n"
        assert self.run(build, tmp_path, code, capture) == (0, "[0, 0, 0]\n", message)

    def test_a_device_that_is_full(self, build, tmp_path):
        message = "qdp-host: /dev/full: No space left on device; calls are not recorded\n"
        code = "print([platform.Qdp_Set_Flow_Timeout(1) for _ in range(3)])"
        assert self.run(build, tmp_path, code, "/dev/full") == (0, "[0, 0, 0]\n", message)

    def test_another_process_on_the_same_file(self, build, tmp_path):
        capture = tmp_path / "capture"
        code = """
import os, subprocess
platform.Qdp_Set_Flow_Timeout(1)
if len(sys.argv) == 1:
    sys.exit(subprocess.call([sys.executable, "-c", open("/proc/self/cmdline").read().split(chr(0))[2], "child"]))
"""
        message = f"qdp-host: {capture}: another process records into this file; calls are not recorded\n"
        assert self.run(build, tmp_path, code, capture) == (0, "", message)
        assert [call["in"] for call in lines_of(capture)[1:]] == [[1]]

    def test_a_library_that_lacks_an_operation(self, build, tmp_path):
        other = tmp_path / "libqdp.so"
        subprocess.run(["gcc", "-shared", "-x", "c", "/dev/null", "-Wl,-soname,libqdp.so", "-o", other], check=True)
        code = f"""
import ctypes
ctypes.CDLL("{other}")
shim = ctypes.CDLL("{build / "host" / "libqdpcapture.so"}")
print([hex(shim.Qdp_Init_Mbuf_Fastslabs() & 0xFFFFFFFF) for _ in range(2)])
"""
        done = started([sys.executable, "-c", code], build)
        assert (done.returncode, done.stdout) == (0, "['0xbad0001', '0xbad0001']\n")
        assert done.stderr == f"qdp-host: {other}: undefined symbol: Qdp_Init_Mbuf_Fastslabs\n"


class TestReplay:
    """In this process; what is replayed is written by hand."""

    @pytest.fixture
    def replay(self, host, tmp_path):
        def replay(*calls):
            host.replay(replayable(tmp_path / "capture", *calls))
            return host.libqdp

        yield replay

    def call(self, operation, inputs=(), outputs=(), result=0, **more):
        return {"operation": operation, "in": list(inputs), "out": list(outputs), "result": result, **more}

    def port_list(self, library, switch=0, capacity=8):
        """The status, the buffer of 8 bytes, and the size word."""
        buffer, size = ctypes.create_string_buffer(b"#" * 8, 8), ctypes.c_uint32(capacity)
        return library.Qdp_Get_Port_List(switch, buffer, ctypes.byref(size)), buffer.raw, size.value

    @pytest.mark.parametrize(
        "output, expected",
        [
            ({"bytes": "616263", "size": 3}, (b"abc#####", 3)),
            ({"bytes": "6162", "zeros": 3, "size": 5}, (b"ab\0\0\0###", 5)),
            ({"bytes": "61"}, (b"a#######", 8)),
            ({"bytes": "61", "size": 100}, (b"a#######", 100)),
            ({"bytes": "", "zeros": 0xFFFFFFFF, "size": 8}, (bytes(8), 8)),
            ({"size": 9}, (b"########", 9)),
            (None, (b"########", 8)),
        ],
    )
    def test_an_answer(self, replay, output, expected):
        library = replay(self.call("Qdp_Get_Port_List", [0], [output]))
        assert self.port_list(library) == (0, *expected)

    @pytest.mark.parametrize("capacity", range(8))
    def test_nothing_is_written_beyond_a_smaller_capacity(self, replay, capacity):
        library = replay(self.call("Qdp_Get_Port_List", [0], [{"bytes": "6162636465", "zeros": 3, "size": 8}]))
        content = b"abcde\0\0\0"[:capacity]
        assert self.port_list(library, capacity=capacity) == (0, content + b"#" * (8 - capacity), 8)

    def test_without_a_buffer(self, replay):
        library = replay(self.call("Qdp_Get_Port_List", [0], [{"bytes": "61", "zeros": 3, "size": 4}]))
        assert library.Qdp_Get_Port_List(0, None, None) == 0

    def test_equal_calls_come_in_order_and_the_last_stays(self, host, replay):
        library = replay(
            self.call("Qdp_Set_Flow_Timeout", [1], result=5),
            self.call("Qdp_Set_Flow_Timeout", [2], result=9),
            self.call("Qdp_Set_Flow_Timeout", [1], result=6),
        )
        assert [library.Qdp_Set_Flow_Timeout(value) for value in (1, 2, 1, 1, 2)] == [5, 9, 6, 6, 9]

    def test_a_call_that_was_never_recorded(self, host, replay, tmp_path):
        library = replay(self.call("Qdp_Get_Port_List", [0], [{"bytes": "61", "size": 1}]))
        with standard_error() as error:
            outcomes = [self.port_list(library, switch=1) for _ in range(3)]
            found = host.libqmtPublic.DVSState_SwitchFindByAlias(b"an alias")
        assert [status & 0xFFFFFFFF for status, *_ in outcomes] == [0xBAD0001] * 3 and found == 0
        assert {(buffer, size) for _, buffer, size in outcomes} == {(b"#" * 8, 8)}
        assert error.text == (
            f"qdp-host: {tmp_path / 'capture'}: not recorded: Qdp_Get_Port_List[1]\n"
            f"qdp-host: {tmp_path / 'capture'}: not recorded: DVSState_SwitchFindByAlias[\"an alias\"]\n"
        )

    def test_through_the_module(self, qdp, replay):
        replay(
            self.call("Qdp_Get_Flow_Timeout", outputs=[{"bytes": "2c01", "zeros": 2}]),
            self.call("Qdp_Get_Flow_Timeout", outputs=[None], result=1),
        )
        assert qdp.result("GetFlowTimeout") == 300
        assert qdp.module.GetFlowTimeout() is None

    def test_names_of_switches(self, exported, replay):
        """Handles, texts that are shorter than their readers expect, and values without a length."""
        replay(
            self.call("DVSState_SwitchFindByAlias", ["an alias"], result={"handle": 1}),
            self.call("DVS_SwitchId", [{"handle": 1}], result="an id"),
            self.call("DVS_ClassName", [{"handle": 1}], result="vswitch"),
            self.call("DVSState_HostPropLookup", ["an id", "com.tarnix.common.host.portset"], [{"handle": 2}]),
            self.call("DVSData_Data", [{"handle": 2}], [{"bytes": "6e616d6500"}]),
        )
        name = ctypes.create_string_buffer(b"#" * 128, 128)
        assert exported.DVSAliasToPortsetName(b"an alias", name) == 0 and name.raw == b"name" + bytes(124)
        identity = ctypes.create_string_buffer(b"#" * 64, 64)
        assert exported.DVSAliasToSwitchId(b"an alias", identity) == 0 and identity.raw == b"an id" + bytes(59)

    @pytest.mark.parametrize("answers, expected", [((0, 0, 0), [1, 2, 3]), ((0, 1, 0), [1, 2])])
    def test_a_walk(self, host, replay, answers, expected):
        replay(self.call("DVSState_SwitchForEach", result=None, steps=[1, 2, 3]))
        seen = []

        @ctypes.CFUNCTYPE(ctypes.c_uint32, ctypes.c_void_p, ctypes.c_void_p)
        def step(handle, context):
            seen.append((handle, context))
            return answers[len(seen) - 1]

        host.libqmtPublic.DVSState_SwitchForEach(step, ctypes.c_void_p(77))
        assert seen == [(handle, 77) for handle in expected]

    def test_values_are_released_as_ever(self, host, replay):
        """The fixture `host` sees that none is left over."""
        replay(self.call("DVSHCK_HostPropGet", ["an id", "key"], [{"bytes": "6162", "size": 2}]))
        value, length, library = ctypes.c_void_p(), ctypes.c_uint32(), host.libqmtPublic
        for _ in range(2):
            assert library.DVSHCK_HostPropGet(b"an id", b"key", ctypes.byref(value), ctypes.byref(length)) == 0
            assert (ctypes.string_at(value, 2), length.value, host.unreleased_values()) == (b"ab", 2, 1)
            library.DVSHCK_DataFree(value)

    def test_failures_and_scripted_answers_go_first(self, host, replay):
        library = replay(self.call("Qdp_Set_Flow_Timeout", [1], result=5))
        host.script("Qdp_Set_Flow_Timeout", 6)
        host.fail("Qdp_Set_Flow_Timeout", 7)
        assert [library.Qdp_Set_Flow_Timeout(1) for _ in range(3)] == [7, 6, 5]

    def test_back_to_the_state(self, host, replay):
        library = replay(self.call("Qdp_Set_Flow_Timeout", [1], result=5))
        host.replay(None)
        assert library.Qdp_Set_Flow_Timeout(1) == 0


class TestBrokenCaptures:
    CASES = [
        ("", "line 1: not a capture: the file is empty"),
        ('{"capture": 2}\n', "line 1: a capture of a version that is not known here"),
        ('{"version": 1}\n', "line 1: "),
        ("nonsense\n", "line 1: "),
        ('{"capture": 1}\nnonsense\n', "line 2: "),
        ('{"capture": 1}\n{}\n', "line 2: "),
        ('{"capture": 1}\n[]\n', "line 2: "),
    ]
    CALLS = [
        ({"operation": "Qdp_Nothing"}, 'the platform has no operation "Qdp_Nothing"'),
        ({"operation": 7}, ""),
        ({"out": [{"bytes": "6"}]}, '"bytes" are not hexadecimal digits'),
        ({"out": [{"bytes": "6g"}]}, '"bytes" are not hexadecimal digits'),
        ({"out": [{"bytes": 6}]}, ""),
        ({"out": [{"size": -1}]}, "expected a number up to 4294967295, not -1"),
        ({"out": [{"size": 1 << 32}]}, "expected a number up to 4294967295, not 4294967296"),
        ({"out": [{"handle": "one"}]}, 'expected a number up to 18446744073709551615, not "one"'),
        ({"result": 1.5}, "expected a number up to 4294967295, not 1.5"),
        (
            {"operation": "DVSState_SwitchFindByAlias", "in": ["a"], "result": {"handle": None}},
            "expected a number up to 18446744073709551615, not null",
        ),
        (
            {"operation": "DVSState_SwitchForEach", "in": [], "result": None, "steps": ["one"]},
            'expected a number up to 18446744073709551615, not "one"',
        ),
    ]

    def refuses(self, host, path, message):
        with pytest.raises(HostError) as raised:
            host.replay(path)
        assert str(raised.value).startswith(f"{path}: {message}")

    @pytest.mark.parametrize("text, message", CASES)
    def test_lines(self, host, tmp_path, text, message):
        (tmp_path / "capture").write_text(text)
        self.refuses(host, tmp_path / "capture", message)

    @pytest.mark.parametrize("change, message", CALLS)
    def test_calls(self, host, tmp_path, change, message):
        call = {"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": 0}
        replayable(tmp_path / "capture", call, {**call, **change})
        self.refuses(host, tmp_path / "capture", f"line 3: {message}")

    FIT = [
        (
            {"operation": "DVS_ClassName", "in": [{"handle": 1}], "out": [], "result": 2},
            'expected an object with "bytes"',
        ),
        (
            {"operation": "DVS_SwitchId", "in": [{"handle": 1}], "out": [], "result": 2},
            'expected an object with "bytes"',
        ),
        (
            {"operation": "DVSData_Name", "in": [{"handle": 1}], "out": [], "result": {"handle": 2}},
            "expected an object with",
        ),
        (
            {"operation": "DVSData_Data", "in": [{"handle": 1}], "out": [{"bytes": "6162", "size": 3}], "result": 0},
            '"size" 3 beyond 2 bytes',
        ),
        (
            {"operation": "DVSData_Data", "in": [{"handle": 1}], "out": [{"size": 3}], "result": 0},
            '"size" 3 beyond 0 bytes',
        ),
        (
            {"operation": "DVSData_Data", "in": [{"handle": 1}], "out": [{"bytes": "6162"}], "result": 0},
            'a value without "size" and without a NUL at its end',
        ),
        (
            {"operation": "DVSData_Data", "in": [{"handle": 1}], "out": [], "result": 0},
            'expected "out" with 1 entries, not 0',
        ),
        (
            {"operation": "DVSData_Data", "in": ["1"], "out": [None], "result": 0},
            'expected an object with "handle"',
        ),
        (
            {"operation": "Qdp_Get_Flow_Timeout", "in": [], "out": [{"handle": 1}], "result": 0},
            'a "handle" in an output that receives none',
        ),
        (
            {"operation": "Qdp_Get_Flow_Timeout", "in": [], "out": [{"bytes": "01", "size": 1}], "result": 0},
            'a "size" in an output that has none',
        ),
        (
            {"operation": "Qdp_Get_Flow_Timeout", "in": [], "out": [{"zeros": 4}], "result": 0},
            '"zeros" without "bytes" before them',
        ),
        (
            {"operation": "Qdp_Get_Flow_Timeout", "in": [], "out": [{"bite": "01"}], "result": 0},
            'unknown key "bite"',
        ),
        (
            {"operation": "Qdp_Set_Flow_Timeout", "in": [1, 2], "out": [], "result": 0},
            'expected "in" with 1 entries, not 2',
        ),
        (
            {"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": "text"},
            'expected a number up to 4294967295, not "text"',
        ),
        (
            {"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": 0, "steps": [1]},
            '"steps" of an operation that walks over nothing',
        ),
        (
            {"operation": "DVSHCK_DataFree", "in": [], "out": [], "result": 0},
            'expected "result" to be null, not 0',
        ),
    ]

    @pytest.mark.parametrize("call, message", FIT)
    def test_a_call_that_does_not_fit_its_operation(self, host, tmp_path, call, message):
        replayable(tmp_path / "capture", call)
        self.refuses(host, tmp_path / "capture", f"line 2: {message}")

    def test_a_deeply_nested_line(self, host, tmp_path):
        call = (
            '{"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": ' + "[" * 100000 + "]" * 100000 + "}"
        )
        (tmp_path / "capture").write_text(json.dumps(HEADER) + "\n" + call + "\n")
        expected = "line 2: /result/0/0/0/0/0/0/0: expected at most 64 levels of objects and lists, found one more"
        self.refuses(host, tmp_path / "capture", expected)

    @pytest.mark.parametrize("key", ["operation", "in", "out", "result"])
    def test_a_key_that_is_missing(self, host, tmp_path, key):
        call = {"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": 0}
        del call[key]
        replayable(tmp_path / "capture", call)
        self.refuses(host, tmp_path / "capture", "line 2: ")

    def test_no_file(self, host, tmp_path):
        self.refuses(host, tmp_path / "nothing", "No such file or directory")

    def test_after_a_broken_one_nothing_answers(self, host, tmp_path):
        self.refuses(host, tmp_path / "nothing", "")
        with standard_error() as error:
            assert [host.libqdp.Qdp_Set_Flow_Timeout(1) & 0xFFFFFFFF for _ in range(2)] == [0xBAD0001] * 2
        assert error.text in ("", f"qdp-host: {tmp_path / 'nothing'}: No such file or directory\n")  # once a process
        host.reset()
        assert host.libqdp.Qdp_Set_Flow_Timeout(1) == 0

    @pytest.mark.parametrize("cut", range(1, 30))
    def test_a_last_line_that_is_cut_off_is_left_out(self, host, tmp_path, cut):
        calls = [
            {"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": status} for status in (5, 6)
        ]
        capture = replayable(tmp_path / "capture", *calls)
        capture.write_text(capture.read_text()[: -cut - 1])
        with standard_error() as error:
            host.replay(capture)
        assert [host.libqdp.Qdp_Set_Flow_Timeout(1) for _ in range(2)] == [5, 5]
        assert error.text == f"qdp-host: {capture}: line 3 is cut off, and left out\n"

    def test_a_last_line_that_lacks_its_end_alone_counts(self, host, tmp_path):
        call = {"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": 5}
        capture = replayable(tmp_path / "capture", call)
        capture.write_text(capture.read_text()[:-1])
        with standard_error() as error:
            host.replay(capture)
        assert (host.libqdp.Qdp_Set_Flow_Timeout(1), error.text) == (5, "")

    def test_from_the_environment(self, build, tmp_path):
        """Every operation fails, and one message says why."""
        code = """
from qdp_host import EmbeddedHost
host = EmbeddedHost()
print([hex(host.libqdp.Qdp_Set_Flow_Timeout(1) & 0xFFFFFFFF) for _ in range(3)])
print(host.libqmtPublic.DVSState_SwitchFindByAlias(b"dvs-production"))
host.replay(None)
print(host.libqdp.Qdp_Set_Flow_Timeout(1))
"""
        variables = {"QDP_HOST_REPLAY": str(tmp_path / "nothing")}
        done = started([sys.executable, "-c", code], build, variables=variables)
        assert done.stdout == "['0xbad0001', '0xbad0001', '0xbad0001']\n0\n0\n"
        assert done.stderr == f"qdp-host: {tmp_path / 'nothing'}: No such file or directory\n"
