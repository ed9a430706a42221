"""The tables of one entry."""

import struct

from observe import Outcome
from smartnic.tables.requests import read_at


class TestTableDSCPConfGet:
    def test_entry(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[b"\xfc\x01\xf0\xff"])
        expected = {"ipv4DscpMask": 252, "ipv4DscpValue": 1, "ipv6DscpMask": 240, "ipv6DscpValue": 255}
        assert qdp.call("TableDSCPConfGet") == Outcome(expected, calls=[read_at(22, 0, 4)])


class TestTableUplinkMapGet:
    def test_ports_and_tags_alternate(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<8H", 1, 2, 3, 4, 11, 12, 13, 0xFFFF)])
        expected = {
            "lport0": 1,
            "lport0_tag": 11,
            "lport1": 2,
            "lport1_tag": 12,
            "lport2": 3,
            "lport2_tag": 13,
            "lport3": 4,
            "lport3_tag": 0xFFFF,
        }
        assert qdp.call("TableUplinkMapGet") == Outcome(expected, calls=[read_at(23, 0, 16)])
