"""Every method's arguments: how its tuple is parsed, how each integer arrives, and which values are out of range."""

import pytest

from contract import BY_NAME, METHODS
from observe import Outcome
from recipes import is_made_of



def each_method(condition):
    """Parametrizes a test with the methods of which a condition holds."""
    return pytest.mark.parametrize("name", [each.name for each in METHODS if condition(each)])


takes_something = each_method(lambda method: method.takes)


# Values of another type than a letter of the format takes.
WRONG = {"integer": ["1", None, 1.0, (1,), b"1"], "s": [1, None, 1.0, b"text", ("text",)], "O": []}
OBJECTS = {"tuple": [None, 1, "text", [0], {}], "dict": [None, 1, "text", (0,)]}


class Index:
    """An object that stands for an integer."""

    def __init__(self, value):
        self._value = value

    def __index__(self):
        return self._value

    def __repr__(self):
        return f"Index({self._value})"


def arrives(letter, value):
    """What a letter of the format makes of an integer: unsigned letters keep its low bits, signed ones are exact. The
    64-bit unsigned one takes integers alone, no objects that stand for them."""
    if letter == "K" and isinstance(value, Index):
        raise TypeError
    value = value.__index__()
    if letter in "IK":
        return value % (1 << (32 if letter == "I" else 64))
    limit = 1 << (31 if letter == "i" else 63)
    if not -limit <= value < limit:
        raise OverflowError
    return value


def integers(valid, bound):
    """Integers around all limits: of the method, of 16, 32 and 64 bits, and what stands for an integer."""
    yield from (valid, Index(valid), True, False)
    if bound is not None:
        yield from (bound - 1, bound, Index(bound))
    for bits in (16, 32, 64):
        yield from ((1 << bits) + valid, 1 << bits, (1 << bits) - 1, 1 << bits - 1, -(1 << bits - 1), -(1 << bits))
    yield from ((1 << 31) - 1, (1 << 63) - 1, -(1 << 31) - 1, -(1 << 63) - 1, -1, 1 << 80)


def replaced(arguments, place, value):
    return (*arguments[:place], value, *arguments[place + 1 :])


def refusal(method, way, text, left_set=None):
    """The outcome of arguments that are refused in one of the ways that a row knows."""
    raised = method.raises.get(way)
    if raised:
        return Outcome(raised=raised)
    return Outcome(
        None if left_set else method.returns, text, left_set=left_set
    )  # the interpreter's check takes it away


def unparsed(method, exception=TypeError):
    return refusal(method, "unparsed", method.invalid, exception)


def with_types_of_exceptions(outcome):
    """The outcome without the interpreter's texts for integers that do not fit."""
    if isinstance(outcome.left_set, tuple) and outcome.left_set[0] is OverflowError:
        outcome.left_set = OverflowError
    return outcome


def integer_places(method):
    return [(place, letter) for place, letter in enumerate(method.takes) if letter not in "sO"]


def check_integer(call, method, place, arguments, usual):
    """Calls a method with integers of all kinds in a place, and compares each outcome with what the row says."""
    letter = method.takes[place]
    for value in integers(arguments[place], method.bounds.get(place)):
        given = replaced(arguments, place, value)
        outcome = with_types_of_exceptions(call(method, given))
        try:
            arrived = replaced(arguments, place, arrives(letter, value))
        except (OverflowError, TypeError) as failure:
            assert outcome == unparsed(method, type(failure)), given
            continue
        if method.refuses(arrived):
            expected = refusal(method, "out of range", method.printed_out_of_range(arrived))
        else:
            result = method.result(*arrived) if method.result else usual.result
            expected = Outcome(result, usual.printed, calls=method.sends(*arrived))
        assert outcome == expected, given


@takes_something
def test_every_integer_arrives_as_its_format_says(qdp, call, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.sent_for, qdp.module)
    usual = call(method, arguments)
    if method.sends:
        assert usual.calls == method.sends(*arguments)
    for place, _ in integer_places(method):
        check_integer(call, method, place, arguments, usual)


# Letters that take or keep integers in another way.
OTHERS = {"I": "iH", "i": "I", "L": "KI", "K": "LI"}


def only_low_half_counts(method, place, arguments):
    """Whether the contract drops what is above the low 16 bits of an integer, so that nobody can notice their loss."""

    def seen(value):
        given = replaced(arguments, place, value)
        return method.refuses(given) or method.sends(*given)

    words = (arrives("I", value) for value in integers(arguments[place], None))
    return all(seen(word) == seen(word % (1 << 16)) for word in words)


@each_method(integer_places)
def test_every_other_format_is_noticed(qdp, call, call_with_changed_format, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.sent_for, qdp.module)
    usual = call(method, arguments)
    for place, letter in integer_places(method):
        for other in OTHERS[letter]:
            if other == "H" and only_low_half_counts(method, place, arguments):
                continue
            with pytest.raises(AssertionError):
                check_integer(call_with_changed_format(place, other), method, place, arguments, usual)
                pytest.fail(f"{other} in place {place}", pytrace=False)


@takes_something
def test_bounds_are_the_first_values_refused(qdp, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.arguments, qdp.module)
    for place, bound in method.bounds.items():
        assert method.refuses(replaced(arguments, place, bound)) and not method.refuses(arguments)


@takes_something
def test_tuple_that_does_not_parse_prints_text_and_leaves_exception(qdp, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.arguments, qdp.module)
    wrong = [(), arguments[:-1], (*arguments, 0)]
    for place, letter in enumerate(method.takes):
        values = WRONG.get(letter, WRONG["integer"])
        wrong += [replaced(arguments, place, value) for value in values]
    for given in wrong:
        assert qdp.call(name, *given) == unparsed(method), given


@each_method(lambda method: "s" in method.takes)
def test_text_with_nul_or_without_utf8_is_refused(qdp, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.arguments, qdp.module)
    for place in (place for place, letter in enumerate(method.takes) if letter == "s"):
        for text, exception in (("a\0b", ValueError), ("\udc80", UnicodeEncodeError)):
            outcome = qdp.call(name, *replaced(arguments, place, text))
            if outcome.left_set:
                outcome.left_set = outcome.left_set[0]
            assert outcome == unparsed(method, exception), (place, text)


@each_method(lambda method: "O" in method.takes)
def test_object_of_another_form_is_refused(configured, qdp, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.arguments, qdp.module)
    place = method.takes.index("O")
    wrong = [(value, None) for value in OBJECTS[type(arguments[place]).__name__]] + method.objects
    for value, exception in wrong:
        outcome = qdp.call(name, *replaced(arguments, place, value))
        assert (outcome.result, outcome.left_set) == (None if exception else method.returns, exception), value
        assert outcome.printed, value


@each_method(lambda method: not method.takes)
@pytest.mark.parametrize("arguments", [(1,), ("text", None, 3.5), tuple(range(20))], ids=str)
def test_method_that_takes_nothing_looks_at_no_argument(configured, qdp, name, arguments):
    configured.freeze()
    without = qdp.call(name)
    with_arguments = qdp.call(name, *arguments)
    assert (with_arguments.result, with_arguments.printed) == (without.result, without.printed)
    assert [each.operation for each in with_arguments.calls] == [each.operation for each in without.calls]
