"""Whether flows are offloaded."""

import ctypes
import struct

import pytest

from observe import Call, Capacity, Outcome, refused

KEY = "com.tarnix.wyx.qdp.fpo.offload"
PRODUCTION = "switch-production"
NO_COMMAND = "OSError: Failed to issue QDP command\n"


def set_calls(outcome):
    """The calls that change something, of an outcome that is otherwise as expected."""
    return [call for call in outcome.calls if call.operation.startswith(("Qdp_", "DVSHCK_"))]


def host_property(host, switch_id, key=KEY):
    """The value of a host property as the host kernel has it, or None."""
    value, length = ctypes.c_void_p(), ctypes.c_uint32()
    library = host.libqmtPublic
    if library.DVSHCK_HostPropGet(switch_id.encode(), key.encode(), ctypes.byref(value), ctypes.byref(length)) != 0:
        return None
    held = ctypes.string_at(value, length.value)
    library.DVSHCK_DataFree(value)
    return held


class TestSetOffloadFlows:
    @pytest.mark.parametrize("enable, kept", [(0, 0), (1, 1), (7, 1), (0x80000000, 1), (0xFFFFFFFF, 1)])
    def test_the_library_gets_the_value_and_the_property_a_0_or_1(self, configured, qdp, enable, kept):
        configured.script("Qdp_Set_Offload_Flows")
        outcome = qdp.call("SetOffloadFlows", "dvs-production", enable)
        assert outcome == Outcome(None, calls=outcome.calls)
        assert set_calls(outcome) == [
            Call("Qdp_Set_Offload_Flows", ["portset-0", enable]),
            Call("DVSHCK_HostPropSet", [PRODUCTION, KEY, struct.pack("<I", kept), 16]),
        ]

    def test_the_portset_name_is_resolved_before_the_switch_id(self, configured, qdp):
        outcome = qdp.call("SetOffloadFlows", "dvs-production", 1)
        assert [call.operation for call in outcome.calls] == [
            "DVSState_SwitchFindByAlias",
            "DVS_SwitchId",
            "DVSState_HostPropLookup",
            "DVSData_Data",
            "DVSState_SwitchFindByAlias",
            "DVS_ClassName",
            "DVS_SwitchId",
            "Qdp_Set_Offload_Flows",
            "DVSHCK_HostPropSet",
        ]

    def test_a_refusing_library_is_not_reported_and_the_property_is_left_alone(self, configured, qdp):
        configured.fail("Qdp_Set_Offload_Flows", 9)
        outcome = qdp.call("SetOffloadFlows", "dvs-production", 1)
        assert outcome == Outcome(None, calls=outcome.calls)
        assert set_calls(outcome) == [Call("Qdp_Set_Offload_Flows", ["portset-0", 1])]

    def test_a_property_that_cannot_be_set_is_not_reported(self, configured, qdp):
        configured.fail("DVSHCK_HostPropSet", 9)
        outcome = qdp.call("SetOffloadFlows", "dvs-production", 1)
        assert outcome == Outcome(None, calls=outcome.calls)
        assert [call.operation for call in set_calls(outcome)] == ["Qdp_Set_Offload_Flows", "DVSHCK_HostPropSet"]

    def test_an_unknown_alias(self, configured, qdp):
        assert qdp.call("SetOffloadFlows", "nobody", 1) == refused_after(
            [Call("DVSState_SwitchFindByAlias", ["nobody"])]
        )

    def test_a_switch_of_another_class_has_a_portset_name_but_no_id(self, configured, qdp):
        outcome = qdp.call("SetOffloadFlows", "legacy-network", 1)
        assert outcome == refused_after(outcome.calls)
        assert outcome.calls[-1].operation == "DVS_ClassName"
        assert set_calls(outcome) == []

    def test_an_alias_with_a_nul_is_refused(self, configured, qdp):
        outcome = qdp.call("SetOffloadFlows", "dvs\0production", 1)
        assert (outcome.result, outcome.printed, outcome.calls) == (None, refused().printed, [])
        assert outcome.left_set[0] is ValueError

    @pytest.mark.parametrize("enable, kept", [(7, 1), (0, 0)])
    def test_embedded_host_keeps_it_in_the_library_and_in_the_property(self, configured, qdp, enable, kept):
        assert host_property(configured, PRODUCTION) is None
        assert qdp.result("SetOffloadFlows", "dvs-production", enable) is None
        assert qdp.result("GetOffloadFlows", "dvs-production") is bool(kept)
        assert host_property(configured, PRODUCTION) == struct.pack("<I", kept)


def refused_after(calls):
    outcome = refused()
    outcome.calls = calls
    return outcome


class TestGetOffloadFlows:
    GET = Call("Qdp_Get_Offload_Flows", ["portset-0", Capacity(4)])

    @pytest.mark.parametrize("word, shown", [(0, False), (1, True), (2, True), (0x80000000, True), (0xFFFFFFFF, True)])
    def test_any_word_but_0_is_true(self, configured, qdp, word, shown):
        configured.script("Qdp_Get_Offload_Flows", outputs=[struct.pack("<I", word)])
        outcome = qdp.call("GetOffloadFlows", "dvs-production")
        assert outcome == Outcome(shown, calls=outcome.calls)
        assert set_calls(outcome) == [self.GET]

    def test_an_answer_without_bytes_is_false(self, configured, qdp):
        configured.script("Qdp_Get_Offload_Flows")
        assert qdp.result("GetOffloadFlows", "dvs-production") is False

    def test_only_the_portset_name_is_resolved(self, configured, qdp):
        """A switch of a class that has no id for the datapath is asked about all the same."""
        outcome = qdp.call("GetOffloadFlows", "legacy-network")
        assert "DVS_ClassName" not in [call.operation for call in outcome.calls]
        assert set_calls(outcome) == [Call("Qdp_Get_Offload_Flows", ["legacy-network", Capacity(4)])]

    def test_a_refusing_library(self, configured, qdp):
        configured.fail("Qdp_Get_Offload_Flows", 9)
        outcome = qdp.call("GetOffloadFlows", "dvs-production")
        assert outcome == Outcome(None, NO_COMMAND, calls=outcome.calls)
        assert set_calls(outcome) == [self.GET]

    def test_an_unknown_alias(self, configured, qdp):
        assert qdp.call("GetOffloadFlows", "nobody") == refused_after([Call("DVSState_SwitchFindByAlias", ["nobody"])])

    def test_embedded_host_keeps_it_per_switch(self, configured, qdp):
        switches = ["dvs-production", "dvs-storage", "dvs-smartnic"]
        assert [qdp.result("GetOffloadFlows", each) for each in switches] == [False, False, False]
        qdp.result("SetOffloadFlows", "dvs-storage", 1)
        assert [qdp.result("GetOffloadFlows", each) for each in switches] == [False, True, False]
        qdp.result("SetOffloadFlows", "dvs-storage", 0)
        assert qdp.result("GetOffloadFlows", "dvs-storage") is False

    def test_embedded_host_knows_no_such_portset(self, configured, qdp):
        assert qdp.call("GetOffloadFlows", "legacy-network").printed == NO_COMMAND


class TestSetOffloadICMPEcho:
    @pytest.mark.parametrize("enable", [0, 1, 7, 0xFFFFFFFF])
    def test_the_library_gets_the_value_as_it_is(self, host, qdp, enable):
        assert qdp.call("SetOffloadICMPEcho", enable) == Outcome(
            None, calls=[Call("Qdp_Set_Offload_ICMP_Echo", [enable])]
        )


class TestGetOffloadICMPEcho:
    GET = Call("Qdp_Get_Offload_ICMP_Echo", [Capacity(4)])

    @pytest.mark.parametrize("word, shown", [(0, False), (1, True), (0x100, True), (0xFFFFFFFF, True)])
    def test_any_word_but_0_is_true(self, host, qdp, word, shown):
        host.script("Qdp_Get_Offload_ICMP_Echo", outputs=[struct.pack("<I", word)])
        assert qdp.call("GetOffloadICMPEcho") == Outcome(shown, calls=[self.GET])

    def test_arguments_are_ignored(self, host, qdp):
        host.script("Qdp_Get_Offload_ICMP_Echo")
        assert qdp.call("GetOffloadICMPEcho", "x", 99) == Outcome(False, calls=[self.GET])

    def test_embedded_host_gets_what_was_set(self, qdp):
        assert qdp.result("GetOffloadICMPEcho") is False
        qdp.result("SetOffloadICMPEcho", 7)
        assert qdp.result("GetOffloadICMPEcho") is True
        qdp.result("SetOffloadICMPEcho", 0)
        assert qdp.result("GetOffloadICMPEcho") is False
