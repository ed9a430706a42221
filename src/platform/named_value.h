// The name that people read for a bit or a code of a record.
#pragma once

#include <cstdint>

struct NamedValue {
    const char* name;
    uint64_t value;
};
