// The stand-in for the switch state library: every operation hands its call to the embedded host.
#include "host/call.h"
#include "platform/switch_state.h"

using namespace host;

// The real library logs through these, which it finds in the process that uses it.
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

#define OPERATION(Result, name, parameters, ...)                              \
    Result name parameters                                                    \
    {                                                                         \
        static Operation& self = operation(#name, std::is_pointer_v<Result>); \
        if (Log)                                                              \
            Log("%s", #name);                                                 \
        return result_as<Result>(dispatch(self, {__VA_ARGS__}));              \
    }

#include "host/operations_switch_state.def"
