// Settings of a switch: the records of its host properties, which the datapath picks up by itself, and the operations
// on the settings that the datapath alone holds.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr char numa_team_property[] = "com.tarnix.wyx.qdp.teaming";
inline constexpr char burst_size_property[] = "com.tarnix.wyx.qdp.burstsize";
inline constexpr char overlay_l2_flow_property[] = "com.tarnix.wyx.qdp.overlayl2flow";
inline constexpr char meta_flow_property[] = "com.tarnix.wyx.qdp.metaflow";

// NUMA-aware teaming, metaflow.
struct [[gnu::packed]] ByteSetting {
    uint32_t version;
    uint8_t value;
};
static_assert(offsetof(ByteSetting, value) == 4);
static_assert(sizeof(ByteSetting) == 5);

// Burst size, overlay L2 flow.
struct WordSetting {
    uint32_t version;
    uint32_t value;
};
static_assert(offsetof(WordSetting, value) == 4);
static_assert(sizeof(WordSetting) == 8);

// Whose large receive offload a call means; with whole_switch the port is 0.
enum class LroScope : uint32_t { port = 0, whole_switch = 1 };

extern "C" {

// A portset name is a text; the first call also wants the size of its buffer.
uint32_t Qdp_GetSwitchNUMATeam(const char* portset_name, uint32_t name_bytes, uint8_t* enabled);
uint32_t Qdp_GetSwitchBurstSize(const char* portset_name, uint32_t* burst_size);
uint32_t Qdp_GetSwitchOverlayL2Flow(const char* portset_name, uint32_t* value);
uint32_t Qdp_GetLRO(LroScope scope, uint32_t switch_number, uint32_t port, uint32_t* value);
uint32_t Qdp_SetLRO(LroScope scope, uint32_t switch_number, uint32_t port, uint32_t value);
uint32_t Qdp_GetSwitchMinFlowLayer(uint32_t switch_number, uint32_t* layer);
uint32_t Qdp_SetSwitchMinFlowLayer(uint32_t switch_number, uint32_t layer);

}  // extern "C"
