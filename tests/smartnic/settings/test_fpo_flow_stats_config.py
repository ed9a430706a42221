"""How the statistics of offloaded flows are refreshed."""

import struct

import pytest

from observe import Call, Capacity, Outcome

GET = Call("Qdp_Get_FPO_Flow_Stats_Config", [Capacity(8)])
KEEP = 0xFFFFFFFF


def config(interval, quota):
    return struct.pack("<II", quota, interval)


def set_call(interval, quota):
    return Call("Qdp_Set_FPO_Flow_Stats_Config", [config(interval, quota)])


class TestGetFPOFlowStatsConfig:
    @pytest.mark.parametrize("interval, quota", [(1, 2), (0, 0xFFFFFFFF), (0x80000000, 0)])
    def test_the_interval_comes_first_and_both_are_unsigned(self, host, qdp, interval, quota):
        host.script("Qdp_Get_FPO_Flow_Stats_Config", outputs=[config(interval, quota)])
        assert qdp.call("GetFPOFlowStatsConfig") == Outcome(
            {"statsInterval": interval, "statsScanQuota": quota}, calls=[GET]
        )

    @pytest.mark.parametrize("arguments", [(0,), ("x", None)])
    def test_arguments_are_ignored(self, host, qdp, arguments):
        host.script("Qdp_Get_FPO_Flow_Stats_Config", outputs=[config(1, 2)])
        assert qdp.call("GetFPOFlowStatsConfig", *arguments) == Outcome(
            {"statsInterval": 1, "statsScanQuota": 2}, calls=[GET]
        )

    def test_an_answer_without_bytes_reads_as_zero(self, host, qdp):
        host.script("Qdp_Get_FPO_Flow_Stats_Config")
        assert qdp.result("GetFPOFlowStatsConfig") == {"statsInterval": 0, "statsScanQuota": 0}


class TestSetFPOFlowStatsConfig:
    @pytest.mark.parametrize(
        "arguments, written",
        [
            ((7, 8), (7, 8)),
            ((0, 0), (0, 0)),
            ((KEEP, 500), (11, 500)),
            ((500, KEEP), (500, 22)),
            ((KEEP, KEEP), (11, 22)),
            ((-1, -1), (11, 22)),
            ((KEEP - 1, KEEP - 1), (KEEP - 1, KEEP - 1)),
        ],
    )
    def test_what_is_not_to_be_kept_is_replaced(self, host, qdp, arguments, written):
        host.script("Qdp_Get_FPO_Flow_Stats_Config", outputs=[config(11, 22)])
        assert qdp.call("SetFPOFlowStatsConfig", *arguments) == Outcome(None, calls=[GET, set_call(*written)])

    def test_the_current_values_cannot_be_read(self, host, qdp):
        host.fail("Qdp_Get_FPO_Flow_Stats_Config", 9)
        assert qdp.call("SetFPOFlowStatsConfig", 7, 8) == Outcome(
            None, "Failed to get current FPO flow stats config\n", calls=[GET]
        )

    def test_the_new_values_cannot_be_written(self, host, qdp):
        host.script("Qdp_Get_FPO_Flow_Stats_Config", outputs=[config(11, 22)])
        host.fail("Qdp_Set_FPO_Flow_Stats_Config", 9)
        assert qdp.call("SetFPOFlowStatsConfig", 7, 8) == Outcome(
            None, "Failed to set FPO flow stats update config\n", calls=[GET, set_call(7, 8)]
        )

    def test_embedded_host_gets_what_was_set(self, qdp):
        assert qdp.result("GetFPOFlowStatsConfig") == {"statsInterval": 1000, "statsScanQuota": 256}
        assert qdp.result("SetFPOFlowStatsConfig", KEEP, 500) is None
        assert qdp.result("GetFPOFlowStatsConfig") == {"statsInterval": 1000, "statsScanQuota": 500}
        assert qdp.result("SetFPOFlowStatsConfig", 3, KEEP) is None
        assert qdp.result("GetFPOFlowStatsConfig") == {"statsInterval": 3, "statsScanQuota": 500}
