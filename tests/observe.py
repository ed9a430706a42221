"""Calls of methods with everything that can be seen of them: result, standard error, exception, platform calls."""

import os
import sys
from dataclasses import dataclass, field

from qdp_host import (
    Call,
    Capacity,
    NullBuffer,
)  # noqa: F401: the words in which tests write down the platform calls they expect

INVALID_PARAMETER = "TypeError: Invalid parameter passed.\n"


def exact(value):
    """A value in a form whose equality is strict: types, and the order of a dict's keys, count."""
    if isinstance(value, dict):
        return "dict", [(key, exact(item)) for key, item in value.items()]
    if isinstance(value, (list, tuple)):
        return type(value).__name__, [exact(item) for item in value]
    return type(value).__name__, value


@dataclass
class Outcome:
    """What one call did. Compare it whole with what was expected."""

    result: object = None
    printed: str = ""
    # The type of an exception that was raised, or left set beside a result, and its text when that is the module's own.
    raised: object = None
    left_set: object = None
    returned_null: bool = False  # NULL, and no exception either
    calls: list = field(default_factory=list)

    def __eq__(self, other):
        return self._comparable() == other._comparable()

    def _comparable(self):
        return (
            exact(self.result),
            self.printed,
            self.raised,
            self.left_set,
            self.returned_null,
            exact([(call.operation, call.arguments) for call in self.calls]),
        )


class standard_error:
    """Collects what is written to the file descriptor of standard error, by whatever means."""

    _unused = []  # descriptors of empty files: making one takes longer than most calls

    def __enter__(self):
        sys.stderr.flush()
        self._file = self._unused.pop() if self._unused else os.memfd_create("standard error")
        self._saved = os.dup(2)
        os.dup2(self._file, 2)
        return self

    def __exit__(self, *exception):
        sys.stderr.flush()
        os.dup2(self._saved, 2)
        os.close(self._saved)
        size = os.lseek(self._file, 0, os.SEEK_CUR)
        self.text = os.pread(self._file, size, 0).decode()
        os.ftruncate(self._file, 0)
        os.lseek(self._file, 0, os.SEEK_SET)
        self._unused.append(self._file)


def _named(exception):
    """An exception as a test writes it: its type, and with the module's own SystemErrors and the like their text."""
    text = str(exception)
    return (type(exception), text) if type(exception) is not TypeError else TypeError


class Observer:
    """`observer.call("ListPorts", 3)` calls the method and returns its Outcome."""

    def __init__(self, module, host):
        self.module = module
        self.host = host

    def call(self, method, *arguments):
        outcome = Outcome()
        with standard_error() as error, self.host.recording() as calls:
            try:
                outcome.result = getattr(self.module, method)(*arguments)
            except SystemError as failure:
                if "returned NULL without setting an" in str(failure):
                    outcome.returned_null = True
                elif "returned a result with an" in str(failure):
                    outcome.left_set = _named(failure.__cause__)
                else:
                    outcome.raised = _named(failure)
            except Exception as failure:
                outcome.raised = _named(failure)
        outcome.printed = error.text
        outcome.calls = calls
        return outcome

    def result(self, method, *arguments):
        """The result of a call that is expected to go well; the platform calls it made are not looked at."""
        outcome = self.call(method, *arguments)
        assert outcome == Outcome(outcome.result, calls=outcome.calls)
        return outcome.result


def refused(text=INVALID_PARAMETER, *, left_set=None, result=None):
    """The outcome of arguments that are refused: a text, and no platform call. A tuple that does not parse leaves the
    parser's exception set."""
    return Outcome(result, text, left_set=left_set)
