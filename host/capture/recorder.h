// The recorder: writes each call of a platform operation into a capture file, and lets it through unchanged.
#pragma once

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "host/call/call.h"
#include "host/call/json.h"

namespace host {

// The real library's function of an operation, looked up at the first call. Null, after a message, where it has none.
class RealFunction {
public:
    void* of(const char* library, const char* operation)
    {
        void* definition = definition_.load(std::memory_order_acquire);
        return definition == this ? lookup(library, operation) : definition;
    }

private:
    void* lookup(const char* library, const char* operation);

    std::atomic<void*> definition_{this};  // itself: not looked up yet
};

// A call that goes on to the real library. Its inputs are taken down before the call, its outputs after it; a process
// without a capture file of its own takes nothing down.
class RecordedCall {
public:
    RecordedCall(const char* operation, Arguments arguments);

    // The words for the parameters of the real function.
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
    void note_outputs();
    Json outputs(bool is_success) const;
    void write(bool is_success, const Json& result);

    const char* operation_;
    std::vector<Argument> arguments_;
    std::vector<uint64_t> parameters_;
    bool is_recorded_ = false;
    Json inputs_;
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
Result call_with_words(Result (*function)(Parameters...), const std::vector<uint64_t>& words)
{
    return [&]<size_t... i>(std::index_sequence<i...>)->Result
    {
        return function(parameter_as<Parameters>(words[i])...);
    }
    (std::index_sequence_for<Parameters...>{});
}

template <class Result, class... Parameters>
Result pass_through(const char* operation, Result (*real)(Parameters...), Arguments arguments)
{
    if (!real) {
        if constexpr (std::is_same_v<Result, uint32_t>)
            return status_refused;
        else
            return Result();
    }
    RecordedCall call{operation, arguments};
    if constexpr (std::is_void_v<Result>) {
        call_with_words(real, call.parameters());
        call.returned();
    } else {
        const Result result = call_with_words(real, call.parameters());
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
