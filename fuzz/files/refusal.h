// What the refusal of a file that a user names keeps to.
#pragma once

#include <exception>
#include <string_view>

#include "fuzz/fault.h"

namespace fuzz {

// One line that begins with the file's name.
inline void check_refusal(const std::exception& refusal, std::string_view name)
{
    const std::string_view text = refusal.what();
    if (!text.starts_with(name) || !text.substr(name.size()).starts_with(": ") || text.find('\n') != text.npos)
        fault("not a refusal of %.*s in one line: %s", static_cast<int>(name.size()), name.data(), refusal.what());
}

}  // namespace fuzz
