// Field tables: how a library's record becomes a Python dict.
//
// A table has one row a key, in key order: the key, where its value lies, and how the value becomes an object.
//
//     using R = SwitchListEntry;
//     constexpr auto switch_fields = fields<sizeof(R)>(ROWS({
//         {"name", AT(R, name), as_text},
//         {"swID", AT(R, switch_number)},
//     }));
//
// Where: AT takes offset, width and sign from a record's member; bits and bytes name a place in a raw hardware entry.
// How: one of the converters below, or any function of their form; an integer needs none. A row that leaves its
// record, has no width or repeats a key does not compile.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include "core/fail.h"
#include "core/field_table.h"
#include "platform/limits.h"

namespace qdp {

// --- How ---

Converter big_endian_object;
Converter field_text_object;
Converter field_mac_object;

inline constexpr Kind as_big_endian{big_endian_object, true, false, 0};  // whole bytes in network byte order
inline constexpr Kind as_signed_big_endian{big_endian_object, true, true, 0};
inline constexpr Kind as_text{field_text_object};  // the NUL-terminated text of a character array
inline constexpr Kind as_mac{field_mac_object, false, false, mac_bytes};  // "02:30:00:0a:0b:0c"

// The name of a code; codes beyond the names have the name `otherwise`.
template <size_t count>
struct Names {
    const char* names[count];
    const char* otherwise;

    constexpr const char* operator[](uint64_t code) const { return code < count ? names[code] : otherwise; }
};

PyObject* text_object(std::string_view text);

// The name of the code at a field's place.
PyObject* name_among(const char* const* names, size_t count, const char* otherwise, Bytes record, const Field& field);

template <const auto& names>
PyObject* name_object(Bytes record, const Field& field)
{
    return name_among(names.names, std::size(names.names), names.otherwise, record, field);
}

template <const auto& names>
inline constexpr Kind as_name{name_object<names>, true, false, 0};

// A list of `length` unsigned integers, which lie back to back.
template <class Element>
PyObject* integers(Bytes elements, uint64_t length);
extern template PyObject* integers<uint8_t>(Bytes elements, uint64_t length);
extern template PyObject* integers<uint16_t>(Bytes elements, uint64_t length);

// The same, as many as the record's own count says.
template <class Element, Place count>
PyObject* list_object(Bytes record, const Field& field)
{
    return integers<Element>(record.from(field.where.offset), record.unsigned_at(count));
}

template <class Element, Place count>
inline constexpr Kind as_list{list_object<Element, count>};

// A MAC address as text; null with SystemError set when it cannot be made.
PyObject* mac_object(Bytes record, size_t offset);

// An IP address as text: IPv6 when the record's flag says so, else IPv4. Null with SystemError set when it cannot be
// rendered.
PyObject* address_object(Bytes record, Place is_ipv6, size_t ipv6_offset, size_t ipv4_offset);

template <Place is_ipv6>
PyObject* field_address_object(Bytes record, const Field& field)
{
    return address_object(record, is_ipv6, field.where.offset, field.where.offset);
}

// A 16-byte address: IPv6 when the record's flag says so, else IPv4 in its first four bytes.
template <Place is_ipv6>
inline constexpr Kind as_address{field_address_object<is_ipv6>, false, false, 16};

// --- Building. Each returns false or null with SystemError set when it fails ---

// Each takes the object over, which may be null after a failure of its own.
inline bool set_dict_item(PyObject* dict, const char* key, PyObject* value)
{
    const PyRef owned{value};
    if (!owned) [[unlikely]]
        return false;
    if (PyDict_SetItemString(dict, key, value) != 0) [[unlikely]]
        return building_failed(cannot_set_dict_item);
    return true;
}
inline bool set_list_item(PyObject* list, size_t position, PyObject* item)
{
    if (!item) [[unlikely]]
        return false;
    if (PyList_SetItem(list, static_cast<Py_ssize_t>(position), item) != 0) [[unlikely]]
        return building_failed(cannot_set_list_item);
    return true;
}
inline bool set_tuple_item(PyObject* tuple, size_t position, PyObject* item)
{
    if (!item) [[unlikely]]
        return false;
    if (PyTuple_SetItem(tuple, static_cast<Py_ssize_t>(position), item) != 0) [[unlikely]]
        return building_failed(cannot_set_tuple_item);
    return true;
}

// Sets a table's keys from the record at the start of `record`.
bool fill(PyObject* dict, Fields fields, Bytes record);

// A new dict of a table's keys; null with SystemError set.
PyObject* dict_of(Fields fields, Bytes record);

// The same in one piece: whatever fails in it is "Failed to allocate buffer.\n".
PyObject* whole_dict(Fields fields, Bytes record);

// Fills a list, made with its length, with one dict an entry; the entries lie back to back.
bool fill_dicts(PyObject* list, size_t length, Fields fields, Bytes entries);

// Fills a list, made with its length, with what `make(position)` makes: a new reference, or null with SystemError set.
template <class Make>
bool fill_list(PyObject* list, size_t length, Make make)
{
    for (size_t i = 0; i < length; ++i)
        if (!set_list_item(list, i, make(i)))
            return false;
    return true;
}

// A new list of `length` items, which `make(position)` makes; null with SystemError set.
template <class Make>
PyObject* list_of(uint64_t length, Make make)
{
    PyRef list{made(PyList_New(static_cast<Py_ssize_t>(length)))};
    return list && fill_list(list.get(), length, make) ? list.release() : nullptr;
}

// --- Whole results of methods ---

// A table's dict. A dict that cannot be made is a text on standard error and None; a key that cannot be set is
// SystemError, beside None or raised.
PyObject* dict_or_none(Fields fields, Bytes record, const char* no_dict = no_buffer);
PyObject* dict_or_null(Fields fields, Bytes record);

// A table's dict whose making fails as Py_BuildValue does: MemoryError is raised.
PyObject* dict_or_no_memory(Fields fields, Bytes record);

// A list with one dict an entry. A list that cannot be made is a text on standard error and None; what cannot be put
// into it is SystemError beside None.
inline PyObject* dicts_or_none(uint32_t count, Fields fields, Bytes entries, const char* no_list = no_buffer)
{
    PyRef list{PyList_New(count)};
    if (!list)
        return print_none(no_list);
    const bool complete = fill_dicts(list.get(), count, fields, entries);
    return built_or_none(std::move(list), complete);
}

}  // namespace qdp
