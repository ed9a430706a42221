"""The metric that the load balancer of a switch balances by."""

import ctypes
import struct

import pytest

from adversity import starved
from observe import Call, Capacity, Outcome, refused

KEY = "com.tarnix.wyx.qdp.loadbal"
PRODUCTION = "switch-production"

GET = Call("DVSHCK_HostPropGet", [PRODUCTION, KEY, Capacity(0)])
FREE = Call("DVSHCK_DataFree", [])
PARAMETERS = Call("Qdp_GetLBParams", ["portset-0", Capacity(96)])

NAMES = ["none", "cpu", "count"]


def settings(metric, version=0, reserved=(0, 0, 0, 0)):
    return struct.pack("<6I", version, metric, *reserved)


def parameters(metric):
    return struct.pack("<II11Q", metric, 0xDEAD, *range(100, 111))


def written(value):
    return Call("DVSHCK_HostPropSet", [PRODUCTION, KEY, value, 16])


@pytest.fixture
def call(qdp):
    """Calls a method: its outcome, with the calls that read and write settings."""

    def call(method, *arguments):
        outcome = qdp.call(method, *arguments)
        outcome.calls = [
            Call(each.operation, [] if each.operation == FREE.operation else each.arguments)
            for each in outcome.calls
            if each.operation.startswith(("DVSHCK_", "Qdp_"))
        ]
        return outcome

    return call


# A property's value that cannot be read, and what is said about it.
MALFORMED = [
    (settings(1, version=1), f"Format of property {KEY} value is from unknown version.\n"),
    (settings(1, version=0x80000000), f"Format of property {KEY} value is from unknown version.\n"),
    (settings(1, version=1)[:20], f"Format of property {KEY} value is from unknown version.\n"),
    (settings(1)[:20], f"Property {KEY} value length is odd.\n"),
    (settings(1)[:23], f"Property {KEY} value length is odd.\n"),
    (settings(1) + b"\0", f"Property {KEY} value length is odd.\n"),
    (b"", f"Property {KEY} value length is odd.\n"),
]


class TestGetLBMetric:
    @pytest.mark.parametrize(
        "metric, name", [(0, "none"), (1, "cpu"), (2, "count"), (3, "invalid"), (256, "invalid"), (1 << 31, "invalid")]
    )
    def test_the_metric_that_the_switch_keeps(self, configured, call, metric, name):
        configured.script("DVSHCK_HostPropGet", outputs=[settings(metric, reserved=(9, 9, 9, 9))])
        assert call("GetLBMetric", "dvs-production") == Outcome(name, calls=[GET, FREE])

    def test_a_length_without_a_value_reads_as_zero(self, configured, call):
        configured.script("DVSHCK_HostPropGet", sizes={0: len(settings(0))})
        assert call("GetLBMetric", "dvs-production") == Outcome("none", calls=[GET])

    @pytest.mark.parametrize("metric, name", [(0, "none"), (1, "cpu"), (2, "count"), (3, "invalid")])
    @pytest.mark.parametrize("status", [0xBAD0003, 1])
    def test_the_librarys_metric_when_the_switch_keeps_none(self, configured, call, metric, name, status):
        configured.fail("DVSHCK_HostPropGet", status)
        configured.script("Qdp_GetLBParams", outputs=[parameters(metric)])
        assert call("GetLBMetric", "dvs-production") == Outcome(name, calls=[GET, PARAMETERS])

    @pytest.mark.parametrize("value, text", MALFORMED)
    def test_a_malformed_property(self, configured, call, value, text):
        configured.script("DVSHCK_HostPropGet", outputs=[value])
        assert call("GetLBMetric", "dvs-production") == Outcome(None, text, calls=[GET, FREE])

    @pytest.mark.parametrize("alias", ["nobody", "", "legacy-network"])
    def test_an_alias_that_names_no_vswitch(self, configured, call, alias):
        text = f"Failed to find dvs ID for dvs alias {alias}.\n"
        assert call("GetLBMetric", alias) == Outcome(None, text)

    def test_a_switch_that_is_gone_when_its_portset_is_looked_up(self, configured, call):
        configured.fail("DVSState_SwitchFindByAlias", 0, nth=2)
        text = "Failed to get portset name from dvs dvs-production.\n"
        assert call("GetLBMetric", "dvs-production") == Outcome(None, text, calls=[GET])

    def test_a_refusing_library_is_silent(self, configured, call):
        configured.fail("Qdp_GetLBParams")
        assert call("GetLBMetric", "dvs-production") == Outcome(None, calls=[GET, PARAMETERS])

    def test_an_alias_with_a_null_character(self, qdp):
        assert qdp.call("GetLBMetric", "a\0b") == refused(left_set=(ValueError, "embedded null character"))

    def test_lack_of_memory_is_the_interpreters_error(self, configured, qdp):
        assert starved(qdp, "GetLBMetric", "dvs-production") == [Outcome(raised=(MemoryError, ""))]

    def test_embedded_host(self, configured, qdp):
        aliases = ["dvs-production", "dvs-storage", "dvs-smartnic"]
        assert [qdp.result("GetLBMetric", alias) for alias in aliases] == ["cpu", "count", "none"]


class TestSetLBMetric:
    @pytest.mark.parametrize("code, name", enumerate(NAMES))
    def test_the_first_setting_of_a_switch_reserves_zeros(self, configured, call, code, name):
        configured.script("Qdp_GetLBParams", outputs=[parameters(3)])
        assert call("SetLBMetric", "dvs-production", name) == Outcome(
            True, calls=[GET, PARAMETERS, written(settings(code))]
        )

    @pytest.mark.parametrize("code, name", enumerate(NAMES))
    def test_reserved_words_are_carried_over(self, configured, call, code, name):
        reserved = (1, 0xFFFFFFFF, 0x80000000, 4)
        configured.script("DVSHCK_HostPropGet", outputs=[settings(3, reserved=reserved)])
        assert call("SetLBMetric", "dvs-production", name) == Outcome(
            True, calls=[GET, FREE, written(settings(code, reserved=reserved))]
        )

    @pytest.mark.parametrize("name", ["CPU", "cp", "cpus", "", "invalid", " none", "1"])
    def test_an_unknown_name(self, configured, call, name):
        text = f"Invalid metric name {name}.\n"
        assert call("SetLBMetric", "dvs-production", name) == Outcome(False, text, calls=[GET, PARAMETERS])

    def test_the_settings_are_read_before_the_name_is_looked_at(self, configured, call):
        text = "Failed to find dvs ID for dvs alias nobody.\n"
        assert call("SetLBMetric", "nobody", "CPU") == Outcome(False, text)

    @pytest.mark.parametrize("value, text", MALFORMED)
    def test_a_malformed_property_is_not_overwritten(self, configured, call, value, text):
        configured.script("DVSHCK_HostPropGet", outputs=[value])
        assert call("SetLBMetric", "dvs-production", "cpu") == Outcome(False, text, calls=[GET, FREE])

    def test_a_refusing_library_is_silent(self, configured, call):
        configured.fail("Qdp_GetLBParams")
        assert call("SetLBMetric", "dvs-production", "cpu") == Outcome(False, calls=[GET, PARAMETERS])

    def test_a_switch_that_is_gone_when_its_portset_is_looked_up(self, configured, call):
        configured.fail("DVSState_SwitchFindByAlias", 0, nth=2)
        text = "Failed to get portset name from dvs dvs-production.\n"
        assert call("SetLBMetric", "dvs-production", "cpu") == Outcome(False, text, calls=[GET])

    def test_a_switch_that_is_gone_when_the_metric_is_written(self, configured, call):
        configured.script("DVSHCK_HostPropGet", outputs=[settings(0)])
        configured.fail("DVSState_SwitchFindByAlias", 0, nth=2)
        text = "Failed to find dvs ID for dvs alias dvs-production.\n"
        assert call("SetLBMetric", "dvs-production", "cpu") == Outcome(False, text, calls=[GET, FREE])

    def test_a_write_that_is_refused(self, configured, call):
        configured.fail("DVSHCK_HostPropSet", 7)
        assert call("SetLBMetric", "dvs-production", "cpu") == Outcome(
            False, f"Failed to set DVS property {KEY}\n", calls=[GET, PARAMETERS, written(settings(1))]
        )

    def test_embedded_host_keeps_the_metric_of_that_switch(self, configured, qdp):
        for name in NAMES:
            assert qdp.result("SetLBMetric", "dvs-storage", name) is True
            assert qdp.result("GetLBMetric", "dvs-storage") == name
        assert qdp.result("GetLBMetric", "dvs-production") == "cpu"

    @pytest.mark.parametrize("code, name", enumerate(NAMES))
    def test_embedded_hosts_balancer_follows_the_property(self, configured, qdp, code, name):
        qdp.result("SetLBMetric", "dvs-production", name)
        record = (ctypes.c_uint32 * 24)()
        assert configured.libqdp.Qdp_GetLBParams(b"portset-0", record) == 0
        assert record[0] == code
