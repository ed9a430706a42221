// The bytes that decide an execution: which method, its arguments, and every answer of the platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>

namespace fuzz {

using ByteSpan = std::span<const uint8_t>;

// Bytes are taken from the front. When they have run out, every draw is zero.
class Input {
public:
    explicit Input(ByteSpan bytes) : rest_{bytes} {}

    bool is_empty() const { return rest_.empty(); }

    ByteSpan bytes(size_t count)
    {
        const ByteSpan taken = rest_.first(count < rest_.size() ? count : rest_.size());
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    template <class Value>
    Value take()
    {
        Value value{};
        if (const ByteSpan taken = bytes(sizeof value); !taken.empty())
            std::memcpy(&value, taken.data(), taken.size());
        return value;
    }

    uint8_t byte() { return take<uint8_t>(); }

    // True for so many of 256 bytes, the lowest.
    bool chance(unsigned of_256) { return byte() < of_256; }

    template <class Choices>
    const auto& one_of(const Choices& choices)
    {
        return std::data(choices)[byte() % std::size(choices)];
    }

    // An integer: mostly a small one, which is one byte of input; else one at a bound, or of any width.
    uint64_t number()
    {
        constexpr uint8_t small = 0xc0;
        const uint8_t first = byte();
        if (first < small)
            return first;
        switch (first % 5) {
        case 0:
            return take<uint16_t>();
        case 1:
            return take<uint32_t>();
        case 2:
            return take<uint64_t>();
        case 3:
            return ~uint64_t{byte()};
        default:
            return (uint64_t{1} << byte() % 64) - 1 + byte() % 3;  // a power of two, or beside it
        }
    }

    // A run of bytes of a length that is told before them.
    ByteSpan run()
    {
        constexpr size_t longest = 4096;
        return bytes(number() % (longest + 1));
    }

private:
    ByteSpan rest_;
};

// The bytes that stand for `size` bytes of content: a run of the input, repeated to the end.
inline void fill(std::span<uint8_t> content, ByteSpan run)
{
    if (content.empty())
        return;
    size_t filled = run.size() < content.size() ? run.size() : content.size();
    if (filled == 0) {
        std::memset(content.data(), 0, content.size());
        return;
    }
    std::memcpy(content.data(), run.data(), filled);
    while (filled < content.size()) {
        const size_t step = filled < content.size() - filled ? filled : content.size() - filled;
        std::memcpy(content.data() + filled, content.data(), step);
        filled += step;
    }
}

}  // namespace fuzz
