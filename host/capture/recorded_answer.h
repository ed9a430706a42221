// What one call brought back, from a capture or from another process, and how it gets into the caller's outputs.
#pragma once

#include <optional>
#include <vector>

#include "host/call/values.h"

namespace host {

struct RecordedAnswer {
    struct Output {
        std::optional<Value> content;
        size_t zeros = 0;  // behind the content
        std::optional<uint32_t> size;
        std::optional<uint64_t> handle;
    };

    std::vector<Output> outputs;
    std::vector<uint64_t> steps;
    uint64_t result = 0;
    std::optional<Value> text;
};

// A text with its NUL. Callers read a switch id as a buffer of switch_id_bytes, however short it is.
Value readable_text(Value text);

void put_outputs(const RecordedAnswer& answer, Arguments arguments, Values& values);

}  // namespace host
