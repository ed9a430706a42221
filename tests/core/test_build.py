"""Lists of dicts: their keys, and what a collector's callback or a signal may do while they are built."""

import gc
import signal
import struct
import sys

import pytest

from heap import COUNTS_BYTES, bytes_in_use

ENTRY_BYTES = 40
REFERENCE_BYTES = 8


def test_later_dicts_have_the_key_objects_of_the_first(core):
    first, *others = core.entries(bytes(3 * ENTRY_BYTES), 3)
    for other in others:
        assert list(other) == list(first)
        assert all(mine is its for mine, its in zip(other, first))


def test_keys_of_lists_are_interned(core):
    # A key made at run time, so that no constant of this file keeps an interned one alive.
    for key in core.entries(bytes(2 * ENTRY_BYTES), 2)[1]:
        assert sys.intern("".join(list(key))) is key


def test_a_list_keeps_no_reference_to_its_keys(core):
    keys = list(core.entries(bytes(2 * ENTRY_BYTES), 2)[0])
    before = [sys.getrefcount(key) for key in keys]
    made = core.entries(bytes(2 * ENTRY_BYTES), 2)
    assert [sys.getrefcount(key) for key in keys] == [count + 2 for count in before]
    del made
    assert [sys.getrefcount(key) for key in keys] == before
    assert core.entries(b"", 0) == []


@pytest.fixture
def clearing():
    """Clears every list and dict that has appeared, at each collection while the fixture's `on` is set."""

    class Clearing:
        on = False
        cleared = 0

        def __call__(self, phase, info):
            if not self.on or phase != "start":
                return
            self.on = False
            for found in gc.get_objects():
                if type(found) in (list, dict) and id(found) not in self.known:
                    self.cleared += 1
                    found.clear()
            self.on = True

        def during(self, call):
            self.cleared = 0
            gc.collect()
            self.known = {id(each) for each in gc.get_objects()}
            self.on = True
            try:
                return call()
            except SystemError:
                return None
            finally:
                self.on = False

    clearing = Clearing()
    threshold = gc.get_threshold()
    gc.callbacks.append(clearing)
    yield clearing
    gc.callbacks.remove(clearing)
    gc.set_threshold(*threshold)


def test_an_unfinished_list_that_is_cleared_fails(core, clearing):
    entries = bytes(5000 * ENTRY_BYTES)
    whole = core.entries(entries, 5000)
    gc.set_threshold(1)
    clearing.during(lambda: core.entries(entries, 5000))
    assert clearing.cleared > 0
    gc.set_threshold(700)
    assert core.entries(entries, 5000) == whole


ATTACKED = {
    "ListSwitches": (),
    "ListPorts": (0,),
    "ListSwitchMACTable": (0,),
    "GetPortConf": (0, 0),
    "GetPortNetQInfo": (0, 2),
    "GetFlowStats": (0, (0, 1), 0),
    "GetPortStats": (0, 0),
    "GetPortTxUplink": (0, 2),
    "GetUplinkStats": (0, 0),
    "ListRSSEngine": (0, 0),
    "DumpFlowTable": (0, 1, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0),
    "DumpLBStats": (0, 0, 8, 0, 4),
    "GetFPOStats": (0, (0, 1)),
    "LifPortList": (0,),
    "VlanPortList": (0,),
    "PortList": (0,),
    "P4HWTableList": (),
    "FlowOpsStatsGet": (),
}


@pytest.mark.parametrize("method, arguments", ATTACKED.items(), ids=ATTACKED)
def test_results_that_are_cleared_while_they_are_built(configured, qdp, clearing, method, arguments):
    call = getattr(qdp.module, method)
    configured.freeze()
    whole = call(*arguments)
    assert whole is not None
    gc.set_threshold(1)
    for _ in range(3):
        clearing.during(lambda: call(*arguments))
    gc.set_threshold(700)
    assert call(*arguments) == whole


def test_a_first_dict_that_loses_a_key_does_not_mislead_the_later_ones(configured, qdp):
    """The keys behind the lost one stand one place earlier in the dict than in its table from then on."""
    whole = qdp.module.ListPorts(0)
    keys = list(whole[0])
    lost = []

    def take_a_key(phase, info):
        lists = [each for each in gc.get_objects() if type(each) is list]
        for port in [] if lost else gc.get_referents(*lists):  # without a look at places that are still empty
            if type(port) is dict and list(port) == keys[:7]:
                lost.append(port.popitem()[0])

    threshold = gc.get_threshold()
    for objects in range(1, 10):  # until the collector runs while the first dict has seven keys
        gc.collect()  # keeps no list for reuse: each new one is an allocation, which the collector counts
        gc.callbacks.append(take_a_key)
        gc.set_threshold(objects)
        try:
            ports = qdp.module.ListPorts(0)
        finally:
            gc.set_threshold(*threshold)
            gc.callbacks.remove(take_a_key)
        if lost:
            break
    assert lost == [keys[6]]
    assert list(ports[0]) == [key for key in keys if key not in lost]
    assert [list(port) for port in ports[1:]] == [keys] * len(ports[1:]) and ports[1:] == whole[1:]


@pytest.fixture
def alarm():
    """Arms a signal whose handler raises."""

    def handler(number, frame):
        raise KeyboardInterrupt

    before = signal.signal(signal.SIGALRM, handler)
    yield lambda: signal.setitimer(signal.ITIMER_REAL, 0.005)
    signal.setitimer(signal.ITIMER_REAL, 0)
    signal.signal(signal.SIGALRM, before)


USUAL = 65_536  # entries, for which no signal is looked for
LONG = USUAL + 1


def is_ended_by(alarm, call, *arguments):
    """Whether a signal ends the call itself. One that is looked for only after the call would leave its result in the
    list, which is extended before the interpreter looks."""
    built = []
    alarm()
    with pytest.raises(KeyboardInterrupt):
        built.extend(map(call, *([each] for each in arguments)))
    return built == []


def test_a_signal_ends_a_list_that_only_a_wrong_library_asks_for(host, qdp, alarm):
    in_use = bytes_in_use()
    for _ in range(4):
        host.script("Qdp_Dump_Switch_MAC_Table", outputs=[struct.pack("<IIII", LONG, 0, 0, 0)])
        assert is_ended_by(alarm, qdp.module.ListSwitchMACTable, 0)
    if COUNTS_BYTES:  # not one of the lists is left
        assert bytes_in_use() - in_use < LONG * REFERENCE_BYTES


def test_a_signal_ends_a_long_list_of_dicts(core, alarm):
    assert is_ended_by(alarm, core.entries, bytes(LONG * ENTRY_BYTES), LONG)


def test_a_signal_leaves_a_list_of_usual_length_whole(core, alarm):
    entries = bytes(USUAL * ENTRY_BYTES)
    # A signal that comes before the call leaves no result either.
    assert not all(is_ended_by(alarm, core.entries, entries, USUAL) for _ in range(20))
