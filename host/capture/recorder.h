// The recorder: writes each call of a platform operation into a capture file, and lets it through unchanged.
#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>
#include <vector>

#include "host/call.h"

namespace host {

// The real library's definition; null, and a message, where it has none.
void* real_definition(const char* library, const char* operation);

// A call on its way through. What goes in is looked at before the call, what came out afterwards; a process without a
// capture file of its own just passes.
class PassingCall {
public:
    PassingCall(const char* operation, std::initializer_list<Argument> arguments);

    // The parameters to go on with.
    const std::vector<uint64_t>& parameters() const { return parameters_; }

    void returned();
    void returned_status(uint32_t status);
    void returned_text(const char* text);
    void returned_handle(const void* handle);

private:
    struct Before {
        const void* pointer;
        uint32_t length;
    };

    static uint32_t step(void* handle, void* call);
    void look_at_outputs();
    nlohmann::json outputs(bool is_success) const;
    void write(bool is_success, const nlohmann::json& result);

    const char* operation_;
    std::vector<Argument> arguments_;
    std::vector<uint64_t> parameters_;
    bool is_recorded_;
    nlohmann::json inputs_;
    std::vector<Before> before_;  // of each argument: what stood in its words

    // Of a walk.
    uint32_t (*callback_)(void* handle, void* context) = nullptr;
    void* context_ = nullptr;
    std::vector<uint64_t> steps_;
};

template <class Parameter>
Parameter parameter_as(uint64_t value)
{
    if constexpr (std::is_pointer_v<Parameter>)
        return reinterpret_cast<Parameter>(value);
    else
        return static_cast<Parameter>(value);
}

template <class Result, class... Parameters>
Result go_on(Result (*function)(Parameters...), const std::vector<uint64_t>& parameters)
{
    if (parameters.size() != sizeof...(Parameters)) {
        std::fputs("qdp-host: an operation's arguments are not its parameters; see host/operations_*.def\n", stderr);
        std::abort();
    }
    return [&]<size_t... i>(std::index_sequence<i...>)->Result
    {
        return function(parameter_as<Parameters>(parameters[i])...);
    }
    (std::index_sequence_for<Parameters...>{});
}

template <class Result, class... Parameters>
Result pass_through(const char* operation, Result (*real)(Parameters...), std::initializer_list<Argument> arguments)
{
    if (!real) {
        if constexpr (std::is_same_v<Result, uint32_t>)
            return refused;
        else
            return Result();
    }
    PassingCall call{operation, arguments};
    if constexpr (std::is_void_v<Result>) {
        go_on(real, call.parameters());
        call.returned();
    } else {
        const Result result = go_on(real, call.parameters());
        if constexpr (std::is_same_v<Result, const char*>)
            call.returned_text(result);
        else if constexpr (std::is_pointer_v<Result>)
            call.returned_handle(result);
        else
            call.returned_status(result);
        return result;
    }
}

}  // namespace host
