// The slabs that a fast datapath takes its packets from.
#include <algorithm>

#include "core/fail.h"
#include "platform/placement.h"
#include "platform/switch_state.h"
#include "platform/uplink.h"
#include "switchid/property.h"

namespace qdp {

namespace {

// The terminator of a word counts only where the value is long enough to reach it: "po" is a marker, "pollmode" is not,
// and an empty value is.
bool is_marker_value(std::string_view value)
{
    constexpr char words[][5] = {"true", "poll", "intr"};
    return std::ranges::any_of(words, [&](const char(&word)[5]) {
        return std::strncmp(value.data(), word, std::min(value.size(), sizeof word)) == 0;
    });
}

// The terminator of the name counts.
bool is_fast_datapath_marker(DVSData* property)
{
    const char* name = DVSData_Name(property);
    if (!name || std::strncmp(name, fast_datapath_property, sizeof fast_datapath_property) != 0)
        return false;
    const auto value = data_value(property);
    return value && is_marker_value(*value);
}

uint32_t match_marker(DVSData* property, void* context)
{
    const bool is_marker = is_fast_datapath_marker(property);
    if (is_marker)
        *static_cast<bool*>(context) = true;
    return is_marker;
}

uint32_t look_for_marker(DVSSwitch* handle, void* context)
{
    DVSState_GlobalPropForEach(handle, match_marker, context);
    return 0;  // every switch is visited
}

bool any_switch_is_fast()
{
    bool found = false;
    DVSState_SwitchForEach(look_for_marker, &found);
    return found;
}

}  // namespace

// The message deliberately ends in a blank line.
PyObject* PyQDP_InitMbufFastslabs(PyObject*, PyObject*)
{
    if (!any_switch_is_fast())
        return PyBool_FromLong(0);
    if (Qdp_Init_Mbuf_Fastslabs() != 0)
        return print_false("TypeError: Failed to init QDP mbuf fastslabs.\n\n");
    return PyBool_FromLong(1);
}

}  // namespace qdp
