// The state of the embedded host.
#include "host/state/host.h"

#include <algorithm>

#include "platform/switch_state.h"

namespace host {

const Port* find_port(const Switch& owner, uint32_t number)
{
    const std::vector<Port>& ports = owner.ports;
    if (number < ports.size() && ports[number].entry.port == number)  // as is mostly so
        return &ports[number];
    const auto found = std::ranges::find(ports, number, [](const Port& candidate) { return candidate.entry.port; });
    return found == ports.end() ? nullptr : &*found;
}

bool has_switch(const LoadedSwitches& loaded, const void* handle)
{
    return std::ranges::any_of(loaded, [&](const LoadedSwitch& each) { return &each == handle; });
}

bool has_property(const LoadedSwitches& loaded, const void* handle)
{
    const auto is_in = [&](const Properties& properties) {
        return std::ranges::any_of(properties, [&](const auto& property) { return &property == handle; });
    };
    return std::ranges::any_of(
        loaded, [&](const LoadedSwitch& each) { return is_in(each.host_properties) || is_in(each.global_properties); });
}

Host::Host() = default;
Host::Host(const Host&) = default;
Host::Host(Host&&) noexcept = default;
Host& Host::operator=(const Host&) = default;
Host& Host::operator=(Host&&) noexcept = default;
Host::~Host() = default;

Switch* Host::datapath_switch(uint32_t switch_number)
{
    const auto found = std::ranges::find_if(switches, [&](const Switch& candidate) {
        return candidate.entry && candidate.entry->switch_number == switch_number;
    });
    return found == switches.end() ? nullptr : &*found;
}

Port* Host::port(uint32_t switch_number, uint32_t port)
{
    const Switch* owner = datapath_switch(switch_number);
    return owner ? const_cast<Port*>(find_port(*owner, port)) : nullptr;
}

Port* Host::uplink(uint32_t switch_number, uint32_t number)
{
    Port* found = port(switch_number, number);
    return found && is_a(*found, ClientType::uplink) ? found : nullptr;
}

Switch* Host::switch_by_id(std::string_view id)
{
    // Callers know an id as the text of a buffer of switch_id_bytes.
    const auto found = std::ranges::find(switches, id.substr(0, switch_id_bytes - 1), [](const Switch& candidate) {
        return std::string_view{candidate.config.id}.substr(0, switch_id_bytes - 1);
    });
    return found == switches.end() ? nullptr : &*found;
}

Switch* Host::switch_by_portset(std::string_view portset_name)
{
    const auto found = std::ranges::find_if(switches, [&](const Switch& candidate) {
        return candidate.entry && portset_name == std::string_view{candidate.entry->name,
                                                                   strnlen(candidate.entry->name, portset_name_bytes)};
    });
    return found == switches.end() ? nullptr : &*found;
}

}  // namespace host
