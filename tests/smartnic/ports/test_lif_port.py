"""LIFs. What all lists share is in test_page.py."""

import itertools
import struct

import pytest

from observe import Outcome
from smartnic.commands import OPERATION, at_bounds, command

# lifID, srcPort, repPort, flowKeyType, lifType, isMuxPF, fwdMode, status
GOOD = (1023, 514, 259, 1, 8, 1, 0, 4094)
BOUNDS = (1024, 1024, 1024, 3, 9, 2, 2, 4095)


def record(lif, source, rep, flow_key, kind, is_mux_pf, fwd_mode, status):
    flags = flow_key + 8 * fwd_mode + 32 * is_mux_pf
    return struct.pack("<HHHHBBH", lif, source, rep, 0, kind, flags, status)


class TestLifPortCreate:
    def test_request(self, host, qdp):
        host.script(OPERATION)
        payload = bytes.fromhex("ff03 0202 0301 0000 08 21 fe0f")
        assert qdp.call("LifPortCreate", *GOOD) == Outcome(None, calls=[command(2, payload)])

    @pytest.mark.parametrize("flow_key, is_mux_pf, fwd_mode", itertools.product(range(3), range(2), range(2)))
    def test_flags(self, host, qdp, flow_key, is_mux_pf, fwd_mode):
        host.script(OPERATION)
        arguments = (1, 2, 3, flow_key, 4, is_mux_pf, fwd_mode, 5)
        assert qdp.call("LifPortCreate", *arguments) == Outcome(None, calls=[command(2, record(*arguments))])

    @pytest.mark.parametrize("arguments", [(0,) * 8, *at_bounds(GOOD, BOUNDS)])
    def test_bounds_that_are_accepted(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("LifPortCreate", *arguments) == Outcome(None, calls=[command(2, record(*arguments))])

    def test_embedded_host_lists_a_created_lif(self, qdp):
        qdp.result("LifPortCreate", 700, 701, 702, 2, 8, 1, 1, 4094)
        assert qdp.result("LifPortList", 196) == {
            "liflist": [
                {
                    "lifID": 700,
                    "srcPort": 701,
                    "repPort": 702,
                    "flowKeyType": 2,
                    "lifType": 8,
                    "isMuxPF": 1,
                    "fwdMode": 1,
                    "status": 4094,
                }
            ],
            "nextIndex": 0,
        }

    def test_embedded_host_gives_a_created_lif_its_output_port(self, qdp):
        qdp.result("LifPortCreate", 700, 701, 702, 2, 8, 1, 1, 4094)
        assert qdp.result("PortList", 436)["portlist"] == [
            {
                "dstPort": 701,
                "lifID": 700,
                "defaultVLAN": 0,
                "muxVLAN": 0,
                "lifType": 8,
                "status": 4094,
                "tag": 2048 + 701,
            }
        ]

    def test_embedded_host_replaces_a_lif_that_there_is(self, qdp):
        before = qdp.result("LifPortList", 16)["liflist"]
        qdp.result("LifPortCreate", 16, 900, 901, 0, 0, 0, 0, 0)
        after = qdp.result("LifPortList", 16)["liflist"]
        assert (after[0]["lifID"], after[0]["srcPort"]) == (16, 900)
        assert after[1:] == before[1:]
        assert qdp.result("PortList", 16)["portlist"][0]["dstPort"] == 17
        assert qdp.result("PortList", 436)["portlist"][0]["lifID"] == 16


class TestLifPortUpdate:
    # lifID, flowKeyType, isMuxPF, fwdMode
    GOOD = (1023, 2, 1, 0)
    BOUNDS = (1024, 3, 2, 2)

    @staticmethod
    def request(lif, flow_key, is_mux_pf, fwd_mode):
        return command(3, struct.pack("<HBBBB", lif, flow_key, is_mux_pf, fwd_mode, 0))

    @pytest.mark.parametrize("arguments", [(0,) * 4, (258, 1, 0, 1), *at_bounds(GOOD, BOUNDS)])
    def test_request(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("LifPortUpdate", *arguments) == Outcome(None, calls=[self.request(*arguments)])

    @pytest.mark.parametrize("settings", itertools.product(range(3), range(2), range(2)))
    def test_embedded_host_lists_what_was_updated_and_the_rest_as_before(self, qdp, settings):
        before = qdp.result("LifPortList", 17)["liflist"]
        qdp.result("LifPortUpdate", 17, *settings)
        changed = dict(zip(("flowKeyType", "isMuxPF", "fwdMode"), settings))
        assert qdp.result("LifPortList", 17)["liflist"] == [{**before[0], **changed}, *before[1:]]

    def test_embedded_host_has_no_such_lif(self, qdp):
        assert qdp.call("LifPortUpdate", 196, 0, 0, 0).printed == "Failed to update the lif port\n"


class TestLifPortList:
    @staticmethod
    def call(start):
        return command(4, struct.pack("<H", start), response=1024)

    def test_entries(self, host, qdp):
        answer = struct.pack("<HH", 2, 0xFFFE)
        answer += struct.pack("<HHHHBBH", 1, 2, 3, 0xDEAD, 4, 0b00_0_10_101, 5)
        answer += struct.pack("<HHHHBBH", 0xFFFF, 0xFFFE, 0xFFFD, 0xFFFC, 0xFB, 0b11_1_01_010, 0xFFFA)
        host.script(OPERATION, outputs=[answer])
        assert qdp.call("LifPortList", 258) == Outcome(
            {
                "liflist": [
                    {
                        "lifID": 1,
                        "srcPort": 2,
                        "repPort": 3,
                        "flowKeyType": 5,
                        "lifType": 4,
                        "isMuxPF": 0,
                        "fwdMode": 2,
                        "status": 5,
                    },
                    {
                        "lifID": 0xFFFF,
                        "srcPort": 0xFFFE,
                        "repPort": 0xFFFD,
                        "flowKeyType": 2,
                        "lifType": 0xFB,
                        "isMuxPF": 1,
                        "fwdMode": 1,
                        "status": 0xFFFA,
                    },
                ],
                "nextIndex": 0xFFFE,
            },
            calls=[self.call(258)],
        )

    @pytest.mark.parametrize(
        "flags, flow_key, fwd_mode, is_mux_pf",
        [(0x3F, 7, 3, 1), (0xC0, 0, 0, 0), (0x07, 7, 0, 0), (0x18, 0, 3, 0), (0x20, 0, 0, 1), (0xDF, 7, 3, 0)],
    )
    def test_flags(self, host, qdp, flags, flow_key, fwd_mode, is_mux_pf):
        host.script(OPERATION, outputs=[struct.pack("<HHHHHHBBH", 1, 0, 0, 0, 0, 0, 0, flags, 0)])
        (lif,) = qdp.result("LifPortList", 0)["liflist"]
        assert (lif["flowKeyType"], lif["fwdMode"], lif["isMuxPF"]) == (flow_key, fwd_mode, is_mux_pf)

    @pytest.mark.parametrize("start", [0, 1, 1023])
    def test_start_indices_that_are_accepted(self, host, qdp, start):
        host.script(OPERATION)
        assert qdp.call("LifPortList", start) == Outcome({"liflist": [], "nextIndex": 0}, calls=[self.call(start)])

    def test_embedded_host(self, qdp):
        page = qdp.result("LifPortList", 0)
        assert page["liflist"][0] == {
            "lifID": 1,
            "srcPort": 1,
            "repPort": 513,
            "flowKeyType": 0,
            "lifType": 2,
            "isMuxPF": 1,
            "fwdMode": 0,
            "status": 1,
        }
        assert {lif["flowKeyType"] for lif in page["liflist"]} == {0, 1, 2}
        assert {lif["fwdMode"] for lif in page["liflist"]} == {0, 1}
