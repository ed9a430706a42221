"""The embedded host: stand-ins for the two platform libraries that act like one host, under a script's control.

    host = EmbeddedHost("build/release/host")
    import _libqdp                      # finds the stand-ins, which are loaded already

    host.fail("Qdp_Get_Port_List", status=7)
    assert _libqdp.ListPorts(0) is None
"""

import contextlib
import ctypes
import json
import os
from collections import namedtuple

__all__ = ["Call", "Capacity", "EmbeddedHost", "NullBuffer"]

# A call of a platform operation: its name and its arguments, in order. A buffer and its size word are one argument.
# Numbers are ints as they lay in the register (unsigned, 64 bits); texts are str; byte arguments are bytes; a buffer
# for an answer is a Capacity; a null pointer is None.
Call = namedtuple("Call", "operation arguments")

# A buffer for an answer: the number of bytes that the caller said it holds.
Capacity = namedtuple("Capacity", "size")

# No buffer for an answer: a null pointer, and what stood in its size word.
NullBuffer = namedtuple("NullBuffer", "size")


def _argument(described):
    if not isinstance(described, dict):
        return described
    if "bytes" in described:
        return bytes.fromhex(described["bytes"])
    return (NullBuffer if described["is_null"] else Capacity)(described["capacity"])


class EmbeddedHost:
    """The host of this process. `folder` holds the stand-ins; they stay loaded until the process ends."""

    def __init__(self, folder):
        folder = os.path.abspath(folder)
        # Loaded by path and before the module: the loader then takes them for the libraries the module asks for.
        self._control = ctypes.PyDLL(os.path.join(folder, "libqdphost.so"))
        self.libqmtPublic = ctypes.PyDLL(os.path.join(folder, "libqmtPublic.so"))
        self.libqdp = ctypes.PyDLL(os.path.join(folder, "libqdp.so"))
        text, size = ctypes.c_char_p, ctypes.c_size_t
        for name, result, *parameters in [
            ("reset", None),
            ("script", ctypes.c_int, text, ctypes.c_uint64),
            ("script_output", ctypes.c_int, text, ctypes.c_uint, ctypes.c_char_p, size),
            ("script_size", ctypes.c_int, text, ctypes.c_uint, ctypes.c_uint32),
            ("script_text", ctypes.c_int, text, ctypes.c_char_p, size),
            ("fail", ctypes.c_int, text, ctypes.c_uint32, ctypes.c_uint, ctypes.c_uint),
            ("record", None, ctypes.c_int),
            ("calls", ctypes.c_char_p),
            ("operations", ctypes.c_char_p),
            ("values_out", size),
            ("freeze_time", None),
            ("advance_time", None, ctypes.c_uint64),
        ]:
            function = getattr(self._control, "qdp_host_" + name)
            function.restype = result
            function.argtypes = parameters

    def _call(self, function, operation, *arguments):
        if getattr(self._control, "qdp_host_" + function)(operation.encode(), *arguments) != 0:
            raise LookupError(f"the platform has no operation {operation!r}; see EmbeddedHost.operations()")

    def reset(self):
        """Put the built-in host back: state, real clock, nothing scripted, failing or recorded."""
        self._control.qdp_host_reset()

    def script(self, operation, status=0, outputs=(), sizes=None, text=None):
        """Script the next answer of `operation`; answers queue up, and the state answers again after the last one.

        status: what the operation returns.
        outputs: bytes for its outputs, in the order of its arguments; None leaves an output untouched. An output is
            never written beyond the capacity that the caller gave.
        sizes: {output: number} to report in a size word instead of the number of bytes.
        text: bytes to return a pointer to, for an operation that returns a text.
        """
        self._call("script", operation, status)
        if text is not None:
            self._call("script_text", operation, text, len(text))
        for index, output in enumerate(outputs):
            if output is not None:
                self._call("script_output", operation, index, bytes(output), len(output))
        for index, size in (sizes or {}).items():
            self._call("script_size", operation, index, size)

    def fail(self, operation, status=1, nth=1, times=1):
        """Fail `operation` with `status` from its nth call from now on, `times` times; 0 times is for ever."""
        self._call("fail", operation, status, nth, times)

    @contextlib.contextmanager
    def recording(self):
        """Record the platform calls of the block into the list that is its target."""
        calls = []
        self._control.qdp_host_record(1)
        try:
            yield calls
        finally:
            for call in json.loads(self._control.qdp_host_calls()):
                calls.append(Call(call["operation"], [_argument(each) for each in call["arguments"]]))
            self._control.qdp_host_record(0)

    def operations(self):
        """The names of the operations that the host answers from its state."""
        return json.loads(self._control.qdp_host_operations())

    def values_out(self):
        """How many values of the switch state library are with their callers, not yet released."""
        return self._control.qdp_host_values_out()

    def freeze(self):
        """Stop the clock, so that counters change only with advance()."""
        self._control.qdp_host_freeze_time()

    def advance(self, seconds):
        """Move the clock on."""
        self._control.qdp_host_advance_time(round(seconds * 1_000_000_000))
