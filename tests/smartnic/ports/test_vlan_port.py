"""Mux VLAN ports. What all lists share is in test_page.py."""

import struct

import pytest

from observe import Outcome
from smartnic.commands import OPERATION, at_bounds, command


class TestVlanPortCreate:
    # muxVLAN, srcPort, repPort, flowKeyType, pfLif0, pfLif1, status
    GOOD = (4094, 513, 770, 2, 5, 6, 4095)
    BOUNDS = (4095, 1024, 1024, 3, 1024, 1024, 4096)

    @staticmethod
    def request(vlan, source, rep, flow_key, lif_0, lif_1, status):
        record = struct.pack("<HHHHHHBBH", vlan, lif_0 % 256, lif_1 % 256, source, 0, rep, flow_key, 0, status)
        return command(5, record)

    def test_request(self, host, qdp):
        host.script(OPERATION)
        payload = bytes.fromhex("fe0f 0500 0600 0102 0000 0203 02 00 ff0f")
        assert qdp.call("VlanPortCreate", *self.GOOD) == Outcome(None, calls=[command(5, payload)])

    @pytest.mark.parametrize("lif, sent", [(0, 0), (255, 255), (256, 0), (300, 44), (1023, 255)])
    def test_the_low_8_bits_of_a_pf_lif_are_sent(self, host, qdp, lif, sent):
        for place, arguments in enumerate([(9, 1, 2, 0, lif, 7, 0), (9, 1, 2, 0, 7, lif, 0)]):
            host.script(OPERATION)
            (call,) = qdp.call("VlanPortCreate", *arguments).calls
            lifs = struct.unpack_from("<HH", call.arguments[0], 6)
            assert (lifs[place], lifs[1 - place]) == (sent, 7)

    @pytest.mark.parametrize("arguments", [(0,) * 7, *at_bounds(GOOD, BOUNDS)])
    def test_bounds_that_are_accepted(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("VlanPortCreate", *arguments) == Outcome(None, calls=[self.request(*arguments)])

    def test_embedded_host_lists_a_created_port(self, qdp):
        qdp.result("VlanPortCreate", 4094, 900, 901, 2, 300, 4, 4095)
        assert qdp.result("VlanPortList", 280) == {
            "vlanlist": [
                {
                    "muxVLAN": 4094,
                    "pfLif0": 44,
                    "pfLif1": 4,
                    "srcPort": 900,
                    "repPort": 901,
                    "flowKeyType": 2,
                    "status": 4095,
                }
            ],
            "nextIndex": 0,
        }

    def test_embedded_host_gives_a_created_port_its_row_in_the_output_table(self, qdp):
        qdp.result("VlanPortCreate", 4094, 900, 901, 2, 3, 4, 4095)
        assert qdp.result("PortList", 436)["portlist"] == [
            {
                "dstPort": 900,
                "lifID": 3,
                "defaultVLAN": 0,
                "muxVLAN": 4094,
                "lifType": 4,
                "status": 4095,
                "tag": 2048 + 900,
            }
        ]

    def test_embedded_host_replaces_a_port_that_there_is(self, qdp):
        before = qdp.result("VlanPortList", 0)["vlanlist"]
        qdp.result("VlanPortCreate", 100, 900, 901, 2, 3, 4, 5)
        after = qdp.result("VlanPortList", 0)["vlanlist"]
        assert (after[0]["muxVLAN"], after[0]["srcPort"]) == (100, 900)
        assert after[1:] == before[1:]


class TestVlanPortUpdate:
    # muxVLAN, flowKeyType
    GOOD = (258, 1)
    BOUNDS = (4095, 3)

    @staticmethod
    def request(vlan, flow_key):
        return command(6, struct.pack("<HBB", vlan, flow_key, 0))

    @pytest.mark.parametrize("arguments", [(0, 0), GOOD, *at_bounds(GOOD, BOUNDS)])
    def test_request(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("VlanPortUpdate", *arguments) == Outcome(None, calls=[self.request(*arguments)])

    @pytest.mark.parametrize("flow_key", range(3))
    def test_embedded_host_lists_what_was_updated_and_the_rest_as_before(self, qdp, flow_key):
        before = qdp.result("VlanPortList", 101)["vlanlist"]
        qdp.result("VlanPortUpdate", 101, flow_key)
        assert qdp.result("VlanPortList", 101)["vlanlist"] == [{**before[0], "flowKeyType": flow_key}, *before[1:]]

    def test_embedded_host_has_no_such_port(self, qdp):
        assert qdp.call("VlanPortUpdate", 280, 0).printed == "Failed to update mux vlan based port\n"


class TestVlanPortList:
    @staticmethod
    def call(start):
        return command(7, struct.pack("<H", start), response=1024)

    def test_entries(self, host, qdp):
        answer = struct.pack("<HH", 2, 0x8000)
        answer += struct.pack("<6HBBH", 1, 2, 3, 4, 0xDEAD, 5, 6, 0xAB, 7)
        answer += struct.pack("<6HBBH", 0xFFFF, 0xFFFE, 0xFFFD, 0xFFFC, 0xFFFB, 0xFFFA, 0xF9, 0xF8, 0xFFF7)
        host.script(OPERATION, outputs=[answer])
        assert qdp.call("VlanPortList", 258) == Outcome(
            {
                "vlanlist": [
                    {
                        "muxVLAN": 1,
                        "pfLif0": 2,
                        "pfLif1": 3,
                        "srcPort": 4,
                        "repPort": 5,
                        "flowKeyType": 6,
                        "status": 7,
                    },
                    {
                        "muxVLAN": 0xFFFF,
                        "pfLif0": 0xFFFE,
                        "pfLif1": 0xFFFD,
                        "srcPort": 0xFFFC,
                        "repPort": 0xFFFA,
                        "flowKeyType": 0xF9,
                        "status": 0xFFF7,
                    },
                ],
                "nextIndex": 0x8000,
            },
            calls=[self.call(258)],
        )

    @pytest.mark.parametrize("start", [0, 1024, 65534])
    def test_start_indices_that_are_accepted(self, host, qdp, start):
        host.script(OPERATION)
        assert qdp.call("VlanPortList", start) == Outcome({"vlanlist": [], "nextIndex": 0}, calls=[self.call(start)])

    def test_embedded_host(self, qdp):
        page = qdp.result("VlanPortList", 101)
        assert page["vlanlist"][0] == {
            "muxVLAN": 101,
            "pfLif0": 3,
            "pfLif1": 4,
            "srcPort": 257,
            "repPort": 769,
            "flowKeyType": 1,
            "status": 1,
        }
        assert page["nextIndex"] == 101 + 63

    def test_embedded_host_binds_each_port_to_its_fc_port(self, qdp):
        ports = {port["muxVLAN"]: port for port in qdp.result("VlanPortList", 0)["vlanlist"]}
        for entry in qdp.result("ListSwitchMuxVLAN", 2, 0)["portlist"][:63]:
            assert ports[entry["vlanID"]]["srcPort"] == entry["portID"]
        for entry in qdp.result("ListSwitchShadowPorts", 2, 0)["portlist"][:63]:
            assert ports[entry["muxVLANID"]]["pfLif0"] == entry["muxPFPortID"]
