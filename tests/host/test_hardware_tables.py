"""The embedded host's hardware tables are read within bounds."""

import ctypes
import struct

import pytest

# Of each table: its entries' size, and the number of its entries or the length of its key.
INDEXED = {
    0: (384, 1024),
    1: (256, 1024),
    2: (64, 1),
    3: (64, 1),
    4: (64, 4096),
    5: (64, 4096),
    6: (24, 4194304),
    7: (24, 4194304),
    8: (20, 1024),
    9: (16, 4095),
    10: (16, 4095),
    11: (16, 1024),
    13: (4, 65536),
    15: (24, 16),
    16: (64, 8192),
    19: (52, 8192),
    20: (24, 4194304),
    21: (24, 4194304),
    22: (4, 1),
    23: (16, 1),
    25: (32, 4194304),
    26: (56, 4194304),
    27: (296, 1),
}
KEYED = {12: (4, 4), 14: (8, 8), 17: (2, 34), 18: (4, 34), 24: (4, 60)}


def read(host, table, key, capacity, key_length=None):
    """The status of a table read, the buffer, and the length word."""
    key_length = len(key) if key_length is None else key_length
    request = struct.pack("<HHHH", 8 + len(key), 11, table, key_length) + key
    buffer = ctypes.create_string_buffer(b"#" * 512, 512)
    length = ctypes.c_uint32(capacity)
    host.libqdp.Qdp_P4_Cmd.restype = ctypes.c_uint32
    status = host.libqdp.Qdp_P4_Cmd(request, len(request), buffer, ctypes.byref(length))
    return status, buffer.raw, length.value


class TestReads:
    def test_every_table_is_there(self):
        assert sorted([*INDEXED, *KEYED]) == list(range(28))

    @pytest.mark.parametrize("table", INDEXED)
    def test_indexes(self, host, table):
        size, entries = INDEXED[table]
        for index in {0, entries - 1}:
            status, buffer, length = read(host, table, struct.pack("<I", index), size)
            assert (status, length) == (0, size)
            assert buffer[size:] == b"#" * (512 - size)
        for index in (entries, 0xFFFFFFFF):
            assert read(host, table, struct.pack("<I", index), size) == (0xBAD0001, b"#" * 512, size)

    @pytest.mark.parametrize("table", KEYED)
    def test_a_key_that_is_not_there(self, host, table):
        size, key_length = KEYED[table]
        assert read(host, table, b"\xee" * key_length, size) == (0xBAD0003, b"#" * 512, size)

    @pytest.mark.parametrize("table", [*INDEXED, *KEYED])
    def test_keys_of_a_wrong_length(self, host, table):
        expected = KEYED[table][1] if table in KEYED else 4
        for length in {0, expected - 1, expected + 1, 61}:
            assert read(host, table, bytes(length), 384) == (0xBAD0001, b"#" * 512, 384)

    @pytest.mark.parametrize("table", [*INDEXED, *KEYED])
    def test_a_key_length_that_is_not_the_keys(self, host, table):
        expected = KEYED[table][1] if table in KEYED else 4
        for claimed in (expected - 1, expected + 1):
            assert read(host, table, bytes(expected), 384, claimed) == (0xBAD0001, b"#" * 512, 384)

    @pytest.mark.parametrize("table", INDEXED)
    def test_a_buffer_that_is_too_small(self, host, table):
        size, _ = INDEXED[table]
        assert read(host, table, bytes(4), size - 1) == (0xBAD0001, b"#" * 512, size - 1)

    @pytest.mark.parametrize("table", [28, 29, 0xFFFF])
    def test_tables_that_do_not_exist(self, host, table):
        assert read(host, table, bytes(4), 384) == (0xBAD0001, b"#" * 512, 384)

    @pytest.mark.parametrize("length", range(4))
    def test_a_read_without_its_header(self, host, length):
        request = struct.pack("<HH", 4 + length, 11) + bytes(length)
        size = ctypes.c_uint32(384)
        host.libqdp.Qdp_P4_Cmd.restype = ctypes.c_uint32
        buffer = ctypes.create_string_buffer(384)
        assert host.libqdp.Qdp_P4_Cmd(request, len(request), buffer, ctypes.byref(size)) == 0xBAD0001

    @pytest.mark.parametrize("table", [0, 1, 6, 20, 25, 26])
    def test_what_nothing_uses_is_zero(self, host, table):
        size, entries = INDEXED[table]
        assert read(host, table, struct.pack("<I", entries - 1), size)[1][:size] == bytes(size)
