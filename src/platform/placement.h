// Operations and records of where the datapath's work runs: affinity of the physical NICs, lcores, mbuf slabs.
#pragma once

#include <cstddef>
#include <cstdint>

struct DeviceAffinity {
    char device[32];
    uint32_t affinity;
};
static_assert(offsetof(DeviceAffinity, affinity) == 32);
static_assert(sizeof(DeviceAffinity) == 36);

inline constexpr size_t max_devices = 32;

struct DeviceAffinityList {
    uint32_t count;
    DeviceAffinity entries[max_devices];
};
static_assert(offsetof(DeviceAffinityList, entries) == 4);
static_assert(sizeof(DeviceAffinityList) == 1156);

extern "C" {

uint32_t Qdp_List_Dev_Affinity(DeviceAffinityList* list, uint32_t* size);
uint32_t Qdp_Set_Dev_Affinity(const char* device, uint32_t affinity);
uint32_t Qdp_Get_LCore_ID_Bitmap(uint32_t selector, uint64_t* bitmap);  // bit n: there is an lcore n
uint32_t Qdp_Init_Mbuf_Fastslabs(void);

}  // extern "C"
