// The clock of the embedded host.
#include "host/state/clock.h"

#include <chrono>

namespace host {

namespace {

constexpr uint64_t past = 3600 * nanoseconds_per_second;

uint64_t real_nanoseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::nanoseconds{now}.count());
}

}  // namespace

Clock::Clock() : start_{real_nanoseconds() - past} {}

uint64_t Clock::nanoseconds() const
{
    return frozen_ ? *frozen_ : real_nanoseconds() - start_;
}

void Clock::freeze()
{
    if (!frozen_)
        frozen_ = nanoseconds() / nanoseconds_per_second * nanoseconds_per_second;
}

void Clock::advance(uint64_t nanoseconds)
{
    if (frozen_)
        *frozen_ += nanoseconds;
    else
        start_ -= nanoseconds;
}

uint64_t Clock::counter_value(uint64_t per_second, uint64_t since) const
{
    constexpr uint64_t second = nanoseconds_per_second;
    const uint64_t time = nanoseconds() - since;
    return time / second * per_second + time % second * per_second / second;
}

}  // namespace host
