// The host that answers in this process: its scenario is read when it is needed first, and a state is taken from it then
// and after every reset.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

#include "host/control.h"
#include "host/host.h"
#include "host/scenario/scenario.h"

namespace host {

namespace {

struct Loaded {
    std::recursive_mutex mutex;
    std::unique_ptr<const Host> scenario;  // as it was read; null when it could not be read, or was not yet
    std::optional<Host> host;              // as it stands
    std::string error;
    bool is_error_told = false;
};

Loaded& loaded()
{
    static auto* loaded = new Loaded;  // never destroyed: calls may come at any time before the process ends
    return *loaded;
}

// Tells an error once a process: every operation fails after it, and a script makes many calls.
void keep_error(const std::string& error)
{
    loaded().error = error;
    if (!loaded().is_error_told)
        std::fprintf(stderr, "qdp-host: %s\n", error.c_str());
    loaded().is_error_told = true;
}

// Null: the default scenario.
bool load(const char* path)
{
    Loaded& state = loaded();
    state.host.reset();
    state.scenario.reset();
    state.error.clear();
    try {
        state.scenario = std::make_unique<Host>(path ? scenario::load(path) : scenario::load_default());
        return true;
    } catch (const std::exception& error) {
        keep_error(error.what());
    }
    return false;
}

// A text for a caller who knows no exceptions; null when it could not be made.
template <class Make>
const char* kept_text(std::string& kept, Make make)
{
    try {
        kept = make();
        return kept.c_str();
    } catch (const std::exception&) {
        return nullptr;
    }
}

}  // namespace

Host* loaded_host()
{
    Loaded& state = loaded();
    const std::lock_guard lock{state.mutex};
    if (!state.scenario && state.error.empty())
        load(std::getenv("QDP_HOST_SCENARIO"));
    try {
        if (!state.host && state.scenario) {
            state.host = *state.scenario;
            state.host->clock = Clock{};
        }
    } catch (const std::exception& error) {  // for want of memory
        keep_error(error.what());
    }
    return state.host ? &*state.host : nullptr;
}

void reset_host()
{
    const std::lock_guard lock{loaded().mutex};
    loaded().host.reset();
}

}  // namespace host

using namespace host;

int qdp_host_load(const char* path)
{
    const std::lock_guard lock{loaded().mutex};
    return load(path) ? 0 : -1;
}

const char* qdp_host_error(void)
{
    const std::lock_guard lock{loaded().mutex};
    loaded_host();
    return loaded().error.empty() ? nullptr : loaded().error.c_str();
}

const char* qdp_host_scenario(void)
{
    const std::lock_guard lock{loaded().mutex};
    static std::string text;
    const Host* present = loaded_host();
    return present ? kept_text(text, [&] { return scenario::written(*present); }) : nullptr;
}

const char* qdp_host_schema(void)
{
    const std::lock_guard lock{loaded().mutex};
    static std::string text;
    return kept_text(text, scenario::schema);
}
