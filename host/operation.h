// An operation of the platform libraries in the embedded host, and what is to happen to its next calls.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "host/host.h"

namespace host {

struct ScriptedOutput {
    Value bytes;
    std::optional<uint32_t> size;
    bool is_set = false;
};

struct ScriptedAnswer {
    uint64_t result;
    std::map<unsigned, ScriptedOutput> outputs;
    bool result_is_text = false;
};

// The calls that something happens to: from the n-th from now on, so many times; 0 times is for ever.
class ChosenCalls {
public:
    ChosenCalls(unsigned nth, unsigned times)
        : before_{nth > 0 ? nth - 1 : 0}, left_{times > 0 ? std::optional{times} : std::nullopt}
    {
    }

    // Whether the present call is one of them.
    bool take()
    {
        if (before_ > 0) {
            --before_;
            return false;
        }
        if (left_ && *left_ == 0)
            return false;
        if (left_)
            --*left_;
        return true;
    }

private:
    unsigned before_;
    std::optional<unsigned> left_;  // none: for ever
};

struct Failure {
    uint32_t status;
    ChosenCalls calls;
};

struct Delay {
    std::chrono::nanoseconds time;
    ChosenCalls calls;
};

// An operation as the stand-ins call it, and what a test wants of its next calls.
class Operation {
public:
    std::string name;
    void (*function)() = nullptr;
    Handler handler = nullptr;
    size_t parameters = 0;
    bool returns_pointer = false;  // a failure is a null pointer then

    std::deque<ScriptedAnswer> script;
    std::optional<Failure> failure;
    std::optional<Delay> delay;

    uint64_t failed(uint32_t status) const { return returns_pointer ? 0 : status; }
};

}  // namespace host
