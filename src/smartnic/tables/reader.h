// How a hardware table is read: a reader is its bounds, its table, and the fields of the table's entry.
//
//     constexpr auto flow_info = table<P4Table::flow_info>({
//         {"flowIdx", AT(P4FlowInfoEntry, flow)},
//         {"dstPort", AT(P4FlowInfoEntry, port)},
//     });
//
//     PyObject* PyQDP_TableFlowInfoGet(PyObject*, PyObject* args)
//     {
//         return read_by_index(args, flow_info, max_flows);
//     }
#pragma once

#include "core/build.h"
#include "platform/p4_entries.h"
#include "smartnic/channel/table_read.h"

namespace qdp {

// A hardware table, or the first of a pair, and the fields of its entry.
template <P4Table id, class Table>
struct HardwareTable {
    Table fields;
};

template <P4Table id, size_t count>
constexpr auto table(const Field (&rows)[count])
{
    const auto checked = fields<p4_table_shape(id).entry_bytes>(rows);
    return HardwareTable<id, decltype(checked)>{checked};
}

// The same with fields that lie elsewhere.
template <P4Table id, size_t count>
constexpr auto table(const FieldTable<p4_table_shape(id).entry_bytes, count>& entry_fields)
{
    return HardwareTable<id, decltype(entry_fields)>{entry_fields};
}

// One entry, on the stack. It is zeroed before it is read, so that a short answer decodes as zeros. Reading it is false
// for failure, whose message has been printed.
template <P4Table id>
class Entry {
public:
    // Of a pair of tables, any selector but 0 chooses the second.
    bool read_at(uint32_t index, uint32_t selector = 0)
    {
        const auto number = static_cast<uint16_t>(static_cast<unsigned>(id) + (selector != 0 ? 1 : 0));
        return QdpGetIndexTableData(index, number, data_, &length_) == 0;
    }

    template <class Key>
    bool read_with(const Key& key)
    {
        static_assert(sizeof key == p4_table_shape(id).key_bytes);
        return QdpGetGenericKeyTableData(&key, sizeof key, static_cast<uint16_t>(id), data_, &length_) == 0;
    }

    // All of it, whatever length the library reported.
    Bytes bytes() const { return bytes_of(data_); }

private:
    unsigned char data_[p4_table_shape(id).entry_bytes]{};
    uint32_t length_ = sizeof data_;
};

// The forms of readers.

template <P4Table id, class Table>
PyObject* read_entry(const HardwareTable<id, Table>& table, uint32_t index, uint32_t selector = 0)
{
    Entry<id> entry;
    return entry.read_at(index, selector) ? dict_or_none(table.fields, entry.bytes()) : none();
}

template <P4Table id, class Table, class Key>
PyObject* read_by_key(const HardwareTable<id, Table>& table, const Key& key)
{
    Entry<id> entry;
    return entry.read_with(key) ? dict_or_none(table.fields, entry.bytes()) : none();
}

// With the arguments of a method: an index below a bound.
template <P4Table id, class Table>
PyObject* read_by_index(PyObject* args, const HardwareTable<id, Table>& table, uint32_t bound)
{
    uint32_t index;
    if (!PyArg_ParseTuple(args, "I", &index) || index >= bound)
        return print_none(invalid_parameter);
    return read_entry(table, index);
}

// With the arguments of a method: an index below a bound, and which table of a pair.
template <P4Table id, class Table>
PyObject* read_of_pair(PyObject* args, const HardwareTable<id, Table>& table, uint32_t bound)
{
    uint32_t index, selector;
    if (!PyArg_ParseTuple(args, "II", &index, &selector) || index >= bound)
        return print_none(invalid_parameter);
    return read_entry(table, index, selector);
}

}  // namespace qdp
