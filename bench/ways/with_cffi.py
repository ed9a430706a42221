"""The measured methods with cffi in API mode: compiled calls, and records whose fields are read as attributes."""

from _with_cffi import ffi, lib
from rendering import client_name, flow_page, flow_request, refuse

FLOW_BITS = [(name, i, 1) for i, name in enumerate(
    "vdrTtlCheck vdrVld natVld encap decap ctIngressVld ctIngressDir ctEgressVld ctEgressDir ipfixIngressVld "
    "ipfixEgressVld drop isDstUplink isSrcUplink".split())] + [
    ("dstUplinkIdx", 14, 3), ("srcUplinkIdx", 16, 3), ("vdrHops", 24, 255)]
uncleared = ffi.new_allocator(should_clear_after_alloc=False)
BURST_SIZE = b"com.tarnix.wyx.qdp.burstsize"


def size_of(record):
    return ffi.new("uint32_t*", ffi.sizeof(record[0]))


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
    counters = ffi.new("PortCounters*")
    size = size_of(counters)
    if lib.Qdp_Get_Port_Stats(switch, port, counters, size) != 0:
        return refuse("Failed to retrieve port stats.\n")
    stats = {}
    set_counters(stats, counters, "tx", "rx")
    if lib.Qdp_Get_Port_Stats_Slowpath(switch, port, counters, size) != 0:
        return refuse("Failed to retrieve slowpath port stats.\n")
    set_counters(stats, counters, "spTx", "spRx")
    return stats


def TableFlowInfoGet(index):
    if not 0 <= index < 1 << 22:
        return refuse("TypeError: Invalid parameter passed.\n")
    info = ffi.new("FlowInfo*")
    if lib.Qdp_P4_Cmd(ffi.new("TableRead*", (12, 11, 26, 4, index)), 12, info, size_of(info)) != 0:
        return refuse("Failed to get table data\n")
    entry = {"flowIdx": info.flowIdx, "dstPort": info.dstPort, "count": info.count, "timeStamp": info.timeStamp,
             "srcTag": info.srcTag, "dstTag": info.dstTag}
    bits = info.bits
    for key, lowest, mask in FLOW_BITS:
        entry[key] = bits >> lowest & mask
    entry["ingressMirror"] = info.ingressMirror
    entry["egressMirror"] = info.egressMirror
    entry["encapIdx"] = info.encapIdx
    entry["ctIngressStatsIdx"] = info.ctIngressStatsIdx
    entry["ctEgressStatsIdx"] = info.ctEgressStatsIdx
    entry["natIdx"] = info.natIdx
    entry["ctIngressIdx"] = info.ctIngressIdx
    entry["ctEgressIdx"] = info.ctEgressIdx
    entry["ipfixIngressIdx"] = info.ipfixIngressIdx
    entry["ipfixEgressIdx"] = info.ipfixEgressIdx
    return entry


def ListPorts(switch):
    if not 0 <= switch < 16:
        return refuse("TypeError: Invalid switch ID passed.\n")
    ports = uncleared("PortList*")
    if lib.Qdp_Get_Port_List(switch, ports, size_of(ports)) != 0:
        return refuse("Failed to retrieve list of ports.\n")
    entries = ports.entries
    result = []
    for i in range(ports.count):
        entry = entries[i]
        num_tx, num_rx = entry.num_tx, entry.num_rx
        result.append({
            "portID": entry.port, "qdpPortID": entry.qdp_port, "numTxQ": num_tx, "numRxQ": num_rx,
            "hwAddr": bytes(ffi.buffer(entry.mac)).hex(":"), "numMACs": entry.num_macs,
            "clientType": client_name(entry.client, entry.representor, entry.flags),
            "txQLM": ffi.unpack(entry.tx_lcores, num_tx), "rxQLM": ffi.unpack(entry.rx_lcores, num_rx)})
    return result


def DumpFlowTable(*arguments):
    if len(arguments) != 17 or not 0 <= arguments[1] < 64 or arguments[2] == 0xFFFFFFFF:
        return refuse("TypeError: Invalid parameter passed.\n")
    request, page = ffi.new("FlowRequest*"), ffi.new("FlowPage*")
    if reason := flow_request(request, arguments):
        return refuse(reason)
    if lib.Qdp_Dump_Flow_Table(request, page, size_of(page)) != 0:
        return refuse("Failed to retrieve flow table.\n\n")
    return flow_page(bytes(ffi.buffer(page)), page.count, page.next_start_index, page.valid_bytes, page.group_offset)


def GetSwitchBurstSize(alias):
    handle = lib.DVSState_SwitchFindByAlias(alias.encode())
    if not handle or ffi.string(lib.DVS_ClassName(handle)) != b"vswitch":
        return refuse(f"Failed to find dvs ID for dvs alias {alias}.\n")
    switch_id = lib.DVS_SwitchId(handle)
    value, length = ffi.new("void**"), ffi.new("uint32_t*")
    if lib.DVSHCK_HostPropGet(switch_id, BURST_SIZE, value, length) != 0:
        burst_size = ffi.new("uint32_t*")
        return burst_size[0] if lib.Qdp_GetSwitchBurstSize(switch_id, burst_size) == 0 else None
    try:
        setting = ffi.cast("Setting*", value[0])
        if setting.version != 0:
            return refuse(f"Format of property {BURST_SIZE.decode()} value is from unknown version.\n")
        if length[0] != ffi.sizeof("Setting"):
            return refuse(f"Property {BURST_SIZE.decode()} value length is odd.\n")
        return setting.value
    finally:
        lib.DVSHCK_DataFree(value[0])


def features(items, group):
    items = ffi.cast("LBFeature*", items)
    found = []
    for i in range(group.first, group.first + group.count):
        item = items[i]
        found.append({"count load": item.load, "feat ID": item.feature, "ctx ID": item.context, "pkts": item.packets,
                      "bytes": item.bytes})
    return tuple(found)


def queues(items, group):
    items = ffi.cast("LBQueue*", items)
    found = []
    for i in range(group.first, group.first + group.count):
        item = items[i]
        found.append({"count load": item.load, "ctx ID": item.context, "pkts": item.packets, "bytes": item.bytes})
    return tuple(found)


PORT_BYTES, FEATURE_BYTES = ffi.sizeof("LBPort"), ffi.sizeof("LBFeature")
UPLINK_BYTES, QUEUE_BYTES = ffi.sizeof("LBUplink"), ffi.sizeof("LBQueue")
CONTEXT_BYTES = ffi.sizeof("LBContext")


def add_entry(lists, place):
    kind = ffi.cast("uint32_t*", place)[0]
    if kind == 0:
        port = ffi.cast("LBPort*", place)
        items = place + PORT_BYTES
        vnic_rx, offload, vnic_tx, filters = port.vnic_rx, port.offload, port.vnic_tx, port.filters
        lists[0].append({"port ID": port.port, "mem affinity mask": port.affinity, "priority": port.priority,
                         "vnicRxQ": features(items, vnic_rx), "ofldRSS": features(items, offload),
                         "vnicTxQ": features(items, vnic_tx), "filt": features(items, filters)})
        return PORT_BYTES + FEATURE_BYTES * (vnic_rx.count + offload.count + vnic_tx.count + filters.count)
    if kind == 1:
        uplink = ffi.cast("LBUplink*", place)
        lists[1].append({"port ID": uplink.port, "mem affinity ID": uplink.affinity,
                         "uplinkRx": queues(place + UPLINK_BYTES, uplink.rx)})
        return UPLINK_BYTES + QUEUE_BYTES * uplink.rx.count
    if kind == 2:
        context = ffi.cast("LBContext*", place)
        lists[2].append({"ctx ID": context.context, "world ID": context.world & 0xFFFFFFFFFFFFFFFF,
                         "biased CPU": context.biased, "raw CPU": context.raw, "pkts": context.packets,
                         "bytes": context.bytes, "max pb load": context.max_load})
        return CONTEXT_BYTES
    raise OSError("Invalid format in LB stats dump")


def DumpLBStats(switch, port, ports, context, contexts):
    if not (0 <= switch < 16 and 0 <= port < 16384 and port + ports <= 16384 and 0 <= context < 64 and
            context + contexts <= 64):
        raise ValueError("Invalid parameter passed.")
    chunk, lists = ffi.new("Chunk*"), ([], [], [])
    while ports or contexts:
        if lib.Qdp_DumpLBStats(switch, port, ports, context, contexts, chunk, ffi.sizeof("Chunk")) != 0:
            raise OSError("Failed to dump LB stats. Please see hostcore.log")
        place = ffi.cast("uint8_t*", chunk.entries)
        for _ in range(chunk.count):
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
