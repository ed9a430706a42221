// Checks of arguments that many methods share.
#pragma once

#include "platform/limits.h"

namespace qdp {

constexpr bool is_switch(uint32_t switch_number)
{
    return switch_number < max_switches;
}

constexpr bool is_port(uint32_t switch_number, uint32_t port)
{
    return is_switch(switch_number) && port < max_ports;
}

}  // namespace qdp
