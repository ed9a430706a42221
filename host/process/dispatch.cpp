// Dispatch of calls: planned delays, failures and scripted answers first, then the capture or the state.
#include <thread>

#include "host/call/hex.h"
#include "host/link/shared_host.h"
#include "host/process/process.h"
#include "platform/switch_state.h"

namespace host {

namespace {

Json bytes_json(ByteSpan bytes)
{
    return Json::object({{"bytes", hex(bytes)}});
}

// An argument as the caller passes it.
Json argument_json(const Argument& argument)
{
    switch (argument.kind) {
    case Argument::Kind::value:
        return argument.value;
    case Argument::Kind::text:
        return argument.value ? Json(reinterpret_cast<const char*>(argument.value)) : Json();
    case Argument::Kind::bytes:
        return argument.value ? bytes_json(argument.bytes) : Json();
    case Argument::Kind::output:
        return Json::object(
            {{"capacity", argument.output.size_word ? *argument.output.size_word : argument.output.capacity},
             {"is_null", argument.value == 0}});
    case Argument::Kind::value_output:
        return Json::object({{"capacity", 0}, {"is_null", argument.value == 0}});
    }
    return {};
}

// The bytes of an output after the call, as many as its size word says and its buffer has; null without a buffer. A
// scripted size may be greater than the buffer, and a scripted answer may leave the size word unchanged.
Json output_json(const Argument& argument, const Values& values)
{
    if (argument.kind == Argument::Kind::output) {
        const Output& output = argument.output;
        if (!output.data)
            return {};
        return bytes_json(
            {output.data, std::min(output.size_word ? *output.size_word : output.capacity, output.capacity)});
    }
    const auto value = values.value_put(argument.value_output);
    if (!value || !argument.value_output.length)
        return {};
    return bytes_json(value->first(std::min<size_t>(*argument.value_output.length, value->size())));
}

Json arguments_json(Arguments arguments)
{
    Json all = Json::list({});
    for (const Argument& argument : arguments)
        all.add(argument_json(argument));
    return all;
}

bool is_output(const Argument& argument)
{
    return argument.kind == Argument::Kind::output || argument.kind == Argument::Kind::value_output;
}

// A failed call has written nothing that its caller may look at.
Json outputs_json(Arguments arguments, const Values& values, bool is_success)
{
    Json all = Json::list({});
    for (const Argument& argument : arguments)
        if (is_output(argument))
            all.add(is_success ? output_json(argument, values) : Json());
    return all;
}

Json result_json(const Signature& signature, uint64_t result, const Values& values)
{
    switch (signature.result) {
    case ResultKind::none:
        return {};
    case ResultKind::status:
        return static_cast<uint32_t>(result);
    case ResultKind::text:
        return result ? bytes_json(std::as_bytes(std::span{values.text_at(reinterpret_cast<const char*>(result))}))
                      : Json();
    case ResultKind::handle:
        return result;
    }
    return {};
}

// The lock is free during a delay: calls of other threads proceed.
void wait_if_planned(Operation& operation, LockedProcess& process)
{
    if (!operation.delay || !operation.delay->calls.take())
        return;
    const auto time = operation.delay->time;
    process.unlock();
    std::this_thread::sleep_for(time);
    process.lock();
}

void put_scripted(const Argument& argument, const ScriptedOutput& scripted, Values& values)
{
    if (argument.kind == Argument::Kind::output) {
        argument.output.write(0, scripted.bytes);
        if (scripted.is_set)
            argument.output.set_size(scripted.bytes.size());
        if (scripted.size)
            argument.output.set_size(*scripted.size);
    } else {
        if (scripted.is_set)
            values.put(argument.value_output, scripted.bytes);
        if (scripted.size && argument.value_output.length)
            *argument.value_output.length = *scripted.size;
    }
}

uint64_t scripted_answer(Operation& operation, Arguments arguments, Values& values)
{
    ScriptedAnswer answer = std::move(operation.script.front());
    operation.script.pop_front();
    if (answer.result_is_text)
        return word_of(values.keep(std::move(answer.outputs[0].bytes)).data());

    unsigned index = 0;
    for (const Argument& argument : arguments)
        if (is_output(argument))
            put_scripted(argument, answer.outputs[index++], values);
    return answer.result;
}

// The caller's snapshot of the switches in the place of the host's own, for one answer.
class SnapshotOfCaller {
public:
    SnapshotOfCaller(Host& host, Caller& caller) : host_{host}, caller_{caller} { exchange(); }
    ~SnapshotOfCaller() { exchange(); }

private:
    void exchange()
    {
        if (caller_.loaded)
            host_.loaded.swap(caller_.loaded);
    }

    Host& host_;
    Caller& caller_;
};

// Whether a caller from another process gives only handles that its snapshot has.
bool has_handles(const LoadedSwitches& loaded, const Signature& signature, Arguments arguments)
{
    size_t parameter = 0;
    for (const Argument& argument : arguments) {
        const ObjectKind kind = signature.objects[parameter];
        const auto* handle = reinterpret_cast<const void*>(argument.value);
        if (argument.meaning == Argument::Meaning::handle && argument.kind == Argument::Kind::value &&
            !(kind == &kind_of_object<DVSSwitch> ? has_switch(loaded, handle) : has_property(loaded, handle)))
            return false;
        parameter += argument.second_parameter ? 2 : 1;
    }
    return true;
}

// The answer of the capture, or else of the state.
uint64_t source_answer(Operation& operation, Arguments arguments, LockedProcess& process, Caller& caller, Walk& walk)
{
    if (Replay* replay = process->replay())
        return replay->answer(*operation.signature, arguments, caller.values, walk.handles);
    Host* host = process->host();
    if (!host) {
        process->print_error();
        return operation.failed(status_refused);
    }
    if (caller.loaded && !has_handles(*caller.loaded, *operation.signature, arguments))
        return operation.failed(status_refused);
    const SnapshotOfCaller snapshot{*host, caller};
    return (*operation.answer)(*host, arguments, {caller.values, walk});
}

// Callers are C functions, which no exception may pass.
uint64_t planned_answer(Operation& operation, Arguments arguments, LockedProcess& process, Caller& caller, Walk& walk)
{
    if (operation.failure && operation.failure->calls.take())
        return operation.failed(operation.failure->status);
    try {
        if (!operation.script.empty())
            return scripted_answer(operation, arguments, caller.values);
        return source_answer(operation, arguments, process, caller, walk);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qdp-host: %s: the answer failed: %s\n", operation.signature->name.data(), error.what());
        return operation.failed(status_refused);
    }
}

// Calls the caller's function for each handle until it returns something else than 0. The lock is free: the function
// makes calls of its own.
void run(const Walk& walk, Arguments arguments)
{
    const auto called = std::ranges::find(arguments, Argument::Meaning::callback, &Argument::meaning);
    if (called == arguments.end() || called->value == 0)
        return;
    const auto callback = reinterpret_cast<uint32_t (*)(void* handle, void* context)>(called->value);
    auto* context = reinterpret_cast<void*>(called[1].value);
    for (void* handle : walk.handles)
        if (callback(handle, context) != 0)
            return;
}

void keep_call(Process& process, Json call, Arguments arguments)
{
    size_t size = 1024;  // about what a call without buffers takes
    for (const Argument& argument : arguments)
        size += 2 * (argument.bytes.size() + argument.output.capacity);
    process.recording_room -= std::min(process.recording_room, size);
    if (process.recording_room == 0)
        process.is_recording = false;
    else
        process.calls.push_back(std::move(call));
}

}  // namespace

Operation& operation(const Signature& signature)
{
    const LockedProcess process;
    Operation& operation = process->operations.at(signature.name);
    operation.answer = answer_of(signature.name);
    return operation;
}

uint64_t answer(LockedProcess& process, Operation& operation, Arguments arguments, Caller& caller, Walk& walk)
{
    wait_if_planned(operation, process);
    Json call;
    if (process->is_recording)
        call = Json::object({{"operation", operation.signature->name}, {"arguments", arguments_json(arguments)}});
    caller.values.begin_call();
    const uint64_t result = planned_answer(operation, arguments, process, caller, walk);
    if (!call.is_null()) {
        const bool is_success = operation.signature->result != ResultKind::status || result == status_success;
        call.append("result", result_json(*operation.signature, result, caller.values));
        call.append("outputs", outputs_json(arguments, caller.values, is_success));
        keep_call(*process.operator->(), std::move(call), arguments);
    }
    return result;
}

uint64_t dispatch(Operation& operation, Arguments arguments)
{
    Walk walk;
    uint64_t result;
    if (SharedHost* shared = SharedHost::of_this_process()) {
        result = shared->call(*operation.signature, arguments, walk.handles);
    } else {
        LockedProcess process;
        result = answer(process, operation, arguments, process->own, walk);
    }
    run(walk, arguments);
    return result;
}

}  // namespace host
