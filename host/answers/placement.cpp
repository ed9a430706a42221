// Answers about where work runs.
#include <algorithm>
#include <cstdio>

#include "host/answers/answer.h"
#include "platform/placement.h"

namespace host {

namespace {

uint32_t list_device_affinity(Host& host, Output output)
{
    DeviceAffinityList list{};
    for (const auto& device : host.placement.devices)
        if (list.count < max_devices) {
            DeviceAffinity& entry = list.entries[list.count++];
            std::snprintf(entry.device, sizeof entry.device, "%s", device.name.c_str());
            entry.affinity = device.affinity;
        }
    return output.put(list);
}

uint32_t set_device_affinity(Host& host, std::string_view device, uint32_t affinity)
{
    const auto found = std::ranges::find(host.placement.devices, device, &Placement::Device::name);
    if (found == host.placement.devices.end())
        return status_not_found;
    found->affinity = affinity;
    return status_success;
}

// Whatever is selected: the lcores of all switches.
uint32_t get_lcore_bitmap(Host& host, uint32_t, Output output)
{
    uint64_t bitmap = 0;
    for (const Switch& each : host.switches)
        if (each.entry)
            bitmap |= each.entry->lcore_mask;
    return output.put(bitmap);
}

uint32_t init_mbuf_fastslabs(Host& host)
{
    host.placement.has_mbuf_fastslabs = true;
    return status_success;
}

const Answer placement_answers[] = {
    {"Qdp_List_Dev_Affinity", list_device_affinity},
    {"Qdp_Set_Dev_Affinity", set_device_affinity},
    {"Qdp_Get_LCore_ID_Bitmap", get_lcore_bitmap},
    {"Qdp_Init_Mbuf_Fastslabs", init_mbuf_fastslabs},
};

}  // namespace

}  // namespace host
