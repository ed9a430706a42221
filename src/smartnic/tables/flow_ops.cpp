// What the flow table library counts of the operations on it.
#include "smartnic/tables/reader.h"
#include "smartnic/tables/tables.h"

namespace qdp {

namespace {

constexpr size_t levels = 8;

constexpr Place words(size_t first, size_t count)
{
    return bytes(first * sizeof(uint64_t), count * sizeof(uint64_t));
}

constexpr Place word(size_t number)
{
    return words(number, 1);
}

// One counter a level of the hash table, the first at the field's place.
PyObject* list_of_levels(Bytes entry, const Field& field)
{
    return list_of(levels, [&](size_t level) {
        const size_t offset = field.where.offset + level * sizeof(int64_t);
        return object_or_error(PyLong_FromLong(entry.load<int64_t>(offset)));
    });
}

// Words 17 and 18 stand where words 0 and 4 would: deliberate. These two, 11 and 12 are not shown.
constexpr auto flow_operations = table<P4Table::flow_operations>({
    {"insert", word(17), as_signed},
    {"duplicateInsert", word(1), as_signed},
    {"failedInsert", word(2), as_signed},
    {"recircFailedInsert", word(3), as_signed},
    {"remove", word(18), as_signed},
    {"removeNotFound", word(5), as_signed},
    {"failedRemove", word(6), as_signed},
    {"update", word(7), as_signed},
    {"failedUpdate", word(8), as_signed},
    {"get", word(9), as_signed},
    {"failedGet", word(10), as_signed},
    {"release", word(13), as_signed},
    {"failedRelease", word(14), as_signed},
    {"read", word(19), as_signed},
    {"write", word(20), as_signed},
    {"entries", word(15), as_signed},
    {"collisions", word(16), as_signed},
    {"insertLevel", words(21, levels), list_of_levels},
    {"removeLevel", words(29, levels), list_of_levels},
});

}  // namespace

PyObject* PyQDP_FlowOpsStatsGet(PyObject*, PyObject*)
{
    return read_entry(flow_operations, 0);
}

}  // namespace qdp
