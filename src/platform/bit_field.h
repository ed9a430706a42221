// Some bits of a word of a record.
#pragma once

#include <cstdint>

struct BitField {
    unsigned lowest;
    unsigned count;

    constexpr uint32_t packed(uint32_t value) const { return (value & mask()) << lowest; }
    constexpr uint32_t unpacked(uint32_t word) const { return word >> lowest & mask(); }

    template <class Word>
    constexpr void set(Word& word, uint32_t value) const
    {
        word = static_cast<Word>((word & ~(mask() << lowest)) | packed(value));
    }

private:
    constexpr uint32_t mask() const { return (1u << count) - 1; }
};
