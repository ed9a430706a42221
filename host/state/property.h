// A switch's host properties as the datapath reads them when it picks them up by itself.
#pragma once

#include <optional>

#include "host/state/host.h"
#include "platform/settings.h"
#include "platform/switch_state.h"

namespace host {

// The record under a key; none when there is no value of its size.
template <class Record>
std::optional<Record> property(const Switch& owner, std::string_view key)
{
    const auto found = owner.config.host_properties.find(key);
    return found == owner.config.host_properties.end() ? std::nullopt : record_in<Record>(found->second);
}

// The value of a record with a version; none when the version is unknown.
template <class Record>
std::optional<uint32_t> setting(const Switch& owner, std::string_view key)
{
    const auto record = property<Record>(owner, key);
    return record && record->version == setting_version ? std::optional<uint32_t>{record->value} : std::nullopt;
}

}  // namespace host
