"""The tables of tunnels."""

import struct

import pytest

from observe import Outcome, refused
from smartnic.tables.requests import read_at, read_with

# Arguments that are taken; tests replace one by its number, counted from 1.
TERMINATION = (0, 0, 1, 0, 4095, 4095, 0, 0)
SA = (0, 0, 0, 0)


def replaced(arguments, replacements):
    arguments = list(arguments)
    for number, value in replacements.items():
        arguments[number - 1] = value
    return tuple(arguments)


class TestTableTunnelTerminateGet:
    def key(self, host, qdp, replacements):
        host.script("Qdp_P4_Cmd", outputs=[b"\x09\x01"])
        outcome = qdp.call("TableTunnelTerminateGet", *replaced(TERMINATION, replacements))
        key = outcome.calls[0].arguments[0][8:]
        assert outcome == Outcome({"vtepIdx": 9, "valid": 1}, calls=[read_with(17, key, 2)])
        assert len(key) == 34
        return key

    def test_whole_key(self, host, qdp):
        key = self.key(
            host, qdp, {1: 0x0A0B0C0D0E0F, 2: 1023, 3: 1, 4: 0, 5: 100, 6: 4094, 7: 0x0102030405060708, 8: -2}
        )
        assert key == bytes.fromhex(
            "0f00 0e00 0d00 0c00 0b00 0a00"  # a byte of the MAC a word, the least significant first
            "ff03"
            "4906"  # 100 << 4 | valid | first
            "e8ff"  # 4094 << 4 | valid
            "0807060504030201"
            "feffffffffffffff"
        )

    @pytest.mark.parametrize(
        "replacements, word",
        [
            ({3: 0, 4: 0, 5: 4095}, 0x0002),
            ({3: 1, 4: 0, 5: 4095}, 0x0001),
            ({3: 0xFFFFFFFF, 4: 0, 5: 4095}, 0x0001),
            ({3: 0, 4: 1, 5: 4095}, 0x0006),
            ({3: 0, 4: 0x100, 5: 4095}, 0x0006),
            ({3: 0, 4: 0, 5: 0}, 0x000A),
            ({3: 0, 4: 0, 5: 100}, 0x064A),
            ({3: 1, 4: 1, 5: 4094}, 0xFFED),
        ],
    )
    def test_first_word_of_flags(self, host, qdp, replacements, word):
        key = self.key(host, qdp, replacements)
        assert key == bytes(14) + struct.pack("<H", word) + bytes(18)

    @pytest.mark.parametrize("vlan, word", [(0, 0x0008), (1, 0x0018), (4094, 0xFFE8), (4095, 0)])
    def test_second_word_of_flags(self, host, qdp, vlan, word):
        assert self.key(host, qdp, {6: vlan}) == bytes(14) + b"\x01\0" + struct.pack("<H", word) + bytes(16)

    @pytest.mark.parametrize("is_ipv4, low, high", [(1, 0xFFFFFFFF, 0), (0, -1, -1), (0, 1 << 32, 1), (1, 0, 0)])
    def test_addresses(self, host, qdp, is_ipv4, low, high):
        key = self.key(host, qdp, {4: is_ipv4, 7: low, 8: high})
        assert key[18:] == struct.pack("<qq", low, high)

    @pytest.mark.parametrize(
        "replacements",
        [
            {1: 1 << 48},
            {1: -1},
            {2: 1024},
            {2: -1},
            {5: 4096},
            {5: -1},
            {6: 4096},
            {6: -1},
            {4: 1, 7: 1 << 32},
            {4: 1, 7: -1},
            {4: 1, 8: 1},
            {4: 1, 8: -1},
            {4: 2, 8: 1 << 32},
        ],
    )
    def test_arguments_that_are_refused(self, qdp, replacements):
        assert qdp.call("TableTunnelTerminateGet", *replaced(TERMINATION, replacements)) == refused()

    @pytest.mark.parametrize("replacements", [{1: (1 << 48) - 1}, {2: 1023}, {5: 4095}, {6: 4095}])
    def test_bounds_that_are_accepted(self, host, qdp, replacements):
        assert self.key(host, qdp, replacements)

    def test_one_that_is_not_there(self, qdp):
        outcome = qdp.call("TableTunnelTerminateGet", *TERMINATION)
        assert (outcome.result, outcome.printed) == (None, "Failed to get table data\n")


class TestTableTunnelSAGet:
    def key(self, host, qdp, arguments):
        host.script("Qdp_P4_Cmd", outputs=[b"\x34\x12\x07\xff"])
        outcome = qdp.call("TableTunnelSAGet", *arguments)
        key = outcome.calls[0].arguments[0][8:]
        assert outcome == Outcome({"outerFlowId": 0x1234, "valid": 7}, calls=[read_with(18, key, 4)])
        return key

    @pytest.mark.parametrize(
        "arguments, key",
        [
            ((0, 0, 0, 0), "00 00 0000000000000000 0000000000000000 0000000000000000 0000000000000000"),
            ((255, 0, -1, -1), "ff 00 ffffffffffffffff 0000000000000000 ffffffffffffffff 0000000000000000"),
            ((1, 5, 0xFFFFFFFF, 0), "01 01 ffffffff00000000 0000000000000000 0000000000000000 0000000000000000"),
            ((2, 0, 0x1122, 0x3344), "02 00 2211000000000000 0000000000000000 4433000000000000 0000000000000000"),
        ],
    )
    def test_the_second_half_lies_sixteen_bytes_after_the_first(self, host, qdp, arguments, key):
        assert self.key(host, qdp, arguments) == bytes.fromhex(key)

    @pytest.mark.parametrize(
        "arguments",
        [(256, 0, 0, 0), (-1, 0, 0, 0), (0, 1, 1 << 32, 0), (0, 1, -1, 0), (0, 1, 0, 1), (0, 1 << 31, 0, -1)],
    )
    def test_arguments_that_are_refused(self, qdp, arguments):
        assert qdp.call("TableTunnelSAGet", *arguments) == refused()


class TestTableTunnelRewriteGet:
    @pytest.mark.parametrize("index", [0, 8191])
    def test_indexes_that_are_sent(self, host, qdp, index):
        host.script("Qdp_P4_Cmd")
        assert qdp.call("TableTunnelRewriteGet", index).calls == [read_at(19, index, 52)]

    @pytest.mark.parametrize("index", [8192, -1])
    def test_indexes_that_are_refused(self, qdp, index):
        assert qdp.call("TableTunnelRewriteGet", index) == refused()

    @pytest.mark.parametrize("is_ipv6", [0, 1])
    def test_entry(self, host, qdp, is_ipv6):
        word = is_ipv6 | 1 << 2 | 0x1ABCD << 5 | 2 << 22 | 0xEE << 24
        macs = bytes(range(1, 13))
        addresses = bytes([10, 0, 0, 1]) + b"\xff" * 12 + bytes([10, 0, 0, 2]) + bytes(12)
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<IHBB", word, 3, 4, 5) + macs + addresses])
        expected = {
            "isIpv6": is_ipv6,
            "geneve": 0,
            "vlanVld": 1,
            "tcCopy": 0,
            "labelOptVld": 0,
            "labelID": 0x1ABCD,
            "l2Type": 2,
            "vlanID": 3,
            "tc": 4,
            "ttl": 5,
            "smac": "01:02:03:04:05:06",
            "dmac": "07:08:09:0a:0b:0c",
            "ipsa": "a00:1:ffff:ffff:ffff:ffff:ffff:ffff" if is_ipv6 else "10.0.0.1",
            "ipda": "a00:2::" if is_ipv6 else "10.0.0.2",
        }
        assert qdp.call("TableTunnelRewriteGet", 1) == Outcome(expected, calls=[read_at(19, 1, 52)])
