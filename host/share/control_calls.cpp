// The control interface of a shared host: functions of control.h that clients call by name, in JSON.
#include "host/share/control_calls.h"

#include <unistd.h>

#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>

#include "host/call/hex.h"
#include "host/call/json.h"
#include "host/control.h"
#include "host/process/process.h"
#include "host/share/connection.h"

namespace host::share {

namespace {

struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The arguments of a request. A reader of one throws a Refusal for a value of another type.
class Request {
public:
    Request(const Json::Array& arguments, uint64_t client) : arguments_{arguments}, client_{client} {}

    uint64_t client() const { return client_; }

    const char* text(size_t i) const
    {
        const std::string* text = arguments_[i].text();
        if (!text)
            refuse(i, "a text");
        return text->c_str();
    }

    const char* text_or_null(size_t i) const { return arguments_[i].is_null() ? nullptr : text(i); }

    Value bytes(size_t i) const
    {
        auto bytes = from_hex(text(i));
        if (!bytes)
            refuse(i, "hexadecimal digits");
        return std::move(*bytes);
    }

    template <std::unsigned_integral Number>
    Number number(size_t i) const
    {
        const uint64_t* number = arguments_[i].natural();
        if (!number || !std::in_range<Number>(*number))
            refuse(i, "a number from 0 to " + std::to_string(std::numeric_limits<Number>::max()));
        return static_cast<Number>(*number);
    }

private:
    [[noreturn]] void refuse(size_t i, const std::string& expected) const
    {
        throw Refusal{"argument " + std::to_string(i + 1) + ": expected " + expected + ", found " +
                      text_of(arguments_[i])};
    }

    const Json::Array& arguments_;
    const uint64_t client_;
};

// --- What clients hold ---

constexpr size_t max_snapshots = 16;                    // of a client
constexpr size_t max_resident_bytes = size_t{1} << 30;  // beyond them, the process stores no more for clients
constexpr size_t max_recorded_bytes = size_t{1} << 28;

struct Holdings {
    std::mutex mutex;
    std::map<uint64_t, std::set<uint64_t>> snapshots;  // by client
    uint64_t recording_client = 0;
};

Holdings& holdings()
{
    static auto& of_all_clients = *new Holdings;
    return of_all_clients;
}

size_t resident_bytes()
{
    size_t all = 0, resident = 0;
    std::ifstream{"/proc/self/statm"} >> all >> resident;
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

void expect_room()
{
    if (resident_bytes() > max_resident_bytes)
        throw Refusal{"the host holds as much as it may; reset it"};
}

Json snapshot(const Request& request)
{
    expect_room();
    const std::lock_guard lock{holdings().mutex};
    auto& own = holdings().snapshots[request.client()];
    if (own.size() >= max_snapshots)
        throw Refusal{"a process keeps at most " + std::to_string(max_snapshots) + " snapshots of a shared host"};
    const uint64_t number = qdp_host_snapshot();
    if (number != 0)
        own.insert(number);
    return number;
}

// The number of a snapshot that the client has taken, or 0.
uint64_t own_snapshot(const Request& request)
{
    const auto number = request.number<uint64_t>(0);
    return holdings().snapshots[request.client()].contains(number) ? number : 0;
}

Json restore(const Request& request)
{
    const std::lock_guard lock{holdings().mutex};
    return qdp_host_restore(own_snapshot(request));
}

Json forget(const Request& request)
{
    const std::lock_guard lock{holdings().mutex};
    const uint64_t number = own_snapshot(request);
    holdings().snapshots[request.client()].erase(number);
    qdp_host_forget(number);
    return {};
}

Json record(const Request& request)
{
    const bool on = request.number<unsigned>(0) != 0;
    const std::lock_guard lock{holdings().mutex};
    uint64_t& recording = holdings().recording_client;
    if (recording != 0 && recording != request.client())
        throw Refusal{"another process records the calls of this host"};
    recording = on ? request.client() : 0;
    qdp_host_record(on);
    LockedProcess()->recording_room = max_recorded_bytes;
    return {};
}

Json text_json(const char* text)
{
    return text ? Json(text) : Json();
}

Json calls(const Request&)
{
    if (LockedProcess()->recording_room == 0)
        throw Refusal{"there were more calls than a shared host records"};
    return text_json(qdp_host_calls());
}

Json script(const Request& request)
{
    expect_room();
    return qdp_host_script(request.text(0), request.number<uint64_t>(1));
}

Json script_output(const Request& request)
{
    expect_room();
    const Value bytes = request.bytes(2);
    return qdp_host_script_output(request.text(0), request.number<unsigned>(1), bytes.data(), bytes.size());
}

Json script_size(const Request& request)
{
    expect_room();
    return qdp_host_script_size(request.text(0), request.number<unsigned>(1), request.number<uint32_t>(2));
}

Json script_text(const Request& request)
{
    expect_room();
    const Value bytes = request.bytes(1);
    return qdp_host_script_text(request.text(0), bytes.data(), bytes.size());
}

Json fail(const Request& request)
{
    return qdp_host_fail(request.text(0), request.number<uint32_t>(1), request.number<unsigned>(2),
                         request.number<unsigned>(3));
}

Json delay(const Request& request)
{
    return qdp_host_delay(request.text(0), request.number<uint64_t>(1), request.number<unsigned>(2),
                          request.number<unsigned>(3));
}

Json advance_time(const Request& request)
{
    qdp_host_advance_time(request.number<uint64_t>(0));
    return {};
}

// --- The functions ---

struct Function {
    size_t num_arguments;
    Json (*answer)(const Request& request);
};

// The result of a function that returns none.
template <void (*function)()>
Json null_after(const Request&)
{
    function();
    return {};
}

const std::map<std::string_view, Function> functions{
    {"reset", {0, null_after<qdp_host_reset>}},
    {"load", {1, [](const Request& request) -> Json { return qdp_host_load(request.text_or_null(0)); }}},
    {"load_text", {1, [](const Request& request) -> Json { return qdp_host_load_text(request.text(0)); }}},
    {"replay", {1, [](const Request& request) -> Json { return qdp_host_replay(request.text_or_null(0)); }}},
    {"is_replaying", {0, [](const Request&) -> Json { return qdp_host_is_replaying(); }}},
    {"error", {0, [](const Request&) { return text_json(qdp_host_error()); }}},
    {"scenario", {0, [](const Request&) { return text_json(qdp_host_scenario()); }}},
    {"summary", {0, [](const Request&) { return text_json(qdp_host_summary()); }}},
    {"snapshot", {0, snapshot}},
    {"restore", {1, restore}},
    {"forget", {1, forget}},
    {"script", {2, script}},
    {"script_output", {3, script_output}},
    {"script_size", {3, script_size}},
    {"script_text", {2, script_text}},
    {"fail", {4, fail}},
    {"delay", {4, delay}},
    {"record", {1, record}},
    {"calls", {0, calls}},
    {"unreleased_values", {0, [](const Request&) -> Json { return num_unreleased_of_clients(); }}},
    {"freeze_time", {0, null_after<qdp_host_freeze_time>}},
    {"advance_time", {1, advance_time}},
    {"time", {0, [](const Request&) -> Json { return qdp_host_time(); }}},
};

Json result_of(std::string_view request, uint64_t client)
{
    const Json call = Json::parsed(std::string{request});
    const Json* name = call.find("call");
    const Json* arguments = call.find("arguments");
    if (!name || !name->text() || !arguments || !arguments->array())
        throw Refusal{"expected a call and its arguments"};
    const auto found = functions.find(*name->text());
    if (found == functions.end())
        throw Refusal{"a shared host has no such function"};
    const Function& function = found->second;
    if (arguments->array()->size() != function.num_arguments)
        throw Refusal{"expected " + std::to_string(function.num_arguments) + " arguments"};
    return function.answer({*arguments->array(), client});
}

}  // namespace

std::string control_reply(std::string_view request, uint64_t client)
{
    Json reply;
    try {
        reply = Json::object({{"result", result_of(request, client)}});
    } catch (const std::exception& error) {
        reply = Json::object({{"error", error.what()}});
    }
    LockedProcess()->forget_texts();
    std::string text = text_of(reply);
    return text.size() < link::max_answer_bytes / 2 ? text : R"({"error": "the answer is too large"})";
}

void forget_client(uint64_t client)
{
    const std::lock_guard lock{holdings().mutex};
    for (const uint64_t snapshot : holdings().snapshots[client])
        qdp_host_forget(snapshot);
    holdings().snapshots.erase(client);
    if (holdings().recording_client == client && client != 0) {
        holdings().recording_client = 0;
        qdp_host_record(0);
    }
}

}  // namespace host::share
