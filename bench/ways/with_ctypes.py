"""The measured methods with ctypes: its structures hold the records, whose fields are read as attributes.

The structures are kept from call to call, so that none is cleared: the methods are not for several threads at once.
"""

import ctypes
from ctypes import (POINTER, Structure, byref, c_char_p, c_int32, c_int64, c_uint8, c_uint16, c_uint32,
                    c_uint64, c_void_p, sizeof)

from rendering import client_name, flow_page, flow_request, refuse

qdp = ctypes.CDLL("libqdp.so")
state = ctypes.CDLL("libqmtPublic.so")
state.DVSState_SwitchFindByAlias.restype = c_void_p
state.DVS_ClassName.restype = c_char_p
state.DVS_SwitchId.restype = c_char_p
for operation in state.DVS_ClassName, state.DVS_SwitchId, state.DVSHCK_DataFree:
    operation.argtypes = [c_void_p]


class DirectionCounters(Structure):
    _fields_ = [(name, c_int64) for name in "bytes packets mcast_bytes mcast_packets bcast_bytes bcast_packets drops "
                "errors".split()]


class PortCounters(Structure):
    _fields_ = [("tx", DirectionCounters), ("rx", DirectionCounters)]


class FlowInfo(Structure):
    _fields_ = [
        ("flowIdx", c_uint32), ("dstPort", c_uint16), ("reserved", c_uint16), ("count", c_int64),
        ("timeStamp", c_uint32), ("srcTag", c_uint16), ("dstTag", c_uint16),
        *((name, c_uint32, 1) for name in "vdrTtlCheck vdrVld natVld encap decap ctIngressVld ctIngressDir ctEgressVld "
          "ctEgressDir ipfixIngressVld ipfixEgressVld drop isDstUplink isSrcUplink".split()),
        ("dstUplinkIdx", c_uint32, 2), ("srcUplinkIdx", c_uint32, 2), ("unused", c_uint32, 6), ("vdrHops", c_uint32, 8),
        ("ingressMirror", c_uint8), ("egressMirror", c_uint8), ("encapIdx", c_uint16), ("ctIngressStatsIdx", c_uint16),
        ("ctEgressStatsIdx", c_uint16), ("natIdx", c_uint32), ("ctIngressIdx", c_uint32), ("ctEgressIdx", c_uint32),
        ("ipfixIngressIdx", c_uint32), ("ipfixEgressIdx", c_uint32)]


FLOW_INFO_KEYS = [field[0] for field in FlowInfo._fields_ if field[0] not in ("reserved", "unused")]


class TableRead(Structure):
    _fields_ = [("length", c_uint16), ("opcode", c_uint16), ("table", c_uint16), ("key_length", c_uint16),
                ("index", c_uint32)]


class PortEntry(Structure):
    _fields_ = [("port", c_uint32), ("qdp_port", c_uint32), ("num_tx", c_uint8), ("num_rx", c_uint8),
                ("mac", c_uint8 * 6), ("num_macs", c_uint16), ("representor", c_uint16), ("client", c_uint32),
                ("flags", c_uint32), ("tx_lcores", c_uint8 * 64), ("rx_lcores", c_uint8 * 64)]


class PortList(Structure):
    _fields_ = [("reserved", c_uint32), ("count", c_uint32), ("reserved_too", c_uint32), ("entries", PortEntry * 16384)]


class FlowRequest(Structure):
    _fields_ = [("selector", c_uint32), ("lcore", c_uint32), ("start_index", c_uint32), ("option", c_uint8),
                ("filters_source", c_uint8), ("source_mac", c_uint8 * 6), ("filters_destination", c_uint8),
                ("destination_mac", c_uint8 * 6), ("reserved", c_uint8), ("source_version", c_uint32),
                ("source_ip", c_uint8 * 16), ("destination_version", c_uint32), ("reserved_too", c_uint32),
                ("destination_ip", c_uint8 * 16), ("filters", c_int32 * 5), ("reserved_at_end", c_uint32)]


class FlowPage(Structure):
    _fields_ = [("reserved", c_uint64), ("next_start_index", c_uint32), ("count", c_uint32), ("valid_bytes", c_uint32),
                ("group_offset", c_uint32), ("entries", c_uint8 * 10240)]


class Setting(Structure):
    _fields_ = [("version", c_uint32), ("value", c_uint32)]


class Chunk(Structure):
    _fields_ = [("next_port", c_uint32), ("next_context", c_uint32), ("count", c_uint32), ("reserved", c_uint32 * 3),
                ("entries", c_uint8 * 4072)]


class Group(Structure):
    _fields_ = [("first", c_uint32), ("count", c_uint32)]


class LBPort(Structure):
    _fields_ = [("type", c_uint32), ("port", c_uint32), ("affinity", c_uint64), ("priority", c_uint32),
                ("reserved", c_uint32), ("vnic_rx", Group), ("offload", Group), ("vnic_tx", Group), ("filters", Group)]


class LBFeature(Structure):
    _fields_ = [("load", c_uint32), ("feature", c_uint32), ("context", c_uint32), ("reserved", c_uint32),
                ("packets", c_uint64), ("bytes", c_uint64)]


class LBUplink(Structure):
    _fields_ = [("type", c_uint32), ("port", c_uint32), ("affinity", c_uint32), ("reserved", c_uint32), ("rx", Group)]


class LBQueue(Structure):
    _fields_ = [("load", c_uint32), ("context", c_uint32), ("packets", c_uint64), ("bytes", c_uint64)]


class LBContext(Structure):
    _pack_ = 1
    _fields_ = [("type", c_uint32), ("context", c_uint32), ("world", c_int32), ("biased", c_uint32), ("raw", c_uint32),
                ("packets", c_uint64), ("bytes", c_uint64), ("max_load", c_uint32)]


port_counters, flow_info, port_list, page_buffer, lb_chunk = PortCounters(), FlowInfo(), PortList(), FlowPage(), Chunk()


def set_counters(stats, counters, tx, rx):
    for prefix, counts in (tx, counters.tx), (rx, counters.rx):
        stats[prefix + "Pkts"] = counts.packets
        stats[prefix + "Bytes"] = counts.bytes
        stats[prefix + "McastPkts"] = counts.mcast_packets
        stats[prefix + "McastBytes"] = counts.mcast_bytes
        stats[prefix + "BcastPkts"] = counts.bcast_packets
        stats[prefix + "BcastBytes"] = counts.bcast_bytes
        stats[prefix + "Drops"] = counts.drops
        stats[prefix + "Errors"] = counts.errors


def GetPortStats(switch, port):
    if not (0 <= switch < 16 and 0 <= port < 16384):
        return refuse("TypeError: Invalid parameter passed.\n")
    counters = port_counters
    size = c_uint32(sizeof(counters))
    if qdp.Qdp_Get_Port_Stats(switch, port, byref(counters), byref(size)) != 0:
        return refuse("Failed to retrieve port stats.\n")
    stats = {}
    set_counters(stats, counters, "tx", "rx")
    if qdp.Qdp_Get_Port_Stats_Slowpath(switch, port, byref(counters), byref(size)) != 0:
        return refuse("Failed to retrieve slowpath port stats.\n")
    set_counters(stats, counters, "spTx", "spRx")
    return stats


def TableFlowInfoGet(index):
    if not 0 <= index < 1 << 22:
        return refuse("TypeError: Invalid parameter passed.\n")
    info = flow_info
    size = c_uint32(sizeof(info))
    if qdp.Qdp_P4_Cmd(byref(TableRead(12, 11, 26, 4, index)), 12, byref(info), byref(size)) != 0:
        return refuse("Failed to get table data\n")
    return {key: getattr(info, key) for key in FLOW_INFO_KEYS}


def ListPorts(switch):
    if not 0 <= switch < 16:
        return refuse("TypeError: Invalid switch ID passed.\n")
    ports = port_list
    size = c_uint32(sizeof(ports))
    if qdp.Qdp_Get_Port_List(switch, byref(ports), byref(size)) != 0:
        return refuse("Failed to retrieve list of ports.\n")
    return [{"portID": entry.port, "qdpPortID": entry.qdp_port, "numTxQ": entry.num_tx, "numRxQ": entry.num_rx,
             "hwAddr": bytes(entry.mac).hex(":"), "numMACs": entry.num_macs,
             "clientType": client_name(entry.client, entry.representor, entry.flags),
             "txQLM": entry.tx_lcores[:entry.num_tx], "rxQLM": entry.rx_lcores[:entry.num_rx]}
            for entry in ports.entries[:ports.count]]


def DumpFlowTable(*arguments):
    if len(arguments) != 17 or not 0 <= arguments[1] < 64 or arguments[2] == 0xFFFFFFFF:
        return refuse("TypeError: Invalid parameter passed.\n")
    request, page = FlowRequest(), page_buffer
    if reason := flow_request(request, arguments):
        return refuse(reason)
    size = c_uint32(sizeof(page))
    if qdp.Qdp_Dump_Flow_Table(byref(request), byref(page), byref(size)) != 0:
        return refuse("Failed to retrieve flow table.\n\n")
    return flow_page(bytes(page), page.count, page.next_start_index, page.valid_bytes, page.group_offset)


def GetSwitchBurstSize(alias):
    handle = state.DVSState_SwitchFindByAlias(alias.encode())
    if not handle or state.DVS_ClassName(handle) != b"vswitch":
        return refuse(f"Failed to find dvs ID for dvs alias {alias}.\n")
    switch_id = state.DVS_SwitchId(handle)
    key = b"com.tarnix.wyx.qdp.burstsize"
    value, length = POINTER(Setting)(), c_uint32()
    if state.DVSHCK_HostPropGet(switch_id, key, byref(value), byref(length)) != 0:
        burst_size = c_uint32()
        return burst_size.value if qdp.Qdp_GetSwitchBurstSize(switch_id, byref(burst_size)) == 0 else None
    try:
        if value.contents.version != 0:
            return refuse(f"Format of property {key.decode()} value is from unknown version.\n")
        if length.value != sizeof(Setting):
            return refuse(f"Property {key.decode()} value length is odd.\n")
        return value.contents.value
    finally:
        state.DVSHCK_DataFree(value)


def features(chunk, items, group):
    found = []
    for i in range(group.first, group.first + group.count):
        item = LBFeature.from_buffer(chunk, items + i * sizeof(LBFeature))
        found.append({"count load": item.load, "feat ID": item.feature, "ctx ID": item.context, "pkts": item.packets,
                      "bytes": item.bytes})
    return tuple(found)


def queues(chunk, items, group):
    found = []
    for i in range(group.first, group.first + group.count):
        item = LBQueue.from_buffer(chunk, items + i * sizeof(LBQueue))
        found.append({"count load": item.load, "ctx ID": item.context, "pkts": item.packets, "bytes": item.bytes})
    return tuple(found)


def add_entry(lists, chunk, offset):
    kind = c_uint32.from_buffer(chunk, offset).value
    if kind == 0:
        port = LBPort.from_buffer(chunk, offset)
        items = offset + sizeof(LBPort)
        lists[0].append({
            "port ID": port.port, "mem affinity mask": port.affinity, "priority": port.priority,
            "vnicRxQ": features(chunk, items, port.vnic_rx), "ofldRSS": features(chunk, items, port.offload),
            "vnicTxQ": features(chunk, items, port.vnic_tx), "filt": features(chunk, items, port.filters)})
        return sizeof(LBPort) + sizeof(LBFeature) * (port.vnic_rx.count + port.offload.count + port.vnic_tx.count +
                                                     port.filters.count)
    if kind == 1:
        uplink = LBUplink.from_buffer(chunk, offset)
        lists[1].append({"port ID": uplink.port, "mem affinity ID": uplink.affinity,
                         "uplinkRx": queues(chunk, offset + sizeof(LBUplink), uplink.rx)})
        return sizeof(LBUplink) + sizeof(LBQueue) * uplink.rx.count
    if kind == 2:
        context = LBContext.from_buffer(chunk, offset)
        lists[2].append({"ctx ID": context.context, "world ID": context.world & 0xFFFFFFFFFFFFFFFF,
                         "biased CPU": context.biased, "raw CPU": context.raw, "pkts": context.packets,
                         "bytes": context.bytes, "max pb load": context.max_load})
        return sizeof(LBContext)
    raise OSError("Invalid format in LB stats dump")


def DumpLBStats(switch, port, ports, context, contexts):
    if not (0 <= switch < 16 and 0 <= port < 16384 and port + ports <= 16384 and 0 <= context < 64 and
            context + contexts <= 64):
        raise ValueError("Invalid parameter passed.")
    chunk, lists = lb_chunk, ([], [], [])
    while ports or contexts:
        if qdp.Qdp_DumpLBStats(switch, port, ports, context, contexts, byref(chunk), sizeof(chunk)) != 0:
            raise OSError("Failed to dump LB stats. Please see hostcore.log")
        offset = Chunk.entries.offset
        for _ in range(chunk.count):
            offset += add_entry(lists, chunk, offset)
        if chunk.next_port < port + ports:
            port = chunk.next_port
        else:
            ports = 0
        if chunk.next_context < context + contexts:
            context = chunk.next_context
        else:
            contexts = 0
    return lists
