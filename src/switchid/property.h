// A switch's properties: texts of the loaded configuration, and the versioned records that keep datapath settings.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "core/bytes.h"
#include "switchid/identity.h"

namespace qdp {

// The text of a property in the loaded configuration, when the switch has it. Ends at its NUL or its reported length.
std::optional<std::string_view> host_property_text(const char* switch_id, const char* key);
std::optional<std::string_view> global_property_text(const char* switch_id, const char* key);

// The bytes of a property of the loaded configuration, as many as the library reports; up to the NUL when it reports
// none.
std::optional<std::string_view> data_value(DVSData* data);

struct ReleaseValue {
    void operator()(void* value) const { DVSHCK_DataFree(value); }
};

// A value that the switch state library handed out.
struct PropertyValue {
    uint32_t status;  // of the call that read it; status_not_found when it is not set
    std::unique_ptr<void, ReleaseValue> value;
    uint32_t length;

    Bytes bytes() const { return value ? Bytes{value.get(), length} : Bytes{}; }
};

// What a call handed out; one that failed has handed out nothing.
inline PropertyValue property_value(uint32_t status, void* value, uint32_t length)
{
    if (status != status_success)
        return {status, nullptr, 0};
    return {status, std::unique_ptr<void, ReleaseValue>{value}, length};
}

// Reads a host property as the host kernel has it.
inline PropertyValue get_host_property(const SwitchId& id, const char* key)
{
    void* value = nullptr;
    uint32_t length = 0;
    const uint32_t status = DVSHCK_HostPropGet(id.text, key, &value, &length);
    return property_value(status, value, length);
}

// Reads the data that the host kernel keeps for a port. The texts that name the switch and the port are the caller's.
PropertyValue get_port_data(const char* switch_text, const char* port_text, const char* key);

enum class SettingStatus { present, absent, malformed };

// Prints that a setting's record has another version, or else another length, than it should.
void print_malformed(Bytes value, const char* key, const char* version_key);

// Reads a setting whose record begins with a version word, which must be 0, and has exactly `length` bytes. Any status
// but 0 means that the host does not have it. `version_key` is the key that the unknown-version message names.
inline SettingStatus read_setting(const SwitchId& id, const char* key, void* record, size_t length,
                                  const char* version_key)
{
    const PropertyValue property = get_host_property(id, key);
    if (property.status != status_success)
        return SettingStatus::absent;
    const Bytes value = property.bytes();
    if (property.length == length && value.load<uint32_t>(0) == setting_version) [[likely]] {
        value.copy(0, record, length);
        return SettingStatus::present;
    }
    print_malformed(value, key, version_key);
    return SettingStatus::malformed;
}

template <class Record>
SettingStatus read_setting(const SwitchId& id, const char* key, Record& record)
{
    return read_setting(id, key, &record, sizeof record, key);
}

// Writes a setting's record; prints the message and returns false when the library refuses it.
bool write_setting(const SwitchId& id, const char* key, const void* record, size_t length);

template <class Record>
bool write_setting(const SwitchId& id, const char* key, const Record& record)
{
    return write_setting(id, key, &record, sizeof record);
}

}  // namespace qdp
