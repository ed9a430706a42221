// The operations of the datapath control library that have no fixed answer refuse.
#include "bench/fixed/marks.h"
#include "host/call/define_operations.h"
#include "platform/qdp_control.h"

#define OPERATION(name, ...)                        \
    [[gnu::weak]] OPERATION_HEAD(name, __VA_ARGS__) \
    {                                               \
        return fixed_refusal;                       \
    }

#include "host/call/operations_qdp.def"
