// The switch state library with fixed answers: one switch, whose every host property is a burst size. What it hands out
// is its own and needs no release.
#include "platform/settings.h"
#include "platform/switch_state.h"

namespace {

constexpr char switch_id[switch_id_bytes] = "switch-whose-id-is-as-long-as-ids-of-hosts-are-";
WordSetting burst_size{setting_version, 64};

}  // namespace

DVSSwitch* DVSState_SwitchFindByAlias(const char*)
{
    return reinterpret_cast<DVSSwitch*>(&burst_size);
}

const char* DVS_ClassName(DVSSwitch*)
{
    return vswitch_class;
}

const char* DVS_SwitchId(DVSSwitch*)
{
    return switch_id;
}

uint32_t DVSHCK_HostPropGet(const char*, const char*, void** value, uint32_t* length)
{
    *value = &burst_size;
    *length = sizeof burst_size;
    return status_success;
}

void DVSHCK_DataFree(void*) {}
