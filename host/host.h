// The state of the embedded host: its switches with their ports and properties, and its clock.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/call.h"
#include "host/shares.h"
#include "host/state/balancer.h"
#include "host/state/features.h"
#include "host/state/flow_caches.h"
#include "host/state/hardware_tables.h"
#include "host/state/mac_tables.h"
#include "host/state/pipeline.h"
#include "host/state/placement.h"
#include "host/state/port_settings.h"
#include "host/state/rss_engines.h"
#include "host/state/smartnic.h"
#include "host/state/timing.h"
#include "host/state/uplinks.h"
#include "platform/ports.h"
#include "platform/stats.h"

namespace host {

using Value = std::vector<std::byte>;
using Properties = std::map<std::string, Value, std::less<>>;

inline constexpr uint64_t nanoseconds_a_second = 1'000'000'000;

// Time since the host came up, which was an hour before the process began: its counters have a past. Real until a test
// freezes it, which is at a full second, so that counters are the same in every process that freezes it at once.
class Clock {
public:
    Clock();
    uint64_t nanoseconds() const;
    void freeze();
    void advance(uint64_t nanoseconds);

    // What a counter that grows by `per_second` has reached; and one that began at a later time, in nanoseconds.
    uint64_t grown(uint64_t per_second, uint64_t since = 0) const;

private:
    uint64_t start_;
    std::optional<uint64_t> frozen_;
};

// The flows that an uplink's NIC has taken over, and how many it takes over a second.
struct UplinkOffload {
    uint32_t flows;
    uint64_t flow_rate;
};

struct Port {
    std::string name;
    PortListEntry entry{};
    Traffic tx{}, rx{};
    std::vector<uint64_t> tx_queue_rates, rx_queue_rates;  // packets a second of each queue; empty: shared evenly
    Properties data;                                       // that the host kernel keeps for it
    PortSetting setting;
    std::optional<uint32_t> lro;                   // unless it is as the switch says
    std::vector<ReceiveFilter> filters;            // of a vNIC
    std::vector<RSSEngine> rss_engines;            // of an uplink, as is the rest
    std::vector<PrivateCounter> private_counters;  // none when the driver has none
    UplinkOffload offload{};
};

// Whether the port is of this client type.
inline bool is_a(const Port& port, ClientType client)
{
    return port.entry.client_type == static_cast<uint32_t>(client);
}

// What the switch state library knows of a switch.
struct SwitchConfig {
    std::string alias;
    std::string id;
    std::string class_name;
    Properties host_properties;
    Properties global_properties;
};

struct LoadedSwitch : SwitchConfig {
    std::string readable_id;  // callers read an id as a buffer of switch_id_bytes
};

struct Switch {
    SwitchConfig config;
    std::optional<SwitchListEntry> entry;  // of a switch of the datapath, as is the rest
    std::vector<Port> ports;
    SwitchSetting setting;
    SwitchFeatures features;
    SwitchBalancer balancer;
    MacTable mac_table;
};

struct Host {
    Clock clock;
    std::vector<Switch> switches;

    // The switch state library's snapshot; empty until a configuration is loaded into it.
    std::vector<LoadedSwitch> loaded;

    FlowCaches flow_caches;
    Placement placement;
    bool balancer_is_automatic = false;  // it then moves ports' queues and filters alone
    Timing timing;
    L3SpanRecords l3span_records;
    SmartNic smartnic;
    Pipeline pipeline;
    HardwareTables hardware_tables;

    // Null when the host has no such object.
    Switch* datapath_switch(uint32_t switch_number);
    Port* port(uint32_t switch_number, uint32_t port);
    Switch* switch_by_id(std::string_view id);
    Switch* switch_by_portset(std::string_view portset_name);
};

// The port of a switch with this number, or null.
const Port* find_port(const Switch& owner, uint32_t number);

// What answers in this process: a capture, or else a host. Both null when it could not be read, which is told once.
class Replay;
Replay* loaded_replay();
Host* loaded_host();
void tell_error();

// Puts it back to what the environment says.
void reset_host();

Value value_of(ByteSpan bytes);
Value value_of(std::string_view text);  // its NUL included

// --- Answers ---

using Handler = uint64_t (*)(void (*answer)(), Host& host, std::initializer_list<Argument> arguments);

// A function that answers an operation from the state, registered under the operation's name:
//
//     uint32_t get_switch_list(Host& host, Output list);
//     const Answer answers[] = {{"Qdp_Get_Switch_List", get_switch_list}};
//
// Its parameters after the host are the operation's arguments in the order of the operations table; a buffer and its
// size word are one Output.
class Answer {
public:
    template <class Result, class... Parameters>
    Answer(const char* name, Result (*function)(Host&, Parameters...))
        : Answer{name, sizeof...(Parameters), reinterpret_cast<void (*)()>(function), call<Result, Parameters...>}
    {
    }

private:
    Answer(const char* name, size_t parameters, void (*function)(), Handler handler);

    template <class Result, class... Parameters>
    static uint64_t call(void (*function)(), Host& host, std::initializer_list<Argument> arguments)
    {
        return [&]<size_t... i>(std::index_sequence<i...>)->uint64_t
        {
            const auto typed = reinterpret_cast<Result (*)(Host&, Parameters...)>(function);
            [[maybe_unused]] const Argument* argument = arguments.begin();
            if constexpr (std::is_void_v<Result>) {
                typed(host, argument_as<Parameters>(argument[i])...);
                return 0;
            } else if constexpr (std::is_pointer_v<Result>) {
                return reinterpret_cast<uint64_t>(typed(host, argument_as<Parameters>(argument[i])...));
            } else {
                return typed(host, argument_as<Parameters>(argument[i])...);
            }
        }
        (std::index_sequence_for<Parameters...>{});
    }
};

// Whether the platform has an operation of this name.
bool is_operation(std::string_view name);

// Hands a value out as the operation's contract says; the switch state library takes its own back with release.
void hand_out(const ValueOutput& output, ByteSpan value);
void release(void* value);

}  // namespace host
