"""Every allocation of every method fails in turn, once and from then on for ever, and so does every store of an item in
a list or a tuple: nothing crashes, nothing leaks, and the failure is the documented one."""

import gc
import sys

import pytest

from contract import BY_NAME, LISTS, NO_BUFFER, NO_DICT_ITEM, NO_LIST_ITEM, NO_MEMORY, NO_TUPLE_ITEM, RECIPES
from observe import exact, standard_error
from recipes import is_made_of

# SystemErrors of a result that cannot be built.
BUILDING = [NO_BUFFER, NO_DICT_ITEM, NO_LIST_ITEM, NO_TUPLE_ITEM]

# What is printed when memory fails, each text once, in the order of the allocations, and what is raised then. A tuple
# of more than eight arguments needs memory to be parsed.
TEXTS_WITHOUT_MEMORY = {
    **{name: method.memory for name, method in BY_NAME.items() if method.memory},
    "PyQDP_CreatePortList": ["Failed to allocate memory\n"],
    "PyQDP_CreateVlanList": [NO_MEMORY],
    "PyQDP_PortNetQInfo": ["Failed to allocate NetQ Info resp.\n"],
}
RAISING = {name: method.memory_raises for name, method in BY_NAME.items() if method.memory_raises}

# Results that are there although an allocation failed: with None for the counters, and MemoryError left set; with the
# settings unchanged, because looking up a dict's key keeps its failures to itself.
DOES_WITHOUT = {name: method.does_without[0] for name, method in BY_NAME.items() if method.does_without}

# None, and MemoryError left set without a text.
SILENT = ["GetPortTxUplink"]

# Texts beside SystemError.
TEXT_BESIDE_ERROR = {"ListRSSEngine": "Failed to list RSS engines.\n"}

# Methods that need no memory at all fail at no point. All others either print None's reason or raise, or build objects.
BUILDERS = {*TEXTS_WITHOUT_MEMORY, "ListLCoreIDs"} - {*RAISING}
BUILDERS -= {"GetUplinkStats", "GetUplinkQueueStats", "InjectLBTraffic"}

# A sweep that loses a block loses it in every round; what else comes and goes does not grow with the sweeps.
SWEEPS, ROUNDS = 2, 4

# The sanitizers' allocator does not; they see for themselves what is lost or misused.
COUNTS_BLOCKS = sys.getallocatedblocks() > 0

EXPORTED = ["PyQDP_CreatePortList", "PyQDP_CreateVlanList", "PyQDP_PortNetQInfo"]


def longest_list(result):
    """The length of the longest list in a result; a tuple of lists counts as these, another tuple as a list."""
    parts = result.values() if isinstance(result, dict) else result if isinstance(result, (list, tuple)) else []
    is_list = (
        isinstance(result, list) or isinstance(result, tuple) and not any(isinstance(each, list) for each in parts)
    )
    return max([len(parts) * is_list, *map(longest_list, parts)])


# A call and the number of records in its answer: 0, 1, or None for what the embedded host has.
CALLS = [(name, None) for name in (*RECIPES, *EXPORTED)] + [(name, records) for name in LISTS for records in (0, 1)]


@pytest.mark.parametrize("forever", [False, True], ids=["once", "for ever"])
@pytest.mark.parametrize("name, records", CALLS)
def test_failing_allocations(frozen, tortured, tally, name, records, forever):
    torture, module = tortured
    method = getattr(torture if name in EXPORTED else module, name)
    printed_texts, raised_errors = [], []

    def script_answers(shots):
        """As many answers as the shots can ask for; made beforehand, since scripting takes memory too."""
        if records is not None:
            operation, *answers = LISTS[name]
            for _ in range(shots):
                frozen.script(operation, outputs=[answers[records]])

    def out():
        return torture.blocks_out(), frozen.unreleased_values()

    def shoot(nth):
        arguments = () if name in EXPORTED else is_made_of(RECIPES[name], module)
        gc.collect()  # the interpreter then keeps no objects for reuse
        with standard_error() as error:
            seen = torture.invoke(method, arguments, nth, forever)
        assert gc.collect() == 0, "an object is left to the collector"
        return *seen, error.text

    def sweep():
        for nth in range(1, points + 1):
            check(*shoot(nth))
            assert out() == out_before

    def check(was_null, result, raised, text, _, printed):
        if printed:
            note(printed, printed_texts)
        if was_null:
            assert printed == "" or forever and name in DOES_WITHOUT  # what it did without, and then the whole
            # An exception that is raised while memory stays away may lose its text.
            if forever:
                assert raised in [MemoryError, *(each for each, _ in RAISING[name])]
            else:
                note((raised, text or None), raised_errors)
        elif result is not None:
            if exact(result) == exact(expected) and raised is None and printed == "":
                return  # an object that the interpreter could do without
            assert name in DOES_WITHOUT and raised is DOES_WITHOUT[name]
        elif raised is SystemError:
            assert name in BUILDERS
            assert printed == TEXT_BESIDE_ERROR.get(name, "")
            assert text in BUILDING or forever and text is None  # not even the text could be made
        elif printed:
            assert raised in (None, MemoryError)
        else:
            assert raised is MemoryError and (name in SILENT or forever and name in BUILDERS)

    def note(what, noted):
        if what not in noted:
            noted.append(what)

    def documented(listed, noted):
        """What is listed for the method; without records nothing fails in them."""
        return [each for each in listed.get(name, []) if records != 0 or each in noted]

    script_answers(1)
    out_before = out()
    was_null, expected, raised, _, points, printed = shoot(0)
    assert (was_null, raised) == (False, None)
    if records is not None:
        assert longest_list(expected) == records
    if points == 0:
        assert name not in TEXTS_WITHOUT_MEMORY and name not in RAISING
        return
    assert printed == ""
    script_answers(points * (1 + SWEEPS * ROUNDS))
    sweep()
    assert printed_texts == documented(TEXTS_WITHOUT_MEMORY, printed_texts)
    if not forever:
        assert raised_errors == documented(RAISING, raised_errors)
    tally(f"allocations, {'once and for ever' if forever else 'once'}, were made to fail", points)
    if not COUNTS_BLOCKS:
        return
    for _ in range(ROUNDS):
        gc.collect()
        before = sys.getallocatedblocks()
        for _ in range(SWEEPS):
            sweep()
        gc.collect()
        lost = sys.getallocatedblocks() - before
        if lost < SWEEPS:
            break
    assert lost < SWEEPS
