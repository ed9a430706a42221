"""The ring sizes of uplinks, which are kept in their ports' data."""

import os
import struct
import subprocess
import sys

import pytest

from observe import Call, Capacity, Outcome, refused

KEY = "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing"

# Prints the platform calls of a method whose value the library hands out beside a refusal, and how many values are out.
REFUSED_WITH_A_VALUE = """
import pathlib, sys
from qdp_host import EmbeddedHost
build = pathlib.Path(sys.argv[1])
host = EmbeddedHost(build / "host")
sys.path.insert(0, str(build))
import _libqdp
host.script("DVSHCK_PortDataGet", status=0xBAD0001, outputs=[bytes(8)])
with host.recording() as calls:
    _libqdp.GetUplinkRingSize("a switch", "a port")
print([call.operation for call in calls], host.unreleased_values())
"""

EMBEDDED_NULL = (ValueError, "embedded null character")


def rings(first, second):
    return struct.pack("<II", first, second)


class TestGetUplinkRingSize:
    get = Call("DVSHCK_PortDataGet", ["a switch", "a port", KEY, Capacity(0)])

    def call(self, qdp):
        return qdp.call("GetUplinkRingSize", "a switch", "a port")

    def released(self, outcome):
        """The platform calls that are expected when a value was handed out."""
        return [self.get, Call("DVSHCK_DataFree", outcome.calls[-1].arguments)]

    @pytest.mark.parametrize("sizes", [(4096, 512), (0, 0), (0xFFFFFFFF, 1), (1, 0xFFFFFFFF)])
    def test_first_then_second(self, host, qdp, sizes):
        host.script("DVSHCK_PortDataGet", outputs=[rings(*sizes)])
        outcome = self.call(qdp)
        assert outcome == Outcome(sizes, calls=self.released(outcome))

    def test_a_port_without_the_value_has_the_defaults(self, host, qdp):
        host.fail("DVSHCK_PortDataGet", 0xBAD0003)
        assert self.call(qdp) == Outcome((2048, 1024), calls=[self.get])

    @pytest.mark.parametrize("status", [1, 0xBAD0002, 0xBAD0004, 0xBAD0007, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, status):
        host.fail("DVSHCK_PortDataGet", status)
        assert self.call(qdp) == Outcome(
            None, "ValueError: Failed to read property data length.\n", calls=[self.get]
        )

    def test_what_a_refused_call_hands_out_is_not_released(self, root, build):
        """In a process of its own: the value stays out."""
        called = subprocess.run(
            [sys.executable, "-c", REFUSED_WITH_A_VALUE, str(build)],
            env={**os.environ, "PYTHONPATH": str(root / "host" / "python")},
            capture_output=True, text=True, check=True,
        )  # fmt: skip
        assert called.stdout == "['DVSHCK_PortDataGet'] 1\n"

    @pytest.mark.parametrize("value", [b"", b"\0" * 4, b"\0" * 7, b"\0" * 9, b"\0" * 12])
    def test_a_wrong_length(self, host, qdp, value):
        host.script("DVSHCK_PortDataGet", outputs=[value])
        outcome = self.call(qdp)
        assert outcome == Outcome(
            None, "ValueError: Invalid property data length.\n", calls=self.released(outcome)
        )

    def test_a_text_with_a_nul(self, qdp):
        assert qdp.call("GetUplinkRingSize", "a", "b\0c") == refused(left_set=EMBEDDED_NULL)

    def test_embedded_host(self, qdp):
        assert qdp.result("GetUplinkRingSize", "dvs-production", "nic0") == (2048, 1024)

    @pytest.mark.parametrize("switch, port", [("dvs-production", "nic99"), ("nobody", "nic0")])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        assert qdp.call("GetUplinkRingSize", switch, port).printed == (
            "ValueError: Failed to read property data length.\n"
        )


class TestSetUplinkRingSize:
    def set(self, value):
        return Call("DVSHCK_PortDataSet", ["a switch", "a port", KEY, value, 8])

    @pytest.mark.parametrize(
        "sizes, stored",
        [
            ((4096, 1024), rings(4096, 1024)),
            ((32, 64), rings(32, 64)),
            ((0, 0), rings(0, 0)),
            ((0xFFFFFFE0, 32), rings(0xFFFFFFE0, 32)),
            ((-32, 1 << 32), rings(0xFFFFFFE0, 0)),
        ],
    )
    def test_stores_both_sizes(self, host, qdp, sizes, stored):
        host.script("DVSHCK_PortDataSet")
        assert qdp.call("SetUplinkRingSize", "a switch", "a port", *sizes) == Outcome(
            None, calls=[self.set(stored)]
        )

    @pytest.mark.parametrize("sizes", [(4096, 1000), (1000, 4096), (31, 32), (32, 33), (16, 0), (-1, -1), (1, 1)])
    def test_sizes_that_are_not_aligned(self, qdp, sizes):
        assert qdp.call("SetUplinkRingSize", "a switch", "a port", *sizes) == refused(
            "ValueError: Ring size must be 32 aligned.\n"
        )

    def test_a_text_with_a_nul(self, qdp):
        assert qdp.call("SetUplinkRingSize", "a\0", "b", 32, 32) == refused(left_set=EMBEDDED_NULL)

    @pytest.mark.parametrize("switch", ["dvs-production", "switch-production"])
    def test_embedded_host_keeps_them_per_port(self, qdp, switch):
        qdp.result("SetUplinkRingSize", switch, "nic1", 4096, 512)
        assert qdp.result("GetUplinkRingSize", "dvs-production", "nic1") == (4096, 512)
        assert qdp.result("GetUplinkRingSize", "dvs-production", "nic0") == (2048, 1024)

    def test_embedded_host_keeps_nothing_that_is_refused(self, qdp):
        qdp.call("SetUplinkRingSize", "dvs-production", "nic1", 4096, 1000)
        assert qdp.result("GetUplinkRingSize", "dvs-production", "nic1") == (2048, 1024)

    def test_embedded_host_has_no_such_port(self, qdp):
        assert qdp.call("SetUplinkRingSize", "dvs-storage", "nic0", 32, 32).printed == (
            "ValueError: Failed to set port property.\n"
        )
