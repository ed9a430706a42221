"""Every method whose platform answers without bytes: zeros show in its result, and nothing of an earlier answer."""

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


@pytest.mark.parametrize(
    "name", [method.name for method in METHODS if method.sends and not (method.answer or method.answers)]
)
def test_answer_without_bytes_reads_as_one_of_zeros(configured, qdp, call, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.sent_for, qdp.module)
    for sent in method.sends(*arguments):
        sizes = [each.size for each in sent.arguments if isinstance(each, Capacity)]
        if sizes:
            configured.script(sent.operation, outputs=[bytes(sizes[0])])
    zeros = qdp.call(name, *arguments)
    without_bytes = call(method, arguments)
    assert (without_bytes.result, without_bytes.printed) == (zeros.result, zeros.printed)
