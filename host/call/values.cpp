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
        if (block && output.owner == ValueOutput::Owner::released) {
            unreleased_.emplace(block, value.size());
            unreleased_bytes_ += value.size();
        }
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
    kept_last_ = &*kept_.insert(std::move(value)).first;
    return *kept_last_;
}

void Values::forget_kept()
{
    kept_.clear();
    kept_last_ = nullptr;
}

std::string_view Values::text_at(const char* text) const
{
    if (kept_last_ && reinterpret_cast<const char*>(kept_last_->data()) == text)
        return {text, strnlen(text, kept_last_->size())};
    return text;
}

void Values::release(void* value)
{
    if (!value)
        return;
    const auto found = unreleased_.find(value);
    if (found == unreleased_.end()) {
        std::fprintf(stderr, "qdp-host: DVSHCK_DataFree: %p is no value of this library, or was released before\n",
                     value);
        std::abort();
    }
    unreleased_bytes_ -= found->second;
    unreleased_.erase(found);
    std::free(value);
}

void Values::release_all()
{
    for (const auto& [block, size] : unreleased_)
        std::free(block);
    unreleased_.clear();
    unreleased_bytes_ = 0;
}

}  // namespace host
