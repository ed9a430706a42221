// Field tables: how a library's record becomes a Python dict.
//
// A table has one row a key, in key order: the key, where its value lies, and how the value becomes an object.
//
//     using R = SwitchListEntry;
//     constexpr auto switch_fields = fields<sizeof(R)>({
//         {"name", AT(R, name), as_text},
//         {"swID", AT(R, switch_number)},
//     });
//
// Where: AT takes offset, width and sign from a record's member; bits and bytes name a place in a raw hardware entry.
// How: one of the converters below, or any function of their form; an integer needs none. A row that leaves its
// record, has no width or repeats a key does not compile.
#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

#include "module/bytes.h"
#include "module/fail.h"
#include "platform/limits.h"

namespace qdp {

struct Field;

// Makes the object of a row. It sees all bytes from the record's start to the end of the buffer. A new reference, or
// null with SystemError set.
using Converter = PyObject*(Bytes record, const Field& field);

// A converter, and what it needs of the place that it reads. Plain integers, which most fields are, have none.
struct Kind {
    Converter* convert;
    bool is_integer;  // the place has bits
    bool is_signed;   // and their highest is the sign
    size_t size;      // the place has exactly so many bytes; 0: any

    // Any function of the form, which knows its place itself.
    consteval Kind(Converter* function) : Kind{function, false, false, 0} {}
    consteval Kind(Converter* function, bool needs_bits, bool takes_sign, size_t needs_size)
        : convert{function}, is_integer{needs_bits}, is_signed{takes_sign}, size{needs_size}
    {
    }
};

// Declared, never defined: a table that calls one of them does not compile, and the message names the reason.
void a_field_leaves_its_record();
void a_field_has_no_width();
void a_field_is_wider_than_a_word();
void a_field_has_the_wrong_size();
void a_field_repeats_a_key();

struct Field {
    const char* key;
    Converter* convert;
    Place where;

    consteval Field(const char* name, Place place, Kind how) : key{name}, convert{how.convert}, where{place}
    {
        where.is_signed = how.is_signed;
        if (place.size == 0 || (how.is_integer && place.bits() == 0))
            a_field_has_no_width();
        if (place.up > 64)  // bits beyond the word shift by less than nothing
            a_field_is_wider_than_a_word();
        if (how.size != 0 && how.size != place.size)
            a_field_has_the_wrong_size();
    }
    consteval Field(const char* name, Place place);  // an integer with the sign of its place
};

// --- Where ---

// `count` bits of a raw entry, from bit `lowest` of the little-endian word that starts at `byte`.
constexpr Place bits(size_t byte, unsigned lowest, unsigned count)
{
    return {static_cast<uint16_t>(byte), static_cast<uint16_t>((lowest + count + 7) / 8),
            static_cast<uint8_t>(64 - lowest - count), static_cast<uint8_t>(64 - count), false};
}

// `count` whole bytes of a raw entry; no integer when there are more than a word has.
constexpr Place bytes(size_t byte, size_t count)
{
    const auto width = static_cast<unsigned>(count <= sizeof(uint64_t) ? count * 8 : 0);
    Place where = bits(byte, 0, width);
    where.size = static_cast<uint16_t>(count);
    return where;
}

template <class Member>
constexpr Place member_at(size_t offset)
{
    Place where = bytes(offset, sizeof(Member));
    where.is_signed = std::is_signed_v<Member>;
    if (!std::is_integral_v<Member>)
        where.down = 64;
    return where;
}

#define AT(Record, member) ::qdp::member_at<std::remove_reference_t<decltype(Record::member)>>(offsetof(Record, member))

// The low 32 bits of a 64-bit member: counters that are reported modulo 2^32.
constexpr Place low_32(Place where)
{
    return bytes(where.offset, sizeof(uint32_t));
}

// --- How ---

Converter big_endian_object;
Converter field_text_object;
Converter field_mac_object;

inline constexpr Kind as_unsigned{nullptr, true, false, 0};  // an integer, as it stands
inline constexpr Kind as_signed{nullptr, true, true, 0};     // its highest bit is its sign: 64-bit counters wrap
inline constexpr Kind as_big_endian{big_endian_object, true, false, 0};  // whole bytes in network byte order
inline constexpr Kind as_text{field_text_object};                        // the NUL-terminated text of a character array
inline constexpr Kind as_mac{field_mac_object, false, false, mac_bytes};  // "00:1b:21:0a:0b:0c"

consteval Field::Field(const char* name, Place place) : Field{name, place, place.is_signed ? as_signed : as_unsigned} {}

// The name of a code; codes beyond the names have the name `otherwise`.
template <size_t count>
struct Names {
    const char* names[count];
    const char* otherwise;

    constexpr const char* operator[](uint64_t code) const { return code < count ? names[code] : otherwise; }
};

PyObject* text_object(std::string_view text);

template <const auto& names>
PyObject* name_object(Bytes record, const Field& field)
{
    return text_object(names[record.unsigned_at(field.where)]);
}

template <const auto& names>
inline constexpr Kind as_name{name_object<names>, true, false, 0};

// `length` unsigned integers of `width` bytes each, back to back.
PyObject* integers(Bytes record, const Field& field, uint64_t length, size_t width);

// A list of unsigned integers, as many as the record's own count says.
template <class Element, Place count>
PyObject* list_object(Bytes record, const Field& field)
{
    return integers(record, field, record.unsigned_at(count), sizeof(Element));
}

template <class Element, Place count>
inline constexpr Kind as_list{list_object<Element, count>};

// A MAC address as text; null with SystemError set when it cannot be made.
PyObject* mac_object(Bytes record, size_t offset);

// An IP address as text; null with SystemError set when it cannot be rendered.
PyObject* address_object(Bytes record, size_t offset, bool is_ipv6);

template <Place is_ipv6>
PyObject* field_address_object(Bytes record, const Field& field)
{
    return address_object(record, field.where.offset, record.unsigned_at(is_ipv6) != 0);
}

// A 16-byte address: IPv6 when the record's flag says so, else IPv4 in its first four bytes.
template <Place is_ipv6>
inline constexpr Kind as_address{field_address_object<is_ipv6>, false, false, 16};

// --- Tables ---

template <size_t count>
struct FieldTable {
    Field rows[count];
    size_t record_size;
};

// A table of any length, as the interpreter of tables reads it.
struct Fields {
    const Field* rows;
    size_t count;
    size_t record_size;

    template <size_t length>
    constexpr Fields(const FieldTable<length>& table) : rows{table.rows}, count{length}, record_size{table.record_size}
    {
    }
};

// The table itself, once its rows have been checked.
template <size_t count>
constexpr FieldTable<count> checked(const FieldTable<count>& table)
{
    for (size_t i = 0; i < count; ++i) {
        if (table.rows[i].where.offset + table.rows[i].where.size > table.record_size)
            a_field_leaves_its_record();
        for (size_t j = 0; j < i; ++j)
            if (std::string_view{table.rows[i].key} == table.rows[j].key)
                a_field_repeats_a_key();
    }
    return table;
}

// A table of a record of `record_size` bytes, checked at compile time.
template <size_t record_size, size_t count>
consteval FieldTable<count> fields(const Field (&rows)[count])
{
    return [&]<size_t... i>(std::index_sequence<i...>)
    {
        return checked<count>({{rows[i]...}, record_size});
    }
    (std::make_index_sequence<count>{});
}

// A table with the rows of another one, and then its own.
template <size_t record_size, size_t first, size_t count>
consteval FieldTable<first + count> extended(const FieldTable<first>& base, const Field (&rows)[count])
{
    return [&]<size_t... i, size_t... j>(std::index_sequence<i...>, std::index_sequence<j...>)
    {
        return checked<first + count>({{base.rows[i]..., rows[j]...}, record_size});
    }
    (std::make_index_sequence<first>{}, std::make_index_sequence<count>{});
}

// --- Building. Each returns false or null with SystemError set when it fails ---

// Each takes the object over, which may be null after a failure of its own.
inline bool set_dict_item(PyObject* dict, const char* key, PyObject* value)
{
    const PyRef owned{value};
    if (!owned) [[unlikely]]
        return false;
    return PyDict_SetItemString(dict, key, value) == 0 || building_failed(cannot_set_dict_item);
}
bool set_list_item(PyObject* list, size_t position, PyObject* item);
bool set_tuple_item(PyObject* tuple, size_t position, PyObject* item);

// Sets a table's keys from the record at the start of `record`.
bool fill(PyObject* dict, Fields fields, Bytes record);

// A new dict of a table's keys.
PyRef dict_of(Fields fields, Bytes record);

// The same in one piece: whatever fails in it is "Failed to allocate buffer.\n".
PyObject* whole_dict(Fields fields, Bytes record);

// Fills a list, made with its full length, with one dict an entry; the entries lie back to back.
bool fill_dicts(PyObject* list, Fields fields, Bytes entries);

// Fills a list, made with its full length, with what `make(position)` makes: a new reference, or null with SystemError
// set.
template <class Make>
bool fill_list(PyObject* list, Make make)
{
    const auto length = static_cast<size_t>(PyList_Size(list));
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
    return list && fill_list(list.get(), make) ? list.release() : nullptr;
}

// --- Whole results of methods ---

// A table's dict. A dict that cannot be made is a text on standard error and None; a key that cannot be set is
// SystemError, beside None or raised.
PyObject* dict_or_none(Fields fields, Bytes record, const char* no_dict = no_buffer);
PyObject* dict_or_null(Fields fields, Bytes record);

// A list with one dict an entry. A list that cannot be made is a text on standard error and None; what cannot be put
// into it is SystemError beside None.
PyObject* dicts_or_none(uint32_t count, Fields fields, Bytes entries, const char* no_list = no_buffer);

}  // namespace qdp
