"""Every method's integers as objects whose __index__ does more than tell a number: it runs the collector, calls the
method again, gives up what holds it, raises, or tells none. Nothing crashes, and the outcome is that of the number
itself, or of an argument that is none."""

import gc
from types import SimpleNamespace

import pytest

from contract import BY_NAME, METHODS
from methods.conftest import calls_of
from observe import Observer, Outcome
from recipes import is_made_of


@pytest.fixture(scope="module", autouse=True)
def quick_collections():
    """Collections look at new objects alone."""
    gc.collect()
    gc.freeze()


class Hostile:
    """An integer that acts before it tells its value."""

    def __init__(self, value, act):
        self._value = value
        self._act = act

    def __index__(self):
        self._act()
        return self._value


class Refusal(Exception):
    pass


def refuse():
    raise Refusal


# Letters of formats that take what has an __index__.
TAKING = "IiL"


def with_integers_replaced(arguments, made):
    """Arguments with made(value) in place of one integer, for each of them. Dicts of the arguments are new ones."""
    for place, value in enumerate(arguments):
        for changed in replaced_in(value, made):
            yield (*arguments[:place], changed, *arguments[place + 1 :])


def replaced_in(value, made):
    if isinstance(value, tuple):
        for place, item in enumerate(value):
            for changed in replaced_in(item, made):
                yield (*value[:place], changed, *value[place + 1 :])
    elif isinstance(value, dict):
        for key in value:
            for changed in replaced_in(value[key], made):
                yield dict(value, **{key: changed})
    elif isinstance(value, int) and not isinstance(value, bool):
        yield made(value)


takes_integers = pytest.mark.parametrize("name", [each.name for each in METHODS if set(each.takes) & set(TAKING + "O")])


def hostile_arguments(method, module, made):
    """Arguments with one hostile integer, for each integer but those that have to be exact."""
    arguments = is_made_of(method.sent_for, module)
    exact = [place for place, letter in enumerate(method.takes) if letter == "K"]
    for given in with_integers_replaced(arguments, made):
        if all(given[place] is arguments[place] for place in exact):
            yield given


@takes_integers
def test_index_that_collects_arrives_as_its_value(qdp, call, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.sent_for, qdp.module)
    usual = call(method, arguments)
    tried = 0
    for given in hostile_arguments(method, qdp.module, lambda value: Hostile(value, gc.collect)):
        assert call(method, given) == usual, given
        tried += 1
    assert tried


@takes_integers
def test_index_that_calls_its_method_leaves_the_outer_call_alone(qdp, call, name):
    method = BY_NAME[name]
    arguments = is_made_of(method.sent_for, qdp.module)
    call(method, arguments)

    def again():
        getattr(qdp.module, name)(*arguments)  # takes the scripted answers

    for given in hostile_arguments(method, qdp.module, lambda value: Hostile(value, again)):
        outcome = call(method, given)
        assert (outcome.raised, outcome.left_set) == (None, None), given


@takes_integers
def test_index_that_lets_go_of_the_tuple_it_came_from(qdp, call, name):
    """The interpreter alone holds the arguments during the call; new tuples would take the place of those given up."""
    method = BY_NAME[name]
    function = getattr(qdp.module, name)
    arguments = is_made_of(method.sent_for, qdp.module)
    usual = call(method, arguments)
    kept = []

    def let_go():
        gc.collect()
        kept.extend(tuple(range(size)) for size in range(1, 20) for _ in range(20))

    held = list(hostile_arguments(method, qdp.module, lambda value: Hostile(value, let_go)))
    call = calls_of(Observer(SimpleNamespace(**{name: lambda *_: function(*held.pop())}), qdp.host))
    assert held
    while held:
        kept.clear()
        assert call(method, arguments) == usual
        assert kept


# What an __index__ does that tells no integer, and the exception that the interpreter makes of it.
NO_INTEGER = [
    (lambda value: Hostile(value, refuse), (Refusal, "")),
    (lambda _: Hostile(None, int), TypeError),
    (lambda _: Hostile("1", int), TypeError),
    (lambda _: Hostile(1.5, int), TypeError),
]


@takes_integers
def test_index_that_raises_or_tells_no_integer_is_refused(qdp, call, name):
    method = BY_NAME[name]
    call(method, is_made_of(method.sent_for, qdp.module))
    for hostile, exception in NO_INTEGER:
        raised = method.raises.get("unparsed")
        if raised is TypeError:  # the interpreter's own, whatever it is
            raised = exception
        for given in hostile_arguments(method, qdp.module, hostile):
            outcome = call(method, given)
            if any(isinstance(each, Hostile) for each in given):
                assert outcome == (
                    Outcome(raised=raised) if raised else Outcome(None, method.invalid, left_set=exception)
                )
            else:  # in a tuple or a dict: methods differ in whether they keep the exception
                assert outcome.result in (None, method.returns) and outcome.left_set in (None, exception), given
                assert outcome.printed, given


@pytest.mark.parametrize("key", ["enabled", "models", "geneveCritical", "ipDiscoveryDHCP", "ipDiscoveryICMP6ND"])
@pytest.mark.parametrize("change", ["clear", "popitem", "grow"])
def test_index_that_changes_the_dict_it_came_from(qdp, call, key, change):
    method = BY_NAME["EnableFPO"]
    alias, _ = is_made_of(method.sent_for, qdp.module)
    settings = {"enabled": True, "geneveCritical": True, "ipDiscoveryDHCP": False, "ipDiscoveryICMP6ND": False}

    def act():
        if change == "grow":
            settings.update((f"other {i}", i) for i in range(1000))
        else:
            getattr(settings, change)()
        gc.collect()

    settings["models"] = Hostile(3, act)
    if key != "models":
        settings[key] = Hostile(1, act)
    outcome = call(method, (alias, settings))
    assert outcome.result is True and outcome.left_set is None
    assert [each.operation for each in outcome.calls] == ["DVSHCK_HostPropSet"]
