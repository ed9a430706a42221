// An operation in this process: its answer, and what a test has planned for its next calls.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "host/answers/answer.h"

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

// `times` calls of an operation from the `nth` on, counted from now; 0 means all that follow.
class ChosenCalls {
public:
    ChosenCalls(unsigned nth, unsigned times)
        : before_{nth > 0 ? nth - 1 : 0}, left_{times > 0 ? std::optional{times} : std::nullopt}
    {
    }

    // Counts a call. True when it is one of them.
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
    std::optional<unsigned> left_;  // none: all that follow
};

struct Failure {
    uint32_t status;
    ChosenCalls calls;
};

struct Delay {
    std::chrono::nanoseconds time;
    ChosenCalls calls;
};

class Operation {
public:
    const Signature* signature = nullptr;
    const RegisteredAnswer* answer = nullptr;

    std::deque<ScriptedAnswer> script;
    std::optional<Failure> failure;
    std::optional<Delay> delay;

    // The result of a call that fails.
    uint64_t failed(uint32_t status) const { return signature->returns_pointer() ? 0 : status; }

    void clear_plans()
    {
        script.clear();
        failure.reset();
        delay.reset();
    }
};

}  // namespace host
