// The operations of the datapath control library that have no fixed answer refuse.
#include "bench/fixed/marks.h"
#include "platform/qdp_control.h"
#include "platform/qdp_records.h"

#define OPERATION(name, parameters, ...)   \
    [[gnu::weak]] uint32_t name parameters \
    {                                      \
        return fixed_refusal;              \
    }

#include "host/operations_qdp.def"
