"""The requests for table entries that the module makes for itself and for the hosting process."""

import ctypes
import struct

import pytest

from observe import Call, Capacity, NullBuffer, standard_error

FAILED = "Failed to get table data\n"


class Read:
    """One call of a request builder, and all that it did."""

    def __init__(self, host, exported, function, *arguments, capacity=64):
        builder = getattr(exported, function)
        builder.restype = ctypes.c_uint32
        self.entry = ctypes.create_string_buffer(b"#" * 64, 64)
        self.length = ctypes.c_uint32(capacity)
        with standard_error() as error, host.recording() as calls:
            self.status = builder(*arguments, self.entry, ctypes.byref(self.length))
        self.printed = error.text
        self.calls = calls


def read_index(host, exported, index, table, **options):
    arguments = ctypes.c_uint32(index), ctypes.c_uint16(table)
    return Read(host, exported, "QdpGetIndexTableData", *arguments, **options)


def read_key(host, exported, key, table, length=None, **options):
    arguments = key, ctypes.c_uint32(len(key) if length is None else length), ctypes.c_uint16(table)
    return Read(host, exported, "QdpGetGenericKeyTableData", *arguments, **options)


class TestQdpGetIndexTableData:
    @pytest.mark.parametrize("index", [0, 1, 4194304, 0xFFFFFFFF])
    @pytest.mark.parametrize("table", [0, 27, 28, 0x1234, 0xFFFF])
    def test_request(self, host, exported, index, table):
        host.script("Qdp_P4_Cmd", outputs=[b"entry"])
        read = read_index(host, exported, index, table)
        assert read.calls == [Call("Qdp_P4_Cmd", [struct.pack("<HHHHI", 12, 11, table, 4, index), Capacity(64)])]
        assert (read.status, read.printed) == (0, "")
        assert read.entry.raw == b"entry" + b"#" * 59

    @pytest.mark.parametrize("capacity", [0, 5, 64])
    def test_the_length_word_is_passed_through(self, host, exported, capacity):
        host.script("Qdp_P4_Cmd", outputs=[b"entry"], sizes={0: 77})
        read = read_index(host, exported, 1, 2, capacity=capacity)
        assert read.calls[0].arguments[1] == Capacity(capacity)
        assert read.length.value == 77
        assert read.entry.raw == b"entry"[:capacity] + b"#" * (64 - min(capacity, 5))

    def test_no_buffer(self, host, exported):
        exported.QdpGetIndexTableData.restype = ctypes.c_uint32
        length = ctypes.c_uint32(0)
        host.script("Qdp_P4_Cmd")
        with host.recording() as calls:
            assert exported.QdpGetIndexTableData(1, 2, None, ctypes.byref(length)) == 0
        assert calls == [Call("Qdp_P4_Cmd", [struct.pack("<HHHHI", 12, 11, 2, 4, 1), NullBuffer(0)])]

    @pytest.mark.parametrize("status", [1, 0xBAD0007, 0xFFFFFFFF])
    def test_a_failure_is_printed_and_its_status_returned(self, host, exported, status):
        host.fail("Qdp_P4_Cmd", status)
        read = read_index(host, exported, 1, 2)
        assert (read.status, read.printed, len(read.calls)) == (status, FAILED, 1)
        assert read.entry.raw == b"#" * 64


class TestQdpGetGenericKeyTableData:
    @pytest.mark.parametrize("length", [0, 1, 2, 3, 4, 5, 33, 34, 60, 1000, 65527])
    def test_request(self, host, exported, length):
        host.script("Qdp_P4_Cmd", outputs=[b"entry"])
        key = bytes(i % 251 for i in range(length))
        read = read_key(host, exported, key, 0x1234)
        request = struct.pack("<HHHH", length + 8, 11, 0x1234, length) + key
        assert read.calls == [Call("Qdp_P4_Cmd", [request, Capacity(64)])]
        assert (read.status, read.printed) == (0, "")
        assert read.entry.raw == b"entry" + b"#" * 59

    def test_no_key(self, host, exported):
        host.script("Qdp_P4_Cmd")
        read = read_key(host, exported, None, 5, length=0)
        assert read.calls == [Call("Qdp_P4_Cmd", [struct.pack("<HHHH", 8, 11, 5, 0), Capacity(64)])]

    # Both lengths keep their low 16 bits, and the library is given no more than the first of them says.
    @pytest.mark.parametrize("length", [65528, 65529, 65535, 65536, 65537, 131064, 131071, 131072, 200_000])
    def test_a_key_whose_lengths_are_cut(self, host, exported, length):
        host.script("Qdp_P4_Cmd")
        key = bytes(i % 251 for i in range(length))
        read = read_key(host, exported, key, 9)
        total = (length + 8) % 65536
        request = (struct.pack("<HHHH", total, 11, 9, length % 65536) + key)[:total]
        assert read.calls == [Call("Qdp_P4_Cmd", [request, Capacity(64)])]
        assert read.status == 0

    @pytest.mark.parametrize("length", [1 << 31, (1 << 32) - 9, (1 << 32) - 8, (1 << 32) - 1])
    def test_an_absurd_length_takes_no_more_stack_than_64_kib(self, host, exported, length):
        """No more of the key is read than the request can hold, either."""
        host.script("Qdp_P4_Cmd")
        key = bytes(i % 251 for i in range(65535))
        read = read_key(host, exported, key, 9, length=length)
        total = (length + 8) % 65536
        request = (struct.pack("<HHHH", total, 11, 9, length % 65536) + key)[:total]
        assert read.calls == [Call("Qdp_P4_Cmd", [request, Capacity(64)])]

    @pytest.mark.parametrize("status", [1, 0xBAD0007, 0xFFFFFFFF])
    def test_a_failure_is_printed_and_its_status_returned(self, host, exported, status):
        host.fail("Qdp_P4_Cmd", status)
        read = read_key(host, exported, b"key", 2)
        assert (read.status, read.printed, len(read.calls)) == (status, FAILED, 1)

    def test_the_length_word_is_passed_through(self, host, exported):
        host.script("Qdp_P4_Cmd", outputs=[b"entry"], sizes={0: 0xFFFFFFFF})
        read = read_key(host, exported, b"key", 2, capacity=3)
        assert read.calls[0].arguments[1] == Capacity(3)
        assert read.length.value == 0xFFFFFFFF
        assert read.entry.raw == b"ent" + b"#" * 61
