"""Commands to ports and switches, and the state of the embedded host that they change."""

import gc
import struct
from types import SimpleNamespace

import pytest
from _testcapi import remove_mem_hooks, set_nomemory

from adversity import starved
from datapath.enabled import EnabledOnSwitch
from observe import Call, Capacity, Observer, Outcome


# The embedded host's queues of a port.
TX, RX, BOTH = 1, 2, 3


def queues(qdp, switch, port):
    """The lcores that a port's queues run on."""
    (listed,) = [each for each in qdp.result("ListPorts", switch) if each["portID"] == port]
    return listed["txQLM"], listed["rxQLM"]


class PortCommand:
    """What the commands to a port have in common."""

    values = ()
    method = operation = refusal = ""

    def test_passes_its_arguments_on(self, host, qdp):
        host.script(self.operation)
        assert qdp.call(self.method, 3, 7, *self.values) == Outcome(
            None, calls=[Call(self.operation, [3, 7, *self.values])]
        )

    @pytest.mark.parametrize("value", [0, 0xFFFFFFFF])
    def test_values_are_not_checked(self, host, qdp, value):
        host.script(self.operation)
        values = [value] * len(self.values)
        assert qdp.call(self.method, 0, 0, *values) == Outcome(None, calls=[Call(self.operation, [0, 0, *values])])

    def test_values_are_unsigned_words(self, host, qdp):
        host.script(self.operation)
        given = [-1, 1 << 32, (1 << 32) + 5][: len(self.values)]
        taken = [0xFFFFFFFF, 0, 5][: len(self.values)]
        assert qdp.call(self.method, 0, 0, *given) == Outcome(None, calls=[Call(self.operation, [0, 0, *taken])])

    def test_the_last_port_of_the_last_switch(self, host, qdp):
        host.script(self.operation)
        assert qdp.call(self.method, 15, 16383, *self.values) == Outcome(
            None, calls=[Call(self.operation, [15, 16383, *self.values])]
        )

    @pytest.mark.parametrize("status", [2, 0xBAD0001, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, status):
        host.fail(self.operation, status)
        assert qdp.call(self.method, 3, 7, *self.values) == Outcome(
            None, self.refusal, calls=[Call(self.operation, [3, 7, *self.values])]
        )

    @pytest.mark.parametrize("switch, port", [(0, 36), (3, 0)])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        assert qdp.call(self.method, switch, port, *self.values).printed == self.refusal


class TestMigratePort(PortCommand):
    method, operation, refusal = "MigratePort", "Qdp_Migrate_Port", "Failed to migrate port.\n"
    values = (1, 2, 3)

    def test_while_the_balancer_is_automatic(self, host, qdp):
        host.fail("Qdp_Migrate_Port", 1)
        assert qdp.call("MigratePort", 3, 7, 1, 2, 3) == Outcome(
            None,
            "Please disable automatic thread load balancing.\n\nFailed to migrate port.\n",
            calls=[Call("Qdp_Migrate_Port", [3, 7, 1, 2, 3])],
        )

    # Port 5 of switch 0 has 4 transmit queues, on the lcores from 5 on, and 4 receive queues, on every second of them.
    BEFORE = [5, 6, 7, 0], [5, 7, 1, 3]

    @pytest.mark.parametrize(
        "which, after",
        [
            (TX, ([2, 6, 7, 0], [5, 7, 1, 3])),
            (RX, ([5, 6, 7, 0], [2, 7, 1, 3])),
            (BOTH, ([2, 6, 7, 0], [2, 7, 1, 3])),
        ],
    )
    def test_embedded_host_moves_the_queues(self, qdp, which, after):
        others = [port for port in qdp.result("ListPorts", 0) if port["portID"] != 5]
        assert queues(qdp, 0, 5) == self.BEFORE
        qdp.result("MigratePort", 0, 5, 5, 2, which)
        assert queues(qdp, 0, 5) == after
        assert [port for port in qdp.result("ListPorts", 0) if port["portID"] != 5] == others

    @pytest.mark.parametrize(
        "values",
        [
            (4, 2, BOTH),  # no queue runs on lcore 4
            (3, 2, TX),  # only a receive queue runs on lcore 3
            (256 + 5, 2, BOTH),
            (5, 8, BOTH),  # the switch has lcores 0 to 7
            (5, 2, 0),
            (5, 2, 4),
        ],
    )
    def test_embedded_host_refuses_what_cannot_be_moved(self, qdp, values):
        assert qdp.call("MigratePort", 0, 5, *values) == Outcome(
            None, self.refusal, calls=[Call("Qdp_Migrate_Port", [0, 5, *values])]
        )
        assert queues(qdp, 0, 5) == self.BEFORE


class TestUnpinPort(PortCommand):
    method, operation, refusal = "UnpinPort", "Qdp_Unpin_Port", "Failed to unpin port.\n"
    values = (9,)

    def test_embedded_host_puts_migrated_queues_back(self, qdp):
        qdp.result("MigratePort", 0, 5, 5, 2, BOTH)
        qdp.result("MigratePort", 0, 5, 7, 2, TX)
        assert queues(qdp, 0, 5) == ([2, 6, 2, 0], [2, 7, 1, 3])
        qdp.result("UnpinPort", 0, 5, TX)
        assert queues(qdp, 0, 5) == ([5, 6, 7, 0], [2, 7, 1, 3])
        qdp.result("UnpinPort", 0, 5, RX)
        assert queues(qdp, 0, 5) == ([5, 6, 7, 0], [5, 7, 1, 3])
        assert qdp.call("UnpinPort", 0, 5, BOTH).printed == self.refusal

    @pytest.mark.parametrize("which", [0, 4])
    def test_embedded_host_knows_no_such_queues(self, qdp, which):
        qdp.result("MigratePort", 0, 5, 5, 2, BOTH)
        assert qdp.call("UnpinPort", 0, 5, which).printed == self.refusal
        assert queues(qdp, 0, 5) == ([2, 6, 7, 0], [2, 7, 1, 3])


class TestResetPort(PortCommand):
    method, operation, refusal = "ResetPort", "Qdp_Reset_Port", "Failed to reset port.\n"
    values = (9,)

    def test_embedded_host_puts_migrated_queues_back(self, qdp):
        before = queues(qdp, 0, 5)
        qdp.result("MigratePort", 0, 5, 5, 2, BOTH)
        qdp.result("ResetPort", 0, 5, 0)
        assert queues(qdp, 0, 5) == before
        assert qdp.call("UnpinPort", 0, 5, BOTH).printed == "Failed to unpin port.\n"

    def test_embedded_host_learns_the_ports_addresses_anew(self, host, qdp):
        host.freeze()
        before = qdp.result("ListPortMACTable", 0, 5)
        qdp.result("ClearPortMACTable", 0, 5)
        qdp.result("ResetPort", 0, 5, 0)
        assert qdp.result("ListPortMACTable", 0, 5) == before


class TestGetPortTxUplink:
    call = Call("Qdp_Get_Port_Tx_Uplink", [3, 7, Capacity(18)])

    @staticmethod
    def record(kind, count, *uplinks):
        return struct.pack("<BB%dH" % len(uplinks), kind, count, *uplinks)

    @pytest.mark.parametrize(
        "kind, name",
        [
            (0, "None"),
            (1, "Single"),
            (2, "LAG"),
            (3, "SrcMAC"),
            (4, "All"),
            (5, "NoTeaming"),
            (6, "Unknown"),
            (9, "Unknown"),
            (255, "Unknown"),
        ],
    )
    def test_type(self, host, qdp, kind, name):
        host.script("Qdp_Get_Port_Tx_Uplink", outputs=[self.record(kind, 1, 4)])
        assert qdp.call("GetPortTxUplink", 3, 7) == Outcome({"txType": name, "txUplinks": [4]}, calls=[self.call])

    def test_ids_in_record_order(self, host, qdp):
        ids = [65535, 0, 256, 255, 3, 2, 1, 32768]
        host.script("Qdp_Get_Port_Tx_Uplink", outputs=[self.record(2, 8, *ids)])
        assert qdp.call("GetPortTxUplink", 3, 7) == Outcome({"txType": "LAG", "txUplinks": ids}, calls=[self.call])

    def test_only_as_many_as_counted(self, host, qdp):
        host.script("Qdp_Get_Port_Tx_Uplink", outputs=[self.record(3, 3, *range(1, 9))])
        assert qdp.result("GetPortTxUplink", 3, 7) == {"txType": "SrcMAC", "txUplinks": [1, 2, 3]}

    def test_no_uplinks(self, host, qdp):
        host.script("Qdp_Get_Port_Tx_Uplink", outputs=[self.record(1, 0, *range(1, 9))])
        assert qdp.call("GetPortTxUplink", 3, 7) == Outcome({"txType": "Single", "txUplinks": []}, calls=[self.call])

    def test_the_record_is_clear_before_the_call(self, host, qdp):
        host.script("Qdp_Get_Port_Tx_Uplink")
        assert qdp.call("GetPortTxUplink", 3, 7) == Outcome({"txType": "None", "txUplinks": []}, calls=[self.call])
        host.script("Qdp_Get_Port_Tx_Uplink", outputs=[self.record(1, 8, 5)])
        assert qdp.result("GetPortTxUplink", 3, 7)["txUplinks"] == [5] + [0] * 7

    @pytest.mark.parametrize("count", [9, 255])
    def test_uplinks_beyond_the_record_read_as_zero(self, host, qdp, count):
        host.script("Qdp_Get_Port_Tx_Uplink", outputs=[self.record(4, count, *range(1, 9))])
        assert qdp.result("GetPortTxUplink", 3, 7)["txUplinks"] == [*range(1, 9)] + [0] * (count - 8)

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_Port_Tx_Uplink")
        assert qdp.call("GetPortTxUplink", switch, port) == Outcome(
            {"txType": "None", "txUplinks": []}, calls=[Call("Qdp_Get_Port_Tx_Uplink", [switch, port, Capacity(18)])]
        )

    def test_lack_of_memory_is_the_interpreters_error(self, qdp):
        assert starved(qdp, "GetPortTxUplink", 0, 2) == [
            Outcome(None, left_set=(MemoryError, "")),
            Outcome(raised=(MemoryError, "")),
        ]

    @pytest.mark.parametrize(
        "nth, failure",
        [(0, {"left_set": (MemoryError, "")}), (1, {"left_set": (MemoryError, "")})]  # the list and its items
        + [(nth, {"raised": (MemoryError, "")}) for nth in range(2, 10)],  # the ids
    )
    def test_only_a_list_that_cannot_be_made_is_none(self, host, qdp, nth, failure):
        def lacking(*arguments):
            gc.collect()  # so that no kept object makes an allocation needless
            set_nomemory(nth, nth + 1)
            try:
                return qdp.module.GetPortTxUplink(*arguments)
            finally:
                remove_mem_hooks()

        host.script("Qdp_Get_Port_Tx_Uplink", outputs=[self.record(4, 8, *range(1000, 1008))])
        observer = Observer(SimpleNamespace(GetPortTxUplink=lacking), host)
        assert observer.call("GetPortTxUplink", 3, 7) == Outcome(None, calls=[self.call], **failure)

    @pytest.mark.parametrize(
        "port, kind, uplinks",
        [
            (0, "NoTeaming", [0]),
            (1, "NoTeaming", [1]),
            (2, "LAG", [0, 1]),
            (3, "SrcMAC", [0, 1]),
            (4, "All", [0, 1]),
            (5, "None", []),
            (6, "Single", [0]),
        ],
    )
    def test_embedded_host(self, qdp, port, kind, uplinks):
        assert qdp.result("GetPortTxUplink", 1, port) == {"txType": kind, "txUplinks": uplinks}

    def test_embedded_host_has_no_such_port(self, qdp):
        assert qdp.call("GetPortTxUplink", 1, 8).printed == "Failed to get port TX uplink.\n"


class TestSetUplinkMACLearn:
    REFUSAL = "Failed to set uplink mac learn policy.\n"

    @pytest.mark.parametrize("value, sent", [(0, 0), (1, 1), (2, 1), (0xFFFFFFFF, 1), (-1, 1), (1 << 32, 0)])
    @pytest.mark.parametrize("switch", [0, 15])
    def test_anything_but_zero_is_on(self, host, qdp, switch, value, sent):
        host.script("Qdp_Set_Uplink_MAC_Learn")
        assert qdp.call("SetUplinkMACLearn", switch, value) == Outcome(
            None, calls=[Call("Qdp_Set_Uplink_MAC_Learn", [switch, sent])]
        )

    def test_embedded_host_forgets_what_uplinks_learned_and_learns_it_again(self, host, qdp):
        def table(port):
            return [entry["macAddr"] for entry in qdp.result("ListPortMACTable", 0, port)["MacTableList"]]

        before = [table(port) for port in range(4)]
        assert all(before)
        qdp.result("SetUplinkMACLearn", 0, 0)
        assert [table(port) for port in range(4)] == [[], [], before[2], before[3]]
        qdp.result("ResetPort", 0, 1, 0)
        assert table(1) == []
        qdp.result("SetUplinkMACLearn", 0, 7)
        assert [table(port) for port in range(4)] == before

    def test_embedded_host_keeps_its_entries_where_the_policy_stays(self, host, qdp):
        host.freeze()
        host.advance(90)
        before = qdp.result("ListSwitchMACTable", 0)
        qdp.result("SetUplinkMACLearn", 0, 1)
        assert qdp.result("ListSwitchMACTable", 0) == before

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("SetUplinkMACLearn", 3, 1).printed == self.REFUSAL


class TestSetPanicOnTxHang(EnabledOnSwitch):
    method, operation = "SetPanicOnTxHang", "Qdp_Set_Panic_On_Tx_Hang"
    refusal = "Failed to {} panic on Tx hang.\n"  # with "enable" or "disable"

    def test_embedded_host_keeps_it_for_each_switch(self, qdp):
        qdp.result("SetPanicOnTxHang", 1, 1)
        assert [qdp.result("GetPanicOnTxHang", switch) for switch in range(3)] == [0, 1, 0]
        qdp.result("SetPanicOnTxHang", 1, 0)
        assert [qdp.result("GetPanicOnTxHang", switch) for switch in range(3)] == [0, 0, 0]


class TestGetPanicOnTxHang:
    REFUSAL = "Failed to get panic on Tx hang configuration.\n"

    @staticmethod
    def call(switch):
        return Call("Qdp_Get_Panic_On_Tx_Hang", [switch, Capacity(4)])

    @pytest.mark.parametrize("switch", [0, 15])
    @pytest.mark.parametrize("value", [0, 1, 2, 0x80000000, 0xFFFFFFFF])
    def test_returns_the_word(self, host, qdp, switch, value):
        host.script("Qdp_Get_Panic_On_Tx_Hang", outputs=[struct.pack("<I", value)])
        assert qdp.call("GetPanicOnTxHang", switch) == Outcome(value, calls=[self.call(switch)])

    def test_a_word_that_is_not_written_is_zero(self, host, qdp):
        host.script("Qdp_Get_Panic_On_Tx_Hang")
        assert qdp.call("GetPanicOnTxHang", 0) == Outcome(0, calls=[self.call(0)])

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("GetPanicOnTxHang", 3) == Outcome(None, self.REFUSAL, calls=[self.call(3)])
