// The log level of the SmartNIC's P4 application.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/p4_settings.h"
#include "smartnic/channel/channel.h"

namespace qdp {

namespace {

using R = P4LogLevel;
constexpr auto log_level_fields = fields<sizeof(R)>({{"level", AT(R, level)}});

}  // namespace

PyObject* PyQDP_P4LogLevelSet(PyObject*, PyObject* args)
{
    uint32_t level;
    if (!PyArg_ParseTuple(args, "I", &level) || level >= max_log_levels)
        return print_none(invalid_parameter);

    if (send(P4Opcode::log_level_set, P4LogLevel{low_8(level)}) != 0)
        return print_none("Failed to set borea log level.\n");
    return PyBool_FromLong(1);
}

PyObject* PyQDP_P4LogLevelGet(PyObject*, PyObject*)
{
    P4LogLevel setting{};
    if (ask(P4Opcode::log_level_get, setting) != 0)
        return print_none("Failed to get borea log level.\n");

    return dict_or_none(log_level_fields, bytes_of(setting));
}

}  // namespace qdp
