# cython: language_level=3, boundscheck=False, wraparound=False
# distutils: language = c++
"""The measured methods with Cython: typed access to the records, and results as displays of dicts and lists."""

from libc.stdint cimport int32_t, int64_t, uint8_t, uint16_t, uint32_t, uint64_t
from libc.stdio cimport fputs, stderr
from libc.stdlib cimport free, malloc
from libc.string cimport memcpy, memset, strcmp

import socket

cdef extern from "bench/native/flow_text.h":
    void write_key "flow_text::write_key"(const uint8_t*, char*)
    bint write_actions "flow_text::write_actions"(const uint8_t*, uint32_t, char*)
    uint64_t software_hits "flow_text::software_hits"(const uint8_t*)

cdef extern from "platform/p4_tables.h":
    pass

cdef extern from "platform/qdp_control.h":
    cdef struct PortDirectionCounters:
        int64_t bytes, packets, multicast_bytes, multicast_packets, broadcast_bytes, broadcast_packets, drops, errors
    cdef struct PortCounters:
        PortDirectionCounters tx, rx
    cdef struct PortListEntry:
        uint32_t port, qdp_port
        uint8_t num_tx_queues, num_rx_queues
        uint8_t mac[6]
        uint16_t num_macs, representor_type
        uint32_t client_type, flags
        uint8_t tx_queue_lcores[64]
        uint8_t rx_queue_lcores[64]
    cdef struct PortList:
        uint32_t count
        PortListEntry entries[16384]
    cdef struct FlowTableRequest:
        uint32_t selector, lcore, start_index
        uint8_t option, filters_source_mac
        uint8_t source_mac[6]
        uint8_t filters_destination_mac
        uint8_t destination_mac[6]
        uint32_t source_ip_version
        uint8_t source_ip[16]
        uint32_t destination_ip_version
        uint8_t destination_ip[16]
        int32_t filters[5]
    cdef struct FlowTableResponse:
        uint32_t next_start_index, count, valid_bytes, group_offset
    cdef struct FlowActionArea:
        uint64_t software_bytes
        uint16_t length
    cdef struct FlowEntry:
        uint64_t hardware_hits, hardware_bytes
        FlowActionArea area
    cdef struct LBStatsChunk:
        uint32_t next_port, next_context, count
        uint8_t entries[4072]
    cdef struct LBItemGroup:
        uint32_t first, count
    cdef struct LBPortEntry:
        uint32_t type, port, priority
        uint64_t affinity_mask
        LBItemGroup vnic_rx_queues, offload_rss, vnic_tx_queues, filters
    cdef struct LBFeatureItem:
        uint32_t count_load, feature, context
        uint64_t packets, bytes
    cdef struct LBUplinkEntry:
        uint32_t port, affinity
        LBItemGroup rx_queues
    cdef struct LBQueueItem:
        uint32_t count_load, context
        uint64_t packets, bytes
    cdef struct LBContextEntry:
        uint32_t context, biased_cpu, raw_cpu, max_pb_load
        int32_t world
        uint64_t packets, bytes
    uint32_t Qdp_Get_Port_Stats(uint32_t, uint32_t, PortCounters*, uint32_t*)
    uint32_t Qdp_Get_Port_Stats_Slowpath(uint32_t, uint32_t, PortCounters*, uint32_t*)
    uint32_t Qdp_P4_Cmd(const void*, uint32_t, void*, uint32_t*)
    uint32_t Qdp_Get_Port_List(uint32_t, PortList*, uint32_t*)
    uint32_t Qdp_Dump_Flow_Table(const FlowTableRequest*, FlowTableResponse*, uint32_t*)
    uint32_t Qdp_DumpLBStats(uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, LBStatsChunk*, uint32_t)
    uint32_t Qdp_GetSwitchBurstSize(const char*, uint32_t*)

cdef extern from "platform/settings.h":
    cdef struct WordSetting:
        uint32_t version, value
    const char* burst_size_property

cdef extern from "platform/switch_state.h":
    cdef struct DVSSwitch:
        pass
    DVSSwitch* DVSState_SwitchFindByAlias(const char*)
    const char* DVS_ClassName(DVSSwitch*)
    const char* DVS_SwitchId(DVSSwitch*)
    uint32_t DVSHCK_HostPropGet(const char*, const char*, void**, uint32_t*)
    void DVSHCK_DataFree(void*)

cdef extern from "bench/native/keys.h":
    cdef struct FlowInfo:
        uint32_t index, time_stamp
        uint16_t destination_port, source_tag, destination_tag
        int64_t count
        uint32_t ttl_check, vdr, nat, encap, decap, ct_ingress, ct_ingress_direction, ct_egress, ct_egress_direction
        uint32_t ipfix_ingress, ipfix_egress, drop, to_uplink, from_uplink, destination_uplink, source_uplink, hops
        uint8_t ingress_mirror, egress_mirror
        uint16_t encap_index, ct_ingress_stats, ct_egress_stats
        uint32_t nat_index, ct_ingress_index, ct_egress_index, ipfix_ingress_index, ipfix_egress_index
    cdef struct TableReadRequest:
        uint16_t length, opcode, table, key_length
        uint32_t index
    const char* client_name(const PortListEntry&)
    void write_mac(const uint8_t*, char*)


cdef refuse(const char* text):
    fputs(text, stderr)
    return None


def GetPortStats(uint32_t switch, uint32_t port):
    cdef PortCounters counters
    cdef uint32_t size = sizeof(counters)
    if switch >= 16 or port >= 16384:
        return refuse(b"TypeError: Invalid parameter passed.\n")
    memset(&counters, 0, sizeof(counters))
    if Qdp_Get_Port_Stats(switch, port, &counters, &size) != 0:
        return refuse(b"Failed to retrieve port stats.\n")
    cdef dict stats = {
        "txPkts": counters.tx.packets, "txBytes": counters.tx.bytes, "txMcastPkts": counters.tx.multicast_packets,
        "txMcastBytes": counters.tx.multicast_bytes, "txBcastPkts": counters.tx.broadcast_packets,
        "txBcastBytes": counters.tx.broadcast_bytes, "txDrops": counters.tx.drops, "txErrors": counters.tx.errors,
        "rxPkts": counters.rx.packets, "rxBytes": counters.rx.bytes, "rxMcastPkts": counters.rx.multicast_packets,
        "rxMcastBytes": counters.rx.multicast_bytes, "rxBcastPkts": counters.rx.broadcast_packets,
        "rxBcastBytes": counters.rx.broadcast_bytes, "rxDrops": counters.rx.drops, "rxErrors": counters.rx.errors,
    }
    if Qdp_Get_Port_Stats_Slowpath(switch, port, &counters, &size) != 0:
        return refuse(b"Failed to retrieve slowpath port stats.\n")
    stats["spTxPkts"] = counters.tx.packets
    stats["spTxBytes"] = counters.tx.bytes
    stats["spTxMcastPkts"] = counters.tx.multicast_packets
    stats["spTxMcastBytes"] = counters.tx.multicast_bytes
    stats["spTxBcastPkts"] = counters.tx.broadcast_packets
    stats["spTxBcastBytes"] = counters.tx.broadcast_bytes
    stats["spTxDrops"] = counters.tx.drops
    stats["spTxErrors"] = counters.tx.errors
    stats["spRxPkts"] = counters.rx.packets
    stats["spRxBytes"] = counters.rx.bytes
    stats["spRxMcastPkts"] = counters.rx.multicast_packets
    stats["spRxMcastBytes"] = counters.rx.multicast_bytes
    stats["spRxBcastPkts"] = counters.rx.broadcast_packets
    stats["spRxBcastBytes"] = counters.rx.broadcast_bytes
    stats["spRxDrops"] = counters.rx.drops
    stats["spRxErrors"] = counters.rx.errors
    return stats


def TableFlowInfoGet(uint32_t index):
    cdef TableReadRequest request
    cdef FlowInfo info
    cdef uint32_t size = sizeof(info)
    if index >= 1 << 22:
        return refuse(b"TypeError: Invalid parameter passed.\n")
    request.length, request.opcode, request.table, request.key_length, request.index = 12, 11, 26, 4, index
    memset(&info, 0, sizeof(info))
    if Qdp_P4_Cmd(&request, sizeof(request), &info, &size) != 0:
        return refuse(b"Failed to get table data\n")
    return {
        "flowIdx": info.index, "dstPort": info.destination_port, "count": info.count, "timeStamp": info.time_stamp,
        "srcTag": info.source_tag, "dstTag": info.destination_tag, "vdrTtlCheck": info.ttl_check, "vdrVld": info.vdr,
        "natVld": info.nat, "encap": info.encap, "decap": info.decap, "ctIngressVld": info.ct_ingress,
        "ctIngressDir": info.ct_ingress_direction, "ctEgressVld": info.ct_egress,
        "ctEgressDir": info.ct_egress_direction, "ipfixIngressVld": info.ipfix_ingress,
        "ipfixEgressVld": info.ipfix_egress, "drop": info.drop, "isDstUplink": info.to_uplink,
        "isSrcUplink": info.from_uplink, "dstUplinkIdx": info.destination_uplink, "srcUplinkIdx": info.source_uplink,
        "vdrHops": info.hops, "ingressMirror": info.ingress_mirror, "egressMirror": info.egress_mirror,
        "encapIdx": info.encap_index, "ctIngressStatsIdx": info.ct_ingress_stats,
        "ctEgressStatsIdx": info.ct_egress_stats, "natIdx": info.nat_index, "ctIngressIdx": info.ct_ingress_index,
        "ctEgressIdx": info.ct_egress_index, "ipfixIngressIdx": info.ipfix_ingress_index,
        "ipfixEgressIdx": info.ipfix_egress_index,
    }


cdef str mac_text(const uint8_t* mac):
    cdef char text[18]
    write_mac(mac, text)
    return text[:17].decode("ascii")


cdef dict port_dict(const PortListEntry* entry):
    cdef int i
    return {
        "portID": entry.port, "qdpPortID": entry.qdp_port, "numTxQ": entry.num_tx_queues,
        "numRxQ": entry.num_rx_queues, "hwAddr": mac_text(entry.mac), "numMACs": entry.num_macs,
        "clientType": client_name(entry[0]).decode("ascii"),
        "txQLM": [entry.tx_queue_lcores[i] for i in range(entry.num_tx_queues)],
        "rxQLM": [entry.rx_queue_lcores[i] for i in range(entry.num_rx_queues)],
    }


def ListPorts(uint32_t switch):
    cdef PortList* ports
    cdef uint32_t i, size = sizeof(PortList)
    if switch >= 16:
        return refuse(b"TypeError: Invalid switch ID passed.\n")
    ports = <PortList*>malloc(sizeof(PortList))
    if not ports:
        return refuse(b"Failed to allocate memory.\n")
    try:
        if Qdp_Get_Port_List(switch, ports, &size) != 0:
            return refuse(b"Failed to retrieve list of ports.\n")
        return [port_dict(&ports.entries[i]) for i in range(ports.count)]
    finally:
        free(ports)


cdef bint read_address(uint32_t version, str text, uint8_t* out):
    cdef bytes address
    if version:
        try:
            address = socket.inet_pton(socket.AF_INET if version == 4 else socket.AF_INET6, text)
        except OSError:
            return False
        memcpy(out, <const char*>address, len(address))
    return True


cdef read_mac(uint8_t is_on, str text, uint8_t* out):
    cdef bytes mac
    if is_on:
        mac = bytes.fromhex(text.replace(":", ""))
        memcpy(out, <const char*>mac, len(mac))


def DumpFlowTable(uint32_t selector, uint32_t lcore, uint32_t start_index, uint32_t option, uint32_t filters_source_mac,
                  str source_mac, uint32_t filters_destination_mac, str destination_mac, uint32_t source_version,
                  str source, uint32_t destination_version, str destination, int filter_1, int filter_2, int filter_3,
                  int filter_4, int filter_5):
    cdef FlowTableRequest request
    cdef FlowTableResponse* response
    cdef const uint8_t* entry
    cdef const FlowEntry* flow
    cdef char key[256]
    cdef char actions[512]
    cdef uint32_t i, size = 10264
    cdef size_t offset = 24
    if lcore >= 64 or start_index == 0xFFFFFFFF:
        return refuse(b"TypeError: Invalid parameter passed.\n")
    memset(&request, 0, sizeof(request))
    request.selector, request.lcore, request.start_index, request.option = selector, lcore, start_index, option & 255
    request.filters_source_mac = filters_source_mac & 255
    request.filters_destination_mac = filters_destination_mac & 255
    read_mac(request.filters_source_mac, source_mac, request.source_mac)
    read_mac(request.filters_destination_mac, destination_mac, request.destination_mac)
    request.source_ip_version, request.destination_ip_version = source_version, destination_version
    if not read_address(source_version, source, request.source_ip):
        return refuse(b"Failed to convert source IPv4 address to binary form.\n\n")
    if not read_address(destination_version, destination, request.destination_ip):
        return refuse(b"Failed to convert destination IPv4 address to binary form.\n\n")
    request.filters[0], request.filters[1], request.filters[2] = filter_1, filter_2, filter_3
    request.filters[3], request.filters[4] = filter_4, filter_5
    response = <FlowTableResponse*>malloc(size)
    if not response:
        return refuse(b"Failed to allocate memory.\n")
    try:
        memset(response, 0, size)
        if Qdp_Dump_Flow_Table(&request, response, &size) != 0:
            return refuse(b"Failed to retrieve flow table.\n\n")
        flows = []
        for i in range(response.count):
            if offset + 688 > min(response.valid_bytes, <uint32_t>10264):
                return refuse(b"Invalid response returned.\n")
            entry = <const uint8_t*>response + offset
            flow = <const FlowEntry*>entry
            write_key(entry + 48, key)
            if not write_actions(entry, response.group_offset, actions):
                return refuse(b"Invalid action\nInvalid action\n")
            flows.append({"key": key.decode("ascii"), "actions": actions.decode("ascii"),
                          "swHits": software_hits(entry), "swBytes": flow.area.software_bytes,
                          "hwHits": flow.hardware_hits,
                          "hwBytes": flow.hardware_bytes})
            offset += 112 + flow.area.length
        return {"startIndex": response.next_start_index, "list": flows}
    finally:
        free(response)


def GetSwitchBurstSize(str alias):
    cdef bytes name = alias.encode()
    cdef DVSSwitch* handle = DVSState_SwitchFindByAlias(name)
    cdef const char* class_name = DVS_ClassName(handle) if handle else NULL
    cdef const char* switch_id
    cdef void* value = NULL
    cdef uint32_t length = 0, burst_size = 0
    if class_name == NULL or strcmp(class_name, b"vswitch") != 0:
        return refuse(b"Failed to find dvs ID for the dvs alias.\n")
    switch_id = DVS_SwitchId(handle)
    if DVSHCK_HostPropGet(switch_id, burst_size_property, &value, &length) != 0:
        return burst_size if Qdp_GetSwitchBurstSize(switch_id, &burst_size) == 0 else None
    try:
        if (<WordSetting*>value).version != 0:
            return refuse(b"Format of property com.tarnix.wyx.qdp.burstsize value is from unknown version.\n")
        if length != sizeof(WordSetting):
            return refuse(b"Property com.tarnix.wyx.qdp.burstsize value length is odd.\n")
        return (<WordSetting*>value).value
    finally:
        DVSHCK_DataFree(value)


cdef tuple features(const uint8_t* items, LBItemGroup group):
    cdef const LBFeatureItem* item = <const LBFeatureItem*>items
    cdef uint32_t i
    cdef list found = []
    for i in range(group.first, group.first + group.count):
        found.append({"count load": item[i].count_load, "feat ID": item[i].feature, "ctx ID": item[i].context,
                      "pkts": item[i].packets, "bytes": item[i].bytes})
    return tuple(found)


cdef tuple queues(const uint8_t* items, LBItemGroup group):
    cdef const LBQueueItem* item = <const LBQueueItem*>items
    cdef uint32_t i
    cdef list found = []
    for i in range(group.first, group.first + group.count):
        found.append({"count load": item[i].count_load, "ctx ID": item[i].context, "pkts": item[i].packets,
                      "bytes": item[i].bytes})
    return tuple(found)


cdef size_t add_entry(tuple lists, const uint8_t* place) except 0:
    cdef uint32_t kind = (<const uint32_t*>place)[0]
    cdef const LBPortEntry* port
    cdef const LBUplinkEntry* uplink
    cdef const LBContextEntry* context
    cdef const uint8_t* items
    if kind == 0:
        port = <const LBPortEntry*>place
        items = place + sizeof(LBPortEntry)
        (<list>lists[0]).append({
            "port ID": port.port, "mem affinity mask": port.affinity_mask, "priority": port.priority,
            "vnicRxQ": features(items, port.vnic_rx_queues), "ofldRSS": features(items, port.offload_rss),
            "vnicTxQ": features(items, port.vnic_tx_queues), "filt": features(items, port.filters)})
        return sizeof(LBPortEntry) + sizeof(LBFeatureItem) * (
            <size_t>port.vnic_rx_queues.count + port.offload_rss.count + port.vnic_tx_queues.count + port.filters.count)
    if kind == 1:
        uplink = <const LBUplinkEntry*>place
        (<list>lists[1]).append({"port ID": uplink.port, "mem affinity ID": uplink.affinity,
                                 "uplinkRx": queues(place + sizeof(LBUplinkEntry), uplink.rx_queues)})
        return sizeof(LBUplinkEntry) + sizeof(LBQueueItem) * <size_t>uplink.rx_queues.count
    if kind == 2:
        context = <const LBContextEntry*>place
        (<list>lists[2]).append({"ctx ID": context.context, "world ID": <uint64_t><int64_t>context.world,
                                 "biased CPU": context.biased_cpu, "raw CPU": context.raw_cpu, "pkts": context.packets,
                                 "bytes": context.bytes, "max pb load": context.max_pb_load})
        return sizeof(LBContextEntry)
    raise OSError("Invalid format in LB stats dump")


def DumpLBStats(uint32_t switch, uint32_t port, uint32_t ports, uint32_t context, uint32_t contexts):
    cdef LBStatsChunk chunk
    cdef const uint8_t* place
    cdef uint32_t i
    if switch >= 16 or port >= 16384 or port + ports > 16384 or context >= 64 or context + contexts > 64:
        raise ValueError("Invalid parameter passed.")
    memset(&chunk, 0, sizeof(chunk))
    lists = ([], [], [])
    while ports or contexts:
        if Qdp_DumpLBStats(switch, port, ports, context, contexts, &chunk, sizeof(chunk)) != 0:
            raise OSError("Failed to dump LB stats. Please see hostcore.log")
        place = chunk.entries
        for i in range(chunk.count):
            place += add_entry(lists, place)
        if chunk.next_port < port + ports:
            port = chunk.next_port
        else:
            ports = 0
        if chunk.next_context < context + contexts:
            context = chunk.next_context
        else:
            contexts = 0
    return lists
