// What ends an execution that found an error which the sanitizers do not see.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace fuzz {

[[noreturn, gnu::format(printf, 1, 2)]] inline void fault(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    std::vfprintf(stderr, format, values);
    va_end(values);
    std::fputc('\n', stderr);
    std::fflush(stderr);
    std::abort();
}

}  // namespace fuzz
