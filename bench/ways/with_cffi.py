"""The measured methods with cffi in API mode: compiled calls, whose records the struct module takes apart whole.

The records are kept from call to call, so that none is cleared: the methods are not for several threads at once.
"""

from _with_cffi import ffi, lib
from rendering import flow_page, flow_request, refuse
from with_struct import (COUNTERS, FAST_KEYS, FLOW_INFO, SLOW_KEYS, dump_lb_stats, features, flow_info_dict, in_order,
                         port_dicts, queues)

BURST_SIZE = b"com.tarnix.wyx.qdp.burstsize"


def kept(declaration):
    """A record, its bytes, and the size that calls are told."""
    record = ffi.new(declaration)
    return record, memoryview(ffi.buffer(record)), ffi.new("uint32_t*", ffi.sizeof(record[0]))


counters, counters_bytes, counters_size = kept("PortCounters*")
info, info_bytes, info_size = kept("FlowInfo*")
ports, ports_bytes, ports_size = kept("PortList*")
page, page_bytes, page_size = kept("FlowPage*")
chunk, chunk_bytes, _ = kept("Chunk*")


def GetPortStats(switch, port):
    if not (0 <= switch < 16 and 0 <= port < 16384):
        return refuse("TypeError: Invalid parameter passed.\n")
    if lib.Qdp_Get_Port_Stats(switch, port, counters, counters_size) != 0:
        return refuse("Failed to retrieve port stats.\n")
    stats = dict(zip(FAST_KEYS, in_order(COUNTERS.unpack(counters_bytes))))
    if lib.Qdp_Get_Port_Stats_Slowpath(switch, port, counters, counters_size) != 0:
        return refuse("Failed to retrieve slowpath port stats.\n")
    stats.update(zip(SLOW_KEYS, in_order(COUNTERS.unpack(counters_bytes))))
    return stats


def TableFlowInfoGet(index):
    if not 0 <= index < 1 << 22:
        return refuse("TypeError: Invalid parameter passed.\n")
    info_size[0] = FLOW_INFO.size
    if lib.Qdp_P4_Cmd(ffi.new("TableRead*", (12, 11, 26, 4, index)), 12, info, info_size) != 0:
        return refuse("Failed to get table data\n")
    return flow_info_dict(FLOW_INFO.unpack(info_bytes))


def ListPorts(switch):
    if not 0 <= switch < 16:
        return refuse("TypeError: Invalid switch ID passed.\n")
    if lib.Qdp_Get_Port_List(switch, ports, ports_size) != 0:
        return refuse("Failed to retrieve list of ports.\n")
    return port_dicts(ports_bytes)


def DumpFlowTable(*arguments):
    if len(arguments) != 17 or not 0 <= arguments[1] < 64 or arguments[2] == 0xFFFFFFFF:
        return refuse("TypeError: Invalid parameter passed.\n")
    request = ffi.new("FlowRequest*")
    if reason := flow_request(request, arguments):
        return refuse(reason)
    if lib.Qdp_Dump_Flow_Table(request, page, page_size) != 0:
        return refuse("Failed to retrieve flow table.\n\n")
    return flow_page(bytes(page_bytes), page.count, page.next_start_index, page.valid_bytes, page.group_offset)


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


def read_chunk(*wanted):
    return lib.Qdp_DumpLBStats(*wanted, chunk, len(chunk_bytes))


def DumpLBStats(*wanted):
    return dump_lb_stats(read_chunk, chunk_bytes, features, queues, *wanted)
