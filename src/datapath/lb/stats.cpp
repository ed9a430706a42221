// The load balancer's statistics: entries of ports, uplinks and contexts, which the library hands out in chunks.
#include <iterator>
#include <span>

#include "core/arguments.h"
#include "core/build.h"
#include "platform/lb.h"

namespace qdp {

namespace {

// A key behind those of an entry's own fields: a tuple with one dict an item of the group at this offset.
struct Group {
    const char* key;
    size_t offset;
};

using F = LBFeatureItem;
constexpr auto feature_fields = fields<sizeof(F)>({
    {"count load", AT(F, count_load)},
    {"feat ID", AT(F, feature)},
    {"ctx ID", AT(F, context)},
    {"pkts", AT(F, packets)},
    {"bytes", AT(F, bytes)},
});

using P = LBPortEntry;
constexpr auto port_fields = fields<sizeof(P)>({
    {"port ID", AT(P, port)},
    {"mem affinity mask", AT(P, affinity_mask)},
    {"priority", AT(P, priority)},
});
constexpr Group port_groups[] = {
    {"vnicRxQ", offsetof(P, vnic_rx_queues)},
    {"ofldRSS", offsetof(P, offload_rss)},
    {"vnicTxQ", offsetof(P, vnic_tx_queues)},
    {"filt", offsetof(P, filters)},
};

using Q = LBQueueItem;
constexpr auto queue_fields = fields<sizeof(Q)>({
    {"count load", AT(Q, count_load)},
    {"ctx ID", AT(Q, context)},
    {"pkts", AT(Q, packets)},
    {"bytes", AT(Q, bytes)},
});

using U = LBUplinkEntry;
constexpr auto uplink_fields = fields<sizeof(U)>({
    {"port ID", AT(U, port)},
    {"mem affinity ID", AT(U, affinity)},
});
constexpr Group uplink_groups[] = {{"uplinkRx", offsetof(U, rx_queues)}};

// Deliberately widened with its sign and then shown unsigned: world -1 reads as 2^64 - 1.
PyObject* world(Bytes entry, const Field& field)
{
    return object_or_error(PyLong_FromUnsignedLong(static_cast<uint64_t>(entry.signed_at(field.where))));
}

using C = LBContextEntry;
constexpr auto context_fields = fields<sizeof(C)>({
    {"ctx ID", AT(C, context)},
    {"world ID", AT(C, world), world},
    {"biased CPU", AT(C, biased_cpu)},
    {"raw CPU", AT(C, raw_cpu)},
    {"pkts", AT(C, packets)},
    {"bytes", AT(C, bytes)},
    {"max pb load", AT(C, max_pb_load)},
});

struct EntryLayout {
    size_t head_bytes;
    Fields fields;
    std::span<const Group> groups;
    Fields item_fields;  // of all its groups
};

// By LBEntryType, which is also the position of the layout's list in the result.
constexpr EntryLayout entry_layouts[] = {
    {sizeof(P), port_fields, port_groups, feature_fields},
    {sizeof(U), uplink_fields, uplink_groups, queue_fields},
    {sizeof(C), context_fields, {}, queue_fields},
};

LBItemGroup group_at(Bytes entry, const Group& group)
{
    return entry.load<LBItemGroup>(group.offset);
}

// The length of an entry, its items included.
uint64_t length_of(Bytes entry, const EntryLayout& layout)
{
    uint64_t items = 0;
    for (const Group& group : layout.groups)
        items += group_at(entry, group).count;
    return layout.head_bytes + items * layout.item_fields.record_size;
}

// One layout's keys, the same objects in all dicts of a dump.
struct Keys {
    SharedKeys entries{UINT64_MAX};
    SharedKeys items{UINT64_MAX};
};

// A group may begin at any item, which then need not be the entry's own.
PyObject* group_object(Bytes entry, const EntryLayout& layout, const Group& row, Keys& keys)
{
    const LBItemGroup group = group_at(entry, row);
    PyRef tuple{object_or_error(PyTuple_New(group.count))};
    if (!tuple)
        return nullptr;
    for (uint64_t i = 0; i < group.count; ++i) {
        const Bytes item = entry.from(layout.head_bytes + (group.first + i) * layout.item_fields.record_size);
        if (!set_tuple_item(tuple.get(), i, keys.items.dict_of(layout.item_fields, item)))
            return nullptr;
    }
    return tuple.release();
}

bool fill_entry(PyObject* dict, Bytes entry, const EntryLayout& layout, Keys& keys)
{
    if (!keys.entries.fill(dict, layout.fields, entry))
        return false;
    size_t position = layout.fields.count;
    for (const Group& group : layout.groups)
        if (!keys.entries.set(dict, position++, group.key, group_object(entry, layout, group, keys)))
            return false;
    return true;
}

// The result, whose lists are still empty. Null with its exception set.
PyRef empty_lists()
{
    PyRef lists{PyTuple_New(std::size(entry_layouts))};
    if (!lists)
        raise(PyExc_MemoryError, "Failed to create tuple.");
    for (size_t i = 0; lists && i < std::size(entry_layouts); ++i)
        if (!set_tuple_item(lists.get(), i, object_or_error(PyList_New(0))))
            lists.reset();
    return lists;
}

bool append_dict(PyObject* list, Bytes entry, const EntryLayout& layout, Keys& keys)
{
    const PyRef dict{object_or_error(PyDict_New())};
    if (!dict)
        return false;
    if (PyList_Append(list, dict.get()) != 0)
        return building_failed(cannot_set_list_item);
    return fill_entry(dict.get(), entry, layout, keys);
}

// Appends the entries of a chunk to the lists of their entry_layouts. False with its exception set, also for an entry
// that does not lie in the chunk with its whole length.
bool append_entries(PyObject* lists, const LBStatsChunk& chunk, Keys (&keys)[std::size(entry_layouts)])
{
    Bytes rest = entries_of(chunk);
    for (uint32_t i = 0; i < chunk.count; ++i) {
        const auto type = rest.load<uint32_t>(0);
        const uint64_t length = type < std::size(entry_layouts) ? length_of(rest, entry_layouts[type]) : UINT64_MAX;
        if (length > rest.size()) {
            raise(PyExc_OSError, "Invalid format in LB stats dump");
            return false;
        }
        if (!append_dict(PyTuple_GetItem(lists, type), rest, entry_layouts[type], keys[type]))
            return false;
        rest = rest.from(length);
    }
    return true;
}

// What is still to be dumped of the ports or of the contexts. Sums wrap at 2^32.
struct Range {
    uint32_t first;
    uint32_t count;

    bool is_within(uint32_t limit) const { return first < limit && first + count <= limit; }

    // The count deliberately stays: the next call asks for as many from the new start. A dump that has finished names
    // an index that no range reaches.
    void advance(uint32_t next)
    {
        static_assert(lb_stats_finished == UINT32_MAX);
        if (next < first + count)
            first = next;
        else
            count = 0;
    }
};

}  // namespace

PyObject* PyQDP_DumpLBStats(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    Range ports, contexts;
    if (!PyArg_ParseTuple(args, "IIIII", &switch_number, &ports.first, &ports.count, &contexts.first, &contexts.count))
        return nullptr;
    if (!is_switch(switch_number) || !ports.is_within(max_ports) || !contexts.is_within(max_lb_contexts))
        return raise(PyExc_ValueError, "Invalid parameter passed.");

    const auto chunk = allocate<LBStatsChunk>();
    if (!chunk)
        return raise(PyExc_MemoryError, "Failed to create dump buffer.");
    PyRef lists = empty_lists();
    if (!lists)
        return nullptr;

    Keys keys[std::size(entry_layouts)];
    const auto is_open = [&] { return ports.count != 0 || contexts.count != 0; };
    while (is_open()) {
        if (Qdp_DumpLBStats(switch_number, ports.first, ports.count, contexts.first, contexts.count, chunk.get(),
                            sizeof(LBStatsChunk)) != 0)
            return raise(PyExc_OSError, "Failed to dump LB stats. Please see hostcore.log");
        if (!append_entries(lists.get(), *chunk, keys))
            return nullptr;
        ports.advance(chunk->next_port);
        contexts.advance(chunk->next_context);
        if (is_open() && PyErr_CheckSignals() != 0)  // Ctrl-C ends a dump that the library never finishes
            return nullptr;
    }
    return lists.release();
}

}  // namespace qdp
