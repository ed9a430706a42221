"""The ways in which each method fails, and the pair that is documented for each: what the C function returns, and the
exception that it leaves set."""

from collections import namedtuple

from contract import BY_NAME
from refusals import calls_that_may_be_refused

# What a C function returned, NULL for a null pointer; and the type of the exception that is set, or None.
Pair = namedtuple("Pair", "value exception")

NULL = "NULL"

# One way to fail: how, arguments, the call of an operation that refuses (operation, which call of it, status) if one
# does, and the pair. The pair None stands for that of success.
Path = namedtuple("Path", "what arguments refused pair")


def at(arguments, place, value):
    return (*arguments[:place], value, *arguments[place + 1 :])


def pair_of(method, way, exception=None):
    """The pair of a failure: of one that raises, NULL and what it raises; else what the method returns."""
    raised = method.raises.get(way)
    if raised:
        return Pair(NULL, raised[0] if isinstance(raised, tuple) else raised)
    return Pair(method.returns, exception)


def unparsed(method, arguments):
    """Tuples that do not parse: the parser's TypeError stays set."""
    pair = pair_of(method, "unparsed", TypeError)
    for place in range(len(arguments)):
        is_object = method.takes[place] == "O"
        yield "wrong type", at(arguments, place, 1.5), pair_of(method, "unparsed") if is_object else pair
    for wrong, exception in method.objects:
        yield "wrong item", at(arguments, method.takes.index("O"), wrong), pair_of(method, "unparsed", exception)
    if arguments:
        yield "one too few", arguments[:-1], pair
        yield "one too many", (*arguments, 1), pair


def out_of_range(method, arguments):
    for place, bound in method.bounds.items():
        yield "out of range", at(arguments, place, bound), pair_of(method, "out of range")


def unknown(method, arguments):
    """Texts that name nothing."""
    pair = pair_of(method, "unknown")
    if method.by_alias:
        yield "unknown switch", at(arguments, 0, "unknown"), pair
    for wrong in method.unknown:
        yield "unknown name", wrong, pair


def refused(method, arguments, calls):
    """Platform operations that refuse."""
    for call in calls_that_may_be_refused(calls):
        operation = call[0]
        if operation in method.goes_on:
            pair = None
        elif method.refusal_is_null:
            pair = Pair(NULL, None)
        else:
            pair = pair_of(method, "unknown" if operation == "DVSState_SwitchFindByAlias" else "refused")
        yield Path("refused", arguments, call, pair)


def failure_paths(name, arguments, calls):
    """All ways in which a method fails that succeeds with these arguments and platform calls."""
    method = BY_NAME[name]
    for wrong in (unparsed, out_of_range, unknown):
        for what, given, pair in wrong(method, arguments):
            yield Path(what, given, None, pair)
    yield from refused(method, arguments, calls)
