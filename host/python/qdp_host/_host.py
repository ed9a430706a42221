"""The embedded host of this process: its control interface for Python."""

import contextlib
import ctypes
import json
import os
import sys
import weakref
from collections import namedtuple

from . import _places
from ._places import HostError

NANOSECONDS_A_SECOND = 1000000000
MOST_NANOSECONDS = 2**63 - 1

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


def _refuse_other_libraries(folder):
    """The module that has found other libraries keeps to them."""
    with open("/proc/self/maps") as maps:
        loaded = {os.path.realpath(line.split(None, 5)[5].rstrip("\n")) for line in maps if "/" in line}
    for path in sorted(loaded):
        name = os.path.basename(path)
        if name in _places.STAND_INS and path != os.path.realpath(os.path.join(folder, name)):
            raise HostError(
                "{} is loaded already; the embedded host has to be there before _libqdp is imported".format(path)
            )


def _loaded(folder, name):
    path = _places.library(folder, name)
    try:
        return ctypes.PyDLL(path)
    except OSError as error:
        raise HostError("{} cannot be loaded: {}".format(path, error)) from error


def _nanoseconds(seconds):
    nanoseconds = round(seconds * NANOSECONDS_A_SECOND)
    if not 0 <= nanoseconds <= MOST_NANOSECONDS:
        raise ValueError("{!r} seconds: time goes on only, and for less than 292 years".format(seconds))
    return nanoseconds


def _chosen_calls(nth, times):
    if nth < 1 or times < 0:
        raise ValueError("nth counts from 1, and times from 0, which is for ever; not {!r} and {!r}".format(nth, times))
    return nth, times


class Snapshot:
    """A state of the host, for EmbeddedHost.restore()."""

    def __init__(self, control):
        self.number = control.qdp_host_snapshot()
        if not self.number:
            raise HostError("there is no state to keep: a capture answers, or nothing does")
        weakref.finalize(self, control.qdp_host_forget, self.number).atexit = False


class EmbeddedHost:
    """The host of this process. `folder` holds the stand-ins; they stay loaded until the process ends."""

    def __init__(self, folder=None):
        folder = os.path.abspath(folder or _places.libraries())
        _refuse_other_libraries(folder)
        # Loaded by path and before the module: the loader then takes them for the libraries the module asks for.
        self._control = _loaded(folder, _places.CONTROL)
        self.libqmtPublic = _loaded(folder, "libqmtPublic.so")
        self.libqdp = _loaded(folder, "libqdp.so")
        self._add_module_path(folder)
        text, size = ctypes.c_char_p, ctypes.c_size_t
        for name, result, *parameters in [
            ("reset", None),
            ("load", ctypes.c_int, text),
            ("scenario", text),
            ("summary", text),
            ("schema", text),
            ("version", text),
            ("check", text, text),
            ("completed", text, text, ctypes.POINTER(ctypes.c_int)),
            ("replay", ctypes.c_int, text),
            ("error", text),
            ("snapshot", ctypes.c_uint64),
            ("restore", ctypes.c_int, ctypes.c_uint64),
            ("forget", None, ctypes.c_uint64),
            ("script", ctypes.c_int, text, ctypes.c_uint64),
            ("script_output", ctypes.c_int, text, ctypes.c_uint, ctypes.c_char_p, size),
            ("script_size", ctypes.c_int, text, ctypes.c_uint, ctypes.c_uint32),
            ("script_text", ctypes.c_int, text, ctypes.c_char_p, size),
            ("fail", ctypes.c_int, text, ctypes.c_uint32, ctypes.c_uint, ctypes.c_uint),
            ("delay", ctypes.c_int, text, ctypes.c_uint64, ctypes.c_uint, ctypes.c_uint),
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

    @staticmethod
    def _add_module_path(folder):
        module = _places.module_folder(folder)
        if module and module not in sys.path:
            sys.path.insert(0, module)

    def _call(self, function, operation, *arguments):
        if getattr(self._control, "qdp_host_" + function)(operation.encode(), *arguments) != 0:
            raise LookupError(f"the platform has no operation {operation!r}; see EmbeddedHost.operations()")

    def _take(self, function, path):
        encoded = None if path is None else os.fsencode(path)
        if getattr(self._control, "qdp_host_" + function)(encoded) != 0:
            raise HostError(self._control.qdp_host_error().decode(errors="replace"))

    def reset(self):
        """Be the host again that the process began as: state, real clock, nothing scripted, failing or recorded."""
        self._control.qdp_host_reset()

    def load(self, scenario=None):
        """Become the host of a scenario: a file, or the name of one that comes along; None is the default one.

        A scenario that is not valid raises a HostError that says where; every operation fails then, until a reset.
        """
        self._take("load", None if scenario is None else _places.scenario_file(scenario))

    def _text(self, function):
        text = getattr(self._control, "qdp_host_" + function)()
        if text is None:
            raise HostError((self._control.qdp_host_error() or b"there is not enough memory").decode(errors="replace"))
        return text.decode()

    def scenario_text(self):
        """The present state as the text of a scenario file."""
        return self._text("scenario")

    def scenario(self):
        """The present state as a scenario, which load() takes when it is in a file."""
        return json.loads(self.scenario_text())

    def summary(self):
        """How many switches, ports, flows and so on the host has at present."""
        return json.loads(self._text("summary"))

    def version(self):
        """The version of the stand-ins."""
        return self._control.qdp_host_version().decode()

    def check(self, scenario):
        """Raise a HostError that says what is wrong with a scenario, as load() does; the host stays as it is."""
        wrong = self._control.qdp_host_check(os.fsencode(_places.scenario_file(scenario)))
        if wrong is not None:
            raise HostError(wrong.decode(errors="replace"))

    def completed(self, scenario):
        """A scenario with all that follows from it written out, as the bytes of a file; the host stays as it is.

        Lists whose entries repeat very often stay as they are. Fails as load() does.
        """
        is_valid = ctypes.c_int()
        text = self._control.qdp_host_completed(os.fsencode(_places.scenario_file(scenario)), is_valid)
        if not is_valid.value:
            raise HostError(text.decode(errors="replace"))
        return text

    def replay(self, capture):
        """Answer from a capture file instead of the state; None goes back to the state. Fails as load() does."""
        self._take("replay", None if capture is None else os.path.abspath(capture))

    def snapshot(self):
        """Keep the present state with its clock, for restore()."""
        return Snapshot(self._control)

    def restore(self, snapshot):
        """Go back to a state, as often as wanted. What is scripted, failing or delayed stays so."""
        if self._control.qdp_host_restore(snapshot.number) != 0:
            raise HostError("there is no state to go back to: nothing answers")

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
        self._call("fail", operation, status, *_chosen_calls(nth, times))

    def delay(self, operation, seconds, nth=1, times=1):
        """Let `operation` take so much longer from its nth call from now on, `times` times; 0 times is for ever.

        The time is real, whether the host's clock is stopped or not. The module keeps the interpreter lock during a
        call, as it does on a real host: other threads of Python wait as well.
        """
        self._call("delay", operation, _nanoseconds(seconds), *_chosen_calls(nth, times))

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
        self._control.qdp_host_advance_time(_nanoseconds(seconds))


_the_host = None


def the_host():
    """The host of this process, for those who share it."""
    global _the_host
    if _the_host is None:
        _the_host = EmbeddedHost()
    return _the_host


@contextlib.contextmanager
def running(scenario=None, replay=None):
    """The embedded host, fresh at the begin of the block and reset at its end.

    scenario: a file, or the name of a scenario that comes along.
    replay: a capture file to answer from instead.

    The stand-ins have to be there before _libqdp is imported for the first time; they stay until the process ends.
    """
    host = the_host()
    host.reset()
    try:
        if scenario is not None:
            host.load(scenario)
        if replay is not None:
            host.replay(replay)
        yield host
    finally:
        host.reset()
