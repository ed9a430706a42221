// Answers of the switch state library: its snapshot of the host's switches, and the properties in the host kernel.
#include <algorithm>

#include "host/answers/answer.h"
#include "host/call/hex.h"
#include "host/call/json.h"
#include "platform/switch_state.h"

namespace host {

namespace {

// A handle points to a switch of the snapshot, a data handle to one of its properties.
const LoadedSwitch* config_of(const void* handle)
{
    return static_cast<const LoadedSwitch*>(handle);
}

using Property = Properties::value_type;

// The state that a process hands from one call to the next, as JSON; texts and values are hexadecimal digits, whatever
// their bytes.
Json digits_of(std::string_view text)
{
    return hex(std::as_bytes(std::span{text}));
}

Json properties_json(const Properties& properties)
{
    Json::Array result;
    for (const auto& [key, value] : properties)
        result.push_back(Json::list({digits_of(key), hex(value)}));
    return result;
}

// An array of so many elements. Throws for anything else.
const Json::Array& elements(const Json& json, size_t count)
{
    if (!json.array() || json.array()->size() != count)
        throw InputError{"not a state"};
    return *json.array();
}

Value bytes_of_digits(const Json& json)
{
    auto bytes = json.text() ? from_hex(*json.text()) : std::nullopt;
    if (!bytes)
        throw InputError{"not a state"};
    return std::move(*bytes);
}

std::string text_of_digits(const Json& json)
{
    const Value bytes = bytes_of_digits(json);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Properties properties_of(const Json& properties)
{
    Properties result;
    if (!properties.array())
        throw InputError{"not a state"};
    for (const Json& property : *properties.array()) {
        const Json::Array& pair = elements(property, 2);
        result[text_of_digits(pair[0])] = bytes_of_digits(pair[1]);
    }
    return result;
}

uint32_t config_reset(Host& host)
{
    host.loaded = std::make_shared<const LoadedSwitches>();
    return status_success;
}

uint32_t state_get(Host& host, ValueSlot state)
{
    Json::Array all;
    for (const Switch& each : host.switches)
        all.push_back(
            Json::list({digits_of(each.config.alias), digits_of(each.config.id), digits_of(each.config.class_name),
                        properties_json(each.config.host_properties), properties_json(each.config.global_properties)}));
    const std::string text = text_of(std::move(all));
    return state.put(std::as_bytes(std::span{text}));
}

uint32_t config_deserialize(Host& host, ByteSpan state)
{
    try {
        const Json all = Json::parsed({reinterpret_cast<const char*>(state.data()), state.size()});
        if (!all.array())
            return status_refused;
        LoadedSwitches loaded;
        for (const Json& each : *all.array()) {
            const Json::Array& parts = elements(each, 5);
            LoadedSwitch result{{text_of_digits(parts[0]), text_of_digits(parts[1]), text_of_digits(parts[2]),
                                 properties_of(parts[3]), properties_of(parts[4])},
                                text_of_digits(parts[1])};
            result.readable_id.resize(std::max(result.id.size(), switch_id_bytes));
            loaded.push_back(std::move(result));
        }
        host.loaded = std::make_shared<const LoadedSwitches>(std::move(loaded));
    } catch (const InputError&) {
        return status_refused;
    }
    return status_success;
}

const LoadedSwitch* switch_find_by_alias(Host& host, std::string_view alias)
{
    const auto found = std::ranges::find(*host.loaded, alias, &LoadedSwitch::alias);
    return found == host.loaded->end() ? nullptr : &*found;
}

void switch_for_each(Host& host, Walk& walk, const void*)
{
    for (const LoadedSwitch& config : *host.loaded)
        walk.add(&config);
}

const char* switch_id(Host&, const void* handle)
{
    return config_of(handle)->readable_id.c_str();
}

const char* class_name(Host&, const void* handle)
{
    return config_of(handle)->class_name.c_str();
}

uint32_t property_lookup(Host& host, Properties SwitchConfig::*kind, std::string_view id, std::string_view key,
                         const Output& data)
{
    const auto owner = std::ranges::find(*host.loaded, id, &LoadedSwitch::id);
    if (owner == host.loaded->end())
        return status_not_found;
    const Properties& properties = (*owner).*kind;
    const auto found = properties.find(key);
    if (found == properties.end())
        return status_not_found;
    const Property* handle = &*found;
    return data.put(handle);
}

uint32_t host_property_lookup(Host& host, std::string_view id, std::string_view key, Output data)
{
    return property_lookup(host, &SwitchConfig::host_properties, id, key, data);
}

uint32_t global_property_lookup(Host& host, std::string_view id, std::string_view key, Output data)
{
    return property_lookup(host, &SwitchConfig::global_properties, id, key, data);
}

void global_property_for_each(Host&, const void* handle, Walk& walk, const void*)
{
    for (const Property& property : config_of(handle)->global_properties)
        walk.add(&property);
}

const char* data_name(Host&, const Property* property)
{
    return property->first.c_str();
}

// The value stays where it is: it belongs to the library.
uint32_t data_value(Host&, const Property* property, ValueSlot value)
{
    *value.output.pointer = property->second.data();
    *value.output.length = static_cast<uint32_t>(property->second.size());
    return status_success;
}

// The first two words identify a port: the texts of its switch's id and of its name.
const Port* port_find(Host& host, const char* id, const char* name, uintptr_t, uintptr_t, uintptr_t, uintptr_t)
{
    const Switch* owner = id ? host.switch_by_id(id) : nullptr;
    if (!owner || !name)
        return nullptr;
    const auto found = std::ranges::find(owner->ports, name, &Port::name);
    return found == owner->ports.end() ? nullptr : &*found;
}

// The host kernel keeps this many bytes of names and values for a switch or a port.
constexpr size_t max_property_bytes = 1 << 20;

uint32_t store(Properties& properties, std::string_view key, ByteSpan value)
{
    size_t bytes = key.size() + value.size();
    for (const auto& [name, stored] : properties)
        if (name != key)
            bytes += name.size() + stored.size();
    if (bytes > max_property_bytes)
        return status_refused;
    properties.insert_or_assign(std::string{key}, value_of(value));
    return status_success;
}

uint32_t host_property_get(Host& host, std::string_view id, std::string_view key, ValueSlot value)
{
    const Switch* owner = host.switch_by_id(id);
    if (!owner)
        return status_not_found;
    const auto found = owner->config.host_properties.find(key);
    if (found == owner->config.host_properties.end())
        return status_not_found;
    return value.put(found->second);
}

uint32_t host_property_set(Host& host, std::string_view id, std::string_view key, ByteSpan value, uint32_t)
{
    Switch* owner = host.switch_by_id(id);
    if (!owner)
        return status_not_found;
    return store(owner->config.host_properties, key, value);
}

// A port is known by the id or the alias of its switch, and by its name.
Port* port_by_name(Host& host, std::string_view switch_text, std::string_view port_text)
{
    Switch* owner = host.switch_by_id(switch_text);
    if (!owner) {
        const auto found = std::ranges::find(host.switches, switch_text,
                                             [](const Switch& each) { return std::string_view{each.config.alias}; });
        if (found == host.switches.end())
            return nullptr;
        owner = &*found;
    }
    const auto found = std::ranges::find(owner->ports, port_text, &Port::name);
    return found == owner->ports.end() ? nullptr : &*found;
}

uint32_t port_data_get(Host& host, std::string_view switch_text, std::string_view port_text, std::string_view key,
                       ValueSlot value)
{
    const Port* port = port_by_name(host, switch_text, port_text);
    if (!port)
        return status_bad_parameter;
    const auto found = port->data.find(key);
    if (found == port->data.end())
        return status_not_found;
    return value.put(found->second);
}

uint32_t port_data_set(Host& host, std::string_view switch_text, std::string_view port_text, std::string_view key,
                       ByteSpan value, uint32_t)
{
    Port* port = port_by_name(host, switch_text, port_text);
    if (!port)
        return status_bad_parameter;
    return store(port->data, key, value);
}

void data_free(Host&, ReleasedValue value)
{
    value.values.release(value.value);
}

const Answer switch_state_answers[] = {
    {"DVSState_ConfigReset", config_reset},
    {"DVSHCK_StateGet", state_get},
    {"DVSState_ConfigDeserialize", config_deserialize},
    {"DVSState_SwitchFindByAlias", switch_find_by_alias},
    {"DVSState_SwitchForEach", switch_for_each},
    {"DVS_SwitchId", switch_id},
    {"DVS_ClassName", class_name},
    {"DVSState_HostPropLookup", host_property_lookup},
    {"DVSState_GlobalPropLookup", global_property_lookup},
    {"DVSState_GlobalPropForEach", global_property_for_each},
    {"DVSData_Name", data_name},
    {"DVSData_Data", data_value},
    {"DVSState_PortFind", port_find},
    {"DVSHCK_HostPropGet", host_property_get},
    {"DVSHCK_HostPropSet", host_property_set},
    {"DVSHCK_PortDataGet", port_data_get},
    {"DVSHCK_PortDataSet", port_data_set},
    {"DVSHCK_DataFree", data_free},
};

}  // namespace

}  // namespace host
