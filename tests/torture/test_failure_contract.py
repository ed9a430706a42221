"""Every failure path of every method leaves the documented pair of returned value and exception: read without the
interpreter's check of it in between, and then through that check, which a debug build ends the process over."""

import os
import resource
import signal
import sys

import pytest

from failure_paths import NULL, Pair, failure_paths
from observe import standard_error
from contract import RECIPES
from recipes import is_made_of

IS_DEBUG_BUILD = hasattr(sys, "gettotalrefcount")

# What the interpreter says of a pair that it does not allow.
NULL_ALONE = "returned NULL without setting an exception"
RESULT_BESIDE_EXCEPTION = "returned a result with an exception set"


def is_same(value, documented):
    return type(value) is type(documented) and value == documented


def complaint(pair):
    """What the interpreter's check says of a pair, or None."""
    if pair.value == NULL:
        return None if pair.exception else NULL_ALONE
    return RESULT_BESIDE_EXCEPTION if pair.exception else None


def in_child(function):
    """How a call ends a process: its exit status as waitpid tells it, and what it wrote to standard error."""
    read_end, write_end = os.pipe()
    child = os.fork()
    if child == 0:
        os.dup2(write_end, 2)
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        try:
            function()
        finally:
            os._exit(0)
    os.close(write_end)
    with os.fdopen(read_end) as pipe:
        text = pipe.read()
    return os.waitpid(child, 0)[1], text


@pytest.fixture
def paths(host, exported, tortured):
    """Calls of a method: prepare(path) puts the host in order, so that a call with the path's arguments takes it."""
    _, module = tortured

    class Paths:
        def __init__(self, name):
            self.name = name
            self.method = getattr(module, name)

        def prepare(self, path=None):
            host.reset()
            host.freeze()
            assert exported.LibraryInit() == 0
            arguments = is_made_of(RECIPES[self.name], module)
            if path and path.refused:
                operation, nth, status = path.refused
                host.fail(operation, status, nth=nth)
            return arguments

        def __iter__(self):
            arguments = self.prepare()
            with host.recording() as calls:
                self.success = self.method(*arguments)
            yield from failure_paths(self.name, arguments, calls)

    return Paths


def raw_pair(torture, method, arguments):
    was_null, result, exception, _, _ = torture.invoke(method, arguments, 0, False)
    return Pair(NULL if was_null else result, exception)


def is_documented(pair, path, name, success):
    if path.pair is None:  # the method does without
        return pair.exception is None and (type(pair.value) is type(success) or pair.value is None)
    return is_same(pair.value, path.pair.value) and pair.exception is path.pair.exception


def check_passes(method, arguments, pair):
    """A pair that the interpreter allows comes through its check as it is."""
    try:
        result = method(*arguments)
    except Exception as failure:
        assert pair == Pair(NULL, type(failure))
    else:
        assert is_same(result, pair.value) or isinstance(result, (dict, list))


def check_stops(method, arguments, text):
    """A pair that the interpreter does not allow is turned into a SystemError; a debug build ends the process."""
    if IS_DEBUG_BUILD:
        status, said = in_child(lambda: method(*arguments))
        assert os.WIFSIGNALED(status) and os.WTERMSIG(status) == signal.SIGABRT
        assert "Fatal Python error: _Py_CheckFunctionResult" in said and text in said
    else:
        with pytest.raises(SystemError, match=text):
            method(*arguments)


@pytest.mark.parametrize("name", RECIPES)
def test_pairs(tortured, paths, tally, name):
    torture, _ = tortured
    of_method = paths(name)
    tried = 0
    for path in of_method:
        of_method.prepare(path)
        with standard_error():
            pair = raw_pair(torture, of_method.method, path.arguments)
        assert is_documented(pair, path, name, of_method.success), (path, pair)
        of_method.prepare(path)
        with standard_error():
            if text := complaint(pair):
                check_stops(of_method.method, path.arguments, text)
            else:
                check_passes(of_method.method, path.arguments, pair)
        tried += 1
    tally("failures left the documented pair of value and exception", tried)
