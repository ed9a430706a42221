// A text that is written piece by piece into a buffer of fixed size.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qdp {

// A number as hexadecimal digits; all but 0 follow "0x".
struct Hex {
    uint64_t number;
};

// What does not fit is cut, and the text is full then. Written without printf, which would take three quarters of the
// time of a flow dump.
struct TextBuffer {
    char* cursor;
    char* end;

    bool is_full() const { return cursor >= end; }
    size_t room() const { return is_full() ? 0 : static_cast<size_t>(end - cursor); }

    // Takes a piece that has been written at the cursor; its length is that of the uncut piece, as snprintf tells it.
    int advance(int length)
    {
        const auto bytes = static_cast<size_t>(length);
        cursor = bytes < room() ? cursor + bytes : end;
        return length;
    }

    [[gnu::noinline]] TextBuffer& operator<<(std::string_view piece)
    {
        if (is_full())
            return *this;
        const size_t fitting = std::min(piece.size(), room() - 1);
        std::memcpy(cursor, piece.data(), fitting);
        cursor[fitting] = '\0';
        advance(static_cast<int>(piece.size()));
        return *this;
    }

    // A short literal that fits is copied without a call.
    template <size_t size>
    requires(size <= 18) [[gnu::always_inline]] TextBuffer& operator<<(const char (&literal)[size])
    {
        if (static_cast<size_t>(end - cursor) <= size) [[unlikely]]
            return *this << std::string_view{literal, size - 1};
        std::memcpy(cursor, literal, size);
        cursor += size - 1;
        return *this;
    }

    TextBuffer& operator<<(uint64_t number) { return write_digits<10>(number); }
    TextBuffer& operator<<(Hex hex)
    {
        if (hex.number != 0)
            *this << "0x";
        return write_digits<16>(hex.number);
    }

    // Two blanks and a number, followed by blanks up to a width of 12 at most. Returns the length of the uncut column.
    int column(uint32_t number, size_t width)
    {
        char cut[column_bytes];
        char* text = room() > column_bytes ? cursor : cut;
        std::memset(text, ' ', column_bytes);
        const size_t digits = static_cast<size_t>(std::to_chars(text + 2, text + column_bytes, number).ptr - text) - 2;
        const size_t length = 2 + std::max(digits, width);
        take(text, length);
        return static_cast<int>(length);
    }

private:
    static constexpr size_t max_digits = 20;
    static constexpr size_t column_bytes = 15;  // of the widest column with its NUL, more than of the longest number

    template <int base>
    [[gnu::noinline]] TextBuffer& write_digits(uint64_t number)
    {
        char cut[max_digits];
        char* digits = room() > max_digits ? cursor : cut;
        const char* last = std::to_chars(digits, digits + max_digits, number, base).ptr;
        return take(digits, static_cast<size_t>(last - digits));
    }

    // Takes a piece that lies at the cursor already, with room behind it, or elsewhere because it may not fit.
    TextBuffer& take(const char* piece, size_t length)
    {
        if (piece != cursor)
            return *this << std::string_view{piece, length};
        cursor += length;
        *cursor = '\0';
        return *this;
    }
};

}  // namespace qdp
