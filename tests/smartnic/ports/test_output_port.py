"""The output port table. What all lists share is in test_page.py."""

import struct

import pytest

from observe import Outcome
from smartnic.commands import OPERATION, at_bounds, command


class TestPortUpdate:
    # port, default VLAN
    GOOD = (258, 772)
    BOUNDS = (1024, 4095)

    @staticmethod
    def request(port, vlan):
        return command(8, struct.pack("<HH", port, vlan))

    @pytest.mark.parametrize("arguments", [(0, 0), GOOD, *at_bounds(GOOD, BOUNDS)])
    def test_request(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("PortUpdate", *arguments) == Outcome(None, calls=[self.request(*arguments)])

    @pytest.mark.parametrize("vlan", [0, 1, 4094])
    def test_embedded_host_lists_what_was_updated_and_the_rest_as_before(self, qdp, vlan):
        before = qdp.result("PortList", 16)["portlist"]
        qdp.result("PortUpdate", 16, vlan)
        assert qdp.result("PortList", 16)["portlist"] == [{**before[0], "defaultVLAN": vlan}, *before[1:]]

    def test_embedded_host_has_no_such_port(self, qdp):
        assert qdp.call("PortUpdate", 436, 1).printed == "Failed to update the defaultVLAN of a port\n"


class TestPortDelete:
    @staticmethod
    def request(port):
        return command(9, struct.pack("<H", port))

    @pytest.mark.parametrize("port", [0, 258, 1023])
    def test_request(self, host, qdp, port):
        host.script(OPERATION)
        assert qdp.call("PortDelete", port) == Outcome(None, calls=[self.request(port)])

    @pytest.mark.parametrize(
        "port, method, key, number", [(20, "LifPortList", "lifID", 20), (260, "VlanPortList", "muxVLAN", 104)]
    )
    def test_embedded_host_takes_the_port_away_with_what_sends_from_it(self, qdp, port, method, key, number):
        def listed(method, start):
            (entries,) = [entries for entries in qdp.result(method, start).values() if isinstance(entries, list)]
            return entries

        assert listed("PortList", port)[0]["dstPort"] == port
        assert listed(method, number)[0][key] == number
        assert qdp.result("PortDelete", port) is None
        assert listed("PortList", port)[0]["dstPort"] == port + 1
        assert listed(method, number)[0][key] == number + 1
        assert qdp.call("PortDelete", port).printed == "Failed to delete a port\n"

    def test_embedded_host_forgets_the_default_vlan(self, qdp):
        qdp.result("PortUpdate", 20, 99)
        qdp.result("PortDelete", 20)
        qdp.result("LifPortCreate", 20, 20, 532, 0, 0, 0, 0, 0)
        assert qdp.result("PortList", 20)["portlist"][0]["defaultVLAN"] == 0


class TestPortList:
    @staticmethod
    def call(start):
        return command(10, struct.pack("<H", start), response=1024)

    def test_the_tag_comes_last(self, host, qdp):
        answer = struct.pack("<HH", 2, 0x8000)
        answer += struct.pack("<5HBBHH", 1, 2, 3, 9, 5, 6, 0xAA, 0xDEAD, 7)
        answer += struct.pack("<5HBBHH", 0xFFFF, 0xFFFE, 0xFFFD, 0xFFFC, 0xFFFB, 0xFA, 0xF9, 0xFFF8, 0xFFF7)
        host.script(OPERATION, outputs=[answer])
        assert qdp.call("PortList", 258) == Outcome(
            {
                "portlist": [
                    {"dstPort": 1, "lifID": 3, "defaultVLAN": 5, "muxVLAN": 9, "lifType": 6, "status": 7, "tag": 2},
                    {
                        "dstPort": 0xFFFF,
                        "lifID": 0xFFFD,
                        "defaultVLAN": 0xFFB,
                        "muxVLAN": 0xFFFC,
                        "lifType": 0xFA,
                        "status": 0xFFF7,
                        "tag": 0xFFFE,
                    },
                ],
                "nextIndex": 0x8000,
            },
            calls=[self.call(258)],
        )

    @pytest.mark.parametrize("word, vlan", [(0x1000, 0), (0x8FFF, 0xFFF), (0xF123, 0x123), (0x0800, 0x800)])
    def test_the_default_vlan_has_12_bits(self, host, qdp, word, vlan):
        host.script(OPERATION, outputs=[struct.pack("<HH8xH6x", 1, 0, word)])
        assert qdp.result("PortList", 0)["portlist"][0]["defaultVLAN"] == vlan

    @pytest.mark.parametrize("start", [0, 1, 1023])
    def test_start_indices_that_are_accepted(self, host, qdp, start):
        host.script(OPERATION)
        assert qdp.call("PortList", start) == Outcome({"portlist": [], "nextIndex": 0}, calls=[self.call(start)])

    def test_embedded_host(self, qdp):
        rows = qdp.result("PortList", 195)["portlist"]
        assert rows[:2] == [
            {"dstPort": 195, "lifID": 195, "defaultVLAN": 0, "muxVLAN": 0, "lifType": 3, "status": 1, "tag": 2243},
            {"dstPort": 256, "lifID": 1, "defaultVLAN": 0, "muxVLAN": 100, "lifType": 4, "status": 1, "tag": 2304},
        ]
