"""The tables of ports and VLANs, and those of the classic forwarding mode."""

import struct

import pytest

from observe import Outcome, refused
from smartnic.tables.requests import read_at, read_with


class TestTableInputGet:
    def test_an_entry_without_a_valid_port_has_eight_keys(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<8H", *range(1, 9)) + b"\xff\x0e\xff\xff"])
        expected = {
            "lifId": 1,
            "portId": 2,
            "pinnedPortId": 6,
            "l2Seg": 7,
            "isUplink": 1,
            "isP2P": 1,
            "skipUkucRepl": 1,
            "isWyxValid": 0,
        }
        assert qdp.call("TableInputGet", 0) == Outcome(expected, calls=[read_at(8, 0, 20)])

    def test_an_entry_with_a_valid_port_has_fifteen(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<8H", *range(1, 9)) + b"\x2a\x01\xff\xff"])
        expected = {
            "lifId": 1,
            "portId": 2,
            "pinnedPortId": 6,
            "l2Seg": 7,
            "isUplink": 0,
            "isP2P": 0,
            "skipUkucRepl": 0,
            "isWyxValid": 1,
            "wyxPortId": 3,
            "repPortId": 4,
            "srcTag": 5,
            "pktCapture": 0,
            "useVlanMapping": 1,
            "flowKeyType": "L4",
            "fwdMode": "flow",
        }
        assert qdp.call("TableInputGet", 1023) == Outcome(expected, calls=[read_at(8, 1023, 20)])

    @pytest.mark.parametrize("code", range(8))
    def test_names(self, host, qdp, code):
        host.script("Qdp_P4_Cmd", outputs=[bytes(16) + bytes([code | code << 5, 1])])
        entry = qdp.result("TableInputGet", 0)
        assert entry["flowKeyType"] == ["L2", "L3", "L4", "Unknown", "Unknown", "Unknown", "Unknown", "Unknown"][code]
        assert entry["fwdMode"] == ("flow" if code == 1 else "classic")

    @pytest.mark.parametrize("lif", [1024, -1])
    def test_lifs_that_are_refused(self, qdp, lif):
        assert qdp.call("TableInputGet", lif) == refused()


class TestTableOutputGet:
    def test_entry(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[bytes.fromhex("0100 0200 0300 b5 06 08 09 0b0a 0d0c 0e 0f")])
        expected = {
            "portId": 1,
            "lifId": 2,
            "dstTag": 3,
            "vlanStrip": 1,
            "pktCapture": 0,
            "rssInner": 1,
            "vlanPush": 0,
            "hckMetadata": 1,
            "nports": 5,
            "egressPort1": 8,
            "egressPort2": 9,
            "vlanPushId": 0x0A0B,
            "accessVlanId": 0x0C0D,
            "rssOverride": 14,
            "rssOverrideQid": 15,
            "p4plusAppId": "elemetry",
        }
        assert qdp.call("TableOutputGet", 1023) == Outcome(expected, calls=[read_at(11, 1023, 16)])

    @pytest.mark.parametrize(
        "code, name",
        [
            (0, "default"),
            (1, "classic nic"),
            (2, "rdma"),
            (3, "tcptls"),
            (4, "ipsec"),
            (5, "storage"),
            (6, "elemetry"),
            (7, "cpu"),
            (8, "raw redir"),
            (9, "p4pt"),
            (10, "ipsec transport"),
            (11, "kovnet3 upt"),
            (12, "unknown"),
            (255, "unknown"),
        ],
    )
    def test_applications(self, host, qdp, code, name):
        host.script("Qdp_P4_Cmd", outputs=[bytes(7) + bytes([code])])
        assert qdp.result("TableOutputGet", 0)["p4plusAppId"] == name

    @pytest.mark.parametrize("port", [1024, -1])
    def test_ports_that_are_refused(self, qdp, port):
        assert qdp.call("TableOutputGet", port) == refused()


class TestTableMuxVlanGet:
    @pytest.mark.parametrize(
        "vlan, selector, table", [(1, 0, 9), (4094, 0, 9), (1, 1, 10), (4094, 5, 10), (7, -1, 10), (7, 1 << 31, 10)]
    )
    def test_requests(self, host, qdp, vlan, selector, table):
        host.script("Qdp_P4_Cmd")
        assert qdp.call("TableMuxVlanGet", vlan, selector).calls == [read_at(table, vlan, 16)]

    @pytest.mark.parametrize("selector", [0, 1])
    @pytest.mark.parametrize("vlan", [0, 4095, 4096, 65537, -1])
    def test_vlans_that_are_refused(self, qdp, vlan, selector):
        assert qdp.call("TableMuxVlanGet", vlan, selector) == refused()

    def test_valid_stays_in_second_place(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<6H", *range(1, 7)) + b"\x19"])
        expected = {
            "vlanId": 1,
            "valid": 1,
            "lif0": 2,
            "lif1": 3,
            "srcPortId": 4,
            "repPortId": 6,
            "srcTag": 5,
            "pktCapture": 1,
            "flowKeyType": "L3",
        }
        assert qdp.call("TableMuxVlanGet", 5, 0) == Outcome(expected, calls=[read_at(9, 5, 16)])


class TestTableVlanMapGet:
    @pytest.mark.parametrize(
        "vlan, value, key",
        [
            (0, 0, "0000 0000"),
            (4094, 65535, "fe0f ffff"),
            (65541, 0x12345678, "0500 7856"),  # the low 16 bits of both
            (-65536, -1, "0000 ffff"),
        ],
    )
    def test_both_values_keep_their_low_16_bits(self, host, qdp, vlan, value, key):
        host.script("Qdp_P4_Cmd", outputs=[b"\x01\x02\x03\x04"])
        expected = {"rmac_vrf": 0x0201, "l2Seg": 0x0403}
        assert qdp.call("TableVlanMapGet", vlan, value) == Outcome(
            expected, calls=[read_with(12, bytes.fromhex(key), 4)]
        )

    @pytest.mark.parametrize("vlan", [4095, 69631, 65535, -1, 4096])
    def test_vlans_whose_low_16_bits_are_refused(self, qdp, vlan):
        assert qdp.call("TableVlanMapGet", vlan, 0) == refused()


class TestTableL2SegGet:
    @pytest.mark.parametrize("segment", [0, 1023, 1024, 65536, 1 << 31, 0xFFFFFFFF])
    def test_any_segment_is_asked_for(self, host, qdp, segment):
        host.script("Qdp_P4_Cmd", outputs=[b"\x05\xff\x34\x12"])
        expected = {"host_rcvr_ukuc": 1, "host_rcvr_ukmc": 0, "host_rcvr_bcast": 1, "replicate_idx": 0x1234}
        assert qdp.call("TableL2SegGet", segment) == Outcome(expected, calls=[read_at(13, segment, 4)])


class TestTableRegMACGet:
    @pytest.mark.parametrize(
        "value, mac, key",
        [
            (0, 0x0A0B0C0D0E0F, "0000 0f0e0d0c0b0a"),
            (0x12345, 0x1F0A0B0C0D0E0F, "4523 0f0e0d0c0b0a"),  # what lies above 16 and 48 bits is dropped
            (0xFFFF, -1, "ffff ffffffffffff"),
            (1, (1 << 63) - 1, "0100 ffffffffffff"),
            (1, 1 << 48, "0100 000000000000"),
        ],
    )
    def test_keys(self, host, qdp, value, mac, key):
        host.script("Qdp_P4_Cmd", outputs=[bytes.fromhex("0201 0480 08070605")])
        expected = {"dstPort": 0x0102, "dstPinnedPort": 4, "multicastEn": 1, "qid": 0x05060708}
        assert qdp.call("TableRegMACGet", value, mac) == Outcome(
            expected, calls=[read_with(14, bytes.fromhex(key), 8)]
        )

    def test_a_mac_beyond_64_bits_does_not_parse(self, qdp):
        assert qdp.call("TableRegMACGet", 0, 1 << 63).left_set[0] is OverflowError
