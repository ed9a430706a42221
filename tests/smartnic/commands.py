"""Commands to the SmartNIC as its channel carries them, and the arguments that tests vary."""

import ctypes
import struct

from observe import Call, Capacity, NullBuffer

OPERATION = "Qdp_P4_Cmd"


def framed(opcode, payload=b""):
    """A request: its header, and the opcode's payload."""
    return struct.pack("<HH", 4 + len(payload), opcode) + payload


def command(opcode, payload=b"", response=None):
    """The call that carries a request; `response` is the capacity for its answer, if it has one."""
    return Call(OPERATION, [framed(opcode, payload), NullBuffer(0) if response is None else Capacity(response)])


def transmit(host, request, capacity=None):
    """Hands a request straight to the embedded host: the status, and the buffer behind it, which starts out as "#"s."""
    buffer = ctypes.create_string_buffer(b"#" * 1100, 1100)
    size = ctypes.c_uint32(capacity or 0)
    status = host.libqdp.Qdp_P4_Cmd(
        request, len(request), None if capacity is None else buffer, ctypes.byref(size)
    )
    return status, buffer.raw


def replaced(arguments, place, value):
    """The arguments with another value in one place."""
    return (*arguments[:place], value, *arguments[place + 1 :])


def at_bounds(arguments, bounds):
    """The arguments with each one, in turn, at the largest value that is accepted: one less than its bound."""
    return [replaced(arguments, place, bound - 1) for place, bound in enumerate(bounds)]
