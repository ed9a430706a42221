"""The capture of a method's text in pure Python, on file descriptor 2, where the C helper is absent or fails."""

import os
import sys
import tempfile
import threading

from .record import as_records

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Callable, Dict, Optional, Tuple

STANDARD_ERROR = 2

_state = {}  # type: Dict[str, Any]
# Rows, other_row and settle, as `install` was given them.
# Held during a call, and during a fork: a child that begins within a call of another thread would never see its end.
_lock = threading.RLock()
if hasattr(os, "register_at_fork"):  # from CPython 3.7 on
    os.register_at_fork(before=_lock.acquire, after_in_parent=_lock.release, after_in_child=_lock.release)


def install(rows: "Dict[Any, Any]", other_row: "Callable[[Any], Any]", settle: "Callable[..., Any]") -> None:
    _state.update(rows=rows, other_row=other_row, settle=settle)


def call(method: "Any", *arguments: "Any") -> "Any":
    """Calls a method of _libqdp, by its name or itself: its result as records, or an exception of QdpError."""
    return _called(method, arguments, True)


def call_raw(method: "Any", *arguments: "Any") -> "Any":
    """As call, with the module's own objects for a result."""
    return _called(method, arguments, False)


def pass_on(text: bytes) -> None:
    """Writes bytes to the real standard error."""
    try:
        while text:
            text = text[os.write(STANDARD_ERROR, text) :]
    except OSError:
        pass


def _called(method: "Any", arguments: "Tuple[Any, ...]", adopts: bool) -> "Any":
    row = _state["rows"].get(method) or _state["other_row"](method)
    function, failure, plan, name = row
    result = None
    exception = None  # type: Optional[BaseException]
    with _lock:
        redirected = _Redirected()
        try:
            redirected.begin()
            result = function(*arguments)
        except BaseException as raised:  # what is raised is settled below, the interrupt of a user, too
            traceback = raised.__traceback__
            exception = raised.with_traceback(traceback.tb_next if traceback else None)
        finally:
            text = redirected.end()
    if exception is not None or text or result is failure:
        result = _state["settle"](name, arguments, result, exception, text)
    return as_records(plan, result) if adopts else result


class _Redirected:
    """Standard error in a file, as long as a call lasts. Other threads' texts get there, too."""

    def __init__(self) -> None:
        self._real = None  # type: Optional[int]
        self._file = tempfile.TemporaryFile()
        try:
            self._real = os.dup(STANDARD_ERROR)
        except OSError:
            pass  # closed

    def begin(self) -> None:
        _flush()
        os.dup2(self._file.fileno(), STANDARD_ERROR)

    def end(self) -> bytes:
        """Puts standard error back, first of all, since an interrupt may come at any time; gives the text."""
        try:
            _flush()
        finally:
            if self._real is None:
                os.close(STANDARD_ERROR)
            else:
                os.dup2(self._real, STANDARD_ERROR)
                os.close(self._real)
        with self._file:
            self._file.seek(0)
            return self._file.read()


def _flush() -> None:
    if sys.stderr is not None:
        try:
            sys.stderr.flush()
        except (OSError, ValueError):
            pass  # closed, or full
