"""Whether and how a switch offloads flows."""

import os
import struct

import pytest

import _libqdp
from observe import INVALID_PARAMETER, Call, Capacity, Outcome, exact, refused

ALIAS = "dvs-production"
ID = "switch-production"
KEY = "com.tarnix.wyx.qdp.fpo"

FIND = Call("DVSState_SwitchFindByAlias", [ALIAS])
READ = Call("DVSHCK_HostPropGet", [ID, KEY, Capacity(0)])
FREE = Call("DVSHCK_DataFree", [])
INVALID_LENGTH = "Format of property com.tarnix.wyx.qdp.fpo is invalid\n"
CANNOT_READ = "Failed to get DVS property com.tarnix.wyx.qdp.fpo\n"
CANNOT_WRITE = "Failed to set DVS property com.tarnix.wyx.qdp.fpo\n"
NO_SWITCH = "Failed to find dvs ID for dvs alias %s.\n"


def written(flags, models):
    return Call("DVSHCK_HostPropSet", [ID, KEY, struct.pack("<II", flags, models), 16])


def settings(enabled, geneve_critical, dhcp, icmp6_nd, models):
    return {
        "enabled": enabled,
        "geneveCritical": geneve_critical,
        "ipDiscoveryDHCP": dhcp,
        "ipDiscoveryICMP6ND": icmp6_nd,
        "models": models,
    }


@pytest.fixture
def default_models(core):
    """The models on the kernel of this machine."""
    return core.fpo_models(os.uname().release)


class TestGetFPOEnabled:
    @pytest.mark.parametrize(
        "flags, expected",
        [
            (0, (0, 0, 0, 0)),
            (1, (1, 0, 0, 0)),
            (2, (0, 1, 0, 0)),
            (4, (0, 0, 1, 0)),
            (8, (0, 0, 0, 1)),
            (0xFFFFFFF0, (0, 0, 0, 0)),
            (0xFFFFFFFF, (1, 1, 1, 1)),
        ],
    )
    @pytest.mark.parametrize("models", [0, 0x12345678, 0x80000000, 0xFFFFFFFF])
    def test_flags_and_models(self, configured, on_switch, flags, expected, models):
        configured.script("DVSHCK_HostPropGet", outputs=[struct.pack("<II", flags, models)])
        assert on_switch("GetFPOEnabled", ALIAS) == Outcome(settings(*expected, models), calls=[FIND, READ, FREE])

    def test_a_first_word_is_no_version(self, configured, on_switch):
        """Other settings would be refused with a first word other than 0."""
        configured.script("DVSHCK_HostPropGet", outputs=[struct.pack("<II", 1, 1)])
        assert on_switch("GetFPOEnabled", ALIAS).printed == ""

    @pytest.mark.parametrize("length", [0, 1, 4, 5, 7, 9, 12])
    def test_a_wrong_length(self, configured, on_switch, length):
        configured.script("DVSHCK_HostPropGet", outputs=[bytes(length)])
        assert on_switch("GetFPOEnabled", ALIAS) == Outcome(None, INVALID_LENGTH, calls=[FIND, READ, FREE])

    def test_a_success_without_a_value(self, configured, on_switch):
        configured.script("DVSHCK_HostPropGet")
        assert on_switch("GetFPOEnabled", ALIAS) == Outcome(None, INVALID_LENGTH, calls=[FIND, READ])

    def test_without_the_property_it_follows_from_the_kernel(self, on_switch, default_models):
        assert on_switch("GetFPOEnabled", ALIAS) == Outcome(settings(1, 0, 1, 0, default_models), calls=[FIND, READ])

    @pytest.mark.parametrize("status", [1, 0xBAD0001, 0xBAD0002, 0xBAD0004, 0xFFFFFFFF])
    def test_any_other_failure_gives_no_default(self, configured, on_switch, status):
        configured.fail("DVSHCK_HostPropGet", status)
        assert on_switch("GetFPOEnabled", ALIAS) == Outcome(None, CANNOT_READ, calls=[FIND, READ])

    @pytest.mark.parametrize("alias", ["nobody", "", "legacy-network"])
    def test_an_alias_of_no_vswitch(self, on_switch, alias):
        assert on_switch("GetFPOEnabled", alias) == Outcome(
            None, NO_SWITCH % alias, calls=[Call("DVSState_SwitchFindByAlias", [alias])]
        )


class Deceptive(int):
    """Equals everything, and is still not True."""

    def __eq__(self, other):
        return True

    __hash__ = int.__hash__


class Index:
    def __init__(self, value):
        self.value = value

    def __index__(self):
        return self.value


class TestEnableFPO:
    def enable(self, configured, on_switch, given, flags=0x50, models=0x33):
        configured.script("DVSHCK_HostPropGet", outputs=[struct.pack("<II", flags, models)])
        return on_switch("EnableFPO", ALIAS, given)

    @pytest.mark.parametrize(
        "key, flag",
        [("enabled", 1), ("geneveCritical", 2), ("ipDiscoveryDHCP", 4), ("ipDiscoveryICMP6ND", 8)],
    )
    def test_only_true_itself_sets_a_flag(self, configured, on_switch, key, flag):
        """Every other value clears it, and no value touches another flag."""
        for before in (0, 0xFFFFFFFF):
            outcome = self.enable(configured, on_switch, {key: True}, flags=before)
            assert outcome == Outcome(True, calls=[FIND, READ, FREE, written(before | flag, 0x33)])
            for value in (1, False, 0, None, "True", 1.0, [True], Deceptive(1)):
                outcome = self.enable(configured, on_switch, {key: value}, flags=before)
                assert outcome == Outcome(True, calls=[FIND, READ, FREE, written(before & ~flag, 0x33)])

    @pytest.mark.parametrize(
        "value, models",
        [
            (0, 0),
            (23, 23),
            (0x12345678, 0x12345678),
            (0xFFFFFFFF, 0xFFFFFFFF),
            (-1, 0xFFFFFFFF),
            ((1 << 32) + 5, 5),
            ((1 << 63) - 1, 0xFFFFFFFF),
            (-(1 << 63), 0),
            (True, 1),
            (Index(7), 7),
        ],
    )
    def test_models_keep_their_low_32_bits(self, configured, on_switch, value, models):
        outcome = self.enable(configured, on_switch, {"models": value})
        assert outcome == Outcome(True, calls=[FIND, READ, FREE, written(0x50, models)])

    @pytest.mark.parametrize(
        "value, exception",
        [
            ("7", TypeError),
            (None, TypeError),
            ([7], TypeError),
            (1 << 63, (OverflowError, "Python int too large to convert to C long")),
        ],
    )
    def test_models_that_are_no_integer(self, configured, on_switch, core, value, exception):
        """Refused like a rejected tuple, and nothing is written."""
        given = {"enabled": True, "models": value}
        assert self.enable(configured, on_switch, given) == Outcome(
            None, INVALID_PARAMETER, left_set=exception, calls=[FIND, READ, FREE]
        )
        left_set = exception if exception is TypeError else exception[0]
        assert exact(core.returned(_libqdp.EnableFPO, (ALIAS, given))) == exact((False, left_set))

    def test_all_keys_at_once(self, configured, on_switch):
        given = settings(True, False, True, True, 5)
        outcome = self.enable(configured, on_switch, given, flags=0xFFFFFF02)
        assert outcome == Outcome(True, calls=[FIND, READ, FREE, written(0xFFFFFF0D, 5)])

    @pytest.mark.parametrize("given", [{}, {"Enabled": True, "enabled ": True, 1: True, None: 3}])
    def test_without_its_keys_the_record_is_written_as_it_was(self, configured, on_switch, given):
        outcome = self.enable(configured, on_switch, given, flags=0xABCDEF01, models=0x89ABCDEF)
        assert outcome == Outcome(True, calls=[FIND, READ, FREE, written(0xABCDEF01, 0x89ABCDEF)])

    def test_without_the_property_the_default_is_changed(self, configured, on_switch, default_models):
        configured.script("DVSHCK_HostPropSet")
        assert on_switch("EnableFPO", ALIAS, {}) == Outcome(True, calls=[FIND, READ, written(5, default_models)])
        assert on_switch("EnableFPO", ALIAS, {"enabled": False, "geneveCritical": True}) == Outcome(
            True, calls=[FIND, READ, written(6, default_models)]
        )

    @pytest.mark.parametrize("keys", [dict, type("Settings", (dict,), {})])
    def test_keys_are_looked_up_in_order(self, configured, on_switch, keys):
        asked = []

        class Key(str):
            def __hash__(self):
                return hash(str(self))

            def __eq__(self, other):
                asked.append(str(other))
                return str(self) == other

        names = ["enabled", "models", "geneveCritical", "ipDiscoveryDHCP", "ipDiscoveryICMP6ND"]
        given = keys((Key(name), 1) for name in reversed(names))
        asked.clear()
        self.enable(configured, on_switch, given)
        assert [name for name in asked if name in names] == names

    def test_a_value_that_empties_the_dict(self, configured, on_switch):
        class Emptying(Index):
            def __index__(self):
                given.clear()
                return self.value

        given = {"models": Emptying(9), "geneveCritical": True}
        outcome = self.enable(configured, on_switch, given)
        assert outcome == Outcome(True, calls=[FIND, READ, FREE, written(0x50, 9)])

    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_a_write_that_is_refused_is_true_all_the_same(self, configured, on_switch, status):
        configured.fail("DVSHCK_HostPropSet", status)
        assert self.enable(configured, on_switch, {}) == Outcome(
            True, CANNOT_WRITE, calls=[FIND, READ, FREE, written(0x50, 0x33)]
        )

    @pytest.mark.parametrize("length", [0, 4, 7, 9, 12])
    def test_a_wrong_length(self, configured, on_switch, length):
        configured.script("DVSHCK_HostPropGet", outputs=[bytes(length)])
        assert on_switch("EnableFPO", ALIAS, {"enabled": True}) == Outcome(
            False, INVALID_LENGTH, calls=[FIND, READ, FREE]
        )

    @pytest.mark.parametrize("status", [1, 0xBAD0001, 0xFFFFFFFF])
    def test_a_read_that_fails(self, configured, on_switch, status):
        configured.fail("DVSHCK_HostPropGet", status)
        assert on_switch("EnableFPO", ALIAS, {"enabled": True}) == Outcome(False, CANNOT_READ, calls=[FIND, READ])

    @pytest.mark.parametrize("alias", ["nobody", "", "legacy-network"])
    def test_an_alias_of_no_vswitch(self, on_switch, alias):
        assert on_switch("EnableFPO", alias, {}) == Outcome(
            False, NO_SWITCH % alias, calls=[Call("DVSState_SwitchFindByAlias", [alias])]
        )

    @pytest.mark.parametrize("given", [None, True, [], (), "enabled", [("enabled", True)]])
    def test_settings_that_are_no_dict(self, qdp, given):
        assert qdp.call("EnableFPO", ALIAS, given) == refused(result=False)

    def test_embedded_host_keeps_it_for_that_switch(self, on_switch, default_models):
        given = {"enabled": 1, "geneveCritical": True, "ipDiscoveryICMP6ND": True, "models": 0x21}
        assert on_switch("EnableFPO", ALIAS, given).result is True
        assert on_switch("GetFPOEnabled", ALIAS).result == settings(0, 1, 1, 1, 0x21)
        assert on_switch("GetFPOEnabled", "dvs-smartnic").result == settings(1, 0, 1, 0, default_models)
        assert on_switch("EnableFPO", ALIAS, {"enabled": True}).result is True
        assert on_switch("GetFPOEnabled", ALIAS).result == settings(1, 1, 1, 1, 0x21)
