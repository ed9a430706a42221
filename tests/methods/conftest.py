"""Calls of a method with scripted answers, as its row of contract.py has them."""

import pytest

from observe import Observer

# What is looked at of a call's platform operations: a switch's name is found by others before.
SENT = ("Qdp_", "DVSHCK_HostPropSet", "DVSHCK_PortDataSet")


def calls_of(observer):
    asked = {}  # the operations of a method's first call, which are those of all

    def outcome_of(method, arguments):
        if method.name not in asked:
            asked[method.name] = [each.operation for each in method.sends(*arguments)] if method.sends else []
        answer = method.answers[1] if method.answers else method.answer
        for operation in asked[method.name]:
            observer.host.script(operation, outputs=[answer] if answer else [])
            answer = b""
        outcome = observer.call(method.name, *arguments)
        outcome.calls = [each for each in outcome.calls if each.operation.startswith(SENT)]
        return outcome

    return outcome_of


@pytest.fixture
def call(configured, qdp):
    """call(method, arguments): its outcome on a platform that accepts what the method sends; answers hold no bytes but
    those of the method's row. Of the platform calls only those that rows name are there."""
    return calls_of(qdp)


@pytest.fixture
def call_with_changed_format(configured, tortured):
    """call(place, letter)(method, arguments): as call, of a module whose formats have this letter in this place."""
    torture, module = tortured
    observer = Observer(module, configured)

    def changed(place, letter):
        torture.change_format(place, letter)
        return calls_of(observer)

    yield changed
    torture.change_format(-1, " ")
