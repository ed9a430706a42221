"""The measured methods with ctypes for the calls alone: records are buffers, which the struct module takes apart whole.

The buffers are kept from call to call, so that none is cleared: the methods are not for several threads at once.
"""

import ctypes
import socket
import struct
from ctypes import byref, c_char_p, c_uint32, c_void_p, create_string_buffer
from operator import itemgetter

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
in_order = itemgetter(*ORDER)
counters = create_string_buffer(COUNTERS.size)
counters_place = byref(counters)

FLOW_INFO = struct.Struct("<IH2xqIHHIBBHHHIIIII")
flow_info = create_string_buffer(FLOW_INFO.size)
TABLE_READ = struct.Struct("<HHHHI")

PORT = struct.Struct("<IIBB6sHHII64s64s")
PORT_LIST_BYTES, PORT_LIST_HEADER = 2555916, 12
port_list = create_string_buffer(PORT_LIST_BYTES)
port_list_view = memoryview(port_list)
FLOW_REQUEST = struct.Struct("<IIIBB6sB6sxI16sI4x16s5i4x")
PAGE_HEADER = struct.Struct("<8xIIII")
PAGE_BYTES = 10264
flow_page_buffer = create_string_buffer(PAGE_BYTES)
SETTING = struct.Struct("<II")
CHUNK_HEADER = struct.Struct("<III")
CHUNK_BYTES = 4096
WORD = struct.Struct("<I")
LB_PORT = struct.Struct("<4xIQI4x8I")
LB_FEATURE = struct.Struct("<III4xQQ")
LB_UPLINK = struct.Struct("<4xII4xII")
LB_QUEUE = struct.Struct("<IIQQ")
LB_CONTEXT = struct.Struct("<4xIiIIQQI")
chunk = create_string_buffer(CHUNK_BYTES)
chunk_view = memoryview(chunk)


def GetPortStats(switch, port):
    if not (0 <= switch < 16 and 0 <= port < 16384):
        return refuse("TypeError: Invalid parameter passed.\n")
    size = byref(c_uint32(COUNTERS.size))
    if qdp.Qdp_Get_Port_Stats(switch, port, counters_place, size) != 0:
        return refuse("Failed to retrieve port stats.\n")
    stats = dict(zip(FAST_KEYS, in_order(COUNTERS.unpack(counters))))
    if qdp.Qdp_Get_Port_Stats_Slowpath(switch, port, counters_place, size) != 0:
        return refuse("Failed to retrieve slowpath port stats.\n")
    stats.update(zip(SLOW_KEYS, in_order(COUNTERS.unpack(counters))))
    return stats


def flow_info_dict(values):
    """From the entry's members, of which the seventh is the word of bits."""
    (index, port, count, time_stamp, source, destination, word, ingress_mirror, egress_mirror, encap, ingress_stats,
     egress_stats, nat, ingress, egress, ipfix_ingress, ipfix_egress) = values
    return {
        "flowIdx": index, "dstPort": port, "count": count, "timeStamp": time_stamp, "srcTag": source,
        "dstTag": destination, "vdrTtlCheck": word & 1, "vdrVld": word >> 1 & 1, "natVld": word >> 2 & 1,
        "encap": word >> 3 & 1, "decap": word >> 4 & 1, "ctIngressVld": word >> 5 & 1, "ctIngressDir": word >> 6 & 1,
        "ctEgressVld": word >> 7 & 1, "ctEgressDir": word >> 8 & 1, "ipfixIngressVld": word >> 9 & 1,
        "ipfixEgressVld": word >> 10 & 1, "drop": word >> 11 & 1, "isDstUplink": word >> 12 & 1,
        "isSrcUplink": word >> 13 & 1, "dstUplinkIdx": word >> 14 & 3, "srcUplinkIdx": word >> 16 & 3,
        "vdrHops": word >> 24, "ingressMirror": ingress_mirror, "egressMirror": egress_mirror, "encapIdx": encap,
        "ctIngressStatsIdx": ingress_stats, "ctEgressStatsIdx": egress_stats, "natIdx": nat, "ctIngressIdx": ingress,
        "ctEgressIdx": egress, "ipfixIngressIdx": ipfix_ingress, "ipfixEgressIdx": ipfix_egress,
    }


def TableFlowInfoGet(index):
    if not 0 <= index < 1 << 22:
        return refuse("TypeError: Invalid parameter passed.\n")
    size = c_uint32(FLOW_INFO.size)
    if qdp.Qdp_P4_Cmd(TABLE_READ.pack(12, 11, 26, 4, index), 12, flow_info, byref(size)) != 0:
        return refuse("Failed to get table data\n")
    return flow_info_dict(FLOW_INFO.unpack(flow_info))


def ListPorts(switch):
    if not 0 <= switch < 16:
        return refuse("TypeError: Invalid switch ID passed.\n")
    size = c_uint32(PORT_LIST_BYTES)
    if qdp.Qdp_Get_Port_List(switch, port_list, byref(size)) != 0:
        return refuse("Failed to retrieve list of ports.\n")
    return port_dicts(port_list_view)


def port_dicts(record):
    count = WORD.unpack_from(record, 4)[0]
    ports = record[PORT_LIST_HEADER:PORT_LIST_HEADER + count * PORT.size]
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
    size = c_uint32(PAGE_BYTES)
    if qdp.Qdp_Dump_Flow_Table(request, flow_page_buffer, byref(size)) != 0:
        return refuse("Failed to retrieve flow table.\n\n")
    page = flow_page_buffer.raw
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


def features(place, offset, first, count):
    start = offset + first * LB_FEATURE.size
    return tuple([{"count load": load, "feat ID": feature, "ctx ID": context, "pkts": packets, "bytes": count_bytes}
                  for load, feature, context, packets, count_bytes
                  in LB_FEATURE.iter_unpack(place[start:start + count * LB_FEATURE.size])])


def queues(place, offset, first, count):
    start = offset + first * LB_QUEUE.size
    return tuple([{"count load": load, "ctx ID": context, "pkts": packets, "bytes": count_bytes}
                  for load, context, packets, count_bytes
                  in LB_QUEUE.iter_unpack(place[start:start + count * LB_QUEUE.size])])


def entry_at(place, offset, lists, make_features, make_queues):
    """Appends the entry at an offset to the list of its kind, and returns its length."""
    kind = WORD.unpack_from(place, offset)[0]
    if kind == 0:
        port, affinity, priority, *groups = LB_PORT.unpack_from(place, offset)
        offset += LB_PORT.size
        lists[0].append({"port ID": port, "mem affinity mask": affinity, "priority": priority,
                         "vnicRxQ": make_features(place, offset, groups[0], groups[1]),
                         "ofldRSS": make_features(place, offset, groups[2], groups[3]),
                         "vnicTxQ": make_features(place, offset, groups[4], groups[5]),
                         "filt": make_features(place, offset, groups[6], groups[7])})
        return LB_PORT.size + LB_FEATURE.size * (groups[1] + groups[3] + groups[5] + groups[7])
    if kind == 1:
        port, affinity, first, count = LB_UPLINK.unpack_from(place, offset)
        lists[1].append({"port ID": port, "mem affinity ID": affinity,
                         "uplinkRx": make_queues(place, offset + LB_UPLINK.size, first, count)})
        return LB_UPLINK.size + LB_QUEUE.size * count
    if kind == 2:
        context, world, biased, raw, packets, count_bytes, load = LB_CONTEXT.unpack_from(place, offset)
        lists[2].append({"ctx ID": context, "world ID": world & 0xFFFFFFFFFFFFFFFF, "biased CPU": biased,
                         "raw CPU": raw, "pkts": packets, "bytes": count_bytes, "max pb load": load})
        return LB_CONTEXT.size
    raise OSError("Invalid format in LB stats dump")


def dump_lb_stats(read_chunk, place, make_features, make_queues, switch, port, ports, context, contexts):
    """By a call that reads the next chunk into a place."""
    if not (0 <= switch < 16 and 0 <= port < 16384 and port + ports <= 16384 and 0 <= context < 64 and
            context + contexts <= 64):
        raise ValueError("Invalid parameter passed.")
    lists = ([], [], [])
    while ports or contexts:
        if read_chunk(switch, port, ports, context, contexts) != 0:
            raise OSError("Failed to dump LB stats. Please see hostcore.log")
        next_port, next_context, count = CHUNK_HEADER.unpack_from(place)
        offset = 24
        for _ in range(count):
            offset += entry_at(place, offset, lists, make_features, make_queues)
        if next_port < port + ports:
            port = next_port
        else:
            ports = 0
        if next_context < context + contexts:
            context = next_context
        else:
            contexts = 0
    return lists


def read_chunk(*wanted):
    return qdp.Qdp_DumpLBStats(*wanted, chunk, CHUNK_BYTES)


def DumpLBStats(*wanted):
    return dump_lb_stats(read_chunk, chunk_view, features, queues, *wanted)
