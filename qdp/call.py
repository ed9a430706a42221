"""One call of one method: its result, or an exception with the platform's text."""

from . import errors
from .record import plan_of
from .records import NONE_IS_NO_FAILURE, RESULTS

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Callable, Dict, NoReturn, Optional, Tuple, Union

    Method = Union[str, Callable[..., Any]]
    Row = Tuple[Callable[..., Any], Any, Any, str]

# Results that say that the call failed, where that is not None.
FAILURES = {
    "SetLBMetric": False,
    "SetSwitchMinFlowLayer": False,
    "EnableFPO": False,
    "InitMbufFastslabs": False,
    "SetSwitchMetaFlow": 0,
}
# In the place of such a result for methods that have none. A method never returns it.
NO_FAILURE = ...

# Methods that print a text when they fail, and return a result all the same.
FAILING_WITH_RESULT = frozenset(["EnableFPO", "GetUplinkStats", "SetSwitchFilterTypes"])

# A method that prints always and calls nothing of the platform: a capture proves itself with it.
PROVING_METHOD = "DumpPortFlow"
PROVING_TEXT = b"Dump Port Flow Not supported below 2.10.0.0\n"


class _Missing:
    """Stands for the module where it cannot be loaded: each of its methods says why."""

    def __init__(self, why):
        # type: (str) -> None
        self._why = why

    def __getattr__(self, name):
        # type: (str) -> Callable[..., NoReturn]
        def method(*arguments):
            # type: (Any) -> NoReturn
            raise errors.Unsupported(self._why, name, arguments, "run this on a host, or by `qdp-host run`")

        return method


try:
    import _libqdp
except ImportError as missing:  # off the host: a snapshot can answer, see answer_from
    _libqdp = _Missing("_libqdp cannot be loaded: {}".format(missing))  # type: ignore[assignment]


def _row(name: str, function: "Callable[..., Any]") -> "Row":
    """What a call needs of its method: the function, the result that means a failure, the plan of records, the name."""
    failure = NO_FAILURE if name in NONE_IS_NO_FAILURE else FAILURES.get(name)
    return function, failure, plan_of(RESULTS[name]), name


def _rows():
    # type: () -> Dict[Any, Row]
    """The rows of all methods, by name and by function."""
    rows = {}  # type: Dict[Any, Row]
    for name in RESULTS:
        function = getattr(_libqdp, name)
        rows[name] = rows[function] = _row(name, function)
    return rows


def answer_from(answers):
    # type: (Callable[[str, Tuple[Any, ...]], Any]) -> None
    """From now on, `answers(method, arguments)` answers all calls of this process in the module's place: the method's
    own result, or an exception of QdpError."""

    def function_of(name):
        # type: (str) -> Callable[..., Any]
        return lambda *arguments: answers(name, arguments)

    for key, row in list(_rows_by_name.items()):
        _rows_by_name[key] = (function_of(row[3]),) + row[1:]


def _other_row(method: "Method") -> "Row":
    """The row of what is called in a method's place."""
    if not callable(method):
        raise AttributeError("module '_libqdp' has no method {!r}; help(_libqdp) lists them".format(method))
    return method, NO_FAILURE, None, getattr(method, "__name__", repr(method))


def _settle(method, arguments, result, exception, text):
    # type: (str, Tuple[Any, ...], Any, Optional[BaseException], bytes) -> Any
    """The end of a call that printed, raised, or returned what means a failure: its result, or the exception for it."""
    known, unknown, row = errors.split(text.decode("utf-8", "backslashreplace"))
    if unknown:
        _pass_on(method, unknown)
    if exception is not None:
        _raise(method, arguments, exception, known, row)
    failure = _rows_by_name[method][1] if method in _rows_by_name else NO_FAILURE
    if result is failure or known and (result is None or method in FAILING_WITH_RESULT or method not in RESULTS):
        raise errors.failure(known, method, arguments, row)
    if known:
        _pass_on(method, known)
    return result


def _raise(method, arguments, exception, known, row):
    # type: (str, Tuple[Any, ...], BaseException, str, Optional[errors.Row]) -> NoReturn
    """Raises what stands for an exception: of the module, of the interpreter, or of a signal handler."""
    cause = exception
    if isinstance(exception, SystemError) and exception.__cause__ is not None:
        cause = exception.__cause__  # left set beside a result
    if known and isinstance(cause, Exception):
        said_by_interpreter = isinstance(cause, SystemError) and cause is exception  # NULL, and no exception
        raise errors.failure(known, method, arguments, row) from (None if said_by_interpreter else cause)
    if known:
        _pass_on(method, known)
    if cause.__traceback__ is None and isinstance(cause, Exception):
        text = str(cause)
        row = errors.row_of_exception(cause, text)
        if row is not None:
            raise errors.failure(text, method, arguments, row) from cause
    raise cause  # of Python code, as a signal handler: not the method's


def _pass_on(method: str, text: str) -> None:
    """Hands a text on that says nothing of the call: to standard error, where it was meant to go, and to the log."""
    import logging

    _capture.pass_on(text.encode())
    logger = logging.getLogger("qdp")
    if not logger.handlers:
        logger.addHandler(logging.NullHandler())  # the text is on standard error already
    logger.warning("%s: %s", method, text.rstrip("\n"))


def _proven(helper):
    # type: (Any) -> bool
    """Whether a capture gets the text of a method."""
    helper.install(_rows_by_name, _other_row, lambda method, arguments, result, exception, text: text)
    return bool(helper.call_raw(PROVING_METHOD) == PROVING_TEXT)


def _chosen():
    # type: () -> Any
    """The capture that works here: the C helper, or the one in Python."""
    try:
        from . import _call  # type: ignore[attr-defined]

        if _proven(_call):
            return _call
    except (ImportError, MemoryError):
        pass
    from . import _capture

    return _capture


_rows_by_name = _rows()
_capture = _chosen()
_capture.install(_rows_by_name, _other_row, _settle)

if TYPE_CHECKING:

    def call(method: "Method", *arguments: "Any") -> "Any":
        """Calls a method of the module, by its name or itself: its result as records, or an exception of QdpError."""

    def call_raw(method: "Method", *arguments: "Any") -> "Any":
        """As `call`, with the module's own objects for a result."""

else:
    call = _capture.call
    call_raw = _capture.call_raw
