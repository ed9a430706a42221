"""Settings of a switch that are kept in its host properties."""

import ctypes
import struct
from collections import namedtuple

import pytest

from observe import Call, Capacity, Outcome, refused

ALIAS = "dvs-production"
ID = "switch-production"
PORTSET = "portset-0"

FIND = Call("DVSState_SwitchFindByAlias", [ALIAS])
FREE = Call("DVSHCK_DataFree", [])
NO_SWITCH = "Failed to find dvs ID for dvs alias %s.\n"

# A setting's name in its methods, its key, the struct format of its record, and the call that asks the datapath.
Setting = namedtuple("Setting", "name key format fallback")
NUMA_TEAM = Setting(
    "NUMATeam",
    "com.tarnix.wyx.qdp.teaming",
    "<IB",
    Call("Qdp_GetSwitchNUMATeam", [PORTSET, 128, Capacity(1)]),
)
BURST_SIZE = Setting(
    "BurstSize",
    "com.tarnix.wyx.qdp.burstsize",
    "<II",
    Call("Qdp_GetSwitchBurstSize", [PORTSET, Capacity(4)]),
)
OVERLAY_L2_FLOW = Setting(
    "OverlayL2Flow",
    "com.tarnix.wyx.qdp.overlayl2flow",
    "<II",
    Call("Qdp_GetSwitchOverlayL2Flow", [PORTSET, Capacity(4)]),
)
META_FLOW = Setting("MetaFlow", "com.tarnix.wyx.qdp.metaflow", "<IB", None)
SETTINGS = [NUMA_TEAM, BURST_SIZE, OVERLAY_L2_FLOW, META_FLOW]
OF_THE_DATAPATH = [NUMA_TEAM, BURST_SIZE, OVERLAY_L2_FLOW]

every_setting = pytest.mark.parametrize("setting", SETTINGS, ids=lambda setting: setting.name)
every_setting_of_the_datapath = pytest.mark.parametrize(
    "setting", OF_THE_DATAPATH, ids=lambda setting: setting.name
)


def read(setting):
    return Call("DVSHCK_HostPropGet", [ID, setting.key, Capacity(0)])


def written(setting, record):
    return Call("DVSHCK_HostPropSet", [ID, setting.key, record, 16])


def shown(setting, value):
    """A value in the form in which the getter returns it."""
    return value != 0 if setting is NUMA_TEAM else value


class TestEveryGetter:
    @every_setting
    @pytest.mark.parametrize("value", [0, 1, 0x7F, 0xFF])
    def test_a_property_is_read_and_released(self, configured, on_switch, setting, value):
        configured.script("DVSHCK_HostPropGet", outputs=[struct.pack(setting.format, 0, value)])
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            shown(setting, value), calls=[FIND, read(setting), FREE]
        )

    @every_setting
    @pytest.mark.parametrize("version", [1, 0x100, 0x80000000])
    @pytest.mark.parametrize("length", [4, 5, 6, 8, 9])
    def test_an_unknown_version_is_seen_before_the_length(self, configured, on_switch, setting, version, length):
        record = struct.pack("<I", version) + bytes(length - 4)
        configured.script("DVSHCK_HostPropGet", outputs=[record])
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            None,
            f"Format of property {setting.key} value is from unknown version.\n",
            calls=[FIND, read(setting), FREE],
        )

    @every_setting
    @pytest.mark.parametrize("value", [b"\1", b"\0\1", b"\0\0\1"])
    def test_what_a_short_value_lacks_reads_as_zero(self, configured, on_switch, setting, value):
        configured.script("DVSHCK_HostPropGet", outputs=[value])
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            None,
            f"Format of property {setting.key} value is from unknown version.\n",
            calls=[FIND, read(setting), FREE],
        )

    @every_setting
    def test_a_length_without_a_value_reads_as_zero(self, configured, on_switch, setting):
        configured.script("DVSHCK_HostPropGet", sizes={0: struct.calcsize(setting.format)})
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(shown(setting, 0), calls=[FIND, read(setting)])

    @every_setting
    @pytest.mark.parametrize("length", [0, 1, 4, 5, 6, 7, 8, 9, 24])
    def test_a_length_must_be_exact(self, configured, on_switch, setting, length):
        configured.script("DVSHCK_HostPropGet", outputs=[bytes(length)])
        is_odd = length != struct.calcsize(setting.format)
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            None if is_odd else shown(setting, 0),
            f"Property {setting.key} value length is odd.\n" if is_odd else "",
            calls=[FIND, read(setting), FREE],
        )

    @every_setting
    @pytest.mark.parametrize("alias", ["nobody", "", "legacy-network"])
    def test_an_alias_of_no_vswitch(self, on_switch, setting, alias):
        assert on_switch("GetSwitch" + setting.name, alias) == Outcome(
            None, NO_SWITCH % alias, calls=[Call("DVSState_SwitchFindByAlias", [alias])]
        )

    @every_setting
    def test_an_alias_with_a_nul(self, qdp, setting):
        assert qdp.call("GetSwitch" + setting.name, "dvs\0") == refused(
            left_set=(ValueError, "embedded null character")
        )


class TestEveryFallback:
    @every_setting_of_the_datapath
    @pytest.mark.parametrize("status", [0xBAD0003, 1, 0xFFFFFFFF])
    @pytest.mark.parametrize("value", [0, 1, 0xFF])
    def test_the_datapath_is_asked_by_portset_name(self, configured, on_switch, setting, status, value):
        configured.fail("DVSHCK_HostPropGet", status)
        answer = value.to_bytes(setting.fallback.arguments[-1].size, "little")
        configured.script(setting.fallback.operation, outputs=[answer])
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            shown(setting, value), calls=[FIND, read(setting), FIND, setting.fallback]
        )

    @every_setting_of_the_datapath
    def test_an_answer_without_bytes_is_zero(self, configured, on_switch, setting):
        configured.script(setting.fallback.operation)
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            shown(setting, 0), calls=[FIND, read(setting), FIND, setting.fallback]
        )

    @every_setting_of_the_datapath
    @pytest.mark.parametrize("status", [1, 0x10000, 0xBAD0003, 0xFFFFFFFF])
    def test_a_refusing_datapath_is_met_with_silence(self, configured, on_switch, setting, status):
        configured.fail(setting.fallback.operation, status)
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            None, calls=[FIND, read(setting), FIND, setting.fallback]
        )

    @every_setting_of_the_datapath
    def test_a_switch_that_goes_away_in_between(self, configured, on_switch, setting):
        configured.fail("DVSState_SwitchFindByAlias", 0, nth=2)
        assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
            None, f"Failed to get portset name from dvs {ALIAS}.\n", calls=[FIND, read(setting), FIND]
        )

    @every_setting_of_the_datapath
    def test_embedded_host_knows_every_switch_by_its_portset_name(self, on_switch, setting):
        for alias in (ALIAS, "dvs-storage", "dvs-smartnic"):
            outcome = on_switch("GetSwitch" + setting.name, alias)
            assert outcome.result is not None and outcome.printed == ""


class TestEverySetter:
    def result(self, setting, is_written):
        return int(is_written) if setting is META_FLOW else None

    @every_setting
    @pytest.mark.parametrize("value, word", [(0, 0), (1, 1), (256, 256), (-1, 0xFFFFFFFF), ((7 << 32) + 9, 9)])
    def test_version_and_value_are_written(self, configured, on_switch, setting, value, word):
        kept = word & 0xFF if setting.format == "<IB" else word
        configured.script("DVSHCK_HostPropSet")
        assert on_switch("SetSwitch" + setting.name, ALIAS, value) == Outcome(
            self.result(setting, True), calls=[FIND, written(setting, struct.pack(setting.format, 0, kept))]
        )

    @every_setting
    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_a_write_that_is_refused(self, configured, on_switch, setting, status):
        configured.fail("DVSHCK_HostPropSet", status)
        assert on_switch("SetSwitch" + setting.name, ALIAS, 1) == Outcome(
            self.result(setting, False),
            f"Failed to set DVS property {setting.key}\n",
            calls=[FIND, written(setting, struct.pack(setting.format, 0, 1))],
        )

    @every_setting
    @pytest.mark.parametrize("alias", ["nobody", "", "legacy-network"])
    def test_an_alias_of_no_vswitch(self, on_switch, setting, alias):
        assert on_switch("SetSwitch" + setting.name, alias, 1) == Outcome(
            self.result(setting, False), NO_SWITCH % alias, calls=[Call("DVSState_SwitchFindByAlias", [alias])]
        )

    @every_setting
    def test_embedded_host_keeps_it_as_a_property(self, on_switch, setting):
        for value in (0, 7, 0):
            assert on_switch("SetSwitch" + setting.name, ALIAS, value).printed == ""
            assert on_switch("GetSwitch" + setting.name, ALIAS) == Outcome(
                shown(setting, value), calls=[FIND, read(setting), FREE]
            )


class TestEmbeddedDatapath:
    """The datapath picks a property up by itself."""

    def ask(self, host, setting, *arguments):
        value = ctypes.c_uint32(0)
        status = getattr(host.libqdp, setting.fallback.operation)(*arguments, ctypes.byref(value))
        return status, value.value

    def arguments(self, setting, name=PORTSET.encode()):
        return (name, 128) if setting is NUMA_TEAM else (name,)

    @every_setting_of_the_datapath
    def test_a_property_goes_before_the_default(self, configured, on_switch, setting):
        default = self.ask(configured, setting, *self.arguments(setting))
        assert default[0] == 0
        on_switch("SetSwitch" + setting.name, ALIAS, 99)
        assert self.ask(configured, setting, *self.arguments(setting)) == (0, 99)
        assert self.ask(configured, setting, *self.arguments(setting, b"dvs-storage")) != (0, 99)
        # A record that the datapath does not know counts for nothing.
        for record in (b"\x01" + bytes(struct.calcsize(setting.format) - 1), b"\0" * 3, b"\0" * 9):
            configured.libqmtPublic.DVSHCK_HostPropSet(ID.encode(), setting.key.encode(), record, len(record), 16)
            assert self.ask(configured, setting, *self.arguments(setting)) == default

    @every_setting_of_the_datapath
    def test_an_unknown_portset_is_refused(self, configured, setting):
        for name in (b"", b"portset-", b"portset-00", b"dvs-production"):
            status, value = self.ask(configured, setting, *self.arguments(setting, name))
            assert (status != 0, value) == (True, 0)

    def test_numa_teaming_wants_the_size_of_a_portset_name(self, configured):
        assert self.ask(configured, NUMA_TEAM, PORTSET.encode(), 127)[0] != 0


class TestGetSwitchNUMATeam:
    @pytest.mark.parametrize("value, result", [(0, False), (1, True), (2, True), (0x80, True), (0xFF, True)])
    def test_any_value_but_zero_is_true(self, configured, on_switch, value, result):
        configured.script("DVSHCK_HostPropGet", outputs=[struct.pack("<IB", 0, value)])
        assert on_switch("GetSwitchNUMATeam", ALIAS).result is result

    def test_embedded_host(self, on_switch):
        assert on_switch("GetSwitchNUMATeam", ALIAS).result is True
        assert on_switch("GetSwitchNUMATeam", "dvs-storage").result is False


class TestSetSwitchNUMATeam:
    @pytest.mark.parametrize("value, kept, read_back", [(256, 0, False), (2, 2, True), (0x1FF, 0xFF, True)])
    def test_the_low_byte_is_kept(self, on_switch, value, kept, read_back):
        record = struct.pack("<IB", 0, kept)
        assert on_switch("SetSwitchNUMATeam", ALIAS, value) == Outcome(None, calls=[FIND, written(NUMA_TEAM, record)])
        assert on_switch("GetSwitchNUMATeam", ALIAS).result is read_back


class TestGetSwitchBurstSize:
    @pytest.mark.parametrize("value", [0, 0x12345678, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF])
    def test_is_unsigned_from_either_source(self, configured, on_switch, value):
        configured.script("DVSHCK_HostPropGet", outputs=[struct.pack("<II", 0, value)])
        assert on_switch("GetSwitchBurstSize", ALIAS).result == value
        configured.script("Qdp_GetSwitchBurstSize", outputs=[struct.pack("<I", value)])
        assert on_switch("GetSwitchBurstSize", ALIAS).result == value

    def test_five_bytes_are_odd(self, configured, on_switch):
        configured.script("DVSHCK_HostPropGet", outputs=[bytes(5)])
        assert on_switch("GetSwitchBurstSize", ALIAS) == Outcome(
            None,
            "Property com.tarnix.wyx.qdp.burstsize value length is odd.\n",
            calls=[FIND, read(BURST_SIZE), FREE],
        )

    def test_embedded_host(self, on_switch):
        assert on_switch("GetSwitchBurstSize", ALIAS).result == 32


class TestSetSwitchBurstSize:
    def test_no_range_is_checked(self, on_switch):
        assert on_switch("SetSwitchBurstSize", ALIAS, 0x12345678) == Outcome(
            None, calls=[FIND, written(BURST_SIZE, bytes.fromhex("00000000 78563412"))]
        )
        assert on_switch("GetSwitchBurstSize", ALIAS).result == 0x12345678


class TestGetSwitchOverlayL2Flow:
    @pytest.mark.parametrize("value", [0, 0x12345678, 0x80000000, 0xFFFFFFFF])
    def test_is_unsigned_from_either_source(self, configured, on_switch, value):
        configured.script("DVSHCK_HostPropGet", outputs=[struct.pack("<II", 0, value)])
        assert on_switch("GetSwitchOverlayL2Flow", ALIAS).result == value
        configured.script("Qdp_GetSwitchOverlayL2Flow", outputs=[struct.pack("<I", value)])
        assert on_switch("GetSwitchOverlayL2Flow", ALIAS).result == value


class TestSetSwitchOverlayL2Flow:
    def test_is_a_setting_of_its_own(self, on_switch):
        on_switch("SetSwitchOverlayL2Flow", ALIAS, 0x12345678)
        assert on_switch("GetSwitchOverlayL2Flow", ALIAS).result == 0x12345678
        assert on_switch("GetSwitchBurstSize", ALIAS).result == 32


class TestGetSwitchMetaFlow:
    @pytest.mark.parametrize("status", [0xBAD0003, 1, 0xFFFFFFFF])
    def test_is_on_without_the_property_and_asks_nobody(self, configured, on_switch, status):
        configured.fail("DVSHCK_HostPropGet", status)
        assert on_switch("GetSwitchMetaFlow", ALIAS) == Outcome(1, calls=[FIND, read(META_FLOW)])


class TestSetSwitchMetaFlow:
    def test_the_low_byte_is_kept(self, on_switch):
        record = struct.pack("<IB", 0, 0x34)
        assert on_switch("SetSwitchMetaFlow", ALIAS, 0x1234) == Outcome(1, calls=[FIND, written(META_FLOW, record)])
        assert on_switch("GetSwitchMetaFlow", ALIAS).result == 0x34
