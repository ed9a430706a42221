// The operations of the switch state library that have no fixed answer find nothing.
#include <type_traits>

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

#define OPERATION(Result, name, parameters, ...) \
    [[gnu::weak]] Result name parameters         \
    {                                            \
        return nothing<Result>();                \
    }

#include "host/operations_switch_state.def"
