// The operations of the switch state library that have no fixed answer find nothing.
#include <type_traits>

#include "host/call/define_operations.h"
#include "platform/switch_state.h"

namespace {

template <class Result>
Result nothing()
{
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else
        return static_cast<Result>(status_not_found);
}

template <>
void nothing<void>()
{
}

}  // namespace

#define OPERATION(name, ...)                                     \
    [[gnu::weak]] OPERATION_HEAD(name, __VA_ARGS__)              \
    {                                                            \
        return nothing<host::TypesOf<decltype(name)>::Result>(); \
    }

#include "host/call/operations_switch_state.def"
