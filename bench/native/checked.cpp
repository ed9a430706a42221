// The whole contract written by hand, as a careful C programmer does: every argument, every call and every object
// checked, every failure with its text, buffers cleared where an answer may be short, nothing read outside of them, and
// everything released on one way out. The later dicts of a list take over the key objects of the first, all owned while
// they are in use. A field is a line of code here, with its key and its member: no table is read.
#include <Python.h>

#include "bench/native/flow_text.h"
#include "bench/native/keys.h"
#include "platform/p4_tables.h"
#include "platform/qdp_control.h"
#include "platform/settings.h"
#include "platform/switch_state.h"

#define RETURN_NONE(...)              \
    do {                              \
        fprintf(stderr, __VA_ARGS__); \
        Py_INCREF(Py_None);           \
        return Py_None;               \
    } while (0)
#define FAIL(text)                                \
    do {                                          \
        PyErr_SetString(PyExc_SystemError, text); \
        goto fail;                                \
    } while (0)
// Sets the value that `setting` names value_, by an expression that is 0 for success.
#define SET_BY(setting, object, no_object)      \
    do {                                        \
        PyObject* value_ = object;              \
        if (!value_)                            \
            no_object;                          \
        if ((setting) != 0) {                   \
            Py_DECREF(value_);                  \
            FAIL("Failed to set dict item.\n"); \
        }                                       \
        Py_DECREF(value_);                      \
    } while (0)
#define SET(dict, key, object) \
    SET_BY(PyDict_SetItemString(dict, key, value_), object, FAIL("Failed to allocate buffer.\n"))
#define SET_SIGNED(dict, key, number) SET(dict, key, PyLong_FromLong(static_cast<long>(number)))
#define SET_UNSIGNED(dict, key, number) SET(dict, key, PyLong_FromUnsignedLong(number))
// The same with a key that the dicts of a list share, at this position in each.
#define SET_SHARED(keys, position, dict, key, object) \
    SET_BY(set_shared(keys, dict, position, key, value_), object, FAIL("Failed to allocate buffer.\n"))
#define SET_SHARED_UNSIGNED(keys, position, dict, key, number) \
    SET_SHARED(keys, position, dict, key, PyLong_FromUnsignedLong(number))
// An object that another function made, which has set the exception when there is none.
#define SET_SHARED_MADE(keys, position, dict, key, object) \
    SET_BY(set_shared(keys, dict, position, key, value_), object, goto fail)

// Key objects of the first dict of a table in a result. None are taken from a dict that something else has changed.
struct Keys {
    PyObject* objects[9];
    int count;
    Py_ssize_t next;
    bool is_changed;
};

static int set_first(Keys* keys, PyObject* dict, const char* key, PyObject* value)
{
    PyObject *object, *found;
    if (PyDict_SetItemString(dict, key, value) != 0)
        return -1;
    if (keys->is_changed)
        return 0;
    if (PyDict_Next(dict, &keys->next, &object, &found) && PyUnicode_CheckExact(object) &&
        PyUnicode_CompareWithASCIIString(object, key) == 0) {
        Py_INCREF(object);
        keys->objects[keys->count++] = object;
    } else {
        keys->is_changed = true;
    }
    return 0;
}

static inline int set_shared(Keys* keys, PyObject* dict, int position, const char* key, PyObject* value)
{
    if (position < keys->count)
        return PyDict_SetItem(dict, keys->objects[position], value);
    return set_first(keys, dict, key, value);
}

static void release_keys(Keys* keys)
{
    for (int i = 0; i < keys->count; ++i)
        Py_DECREF(keys->objects[i]);
}

static PyObject* none()
{
    Py_INCREF(Py_None);
    return Py_None;
}

static PyObject* get_port_stats(PyObject*, PyObject* args)
{
    unsigned switch_number, port;
    PortCounters* counters = nullptr;
    PyObject* dict = nullptr;
    uint32_t size = sizeof *counters;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || switch_number >= max_switches || port >= max_ports)
        RETURN_NONE("TypeError: Invalid parameter passed.\n");
    counters = static_cast<PortCounters*>(malloc(sizeof *counters));
    if (!counters)
        RETURN_NONE("Failed to allocate memory.\n");
    memset(static_cast<void*>(counters), 0, sizeof *counters);
    if (Qdp_Get_Port_Stats(switch_number, port, counters, &size) != 0) {
        fprintf(stderr, "Failed to retrieve port stats.\n");
        goto fail;
    }
    dict = PyDict_New();
    if (!dict) {
        fprintf(stderr, "Failed to allocate stats tuple.\n");
        goto fail;
    }
#define ROW(key, member) SET_SIGNED(dict, key, counters->member);
    PORT_COUNTER_ROWS(ROW, "tx", "rx")
    if (Qdp_Get_Port_Stats_Slowpath(switch_number, port, counters, &size) != 0) {
        fprintf(stderr, "Failed to retrieve slowpath port stats.\n");
        goto fail;
    }
    PORT_COUNTER_ROWS(ROW, "spTx", "spRx")
#undef ROW
    free(counters);
    return dict;

fail:
    Py_XDECREF(dict);
    free(counters);
    return none();
}

static PyObject* table_flow_info_get(PyObject*, PyObject* args)
{
    unsigned index;
    TableReadRequest request = {sizeof request, static_cast<uint16_t>(P4Opcode::table_read),
                                static_cast<uint16_t>(P4Table::flow_info), sizeof index, 0};
    FlowInfo info = {};
    uint32_t size = sizeof info;
    PyObject* dict = nullptr;
    if (!PyArg_ParseTuple(args, "I", &index) || index >= max_flows)
        RETURN_NONE("TypeError: Invalid parameter passed.\n");
    request.index = index;
    if (Qdp_P4_Cmd(&request, sizeof request, &info, &size) != 0)
        RETURN_NONE("Failed to get table data\n");
    dict = PyDict_New();
    if (!dict)
        RETURN_NONE("Failed to allocate buffer.\n");
#define ROW(key, member) SET_UNSIGNED(dict, key, info.member);
#define SIGNED_ROW(key, member) SET_SIGNED(dict, key, info.member);
    FLOW_INFO_ROWS(ROW, SIGNED_ROW)
#undef ROW
#undef SIGNED_ROW
    return dict;

fail:
    Py_DECREF(dict);
    return none();
}

static PyObject* queue_list(const uint8_t* lcores, Py_ssize_t count)
{
    PyObject* number;
    PyObject* list = PyList_New(count);
    if (!list)
        FAIL("Failed to allocate buffer.\n");
    for (Py_ssize_t i = 0; i < count; ++i) {
        number = PyLong_FromUnsignedLong(i < Py_ssize_t{max_queues} ? lcores[i] : 0);
        if (!number)
            FAIL("Failed to allocate buffer.\n");
        if (PyList_SetItem(list, i, number) != 0)
            FAIL("Failed to set list item.\n");
    }
    return list;

fail:
    Py_XDECREF(list);
    return nullptr;
}

static PyObject* mac_object(const uint8_t* mac)
{
    char text[mac_text_bytes];
    write_mac(mac, text);
    return PyUnicode_FromStringAndSize(text, sizeof text - 1);
}

static PyObject* list_ports(PyObject*, PyObject* args)
{
    static const PortListEntry zeros = {};
    unsigned switch_number;
    PortList* ports = nullptr;
    const PortListEntry* entry;
    PyObject *list = nullptr, *dict = nullptr;
    Keys keys = {};
    uint32_t size = sizeof *ports;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || switch_number >= max_switches)
        RETURN_NONE("TypeError: Invalid switch ID passed.\n");
    ports = static_cast<PortList*>(malloc(sizeof *ports));
    if (!ports)
        RETURN_NONE("Failed to allocate memory.\n");
    memset(static_cast<void*>(ports), 0, offsetof(PortList, entries));
    if (Qdp_Get_Port_List(switch_number, ports, &size) != 0) {
        fprintf(stderr, "Failed to retrieve list of ports.\n");
        goto fail;
    }
    list = PyList_New(ports->count);
    if (!list) {
        fprintf(stderr, "Failed to allocate port list.\n");
        goto fail;
    }
    for (uint32_t i = 0; i < ports->count; ++i) {
        if (ports->count > 65536 && i % 4096 == 0 && PyErr_CheckSignals() != 0)
            goto fail;
        entry = i < max_ports ? &ports->entries[i] : &zeros;
        dict = PyDict_New();
        if (!dict)
            FAIL("Failed to allocate buffer.\n");
        Py_INCREF(dict);
        if (PyList_SetItem(list, i, dict) != 0)
            FAIL("Failed to set list item.\n");
        SET_SHARED_UNSIGNED(&keys, 0, dict, "portID", entry->port);
        SET_SHARED_UNSIGNED(&keys, 1, dict, "qdpPortID", entry->qdp_port);
        SET_SHARED_UNSIGNED(&keys, 2, dict, "numTxQ", entry->num_tx_queues);
        SET_SHARED_UNSIGNED(&keys, 3, dict, "numRxQ", entry->num_rx_queues);
        SET_SHARED(&keys, 4, dict, "hwAddr", mac_object(entry->mac));
        SET_SHARED_UNSIGNED(&keys, 5, dict, "numMACs", entry->num_macs);
        SET_SHARED(&keys, 6, dict, "clientType", PyUnicode_FromString(client_name(*entry)));
        SET_SHARED_MADE(&keys, 7, dict, "txQLM", queue_list(entry->tx_queue_lcores, entry->num_tx_queues));
        SET_SHARED_MADE(&keys, 8, dict, "rxQLM", queue_list(entry->rx_queue_lcores, entry->num_rx_queues));
        Py_CLEAR(dict);
    }
    release_keys(&keys);
    free(ports);
    return list;

fail:
    release_keys(&keys);
    Py_XDECREF(dict);
    Py_XDECREF(list);
    free(ports);
    if (PyErr_Occurred() && !PyErr_ExceptionMatches(PyExc_SystemError))
        return nullptr;
    return none();
}

static void read_mac(const char* text, uint8_t* mac)
{
    sscanf(text, "%02hhx:%02hhx:%02hhx:%02hhx:%02hhx:%02hhx", &mac[0], &mac[1], &mac[2], &mac[3], &mac[4], &mac[5]);
}

static PyObject* dump_flow_table(PyObject*, PyObject* args)
{
    unsigned selector, lcore, start_index, option, source_mac, destination_mac, source_version, destination_version;
    const char *source_mac_text, *destination_mac_text, *source_text, *destination_text;
    int filters[5];
    FlowTableResponse* response = nullptr;
    FlowTableRequest* request = nullptr;
    const FlowEntry* flow;
    const uint8_t* entry;
    char key[flow_text::key_bytes], actions[flow_text::actions_bytes];
    PyObject *page = nullptr, *list = nullptr, *item;
    uint32_t size = sizeof *response;
    size_t offset, end;
    if (!PyArg_ParseTuple(args, "IIIIIsIsIsIsiiiii", &selector, &lcore, &start_index, &option, &source_mac,
                          &source_mac_text, &destination_mac, &destination_mac_text, &source_version, &source_text,
                          &destination_version, &destination_text, &filters[0], &filters[1], &filters[2], &filters[3],
                          &filters[4]) ||
        lcore >= max_lcores || start_index == no_more_flows)
        RETURN_NONE("TypeError: Invalid parameter passed.\n");
    response = static_cast<FlowTableResponse*>(malloc(sizeof *response));
    request = static_cast<FlowTableRequest*>(malloc(sizeof *request));
    if (!response || !request) {
        fprintf(stderr, "Failed to allocate memory.\n");
        goto fail;
    }
    memset(static_cast<void*>(response), 0, sizeof *response);
    memset(static_cast<void*>(request), 0, sizeof *request);
    request->selector = selector;
    request->lcore = lcore;
    request->start_index = start_index;
    request->option = static_cast<uint8_t>(option);
    request->filters_source_mac = static_cast<uint8_t>(source_mac);
    if (request->filters_source_mac)
        read_mac(source_mac_text, request->source_mac);
    request->filters_destination_mac = static_cast<uint8_t>(destination_mac);
    if (request->filters_destination_mac)
        read_mac(destination_mac_text, request->destination_mac);
    request->source_ip_version = source_version;
    if (source_version && inet_pton(source_version == 4 ? AF_INET : AF_INET6, source_text, request->source_ip) != 1) {
        fprintf(stderr, "Failed to convert source IPv4 address to binary form.\n\n");
        goto fail;
    }
    request->destination_ip_version = destination_version;
    if (destination_version &&
        inet_pton(destination_version == 4 ? AF_INET : AF_INET6, destination_text, request->destination_ip) != 1) {
        fprintf(stderr, "Failed to convert destination IPv4 address to binary form.\n\n");
        goto fail;
    }
    memcpy(request->filters, filters, sizeof filters);
    if (Qdp_Dump_Flow_Table(request, response, &size) != 0) {
        fprintf(stderr, "Failed to retrieve flow table.\n\n");
        goto fail;
    }

    page = PyDict_New();
    if (!page) {
        fprintf(stderr, "Failed to allocate memory.\n");
        goto fail;
    }
    SET_UNSIGNED(page, "startIndex", response->next_start_index);
    list = PyList_New(response->count);
    if (!list)
        FAIL("Failed to allocate buffer.\n");
    if (PyDict_SetItemString(page, "list", list) != 0)
        FAIL("Failed to set dict item.\n");
    offset = offsetof(FlowTableResponse, entries);
    end = response->valid_bytes < sizeof *response ? response->valid_bytes : sizeof *response;
    for (uint32_t i = 0; i < response->count; ++i) {
        if (offset + max_flow_entry_bytes > end) {
            fprintf(stderr, "Invalid response returned.\n");
            goto fail;
        }
        entry = reinterpret_cast<const uint8_t*>(response) + offset;
        flow = reinterpret_cast<const FlowEntry*>(entry);
        // The group and the tail must lie in the response as well.
        if (response->group_offset > sizeof *response || flow->area.length < sizeof(FlowActionTail) ||
            offset + offsetof(FlowEntry, area) + response->group_offset + sizeof(FlowActionGroup) > sizeof *response ||
            offset + offsetof(FlowEntry, area) + flow->area.length > sizeof *response) {
            fprintf(stderr, "Invalid response returned.\n");
            goto fail;
        }
        flow_text::write_key(entry + offsetof(FlowEntry, key), key);
        if (!flow_text::write_actions(entry, response->group_offset, actions)) {
            fprintf(stderr, "Invalid action\nInvalid action\n");
            goto fail;
        }
        item = Py_BuildValue("{s:s, s:s, s:k, s:k, s:k, s:k}", "key", key, "actions", actions, "swHits",
                             flow_text::software_hits(entry), "swBytes", flow->area.software_bytes, "hwHits",
                             flow->hardware_hits, "hwBytes", flow->hardware_bytes);
        if (!item)
            FAIL("Failed to allocate buffer.\n");
        if (PyList_SetItem(list, i, item) != 0)
            FAIL("Failed to set list item.\n");
        offset += offsetof(FlowEntry, area) + flow->area.length;
    }
    Py_DECREF(list);
    free(request);
    free(response);
    return page;

fail:
    Py_XDECREF(list);
    Py_XDECREF(page);
    free(request);
    free(response);
    return none();
}

// The datapath's own value, by the switch's portset name, which is its alias property or its id when it has none.
static PyObject* ask_for_burst_size(const char* switch_id)
{
    DVSData* data = nullptr;
    const void* name = nullptr;
    uint32_t length = 0, burst_size = 0;
    char portset_name[portset_name_bytes + 1] = "";
    if ((DVSState_HostPropLookup(switch_id, portset_property, &data) == status_success ||
         DVSState_GlobalPropLookup(switch_id, alias_property, &data) == status_success) &&
        data && DVSData_Data(data, &name, &length) == status_success && name)
        memcpy(portset_name, name, length < portset_name_bytes ? length : portset_name_bytes);
    else
        memcpy(portset_name, switch_id, switch_id_bytes);
    if (Qdp_GetSwitchBurstSize(portset_name, &burst_size) != 0)
        return none();
    return PyLong_FromUnsignedLong(burst_size);
}

static PyObject* get_switch_burst_size(PyObject*, PyObject* args)
{
    const char *alias, *class_name, *id;
    char switch_id[switch_id_bytes];
    DVSSwitch* handle;
    void* value = nullptr;
    uint32_t length = 0, version = 0, burst_size = 0;
    if (!PyArg_ParseTuple(args, "s", &alias))
        RETURN_NONE("TypeError: Invalid parameter passed.\n");
    handle = DVSState_SwitchFindByAlias(alias);
    if (!handle || !(class_name = DVS_ClassName(handle)) || strcmp(class_name, vswitch_class) != 0 ||
        !(id = DVS_SwitchId(handle)))
        RETURN_NONE("Failed to find dvs ID for dvs alias %s.\n", alias);
    memcpy(switch_id, id, sizeof switch_id);
    switch_id[sizeof switch_id - 1] = '\0';

    if (DVSHCK_HostPropGet(switch_id, burst_size_property, &value, &length) == status_success) {
        if (value && length >= sizeof version)
            memcpy(&version, value, sizeof version);
        if (version != 0) {
            DVSHCK_DataFree(value);
            RETURN_NONE("Format of property %s value is from unknown version.\n", burst_size_property);
        }
        if (!value || length != sizeof(WordSetting)) {
            if (value)
                DVSHCK_DataFree(value);
            RETURN_NONE("Property %s value length is odd.\n", burst_size_property);
        }
        memcpy(&burst_size, static_cast<const char*>(value) + offsetof(WordSetting, value), sizeof burst_size);
        DVSHCK_DataFree(value);
        return PyLong_FromUnsignedLong(burst_size);
    }
    return ask_for_burst_size(switch_id);
}

// Copies what lies before the chunk's end; the rest of the record is zero.
static void read_record(void* record, size_t size, const LBStatsChunk* chunk, size_t offset)
{
    const size_t there = offset < sizeof *chunk ? sizeof *chunk - offset : 0;
    if (there >= size) {
        memcpy(record, reinterpret_cast<const uint8_t*>(chunk) + offset, size);
    } else {
        memset(record, 0, size);
        memcpy(record, reinterpret_cast<const uint8_t*>(chunk) + offset, there);
    }
}

static int fill(PyObject* dict, const LBFeatureItem& item, Keys* keys)
{
    int position = 0;
#define ROW(key, member)                                         \
    SET_SHARED_UNSIGNED(keys, position, dict, key, item.member); \
    ++position;
    LB_FEATURE_ROWS(ROW)
    return 0;

fail:
    return -1;
}

static int fill(PyObject* dict, const LBQueueItem& item, Keys* keys)
{
    int position = 0;
    LB_QUEUE_ROWS(ROW)
#undef ROW
    return 0;

fail:
    return -1;
}

template <class Item>
static PyObject* items_of(const LBStatsChunk* chunk, size_t offset, LBItemGroup group, Keys* keys)
{
    Item item;
    PyObject *dict = nullptr, *tuple = PyTuple_New(group.count);
    if (!tuple)
        FAIL("Failed to allocate buffer.\n");
    for (uint32_t i = 0; i < group.count; ++i) {
        read_record(&item, sizeof item, chunk, offset + (size_t{group.first} + i) * sizeof item);
        dict = PyDict_New();
        if (!dict)
            FAIL("Failed to allocate buffer.\n");
        Py_INCREF(dict);
        if (PyTuple_SetItem(tuple, i, dict) != 0)
            FAIL("Failed to set tuple item.\n");
        if (fill(dict, item, keys) != 0)
            goto fail;
        Py_CLEAR(dict);
    }
    return tuple;

fail:
    Py_XDECREF(dict);
    Py_XDECREF(tuple);
    return nullptr;
}

// One kind's keys in all dicts of a dump.
struct KindKeys {
    Keys entries, items;
};

static void release_kinds(KindKeys* keys)
{
    for (int i = 0; i < 3; ++i) {
        release_keys(&keys[i].entries);
        release_keys(&keys[i].items);
    }
}

// The length of the entry; 0 with an exception set.
static uint64_t add_entry(PyObject* lists, const LBStatsChunk* chunk, size_t offset, KindKeys* all_keys)
{
    uint32_t type;
    LBPortEntry port;
    LBUplinkEntry uplink;
    LBContextEntry context;
    uint64_t length;
    PyObject* dict = nullptr;
    KindKeys* keys;
    read_record(&type, sizeof type, chunk, offset);
    switch (static_cast<LBEntryType>(type)) {
    case LBEntryType::port:
        read_record(&port, sizeof port, chunk, offset);
        length = sizeof port + sizeof(LBFeatureItem) * (uint64_t{port.vnic_rx_queues.count} + port.offload_rss.count +
                                                        port.vnic_tx_queues.count + port.filters.count);
        break;
    case LBEntryType::uplink:
        read_record(&uplink, sizeof uplink, chunk, offset);
        length = sizeof uplink + sizeof(LBQueueItem) * uint64_t{uplink.rx_queues.count};
        break;
    case LBEntryType::context:
        read_record(&context, sizeof context, chunk, offset);
        length = sizeof context;
        break;
    default:
        PyErr_SetString(PyExc_OSError, "Invalid format in LB stats dump");
        return 0;
    }
    if (offset > sizeof *chunk || length > sizeof *chunk - offset) {
        PyErr_SetString(PyExc_OSError, "Invalid format in LB stats dump");
        return 0;
    }
    keys = &all_keys[type];
    dict = PyDict_New();
    if (!dict)
        FAIL("Failed to allocate buffer.\n");
    if (PyList_Append(PyTuple_GetItem(lists, type), dict) != 0)
        FAIL("Failed to set list item.\n");
    switch (static_cast<LBEntryType>(type)) {
    case LBEntryType::port:
        offset += sizeof port;
        SET_SHARED_UNSIGNED(&keys->entries, 0, dict, "port ID", port.port);
        SET_SHARED_UNSIGNED(&keys->entries, 1, dict, "mem affinity mask", port.affinity_mask);
        SET_SHARED_UNSIGNED(&keys->entries, 2, dict, "priority", port.priority);
        SET_SHARED_MADE(&keys->entries, 3, dict, "vnicRxQ",
                        items_of<LBFeatureItem>(chunk, offset, port.vnic_rx_queues, &keys->items));
        SET_SHARED_MADE(&keys->entries, 4, dict, "ofldRSS",
                        items_of<LBFeatureItem>(chunk, offset, port.offload_rss, &keys->items));
        SET_SHARED_MADE(&keys->entries, 5, dict, "vnicTxQ",
                        items_of<LBFeatureItem>(chunk, offset, port.vnic_tx_queues, &keys->items));
        SET_SHARED_MADE(&keys->entries, 6, dict, "filt",
                        items_of<LBFeatureItem>(chunk, offset, port.filters, &keys->items));
        break;
    case LBEntryType::uplink:
        SET_SHARED_UNSIGNED(&keys->entries, 0, dict, "port ID", uplink.port);
        SET_SHARED_UNSIGNED(&keys->entries, 1, dict, "mem affinity ID", uplink.affinity);
        SET_SHARED_MADE(&keys->entries, 2, dict, "uplinkRx",
                        items_of<LBQueueItem>(chunk, offset + sizeof uplink, uplink.rx_queues, &keys->items));
        break;
    case LBEntryType::context:
        SET_SHARED_UNSIGNED(&keys->entries, 0, dict, "ctx ID", context.context);
        SET_SHARED_UNSIGNED(&keys->entries, 1, dict, "world ID", static_cast<unsigned long>(long{context.world}));
        SET_SHARED_UNSIGNED(&keys->entries, 2, dict, "biased CPU", context.biased_cpu);
        SET_SHARED_UNSIGNED(&keys->entries, 3, dict, "raw CPU", context.raw_cpu);
        SET_SHARED_UNSIGNED(&keys->entries, 4, dict, "pkts", context.packets);
        SET_SHARED_UNSIGNED(&keys->entries, 5, dict, "bytes", context.bytes);
        SET_SHARED_UNSIGNED(&keys->entries, 6, dict, "max pb load", context.max_pb_load);
        break;
    }
    Py_DECREF(dict);
    return length;

fail:
    Py_XDECREF(dict);
    return 0;
}

static PyObject* dump_lb_stats(PyObject*, PyObject* args)
{
    unsigned switch_number, port, ports, context, contexts;
    LBStatsChunk* chunk = nullptr;
    PyObject *list, *lists = nullptr;
    KindKeys keys[3] = {};
    size_t offset;
    uint64_t length;
    if (!PyArg_ParseTuple(args, "IIIII", &switch_number, &port, &ports, &context, &contexts))
        return nullptr;
    if (switch_number >= max_switches || port >= max_ports || port + ports > max_ports || context >= max_lb_contexts ||
        context + contexts > max_lb_contexts) {
        PyErr_SetString(PyExc_ValueError, "Invalid parameter passed.");
        return nullptr;
    }
    chunk = static_cast<LBStatsChunk*>(malloc(sizeof *chunk));
    if (!chunk) {
        PyErr_SetString(PyExc_MemoryError, "Failed to create dump buffer.");
        return nullptr;
    }
    memset(static_cast<void*>(chunk), 0, sizeof *chunk);
    lists = PyTuple_New(3);
    if (!lists) {
        PyErr_SetString(PyExc_MemoryError, "Failed to create tuple.");
        goto fail;
    }
    for (int i = 0; i < 3; ++i) {
        list = PyList_New(0);
        if (!list)
            FAIL("Failed to allocate buffer.\n");
        if (PyTuple_SetItem(lists, i, list) != 0)
            FAIL("Failed to set tuple item.\n");
    }
    while (ports != 0 || contexts != 0) {
        if (Qdp_DumpLBStats(switch_number, port, ports, context, contexts, chunk, sizeof *chunk) != 0) {
            PyErr_SetString(PyExc_OSError, "Failed to dump LB stats. Please see hostcore.log");
            goto fail;
        }
        offset = offsetof(LBStatsChunk, entries);
        for (uint32_t i = 0; i < chunk->count; ++i) {
            length = add_entry(lists, chunk, offset, keys);
            if (length == 0)
                goto fail;
            offset += length;
        }
        advance(chunk->next_port, port, ports);
        advance(chunk->next_context, context, contexts);
        if (PyErr_CheckSignals() != 0)
            goto fail;
    }
    release_kinds(keys);
    free(chunk);
    return lists;

fail:
    release_kinds(keys);
    Py_XDECREF(lists);
    free(chunk);
    return nullptr;
}

static PyMethodDef methods[] = {
#define ROW(name, function) {name, function, METH_VARARGS, nullptr},
    MEASURED_METHODS(ROW)
#undef ROW
        {nullptr, nullptr, 0, nullptr},
};

static PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "checked", nullptr, -1, methods, nullptr, nullptr, nullptr, nullptr};

PyMODINIT_FUNC PyInit_checked()
{
    return PyModule_Create2(&definition, PYTHON_API_VERSION);
}
