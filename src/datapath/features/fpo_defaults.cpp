// What flow offload does on a switch whose properties say nothing of it.
#include "datapath/features/fpo_defaults.h"

#include <sys/utsname.h>

#include <cstdio>

namespace qdp {

namespace {

constexpr uint32_t models_of_old_kernels = fpo_model_1_level_1;
constexpr uint32_t models_since_7_0_0 = fpo_model_1_level_1 | fpo_model_1_level_2 | fpo_model_2a;
constexpr uint32_t models_since_7_0_3 = models_since_7_0_0 | fpo_model_3a;

constexpr size_t release_numbers = 3;

struct Release {
    unsigned numbers[release_numbers];
};

Release release_of(const char* text)
{
    Release release{};
    auto& [first, second, third] = release.numbers;
    std::sscanf(text, "%u.%u.%u", &first, &second, &third);
    return release;
}

}  // namespace

int compare_releases(const char* first, const char* second)
{
    const Release a = release_of(first);
    const Release b = release_of(second);
    for (size_t i = 0; i < release_numbers; ++i)
        if (a.numbers[i] != b.numbers[i])
            return a.numbers[i] < b.numbers[i] ? -1 : 1;
    return 0;
}

uint32_t default_fpo_models(const char* release)
{
    if (!release || compare_releases(release, "7.0.0") < 0)
        return models_of_old_kernels;
    return compare_releases(release, "7.0.3") < 0 ? models_since_7_0_0 : models_since_7_0_3;
}

FpoSettings default_fpo_settings()
{
    utsname system;
    const char* release = uname(&system) == 0 ? system.release : nullptr;
    return {fpo_enabled | fpo_ip_discovery_dhcp, default_fpo_models(release)};
}

}  // namespace qdp
