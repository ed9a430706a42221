"""The texts of flows, taken apart: every form of the module's texts, and texts that are none."""

import random
from ipaddress import ip_address

import pytest

import qdp
from datapath.flowcache.records import golden
from qdp.flow_text import FlowKey, parse_actions, parse_key

MACS = ("02:10:00:00:00:01", "0a:ff:00:c0:0d:0e")

# Cases of the golden texts, with what they say, field by field.
KEYS = {
    "tcp over ipv4": (4, *MACS, 100, 5, ip_address("10.0.0.1"), ip_address("192.168.255.20"), 6, 69632, 80, 49152),
    "flags 0": (2, *MACS, 0, 0, None, None, None, 7, None, None),
    "layer 2 with the ipv6 flag": (2, *MACS, 0, 0, None, None, None, 0, None, None),
    "layer 3 over ipv4": (3, *MACS, 0, 0, ip_address("10.0.0.1"), ip_address("10.0.0.2"), None, 0, None, None),
    "icmpv6": (4, *["00:00:00:00:00:00"] * 2, 0, 0, ip_address("fe80::1"), ip_address("ff02::1"), 58, 0, 128, 65280),
    "largest": (
        *(4, *["ff:ff:ff:ff:ff:ff"] * 2, 4095, 32767),
        *[ip_address("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff")] * 2,
        *(255, 16777215, 65535, 65535),
    ),
}


class TestKey:
    @pytest.mark.parametrize("case", KEYS)
    def test_golden_text(self, case):
        assert parse_key(golden("keys.txt")[case]) == FlowKey(*KEYS[case])

    def test_cut_text_gives_what_is_there(self):
        text = golden("keys.txt")["tcp over ipv4"]
        whole = KEYS["tcp over ipv4"]
        assert parse_key(text[: text.index("192.168")]) == FlowKey(*whole[:6], *[None] * 5)
        assert parse_key("") == FlowKey(*[None] * 11)

    def test_unreadable_columns_are_none(self):
        text = golden("keys.txt")["tcp over ipv4"]
        text = text.replace("02:10:00:00:00:01", "02:10:00:00:0001").replace("10.0.0.1 ", "10.0.0.256 ")
        text = text.replace("L4", "??")
        assert parse_key(text) == FlowKey(None, None, *KEYS["tcp over ipv4"][2:5], None, *KEYS["tcp over ipv4"][6:])


def head(bitmap=0, destination=None, invalidations=0, generation=0, length=0):
    numbers = ("bmap", bitmap), ("inval(s)", invalidations), ("cg", generation), ("dp", destination), ("len", length)
    return list(numbers)


class TestActions:
    @pytest.mark.parametrize(
        "text, expected",
        [
            ("bmap:0 inval(s):0 cg:0 dp:- len:0; ", head()),
            (
                "bmap:0x80 inval(s):4294967295 cg:9 dp:0xbeef len:304; ",
                head(0x80, 0xBEEF, 4294967295, 9, 304),
            ),
            ("OL; swFlowIdx: 7; hwFlowIdx: 9; ", [("OL", None), ("swFlowIdx", 7), ("hwFlowIdx", 9)]),
            ("swFlowIdx: 0x7f00a0; hwFlowIdx: N/A; ", [("swFlowIdx", 0x7F00A0), ("hwFlowIdx", None)]),
            ("VI: 100; DROP; ", [("VI", 100), ("DROP", None)]),
            ("VDR inst: 2; INST 1: 0x10; INST 2: 0x0; ", [("VDR inst", 2), ("INST 1", 16), ("INST 2", 0)]),
            ("DFW on srcPort, ctCtxId: 0x5; ", [("DFW on srcPort", None), ("ctCtxId", 5)]),
            ("VNI: 5001; GENEVE ENCAP VNI: 70; ", [("VNI", 5001), ("GENEVE ENCAP VNI", 70)]),
            (
                "OL; MC: inval(s):5 cg:6 len:480; flag 0x40 n_ag:2 n_dp:255",
                [("OL", None), ("MC", None), ("inval(s)", 5), ("cg", 6), ("len", 480)]
                + [("flag", 64), ("n_ag", 2), ("n_dp", 255)],
            ),
            ("New: 5 of 6; ", [("New", "5 of 6")]),
            ("", []),
        ],
    )
    def test_forms(self, text, expected):
        assert parse_actions(text) == expected

    def test_number_that_the_end_may_have_cut_is_none(self):
        assert parse_actions("DROP; VNI: 50") == [("DROP", None), ("VNI", None)]

    @pytest.mark.parametrize("case", golden("actions.txt"))
    def test_every_golden_text_keeps_its_names(self, case):
        """Each name and number of the text is in a pair: put together again, they are the text."""
        text = golden("actions.txt")[case]
        if not text.endswith("; "):
            text = text[: text.rfind("; ") + 2]
        pairs = parse_actions(text)
        numbers = [value for _, value in pairs if value is not None]
        assert all(type(value) is int for value in numbers)
        for name, value in pairs:
            assert name in text and (value is None or format(value, "d") in text or format(value, "#x") in text)
        assert len(pairs) >= text.count("; ")


def test_no_text_fails():
    chosen = random.Random(5)
    alphabet = "L4 0x9f:;-,.NAbmapcg()MC\n\u0664\0"
    for _ in range(3000):
        text = "".join(chosen.choice(alphabet) for _ in range(chosen.randrange(60)))
        assert len(parse_key(text)) == 11 and isinstance(parse_actions(text), list)


def test_records_of_the_flow_table(host):
    page = qdp.methods.DumpFlowTable(0, 12, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
    flows = page["list"]
    assert len(flows) > 10
    for flow in flows:
        key = flow.parsed_key
        assert key.layer in (2, 3, 4) and (key.source is None) == (key.layer == 2) and None not in key[:5]
        assert len([name for name, _ in flow.parsed_actions if name in ("bmap", "MC")]) == 1
    assert any(key.source_port for key in (flow.parsed_key for flow in flows))
