// The library that is loaded in front of the platform's: every operation of theirs, passed through the recorder.
#include "host/call/define_operations.h"
#include "host/capture/recorder.h"
#include "platform/qdp_control.h"
#include "platform/switch_state.h"

namespace {

constexpr char control_library[] = "libqdp.so";
constexpr char switch_state_library[] = "libqmtPublic.so";

}  // namespace

#define RECORDED(library, name, ...)                                                   \
    OPERATION_HEAD(name, __VA_ARGS__)                                                  \
    {                                                                                  \
        OPERATION_SIGNATURE(name, __VA_ARGS__);                                        \
        static constinit host::RealFunction found;                                     \
        const auto real = reinterpret_cast<decltype(&name)>(found.of(library, #name)); \
        return host::pass_through(#name, real, arguments);                             \
    }

#define OPERATION(name, ...) RECORDED(control_library, name, __VA_ARGS__)
#include "host/call/operations_qdp.def"
#undef OPERATION

#define OPERATION(name, ...) RECORDED(switch_state_library, name, __VA_ARGS__)
#include "host/call/operations_switch_state.def"
