// The measured methods in C++, for libraries that bind C++ functions. Their wrappers own and convert; behind them is
// the interpreter's interface, with keys that are made once and kept.
//
// What includes it has defined the namespace py of the library, steal(), which makes a py::object of a new reference,
// and fail(), which throws the exception that is set.
#pragma once

#include <algorithm>
#include <memory>

#include "bench/native/flow_text.h"
#include "bench/native/keys.h"
#include "platform/p4_tables.h"
#include "platform/qdp_control.h"
#include "platform/settings.h"
#include "platform/switch_state.h"

// The kept key of a text.
#define KEY(text)                                                       \
    ([]() -> PyObject* {                                                \
        static PyObject* const kept = PyUnicode_InternFromString(text); \
        return kept;                                                    \
    }())
#define SET(dict, text, value) set(dict, KEY(text), value)

namespace {

PyObject* made(PyObject* object)
{
    if (!object)
        fail();
    return object;
}

PyObject* object_of(const char* text)
{
    return made(PyUnicode_FromString(text));
}

PyObject* object_of(py::object value)
{
    return value.release().ptr();
}

template <class Number>
requires std::is_integral_v<Number> PyObject* object_of(Number number)
{
    if constexpr (std::is_signed_v<Number>)
        return made(PyLong_FromLong(number));
    return made(PyLong_FromUnsignedLong(static_cast<unsigned long>(number)));
}

template <class Value>
void set(const py::object& dict, PyObject* key, Value value)
{
    PyObject* object = object_of(std::move(value));
    const int status = PyDict_SetItem(dict.ptr(), key, object);
    Py_DECREF(object);
    if (status != 0)
        fail();
}

py::object new_dict()
{
    return steal(made(PyDict_New()));
}

py::object new_list(size_t length)
{
    return steal(made(PyList_New(static_cast<Py_ssize_t>(length))));
}

py::object refuse(const char* text)
{
    fputs(text, stderr);
    return py::none();
}

py::object get_port_stats(uint32_t switch_number, uint32_t port)
{
    if (switch_number >= max_switches || port >= max_ports)
        return refuse("TypeError: Invalid parameter passed.\n");
    PortCounters counters{};
    uint32_t size = sizeof counters;
    if (Qdp_Get_Port_Stats(switch_number, port, &counters, &size) != 0)
        return refuse("Failed to retrieve port stats.\n");
    const py::object stats = new_dict();
#define ROW(key, member) SET(stats, key, static_cast<int64_t>(counters.member));
    PORT_COUNTER_ROWS(ROW, "tx", "rx")
    if (Qdp_Get_Port_Stats_Slowpath(switch_number, port, &counters, &size) != 0)
        return refuse("Failed to retrieve slowpath port stats.\n");
    PORT_COUNTER_ROWS(ROW, "spTx", "spRx")
#undef ROW
    return stats;
}

py::object table_flow_info_get(uint32_t index)
{
    if (index >= max_flows)
        return refuse("TypeError: Invalid parameter passed.\n");
    const TableReadRequest request{sizeof request, static_cast<uint16_t>(P4Opcode::table_read),
                                   static_cast<uint16_t>(P4Table::flow_info), sizeof index, index};
    FlowInfo info{};
    uint32_t size = sizeof info;
    if (Qdp_P4_Cmd(&request, sizeof request, &info, &size) != 0)
        return refuse("Failed to get table data\n");
    const py::object entry = new_dict();
#define ROW(key, member) SET(entry, key, +info.member);
    FLOW_INFO_ROWS(ROW, ROW)
#undef ROW
    return entry;
}

py::object queue_list(const uint8_t* lcores, size_t count)
{
    py::object list = new_list(count);
    for (size_t i = 0; i < count; ++i)
        PyList_SET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i), object_of(lcores[i]));
    return list;
}

py::object list_ports(uint32_t switch_number)
{
    if (switch_number >= max_switches)
        return refuse("TypeError: Invalid switch ID passed.\n");
    const std::unique_ptr<PortList> ports{new PortList};  // not cleared
    uint32_t size = sizeof *ports;
    if (Qdp_Get_Port_List(switch_number, ports.get(), &size) != 0)
        return refuse("Failed to retrieve list of ports.\n");
    py::object list = new_list(ports->count);
    for (uint32_t i = 0; i < ports->count; ++i) {
        const PortListEntry& entry = ports->entries[i];
        char mac[mac_text_bytes];
        write_mac(entry.mac, mac);
        const py::object port = new_dict();
        SET(port, "portID", entry.port);
        SET(port, "qdpPortID", entry.qdp_port);
        SET(port, "numTxQ", entry.num_tx_queues);
        SET(port, "numRxQ", entry.num_rx_queues);
        SET(port, "hwAddr", static_cast<const char*>(mac));
        SET(port, "numMACs", entry.num_macs);
        SET(port, "clientType", client_name(entry));
        SET(port, "txQLM", queue_list(entry.tx_queue_lcores, entry.num_tx_queues));
        SET(port, "rxQLM", queue_list(entry.rx_queue_lcores, entry.num_rx_queues));
        PyList_SET_ITEM(list.ptr(), i, py::object(port).release().ptr());
    }
    return list;
}

void read_mac(const char* text, uint8_t* mac)
{
    static_cast<void>(sscanf(text, "%02hhx:%02hhx:%02hhx:%02hhx:%02hhx:%02hhx", &mac[0], &mac[1], &mac[2], &mac[3],
                             &mac[4], &mac[5]));
}

bool read_address(uint32_t version, const char* text, uint8_t* out)
{
    return version == 0 || inet_pton(version == 4 ? AF_INET : AF_INET6, text, out) == 1;
}

py::object dump_flow_table(uint32_t selector, uint32_t lcore, uint32_t start_index, uint32_t option,
                           uint32_t filters_source_mac, const char* source_mac, uint32_t filters_destination_mac,
                           const char* destination_mac, uint32_t source_version, const char* source,
                           uint32_t destination_version, const char* destination, int filter_1, int filter_2,
                           int filter_3, int filter_4, int filter_5)
{
    if (lcore >= max_lcores || start_index == no_more_flows)
        return refuse("TypeError: Invalid parameter passed.\n");
    FlowTableRequest request{};
    request.selector = selector;
    request.lcore = lcore;
    request.start_index = start_index;
    request.option = static_cast<uint8_t>(option);
    request.filters_source_mac = static_cast<uint8_t>(filters_source_mac);
    request.filters_destination_mac = static_cast<uint8_t>(filters_destination_mac);
    if (request.filters_source_mac)
        read_mac(source_mac, request.source_mac);
    if (request.filters_destination_mac)
        read_mac(destination_mac, request.destination_mac);
    request.source_ip_version = source_version;
    request.destination_ip_version = destination_version;
    if (!read_address(source_version, source, request.source_ip))
        return refuse("Failed to convert source IPv4 address to binary form.\n\n");
    if (!read_address(destination_version, destination, request.destination_ip))
        return refuse("Failed to convert destination IPv4 address to binary form.\n\n");
    const int filters[] = {filter_1, filter_2, filter_3, filter_4, filter_5};
    memcpy(request.filters, filters, sizeof filters);

    const auto response = std::make_unique<FlowTableResponse>();
    uint32_t size = sizeof *response;
    if (Qdp_Dump_Flow_Table(&request, response.get(), &size) != 0)
        return refuse("Failed to retrieve flow table.\n\n");
    py::object flows = new_list(response->count);
    size_t offset = offsetof(FlowTableResponse, entries);
    for (uint32_t i = 0; i < response->count; ++i) {
        if (offset + max_flow_entry_bytes > std::min<size_t>(response->valid_bytes, sizeof *response))
            return refuse("Invalid response returned.\n");
        const uint8_t* entry = reinterpret_cast<const uint8_t*>(response.get()) + offset;
        char key[flow_text::key_bytes], actions[flow_text::actions_bytes];
        flow_text::write_key(entry + offsetof(FlowEntry, key), key);
        if (!flow_text::write_actions(entry, response->group_offset, actions))
            return refuse("Invalid action\nInvalid action\n");
        const auto* flow = reinterpret_cast<const FlowEntry*>(entry);
        const py::object item = new_dict();
        SET(item, "key", static_cast<const char*>(key));
        SET(item, "actions", static_cast<const char*>(actions));
        SET(item, "swHits", flow_text::software_hits(entry));
        SET(item, "swBytes", flow->area.software_bytes);
        SET(item, "hwHits", flow->hardware_hits);
        SET(item, "hwBytes", flow->hardware_bytes);
        PyList_SET_ITEM(flows.ptr(), i, py::object(item).release().ptr());
        offset += offsetof(FlowEntry, area) + flow->area.length;
    }
    const py::object page = new_dict();
    SET(page, "startIndex", response->next_start_index);
    SET(page, "list", std::move(flows));
    return page;
}

py::object get_switch_burst_size(const char* alias)
{
    DVSSwitch* handle = DVSState_SwitchFindByAlias(alias);
    const char* class_name = handle ? DVS_ClassName(handle) : nullptr;
    if (!class_name || strcmp(class_name, vswitch_class) != 0)
        return refuse("Failed to find dvs ID for the dvs alias.\n");
    const char* id = DVS_SwitchId(handle);
    void* value = nullptr;
    uint32_t length = 0;
    if (DVSHCK_HostPropGet(id, burst_size_property, &value, &length) != status_success) {
        uint32_t burst_size = 0;
        return Qdp_GetSwitchBurstSize(id, &burst_size) == 0 ? steal(object_of(burst_size)) : py::none();
    }
    const std::unique_ptr<void, void (*)(void*)> owned{value, DVSHCK_DataFree};
    WordSetting setting{};
    memcpy(&setting, value, std::min<size_t>(length, sizeof setting));
    if (setting.version != setting_version)
        return refuse("Format of property com.tarnix.wyx.qdp.burstsize value is from unknown version.\n");
    if (length != sizeof setting)
        return refuse("Property com.tarnix.wyx.qdp.burstsize value length is odd.\n");
    return steal(object_of(setting.value));
}

template <class Record>
Record record_at(const LBStatsChunk& chunk, size_t offset)
{
    if (offset + sizeof(Record) > sizeof chunk)
        throw py::value_error("Invalid format in LB stats dump");
    Record record;
    memcpy(static_cast<void*>(&record), reinterpret_cast<const uint8_t*>(&chunk) + offset, sizeof record);
    return record;
}

void fill(const py::object& dict, const LBFeatureItem& item)
{
#define ROW(key, member) SET(dict, key, item.member);
    LB_FEATURE_ROWS(ROW)
}

void fill(const py::object& dict, const LBQueueItem& item)
{
    LB_QUEUE_ROWS(ROW)
#undef ROW
}

template <class Item>
py::object items_of(const LBStatsChunk& chunk, size_t offset, LBItemGroup group)
{
    py::object tuple = steal(made(PyTuple_New(group.count)));
    for (uint32_t i = 0; i < group.count; ++i) {
        const auto item = record_at<Item>(chunk, offset + (size_t{group.first} + i) * sizeof(Item));
        const py::object dict = new_dict();
        fill(dict, item);
        PyTuple_SET_ITEM(tuple.ptr(), i, py::object(dict).release().ptr());
    }
    return tuple;
}

size_t add_entry(const py::object& lists, const LBStatsChunk& chunk, size_t offset)
{
    const auto type = record_at<uint32_t>(chunk, offset);
    const py::object entry = new_dict();
    size_t length = 0;
    if (type == static_cast<uint32_t>(LBEntryType::port)) {
        const auto port = record_at<LBPortEntry>(chunk, offset);
        const size_t items = offset + sizeof port;
        SET(entry, "port ID", port.port);
        SET(entry, "mem affinity mask", port.affinity_mask);
        SET(entry, "priority", port.priority);
        SET(entry, "vnicRxQ", items_of<LBFeatureItem>(chunk, items, port.vnic_rx_queues));
        SET(entry, "ofldRSS", items_of<LBFeatureItem>(chunk, items, port.offload_rss));
        SET(entry, "vnicTxQ", items_of<LBFeatureItem>(chunk, items, port.vnic_tx_queues));
        SET(entry, "filt", items_of<LBFeatureItem>(chunk, items, port.filters));
        length = sizeof port + sizeof(LBFeatureItem) * (size_t{port.vnic_rx_queues.count} + port.offload_rss.count +
                                                        port.vnic_tx_queues.count + port.filters.count);
    } else if (type == static_cast<uint32_t>(LBEntryType::uplink)) {
        const auto uplink = record_at<LBUplinkEntry>(chunk, offset);
        SET(entry, "port ID", uplink.port);
        SET(entry, "mem affinity ID", uplink.affinity);
        SET(entry, "uplinkRx", items_of<LBQueueItem>(chunk, offset + sizeof uplink, uplink.rx_queues));
        length = sizeof uplink + sizeof(LBQueueItem) * size_t{uplink.rx_queues.count};
    } else if (type == static_cast<uint32_t>(LBEntryType::context)) {
        const auto context = record_at<LBContextEntry>(chunk, offset);
        SET(entry, "ctx ID", uint32_t{context.context});
        SET(entry, "world ID", static_cast<uint64_t>(int64_t{context.world}));
        SET(entry, "biased CPU", uint32_t{context.biased_cpu});
        SET(entry, "raw CPU", uint32_t{context.raw_cpu});
        SET(entry, "pkts", uint64_t{context.packets});
        SET(entry, "bytes", uint64_t{context.bytes});
        SET(entry, "max pb load", uint32_t{context.max_pb_load});
        length = sizeof context;
    } else {
        throw py::value_error("Invalid format in LB stats dump");
    }
    if (PyList_Append(PyTuple_GET_ITEM(lists.ptr(), type), entry.ptr()) != 0)
        fail();
    return length;
}

py::object dump_lb_stats(uint32_t switch_number, uint32_t port, uint32_t ports, uint32_t context, uint32_t contexts)
{
    if (switch_number >= max_switches || port >= max_ports || port + ports > max_ports || context >= max_lb_contexts ||
        context + contexts > max_lb_contexts)
        throw py::value_error("Invalid parameter passed.");
    const auto chunk = std::make_unique<LBStatsChunk>();
    py::object lists = steal(made(PyTuple_New(3)));
    for (Py_ssize_t i = 0; i < 3; ++i)
        PyTuple_SET_ITEM(lists.ptr(), i, new_list(0).release().ptr());
    while (ports != 0 || contexts != 0) {
        if (Qdp_DumpLBStats(switch_number, port, ports, context, contexts, chunk.get(), sizeof *chunk) != 0)
            throw py::value_error("Failed to dump LB stats. Please see hostcore.log");
        size_t offset = offsetof(LBStatsChunk, entries);
        for (uint32_t i = 0; i < chunk->count; ++i)
            offset += add_entry(lists, *chunk, offset);
        advance(chunk->next_port, port, ports);
        advance(chunk->next_context, context, contexts);
    }
    return lists;
}

void define_methods(py::module_& module)
{
#define ROW(name, function) module.def(name, function);
    MEASURED_METHODS(ROW)
#undef ROW
}

}  // namespace
