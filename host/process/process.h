// The embedded host of this process: what answers, the operations and what tests have planned for them, and one lock.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "host/call/json.h"
#include "host/call/values.h"
#include "host/capture/replay.h"
#include "host/process/operation.h"
#include "host/state/host.h"

namespace host {

// The result of `read` and an empty text; or null and the message of the exception that it threw.
template <class Read>
auto attempt(Read read) -> std::pair<decltype(read()), std::string>
{
    try {
        return std::make_pair(read(), std::string{});
    } catch (const std::exception& error) {
        return std::make_pair(nullptr, error.what());
    }
}

// Reads a scenario file; null is the default scenario.
std::pair<std::shared_ptr<const Host>, std::string> read_scenario(const char* path);

// A calling process: the values that it holds, and its snapshot of the switches.
struct Caller {
    Values values;
    std::shared_ptr<const LoadedSwitches> loaded;  // null: this process, which has the snapshot of its host
};

// All of it is reached through LockedProcess alone.
class Process {
public:
    Process();

    // The capture that answers, or else the host. The first call, and the first after each reset, reads the
    // environment. Both are null when neither could be read; error() then says why.
    Replay* replay();
    Host* host();
    const std::string& error() const { return error_; }

    // Replaces what answers by a scenario or a capture; null with an error leaves nothing that answers.
    void set_scenario(std::shared_ptr<const Host> scenario, std::string error);
    void set_replay(std::unique_ptr<Replay> replay, std::string error);

    // Prints the error, once a process.
    void print_error();

    uint64_t take_snapshot();
    bool restore(uint64_t snapshot);
    void forget(uint64_t snapshot) { snapshots_.erase(snapshot); }

    void reset();

    // Forgets the texts that this thread has kept.
    void forget_texts();

    std::map<std::string_view, Operation> operations;
    Caller own;
    bool is_recording = false;
    std::vector<Json> calls;
    size_t recording_room = SIZE_MAX;  // for the bytes of further calls; without any, recording ends

    // Texts that callers in C look at, by thread and function.
    std::map<std::pair<std::thread::id, std::string>, std::string> kept_texts;

private:
    void retire_handles();

    std::shared_ptr<const Host> scenario_of_environment_;
    std::shared_ptr<const Host> scenario_;  // as it was read
    std::optional<Host> host_;              // as it stands
    std::unique_ptr<Replay> replay_;
    bool has_asked_environment_ = false;
    std::string error_;
    bool is_error_printed_ = false;

    std::map<uint64_t, Host> snapshots_;
    uint64_t snapshots_taken_ = 0;

    // Answers whose handles and texts callers may still hold: those of hosts and captures that were replaced.
    std::set<std::shared_ptr<const void>> retired_;
};

// The process's host, for as long as the lock is held. Callers' code never runs under it.
class LockedProcess {
public:
    LockedProcess();
    Process* operator->() const;

    void unlock() { lock_.unlock(); }
    void lock() { lock_.lock(); }

private:
    std::unique_lock<std::mutex> lock_;
};

// Answers one call: delays, failures and scripted answers that are planned for it first, then the capture or the state.
// The handles of a walk are in `walk`; its callback is not called.
uint64_t answer(LockedProcess& process, Operation& operation, Arguments arguments, Caller& caller, Walk& walk);

}  // namespace host
