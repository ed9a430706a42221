// The hardware tables in the SmartNIC's memory: their inventory, hex dumps, and the invalidation of their cache.
#include <algorithm>
#include <cstdio>

#include "core/build.h"
#include "platform/table_memory.h"
#include "smartnic/channel/table_memory.h"

namespace qdp {

namespace {

using D = TableDescriptor;

// In bytes, the remainder dropped; 0 for a table without entries.
PyObject* entry_size(Bytes descriptor, const Field& field)
{
    const uint64_t table_bytes = descriptor.unsigned_at(field.where);
    const uint64_t num_entries = descriptor.unsigned_at(AT(D, num_entries));
    return object_or_error(PyLong_FromUnsignedLong(num_entries == 0 ? 0 : table_bytes / num_entries));
}

constexpr auto descriptor_fields = fields<sizeof(D)>({
    {"tableId", AT(D, table)},
    {"pa", AT(D, address)},
    {"numEntries", AT(D, num_entries)},
    {"entrySize", AT(D, table_bytes), entry_size},
});

constexpr uint32_t bytes_a_line = 16;

// The address and each byte are followed by a blank, the last one too.
PyObject* dump_line(uint64_t address, Bytes data, size_t count)
{
    char line[128];
    int end = std::snprintf(line, sizeof line, "%#lx: ", address);
    for (size_t i = 0; i < count; ++i)
        end += std::snprintf(line + end, sizeof line - static_cast<size_t>(end), "%02x ", data.load<uint8_t>(i));
    return text_object(line);
}

}  // namespace

PyObject* PyQDP_P4HWTableList(PyObject*, PyObject*)
{
    TableList tables{};
    uint32_t size = sizeof tables;
    if (Qdp_P4_HWTable_List(&tables, &size) != 0)
        return print_none("Failed to get p4 table info\n");

    return dicts_or_none(tables.count, descriptor_fields, entries_of(tables));
}

PyObject* PyQDP_P4HWTableDump(PyObject*, PyObject* args)
{
    TableRange range;
    if (!PyArg_ParseTuple(args, "III", &range.table, &range.first_index, &range.count))
        return print_none(invalid_parameter);

    TableDump dump{};
    if (!dump_table(range, dump))
        return print_none("Failed to dump HW table data.\n");

    const size_t length = data_bytes(dump);
    const size_t num_lines = (length + bytes_a_line - 1) / bytes_a_line;
    PyRef lines{PyList_New(static_cast<Py_ssize_t>(num_lines))};
    if (!lines)
        return print_none(no_buffer);
    const bool complete = fill_list(lines.get(), num_lines, [&](size_t line) {
        const size_t start = line * bytes_a_line;
        const size_t count = std::min<size_t>(bytes_a_line, length - start);
        return dump_line(dump.address + start, entries_of(dump).from(start), count);
    });
    return built_or_none(std::move(lines), complete);
}

PyObject* PyQDP_P4CacheInvalidate(PyObject*, PyObject* args)
{
    TableRange range;
    if (!PyArg_ParseTuple(args, "III", &range.table, &range.first_index, &range.count))
        return print_none(invalid_parameter);
    return command_result(Qdp_P4_Cache_Invalidate(&range, sizeof range), "Failed to perform cache invalidation\n");
}

}  // namespace qdp
