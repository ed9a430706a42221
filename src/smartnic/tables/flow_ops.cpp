// What the flow table library counts of the operations on it.
#include "platform/p4_entries.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

// One counter a level of the hash table, the first at the field's place.
PyObject* list_of_levels(Bytes entry, const Field& field)
{
    return list_of(P4FlowOperationsEntry::levels, [&](size_t level) {
        const size_t offset = field.where.offset + level * sizeof(int64_t);
        return object_or_error(PyLong_FromLong(entry.load<int64_t>(offset)));
    });
}

// The keys "insert" and "remove" show what the table did, not the calls: deliberate. The calls are not shown.
using O = P4FlowOperationsEntry;
constexpr auto flow_operations = table<P4Table::flow_operations>({
    {"insert", AT(O, inserts), as_signed},
    {"duplicateInsert", AT(O, duplicate_inserts), as_signed},
    {"failedInsert", AT(O, failed_inserts), as_signed},
    {"recircFailedInsert", AT(O, failed_recirculated_inserts), as_signed},
    {"remove", AT(O, removes), as_signed},
    {"removeNotFound", AT(O, removes_not_found), as_signed},
    {"failedRemove", AT(O, failed_removes), as_signed},
    {"update", AT(O, updates), as_signed},
    {"failedUpdate", AT(O, failed_updates), as_signed},
    {"get", AT(O, gets), as_signed},
    {"failedGet", AT(O, failed_gets), as_signed},
    {"release", AT(O, releases), as_signed},
    {"failedRelease", AT(O, failed_releases), as_signed},
    {"read", AT(O, reads), as_signed},
    {"write", AT(O, writes), as_signed},
    {"entries", AT(O, entries), as_signed},
    {"collisions", AT(O, collisions), as_signed},
    {"insertLevel", AT(O, inserts_by_level), list_of_levels},
    {"removeLevel", AT(O, removes_by_level), list_of_levels},
});

}  // namespace

PyObject* PyQDP_FlowOpsStatsGet(PyObject*, PyObject*)
{
    return read_entry(flow_operations, 0);
}

}  // namespace qdp
