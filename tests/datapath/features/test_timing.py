"""Host-wide timing of flows and of their offload."""

import struct

import pytest

from observe import Call, Capacity, Outcome

CANNOT_GET_REVAL = "Failed to get FPO revalidation config\n"
CANNOT_GET_CURRENT_REVAL = "Failed to get current FPO revalidation config\n"
CANNOT_SET_REVAL = "Failed to set FPO revalidation config\n"

KEEP = 0xFFFFFFFF
STATUSES = [1, 0xBAD0003, 0xFFFFFFFF]
# The word that arrives for an argument; there is no range check.
WORDS = [(0, 0), (1, 1), (0x80000000, 0x80000000), (0xFFFFFFFF, 0xFFFFFFFF), (-1, 0xFFFFFFFF), ((1 << 32) + 6, 6)]
# What the getters are given; they do not look at it.
ANY_ARGUMENTS = [(), (1,), ("x", None, 3.5), tuple(range(20))]


class TestGetFlowTimeout:
    call = Call("Qdp_Get_Flow_Timeout", [Capacity(4)])

    @pytest.mark.parametrize("value", [0, 10, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF])
    @pytest.mark.parametrize("arguments", ANY_ARGUMENTS)
    def test_is_unsigned_and_ignores_arguments(self, host, qdp, value, arguments):
        host.script("Qdp_Get_Flow_Timeout", outputs=[struct.pack("<I", value)])
        assert qdp.call("GetFlowTimeout", *arguments) == Outcome(value, calls=[self.call])

    def test_embedded_host(self, qdp):
        assert qdp.result("GetFlowTimeout") == 10


class TestSetFlowTimeout:
    @pytest.mark.parametrize("value, word", WORDS)
    def test_passes_the_seconds_on(self, host, qdp, value, word):
        host.script("Qdp_Set_Flow_Timeout")
        assert qdp.call("SetFlowTimeout", value) == Outcome(None, calls=[Call("Qdp_Set_Flow_Timeout", [word])])

    def test_embedded_host_keeps_it(self, qdp):
        qdp.result("SetFlowTimeout", 77)
        assert qdp.result("GetFlowTimeout") == 77
        assert qdp.result("GetRefreshPktInjectionConfig") == 1


def reval_record(enabled, inject_packet, flow_scan_quota, reval_interval):
    return struct.pack("<4I", enabled, inject_packet, flow_scan_quota, reval_interval)


GET_REVAL = Call("Qdp_Get_FPO_Reval_Config", [Capacity(16)])


class TestGetFPORevalConfig:
    @pytest.mark.parametrize("arguments", ANY_ARGUMENTS)
    def test_the_interval_comes_before_the_quota(self, host, qdp, arguments):
        record = reval_record(0x80000001, 0x80000002, 0xFFFFFFFF, 0x92345678)
        host.script("Qdp_Get_FPO_Reval_Config", outputs=[record])
        assert qdp.call("GetFPORevalConfig", *arguments) == Outcome(
            {
                "enabled": 0x80000001,
                "injectPacket": 0x80000002,
                "revalInterval": 0x92345678,
                "flowScanQuota": 0xFFFFFFFF,
            },
            calls=[GET_REVAL],
        )

    def test_embedded_host(self, qdp):
        assert qdp.result("GetFPORevalConfig") == {
            "enabled": 1,
            "injectPacket": 0,
            "revalInterval": 1000,
            "flowScanQuota": 256,
        }


class TestSetFPORevalConfig:
    CURRENT = reval_record(9, 8, 7, 6)

    def call(self, host, qdp, *arguments):
        host.script("Qdp_Get_FPO_Reval_Config", outputs=[self.CURRENT])
        host.script("Qdp_Set_FPO_Reval_Config")
        return qdp.call("SetFPORevalConfig", *arguments)

    @pytest.mark.parametrize(
        "arguments, record",
        [
            ((1, 2, 3, 4), (1, 2, 4, 3)),
            ((0, 0, 0, 0), (0, 0, 0, 0)),
            # What keeps the current interval or quota, and what only nearly does.
            ((1, 0, -1, 500), (1, 0, 500, 6)),
            ((1, 0, 500, -1), (1, 0, 7, 500)),
            ((1, 0, KEEP, KEEP), (1, 0, 7, 6)),
            ((1, 0, KEEP - 1, KEEP - 1), (1, 0, KEEP - 1, KEEP - 1)),
            ((1, 0, (1 << 32) + KEEP, 5), (1, 0, 5, 6)),
            # The flags are always taken as given.
            ((-1, KEEP, 3, 4), (KEEP, KEEP, 4, 3)),
        ],
    )
    def test_the_arguments_have_another_order_than_the_record(self, host, qdp, arguments, record):
        set_reval = Call("Qdp_Set_FPO_Reval_Config", [reval_record(*record)])
        assert self.call(host, qdp, *arguments) == Outcome(None, calls=[GET_REVAL, set_reval])

    @pytest.mark.parametrize("status", STATUSES)
    def test_the_current_values_cannot_be_read(self, host, qdp, status):
        """They are read even when nothing of them is kept, and then nothing is set."""
        host.fail("Qdp_Get_FPO_Reval_Config", status)
        assert qdp.call("SetFPORevalConfig", 1, 2, 3, 4) == Outcome(None, CANNOT_GET_CURRENT_REVAL, calls=[GET_REVAL])

    @pytest.mark.parametrize("status", STATUSES)
    def test_a_refusing_library(self, host, qdp, status):
        host.fail("Qdp_Set_FPO_Reval_Config", status)
        set_reval = Call("Qdp_Set_FPO_Reval_Config", [reval_record(1, 2, 4, 3)])
        assert self.call(host, qdp, 1, 2, 3, 4) == Outcome(None, CANNOT_SET_REVAL, calls=[GET_REVAL, set_reval])

    def test_embedded_host_keeps_it(self, qdp):
        qdp.result("SetFPORevalConfig", 1, 0, -1, 500)
        assert qdp.result("GetFPORevalConfig") == {
            "enabled": 1,
            "injectPacket": 0,
            "revalInterval": 1000,
            "flowScanQuota": 500,
        }
        qdp.result("SetFPORevalConfig", 0, 1, 20, -1)
        assert qdp.result("GetFPORevalConfig") == {
            "enabled": 0,
            "injectPacket": 1,
            "revalInterval": 20,
            "flowScanQuota": 500,
        }

    @pytest.mark.parametrize(
        "given, kept",
        [((0, 1, KEEP, 5), (0, 1, 256, 5)), ((0, 1, 5, KEEP), (0, 1, 5, 1000)), (None, (1, 0, 256, 1000))],
    )
    def test_embedded_datapath_keeps_current_values_too(self, host, qdp, given, kept):
        status = host.libqdp.Qdp_Set_FPO_Reval_Config(reval_record(*given) if given else None)
        assert (status == 0) == (given is not None)
        enabled, inject_packet, quota, interval = kept
        assert qdp.result("GetFPORevalConfig") == {
            "enabled": enabled,
            "injectPacket": inject_packet,
            "revalInterval": interval,
            "flowScanQuota": quota,
        }


class TestGetFPODelayCtOlConfig:
    call = Call("Qdp_Get_FPO_DelayCtOl_Config", [Capacity(8)])

    @pytest.mark.parametrize("arguments", ANY_ARGUMENTS)
    def test_packets_come_first(self, host, qdp, arguments):
        host.script("Qdp_Get_FPO_DelayCtOl_Config", outputs=[struct.pack("<II", 0x80000008, 0xFFFFFFFF)])
        assert qdp.call("GetFPODelayCtOlConfig", *arguments) == Outcome(
            {"numPkts": 0x80000008, "enabled": 0xFFFFFFFF}, calls=[self.call]
        )

    @pytest.mark.parametrize("status", STATUSES)
    def test_a_refusing_library_is_told_in_the_words_of_the_revalidation(self, host, qdp, status):
        host.fail("Qdp_Get_FPO_DelayCtOl_Config", status)
        assert qdp.call("GetFPODelayCtOlConfig") == Outcome(None, CANNOT_GET_REVAL, calls=[self.call])

    def test_embedded_host(self, qdp):
        assert qdp.result("GetFPODelayCtOlConfig") == {"numPkts": 16, "enabled": 0}


class TestSetFPODelayCtOlConfig:
    @pytest.mark.parametrize("value, word", WORDS)
    def test_the_arguments_have_another_order_than_the_record(self, host, qdp, value, word):
        host.script("Qdp_Set_FPO_DelayCtOl_Config")
        assert qdp.call("SetFPODelayCtOlConfig", value, 8) == Outcome(
            None, calls=[Call("Qdp_Set_FPO_DelayCtOl_Config", [struct.pack("<II", 8, word)])]
        )
        host.script("Qdp_Set_FPO_DelayCtOl_Config")
        assert qdp.call("SetFPODelayCtOlConfig", 1, value) == Outcome(
            None, calls=[Call("Qdp_Set_FPO_DelayCtOl_Config", [struct.pack("<II", word, 1)])]
        )

    @pytest.mark.parametrize("status", STATUSES)
    def test_a_refusing_library_is_told_in_the_words_of_the_revalidation(self, host, qdp, status):
        host.fail("Qdp_Set_FPO_DelayCtOl_Config", status)
        assert qdp.call("SetFPODelayCtOlConfig", 1, 8) == Outcome(
            None, CANNOT_SET_REVAL, calls=[Call("Qdp_Set_FPO_DelayCtOl_Config", [struct.pack("<II", 8, 1)])]
        )

    def test_embedded_host_keeps_it(self, host, qdp):
        qdp.result("SetFPODelayCtOlConfig", 1, 8)
        assert qdp.result("GetFPODelayCtOlConfig") == {"numPkts": 8, "enabled": 1}
        assert host.libqdp.Qdp_Set_FPO_DelayCtOl_Config(None) != 0
        assert qdp.result("GetFPODelayCtOlConfig") == {"numPkts": 8, "enabled": 1}


class TestGetRefreshPktInjectionConfig:
    call = Call("Qdp_Get_Refresh_Pkt_Injection", [Capacity(4)])

    @pytest.mark.parametrize("value", [0, 1, 0x80000000, 0xFFFFFFFF])
    @pytest.mark.parametrize("arguments", ANY_ARGUMENTS)
    def test_is_unsigned_and_ignores_arguments(self, host, qdp, value, arguments):
        host.script("Qdp_Get_Refresh_Pkt_Injection", outputs=[struct.pack("<I", value)])
        assert qdp.call("GetRefreshPktInjectionConfig", *arguments) == Outcome(value, calls=[self.call])


class TestSetRefreshPktInjectionConfig:
    @pytest.mark.parametrize("value, word", WORDS)
    def test_passes_the_value_on(self, host, qdp, value, word):
        host.script("Qdp_Set_Refresh_Pkt_Injection")
        assert qdp.call("SetRefreshPktInjectionConfig", value) == Outcome(
            None, calls=[Call("Qdp_Set_Refresh_Pkt_Injection", [word])]
        )

    def test_embedded_host_keeps_it(self, qdp):
        assert qdp.result("GetRefreshPktInjectionConfig") == 1
        qdp.result("SetRefreshPktInjectionConfig", 5)
        assert qdp.result("GetRefreshPktInjectionConfig") == 5
        assert qdp.result("GetFlowTimeout") == 10
