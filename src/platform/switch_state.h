// The operations of the switch state library, libqmtPublic.so, which knows the host's switches and their properties.
// Each returns 0 for success, unless it says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr size_t switch_id_bytes = 64;      // NUL included
inline constexpr size_t portset_name_bytes = 128;  // a name of full length has no NUL

// What a lookup of a switch or of its property may answer.
inline constexpr uint32_t status_success = 0;
inline constexpr uint32_t status_not_found = 0xbad0003;
inline constexpr uint32_t status_bad_parameter = 0xbad0007;

inline constexpr uint32_t host_property_flags = 16;
inline constexpr uint32_t setting_version = 0;  // in the first word of a setting's record, where it has one

inline constexpr char vswitch_class[] = "vswitch";
inline constexpr char portset_property[] = "com.tarnix.common.host.portset";
inline constexpr char alias_property[] = "com.tarnix.common.alias";

// Handles of the library. They belong to it and are never freed.
struct DVSSwitch;
struct DVSData;
struct DVSPort;

extern "C" {

// Both return 1 to stop the walk, 0 to go on.
using DVSSwitchCallback = uint32_t(DVSSwitch* handle, void* context);
using DVSPropertyCallback = uint32_t(DVSData* data, void* context);

// The library's snapshot of the host's switches.
uint32_t DVSState_ConfigReset(void);
uint32_t DVSHCK_StateGet(void** state, uint32_t* length);  // the caller frees the state with free()
uint32_t DVSState_ConfigDeserialize(const void* state, uint32_t length);

// Lookups in the snapshot. A lookup of a switch or a port that finds nothing returns NULL.
DVSSwitch* DVSState_SwitchFindByAlias(const char* alias);
void DVSState_SwitchForEach(DVSSwitchCallback* callback, void* context);
const char* DVS_SwitchId(DVSSwitch* handle);  // at least switch_id_bytes are readable
const char* DVS_ClassName(DVSSwitch* handle);
uint32_t DVSState_HostPropLookup(const char* switch_id, const char* key, DVSData** data);
uint32_t DVSState_GlobalPropLookup(const char* switch_id, const char* key, DVSData** data);
uint32_t DVSData_Data(DVSData* data, const void** value, uint32_t* length);
DVSPort* DVSState_PortFind(uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t);

// Host properties as the host kernel keeps them.
uint32_t DVSHCK_HostPropGet(const char* switch_id, const char* key, void** value, uint32_t* length);
uint32_t DVSHCK_HostPropSet(const char* switch_id, const char* key, const void* value, uint32_t length, uint32_t flags);
void DVSHCK_DataFree(void* value);

// Data that is kept per port of a switch. status_not_found when the port has no such value; a value is released with
// DVSHCK_DataFree.
uint32_t DVSHCK_PortDataGet(const char* switch_text, const char* port_text, const char* key, void** value,
                            uint32_t* length);
uint32_t DVSHCK_PortDataSet(const char* switch_text, const char* port_text, const char* key, const void* value,
                            uint32_t length, uint32_t flags);

// Walks over a switch's global properties.
void DVSState_GlobalPropForEach(DVSSwitch* handle, DVSPropertyCallback* callback, void* context);
const char* DVSData_Name(DVSData* data);

}  // extern "C"
