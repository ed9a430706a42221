// The stand-in for the switch state library: every operation passes its call to the embedded host.
#include "host/call/define_operations.h"
#include "platform/switch_state.h"

// The real library logs through this function, which it finds in the process that uses it.
extern "C" [[gnu::weak]] void Log(const char* format, ...);

namespace {

template <class Result>
Result result_as(uint64_t result)
{
    if constexpr (std::is_pointer_v<Result>)
        return reinterpret_cast<Result>(result);
    else if constexpr (!std::is_void_v<Result>)
        return static_cast<Result>(result);
}

}  // namespace

#define OPERATION(name, ...)                                                                                         \
    OPERATION_HEAD(name, __VA_ARGS__)                                                                                \
    {                                                                                                                \
        OPERATION_SIGNATURE(name, __VA_ARGS__);                                                                      \
        static constinit host::OperationSlot operation;                                                              \
        if (Log)                                                                                                     \
            Log("%s", #name);                                                                                        \
        return result_as<host::TypesOf<decltype(name)>::Result>(host::dispatch(operation.of(signature), arguments)); \
    }

#include "host/call/operations_switch_state.def"
