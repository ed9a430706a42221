// Direct calls of the module's plain functions, within their contract and with hostile content.
#pragma once

#include <span>

#include "fuzz/input.h"

namespace fuzz {

struct ExportedFunction {
    const char* name;
    void (*call)(Input& input);
};

std::span<const ExportedFunction> exported_functions();

}  // namespace fuzz
