"""Calls through the operator layer: results as records, each known failure as an exception, other texts passed on."""

import ctypes
import gc
import logging
import pathlib
import struct
import sys

import pytest

import _libqdp
import qdp
from contract import BY_NAME, RECIPES
from failure_paths import failure_paths
from observe import Observer, standard_error
from recipes import is_made_of
from typings.stub import Stub
from unrecorded import plain

UNSUPPORTED = ["DumpDecapFlowTable", "DumpDecapSaFlowTable", "DumpPortFlow", "FPOHWDestroy"]


@pytest.fixture
def prepared(host, exported):
    """Puts the host in order for a method, so that a call with the path's arguments takes it; gives the recipe's."""

    def prepare(name, path=None):
        host.reset()
        host.freeze()
        assert exported.LibraryInit() == 0
        arguments = is_made_of(RECIPES[name], _libqdp)
        if path and path.refused:
            operation, nth, status = path.refused
            host.fail(operation, status, nth=nth)
        return arguments

    return prepare


def called_both_ways(host, prepared, name, arguments, path=None):
    """The outcome of the bare call, and what the layer makes of the same: an outcome, or an exception of its own."""
    prepared(name, path)
    bare = Observer(_libqdp, host).call(name, *arguments)
    prepared(name, path)
    with standard_error() as error, host.recording() as calls:
        try:
            result, failure = qdp.call(name, *arguments), None
        except qdp.QdpError as raised:
            result, failure = None, raised
    assert error.text == ""
    assert [call.operation for call in calls] == [call.operation for call in bare.calls]
    return bare, result, failure


class TestSuccess:
    @pytest.mark.parametrize("name", [name for name in RECIPES if name not in UNSUPPORTED])
    def test_result_is_the_modules_own(self, host, prepared, name):
        bare, result, failure = called_both_ways(host, prepared, name, prepared(name))
        assert failure is None and bare.printed == ""
        assert plain(result) == bare.result and type(plain(result)) is type(bare.result)

    @pytest.mark.parametrize("name", UNSUPPORTED)
    def test_unsupported(self, host, prepared, name):
        bare, result, failure = called_both_ways(host, prepared, name, prepared(name))
        assert type(failure) is qdp.Unsupported and failure.text == bare.printed != ""

    def test_raw_result(self, host):
        (switch,) = qdp.call_raw("ListSwitches")[:1]
        assert type(switch) is dict and qdp.call("ListSwitches")[0] == switch

    def test_method_itself_in_place_of_its_name(self, host):
        assert qdp.call(_libqdp.ListPorts, 0) == qdp.call("ListPorts", 0)
        with pytest.raises(qdp.Refused, match="^ListPorts"):
            qdp.call(_libqdp.ListPorts, 9)

    def test_typed_function(self, host):
        assert qdp.methods.ListPorts(0) == qdp.call("ListPorts", 0)

    def test_switch_without_filter_classes_is_no_failure(self, configured):
        configured.fail("DVSHCK_HostPropGet", 0xBAD0003)
        configured.script("Qdp_GetSwitchFilterTypes", outputs=[b"\0\0"])
        assert qdp.call("GetSwitchFilterTypes", "dvs-production") is None


THE_STUB = Stub(pathlib.Path(__file__).parents[2] / "typings" / "_libqdp-stubs" / "__init__.pyi")

# Paths that go another way than their kind.
IN_OFFLOADED_FLOWS = ["SetOffloadFlows", "GetOffloadFlows"]  # they say nothing else of an unknown switch
STORING = ["DVSHCK_HostPropSet", "DVSHCK_PortDataSet"]
MIGRATING = ["Qdp_Migrate_Port", "Qdp_Migrate_NetQ_Filter"]


def means_failure(name, result):
    """Whether a result says by itself that the call failed."""
    if BY_NAME[name].returns is not None:
        return result is BY_NAME[name].returns
    return result is None and THE_STUB.annotations(name)[1] is not type(None)


def expected_failure(name, path, said):
    """The class of a failure, by the way in which the call fails."""
    if path.what != "refused":
        is_lookup = path.what == "unknown switch" and name not in IN_OFFLOADED_FLOWS
        return qdp.NotFound if is_lookup else qdp.InvalidArgument
    operation, _, status = path.refused
    if operation in STORING:
        return qdp.NotStored
    if operation in MIGRATING and status == 1:
        return qdp.BalancerRunning
    if name in IN_OFFLOADED_FLOWS:
        return qdp.Refused if "QDP command" in said else qdp.InvalidArgument
    if operation in ("DVSState_SwitchFindByAlias", "DVS_ClassName"):
        return qdp.NotFound
    # A switch whose id or portset cannot be read: by its alias it is not found, or the datapath does not know it.
    return qdp.NotFound if "dvs alias" in said else qdp.Refused


@pytest.mark.parametrize("name", RECIPES)
def test_failure_paths(host, prepared, name):
    """Every known failure raises the exception of its kind, with the text; what is no failure gives its result."""
    arguments = prepared(name)
    calls = Observer(_libqdp, host).call(name, *arguments).calls
    for path in failure_paths(name, arguments, calls):
        bare, result, failure = called_both_ways(host, prepared, name, path.arguments, path)
        said = bare.printed or (bare.raised[1] if isinstance(bare.raised, tuple) else "")
        if not said and not bare.raised and not means_failure(name, bare.result):
            assert failure is None and plain(result) == bare.result, path
            continue
        assert type(failure) is expected_failure(name, path, said), (path, failure)
        assert (failure.method, failure.arguments) == (name, path.arguments)
        assert failure.text == said or bare.raised is TypeError
        raised = bare.left_set or bare.raised
        assert type(failure.__cause__) is (raised[0] if isinstance(raised, tuple) else raised or type(None))


libc = ctypes.PyDLL(None)


def written(text):
    """Writes to libc's standard error, as a library of the platform does."""
    libc.fputs(text, ctypes.c_void_p.in_dll(libc, "stderr"))


class TestOtherTexts:
    NOISE = b"rx ring 3: 12 descriptors\n"
    TEXT = b"Failed to reset port.\n"

    def test_unknown_text_goes_on(self, capfd, caplog):
        def noisy():
            written(self.NOISE)
            return 5

        with caplog.at_level(logging.DEBUG):
            assert qdp.call(noisy) == 5
        assert capfd.readouterr().err == self.NOISE.decode()
        assert caplog.record_tuples == [("qdp", logging.WARNING, "noisy: rx ring 3: 12 descriptors")]

    def test_known_text_beside_an_unknown_one(self, capfd):
        def failing(port):
            written(self.NOISE + self.TEXT + self.NOISE)

        with pytest.raises(qdp.Refused) as failure:
            qdp.call(failing, 3)
        assert (failure.value.text, failure.value.method) == ("Failed to reset port.\n", "failing")
        assert capfd.readouterr().err == 2 * self.NOISE.decode()

    def test_text_that_is_written_after_the_call(self, host, capfd):
        """A thread of the platform took the pointer while a call was on, and writes when it has ended."""
        kept = []

        def keeping():
            kept.append(ctypes.c_void_p.in_dll(libc, "stderr").value)

        qdp.call(keeping)
        libc.fputs(b"late\n", ctypes.c_void_p(kept[0]))
        assert qdp.call("ListPorts", 0)
        assert capfd.readouterr().err == "late\n"

    def test_what_is_no_method(self):
        with pytest.raises(AttributeError, match="has no method 'ListPort'"):
            qdp.call("ListPort", 0)
        with pytest.raises(TypeError, match="takes a method"):
            qdp.call()

    def test_exception_of_a_function_goes_through(self):
        def failing():
            raise OSError("Failed to reset port.")

        with pytest.raises(OSError, match="^Failed to reset port.$"):
            qdp.call(failing)

    def test_nested_calls_have_their_own_texts(self, host, capfd):
        def outer():
            written(self.TEXT)
            with pytest.raises(qdp.Refused, match=r"^ListPorts\(9\): Failed to retrieve list of ports.$"):
                qdp.call("ListPorts", 9)
            assert qdp.call("ListPorts", 0)
            written(b"Failed to unpin port.\n")

        with pytest.raises(qdp.Refused) as failure:
            qdp.call(outer)
        assert failure.value.text == "Failed to reset port.\nFailed to unpin port.\n"
        assert capfd.readouterr().err == ""


class TestUnreadableAnswers:
    def test_text_that_is_not_utf_8(self, host):
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"a\xff"])
        with pytest.raises(qdp.BadAnswer, match="can't decode byte 0xff") as failure:
            qdp.call("DumpLBDebugBuf", 0, 0)
        assert type(failure.value.__cause__) is UnicodeDecodeError and "UTF-8" in failure.value.hint

    def test_name_in_a_record_that_is_not_utf_8(self, host):
        switches = struct.pack("<II", 1, 0) + b"\xff" * 200
        host.script("Qdp_Get_Switch_List", outputs=[switches])
        with pytest.raises(qdp.BadAnswer, match=r"^ListSwitches\(\): Failed to allocate buffer\.$") as failure:
            qdp.call("ListSwitches")
        assert type(failure.value.__cause__) is SystemError and "UTF-8" in failure.value.hint

    def test_lack_of_memory_beside_a_text(self):

        def without_memory():
            written(b"Failed to allocate mac table.\n")
            raise MemoryError

        with pytest.raises(qdp.OutOfMemory, match="^without_memory"):
            qdp.call(without_memory)


class TestLeaks:
    CALLS = [("ListPorts", 0), ("ListPorts", 9), ("ListPorts", "0"), ("DumpLBStats", 0, 0, 4, 0, 2), ("P4AppGet",)]
    CALLS += [("ListSwitchMACTable", 0), ("GetUplinkStats", 0, 999), ("SetLBParam", "nowhere", "cpuload_low", 1), ()]

    @pytest.mark.parametrize("called", CALLS, ids=str)
    @pytest.mark.parametrize("call", [qdp.call, qdp.call_raw])
    def test_repeated_calls_hold_nothing(self, host, call, called):
        """Neither objects, nor references to those that all calls share."""
        shared = [None, True, 0, *map(type, called), qdp.records.PortInfo, qdp.records.LBItem, called]

        def held():
            gc.collect()
            return [sys.getallocatedblocks(), *map(sys.getrefcount, shared)]

        def many():
            for _ in range(200):
                try:
                    call(*called)
                except (qdp.QdpError, TypeError):
                    pass

        many()
        for _ in range(3):  # what earlier tests left may still go in one turn; what calls hold or lose shows in each
            before = held()
            many()
            changed = [after - one for after, one in zip(held(), before) if abs(after - one) > 50]
            if not changed:
                break
        assert changed == []
