// Field tables: how a record becomes a Python dict.
//
// A table has one row a key, in key order: the key, where its value lies, and how the value becomes an object.
//
//     using S = SwitchListEntry;
//     constexpr auto switch_fields = fields<sizeof(S)>({
//         {"name", AT(S, name), as_text},
//         {"swID", AT(S, switch_number)},
//     });
//
// Where: AT takes offset, width and sign from a record's member; bits and bytes name a place in a raw hardware entry.
// How: one of the conversions below, or any function of the type Converter; an integer needs none. A row that leaves
// its record, has no width or repeats a key does not compile.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "core/bytes.h"
#include "core/python.h"
#include "platform/bit_field.h"
#include "platform/limits.h"
#include "platform/named_value.h"

namespace qdp {

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
    Place where = bits(byte, 0, count <= sizeof(uint64_t) ? static_cast<unsigned>(count * 8) : 0);
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

// The bits of a member that holds several fields.
constexpr Place bits(const Place& word, BitField field)
{
    return bits(word.offset, field.lowest, field.count);
}

// The low 32 bits of a 64-bit member: counters that are reported modulo 2^32.
constexpr Place low_32(Place where)
{
    return bytes(where.offset, sizeof(uint32_t));
}

// --- How ---

struct Field;

// Makes the object of a row: a new reference, or null with SystemError set. It sees all bytes from the record's start
// to the end of the buffer.
using Converter = PyObject*(Bytes record, const Field& field);

// A converter, and what it requires of its row's place.
struct Conversion {
    Converter* convert;       // null: an integer, as it stands
    bool is_integer = false;  // the place has bits
    bool is_signed = false;   // and their highest is the sign
    size_t size = 0;          // the place has exactly so many bytes; 0: any

    consteval Conversion(Converter* converter) : convert{converter} {}
    consteval Conversion(Converter* converter, bool needs_bits, bool takes_sign, size_t needs_size)
        : convert{converter}, is_integer{needs_bits}, is_signed{takes_sign}, size{needs_size}
    {
    }
};

Converter big_endian_object, text_field_object, mac_field_object;

inline constexpr Conversion as_unsigned{nullptr, true, false, 0};
inline constexpr Conversion as_signed{nullptr, true, true, 0};                 // 64-bit counters wrap
inline constexpr Conversion as_big_endian{big_endian_object, true, false, 0};  // whole bytes in network byte order
inline constexpr Conversion as_signed_big_endian{big_endian_object, true, true, 0};
inline constexpr Conversion as_text{text_field_object};  // the NUL-terminated text of a character array
inline constexpr Conversion as_mac{mac_field_object, false, false, mac_bytes};  // "02:30:00:0a:0b:0c"

// The name of a code; codes beyond the names have the name `otherwise`.
template <size_t count>
struct Names {
    const char* names[count];
    const char* otherwise;

    constexpr const char* operator[](uint64_t code) const { return code < count ? names[code] : otherwise; }
};

PyObject* name_object(Bytes record, const Field& field, const char* const* names, size_t count, const char* otherwise);
PyObject* address_field_object(Bytes record, const Field& field, Place is_ipv6);
template <class Element>
PyObject* integers_object(Bytes record, const Field& field, Place count);

// A list of `length` unsigned integers, which lie back to back. So short a list needs no look at signals.
template <class Element>
PyObject* integers(Bytes elements, uint16_t length);

template <const auto& names>
inline constexpr Conversion as_name{[](Bytes record, const Field& field) {
                                        return name_object(record, field, names.names, std::size(names.names),
                                                           names.otherwise);
                                    },
                                    true, false, 0};

// A 16-byte address: IPv6 when the record's flag says so, else IPv4 in its first four bytes.
template <Place is_ipv6>
inline constexpr Conversion as_address{
    [](Bytes record, const Field& field) { return address_field_object(record, field, is_ipv6); }, false, false, 16};

// A list of unsigned integers, which lie back to back, as many as the record's own count says.
template <class Element, Place count>
requires(count.bits() <= 16) inline constexpr Conversion as_list{
    [](Bytes record, const Field& field) { return integers_object<Element>(record, field, count); }};

// --- Rows and tables ---

// Declared, never defined: a table that calls one of them does not compile, and the message names the reason.
void a_field_leaves_its_record();
void a_field_has_no_width();
void a_field_is_wider_than_a_word();
void a_field_has_the_wrong_size();
void a_field_repeats_a_key();

struct Field {
    const char* key;
    Place where;
    Converter* convert;  // null for an integer

    constexpr Field() : key{}, where{}, convert{} {}
    consteval Field(const char* name, Place place) : Field{name, place, place.is_signed ? as_signed : as_unsigned} {}
    consteval Field(const char* name, Place place, Conversion how) : key{name}, where{place}, convert{how.convert}
    {
        where.is_signed = how.is_signed;
        if (how.size != 0)  // whole bytes, no integer
            where.down = 64;
        if (place.size == 0 || (how.is_integer && place.bits() == 0))
            a_field_has_no_width();
        if (place.up > 64)  // bits beyond the word shift by less than nothing
            a_field_is_wider_than_a_word();
        if (how.size != 0 && how.size != place.size)
            a_field_has_the_wrong_size();
    }
};

template <class Element>
PyObject* integers_object(Bytes record, const Field& field, Place count)
{
    return integers<Element>(record.from(field.where.offset), static_cast<uint16_t>(record.unsigned_at(count)));
}

template <size_t record_bytes, size_t count>
struct FieldTable {
    Field rows[count];
};

// A table of any length, as the functions of build.h take it.
struct Fields {
    const Field* rows;
    uint32_t count;
    uint32_t record_size;

    template <size_t record_bytes, size_t length>
    constexpr Fields(const FieldTable<record_bytes, length>& table)
        : rows{table.rows}, count{length}, record_size{record_bytes}
    {
    }

    const Field* begin() const { return rows; }
    const Field* end() const { return rows + count; }
};

template <size_t record_bytes, size_t count>
constexpr auto checked(const FieldTable<record_bytes, count>& table)
{
    for (size_t i = 0; i < count; ++i) {
        if (table.rows[i].where.offset + table.rows[i].where.size > record_bytes)
            a_field_leaves_its_record();
        for (size_t j = 0; j < i; ++j)
            if (std::string_view{table.rows[i].key} == table.rows[j].key)
                a_field_repeats_a_key();
    }
    return table;
}

// The table of a record of `record_bytes`.
template <size_t record_bytes, size_t count>
constexpr auto fields(const Field (&rows)[count])
{
    FieldTable<record_bytes, count> table;
    std::ranges::copy(rows, table.rows);
    return checked(table);
}

// A table of integers whose keys are a list's names; where(i) is the place of the i-th.
template <size_t record_bytes, size_t count, class Where>
consteval auto fields(const char* const (&keys)[count], Where where)
{
    FieldTable<record_bytes, count> table;
    for (size_t i = 0; i < count; ++i)
        table.rows[i] = {keys[i], where(i)};
    return checked(table);
}

template <size_t record_bytes, size_t count, class Where>
consteval auto fields(const NamedValue (&names)[count], Where where)
{
    FieldTable<record_bytes, count> table;
    for (size_t i = 0; i < count; ++i)
        table.rows[i] = {names[i].name, where(names[i].value)};
    return checked(table);
}

// The rows of one table and then those of another, for a record of `record_bytes`.
template <size_t record_bytes, size_t first_bytes, size_t first_count, size_t second_bytes, size_t second_count>
constexpr auto joined(const FieldTable<first_bytes, first_count>& first,
                      const FieldTable<second_bytes, second_count>& second)
{
    FieldTable<record_bytes, first_count + second_count> table;
    std::ranges::copy(second.rows, std::ranges::copy(first.rows, table.rows).out);
    return checked(table);
}

}  // namespace qdp
