// The stand-in for the datapath control library: every operation passes its call to the embedded host.
#include "host/call/define_operations.h"
#include "platform/qdp_control.h"

#define OPERATION(name, ...)                                                              \
    OPERATION_HEAD(name, __VA_ARGS__)                                                     \
    {                                                                                     \
        OPERATION_SIGNATURE(name, __VA_ARGS__);                                           \
        static constinit host::OperationSlot operation;                                   \
        return static_cast<uint32_t>(host::dispatch(operation.of(signature), arguments)); \
    }

#include "host/call/operations_qdp.def"
