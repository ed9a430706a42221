"""The counters of the lcores' flow caches."""

import struct

import pytest

from observe import Call, Capacity, Outcome, refused

FLOW_STATS_BYTES = 7176
REFUSED = "TypeError: Invalid parameter passed.\n\n"

# The keys in dict order, and the place of each in the record: three words of 32 bits, one of padding, then the
# counters.
WORDS = {"lcoreID": 0, "numFlows": 1, "numModel2Flows": 2}
COUNTERS = {
    "numFlowsCreated": 0,
    "hits": 1,
    "miss": 2,
    "slowpath": 3,
    "fpoHits": 4,
    "localHits": 5,
    "firstLookupHits": 24,
    "firstLookupLocalCacheHits": 25,
    "actionAllocFails": 6,
    "actionGroupAllocFails": 7,
    "keyInsertFailCount": 8,
    "latSampleCount": 9,
    "fpoCTHwPktQueued": 10,
    "fpoCTHwPktDrop": 11,
    "fpoCTPktsInjectedToHW": 12,
    "fpoCTPktsContinuedInSW": 13,
    "fpoCTHwContextFailed": 14,
    "fpoCTHwFlowInval": 15,
    "fpoMarkMismatched": 16,
    "fpoPnicMismatched": 17,
    "fpoDelayMarkMatching": 18,
    "fpoEphemeralFlows": 19,
    "fpoTransientFlows": 20,
    "fpoBackoffTimes": 21,
}
KEYS = [*WORDS, *COUNTERS]


def entry(words=(0, 0, 0), counters=()):
    return struct.pack("<4I26Q", *words, 0xDEADBEEF, *[*counters, *[0] * 26][:26])


def flow_stats(*entries, count=None):
    return struct.pack("<II", len(entries) if count is None else count, 0xDEAD) + b"".join(entries)


def shown(words, counters):
    return {
        **{key: words[index] for key, index in WORDS.items()},
        **{key: counters[index] & 0xFFFFFFFF for key, index in COUNTERS.items()},
    }


class TestGetFlowStats:
    @staticmethod
    def call(selector, lcores, value):
        return Call(
            "Qdp_Get_Flow_Stats",
            [selector, struct.pack(f"<{len(lcores)}I", *lcores), value, Capacity(FLOW_STATS_BYTES)],
        )

    def test_one_dict_an_entry_in_record_order(self, host, qdp):
        assert len(entry()) == 224 and len(KEYS) == 27
        first = (0x80000009, 100, 40), [1000 + i for i in range(26)]
        second = (3, 0xFFFFFFFF, 0xFFFFFFFE), [5000 + i for i in range(26)]
        host.script("Qdp_Get_Flow_Stats", outputs=[flow_stats(entry(*first), entry(*second))])
        assert qdp.call("GetFlowStats", 7, (9, 3), 11) == Outcome(
            [shown(*first), shown(*second)], calls=[self.call(7, [9, 3], 11)]
        )

    def test_the_order_of_the_keys(self, host, qdp):
        host.script("Qdp_Get_Flow_Stats", outputs=[flow_stats(entry())])
        (stats,) = qdp.result("GetFlowStats", 0, (0,), 0)
        assert list(stats) == (
            "lcoreID numFlows numModel2Flows numFlowsCreated hits miss slowpath fpoHits localHits firstLookupHits "
            "firstLookupLocalCacheHits actionAllocFails actionGroupAllocFails keyInsertFailCount latSampleCount "
            "fpoCTHwPktQueued fpoCTHwPktDrop fpoCTPktsInjectedToHW fpoCTPktsContinuedInSW fpoCTHwContextFailed "
            "fpoCTHwFlowInval fpoMarkMismatched fpoPnicMismatched fpoDelayMarkMatching fpoEphemeralFlows "
            "fpoTransientFlows fpoBackoffTimes"
        ).split()

    @pytest.mark.parametrize(
        "counter, reported",
        [
            ((1 << 32) - 1, (1 << 32) - 1),
            (1 << 32, 0),
            ((1 << 32) + 5, 5),
            ((1 << 64) - 1, (1 << 32) - 1),
            (1 << 63, 0),
        ],
    )
    def test_counters_are_reported_modulo_2_to_the_32nd(self, host, qdp, counter, reported):
        host.script("Qdp_Get_Flow_Stats", outputs=[flow_stats(entry((1, 2, 3), [counter] * 26))])
        (stats,) = qdp.result("GetFlowStats", 0, (0,), 0)
        assert list(stats.values()) == [1, 2, 3] + [reported] * 24

    def test_totals_of_backoff_flows_are_not_reported(self, host, qdp):
        host.script("Qdp_Get_Flow_Stats", outputs=[flow_stats(entry((0, 0, 0), [0] * 22 + [77, 88] + [0] * 2))])
        (stats,) = qdp.result("GetFlowStats", 0, (0,), 0)
        assert set(stats.values()) == {0}
        assert not {"fpoTotalBackoffFlows", "fpoMaxBackoffFlows"} & set(stats)

    def test_no_lcores_return_what_the_library_reports(self, host, qdp):
        host.script("Qdp_Get_Flow_Stats", outputs=[flow_stats(entry((5, 0, 0)), entry((6, 0, 0)))])
        outcome = qdp.call("GetFlowStats", 0, (), 0)
        assert [each["lcoreID"] for each in outcome.result] == [5, 6]
        assert outcome.calls == [self.call(0, [], 0)]

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script("Qdp_Get_Flow_Stats")
        assert qdp.call("GetFlowStats", 0, (1,), 0) == Outcome([], calls=[self.call(0, [1], 0)])

    def test_all_entries_and_what_lies_beyond_them(self, host, qdp):
        host.script(
            "Qdp_Get_Flow_Stats", outputs=[flow_stats(*[entry((i, 1, 1), [2] * 26) for i in range(32)], count=34)]
        )
        stats = qdp.result("GetFlowStats", 0, (0,), 0)
        assert [each["lcoreID"] for each in stats] == [*range(32), 0, 0]
        assert list(stats[31].values()) == [31, 1, 1] + [2] * 24
        assert stats[32] == stats[33] == dict.fromkeys(KEYS, 0)

    @pytest.mark.parametrize(
        "given, ids",
        [
            (tuple(range(64)), list(range(64))),
            ((-1, 0xFFFFFFFF, (1 << 32) + 7, (1 << 63) - 1, -(1 << 63)), [0xFFFFFFFF, 0xFFFFFFFF, 7, 0xFFFFFFFF, 0]),
            ((True, 99), [1, 99]),
        ],
    )
    def test_lcores_keep_their_low_32_bits(self, host, qdp, given, ids):
        host.script("Qdp_Get_Flow_Stats", outputs=[flow_stats()])
        assert qdp.call("GetFlowStats", 0, given, 0) == Outcome([], calls=[self.call(0, ids, 0)])

    def test_selector_and_value_are_passed_as_given(self, host, qdp):
        host.script("Qdp_Get_Flow_Stats", outputs=[flow_stats()])
        assert qdp.call("GetFlowStats", -1, (2,), (1 << 32) + 9) == Outcome([], calls=[self.call(0xFFFFFFFF, [2], 9)])

    @pytest.mark.parametrize(
        "lcores, left_set",
        [
            (tuple(range(65)), None),
            ([1, 2], None),
            (None, None),
            (7, None),
            (("1",), TypeError),
            ((0, None), TypeError),
            ((1.5,), TypeError),
            ((1 << 63,), (OverflowError, "Python int too large to convert to C long")),
            ((-(1 << 63) - 1,), (OverflowError, "Python int too large to convert to C long")),
        ],
    )
    def test_lcores_that_are_refused(self, qdp, lcores, left_set):
        assert qdp.call("GetFlowStats", 0, lcores, 0) == refused(REFUSED, left_set=left_set)


class TestEmbeddedHost:
    ALL = tuple(range(16))

    def test_lcores_in_the_order_asked_for(self, qdp):
        assert [each["lcoreID"] for each in qdp.result("GetFlowStats", 0, (9, 3, 15), 0)] == [9, 3, 15]

    def test_no_lcores_ask_for_all(self, qdp):
        assert [each["lcoreID"] for each in qdp.result("GetFlowStats", 0, (), 0)] == list(self.ALL)

    @pytest.mark.parametrize("lcores", [(16,), (0, 63), (64,), (-1,), (0,) * 33])
    def test_lcores_without_a_flow_cache_and_too_many_are_refused(self, qdp, lcores):
        assert qdp.call("GetFlowStats", 0, lcores, 0).printed == "Failed to retrieve flow stats.\n"

    def test_as_many_as_the_record_holds(self, qdp):
        assert len(qdp.result("GetFlowStats", 0, (1,) * 32, 0)) == 32

    def test_flows_are_those_of_the_flow_table(self, qdp):
        for stats in qdp.result("GetFlowStats", 0, self.ALL, 0):
            start, flows = 0, []
            while start != 0xFFFFFFFF:
                page = qdp.result(
                    "DumpFlowTable", 0, stats["lcoreID"], start, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0
                )
                flows += page["list"]
                start = page["startIndex"]
            assert stats["numFlows"] == stats["numFlowsCreated"] == len(flows)
            assert stats["numModel2Flows"] == sum(flow["actions"].startswith("OL; ") for flow in flows)

    def test_hits_are_those_of_the_flows_and_grow(self, host, qdp):
        host.freeze()
        (before,) = qdp.result("GetFlowStats", 0, (0,), 0)
        assert qdp.result("GetFlowStats", 0, (0,), 0) == [before]
        host.advance(100)
        (after,) = qdp.result("GetFlowStats", 0, (0,), 0)
        first = qdp.result("DumpFlowTable", 0, 0, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
        second = qdp.result("DumpFlowTable", 0, 0, first["startIndex"], 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
        flows = first["list"] + second["list"]
        assert after["hits"] == sum(flow["swHits"] for flow in flows) > before["hits"]
        assert after["fpoHits"] == sum(flow["hwHits"] for flow in flows) > before["fpoHits"]
        assert all(after[key] >= before[key] for key in KEYS)
