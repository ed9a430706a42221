"""The measured methods with ctypes for the calls alone: records are numpy's structured arrays, made objects whole."""

import ctypes

import numpy
from numpy import dtype, frombuffer

import with_struct
from rendering import client_name, refuse
from with_struct import DumpFlowTable, GetSwitchBurstSize, byref, c_uint32, qdp  # texts and single words: no arrays

COUNTERS = numpy.empty(16, "<i8")
COUNTER_KEYS, SLOW_KEYS, ORDER = with_struct.FAST_KEYS, with_struct.SLOW_KEYS, numpy.array(with_struct.ORDER)
FLOW_INFO_TYPE = dtype("<u4, <u2, <u2, <i8, <u4, <u2, <u2, <u4, u1, u1, <u2, <u2, <u2, <u4, <u4, <u4, <u4, <u4")
FLOW_INFO = numpy.empty(1, FLOW_INFO_TYPE)
PORT_TYPE = dtype("<u4, <u4, u1, u1, V6, <u2, <u2, <u4, <u4, V64, V64")
PORTS = numpy.empty(with_struct.PORT_LIST_BYTES, "u1")
FEATURE_TYPE, QUEUE_TYPE = dtype("<u4, <u4, <u4, <u4, <u8, <u8"), dtype("<u4, <u4, <u8, <u8")


def GetPortStats(switch, port):
    if not (0 <= switch < 16 and 0 <= port < 16384):
        return refuse("TypeError: Invalid parameter passed.\n")
    size, place = c_uint32(COUNTERS.nbytes), ctypes.c_void_p(COUNTERS.ctypes.data)
    if qdp.Qdp_Get_Port_Stats(switch, port, place, byref(size)) != 0:
        return refuse("Failed to retrieve port stats.\n")
    stats = dict(zip(COUNTER_KEYS, COUNTERS[ORDER].tolist()))
    if qdp.Qdp_Get_Port_Stats_Slowpath(switch, port, place, byref(size)) != 0:
        return refuse("Failed to retrieve slowpath port stats.\n")
    stats.update(zip(SLOW_KEYS, COUNTERS[ORDER].tolist()))
    return stats


def TableFlowInfoGet(index):
    if not 0 <= index < 1 << 22:
        return refuse("TypeError: Invalid parameter passed.\n")
    size = c_uint32(FLOW_INFO.nbytes)
    request = with_struct.TABLE_READ.pack(12, 11, 26, 4, index)
    if qdp.Qdp_P4_Cmd(request, 12, ctypes.c_void_p(FLOW_INFO.ctypes.data), byref(size)) != 0:
        return refuse("Failed to get table data\n")
    first, port, _, *rest = FLOW_INFO.item()
    return with_struct.flow_info_dict((first, port, *rest))


def ListPorts(switch):
    if not 0 <= switch < 16:
        return refuse("TypeError: Invalid switch ID passed.\n")
    size = c_uint32(PORTS.nbytes)
    if qdp.Qdp_Get_Port_List(switch, ctypes.c_void_p(PORTS.ctypes.data), byref(size)) != 0:
        return refuse("Failed to retrieve list of ports.\n")
    count = int.from_bytes(PORTS[4:8].tobytes(), "little")
    ports = frombuffer(PORTS, PORT_TYPE, count, with_struct.PORT_LIST_HEADER).tolist() if count else []
    return [{"portID": port, "qdpPortID": qdp_port, "numTxQ": num_tx, "numRxQ": num_rx, "hwAddr": mac.hex(":"),
             "numMACs": num_macs, "clientType": client_name(client, representor, flags), "txQLM": list(tx[:num_tx]),
             "rxQLM": list(rx[:num_rx])}
            for port, qdp_port, num_tx, num_rx, mac, num_macs, representor, client, flags, tx, rx in ports]


def features(chunk, offset, first, count):
    if count == 0:
        return ()
    found = frombuffer(chunk, FEATURE_TYPE, count, offset + first * FEATURE_TYPE.itemsize).tolist()
    return tuple([{"count load": load, "feat ID": feature, "ctx ID": context, "pkts": packets, "bytes": count_bytes}
                  for load, feature, context, _, packets, count_bytes in found])


def queues(chunk, offset, first, count):
    if count == 0:
        return ()
    found = frombuffer(chunk, QUEUE_TYPE, count, offset + first * QUEUE_TYPE.itemsize).tolist()
    return tuple([{"count load": load, "ctx ID": context, "pkts": packets, "bytes": count_bytes}
                  for load, context, packets, count_bytes in found])


def DumpLBStats(*wanted):
    return with_struct.dump_lb_stats(with_struct.read_chunk, with_struct.chunk_view, features, queues, *wanted)
