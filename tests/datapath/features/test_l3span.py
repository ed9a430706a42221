"""The encapsulation of mirrored (L3 SPAN) traffic."""

import socket
import struct

import pytest

from adversity import starved
from observe import Call, Capacity, Outcome, refused

NO_ADDRESS = "Failed to convert destination IP address to binary form.\n\n"


def call(switch, low_byte, destination, value=0):
    """`value` is what stands in the three bytes behind the flag."""
    request = struct.pack("<I", switch) + bytes([low_byte]) + value.to_bytes(3, "little") + destination
    return Call("Qdp_Get_L3SPAN_Record", [request.ljust(24, b"\0"), Capacity(120)])


def ipv4(text):
    return socket.inet_pton(socket.AF_INET, text)


def ipv6(text):
    return socket.inet_pton(socket.AF_INET6, text)


def addresses(source, destination):
    """The 32 bytes in which both forms of the addresses lie."""
    if len(source) == 16:
        return source + destination
    return b"\xee" * 4 + source + destination + b"\xee" * 20


def encapsulation(dmac, smac, area):
    return bytes.fromhex(dmac) + bytes.fromhex(smac) + b"\xee" * 10 + area


def record(geneve_area, gre_area, valid=1, geneve=1, geneve_ipv6=0, gre_ipv6=0, port=0xFFFFFFFF, mtu=9000, to=6081):
    return (
        struct.pack("<IHHbbBB", port, mtu, to, valid, geneve, geneve_ipv6, gre_ipv6)
        + encapsulation("0a0b0c0d0e0f", "121314151617", geneve_area)
        + encapsulation("fffefdfcfbfa", "020304050607", gre_area)
    )


V4 = addresses(ipv4("10.0.0.1"), ipv4("10.0.0.2"))
OTHER_V4 = addresses(ipv4("192.168.255.254"), ipv4("255.255.255.255"))
V6 = addresses(ipv6("fe80::1"), ipv6("2001:db8::ff"))
OTHER_V6 = addresses(ipv6("::"), ipv6("1:2:3:4:5:6:7:8"))

HEAD = {"isValid": 1, "srcPort": 0xFFFFFFFF, "dstPort": 6081, "mtu": 9000, "isGeneve": 1}
GENEVE_MACS = {"geneve_smac": "12:13:14:15:16:17", "geneve_dmac": "0a:0b:0c:0d:0e:0f"}
GRE_MACS = {"gre_smac": "02:03:04:05:06:07", "gre_dmac": "ff:fe:fd:fc:fb:fa"}


class TestGetL3SPANRecord:
    @pytest.fixture
    def answered(self, host, qdp):
        """The result beside this record."""

        def answered(answer):
            host.script("Qdp_Get_L3SPAN_Record", outputs=[answer])
            return qdp.call("GetL3SPANRecord", 3, 0, "10.20.30.40", 0)

        return answered

    one_call = [call(3, 0, ipv4("10.20.30.40"))]

    def test_addresses_in_ipv4_form(self, answered):
        assert answered(record(V4, OTHER_V4)) == Outcome(
            {
                **HEAD,
                **GENEVE_MACS,
                "geneve_src": "10.0.0.1",
                "geneve_dst": "10.0.0.2",
                **GRE_MACS,
                "gre_src": "192.168.255.254",
                "gre_dst": "255.255.255.255",
            },
            calls=self.one_call,
        )

    @pytest.mark.parametrize("flag", [1, 0x80, 0xFF])
    def test_addresses_in_ipv6_form(self, answered, flag):
        assert answered(record(V6, OTHER_V6, geneve_ipv6=flag, gre_ipv6=flag)) == Outcome(
            {
                **HEAD,
                **GENEVE_MACS,
                "geneve_src": "fe80::1",
                "geneve_dst": "2001:db8::ff",
                **GRE_MACS,
                "gre_src": "::",
                "gre_dst": "1:2:3:4:5:6:7:8",
            },
            calls=self.one_call,
        )

    def test_each_encapsulation_has_its_own_form(self, answered):
        shown = answered(record(V6, V4, geneve_ipv6=1, gre_ipv6=0)).result
        assert (shown["geneve_src"], shown["gre_src"]) == ("fe80::1", "10.0.0.1")
        shown = answered(record(V4, V6, geneve_ipv6=0, gre_ipv6=1)).result
        assert (shown["geneve_dst"], shown["gre_dst"]) == ("10.0.0.2", "2001:db8::ff")

    def test_gre_alone(self, answered):
        assert answered(record(V4, V4, geneve=0)) == Outcome(
            {**HEAD, "isGeneve": 0, **GRE_MACS, "gre_src": "10.0.0.1", "gre_dst": "10.0.0.2"}, calls=self.one_call
        )

    def test_a_record_that_is_not_valid_shows_nothing_else(self, answered):
        assert answered(record(V4, V4, valid=0)) == Outcome({"isValid": 0}, calls=self.one_call)

    def test_an_answer_without_bytes_is_not_valid(self, host, qdp):
        host.script("Qdp_Get_L3SPAN_Record")
        assert qdp.result("GetL3SPANRecord", 3, 0, "10.20.30.40", 0) == {"isValid": 0}

    @pytest.mark.parametrize("valid, geneve", [(-1, -128), (127, 2), (-128, -1)])
    def test_flags_are_signed_bytes(self, answered, valid, geneve):
        shown = answered(record(V4, V4, valid=valid, geneve=geneve)).result
        assert (shown["isValid"], shown["isGeneve"], len(shown)) == (valid, geneve, 13)

    def test_numbers_are_unsigned(self, answered):
        shown = answered(record(V4, V4, port=0x80000000, mtu=0xFFFF, to=0x8000)).result
        assert (shown["srcPort"], shown["mtu"], shown["dstPort"]) == (0x80000000, 0xFFFF, 0x8000)

    @pytest.mark.parametrize(
        "flag, low_byte", [(0, 0), (256, 0), (0xFFFFFF00, 0), (1, 1), (255, 255), (257, 1), (-1, 255), (0x80, 0x80)]
    )
    def test_the_low_byte_of_the_flag_is_the_address_family(self, host, qdp, flag, low_byte):
        host.script("Qdp_Get_L3SPAN_Record")
        text, address = ("fd00::7", ipv6("fd00::7")) if low_byte else ("10.0.0.7", ipv4("10.0.0.7"))
        assert qdp.call("GetL3SPANRecord", 0, flag, text, 0) == Outcome(
            {"isValid": 0}, calls=[call(0, low_byte, address)]
        )

    @pytest.mark.parametrize(
        "value, low", [(0, 0), (1, 1), (0xABCDEF, 0xABCDEF), (0x12345678, 0x345678), (0xFF000000, 0), (-1, 0xFFFFFF)]
    )
    @pytest.mark.parametrize("low_byte, address", [(0, "10.0.0.7"), (1, "fd00::7")])
    def test_the_low_24_bits_of_the_value_follow_the_flag(self, host, qdp, value, low, low_byte, address):
        host.script("Qdp_Get_L3SPAN_Record")
        packed = ipv6(address) if low_byte else ipv4(address)
        assert qdp.call("GetL3SPANRecord", 0, low_byte, address, value) == Outcome(
            {"isValid": 0}, calls=[call(0, low_byte, packed, low)]
        )

    @pytest.mark.parametrize(
        "flag, text",
        [
            (0, "fd00::7"),
            (256, "fd00::7"),
            (1, "10.0.0.7"),
            (257, "10.0.0.7"),
            (0, ""),
            (1, ""),
            (0, "10.0.0"),
            (0, "10.0.0.256"),
            (0, " 10.0.0.7"),
            (1, "fd00:::7"),
            (0, "host"),
        ],
    )
    def test_a_text_that_is_no_address_of_the_family(self, qdp, flag, text):
        assert qdp.call("GetL3SPANRecord", 0, flag, text, 0) == Outcome(None, NO_ADDRESS)

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library_is_silent(self, host, qdp, status):
        host.fail("Qdp_Get_L3SPAN_Record", status)
        assert qdp.call("GetL3SPANRecord", 3, 0, "10.20.30.40", 0) == Outcome(None, calls=self.one_call)

    def test_the_switch_number_is_checked_before_the_address(self, qdp):
        assert qdp.call("GetL3SPANRecord", 16, 0, "host", 0) == refused()

    def test_the_last_switch_number(self, host, qdp):
        host.script("Qdp_Get_L3SPAN_Record")
        assert qdp.call("GetL3SPANRecord", 15, 0, "10.0.0.7", 0) == Outcome(
            {"isValid": 0}, calls=[call(15, 0, ipv4("10.0.0.7"))]
        )

    @pytest.mark.parametrize("destination", ["10.20.0.5", "10.20.0.6", "10.20.0.9"])
    def test_lack_of_memory(self, qdp, destination):
        assert starved(qdp, "GetL3SPANRecord", 0, 0, destination, 0) == [
            Outcome(None, "Failed to allocate mac table.\n", left_set=(MemoryError, "")),
            *[
                Outcome(None, left_set=(SystemError, text))
                for text in ("Failed to set dict item.\n", "Failed to allocate buffer.\n")
                if destination != "10.20.0.9" or "dict" in text
            ],
        ]

    @pytest.mark.parametrize(
        "switch, flag, destination, is_geneve, source",
        [
            (0, 0, "10.20.0.5", 1, "192.168.10.1"),
            (0, 0, "10.20.0.6", 0, "192.168.10.1"),
            (0, 1, "2001:db8::5", 1, "fd00:10::1"),
            (0, 1, "2001:db8::6", 0, "fd00:10::1"),
            (1, 0, "10.20.0.5", 1, "192.168.10.1"),
        ],
    )
    def test_embedded_host_knows_some_destinations(self, qdp, switch, flag, destination, is_geneve, source):
        shown = qdp.result("GetL3SPANRecord", switch, flag, destination, 0x123456)
        assert (shown["isGeneve"], "geneve_src" in shown, shown["gre_src"]) == (is_geneve, bool(is_geneve), source)

    @pytest.mark.parametrize("switch, flag, destination", [(0, 0, "10.20.0.7"), (1, 1, "2001:db8::5"), (0, 1, "::")])
    def test_embedded_host_has_no_valid_record_of_others(self, qdp, switch, flag, destination):
        assert qdp.result("GetL3SPANRecord", switch, flag, destination, 0) == {"isValid": 0}

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("GetL3SPANRecord", 3, 0, "10.20.0.5", 0) == Outcome(
            None, calls=[call(3, 0, ipv4("10.20.0.5"))]
        )
