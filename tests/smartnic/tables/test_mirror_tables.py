"""The tables of mirror sessions."""

import socket
import struct

import pytest

from observe import Outcome, refused
from smartnic.tables.requests import read_at


class TestTableMirrorGet:
    @pytest.mark.parametrize(
        "session, selector, index", [(0, 0, 0), (3, 0, 3), (7, 0, 7), (0, 1, 8), (3, 1, 11), (7, 9, 15), (7, -1, 15)]
    )
    def test_requests(self, host, qdp, session, selector, index):
        host.script("Qdp_P4_Cmd")
        assert qdp.call("TableMirrorGet", session, selector).calls == [read_at(15, index, 24)]

    @pytest.mark.parametrize("session", [8, 9, -1])
    @pytest.mark.parametrize("selector", [0, 1])
    def test_sessions_that_are_refused(self, qdp, session, selector):
        assert qdp.call("TableMirrorGet", session, selector) == refused()

    def test_entry(self, host, qdp):
        entry = struct.pack("<H6sIIIHH", 1, bytes(range(10, 16)), 0xABCDEF05, 0x00100080, 6, 7, 8)
        host.script("Qdp_P4_Cmd", outputs=[entry])
        expected = {
            "dstPort": 1,
            "reason": 5,
            "tunnelVNI": 0xABCDEF,
            "geneveOptionVld": 0,
            "tunnelRewriteVld": 0,
            "pktCapture": 0,
            "mirrorSW": 0,
            "mirrorL3": 0,
            "vlanPush": 0,
            "TunnelIdx": 1,
            "vlanID": 1,
            "flowCookie": 6,
            "uplinkLport0": 7,
            "uplinkLport1": 8,
            "geneveOptionDMAC": "0a:0b:0c:0d:0e:0f",
        }
        assert qdp.call("TableMirrorGet", 0, 0) == Outcome(expected, calls=[read_at(15, 0, 24)])

    def test_the_tunnel_index_has_13_bits(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[bytes(12) + struct.pack("<I", 0x000FFF80)])
        entry = qdp.result("TableMirrorGet", 0, 0)
        assert (entry["TunnelIdx"], entry["vlanID"], entry["vlanPush"]) == (8191, 0, 0)


class TestTableMirrorL3Get:
    @pytest.mark.parametrize(
        "first, second, index", [(0, 0, 0), (5, 0, 5), (0, 1, 8), (5, 1023, 8189), (0, 1023, 8184)]
    )
    def test_requests(self, host, qdp, first, second, index):
        host.script("Qdp_P4_Cmd")
        assert qdp.call("TableMirrorL3Get", first, second).calls == [read_at(16, index, 64)]

    @pytest.mark.parametrize("first, second", [(6, 0), (0, 1024), (-1, 0), (0, -1), (7, 1023)])
    def test_bounds_that_are_refused(self, qdp, first, second):
        assert qdp.call("TableMirrorL3Get", first, second) == refused()

    @pytest.mark.parametrize("is_ipv6", [0, 1])
    def test_entry(self, host, qdp, is_ipv6):
        source, destination = bytes(range(16)), b"\x20\x01\x0d\xb8" + bytes(11) + b"\x07"
        entry = struct.pack(
            "<HBB6s6sHHBBHII16s16s", 1, 0xA2 | is_ipv6 << 2, 0xFD, bytes(range(1, 7)), bytes(range(7, 13)),
            2, 3, 4, 5, 6 | 7 << 6, 8, 0xFFFFFFFF, source, destination,
        )  # fmt: skip
        host.script("Qdp_P4_Cmd", outputs=[entry])
        expected = {
            "l3Idx": 1,
            "mirrorType": 2,
            "isIpv6": is_ipv6,
            "vlanVld": 0,
            "trunVld": 0,
            "cos": 5,
            "l2Type": 1,
            "erspanTSNs": 1,
            "vlanID": 2,
            "trunLen": 3,
            "tc": 4,
            "ttl": 5,
            "erspanHwId": 6,
            "erspanSessionId": 7,
            "greKeySeq": 8,
            "smac": "01:02:03:04:05:06",
            "dmac": "07:08:09:0a:0b:0c",
            "ipsa": "1:203:405:607:809:a0b:c0d:e0f" if is_ipv6 else "0.1.2.3",
            "ipda": "2001:db8::7" if is_ipv6 else "32.1.13.184",
        }
        assert socket.inet_pton(socket.AF_INET6, "1:203:405:607:809:a0b:c0d:e0f") == source
        assert qdp.call("TableMirrorL3Get", 0, 0) == Outcome(expected, calls=[read_at(16, 0, 64)])
