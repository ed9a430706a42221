"""Every method whose last request the platform refuses: its text, what it returns or raises, and what it has sent."""

import pytest

from contract import BY_NAME, METHODS
from observe import Outcome
from recipes import is_made_of

REFUSED = [each.name for each in METHODS if each.refused is not None or "refused" in each.raises]


@pytest.mark.parametrize("status", [2, 0xBAD0001, 0x80000000, 0xFFFFFFFF], ids=hex)
@pytest.mark.parametrize("name", REFUSED)
def test_platform_refusal_prints_text_and_returns_nothing(configured, qdp, call, name, status):
    method = BY_NAME[name]
    arguments = is_made_of(method.sent_for, qdp.module)
    sent = method.sends(*arguments)
    configured.fail(sent[-1].operation, status)
    expected = Outcome(method.returns, calls=sent)
    if "refused" in method.raises:
        expected.raised = method.raises["refused"]
    else:
        expected.printed = method.refused.format(status=status)
        expected.returned_null = method.refusal_is_null
    assert call(method, arguments) == expected
