"""Mirror sessions and port mirrors."""

import socket
import struct

import pytest

from observe import Call, Capacity, Outcome

SESSIONS = Call("Qdp_P4_MirrorTable_Dump", [Capacity(2048)])


def session(first=0, destination_port=0, seventh=0, tunnel=0, vni=0, uplinks=(0, 0)):
    return struct.pack("<B3xH1xB12xiiHH", first, destination_port, seventh, tunnel, vni, *uplinks)


def dump(*entries, count=None):
    return struct.pack("<II", 0xDEAD, len(entries) if count is None else count) + b"".join(entries)


EMPTY_SESSION = "OL:0 Idx:0 Dir:0 D-port:0 Tunnel:0 TunnelIdx:0vni:0:uplinkLport0:0:uplinkLport1:0"


class TestP4MirrorTableDump:
    def line(self, host, qdp, entry):
        assert len(entry) == 32
        host.script("Qdp_P4_MirrorTable_Dump", outputs=[dump(entry)])
        (line,) = qdp.result("P4MirrorTableDump")
        return line

    def test_one_line_a_session(self, host, qdp):
        host.script(
            "Qdp_P4_MirrorTable_Dump", outputs=[dump(session(0b11011, 17, 4, 3, 5001, (1, 2)), session(0b00100, 18))]
        )
        assert qdp.call("P4MirrorTableDump") == Outcome(
            [
                "OL:1 Idx:5 Dir:1 D-port:17 Tunnel:1 TunnelIdx:3vni:5001:uplinkLport0:1:uplinkLport1:2",
                "OL:0 Idx:2 Dir:0 D-port:18 Tunnel:0 TunnelIdx:0vni:0:uplinkLport0:0:uplinkLport1:0",
            ],
            calls=[SESSIONS],
        )

    @pytest.mark.parametrize(
        "entry, line",
        [
            (session(), EMPTY_SESSION),
            (session(first=0x01), EMPTY_SESSION.replace("OL:0", "OL:1")),
            (session(first=0x0E), EMPTY_SESSION.replace("Idx:0 ", "Idx:7 ")),
            (session(first=0x10), EMPTY_SESSION.replace("Dir:0", "Dir:1")),
            (session(first=0xE0), EMPTY_SESSION),
            (session(destination_port=0xFFFF), EMPTY_SESSION.replace("D-port:0", "D-port:65535")),
            (session(seventh=0x04), EMPTY_SESSION.replace("Tunnel:0", "Tunnel:1")),
            (session(seventh=0xFB), EMPTY_SESSION),
            (session(tunnel=-1), EMPTY_SESSION.replace("TunnelIdx:0", "TunnelIdx:-1")),
            (session(tunnel=-(1 << 31)), EMPTY_SESSION.replace("TunnelIdx:0", "TunnelIdx:-2147483648")),
            (session(vni=-5), EMPTY_SESSION.replace("vni:0", "vni:-5")),
            (session(vni=(1 << 31) - 1), EMPTY_SESSION.replace("vni:0", "vni:2147483647")),
            (
                session(uplinks=(0xFFFF, 0x8000)),
                EMPTY_SESSION.replace("Lport0:0", "Lport0:65535").replace("Lport1:0", "Lport1:32768"),
            ),
        ],
    )
    def test_every_field_and_no_other(self, host, qdp, entry, line):
        assert self.line(host, qdp, entry) == line

    def test_bytes_that_are_not_read(self, host, qdp):
        read = {0, 4, 5, 7, *range(20, 32)}
        assert self.line(host, qdp, bytes(0 if i in read else 0xFF for i in range(32))) == EMPTY_SESSION

    def test_no_sessions(self, host, qdp):
        host.script("Qdp_P4_MirrorTable_Dump", outputs=[dump()])
        assert qdp.call("P4MirrorTableDump", "ignored", 9) == Outcome([], calls=[SESSIONS])

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script("Qdp_P4_MirrorTable_Dump")
        assert qdp.call("P4MirrorTableDump") == Outcome([], calls=[SESSIONS])

    def test_a_full_dump(self, host, qdp):
        host.script("Qdp_P4_MirrorTable_Dump", outputs=[dump(*[session(destination_port=i) for i in range(63)])])
        assert qdp.result("P4MirrorTableDump") == [
            EMPTY_SESSION.replace("D-port:0", f"D-port:{i}") for i in range(63)
        ]

    def test_sessions_beyond_the_buffer_read_as_zero(self, host, qdp):
        host.script("Qdp_P4_MirrorTable_Dump", outputs=[dump(*[session(first=1, vni=9)] * 66)])
        # 63 fit; of the next one the first 24 bytes are still in the buffer.
        assert qdp.result("P4MirrorTableDump") == (
            [EMPTY_SESSION.replace("OL:0", "OL:1").replace("vni:0", "vni:9")] * 63
            + [EMPTY_SESSION.replace("OL:0", "OL:1")]
            + [EMPTY_SESSION] * 2
        )

    def test_embedded_host(self, qdp):
        assert qdp.result("P4MirrorTableDump") == [
            "OL:1 Idx:0 Dir:0 D-port:8 Tunnel:0 TunnelIdx:-1vni:0:uplinkLport0:8:uplinkLport1:9",
            "OL:1 Idx:1 Dir:0 D-port:8 Tunnel:1 TunnelIdx:17vni:5001:uplinkLport0:8:uplinkLport1:9",
            "OL:1 Idx:0 Dir:1 D-port:9 Tunnel:0 TunnelIdx:-1vni:0:uplinkLport0:8:uplinkLport1:9",
            "OL:1 Idx:1 Dir:1 D-port:9 Tunnel:0 TunnelIdx:-1vni:0:uplinkLport0:8:uplinkLport1:9",
            "OL:1 Idx:2 Dir:1 D-port:9 Tunnel:1 TunnelIdx:18vni:5002:uplinkLport0:8:uplinkLport1:9",
        ]


def mirror(first=0, gre_key=0, eighth=0, hardware=0, eleventh=0, snap=0, source=b"", destination=b"", erspan=0):
    return struct.pack(
        "<HxxiBBxB14xH16s16sHxx", first, gre_key, eighth, hardware, eleventh, snap, source, destination, erspan
    )


def ipv6(text):
    return socket.inet_pton(socket.AF_INET6, text)


def column(text):
    return "  " + text.ljust(45)


def mirror_call(first, second):
    return Call("Qdp_P4_PortMirrorTable_Dump", [struct.pack("<HH", first, second), Capacity(2048)])


EMPTY = "OL:0 Idx:0 fcPort:0 greKey:0 OTHER cos:0 ns:0 hwID:0 snapLen:0 erspanID:0 SA:0.0.0.0 DA:0.0.0.0"
WIDEST = "1111:2222:3333:4444:5555:6666:7777:8888"


class TestP4PortMirrorTableDump:
    def line(self, host, qdp, entry):
        assert len(entry) == 64
        host.script("Qdp_P4_PortMirrorTable_Dump", outputs=[dump(entry)])
        (line,) = qdp.result("P4PortMirrorTableDump", 1, 2)
        return line

    def test_ipv4_and_ipv6(self, host, qdp):
        host.script(
            "Qdp_P4_PortMirrorTable_Dump",
            outputs=[
                dump(
                    mirror(0x123B, 77, 0x21, 8, 0x30, 128, bytes([10, 0, 0, 1]), bytes([192, 168, 255, 9]), 11),
                    mirror(0, 0, 0x06, source=ipv6("fd00::1"), destination=ipv6("::")),
                )
            ],
        )
        assert qdp.call("P4PortMirrorTableDump", 3, 4) == Outcome(
            [
                "OL:1 Idx:5 fcPort:291 greKey:77 GRE_ONLY cos:3 ns:1 hwID:8 snapLen:128 erspanID:11 "
                "SA:10.0.0.1 DA:192.168.255.9",
                "OL:0 Idx:0 fcPort:0 greKey:0 ERSPAN2 cos:0 ns:0 hwID:0 snapLen:0 erspanID:0 "
                f"SA:{column('fd00::1')} DA:{column('::')}",
            ],
            calls=[mirror_call(3, 4)],
        )

    @pytest.mark.parametrize(
        "entry, line",
        [
            (mirror(), EMPTY),
            (mirror(first=0x0001), EMPTY.replace("OL:0", "OL:1")),
            (mirror(first=0x000E), EMPTY.replace("Idx:0", "Idx:7")),
            (mirror(first=0x0010), EMPTY.replace("fcPort:0", "fcPort:1")),
            (mirror(first=0xFFF0), EMPTY.replace("fcPort:0", "fcPort:4095")),
            (mirror(gre_key=-1), EMPTY.replace("greKey:0", "greKey:-1")),
            (mirror(gre_key=-(1 << 31)), EMPTY.replace("greKey:0", "greKey:-2147483648")),
            (mirror(eighth=1), EMPTY.replace("OTHER", "GRE_ONLY")),
            (mirror(eighth=2), EMPTY.replace("OTHER", "ERSPAN2")),
            (mirror(eighth=3), EMPTY.replace("OTHER", "ERSPAN3")),
            (mirror(eighth=0x20), EMPTY.replace("ns:0", "ns:1")),
            (mirror(eighth=0xD8), EMPTY),
            (mirror(hardware=0xFF), EMPTY.replace("hwID:0", "hwID:255")),
            (mirror(eleventh=0x70), EMPTY.replace("cos:0", "cos:7")),
            (mirror(eleventh=0x10), EMPTY.replace("cos:0", "cos:1")),
            (mirror(eleventh=0x8F), EMPTY),
            (mirror(snap=0xFFFF), EMPTY.replace("snapLen:0", "snapLen:65535")),
            (mirror(erspan=0x8000), EMPTY.replace("erspanID:0", "erspanID:32768")),
            (mirror(source=b"\xff" * 16), EMPTY.replace("SA:0.0.0.0", "SA:255.255.255.255")),
            (mirror(destination=bytes([1, 2, 3, 4, 5])), EMPTY.replace("DA:0.0.0.0", "DA:1.2.3.4")),
        ],
    )
    def test_every_field_and_no_other(self, host, qdp, entry, line):
        assert self.line(host, qdp, entry) == line

    def test_bytes_that_are_not_read(self, host, qdp):
        read = {0, 1, *range(4, 10), 11, *range(26, 32), *range(44, 48), 60, 61}
        assert self.line(host, qdp, bytes(0 if i in read else 0xFF for i in range(64))) == EMPTY

    @pytest.mark.parametrize("text", [WIDEST, "::ffff:10.0.0.1", "fe80::1"])
    def test_ipv6_addresses_are_written_as_a_column(self, host, qdp, text):
        entry = mirror(eighth=4, source=ipv6(text), destination=ipv6(WIDEST))
        assert self.line(host, qdp, entry) == EMPTY.replace("SA:0.0.0.0", "SA:" + column(text)).replace(
            "DA:0.0.0.0", "DA:" + column(WIDEST)
        )

    def test_the_longest_line(self, host, qdp):
        entry = mirror(0xFFFF, -(1 << 31), 0xFD, 255, 0xFF, 0xFFFF, ipv6(WIDEST), ipv6(WIDEST), 0xFFFF)
        assert self.line(host, qdp, entry) == (
            "OL:1 Idx:7 fcPort:4095 greKey:-2147483648 GRE_ONLY cos:7 ns:1 hwID:255 snapLen:65535 erspanID:65535 "
            f"SA:{column(WIDEST)} DA:{column(WIDEST)}"
        )

    @pytest.mark.parametrize(
        "arguments, passed_on", [((0, 0), (0, 0)), ((0xFFFF, 0x10000), (0xFFFF, 0)), ((-1, 0x12345), (0xFFFF, 0x2345))]
    )
    def test_the_arguments_keep_their_low_16_bits(self, host, qdp, arguments, passed_on):
        host.script("Qdp_P4_PortMirrorTable_Dump", outputs=[dump()])
        assert qdp.call("P4PortMirrorTableDump", *arguments) == Outcome([], calls=[mirror_call(*passed_on)])

    def test_a_full_dump(self, host, qdp):
        host.script("Qdp_P4_PortMirrorTable_Dump", outputs=[dump(*[mirror(erspan=i) for i in range(31)])])
        assert qdp.result("P4PortMirrorTableDump", 1, 2) == [
            EMPTY.replace("erspanID:0", f"erspanID:{i}") for i in range(31)
        ]

    def test_mirrors_beyond_the_buffer_read_as_zero(self, host, qdp):
        host.script("Qdp_P4_PortMirrorTable_Dump", outputs=[dump(*[mirror(hardware=1, erspan=9)] * 33)])
        # 31 fit; of the next one the first 56 bytes are still in the buffer.
        assert qdp.result("P4PortMirrorTableDump", 1, 2) == (
            [EMPTY.replace("hwID:0", "hwID:1").replace("erspanID:0", "erspanID:9")] * 31
            + [EMPTY.replace("hwID:0", "hwID:1")]
            + [EMPTY]
        )

    def test_embedded_host_shows_the_mirrors_of_a_port(self, qdp):
        assert qdp.result("P4PortMirrorTableDump", 1, 0) == [
            "OL:1 Idx:0 fcPort:1 greKey:100 GRE_ONLY cos:3 ns:0 hwID:0 snapLen:128 erspanID:0 SA:10.20.30.1 "
            "DA:10.20.30.99",
            "OL:1 Idx:1 fcPort:1 greKey:0 ERSPAN3 cos:3 ns:0 hwID:1 snapLen:128 erspanID:11 "
            f"SA:{column('fd00::1')} DA:{column('fd00::99')}",
        ]
        assert len(qdp.result("P4PortMirrorTableDump", 2, 0)) == 1
        assert qdp.result("P4PortMirrorTableDump", 3, 0) == []
