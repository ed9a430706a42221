"""The hardware tables in the SmartNIC's memory."""

import struct

import pytest

from observe import Call, Capacity, Outcome

LIST = Call("Qdp_P4_HWTable_List", [Capacity(1024)])


def descriptor(table, table_bytes, entries, address):
    return struct.pack("<IIIIQ", table, 0xDEAD, table_bytes, entries, address)


def table_list(*descriptors, count=None):
    return struct.pack("<II", 0xDEAD, len(descriptors) if count is None else count) + b"".join(descriptors)


def listed(table, address, entries, size):
    return {"tableId": table, "pa": address, "numEntries": entries, "entrySize": size}


class TestP4HWTableList:
    def test_one_dict_a_descriptor(self, host, qdp):
        host.script(
            "Qdp_P4_HWTable_List",
            outputs=[table_list(descriptor(4, 4096, 128, 0x128C00000), descriptor(0xFFFFFFFF, 0, 1, 0))],
        )
        assert qdp.call("P4HWTableList") == Outcome(
            [listed(4, 0x128C00000, 128, 32), listed(0xFFFFFFFF, 0, 1, 0)], calls=[LIST]
        )

    @pytest.mark.parametrize(
        "table_bytes, entries, size",
        [
            (4096, 3, 1365),
            (4096, 0, 0),
            (0, 0, 0),
            (0xFFFFFFFF, 1, 0xFFFFFFFF),
            (0xFFFFFFFE, 0xFFFFFFFF, 0),
            (0x80000000, 2, 0x40000000),
        ],
    )
    def test_entry_size(self, host, qdp, table_bytes, entries, size):
        host.script("Qdp_P4_HWTable_List", outputs=[table_list(descriptor(1, table_bytes, entries, 2))])
        assert qdp.result("P4HWTableList") == [listed(1, 2, entries, size)]

    @pytest.mark.parametrize("address", [1 << 63, (1 << 64) - 1])
    def test_addresses_are_unsigned(self, host, qdp, address):
        host.script("Qdp_P4_HWTable_List", outputs=[table_list(descriptor(1, 64, 2, address))])
        assert qdp.result("P4HWTableList") == [listed(1, address, 2, 32)]

    def test_no_tables(self, host, qdp):
        host.script("Qdp_P4_HWTable_List", outputs=[table_list()])
        assert qdp.call("P4HWTableList") == Outcome([], calls=[LIST])

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script("Qdp_P4_HWTable_List")
        assert qdp.call("P4HWTableList", "ignored", 99) == Outcome([], calls=[LIST])

    def test_a_full_list(self, host, qdp):
        descriptors = [descriptor(i, 64 * i, i, i << 32) for i in range(42)]
        host.script("Qdp_P4_HWTable_List", outputs=[table_list(*descriptors)])
        assert qdp.result("P4HWTableList") == [listed(i, i << 32, i, 64 if i else 0) for i in range(42)]

    def test_tables_beyond_the_buffer_read_as_zero(self, host, qdp):
        host.script("Qdp_P4_HWTable_List", outputs=[table_list(*[descriptor(7, 64, 2, 9)] * 45)])
        # 42 fit; of the next one only the number is still in the buffer.
        assert qdp.call("P4HWTableList") == Outcome(
            [listed(7, 9, 2, 32)] * 42 + [listed(7, 0, 0, 0)] + [listed(0, 0, 0, 0)] * 2, calls=[LIST]
        )

    def test_embedded_host(self, qdp):
        tables = qdp.result("P4HWTableList")
        assert [table["tableId"] for table in tables] == list(range(8))
        assert [tables[4]["entrySize"], tables[6]["entrySize"]] == [32, 32]
        ends = [table["pa"] + table["entrySize"] * table["numEntries"] for table in tables]
        assert all(end <= table["pa"] for end, table in zip(ends, tables[1:]))


def dump(data, address=0x1000, length=None):
    return struct.pack("<IIQ", 16 + len(data) if length is None else length, 0xDEAD, address) + data


def dump_call(*request):
    return Call("Qdp_P4_HWTable_Dump", [struct.pack("<III", *request), Capacity(2048)])


class TestP4HWTableDump:
    def lines(self, host, qdp, *args, **kwargs):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(*args, **kwargs)])
        return qdp.result("P4HWTableDump", 1, 2, 3)

    def test_a_full_line_and_a_partial_one(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(bytes(range(0xF0, 0x100)) + b"\0\x01\x0a\xa0")])
        assert qdp.call("P4HWTableDump", 7, 8, 9) == Outcome(
            ["0x1000: f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa fb fc fd fe ff ", "0x1010: 00 01 0a a0 "],
            calls=[dump_call(7, 8, 9)],
        )

    def test_the_request_is_passed_on_unchecked(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(b"")])
        assert qdp.call("P4HWTableDump", 0xFFFFFFFF, -2, (1 << 32) + 5) == Outcome(
            [], calls=[dump_call(0xFFFFFFFF, 0xFFFFFFFE, 5)]
        )

    @pytest.mark.parametrize("size, lines", [(1, 1), (15, 1), (16, 1), (17, 2), (32, 2), (2031, 127), (2032, 127)])
    def test_number_of_lines(self, host, qdp, size, lines):
        data = bytes(i % 251 for i in range(size))
        shown = self.lines(host, qdp, data)
        assert len(shown) == lines
        assert bytes.fromhex("".join(line.split(": ")[1] for line in shown)) == data
        assert all(line.endswith(" ") and not line.endswith("  ") for line in shown)

    @pytest.mark.parametrize(
        "address, first, second",
        [
            (0, "0: ", "0x10: "),
            (1, "0x1: ", "0x11: "),
            (0x123456789ABCDEF0, "0x123456789abcdef0: ", "0x123456789abcdf00: "),
            ((1 << 64) - 16, "0xfffffffffffffff0: ", "0: "),
            ((1 << 64) - 15, "0xfffffffffffffff1: ", "0x1: "),
        ],
    )
    def test_addresses(self, host, qdp, address, first, second):
        assert self.lines(host, qdp, b"\x01" * 17, address=address) == [first + "01 " * 16, second + "01 "]

    @pytest.mark.parametrize("length", [16, 15, 8, 1, 0])
    def test_no_data_and_less_than_a_header(self, host, qdp, length):
        assert self.lines(host, qdp, b"\x01" * 32, length=length) == []

    def test_an_answer_without_bytes_has_no_data(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump")
        assert qdp.call("P4HWTableDump", 1, 2, 3) == Outcome([], calls=[dump_call(1, 2, 3)])

    def test_the_stated_length_cuts_the_data(self, host, qdp):
        assert self.lines(host, qdp, b"\x01" * 32, length=16 + 3) == ["0x1000: 01 01 01 "]

    def test_what_is_stated_beyond_the_buffer_reads_as_zero(self, host, qdp):
        lines = self.lines(host, qdp, b"\x01" * 2032, length=2048 + 20)
        assert lines[126:] == [
            f"0x{0x1000 + 126 * 16:x}: " + "01 " * 16,
            "0x17f0: " + "00 " * 16,
            "0x1800: 00 00 00 00 ",
        ]


class TestEmbeddedTableMemory:
    """Dumps of the embedded host against its inventory and its decoded entries."""

    def dump(self, qdp, *request):
        """The address and the bytes of a dump."""
        lines = qdp.result("P4HWTableDump", *request)
        address = int(lines[0].split(":")[0], 16)
        return address, bytes.fromhex("".join(line.split(": ")[1] for line in lines))

    def test_every_table_lies_where_the_inventory_says(self, qdp):
        for table in qdp.result("P4HWTableList"):
            last = table["numEntries"] - 1
            address, data = self.dump(qdp, table["tableId"], last, 1)
            assert address == table["pa"] + last * table["entrySize"]
            assert len(data) == table["entrySize"]

    def test_entries_do_not_depend_on_where_a_dump_begins(self, qdp):
        _, two = self.dump(qdp, 1, 5, 2)
        assert self.dump(qdp, 1, 5, 1)[1] + self.dump(qdp, 1, 6, 1)[1] == two
        assert two[:64] != two[64:]
        assert two != self.dump(qdp, 2, 5, 2)[1]

    @pytest.mark.parametrize(
        "table, first, count, bytes_shown", [(3, 0, 200, 15 * 128), (4, 0, 64, 63 * 32), (7, 0, 99, 7 * 256)]
    )
    def test_a_dump_is_cut_to_the_entries_that_fit(self, qdp, table, first, count, bytes_shown):
        assert len(self.dump(qdp, table, first, count)[1]) == bytes_shown

    def test_a_dump_is_cut_at_the_end_of_the_table(self, qdp):
        assert len(self.dump(qdp, 0, 1022, 10)[1]) == 2 * 16

    def test_no_entries(self, qdp):
        assert qdp.result("P4HWTableDump", 0, 0, 0) == []

    @pytest.mark.parametrize("request_", [(8, 0, 1), (0, 1024, 1), (0xFFFFFFFF, 0, 1)])
    def test_what_is_not_there_is_refused(self, qdp, request_):
        assert qdp.call("P4HWTableDump", *request_).printed == "Failed to dump HW table data.\n"

    def test_flow_entries_are_those_that_are_decoded(self, host, qdp):
        host.freeze()
        host.advance(seconds=100)
        _, data = self.dump(qdp, 4, 1, 1)
        packets, in_bytes, flags = struct.unpack(">QQB15x", data)
        assert packets == 3700 * 8580
        assert qdp.result("P4StatsFlowGet", 1) == {"pcnt": packets, "bcnt": in_bytes, "tcp_flags": flags}

    def test_connection_entries_are_those_that_are_decoded(self, host, qdp):
        host.freeze()
        _, data = self.dump(qdp, 6, 1, 1)
        assert list(qdp.result("P4CTContextQuery", 1).values()) == decoded_connection(data)
        assert data != bytes(32)


def decoded_connection(data):
    (low, high, window, state), (other_low, other_high, other_window, other_state), rest = (
        struct.unpack(">IIHB", data[1:12]),
        struct.unpack(">IIHB", data[12:23]),
        data[23:25],
    )
    return [low, high, window, state >> 4, state & 15] + [
        other_low,
        other_high,
        other_window,
        other_state >> 4,
        other_state & 15,
        *rest,
    ]


class TestP4CacheInvalidate:
    @staticmethod
    def call(*request):
        return Call("Qdp_P4_Cache_Invalidate", [struct.pack("<III", *request)])

    def test_the_request_is_passed_on_unchecked(self, host, qdp):
        host.script("Qdp_P4_Cache_Invalidate")
        assert qdp.call("P4CacheInvalidate", 0xFFFFFFFF, -2, 7) == Outcome(
            None, calls=[self.call(0xFFFFFFFF, 0xFFFFFFFE, 7)]
        )

    @pytest.mark.parametrize(
        "request_, printed",
        [
            ((0, 0, 1024), ""),
            ((0, 1023, 1), ""),
            ((0, 1023, 2), "Failed to perform cache invalidation\n"),
            ((0, 1024, 0), "Failed to perform cache invalidation\n"),
            ((8, 0, 1), "Failed to perform cache invalidation\n"),
        ],
    )
    def test_embedded_host_knows_its_tables(self, qdp, request_, printed):
        assert qdp.call("P4CacheInvalidate", *request_) == Outcome(None, printed, calls=[self.call(*request_)])
