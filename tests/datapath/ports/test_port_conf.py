"""A port's configuration, and the text of its receive filter flags."""

import ctypes
import struct

import pytest

from adversity import starved
from observe import Call, Capacity, Outcome

CONF_BYTES = 1344

# In key order: the byte and the bit of each feature.
FEATURES = {
    "KCP": (248, 0),
    "MirrorIn": (248, 1),
    "LRO": (248, 2),
    "L2ForOverlay": (248, 3),
    "LAT": (249, 0),
    "Spoofguard": (249, 4),
    "VDL2": (249, 5),
    "TxL3": (249, 6),
    "minFlowL3": (250, 0),
    "SWL3": (250, 1),
    "MirrorFilterIn": (250, 4),
    "LTR": (250, 5),
    "TxL4": (250, 6),
    "IPFIX": (250, 7),
    "SI": (251, 0),
    "SWL4": (251, 1),
    "DFW": (251, 2),
    "DLB": (251, 3),
    "HKZFW": (251, 4),
    "minFlowL4": (251, 5),
    "MirrorFilterOut": (251, 6),
}

FLAG_NAMES = ["UNICAST ", "MULTICAST ", "ALLMULTI ", "BROADCAST ", "PROMISC ", "USE_LADRF "]
SET_LIST_ITEM = "Failed to set list item.\n"


def conf(*parts, size=CONF_BYTES, filler=0):
    """A record of zeros (or of another filler) with parts: (offset, format, values...)."""
    record = bytearray([filler]) * size
    for offset, layout, *values in parts:
        struct.pack_into("<" + layout, record, offset, *values)
    return bytes(record)


def meta_flows(count, slots):
    return [(252, "I", count)] + [(256 + slot, "B", state) for slot, state in slots.items()]


EMPTY = {
    "portID": 0,
    "flags": "",
    "hwAddr": "00:00:00:00:00:00",
    "untaggedVlanID": 0,
    "forgedMACAllowed": 0,
    "numMcastAddrs": 0,
    "vni": 0,
    "mcastAddrList": [],
    "numTaggedVlanRanges": 0,
    "vlanRanges": [],
    **dict.fromkeys(FEATURES, 0),
    "metaFlow": [],
}


class TestGetPortConf:
    @staticmethod
    def call(switch=3, port=7):
        return Call("Qdp_Get_Port_Conf", [switch, port, Capacity(CONF_BYTES)])

    def conf(self, host, qdp, *parts, **record):
        host.script("Qdp_Get_Port_Conf", outputs=[conf(*parts, **record)])
        return qdp.result("GetPortConf", 3, 7)

    def test_every_field(self, host, qdp):
        host.script(
            "Qdp_Get_Port_Conf",
            outputs=[
                conf(
                    (0, "I", 7),
                    (16, "I", 2),
                    (20, "I", 0b100001),
                    (32, "6B", 0x0A, 0x1B, 0xFF, 0, 1, 0xC0),
                    (38, "H", 4094),
                    (40, "B", 1),
                    (44, "I", 5001),
                    (48, "I", 3),
                    (52, "6B", 1, 0, 0x5E, 0, 0, 1),
                    (58, "6B", 0x33, 0x33, 0, 0, 0, 0xFB),
                    (248, "4B", 0b0100, 0b01000000, 0b10000000, 0b00000100),
                    *meta_flows(2, {3: 0b01, 10: 0b11}),
                    (320, "6H", 100, 200, 300, 300, 0, 65535),
                )
            ],
        )
        enabled = dict.fromkeys(["LRO", "TxL3", "IPFIX", "DFW"], 1)
        assert qdp.call("GetPortConf", 3, 7) == Outcome(
            {
                "portID": 7,
                "flags": "UNICAST USE_LADRF ",
                "hwAddr": "0a:1b:ff:00:01:c0",
                "untaggedVlanID": 4094,
                "forgedMACAllowed": 1,
                "numMcastAddrs": 2,
                "vni": 5001,
                "mcastAddrList": ["01:00:5e:00:00:01", "33:33:00:00:00:fb"],
                "numTaggedVlanRanges": 3,
                "vlanRanges": ["100-200", "300-300", "0-65535"],
                **{name: enabled.get(name, 0) for name in FEATURES},
                "metaFlow": ["3:0 ", "10:1 "],
            },
            calls=[self.call()],
        )

    @pytest.mark.parametrize("outputs", [(), [bytes(CONF_BYTES)]])
    def test_nothing_is_set(self, host, qdp, outputs):
        host.script("Qdp_Get_Port_Conf", outputs=outputs)
        assert qdp.call("GetPortConf", 3, 7) == Outcome(EMPTY, calls=[self.call()])

    def test_numbers_are_unsigned(self, host, qdp):
        listed = self.conf(host, qdp, (0, "I", 0xFFFFFFFF), (38, "H", 0xFFFF), (40, "B", 0xFF), (44, "I", 0xFFFFFFFE))
        assert (listed["portID"], listed["untaggedVlanID"]) == (0xFFFFFFFF, 0xFFFF)
        assert (listed["forgedMACAllowed"], listed["vni"]) == (0xFF, 0xFFFFFFFE)

    @pytest.mark.parametrize("bit, name", enumerate(FLAG_NAMES))
    def test_a_flag(self, host, qdp, bit, name):
        assert self.conf(host, qdp, (20, "I", 1 << bit))["flags"] == name

    def test_all_flags(self, host, qdp):
        assert self.conf(host, qdp, (20, "I", 0xFFFFFFFF))["flags"] == "".join(FLAG_NAMES)

    @pytest.mark.parametrize("feature", FEATURES)
    def test_a_feature(self, host, qdp, feature):
        byte, bit = FEATURES[feature]
        alone = self.conf(host, qdp, (byte, "B", 1 << bit))
        assert alone == {**EMPTY, feature: 1}
        others = self.conf(host, qdp, (248, "4B", 255, 255, 255, 255), (byte, "B", 255 - (1 << bit)))
        assert others == {**EMPTY, **dict.fromkeys(FEATURES, 1), feature: 0}

    def test_reserved_bytes_are_not_shown(self, host, qdp):
        zeroed = [(0, "I"), (16, "I"), (20, "I"), (38, "H"), (40, "B"), (44, "I"), (48, "I"), (252, "I")]
        parts = [(offset, layout, 0) for offset, layout in zeroed]
        parts += [(32, "6s", bytes(6)), (248, "4s", bytes(4)), (256, "64s", bytes([0xFE] * 64))]
        assert self.conf(host, qdp, *parts, filler=0xFF) == EMPTY

    def test_all_places(self, host, qdp):
        listed = self.conf(
            host,
            qdp,
            (16, "I", 32),
            (48, "I", 256),
            *[(52 + 6 * i, "6B", 1, 2, 3, 4, 5, i) for i in range(32)],
            *meta_flows(64, {slot: 1 + 2 * (slot % 2) for slot in range(64)}),
            *[(320 + 4 * i, "HH", i, 65535 - i) for i in range(256)],
        )
        assert listed["mcastAddrList"] == ["01:02:03:04:05:%02x" % i for i in range(32)]
        assert listed["vlanRanges"] == ["%d-%d" % (i, 65535 - i) for i in range(256)]
        assert listed["metaFlow"] == ["%d:%d " % (slot, slot % 2) for slot in range(64)]

    def test_a_slot_shows_its_second_bit_only_when_enabled(self, host, qdp):
        slots = {0: 0b01, 1: 0b10, 2: 0b11111100, 3: 0b11111101, 63: 0b11111111}
        assert self.conf(host, qdp, *meta_flows(3, slots))["metaFlow"] == ["0:0 ", "3:0 ", "63:1 "]

    def test_more_slots_than_their_count(self, host, qdp):
        host.script("Qdp_Get_Port_Conf", outputs=[conf(*meta_flows(1, {3: 1, 10: 1}))])
        assert qdp.call("GetPortConf", 3, 7) == Outcome(left_set=(SystemError, SET_LIST_ITEM), calls=[self.call()])

    def test_slots_without_any_count(self, host, qdp):
        host.script("Qdp_Get_Port_Conf", outputs=[conf(*meta_flows(0, {0: 1}))])
        assert qdp.call("GetPortConf", 3, 7) == Outcome(left_set=(SystemError, SET_LIST_ITEM), calls=[self.call()])

    def test_fewer_slots_than_their_count(self, host, qdp):
        assert self.conf(host, qdp, *meta_flows(4, {3: 1, 10: 3}))["metaFlow"] == ["3:0 ", "10:1 ", None, None]

    def test_more_slots_than_there_can_be(self, host, qdp):
        listed = self.conf(host, qdp, *meta_flows(1000, {slot: 1 for slot in range(64)}))
        assert listed["metaFlow"] == ["%d:0 " % slot for slot in range(64)] + [None] * 936

    def test_lists_beyond_the_record_read_as_zero(self, host, qdp):
        """The counts are trusted: the lists go on into what follows them in the record, and then into zeros."""
        listed = self.conf(host, qdp, (16, "I", 300), (48, "I", 258), (1336, "4H", 2, 0x0101, 0x0202, 0x0303))
        # Address i lies at 52 + 6 * i: 214 ends at 1342, and two bytes are left of 215.
        assert len(listed["mcastAddrList"]) == 300
        assert listed["mcastAddrList"][214:] == ["02:00:01:01:02:02", "03:03:00:00:00:00"] + ["00:00:00:00:00:00"] * 84
        assert listed["vlanRanges"][254:] == ["2-257", "514-771", "0-0", "0-0"]

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_Port_Conf")
        assert qdp.call("GetPortConf", switch, port) == Outcome(EMPTY, calls=[self.call(switch, port)])

    def test_lack_of_memory(self, qdp):
        assert starved(qdp, "GetPortConf", 0, 12) == [
            Outcome(None, "Failed to allocate memory.\n", left_set=(MemoryError, "")),
            Outcome(None, left_set=(SystemError, "Failed to set dict item.\n")),
            Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n")),
        ]

    def test_embedded_host_configures_every_port(self, qdp):
        for switch in range(3):
            for port in qdp.result("ListPorts", switch):
                listed = qdp.result("GetPortConf", switch, port["portID"])
                assert (listed["portID"], listed["hwAddr"]) == (port["portID"], port["hwAddr"])
                assert ("PROMISC " in listed["flags"]) == (port["clientType"] == "UPLINK")
                assert len(listed["mcastAddrList"]) == listed["numMcastAddrs"]
                assert None not in listed["metaFlow"]

    def test_embedded_host_port(self, qdp):
        # Port 12 is a port of VLAN 100 + 12 % 8, with slots 12 and 12 + 7.
        listed = qdp.result("GetPortConf", 0, 12)
        assert listed["flags"] == "UNICAST MULTICAST BROADCAST "
        assert (listed["untaggedVlanID"], listed["vni"], listed["vlanRanges"]) == (104, 5104, [])
        assert listed["mcastAddrList"] == ["01:00:5e:00:00:01", "33:33:00:00:00:01"]
        assert [name for name in FEATURES if listed[name]] == [
            "LRO", "Spoofguard", "TxL3", "minFlowL3", "TxL4", "DFW",
        ]  # fmt: skip
        assert listed["metaFlow"] == ["12:0 ", "19:1 "]
        assert qdp.result("GetPortConf", 0, 7)["vlanRanges"] == ["100-199", "300-300"]

    @pytest.mark.parametrize("switch, port", [(0, 36), (3, 0)])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        assert qdp.call("GetPortConf", switch, port) == Outcome(
            None, "Failed to retrieve port conf.\n", calls=[self.call(switch, port)]
        )


class TestFlagsToStr:
    ALL = "".join(FLAG_NAMES).encode()

    def text(self, exported, flags, size):
        """What is in a buffer of 120 bytes after the call, of which the function may use `size`."""
        out = ctypes.create_string_buffer(b"#" * 120, 120)
        exported.FlagsToStr(ctypes.c_uint32(flags), out, ctypes.c_uint32(size))
        return out.raw

    @pytest.mark.parametrize(
        "flags, text",
        [
            (0, b""),
            (1, b"UNICAST "),
            (0b100001, b"UNICAST USE_LADRF "),
            (0b011110, b"MULTICAST ALLMULTI BROADCAST PROMISC "),
            (0b111111, ALL),
            (0xFFFFFFFF, ALL),
            (0xFFFFFFC0, b""),
        ],
    )
    def test_names_in_order(self, exported, flags, text):
        assert self.text(exported, flags, 120).partition(b"\0")[0] == text

    def test_nothing_is_written_behind_the_text(self, exported):
        assert self.text(exported, 0b1001, 120) == b"UNICAST BROADCAST \0" + b"#" * 101

    @pytest.mark.parametrize("size", range(1, len(ALL) + 2))
    def test_a_text_that_is_cut(self, exported, size):
        written = self.ALL[: size - 1] + b"\0"
        assert self.text(exported, 0x3F, size) == written + b"#" * (120 - len(written))

    def test_no_room_at_all(self, exported):
        assert self.text(exported, 0x3F, 0) == b"#" * 120
