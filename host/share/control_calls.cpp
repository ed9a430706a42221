// The control interface of a shared host: functions of control.h that clients call by name, in JSON.
#include "host/share/control_calls.h"

#include <unistd.h>

#include <fstream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "host/call/hex.h"
#include "host/control.h"
#include "host/process/process.h"
#include "host/share/connection.h"

namespace host::share {

namespace {

using Json = nlohmann::json;

struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// --- Arguments and results of a function, by their types ---

// An argument for as long as the call lasts.
template <class Parameter>
struct Held {
    explicit Held(const Json& json) : value{json.get<Parameter>()}
    {
        if (!json.is_number_integer() || json != Json(value))
            throw Refusal{json.dump() + " is out of range"};
    }
    Parameter get() const { return value; }
    Parameter value;
};

template <>
struct Held<const char*> {
    explicit Held(const Json& json) : text{json.get<std::string>()} {}
    const char* get() const { return text.c_str(); }
    std::string text;
};

// The path of a file, or null.
struct Path {
    const char* text;
};

template <>
struct Held<Path> {
    explicit Held(const Json& json) : is_null{json.is_null()}, text{is_null ? "" : json.get<std::string>()} {}
    Path get() const { return {is_null ? nullptr : text.c_str()}; }
    bool is_null;
    std::string text;
};

template <>
struct Held<ByteSpan> {
    explicit Held(const Json& json)
    {
        auto found = from_hex(json.get<std::string>());
        if (!found)
            throw Refusal{"expected hexadecimal digits"};
        bytes = std::move(*found);
    }
    ByteSpan get() const { return bytes; }
    Value bytes;
};

template <class Result, class... Parameters>
Json called(Result (*function)(Parameters...), const Json& arguments)
{
    if (!arguments.is_array() || arguments.size() != sizeof...(Parameters))
        throw Refusal{"expected " + std::to_string(sizeof...(Parameters)) + " arguments"};
    return [&]<size_t... i>(std::index_sequence<i...>)->Json
    {
        const std::tuple<Held<Parameters>...> held{Held<Parameters>{arguments[i]}...};
        if constexpr (std::is_void_v<Result>) {
            function(std::get<i>(held).get()...);
            return nullptr;
        } else {
            const Result result = function(std::get<i>(held).get()...);
            if constexpr (std::is_same_v<Result, const char*>)
                return result ? Json(result) : Json();
            else
                return result;
        }
    }
    (std::index_sequence_for<Parameters...>{});
}

template <auto function>
Json call(const Json& arguments)
{
    return called(function, arguments);
}

// --- What clients have taken ---

constexpr size_t most_snapshots = 16;           // of a client
constexpr size_t most_bytes = size_t{1} << 30;  // of the whole process, before it keeps more
constexpr size_t most_recorded = size_t{1} << 28;

struct Taken {
    std::mutex mutex;
    std::map<uint64_t, std::set<uint64_t>> snapshots;  // by client
    uint64_t recording_client = 0;
};

Taken& taken()
{
    static auto& made = *new Taken;
    return made;
}

size_t resident_bytes()
{
    size_t all = 0, resident = 0;
    std::ifstream{"/proc/self/statm"} >> all >> resident;
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

void expect_room()
{
    if (resident_bytes() > most_bytes)
        throw Refusal{"the host holds as much as it may; reset it"};
}

Json snapshot(const Json&, uint64_t client)
{
    expect_room();
    const std::lock_guard lock{taken().mutex};
    auto& own = taken().snapshots[client];
    if (own.size() >= most_snapshots)
        throw Refusal{"a process keeps at most " + std::to_string(most_snapshots) + " snapshots of a shared host"};
    const uint64_t made = qdp_host_snapshot();
    if (made != 0)
        own.insert(made);
    return made;
}

uint64_t own_snapshot(const Json& arguments, uint64_t client)
{
    const auto number = arguments.at(0).get<uint64_t>();
    return taken().snapshots[client].contains(number) ? number : 0;
}

Json restore(const Json& arguments, uint64_t client)
{
    const std::lock_guard lock{taken().mutex};
    return qdp_host_restore(own_snapshot(arguments, client));
}

Json forget(const Json& arguments, uint64_t client)
{
    const std::lock_guard lock{taken().mutex};
    const uint64_t number = own_snapshot(arguments, client);
    taken().snapshots[client].erase(number);
    qdp_host_forget(number);
    return nullptr;
}

Json record(const Json& arguments, uint64_t client)
{
    const bool on = arguments.at(0).get<int>() != 0;
    const std::lock_guard lock{taken().mutex};
    uint64_t& recording = taken().recording_client;
    if (recording != 0 && recording != client)
        throw Refusal{"another process records the calls of this host"};
    recording = on ? client : 0;
    qdp_host_record(on);
    LockedProcess()->recording_room = most_recorded;
    return nullptr;
}

Json calls(const Json&, uint64_t)
{
    if (LockedProcess()->recording_room == 0)
        throw Refusal{"there were more calls than a shared host records"};
    return qdp_host_calls();
}

Json unreleased_values(const Json&, uint64_t)
{
    return num_unreleased_of_clients();
}

// --- The functions ---

int load(Path path)
{
    return qdp_host_load(path.text);
}

int replay(Path path)
{
    return qdp_host_replay(path.text);
}

int script_output(const char* operation, unsigned output, ByteSpan bytes)
{
    return qdp_host_script_output(operation, output, bytes.data(), bytes.size());
}

int script_text(const char* operation, ByteSpan bytes)
{
    return qdp_host_script_text(operation, bytes.data(), bytes.size());
}

template <auto function>
Json shared(const Json& arguments, uint64_t)
{
    return call<function>(arguments);
}

template <auto function>
Json adding(const Json& arguments, uint64_t)
{
    expect_room();
    return call<function>(arguments);
}

using Function = Json (*)(const Json& arguments, uint64_t client);

const std::map<std::string_view, Function> functions{
    {"reset", shared<qdp_host_reset>},
    {"load", shared<load>},
    {"load_text", shared<qdp_host_load_text>},
    {"replay", shared<replay>},
    {"is_replaying", shared<qdp_host_is_replaying>},
    {"error", shared<qdp_host_error>},
    {"scenario", shared<qdp_host_scenario>},
    {"summary", shared<qdp_host_summary>},
    {"snapshot", snapshot},
    {"restore", restore},
    {"forget", forget},
    {"script", adding<qdp_host_script>},
    {"script_output", adding<script_output>},
    {"script_size", adding<qdp_host_script_size>},
    {"script_text", adding<script_text>},
    {"fail", shared<qdp_host_fail>},
    {"delay", shared<qdp_host_delay>},
    {"record", record},
    {"calls", calls},
    {"unreleased_values", unreleased_values},
    {"freeze_time", shared<qdp_host_freeze_time>},
    {"advance_time", shared<qdp_host_advance_time>},
    {"time", shared<qdp_host_time>},
};

}  // namespace

std::string control_reply(std::string_view request, uint64_t client)
{
    Json reply;
    try {
        const Json call = Json::parse(request);
        const auto found = functions.find(call.at("call").get<std::string>());
        if (found == functions.end())
            throw Refusal{"a shared host has no such function"};
        reply["result"] = found->second(call.at("arguments"), client);
    } catch (const std::exception& error) {
        reply = {{"error", error.what()}};
    }
    LockedProcess()->forget_texts();
    std::string text = reply.dump(-1, ' ', true, Json::error_handler_t::replace);
    return text.size() < link::most_answer_bytes / 2 ? text : R"({"error": "the answer is too large"})";
}

void forget_client(uint64_t client)
{
    const std::lock_guard lock{taken().mutex};
    for (const uint64_t snapshot : taken().snapshots[client])
        qdp_host_forget(snapshot);
    taken().snapshots.erase(client);
    if (taken().recording_client == client && client != 0) {
        taken().recording_client = 0;
        qdp_host_record(0);
    }
}

}  // namespace host::share
