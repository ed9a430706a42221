"""Calls of methods while something goes wrong around them: the interpreter lacks memory, or signals come in."""

import contextlib
import gc
import signal
from types import SimpleNamespace

from _testcapi import remove_mem_hooks, set_nomemory
from observe import Observer


def starved(qdp, method, *arguments):
    """The outcomes, each once and without its platform calls, of calls in which one allocation of the interpreter
    fails: the first one, the second one, and so on until a call goes as well as it does with enough memory."""
    function = getattr(qdp.module, method)
    well = qdp.call(method, *arguments)
    outcomes = []
    gc.freeze()  # everything older, so that the collections below are quick
    while True:

        def lacking(*given, nth=len(outcomes)):
            gc.collect()  # so that no kept object makes an allocation needless
            set_nomemory(nth, nth + 1)
            try:
                return function(*given)
            finally:
                remove_mem_hooks()

        outcome = Observer(SimpleNamespace(**{method: lacking}), qdp.host).call(method, *arguments)
        if outcome == well:
            break
        outcome.calls = []
        outcomes.append(outcome)
    assert outcomes
    return [each for i, each in enumerate(outcomes) if each not in outcomes[:i]]


class Interrupted(Exception):
    pass


class interrupted:
    """An observer whose methods are called while signals come in, of which the third raises Interrupted. They begin
    with the call itself."""

    def __init__(self, qdp):
        self._module = qdp.module
        self.host = qdp.host

    def call(self, method, *arguments):
        function = getattr(self._module, method)
        signals = []

        def handler(number, frame):
            signals.append(number)
            if len(signals) == 3:
                raise Interrupted

        def between_signals(*given):
            signal.setitimer(signal.ITIMER_REAL, 0.001, 0.001)
            try:
                return function(*given)
            finally:
                signal.setitimer(signal.ITIMER_REAL, 0)

        with contextlib.ExitStack() as stack:
            stack.callback(signal.signal, signal.SIGALRM, signal.signal(signal.SIGALRM, handler))
            return Observer(SimpleNamespace(**{method: between_signals}), self.host).call(method, *arguments)
