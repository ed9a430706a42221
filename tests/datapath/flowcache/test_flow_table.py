"""The flow table of a lcore."""

import ctypes
import random
import struct

import pytest

from datapath.flowcache.records import (
    ENTRY_ROOM,
    GROUP_OFFSET,
    HAS_INDEXES,
    IPV6,
    L3,
    L4,
    MULTICAST,
    OFFLOADED,
    RESPONSE_BYTES,
    area,
    contexts,
    entry,
    golden,
    group,
    ipv4,
    ipv6,
    key,
    response,
    tail,
)
from observe import Call, Capacity, Outcome, refused

NO_MORE = 0xFFFFFFFF
INVALID_RESPONSE = "Invalid response returned.\n"
INVALID_ACTION = "Invalid action\n"
NO_SOURCE = "Failed to convert source IPv4 address to binary form.\n\n"
NO_DESTINATION = "Failed to convert destination IPv4 address to binary form.\n\n"

KEY_TEXTS = golden("keys.txt")
NO_KEY = "L2  00:00:00:00:00:00  00:00:00:00:00:00  0     0      " + ("  0.0.0.0" + " " * 38) * 2 + (
    "  0      0        0             0           "
)

ARGUMENTS = {
    "selector": 0,
    "lcore": 0,
    "start_index": 0,
    "option": 0,
    "source_mac_filter": 0,
    "source_mac": "",
    "destination_mac_filter": 0,
    "destination_mac": "",
    "source_ip_version": 0,
    "source_ip": "",
    "destination_ip_version": 0,
    "destination_ip": "",
    "filter_1": 0,
    "filter_2": 0,
    "filter_3": 0,
    "filter_4": 0,
    "filter_5": 0,
}


def arguments(**wanted):
    assert set(wanted) <= set(ARGUMENTS)
    return tuple({**ARGUMENTS, **wanted}.values())


def request(
    selector=0,
    lcore=0,
    start_index=0,
    option=0,
    source_mac=(0, bytes(6)),
    destination_mac=(0, bytes(6)),
    source_ip=(0, b""),
    destination_ip=(0, b""),
    filters=(0, 0, 0, 0, 0),
):
    return struct.pack(
        "<IIIBB6sB6sxI16sI4x16s5i4x",
        selector,
        lcore,
        start_index,
        option,
        *source_mac,
        *destination_mac,
        *source_ip,
        *destination_ip,
        *filters,
    )


def call(asked=None):
    asked = request() if asked is None else asked
    assert len(asked) == 96
    return Call("Qdp_Dump_Flow_Table", [asked, Capacity(RESPONSE_BYTES)])


def flow(key_text=NO_KEY, actions="bmap:0 inval(s):0 cg:0 dp:- len:304; ", hits=(0, 0, 0, 0)):
    return {
        "key": key_text,
        "actions": actions,
        "swHits": hits[0],
        "swBytes": hits[1],
        "hwHits": hits[2],
        "hwBytes": hits[3],
    }


class TestDumpFlowTable:
    def dumped(self, host, qdp, given):
        """What becomes of an answer of the library."""
        host.script("Qdp_Dump_Flow_Table", outputs=[given])
        outcome = qdp.call("DumpFlowTable", *arguments())
        assert outcome.calls == [call()]
        return outcome

    # --- The request ---

    def test_request_of_all_arguments(self, host, qdp):
        host.script("Qdp_Dump_Flow_Table", outputs=[response()])
        asked = arguments(
            selector=0x01020304,
            lcore=63,
            start_index=0xFFFFFFFE,
            option=5,
            source_mac_filter=1,
            source_mac="02:1b:3c:00:0a:ff",
            destination_mac_filter=2,
            destination_mac="AA:BB:CC:DD:EE:0F",
            source_ip_version=4,
            source_ip="10.1.2.3",
            destination_ip_version=6,
            destination_ip="2001:db8::1",
            filter_1=-1,
            filter_2=2,
            filter_3=0x7FFFFFFF,
            filter_4=-0x80000000,
            filter_5=5,
        )
        expected = request(
            0x01020304,
            63,
            0xFFFFFFFE,
            5,
            (1, bytes.fromhex("021b3c000aff")),
            (2, bytes.fromhex("aabbccddee0f")),
            (4, ipv4("10.1.2.3")),
            (6, ipv6("2001:db8::1")),
            (-1, 2, 0x7FFFFFFF, -0x80000000, 5),
        )
        assert qdp.call("DumpFlowTable", *asked) == Outcome({"startIndex": 0, "list": []}, calls=[call(expected)])

    def asked(self, host, qdp, **wanted):
        """The request that arguments make."""
        host.script("Qdp_Dump_Flow_Table", outputs=[response()])
        outcome = qdp.call("DumpFlowTable", *arguments(**wanted))
        assert outcome == Outcome({"startIndex": 0, "list": []}, calls=outcome.calls)
        return outcome.calls[0].arguments[0]

    def test_bytes_that_no_field_sets_are_zero(self, host, qdp):
        assert self.asked(host, qdp) == bytes(96)

    @pytest.mark.parametrize("place, name", [(12, "option"), (13, "source_mac_filter"), (20, "destination_mac_filter")])
    @pytest.mark.parametrize("value, byte", [(0x1FF, 0xFF), (0x100, 0), (-2, 0xFE)])
    def test_options_and_switches_are_low_bytes(self, host, qdp, place, name, value, byte):
        asked = self.asked(host, qdp, **{name: value, "source_mac": "not one", "destination_mac": "not one"})
        assert asked == bytes(place) + bytes([byte]) + bytes(95 - place)

    @pytest.mark.parametrize("side, place", [("source", 13), ("destination", 20)])
    @pytest.mark.parametrize(
        "text, mac",
        [
            ("02:1b:3c:00:0a:ff", "021b3c000aff"),
            ("2:B:1:0:a:F", "020b01000a0f"),
            (" 2: b:1:0:a:f rest", "020b01000a0f"),
            ("02:1b:3c:00:0a:ff:77", "021b3c000aff"),
            ("02:1b:3c", "021b3c000000"),
            ("02-1b-3c-00-0a-ff", "020000000000"),
            ("021b3c000aff", "020000000000"),
            ("", "000000000000"),
            ("zz", "000000000000"),
        ],
    )
    def test_mac_texts_are_not_checked(self, host, qdp, side, place, text, mac):
        asked = self.asked(host, qdp, **{side + "_mac_filter": 1, side + "_mac": text})
        assert asked == bytes(place) + b"\x01" + bytes.fromhex(mac) + bytes(96 - 7 - place)

    @pytest.mark.parametrize("side", ["source", "destination"])
    def test_texts_of_filters_that_are_off_are_not_read(self, host, qdp, side):
        texts = {side + "_mac": "02:1b:3c:00:0a:ff", side + "_ip": "any text"}
        assert self.asked(host, qdp, **texts) == bytes(96)

    @pytest.mark.parametrize("side, place", [("source", 28), ("destination", 48)])
    @pytest.mark.parametrize(
        "version, text, address",
        [(4, "192.0.2.1", ipv4("192.0.2.1")), *[(each, "fe80::1", ipv6("fe80::1")) for each in (6, 1, 5, 0xFFFFFFFF)]],
    )
    def test_addresses(self, host, qdp, side, place, version, text, address):
        asked = bytearray(96)
        asked[place : place + 4] = struct.pack("<I", version)
        at = {"source": 32, "destination": 56}[side]
        asked[at : at + len(address)] = address
        wanted = {side + "_ip_version": version, side + "_ip": text}
        assert self.asked(host, qdp, **wanted) == bytes(asked)

    @pytest.mark.parametrize("side, printed", [("source", NO_SOURCE), ("destination", NO_DESTINATION)])
    @pytest.mark.parametrize(
        "version, text", [(4, ""), (4, "10.0.0"), (4, "10.0.0.1 "), (4, "::1"), (6, "10.0.0.1"), (6, ""), (1, "fe80:")]
    )
    def test_an_address_that_is_none(self, qdp, side, printed, version, text):
        wanted = {side + "_ip_version": version, side + "_ip": text}
        assert qdp.call("DumpFlowTable", *arguments(**wanted)) == refused(printed)

    def test_the_source_address_is_converted_first(self, qdp):
        asked = arguments(source_ip_version=4, source_ip="x", destination_ip_version=4, destination_ip="x")
        assert qdp.call("DumpFlowTable", *asked) == refused(NO_SOURCE)

    @pytest.mark.parametrize("name, value", [("lcore", 63), ("start_index", NO_MORE - 1)])
    def test_bounds_that_are_accepted(self, host, qdp, name, value):
        assert self.asked(host, qdp, **{name: value}) == request(**{name: value})

    @pytest.mark.parametrize("place", range(17))
    def test_an_argument_of_the_wrong_type(self, qdp, place):
        asked = list(arguments())
        asked[place] = None
        assert qdp.call("DumpFlowTable", *asked) == refused(left_set=TypeError)

    @pytest.mark.parametrize("asked", [(), arguments()[:-1], (*arguments(), 0)])
    def test_a_tuple_of_the_wrong_length(self, qdp, asked):
        assert qdp.call("DumpFlowTable", *asked) == refused(left_set=TypeError)

    @pytest.mark.parametrize(
        "wanted, left_set",
        [
            ({"filter_1": 1 << 31}, (OverflowError, "signed integer is greater than maximum")),
            ({"filter_5": -(1 << 31) - 1}, (OverflowError, "signed integer is less than minimum")),
            ({"source_mac": "02\0"}, (ValueError, "embedded null character")),
        ],
    )
    def test_values_that_do_not_parse(self, qdp, wanted, left_set):
        assert qdp.call("DumpFlowTable", *arguments(**wanted)) == refused(left_set=left_set)

    # --- The page ---

    def test_flows_of_different_lengths(self, host, qdp):
        web = entry(
            key(
                L4,
                bytes.fromhex("021000000001"),
                bytes.fromhex("0aff00c00d0e"),
                100,
                5,
                bytes.fromhex("0050c000"),
                69632,
                6,
                ipv4("10.0.0.1") + ipv4("192.168.255.20"),
            ),
            area(generation=3, software_hits=1, software_bytes=2, inval=4, length=128 + 176 + 122 + 1)
            + group(7, 25, dp=0x10, vni=70000)
            + b"\xee"
            + tail(geneve=70000),
            hits=(3, 4),
        )
        drop = entry(
            key(L3 | IPV6, vlan=1, tag=256, addresses=ipv6("2001:db8::1") + ipv6("fe80::2")),
            area(length=128 + 176, offload=OFFLOADED | HAS_INDEXES, hardware_index=9, software_index=8) + group(5, 6),
        )
        guarded = entry(
            key(), area(length=128 + 176) + group(6, 31), sides=contexts(0xABC, None), hits=(7, 8), room=ENTRY_ROOM
        )
        assert self.dumped(host, qdp, response(web, drop, guarded, next_index=0xFFFFFFFE)) == Outcome(
            {
                "startIndex": 0xFFFFFFFE,
                "list": [
                    flow(
                        KEY_TEXTS["tcp over ipv4"],
                        "bmap:0x2000080 inval(s):4 cg:3 dp:0x10 len:427; VNI: 70000; GENEVE ENCAP VNI: 70000; ",
                        (1, 2, 3, 4),
                    ),
                    flow(
                        KEY_TEXTS["layer 3 over ipv6"],
                        "OL; swFlowIdx: 8; hwFlowIdx: 9; bmap:0x60 inval(s):0 cg:0 dp:- len:304; DROP; ",
                    ),
                    flow(
                        actions="bmap:0x80000040 inval(s):0 cg:0 dp:- len:304; "
                        "DFW on srcPort, ctCtxId: 0xabc; DFW on dstPort; ",
                        hits=(0, 0, 7, 8),
                    ),
                ],
            },
            calls=[call()],
        )

    @pytest.mark.parametrize("next_index", [0, 1, 0x80000000, NO_MORE])
    def test_a_page_without_flows(self, host, qdp, next_index):
        assert self.dumped(host, qdp, response(next_index=next_index, valid=0)) == Outcome(
            {"startIndex": next_index, "list": []}, calls=[call()]
        )

    def test_an_answer_without_bytes_is_a_page_without_flows(self, host, qdp):
        host.script("Qdp_Dump_Flow_Table")
        assert qdp.call("DumpFlowTable", *arguments()) == Outcome({"startIndex": 0, "list": []}, calls=[call()])

    @pytest.mark.parametrize(
        "software, hardware",
        [((0x1FFFFFFFF, 1 << 63), (1 << 32, 5)), (((1 << 56) - 1, (1 << 64) - 1), ((1 << 64) - 1, 1 << 63))],
    )
    def test_counters_at_their_largest(self, host, qdp, software, hardware):
        actions = area(software_hits=software[0], software_bytes=software[1], length=304) + group()
        given = response(entry(actions=actions, hits=hardware, room=ENTRY_ROOM))
        assert self.dumped(host, qdp, given) == Outcome(
            {"startIndex": 0, "list": [flow(hits=(*software, *hardware))]}, calls=[call()]
        )

    def test_a_multicast_group(self, host, qdp):
        actions = area(length=480, group_flags=MULTICAST, n_ag=2, n_dp=3) + group(5)
        outcome = self.dumped(host, qdp, response(entry(actions=actions, room=ENTRY_ROOM)))
        assert outcome.result["list"][0]["actions"] == "MC: inval(s):0 cg:0 len:480; flag 0x40 n_ag:2 n_dp:3"

    def test_the_group_lies_where_the_response_says(self, host, qdp):
        actions = area(length=304 + 33) + b"\xee" * 33 + group(11)
        outcome = self.dumped(host, qdp, response(entry(actions=actions, room=ENTRY_ROOM), group_offset=161))
        assert outcome.result["list"] == [flow(actions="bmap:0x800 inval(s):0 cg:0 dp:- len:337; VR; ")]

    def test_as_many_flows_as_fit(self, host, qdp):
        flows = [entry(hits=(i, 0)) for i in range(22)] + [entry(hits=(22, 0), room=ENTRY_ROOM)]
        outcome = self.dumped(host, qdp, response(*flows))
        assert [each["hwHits"] for each in outcome.result["list"]] == list(range(23))

    # --- Pages that are not what they should be ---

    @pytest.mark.parametrize("flows", [1, 2])
    @pytest.mark.parametrize("short", [0, 1, 300, ENTRY_ROOM + 24])
    def test_an_entry_beyond_the_valid_bytes(self, host, qdp, flows, short):
        entries = [entry()] * (flows - 1) + [entry(room=ENTRY_ROOM)]
        valid = 24 + 416 * (flows - 1) + ENTRY_ROOM - short
        outcome = self.dumped(host, qdp, response(*entries, valid=valid))
        if short:
            assert outcome == Outcome(None, INVALID_RESPONSE, calls=[call()])
        else:
            assert len(outcome.result["list"]) == flows

    @pytest.mark.parametrize("count", [2, 87, 100_000])
    def test_more_entries_than_there_are(self, host, qdp, count):
        given = response(entry(room=ENTRY_ROOM), count=count)
        assert self.dumped(host, qdp, given) == Outcome(None, INVALID_RESPONSE, calls=[call()])

    @pytest.mark.parametrize("count, complete", [(14, True), (15, False)])
    def test_valid_bytes_beyond_the_response(self, host, qdp, count, complete):
        """Entries that fill their room: 14 end inside the response, the 15th does not, whatever the answer says."""
        actions = area(length=ENTRY_ROOM - 112) + group()
        given = response(*[entry(actions=actions, room=ENTRY_ROOM)] * count, valid=0xFFFFFFFF)
        outcome = self.dumped(host, qdp, given)
        if complete:
            assert len(outcome.result["list"]) == count
        else:
            assert outcome == Outcome(None, INVALID_RESPONSE, calls=[call()])

    @pytest.mark.parametrize(
        "last_offset, accepted", [(RESPONSE_BYTES - ENTRY_ROOM, True), (RESPONSE_BYTES - ENTRY_ROOM + 1, False)]
    )
    def test_the_last_place_of_an_entry(self, host, qdp, last_offset, accepted):
        leading = area(length=last_offset - 24 - 112) + group()
        given = response(entry(actions=leading, room=last_offset - 24), entry(room=ENTRY_ROOM), valid=0xFFFFFFFF)
        outcome = self.dumped(host, qdp, given)
        assert (outcome.printed, outcome.result is not None) == (("", True) if accepted else (INVALID_RESPONSE, False))

    def test_an_entry_whose_length_leads_outside(self, host, qdp):
        leading = area(length=0xFFFF) + group()
        given = response(entry(actions=leading, room=ENTRY_ROOM), entry(room=ENTRY_ROOM), valid=0xFFFFFFFF)
        assert self.dumped(host, qdp, given) == Outcome(None, INVALID_RESPONSE, calls=[call()])

    def test_sections_outside_the_response_read_as_zero(self, host, qdp):
        """The last entry's length is nobody's offset any more; what its tail shows lies outside."""
        actions = area(length=0xFFFF) + group(20, 25, 26, vni=7)
        outcome = self.dumped(host, qdp, response(entry(actions=actions, room=ENTRY_ROOM)))
        assert outcome.result["list"] == [
            flow(
                actions="bmap:0x6100000 inval(s):0 cg:0 dp:- len:65535; VDR inst: 0; "
                "VNI: 7; GENEVE ENCAP VNI: 0; VNI: 7; VXLAN ENCAP VNI: 0; "
            )
        ]

    @pytest.mark.parametrize("group_offset", [RESPONSE_BYTES - 24 - 112, 0x7FFFFFFF, 0xFFFFFFFF])
    def test_a_group_outside_the_response_reads_as_zero(self, host, qdp, group_offset):
        given = response(entry(actions=area(length=304) + group(5), room=ENTRY_ROOM), group_offset=group_offset)
        assert self.dumped(host, qdp, given) == Outcome({"startIndex": 0, "list": [flow()]}, calls=[call()])

    def test_a_group_that_the_response_cuts(self, host, qdp):
        """Its bitmap is there, its VNI and child port are not."""
        end = bytearray(response(entry(room=ENTRY_ROOM)).ljust(RESPONSE_BYTES, b"\0"))
        end[20:24] = struct.pack("<I", RESPONSE_BYTES - 24 - 112 - 24)
        end[-8:] = struct.pack("<Q", 1 << 2 | 1 << 7 | 1 << 22)
        outcome = self.dumped(host, qdp, bytes(end))
        assert outcome.result["list"] == [
            flow(actions="bmap:0x400084 inval(s):0 cg:0 dp:0 len:304; KCPInputChildPort: 0; VNI: 0; ")
        ]

    def test_instances_outside_the_response_read_as_zero(self, host, qdp):
        """255 instances do not fit the text, which is what is said of them."""
        room = bytearray(entry(actions=area(length=ENTRY_ROOM - 112) + group(20), room=ENTRY_ROOM))
        room[-122:] = tail(instances=(1,), count=3)
        last = RESPONSE_BYTES - ENTRY_ROOM
        leading = entry(actions=area(length=last - 24 - 112) + group(), room=last - 24)
        outcome = self.dumped(host, qdp, response(leading, bytes(room)))
        assert outcome.result["list"][1]["actions"].endswith(
            "VDR inst: 3; INST 1: 0x1; INST 2: 0xeeeeeeee; INST 3: 0xeeeeeeee; "
        )
        room[-122:] = tail(instances=(1, 2, 3), count=5)
        outcome = self.dumped(host, qdp, response(leading, bytes(room)))
        assert outcome.result["list"][1]["actions"].endswith(
            "VDR inst: 5; INST 1: 0x1; INST 2: 0x2; INST 3: 0x3; INST 4: 0x0; INST 5: 0x0; "
        )

    def test_actions_are_cut_at_the_end_of_their_text(self, host, qdp):
        """Of the last instance one character less than its text has room in 511."""
        last = RESPONSE_BYTES - ENTRY_ROOM
        leading = entry(actions=area(length=last - 24 - 112) + group(), room=last - 24)
        room = bytearray(entry(actions=area(length=ENTRY_ROOM - 112) + group(20), room=ENTRY_ROOM))
        room[-122:] = tail(instances=(1, 2, 0x33), count=33)
        shown = self.dumped(host, qdp, response(leading, bytes(room))).result["list"][1]["actions"]
        head, _, instances = shown.partition("VDR inst: 33; ")
        assert head.startswith("bmap:0x100000 ")
        values = [1, 2, 0x33] + [0] * 30
        whole = "".join("INST {}: 0x{:x}; ".format(i, value) for i, value in enumerate(values, 1))
        assert (len(shown), instances) == (511, whole[:-1])

    def test_a_short_length_moves_the_tail_into_the_key(self, host, qdp):
        """Ten bytes before the action area lie the key's last ten: two of its second address, and its reserved ones.
        The key has been cleared by then."""
        actions = area(length=112) + group(25)
        given = response(entry(key(addresses=b"\x11" * 32), actions, room=ENTRY_ROOM))
        outcome = self.dumped(host, qdp, given)
        assert outcome.result["list"][0]["actions"].endswith(f"GENEVE ENCAP VNI: {0x0000EE}; ")

    def test_an_action_list_that_is_too_long(self, host, qdp):
        room = bytearray(entry(actions=area(length=ENTRY_ROOM - 112) + group(20), room=ENTRY_ROOM))
        room[-122:] = tail(count=255)
        given = response(bytes(room), entry(room=ENTRY_ROOM))
        assert self.dumped(host, qdp, given) == Outcome(None, INVALID_ACTION * 2, calls=[call()])

    def test_all_actions_fit_their_text(self, host, qdp):
        every = [bit for bit in range(38) if bit not in (5, 20)]
        actions = area(length=304) + group(*every)
        outcome = self.dumped(host, qdp, response(entry(actions=actions, room=ENTRY_ROOM)))
        assert outcome.result["list"][0]["actions"].endswith("; LTA; MetaFlow; ")

    @pytest.mark.parametrize("seed", range(300))
    def test_random_answers(self, host, qdp, seed):
        """Whatever the answer: a page or one of the messages. (Under the sanitizers: nothing outside is touched.)"""
        rng = random.Random(seed)
        made = []
        while rng.random() < 0.8:
            length = rng.choice([0, 50, 122, 304, 426, 576, rng.randrange(0x10000)])
            bits = rng.sample(range(64), rng.randrange(12))
            actions = area(
                length=length, offload=rng.getrandbits(16), group_flags=rng.choice([0, 0, MULTICAST])
            ) + group(*bits)
            actions = actions.ljust(max(length, len(actions)), rng.choice([b"\0", b"\x03", b"\xff"]))[
                : max(length, 180)
            ]
            made.append(entry(key(rng.randrange(16)), actions))
        given = bytearray(
            response(
                *made,
                count=rng.choice([len(made), len(made) + 1, rng.randrange(200)]),
                valid=rng.choice([24 + sum(map(len, made)) + ENTRY_ROOM, RESPONSE_BYTES, rng.getrandbits(32)]),
                group_offset=rng.choice([GROUP_OFFSET, GROUP_OFFSET, rng.randrange(12000), rng.getrandbits(32)]),
            )
        ).ljust(RESPONSE_BYTES, rng.choice([b"\0", b"\xff"]))
        for _ in range(rng.choice([0, 0, 5, 500])):
            given[rng.randrange(24, len(given))] = rng.randrange(256)
        outcome = self.dumped(host, qdp, bytes(given))
        if outcome.result is None:
            assert outcome.printed in (INVALID_RESPONSE, INVALID_ACTION * 2)
        else:
            assert outcome.printed == ""
            assert len(outcome.result["list"]) == struct.unpack_from("<I", given, 12)[0]
            assert all(list(each) == list(flow()) for each in outcome.result["list"])


UNREAD = pytest.mark.parametrize("asked", [(), (0,), ("x", None, 3.5)])


class TestDumpDecapFlowTable:
    @UNREAD
    def test_says_that_it_is_not_supported(self, qdp, asked):
        assert qdp.call("DumpDecapFlowTable", *asked) == Outcome(
            None, "Dump Decap  Flow Not supported below 2.10.0.0\n"
        )


class TestDumpDecapSaFlowTable:
    @UNREAD
    def test_says_that_it_is_not_supported(self, qdp, asked):
        assert qdp.call("DumpDecapSaFlowTable", *asked) == Outcome(
            None, "Dump Decap  Flow Not supported below 2.10.0.0\n"
        )


class TestDumpPortFlow:
    @UNREAD
    def test_says_that_it_is_not_supported(self, qdp, asked):
        assert qdp.call("DumpPortFlow", *asked) == Outcome(None, "Dump Port Flow Not supported below 2.10.0.0\n")


class TestEmbeddedHost:
    def pages(self, qdp, lcore, **wanted):
        start = 0
        while start != NO_MORE:
            page = qdp.result("DumpFlowTable", *arguments(lcore=lcore, start_index=start, **wanted))
            yield page["list"]
            assert page["startIndex"] > start
            start = page["startIndex"]

    def table(self, qdp, lcore, **wanted):
        return [each for page in self.pages(qdp, lcore, **wanted) for each in page]

    def test_hundreds_of_flows_over_all_lcores(self, qdp):
        tables = [self.table(qdp, lcore) for lcore in range(16)]
        assert all(len(table) >= 24 for table in tables)
        assert sum(map(len, tables)) == sum(24 + lcore * 11 % 30 for lcore in range(16))
        keys = [each["key"] for table in tables for each in table]
        assert {key[:2] for key in keys} == {"L2", "L3", "L4"}
        assert {key.split()[7] for key in keys} == {"0", "1", "6", "17", "58"}
        assert {":" in key.split()[5] for key in keys} == {True, False}

    @pytest.mark.parametrize(
        "text",
        [
            "GENEVE ENCAP VNI: 69632; ",
            "GENEVE DECAP; ",
            "VXLAN ENCAP VNI: 5000; ",
            "VXLAN DECAP; ",
            "Mirror Ingress: 1; Mirror Egress: 7; ",
            "DFW on srcPort, ctCtxId: 0x1000000",
            "DFW on srcPort; DFW on dstPort; ",
            "VDR inst: 1; INST 1: 0x1770; ",
            "VDR inst: 3; INST 1: 0x1770; INST 2: 0x1771; INST 3: 0x1772; ",
            "VI: 108; PI: 0; ",
            "VR; PR; ",
            "GVLAN Insert; ",
            "DROP; ",
            "MC: inval(s):",
            "OL; swFlowIdx: 0x430a5c00",
            "OL; swFlowIdx: 448; hwFlowIdx: 101; ",
        ],
    )
    def test_actions_worth_looking_at(self, qdp, text):
        assert any(text in each["actions"] for lcore in range(16) for each in self.table(qdp, lcore))

    def test_hardware_indexes_are_the_flows_own(self, qdp):
        actions = [each["actions"] for lcore in range(16) for each in self.table(qdp, lcore)]
        indexes = [text.split("hwFlowIdx: ")[1].split(";")[0] for text in actions if "hwFlowIdx" in text]
        shown = [index for index in indexes if index != "N/A"]
        assert len(shown) > 50
        assert len(set(shown)) == len(shown)

    def test_pages_are_as_long_as_the_response_allows(self, qdp):
        """Every page but the last has no room for another flow of the greatest length."""
        for lcore in range(16):
            pages = list(self.pages(qdp, lcore))
            assert len(pages) > 1
            for page in pages[:-1]:
                lengths = [int(each["actions"].split("len:")[1].split(";")[0]) for each in page]
                assert 24 + sum(112 + length for length in lengths) + ENTRY_ROOM > RESPONSE_BYTES

    def test_a_page_from_anywhere(self, qdp):
        whole = self.table(qdp, 3)
        page = qdp.result("DumpFlowTable", *arguments(lcore=3, start_index=20))
        assert [each["key"] for each in page["list"]] == [each["key"] for each in whole[20:]]

    @pytest.mark.parametrize("start", [27, 28, NO_MORE - 1])
    def test_a_page_behind_the_last_flow(self, qdp, start):
        assert qdp.result("DumpFlowTable", *arguments(lcore=3, start_index=start)) == {
            "startIndex": NO_MORE,
            "list": [],
        }

    @pytest.mark.parametrize(
        "column, wanted",
        [
            (1, {"source_mac_filter": 1, "source_mac": "02:10:00:00:00:03"}),
            (2, {"destination_mac_filter": 1, "destination_mac": "01:00:5e:00:00:fb"}),
            (5, {"source_ip_version": 4, "source_ip": "10.0.4.5"}),
            (6, {"destination_ip_version": 4, "destination_ip": "224.0.0.251"}),
            (5, {"source_ip_version": 6, "source_ip": "2001:db8:0:2::1003"}),
            (6, {"destination_ip_version": 6, "destination_ip": "2001:db8:0:12::100f"}),
        ],
    )
    def test_filters(self, qdp, column, wanted):
        value = [text for name, text in wanted.items() if isinstance(text, str)][0]
        whole = self.table(qdp, 0)
        expected = [each["key"] for each in whole if each["key"].split()[column] == value]
        assert 0 < len(expected) < len(whole)
        assert [each["key"] for each in self.table(qdp, 0, **wanted)] == expected

    def test_filters_that_match_nothing(self, qdp):
        assert self.table(qdp, 0, source_ip_version=4, source_ip="0.0.0.0") == []

    def test_filters_narrow_each_other(self, qdp):
        wanted = {"source_mac_filter": 1, "source_mac": "02:10:00:00:00:04", "source_ip_version": 4}
        assert len(self.table(qdp, 0, **wanted, source_ip="10.0.4.5")) == 1
        assert self.table(qdp, 0, **wanted, source_ip="10.0.4.15") == []

    @pytest.mark.parametrize("lcore", [16, 63])
    def test_a_lcore_without_a_flow_cache(self, qdp, lcore):
        outcome = qdp.call("DumpFlowTable", *arguments(lcore=lcore))
        assert outcome == Outcome(None, "Failed to retrieve flow table.\n\n", calls=[call(request(lcore=lcore))])

    def test_hits_and_bytes_grow_with_time(self, host, qdp):
        host.freeze()
        before = self.table(qdp, 0)
        assert self.table(qdp, 0) == before
        host.advance(100)
        after = self.table(qdp, 0)
        for old, new in zip(before, after):
            assert (new["key"], new["actions"]) == (old["key"], old["actions"])
            assert new["swHits"] > old["swHits"] and new["swBytes"] > old["swBytes"]
            assert (new["hwHits"] > old["hwHits"]) == new["actions"].startswith("OL; ")
        # The second flow: 5 + 13 packets a second of 64 + 37 bytes.
        assert (after[1]["swHits"] - before[1]["swHits"], after[1]["swBytes"] - before[1]["swBytes"]) == (1800, 181800)

    def test_a_response_that_is_too_small_is_refused(self, host):
        buffer = ctypes.create_string_buffer(b"#" * RESPONSE_BYTES, RESPONSE_BYTES)
        size = ctypes.c_uint32(RESPONSE_BYTES - 1)
        assert host.libqdp.Qdp_Dump_Flow_Table(request(), buffer, ctypes.byref(size)) != 0
        assert buffer.raw == b"#" * RESPONSE_BYTES
