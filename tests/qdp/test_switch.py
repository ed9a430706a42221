"""Switches, ports, uplinks and lcores: what they find, and what the platform is called with."""

import json
import struct

import pytest
from qdp_host import Capacity

import qdp

ALIAS = "dvs-production"


@pytest.fixture
def layer(host):
    host.freeze()
    return qdp.Host()


def operations(calls, *names):
    return [(call.operation, call.arguments) for call in calls if call.operation in names]


# --- Finding ---


def test_switch_goes_by_number_name_and_alias(layer):
    for name in (0, "0", "portset-0", ALIAS):
        switch = layer.switch(name)
        assert (switch.number, switch.name, switch.alias, switch.path) == (0, "portset-0", ALIAS, ALIAS)
    # Known by its alias alone, which is the name in the datapath, too.
    assert [layer.switch(name).alias for name in (1, "dvs-storage")] == ["dvs-storage"] * 2


def test_finding_a_switch_by_number_loads_nothing(layer, host):
    with host.recording() as calls:
        assert layer.switch(2).number == 2
    assert [call.operation for call in calls] == ["Qdp_Get_Switch_List"]


@pytest.mark.parametrize("name", [9, "9", "no-such-switch", "", "dvs-production\0", "legacy-network", "portset-00"])
def test_switch_that_is_not_there(layer, name):
    with pytest.raises(qdp.NotFound) as failure:
        layer.switch(name)
    assert str(failure.value) == f"no switch {name}".rstrip()
    assert "0 (portset-0), 1 (dvs-storage)" in failure.value.hint


@pytest.mark.parametrize("number", [16, -1, 1 << 32, True, 0.0, None])
def test_number_that_no_switch_can_have(layer, host, number):
    with host.recording() as calls, pytest.raises(qdp.InvalidArgument):
        layer.switch(number)
    assert calls == []


def test_ports_and_uplinks(layer):
    switch = layer.switch(0)
    ports = switch.ports()
    assert [port.number for port in ports] == list(range(36))
    assert [type(port) for port in ports[:3]] == [qdp.Uplink, qdp.Uplink, qdp.Port]
    assert [uplink.number for uplink in switch.uplinks()] == [0, 1]
    port = switch.port(5)
    assert (port.number, port.path, port.name, port.info) == (5, f"{ALIAS}/port/5", f"{ALIAS}/port/5", ports[5].info)
    assert isinstance(switch.uplink(1), qdp.Uplink)
    with pytest.raises(qdp.NotFound, match="switch dvs-production has no port 36"):
        switch.port(36)
    with pytest.raises(qdp.NotFound, match="dvs-production/port/5 is no uplink"):
        switch.uplink(5)
    for number in (-1, 16384, "5", True):
        with pytest.raises(qdp.InvalidArgument):
            switch.port(number)


def test_lcores(layer):
    switch = layer.switch(1)
    assert [lcore.number for lcore in switch.lcores()] == [8, 9, 10, 11]
    assert switch.lcore(9).switch is switch
    with pytest.raises(qdp.NotFound, match="no lcore 0"):
        switch.lcore(0)


def test_devices(layer):
    assert [device.name for device in layer.devices()] == ["nic0", "nic1", "nic4", "nic5", "nic8", "nic9"]
    assert layer.device("nic1").info.affinity == 1
    with pytest.raises(qdp.NotFound):
        layer.device("nic7")


def test_reprs_show_what_one_needs(layer):
    switch = layer.switch(1)
    assert [repr(each) for each in (layer, switch, switch.port(0), switch.port(3), switch.lcores()[0])] == [
        "<Host>",
        "<Switch 1: dvs-storage, 8 ports>",
        f"<Uplink dvs-storage/port/0: UPLINK, {switch.port(0).info.hwAddr}>",
        f"<Port dvs-storage/port/3: {switch.port(3).info.clientType}, {switch.port(3).info.hwAddr}>",
        "<Lcore 8 of dvs-storage>",
    ]
    assert repr(switch.named_uplink("nic0")) == "<NamedUplink dvs-storage/uplink/nic0>"
    assert repr(switch.settings["lro"]) == "<Setting dvs-storage/lro>"
    assert repr(layer.device("nic0")) == "<Device nic0>"


# --- Aliases ---


def scenario(tmp_path, *switches):
    """A host of switches by (alias, portset name), which goes by its portset property."""
    path = tmp_path / "scenario.json"
    path.write_text(
        json.dumps(
            {
                "switches": [
                    {
                        "alias": alias,
                        "id": alias + "-id",
                        "portset": portset,
                        "hostProperties": {"com.tarnix.common.host.portset": portset},
                        "globalProperties": {"com.tarnix.common.alias": alias},
                        "ports": [{"name": "nic0", "client": "UPLINK"}],
                    }
                    for alias, portset in switches
                ]
            }
        )
    )
    return str(path)


def test_name_that_begins_with_another_one_is_not_taken_for_it(layer, host, tmp_path):
    """The module finds "net-1" when it is asked for the alias of "net-10"."""
    host.load(scenario(tmp_path, ("front", "net-1"), ("back", "net-10")))
    assert [switch.alias for switch in layer.switches()] == ["front", None]
    with pytest.raises(qdp.NotFound, match="the alias of switch 1, net-10, is not known"):
        layer.switch(1).settings["burst-size"].get()
    switch = layer.switch("back")
    assert (switch.number, switch.alias) == (1, "back")
    assert [switch.alias for switch in layer.switches()] == ["front", "back"]
    assert layer.switch(1).settings["burst-size"].get() == 32


def test_alias_that_is_new_is_found(layer, host, tmp_path):
    """The snapshot is loaded when it is first needed, and once more for an alias that is not in it."""
    host.load(scenario(tmp_path, ("front", "net-1")))
    with host.recording() as calls:
        assert layer.switch("front").number == 0
    assert len(operations(calls, "DVSHCK_StateGet")) == 1
    with host.recording() as calls, pytest.raises(qdp.NotFound):
        layer.switch("back")
    assert len(operations(calls, "DVSHCK_StateGet")) == 1
    host.load(scenario(tmp_path, ("front", "net-1"), ("back", "net-2")))
    with host.recording() as calls:
        assert layer.switch("back").number == 1
        assert layer.switch("front").number == 0
    assert len(operations(calls, "DVSHCK_StateGet")) == 1


def test_snapshot_that_cannot_be_loaded(layer, host):
    host.fail("DVSHCK_StateGet", status=0xBAD0001)
    with pytest.raises(qdp.Refused, match="LibraryInit: status 0xbad0001"):
        layer.switch(ALIAS)
    assert layer.switch(ALIAS).number == 0


def test_without_a_snapshot_a_switch_goes_by_its_name(layer, host):
    host.fail("DVSHCK_StateGet", status=7, times=0)
    switch = layer.switch(0)
    assert (switch.alias, switch.path, switch.port(3).path) == (None, "portset-0", "portset-0/port/3")
    assert switch.settings["lro"].value is True
    with pytest.raises(qdp.Refused, match="LibraryInit: status 0x7"):
        switch.settings["burst-size"].get()


# --- Ports ---


def test_port_reads_what_its_methods_give(layer):
    port, uplink = layer.switch(0).port(3), layer.switch(0).uplink(0)
    pairs = [
        (port.stats(), qdp.methods.GetPortStats(0, 3)),
        (port.conf(), qdp.methods.GetPortConf(0, 3)),
        (port.queues(), qdp.methods.GetPortNetQInfo(0, 3)),
        (port.tx_uplink(), qdp.methods.GetPortTxUplink(0, 3)),
        (uplink.rss_engines(), qdp.methods.ListRSSEngine(0, 0)),
        (port.mac_table(), qdp.methods.ListPortMACTable(0, 3)),
        (port.macs(), qdp.methods.ListPortMACTable(0, 3).MacTableList),
        (uplink.stats(), qdp.methods.GetUplinkStats(0, 0)),
        (uplink.port_stats(), qdp.methods.GetPortStats(0, 0)),
        (uplink.queue(2, direction=1), qdp.methods.GetUplinkQueueStats(0, 0, 1, 2)),
        (uplink.offload(), qdp.methods.GetFPOUplinkStatus(0, 0)),
        (uplink.offload_stats(), qdp.methods.GetFPOUplinkStats(0, 0)),
    ]
    for found, expected in pairs:
        assert found == expected and found


def test_queue_and_direction_are_not_exchanged(layer, host):
    with host.recording() as calls:
        layer.switch(0).uplink(1).queue(7, direction=1)
    assert operations(calls, "Qdp_Get_Uplink_Queue_Stats") == [
        ("Qdp_Get_Uplink_Queue_Stats", [0, 1, 7, 1, Capacity(size=192)])
    ]
    with pytest.raises(qdp.InvalidArgument):
        layer.switch(0).uplink(1).queue(7, direction=2)


def test_mac_entry_goes_to_the_switch_of_its_port(layer, host):
    """The module itself takes the switch from the upper half of the VLAN, and the address with its last byte first."""
    port = layer.switch(2).port(3)
    with host.recording() as calls:
        port.add_mac("02:00:5e:10:ab:01", vlan=100)
        port.delete_mac("0200.5e10.ab01", vlan=100)
    assert operations(calls, "Qdp_MAC_Entry_Ops") == [
        ("Qdp_MAC_Entry_Ops", [2, 3, b"\x02\x00\x5e\x10\xab\x01", 100, 1]),
        ("Qdp_MAC_Entry_Ops", [2, 3, b"\x02\x00\x5e\x10\xab\x01", 100, 0]),
    ]
    with host.recording() as calls:
        for mac, vlan in [("02:00:5e:10:ab", 1), ("02:00:5e:10:ab:01", 4095), ("02:00:5e:10:ab:01", 0x00050064)]:
            with pytest.raises(qdp.InvalidArgument):
                port.add_mac(mac, vlan)
    assert calls == []


def test_verbs_of_ports(layer, host):
    host.fail("Qdp_Migrate_Port")  # its status 1: the balancer runs
    port = layer.switch(0).port(3)
    lcore = port.info.txQLM[0]
    with host.recording() as calls:
        with pytest.raises(qdp.BalancerRunning):
            port.migrate(lcore, (lcore + 1) % 8, 1)
        port.migrate(lcore, (lcore + 1) % 8, 1)
        port.unpin(1)
        port.reset(0)
        port.migrate_filter(1)
        port.clear_macs()
    assert [(call.operation, call.arguments) for call in calls] == [
        ("Qdp_Migrate_Port", [0, 3, lcore, (lcore + 1) % 8, 1]),
        ("Qdp_Migrate_Port", [0, 3, lcore, (lcore + 1) % 8, 1]),
        ("Qdp_Unpin_Port", [0, 3, 1]),
        ("Qdp_Reset_Port", [0, 3, 0]),
        ("Qdp_Migrate_NetQ_Filter", [0, 3, 1]),
        ("Qdp_Clear_Port_MAC_Table", [0, 3]),
    ]
    for verb in (port.unpin, port.reset, port.migrate_filter):
        with pytest.raises(qdp.InvalidArgument):
            verb(-1)


# --- Switches ---


def test_switch_reads_what_its_methods_give(layer):
    production, smartnic = layer.switch(0), layer.switch(2)
    production.settings["advanced-stats"].set(True)
    pairs = [
        (production.macs(), qdp.methods.ListSwitchMACTable(0).MacTableList),
        (production.mac_table(), qdp.methods.ListSwitchMACTable(0)),
        (production.flow_stats(), qdp.methods.GetFlowStats(0, tuple(range(8)), 0)),
        (production.fpo_stats([1, 3]), qdp.methods.GetFPOStats(0, (1, 3))),
        (production.lcores()[1].flow_stats(), qdp.methods.GetFlowStats(0, (1,), 0)[0]),
        (production.lcores()[1].fpo_stats(), qdp.methods.GetFPOStats(0, (1,))[0]),
        (production.debug_buffer(), qdp.methods.DumpLBDebugBuf(0, 0)),
        (production.advanced_stats(), qdp.methods.AdvStatsGetCounters(0, 0, "")),
        (production.span_record("10.20.0.5"), qdp.methods.GetL3SPANRecord(0, 0, "10.20.0.5", 0)),
        (production.is_mux(), False),
        (smartnic.is_mux(), True),
        (layer.lcores(), tuple(range(16))),
        (layer.prepare_buffers(), True),
    ]
    for found, expected in pairs:
        assert found == expected
    with pytest.raises(qdp.InvalidArgument):
        production.span_record("10.20.0.5", 1 << 24)


def test_pages_of_mux_switches_are_read_to_the_end(layer):
    """180 VLANs at most 64 a page, and 180 shadow ports at most 85 a page."""
    switch = layer.switch(2)
    assert [each.vlanID for each in switch.mux_vlans()] == list(range(100, 280))
    assert [each.muxVLANID for each in switch.shadow_ports()] == list(range(100, 280))


def test_long_lists_of_lcores_are_split(layer, host):
    """An answer holds 32 lcores."""
    for method, operation, entry in [
        ("flow_stats", "Qdp_Get_Flow_Stats", struct.Struct("<4I26Q")),
        ("fpo_stats", "Qdp_Get_FPO_Stats", struct.Struct("<I10Q")),
    ]:
        lcores = list(range(40))
        for part in (lcores[:32], lcores[32:]):
            zeros = [0] * (len(entry.unpack(bytes(entry.size))) - 1)
            answer = struct.pack("<II", len(part), 0) + b"".join(entry.pack(lcore, *zeros) for lcore in part)
            host.script(operation, outputs=[answer])
        with host.recording() as calls:
            stats = getattr(layer.switch(0), method)(lcores)
        assert [each.lcoreID for each in stats] == lcores
        asked = [argument for call in calls for argument in call.arguments if isinstance(argument, bytes)]
        assert asked == [struct.pack("<32I", *lcores[:32]), struct.pack("<8I", *lcores[32:])]
    for lcores in ([64], [-1], ["0"]):
        with pytest.raises(qdp.InvalidArgument):
            layer.switch(0).flow_stats(lcores)


def test_verbs_of_switches(layer, host):
    switch = layer.switch(1)
    with host.recording() as calls:
        switch.clear_macs()
        switch.clear_flows()
        switch.flush_debug_buffer()
        switch.clear_advanced_stats()
    assert [(call.operation, call.arguments) for call in calls] == [
        ("Qdp_Clear_Switch_MAC_Table", [1]),
        ("Qdp_Clear_Switch_Flow_Table", [1]),
        ("Qdp_FlushLBDebugBuf", [1]),
        ("Qdp_AdvStatsSetEnabled", [1, 2]),
    ]
    assert list(switch.flows()) == []
    switch.inject_traffic([[0, -1, 2, 0, 5]])
    assert "traffic of 1 flows injected" in switch.debug_buffer()


# --- Balancer ---


def test_balancer_gives_no_more_than_is_asked_for(layer):
    """The module repeats the counts for each further answer, and so goes on behind the end."""
    switch = layer.switch(0)
    everything = switch.balancer_stats()
    assert [len(part) for part in everything] == [34, 2, 8]
    raw = qdp.methods.DumpLBStats(0, 0, 20, 2, 3)
    assert len(raw[0]) + len(raw[1]) > 20  # which the layer is there for
    ports, uplinks, contexts = switch.balancer_stats(0, 20, 2, 3)
    assert [uplink["port ID"] for uplink in uplinks] == [0, 1]
    assert [port["port ID"] for port in ports] == list(range(2, 20))
    assert [context["ctx ID"] for context in contexts] == [2, 3, 4]
    assert switch.balancer_stats(0, 0, 0, 0) == ([], [], [])


def test_contexts_behind_the_end_are_cut(layer, host):
    """An answer: next port, next context, number of entries; then contexts, of which the type is 2."""

    def answer(following, *contexts):
        entries = [struct.pack("<IIiIIQQI", 2, context, -1, 0, 0, 0, 0, 0) for context in contexts]
        return struct.pack("<III12x", 0xFFFFFFFF, following, len(contexts)) + b"".join(entries)

    host.script("Qdp_DumpLBStats", outputs=[answer(4, 2, 3)])
    host.script("Qdp_DumpLBStats", outputs=[answer(0xFFFFFFFF, 4, 5, 6)])
    with host.recording() as calls:
        _, _, contexts = layer.switch(0).balancer_stats(0, 0, 2, 3)
    assert [context["ctx ID"] for context in contexts] == [2, 3, 4]
    assert [arguments[3:5] for _, arguments in operations(calls, "Qdp_DumpLBStats")] == [[2, 3], [4, 3]]
