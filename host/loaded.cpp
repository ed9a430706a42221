// What answers in this process: the host of a scenario, or a capture. The environment says which, when it is needed first
// and after every reset; a state is taken from the scenario then.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "host/capture/replay.h"
#include "host/control.h"
#include "host/host.h"
#include "host/scenario/built_in.h"
#include "host/scenario/scenario.h"

namespace host {

namespace {

struct Loaded {
    std::recursive_mutex mutex;
    std::shared_ptr<const Host> first_scenario;  // that the environment names, as it was read
    std::shared_ptr<const Host> scenario;        // as it was read
    std::optional<Host> host;                    // as it stands
    std::unique_ptr<Replay> replay;              // answers in its place
    bool is_environment_asked = false;           // for a capture
    std::string error;                           // why nothing can answer
    bool is_error_told = false;

    std::map<uint64_t, Host> snapshots;
    uint64_t snapshots_taken = 0;
};

Loaded& loaded()
{
    static auto* loaded = new Loaded;  // never destroyed: calls may come at any time before the process ends
    return *loaded;
}

// Makes what can answer; false, with the error kept, when that fails.
template <class Make>
bool attempt(Make make)
{
    loaded().error.clear();
    try {
        make();
        return true;
    } catch (const std::exception& error) {
        loaded().error = error.what();
    }
    return false;
}

// Null: not set; nor is it, by convention, when it is empty.
const char* environment(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value ? value : nullptr;
}

// Null: none.
bool load_replay(const char* path)
{
    Loaded& state = loaded();
    state.is_environment_asked = true;
    state.replay.reset();
    return attempt([&] {
        if (path)
            state.replay = std::make_unique<Replay>(path);
    });
}

void ask_environment_for_replay()
{
    if (!loaded().is_environment_asked)
        load_replay(environment("QDP_HOST_REPLAY"));
}

// Null: the default scenario.
bool load(const char* path)
{
    Loaded& state = loaded();
    ask_environment_for_replay();
    state.host.reset();
    state.scenario.reset();
    return attempt([&] {
        state.scenario = std::make_shared<const Host>(scenario::load(path ? path : scenario::default_scenario));
    });
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

Replay* loaded_replay()
{
    const std::lock_guard lock{loaded().mutex};
    ask_environment_for_replay();
    return loaded().replay.get();
}

Host* loaded_host()
{
    Loaded& state = loaded();
    const std::lock_guard lock{state.mutex};
    ask_environment_for_replay();
    if (!state.error.empty())
        return nullptr;
    if (!state.scenario)
        state.scenario = state.first_scenario;
    if (!state.scenario && load(environment("QDP_HOST_SCENARIO")))
        state.first_scenario = state.scenario;
    if (!state.host && state.scenario)
        attempt([&] {
            state.host = *state.scenario;
            state.host->clock = Clock{};
        });
    return state.host ? &*state.host : nullptr;
}

void tell_error()
{
    const std::lock_guard lock{loaded().mutex};
    if (!loaded().is_error_told)
        std::fprintf(stderr, "qdp-host: %s\n", loaded().error.c_str());
    loaded().is_error_told = true;
}

void reset_host()
{
    const std::lock_guard lock{loaded().mutex};
    loaded().host.reset();
    loaded().scenario.reset();
    loaded().replay.reset();
    loaded().error.clear();
    loaded().is_environment_asked = false;
}

}  // namespace host

using namespace host;

int qdp_host_load(const char* path)
{
    const std::lock_guard lock{loaded().mutex};
    return load(path) ? 0 : -1;
}

int qdp_host_replay(const char* path)
{
    const std::lock_guard lock{loaded().mutex};
    return load_replay(path) ? 0 : -1;
}

const char* qdp_host_error(void)
{
    const std::lock_guard lock{loaded().mutex};
    if (!loaded_replay())
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

const char* qdp_host_version(void)
{
    return scenario::version;
}

const char* qdp_host_check(const char* scenario)
{
    static std::string text;
    try {
        scenario::check(scenario);
        return nullptr;
    } catch (const std::exception& error) {
        text = error.what();
    }
    return text.c_str();
}

const char* qdp_host_completed(const char* scenario, int* is_valid)
{
    static std::string text;
    *is_valid = 1;
    try {
        text = scenario::completed(scenario);
    } catch (const std::exception& error) {
        text = error.what();
        *is_valid = 0;
    }
    return text.c_str();
}

const char* qdp_host_summary(void)
{
    const std::lock_guard lock{loaded().mutex};
    static std::string text;
    const Host* present = loaded_host();
    return present ? kept_text(text, [&] { return scenario::summary(*present); }) : nullptr;
}

const char* qdp_host_schema(void)
{
    const std::lock_guard lock{loaded().mutex};
    static std::string text;
    return kept_text(text, scenario::schema);
}

uint64_t qdp_host_snapshot(void)
{
    const std::lock_guard lock{loaded().mutex};
    const Host* present = loaded_host();
    if (!present)
        return 0;
    loaded().snapshots.emplace(++loaded().snapshots_taken, *present);
    return loaded().snapshots_taken;
}

int qdp_host_restore(uint64_t snapshot)
{
    const std::lock_guard lock{loaded().mutex};
    const auto found = loaded().snapshots.find(snapshot);
    if (found == loaded().snapshots.end() || !loaded_host())
        return -1;
    loaded().host = found->second;
    return 0;
}

void qdp_host_forget(uint64_t snapshot)
{
    const std::lock_guard lock{loaded().mutex};
    loaded().snapshots.erase(snapshot);
}
