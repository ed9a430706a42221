// What the SmartNIC's hardware tables hold beyond its port model and the offloaded flows: tunnels, and headers of
// mirror sessions.
#include "host/state/hardware_tables.h"

#include "host/host.h"

namespace host {

namespace hardware {

namespace {

constexpr uint64_t collector_mac = 0x001b21aa00fe;  // where mirrored packets go

constexpr Address ipv4(uint32_t address)
{
    return {true, 0, address};
}

constexpr Address ipv6(uint64_t high, uint64_t low)
{
    return {false, high, low};
}

// Where tunnels begin: a port, and its MAC address.
struct Uplink {
    uint16_t port;
    uint64_t mac;
};

std::vector<Uplink> uplinks_of(const Host& host)
{
    std::vector<Uplink> made;
    for (const Switch& owner : host.switches)
        for (const Port& port : owner.ports)
            if (owner.entry && owner.entry->switch_number == host.smartnic.uplink_switch &&
                is_a(port, ClientType::uplink)) {
                uint64_t mac = 0;
                for (const uint8_t byte : port.entry.mac)
                    mac = mac << 8 | byte;
                made.push_back({host.smartnic.port_of(port.entry.port), mac});
            }
    return made;
}

// Two ways out, one over IPv4 and one over IPv6.
std::vector<Tunnel> tunnels(const Uplink& first, const Uplink& second)
{
    return {
        {first_tunnel_record, true, 1, first.port, 300, 501, first.mac, 0x001b21aa0001, ipv4(0xac100001),
         ipv4(0xac100002)},
        {first_tunnel_record + 1, false, 2, second.port, 301, 502, second.mac, 0x001b21aa0002,
         ipv6(0xfd00'0000'0000'0001, 1), ipv6(0xfd00'0000'0000'0001, 2)},
    };
}

// Those for what comes in go over IPv4, the others over IPv6.
std::vector<MirrorHeaders> mirrors(const std::vector<::MirrorSession>& sessions, const Uplink& first,
                                   const Uplink& second)
{
    std::vector<MirrorHeaders> made;
    for (const ::MirrorSession& session : sessions) {
        const uint32_t number = mirror_number(session);
        if (session.direction)
            made.push_back({number, 401, 0x5eed0000 + number, second.mac, collector_mac, ipv6(0xfd00'0000'0000'0001, 1),
                            ipv6(0xfd00'0000'0000'0001, 0xfe)});
        else
            made.push_back(
                {number, 400, 0x5eed0000 + number, first.mac, collector_mac, ipv4(0xac100001), ipv4(0xac1000fe)});
    }
    return made;
}

}  // namespace

uint32_t mirror_number(const ::MirrorSession& session)
{
    return session.index + (session.direction ? max_mirror_sessions : 0);
}

}  // namespace hardware

HardwareTables default_hardware_tables(const Host& host)
{
    const auto uplinks = hardware::uplinks_of(host);
    if (uplinks.size() < 2)
        return {};
    return {hardware::tunnels(uplinks[0], uplinks[1]),
            hardware::mirrors(host.pipeline.mirror_sessions, uplinks[0], uplinks[1])};
}

}  // namespace host
