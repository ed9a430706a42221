// Dumps of raw entries from the SmartNIC's table memory.
#include "smartnic/channel/table_memory.h"

#include "platform/table_memory.h"

namespace qdp {

bool dump_table(const TableRange& range, TableDump& dump)
{
    uint32_t size = sizeof dump;
    return Qdp_P4_HWTable_Dump(&range, sizeof range, &dump, &size) == 0;
}

uint32_t data_bytes(const TableDump& dump)
{
    return dump.length < dump.header_bytes ? 0 : dump.length - dump.header_bytes;
}

PyObject* table_entry(uint32_t table, uint32_t index, Fields fields, const char* failure)
{
    TableDump dump{};
    if (!dump_table({table, index, 1}, dump))
        return print_none(failure);

    const uint32_t length = data_bytes(dump);
    const auto expected = static_cast<uint32_t>(fields.record_size);
    if (length != expected)
        return print_none_format("Unexpected response size %u, expected: %u\n", length, expected);
    return dict_or_none(fields, entries_of(dump));
}

}  // namespace qdp
