// The receive-side scaling engines of the uplinks, and the encapsulations of mirrored (L3 SPAN) traffic.
#include "host/state/rss_engines.h"

#include <arpa/inet.h>

#include "host/host.h"

namespace host {

namespace {

constexpr uint32_t toeplitz = 1;
constexpr uint32_t over_ip_and_ports = 0x3f;

// An engine over `count` queues from `first` on; the first one is its primary queue.
RSSEngine engine(uint32_t id, RSSEngineType type, uint32_t first, uint32_t count, uint32_t affinity)
{
    RSSEngine made{};
    made.id = id;
    made.type = static_cast<uint32_t>(type);
    made.primary_queue = first;
    made.num_queues = count - 1;
    made.hash_function = toeplitz;
    made.hash_type = over_ip_and_ports;
    made.key_size = 40;
    made.indirection_size = 128;
    for (uint32_t i = 0; i < made.num_queues; ++i)
        made.queues[i] = static_cast<uint16_t>(first + 1 + i);
    made.affinity = affinity;
    return made;
}

// An address from its text, in network byte order; what follows an IPv4 address is zero.
std::array<uint8_t, 16> address(const char* text)
{
    std::array<uint8_t, 16> made{};
    if (inet_pton(AF_INET, text, made.data()) != 1)
        inet_pton(AF_INET6, text, made.data());
    return made;
}

bool is_ipv6(const char* text)
{
    return std::strchr(text, ':') != nullptr;
}

// MAC addresses of the two ends, and their addresses.
L3SPANEncapsulation encapsulation(uint8_t number, const char* source, const char* destination)
{
    L3SPANEncapsulation made{{0x02, 0x1b, 0x21, 0xe0, 0x02, number}, {0x02, 0x1b, 0x21, 0xe0, 0x01, number}, {}, {}};
    const auto from = address(source), to = address(destination);
    if (is_ipv6(source)) {
        std::memcpy(made.addresses.ipv6.source, from.data(), sizeof made.addresses.ipv6.source);
        std::memcpy(made.addresses.ipv6.destination, to.data(), sizeof made.addresses.ipv6.destination);
    } else {
        std::memcpy(made.addresses.ipv4.source, from.data(), sizeof made.addresses.ipv4.source);
        std::memcpy(made.addresses.ipv4.destination, to.data(), sizeof made.addresses.ipv4.destination);
    }
    return made;
}

struct Tunnel {
    const char* source;
    const char* destination;
};

L3SPANRecord record(uint32_t port, uint8_t number, const Tunnel* geneve, const Tunnel& gre)
{
    L3SPANRecord made{};
    made.source_port = port;
    made.mtu = 1500;
    made.destination_port = 6081;
    made.is_valid = 1;
    made.is_geneve = geneve != nullptr;
    if (geneve) {
        made.geneve_is_ipv6 = is_ipv6(geneve->source);
        made.geneve = encapsulation(number, geneve->source, geneve->destination);
    }
    made.gre_is_ipv6 = is_ipv6(gre.source);
    made.gre = encapsulation(static_cast<uint8_t>(number + 1), gre.source, gre.destination);
    return made;
}

}  // namespace

std::vector<RSSEngine> usual_rss_engines(const Port& uplink)
{
    const uint32_t affinity = uplink.entry.port % 2;
    return {
        engine(1, RSSEngineType::default_engine, 0, 4, affinity),
        engine(2, RSSEngineType::device, 4, 2, affinity),
        engine(3, RSSEngineType::shared, 6, 1, affinity),
        engine(4, RSSEngineType::offload, 7, 1, affinity),
    };
}

L3SpanRecords default_l3span_records(const Host&)
{
    constexpr Tunnel geneve{"172.16.0.1", "172.16.0.2"};
    constexpr Tunnel geneve_ipv6{"fd00:16::1", "fd00:16::2"};
    constexpr Tunnel gre{"192.168.10.1", "192.168.10.2"};
    constexpr Tunnel gre_ipv6{"fd00:10::1", "fd00:10::2"};

    L3SpanRecords made;
    const auto add = [&](uint32_t switch_number, const char* destination, const L3SPANRecord& record) {
        made.records[{switch_number, is_ipv6(destination), address(destination)}] = record;
    };
    add(0, "10.20.0.5", record(2, 0x10, &geneve, gre));
    add(0, "10.20.0.6", record(3, 0x20, nullptr, gre));
    add(0, "2001:db8::5", record(2, 0x30, &geneve_ipv6, gre_ipv6));
    add(0, "2001:db8::6", record(4, 0x40, nullptr, gre_ipv6));
    add(1, "10.20.0.5", record(2, 0x50, &geneve_ipv6, gre));
    return made;
}

}  // namespace host
