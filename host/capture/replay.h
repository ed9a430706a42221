// Replay: a capture file that answers calls in the place of the state.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/call/operations.h"
#include "host/call/values.h"
#include "host/capture/recorded_answer.h"

namespace host {

// A file that cannot be used, and why: "FILE: PLACE: what is wrong".
struct BrokenCapture : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Replay {
public:
    // Checks the whole file, and throws BrokenCapture for what no recorder writes. A last line that was cut off is left
    // out.
    explicit Replay(const std::string& path);

    // The number of a last line that was left out; prints that it was.
    std::optional<size_t> truncated_line() const { return truncated_line_; }
    void print_truncated_line() const;

    // Calls are matched by their operation and what goes in. Equal calls get the answers in the order in which they
    // were recorded, and then the last one again. A call that was never recorded is refused, which is printed once. A
    // walk's handles are appended to `steps`.
    uint64_t answer(const Signature& signature, Arguments arguments, Values& values, std::vector<void*>& steps);

private:
    struct Recorded {
        std::deque<RecordedAnswer> answers;  // which stay where they are: callers look at them
        size_t next = 0;
    };

    void add(const std::string& line);

    std::string path_;
    std::optional<size_t> truncated_line_;
    std::map<std::string, Recorded> calls_;
    std::set<std::string> unknown_;
};

}  // namespace host
