"""The TCP state of offloaded connections."""

import ctypes
import struct

import pytest

from observe import Call, Capacity, Outcome

CT_KEYS = (
    "src_seqlo src_seqhi src_max_win src_state src_wscale dst_seqlo dst_seqhi dst_max_win dst_state dst_wscale "
    "sw_state ct_log"
).split()
CONTEXT_KEYS = (
    "enable disableWindowValidation lseqlo lseqhi lseqdiff lmaxWin lstate lwscale rseqlo rseqhi rseqdiff rmaxWin "
    "rstate rwscale"
).split()


def dump(data, length=None):
    return struct.pack("<IIQ", 16 + len(data) if length is None else length, 0xDEAD, 0xDEAD) + data


class TestP4CTContextQuery:
    @staticmethod
    def call(index):
        return Call("Qdp_P4_HWTable_Dump", [struct.pack("<III", 6, index, 1), Capacity(2048)])

    def test_every_field_at_its_place(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(bytes(range(0xA0, 0xC0)))])
        assert qdp.call("P4CTContextQuery", 9) == Outcome(
            {
                "src_seqlo": 0xA1A2A3A4,
                "src_seqhi": 0xA5A6A7A8,
                "src_max_win": 0xA9AA,
                "src_state": 0xA,
                "src_wscale": 0xB,
                "dst_seqlo": 0xACADAEAF,
                "dst_seqhi": 0xB0B1B2B3,
                "dst_max_win": 0xB4B5,
                "dst_state": 0xB,
                "dst_wscale": 0x6,
                "sw_state": 0xB7,
                "ct_log": 0xB8,
            },
            calls=[self.call(9)],
        )

    @pytest.mark.parametrize(
        "offset, raw, key, value",
        [
            (9, b"\x01\x00", "src_max_win", 256),
            (20, b"\x01\x00", "dst_max_win", 256),
            (1, b"\xff\xff\xff\xff", "src_seqlo", 0xFFFFFFFF),
            (5, b"\x80\0\0\0", "src_seqhi", 0x80000000),
            (12, b"\0\0\0\x01", "dst_seqlo", 1),
            (16, b"\0\0\0\x80", "dst_seqhi", 128),
            (23, b"\xff", "sw_state", 255),
            (24, b"\xff", "ct_log", 255),
        ],
    )
    def test_one_field_and_no_other(self, host, qdp, offset, raw, key, value):
        entry = bytes(offset) + raw + bytes(32 - offset - len(raw))
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(entry)])
        assert qdp.result("P4CTContextQuery", 0) == {**dict.fromkeys(CT_KEYS, 0), key: value}

    def test_every_field_has_its_width(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(b"\xff" * 32)])
        bits = [32, 32, 16, 4, 4, 32, 32, 16, 4, 4, 8, 8]
        assert qdp.result("P4CTContextQuery", 0) == {key: (1 << width) - 1 for key, width in zip(CT_KEYS, bits)}

    @pytest.mark.parametrize("offset, side", [(11, "src"), (22, "dst")])
    def test_the_state_is_the_high_half(self, host, qdp, offset, side):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(bytes(offset) + b"\xa7" + bytes(31 - offset))])
        assert qdp.result("P4CTContextQuery", 0) == {
            **dict.fromkeys(CT_KEYS, 0),
            side + "_state": 10,
            side + "_wscale": 7,
        }

    @pytest.mark.parametrize("offset", [0, *range(25, 32)])
    def test_bytes_that_are_not_read(self, host, qdp, offset):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(bytes(offset) + b"\xff" + bytes(31 - offset))])
        assert qdp.result("P4CTContextQuery", 0) == dict.fromkeys(CT_KEYS, 0)

    @pytest.mark.parametrize("index", [0, 0x80000000, 0xFFFFFFFF])
    def test_any_index_reaches_the_library(self, host, qdp, index):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(bytes(32))])
        assert qdp.call("P4CTContextQuery", index) == Outcome(dict.fromkeys(CT_KEYS, 0), calls=[self.call(index)])

    # Shorter than its own header: the no data.
    @pytest.mark.parametrize(
        "length, shown", [(80, 64), (47, 31), (49, 33), (16, 0), (15, 0), (0, 0)]
    )
    def test_an_answer_that_is_not_one_entry(self, host, qdp, length, shown):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(bytes(64), length)])
        assert qdp.call("P4CTContextQuery", 5) == Outcome(
            None, f"Unexpected response size {shown}, expected: 32\n", calls=[self.call(5)]
        )

    def test_embedded_host_tracks_tcp_connections(self, qdp):
        first = qdp.result("P4CTContextQuery", 1)
        assert (first["src_state"], first["dst_state"], first["ct_log"]) == (4, 4, 1)
        assert first["src_seqhi"] - first["src_seqlo"] == first["src_max_win"] == 0xFF00
        # Connection 3 is none of TCP; there is no connection 1000, and no entry 2^20.
        for index in (3, 1000):
            assert qdp.result("P4CTContextQuery", index) == dict.fromkeys(CT_KEYS, 0)
        assert qdp.call("P4CTContextQuery", 1 << 20).printed == "Failed to get HW CT entry\n"


class TestFPOQueryContextMgr:
    @staticmethod
    def call(*ids):
        return Call("Qdp_FPOQueryMgr", [struct.pack("<IIII", *ids, 2), Capacity(64)])

    def test_every_word_at_its_place(self, host, qdp):
        words = [0xF0000000 + i for i in range(16)]
        host.script("Qdp_FPOQueryMgr", outputs=[struct.pack("<16I", *words)])
        assert qdp.call("FPOQueryContextMgr", 7, 0xFFFFFFFF, -2) == Outcome(
            [dict(zip(CONTEXT_KEYS, words[2:], strict=True))], calls=[self.call(7, 0xFFFFFFFF, 0xFFFFFFFE)]
        )

    def test_an_answer_without_bytes_reads_as_zero(self, host, qdp):
        """The record's own size, which stands in its first word, is not shown."""
        host.script("Qdp_FPOQueryMgr")
        assert qdp.result("FPOQueryContextMgr", 0, 0, 0) == [dict.fromkeys(CONTEXT_KEYS, 0)]

    def test_an_answer_that_claims_more_than_the_record(self, host, qdp):
        host.script("Qdp_FPOQueryMgr", outputs=[b"\xff" * 200], sizes={0: 0xFFFFFFFF})
        assert qdp.result("FPOQueryContextMgr", 0, 0, 0) == [dict.fromkeys(CONTEXT_KEYS, 0xFFFFFFFF)]

    def test_embedded_host_knows_a_context_as_the_hardware_tracks_it(self, host, qdp):
        """It answers only a record that names its own size."""
        host.freeze()
        tracked = qdp.result("P4CTContextQuery", 1)
        (known,) = qdp.result("FPOQueryContextMgr", 2, 101, 1)
        assert known == {
            "enable": 1,
            "disableWindowValidation": 0,
            "lseqlo": tracked["src_seqlo"],
            "lseqhi": tracked["src_seqhi"],
            "lseqdiff": 0xFF00,
            "lmaxWin": tracked["src_max_win"],
            "lstate": tracked["src_state"],
            "lwscale": tracked["src_wscale"],
            "rseqlo": tracked["dst_seqlo"],
            "rseqhi": tracked["dst_seqhi"],
            "rseqdiff": 0x7210,
            "rmaxWin": tracked["dst_max_win"],
            "rstate": tracked["dst_state"],
            "rwscale": tracked["dst_wscale"],
        }

    @pytest.mark.parametrize("ids", [(2, 101, 2), (1, 101, 1), (2, 100, 1), (2, 103, 3), (2, 1100, 1000)])
    def test_embedded_host_knows_no_such_context(self, qdp, ids):
        assert qdp.call("FPOQueryContextMgr", *ids).printed == "Query mgr failed.\n\n"

    @pytest.mark.parametrize(
        "query_type, named_size, accepted", [(2, 64, True), (1, 64, False), (2, 63, False), (2, 0, False)]
    )
    def test_embedded_host_refuses_what_no_query_looks_like(self, host, query_type, named_size, accepted):
        request = struct.pack("<IIII", 2, 101, 1, query_type)
        answer, size = ctypes.create_string_buffer(struct.pack("<I", named_size), 64), ctypes.c_uint32(64)
        status = host.libqdp.Qdp_FPOQueryMgr(request, answer, ctypes.byref(size))
        assert (status == 0) is accepted


class TestFPOHWDestroy:
    @pytest.mark.parametrize("arguments", [(), (0, 0, 0), ("x", None)])
    def test_is_not_supported_and_calls_nothing(self, qdp, arguments):
        assert qdp.call("FPOHWDestroy", *arguments) == Outcome(None, "Not supported in release build.\n\n")
