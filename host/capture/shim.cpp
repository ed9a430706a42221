// The library that is loaded in front of the platform's: every operation of theirs, passed through the recorder.
#include "host/capture/recorder.h"
#include "platform/qdp_control.h"
#include "platform/qdp_records.h"
#include "platform/switch_state.h"

using namespace host;

namespace {

constexpr char control_library[] = "libqdp.so";
constexpr char switch_state_library[] = "libqmtPublic.so";

}  // namespace

#define PASSED(library, Result, name, parameters, ...)                                               \
    Result name parameters                                                                           \
    {                                                                                                \
        static const auto real = reinterpret_cast<decltype(&name)>(real_definition(library, #name)); \
        return pass_through(#name, real, {__VA_ARGS__});                                             \
    }

#define OPERATION(name, parameters, ...) PASSED(control_library, uint32_t, name, parameters, __VA_ARGS__)
#include "host/operations_qdp.def"
#undef OPERATION

#define OPERATION(Result, name, parameters, ...) PASSED(switch_state_library, Result, name, parameters, __VA_ARGS__)
#include "host/operations_switch_state.def"
