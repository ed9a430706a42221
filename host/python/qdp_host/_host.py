"""The embedded host of this process: its control interface for Python."""

import contextlib
import ctypes
import json
import os
import sys
import weakref
from typing import Any, Dict, Iterator, List, NamedTuple, Optional, Sequence, Tuple, TYPE_CHECKING, Union

from . import _places
from ._places import HostError, Path

if TYPE_CHECKING:
    from _typeshed import ReadableBuffer

NANOSECONDS_A_SECOND = 1000000000
MOST_NANOSECONDS = 2**63 - 1

LARGEST_STATUS = 2**32 - 1
LARGEST_RESULT = 2**64 - 1


# A buffer for an answer: the number of bytes that the caller said it holds.
Capacity = NamedTuple("Capacity", [("size", int)])

# No buffer for an answer: a null pointer, and what stood in its size word.
NullBuffer = NamedTuple("NullBuffer", [("size", int)])

Argument = Union[int, str, bytes, Capacity, NullBuffer, None]
Result = Union[int, bytes, None]
Output = Optional[bytes]

_Asked = NamedTuple("_Asked", [("operation", str), ("arguments", List[Argument])])


class Call(_Asked):
    """A call of a platform operation: its name and its arguments, in order; a buffer and its size word are one
    argument.

    Numbers are ints as they lay in the register (unsigned, 64 bits); texts are str; byte arguments are bytes; a buffer
    for an answer is a Capacity; a null pointer is None.

    result: the status; the bytes of a text; a handle as an int; None for a null pointer and where nothing is returned.
    outputs: the bytes that each output holds after the call, as many as its size word says; None after a failure.

    Equality compares operation and arguments only: what a caller asked, not what it was answered.
    """

    result = None  # type: Result
    outputs = []  # type: List[Output]

    def __new__(
        cls, operation: str, arguments: List[Argument], result: Result = None, outputs: Sequence[Output] = ()
    ) -> "Call":
        call = super().__new__(cls, operation, arguments)
        call.result = result
        call.outputs = list(outputs)
        return call


def _argument(described: Any) -> Any:
    if not isinstance(described, dict):
        return described
    if "bytes" in described:
        return bytes.fromhex(described["bytes"])
    return (NullBuffer if described["is_null"] else Capacity)(described["capacity"])


def _recorded_call(described: Dict[str, Any]) -> Call:
    return Call(
        described["operation"],
        [_argument(each) for each in described["arguments"]],
        _argument(described["result"]),
        [_argument(each) for each in described["outputs"]],
    )


def _refuse_other_libraries(folder: str) -> None:
    """The module that has found other libraries keeps to them."""
    with open("/proc/self/maps") as maps:
        loaded = {os.path.realpath(line.split(None, 5)[5].rstrip("\n")) for line in maps if "/" in line}
    for path in sorted(loaded):
        name = os.path.basename(path)
        if name in _places.STAND_INS and path != os.path.realpath(os.path.join(folder, name)):
            raise HostError(
                "{} is loaded already; the embedded host has to be there before _libqdp is imported".format(path)
            )


def _loaded(folder: str, name: str) -> ctypes.PyDLL:
    path = _places.library(folder, name)
    try:
        return ctypes.PyDLL(path)
    except OSError as error:
        raise HostError("{} cannot be loaded: {}".format(path, error)) from error


def _integer(name: str, value: int, least: int, most: int, meaning: str) -> int:
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError("{} is {}: give an int, not {!r}".format(name, meaning, value))
    if not least <= value <= most:
        raise ValueError("{} is {}: {} to {}, not {!r}".format(name, meaning, least, most, value))
    return value


def _nanoseconds(seconds: float) -> int:
    if isinstance(seconds, bool) or not isinstance(seconds, (int, float)):
        raise TypeError("seconds: give a number, not {!r}".format(seconds))
    if not 0 <= seconds * NANOSECONDS_A_SECOND <= MOST_NANOSECONDS:
        raise ValueError("{!r} seconds: time goes on only, and for less than 292 years".format(seconds))
    return round(seconds * NANOSECONDS_A_SECOND)


def _chosen_calls(nth: int, times: int) -> Tuple[int, int]:
    for name, number in ("nth", nth), ("times", times):
        if isinstance(number, bool) or not isinstance(number, int):
            raise TypeError("{} counts calls: give an int, not {!r}".format(name, number))
    if not 1 <= nth < 2**32 or not 0 <= times < 2**32:
        raise ValueError("nth counts from 1, and times from 0, which is for ever; not {!r} and {!r}".format(nth, times))
    return nth, times


def _bytes(name: str, value: "ReadableBuffer") -> bytes:
    if isinstance(value, (str, int)) or value is None:
        raise TypeError("{}: give bytes, not {!r}".format(name, value))
    try:
        return bytes(value)
    except (TypeError, ValueError):
        raise TypeError("{}: give bytes, not {!r}".format(name, value)) from None


def _path(name: str, value: Path, other: str = "") -> str:
    if not isinstance(value, (str, os.PathLike)):
        raise TypeError("{}: give a path as a str or a pathlib.Path{}, not {!r}".format(name, other, value))
    return os.fspath(value)


def _scenario(value: Path, other: str = " or a name") -> bytes:
    """The file of a scenario, as the host takes it."""
    return os.fsencode(_places.scenario_file(_path("scenario", value, other)))


def _capture(value: Path) -> bytes:
    return os.fsencode(os.path.abspath(_path("capture", value)))


class Snapshot:
    """A state of the host, for EmbeddedHost.restore()."""

    def __init__(self, control: ctypes.PyDLL) -> None:
        self.number = control.qdp_host_snapshot()  # type: int
        if not self.number:
            raise HostError("there is no state to keep: nothing answers")
        weakref.finalize(self, control.qdp_host_forget, self.number).atexit = False


class EmbeddedHost:
    """The host of this process. `folder` holds the stand-ins; they stay loaded until the process ends."""

    def __init__(self, folder: Optional[str] = None) -> None:
        folder = os.path.abspath(folder or _places.libraries())
        _refuse_other_libraries(folder)
        # Loaded by path and before the module: the loader then takes them for the libraries the module asks for.
        control = _loaded(folder, _places.CONTROL)
        self.libqmtPublic = _loaded(folder, "libqmtPublic.so")
        self.libqdp = _loaded(folder, "libqdp.so")
        self._add_module_path(folder)
        self._declare(control)

    def _declare(self, control: Any) -> None:
        """Gives the control functions their types."""
        self._control = control
        text, size = ctypes.c_char_p, ctypes.c_size_t
        functions = [
            ("reset", None),
            ("load", ctypes.c_int, text),
            ("load_text", ctypes.c_int, text),
            ("scenario", text),
            ("summary", text),
            ("version", text),
            ("check", text, text),
            ("completed", text, text, ctypes.POINTER(ctypes.c_int)),
            ("replay", ctypes.c_int, text),
            ("check_capture", text, text),
            ("is_replaying", ctypes.c_int),
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
            ("operation", ctypes.c_char_p, text),
            ("unreleased_values", size),
            ("time", ctypes.c_uint64),
            ("listen", text, text),
            ("serve", None, ctypes.c_int),
            ("freeze_time", None),
            ("advance_time", None, ctypes.c_uint64),
        ]  # type: List[Tuple[Any, ...]]
        for name, result, *parameters in functions:
            function = getattr(control, "qdp_host_" + name)
            function.restype = result
            function.argtypes = parameters
        self._recording = 0  # blocks of recording() that are open

    @staticmethod
    def _add_module_path(folder: str) -> None:
        module = _places.module_folder(folder)
        if module and module not in sys.path:
            sys.path.insert(0, module)

    def _operation(self, operation: str) -> Tuple[bytes, Dict[str, Any]]:
        """The encoded name of an operation, and what it returns and how many outputs it has."""
        if not isinstance(operation, str):
            raise TypeError("operation: give a name as a str, not {!r}".format(operation))
        name = operation.encode()
        described = self._control.qdp_host_operation(name)
        if described is None:
            raise LookupError(
                "the platform has no operation {!r}; `qdp-host ctl SOCKET operations` lists them, and so does "
                "EmbeddedHost.operations()".format(operation)
            )
        return name, json.loads(described)

    def _take(self, function: str, given: Optional[bytes]) -> None:
        if getattr(self._control, "qdp_host_" + function)(given) != 0:
            raise HostError(self._control.qdp_host_error().decode(errors="replace"))

    def _expect_state(self) -> None:
        if self._control.qdp_host_is_replaying():
            raise HostError("a capture answers, not a state; replay(None) goes back to the state")

    def reset(self) -> None:
        """Be the host again that the process began as: state, real clock, nothing scripted, failing or recorded."""
        self._control.qdp_host_reset()

    def load(self, scenario: Union[Path, Dict[str, Any], None] = None) -> None:
        """Become the host of a scenario: a file, the name of one that comes along, or a dict; None is the default one.

        A scenario that is not valid raises a HostError that says where; every operation fails then, until a reset.
        """
        if scenario is None:
            self._take("load", None)
        elif isinstance(scenario, dict):
            self._load_dict(scenario)
        else:
            self._take("load", _scenario(scenario, ", a name or a dict"))

    def _load_dict(self, scenario: Dict[str, Any]) -> None:
        try:
            text = json.dumps(scenario, allow_nan=False)
        except (TypeError, ValueError) as error:
            raise HostError("scenario: {}".format(error)) from None
        self._take("load_text", text.encode())

    def _text(self, function: str) -> str:
        self._expect_state()
        text = getattr(self._control, "qdp_host_" + function)()  # type: Optional[bytes]
        if text is None:
            raise HostError((self._control.qdp_host_error() or b"there is not enough memory").decode(errors="replace"))
        return text.decode()

    def scenario_text(self) -> str:
        """The present state as the text of a scenario file."""
        return self._text("scenario")

    def scenario(self) -> Dict[str, Any]:
        """The present state as a scenario, which load() takes."""
        scenario = json.loads(self.scenario_text())  # type: Dict[str, Any]
        return scenario

    def summary(self) -> Dict[str, Any]:
        """How many switches, ports, flows and so on the host has at present."""
        summary = json.loads(self._text("summary"))  # type: Dict[str, Any]
        return summary

    def version(self) -> str:
        """The version of the stand-ins."""
        version = self._control.qdp_host_version()  # type: bytes
        return version.decode()

    def check(self, scenario: Path) -> None:
        """Raise a HostError that says what is wrong with a scenario, as load() does; the host stays as it is."""
        wrong = self._control.qdp_host_check(_scenario(scenario))
        if wrong is not None:
            raise HostError(wrong.decode(errors="replace"))

    def completed(self, scenario: Path) -> bytes:
        """A scenario with all that follows from it written out, as the bytes of a file; the host stays as it is.

        Lists whose entries repeat very often stay as they are. Fails as load() does.
        """
        is_valid = ctypes.c_int()
        text = self._control.qdp_host_completed(_scenario(scenario), is_valid)  # type: bytes
        if not is_valid.value:
            raise HostError(text.decode(errors="replace"))
        return text

    def replay(self, capture: Optional[Path]) -> None:
        """Answer from a capture file instead of the state; None goes back to the state. Fails as load() does."""
        self._take("replay", None if capture is None else _capture(capture))

    def check_capture(self, capture: Path) -> None:
        """Raise a HostError that says what is wrong with a capture file; nothing changes."""
        error = self._control.qdp_host_check_capture(_capture(capture))
        if error is not None:
            raise HostError(error.decode(errors="replace"))

    def snapshot(self) -> Snapshot:
        """Keep the present state with its clock, for restore()."""
        self._expect_state()
        return Snapshot(self._control)

    def restore(self, snapshot: Snapshot) -> None:
        """Go back to a state, as often as wanted. What is scripted, failing or delayed stays so."""
        if not isinstance(snapshot, Snapshot):
            raise TypeError("snapshot: give what EmbeddedHost.snapshot() returned, not {!r}".format(snapshot))
        self._expect_state()
        if self._control.qdp_host_restore(snapshot.number) != 0:
            raise HostError("there is no state to go back to: nothing answers")

    def script(
        self,
        operation: str,
        status: int = 0,
        outputs: "Sequence[Optional[ReadableBuffer]]" = (),
        sizes: Optional[Dict[int, int]] = None,
        text: "Optional[ReadableBuffer]" = None,
    ) -> None:
        """Script the next answer of `operation`; answers queue up, and the state answers again after the last one.

        status: what the operation returns.
        outputs: bytes for its outputs, in the order of its arguments; None leaves an output untouched. An output is
            never written beyond the capacity that the caller gave.
        sizes: {output: number} to report in a size word instead of the number of bytes.
        text: bytes to return a pointer to, for an operation that returns a text.
        """
        name, described = self._operation(operation)
        most = LARGEST_RESULT if described["result"] == "handle" else LARGEST_STATUS
        _integer("status", status, 0, most, "what {} returns".format(operation))
        given, sizes = self._checked_outputs(operation, described["outputs"], outputs, sizes)
        if text is not None:
            if described["result"] != "text":
                raise ValueError("text: {} returns no text".format(operation))
            text = _bytes("text", text)

        self._control.qdp_host_script(name, status)
        if text is not None:
            self._control.qdp_host_script_text(name, text, len(text))
        for index, output in given.items():
            self._control.qdp_host_script_output(name, index, output, len(output))
        for index, size in sizes.items():
            self._control.qdp_host_script_size(name, index, size)

    @staticmethod
    def _checked_outputs(
        operation: str,
        num_outputs: int,
        outputs: "Sequence[Optional[ReadableBuffer]]",
        sizes: Optional[Dict[int, int]],
    ) -> Tuple[Dict[int, bytes], Dict[int, int]]:
        """The bytes and the reported sizes of outputs, by index."""
        if not isinstance(outputs, (list, tuple)):
            raise TypeError("outputs: give a list of bytes, one for each output, not {!r}".format(outputs))
        if len(outputs) > num_outputs:
            raise ValueError("outputs: {} has {}, not {}".format(operation, num_outputs, len(outputs)))
        if not isinstance(sizes, (dict, type(None))):
            raise TypeError("sizes: give a dict of an output's index and its size, not {!r}".format(sizes))
        for index, size in (sizes or {}).items():
            _integer("sizes[{!r}]".format(index), size, 0, 2**32 - 1, "the size that an output reports")
            if isinstance(index, bool) or not isinstance(index, int) or not 0 <= index < num_outputs:
                raise ValueError("sizes: {} has {} outputs, none of index {!r}".format(operation, num_outputs, index))
        given = {
            index: _bytes("outputs[{}]".format(index), output)
            for index, output in enumerate(outputs)
            if output is not None
        }
        return given, sizes or {}

    def fail(self, operation: str, status: int = 1, nth: int = 1, times: int = 1) -> None:
        """Fail `operation` with `status` from its nth call from now on, `times` times; 0 times is for ever.

        An operation that returns a pointer fails with a null pointer, whatever the status.
        """
        name, described = self._operation(operation)
        least = 1 if described["result"] == "status" else 0
        _integer("status", status, least, LARGEST_STATUS, "the status of a failure")
        self._control.qdp_host_fail(name, status, *_chosen_calls(nth, times))

    def delay(self, operation: str, seconds: float, nth: int = 1, times: int = 1) -> None:
        """Let `operation` take so much longer from its nth call from now on, `times` times; 0 times is for ever.

        The time is real, whether the host's clock is stopped or not. The module keeps the interpreter lock during a
        call, as it does on a real host: other threads of Python wait as well.
        """
        name, _ = self._operation(operation)
        self._control.qdp_host_delay(name, _nanoseconds(seconds), *_chosen_calls(nth, times))

    @contextlib.contextmanager
    def recording(self) -> Iterator[List[Call]]:
        """Record the platform calls of the block into the list that is its target. Blocks may be nested."""
        calls = []  # type: List[Call]
        if self._recording == 0:
            self._control.qdp_host_record(1)
        self._recording += 1
        before = len(self._recorded())
        try:
            yield calls
        finally:
            calls.extend(_recorded_call(call) for call in self._recorded()[before:])
            self._recording -= 1
            if self._recording == 0:
                self._control.qdp_host_record(0)

    def _recorded(self) -> List[Dict[str, Any]]:
        calls = json.loads(self._control.qdp_host_calls())  # type: List[Dict[str, Any]]
        return calls

    def operations(self) -> List[str]:
        """The names of the operations that the host answers from its state."""
        names = json.loads(self._control.qdp_host_operations())  # type: List[str]
        return names

    def unreleased_values(self) -> int:
        """How many values of the switch state library their callers have not released."""
        count = self._control.qdp_host_unreleased_values()  # type: int
        return count

    def uptime(self) -> float:
        """How long the host has been up, in seconds; counters begin with it."""
        self._expect_state()
        nanoseconds = self._control.qdp_host_time()  # type: int
        return nanoseconds / NANOSECONDS_A_SECOND

    def freeze(self) -> None:
        """Stop the clock, so that counters change only with advance()."""
        self._control.qdp_host_freeze_time()

    def advance(self, seconds: float) -> None:
        """Move the clock on."""
        self._control.qdp_host_advance_time(_nanoseconds(seconds))


_the_host = None  # type: Optional[EmbeddedHost]


def the_host() -> EmbeddedHost:
    """The host of this process, for those who share it."""
    global _the_host
    if _the_host is None:
        _the_host = EmbeddedHost()
    return _the_host


@contextlib.contextmanager
def running(
    scenario: Union[Path, Dict[str, Any], None] = None, replay: Optional[Path] = None
) -> Iterator[EmbeddedHost]:
    """The embedded host, fresh at the begin of the block and reset at its end.

    scenario: a file, the name of a scenario that comes along, or a dict.
    replay: a capture file to answer from instead.

    The stand-ins have to be there before _libqdp is imported for the first time; they stay until the process ends.
    """
    if scenario is not None and replay is not None:
        raise ValueError("scenario and replay exclude each other")
    if os.environ.get("QDP_HOST"):
        raise HostError("QDP_HOST attaches this process to a shared host; unset it for a host of the process's own")
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
