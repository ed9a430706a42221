// What a scenario says: of the whole host, and of what belongs to no switch.
#pragma once

#include "host/scenario/flows.h"
#include "host/scenario/pipeline.h"
#include "host/scenario/smartnic.h"
#include "host/scenario/switches.h"
#include "platform/placement.h"

namespace host::scenario {

template <class V>
void describe_timing(V& v, Timing& timing)
{
    v.optional("flowTimeout", timing.flow_timeout, number(), "In seconds.");
    v.optional("revalidation", timing.reval, object_format([](auto& w, FpoRevalConfig& config) {
                   w.optional("enabled", config.enabled, Flag{}, "");
                   w.optional("injectPacket", config.inject_packet, Flag{}, "");
                   w.optional("flowScanQuota", config.flow_scan_quota, number(), "");
                   w.optional("interval", config.reval_interval, number(), "");
               }),
               "How offloaded flows are looked at again.");
    v.optional("conntrackDelay", timing.conntrack_delay, object_format([](auto& w, FpoConntrackDelay& delay) {
                   w.optional("packets", delay.num_packets, number(), "");
                   w.optional("enabled", delay.enabled, Flag{}, "");
               }),
               "What a tracked connection has to see before it is offloaded.");
    v.optional("refreshPacketInjection", timing.refresh_packet_injection, Flag{}, "");
}

// --- Where work runs ---

struct LcoreLoad {
    uint32_t lcore;
    Placement::Load load;
};

inline constexpr size_t longest_device_name = 31;

inline std::vector<Placement::Device> default_devices(const Host& host)
{
    std::vector<Placement::Device> result;
    std::set<std::string> names;
    for (const Switch& owner : host.switches)
        for (const Port* uplink : uplinks_of(owner))
            if (result.size() < max_devices && uplink->name.size() <= longest_device_name &&
                names.insert(uplink->name).second)
                result.push_back({uplink->name, static_cast<uint32_t>(result.size() % 2)});
    return result;
}

template <class V>
void describe_placement(V& v, Placement& placement, const Host& host)
{
    v.derive([&] { placement.devices = default_devices(host); });
    v.derived("devices", placement.devices,
              list(object_format([](auto& w, Placement::Device& device) {
                       w.required("name", device.name, text(longest_device_name), "");
                       w.optional("affinity", device.affinity, number(), "Its memory node.");
                   }),
                   max_devices, "name", [](const Placement::Device& device) { return device.name; }),
              "The NICs. Absent: those of the uplinks, in turns on two memory nodes.");
    v.optional("mbufFastslabs", placement.has_mbuf_fastslabs, Flag{}, "");
    std::vector<LcoreLoad> loads;
    for (const auto& [lcore, load] : placement.lcores)
        loads.push_back({lcore, load});
    v.optional("lcores", loads,
               list(object_format([](auto& w, LcoreLoad& each) {
                        w.required("lcore", each.lcore, number(0, max_lcores - 1), "");
                        w.derived("offloadedPackets", each.load.offloaded_packets, optional_format(number()),
                                  "That its offloaded flows see, a second. Absent: follows from its number.");
                        w.derived(
                            "failures", each.load.failures, optional_format(number()),
                            "Connections whose offload fails, a second; half as many marks and a quarter as many NICs "
                            "mismatch. Absent: one in 100,000 of these packets, one in 5,000 and one in 20,000.");
                        w.optional("cacheFailures", each.load.cache_failures, number(),
                                   "Flows that find no room in its cache, a second.");
                        w.derived("cpu", each.load.cpu, optional_format(number(0, 100)),
                                  "The load that the balancer measures, in percent. Absent: follows from its queues.");
                    }),
                    max_lcores, "lcore", [](const LcoreLoad& each) { return each.lcore; }),
               "Lcores whose loads do not follow from their number and their queues.");
    v.derive([&] {
        placement.lcores.clear();
        for (const LcoreLoad& each : loads)
            placement.lcores[each.lcore] = each.load;
    });
}

// --- L3 SPAN ---

// The ends of an encapsulation, out of a record whose forms lie over each other.
struct Encapsulation {
    MacAddress source_mac, destination_mac;
    Ip source, destination;
};

inline Encapsulation encapsulation_of(const L3SPANEncapsulation& record, bool is_ipv6)
{
    Encapsulation result{
        std::to_array(record.source_mac), std::to_array(record.destination_mac), {is_ipv6, {}}, {is_ipv6, {}}};
    const auto& addresses = record.addresses;
    const size_t size = is_ipv6 ? sizeof addresses.ipv6.source : sizeof addresses.ipv4.source;
    std::memcpy(result.source.bytes.data(), is_ipv6 ? addresses.ipv6.source : addresses.ipv4.source, size);
    std::memcpy(result.destination.bytes.data(), is_ipv6 ? addresses.ipv6.destination : addresses.ipv4.destination,
                size);
    return result;
}

inline L3SPANEncapsulation record_of(const Encapsulation& encapsulation)
{
    L3SPANEncapsulation result{};
    std::ranges::copy(encapsulation.source_mac, result.source_mac);
    std::ranges::copy(encapsulation.destination_mac, result.destination_mac);
    auto& addresses = result.addresses;
    const bool is_ipv6 = encapsulation.source.is_ipv6;
    const size_t size = is_ipv6 ? sizeof addresses.ipv6.source : sizeof addresses.ipv4.source;
    std::memcpy(is_ipv6 ? addresses.ipv6.source : addresses.ipv4.source, encapsulation.source.bytes.data(), size);
    std::memcpy(is_ipv6 ? addresses.ipv6.destination : addresses.ipv4.destination,
                encapsulation.destination.bytes.data(), size);
    return result;
}

template <class V>
void describe_encapsulation(V& v, Encapsulation& encapsulation)
{
    v.required("sourceMac", encapsulation.source_mac, MacFormat{}, "");
    v.required("destinationMac", encapsulation.destination_mac, MacFormat{}, "");
    v.required("source", encapsulation.source, IpFormat{}, "");
    v.required("destination", encapsulation.destination, IpFormat{}, "Of the same family.");
    v.check(encapsulation.source.is_ipv6 == encapsulation.destination.is_ipv6, "destination", same_family);
}

struct L3Span {
    uint32_t switch_number;
    Ip destination;
    L3SPANRecord record;
};

template <class V>
void describe_l3span(V& v, L3Span& span, const Host& host)
{
    L3SPANRecord& record = span.record;
    const auto encapsulation = object_format([](auto& w, Encapsulation& each) { describe_encapsulation(w, each); });
    Encapsulation gre = encapsulation_of(record.gre, record.gre_is_ipv6);
    std::optional<Encapsulation> geneve;
    if (record.is_geneve)
        geneve = encapsulation_of(record.geneve, record.geneve_is_ipv6);

    v.required("switch", span.switch_number, number(0, max_switches - 1), "");
    v.check(has_datapath_switch(host, span.switch_number), "switch", existing_switch);
    v.required("address", span.destination, IpFormat{}, "Where mirrored packets go.");
    v.optional("port", record.source_port, number(), "That they come from.");
    v.defaults([&] {
        record.mtu = 1500;
        record.destination_port = 6081;
        record.is_valid = 1;
    });
    v.optional("mtu", record.mtu, number(), "");
    v.optional("destinationPort", record.destination_port, number(), "");
    v.optional("valid", record.is_valid, Flag{}, "");
    v.required("gre", gre, encapsulation, "The ends of the tunnel.");
    v.derived("geneve", geneve, optional_format(encapsulation),
              "The ends of the overlay tunnel around it. Absent: there is none.");
    v.derive([&] {
        record.gre = record_of(gre);
        record.gre_is_ipv6 = gre.source.is_ipv6;
        record.is_geneve = geneve.has_value();
        record.geneve = geneve ? record_of(*geneve) : L3SPANEncapsulation{};
        record.geneve_is_ipv6 = geneve && geneve->source.is_ipv6;
    });
}

template <class V>
void describe_l3spans(V& v, L3SpanRecords& records, const Host& host)
{
    std::vector<L3Span> spans;
    for (const auto& [destination, record] : records.records)
        spans.push_back({destination.switch_number, {destination.is_ipv6, destination.address}, record});
    v.optional("l3span", spans,
               list(object_format([&](auto& w, L3Span& span) { describe_l3span(w, span, host); }), 1 << 12),
               "The encapsulations of mirrored traffic.");
    v.derive([&] {
        records.records.clear();
        for (const L3Span& span : spans)
            records.records[{span.switch_number, span.destination.is_ipv6, span.destination.bytes}] = span.record;
    });
}

// --- The host ---

template <class V>
void describe_host(V& v, Host& host, bool keeps_repeated_flows)
{
    Order order;
    order.keeps_repeated_flows = keeps_repeated_flows;
    std::string schema = "schema.json";
    v.optional("$schema", schema, text(), "Where this schema is; for editors.");
    v.optional("switches", host.switches,
               list(object_format([&](auto& w, Switch& each) { describe_switch(w, each, host, order); }),
                    max_known_switches, "alias", [](const Switch& each) { return each.config.alias; }),
               "");
    describe_placement(v, host.placement, host);
    v.optional("balancerIsAutomatic", host.lb_is_automatic, Flag{},
               "Whether the load balancer alone moves ports' queues and filters.");
    v.optional("timing", host.timing, object_format([](auto& w, Timing& timing) { describe_timing(w, timing); }),
               "Of flows and of their offload.");
    describe_l3spans(v, host.l3span_records, host);
    v.optional("smartnic", host.smartnic,
               object_format([&](auto& w, SmartNic& nic) { describe_smartnic(w, nic, host); }), "Its ports.");
    describe_flows(v, host, order);
    v.derive([&] {
        if (!host.smartnic.is_present()) {
            host.pipeline.packet_rate = 0;
            host.pipeline.operations = {0, 0, 0};
        }
    });
    v.optional("pipeline", host.pipeline,
               object_format([&](auto& w, Pipeline& pipeline) { describe_pipeline(w, pipeline, host); }),
               "Of the SmartNIC.");
    v.optional("hardwareTables", host.hardware_tables,
               object_format([](auto& w, HardwareTables& tables) { describe_hardware_tables(w, tables); }),
               "What the SmartNIC's tables hold beyond its ports and the flows that it has taken over.");
}

// A host without its flows where these repeat very often, or with all of them.
inline auto host_format(bool keeps_repeated_flows)
{
    return object_format([=](auto& v, Host& host) { describe_host(v, host, keeps_repeated_flows); });
}

// With lists as the source has them whose entries repeat very often.
std::string to_text(Host host, const Json* source);

}  // namespace host::scenario
