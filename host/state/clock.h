// The clock of the embedded host.
#pragma once

#include <cstdint>
#include <optional>

namespace host {

inline constexpr uint64_t nanoseconds_per_second = 1'000'000'000;

// Time since the host came up, which was an hour before the process began: its counters have a past. Real until a test
// freezes it, which is at a full second, so that counters are the same in every process that freezes it at once.
class Clock {
public:
    Clock();
    uint64_t nanoseconds() const;
    void freeze();
    void advance(uint64_t nanoseconds);

    // What a counter that grows by `per_second` has reached; and one that began at a later time, in nanoseconds.
    uint64_t counter_value(uint64_t per_second, uint64_t since = 0) const;

private:
    uint64_t start_;
    std::optional<uint64_t> frozen_;
};

}  // namespace host
