// The module `_libqdp`: its table of methods, which is also the map of the source. The comment above a run of methods
// names the file that they live in.
#include "core/python.h"

namespace qdp {

// A method gets the module and its positional arguments.
using Method = PyObject*(PyObject* module, PyObject* args);

// A row declares its method, which no other file does. The interpreter takes the parameter names for help() and
// inspect.signature() from the text before "--", and leaves the text behind it as the method's __doc__.
#define METHOD(name, function, parameters, doc)                         \
    {                                                                   \
        name,                                                           \
            [] {                                                        \
                Method function;                                        \
                return function;                                        \
            }(),                                                        \
            METH_VARARGS, name "($module" parameters ", /)\n--\n\n" doc \
    }

// The order is part of the interface.
static PyMethodDef methods[] = {
    // datapath/ports/inventory.cpp
    METHOD("ListSwitches", PyQDP_List_Switches, "", "List All QDP switches"),
    METHOD("ListPorts", PyQDP_List_Ports, ", switch", "List all ports on a QDP switch."),
    // datapath/stats/port_stats.cpp
    METHOD("GetPortStats", PyQDP_Get_Port_Stats, ", switch, port", "Get a port's statistics"),
    // datapath/mac/mac_table.cpp
    METHOD("ListPortMACTable", PyQDP_List_Port_MACTable, ", switch, port", "List all mac entries for a port"),
    METHOD("ClearPortMACTable", PyQDP_Clear_Port_MACTable, ", switch, port", "clear mac entries for a port"),
    METHOD("AddMACEntry", PyQDP_Add_MAC_Entry, ", switch, port, mac, vlan", "Add a MAC Entry for a port"),
    METHOD("DelMACEntry", PyQDP_Del_MAC_Entry, ", switch, port, mac, vlan", "Delete a MAC Entry for a port"),
    METHOD("ListSwitchMACTable", PyQDP_List_Switch_MACTable, ", switch", "List MAC table for a switch"),
    METHOD("ClearSwitchMACTable", PyQDP_Clear_Switch_MACTable, ", switch", "Clear MAC table for a switch"),
    // datapath/stats/lcore_stats.cpp
    METHOD("GetFlowStats", PyQDP_Get_Flow_Stats, ", selector, lcores, value", "Get flow stats for lcores"),
    // datapath/stats/port_stats.cpp
    METHOD("GetRepPortStats", PyQDP_Get_Rep_Port_Stats, "", "Get rep port stats for a port in switch"),
    // datapath/flowcache/flow_table.cpp
    METHOD("DumpFlowTable", PyQDP_Dump_Flow_Table,
           ", selector, lcore, start_index, option, source_mac_filter, source_mac, destination_mac_filter, "
           "destination_mac, source_ip_version, source_ip, destination_ip_version, destination_ip, filter_1, filter_2, "
           "filter_3, filter_4, filter_5",
           "Dump flow table for a lcore"),
    METHOD("DumpDecapFlowTable", PyQDP_Dump_Decap_Flow_Table, "", "Dump decap flow table for a switch"),
    METHOD("DumpDecapSaFlowTable", PyQDP_Dump_Decap_Sa_Flow_Table, "", "Dump decap SA flow table for a switch"),
    METHOD("DumpPortFlow", PyQDP_Dump_Port_Flow, "", "Dmo port flows for a switch"),
    // datapath/ports/port_conf.cpp
    METHOD("GetPortConf", PyQDP_Get_Port_Conf, ", switch, port", "Get Qdp Port Configuration"),
    // datapath/ports/port_control.cpp
    METHOD("MigratePort", PyQDP_Migrate_Port, ", switch, port, value_1, value_2, value_3",
           "Migrate port between Lcores"),
    METHOD("UnpinPort", PyQDP_Unpin_Port, ", switch, port, value", "Unpin port from Lcore"),
    METHOD("ResetPort", PyQDP_Reset_Port, ", switch, port, value", "Reset a port"),
    METHOD("GetPortTxUplink", PyQDP_Get_Port_Tx_Uplink, ", switch, port", "Get the TX uplink of a given port"),
    // datapath/features/l3span.cpp
    METHOD("GetL3SPANRecord", PyQDP_Get_L3SPAN_Record, ", switch, is_ipv6, destination, value",
           "Get L3SPAN record for a destination IP"),
    // datapath/stats/uplink_stats.cpp
    METHOD("GetUplinkStats", PyQDP_Get_Uplink_Stats, ", switch, port", "Get private stats of an uplink port"),
    METHOD("GetUplinkQueueStats", PyQDP_Get_Uplink_Queue_Stats, ", switch, port, direction, queue",
           "Get uplink queue stats"),
    // datapath/features/rss_engine.cpp
    METHOD("ListRSSEngine", PyQDP_List_RSS_Engine, ", switch, port", "List RSS engines"),
    // datapath/ports/port_control.cpp
    METHOD("SetUplinkMACLearn", PyQDP_Set_Uplink_MAC_Learn, ", switch, enabled", "Set uplink MAC Learn policy"),
    // datapath/flowcache/flowcache_control.cpp
    METHOD("ClearSwitchFlowTable", PyQDP_Clear_Switch_Flow_Table, ", switch", "Clear flow table for a switch"),
    METHOD("EnableSwitchFlowCache", PyQDP_Enable_Switch_Flow_Cache, ", switch, enabled",
           "Enable flow cache for a switch"),
    // datapath/ports/port_control.cpp
    METHOD("GetPanicOnTxHang", PyQDP_Get_Panic_On_Tx_Hang, ", switch",
           "Get if panic when uplink Tx hang detected on a switch"),
    METHOD("SetPanicOnTxHang", PyQDP_Set_Panic_On_Tx_Hang, ", switch, enabled",
           "Set if panic when uplink Tx hang detected on a switch"),
    // datapath/uplink/netq.cpp
    METHOD("GetPortNetQInfo", PyQDP_Get_Port_NetQ_Info, ", switch, port", "Get port's netq informastion"),
    METHOD("MigrateNetQFilter", PyQDP_Migrate_NetQ_Filter, ", switch, port, value", "Migrate vNIC port's NetQ filter"),
    // datapath/uplink/ring_size.cpp
    METHOD("GetUplinkRingSize", PyQDP_Get_Uplink_Ring_Size, ", switch, port", "Get uplink's Tx and Rx ring size"),
    METHOD("SetUplinkRingSize", PyQDP_Set_Uplink_Ring_Size, ", switch, port, tx_size, rx_size",
           "Set uplink's Tx and Rx ring size"),
    // datapath/uplink/filter_types.cpp
    METHOD("GetSwitchFilterTypes", PyQDP_Get_Switch_Filter_Types, ", alias", "Get the Filters Supported on the switch"),
    METHOD("SetSwitchFilterTypes", PyQDP_Set_Switch_Filter_Types, ", alias, filter_class, enabled",
           "Set the Filters Supported on the on switch"),
    // datapath/placement/device_affinity.cpp
    METHOD("ListDevAffinity", PyQDP_List_Device_Affinity, "", "List device affinity for all the hwnics on this system"),
    METHOD("SetDevAffinity", PyQDP_Set_Device_Affinity, ", device, affinity", "Set device affinity for a given hwnic"),
    // datapath/lb/debug_buffer.cpp
    METHOD("DumpLBDebugBuf", PyQDP_DumpLBDebugBuf, ", switch, flag", "Dump the current state of the TLB debug buffer"),
    METHOD("FlushLBDebugBuf", PyQDP_FlushLBDebugBuf, ", switch", "Flush the TLB debug buffer"),
    // datapath/lb/metric.cpp
    METHOD("GetLBMetric", PyQDP_GetLBMetric, ", alias", "Get thread load balancing metric"),
    METHOD("SetLBMetric", PyQDP_SetLBMetric, ", alias, metric", "Set thread load balancing metric"),
    // datapath/lb/parameters.cpp
    METHOD("SetLBParam", PyQDP_SetLBParam, ", alias, name, value", "Set thread load balancing runtime parameter"),
    METHOD("GetLBParams", PyQDP_GetLBParams, ", alias", "Get thread load balancing runtime parameters"),
    // datapath/lb/traffic.cpp
    METHOD("InjectLBTraffic", PyQDP_InjectLBTraffic, ", switch, traffic", "Inject LB Traffic"),
    // datapath/lb/stats.cpp
    METHOD("DumpLBStats", PyQDP_DumpLBStats, ", switch, first_port, port_count, first_context, context_count",
           "Dump the latest LB statistics"),
    // datapath/features/switch_settings.cpp
    METHOD("GetSwitchNUMATeam", PyQDP_GetSwitchNUMATeam, ", alias", "Get the current status NUMA awareness of teaming"),
    METHOD("SetSwitchNUMATeam", PyQDP_SetSwitchNUMATeam, ", alias, enabled",
           "Set NUMA awareness of teaming to enabled or disabled"),
    METHOD("GetSwitchBurstSize", PyQDP_GetSwitchBurstSize, ", alias", "Get burst size of an QDP switch"),
    METHOD("SetSwitchBurstSize", PyQDP_SetSwitchBurstSize, ", alias, burst_size", "Set burst size of an QDP switch"),
    METHOD("GetSwitchOverlayL2Flow", PyQDP_GetSwitchOverlayL2Flow, ", alias",
           "Get OverlayL2Flow flag  of an QDP switch"),
    METHOD("SetSwitchOverlayL2Flow", PyQDP_SetSwitchOverlayL2Flow, ", alias, value",
           "Set OverlayL2Flow flag  of an QDP switch"),
    // datapath/features/lro.cpp
    METHOD("GetPortLRO", PyQDP_GetPortLRO, ", switch, port", "Get the current status of LRO of a port"),
    METHOD("SetPortLRO", PyQDP_SetPortLRO, ", switch, port, enabled", "Enable or Disable LRO for a ort"),
    METHOD("GetSwitchLRO", PyQDP_GetSwitchLRO, ", switch", "Get the current status of LRO of a switch"),
    METHOD("SetSwitchLRO", PyQDP_SetSwitchLRO, ", switch, enabled",
           "Enable or Disable LRO for a switch. This overrides per-port setting"),
    // datapath/features/min_flow_layer.cpp
    METHOD("GetSwitchMinFlowLayer", PyQDP_GetSwitchMinFlowLayer, ", switch",
           "Get the current status switch minimum flow layer"),
    METHOD("SetSwitchMinFlowLayer", PyQDP_SetSwitchMinFlowLayer, ", switch, layer",
           "Set the minimum flow layer used by a switch"),
    // datapath/features/switch_settings.cpp
    METHOD("GetSwitchMetaFlow", PyQDP_GetSwitchMetaFlow, ", alias", "Get the current status of MetaFlow on a DVS"),
    METHOD("SetSwitchMetaFlow", PyQDP_SetSwitchMetaFlow, ", alias, value", "Enable/Disable MetaFlow on a DVS"),
    // datapath/features/fpo.cpp
    METHOD("GetFPOEnabled", PyQDP_GetFPOEnabled, ", alias", "Get FPO enabled on a DVS"),
    METHOD("EnableFPO", PyQDP_EnableFPO, ", alias, settings", "Enable/Disable FPO on a DVS"),
    // datapath/features/fpo_stats.cpp
    METHOD("GetFPOStats", PyQDP_Get_FPO_Stats, ", switch, lcores", "Get FPO stats for lcores"),
    METHOD("GetFPOUplinkStatus", PyQDP_Get_FPO_Uplink_Status, ", switch, port", "Get FPO status for an uplink"),
    METHOD("GetFPOUplinkStats", PyQDP_Get_FPO_Uplink_Stats, ", switch, port", "Get FPO stats for an uplink"),
    // datapath/features/timing.cpp
    METHOD("GetFlowTimeout", PyQDP_GetFlowTimeout, "", "Get flow timeout in seconds"),
    METHOD("SetFlowTimeout", PyQDP_SetFlowTimeout, ", seconds", "Set flow timeout in seconds"),
    // datapath/placement/lcore_ids.cpp
    METHOD("ListLCoreIDs", PyQDP_ListLCoreIDs, ", selector", "List All lcore IDs"),
    // datapath/placement/mbuf_fastslabs.cpp
    METHOD("InitMbufFastslabs", PyQDP_InitMbufFastslabs, "", "Init QDP mbuf fastslabs"),
    // datapath/features/timing.cpp
    METHOD("GetFPORevalConfig", PyQDP_Get_FPO_Reval_Config, "", "Get FPO revaliation config"),
    METHOD("SetFPORevalConfig", PyQDP_Set_FPO_Reval_Config, ", enabled, inject_packet, reval_interval, flow_scan_quota",
           "Set FPO revaliation config"),
    METHOD("GetFPODelayCtOlConfig", PyQDP_Get_FPO_DelayCtOl_Config, "", "Get FPO CT OL delay config"),
    METHOD("SetFPODelayCtOlConfig", PyQDP_Set_FPO_DelayCtOl_Config, ", enabled, num_packets",
           "Set FPO CT OL delay config"),
    METHOD("GetRefreshPktInjectionConfig", PyQdp_Get_Refresh_Pkt_Injection, "", "Get refresh packet injection config"),
    METHOD("SetRefreshPktInjectionConfig", PyQdp_Set_Refresh_Pkt_Injection, ", value",
           "Set refresh packet injection config"),
    // smartnic/ports/mux.cpp
    METHOD("GetSwitchMuxMode", PyQDP_GetSwitchMuxMode, ", switch", "Get Mux mode of an QDP switch"),
    METHOD("ListSwitchMuxVLAN", PyQDP_ListSwitchMuxVLAN, ", switch, start_fc_port",
           "Get internal VLAN map of a Mux QDP switch"),
    METHOD("ListSwitchShadowPorts", PyQDP_ListSwitchShadowPorts, ", switch, start_fc_port",
           "List all shadow port configuartion"),
    // smartnic/ports/host_pf.cpp
    METHOD("HostPFSet", PyQDP_HostPFSet, ", count, pf_0, pf_1, pf_2, pf_3", "Set host PF lifs"),
    METHOD("HostPFGet", PyQDP_HostPFGet, "", "Get Host PFs"),
    // smartnic/ports/lif_port.cpp
    METHOD("LifPortCreate", PyQDP_LifPortCreate,
           ", lif, source_port, rep_port, flow_key_type, lif_type, is_mux_pf, fwd_mode, status", "create an LIF port"),
    METHOD("LifPortUpdate", PyQDP_LifPortUpdate, ", lif, flow_key_type, is_mux_pf, fwd_mode", "update lif port config"),
    METHOD("LifPortList", PyQDP_LifPortList, ", start_index", "List lif ports"),
    // smartnic/ports/vlan_port.cpp
    METHOD("VlanPortCreate", PyQDP_VlanPortCreate,
           ", mux_vlan, source_port, rep_port, flow_key_type, pf_lif_0, pf_lif_1, status",
           "Create a MUX vlan based port"),
    METHOD("VlanPortUpdate", PyQDP_VlanPortUpdate, ", mux_vlan, flow_key_type", "Update MUX vlan port config"),
    METHOD("VlanPortList", PyQDP_VlanPortList, ", start_index", "List EMU ports(MUX VLAN ports)"),
    // smartnic/ports/output_port.cpp
    METHOD("PortUpdate", PyQDP_PortUpdate, ", port, default_vlan", "Update port default VLAN"),
    METHOD("PortDelete", PyQDP_PortDelete, ", port", "Delete a port"),
    METHOD("PortList", PyQDP_PortList, ", start_index", "List p4 output table"),
    // smartnic/stats/pipeline_stats.cpp
    METHOD("LifStatsGet", PyQDP_LifStatsGet, ", lif", "Get Lif stats"),
    METHOD("PortStatsGet", PyQDP_PortStatsGet, ", port", "Get port stats"),
    METHOD("P4IStatsGet", PyQDP_P4IStatsGet, "", "Get p4 ingress stats"),
    METHOD("P4EStatsGet", PyQDP_P4EStatsGet, "", "Get p4 egress stats"),
    METHOD("CTStatsGet", PyQDP_CTStatsGet, ", index", "Get ConnTrack Per Port Stats"),
    // smartnic/stats/flow_stats.cpp
    METHOD("P4StatsFlowGet", PyQDP_P4StatsFlowGet, ", index", "Get P4 flow stats"),
    // smartnic/settings/fpo_flow_stats_config.cpp
    METHOD("GetFPOFlowStatsConfig", PyQDP_Get_FPO_Flow_Stats_Config, "", "Get FPO stats update config"),
    METHOD("SetFPOFlowStatsConfig", PyQDP_Set_FPO_Flow_Stats_Config, ", interval, scan_quota",
           "Set FPO stats update config"),
    // smartnic/settings/offload.cpp
    METHOD("SetOffloadFlows", PyQDP_SetOffloadFlows, ", alias, enabled", "Enable/disable offload flows"),
    METHOD("GetOffloadFlows", PyQDP_GetOffloadFlows, ", alias", "Get offload flows"),
    METHOD("SetOffloadICMPEcho", PyQDP_SetOffloadICMPEcho, ", enabled", "Enable/disable offload icmp echo flow"),
    METHOD("GetOffloadICMPEcho", PyQDP_GetOffloadICMPEcho, "", "Get offload icmp echo flow"),
    // smartnic/settings/dscp.cpp
    METHOD("DSCPConfSet", PyQDP_DSCPConfSet, ", selector, dscp, mask", "Set DSCP configuration"),
    METHOD("DSCPConfGet", PyQDP_DSCPConfGet, "", "Get DSCP configuration"),
    // smartnic/diag/hw_tables.cpp
    METHOD("P4HWTableList", PyQDP_P4HWTableList, "", "List HBM based p4 tables"),
    METHOD("P4HWTableDump", PyQDP_P4HWTableDump, ", table, first_index, count", "Dump HW table entry data"),
    METHOD("P4CacheInvalidate", PyQDP_P4CacheInvalidate, ", table, first_index, count", "Invalidate P4 MPU cache"),
    // smartnic/diag/contexts.cpp
    METHOD("P4CTContextQuery", PyQDP_CTContextQuery, ", index", "Print state of a CT Context"),
    // smartnic/diag/mirrors.cpp
    METHOD("P4MirrorTableDump", PyQDP_P4MirrorTableDump, "", "Dump Mirror table entry data"),
    METHOD("P4PortMirrorTableDump", PyQDP_P4PortMirrorTableDump, ", value_1, value_2",
           "Dump Port Mirror table entry data"),
    // smartnic/diag/contexts.cpp
    METHOD("FPOQueryContextMgr", PyQDP_FPOQueryContextMgr, ", id_1, id_2, id_3", "FPO Query Context Mgr"),
    METHOD("FPOHWDestroy", PyQDP_FPOHWDestroy, "", "FPO HWFLow destroy"),
    // smartnic/tables/stats_tables.cpp
    METHOD("TableLifStatsGet", PyQDP_TableLifStatsGet, ", lif", "Read lif stats table"),
    METHOD("TablePortStatsGet", PyQDP_TablePortStatsGet, ", port", "Read port stats table"),
    METHOD("TableP4IStatsGet", PyQDP_TableP4IStatsGet, "", "Read p4i stats table"),
    METHOD("TableP4EStatsGet", PyQDP_TableP4EStatsGet, "", "Read p4e stats table"),
    // smartnic/tables/port_tables.cpp
    METHOD("TableInputGet", PyQDP_TableInputGet, ", lif", "Read input table entry"),
    METHOD("TableOutputGet", PyQDP_TableOutputGet, ", port", "Read output table entry"),
    METHOD("TableMuxVlanGet", PyQDP_TableMuxVlanGet, ", vlan, selector", "Read mux vlan table entry"),
    METHOD("TableVlanMapGet", PyQDP_TableVlanMapGet, ", vlan, value", "Read classic mode VLAN mapping table entr"),
    METHOD("TableL2SegGet", PyQDP_TableL2SegGet, ", segment", "Read classic mode L2 segment table entry"),
    METHOD("TableRegMACGet", PyQDP_TableRegMACGet, ", value, mac", "Read classic mode registered MAC table entry"),
    // smartnic/tables/conntrack_tables.cpp
    METHOD("TableIPFixGet", PyQDP_TableIPFixGet, ", index, selector", "Read ipfix table entry(flow stats table entry)"),
    METHOD("TableCTStatsGet", PyQDP_TableCTStatsGet, ", index, selector", " Read CT stats table (per port) entry"),
    METHOD("TableCTStateGet", PyQDP_TableCTStateGet, ", index, selector", "Read CT state table entry"),
    // smartnic/tables/mirror_tables.cpp
    METHOD("TableMirrorGet", PyQDP_TableMirrorGet, ", session, selector", "Read mirror table entry"),
    METHOD("TableMirrorL3Get", PyQDP_TableMirrorL3Get, ", first, second", "Read mirror L3 table entry"),
    // smartnic/tables/tunnel_tables.cpp
    METHOD("TableTunnelTerminateGet", PyQDP_TableTunnelTerminateGet,
           ", mac, value, is_first, is_ipv4, vlan_1, vlan_2, address_low, address_high",
           "Read tunnel termintate hash table entry"),
    METHOD("TableTunnelSAGet", PyQDP_TableTunnelSAGet, ", value, is_ipv4, address_low, address_high",
           "Read tunnel SA hash table entry"),
    // smartnic/tables/flow_tables.cpp
    METHOD("TableFlowKeyGet", PyQDP_TableFlowKeyGet,
           ", value, mac_1, mac_2, port, flow_index, vni, protocol, is_ipv4, address_1_low, address_1_high, "
           "address_2_low, address_2_high, port_1, port_2",
           "Read flow key hash table entry"),
    METHOD("TableFlowInfoGet", PyQDP_TableFlowInfoGet, ", index", "Read flow info table entry"),
    METHOD("TableFlowRewriteGet", PyQDP_TableFlowRewriteGet, ", index", "Read flow rewrite table entry"),
    // smartnic/tables/tunnel_tables.cpp
    METHOD("TableTunnelRewriteGet", PyQDP_TableTunnelRewriteGet, ", index",
           "Read tunnel rewrite table entry (encap record)"),
    // smartnic/tables/config_tables.cpp
    METHOD("TableDSCPConfGet", PyQDP_TableDSCPConfGet, "",
           "Get DSCP configuration (trace flow configuration for vlan LS"),
    METHOD("TableUplinkMapGet", PyQDP_TableUplinkMapGet, "",
           "Get Uplink index to port map for Phy port failover support"),
    // smartnic/settings/p4_app.cpp
    METHOD("P4AppSet", PyQDP_P4AppSet, ", enabled", "Enable/disable p4 user application"),
    METHOD("P4AppGet", PyQDP_P4AppGet, "", "check whether p4 user application enabled or not"),
    // smartnic/diag/latency.cpp
    METHOD("P4UKLatencySet", PyQDP_P4UKLatencySet, ", enabled",
           "Enable/disable p4 table program latency histogram collection"),
    METHOD("P4UKLatencyDump", PyQDP_P4UKLatencyDump, ", selector", "Dump p4 table program latency histogram data"),
    // smartnic/tables/flow_ops.cpp
    METHOD("FlowOpsStatsGet", PyQDP_FlowOpsStatsGet, "", "Get flow operation stats maintained by ftl API level"),
    // smartnic/diag/advanced_stats.cpp
    METHOD("AdvStatsSetEnabled", PyQDP_AdvStatsSetEnabled, ", switch, mode", "Enable or disable advanced stats"),
    METHOD("AdvStatsGetEnabled", PyQDP_AdvStatsGetEnabled, ", switch", "Get advanced stats enabled"),
    METHOD("AdvStatsGetCounters", PyQDP_AdvStatsGetCounters, ", switch, selector, text", "Get advanced stats counters"),
    // smartnic/settings/aging.cpp
    METHOD("AgingIntervalGet", PyQDP_Get_Aging_Interval, ", selector", "Get flow table aging interval"),
    METHOD("AgingIntervalSet", PyQDP_Set_Aging_Interval, ", selector, interval", "Set flow table aging interval"),
    // smartnic/settings/rss_override.cpp
    METHOD("P4RssOverrideSet", PyQDP_P4RssOverrideSet, ", switch, port, is_override, queue",
           "Set RSS override for a VNIC"),
    METHOD("P4RssOverrideGet", PyQDP_P4RssOverrideGet, ", switch, port", "Get RSS override for a VNIC"),
    // smartnic/settings/log_level.cpp
    METHOD("P4LogLevelSet", PyQDP_P4LogLevelSet, ", level", "Set borea app log level"),
    METHOD("P4LogLevelGet", PyQDP_P4LogLevelGet, "", "Get borea app log level"),
    {nullptr, nullptr, 0, nullptr},
};

static PyModuleDef definition = {
    PyModuleDef_HEAD_INIT,
    "_libqdp",
    "Python binding for qdp",
    -1,  // no state, and so no second module in a sub-interpreter
    methods,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

}  // namespace qdp

// The interpreter's version of the module interface, fixed for every CPython that the binary runs on.
static_assert(PYTHON_API_VERSION == 1013);

PyMODINIT_FUNC PyInit__libqdp()
{
    return PyModule_Create2(&qdp::definition, PYTHON_API_VERSION);
}
