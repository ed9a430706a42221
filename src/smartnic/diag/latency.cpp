// The histogram of how long the programming of P4 tables took. A refusing library leaves None, and no message.
#include "core/build.h"
#include "platform/pipeline.h"

namespace qdp {

namespace {

// The bounds are uneven on purpose: steps of 100 microseconds, then of 200, 500 and 1000.
using H = LatencyHistogram;
constexpr auto histogram_fields = fields<sizeof(H)>({
    {"minLatency", AT(H, min)},
    {"maxLatency", AT(H, max)},
    {"100us", AT(H, buckets[0]), as_signed},
    {"200us", AT(H, buckets[1]), as_signed},
    {"300us", AT(H, buckets[2]), as_signed},
    {"400us", AT(H, buckets[3]), as_signed},
    {"500us", AT(H, buckets[4]), as_signed},
    {"700us", AT(H, buckets[5]), as_signed},
    {"900us", AT(H, buckets[6]), as_signed},
    {"1100us", AT(H, buckets[7]), as_signed},
    {"1300us", AT(H, buckets[8]), as_signed},
    {"1500us", AT(H, buckets[9]), as_signed},
    {"2000us", AT(H, buckets[10]), as_signed},
    {"2500us", AT(H, buckets[11]), as_signed},
    {"3000us", AT(H, buckets[12]), as_signed},
    {"3500us", AT(H, buckets[13]), as_signed},
    {"4000us", AT(H, buckets[14]), as_signed},
    {"5000us", AT(H, buckets[15]), as_signed},
    {"6000us", AT(H, buckets[16]), as_signed},
    {"7000us", AT(H, buckets[17]), as_signed},
    {"8000us", AT(H, buckets[18]), as_signed},
    {"9000us", AT(H, buckets[19]), as_signed},
    {"outOfBucket", AT(H, out_of_bucket), as_signed},
    {"totalSample", AT(H, total_samples), as_signed},
    {"totalTime", AT(H, total_time), as_signed},
});

}  // namespace

PyObject* PyQDP_P4UKLatencySet(PyObject*, PyObject* args)
{
    uint32_t is_enabled;
    if (!PyArg_ParseTuple(args, "I", &is_enabled))
        return print_none(invalid_parameter);
    return Qdp_P4UKLatencySet(is_enabled) == 0 ? PyBool_FromLong(1) : none();
}

PyObject* PyQDP_P4UKLatencyDump(PyObject*, PyObject* args)
{
    uint32_t selector;
    if (!PyArg_ParseTuple(args, "I", &selector))
        return print_none(invalid_parameter);

    LatencyHistogram histogram{};
    uint32_t size = sizeof histogram;
    if (Qdp_P4UKLatencyDump(selector, &histogram, &size) != 0)
        return none();
    return dict_or_null(histogram_fields, bytes_of(histogram));
}

}  // namespace qdp
