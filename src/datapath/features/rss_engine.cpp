// The RSS engines of a port.
#include <algorithm>

#include "core/arguments.h"
#include "core/build.h"
#include "platform/rss_engine.h"

namespace qdp {

namespace {

using R = RSSEngine;

constexpr Names<5> engine_types{{"UNKNOWN", "DFTRSS", "DEVRSS", "SHARSS", "OFLRSS"}, "UNKNOWN"};

// As many as the engine says that it has, and at most what it has room for.
PyObject* queue_ids(Bytes engine, const Field& field)
{
    const uint64_t count = std::min<uint64_t>(engine.unsigned_at(AT(R, num_queues)), max_queues);
    return integers<uint16_t>(engine.from(field.where.offset), static_cast<uint16_t>(count));
}

constexpr auto engine_fields = fields<sizeof(R)>({
    {"id", AT(R, id)},
    {"type", AT(R, type), as_name<engine_types>},
    {"memAffID", AT(R, affinity)},
    {"priQ", AT(R, primary_queue)},
    {"numQ", AT(R, num_queues)},
    {"hashFunc", AT(R, hash_function)},
    {"hashType", AT(R, hash_type)},
    {"keySize", AT(R, key_size)},
    {"indSize", AT(R, indirection_size)},
    {"secQ", AT(R, queues), queue_ids},
});

}  // namespace

PyObject* PyQDP_List_RSS_Engine(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    RSSEngineList record{};
    if (Qdp_Get_RSS_Engine_List(switch_number, port, &record) != 0)
        return print_none("Failed to retrieve RSS Engine list.\n");

    PyRef list{PyList_New(record.count)};
    if (!list)
        return print_none("Failed to allocate RSS engine list.\n");
    if (!fill_dicts(list.get(), record.count, engine_fields, entries_of(record)))
        return print_none("Failed to list RSS engines.\n");  // beside the SystemError, deliberately
    return list.release();
}

}  // namespace qdp
