// The embedded host of this process.
#include "host/process/process.h"

#include <pthread.h>

#include <cstdio>
#include <cstdlib>

#include "host/scenario/scenario.h"

namespace host {

namespace {

struct Guarded {
    std::mutex mutex;
    Process process;
};

// Made when the library is loaded, and never destroyed: calls may come until the process ends.
Guarded& guarded = *new Guarded;

// A child that is forked while another thread is in a call gets the host whole, and its lock free.
[[maybe_unused]] const int process_fork_handlers =
    pthread_atfork([] { guarded.mutex.lock(); }, [] { guarded.mutex.unlock(); }, [] { guarded.mutex.unlock(); });

// The variable's value; null when unset or empty.
const char* environment(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value ? value : nullptr;
}

}  // namespace

std::pair<std::shared_ptr<const Host>, std::string> read_scenario(const char* path)
{
    return attempt(
        [&] { return std::make_shared<const Host>(scenario::load(path ? path : scenario::default_scenario)); });
}

LockedProcess::LockedProcess() : lock_{guarded.mutex} {}

Process* LockedProcess::operator->() const
{
    return &guarded.process;
}

Process::Process()
{
    for (const Signature& signature : signatures())
        operations[signature.name].signature = &signature;
}

Replay* Process::replay()
{
    if (!has_asked_environment_) {
        has_asked_environment_ = true;
        if (const char* path = environment("QDP_HOST_REPLAY")) {
            auto [replay, error] = attempt([&] { return std::make_unique<Replay>(path); });
            if (replay)
                replay->print_truncated_line();
            set_replay(std::move(replay), std::move(error));
        }
    }
    return replay_.get();
}

Host* Process::host()
{
    replay();
    if (!error_.empty())
        return nullptr;
    if (!scenario_ && !scenario_of_environment_) {
        auto [scenario, error] = read_scenario(environment("QDP_HOST_SCENARIO"));
        scenario_of_environment_ = scenario;
        error_ = std::move(error);
    }
    if (!scenario_)
        scenario_ = scenario_of_environment_;
    if (!host_ && scenario_) {
        host_ = *scenario_;
        host_->clock = Clock{};
    }
    return host_ ? &*host_ : nullptr;
}

void Process::set_scenario(std::shared_ptr<const Host> scenario, std::string error)
{
    replay();
    retire_handles();
    host_.reset();
    scenario_ = std::move(scenario);
    error_ = std::move(error);
}

void Process::set_replay(std::unique_ptr<Replay> replay, std::string error)
{
    has_asked_environment_ = true;
    retire_handles();
    replay_ = std::move(replay);
    error_ = std::move(error);
}

void Process::print_error()
{
    if (!is_error_printed_)
        std::fprintf(stderr, "qdp-host: %s\n", error_.c_str());
    is_error_printed_ = true;
}

uint64_t Process::take_snapshot()
{
    const Host* present = replay() ? nullptr : host();
    if (!present)
        return 0;
    snapshots_.emplace(++snapshots_taken_, *present);
    return snapshots_taken_;
}

bool Process::restore(uint64_t snapshot)
{
    const auto found = snapshots_.find(snapshot);
    if (found == snapshots_.end() || replay() || !host())
        return false;
    retire_handles();
    host_ = found->second;
    return true;
}

void Process::forget_texts()
{
    std::erase_if(kept_texts, [](const auto& kept) { return kept.first.first == std::this_thread::get_id(); });
}

void Process::retire_handles()
{
    if (host_ && !host_->loaded->empty())
        retired_.insert(host_->loaded);
    if (replay_)
        retired_.insert(std::shared_ptr<const Replay>{std::move(replay_)});
}

void Process::reset()
{
    for (auto& [name, operation] : operations)
        operation.clear_plans();
    calls.clear();
    is_recording = false;
    own.values.forget_kept();
    retired_.clear();
    host_.reset();
    scenario_.reset();
    replay_.reset();
    error_.clear();
    has_asked_environment_ = false;
}

}  // namespace host
