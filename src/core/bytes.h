// Bounded reading: a view of a library's answer in which every byte outside the answer reads as zero.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace qdp {

// Where a value lies: `size` bytes at `offset`. An integer is some bits of the little-endian 64-bit word that starts
// there: shifting `up` drops the bits above them, shifting `down` those below. A place that holds no integer (a text,
// an address, an array) has no bits.
struct Place {
    uint16_t offset;
    uint16_t size;
    uint8_t up;
    uint8_t down;
    bool is_signed;

    constexpr unsigned bits() const { return 64u - down; }
};

class Bytes {
public:
    Bytes(const void* data, size_t size) : data_{static_cast<const unsigned char*>(data)}, size_{size} {}
    Bytes() : Bytes{"", 0} {}

    size_t size() const { return size_; }

    // What follows `offset`; empty beyond the end.
    Bytes from(size_t offset) const
    {
        const size_t skipped = offset < size_ ? offset : size_;
        return {data_ + skipped, size_ - skipped};
    }

    // Copies `count` bytes from `offset` on.
    void copy(size_t offset, void* out, size_t count) const
    {
        if (offset + count <= size_) [[likely]]
            std::memcpy(out, data_ + offset, count);
        else
            copy_across_the_end(*this, offset, out, count);
    }

    // The value or record at `offset`, which need not be aligned.
    template <class Value>
    Value load(size_t offset) const
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        if constexpr (std::is_integral_v<Value>)
            if (offset + sizeof(Value) > size_) [[unlikely]]
                return static_cast<Value>(word_across_the_end(*this, offset));
        Value value;
        copy(offset, &value, sizeof value);
        return value;
    }

    // The word at an offset that the caller has found to lie within the bytes.
    uint64_t word_within(size_t offset) const
    {
        uint64_t word;
        std::memcpy(&word, data_ + offset, sizeof word);
        return word;
    }

    // The integer at a place.
    uint64_t unsigned_at(const Place& where) const { return load<uint64_t>(where.offset) << where.up >> where.down; }
    int64_t signed_at(const Place& where) const
    {
        return static_cast<int64_t>(load<uint64_t>(where.offset) << where.up) >> where.down;
    }

    // The NUL-terminated text in the `limit` bytes at `offset`, without its NUL; `limit` bytes when there is none.
    std::string_view text(size_t offset, size_t limit) const
    {
        const Bytes rest = from(offset);
        const size_t there = limit < rest.size_ ? limit : rest.size_;
        const char* start = reinterpret_cast<const char*>(rest.data_);
        return {start, strnlen(start, there)};
    }

private:
    // By value, so that callers whose values stay in registers need no stack.
    static uint64_t word_across_the_end(Bytes bytes, size_t offset);
    static void copy_across_the_end(Bytes bytes, size_t offset, void* out, size_t count);

    const unsigned char* data_;
    size_t size_;
};

template <class Record>
Bytes bytes_of(const Record& record)
{
    return {&record, sizeof record};
}

// The entries of a list record, up to the end of the record.
template <class List>
Bytes entries_of(const List& list)
{
    return bytes_of(list).from(offsetof(List, entries));
}

}  // namespace qdp
