// The stand-in for the datapath control library: every operation hands its call to the embedded host.
#include "host/call.h"
#include "platform/qdp_control.h"
#include "platform/qdp_records.h"

using namespace host;

#define OPERATION(name, parameters, ...)                             \
    uint32_t name parameters                                         \
    {                                                                \
        static Operation& self = operation(#name);                   \
        return static_cast<uint32_t>(dispatch(self, {__VA_ARGS__})); \
    }

#include "host/operations_qdp.def"
