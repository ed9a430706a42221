// A switch's advanced statistics: why packets took the slow path, and why no action was generated for them.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/pipeline.h"

namespace qdp {

namespace {

// The spelling of the keys is the system's, "spReaonVlanTF" and "spReasonInnerL2Incompt" included.
using A = AdvancedCounters;
constexpr auto advanced_fields = fields<sizeof(A)>({
    {"spReasonSpFlags", AT(A, counters[0]), as_signed},
    {"spReasonL3Incompat", AT(A, counters[1]), as_signed},
    {"spReasonL4Incompat", AT(A, counters[2]), as_signed},
    {"spReasonEncapIncompat", AT(A, counters[3]), as_signed},
    {"spReasonInnerL2Incompt", AT(A, counters[4]), as_signed},
    {"spReaonVlanTF", AT(A, counters[5]), as_signed},
    {"spReasonVniZero", AT(A, counters[6]), as_signed},
    {"spReasonNonUnicast", AT(A, counters[7]), as_signed},
    {"spReasonInnerNoneUnicast", AT(A, counters[8]), as_signed},
    {"spReasonNonIP", AT(A, counters[9]), as_signed},
    {"spReasonInnerNonIP", AT(A, counters[10]), as_signed},
    {"spReasonGeneveOption", AT(A, counters[11]), as_signed},
    {"spReasonGeneveLabelType", AT(A, counters[12]), as_signed},
    {"spReasonIpv6Ext", AT(A, counters[13]), as_signed},
    {"spReasonL4NotSupported", AT(A, counters[14]), as_signed},
    {"spReasonLat", AT(A, counters[15]), as_signed},
    {"actionGenFailSameSrcDst", AT(A, counters[16]), as_signed},
    {"actionGenFailDoNotCache", AT(A, counters[17]), as_signed},
    {"actionGenFailDstSpFlags", AT(A, counters[18]), as_signed},
    {"actionGenFailNonUnicast", AT(A, counters[19]), as_signed},
    {"actionGenFailInnerFlowParseFailed", AT(A, counters[20]), as_signed},
    {"actionGenFailMultiDstReval", AT(A, counters[21]), as_signed},
    {"actionGenFailNonQdpCtxt", AT(A, counters[22]), as_signed},
    {"actionGenFailFcAttrNull", AT(A, counters[23]), as_signed},
    {"actionGenFailMirrorPkt", AT(A, counters[24]), as_signed},
    {"actionGenFailPseudoPkt", AT(A, counters[25]), as_signed},
    {"actionGenFailSrcPortNotAvail", AT(A, counters[26]), as_signed},
    {"actionGenFailFlowExpired", AT(A, counters[27]), as_signed},
    {"actionGenFailActionCtxtInitFail", AT(A, counters[28]), as_signed},
    {"actionGenFailPktToMbufFail", AT(A, counters[29]), as_signed},
    {"actionGenDropSpFlowAllocFail", AT(A, counters[30]), as_signed},
    {"actionGenDropEnqSpFlowFail", AT(A, counters[31]), as_signed},
    {"actionGenDropInnerOffloadFail", AT(A, counters[32]), as_signed},
    {"parserDropGvlanSvlan", AT(A, counters[33]), as_signed},
    {"parserDropInvalidGeneve", AT(A, counters[34]), as_signed},
    {"parserDropL2Invalid", AT(A, counters[35]), as_signed},
    {"parserDropL3L4Invalid", AT(A, counters[36]), as_signed},
});

constexpr const char* mode_names[advanced_stats_modes] = {"disable", "enable", "clear"};

}  // namespace

PyObject* PyQDP_AdvStatsSetEnabled(PyObject*, PyObject* args)
{
    uint32_t switch_number, mode;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &mode) || !is_switch(switch_number) ||
        mode >= advanced_stats_modes)
        return print_none(invalid_parameter);
    if (Qdp_AdvStatsSetEnabled(switch_number, mode) != 0)
        return print_none_format("Failed to %s advanced stats.\n", mode_names[mode]);
    return none();
}

// Its texts end in doubled line breaks: deliberate.
PyObject* PyQDP_AdvStatsGetEnabled(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter_blank_line);

    uint8_t is_enabled = 0;
    if (Qdp_AdvStatsGetEnabled(switch_number, &is_enabled) != 0)
        return print_none("ValueError: Failed to get advanced stats status.\n\n");
    return PyBool_FromLong(is_enabled != 0);
}

PyObject* PyQDP_AdvStatsGetCounters(PyObject*, PyObject* args)
{
    uint32_t switch_number, selector;
    const char* text;
    if (!PyArg_ParseTuple(args, "IIs", &switch_number, &selector, &text) || !is_switch(switch_number))
        return print_none(invalid_parameter);

    AdvancedCounters counters{};
    uint32_t size = sizeof counters;
    if (Qdp_AdvStatsGetCounters(switch_number, selector, text, &counters, &size) != 0)
        return print_none("Failed to get advanced stats counter.\n");
    return dict_or_null(advanced_fields, bytes_of(counters));
}

}  // namespace qdp
