"""Lists of dicts: their keys, and what a collector's callback or a signal may do while they are built."""

import gc
import signal
import struct
import sys

import pytest

ENTRY_BYTES = 40


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
    core.entries(bytes(2 * ENTRY_BYTES), 2)
    made = core.entries(bytes(2 * ENTRY_BYTES), 2)
    key = next(key for key in made[0] if key == "across bytes")
    with_list = sys.getrefcount(key)
    del made
    assert with_list - sys.getrefcount(key) == 2


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


@pytest.fixture
def alarm():
    """Arms a signal whose handler raises."""

    def handler(number, frame):
        raise KeyboardInterrupt

    before = signal.signal(signal.SIGALRM, handler)
    yield lambda: signal.setitimer(signal.ITIMER_REAL, 0.02)
    signal.setitimer(signal.ITIMER_REAL, 0)
    signal.signal(signal.SIGALRM, before)


LONG = 1_000_000


def test_a_signal_ends_a_list_that_only_a_wrong_library_asks_for(host, qdp, alarm):
    host.script("Qdp_Dump_Switch_MAC_Table", outputs=[struct.pack("<IIII", LONG, 0, 0, 0)])
    built = []
    alarm()
    with pytest.raises(KeyboardInterrupt):
        built.append(qdp.module.ListSwitchMACTable(0))
    assert built == []
