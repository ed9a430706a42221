// The receive filter classes that a switch supports: a setting of its host properties, else what the datapath says.
#include "core/fail.h"
#include "datapath/uplink/uplink.h"
#include "platform/lb.h"
#include "platform/switch_state.h"
#include "platform/uplink.h"
#include "switchid/property.h"

namespace qdp {

namespace {

// The only class that is shown and changed; the other bits of the mask are carried over.
constexpr char vlan_mac_class[] = "VLANMAC";

uint16_t datapath_filter_types(const char* alias)
{
    PortsetName portset;
    if (!resolve_portset_name(alias, portset))
        return 0;

    uint16_t mask = 0;
    if (Qdp_GetSwitchFilterTypes(portset.text, &mask) != 0) {
        print_format("Failed to get supported filter classes for %s.\n", alias);
        return 0;
    }
    return mask;
}

// The mask of the switch's filter classes. 0 after a failure, which has been printed: an empty mask and an unknown one
// are the same to the callers.
uint16_t filter_types(const char* alias)
{
    SwitchId id;
    if (!resolve_switch_id(alias, id))
        return 0;

    FilterTypesSetting setting{};  // stays empty when the host's is malformed
    // A property of an unknown version is deliberately reported as the load balancer's.
    const SettingStatus found = read_setting(id, filter_types_property, &setting, sizeof setting, lb_property);
    return found == SettingStatus::absent ? datapath_filter_types(alias) : setting.mask;
}

}  // namespace

PyObject* PyQDP_Get_Switch_Filter_Types(PyObject*, PyObject* args)
{
    const char* alias;
    if (!PyArg_ParseTuple(args, "s", &alias))
        return print_none(invalid_parameter);

    const uint16_t mask = filter_types(alias);
    if (mask == 0)
        return none();
    return Py_BuildValue("{s:s}", vlan_mac_class, mask & filter_type_vlan_mac ? "TRUE" : "FALSE");
}

PyObject* PyQDP_Set_Switch_Filter_Types(PyObject*, PyObject* args)
{
    const char *alias, *filter_class;
    unsigned long long enabled;
    if (!PyArg_ParseTuple(args, "ssK", &alias, &filter_class, &enabled))
        return print_none(invalid_parameter);
    if (std::strcmp(filter_class, vlan_mac_class) != 0)
        return print_none("Invalid filter Class provided, only VLANMAC is accepted as input\n");

    uint16_t mask = filter_types(alias);
    if (mask == 0)
        return print_none("Failed to get current support FilterClasses on switch\n");
    if (enabled)
        mask |= filter_type_vlan_mac;
    else
        mask &= static_cast<uint16_t>(~filter_type_vlan_mac);

    PyQDPSetFiltTypeProp(alias, mask);  // deliberately the same result when the write fails
    return PyBool_FromLong(enabled != 0);
}

}  // namespace qdp

using namespace qdp;

void PyQDPSetFiltTypeProp(const char* alias, uint16_t mask)
{
    SwitchId id;
    if (resolve_switch_id(alias, id))
        write_setting(id, filter_types_property, FilterTypesSetting{setting_version, mask});
}
