// A text that is written piece by piece into a buffer of fixed size.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace qdp {

// What does not fit is cut, and the text is full then.
struct CutText {
    char* cursor;
    char* end;

    bool is_full() const { return cursor >= end; }
    size_t room() const { return is_full() ? 0 : static_cast<size_t>(end - cursor); }

    // Takes a piece that has been written at the cursor; its length is that of the uncut piece, as snprintf tells it.
    int written(int length)
    {
        const auto advance = static_cast<size_t>(length);
        cursor = advance < room() ? cursor + advance : end;
        return length;
    }

    [[gnu::format(printf, 2, 3)]] int print(const char* format, ...)
    {
        va_list values;
        va_start(values, format);
        const int length = std::vsnprintf(cursor, room(), format, values);
        va_end(values);
        return written(length);
    }
};

}  // namespace qdp
