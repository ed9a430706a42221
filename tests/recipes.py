"""For every method, arguments with which it succeeds on the default scenario, after LibraryInit. Where the host itself has
to say what there is, the recipe is a function of the module."""

from ipaddress import ip_address

ALIAS = "dvs-production"
UPLINK = (0, 0)
VNIC = (0, 3)
SMARTNIC_SWITCH = 2
SMARTNIC_PORT = 17  # of the SmartNIC, before a port of that switch
SMARTNIC_LCORE = 12  # of that switch
FLOW = 101  # offloaded; its connection is number 1


def is_made_of(recipe, module):
    """The arguments of a recipe. To be asked for before every call: what a call takes away, its recipe puts there."""
    return recipe(module) if callable(recipe) else recipe


def number(mac):
    return int(mac.replace(":", ""), 16)


def static_mac(module):
    entry = (*VNIC, 0xFECA01004002, 7)
    module.AddMACEntry(*entry)
    return entry


def migrated_port(module):
    lcores = [port["txQLM"] for port in module.ListPorts(0) if port["portID"] == VNIC[1]][0]
    return (*VNIC, lcores[0], (lcores[0] + 1) % 8, 1)


def port_away_from_home(module):
    module.MigratePort(*migrated_port(module))
    return (*VNIC, 1)


def new_lif(module):
    module.PortDelete(40)
    return (40, 40, 41, 1, 2, 0, 0, 1)


def port_of_a_lif(module):
    module.LifPortCreate(*new_lif(module))
    return (40,)


def new_vlan(module):
    module.PortDelete(50)
    return (900, 50, 51, 1, 5, 6, 0)


def after(setter, *arguments, returned=()):
    """A recipe that puts a value there first, for a getter whose arguments are `returned`."""

    def recipe(module):
        getattr(module, setter)(*arguments)
        return returned

    return recipe


def mux_vlan(module):
    return next((vlan, 0) for vlan in range(1, 4095) if module.TableMuxVlanGet(vlan, 0)["valid"])


def segment_of_port(module):
    return module.TableInputGet(SMARTNIC_PORT)["l2Seg"]


def mac_behind_port(module):
    """The MAC address of the switch's port that the SmartNIC's port leads to."""
    return number(module.ListPorts(SMARTNIC_SWITCH)[3]["hwAddr"])


def lif_of_port(module):
    return (module.TableOutputGet(SMARTNIC_PORT)["lifId"],)


def first_tunnel(module):
    return next((i,) for i in range(8192) if module.TableTunnelRewriteGet(i)["geneve"])


def tunnel_end(module):
    tunnel = module.TableTunnelRewriteGet(*first_tunnel(module))
    return number(tunnel["smac"]), 8, 1, 1, tunnel["vlanID"], 4095, int(ip_address(tunnel["ipsa"])), 0


def tunnel_peer(module):
    return 1, 1, int(ip_address(module.TableTunnelRewriteGet(*first_tunnel(module))["ipda"])), 0


def key_of_a_flow(module):
    """The key of the first offloaded flow over IPv4, as its line in the flow table shows it."""
    page = module.DumpFlowTable(0, SMARTNIC_LCORE, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
    lines = [flow["key"].split() for flow in page["list"] if "hwFlowIdx: " in flow["actions"]]
    _, source_mac, destination_mac, vlan, tag, source, destination, protocol, vni, source_port, destination_port = next(
        line for line in lines if "." in line[5]
    )
    return (
        *(int(vlan), number(source_mac), number(destination_mac), int(tag) - 2048, 0, int(vni), int(protocol), 1),
        *(int(ip_address(source)), 0, int(ip_address(destination)), 0, int(source_port), int(destination_port)),
    )


RECIPES = {
    "ListSwitches": (),
    "ListPorts": (0,),
    "GetPortStats": VNIC,
    "ListPortMACTable": VNIC,
    "ClearPortMACTable": VNIC,
    "AddMACEntry": (*VNIC, 0xFECA01004002, 7),
    "DelMACEntry": static_mac,
    "ListSwitchMACTable": (0,),
    "ClearSwitchMACTable": (0,),
    "GetFlowStats": (0, (0, 1), 0),
    "GetRepPortStats": (),
    "DumpFlowTable": (0, 1, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0),
    "DumpDecapFlowTable": (),
    "DumpDecapSaFlowTable": (),
    "DumpPortFlow": (),
    "GetPortConf": VNIC,
    "MigratePort": migrated_port,
    "UnpinPort": port_away_from_home,
    "ResetPort": (*VNIC, 1),
    "GetPortTxUplink": VNIC,
    "GetL3SPANRecord": (0, 0, "10.20.0.5", 0),
    "GetUplinkStats": UPLINK,
    "GetUplinkQueueStats": (*UPLINK, 0, 1),
    "ListRSSEngine": UPLINK,
    "SetUplinkMACLearn": (0, 1),
    "ClearSwitchFlowTable": (0,),
    "EnableSwitchFlowCache": (0, 1),
    "GetPanicOnTxHang": (0,),
    "SetPanicOnTxHang": (0, 1),
    "GetPortNetQInfo": UPLINK,
    "MigrateNetQFilter": (*VNIC, 1),
    "GetUplinkRingSize": after("SetUplinkRingSize", ALIAS, "nic0", 1024, 512, returned=(ALIAS, "nic0")),
    "SetUplinkRingSize": (ALIAS, "nic0", 1024, 512),
    "GetSwitchFilterTypes": (ALIAS,),
    "SetSwitchFilterTypes": (ALIAS, "VLANMAC", 1),
    "ListDevAffinity": (),
    "SetDevAffinity": ("nic0", 1),
    "DumpLBDebugBuf": (0, 0),
    "FlushLBDebugBuf": (0,),
    "GetLBMetric": (ALIAS,),
    "SetLBMetric": (ALIAS, "count"),
    "SetLBParam": (ALIAS, "cpuload_low", 7),
    "GetLBParams": (ALIAS,),
    "InjectLBTraffic": (0, ((0, 0xFFFFFFFF, 5, 0, 1), (3, 0, 7, 0, 2))),
    "DumpLBStats": (0, 0, 4, 0, 2),
    "GetSwitchNUMATeam": (ALIAS,),
    "SetSwitchNUMATeam": (ALIAS, 1),
    "GetSwitchBurstSize": after("SetSwitchBurstSize", ALIAS, 1000, returned=(ALIAS,)),
    "SetSwitchBurstSize": (ALIAS, 32),
    "GetSwitchOverlayL2Flow": after("SetSwitchOverlayL2Flow", ALIAS, 1000, returned=(ALIAS,)),
    "SetSwitchOverlayL2Flow": (ALIAS, 1),
    "GetPortLRO": VNIC,
    "SetPortLRO": (*VNIC, 1),
    "GetSwitchLRO": (0,),
    "SetSwitchLRO": (0, 1),
    "GetSwitchMinFlowLayer": (0,),
    "SetSwitchMinFlowLayer": (0, 2),
    "GetSwitchMetaFlow": after("SetSwitchMetaFlow", ALIAS, 1, returned=(ALIAS,)),
    "SetSwitchMetaFlow": (ALIAS, 1),
    "GetFPOEnabled": (ALIAS,),
    "EnableFPO": (ALIAS, {"enabled": True, "models": 0x36}),
    "GetFPOStats": (0, (0, 1)),
    "GetFPOUplinkStatus": UPLINK,
    "GetFPOUplinkStats": UPLINK,
    "GetFlowTimeout": after("SetFlowTimeout", 1000),
    "SetFlowTimeout": (30,),
    "ListLCoreIDs": (0,),
    "InitMbufFastslabs": (),
    "GetFPORevalConfig": (),
    "SetFPORevalConfig": (1, 1, 10, 1000),
    "GetFPODelayCtOlConfig": (),
    "SetFPODelayCtOlConfig": (1, 5),
    "GetRefreshPktInjectionConfig": after("SetRefreshPktInjectionConfig", 1000),
    "SetRefreshPktInjectionConfig": (1,),
    "GetSwitchMuxMode": (SMARTNIC_SWITCH,),
    "ListSwitchMuxVLAN": (SMARTNIC_SWITCH, 0),
    "ListSwitchShadowPorts": (SMARTNIC_SWITCH, 0),
    "HostPFSet": (4, 1, 2, 3, 4),
    "HostPFGet": (),
    "LifPortCreate": new_lif,
    "LifPortUpdate": (64, 1, 0, 0),
    "LifPortList": (0,),
    "VlanPortCreate": new_vlan,
    "VlanPortUpdate": (100, 1),
    "VlanPortList": (0,),
    "PortUpdate": (64, 20),
    "PortDelete": port_of_a_lif,
    "PortList": (0,),
    "LifStatsGet": (1,),
    "PortStatsGet": (1,),
    "P4IStatsGet": (),
    "P4EStatsGet": (),
    "CTStatsGet": (1,),
    "P4StatsFlowGet": (1,),
    "GetFPOFlowStatsConfig": (),
    "SetFPOFlowStatsConfig": (100, 500),
    "SetOffloadFlows": (ALIAS, 1),
    "GetOffloadFlows": (ALIAS,),
    "SetOffloadICMPEcho": (1,),
    "GetOffloadICMPEcho": (),
    "DSCPConfSet": (1, 46, 0x3F),
    "DSCPConfGet": (),
    "P4HWTableList": (),
    "P4HWTableDump": (0, 0, 2),
    "P4CacheInvalidate": (0, 0, 2),
    "P4CTContextQuery": (0,),
    "P4MirrorTableDump": (),
    "P4PortMirrorTableDump": (1, 0),
    "FPOQueryContextMgr": (SMARTNIC_SWITCH, FLOW, 1),
    "FPOHWDestroy": (),
    "TableLifStatsGet": lif_of_port,
    "TablePortStatsGet": (SMARTNIC_PORT,),
    "TableP4IStatsGet": (),
    "TableP4EStatsGet": (),
    "TableInputGet": lif_of_port,
    "TableOutputGet": (SMARTNIC_PORT,),
    "TableMuxVlanGet": mux_vlan,
    "TableVlanMapGet": after("PortUpdate", SMARTNIC_PORT, 77, returned=(77, 0)),
    "TableL2SegGet": lambda module: (segment_of_port(module),),
    "TableRegMACGet": lambda module: (segment_of_port(module), mac_behind_port(module)),
    "TableIPFixGet": (1, 0),
    "TableCTStatsGet": (2, 0),
    "TableCTStateGet": (1, 0),
    "TableMirrorGet": (0, 0),
    "TableMirrorL3Get": (0, 0),
    "TableTunnelTerminateGet": tunnel_end,
    "TableTunnelSAGet": tunnel_peer,
    "TableFlowKeyGet": key_of_a_flow,
    "TableFlowInfoGet": (FLOW,),
    "TableFlowRewriteGet": (FLOW,),
    "TableTunnelRewriteGet": first_tunnel,
    "TableDSCPConfGet": (),
    "TableUplinkMapGet": (),
    "P4AppSet": (1,),
    "P4AppGet": (),
    "P4UKLatencySet": (1,),
    "P4UKLatencyDump": after("P4UKLatencySet", 1, returned=(0,)),
    "FlowOpsStatsGet": (),
    "AdvStatsSetEnabled": (0, 1),
    "AdvStatsGetEnabled": (0,),
    "AdvStatsGetCounters": after("AdvStatsSetEnabled", 0, 1, returned=(0, 0, "")),
    "AgingIntervalGet": after("AgingIntervalSet", 0, 1000, returned=(0,)),
    "AgingIntervalSet": (0, 20),
    "P4RssOverrideSet": (SMARTNIC_SWITCH, 3, 1, 2),
    "P4RssOverrideGet": (SMARTNIC_SWITCH, 70),
    "P4LogLevelSet": (2,),
    "P4LogLevelGet": (),
}
