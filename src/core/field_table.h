// The tables of fields.h: how their rows are written, checked and laid out, all at compile time.
//
// In the built file a table is one constant, which has its name in the source: its rows, 12 bytes each, then its
// converters and its keys, which the rows find by their distance. So it holds no pointers but those of its converters:
// each would cost the loader a relocation, and the file 24 bytes more.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

#include "core/bytes.h"
#include "core/python.h"

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

// --- Rows ---

// A row of a table, as the built file holds it. What it points to lies behind it in its table: it is read there and
// never copied out.
struct Field {
    uint16_t key_distance;        // from the row to its key
    uint16_t converter_distance;  // from the row to its converter; 0 for an integer, which needs none
    Place where;

    const char* key() const { return reinterpret_cast<const char*>(this) + key_distance; }
    bool is_integer() const { return converter_distance == 0; }
    PyObject* convert(Bytes record) const;
};
static_assert(sizeof(Field) == 12);

// Makes the object of a row. It sees all bytes from the record's start to the end of the buffer. A new reference, or
// null with SystemError set.
using Converter = PyObject*(Bytes record, const Field& field);

inline PyObject* Field::convert(Bytes record) const
{
    const char* converter = reinterpret_cast<const char*>(this) + converter_distance;
    return (*reinterpret_cast<Converter* const*>(converter))(record, *this);
}

// A converter, and what it needs of the place that it reads. Plain integers, which most fields are, have none.
struct Kind {
    Converter* convert;
    bool is_plain;    // it has no converter; under the sanitizers, no comparison with null tells that at compile time
    bool is_integer;  // the place has bits
    bool is_signed;   // and their highest is the sign
    size_t size;      // the place has exactly so many bytes; 0: any

    // Any function of the form, which knows its place itself.
    consteval Kind(Converter* function) : Kind{function, false, false, 0} {}
    consteval Kind(Converter* function, bool needs_bits, bool takes_sign, size_t needs_size)
        : convert{function}, is_plain{false}, is_integer{needs_bits}, is_signed{takes_sign}, size{needs_size}
    {
    }
    // A plain integer.
    consteval Kind(bool takes_sign) : convert{}, is_plain{true}, is_integer{true}, is_signed{takes_sign}, size{0} {}
};

// Declared, never defined: a table that calls one of them does not compile, and the message names the reason.
void a_field_leaves_its_record();
void a_field_has_no_width();
void a_field_is_wider_than_a_word();
void a_field_has_the_wrong_size();
void a_field_repeats_a_key();

inline constexpr Kind as_unsigned{false};  // an integer, as it stands
inline constexpr Kind as_signed{true};     // its highest bit is its sign: 64-bit counters wrap

// A row as it is written.
struct Row {
    const char* key;
    Place where;
    Converter* convert;
    bool is_plain;

    consteval Row(const char* name, Place place, Kind how)
        : key{name}, where{place}, convert{how.convert}, is_plain{how.is_plain}
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
    consteval Row(const char* name, Place place);  // an integer with the sign of its place
};

consteval Row::Row(const char* name, Place place) : Row{name, place, place.is_signed ? as_signed : as_unsigned} {}

// --- Tables ---

template <size_t count>
struct Rows {
    Row rows[count];
};

template <size_t count>
consteval Rows<count> rows(const Row (&written)[count])
{
    return [&]<size_t... i>(std::index_sequence<i...>)
    {
        return Rows<count>{{written[i]...}};
    }
    (std::make_index_sequence<count>{});
}

// The rows of a table, given in braces, as a function: what a function gives may decide types, here the table's sizes;
// what it is given may not.
#define ROWS(...) [] { return ::qdp::rows(__VA_ARGS__); }

// The rows of one table, and then those of another.
template <class First, class Second>
consteval auto joined(First, Second)
{
    return [] {
        constexpr auto first = First{}();
        constexpr auto second = Second{}();
        return [&]<size_t... i, size_t... j>(std::index_sequence<i...>, std::index_sequence<j...>)
        {
            return rows({first.rows[i]..., second.rows[j]...});
        }
        (std::make_index_sequence<std::size(first.rows)>{}, std::make_index_sequence<std::size(second.rows)>{});
    };
}

// A table, as the built file holds it.
template <size_t record_bytes, size_t count, size_t converters_room, size_t keys_room>
struct FieldTable {
    static constexpr size_t record_size = record_bytes;

    Field rows[count];
    Converter* converters[converters_room];
    char keys[keys_room];
};

// A table of any length, as the interpreter of tables reads it. Two words, which travel in registers.
struct Fields {
    const Field* rows;
    uint32_t count;
    uint32_t record_size;

    template <size_t record_bytes, size_t length, size_t converters_room, size_t keys_room>
    constexpr Fields(const FieldTable<record_bytes, length, converters_room, keys_room>& table)
        : rows{table.rows}, count{length}, record_size{record_bytes}
    {
    }
};

// At least 1, since no array is empty.
template <size_t count>
constexpr size_t converters_in(const Rows<count>& written)
{
    size_t converters = 0;
    for (const Row& row : written.rows)
        converters += !row.is_plain;
    return std::max<size_t>(converters, 1);
}

template <size_t count>
constexpr size_t key_bytes_in(const Rows<count>& written)
{
    size_t bytes = 0;
    for (const Row& row : written.rows)
        bytes += std::string_view{row.key}.size() + 1;
    return bytes;
}

template <size_t record_size, size_t count>
constexpr void check(const Rows<count>& written)
{
    for (size_t i = 0; i < count; ++i) {
        if (written.rows[i].where.offset + written.rows[i].where.size > record_size)
            a_field_leaves_its_record();
        for (size_t j = 0; j < i; ++j)
            if (std::string_view{written.rows[i].key} == written.rows[j].key)
                a_field_repeats_a_key();
    }
}

// The table of a record of `record_size` bytes, checked at compile time.
template <size_t record_size, class MakeRows>
consteval auto fields(MakeRows)
{
    constexpr auto written = MakeRows{}();
    check<record_size>(written);

    constexpr size_t count = std::size(written.rows);
    using Table = FieldTable<record_size, count, converters_in(written), key_bytes_in(written)>;
    static_assert(sizeof(Table) <= UINT16_MAX, "distances have 16 bits");
    Table table{};
    size_t key_end = 0, converters_end = 0;
    for (size_t i = 0; i < count; ++i) {
        const Row& row = written.rows[i];
        Field& field = table.rows[i];
        field.where = row.where;
        field.key_distance = static_cast<uint16_t>(offsetof(Table, keys) + key_end - i * sizeof(Field));
        for (const char* letter = row.key; *letter; ++letter)
            table.keys[key_end++] = *letter;
        ++key_end;
        if (!row.is_plain) {
            field.converter_distance = static_cast<uint16_t>(offsetof(Table, converters) +
                                                             converters_end * sizeof(Converter*) - i * sizeof(Field));
            table.converters[converters_end++] = row.convert;
        }
    }
    return table;
}

}  // namespace qdp
