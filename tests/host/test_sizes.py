"""Every operation with buffers and requests of wrong sizes: a status that is not 0, and nothing written."""

import ctypes
import re
import struct

import pytest

import _libqdp
from qdp_host import Capacity, NullBuffer
from contract import RECIPES
from recipes import is_made_of

OPERATION = re.compile(r"^OPERATION\((Qdp_\w+)(?:, (.*))?\)$", re.MULTILINE)
# Roles of parameters that belong to the argument of the parameter before them.
SECOND = ("count", "capacity", "size")

# Hands out as many entries as fit.
WHAT_FITS = {"Qdp_P4_HWTable_Dump": 16}


def table_of_operations(root):
    """For each operation: its arguments as lists of the roles of their one or two parameters."""
    made = {}
    for name, roles in OPERATION.findall((root / "host" / "call" / "operations_qdp.def").read_text()):
        made[name] = arguments = []
        for role in roles.split(", ") if roles else []:
            if role in SECOND:
                arguments[-1].append(role)
            else:
                arguments.append([role])
    return made


class Call:
    """A recorded call that can be made again, with other sizes."""

    def __init__(self, host, table, call):
        self.function = getattr(host.libqdp, call.operation)
        self.kinds = table[call.operation]
        self.arguments = call.arguments
        assert len(self.kinds) == len(self.arguments), call

    def output(self):
        """The kind and the capacity of its one output, or None."""
        for kind, argument in zip(self.kinds, self.arguments):
            if isinstance(argument, Capacity):
                return kind[0], argument.size
        return None

    def make(self, capacity=None, request=None, before=b""):
        """Status, what stands in the output's buffer, and its size word."""
        values, size, room = [], ctypes.c_uint32(), None
        for kind, argument in zip(self.kinds, self.arguments):
            if isinstance(argument, (Capacity, NullBuffer)):
                size.value = argument.size if capacity is None else capacity
                room = ctypes.create_string_buffer(before.ljust(argument.size, b"#"), argument.size)
                pair = [room, ctypes.byref(size) if kind[0] == "sized_out" else size.value]
            elif kind[0] in ("bytes", "mac", "items", "record"):
                data = (argument or b"") if request is None else request
                pair = [data, len(data) // 4 if kind[0] == "items" else len(data)]
            else:
                pair = [argument.encode() if isinstance(argument, str) else argument]
            values += pair[: len(kind)]
        status = self.function(*values)
        return status & 0xFFFFFFFF, room.raw if room else b"", size.value


def calls_of(host, name):
    """The platform calls of a method that its recipe makes succeed."""
    arguments = is_made_of(RECIPES[name], _libqdp)
    with host.recording() as calls:
        getattr(_libqdp, name)(*arguments)
    return [call for call in calls if call.operation.startswith("Qdp_")]


@pytest.fixture(params=RECIPES)
def calls(request, root, configured):
    table = table_of_operations(root)
    return [Call(configured, table, call) for call in calls_of(configured, request.param)[-3:]]


def first_bytes(call):
    """What a caller has written into the buffer before: only of contexts, whose size stands there."""
    return (64).to_bytes(4, "little") if call.function.__name__ == "Qdp_FPOQueryMgr" else b""


def test_the_table_is_understood(root, host):
    assert sorted(table_of_operations(root)) == [name for name in host.operations() if name.startswith("Qdp_")]


def test_an_answer_that_does_not_fit_is_not_given(calls):
    for call in calls:
        if not call.output() or call.output()[0] != "sized_out":
            continue
        before = first_bytes(call)
        status, whole, needed = call.make(before=before)
        if status != 0:  # what the method did cannot be done again
            continue
        smallest = WHAT_FITS.get(call.function.__name__, needed)
        for capacity in {0, smallest // 2, smallest - 1} if smallest else ():
            status, written, size = call.make(capacity, before=before)
            assert status != 0, (call.function.__name__, capacity)
            assert (written, size) == (before.ljust(len(whole), b"#"), capacity), call.function.__name__


def test_a_request_of_another_size_is_refused(calls):
    for call in calls:
        for kind, argument in zip(call.kinds, call.arguments):
            if kind[0] == "bytes" and isinstance(argument, bytes):
                for data in (argument[:-1], argument + b"\0", b""):
                    status, written, _ = call.make(request=data, before=first_bytes(call))
                    assert status != 0, (call.function.__name__, len(data))
                    assert not written.rstrip(b"#").strip(first_bytes(call) or b"#"), call.function.__name__


HOST_PF_GET = 1  # an opcode

# A request begins with its length and its opcode.
COMMANDS = {
    "nothing": b"",
    "half a header": struct.pack("<H", 4),
    "an opcode that there is not": struct.pack("<2H", 4, 0xFFFF),
    "a length beyond the request": struct.pack("<2H", 255, HOST_PF_GET),
    "a length before the request's end": struct.pack("<2H", 4, HOST_PF_GET) + bytes(12),
    "a payload that the opcode has not": struct.pack("<2H", 16, HOST_PF_GET) + bytes(12),
}


@pytest.mark.parametrize("name", COMMANDS)
def test_a_malformed_command_is_refused(host, name):
    response, size = ctypes.create_string_buffer(b"#" * 1024, 1024), ctypes.c_uint32(1024)
    request = COMMANDS[name]
    assert host.libqdp.Qdp_P4_Cmd(request, len(request), response, ctypes.byref(size)) != 0
    assert (response.raw, size.value) == (b"#" * 1024, 1024)
