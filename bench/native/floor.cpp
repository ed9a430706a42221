// The floor: the calls of the interpreter and of the platform that a successful call of the contract is made of,
// written out. Every argument is parsed, every record lies in a buffer of its own, a switch id is copied to a text of
// its own, and what the platform hands out is released. The keys of a single dict, and of the first dict of a list, are
// set from their texts; the later dicts of the list take over these key objects.
//
// Left out is all that a successful call could do without: looking at arguments, statuses, counts, versions and
// lengths, comparing a switch's class, clearing buffers before they are filled, seeing whether an object could be made,
// owning what the result owns already.
#include <Python.h>

#include "bench/native/flow_text.h"
#include "bench/native/keys.h"
#include "platform/p4_tables.h"
#include "platform/qdp_control.h"
#include "platform/settings.h"
#include "platform/switch_state.h"

#define SET(dict, key, object)                   \
    do {                                         \
        PyObject* value_ = object;               \
        PyDict_SetItemString(dict, key, value_); \
        Py_DECREF(value_);                       \
    } while (0)
#define SET_SIGNED(dict, key, number) SET(dict, key, PyLong_FromLong(static_cast<long>(number)))
#define SET_UNSIGNED(dict, key, number) SET(dict, key, PyLong_FromUnsignedLong(number))

// The key objects of the first dict of a table in a result, which holds that dict.
struct Keys {
    PyObject* objects[9];
    bool are_known = false;

    void set(PyObject* dict, int position, const char* key, PyObject* value)
    {
        if (are_known)
            PyDict_SetItem(dict, objects[position], value);
        else
            PyDict_SetItemString(dict, key, value);
        Py_DECREF(value);
    }
    void set_unsigned(PyObject* dict, int position, const char* key, unsigned long number)
    {
        set(dict, position, key, PyLong_FromUnsignedLong(number));
    }
    void take(PyObject* first)
    {
        if (are_known)
            return;
        PyObject* value;
        Py_ssize_t next = 0;
        for (PyObject** key = objects; PyDict_Next(first, &next, key, &value); ++key)
            ;
        are_known = true;
    }
};

static PyObject* get_port_stats(PyObject*, PyObject* args)
{
    unsigned switch_number, port;
    PyArg_ParseTuple(args, "II", &switch_number, &port);
    auto* counters = static_cast<PortCounters*>(malloc(sizeof(PortCounters)));
    uint32_t size = sizeof *counters;
    PyObject* dict = PyDict_New();
#define ROW(key, member) SET_SIGNED(dict, key, counters->member);
    Qdp_Get_Port_Stats(switch_number, port, counters, &size);
    PORT_COUNTER_ROWS(ROW, "tx", "rx")
    Qdp_Get_Port_Stats_Slowpath(switch_number, port, counters, &size);
    PORT_COUNTER_ROWS(ROW, "spTx", "spRx")
#undef ROW
    free(counters);
    return dict;
}

static PyObject* table_flow_info_get(PyObject*, PyObject* args)
{
    unsigned index;
    PyArg_ParseTuple(args, "I", &index);
    const TableReadRequest request{12, static_cast<uint16_t>(P4Opcode::table_read),
                                   static_cast<uint16_t>(P4Table::flow_info), 4, index};
    FlowInfo info;
    uint32_t size = sizeof info;
    Qdp_P4_Cmd(&request, sizeof request, &info, &size);
    PyObject* dict = PyDict_New();
#define ROW(key, member) SET_UNSIGNED(dict, key, info.member);
#define SIGNED_ROW(key, member) SET_SIGNED(dict, key, info.member);
    FLOW_INFO_ROWS(ROW, SIGNED_ROW)
#undef ROW
#undef SIGNED_ROW
    return dict;
}

static PyObject* queue_list(const uint8_t* lcores, Py_ssize_t count)
{
    PyObject* list = PyList_New(count);
    for (Py_ssize_t i = 0; i < count; ++i)
        PyList_SetItem(list, i, PyLong_FromUnsignedLong(lcores[i]));
    return list;
}

static PyObject* mac_object(const uint8_t* mac)
{
    char text[mac_text_bytes];
    write_mac(mac, text);
    return PyUnicode_FromStringAndSize(text, sizeof text - 1);
}

static PyObject* list_ports(PyObject*, PyObject* args)
{
    unsigned switch_number;
    PyArg_ParseTuple(args, "I", &switch_number);
    auto* ports = static_cast<PortList*>(malloc(sizeof(PortList)));
    uint32_t size = sizeof *ports;
    Qdp_Get_Port_List(switch_number, ports, &size);
    PyObject* list = PyList_New(ports->count);
    Keys keys;
    for (uint32_t i = 0; i < ports->count; ++i) {
        const PortListEntry& entry = ports->entries[i];
        PyObject* dict = PyDict_New();
        PyList_SetItem(list, i, dict);
        keys.set_unsigned(dict, 0, "portID", entry.port);
        keys.set_unsigned(dict, 1, "qdpPortID", entry.qdp_port);
        keys.set_unsigned(dict, 2, "numTxQ", entry.num_tx_queues);
        keys.set_unsigned(dict, 3, "numRxQ", entry.num_rx_queues);
        keys.set(dict, 4, "hwAddr", mac_object(entry.mac));
        keys.set_unsigned(dict, 5, "numMACs", entry.num_macs);
        keys.set(dict, 6, "clientType", PyUnicode_FromString(client_name(entry)));
        keys.set(dict, 7, "txQLM", queue_list(entry.tx_queue_lcores, entry.num_tx_queues));
        keys.set(dict, 8, "rxQLM", queue_list(entry.rx_queue_lcores, entry.num_rx_queues));
        keys.take(dict);
    }
    free(ports);
    return list;
}

static PyObject* dump_flow_table(PyObject*, PyObject* args)
{
    FlowTableRequest request{};
    unsigned option, source_mac, destination_mac;
    const char *source_mac_text, *destination_mac_text, *source_text, *destination_text;
    PyArg_ParseTuple(args, "IIIIIsIsIsIsiiiii", &request.selector, &request.lcore, &request.start_index, &option,
                     &source_mac, &source_mac_text, &destination_mac, &destination_mac_text, &request.source_ip_version,
                     &source_text, &request.destination_ip_version, &destination_text, &request.filters[0],
                     &request.filters[1], &request.filters[2], &request.filters[3], &request.filters[4]);
    auto* response = static_cast<FlowTableResponse*>(malloc(sizeof(FlowTableResponse)));
    uint32_t size = sizeof *response;
    Qdp_Dump_Flow_Table(&request, response, &size);
    PyObject* page = PyDict_New();
    SET_UNSIGNED(page, "startIndex", response->next_start_index);
    PyObject* list = PyList_New(response->count);
    PyDict_SetItemString(page, "list", list);
    const uint8_t* entry = response->entries;
    for (uint32_t i = 0; i < response->count; ++i) {
        char key[flow_text::key_bytes], actions[flow_text::actions_bytes];
        flow_text::write_key(entry + offsetof(FlowEntry, key), key);
        flow_text::write_actions(entry, response->group_offset, actions);
        const auto* flow = reinterpret_cast<const FlowEntry*>(entry);
        PyList_SetItem(list, i,
                       Py_BuildValue("{s:s, s:s, s:k, s:k, s:k, s:k}", "key", key, "actions", actions, "swHits",
                                     flow_text::software_hits(entry), "swBytes", flow->area.software_bytes, "hwHits",
                                     flow->hardware_hits, "hwBytes", flow->hardware_bytes));
        entry += offsetof(FlowEntry, area) + flow->area.length;
    }
    Py_DECREF(list);
    free(response);
    return page;
}

static PyObject* get_switch_burst_size(PyObject*, PyObject* args)
{
    const char* alias;
    PyArg_ParseTuple(args, "s", &alias);
    DVSSwitch* handle = DVSState_SwitchFindByAlias(alias);
    DVS_ClassName(handle);
    char switch_id[switch_id_bytes];
    memcpy(switch_id, DVS_SwitchId(handle), sizeof switch_id);
    switch_id[sizeof switch_id - 1] = '\0';
    void* value;
    uint32_t length;
    DVSHCK_HostPropGet(switch_id, burst_size_property, &value, &length);
    const uint32_t burst_size = static_cast<WordSetting*>(value)->value;
    DVSHCK_DataFree(value);
    return PyLong_FromUnsignedLong(burst_size);
}

static void fill(PyObject* dict, const LBFeatureItem& item, Keys& keys)
{
    int position = 0;
#define ROW(key, member) keys.set_unsigned(dict, position++, key, item.member);
    LB_FEATURE_ROWS(ROW)
}

static void fill(PyObject* dict, const LBQueueItem& item, Keys& keys)
{
    int position = 0;
    LB_QUEUE_ROWS(ROW)
#undef ROW
}

template <class Item>
static PyObject* items_of(const uint8_t* items, LBItemGroup group, Keys& keys)
{
    PyObject* tuple = PyTuple_New(group.count);
    const auto* item = reinterpret_cast<const Item*>(items) + group.first;
    for (uint32_t i = 0; i < group.count; ++i, ++item) {
        PyObject* dict = PyDict_New();
        PyTuple_SetItem(tuple, i, dict);
        fill(dict, *item, keys);
        keys.take(dict);
    }
    return tuple;
}

// One kind's keys in all dicts of a dump.
struct KindKeys {
    Keys entries, items;
};

static size_t add_entry(PyObject* lists, const uint8_t* bytes, KindKeys* keys)
{
    const auto type = *reinterpret_cast<const uint32_t*>(bytes);
    Keys& entry_keys = keys[type].entries;
    PyObject* dict = PyDict_New();
    PyList_Append(PyTuple_GetItem(lists, type), dict);
    Py_DECREF(dict);
    if (type == static_cast<uint32_t>(LBEntryType::port)) {
        const auto& port = *reinterpret_cast<const LBPortEntry*>(bytes);
        const uint8_t* items = bytes + sizeof port;
        entry_keys.set_unsigned(dict, 0, "port ID", port.port);
        entry_keys.set_unsigned(dict, 1, "mem affinity mask", port.affinity_mask);
        entry_keys.set_unsigned(dict, 2, "priority", port.priority);
        entry_keys.set(dict, 3, "vnicRxQ", items_of<LBFeatureItem>(items, port.vnic_rx_queues, keys[type].items));
        entry_keys.set(dict, 4, "ofldRSS", items_of<LBFeatureItem>(items, port.offload_rss, keys[type].items));
        entry_keys.set(dict, 5, "vnicTxQ", items_of<LBFeatureItem>(items, port.vnic_tx_queues, keys[type].items));
        entry_keys.set(dict, 6, "filt", items_of<LBFeatureItem>(items, port.filters, keys[type].items));
        entry_keys.take(dict);
        return sizeof port + sizeof(LBFeatureItem) * (port.vnic_rx_queues.count + port.offload_rss.count +
                                                      port.vnic_tx_queues.count + port.filters.count);
    }
    if (type == static_cast<uint32_t>(LBEntryType::uplink)) {
        const auto& uplink = *reinterpret_cast<const LBUplinkEntry*>(bytes);
        entry_keys.set_unsigned(dict, 0, "port ID", uplink.port);
        entry_keys.set_unsigned(dict, 1, "mem affinity ID", uplink.affinity);
        entry_keys.set(dict, 2, "uplinkRx",
                       items_of<LBQueueItem>(bytes + sizeof uplink, uplink.rx_queues, keys[type].items));
        entry_keys.take(dict);
        return sizeof uplink + sizeof(LBQueueItem) * uplink.rx_queues.count;
    }
    const auto& context = *reinterpret_cast<const LBContextEntry*>(bytes);
    entry_keys.set_unsigned(dict, 0, "ctx ID", context.context);
    entry_keys.set_unsigned(dict, 1, "world ID", static_cast<unsigned long>(long{context.world}));
    entry_keys.set_unsigned(dict, 2, "biased CPU", context.biased_cpu);
    entry_keys.set_unsigned(dict, 3, "raw CPU", context.raw_cpu);
    entry_keys.set_unsigned(dict, 4, "pkts", context.packets);
    entry_keys.set_unsigned(dict, 5, "bytes", context.bytes);
    entry_keys.set_unsigned(dict, 6, "max pb load", context.max_pb_load);
    entry_keys.take(dict);
    return sizeof context;
}

static PyObject* dump_lb_stats(PyObject*, PyObject* args)
{
    unsigned switch_number, port, ports, context, contexts;
    PyArg_ParseTuple(args, "IIIII", &switch_number, &port, &ports, &context, &contexts);
    auto* chunk = static_cast<LBStatsChunk*>(malloc(sizeof(LBStatsChunk)));
    PyObject* lists = PyTuple_New(3);
    for (int i = 0; i < 3; ++i)
        PyTuple_SetItem(lists, i, PyList_New(0));
    KindKeys keys[3];
    while (ports || contexts) {
        Qdp_DumpLBStats(switch_number, port, ports, context, contexts, chunk, sizeof *chunk);
        const uint8_t* entry = chunk->entries;
        for (uint32_t i = 0; i < chunk->count; ++i)
            entry += add_entry(lists, entry, keys);
        advance(chunk->next_port, port, ports);
        advance(chunk->next_context, context, contexts);
    }
    free(chunk);
    return lists;
}

static PyMethodDef methods[] = {
#define ROW(name, function) {name, function, METH_VARARGS, nullptr},
    MEASURED_METHODS(ROW)
#undef ROW
        {nullptr, nullptr, 0, nullptr},
};

static PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "floor", nullptr, -1, methods, nullptr, nullptr, nullptr, nullptr};

PyMODINIT_FUNC PyInit_floor()
{
    return PyModule_Create2(&definition, PYTHON_API_VERSION);
}
