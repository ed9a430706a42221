"""Counters of flow offload, and what an uplink can offload."""

import ctypes
import struct

import pytest

from observe import Call, Capacity, Outcome, refused

LIST_BYTES = 2696
STATUS_BYTES = 60
STATS_BYTES = 312

LCORE_KEYS = """
    lcoreID hits markMismatched pnicMismatched delayMarkMatching ephemeralFlows transientFlows
    ctHWPktQueued ctPktsInjectedtoHW ctPktsContinuedInSW ctHwContextFailed
""".split()

STATUS_KEYS = """
    models numGroupSupported numPrioritySupported maxMarkActionBits maxFlowsSupported maxCountersSupported
    maxFlowKeyLengthInBits maxDecTTLActions numFlowsOffloaded actionsSupported
""".split()

# The keys in dict order, and the offset of each counter in the record.
STATS_OFFSETS = {
    "ringFull": 0,
    "creationFull": 8,
    "destroyFull": 16,
    "updateFull": 24,
    "genMismatched": 32,
    "limitExceeded": 40,
    "numSucceededValidateCalls": 56,
    "numSucceededCreateCalls": 64,
    "numSucceededDestroyCalls": 72,
    "numSucceededQueryCalls": 80,
    "numSucceededFlushCalls": 88,
    "numFailedValidateCalls": 136,
    "numFailedCreateCalls": 144,
    "numFailedDestroyCalls": 152,
    "numFailedQueryCalls": 160,
    "numFailedFlushCalls": 168,
    "numSucceededBulkResAllocCalls": 96,
    "numSucceededBulkResFreeCalls": 104,
    "numSucceededBulkResQueryCalls": 112,
    "numSucceededBulkResSetCalls": 120,
    "numSucceededBulkResResetCalls": 128,
    "numPendingFpoCallList": 176,
    "numFailedBulkResAllocCalls": 184,
    "numFailedBulkResFreeCalls": 192,
    "numFailedBulkResQueryCalls": 200,
    "numFailedBulkResSetCalls": 208,
    "numFailedBulkResResetCalls": 216,
    "numSucceededCreateCtxCalls": 224,
    "numSucceededDestroyCtxCalls": 232,
    "numSucceededModifyCtxCalls": 240,
    "numSucceededQueryCtxCalls": 248,
    "numFailedCreateCtxCalls": 256,
    "numFailedDestroyCtxCalls": 264,
    "numFailedModifyCtxCalls": 272,
    "numFailedQueryCtxCalls": 280,
    "numFPOUplinkEnableCalls": 288,
    "numFPOUplinkDisableCalls": 296,
    "numFPOCallsInDisabledState": 304,
}


def lcore_entry(lcore, counters=(0,) * 10):
    return struct.pack("<I10Q", lcore, *counters)


def lcore_list(*entries, count=None):
    return struct.pack("<II", len(entries) if count is None else count, 0xDEADBEEF) + b"".join(entries)


def lcore_call(switch, *lcores):
    return Call("Qdp_Get_FPO_Stats", [switch, struct.pack(f"<{len(lcores)}I", *lcores), Capacity(LIST_BYTES)])


class TestGetFPOStats:
    INVALID = "TypeError: Invalid parameter passed.\n\n"
    CANNOT = "Failed to retrieve flow stats.\n"

    def test_one_dict_an_lcore(self, host, qdp):
        first = [0x10 + i for i in range(10)]
        second = [0x20 + i for i in range(10)]
        host.script("Qdp_Get_FPO_Stats", outputs=[lcore_list(lcore_entry(7, first), lcore_entry(0xFFFFFFFF, second))])
        assert qdp.call("GetFPOStats", 3, (7, 2)) == Outcome(
            [dict(zip(LCORE_KEYS, [7, *first])), dict(zip(LCORE_KEYS, [0xFFFFFFFF, *second]))],
            calls=[lcore_call(3, 7, 2)],
        )

    @pytest.mark.parametrize(
        "counter, low, signed",
        [
            ((1 << 32) + 5, 5, (1 << 32) + 5),
            (0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF),
            ((1 << 63) - 1, 0xFFFFFFFF, (1 << 63) - 1),
            (1 << 63, 0, -(1 << 63)),
            ((1 << 64) - 1, 0xFFFFFFFF, -1),
        ],
    )
    def test_six_counters_wrap_at_32_bits_and_four_are_signed(self, host, qdp, counter, low, signed):
        host.script("Qdp_Get_FPO_Stats", outputs=[lcore_list(lcore_entry(1, [counter] * 10))])
        assert qdp.result("GetFPOStats", 0, (1,)) == [dict(zip(LCORE_KEYS, [1] + [low] * 6 + [signed] * 4))]

    @pytest.mark.parametrize("switch", [0, 15, 16, 0xFFFFFFFF])
    def test_the_switch_is_not_checked(self, host, qdp, switch):
        host.script("Qdp_Get_FPO_Stats", outputs=[lcore_list()])
        assert qdp.call("GetFPOStats", switch, (1,)) == Outcome([], calls=[lcore_call(switch, 1)])

    def test_a_negative_switch_wraps(self, host, qdp):
        host.script("Qdp_Get_FPO_Stats", outputs=[lcore_list()])
        assert qdp.call("GetFPOStats", -1, ()) == Outcome([], calls=[lcore_call(0xFFFFFFFF)])

    def test_lcores_keep_their_low_32_bits_and_their_order(self, host, qdp):
        host.script("Qdp_Get_FPO_Stats", outputs=[lcore_list()])
        assert qdp.call("GetFPOStats", 0, (5, -1, (1 << 32) + 3, 5, True)) == Outcome(
            [], calls=[lcore_call(0, 5, 0xFFFFFFFF, 3, 5, 1)]
        )

    def test_64_lcores_are_accepted(self, host, qdp):
        host.script("Qdp_Get_FPO_Stats", outputs=[lcore_list()])
        assert qdp.call("GetFPOStats", 0, tuple(range(64))) == Outcome([], calls=[lcore_call(0, *range(64))])

    @pytest.mark.parametrize("lcores", [tuple(range(65)), [1], range(3), None, 5, "12", {1: 2}])
    def test_what_is_no_tuple_of_at_most_64(self, qdp, lcores):
        assert qdp.call("GetFPOStats", 0, lcores) == refused(self.INVALID)

    @pytest.mark.parametrize("item", ["1", None, (1,)])
    def test_an_item_that_is_no_integer(self, qdp, item):
        assert qdp.call("GetFPOStats", 0, (1, item)) == refused(self.INVALID, left_set=TypeError)

    def test_an_item_beyond_64_bits(self, qdp):
        left_set = (OverflowError, "Python int too large to convert to C long")
        assert qdp.call("GetFPOStats", 0, (1, 1 << 63)) == refused(self.INVALID, left_set=left_set)

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script("Qdp_Get_FPO_Stats")
        assert qdp.result("GetFPOStats", 3, (7,)) == []

    def test_lcores_beyond_the_record_read_as_zero(self, host, qdp):
        entries = [lcore_entry(i, [i] * 10) for i in range(32)]
        host.script("Qdp_Get_FPO_Stats", outputs=[lcore_list(*entries, count=34)])
        stats = qdp.result("GetFPOStats", 0, (1,))
        assert [entry["lcoreID"] for entry in stats] == [*range(32), 0, 0]
        assert stats[31] == dict(zip(LCORE_KEYS, [31] * 11))
        assert stats[33] == dict.fromkeys(LCORE_KEYS, 0)

    def test_embedded_host_counters_grow_with_time(self, host, qdp):
        host.freeze()
        before = qdp.result("GetFPOStats", 0, (5, 2))
        assert [entry["lcoreID"] for entry in before] == [5, 2]
        assert qdp.result("GetFPOStats", 0, (5, 2)) == before
        host.advance(seconds=100)
        after = qdp.result("GetFPOStats", 0, (5, 2))
        # 20000 hits a second, and 500 more for each number of the lcore.
        assert [late["hits"] - early["hits"] for early, late in zip(before, after)] == [2_250_000, 2_100_000]
        # Lcore 5 alone has trouble: 40 failures a second, half as many mismatched marks, a quarter as many NICs.
        failures = ["ctHwContextFailed", "markMismatched", "pnicMismatched"]
        assert [after[0][key] - before[0][key] for key in failures] == [4_000, 2_000, 1_000]
        assert [after[1][key] for key in failures] == [0, 0, 0]
        others = [key for key in LCORE_KEYS[1:] if key not in failures]
        assert all(late[key] > early[key] for early, late in zip(before, after) for key in others)

    @pytest.mark.parametrize(
        "switch, lcores", [(3, (0,)), (0, (8,)), (1, (7,)), (0, (64,)), (0, (1, -1)), (0, (1,) * 33)]
    )
    def test_embedded_host_has_no_such_lcores(self, qdp, switch, lcores):
        outcome = qdp.call("GetFPOStats", switch, lcores)
        assert (outcome.result, outcome.printed) == (None, self.CANNOT)

    def test_embedded_host_fills_the_whole_record(self, qdp):
        assert len(qdp.result("GetFPOStats", 0, (1,) * 32)) == 32
        assert qdp.result("GetFPOStats", 0, ()) == []

    def test_embedded_host_writes_nothing_into_a_small_buffer(self, host):
        buffer = ctypes.create_string_buffer(b"#" * 200, 200)
        lcores = (ctypes.c_uint32 * 1)(1)
        for capacity, is_success in ((91, False), (92, True)):
            size = ctypes.c_uint32(capacity)
            status = host.libqdp.Qdp_Get_FPO_Stats(0, lcores, 1, buffer, ctypes.byref(size))
            assert (status == 0) == is_success
            assert (buffer.raw == b"#" * 200) == (not is_success)
        assert size.value == 92 and buffer.raw[92:] == b"#" * 108


def status_record(models, words=(0,) * 8, actions=0):
    return struct.pack("<9I8sQ8s", models, *words, b"\xff" * 8, actions, b"\xff" * 8)


class TestGetFPOUplinkStatus:
    call = Call("Qdp_Get_FPO_Uplink_Status", [3, 7, Capacity(STATUS_BYTES)])
    CANNOT = "Failed to get FPO uplink status.\n"

    def test_the_keys_and_their_places(self, host, qdp):
        words = [0x80000000 + each for each in (0x11, 0x21, 0x7FFFFFFD, 0x41, 0x51, 0x61, 0x71, 0x81)]
        record = status_record(1, words, 0x123456789ABCDEF0)
        assert len(record) == STATUS_BYTES
        host.script("Qdp_Get_FPO_Uplink_Status", outputs=[record])
        values = ["Model 1 Level 1, ", *words, 0x123456789ABCDEF0]
        assert qdp.call("GetFPOUplinkStatus", 3, 7) == Outcome(dict(zip(STATUS_KEYS, values)), calls=[self.call])

    def test_no_models_beside_other_numbers(self, host, qdp):
        host.script("Qdp_Get_FPO_Uplink_Status", outputs=[status_record(0, [0xFFFFFFFF] * 8)])
        assert qdp.result("GetFPOUplinkStatus", 3, 7)["models"] == "None"

    @pytest.mark.parametrize(
        "actions, shown", [((1 << 63) - 1, (1 << 63) - 1), (1 << 63, -(1 << 63)), ((1 << 64) - 1, -1)]
    )
    def test_actions_are_signed(self, host, qdp, actions, shown):
        host.script("Qdp_Get_FPO_Uplink_Status", outputs=[status_record(0, actions=actions)])
        assert qdp.result("GetFPOUplinkStatus", 3, 7)["actionsSupported"] == shown

    @pytest.mark.parametrize(
        "models, text",
        [
            (0, "None"),
            (0x01, "Model 1 Level 1, "),
            (0x02, "Model 1 Level 2, "),
            (0x04, "Model 2A, "),
            (0x10, "Model 3A, "),
            (0x20, "Model 3B, "),
            (0x21, "Model 1 Level 1, Model 3B, "),
            (0x17, "Model 1 Level 1, Model 1 Level 2, Model 2A, Model 3A, "),
            # All of them are 64 characters; the text has room for 63.
            (0x37, "Model 1 Level 1, Model 1 Level 2, Model 2A, Model 3A, Model 3B,"),
            (0xFFFFFFFF, "Model 1 Level 1, Model 1 Level 2, Model 2A, Model 3A, Model 3B,"),
            (0x08, ""),
            (0x40, ""),
            (0x80000000, ""),
            (0xFFFFFFC8, ""),
            (0x28, "Model 3B, "),
        ],
    )
    def test_models_by_name(self, host, qdp, models, text):
        host.script("Qdp_Get_FPO_Uplink_Status", outputs=[status_record(models)])
        assert qdp.result("GetFPOUplinkStatus", 3, 7)["models"] == text

    def test_an_answer_without_bytes_is_all_zero(self, host, qdp):
        host.script("Qdp_Get_FPO_Uplink_Status")
        assert qdp.call("GetFPOUplinkStatus", 3, 7) == Outcome(
            dict(zip(STATUS_KEYS, ["None"] + [0] * 9)), calls=[self.call]
        )

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_FPO_Uplink_Status", outputs=[status_record(0)])
        outcome = qdp.call("GetFPOUplinkStatus", switch, port)
        assert outcome.calls == [Call("Qdp_Get_FPO_Uplink_Status", [switch, port, Capacity(STATUS_BYTES)])]

    def test_embedded_host_offloads_what_the_switch_allows(self, configured, qdp):
        def status(switch):
            found = qdp.result("GetFPOUplinkStatus", switch, 1)
            return found["models"], found["numFlowsOffloaded"]

        assert status(0) == ("Model 1 Level 1, Model 1 Level 2, Model 2A, ", 1231)
        assert status(1) == ("None", 0)
        assert status(2) == ("Model 1 Level 1, Model 1 Level 2, Model 2A, Model 3A, Model 3B,", 1231)
        assert qdp.result("EnableFPO", "dvs-production", {"enabled": True, "models": 0x36}) is True
        assert status(0) == ("Model 1 Level 2, Model 2A, ", 1231)
        assert qdp.result("EnableFPO", "dvs-production", {"enabled": False}) is True
        assert status(0) == ("None", 0)

    @pytest.mark.parametrize("switch, port", [(0, 2), (0, 16383), (3, 0)])
    def test_embedded_host_has_no_such_uplink(self, qdp, switch, port):
        assert qdp.call("GetFPOUplinkStatus", switch, port).printed == self.CANNOT

    def test_embedded_host_writes_nothing_into_a_small_buffer(self, host):
        buffer = ctypes.create_string_buffer(b"#" * 100, 100)
        assert host.libqdp.Qdp_Get_FPO_Uplink_Status(0, 0, buffer, ctypes.byref(ctypes.c_uint32(59))) != 0
        assert buffer.raw == b"#" * 100


class TestGetFPOUplinkStats:
    call = Call("Qdp_Get_FPO_Uplink_Stats", [3, 7, Capacity(STATS_BYTES)])
    CANNOT = "Failed to get FPO uplink stats.\n"

    def test_the_keys_and_their_places(self, host, qdp):
        """Each counter holds its own offset, with high bits of its own."""
        counters = [(0x1234 << 48) + offset for offset in range(0, STATS_BYTES, 8)]
        host.script("Qdp_Get_FPO_Uplink_Stats", outputs=[struct.pack("<39Q", *counters)])
        expected = {key: (0x1234 << 48) + offset for key, offset in STATS_OFFSETS.items()}
        assert len(expected) == 38
        assert qdp.call("GetFPOUplinkStats", 3, 7) == Outcome(expected, calls=[self.call])

    @pytest.mark.parametrize(
        "counter, shown", [((1 << 63) - 1, (1 << 63) - 1), (1 << 63, -(1 << 63)), ((1 << 64) - 1, -1)]
    )
    def test_all_counters_are_signed(self, host, qdp, counter, shown):
        host.script("Qdp_Get_FPO_Uplink_Stats", outputs=[struct.pack("<39Q", *[counter] * 39)])
        assert qdp.result("GetFPOUplinkStats", 3, 7) == dict.fromkeys(STATS_OFFSETS, shown)

    def test_an_answer_without_bytes_is_all_zero(self, host, qdp):
        host.script("Qdp_Get_FPO_Uplink_Stats")
        assert qdp.result("GetFPOUplinkStats", 3, 7) == dict.fromkeys(STATS_OFFSETS, 0)

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_FPO_Uplink_Stats")
        outcome = qdp.call("GetFPOUplinkStats", switch, port)
        assert outcome.calls == [Call("Qdp_Get_FPO_Uplink_Stats", [switch, port, Capacity(STATS_BYTES)])]

    def test_embedded_host_counters_grow_with_time(self, host, qdp):
        host.freeze()
        before = qdp.result("GetFPOUplinkStats", 0, 1)
        assert qdp.result("GetFPOUplinkStats", 0, 1) == before
        host.advance(seconds=1000)
        after = qdp.result("GetFPOUplinkStats", 0, 1)
        # 40 flows a second, and 3 more for each number of the port.
        assert after["numSucceededCreateCalls"] - before["numSucceededCreateCalls"] == 43_000
        assert after["numFailedCreateCalls"] - before["numFailedCreateCalls"] == 43
        assert after["numFPOUplinkEnableCalls"] == before["numFPOUplinkEnableCalls"] == 1

    def test_embedded_host_has_a_nic_that_offloads_nothing(self, host, qdp):
        host.freeze()
        host.advance(seconds=1000)
        assert qdp.result("GetFPOUplinkStats", 1, 0) == dict.fromkeys(STATS_OFFSETS, 0)

    @pytest.mark.parametrize("switch, port", [(0, 2), (0, 16383), (3, 0)])
    def test_embedded_host_has_no_such_uplink(self, qdp, switch, port):
        assert qdp.call("GetFPOUplinkStats", switch, port).printed == self.CANNOT

    def test_embedded_host_writes_nothing_into_a_small_buffer(self, host):
        buffer = ctypes.create_string_buffer(b"#" * 400, 400)
        assert host.libqdp.Qdp_Get_FPO_Uplink_Stats(0, 0, buffer, ctypes.byref(ctypes.c_uint32(311))) != 0
        assert buffer.raw == b"#" * 400
