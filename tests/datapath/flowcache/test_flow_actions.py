"""The texts of flows' actions, as other readers of the datapath's records get them."""

import ctypes
import struct

import pytest

from datapath.flowcache.records import (
    GROUP_OFFSET,
    HAS_INDEXES,
    IS_POINTER,
    MULTICAST,
    OFFLOADED,
    OTHER,
    TAIL_BYTES,
    area,
    contexts,
    golden,
    group,
    tail,
)
from observe import standard_error

MAX = 0xFFFFFFFFFFFFFFFF
ACTION_TEXTS = golden("actions.txt")


DROP, META_FLOW = 5, 37
BITMAP = 16  # its place in a group
BEHIND = 64  # so many bytes behind an output stay as they are


class Flow:
    """A flow's entry: contexts, counters and key, then the action area, its group and its tail."""

    def __init__(self, action_area=None, action_group=None, action_tail=None, sides=None):
        self.action_tail = tail() if action_tail is None else action_tail
        self.action_area = area() if action_area is None else action_area
        self.action_group = group() if action_group is None else action_group
        self.data = self.action_area + self.action_group + self.action_tail
        self.sides = sides
        self.entry = (sides or contexts()).ljust(112, OTHER) + self.data
        (self.bitmap,) = struct.unpack_from("<Q", self.action_group, BITMAP)

    def with_bitmap(self, bitmap):
        changed = bytearray(self.action_group)
        struct.pack_into("<Q", changed, BITMAP, bitmap)
        return Flow(self.action_area, bytes(changed), self.action_tail, self.sides)


# The length that the header shows is the area's own; the tail is found by the length that the caller gives.
FLOWS = {
    "no action": Flow(),
    "header without a destination": Flow(area(generation=MAX, inval=17, length=0xFFFF), group(0, dp=5)),
    "header with a destination": Flow(area(generation=9, inval=0xFFFFFFFF, length=304), group(7, dp=0xBEEF)),
    "header with destination 0": Flow(action_group=group(7)),
    "bits without a text": Flow(action_group=group(0, 1, 7, 9, 14, 15, 17, 21, 28, 29, *range(38, 64))),
    "input child port": Flow(action_group=group(2, child_port=0xFFFFFFFF)),
    "lro": Flow(action_group=group(3)),
    "ipfix ingress": Flow(action_group=group(4)),
    "drop": Flow(action_group=group(5)),
    "drop hides what follows": Flow(action_group=group(*range(5, 38), dp=7)),
    "drop shows what comes before": Flow(action_group=group(3, 4, 5, 22)),
    "firewall on the source port": Flow(action_group=group(6), sides=contexts(0xFEDCBA9876543210, 1)),
    "firewall on the source port without a context": Flow(action_group=group(6), sides=contexts(None, 1)),
    "firewall on the source port with context 0": Flow(action_group=group(6), sides=contexts(0, 1)),
    "slow path": Flow(action_group=group(8)),
    "vlan insert": Flow(action_group=group(10, vlan=0xFFFF)),
    "vlan remove": Flow(action_group=group(11)),
    "port insert": Flow(action_group=group(12, port_index=255)),
    "port remove": Flow(action_group=group(13)),
    "guest vlan insert": Flow(action_group=group(16)),
    "mirror ingress": Flow(action_group=group(18, mirrors=(255, 1))),
    "destination mac": Flow(action_group=group(19)),
    "routing": Flow(action_group=group(20), action_tail=tail(instances=(0, 0xDEADBEEF))),
    "routing without instances": Flow(action_group=group(20)),
    "vni": Flow(action_group=group(22, vni=0xFFFFFFFF)),
    "geneve decap": Flow(action_group=group(23)),
    "vxlan decap": Flow(action_group=group(24)),
    "geneve encap": Flow(action_group=group(25, vni=9), action_tail=tail(geneve=0x010203)),
    "vxlan encap": Flow(action_group=group(26, vni=9), action_tail=tail(vxlan=0xFF00FF)),
    "guest vlan remove": Flow(action_group=group(27)),
    "ipfix egress": Flow(action_group=group(30)),
    "firewall on the destination port": Flow(action_group=group(31), sides=contexts(1, 0x123456789)),
    "firewall on the destination port without a context": Flow(action_group=group(31), sides=contexts(1, None)),
    "mirror egress": Flow(action_group=group(32, mirrors=(1, 254))),
    "output vlan": Flow(action_group=group(33, output_vlan=4094)),
    "inner lookup": Flow(action_group=group(34)),
    "l3 vlan routed": Flow(action_group=group(35)),
    "lta": Flow(action_group=group(36)),
    "meta flow": Flow(action_group=group(37)),
    "from the lowest bit upward": Flow(area(generation=2, inval=1, length=3), group(37, 36, 19, 11, 7, 4, dp=16)),
    "offloaded": Flow(area(offload=OFFLOADED | 2)),
    "offloaded, with indexes": Flow(
        area(offload=OFFLOADED | HAS_INDEXES, hardware_index=0xFFFFFFFF, software_index=0x1234567887654321)
    ),
    "offloaded, with a pointer": Flow(
        area(offload=OFFLOADED | HAS_INDEXES | IS_POINTER, hardware_index=5, software_index=0x7F0087654321)
    ),
    "offloaded, with a null pointer": Flow(area(offload=OFFLOADED | HAS_INDEXES | IS_POINTER)),
    "offloaded, with a pointer flag alone": Flow(area(offload=OFFLOADED | IS_POINTER, software_index=5)),
    "not offloaded, with indexes": Flow(area(offload=0xFFFFFFFE, software_index=5)),
    "multicast": Flow(
        area(generation=6, inval=5, length=480, group_flags=MULTICAST, n_ag=2, n_dp=255), group(3, 5, 20)
    ),
    "multicast with further flags, offloaded": Flow(area(offload=OFFLOADED, group_flags=0xFFFFFFFF), group(3)),
}


def memory_of(data):
    return ctypes.create_string_buffer(data, len(data))


def address_of(memory, offset=0):
    return ctypes.c_void_p(ctypes.addressof(memory) + offset)


class TestFCActionsToStr:
    def written(self, exported, flow, size=512):
        """(result, text, standard error) of a flow whose entry lies in a buffer of its own."""
        memory = memory_of(flow.entry)
        out = ctypes.create_string_buffer(b"#" * (size + BEHIND), size + BEHIND)
        with standard_error() as error:
            result = exported.FCActionsToStr(
                address_of(memory, 112), out, size, len(flow.data), address_of(memory), GROUP_OFFSET
            )
        assert out.raw[size:] == b"#" * BEHIND
        assert memory.raw == flow.entry
        return result, out.value.decode() if size else "", error.text

    def test_all_golden_lines_are_tested(self):
        assert list(FLOWS) == list(ACTION_TEXTS)

    @pytest.mark.parametrize("case", ACTION_TEXTS)
    def test_golden_line(self, exported, case):
        assert self.written(exported, FLOWS[case]) == (0, ACTION_TEXTS[case], "")

    @pytest.mark.parametrize(
        "case", [case for case, flow in FLOWS.items() if flow.bitmap and not flow.bitmap >> META_FLOW & 1]
    )
    def test_an_action_is_followed_by_another(self, exported, case):
        flow = FLOWS[case]
        bitmap = flow.bitmap | 1 << META_FLOW
        text = ACTION_TEXTS[case].replace(f"bmap:{flow.bitmap:#x} ", f"bmap:{bitmap:#x} ")
        is_last = flow.bitmap >> DROP & 1 or "MC: " in text
        assert self.written(exported, flow.with_bitmap(bitmap)) == (0, text + ("" if is_last else "MetaFlow; "), "")

    @pytest.mark.parametrize("digits", range(1, 20))
    def test_numbers_of_all_lengths(self, exported, digits):
        """The greatest of so many digits, and the least of one more."""
        for number in (10**digits - 1, 10**digits):
            text = f"bmap:0 inval(s):0 cg:{number} dp:- len:0; "
            assert self.written(exported, Flow(area(generation=number))) == (0, text, "")

    @pytest.mark.parametrize("digits", range(1, 16))
    def test_hexadecimal_numbers_of_all_lengths(self, exported, digits):
        for number in (16**digits - 1, 16**digits):
            flow = Flow(action_group=group(6), sides=contexts(number, 1))
            assert self.written(exported, flow)[1].endswith(f"ctCtxId: {number:#x}; ")

    def test_the_group_lies_where_the_caller_says(self, exported):
        memory = memory_of(area() + OTHER * 5 + group(11))
        out = ctypes.create_string_buffer(512)
        assert exported.FCActionsToStr(memory, out, 512, 0, None, GROUP_OFFSET + 5) == 0
        assert out.value.endswith(b"; VR; ")

    def test_the_tail_length_is_the_callers(self, exported):
        """The area's own length is what the header shows."""
        memory = memory_of(area(length=7) + group(25, vni=1) + OTHER * 3 + tail(geneve=42))
        out = ctypes.create_string_buffer(512)
        assert exported.FCActionsToStr(memory, out, 512, len(memory), None, GROUP_OFFSET) == 0
        assert out.value == b"bmap:0x2000000 inval(s):0 cg:0 dp:- len:7; VNI: 1; GENEVE ENCAP VNI: 42; "

    def test_instances_go_on_beyond_the_end_of_the_data(self, exported):
        data = area() + group(20) + tail(instances=(1, 2, 3), count=4)
        memory = memory_of(data + struct.pack("<4xI", 4))  # the fourth starts 126 bytes after the tail does
        out = ctypes.create_string_buffer(512)
        assert exported.FCActionsToStr(memory, out, 512, len(data), None, GROUP_OFFSET) == 0
        assert out.value.endswith(b"VDR inst: 4; INST 1: 0x1; INST 2: 0x2; INST 3: 0x3; INST 4: 0x4; ")

    def test_reads_no_more_of_a_group_than_its_actions_need(self, exported):
        """The buffers end where the fields do, so that the sanitizers see a read beyond them."""
        for bits, fields, size in [((7, 11), {"dp": 5}, 26), ((22,), {"vni": 5}, 56), ((2,), {"child_port": 5}, 172)]:
            memory = memory_of(group(*bits, **fields)[:size])
            out = ctypes.create_string_buffer(512)
            assert exported.FCActionGroupToStr(memory, memory, out, address_of(out, 512), TAIL_BYTES, None) == 0
            assert out.value

    # --- Outputs that are too small ---

    HEADER = "bmap:0 inval(s):0 cg:0 dp:- len:0; "

    @pytest.mark.parametrize("size", [1, 2, 20, len(HEADER), len(HEADER) + 1])
    def test_a_header_is_cut(self, exported, size):
        assert self.written(exported, Flow(), size) == (0, self.HEADER[: size - 1], "")

    @pytest.mark.parametrize("case", ACTION_TEXTS)
    def test_a_text_is_cut_anywhere(self, exported, case):
        """With room for whole pieces, for a part of one, and for none."""
        text = ACTION_TEXTS[case]
        for size in range(1, len(text) + 2):
            assert self.written(exported, FLOWS[case], size)[1] == text[: size - 1]

    def test_no_output_at_all(self, exported):
        assert self.written(exported, Flow(), 0) == (0, "", "")
        assert self.written(exported, FLOWS["lro"], 0) == (1, "", "Invalid action\n")

    @pytest.mark.parametrize("case", ["multicast", "multicast with further flags, offloaded"])
    @pytest.mark.parametrize("size", [1, 3, 5, 30])
    def test_a_multicast_line_is_cut(self, exported, case, size):
        assert self.written(exported, FLOWS[case], size) == (0, ACTION_TEXTS[case][: size - 1], "")

    @pytest.mark.parametrize("size", [1, 3, 5, 10, 40, 60, 75])
    def test_offload_texts_are_cut(self, exported, size):
        case = "offloaded, with indexes"
        assert self.written(exported, FLOWS[case], size) == (0, ACTION_TEXTS[case][: size - 1], "")

    @pytest.mark.parametrize(
        "room, result",
        [
            (11, 0),  # for the whole text and its NUL
            (10, 0),  # a last text that is cut is no failure
            (2, 0),
            (1, 0),
            (0, 1),  # the output ended with the header
            (-1, 1),
        ],
    )
    def test_a_last_text_that_is_cut(self, exported, room, result):
        text = ACTION_TEXTS["meta flow"]
        size = text.index("MetaFlow; ") + room
        printed = "Invalid action\n" if result else ""
        assert self.written(exported, FLOWS["meta flow"], size) == (result, text[: size - 1], printed)

    @pytest.mark.parametrize("bit", [4, 5, 7, 9, 63])
    def test_any_bit_after_a_cut_text_fails(self, exported, bit):
        """Whether that bit has a text or not."""
        flow = Flow(action_group=group(3, bit))
        whole = self.written(exported, flow)[1]
        cut = whole.index("LRO; ") + len("LRO; ")
        assert self.written(exported, flow, cut) == (1, whole[: cut - 1], "Invalid action\n")
        # With room for the NUL, the bit's own text is cut: no failure.
        assert self.written(exported, flow, cut + 1) == (0, whole[:cut], "")


class TestFCActionGroupToStr:
    def written(self, exported, bits, size, action_tail=None, sides=None, **fields):
        """(result, text) of a group whose record, tail and contexts lie in buffers of their own."""
        out = ctypes.create_string_buffer(b"#" * (size + BEHIND), size + BEHIND)
        data = memory_of(action_tail or tail())
        record = memory_of(group(*bits, **fields))
        entry = memory_of(sides or contexts())
        with standard_error() as error:
            result = exported.FCActionGroupToStr(data, record, out, address_of(out, size), len(data), entry)
        assert error.text == ""  # the caller says so
        assert out.raw[size:] == b"#" * BEHIND
        return result, out.raw.split(b"\0")[0][:size].decode()

    def test_the_actions_alone(self, exported):
        assert self.written(exported, (3, 7, 22, 37), 64, vni=5) == (0, "LRO; VNI: 5; MetaFlow; ")

    def test_no_actions_write_nothing(self, exported):
        assert self.written(exported, (), 8) == (0, "#" * 8)
        assert self.written(exported, (), 0) == (0, "")

    def test_no_room_for_any_action(self, exported):
        assert self.written(exported, (0,), 0) == (1, "")

    def test_an_end_before_the_output(self, exported):
        out = ctypes.create_string_buffer(b"####", 4)
        record = memory_of(group(3))
        assert exported.FCActionGroupToStr(record, record, address_of(out, 2), out, TAIL_BYTES, None) == 1
        assert out.raw == b"####"

    def test_drop_ends_the_list(self, exported):
        assert self.written(exported, (5, 22), 64) == (0, "DROP; ")
        assert self.written(exported, (5, 22), 4) == (0, "DRO")

    def test_both_texts_of_an_encapsulation(self, exported):
        given = dict(action_tail=tail(geneve=2, vxlan=3), vni=1)
        assert self.written(exported, (25, 26), 99, **given) == (
            0,
            "VNI: 1; GENEVE ENCAP VNI: 2; VNI: 1; VXLAN ENCAP VNI: 3; ",
        )
        # The second text finds no room: that is not looked at inside an action.
        assert self.written(exported, (25,), 8, **given) == (0, "VNI: 1;")
        assert self.written(exported, (25, 26), 8, **given) == (1, "VNI: 1;")

    ROUTED = "VDR inst: 2; INST 1: 0x11; INST 2: 0x22; "

    @pytest.mark.parametrize(
        "size, result",
        [
            (5, 1),  # the output ends before the first instance
            (13, 1),
            (14, 1),  # before the second
            (27, 1),
            (28, 0),  # the second is cut
            (41, 0),
            (42, 0),
        ],
    )
    def test_an_output_that_ends_inside_the_instances(self, exported, size, result):
        given = self.written(exported, (20,), size, action_tail=tail(instances=(0x11, 0x22)))
        assert given == (result, self.ROUTED[: size - 1])

    def test_a_routing_text_that_is_cut_without_instances(self, exported):
        assert self.written(exported, (20,), 6) == (0, "VDR i")
        assert self.written(exported, (20, 37), 6) == (1, "VDR i")

    def test_all_instances_that_a_count_can_tell(self, exported):
        instances = tuple(range(255))
        long_tail = tail(count=255)[:30] + b"".join(struct.pack("<I28x", value) for value in instances)
        memory = memory_of(long_tail)
        out = ctypes.create_string_buffer(8192)
        record = memory_of(group(20))
        assert exported.FCActionGroupToStr(memory, record, out, address_of(out, 8192), TAIL_BYTES, None) == 0
        assert out.value.decode() == "VDR inst: 255; " + "".join(f"INST {i + 1}: {i:#x}; " for i in instances)
