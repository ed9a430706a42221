"""Every method whose platform answers without bytes: nothing of an earlier answer shows in its result."""

import pytest

from answers import ONES
from contract import BY_NAME, METHODS
from observe import Capacity
from recipes import is_made_of


@pytest.mark.parametrize("name", [method.name for method in METHODS if method.sends])
def test_answer_without_bytes_reads_the_same_after_any_other(configured, qdp, call, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.sent_for, qdp.module)
    before = call(method, arguments)
    for sent in method.sends(*arguments):
        sizes = [each.size for each in sent.arguments if isinstance(each, Capacity)]
        if sizes and sent.operation in method.goes_on:
            continue
        configured.script(sent.operation, outputs=[ONES[: sizes[0]]] if sizes else [])
    qdp.call(name, *arguments)
    assert call(method, arguments) == before
