"""For every method, arguments with which it succeeds on the embedded host as it is built in, once LibraryInit has run.
Where something has to be done first, they are a function of the module."""

from ipaddress import ip_address

PRODUCTION, STORAGE, SMART = 0, 1, 2  # switches of the built-in host
ALIAS = "dvs-production"
UPLINK, VNIC = 0, 5  # ports of the first switch

BOTH_QUEUES = 3
STATIC_ENTRY = (PRODUCTION, VNIC, 0x554433221102, 100)
# A flow of the hardware's tables, from a VM to a server behind a tunnel.
VM_MAC, SERVER_MAC = 0x021B21020002, 0x0250560A0001
VM, SERVER = int(ip_address("10.1.0.2")), int(ip_address("10.2.0.5"))
FLOW_KEY = (102, VM_MAC, SERVER_MAC, 2, 0, 5102, 6, 1, VM, 0, SERVER, 0, 40001, 443)


def added_entry(module):
    module.AddMACEntry(*STATIC_ENTRY)
    return STATIC_ENTRY


def migrated_port(module):
    module.MigratePort(PRODUCTION, VNIC, 5, 2, BOTH_QUEUES)
    return PRODUCTION, VNIC, BOTH_QUEUES


def registered_mac(module):
    return module.TableVlanMapGet(102, 0)["l2Seg"], VM_MAC


def end_of_a_tunnel(module):
    headers = module.TableTunnelRewriteGet(17)
    mac = int(headers["smac"].replace(":", ""), 16)
    return mac, 0, 1, 1, headers["vlanID"], 4095, int(ip_address(headers["ipsa"])), 0


def source_of_a_tunnel(module):
    return 1, 1, int(ip_address(module.TableTunnelRewriteGet(17)["ipda"])), 0


def arguments_of(method, module):
    """To be asked for before every call: what a call takes away is put there first."""
    arguments = ARGUMENTS[method]
    return arguments(module) if callable(arguments) else arguments


ARGUMENTS = {
    "ListSwitches": (),
    "ListPorts": (PRODUCTION,),
    "GetPortStats": (PRODUCTION, VNIC),
    "ListPortMACTable": (PRODUCTION, VNIC),
    "ClearPortMACTable": (PRODUCTION, VNIC),
    "AddMACEntry": STATIC_ENTRY,
    "DelMACEntry": added_entry,
    "ListSwitchMACTable": (PRODUCTION,),
    "ClearSwitchMACTable": (PRODUCTION,),
    "GetFlowStats": (PRODUCTION, (0, 1), 0),
    "GetRepPortStats": (),
    "DumpFlowTable": (PRODUCTION, 0, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0),
    "DumpDecapFlowTable": (),
    "DumpDecapSaFlowTable": (),
    "DumpPortFlow": (),
    "GetPortConf": (PRODUCTION, 7),
    "MigratePort": (PRODUCTION, VNIC, 5, 2, BOTH_QUEUES),
    "UnpinPort": migrated_port,
    "ResetPort": (PRODUCTION, VNIC, 0),
    "GetPortTxUplink": (PRODUCTION, UPLINK),
    "GetL3SPANRecord": (PRODUCTION, 0, "10.20.0.5", 0),
    "GetUplinkStats": (PRODUCTION, UPLINK),
    "GetUplinkQueueStats": (PRODUCTION, UPLINK, 0, 1),
    "ListRSSEngine": (PRODUCTION, UPLINK),
    "SetUplinkMACLearn": (PRODUCTION, 1),
    "ClearSwitchFlowTable": (PRODUCTION,),
    "EnableSwitchFlowCache": (PRODUCTION, 1),
    "GetPanicOnTxHang": (PRODUCTION,),
    "SetPanicOnTxHang": (PRODUCTION, 1),
    "GetPortNetQInfo": (PRODUCTION, UPLINK),
    "MigrateNetQFilter": (PRODUCTION, VNIC, 0),
    "GetUplinkRingSize": (ALIAS, "vmnic0"),
    "SetUplinkRingSize": (ALIAS, "vmnic0", 4096, 1024),
    "GetSwitchFilterTypes": (ALIAS,),
    "SetSwitchFilterTypes": (ALIAS, "VLANMAC", 1),
    "ListDevAffinity": (),
    "SetDevAffinity": ("vmnic0", 1),
    "DumpLBDebugBuf": (PRODUCTION, 0),
    "FlushLBDebugBuf": (PRODUCTION,),
    "GetLBMetric": (ALIAS,),
    "SetLBMetric": (ALIAS, "count"),
    "SetLBParam": (ALIAS, "cpuload_high", 90),
    "GetLBParams": (ALIAS,),
    "InjectLBTraffic": (PRODUCTION, ((UPLINK, -1, VNIC, 0, 50), (VNIC, 0, UPLINK, -1, 100))),
    "DumpLBStats": (PRODUCTION, 0, 16384, 0, 64),
    "GetSwitchNUMATeam": (ALIAS,),
    "SetSwitchNUMATeam": (ALIAS, 1),
    "GetSwitchBurstSize": (ALIAS,),
    "SetSwitchBurstSize": (ALIAS, 64),
    "GetSwitchOverlayL2Flow": (ALIAS,),
    "SetSwitchOverlayL2Flow": (ALIAS, 1),
    "GetPortLRO": (PRODUCTION, VNIC),
    "SetPortLRO": (PRODUCTION, VNIC, 1),
    "GetSwitchLRO": (PRODUCTION,),
    "SetSwitchLRO": (PRODUCTION, 1),
    "GetSwitchMinFlowLayer": (PRODUCTION,),
    "SetSwitchMinFlowLayer": (PRODUCTION, 3),
    "GetSwitchMetaFlow": (ALIAS,),
    "SetSwitchMetaFlow": (ALIAS, 1),
    "GetFPOEnabled": (ALIAS,),
    "EnableFPO": (ALIAS, {"enabled": True, "models": 7}),
    "GetFPOStats": (PRODUCTION, (2, 5)),
    "GetFPOUplinkStatus": (PRODUCTION, UPLINK),
    "GetFPOUplinkStats": (PRODUCTION, UPLINK),
    "GetFlowTimeout": (),
    "SetFlowTimeout": (30,),
    "ListLCoreIDs": (0,),
    "InitMbufFastslabs": (),
    "GetFPORevalConfig": (),
    "SetFPORevalConfig": (1, 0, -1, 500),
    "GetFPODelayCtOlConfig": (),
    "SetFPODelayCtOlConfig": (1, 8),
    "GetRefreshPktInjectionConfig": (),
    "SetRefreshPktInjectionConfig": (1,),
    "GetSwitchMuxMode": (SMART,),
    "ListSwitchMuxVLAN": (SMART, 0),
    "ListSwitchShadowPorts": (SMART, 0),
    "HostPFSet": (4, 1, 2, 3, 4),
    "HostPFGet": (),
    "LifPortCreate": (700, 701, 702, 2, 3, 0, 1, 1),
    "LifPortUpdate": (17, 1, 0, 1),
    "LifPortList": (0,),
    "VlanPortCreate": (900, 901, 902, 1, 1, 2, 1),
    "VlanPortUpdate": (101, 2),
    "VlanPortList": (0,),
    "PortUpdate": (16, 100),
    "PortDelete": (16,),
    "PortList": (0,),
    "LifStatsGet": (17,),
    "PortStatsGet": (17,),
    "P4IStatsGet": (),
    "P4EStatsGet": (),
    "CTStatsGet": (1,),
    "P4StatsFlowGet": (1,),
    "GetFPOFlowStatsConfig": (),
    "SetFPOFlowStatsConfig": (-1, 500),
    "SetOffloadFlows": (ALIAS, 1),
    "GetOffloadFlows": (ALIAS,),
    "SetOffloadICMPEcho": (1,),
    "GetOffloadICMPEcho": (),
    "DSCPConfSet": (0, 46, 63),
    "DSCPConfGet": (),
    "P4HWTableList": (),
    "P4HWTableDump": (4, 0, 2),
    "P4CacheInvalidate": (4, 0, 2),
    "P4CTContextQuery": (1,),
    "P4MirrorTableDump": (),
    "P4PortMirrorTableDump": (1, 0),
    "FPOQueryContextMgr": (2, 101, 1),
    "FPOHWDestroy": (),
    "TableLifStatsGet": (17,),
    "TablePortStatsGet": (17,),
    "TableP4IStatsGet": (),
    "TableP4EStatsGet": (),
    "TableInputGet": (66,),
    "TableOutputGet": (17,),
    "TableMuxVlanGet": (101, 0),
    "TableVlanMapGet": (102, 0),
    "TableL2SegGet": (1,),
    "TableRegMACGet": registered_mac,
    "TableIPFixGet": (1, 0),
    "TableCTStatsGet": (1, 1),
    "TableCTStateGet": (1, 0),
    "TableMirrorGet": (1, 0),
    "TableMirrorL3Get": (1, 1),
    "TableTunnelTerminateGet": end_of_a_tunnel,
    "TableTunnelSAGet": source_of_a_tunnel,
    "TableFlowKeyGet": FLOW_KEY,
    "TableFlowInfoGet": (1,),
    "TableFlowRewriteGet": (1,),
    "TableTunnelRewriteGet": (1,),
    "TableDSCPConfGet": (),
    "TableUplinkMapGet": (),
    "P4AppSet": (1,),
    "P4AppGet": (),
    "P4UKLatencySet": (1,),
    "P4UKLatencyDump": (0,),
    "FlowOpsStatsGet": (),
    "AdvStatsSetEnabled": (PRODUCTION, 1),
    "AdvStatsGetEnabled": (PRODUCTION,),
    "AdvStatsGetCounters": (PRODUCTION, 0, ""),
    "AgingIntervalGet": (0,),
    "AgingIntervalSet": (0, 20),
    "P4RssOverrideSet": (SMART, 17, 1, 3),
    "P4RssOverrideGet": (SMART, 17),
    "P4LogLevelSet": (3,),
    "P4LogLevelGet": (),
}

# What else to ask for, to see a value in every place of a result.
MORE_ARGUMENTS = {"GetPortConf": (PRODUCTION, 4)}

# What a method prints although nothing fails.
PRINTED = {
    "DumpDecapFlowTable": "Dump Decap  Flow Not supported below 2.10.0.0\n",
    "DumpDecapSaFlowTable": "Dump Decap  Flow Not supported below 2.10.0.0\n",
    "DumpPortFlow": "Dump Port Flow Not supported below 2.10.0.0\n",
    "FPOHWDestroy": "Not supported in release build.\n\n",
}
