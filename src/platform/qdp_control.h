// The operations of the datapath control library, libqdp.so. Each returns 0 for success. A size pointer behind a record
// points to the record's capacity in bytes before the call. A caller of an operation includes the header of its record.
#pragma once

#include <cstdint>

struct AdvancedCounters;
struct DeviceAffinityList;
struct DscpConfig;
struct FlowStats;
struct FlowTableRequest;
struct FlowTableResponse;
struct FpoConntrackDelay;
struct FpoContext;
struct FpoContextRequest;
struct FpoFlowStatsConfig;
struct FpoLcoreStatsList;
struct FpoRevalConfig;
struct FpoUplinkStats;
struct FpoUplinkStatus;
struct L3SPANRecord;
struct L3SPANRequest;
struct LBParameters;
struct LBStatsChunk;
struct LBTrafficRequest;
struct LatencyHistogram;
struct MuxListRequest;
struct NetQInfo;
struct P4ConntrackCounters;
struct P4EgressCounters;
struct P4IngressCounters;
struct P4LifCounters;
struct P4PortCounters;
struct PortConf;
struct PortCounters;
struct PortList;
struct PortMacTable;
struct PortMirrorRequest;
struct RSSEngineList;
struct SwitchList;
struct SwitchMacTable;
struct TableDump;
struct TableList;
struct TableRange;
struct TxUplinks;
struct UplinkCounters;

template <class Entry>
struct MirrorDump;
using MirrorSessionDump = MirrorDump<struct MirrorSession>;
using PortMirrorDump = MirrorDump<struct PortMirror>;

template <class Entry>
struct MuxListResponse;
using MuxVlanList = MuxListResponse<struct MuxVlanEntry>;
using ShadowPortList = MuxListResponse<struct ShadowPortEntry>;

enum class LroScope : uint32_t;

// What the migration of a port or a filter answers while the thread load balancer moves them by itself.
inline constexpr uint32_t status_lb_is_automatic = 1;

extern "C" {

// Switches and ports.
uint32_t Qdp_Get_Switch_List(SwitchList* list, uint32_t* size);
uint32_t Qdp_Get_Port_List(uint32_t switch_number, PortList* list, uint32_t* size);

// Port configuration and control.
uint32_t Qdp_Get_Port_Conf(uint32_t switch_number, uint32_t port, PortConf* conf, uint32_t* size);
uint32_t Qdp_Migrate_Port(uint32_t switch_number, uint32_t port, uint32_t, uint32_t, uint32_t);
uint32_t Qdp_Unpin_Port(uint32_t switch_number, uint32_t port, uint32_t);
uint32_t Qdp_Reset_Port(uint32_t switch_number, uint32_t port, uint32_t);
uint32_t Qdp_Get_Port_Tx_Uplink(uint32_t switch_number, uint32_t port, TxUplinks* uplinks, uint32_t* size);
uint32_t Qdp_Set_Uplink_MAC_Learn(uint32_t switch_number, uint32_t enable);
uint32_t Qdp_Clear_Switch_Flow_Table(uint32_t switch_number);
uint32_t Qdp_Enable_Switch_Flow_Cache(uint32_t switch_number, uint32_t enable);
uint32_t Qdp_Get_Panic_On_Tx_Hang(uint32_t switch_number, uint32_t* enabled);
uint32_t Qdp_Set_Panic_On_Tx_Hang(uint32_t switch_number, uint32_t enable);

// Port statistics.
uint32_t Qdp_Get_Port_Stats(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Port_Stats_Slowpath(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);

// Uplink and lcore statistics.
uint32_t Qdp_Get_Uplink_Priv_Stats_Len(uint32_t switch_number, uint32_t port, uint32_t* length, uint32_t* size);
uint32_t Qdp_Get_Uplink_Priv_Stats(uint32_t switch_number, uint32_t port, char* text, uint32_t* length);
uint32_t Qdp_Get_Uplink_Stats(uint32_t switch_number, uint32_t port, UplinkCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Uplink_Queue_Stats(uint32_t switch_number, uint32_t port, uint32_t queue, uint32_t direction,
                                    UplinkCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Flow_Stats(uint32_t selector, const uint32_t* lcores, uint32_t count, uint32_t value, FlowStats* stats,
                            uint32_t* size);

// MAC tables.
uint32_t Qdp_Dump_Port_MAC_Table(uint32_t switch_number, uint32_t port, PortMacTable* table, uint32_t* size);
uint32_t Qdp_Dump_Switch_MAC_Table(uint32_t switch_number, SwitchMacTable* table, uint32_t* size);
uint32_t Qdp_Clear_Port_MAC_Table(uint32_t switch_number, uint32_t port);
uint32_t Qdp_Clear_Switch_MAC_Table(uint32_t switch_number);
uint32_t Qdp_MAC_Entry_Ops(uint32_t switch_number, uint32_t port, const uint8_t* mac, uint16_t vlan, uint8_t operation);

// Flow cache.
uint32_t Qdp_Dump_Flow_Table(const FlowTableRequest* request, FlowTableResponse* response, uint32_t* size);

// NetQ queues and filters.
uint32_t Qdp_Get_Port_NetQ_Info(uint32_t switch_number, uint32_t port, NetQInfo* info, uint32_t* size);
uint32_t Qdp_Migrate_NetQ_Filter(uint32_t switch_number, uint32_t port, uint32_t value);

// Filter classes, device affinity, lcores and mbuf slabs.
uint32_t Qdp_GetSwitchFilterTypes(const char* portset_name, uint16_t* mask);
uint32_t Qdp_List_Dev_Affinity(DeviceAffinityList* list, uint32_t* size);
uint32_t Qdp_Set_Dev_Affinity(const char* device, uint32_t affinity);
uint32_t Qdp_Get_LCore_ID_Bitmap(uint32_t selector, uint64_t* bitmap);  // bit n: there is an lcore n
uint32_t Qdp_Init_Mbuf_Fastslabs(void);

// Thread load balancer.
uint32_t Qdp_GetLBParams(const char* portset_name, LBParameters* parameters);
uint32_t Qdp_SetLBParam(const char* portset_name, uint32_t parameter, uint64_t value);
uint32_t Qdp_DumpLBDebugBuf(uint32_t switch_number, int8_t flag, char* text, uint32_t* length);
uint32_t Qdp_FlushLBDebugBuf(uint32_t switch_number);
uint32_t Qdp_DumpLBStats(uint32_t switch_number, uint32_t first_port, uint32_t port_count, uint32_t first_context,
                         uint32_t context_count, LBStatsChunk* chunk, uint32_t size);
uint32_t Qdp_InjectLBTraffic(const LBTrafficRequest* request);

// Switch features. A portset name is a text; the first call also wants the size of its buffer.
uint32_t Qdp_GetSwitchNUMATeam(const char* portset_name, uint32_t name_bytes, uint8_t* enabled);
uint32_t Qdp_GetSwitchBurstSize(const char* portset_name, uint32_t* burst_size);
uint32_t Qdp_GetSwitchOverlayL2Flow(const char* portset_name, uint32_t* value);
uint32_t Qdp_GetLRO(LroScope scope, uint32_t switch_number, uint32_t port, uint32_t* value);
uint32_t Qdp_SetLRO(LroScope scope, uint32_t switch_number, uint32_t port, uint32_t value);
uint32_t Qdp_GetSwitchMinFlowLayer(uint32_t switch_number, uint32_t* layer);
uint32_t Qdp_SetSwitchMinFlowLayer(uint32_t switch_number, uint32_t layer);

// Flow processing offload. The answer about lcores has one entry a given lcore.
uint32_t Qdp_Get_FPO_Stats(uint32_t switch_number, const uint32_t* lcores, uint32_t lcore_count,
                           FpoLcoreStatsList* list, uint32_t* size);
uint32_t Qdp_Get_FPO_Uplink_Status(uint32_t switch_number, uint32_t port, FpoUplinkStatus* status, uint32_t* size);
uint32_t Qdp_Get_FPO_Uplink_Stats(uint32_t switch_number, uint32_t port, FpoUplinkStats* stats, uint32_t* size);

// Timing of flows and offload.
uint32_t Qdp_Get_Flow_Timeout(uint32_t* seconds);
uint32_t Qdp_Set_Flow_Timeout(uint32_t seconds);
uint32_t Qdp_Get_FPO_Reval_Config(FpoRevalConfig* config);
uint32_t Qdp_Set_FPO_Reval_Config(const FpoRevalConfig* config);
uint32_t Qdp_Get_FPO_DelayCtOl_Config(FpoConntrackDelay* config);
uint32_t Qdp_Set_FPO_DelayCtOl_Config(const FpoConntrackDelay* config);
uint32_t Qdp_Get_Refresh_Pkt_Injection(uint32_t* value);
uint32_t Qdp_Set_Refresh_Pkt_Injection(uint32_t value);

// RSS engines and L3 SPAN.
uint32_t Qdp_Get_RSS_Engine_List(uint32_t switch_number, uint32_t port, RSSEngineList* list);
uint32_t Qdp_Get_L3SPAN_Record(const L3SPANRequest* request, L3SPANRecord* answer, uint32_t* size);

// SmartNIC: the command channel.
uint32_t Qdp_P4_Cmd(const void* request, uint32_t request_length, void* response, uint32_t* response_length);

// SmartNIC: mux mode.
uint32_t Qdp_Get_Mux_Mode(uint32_t switch_number, uint32_t* is_enabled);
uint32_t Qdp_List_Mux_VLAN_Info(const MuxListRequest* request, uint32_t request_length, MuxVlanList* list,
                                uint32_t* size);
uint32_t Qdp_List_Shadow_Ports(const MuxListRequest* request, uint32_t request_length, ShadowPortList* list,
                               uint32_t* size);

// SmartNIC: pipeline statistics.
uint32_t Qdp_Lif_Stats_Get(uint32_t lif, P4LifCounters* counters, uint32_t* size);
uint32_t Qdp_Port_Stats_Get(uint32_t port, P4PortCounters* counters, uint32_t* size);
uint32_t Qdp_CT_Stats_Get(uint32_t index, P4ConntrackCounters* counters, uint32_t* size);
uint32_t Qdp_P4I_Stats_Get(P4IngressCounters* counters, uint32_t* size);
uint32_t Qdp_P4E_Stats_Get(P4EgressCounters* counters, uint32_t* size);

// SmartNIC: offload and DSCP settings.
uint32_t Qdp_Get_FPO_Flow_Stats_Config(FpoFlowStatsConfig* config);
uint32_t Qdp_Set_FPO_Flow_Stats_Config(const FpoFlowStatsConfig* config);
uint32_t Qdp_Set_Offload_Flows(const char* portset_name, uint32_t is_enabled);
uint32_t Qdp_Get_Offload_Flows(const char* portset_name, uint32_t* is_enabled);
uint32_t Qdp_Set_Offload_ICMP_Echo(uint32_t is_enabled);
uint32_t Qdp_Get_Offload_ICMP_Echo(uint32_t* is_enabled);
uint32_t Qdp_DSCP_Conf_Set(const DscpConfig* config, uint32_t length);
uint32_t Qdp_DSCP_Conf_Get(DscpConfig* config, uint32_t* size);

// SmartNIC: hardware tables, mirrors and contexts.
uint32_t Qdp_P4_HWTable_List(TableList* list, uint32_t* size);
uint32_t Qdp_P4_HWTable_Dump(const TableRange* range, uint32_t length, TableDump* dump, uint32_t* size);
uint32_t Qdp_P4_Cache_Invalidate(const TableRange* range, uint32_t length);
uint32_t Qdp_P4_MirrorTable_Dump(MirrorSessionDump* dump, uint32_t* size);
uint32_t Qdp_P4_PortMirrorTable_Dump(const PortMirrorRequest* request, uint32_t length, PortMirrorDump* dump,
                                     uint32_t* size);
uint32_t Qdp_FPOQueryMgr(const FpoContextRequest* request, FpoContext* context, uint32_t* size);

// SmartNIC: P4 application, latency and advanced statistics.
uint32_t Qdp_P4AppSet(uint32_t is_enabled);
uint32_t Qdp_P4AppGet(uint32_t* is_enabled);
uint32_t Qdp_P4UKLatencySet(uint32_t is_enabled);
uint32_t Qdp_P4UKLatencyDump(uint32_t selector, LatencyHistogram* histogram, uint32_t* size);
uint32_t Qdp_AdvStatsSetEnabled(uint32_t switch_number, uint32_t mode);
uint32_t Qdp_AdvStatsGetEnabled(uint32_t switch_number, uint8_t* is_enabled);
uint32_t Qdp_AdvStatsGetCounters(uint32_t switch_number, uint32_t selector, const char* text,
                                 AdvancedCounters* counters, uint32_t* size);

// SmartNIC: flow aging.
uint32_t Qdp_GetAgingInterval(uint32_t selector, uint32_t* interval);
uint32_t Qdp_SetAgingInterval(uint32_t selector, uint32_t interval);

}  // extern "C"
