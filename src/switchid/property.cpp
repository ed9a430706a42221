// A switch's properties, read and written through the switch state library.
#include "switchid/property.h"

#include "core/fail.h"

namespace qdp {

namespace {

// Stays in the length word when the library reports no length.
constexpr uint32_t no_length = UINT32_MAX;

using Lookup = uint32_t(const char* switch_id, const char* key, DVSData** data);

std::optional<std::string_view> property_text(Lookup* lookup, const char* switch_id, const char* key)
{
    DVSData* data = nullptr;
    if (lookup(switch_id, key, &data) != status_success || !data)
        return std::nullopt;

    const auto value = data_value(data);
    if (!value)
        return std::nullopt;
    return std::string_view{value->data(), strnlen(value->data(), value->size())};
}

}  // namespace

std::optional<std::string_view> data_value(DVSData* data)
{
    const void* value = nullptr;
    uint32_t length = no_length;
    DVSData_Data(data, &value, &length);
    if (!value)
        return length == 0 ? std::optional<std::string_view>{""} : std::nullopt;
    const auto* text = static_cast<const char*>(value);
    return std::string_view{text, length == no_length ? std::strlen(text) : length};
}

std::optional<std::string_view> host_property_text(const char* switch_id, const char* key)
{
    return property_text(DVSState_HostPropLookup, switch_id, key);
}

std::optional<std::string_view> global_property_text(const char* switch_id, const char* key)
{
    return property_text(DVSState_GlobalPropLookup, switch_id, key);
}

PropertyValue get_port_data(const char* switch_text, const char* port_text, const char* key)
{
    void* value = nullptr;
    uint32_t length = 0;
    const uint32_t status = DVSHCK_PortDataGet(switch_text, port_text, key, &value, &length);
    return property_value(status, value, length);
}

void print_malformed(Bytes value, const char* key, const char* version_key)
{
    if (value.load<uint32_t>(0) != setting_version)
        print_format("Format of property %s value is from unknown version.\n", version_key);
    else
        print_format("Property %s value length is odd.\n", key);
}

bool write_setting(const SwitchId& id, const char* key, const void* record, size_t length)
{
    if (DVSHCK_HostPropSet(id.text, key, record, static_cast<uint32_t>(length), host_property_flags) == status_success)
        return true;
    print_format("Failed to set DVS property %s\n", key);
    return false;
}

}  // namespace qdp
