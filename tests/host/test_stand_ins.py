"""The embedded host itself: it answers all that the platform headers declare, and keeps within the caller's buffers."""

import ctypes
import re
import subprocess

import pytest

DECLARATION = re.compile(r"^[\w* ]+?\b((?:Qdp_|DVS)\w+)\(", re.MULTILINE)


def declared(root):
    headers = "".join(path.read_text() for path in (root / "src" / "platform").glob("*.h"))
    return sorted(set(DECLARATION.findall(headers)))


def test_every_declared_operation_is_answered_from_state(root, host):
    assert declared(root)
    assert [name for name in declared(root) if name not in host.operations()] == []


def test_every_answered_operation_is_declared(root, host):
    assert [name for name in host.operations() if name not in declared(root)] == []


def test_the_stand_ins_show_the_declared_operations_and_nothing_else(root, build):
    shown = set()
    for library in ("libqdp.so", "libqmtPublic.so"):
        listed = subprocess.run(
            ["nm", "-D", "--defined-only", str(build / "host" / library)], capture_output=True, text=True, check=True
        ).stdout
        shown |= {line.split()[-1] for line in listed.splitlines()}
    assert {name for name in shown if name.startswith(("Qdp_", "DVS"))} == set(declared(root))


def test_an_unknown_operation_cannot_be_scripted(host):
    for function in (host.script, host.fail):
        with pytest.raises(LookupError, match="Qdp_Nothing"):
            function("Qdp_Nothing")


class TestBuffers:
    def port_list(self, host, capacity):
        buffer = ctypes.create_string_buffer(b"#" * 10000, 10000)
        size = ctypes.c_uint32(capacity)
        status = host.libqdp.Qdp_Get_Port_List(0, buffer, ctypes.byref(size))
        return status, buffer.raw, size.value

    def test_a_record_that_fits(self, host):
        status, written, size = self.port_list(host, 10000)
        assert (status, size) == (0, 12 + 36 * 156)
        assert written[size:] == b"#" * (10000 - size)

    def test_a_record_that_does_not_fit_is_refused_and_nothing_is_written(self, host):
        status, written, _ = self.port_list(host, 12 + 36 * 156 - 1)
        assert status != 0
        assert written == b"#" * 10000

    def test_a_scripted_answer_is_cut_at_the_capacity(self, host):
        host.script("Qdp_Get_Port_List", outputs=[b"x" * 300])
        status, written, _ = self.port_list(host, 100)
        assert status == 0
        assert written[:101] == b"x" * 100 + b"#"


class TestControl:
    def status(self, host):
        counters = ctypes.create_string_buffer(128)
        return host.libqdp.Qdp_Get_Port_Stats(0, 0, counters, ctypes.byref(ctypes.c_uint32(128)))

    def test_scripted_answers_queue_up(self, host):
        host.script("Qdp_Get_Port_Stats", 5)
        host.script("Qdp_Get_Port_Stats", 6)
        assert [self.status(host) for _ in range(3)] == [5, 6, 0]

    def test_a_failure_by_count(self, host):
        host.fail("Qdp_Get_Port_Stats", 7, nth=2, times=2)
        assert [self.status(host) for _ in range(5)] == [0, 7, 7, 0, 0]

    def test_a_failure_for_ever_ends_with_a_reset(self, host):
        host.fail("Qdp_Get_Port_Stats", 7, times=0)
        assert [self.status(host) for _ in range(20)] == [7] * 20
        host.reset()
        assert self.status(host) == 0

    def test_calls_are_recorded_only_while_recording(self, host):
        self.status(host)
        with host.recording() as calls:
            self.status(host)
        self.status(host)
        assert [(call.operation, call.arguments[:2]) for call in calls] == [("Qdp_Get_Port_Stats", [0, 0])]

    def test_time_stands_still_and_is_moved(self, host):
        def packets():
            counters = (ctypes.c_uint64 * 16)()
            host.libqdp.Qdp_Get_Port_Stats(0, 0, counters, ctypes.byref(ctypes.c_uint32(128)))
            return counters[1]

        host.freeze()
        start = packets()
        host.advance(2.5)
        assert packets() - start == 2500
