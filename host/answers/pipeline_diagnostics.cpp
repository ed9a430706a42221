// Answers of the pipeline's diagnostics: the P4 application, the latency histogram, advanced statistics.
#include "host/answers/answer.h"

namespace host {

namespace {

uint32_t app_set(Host& host, uint32_t is_enabled)
{
    host.pipeline.app_is_enabled = is_enabled;
    return status_success;
}

uint32_t app_get(Host& host, Output output)
{
    return output.put(host.pipeline.app_is_enabled);
}

uint32_t latency_set(Host& host, uint32_t is_enabled)
{
    host.pipeline.latency.turn(is_enabled != 0, host.clock);
    return status_success;
}

// The upper bound of each bucket in microseconds, and how many samples a second fall into it.
struct Bucket {
    uint64_t bound;
    uint64_t samples;
};
constexpr Bucket buckets[LatencyHistogram::num_buckets] = {
    {100, 40}, {200, 90}, {300, 60}, {400, 30}, {500, 20}, {700, 12}, {900, 9},  {1100, 7}, {1300, 5}, {1500, 4},
    {2000, 3}, {2500, 2}, {3000, 2}, {3500, 1}, {4000, 1}, {5000, 1}, {6000, 0}, {7000, 0}, {8000, 0}, {9000, 0},
};

// In microseconds: the extremes of every second, and what happens now and then beyond all buckets.
constexpr uint32_t shortest = 62;
constexpr uint32_t longest = 4900;
constexpr uint32_t beyond = 11200;
constexpr uint64_t seconds_a_beyond = 10;

// Selectors: the driver in the kernel, and the application beside it.
constexpr uint32_t latency_selectors = 2;

uint32_t latency_dump(Host& host, uint32_t selector, Output output)
{
    if (selector >= latency_selectors)
        return status_refused;
    const uint64_t seconds = host.pipeline.latency.seconds(host.clock);
    LatencyHistogram histogram{};
    for (size_t i = 0; i < LatencyHistogram::num_buckets; ++i) {
        histogram.buckets[i] = seconds * buckets[i].samples;
        histogram.total_samples += histogram.buckets[i];
        histogram.total_time += histogram.buckets[i] * buckets[i].bound;
    }
    histogram.out_of_bucket = seconds / seconds_a_beyond;
    histogram.total_samples += histogram.out_of_bucket;
    histogram.total_time += histogram.out_of_bucket * beyond;
    if (seconds > 0) {
        histogram.min = shortest;
        histogram.max = histogram.out_of_bucket > 0 ? beyond : longest;
    }
    return output.put(histogram);
}

uint32_t advanced_set_enabled(Host& host, uint32_t switch_number, uint32_t mode)
{
    if (!host.datapath_switch(switch_number) || mode >= advanced_stats_modes)
        return status_refused;
    Stopwatch& stats = host.pipeline.advanced_stats[switch_number];
    if (AdvancedStatsMode{mode} == AdvancedStatsMode::clear)
        stats.clear(host.clock);
    else
        stats.turn(AdvancedStatsMode{mode} == AdvancedStatsMode::enable, host.clock);
    return status_success;
}

uint32_t advanced_get_enabled(Host& host, uint32_t switch_number, Output output)
{
    if (!host.datapath_switch(switch_number))
        return status_refused;
    return output.put(static_cast<uint8_t>(host.pipeline.advanced_stats[switch_number].is_on()));
}

// Neither selector narrows the counters down. Early reasons are the more frequent ones.
uint32_t advanced_get_counters(Host& host, uint32_t switch_number, uint32_t, std::string_view, Output output)
{
    if (!host.datapath_switch(switch_number))
        return status_refused;
    const uint64_t seconds = host.pipeline.advanced_stats[switch_number].seconds(host.clock);
    AdvancedCounters result{};
    for (size_t i = 0; i < AdvancedCounters::num_counters; ++i)
        result.counters[i] = seconds * (AdvancedCounters::num_counters - i) * (switch_number + 1);
    return output.put(result);
}

const Answer pipeline_diagnostic_answers[] = {
    {"Qdp_P4AppSet", app_set},
    {"Qdp_P4AppGet", app_get},
    {"Qdp_P4UKLatencySet", latency_set},
    {"Qdp_P4UKLatencyDump", latency_dump},
    {"Qdp_AdvStatsSetEnabled", advanced_set_enabled},
    {"Qdp_AdvStatsGetEnabled", advanced_get_enabled},
    {"Qdp_AdvStatsGetCounters", advanced_get_counters},
};

}  // namespace

}  // namespace host
