// The host's physical functions, as the SmartNIC's pipeline knows them.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/p4_ports.h"
#include "smartnic/channel/channel.h"

namespace qdp {

// A count of five is accepted although only four PFs can be named; the fifth is then LIF 0.
PyObject* PyQDP_HostPFSet(PyObject*, PyObject* args)
{
    uint32_t count, pf_0, pf_1, pf_2, pf_3;
    if (!PyArg_ParseTuple(args, "IIIII", &count, &pf_0, &pf_1, &pf_2, &pf_3) || count > max_host_pfs ||
        pf_0 >= max_lifs || pf_1 >= max_lifs || pf_2 >= max_lifs || pf_3 >= max_lifs)
        return print_none(invalid_parameter);

    const P4HostPfs pfs{low_16(count), {low_16(pf_0), low_16(pf_1), low_16(pf_2), low_16(pf_3), 0}};
    return command_result(send(P4Opcode::host_pf_set, pfs), "Failed to set host PFs\n");
}

PyObject* PyQDP_HostPFGet(PyObject*, PyObject*)
{
    P4HostPfs pfs{};
    if (ask(P4Opcode::host_pf_get, pfs) != 0)
        return print_none("Failed to get host pfs\n");
    if (pfs.count > max_host_pfs)
        return print_none("Error in geting host pfs\n");  // misspelt, deliberately

    PyRef list{PyList_New(pfs.count)};
    if (!list)
        return print_none(no_buffer);
    const bool complete = fill_list(list.get(), pfs.count,
                                    [&](size_t pf) { return object_or_error(PyLong_FromUnsignedLong(pfs.lifs[pf])); });
    return built_or_none(std::move(list), complete);
}

}  // namespace qdp
