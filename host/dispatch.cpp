// Dispatch of the calls: scripted answers and failures first, then the answer from a capture or from the state; and the
// control interface.
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "host/capture/replay.h"
#include "host/control.h"
#include "host/hex.h"
#include "host/host.h"
#include "host/operation.h"

namespace host {

namespace {

using Json = nlohmann::json;

// Of the process. Its parts outlive a reset: the stand-ins keep references to operations.
struct Process {
    std::recursive_mutex mutex;
    std::map<std::string, std::unique_ptr<Operation>, std::less<>> operations;
    bool is_recording = false;
    std::vector<Json> calls;
    std::deque<Value> kept;  // bytes of scripted answers that a caller may still look at
    std::set<void*> values_out;
};

Process& process()
{
    static auto* process = new Process;  // never destroyed: calls may come at any time before the process ends
    return *process;
}

Operation& operation_named(std::string_view name)
{
    auto& operations = process().operations;
    auto found = operations.find(name);
    if (found == operations.end()) {
        found = operations.emplace(name, std::make_unique<Operation>()).first;
        found->second->name = name;
    }
    return *found->second;
}

// An operation that can be scripted, or null.
Operation* known_operation(const char* name)
{
    const auto found = process().operations.find(name);
    return found == process().operations.end() ? nullptr : found->second.get();
}

Json described(const Argument& argument)
{
    switch (argument.kind) {
    case Argument::Kind::value:
        return argument.value;
    case Argument::Kind::text:
        return argument.value ? Json(reinterpret_cast<const char*>(argument.value)) : Json();
    case Argument::Kind::bytes:
        return argument.value ? Json{{"bytes", hex(argument.bytes)}} : Json();
    case Argument::Kind::output:
        return Json{{"capacity", argument.output.size_word ? *argument.output.size_word : argument.output.capacity},
                    {"is_null", argument.value == 0}};
    case Argument::Kind::value_output:
        return Json{{"capacity", 0}, {"is_null", argument.value == 0}};
    }
    return {};
}

void record_call(const Operation& operation, std::initializer_list<Argument> arguments)
{
    Json described_arguments = Json::array();
    for (const Argument& argument : arguments)
        described_arguments.push_back(described(argument));
    process().calls.push_back({{"operation", operation.name}, {"arguments", described_arguments}});
}

// The status of a failure that is due, if one is.
std::optional<uint32_t> due_failure(Operation& operation)
{
    if (operation.failure && operation.failure->calls.take())
        return operation.failure->status;
    return std::nullopt;
}

// Other threads have calls of their own while time passes.
void wait_if_due(Operation& operation, std::unique_lock<std::recursive_mutex>& lock)
{
    if (!operation.delay || !operation.delay->calls.take())
        return;
    const auto time = operation.delay->time;
    lock.unlock();
    std::this_thread::sleep_for(time);
    lock.lock();
}

uint64_t play(Operation& operation, std::initializer_list<Argument> arguments)
{
    ScriptedAnswer answer = std::move(operation.script.front());
    operation.script.pop_front();

    if (answer.result_is_text)
        return reinterpret_cast<uint64_t>(process().kept.emplace_back(std::move(answer.outputs[0].bytes)).data());

    unsigned index = 0;
    for (const Argument& argument : arguments) {
        if (argument.kind != Argument::Kind::output && argument.kind != Argument::Kind::value_output)
            continue;
        const ScriptedOutput& scripted = answer.outputs[index++];
        if (argument.kind == Argument::Kind::output) {
            argument.output.write(0, scripted.bytes);
            if (scripted.is_set)
                argument.output.reported(scripted.bytes.size());
            if (scripted.size)
                argument.output.reported(*scripted.size);
        } else {
            if (scripted.is_set)
                hand_out(argument.handed, scripted.bytes);
            if (scripted.size && argument.handed.length)
                *argument.handed.length = *scripted.size;
        }
    }
    return answer.result;
}

}  // namespace

Operation& operation(const char* name, bool returns_pointer)
{
    const std::lock_guard lock{process().mutex};
    Operation& named = operation_named(name);
    named.returns_pointer = returns_pointer;
    return named;
}

uint64_t dispatch(Operation& operation, std::initializer_list<Argument> arguments)
{
    std::unique_lock lock{process().mutex};
    wait_if_due(operation, lock);
    if (process().is_recording)
        record_call(operation, arguments);
    if (const auto status = due_failure(operation))
        return operation.failed(*status);
    if (!operation.script.empty())
        return play(operation, arguments);
    Replay* replay = loaded_replay();
    Host* host = replay ? nullptr : loaded_host();
    if (!replay && !host) {
        tell_error();
        return operation.failed(refused);
    }
    try {
        if (replay)
            return replay->answer(operation.name, operation.returns_pointer, arguments);
        if (operation.handler && operation.parameters == arguments.size())
            return operation.handler(operation.function, *host, arguments);
    } catch (...) {  // callers are C
    }
    return operation.failed(refused);
}

Answer::Answer(const char* name, size_t parameters, void (*function)(), Handler handler)
{
    Operation& operation = operation_named(name);
    operation.parameters = parameters;
    operation.function = function;
    operation.handler = handler;
}

bool is_operation(std::string_view name)
{
    const auto found = process().operations.find(name);
    return found != process().operations.end() && found->second->handler;
}

void hand_out(const ValueOutput& output, ByteSpan value)
{
    void* memory;
    if (output.owner == ValueOutput::Owner::library) {
        Value& kept = process().kept.emplace_back();
        kept.reserve(std::max<size_t>(value.size(), 1));  // an empty value has a place too
        kept.assign(value.begin(), value.end());
        memory = kept.data();
    } else {
        memory = std::malloc(value.empty() ? 1 : value.size());  // exactly as long, so that an overread is found
        if (memory && !value.empty())
            std::memcpy(memory, value.data(), value.size());
        if (output.owner == ValueOutput::Owner::released)
            process().values_out.insert(memory);
    }
    *output.pointer = memory;
    if (output.length)
        *output.length = static_cast<uint32_t>(value.size());
}

void release(void* value)
{
    // A pointer that was not handed out, or was released before, is an error of the caller: let it crash there.
    if (value && process().values_out.erase(value) == 0)
        std::abort();
    std::free(value);
}

}  // namespace host

using namespace host;

void qdp_host_reset(void)
{
    const std::lock_guard lock{process().mutex};
    for (auto& [name, operation] : process().operations) {
        operation->script.clear();
        operation->failure.reset();
        operation->delay.reset();
    }
    process().calls.clear();
    process().is_recording = false;
    process().kept.clear();
    reset_host();
}

namespace {

// Changes an operation. -1 when none has the name, or when `change` says that there is nothing to change.
template <class Change>
int change_operation(const char* name, Change change)
{
    const std::lock_guard lock{process().mutex};
    Operation* operation = known_operation(name);
    return operation && change(*operation) ? 0 : -1;
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

void set_output(ScriptedOutput& output, const void* bytes, size_t size)
{
    output.bytes = value_of(ByteSpan{static_cast<const std::byte*>(bytes), size});
    output.is_set = true;
}

}  // namespace

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
    const std::lock_guard lock{process().mutex};
    process().calls.clear();
    process().is_recording = on != 0;
}

const char* qdp_host_calls(void)
{
    const std::lock_guard lock{process().mutex};
    static std::string text;
    text = Json(process().calls).dump(-1, ' ', true, Json::error_handler_t::replace);
    return text.c_str();
}

const char* qdp_host_operations(void)
{
    const std::lock_guard lock{process().mutex};
    static std::string text;
    Json names = Json::array();
    for (const auto& [name, operation] : process().operations)
        if (operation->handler)
            names.push_back(name);
    text = names.dump();
    return text.c_str();
}

size_t qdp_host_values_out(void)
{
    const std::lock_guard lock{process().mutex};
    return process().values_out.size();
}

void qdp_host_freeze_time(void)
{
    const std::lock_guard lock{process().mutex};
    if (Host* present = loaded_host())
        present->clock.freeze();
}

void qdp_host_advance_time(uint64_t nanoseconds)
{
    const std::lock_guard lock{process().mutex};
    if (Host* present = loaded_host())
        present->clock.advance(nanoseconds);
}
