// What the fixed stand-ins offer to whoever measures with them.
#pragma once

#include <cstdint>

inline constexpr uint32_t fixed_refusal = 0xbad0001;

extern "C" {

// A place between two measurements: a profiler that watches for it begins a new count there.
[[gnu::noinline]] void Fixed_Mark(void);

// How many entries the lists have.
void Fixed_Set_Ports(uint32_t count);
void Fixed_Set_Macs(uint32_t count);

}  // extern "C"
