"""The inventory: switches, and the ports of a switch."""

import struct

import pytest

from observe import Call, Capacity, Outcome

SWITCH_LIST_BYTES = 2568
PORT_LIST_BYTES = 2555916


def switch_entry(name, number=0, most=0, active=0, ports=0, mtu=0, num_lcores=0, lcores=0):
    return struct.pack("<128s6IQ", name, number, most, active, ports, mtu, num_lcores, lcores)


def switch_list(*entries, count=None):
    return struct.pack("<II", len(entries) if count is None else count, 0xDEAD) + b"".join(entries)


def port_entry(port=0, qdp_port=0, mac=bytes(6), macs=0, kind=0, client=0, flags=0, tx=b"", rx=b""):
    return struct.pack("<IIBB6sHHII64s64s", port, qdp_port, len(tx), len(rx), mac, macs, kind, client, flags, tx, rx)


def port_list(*entries, count=None):
    return struct.pack("<III", 0xDEAD, len(entries) if count is None else count, 0xDEAD) + b"".join(entries)


class TestListSwitches:
    call = Call("Qdp_Get_Switch_List", [Capacity(SWITCH_LIST_BYTES)])

    def test_one_dict_a_switch_in_record_order(self, host, qdp):
        host.script(
            "Qdp_Get_Switch_List",
            outputs=[
                switch_list(
                    switch_entry(b"portset-0", 3, 16384, 7, 9, 9000, 2, 0b11),
                    switch_entry(b"second", 0xFFFFFFFF, *[0x80000000 + i for i in (1, 3, 5, 7, 9)], 1 << 63 | 1),
                )
            ],
        )
        assert qdp.call("ListSwitches") == Outcome(
            [
                {
                    "name": "portset-0",
                    "swID": 3,
                    "maxPorts": 16384,
                    "numActivePorts": 7,
                    "numPorts": 9,
                    "mtu": 9000,
                    "numLcores": 2,
                    "lcores": 3,
                },
                {
                    "name": "second",
                    "swID": 0xFFFFFFFF,
                    "maxPorts": 0x80000001,
                    "numActivePorts": 0x80000003,
                    "numPorts": 0x80000005,
                    "mtu": 0x80000007,
                    "numLcores": 0x80000009,
                    "lcores": 1 - (1 << 63),
                },
            ],
            calls=[self.call],
        )

    def test_no_switches(self, host, qdp):
        host.script("Qdp_Get_Switch_List", outputs=[switch_list()])
        assert qdp.call("ListSwitches") == Outcome([], calls=[self.call])

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script("Qdp_Get_Switch_List")
        assert qdp.call("ListSwitches") == Outcome([], calls=[self.call])

    def test_arguments_are_ignored(self, host, qdp):
        host.script("Qdp_Get_Switch_List", outputs=[switch_list()])
        assert qdp.call("ListSwitches", "x", 99) == Outcome([], calls=[self.call])

    def test_a_name_of_full_length_ends_with_its_field(self, host, qdp):
        host.script("Qdp_Get_Switch_List", outputs=[switch_list(switch_entry(b"n" * 128, number=0x41414141))])
        assert qdp.result("ListSwitches")[0]["name"] == "n" * 128

    def test_a_name_that_is_not_utf_8(self, host, qdp):
        host.script("Qdp_Get_Switch_List", outputs=[switch_list(switch_entry(b"dvs\xff"))])
        assert qdp.call("ListSwitches") == Outcome(
            left_set=(SystemError, "Failed to allocate buffer.\n"), calls=[self.call]
        )

    def test_switches_beyond_the_record_read_as_zero(self, host, qdp):
        host.script(
            "Qdp_Get_Switch_List",
            outputs=[switch_list(*[switch_entry(b"n%d" % i, number=i) for i in range(16)], count=18)],
        )
        listed = qdp.result("ListSwitches")
        assert [each["name"] for each in listed] == ["n%d" % i for i in range(16)] + ["", ""]
        assert set(list(listed[17].values())[1:]) == {0}

    def test_embedded_host(self, qdp):
        assert [(each["name"], each["swID"], each["numPorts"]) for each in qdp.result("ListSwitches")] == [
            ("portset-0", 0, 36),
            ("dvs-storage", 1, 8),
            ("switch-smartnic", 2, 35),
        ]


class TestListPorts:
    @staticmethod
    def call(switch):
        return Call("Qdp_Get_Port_List", [switch, Capacity(PORT_LIST_BYTES)])

    def listed(self, host, qdp, *entries):
        host.script("Qdp_Get_Port_List", outputs=[port_list(*entries)])
        return qdp.result("ListPorts", 0)

    def test_one_dict_a_port_in_record_order(self, host, qdp):
        host.script(
            "Qdp_Get_Port_List",
            outputs=[
                port_list(
                    port_entry(
                        7, 0x04000007, bytes([0x0A, 0x1B, 0xFF, 0, 1, 0xC0]), 2, 0, 1, 0, b"\x01\x02\x03", b"\xff"
                    ),
                    port_entry(0xFFFFFFFF, 0xFFFFFFFE, b"\xff" * 6, 0xFFFF, 1, 2, 0xFFFFFFFF),
                )
            ],
        )
        assert qdp.call("ListPorts", 15) == Outcome(
            [
                {
                    "portID": 7,
                    "qdpPortID": 0x04000007,
                    "numTxQ": 3,
                    "numRxQ": 1,
                    "hwAddr": "0a:1b:ff:00:01:c0",
                    "numMACs": 2,
                    "clientType": "VNIC",
                    "txQLM": [1, 2, 3],
                    "rxQLM": [255],
                },
                {
                    "portID": 0xFFFFFFFF,
                    "qdpPortID": 0xFFFFFFFE,
                    "numTxQ": 0,
                    "numRxQ": 0,
                    "hwAddr": "ff:ff:ff:ff:ff:ff",
                    "numMACs": 0xFFFF,
                    "clientType": "UPLINK",
                    "txQLM": [],
                    "rxQLM": [],
                },
            ],
            calls=[self.call(15)],
        )

    def test_all_queues(self, host, qdp):
        queues = bytes(range(64))
        (port,) = self.listed(host, qdp, port_entry(tx=queues, rx=queues[::-1]))
        assert (port["numTxQ"], port["txQLM"]) == (64, list(range(64)))
        assert (port["numRxQ"], port["rxQLM"]) == (64, list(range(63, -1, -1)))

    def test_more_queues_than_an_entry_holds_stay_inside_the_record(self, host, qdp):
        entry = bytearray(port_entry(rx=b"\x01" * 64))
        entry[8] = 255
        entry[9] = 255
        listed = self.listed(host, qdp, *[bytes(entry)] * 2)
        # What follows in the record: the receive queues and the next port, whose first bytes are zero.
        assert listed[0]["txQLM"][:129] == [0] * 64 + [1] * 64 + [0]
        assert [len(port["rxQLM"]) for port in listed] == [255, 255]
        assert [(port["numTxQ"], port["numRxQ"]) for port in listed] == [(255, 255)] * 2

    def test_a_switch_without_ports(self, host, qdp):
        host.script("Qdp_Get_Port_List", outputs=[port_list()])
        assert qdp.call("ListPorts", 0) == Outcome([], calls=[self.call(0)])

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script("Qdp_Get_Port_List")
        assert qdp.call("ListPorts", 0) == Outcome([], calls=[self.call(0)])

    def test_all_ports(self, host, qdp):
        entries = [port_entry(i, client=2) for i in range(16384)]
        assert [port["portID"] for port in self.listed(host, qdp, *entries)] == list(range(16384))

    def test_ports_beyond_the_record_read_as_zero(self, host, qdp):
        host.script("Qdp_Get_Port_List", outputs=[port_list(*[port_entry(1, tx=b"\x01")] * 16384, count=16386)])
        listed = qdp.result("ListPorts", 0)
        assert len(listed) == 16386
        assert listed[16383]["txQLM"] == [1]
        assert listed[16384] == listed[16385] == {
            "portID": 0,
            "qdpPortID": 0,
            "numTxQ": 0,
            "numRxQ": 0,
            "hwAddr": "00:00:00:00:00:00",
            "numMACs": 0,
            "clientType": "UNKNOWN",
            "txQLM": [],
            "rxQLM": [],
        }

    @pytest.mark.parametrize(
        "client, flags, kind, name",
        [
            (0, 1, 3, "UNKNOWN"),
            (1, 0, 3, "VNIC"),
            (1, 1, 3, "VNIC.PT"),
            (1, 2, 3, "VNIC"),
            (1, 3, 3, "VNIC.PT"),
            (2, 1, 3, "UPLINK"),
            (3, 1, 3, "GENERIC"),
            (4, 0, 16, "REP.UNKN"),
            (4, 1, 16, "REP.UNKN"),
            (4, 0, 0x103, "REP.UNKN"),
            (4, 1, 0x103, "REP.UNKN"),
            (4, 0, 0xFFFF, "REP.UNKN"),
            (5, 1, 3, "UNKNOWN"),
            (0x80000001, 0, 3, "UNKNOWN"),
            (0xFFFFFFFF, 0, 0, "UNKNOWN"),
        ],
    )
    def test_client_type(self, host, qdp, client, flags, kind, name):
        (port,) = self.listed(host, qdp, port_entry(client=client, flags=flags, kind=kind))
        assert port["clientType"] == name

    PLAIN = "INV M2VF M2PHY M2UPT M3VF M3PHY M3PF M3UPT M3EMU M3MUXPF P4SHRD P4PHY P4EMU P4VF P4PF P4NIC".split()

    @pytest.mark.parametrize("kind", range(16))
    def test_representor_types(self, host, qdp, kind):
        pass_through = ".PT" if kind in (3, 7, 8, 12) else ""
        plain, other = self.listed(host, qdp, *[port_entry(client=4, flags=flags, kind=kind) for flags in (0xFE, 1)])
        assert plain["clientType"] == "REP." + self.PLAIN[kind]
        assert other["clientType"] == "REP." + self.PLAIN[kind] + pass_through

    def test_an_integer_is_taken_modulo_2_to_the_32nd(self, host, qdp):
        host.script("Qdp_Get_Port_List", outputs=[port_list()])
        assert qdp.call("ListPorts", (1 << 32) + 3) == Outcome([], calls=[self.call(3)])

    def test_embedded_host(self, qdp):
        ports = qdp.result("ListPorts", 0)
        assert [port["portID"] for port in ports] == list(range(36))
        assert {port["clientType"] for port in ports} == {"UPLINK", "VNIC", "VNIC.PT", "GENERIC"}
        names = {port["clientType"] for port in qdp.result("ListPorts", 2)}
        assert names == {"UPLINK", "UNKNOWN"} | {
            "REP." + name + suffix
            for kind, name in enumerate(self.PLAIN)
            for suffix in (("", ".PT") if kind in (3, 7, 8, 12) else ("",))
        }

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("ListPorts", 3) == Outcome(None, "Failed to retrieve list of ports.\n", calls=[self.call(3)])
