"""Writes the C source of the cffi module that with_cffi.py calls the platform through: OUTPUT."""

import sys

import cffi

DECLARATIONS = """
typedef struct { int64_t bytes, packets, mcast_bytes, mcast_packets, bcast_bytes, bcast_packets, drops, errors; }
    DirectionCounters;
typedef struct { DirectionCounters tx, rx; } PortCounters;
typedef struct {
    uint32_t flowIdx; uint16_t dstPort, reserved; int64_t count; uint32_t timeStamp; uint16_t srcTag, dstTag;
    uint32_t bits; uint8_t ingressMirror, egressMirror; uint16_t encapIdx, ctIngressStatsIdx, ctEgressStatsIdx;
    uint32_t natIdx, ctIngressIdx, ctEgressIdx, ipfixIngressIdx, ipfixEgressIdx;
} FlowInfo;
typedef struct { uint16_t length, opcode, table, key_length; uint32_t index; } TableRead;
typedef struct {
    uint32_t port, qdp_port; uint8_t num_tx, num_rx, mac[6]; uint16_t num_macs, representor; uint32_t client, flags;
    uint8_t tx_lcores[64], rx_lcores[64];
} PortEntry;
typedef struct { uint32_t reserved, count, reserved_too; PortEntry entries[16384]; } PortList;
typedef struct {
    uint32_t selector, lcore, start_index; uint8_t option, filters_source, source_mac[6], filters_destination;
    uint8_t destination_mac[6], reserved; uint32_t source_version; uint8_t source_ip[16];
    uint32_t destination_version, reserved_too; uint8_t destination_ip[16]; int32_t filters[5]; uint32_t at_end;
} FlowRequest;
typedef struct {
    uint64_t reserved; uint32_t next_start_index, count, valid_bytes, group_offset; uint8_t entries[10240];
} FlowPage;
typedef struct { uint32_t version, value; } Setting;
typedef struct { uint32_t next_port, next_context, count, reserved[3]; uint8_t entries[4072]; } Chunk;
typedef struct { uint32_t first, count; } Group;
typedef struct {
    uint32_t type, port; uint64_t affinity; uint32_t priority, reserved; Group vnic_rx, offload, vnic_tx, filters;
} LBPort;
typedef struct { uint32_t load, feature, context, reserved; uint64_t packets, bytes; } LBFeature;
typedef struct { uint32_t type, port, affinity, reserved; Group rx; } LBUplink;
typedef struct { uint32_t load, context; uint64_t packets, bytes; } LBQueue;

uint32_t Qdp_Get_Port_Stats(uint32_t, uint32_t, PortCounters*, uint32_t*);
uint32_t Qdp_Get_Port_Stats_Slowpath(uint32_t, uint32_t, PortCounters*, uint32_t*);
uint32_t Qdp_P4_Cmd(const void*, uint32_t, void*, uint32_t*);
uint32_t Qdp_Get_Port_List(uint32_t, PortList*, uint32_t*);
uint32_t Qdp_Dump_Flow_Table(const FlowRequest*, FlowPage*, uint32_t*);
uint32_t Qdp_DumpLBStats(uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, Chunk*, uint32_t);
uint32_t Qdp_GetSwitchBurstSize(const char*, uint32_t*);
void* DVSState_SwitchFindByAlias(const char*);
const char* DVS_ClassName(void*);
const char* DVS_SwitchId(void*);
uint32_t DVSHCK_HostPropGet(const char*, const char*, void**, uint32_t*);
void DVSHCK_DataFree(void*);
"""
PACKED = """
typedef struct {
    uint32_t type, context; int32_t world; uint32_t biased, raw; uint64_t packets, bytes; uint32_t max_load;
} LBContext;
"""

builder = cffi.FFI()
builder.cdef(DECLARATIONS)
builder.cdef(PACKED, packed=True)
builder.set_source("_with_cffi", "#include <stdint.h>\n" + DECLARATIONS +
                   "#pragma pack(push, 1)\n" + PACKED + "#pragma pack(pop)\n")
builder.emit_c_code(sys.argv[1])
