"""The MAC tables: listing, clearing, adding and deleting entries."""

import ctypes
import struct

import pytest

from adversity import starved
from heap import COUNTS_BYTES, at_most
from observe import INVALID_PARAMETER, Call, Capacity, Outcome, refused

PORT_TABLE_BYTES = 327696
SWITCH_TABLE_BYTES = 1310736

PORT_REFUSAL = "Failed to retrieve mac table.\n"
SWITCH_REFUSAL = "Failed to retrieve switch mac table.\n"
CLEAR_REFUSAL = "Failed to clear mac table.\n"

# 2^31 entries are a list of 16 GiB.
TOO_MANY, TOO_LITTLE_MEMORY = 1 << 31, 8 << 30
NO_LIMIT = "the sanitizers' allocator does without a limit of memory"


def entry(mac=bytes(6), vlan=0, qdp_port=0, generations=0):
    return struct.pack("<6sHIII", mac, vlan, qdp_port, 0xDEADDEAD, generations)


def table(*entries, count=None, limit=0, exceeded=0):
    count = len(entries) if count is None else count
    return struct.pack("<4I", count, 0xDEADDEAD, limit, exceeded) + b"".join(entries)


ENTRIES = [
    entry(bytes([0x0B, 0x1B, 0xFF, 0, 1, 0xC0]), 100, 0x04000007, 3),
    entry(b"\xff" * 6, 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFE),
]
LISTED = [
    {"macAddr": "0b:1b:ff:00:01:c0", "vlanID": 100, "qdpPortID": 0x04000007, "macGenDiff": 3},
    {"macAddr": "ff:ff:ff:ff:ff:ff", "vlanID": 0xFFFF, "qdpPortID": 0xFFFFFFFF, "macGenDiff": 0xFFFFFFFE},
]
NOTHING = {"macAddr": "00:00:00:00:00:00", "vlanID": 0, "qdpPortID": 0, "macGenDiff": 0}


def addresses(qdp, switch, port):
    return [each["macAddr"] for each in qdp.result("ListPortMACTable", switch, port)["MacTableList"]]


class TestListPortMACTable:
    @staticmethod
    def call(switch=3, port=7):
        return Call("Qdp_Dump_Port_MAC_Table", [switch, port, Capacity(PORT_TABLE_BYTES)])

    def test_entries_in_record_order(self, host, qdp):
        host.script("Qdp_Dump_Port_MAC_Table", outputs=[table(*ENTRIES, limit=1024, exceeded=1)])
        assert qdp.call("ListPortMACTable", 3, 7) == Outcome(
            {"MacLimit": 1024, "LimitExceeded": 1, "MacTableList": LISTED}, calls=[self.call()]
        )

    def test_an_empty_table(self, host, qdp):
        host.script("Qdp_Dump_Port_MAC_Table", outputs=[table(limit=0xFFFFFFFF, exceeded=0xFFFFFFFE)])
        assert qdp.call("ListPortMACTable", 3, 7) == Outcome(
            {"MacLimit": 0xFFFFFFFF, "LimitExceeded": 0xFFFFFFFE, "MacTableList": []}, calls=[self.call()]
        )

    def test_an_answer_without_bytes(self, host, qdp):
        host.script("Qdp_Dump_Port_MAC_Table")
        assert qdp.call("ListPortMACTable", 3, 7) == Outcome(
            {"MacLimit": 0, "LimitExceeded": 0, "MacTableList": []}, calls=[self.call()]
        )

    def test_a_full_table_and_entries_beyond_it_which_read_as_zero(self, host, qdp):
        full = [entry(vlan=i % 4096, generations=i) for i in range(16384)]
        host.script("Qdp_Dump_Port_MAC_Table", outputs=[table(*full, count=16387)])
        listed = qdp.result("ListPortMACTable", 3, 7)["MacTableList"]
        assert [each["macGenDiff"] for each in listed[:16384]] == list(range(16384))
        assert listed[16384:] == [NOTHING] * 3

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383), (15, 16384), (0, 0xFFFFFFFF)])
    def test_any_port_is_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Dump_Port_MAC_Table", outputs=[table()])
        assert qdp.call("ListPortMACTable", switch, port) == Outcome(
            {"MacLimit": 0, "LimitExceeded": 0, "MacTableList": []}, calls=[self.call(switch, port)]
        )

    @pytest.mark.skipif(not COUNTS_BYTES, reason=NO_LIMIT)
    def test_a_count_beyond_the_memory(self, host, qdp):
        host.script("Qdp_Dump_Port_MAC_Table", outputs=[table(count=TOO_MANY)])
        with at_most(TOO_LITTLE_MEMORY):
            outcome = qdp.call("ListPortMACTable", 3, 7)
        assert outcome == Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n"), calls=[self.call()])

    def test_lack_of_memory(self, host, qdp):
        host.freeze()
        assert starved(qdp, "ListPortMACTable", 0, 3) == [
            Outcome(None, "Failed to allocate mac table.\n", left_set=(MemoryError, "")),
            Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n")),
            Outcome(None, left_set=(SystemError, "Failed to set dict item.\n")),
        ]

    def test_embedded_host(self, host, qdp):
        host.freeze()
        # Port 3 of switch 0: its own address and three behind it, in VLAN 103.
        listed = qdp.result("ListPortMACTable", 0, 3)
        assert (listed["MacLimit"], listed["LimitExceeded"]) == (1024, 0)
        assert addresses(qdp, 0, 3) == ["02:10:00:00:00:03"] + ["02:20:00:00:03:0%d" % i for i in range(3)]
        assert {(each["vlanID"], each["qdpPortID"]) for each in listed["MacTableList"]} == {(103, 0x04000003)}

    def test_embedded_host_entries_age(self, host, qdp):
        def ages():
            return {each["macGenDiff"] for each in qdp.result("ListPortMACTable", 0, 3)["MacTableList"]}

        host.freeze()
        before = ages()
        host.advance(300)
        assert ages() == {age + 10 for age in before}

    @pytest.mark.parametrize("switch, port", [(0, 36), (3, 0)])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        assert qdp.call("ListPortMACTable", switch, port).printed == PORT_REFUSAL

    def test_embedded_host_refuses_a_buffer_that_is_too_small(self, host):
        size = ctypes.c_uint32(16 + 4 * 20 - 1)
        buffer = ctypes.create_string_buffer(b"#" * 100, 100)
        assert host.libqdp.Qdp_Dump_Port_MAC_Table(0, 3, buffer, ctypes.byref(size)) != 0
        assert buffer.raw == b"#" * 100
        size = ctypes.c_uint32(16 + 4 * 20)
        assert host.libqdp.Qdp_Dump_Port_MAC_Table(0, 3, buffer, ctypes.byref(size)) == 0
        assert buffer.raw[96:] == b"####"

    def test_entries_that_are_counted_and_not_written_are_not_those_of_an_earlier_call(self, host, qdp):
        host.script("Qdp_Dump_Port_MAC_Table", outputs=[table(*[entry(b"\x11" * 6, 7)] * 300)])
        host.script("Qdp_Dump_Port_MAC_Table", outputs=[table(entry(b"\x22" * 6), count=300)])
        qdp.result("ListPortMACTable", 0, 0)
        listed = qdp.result("ListPortMACTable", 0, 0)["MacTableList"]
        assert [each["macAddr"] for each in listed] == ["22:22:22:22:22:22"] + ["00:00:00:00:00:00"] * 299


class TestListSwitchMACTable:
    @staticmethod
    def call(switch=3):
        return Call("Qdp_Dump_Switch_MAC_Table", [switch, Capacity(SWITCH_TABLE_BYTES)])

    def test_entries_in_record_order(self, host, qdp):
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[table(*ENTRIES, limit=32768, exceeded=1)])
        assert qdp.call("ListSwitchMACTable", 3) == Outcome(
            {"MacLimit": 32768, "MacTableList": LISTED}, calls=[self.call()]
        )

    def test_entries_that_are_counted_and_not_written_are_not_those_of_an_earlier_call(self, host, qdp):
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[table(*[entry(b"\x11" * 6, 7)] * 60000)])
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[table(entry(b"\x22" * 6), count=60000)])
        qdp.result("ListSwitchMACTable", 0)
        listed = qdp.result("ListSwitchMACTable", 0)["MacTableList"]
        assert [each["macAddr"] for each in listed] == ["22:22:22:22:22:22"] + ["00:00:00:00:00:00"] * 59999

    def test_an_empty_table(self, host, qdp):
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[table(limit=0xFFFFFFFF)])
        assert qdp.call("ListSwitchMACTable", 3) == Outcome(
            {"MacLimit": 0xFFFFFFFF, "MacTableList": []}, calls=[self.call()]
        )

    def test_an_answer_without_bytes(self, host, qdp):
        host.script("Qdp_Dump_Switch_MAC_Table")
        assert qdp.call("ListSwitchMACTable", 3) == Outcome({"MacLimit": 0, "MacTableList": []}, calls=[self.call()])

    def test_a_full_table_and_entries_beyond_it_which_read_as_zero(self, host, qdp):
        full = [entry(vlan=i % 4096, generations=i) for i in range(65536)]
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[table(*full, count=65539)])
        listed = qdp.result("ListSwitchMACTable", 3)["MacTableList"]
        assert [each["macGenDiff"] for each in listed[:65536]] == list(range(65536))
        assert listed[65536:] == [NOTHING] * 3

    @pytest.mark.parametrize("switch", [0, 15])
    def test_bounds_that_are_accepted(self, host, qdp, switch):
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[table()])
        assert qdp.call("ListSwitchMACTable", switch) == Outcome(
            {"MacLimit": 0, "MacTableList": []}, calls=[self.call(switch)]
        )

    @pytest.mark.skipif(not COUNTS_BYTES, reason=NO_LIMIT)
    def test_a_count_beyond_the_memory(self, host, qdp):
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[table(count=TOO_MANY)])
        with at_most(TOO_LITTLE_MEMORY):
            outcome = qdp.call("ListSwitchMACTable", 3)
        assert outcome == Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n"), calls=[self.call()])

    def test_lack_of_memory(self, host, qdp):
        host.freeze()
        qdp.result("ClearSwitchMACTable", 0)
        qdp.result("AddMACEntry", 0, 3, 0, 100)
        assert starved(qdp, "ListSwitchMACTable", 0) == [
            Outcome(None, "Failed to allocate switch mac table.\n", left_set=(MemoryError, "")),
            Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n")),
            Outcome(None, left_set=(SystemError, "Failed to set dict item.\n")),
        ]

    def test_embedded_host_lists_what_the_ports_list(self, host, qdp):
        host.freeze()
        for switch in range(3):
            listed = qdp.result("ListSwitchMACTable", switch)
            ports = [qdp.result("ListPortMACTable", switch, port["portID"]) for port in qdp.result("ListPorts", switch)]
            assert listed == {"MacLimit": 32768, "MacTableList": sum((port["MacTableList"] for port in ports), [])}
            assert listed["MacTableList"]

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("ListSwitchMACTable", 3).printed == SWITCH_REFUSAL


class TestClearPortMACTable:
    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383), (15, 16384), (0, 0xFFFFFFFF)])
    def test_any_port_is_passed_on(self, host, qdp, switch, port):
        host.script("Qdp_Clear_Port_MAC_Table")
        assert qdp.call("ClearPortMACTable", switch, port) == Outcome(
            None, calls=[Call("Qdp_Clear_Port_MAC_Table", [switch, port])]
        )

    def test_embedded_host_clears_one_port(self, qdp):
        before = [addresses(qdp, 0, port) for port in range(4)]
        qdp.result("ClearPortMACTable", 0, 2)
        assert [addresses(qdp, 0, port) for port in range(4)] == [*before[:2], [], before[3]]

    @pytest.mark.parametrize("switch, port", [(0, 36), (3, 0)])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        assert qdp.call("ClearPortMACTable", switch, port).printed == CLEAR_REFUSAL


class TestClearSwitchMACTable:
    @pytest.mark.parametrize("switch", [0, 15])
    def test_names_the_switch(self, host, qdp, switch):
        host.script("Qdp_Clear_Switch_MAC_Table")
        assert qdp.call("ClearSwitchMACTable", switch) == Outcome(
            None, calls=[Call("Qdp_Clear_Switch_MAC_Table", [switch])]
        )

    def test_embedded_host_clears_one_switch(self, host, qdp):
        host.freeze()
        others = [qdp.result("ListSwitchMACTable", switch) for switch in (0, 2)]
        qdp.result("ClearSwitchMACTable", 1)
        assert qdp.result("ListSwitchMACTable", 1) == {"MacLimit": 32768, "MacTableList": []}
        assert [qdp.result("ListSwitchMACTable", switch) for switch in (0, 2)] == others

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("ClearSwitchMACTable", 3).printed == CLEAR_REFUSAL


class EntryOperation:
    """What adding and deleting have in common."""

    method = ""
    operation = None
    refusal = ""

    MAC = 0x0000554433221102
    MAC_BYTES = bytes([0x02, 0x11, 0x22, 0x33, 0x44, 0x55])

    def call(self, switch, port, mac, vlan):
        return Call("Qdp_MAC_Entry_Ops", [switch, port, mac, vlan, self.operation])

    @pytest.mark.parametrize(
        "given, vlan_argument, switch, vlan",
        [
            (3, 100, 0, 100),
            (3, 0x00050064, 5, 100),
            (0, 0x000FFFFF, 15, 0xFFFF),
            (0xFFFF, 0, 0, 0),
            (16, 0xFFFF, 0, 0xFFFF),
            (5, 0x00050000, 5, 0),
        ],
    )
    def test_the_upper_half_of_the_vlan_is_the_switch(self, host, qdp, given, vlan_argument, switch, vlan):
        host.script("Qdp_MAC_Entry_Ops")
        assert qdp.call(self.method, given, 7, self.MAC, vlan_argument) == Outcome(
            None, calls=[self.call(switch, 7, self.MAC_BYTES, vlan)]
        )

    @pytest.mark.parametrize(
        "given, vlan_argument",
        [
            (0, 0x00100064),
            (3, 0x00100000),
            (0, 0xFFFFFFFF),
            (3, -1),
            (0x00010000, 100),
            (0x00010003, 0x00050064),
            (0xFFFF0000, 0),
            (-1, 0),
        ],
    )
    def test_a_resulting_switch_out_of_range(self, qdp, given, vlan_argument):
        assert qdp.call(self.method, given, 7, self.MAC, vlan_argument) == refused()

    @pytest.mark.parametrize(
        "number, mac",
        [
            (0, bytes(6)),
            (1, b"\x01\0\0\0\0\0"),
            (0x0000C00000000000, b"\0\0\0\0\0\xc0"),
            (0x7FFF554433221102, MAC_BYTES),
            (-1, b"\xff" * 6),
            (-(1 << 63), bytes(6)),
            ((1 << 63) - 1, b"\xff" * 6),
        ],
    )
    def test_the_address_is_the_lowest_six_bytes(self, host, qdp, number, mac):
        host.script("Qdp_MAC_Entry_Ops")
        assert qdp.call(self.method, 0, 7, number, 100) == Outcome(None, calls=[self.call(0, 7, mac, 100)])

    @pytest.mark.parametrize("port", [0, 16383, 16384, 0xFFFFFFFF])
    def test_any_port_is_passed_on(self, host, qdp, port):
        host.script("Qdp_MAC_Entry_Ops")
        assert qdp.call(self.method, 0, port, self.MAC, 1) == Outcome(
            None, calls=[self.call(0, port, self.MAC_BYTES, 1)]
        )

    @pytest.mark.parametrize("number", [1 << 63, -(1 << 63) - 1])
    def test_an_address_beyond_64_bits(self, qdp, number):
        outcome = qdp.call(self.method, 0, 0, number, 0)
        assert (outcome.result, outcome.printed, outcome.calls) == (None, INVALID_PARAMETER, [])
        assert outcome.left_set[0] is OverflowError

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, status):
        host.fail("Qdp_MAC_Entry_Ops", status)
        assert qdp.call(self.method, 3, 7, self.MAC, 100) == Outcome(
            None, self.refusal, calls=[self.call(0, 7, self.MAC_BYTES, 100)]
        )

    @pytest.mark.parametrize(
        "port, mac, vlan",
        [
            (36, MAC, 100),  # no such port
            (3, MAC, 0x00030064),  # no such switch
            (3, MAC, 4095),  # no such VLAN
            (3, MAC | 1, 100),  # a group address
        ],
    )
    def test_embedded_host_refuses_what_cannot_be(self, qdp, port, mac, vlan):
        assert qdp.call(self.method, 0, port, mac, vlan).printed == self.refusal


def test_embedded_host_knows_two_entry_operations(host):
    for operation, is_known in [(1, True), (0, True), (2, False), (255, False)]:
        assert (host.libqdp.Qdp_MAC_Entry_Ops(0, 3, bytes(6), 100, operation) == 0) == is_known


class TestAddMACEntry(EntryOperation):
    method, operation, refusal = "AddMACEntry", 1, "Failed to add a MAC entry."

    def test_embedded_host_adds_a_static_entry(self, host, qdp):
        host.freeze()
        before = qdp.result("ListPortMACTable", 1, 4)["MacTableList"]
        qdp.result("AddMACEntry", 0, 4, self.MAC, 0x00010064)
        added = {"macAddr": "02:11:22:33:44:55", "vlanID": 100, "qdpPortID": 0x04010004, "macGenDiff": 0}
        assert qdp.result("ListPortMACTable", 1, 4)["MacTableList"] == [*before, added]
        assert qdp.result("ListSwitchMACTable", 1)["MacTableList"][-1] == added
        host.advance(300)
        assert qdp.result("ListPortMACTable", 1, 4)["MacTableList"][-1] == added

    def test_embedded_host_knows_an_address_once_a_vlan(self, host, qdp):
        qdp.result("ClearSwitchMACTable", 0)
        qdp.result("AddMACEntry", 0, 2, self.MAC, 100)
        qdp.result("AddMACEntry", 0, 2, self.MAC, 101)
        qdp.result("AddMACEntry", 0, 3, self.MAC, 100)
        assert [
            (each["qdpPortID"] & 0xFF, each["vlanID"]) for each in qdp.result("ListSwitchMACTable", 0)["MacTableList"]
        ] == [(2, 101), (3, 100)]

    def test_embedded_host_keeps_a_static_entry_when_it_learns(self, host, qdp):
        before = addresses(qdp, 0, 3)
        own = int.from_bytes(bytes.fromhex(before[0].replace(":", "")), "little")
        qdp.result("AddMACEntry", 0, 3, own, 103)
        qdp.result("AddMACEntry", 0, 3, self.MAC, 103)
        qdp.result("ResetPort", 0, 3, 0)
        assert addresses(qdp, 0, 3) == [before[0], "02:11:22:33:44:55", *before[1:]]

    def test_embedded_host_limits_a_port(self, host, qdp):
        qdp.result("ClearPortMACTable", 0, 3)
        for i in range(1024):
            qdp.result("AddMACEntry", 0, 3, i << 16, 100)
        assert qdp.result("ListPortMACTable", 0, 3)["LimitExceeded"] == 0
        assert qdp.call("AddMACEntry", 0, 3, 1024 << 16, 100).printed == self.refusal
        qdp.result("AddMACEntry", 0, 3, 0, 100)  # known already
        qdp.result("AddMACEntry", 0, 4, 1024 << 16, 100)
        listed = qdp.result("ListPortMACTable", 0, 3)
        assert (len(listed["MacTableList"]), listed["LimitExceeded"]) == (1024, 1)
        assert qdp.result("ListPortMACTable", 0, 4)["LimitExceeded"] == 0
        qdp.result("ClearPortMACTable", 0, 3)
        assert qdp.result("ListPortMACTable", 0, 3) == {"MacLimit": 1024, "LimitExceeded": 0, "MacTableList": []}


class TestDelMACEntry(EntryOperation):
    method, operation, refusal = "DelMACEntry", 0, "Failed to delete MAC entry.\n"

    def test_embedded_host_deletes_what_was_added(self, qdp):
        before = addresses(qdp, 1, 4)
        qdp.result("AddMACEntry", 0, 4, self.MAC, 0x00010064)
        qdp.result("DelMACEntry", 0, 4, self.MAC, 0x00010064)
        assert addresses(qdp, 1, 4) == before

    def test_embedded_host_deletes_what_was_learned(self, qdp):
        before = addresses(qdp, 0, 3)
        own = int.from_bytes(bytes.fromhex(before[0].replace(":", "")), "little")
        qdp.result("DelMACEntry", 0, 3, own, 103)
        assert addresses(qdp, 0, 3) == before[1:]

    @pytest.mark.parametrize("port, mac, vlan", [(5, 0, 100), (4, 0, 101), (4, 1 << 40, 100)])
    def test_embedded_host_has_no_such_entry(self, qdp, port, mac, vlan):
        qdp.result("AddMACEntry", 0, 4, 0, 100)
        assert qdp.call("DelMACEntry", 0, port, mac, vlan).printed == self.refusal
        assert "00:00:00:00:00:00" in addresses(qdp, 0, 4)
