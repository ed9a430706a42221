// The formats of values in a scenario that are made of others, as far as they are no templates.
#include "host/scenario/composed.h"

namespace host::scenario {

namespace {

constexpr uint64_t max_written_out = 1000;

}  // namespace

bool stays_repeated(const Json::Array& list)
{
    uint64_t entries = 0;
    bool is_repeated = false;
    for (const Json& each : list) {
        const Json* repeat = each.find("repeat");
        const uint64_t* times = repeat ? repeat->natural() : nullptr;
        is_repeated |= times != nullptr;
        entries += times ? *times : 1;
    }
    return is_repeated && entries > max_written_out;
}

std::string display_text(const std::string& text)
{
    return text_of(text);
}

std::string display_text(uint64_t number)
{
    return std::to_string(number);
}

}  // namespace host::scenario
