// The control interface of the embedded host.
#include "host/control.h"

#include <thread>

#include "host/process/process.h"
#include "host/scenario/built_in.h"
#include "host/scenario/scenario.h"

using namespace host;

namespace {

// A text for a caller in C, which stays valid until the same thread calls the same function again.
const char* keep_text(const char* function, std::string text)
{
    const LockedProcess process;
    std::string& kept = process->kept_texts[{std::this_thread::get_id(), function}];
    kept = std::move(text);
    return kept.c_str();
}

// The text that `make` returns; null when memory fails.
template <class Make>
const char* text_or_null(const char* function, Make make)
{
    try {
        return keep_text(function, make());
    } catch (const std::exception&) {
        return nullptr;
    }
}

// A text about the state of the host, or null when a capture answers, or nothing does.
template <class Make>
const char* state_text(const char* function, Make make)
{
    std::optional<Host> present;
    {
        const LockedProcess process;
        if (!process->replay() && process->host())
            present = *process->host();
    }
    return present ? text_or_null(function, [&] { return make(*present); }) : nullptr;
}

// Changes an operation. -1 when none has the name, or when `change` refuses.
template <class Change>
int change_operation(const char* name, Change change)
{
    const LockedProcess process;
    const auto found = process->operations.find(name);
    return found != process->operations.end() && change(found->second) ? 0 : -1;
}

// Changes the answer of an operation that was scripted last.
template <class Change>
int change_last_answer(const char* name, Change change)
{
    return change_operation(name, [&](Operation& operation) {
        if (operation.script.empty())
            return false;
        change(operation.script.back());
        return true;
    });
}

int set_scenario(std::pair<std::shared_ptr<const Host>, std::string> read)
{
    const bool is_valid = read.first != nullptr;
    LockedProcess()->set_scenario(std::move(read.first), std::move(read.second));
    return is_valid ? 0 : -1;
}

void set_output(ScriptedOutput& output, const void* bytes, size_t size)
{
    output.bytes = value_of(ByteSpan{static_cast<const std::byte*>(bytes), size});
    output.is_set = true;
}

}  // namespace

void qdp_host_reset(void)
{
    LockedProcess()->reset();
}

// --- What answers ---

int qdp_host_load(const char* path)
{
    return set_scenario(read_scenario(path));
}

int qdp_host_load_text(const char* text)
{
    return set_scenario(attempt([&] { return std::make_shared<const Host>(scenario::load_text(text)); }));
}

int qdp_host_replay(const char* path)
{
    std::unique_ptr<Replay> replay;
    std::string error;
    if (path)
        std::tie(replay, error) = attempt([&] { return std::make_unique<Replay>(path); });
    const bool is_valid = error.empty();
    if (replay)
        replay->print_truncated_line();
    LockedProcess()->set_replay(std::move(replay), std::move(error));
    return is_valid ? 0 : -1;
}

const char* qdp_host_check_capture(const char* path)
{
    const std::string error = attempt([&] { return std::make_unique<Replay>(path); }).second;
    return error.empty() ? nullptr : keep_text(__func__, error);
}

int qdp_host_is_replaying(void)
{
    return LockedProcess()->replay() != nullptr;
}

const char* qdp_host_error(void)
{
    std::string error;
    {
        const LockedProcess process;
        if (!process->replay())
            process->host();
        error = process->error();
    }
    return error.empty() ? nullptr : keep_text(__func__, error);
}

const char* qdp_host_scenario(void)
{
    return state_text(__func__, scenario::to_text);
}

const char* qdp_host_version(void)
{
    return scenario::version;
}

const char* qdp_host_check(const char* path)
{
    try {
        scenario::check(path);
        return nullptr;
    } catch (const std::exception& error) {
        return keep_text(__func__, error.what());
    }
}

const char* qdp_host_completed(const char* path, int* is_valid)
{
    *is_valid = 1;
    try {
        return keep_text(__func__, scenario::with_defaults(path));
    } catch (const std::exception& error) {
        *is_valid = 0;
        return keep_text(__func__, error.what());
    }
}

const char* qdp_host_summary(void)
{
    return state_text(__func__, scenario::summary);
}

uint64_t qdp_host_snapshot(void)
{
    return LockedProcess()->take_snapshot();
}

int qdp_host_restore(uint64_t snapshot)
{
    return LockedProcess()->restore(snapshot) ? 0 : -1;
}

void qdp_host_forget(uint64_t snapshot)
{
    LockedProcess()->forget(snapshot);
}

void qdp_host_freeze_time(void)
{
    const LockedProcess process;
    if (Host* present = process->host())
        present->clock.freeze();
}

void qdp_host_advance_time(uint64_t nanoseconds)
{
    const LockedProcess process;
    if (Host* present = process->host())
        present->clock.advance(nanoseconds);
}

uint64_t qdp_host_time(void)
{
    const LockedProcess process;
    const Host* present = process->replay() ? nullptr : process->host();
    return present ? present->clock.nanoseconds() : 0;
}

// --- Operations ---

const char* qdp_host_operations(void)
{
    std::vector<std::string_view> names;
    for (const Signature& signature : signatures())
        if (answer_of(signature.name))
            names.push_back(signature.name);
    std::ranges::sort(names);
    return text_or_null(__func__, [&] { return text_of(Json::Array(names.begin(), names.end())); });
}

const char* qdp_host_operation(const char* name)
{
    constexpr const char* results[] = {"none", "status", "text", "handle"};
    const Signature* signature = find_signature(name);
    if (!signature)
        return nullptr;
    const Json description = Json::object({{"result", results[static_cast<size_t>(signature->result)]},
                                           {"outputs", std::ranges::count_if(signature->roles(), is_output)}});
    return text_or_null(__func__, [&] { return text_of(description); });
}

int qdp_host_script(const char* name, uint64_t result)
{
    return change_operation(name, [&](Operation& operation) {
        operation.script.push_back({result, {}});
        return true;
    });
}

int qdp_host_script_output(const char* name, unsigned output, const void* bytes, size_t size)
{
    return change_last_answer(name, [&](ScriptedAnswer& answer) { set_output(answer.outputs[output], bytes, size); });
}

int qdp_host_script_size(const char* name, unsigned output, uint32_t size)
{
    return change_last_answer(name, [&](ScriptedAnswer& answer) { answer.outputs[output].size = size; });
}

int qdp_host_script_text(const char* name, const void* bytes, size_t size)
{
    return change_last_answer(name, [&](ScriptedAnswer& answer) {
        set_output(answer.outputs[0], bytes, size);
        answer.result_is_text = true;
    });
}

int qdp_host_fail(const char* name, uint32_t status, unsigned nth, unsigned times)
{
    return change_operation(name, [&](Operation& operation) {
        operation.failure = Failure{status, {nth, times}};
        return true;
    });
}

int qdp_host_delay(const char* name, uint64_t nanoseconds, unsigned nth, unsigned times)
{
    return change_operation(name, [&](Operation& operation) {
        operation.delay = Delay{std::chrono::nanoseconds{nanoseconds}, {nth, times}};
        return true;
    });
}

void qdp_host_record(int on)
{
    const LockedProcess process;
    process->calls.clear();
    process->is_recording = on != 0;
}

const char* qdp_host_calls(void)
{
    std::vector<Json> calls;
    {
        const LockedProcess process;
        calls = process->calls;
    }
    return text_or_null(__func__, [&] { return text_of(std::move(calls)); });
}

size_t qdp_host_unreleased_values(void)
{
    return LockedProcess()->own.values.num_unreleased();
}
