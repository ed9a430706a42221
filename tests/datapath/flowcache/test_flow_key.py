"""The texts of flow keys, as other readers of the datapath's records get them."""

import ctypes
import struct

import pytest

from datapath.flowcache.records import IPV6, L3, L4, golden, ipv4, ipv6, key

FIRST, SECOND = bytes.fromhex("021000000001"), bytes.fromhex("0aff00c00d0e")
KEY_TEXTS = golden("keys.txt")

# The addresses of an IPv4 key stand one behind the other; what follows them is not looked at.
PAIR = ipv4("10.0.0.1") + ipv4("10.0.0.2")
PORTS = bytes.fromhex("0050c000")

KEYS = {
    "tcp over ipv4": key(
        L4, FIRST, SECOND, 100, 5, PORTS, 69632, 6, ipv4("10.0.0.1") + ipv4("192.168.255.20"), top_bit=1
    ),
    "flags 0": key(0, FIRST, SECOND, ports=PORTS, vni=7, protocol=6, addresses=PAIR),
    "layer 2 with the ipv6 flag": key(IPV6, FIRST, SECOND, ports=PORTS, protocol=58, addresses=ipv6("fe80::1") * 2),
    "layer 3 over ipv4": key(L3, FIRST, SECOND, ports=PORTS, protocol=6, addresses=PAIR),
    "layer 3 over ipv6": key(
        L3 | IPV6, vlan=1, tag=256, ports=PORTS, protocol=17, addresses=ipv6("2001:db8::1") + ipv6("fe80::2")
    ),
    "both layer flags": key(L3 | L4, ports=bytes.fromhex("00350102"), protocol=17, addresses=PAIR),
    "icmp": key(L4, ports=struct.pack("<HH", 8, 0x1234), protocol=1, addresses=PAIR),
    "icmpv6": key(
        L4 | IPV6, ports=struct.pack("<HH", 128, 0xFF00), protocol=58, addresses=ipv6("fe80::1") + ipv6("ff02::1")
    ),
    "icmp at layer 3": key(L3, ports=struct.pack("<HH", 8, 9), protocol=1, addresses=PAIR),
    "largest": key(15, b"\xff" * 6, b"\xff" * 6, 0xFFF, 0x7FFF, b"\xff" * 4, 0xFFFFFF, 255, b"\xff" * 32, top_bit=1),
    "mapped ipv4": key(
        L4 | IPV6,
        vlan=16,
        tag=128,
        ports=bytes.fromhex("00010100"),
        vni=65536,
        protocol=6,
        addresses=ipv6("::ffff:10.0.0.1") + ipv6("::"),
    ),
}


class TestFCFlowKeyToStr:
    def written(self, exported, given):
        """(result, text, the key afterwards) of a key in a buffer of its own, and an output of exactly 256 bytes."""
        memory = ctypes.create_string_buffer(given, len(given))
        out = ctypes.create_string_buffer(b"#" * 256, 256)
        result = exported.FCFlowKeyToStr(memory, out)
        return result, out.value.decode(), memory.raw

    def test_all_golden_lines_are_tested(self):
        assert list(KEYS) == list(KEY_TEXTS)

    @pytest.mark.parametrize("case", KEY_TEXTS)
    def test_golden_line(self, exported, case):
        result, text, _ = self.written(exported, KEYS[case])
        assert text == KEY_TEXTS[case]
        assert result == 14  # of the last column alone: two blanks and twelve characters

    @pytest.mark.parametrize("digits", range(1, 8))
    def test_columns_of_all_lengths(self, exported, digits):
        """The greatest VNI of so many digits, and the least of one more, in a column of seven and two blanks."""
        for vni in (10**digits - 1, 10**digits):
            expected = KEY_TEXTS["flags 0"].replace("  7      ", f"  {vni:<7}")
            assert expected != KEY_TEXTS["flags 0"]
            _, text, _ = self.written(exported, key(0, FIRST, SECOND, ports=PORTS, vni=vni, protocol=6, addresses=PAIR))
            assert text == expected

    @pytest.mark.parametrize("first", range(0, 256, 4))
    def test_bytes_of_all_values_in_an_address(self, exported, first):
        address = ".".join(str(first + i) for i in range(4))
        expected = KEY_TEXTS["layer 3 over ipv4"].replace(f"{'10.0.0.2':45}", f"{address:45}")
        assert expected != KEY_TEXTS["layer 3 over ipv4"]
        addresses = ipv4("10.0.0.1") + ipv4(address)
        _, text, _ = self.written(exported, key(L3, FIRST, SECOND, ports=PORTS, protocol=6, addresses=addresses))
        assert text == expected

    @pytest.mark.parametrize("flags", range(16))
    def test_clears_in_place_what_has_no_meaning(self, exported, flags):
        given = key(
            flags, FIRST, SECOND, 0xABC, 0x1234, b"\x01\x02\x03\x04", 0xC0FFEE, 6, bytes(range(100, 132)), top_bit=1
        )
        expected = bytearray(given)
        if not flags & L4:
            expected[16:20] = bytes(4)
            expected[23] = 0
            if not flags & L3:
                expected[24:56] = bytes(32)
        assert self.written(exported, given)[2] == bytes(expected)

    def test_a_key_that_is_not_aligned(self, exported):
        memory = ctypes.create_string_buffer(b"#" + KEYS["flags 0"] + b"#", 66)
        out = ctypes.create_string_buffer(256)
        exported.FCFlowKeyToStr(ctypes.c_void_p(ctypes.addressof(memory) + 1), out)
        assert out.value.decode() == KEY_TEXTS["flags 0"]
        assert (memory.raw[:1], memory.raw[-1:], memory.raw[25:57]) == (b"#", b"#", bytes(32))
