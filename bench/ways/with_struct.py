"""The measured methods with ctypes for the calls alone: records are buffers, which the struct module takes apart."""

import ctypes
import socket
import struct
from ctypes import byref, c_char_p, c_uint32, c_void_p, create_string_buffer

from rendering import client_name, flow_page, refuse

qdp = ctypes.CDLL("libqdp.so")
state = ctypes.CDLL("libqmtPublic.so")
state.DVSState_SwitchFindByAlias.restype = c_void_p
state.DVS_ClassName.restype = c_char_p
state.DVS_SwitchId.restype = c_char_p
for operation in state.DVS_ClassName, state.DVS_SwitchId, state.DVSHCK_DataFree:
    operation.argtypes = [c_void_p]

COUNTERS = struct.Struct("<16q")
COUNTER_NAMES = "Bytes Pkts McastBytes McastPkts BcastBytes BcastPkts Drops Errors".split()
SHOWN = [1, 0, 3, 2, 5, 4, 6, 7]  # packets first
FAST_KEYS = [prefix + COUNTER_NAMES[i] for prefix in ("tx", "rx") for i in SHOWN]
SLOW_KEYS = ["sp" + key[0].upper() + key[1:] for key in FAST_KEYS]
ORDER = [side + i for side in (0, 8) for i in SHOWN]

FLOW_INFO = struct.Struct("<IH2xqIHHIBBHHHIIIII")
FLOW_BITS = [(name, i, 1) for i, name in enumerate(
    "vdrTtlCheck vdrVld natVld encap decap ctIngressVld ctIngressDir ctEgressVld ctEgressDir ipfixIngressVld "
    "ipfixEgressVld drop isDstUplink isSrcUplink".split())] + [
    ("dstUplinkIdx", 14, 3), ("srcUplinkIdx", 16, 3), ("vdrHops", 24, 255)]
FLOW_HEAD = "flowIdx dstPort count timeStamp srcTag dstTag".split()
FLOW_END = ("ingressMirror egressMirror encapIdx ctIngressStatsIdx ctEgressStatsIdx natIdx ctIngressIdx ctEgressIdx "
            "ipfixIngressIdx ipfixEgressIdx").split()

PORT = struct.Struct("<IIBB6sHHII64s64s")
PORT_LIST_BYTES, PORT_LIST_HEADER = 2555916, 12
FLOW_REQUEST = struct.Struct("<IIIBB6sB6sxI16sI4x16s5i4x")
PAGE_HEADER = struct.Struct("<8xIIII")
PAGE_BYTES = 10264
SETTING = struct.Struct("<II")
CHUNK_HEADER = struct.Struct("<III")
CHUNK_BYTES = 4096
WORD = struct.Struct("<I")
LB_PORT = struct.Struct("<4xIQI4x8I")
LB_FEATURE = struct.Struct("<III4xQQ")
LB_UPLINK = struct.Struct("<4xII4xII")
LB_QUEUE = struct.Struct("<IIQQ")
LB_CONTEXT = struct.Struct("<4xIiIIQQI")
FEATURE_KEYS = "count load", "feat ID", "ctx ID", "pkts", "bytes"
QUEUE_KEYS = "count load", "ctx ID", "pkts", "bytes"
CONTEXT_KEYS = "ctx ID", "world ID", "biased CPU", "raw CPU", "pkts", "bytes", "max pb load"


def GetPortStats(switch, port):
    if not (0 <= switch < 16 and 0 <= port < 16384):
        return refuse("TypeError: Invalid parameter passed.\n")
    counters = create_string_buffer(COUNTERS.size)
    size = c_uint32(COUNTERS.size)
    if qdp.Qdp_Get_Port_Stats(switch, port, counters, byref(size)) != 0:
        return refuse("Failed to retrieve port stats.\n")
    values = COUNTERS.unpack(counters)
    stats = {key: values[i] for key, i in zip(FAST_KEYS, ORDER)}
    if qdp.Qdp_Get_Port_Stats_Slowpath(switch, port, counters, byref(size)) != 0:
        return refuse("Failed to retrieve slowpath port stats.\n")
    values = COUNTERS.unpack(counters)
    for key, i in zip(SLOW_KEYS, ORDER):
        stats[key] = values[i]
    return stats


def TableFlowInfoGet(index):
    if not 0 <= index < 1 << 22:
        return refuse("TypeError: Invalid parameter passed.\n")
    info = create_string_buffer(FLOW_INFO.size)
    size = c_uint32(FLOW_INFO.size)
    if qdp.Qdp_P4_Cmd(struct.pack("<HHHHI", 12, 11, 26, 4, index), 12, info, byref(size)) != 0:
        return refuse("Failed to get table data\n")
    values = FLOW_INFO.unpack(info)
    entry = dict(zip(FLOW_HEAD, values))
    word = values[6]
    for key, lowest, mask in FLOW_BITS:
        entry[key] = word >> lowest & mask
    entry.update(zip(FLOW_END, values[7:]))
    return entry


def ListPorts(switch):
    if not 0 <= switch < 16:
        return refuse("TypeError: Invalid switch ID passed.\n")
    record = create_string_buffer(PORT_LIST_BYTES)
    size = c_uint32(PORT_LIST_BYTES)
    if qdp.Qdp_Get_Port_List(switch, record, byref(size)) != 0:
        return refuse("Failed to retrieve list of ports.\n")
    count = WORD.unpack_from(record, 4)[0]
    ports = memoryview(record)[PORT_LIST_HEADER:PORT_LIST_HEADER + count * PORT.size]
    return [{"portID": port, "qdpPortID": qdp_port, "numTxQ": num_tx, "numRxQ": num_rx, "hwAddr": mac.hex(":"),
             "numMACs": num_macs, "clientType": client_name(client, representor, flags), "txQLM": list(tx[:num_tx]),
             "rxQLM": list(rx[:num_rx])}
            for port, qdp_port, num_tx, num_rx, mac, num_macs, representor, client, flags, tx, rx
            in PORT.iter_unpack(ports)]


def address_bytes(version, text, side):
    try:
        return socket.inet_pton(socket.AF_INET if version == 4 else socket.AF_INET6, text) if version else b""
    except OSError:
        refuse(f"Failed to convert {side} IPv4 address to binary form.\n\n")
        return None


def mac_bytes(is_on, text):
    return bytes.fromhex(text.replace(":", "")) if is_on else b""


def DumpFlowTable(*arguments):
    if len(arguments) != 17 or not 0 <= arguments[1] < 64 or arguments[2] == 0xFFFFFFFF:
        return refuse("TypeError: Invalid parameter passed.\n")
    (selector, lcore, start, option, filters_source, source_mac, filters_destination, destination_mac, source_version,
     source, destination_version, destination, *filters) = arguments
    source = address_bytes(source_version, source, "source")
    if source is None:
        return None
    destination = address_bytes(destination_version, destination, "destination")
    if destination is None:
        return None
    request = FLOW_REQUEST.pack(selector, lcore, start, option & 255, filters_source & 255,
                                mac_bytes(filters_source, source_mac), filters_destination & 255,
                                mac_bytes(filters_destination, destination_mac), source_version, source,
                                destination_version, destination, *filters)
    buffer = create_string_buffer(PAGE_BYTES)
    size = c_uint32(PAGE_BYTES)
    if qdp.Qdp_Dump_Flow_Table(request, buffer, byref(size)) != 0:
        return refuse("Failed to retrieve flow table.\n\n")
    page = buffer.raw
    next_start_index, count, valid_bytes, group_offset = PAGE_HEADER.unpack_from(page)
    return flow_page(page, count, next_start_index, valid_bytes, group_offset)


def GetSwitchBurstSize(alias):
    handle = state.DVSState_SwitchFindByAlias(alias.encode())
    if not handle or state.DVS_ClassName(handle) != b"vswitch":
        return refuse(f"Failed to find dvs ID for dvs alias {alias}.\n")
    switch_id = state.DVS_SwitchId(handle)
    key = b"com.tarnix.wyx.qdp.burstsize"
    value, length = c_void_p(), c_uint32()
    if state.DVSHCK_HostPropGet(switch_id, key, byref(value), byref(length)) != 0:
        burst_size = c_uint32()
        return burst_size.value if qdp.Qdp_GetSwitchBurstSize(switch_id, byref(burst_size)) == 0 else None
    record = ctypes.string_at(value, length.value)
    state.DVSHCK_DataFree(value)
    if WORD.unpack_from(record)[0] != 0:
        return refuse(f"Format of property {key.decode()} value is from unknown version.\n")
    if len(record) != SETTING.size:
        return refuse(f"Property {key.decode()} value length is odd.\n")
    return SETTING.unpack(record)[1]


def items(record, keys, chunk, offset, first, count):
    start = offset + first * record.size
    return tuple(dict(zip(keys, values)) for values in record.iter_unpack(chunk[start:start + count * record.size]))


def add_entry(lists, chunk, offset):
    kind = WORD.unpack_from(chunk, offset)[0]
    if kind == 0:
        port, affinity, priority, *groups = LB_PORT.unpack_from(chunk, offset)
        offset += LB_PORT.size
        entry = {"port ID": port, "mem affinity mask": affinity, "priority": priority}
        for key, first, count in zip(("vnicRxQ", "ofldRSS", "vnicTxQ", "filt"), groups[::2], groups[1::2]):
            entry[key] = items(LB_FEATURE, FEATURE_KEYS, chunk, offset, first, count)
        length = LB_PORT.size + LB_FEATURE.size * sum(groups[1::2])
    elif kind == 1:
        port, affinity, first, count = LB_UPLINK.unpack_from(chunk, offset)
        entry = {"port ID": port, "mem affinity ID": affinity,
                 "uplinkRx": items(LB_QUEUE, QUEUE_KEYS, chunk, offset + LB_UPLINK.size, first, count)}
        length = LB_UPLINK.size + LB_QUEUE.size * count
    elif kind == 2:
        entry = dict(zip(CONTEXT_KEYS, LB_CONTEXT.unpack_from(chunk, offset)))
        entry["world ID"] &= 0xFFFFFFFFFFFFFFFF
        length = LB_CONTEXT.size
    else:
        raise OSError("Invalid format in LB stats dump")
    lists[kind].append(entry)
    return length


def DumpLBStats(switch, port, ports, context, contexts):
    if not (0 <= switch < 16 and 0 <= port < 16384 and port + ports <= 16384 and 0 <= context < 64 and
            context + contexts <= 64):
        raise ValueError("Invalid parameter passed.")
    chunk, lists = create_string_buffer(CHUNK_BYTES), ([], [], [])
    view = memoryview(chunk)
    while ports or contexts:
        if qdp.Qdp_DumpLBStats(switch, port, ports, context, contexts, chunk, CHUNK_BYTES) != 0:
            raise OSError("Failed to dump LB stats. Please see hostcore.log")
        next_port, next_context, count = CHUNK_HEADER.unpack_from(chunk)
        offset = 24
        for _ in range(count):
            offset += add_entry(lists, view, offset)
        if next_port < port + ports:
            port = next_port
        else:
            ports = 0
        if next_context < context + contexts:
            context = next_context
        else:
            contexts = 0
    return lists
