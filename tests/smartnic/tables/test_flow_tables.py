"""The tables of flows."""

import struct

import pytest

from observe import Outcome, refused
from smartnic.tables.requests import read_at, read_with



def replaced(replacements):
    """Fourteen zeros, of which some are replaced; the arguments are counted from 1."""
    return tuple(replacements.get(number, 0) for number in range(1, 15))


class TestTableFlowKeyGet:
    def key(self, host, qdp, arguments):
        host.script("Qdp_P4_Cmd", outputs=[b"\xf4\xf3\xf2\xf1"])
        outcome = qdp.call("TableFlowKeyGet", *arguments)
        key = outcome.calls[0].arguments[0][8:]
        assert outcome == Outcome({"flowIndex": 0xF1F2F3F4}, calls=[read_with(24, key, 4)])
        assert len(key) == 60
        return key

    def test_whole_key(self, host, qdp):
        key = self.key(
            host,
            qdp,
            (
                0x0FFE,
                0x0A0B0C0D0E0F,
                0x1A1B1C1D1E1F,
                0x03FF,
                0x3FFFFF,
                0xABCDEF,
                0x99,
                0,
                0x2122232425262728,
                0x3132333435363738,
                0x4142434445464748,
                0x5152535455565758,
                0xFFFE,
                0xFFFD,
            ),
        )
        assert key == bytes.fromhex(
            "fe0f"
            "0f0e0d0c0b0a"
            "1f1e1d1c1b1a"
            "ffff"
            "2827262524232221"
            "3837363534333231"
            "4847464544434241"
            "5857565554535251"
            "ff03"
            "feff"
            "fdff"
            "00"
            "00"
            "99efcdab"
        )

    # Each argument alone, and the bytes of the key that it sets.
    @pytest.mark.parametrize(
        "number, value, offset, content",
        [
            (1, 4094, 0, "fe0f"),
            (2, (1 << 48) - 1, 2, "ffffffffffff"),
            (2, 1, 2, "01"),
            (3, (1 << 48) - 1, 8, "ffffffffffff"),
            (3, 1, 8, "01"),
            (4, 1023, 48, "ff03"),
            (5, 4194303, 14, "ffff"),
            (5, 70000, 14, "7011"),
            (5, 65536, 14, "0000"),
            (6, (1 << 24) - 1, 57, "ffffff"),
            (7, 255, 56, "ff"),
            (8, 1, 54, "01"),
            (8, 0x100, 54, "01"),
            (8, 0x10000, 54, "01"),
            (8, -1, 54, "01"),
            (9, -1, 16, "ffffffffffffffff"),
            (10, -1, 24, "ffffffffffffffff"),
            (11, -1, 32, "ffffffffffffffff"),
            (12, -1, 40, "ffffffffffffffff"),
            (13, 65535, 50, "ffff"),
            (14, 65535, 52, "ffff"),
        ],
    )
    def test_each_argument_has_its_place(self, host, qdp, number, value, offset, content):
        expected = bytearray(60)
        content = bytes.fromhex(content)
        expected[offset : offset + len(content)] = content
        assert self.key(host, qdp, replaced({number: value})) == expected

    @pytest.mark.parametrize(
        "number, value",
        [
            (1, 4095),
            (1, -1),
            (2, 1 << 48),
            (2, -1),
            (3, 1 << 48),
            (3, -1),
            (4, 1024),
            (4, -1),
            (5, 4194304),
            (5, -1),
            (6, 1 << 24),
            (6, -1),
            (7, 256),
            (7, -1),
            (13, 65536),
            (13, -1),
            (14, 65536),
            (14, -1),
        ],
    )
    def test_arguments_that_are_refused(self, qdp, number, value):
        assert qdp.call("TableFlowKeyGet", *replaced({number: value})) == refused()

    @pytest.mark.parametrize(
        "number, value",
        [(9, 1 << 32), (9, -1), (10, 1), (10, -1), (11, 1 << 32), (11, -1), (12, 1), (12, 1 << 63 >> 1)],
    )
    def test_addresses_are_checked_for_ipv4_alone(self, host, qdp, number, value):
        assert qdp.call("TableFlowKeyGet", *replaced({8: 1, number: value})) == refused()
        assert qdp.call("TableFlowKeyGet", *replaced({8: 6, number: value})) == refused()
        assert self.key(host, qdp, replaced({8: 0, number: value}))[54] == 0

    def test_ipv4_addresses(self, host, qdp):
        key = self.key(host, qdp, replaced({8: 1, 9: 0xFFFFFFFF, 11: 0xFFFFFFFE}))
        assert key[16:48] == struct.pack("<QQQQ", 0xFFFFFFFF, 0, 0xFFFFFFFE, 0)
        assert key[54:56] == b"\x01\0"


class TestTableFlowInfoGet:
    @pytest.mark.parametrize("index", [0, 4194303])
    def test_indexes_that_are_sent(self, host, qdp, index):
        host.script("Qdp_P4_Cmd")
        assert qdp.call("TableFlowInfoGet", index).calls == [read_at(26, index, 56)]

    @pytest.mark.parametrize("index", [4194304, -1])
    def test_indexes_that_are_refused(self, qdp, index):
        assert qdp.call("TableFlowInfoGet", index) == refused()

    def test_uplink_indexes_have_two_bits(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[bytes(25) + b"\xc0\xfe"])
        expected = {key: 0 for key in FLOW_INFO_KEYS}
        expected.update(dstUplinkIdx=3, srcUplinkIdx=2)
        assert qdp.call("TableFlowInfoGet", 1) == Outcome(expected, calls=[read_at(26, 1, 56)])

    def test_the_count_is_signed(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[bytes(8) + b"\xff" * 8])
        assert qdp.result("TableFlowInfoGet", 1)["count"] == -1


FLOW_INFO_KEYS = """
    flowIdx dstPort count timeStamp srcTag dstTag vdrTtlCheck vdrVld natVld encap decap ctIngressVld ctIngressDir
    ctEgressVld ctEgressDir ipfixIngressVld ipfixEgressVld drop isDstUplink isSrcUplink dstUplinkIdx srcUplinkIdx
    vdrHops ingressMirror egressMirror encapIdx ctIngressStatsIdx ctEgressStatsIdx natIdx ctIngressIdx ctEgressIdx
    ipfixIngressIdx ipfixEgressIdx
""".split()


class TestTableFlowRewriteGet:
    @pytest.mark.parametrize("index", [0, 4194303])
    def test_indexes_that_are_sent(self, host, qdp, index):
        host.script("Qdp_P4_Cmd")
        assert qdp.call("TableFlowRewriteGet", index).calls == [read_at(25, index, 32)]

    @pytest.mark.parametrize("index", [4194304, -1])
    def test_indexes_that_are_refused(self, qdp, index):
        assert qdp.call("TableFlowRewriteGet", index) == refused()

    def test_entry(self, host, qdp):
        words = struct.pack("<III", 0x21 | 5 << 9 | 33 << 12 | 34 << 18 | 6 << 24, 0xFF123ABC, 0xEE456789)
        entry = words + struct.pack("<H12sHI", 7, bytes(range(0x16, 0x1C)) + bytes(range(0x22, 0x28)), 0xFFFF, 8)
        host.script("Qdp_P4_Cmd", outputs=[entry])
        expected = {
            "vlanPop": 1,
            "vlanPush": 0,
            "vlanSet": 0,
            "vlanSetPcp": 0,
            "ipDscpSet": 0,
            "route": 1,
            "rssOverride": 0,
            "kcpVlanPush": 0,
            "vlanPcp": 5,
            "ipDscp": 33,
            "rssOverrideQid": 34,
            "hops": 6,
            "vlanVid": 0xABC,
            "kcpVlanVid": 0x123,
            "vni": 0x456789,
            "encapSport": 7,
            "flowCookie": 8,
            "smac": "16:17:18:19:1a:1b",
            "dmac": "22:23:24:25:26:27",
        }
        assert qdp.call("TableFlowRewriteGet", 1) == Outcome(expected, calls=[read_at(25, 1, 32)])
