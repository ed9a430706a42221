// Whether the flows of a switch, and ICMP echo flows, are offloaded to the SmartNIC.
#include "core/fail.h"
#include "platform/pipeline.h"
#include "platform/switch_state.h"
#include "switchid/identity.h"

namespace qdp {

// The setting is also kept in a host property, so that it survives in the switch's state. Deliberately silent when the
// library refuses either.
PyObject* PyQDP_SetOffloadFlows(PyObject*, PyObject* args)
{
    const char* alias;
    uint32_t is_enabled;
    PortsetName portset;
    SwitchId id;
    if (!PyArg_ParseTuple(args, "sI", &alias, &is_enabled) || !find_portset_name(alias, portset) ||
        !find_switch_id(alias, id))
        return print_none(invalid_parameter);

    if (Qdp_Set_Offload_Flows(portset.text, is_enabled) == 0) {
        const uint32_t kept = is_enabled != 0;
        DVSHCK_HostPropSet(id.text, offload_property, &kept, sizeof kept, host_property_flags);
    }
    return none();
}

PyObject* PyQDP_GetOffloadFlows(PyObject*, PyObject* args)
{
    const char* alias;
    PortsetName portset;
    if (!PyArg_ParseTuple(args, "s", &alias) || !find_portset_name(alias, portset))
        return print_none(invalid_parameter);

    uint32_t is_enabled = 0;
    if (Qdp_Get_Offload_Flows(portset.text, &is_enabled) != 0)
        return print_none("OSError: Failed to issue QDP command\n");
    return PyBool_FromLong(is_enabled != 0);
}

PyObject* PyQDP_SetOffloadICMPEcho(PyObject*, PyObject* args)
{
    uint32_t is_enabled;
    if (!PyArg_ParseTuple(args, "I", &is_enabled))
        return print_none(invalid_parameter);
    return command_result(Qdp_Set_Offload_ICMP_Echo(is_enabled),
                          "OSError: Failed to issue FPO offload ICMP Echo command\n");
}

PyObject* PyQDP_GetOffloadICMPEcho(PyObject*, PyObject*)
{
    uint32_t is_enabled = 0;
    if (Qdp_Get_Offload_ICMP_Echo(&is_enabled) != 0)
        return print_none("OSError: Failed to issue QDP command\n");
    return PyBool_FromLong(is_enabled != 0);
}

}  // namespace qdp
