// Answers: functions that answer operations from the state, registered under the operations' names.
#pragma once

#include <string_view>
#include <utility>

#include "host/call/operations.h"
#include "host/call/values.h"
#include "host/state/host.h"

namespace host {

// The handles that a walk passes to its callback. The calls follow the answer, since a callback makes calls of its own.
struct Walk {
    std::vector<void*> handles;

    void add(const void* handle) { handles.push_back(const_cast<void*>(handle)); }
};

// What an answer uses beside the host's state.
struct CallContext {
    Values& values;
    Walk& walk;
};

// A value output as an answer sees it.
struct ValueSlot {
    const ValueOutput& output;
    Values& values;

    uint32_t put(ByteSpan value) const
    {
        values.put(output, value);
        return status_success;
    }
};

// A value that its caller gives back.
struct ReleasedValue {
    void* value;
    Values& values;
};

// An answer's parameter, from the argument in its place.
template <class Parameter>
Parameter parameter_from(const Argument& argument, const CallContext& context)
{
    if constexpr (std::is_same_v<Parameter, Output>)
        return argument.output;
    else if constexpr (std::is_same_v<Parameter, ValueSlot>)
        return {argument.value_output, context.values};
    else if constexpr (std::is_same_v<Parameter, ReleasedValue>)
        return {reinterpret_cast<void*>(argument.value), context.values};
    else if constexpr (std::is_same_v<Parameter, Walk&>)
        return context.walk;
    else if constexpr (std::is_same_v<Parameter, ByteSpan>)
        return argument.bytes;
    else if constexpr (std::is_same_v<Parameter, std::string_view>)
        return argument.value ? std::string_view{reinterpret_cast<const char*>(argument.value)} : std::string_view{};
    else if constexpr (std::is_pointer_v<Parameter>)
        return reinterpret_cast<Parameter>(argument.value);
    else
        return static_cast<Parameter>(argument.value);
}

using Handler = uint64_t (*)(void (*function)(), Host& host, Arguments arguments, const CallContext& context);

struct RegisteredAnswer {
    void (*function)();
    Handler handler;

    uint64_t operator()(Host& host, Arguments arguments, const CallContext& context) const
    {
        return handler(function, host, arguments, context);
    }
};

// The answer of an operation, or null.
const RegisteredAnswer* answer_of(std::string_view operation);

// A function that answers an operation:
//
//     uint32_t get_switch_list(Host& host, Output list);
//     const Answer switch_answers[] = {{"Qdp_Get_Switch_List", get_switch_list}};
//
// Its parameters after the host are the operation's arguments in the order of the operations table; a buffer and its
// size are one Output. An unknown operation or a wrong number of parameters ends the process when the host is loaded.
// Several files of answers are compiled as one, so that their names differ.
class Answer {
public:
    template <class Result, class... Parameters>
    Answer(const char* operation, Result (*function)(Host&, Parameters...))
    {
        add(operation, sizeof...(Parameters), {reinterpret_cast<void (*)()>(function), handle<Result, Parameters...>});
    }

private:
    static void add(const char* operation, size_t num_parameters, RegisteredAnswer answer);

    template <class Result, class... Parameters>
    static uint64_t handle(void (*function)(), Host& host, Arguments arguments, const CallContext& context)
    {
        return call(reinterpret_cast<Result (*)(Host&, Parameters...)>(function), host, arguments, context,
                    std::index_sequence_for<Parameters...>{});
    }

    template <class Result, class... Parameters, size_t... i>
    static uint64_t call(Result (*function)(Host&, Parameters...), Host& host, [[maybe_unused]] Arguments arguments,
                         [[maybe_unused]] const CallContext& context, std::index_sequence<i...>)
    {
        if constexpr (std::is_void_v<Result>) {
            function(host, parameter_from<Parameters>(arguments[i], context)...);
            return 0;
        } else {
            return word_of(function(host, parameter_from<Parameters>(arguments[i], context)...));
        }
    }
};

}  // namespace host
