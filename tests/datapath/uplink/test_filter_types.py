"""The receive filter classes of a switch."""

import ctypes
import struct

import pytest

from observe import Call, Capacity, Outcome, refused, standard_error

KEY = "com.tarnix.wyx.qdp.filterType"
PRODUCTION = "switch-production"
EMBEDDED_NULL = (ValueError, "embedded null character")

UNKNOWN_ALIAS = "Failed to find dvs ID for dvs alias nobody.\n"
# Named after the load balancer's property, on purpose.
UNKNOWN_VERSION = "Format of property com.tarnix.wyx.qdp.loadbal value is from unknown version.\n"
ODD_LENGTH = "Property com.tarnix.wyx.qdp.filterType value length is odd.\n"
NO_CLASSES = "Failed to get current support FilterClasses on switch\n"
CANNOT_WRITE = "Failed to set DVS property com.tarnix.wyx.qdp.filterType\n"

GET = Call("DVSHCK_HostPropGet", [PRODUCTION, KEY, Capacity(0)])
ASK = Call("Qdp_GetSwitchFilterTypes", ["portset-0", Capacity(2)])


def setting(mask, version=0):
    return struct.pack("<IH", version, mask)


def write(mask):
    return Call("DVSHCK_HostPropSet", [PRODUCTION, KEY, setting(mask), 16])


def about_filters(calls):
    """The platform calls that are about the filter classes, which leaves out those that resolve the alias."""
    names = {"DVSHCK_HostPropGet", "DVSHCK_HostPropSet", "Qdp_GetSwitchFilterTypes"}
    return [call for call in calls if call.operation in names]


def called(qdp, *arguments):
    """An outcome without the calls that resolve the alias or release a value."""
    outcome = qdp.call(*arguments)
    outcome.calls = about_filters(outcome.calls)
    return outcome


def script_property(host, value):
    host.script("DVSHCK_HostPropGet", outputs=[value])


def script_library(host, mask):
    host.fail("DVSHCK_HostPropGet", 0xBAD0003)
    host.script("Qdp_GetSwitchFilterTypes", outputs=[] if mask is None else [struct.pack("<H", mask)])


# How the filter classes cannot be read: what is scripted, what is printed, what is called.
UNREADABLE = [
    (lambda host: script_property(host, setting(4, version=2)), UNKNOWN_VERSION, [GET]),
    (lambda host: script_property(host, setting(4, version=1 << 31)), UNKNOWN_VERSION, [GET]),
    (lambda host: script_property(host, setting(4, version=1) + b"\0"), UNKNOWN_VERSION, [GET]),
    (lambda host: script_property(host, setting(4)[:5]), ODD_LENGTH, [GET]),
    (lambda host: script_property(host, setting(4) + b"\0"), ODD_LENGTH, [GET]),
    (lambda host: script_property(host, b""), ODD_LENGTH, [GET]),
    (lambda host: script_property(host, setting(0)), "", [GET]),
    # A length without a value: zeros.
    (lambda host: host.script("DVSHCK_HostPropGet", sizes={0: 6}), "", [GET]),
    (lambda host: host.script("DVSHCK_HostPropGet", sizes={0: 5}), ODD_LENGTH, [GET]),
    (lambda host: host.script("DVSHCK_HostPropGet", sizes={0: 7}), ODD_LENGTH, [GET]),
    (lambda host: script_library(host, 0), "", [GET, ASK]),
    # A library that answers without a mask.
    (lambda host: script_library(host, None), "", [GET, ASK]),
]


class TestGetSwitchFilterTypes:
    @pytest.mark.parametrize(
        "mask, shown", [(4, "TRUE"), (0xFFFF, "TRUE"), (0xFFFB, "FALSE"), (1, "FALSE"), (8, "FALSE")]
    )
    def test_from_the_property(self, configured, qdp, mask, shown):
        script_property(configured, setting(mask))
        assert called(qdp, "GetSwitchFilterTypes", "dvs-production") == Outcome({"VLANMAC": shown}, calls=[GET])

    @pytest.mark.parametrize("mask, shown", [(4, "TRUE"), (0xFFFB, "FALSE"), (0x0400, "FALSE")])
    def test_from_the_library_when_the_property_is_absent(self, configured, qdp, mask, shown):
        script_library(configured, mask)
        assert called(qdp, "GetSwitchFilterTypes", "dvs-production") == Outcome({"VLANMAC": shown}, calls=[GET, ASK])

    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_any_failure_to_read_the_property_is_its_absence(self, configured, qdp, status):
        configured.fail("DVSHCK_HostPropGet", status)
        configured.script("Qdp_GetSwitchFilterTypes", outputs=[b"\x04\0"])
        assert called(qdp, "GetSwitchFilterTypes", "dvs-production").calls == [GET, ASK]

    @pytest.mark.parametrize("script, printed, calls", UNREADABLE)
    def test_no_mask(self, configured, qdp, script, printed, calls):
        script(configured)
        assert called(qdp, "GetSwitchFilterTypes", "dvs-production") == Outcome(None, printed, calls=calls)

    @pytest.mark.parametrize("alias", ["nobody", "legacy-network", ""])
    def test_an_alias_of_no_vswitch(self, configured, qdp, alias):
        assert called(qdp, "GetSwitchFilterTypes", alias) == Outcome(
            None, f"Failed to find dvs ID for dvs alias {alias}.\n"
        )

    def test_no_portset_name(self, configured, qdp):
        configured.fail("DVSHCK_HostPropGet", 0xBAD0003)
        configured.fail("DVSState_SwitchFindByAlias", 0, nth=2)  # no handle
        assert called(qdp, "GetSwitchFilterTypes", "dvs-production") == Outcome(
            None, "Failed to get portset name from dvs dvs-production.\n", calls=[GET]
        )

    def test_a_refusing_library(self, configured, qdp):
        configured.script("Qdp_GetSwitchFilterTypes", 9, outputs=[b"\x04\0"])
        assert called(qdp, "GetSwitchFilterTypes", "dvs-production") == Outcome(
            None, "Failed to get supported filter classes for dvs-production.\n", calls=[GET, ASK]
        )

    def test_an_alias_with_a_nul(self, qdp):
        assert qdp.call("GetSwitchFilterTypes", "a\0b") == refused(left_set=EMBEDDED_NULL)

    @pytest.mark.parametrize(
        "alias, shown", [("dvs-production", "TRUE"), ("dvs-storage", "TRUE"), ("dvs-smartnic", "FALSE")]
    )
    def test_embedded_host(self, configured, qdp, alias, shown):
        assert qdp.result("GetSwitchFilterTypes", alias) == {"VLANMAC": shown}


class TestSetSwitchFilterTypes:
    def set(self, qdp, enabled, alias="dvs-production", filter_class="VLANMAC"):
        return called(qdp, "SetSwitchFilterTypes", alias, filter_class, enabled)

    @pytest.mark.parametrize(
        "mask, enabled, written",
        [
            (1, 1, 5),
            (1, 0, 1),
            (4, 1, 4),
            (4, 0, 0),
            (0xFFFB, 1, 0xFFFF),
            (0xFFFF, 0, 0xFFFB),
            (1, 1 << 32, 5),  # all 64 bits count
            (1, 1 << 63, 5),
            (1, -1, 5),
            (5, 1 << 64, 1),  # and no more
        ],
    )
    def test_changes_one_bit(self, configured, qdp, mask, enabled, written):
        script_property(configured, setting(mask))
        configured.script("DVSHCK_HostPropSet")
        assert self.set(qdp, enabled) == Outcome(bool(written & 4), calls=[GET, write(written)])

    def test_starts_from_the_library_when_the_property_is_absent(self, configured, qdp):
        script_library(configured, 0x1003)
        configured.script("DVSHCK_HostPropSet")
        assert self.set(qdp, 1) == Outcome(True, calls=[GET, ASK, write(0x1007)])

    @pytest.mark.parametrize("enabled, written", [(1, 7), (0, 3)])
    def test_the_result_is_the_same_when_the_write_fails(self, configured, qdp, enabled, written):
        script_property(configured, setting(7))
        configured.fail("DVSHCK_HostPropSet", 9)
        assert self.set(qdp, enabled) == Outcome(bool(enabled), CANNOT_WRITE, calls=[GET, write(written)])

    @pytest.mark.parametrize("enabled", [0, 1])
    def test_the_write_resolves_the_alias_again(self, configured, qdp, enabled):
        script_property(configured, setting(7))
        configured.fail("DVSState_SwitchFindByAlias", 0, nth=2)  # no handle
        assert self.set(qdp, enabled) == Outcome(
            bool(enabled), "Failed to find dvs ID for dvs alias dvs-production.\n", calls=[GET]
        )

    @pytest.mark.parametrize("script, printed, calls", UNREADABLE)
    def test_no_mask(self, configured, qdp, script, printed, calls):
        script(configured)
        assert self.set(qdp, 1) == Outcome(None, printed + NO_CLASSES, calls=calls)

    def test_an_unknown_alias(self, configured, qdp):
        assert self.set(qdp, 1, alias="nobody") == Outcome(None, UNKNOWN_ALIAS + NO_CLASSES)

    @pytest.mark.parametrize("filter_class", ["vlanmac", "VLANMA", "VLANMACS", "VLANMAC ", "", "MAC"])
    def test_another_class(self, configured, qdp, filter_class):
        assert qdp.call("SetSwitchFilterTypes", "nobody", filter_class, 1) == refused(
            "Invalid filter Class provided, only VLANMAC is accepted as input\n"
        )

    def test_a_text_with_a_nul(self, qdp):
        assert qdp.call("SetSwitchFilterTypes", "a", "VLANMAC\0", 1) == refused(left_set=EMBEDDED_NULL)

    def test_embedded_host_keeps_it(self, configured, qdp):
        assert self.set(qdp, 1, alias="dvs-smartnic").result is True
        assert qdp.result("GetSwitchFilterTypes", "dvs-smartnic") == {"VLANMAC": "TRUE"}
        assert self.set(qdp, 0, alias="dvs-smartnic").result is False
        assert qdp.result("GetSwitchFilterTypes", "dvs-smartnic") == {"VLANMAC": "FALSE"}

    def test_embedded_host_library_follows_the_property(self, configured, exported):
        def library():
            mask = ctypes.c_uint16(0)
            assert configured.libqdp.Qdp_GetSwitchFilterTypes(b"dvs-storage", ctypes.byref(mask)) == 0
            return mask.value

        assert library() == 7
        exported.PyQDPSetFiltTypeProp(b"dvs-storage", 0x123)
        assert library() == 0x123

    def test_embedded_host_has_no_such_portset(self, configured):
        mask = ctypes.c_uint16(99)
        assert configured.libqdp.Qdp_GetSwitchFilterTypes(b"nobody", ctypes.byref(mask)) != 0
        assert mask.value == 99

    def test_clearing_the_last_class_cannot_be_undone(self, configured, exported, qdp):
        exported.PyQDPSetFiltTypeProp(b"dvs-production", 4)
        assert self.set(qdp, 0) == Outcome(False, calls=[GET, write(0)])
        assert called(qdp, "GetSwitchFilterTypes", "dvs-production") == Outcome(None, calls=[GET])
        assert self.set(qdp, 1) == Outcome(None, NO_CLASSES, calls=[GET])


class TestSetFiltTypeProp:
    """The plain function."""

    @pytest.fixture
    def write_property(self, exported):
        entry = exported.PyQDPSetFiltTypeProp
        entry.restype = None
        entry.argtypes = [ctypes.c_char_p, ctypes.c_uint16]
        return entry

    @pytest.mark.parametrize("mask", [0, 4, 0x8001, 0xFFFF])
    def test_writes_the_mask_with_version_0(self, configured, write_property, mask):
        with standard_error() as error, configured.recording() as calls:
            write_property(b"dvs-production", mask)
        assert error.text == ""
        assert about_filters(calls) == [write(mask)]

    def test_a_write_that_is_refused(self, configured, write_property):
        configured.fail("DVSHCK_HostPropSet", 9)
        with standard_error() as error:
            write_property(b"dvs-production", 4)
        assert error.text == CANNOT_WRITE

    def test_an_unknown_alias(self, configured, write_property):
        with standard_error() as error, configured.recording() as calls:
            write_property(b"nobody", 4)
        assert error.text == UNKNOWN_ALIAS
        assert about_filters(calls) == []
