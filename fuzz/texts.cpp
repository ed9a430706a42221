// Texts that mean something to the module.
#include "fuzz/texts.h"

#include "platform/fpo.h"
#include "platform/lb.h"
#include "platform/switch_state.h"
#include "platform/uplink.h"

namespace fuzz {

namespace {

constexpr const char* known_texts[] = {
    "",       vswitch_class, portset_property, alias_property,    "dvs-production",    "nic0",
    "none",   "cpu",         "count",          "cpuload_low",     "VLANMAC",           "enabled",
    "models", "10.20.0.5",   "fe80::1:2",      "255.255.255.256", "02:10:00:00:00:02", "%s%n",
};

}  // namespace

std::string take_text(Input& input)
{
    if (input.chance(128))
        return input.one_of(known_texts);
    const ByteSpan run = input.run();
    return {reinterpret_cast<const char*>(run.data()), run.size()};
}

}  // namespace fuzz
