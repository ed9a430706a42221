// Arguments that many methods share: their checks, and integers that come in tuples and dicts.
#pragma once

#include "core/python.h"
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

// The low bits of an argument, as a request's field carries them.
constexpr uint16_t low_16(uint64_t value)
{
    return static_cast<uint16_t>(value);
}

constexpr uint8_t low_8(uint64_t value)
{
    return static_cast<uint8_t>(value);
}

// An integer as PyLong_AsLong takes it, its low 32 bits kept. False, with the interpreter's exception set, for anything
// else and for an integer beyond 64 bits.
bool parse_integer(PyObject* object, uint32_t& value);

// The lcores that a method was asked about.
struct Lcores {
    uint32_t ids[max_lcores];
    uint32_t count;
};

// Takes a tuple of at most max_lcores integers. False for anything else; an exception that the interpreter set stays
// set.
bool parse_lcores(PyObject* object, Lcores& lcores);

// A whole method: takes a switch number and a flag, and enables (1) or disables (0) something of that switch. The
// refusal's %s says which of the two failed.
[[gnu::format(printf, 3, 0)]] PyObject* enable_on_switch(PyObject* args, uint32_t (*command)(uint32_t, uint32_t),
                                                         const char* refusal);

}  // namespace qdp
