"""The table of settings, setting one, and plans of several: what the platform is called with, and what is refused
before that."""

import inspect
import re
import struct

import _libqdp
import pytest
from qdp_host import NullBuffer

import qdp
from qdp.settings import ROWS, SETTINGS, TYPES, Setting, parse, row_of, show

ALIAS = "dvs-production"
SWITCH_ID = "switch-production"
THIRD_ID = "switch-smartnic"
PORTSET = "portset-0"

# Methods that get or set, and are no settings: they list, count, act, or only read.
VERBS = """
    GetPortStats GetFlowStats GetRepPortStats GetPortConf GetPortTxUplink GetL3SPANRecord GetUplinkStats
    GetUplinkQueueStats GetPortNetQInfo GetFPOStats GetFPOUplinkStatus GetFPOUplinkStats GetSwitchMuxMode
    LifStatsGet PortStatsGet P4IStatsGet P4EStatsGet CTStatsGet P4StatsFlowGet FlowOpsStatsGet AdvStatsGetCounters
    ResetPort UnpinPort
""".split()


@pytest.fixture
def layer(host):
    host.freeze()
    return qdp.Host()


def writes(calls):
    """The platform calls that change something, but for commands to the SmartNIC."""
    named = [(call.operation, call.arguments) for call in calls]
    return [call for call in named if re.search("Set|_Enable_", call[0]) and "GetEnabled" not in call[0]]


# --- The table ---


def test_every_method_that_gets_or_sets_has_one_place():
    methods = [name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value)]
    named = {name for name in methods if ("Get" in name or "Set" in name) and not name.startswith("Table")}
    named -= {name for name in named if name in VERBS}
    named |= {"EnableFPO", "EnableSwitchFlowCache", "ListDevAffinity"}
    in_rows = {method for row in SETTINGS for method in (row.getter, row.setter) if method}
    assert in_rows == named
    assert not in_rows & set(VERBS) and set(VERBS) <= set(methods)


def test_a_method_has_one_counterpart():
    pairs = {(row.getter, row.setter) for row in SETTINGS}
    getters, setters = zip(*pairs)
    assert len(set(setters)) == len(setters)
    assert sorted(filter(None, getters)) == sorted(set(getters) - {""})


def test_rows_are_complete():
    assert len(ROWS) == len(SETTINGS)
    for row in SETTINGS:
        assert row.type in TYPES and row.scope in qdp.settings.SCOPES and row.stored in ("running", "stored", "both")
        assert row.help and row.name == row.name.lower() and " " not in row.name and "/" not in row.name
        assert bool(row.getter) or "cannot be verified" in row.caveat


def fpo_property(flags, models):
    return "com.tarnix.wyx.qdp.fpo", struct.pack("<II", flags, models)


def stored(key, value, switch=SWITCH_ID):
    return "DVSHCK_HostPropSet", [switch, "com.tarnix.wyx.qdp." + key, value, 16]


def ring(tx, rx):
    key = "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing"
    return "DVSHCK_PortDataSet", [ALIAS, "nic0", key, struct.pack("<II", tx, rx), 8]


def p4(request):
    return "Qdp_P4_Cmd", [request, NullBuffer(size=0)]


# By path: the value before, the value that is set, and the call that sets it. The records, as the platform has them: of
# the revalidation enabled, inject, quota, interval; of the counters' updates quota, interval; of the delay packets,
# enabled; of the DSCP selector, value, mask.
CASES = {
    "flow-timeout": (10, 64, ("Qdp_Set_Flow_Timeout", [64])),
    "fpo-reval-enabled": (True, False, ("Qdp_Set_FPO_Reval_Config", [struct.pack("<4I", 0, 0, 256, 1000)])),
    "fpo-reval-inject-packet": (False, True, ("Qdp_Set_FPO_Reval_Config", [struct.pack("<4I", 1, 1, 256, 1000)])),
    "fpo-reval-interval": (1000, 70, ("Qdp_Set_FPO_Reval_Config", [struct.pack("<4I", 1, 0, 256, 70)])),
    "fpo-reval-scan-quota": (256, 70, ("Qdp_Set_FPO_Reval_Config", [struct.pack("<4I", 1, 0, 70, 1000)])),
    "fpo-delay-enabled": (False, True, ("Qdp_Set_FPO_DelayCtOl_Config", [struct.pack("<II", 16, 1)])),
    "fpo-delay-packets": (16, 8, ("Qdp_Set_FPO_DelayCtOl_Config", [struct.pack("<II", 8, 0)])),
    "fpo-stats-interval": (1000, 100, ("Qdp_Set_FPO_Flow_Stats_Config", [struct.pack("<II", 256, 100)])),
    "fpo-stats-scan-quota": (256, 500, ("Qdp_Set_FPO_Flow_Stats_Config", [struct.pack("<II", 500, 1000)])),
    "refresh-packet-injection": (1, 0, ("Qdp_Set_Refresh_Pkt_Injection", [0])),
    "offload-icmp-echo": (False, True, ("Qdp_Set_Offload_ICMP_Echo", [1])),
    "dscp": (46, 10, ("Qdp_DSCP_Conf_Set", [struct.pack("<IBB", 0, 10, 63)])),
    "dscp:1": (46, 10, ("Qdp_DSCP_Conf_Set", [struct.pack("<IBB", 1, 10, 63)])),
    "dscp-mask": (63, 255, ("Qdp_DSCP_Conf_Set", [struct.pack("<IBB", 0, 46, 255)])),
    "aging-interval": (10, 20, ("Qdp_SetAgingInterval", [0, 20])),
    "aging-interval:7": (10, 20, ("Qdp_SetAgingInterval", [7, 20])),
    "host-pfs": ([1, 2, 3, 4], [5, 6], p4(struct.pack("<HHH5H", 16, 0, 2, 5, 6, 0, 0, 0))),
    "p4-app": (True, False, ("Qdp_P4AppSet", [0])),
    "p4-log-level": (3, 5, p4(struct.pack("<HHB", 5, 14, 5))),
    f"{ALIAS}/burst-size": (32, 64, stored("burstsize", struct.pack("<II", 0, 64))),
    f"{ALIAS}/overlay-l2-flow": (1, 0, stored("overlayl2flow", struct.pack("<II", 0, 0))),
    f"{ALIAS}/metaflow": (1, 255, stored("metaflow", struct.pack("<IB", 0, 255))),
    f"{ALIAS}/numa-team": (True, False, stored("teaming", struct.pack("<IB", 0, 0))),
    "dvs-smartnic/filter-vlan-mac": (False, True, stored("filterType", struct.pack("<IH", 0, 7), THIRD_ID)),
    f"{ALIAS}/balancer-metric": ("cpu", "count", stored("loadbal", struct.pack("<6I", 0, 2, 0, 0, 0, 0))),
    f"{ALIAS}/balancer-run-in-msec": (1000, 500, ("Qdp_SetLBParam", [PORTSET, 0, 500])),
    f"{ALIAS}/balancer-cpuload-high": (85, 80, ("Qdp_SetLBParam", [PORTSET, 1, 80])),
    f"{ALIAS}/balancer-cpuload-low": (30, 20, ("Qdp_SetLBParam", [PORTSET, 2, 20])),
    f"{ALIAS}/balancer-cpuload-target": (60, 50, ("Qdp_SetLBParam", [PORTSET, 3, 50])),
    f"{ALIAS}/balancer-cpuload-high-per-unit": (90, 80, ("Qdp_SetLBParam", [PORTSET, 4, 80])),
    f"{ALIAS}/balancer-cpuload-low-per-unit": (20, 10, ("Qdp_SetLBParam", [PORTSET, 5, 10])),
    f"{ALIAS}/balancer-min-v2v-pps": (50000, 7, ("Qdp_SetLBParam", [PORTSET, 6, 7])),
    f"{ALIAS}/balancer-min-v2v-pps-bind": (100000, 1 << 63, ("Qdp_SetLBParam", [PORTSET, 7, 1 << 63])),
    f"{ALIAS}/balancer-pps-var-sensitivity": (15, 0, ("Qdp_SetLBParam", [PORTSET, 8, 0])),
    f"{ALIAS}/balancer-cpu-var-sensitivity": (10, 0, ("Qdp_SetLBParam", [PORTSET, 9, 0])),
    # The property before is 5, enabled and DHCP, and models 23: see the fixture.
    f"{ALIAS}/fpo-enabled": (True, False, stored("fpo", struct.pack("<II", 4, 23))),
    f"{ALIAS}/fpo-models": (23, 1, stored("fpo", struct.pack("<II", 5, 1))),
    f"{ALIAS}/fpo-geneve-critical": (False, True, stored("fpo", struct.pack("<II", 7, 23))),
    f"{ALIAS}/fpo-ip-discovery-dhcp": (True, False, stored("fpo", struct.pack("<II", 1, 23))),
    f"{ALIAS}/fpo-ip-discovery-icmp6": (False, True, stored("fpo", struct.pack("<II", 13, 23))),
    f"{ALIAS}/lro": (True, False, ("Qdp_SetLRO", [1, 0, 0, 0])),
    f"{ALIAS}/min-flow-layer": (2, 3, ("Qdp_SetSwitchMinFlowLayer", [0, 3])),
    f"{ALIAS}/panic-on-tx-hang": (False, True, ("Qdp_Set_Panic_On_Tx_Hang", [0, 1])),
    f"{ALIAS}/advanced-stats": (False, True, ("Qdp_AdvStatsSetEnabled", [0, 1])),
    f"{ALIAS}/port/3/lro": (True, False, ("Qdp_SetLRO", [0, 0, 3, 0])),
    # Switch, port, queue, flag.
    f"{ALIAS}/port/3/rss-override": (None, 7, p4(struct.pack("<HHHHBB", 10, 12, 0, 3, 7, 1))),
    "dvs-smartnic/port/70/rss-override": (6, None, p4(struct.pack("<HHHHBB", 10, 12, 2, 70, 0, 0))),
    f"{ALIAS}/uplink/nic0/tx-ring-size": (2048, 4096, ring(4096, 1024)),
    f"{ALIAS}/uplink/nic0/rx-ring-size": (1024, 512, ring(2048, 512)),
    "device/nic1/affinity": (1, 0, ("Qdp_Set_Dev_Affinity", ["nic1", 0])),
}
OFFLOAD = f"{ALIAS}/offload-flows"
UNREADABLE = {
    "latency-histogram": ("Qdp_P4UKLatencySet", [1]),
    f"{ALIAS}/uplink-mac-learn": ("Qdp_Set_Uplink_MAC_Learn", [0, 1]),
    f"{ALIAS}/flow-cache": ("Qdp_Enable_Switch_Flow_Cache", [0, 1]),
}


@pytest.fixture
def prepared(layer):
    """An offload property that does not depend on the kernel of this machine."""
    layer.load_aliases()
    qdp.call("EnableFPO", ALIAS, {"models": 23})
    return layer


def is_p4_write(call):
    return call[0] == "Qdp_P4_Cmd" and isinstance(call[1][1], NullBuffer)


def sets(calls):
    named = [(call.operation, call.arguments) for call in calls]
    return [call for call in named if call in writes(calls) or is_p4_write(call)]


def test_every_setting_is_tried():
    tried = {(row_of_path(path)) for path in [*CASES, *UNREADABLE, OFFLOAD]}
    assert tried == set(ROWS)


def row_of_path(path):
    parts = path.split("/")
    scope = {1: "host", 2: "switch", 3: "device", 4: parts[-3] if len(parts) == 4 else ""}[len(parts)]
    return scope, parts[-1].partition(":")[0]


@pytest.mark.parametrize("path", CASES)
def test_set_writes_what_differs_and_reads_it_back(prepared, host, path):
    before, value, call = CASES[path]
    setting = prepared.setting(path)
    assert (setting.path, setting.value) == (path, before)
    with host.recording() as calls:
        assert setting.set(value) == (before, value, path, True)
    assert sets(calls) == [call]
    assert setting.value == value and type(setting.value) is type(value)
    with host.recording() as calls:
        change = setting.set(value)
    assert change == (value, value, path, True) and not change.changes
    assert sets(calls) == []


def test_offload_of_flows_is_set_in_the_datapath_and_in_the_configuration(layer, host):
    with host.recording() as calls:
        assert layer.setting(OFFLOAD).set(True) == (False, True, OFFLOAD, True)
    assert writes(calls) == [
        ("Qdp_Set_Offload_Flows", [PORTSET, 1]),
        stored("fpo.offload", struct.pack("<I", 1)),
    ]


@pytest.mark.parametrize("path", UNREADABLE)
def test_setting_without_a_getter_says_so(layer, host, path):
    setting = layer.setting(path)
    with host.recording() as calls:
        change = setting.set(True)
    assert change == (None, True, path, False) and change.changes
    assert writes(calls) == [UNREADABLE[path]]
    with pytest.raises(qdp.Unsupported, match="cannot be verified"):
        setting.get()
    with pytest.raises(qdp.InvalidArgument, match="cannot be restored"), layer.temporarily({path: True}):
        pytest.fail("the block is not entered")


# --- Traps ---

# By path: values that the module would take for something else. 4294967296 arrives as 0, -1 as 4294967295, which some
# setters take as "keep", 300 as 44 where the low 8 bits count, 1 clears a flag of EnableFPO.
TRAPS = {
    "flow-timeout": [-1, 1 << 32, 1.5, "10", None, True],
    "fpo-reval-interval": [-1, (1 << 32) - 1],
    "fpo-reval-scan-quota": [-1, (1 << 32) - 1],
    "fpo-stats-interval": [-1, (1 << 32) - 1],
    "fpo-stats-scan-quota": [-1, (1 << 32) - 1],
    "fpo-reval-enabled": [2, -1, "on", None],
    "offload-icmp-echo": [2, 256],
    "dscp": [-1, 256, 300],
    "dscp-mask": [256],
    "p4-log-level": [6],
    "host-pfs": [[1024], [1, 2, 3, 4, 5], [1, "2"], 7, "1,2"],
    f"{ALIAS}/metaflow": [-1, 256],
    f"{ALIAS}/numa-team": [256, 2],
    f"{ALIAS}/panic-on-tx-hang": [2],
    f"{ALIAS}/advanced-stats": [2],
    f"{ALIAS}/filter-vlan-mac": [False, 0],
    f"{ALIAS}/balancer-metric": ["CPU", "invalid", 1],
    f"{ALIAS}/balancer-run-in-msec": [-1, 1 << 64],
    f"{ALIAS}/fpo-enabled": ["True", 2, [True]],
    f"{ALIAS}/port/3/rss-override": [64, -1, "none"],
    f"{ALIAS}/uplink/nic0/tx-ring-size": [1000, -32, 1 << 32],
}


@pytest.mark.parametrize("path, value", [(path, value) for path, values in TRAPS.items() for value in values])
def test_value_out_of_range_is_refused_before_any_call(layer, host, path, value):
    setting = layer.setting(path)
    with host.recording() as calls:
        with pytest.raises(qdp.InvalidArgument, match=setting.name):
            setting.set(value)
        with pytest.raises(qdp.InvalidArgument):
            layer.plan({"flow-timeout": 20, path: value} if path != "flow-timeout" else {path: value})
    assert calls == []


def test_flag_of_fpo_is_set_by_one_as_by_true(prepared):
    """EnableFPO itself takes 1 for off."""
    setting = prepared.setting(f"{ALIAS}/fpo-geneve-critical")
    assert setting.set(1) == (False, True, setting.path, True)
    assert qdp.call("GetFPOEnabled", ALIAS).geneveCritical == 1


def test_only_filter_class_is_not_removed(layer):
    setting = layer.setting("dvs-storage/filter-vlan-mac")
    with pytest.raises(qdp.InvalidArgument):
        setting.set(False)
    assert setting.value is True


def test_switch_without_any_filter_class(layer, host):
    """Such a switch takes none, either."""
    setting = layer.setting("dvs-storage/filter-vlan-mac")
    for _ in range(2):
        host.script("Qdp_GetSwitchFilterTypes", outputs=[struct.pack("<H", 0)])
    assert setting.value is False
    host.script("Qdp_GetSwitchFilterTypes", outputs=[struct.pack("<H", 0)])
    with pytest.raises(qdp.Refused, match="Failed to get current support FilterClasses on switch"):
        setting.set(True)


def test_fifth_host_pf_is_kept_when_it_is_zero(layer, host):
    setting = layer.setting("host-pfs")
    with host.recording() as calls:
        setting.set([4, 3, 2, 1, 0])
    assert sets(calls) == [p4(struct.pack("<HHH5H", 16, 0, 5, 4, 3, 2, 1, 0))]
    assert setting.value == [4, 3, 2, 1, 0]


def test_rss_override_has_no_port_from_1023_on(layer):
    with pytest.raises(qdp.InvalidArgument):
        layer.setting("0/port/1023/rss-override").set(1)


# --- Failures ---


def test_setter_that_reports_nothing_is_found_out(layer, host):
    host.fail("Qdp_Set_Offload_Flows")
    with pytest.raises(qdp.NotApplied) as failure:
        layer.setting(OFFLOAD).set(True)
    assert str(failure.value) == "SetOffloadFlows(): dvs-production/offload-flows: set to on, reads back as off"


def test_refusal_of_the_setter_is_raised(layer, host):
    setting = layer.setting(f"{ALIAS}/burst-size")
    host.fail("DVSHCK_HostPropSet")
    with pytest.raises(qdp.NotStored, match="SetSwitchBurstSize.*burstsize"):
        setting.set(64)
    assert setting.value == 32


def test_nothing_is_written_where_the_value_cannot_be_read(layer, host):
    setting = layer.setting("flow-timeout")
    host.fail("Qdp_Get_Flow_Timeout")
    with host.recording() as calls, pytest.raises(qdp.Refused):
        setting.set(20)
    assert [call.operation for call in calls] == ["Qdp_Get_Flow_Timeout"]


def test_device_that_is_not_there(layer):
    with pytest.raises(qdp.NotFound, match="no device nic7"):
        layer.setting("device/nic7/affinity").set(1)


# --- Names ---


def test_settings_are_a_mapping(layer):
    settings = layer.switch(0).settings
    assert list(settings) == [row.name for row in SETTINGS if row.scope == "switch"]
    assert (
        "lro" in settings and "affinity" not in settings and 7 not in settings and len(settings) == len(list(settings))
    )
    assert settings.get("affinity") is None and isinstance(settings["lro"], Setting)
    assert settings.set("min-flow-layer", 3) == (2, 3, f"{ALIAS}/min-flow-layer", True)
    assert "aging-interval:3" in layer.settings and "flow-timeout:3" not in layer.settings


def test_unknown_name_suggests_others(layer):
    with pytest.raises(qdp.NotFound) as failure:
        layer.setting(f"{ALIAS}/burst-sice")
    assert str(failure.value) == "a switch has no setting 'burst-sice'"
    assert failure.value.hint == "it has burst-size"
    for path in ("aging-interval:x", "aging-interval:-1"):
        with pytest.raises(qdp.InvalidArgument):
            layer.setting(path)


def test_switch_goes_by_each_of_its_names(layer):
    for name in ("0", PORTSET, ALIAS):
        setting = layer.setting(f"{name}/burst-size")
        assert setting.path == f"{name}/burst-size"
        assert setting.identity() == ("switch", "burst-size", ALIAS)


def test_all_settings_have_paths_that_lead_to_them(layer):
    found = dict(layer.all_settings())
    numbers = {switch.number: len(switch.ports()) for switch in layer.switches()}
    of_host = [row for row in SETTINGS if row.scope == "host"]
    of_switch = [row for row in SETTINGS if row.scope == "switch"]
    by_number = [row for row in of_switch if row.by == ("switch",)]
    ports = sum(numbers.values())
    # The third switch's alias cannot be told from its name; each port has two settings, each of six devices one.
    assert len(found) == len(of_host) + 2 * len(of_switch) + len(by_number) + 2 * ports + 6
    for path, setting in found.items():
        assert layer.setting(path).identity() == setting.identity()


def test_ports_without_an_override_have_no_setting_for_it(layer, host, tmp_path):
    scenario = tmp_path / "scenario.json"
    scenario.write_text('{"switches": [{"alias": "edge", "ports": [{"repeat": 1025, "name": "vnic{0}"}]}]}')
    host.load(str(scenario))
    name = layer.switch(0).path
    numbers = {"lro": range(1025), "rss-override": range(1023)}
    found = [path for path, setting in layer.all_settings() if setting.row.scope == "port"]
    assert sorted(found) == sorted(f"{name}/port/{port}/{each}" for each in numbers for port in numbers[each])


def test_texts_of_values():
    texts = {
        "flow-timeout": [(64, "64")],
        "p4-app": [(True, "on"), (False, "off")],
        "host-pfs": [([1, 2], "1,2"), ([], "none")],
    }
    for name, pairs in texts.items():
        for value, text in pairs:
            assert show(ROWS["host", name], value) == text
            assert parse(ROWS["host", name], text) == value
    assert parse(ROWS["host", "flow-timeout"], "0x10") == 16
    assert [parse(ROWS["switch", "lro"], text) for text in ("yes", "TRUE", "0", "no")] == [True, True, False, False]
    override = ROWS["port", "rss-override"]
    assert [parse(override, text) for text in ("none", "off", "5")] == [None, None, 5] and show(
        override, None
    ) == "none"
    assert parse(ROWS["switch", "balancer-metric"], "cpu") == "cpu"
    for row, text in [("flow-timeout", "ten"), ("p4-app", "maybe"), ("host-pfs", "1,x"), ("fpo-reval-interval", "-1")]:
        with pytest.raises(qdp.InvalidArgument):
            parse(ROWS["host", row], text)
    assert row_of("host", "aging-interval:4").name == "aging-interval"


# --- Plans ---


def test_plan_shows_what_differs_and_changes_nothing(layer, host):
    plan = layer.plan({f"{ALIAS}/burst-size": 64, "flow-timeout": 10, "latency-histogram": True, "p4-log-level": 4})
    with host.recording() as calls:
        assert plan.diff() == [
            (32, 64, f"{ALIAS}/burst-size", True),
            (3, 4, "p4-log-level", True),
            (None, True, "latency-histogram", False),
        ]
    assert sets(calls) == []


def test_plan_sets_in_order_and_what_cannot_be_read_last(layer, host):
    plan = layer.plan({"latency-histogram": True, f"{ALIAS}/min-flow-layer": 4, "flow-timeout": 20})
    with host.recording() as calls:
        assert plan.apply() == [
            (2, 4, f"{ALIAS}/min-flow-layer", True),
            (10, 20, "flow-timeout", True),
            (None, True, "latency-histogram", False),
        ]
    assert sets(calls) == [
        ("Qdp_SetSwitchMinFlowLayer", [0, 4]),
        ("Qdp_Set_Flow_Timeout", [20]),
        ("Qdp_P4UKLatencySet", [1]),
    ]


def test_plan_that_fails_is_rolled_back_in_reverse(layer, host):
    plan = layer.plan({"flow-timeout": 20, f"{ALIAS}/min-flow-layer": 4, "refresh-packet-injection": 0})
    host.fail("Qdp_Set_Refresh_Pkt_Injection")
    with host.recording() as calls, pytest.raises(qdp.Refused) as failure:
        plan.apply()
    assert sets(calls) == [
        ("Qdp_Set_Flow_Timeout", [20]),
        ("Qdp_SetSwitchMinFlowLayer", [0, 4]),
        ("Qdp_Set_Refresh_Pkt_Injection", [0]),
        ("Qdp_SetSwitchMinFlowLayer", [0, 2]),
        ("Qdp_Set_Flow_Timeout", [10]),
    ]
    assert failure.value.hint.endswith("; what was set before it is set back")
    assert plan.diff()[0] == (10, 20, "flow-timeout", True)


def test_value_that_was_not_applied_is_rolled_back_too(layer, host):
    """The platform takes 4 and reports 3: what was there before is set again."""
    setting = layer.setting(f"{ALIAS}/min-flow-layer")
    for layer_read in (2, 3):
        host.script("Qdp_GetSwitchMinFlowLayer", outputs=[struct.pack("<I", layer_read)])
    with pytest.raises(qdp.NotApplied, match="set to 4, reads back as 3"):
        layer.plan({setting.path: 4}).apply()
    assert setting.value == 2


def test_rollback_that_fails_is_told(layer, host, caplog):
    plan = layer.plan({"flow-timeout": 20, "p4-log-level": 4, f"{ALIAS}/min-flow-layer": 4})
    host.fail("Qdp_SetSwitchMinFlowLayer")
    host.fail("Qdp_Set_Flow_Timeout", nth=2)
    with pytest.raises(qdp.Refused) as failure:
        plan.apply()
    assert failure.value.hint.endswith("; not set back: flow-timeout")
    assert "flow-timeout is not set back" in caplog.text
    assert (layer.setting("flow-timeout").value, layer.setting("p4-log-level").value) == (20, 3)


def test_interrupted_plan_is_rolled_back(layer, monkeypatch):
    plan = layer.plan({"flow-timeout": 20, f"{ALIAS}/min-flow-layer": 4})

    def interrupted(self, result, value, write=Setting._write):
        write(self, result, value)
        if self.name == "min-flow-layer" and value == 4:
            raise KeyboardInterrupt

    monkeypatch.setattr(Setting, "_write", interrupted)
    with pytest.raises(KeyboardInterrupt):
        plan.apply()
    assert (layer.setting("flow-timeout").value, layer.setting(f"{ALIAS}/min-flow-layer").value) == (10, 2)


def test_one_setting_by_two_names_is_refused(layer):
    with pytest.raises(qdp.InvalidArgument) as failure:
        layer.plan({"0/burst-size": 1, f"{ALIAS}/burst-size": 2})
    assert str(failure.value) == "0/burst-size and dvs-production/burst-size are the same setting"


def test_lro_of_a_switch_is_rolled_back_with_that_of_its_ports(layer):
    """Setting a switch's LRO resets its ports'."""
    layer.setting(f"{ALIAS}/port/3/lro").set(False)
    with layer.temporarily({f"{ALIAS}/lro": False}) as changes:
        assert changes == [(True, False, f"{ALIAS}/lro", True)]
        assert not layer.setting(f"{ALIAS}/port/4/lro").value
    values = {port.number: port.settings["lro"].value for port in layer.switch(0).ports()}
    assert values == {number: number != 3 for number in range(36)}


def test_temporary_values_go_when_the_block_ends(layer):
    values = {"flow-timeout": 20, "host-pfs": [7]}

    def current():
        return {path: layer.setting(path).value for path in values}

    before = current()
    with layer.temporarily(values):
        assert current() == values
    assert current() == before
    with pytest.raises(RuntimeError, match="of the block"), layer.temporarily(values):
        raise RuntimeError("of the block")
    assert current() == before


def test_temporary_value_that_cannot_be_set_back_is_told(layer, host):
    with pytest.raises(qdp.NotApplied, match="not set back: flow-timeout"), layer.temporarily({"flow-timeout": 20}):
        host.fail("Qdp_Set_Flow_Timeout")


def test_value_beside_another_is_kept_by_the_setter(layer, host):
    """Where the setter itself can keep a value, one that somebody sets between reading and writing is not set back."""
    layer.setting("fpo-reval-interval").set(70)
    host.script("Qdp_Get_FPO_Reval_Config", outputs=[struct.pack("<4I", 1, 0, 256, 1000)])
    with host.recording() as calls:
        layer.setting("fpo-reval-enabled").set(False)
    assert writes(calls) == [("Qdp_Set_FPO_Reval_Config", [struct.pack("<4I", 0, 0, 256, 70)])]
