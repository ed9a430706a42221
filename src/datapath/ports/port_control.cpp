// Commands to a port or a switch of the datapath. Most tell the library one thing and return None.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/lb.h"
#include "platform/port_conf.h"

namespace qdp {

namespace {

// A command to a port with one value, whose meaning is the library's.
PyObject* command_port(PyObject* args, decltype(Qdp_Reset_Port) command, const char* refusal)
{
    uint32_t switch_number, port, value;
    if (!PyArg_ParseTuple(args, "III", &switch_number, &port, &value) || !is_port(switch_number, port))
        return print_none(invalid_parameter);
    return command_result(command(switch_number, port, value), refusal);
}

constexpr Names<6> tx_type_names{{"None", "Single", "LAG", "SrcMAC", "All", "NoTeaming"}, "Unknown"};

}  // namespace

PyObject* PyQDP_Migrate_Port(PyObject*, PyObject* args)
{
    uint32_t switch_number, port, values[3];
    if (!PyArg_ParseTuple(args, "IIIII", &switch_number, &port, &values[0], &values[1], &values[2]) ||
        !is_port(switch_number, port))
        return print_none(invalid_parameter);

    const uint32_t status = Qdp_Migrate_Port(switch_number, port, values[0], values[1], values[2]);
    if (status == status_lb_is_automatic)
        print("Please disable automatic thread load balancing.\n\n");
    return command_result(status, "Failed to migrate port.\n");
}

PyObject* PyQDP_Unpin_Port(PyObject*, PyObject* args)
{
    return command_port(args, Qdp_Unpin_Port, "Failed to unpin port.\n");
}

PyObject* PyQDP_Reset_Port(PyObject*, PyObject* args)
{
    return command_port(args, Qdp_Reset_Port, "Failed to reset port.\n");
}

PyObject* PyQDP_Get_Port_Tx_Uplink(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    TxUplinks record{};
    uint32_t size = sizeof record;
    if (Qdp_Get_Port_Tx_Uplink(switch_number, port, &record, &size) != 0)
        return print_none("Failed to get port TX uplink.\n");

    // A list that cannot be made is None beside the interpreter's exception; anything later raises it.
    const PyRef uplinks{PyList_New(record.count)};
    if (!uplinks)
        return none();
    const Bytes ids = bytes_of(record).from(offsetof(TxUplinks, uplinks));
    for (size_t i = 0; i < record.count; ++i) {
        PyObject* id = PyLong_FromLong(ids.load<uint16_t>(i * sizeof(uint16_t)));
        if (!id || PyList_SetItem(uplinks.get(), static_cast<Py_ssize_t>(i), id) != 0)
            return nullptr;
    }
    return Py_BuildValue("{s:s, s:O}", "txType", tx_type_names[record.type], "txUplinks", uplinks.get());
}

PyObject* PyQDP_Set_Uplink_MAC_Learn(PyObject*, PyObject* args)
{
    uint32_t switch_number, enable;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &enable) || !is_switch(switch_number))
        return print_none(invalid_parameter);
    return command_result(Qdp_Set_Uplink_MAC_Learn(switch_number, enable != 0),
                          "Failed to set uplink mac learn policy.\n");
}

PyObject* PyQDP_Get_Panic_On_Tx_Hang(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter);

    uint32_t enabled = 0;
    if (Qdp_Get_Panic_On_Tx_Hang(switch_number, &enabled) != 0)
        return print_none("Failed to get panic on Tx hang configuration.\n");
    return Py_BuildValue("I", enabled);
}

PyObject* PyQDP_Set_Panic_On_Tx_Hang(PyObject*, PyObject* args)
{
    return enable_on_switch(args, Qdp_Set_Panic_On_Tx_Hang, "Failed to %s panic on Tx hang.\n");
}

}  // namespace qdp
