// The values of the switch state library that its callers hold.
#include "host/call/values.h"

#include <cstdio>
#include <cstdlib>

namespace host {

void Values::put(const ValueOutput& output, ByteSpan value)
{
    const void* memory;
    if (output.owner == ValueOutput::Owner::library) {
        memory = keep(value_of(value)).data();
    } else {
        void* block =
            std::malloc(std::max<size_t>(value.size(), 1));  // as long as the value, so that an overread shows
        if (block && !value.empty())
            std::memcpy(block, value.data(), value.size());
        if (block && output.owner == ValueOutput::Owner::released)
            unreleased_.insert(block);
        memory = block;
    }
    *output.pointer = memory;
    if (output.length)
        *output.length = static_cast<uint32_t>(value.size());
    put_.emplace_back(output.pointer, ByteSpan{static_cast<const std::byte*>(memory), memory ? value.size() : 0});
}

std::optional<ByteSpan> Values::value_put(const ValueOutput& output) const
{
    const auto found = std::ranges::find(put_, output.pointer, &std::pair<const void**, ByteSpan>::first);
    return found == put_.end() ? std::nullopt : std::optional{found->second};
}

const Value& Values::keep(Value value)
{
    value.reserve(1);  // an empty value has an address too
    return kept_.emplace_back(std::move(value));
}

std::string_view Values::text_at(const char* text) const
{
    if (!kept_.empty() && reinterpret_cast<const char*>(kept_.back().data()) == text)
        return {text, strnlen(text, kept_.back().size())};
    return text;
}

void Values::release(void* value)
{
    if (value && unreleased_.erase(value) == 0) {
        std::fprintf(stderr, "qdp-host: DVSHCK_DataFree: %p is no value of this library, or was released before\n",
                     value);
        std::abort();
    }
    std::free(value);
}

}  // namespace host
