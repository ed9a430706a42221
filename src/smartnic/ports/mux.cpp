// Switches in mux mode: which they are, their internal VLANs, and the shadow ports behind their FC ports.
#include "platform/mux.h"
#include "core/arguments.h"
#include "platform/qdp_control.h"
#include "smartnic/ports/page.h"

namespace qdp {

namespace {

// The port comes last in the entry and first in the dict.
using V = MuxVlanEntry;
constexpr auto mux_vlan_fields = fields<sizeof(V)>({
    {"portID", AT(V, port)},
    {"fcPortID", AT(V, fc_port)},
    {"vlanID", AT(V, vlan)},
});

using S = ShadowPortEntry;
constexpr auto shadow_port_fields = fields<sizeof(S)>({
    {"fcPortID", AT(S, fc_port)},
    {"muxPFPortID", AT(S, mux_pf_port)},
    {"muxVLANID", AT(S, mux_vlan)},
});

// A page of a list, which starts at an FC port that the library alone checks.
template <class Page>
PyObject* list_page(PyObject* args, uint32_t (*list)(const MuxListRequest*, uint32_t, Page*, uint32_t*), Fields fields,
                    const char* refusal)
{
    MuxListRequest request;
    if (!PyArg_ParseTuple(args, "II", &request.switch_number, &request.start_fc_port) ||
        !is_switch(request.switch_number))
        return print_none(invalid_parameter);

    Page page{};
    uint32_t size = sizeof page;
    if (list(&request, sizeof request, &page, &size) != 0)
        return print_none(refusal);
    return page_object(page, fields);
}

}  // namespace

// Checks no switch number, and both of its texts end in an empty line, deliberately.
PyObject* PyQDP_GetSwitchMuxMode(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number))
        return print_none(invalid_parameter_blank_line);

    uint32_t is_enabled = 0;
    if (Qdp_Get_Mux_Mode(switch_number, &is_enabled) != 0)
        return print_none("TypeError: Failed to get mux mode.\n\n");
    return Py_BuildValue("{s:I}", "enabled", is_enabled);
}

PyObject* PyQDP_ListSwitchMuxVLAN(PyObject*, PyObject* args)
{
    return list_page(args, Qdp_List_Mux_VLAN_Info, mux_vlan_fields, "Failed to get mux VLAN info\n");
}

PyObject* PyQDP_ListSwitchShadowPorts(PyObject*, PyObject* args)
{
    return list_page(args, Qdp_List_Shadow_Ports, shadow_port_fields, "Failed to get shadow port list\n");
}

}  // namespace qdp
