// Bytes as hexadecimal digits, as files and recorded calls have them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/call/call.h"

namespace host {

inline std::string hex(ByteSpan bytes)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::byte byte : bytes) {
        text += digits[static_cast<unsigned>(byte) >> 4];
        text += digits[static_cast<unsigned>(byte) & 15];
    }
    return text;
}

// None when the text is no such digits.
inline std::optional<std::vector<std::byte>> from_hex(std::string_view text)
{
    const auto digit = [](char letter) { return std::string_view{"0123456789abcdef"}.find(letter); };
    if (text.size() % 2 != 0)
        return std::nullopt;
    std::vector<std::byte> bytes;
    bytes.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size(); i += 2) {
        const size_t high = digit(text[i]), low = digit(text[i + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return std::nullopt;
        bytes.push_back(static_cast<std::byte>(high << 4 | low));
    }
    return bytes;
}

}  // namespace host
