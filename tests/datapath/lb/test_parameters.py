"""The load balancer's run-time parameters."""

import struct

import pytest

from adversity import starved
from observe import Call, Capacity, Outcome

# By id.
NAMES = [
    "run_in_msec",
    "cpuload_high",
    "cpuload_low",
    "cpuload_target",
    "cpuload_high_per_unit",
    "cpuload_low_per_unit",
    "min_v2v_pps",
    "min_v2v_pps_bind",
    "pps_var_sensitivity",
    "cpu_var_sensitivity",
]
SMARTNIC = "switch-smartnic"

UNKNOWN_NAME = (ValueError, "Unknown parameter name.")
UNKNOWN_ALIAS = (ValueError, "cannot find dvs alias.")


def record(values):
    return struct.pack("<II10QQ", 2, 0xDEAD, *values, 0xDEAD)


def get(portset):
    return Call("Qdp_GetLBParams", [portset, Capacity(96)])


def set_(portset, parameter, value):
    return Call("Qdp_SetLBParam", [portset, parameter, value])


@pytest.fixture
def call(qdp):
    """Calls a method: its outcome, with the calls of the datapath control library."""

    def call(method, *arguments):
        outcome = qdp.call(method, *arguments)
        outcome.calls = [each for each in outcome.calls if each.operation.startswith("Qdp_")]
        return outcome

    return call


class TestGetLBParams:
    def test_ten_unsigned_values_in_table_order(self, configured, call):
        values = [(1 << 64) - 1, 1 << 63, (1 << 63) - 1, 1 << 32, 0xFFFFFFFF, 5, 6, 7, 8, 0]
        configured.script("Qdp_GetLBParams", outputs=[record(values)])
        assert call("GetLBParams", "dvs-production") == Outcome(
            dict(zip(NAMES, values)), calls=[get("portset-0")]
        )

    def test_what_the_library_leaves_out_is_zero(self, configured, qdp):
        configured.script("Qdp_GetLBParams", outputs=[record([7] * 10)[:16]])
        assert qdp.result("GetLBParams", "dvs-production") == {**dict.fromkeys(NAMES, 0), "run_in_msec": 7}

    @pytest.mark.parametrize(
        "alias, portset",
        [("dvs-storage", "dvs-storage"), ("dvs-smartnic", SMARTNIC), ("legacy-network", "legacy-network")],
    )
    def test_the_switch_is_named_by_its_portset(self, configured, call, alias, portset):
        configured.script("Qdp_GetLBParams", outputs=[record([1] * 10)])
        assert call("GetLBParams", alias) == Outcome(dict.fromkeys(NAMES, 1), calls=[get(portset)])

    @pytest.mark.parametrize("alias", ["nobody", ""])
    def test_an_unknown_alias(self, configured, call, alias):
        assert call("GetLBParams", alias) == Outcome(raised=UNKNOWN_ALIAS)

    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_a_refusing_library(self, configured, call, status):
        configured.fail("Qdp_GetLBParams", status)
        assert call("GetLBParams", "dvs-production") == Outcome(
            raised=(OSError, "failed to get parameters."), calls=[get("portset-0")]
        )

    def test_lack_of_memory(self, configured, qdp):
        outcomes = starved(qdp, "GetLBParams", "dvs-production")
        assert [each.raised for each in outcomes] == [
            (SystemError, "Failed to allocate buffer.\n"),
            (SystemError, "Failed to set dict item.\n"),
        ]

    def test_embedded_host(self, configured, qdp):
        values = qdp.result("GetLBParams", "dvs-production")
        assert values["cpuload_low"] < values["cpuload_target"] < values["cpuload_high"]

    def test_embedded_host_balances_no_other_switches(self, configured, qdp):
        assert qdp.call("GetLBParams", "legacy-network").raised == (OSError, "failed to get parameters.")


class TestSetLBParam:
    @pytest.mark.parametrize("parameter, name", enumerate(NAMES))
    def test_the_parameter_is_named_by_its_id(self, configured, call, parameter, name):
        assert call("SetLBParam", "dvs-production", name, 77) == Outcome(
            None, calls=[set_("portset-0", parameter, 77)]
        )

    @pytest.mark.parametrize(
        "value, passed",
        [(0, 0), ((1 << 64) - 1, (1 << 64) - 1), (1 << 63, 1 << 63), (-1, (1 << 64) - 1), ((1 << 64) + 5, 5)],
    )
    def test_any_value_of_64_bits(self, configured, call, value, passed):
        assert call("SetLBParam", "dvs-production", "cpuload_high", value) == Outcome(
            None, calls=[set_("portset-0", 1, passed)]
        )

    @pytest.mark.parametrize("name", ["RUN_IN_MSEC", "run_in_mse", "run_in_msecs", "", "metric", "0"])
    def test_an_unknown_name(self, configured, qdp, name):
        assert qdp.call("SetLBParam", "dvs-production", name, 1) == Outcome(raised=UNKNOWN_NAME)

    def test_the_name_is_checked_before_the_alias(self, configured, qdp):
        assert qdp.call("SetLBParam", "nobody", "nothing", 1) == Outcome(raised=UNKNOWN_NAME)

    @pytest.mark.parametrize("alias", ["nobody", ""])
    def test_an_unknown_alias(self, configured, call, alias):
        assert call("SetLBParam", alias, "cpuload_high", 1) == Outcome(raised=UNKNOWN_ALIAS)

    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_a_refusing_library(self, configured, call, status):
        configured.fail("Qdp_SetLBParam", status)
        assert call("SetLBParam", "dvs-production", "cpuload_low", 1) == Outcome(
            raised=(OSError, "failed to set parameter."), calls=[set_("portset-0", 2, 1)]
        )

    def test_embedded_host_keeps_what_is_set(self, configured, qdp):
        before = qdp.result("GetLBParams", "dvs-production")
        other = qdp.result("GetLBParams", "dvs-storage")
        for i, name in enumerate(NAMES):
            qdp.result("SetLBParam", "dvs-production", name, (1 << 64) - 1 - i)
            before[name] = (1 << 64) - 1 - i
            assert qdp.result("GetLBParams", "dvs-production") == before
        assert qdp.result("GetLBParams", "dvs-storage") == other

    def test_embedded_host_has_no_other_parameters(self, host):
        assert host.libqdp.Qdp_SetLBParam(b"portset-0", 9, 1) == 0
        assert host.libqdp.Qdp_SetLBParam(b"portset-0", 10, 1) != 0
        assert host.libqdp.Qdp_SetLBParam(b"portset-1", 9, 1) != 0
