// The SmartNIC's logical interfaces (LIFs), each of which ties a LIF number to ports of the pipeline.
#include "core/arguments.h"
#include "platform/p4_ports.h"
#include "smartnic/channel/channel.h"
#include "smartnic/ports/page.h"

namespace qdp {

namespace {

using R = P4LifPort;

constexpr auto lif_fields = fields<sizeof(R)>({
    {"lifID", AT(R, lif)},
    {"srcPort", AT(R, source_port)},
    {"repPort", AT(R, rep_port)},
    {"flowKeyType", bits(AT(R, flags), lif_flow_key_type)},
    {"lifType", AT(R, type)},
    {"isMuxPF", bits(AT(R, flags), lif_is_mux_pf)},
    {"fwdMode", bits(AT(R, flags), lif_fwd_mode)},
    {"status", AT(R, status)},
});

}  // namespace

PyObject* PyQDP_LifPortCreate(PyObject*, PyObject* args)
{
    uint32_t lif, source_port, rep_port, flow_key_type, type, is_mux_pf, fwd_mode, status;
    if (!PyArg_ParseTuple(args, "IIIIIIII", &lif, &source_port, &rep_port, &flow_key_type, &type, &is_mux_pf, &fwd_mode,
                          &status) ||
        lif >= max_lifs || source_port >= max_p4_ports || rep_port >= max_p4_ports ||
        flow_key_type >= max_flow_key_types || type >= max_lif_types || is_mux_pf > 1 || fwd_mode >= max_fwd_modes ||
        status >= lif_status_end)
        return print_none(invalid_parameter);

    const P4LifPort port{
        .lif = low_16(lif),
        .source_port = low_16(source_port),
        .rep_port = low_16(rep_port),
        .unused = 0,
        .type = low_8(type),
        .flags = lif_flags(flow_key_type, fwd_mode, is_mux_pf),
        .status = low_16(status),
    };
    return command_result(send(P4Opcode::lif_port_create, port), "Failed to create/update the lif port\n");
}

PyObject* PyQDP_LifPortUpdate(PyObject*, PyObject* args)
{
    uint32_t lif, flow_key_type, is_mux_pf, fwd_mode;
    if (!PyArg_ParseTuple(args, "IIII", &lif, &flow_key_type, &is_mux_pf, &fwd_mode) || lif >= max_lifs ||
        flow_key_type >= max_flow_key_types || is_mux_pf > 1 || fwd_mode >= max_fwd_modes)
        return print_none(invalid_parameter);

    const P4LifUpdate update{low_16(lif), low_8(flow_key_type), low_8(is_mux_pf), low_8(fwd_mode), 0};
    return command_result(send(P4Opcode::lif_port_update, update), "Failed to update the lif port\n");
}

PyObject* PyQDP_LifPortList(PyObject*, PyObject* args)
{
    uint32_t start;
    if (!PyArg_ParseTuple(args, "I", &start) || start >= max_lifs)
        return print_none(invalid_parameter);

    P4LifPortList page{};
    if (ask(P4Opcode::lif_port_list, P4ListRequest{low_16(start)}, page) != 0)
        return print_none(no_port_list);
    return page_object("liflist", page, lif_fields);
}

}  // namespace qdp
