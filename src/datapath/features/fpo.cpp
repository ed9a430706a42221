// Whether and how a switch offloads flows to its NICs, kept as a host property of the switch.

#include <bit>

#include "core/arguments.h"
#include "core/build.h"
#include "datapath/features/fpo_defaults.h"
#include "platform/fpo.h"
#include "switchid/property.h"

namespace qdp {

namespace {

using R = FpoSettings;

constexpr Place flag_at(uint32_t mask)
{
    return bits(offsetof(R, flags), static_cast<unsigned>(std::countr_zero(mask)), 1);
}

constexpr auto settings_fields = fields<sizeof(R)>({
    {"enabled", flag_at(fpo_enabled)},
    {"geneveCritical", flag_at(fpo_geneve_critical)},
    {"ipDiscoveryDHCP", flag_at(fpo_ip_discovery_dhcp)},
    {"ipDiscoveryICMP6ND", flag_at(fpo_ip_discovery_icmp6_nd)},
    {"models", AT(R, models)},
});

// Reads the property, which has no version. Only a host that says that it has none gets the default; false, with the
// message printed, for any other failure.
bool read_settings(const SwitchId& id, FpoSettings& settings)
{
    const PropertyValue property = get_host_property(id, fpo_property);
    if (property.status == status_not_found) {
        settings = default_fpo_settings();
        return true;
    }
    if (property.status != status_success) {
        print_format("Failed to get DVS property %s\n", fpo_property);
        return false;
    }
    if (property.length != sizeof settings) {
        print_format("Format of property %s is invalid\n", fpo_property);
        return false;
    }
    settings = property.bytes().load<FpoSettings>(0);
    return true;
}

// The True object itself sets the flag; every other value, 1 among them, clears it. A missing key leaves it.
void take_flag(PyObject* dict, const char* key, uint32_t flag, uint32_t& flags)
{
    const PyObject* value = PyDict_GetItemString(dict, key);
    if (value)
        flags = value == Py_True ? flags | flag : flags & ~flag;
}

// False, with the interpreter's exception set, for models that are no integer.
bool take_settings(PyObject* dict, FpoSettings& settings)
{
    take_flag(dict, "enabled", fpo_enabled, settings.flags);
    if (PyObject* models = PyDict_GetItemString(dict, "models"); models && !parse_integer(models, settings.models))
        return false;
    take_flag(dict, "geneveCritical", fpo_geneve_critical, settings.flags);
    take_flag(dict, "ipDiscoveryDHCP", fpo_ip_discovery_dhcp, settings.flags);
    take_flag(dict, "ipDiscoveryICMP6ND", fpo_ip_discovery_icmp6_nd, settings.flags);
    return true;
}

}  // namespace

PyObject* PyQDP_GetFPOEnabled(PyObject*, PyObject* args)
{
    const char* alias;
    if (!PyArg_ParseTuple(args, "s", &alias))
        return print_none(invalid_parameter);

    SwitchId id;
    FpoSettings settings;
    if (!resolve_switch_id(alias, id) || !read_settings(id, settings))
        return none();
    return dict_or_no_memory(settings_fields, bytes_of(settings));
}

PyObject* PyQDP_EnableFPO(PyObject*, PyObject* args)
{
    const char* alias;
    PyObject* given;
    if (!PyArg_ParseTuple(args, "sO", &alias, &given) || !PyDict_Check(given))
        return print_false(invalid_parameter);

    SwitchId id;
    FpoSettings settings;
    if (!resolve_switch_id(alias, id) || !read_settings(id, settings))
        return PyBool_FromLong(0);
    if (!take_settings(given, settings))
        return print_false(invalid_parameter);

    // Deliberately True even when the write is refused, of which only the message tells.
    write_setting(id, fpo_property, settings);
    return PyBool_FromLong(1);
}

}  // namespace qdp
