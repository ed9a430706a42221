// What a scenario says: of the whole host, and of what belongs to no switch.
#pragma once

#include "host/scenario/flows.h"
#include "host/scenario/pipeline.h"
#include "host/scenario/smartnic.h"
#include "host/scenario/switches.h"

namespace host::scenario {

template <class V>
void describe_timing(V& v, Timing& timing)
{
    v.optional("flowTimeout", timing.flow_timeout, number(), "In seconds. Absent: 10.");
    v.optional("revalidation", timing.reval, object([](auto& w, FpoRevalConfig& config) {
                   w.optional("enabled", config.enabled, Flag{}, "Absent: true.");
                   w.optional("injectPacket", config.inject_packet, Flag{}, "Absent: false.");
                   w.optional("flowScanQuota", config.flow_scan_quota, number(), "Absent: 256.");
                   w.optional("interval", config.reval_interval, number(), "Absent: 1000.");
               }),
               "How offloaded flows are looked at again.");
    v.optional("conntrackDelay", timing.conntrack_delay, object([](auto& w, FpoConntrackDelay& delay) {
                   w.optional("packets", delay.num_packets, number(), "Absent: 16.");
                   w.optional("enabled", delay.enabled, Flag{}, "Absent: false.");
               }),
               "What a tracked connection has to see before it is offloaded.");
    v.optional("refreshPacketInjection", timing.refresh_packet_injection, Flag{}, "Absent: true.");
}

// --- Where work runs ---

struct LcoreRate {
    uint32_t lcore;
    uint64_t packets;
};

inline std::vector<Placement::Device> usual_devices(const Host& host)
{
    std::vector<Placement::Device> made;
    for (const Switch& owner : host.switches)
        for (const Port* uplink : uplinks_of(owner))
            if (made.size() < max_devices)
                made.push_back({uplink->name, static_cast<uint32_t>(made.size() % 2)});
    return made;
}

template <class V>
void describe_placement(V& v, Placement& placement, const Host& host)
{
    v.derive([&] { placement.devices = usual_devices(host); });
    v.optional("devices", placement.devices,
               list(object([](auto& w, Placement::Device& device) {
                        w.required("name", device.name, text(31), "");
                        w.optional("affinity", device.affinity, number(), "Its memory node.");
                    }),
                    max_devices, "name", [](const Placement::Device& device) { return device.name; }),
               "The NICs. Absent: those of the uplinks, in turns on two memory nodes.");
    v.optional("mbufFastslabs", placement.has_mbuf_fastslabs, Flag{}, "Absent: false.");
    std::vector<LcoreRate> rates;
    for (const auto& [lcore, packets] : placement.offload_rates)
        rates.push_back({lcore, packets});
    v.optional("lcores", rates,
               list(object([](auto& w, LcoreRate& rate) {
                        w.required("lcore", rate.lcore, number(0, max_lcores - 1), "");
                        w.required("offloadedPackets", rate.packets, number(),
                                   "That its offloaded flows see, a second.");
                    }),
                    max_lcores, "lcore", [](const LcoreRate& rate) { return rate.lcore; }),
               "Lcores whose rates do not follow from their number.");
    v.derive([&] {
        placement.offload_rates.clear();
        for (const LcoreRate& rate : rates)
            placement.offload_rates[rate.lcore] = rate.packets;
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
    Encapsulation made{
        std::to_array(record.source_mac), std::to_array(record.destination_mac), {is_ipv6, {}}, {is_ipv6, {}}};
    const auto& addresses = record.addresses;
    const size_t size = is_ipv6 ? sizeof addresses.ipv6.source : sizeof addresses.ipv4.source;
    std::memcpy(made.source.bytes.data(), is_ipv6 ? addresses.ipv6.source : addresses.ipv4.source, size);
    std::memcpy(made.destination.bytes.data(), is_ipv6 ? addresses.ipv6.destination : addresses.ipv4.destination, size);
    return made;
}

inline L3SPANEncapsulation record_of(const Encapsulation& encapsulation)
{
    L3SPANEncapsulation made{};
    std::ranges::copy(encapsulation.source_mac, made.source_mac);
    std::ranges::copy(encapsulation.destination_mac, made.destination_mac);
    auto& addresses = made.addresses;
    const bool is_ipv6 = encapsulation.source.is_ipv6;
    const size_t size = is_ipv6 ? sizeof addresses.ipv6.source : sizeof addresses.ipv4.source;
    std::memcpy(is_ipv6 ? addresses.ipv6.source : addresses.ipv4.source, encapsulation.source.bytes.data(), size);
    std::memcpy(is_ipv6 ? addresses.ipv6.destination : addresses.ipv4.destination,
                encapsulation.destination.bytes.data(), size);
    return made;
}

template <class V>
void describe_encapsulation(V& v, Encapsulation& encapsulation)
{
    v.required("sourceMac", encapsulation.source_mac, Mac48{}, "");
    v.required("destinationMac", encapsulation.destination_mac, Mac48{}, "");
    v.required("source", encapsulation.source, IpKind{}, "");
    v.required("destination", encapsulation.destination, IpKind{}, "Of the same family.");
    v.check(encapsulation.source.is_ipv6 == encapsulation.destination.is_ipv6, "destination",
            "an address of the same family as the source");
}

struct L3Span {
    uint32_t switch_number;
    Ip destination;
    L3SPANRecord record;
};

template <class V>
void describe_l3span(V& v, L3Span& span)
{
    L3SPANRecord& record = span.record;
    const auto encapsulation = object([](auto& w, Encapsulation& each) { describe_encapsulation(w, each); });
    Encapsulation gre = encapsulation_of(record.gre, record.gre_is_ipv6);
    std::optional<Encapsulation> geneve;
    if (record.is_geneve)
        geneve = encapsulation_of(record.geneve, record.geneve_is_ipv6);

    v.required("switch", span.switch_number, number(0, max_switches - 1), "");
    v.required("address", span.destination, IpKind{}, "Where mirrored packets go.");
    v.optional("port", record.source_port, number(), "That they come from.");
    v.derive([&] {
        record.mtu = 1500;
        record.destination_port = 6081;
        record.is_valid = 1;
    });
    v.optional("mtu", record.mtu, number(), "Absent: 1500.");
    v.optional("destinationPort", record.destination_port, number(), "Absent: 6081.");
    v.optional("valid", record.is_valid, Flag{}, "Absent: true.");
    v.required("gre", gre, encapsulation, "The ends of the tunnel.");
    v.optional("geneve", geneve, maybe(encapsulation), "The ends of the overlay tunnel around it, if there is one.");
    v.derive([&] {
        record.gre = record_of(gre);
        record.gre_is_ipv6 = gre.source.is_ipv6;
        record.is_geneve = geneve.has_value();
        record.geneve = geneve ? record_of(*geneve) : L3SPANEncapsulation{};
        record.geneve_is_ipv6 = geneve && geneve->source.is_ipv6;
    });
}

template <class V>
void describe_l3spans(V& v, L3SpanRecords& records)
{
    std::vector<L3Span> spans;
    for (const auto& [destination, record] : records.records)
        spans.push_back({destination.switch_number, {destination.is_ipv6, destination.address}, record});
    v.optional("l3span", spans, list(object([](auto& w, L3Span& span) { describe_l3span(w, span); }), 1 << 12),
               "The encapsulations of mirrored traffic. Absent: none.");
    v.derive([&] {
        records.records.clear();
        for (const L3Span& span : spans)
            records.records[{span.switch_number, span.destination.is_ipv6, span.destination.bytes}] = span.record;
    });
}

// --- The host ---

template <class V>
void describe_host(V& v, Host& host)
{
    Order order;
    std::string schema = "schema.json";
    v.optional("$schema", schema, text(), "Where this schema is; for editors.");
    v.optional("switches", host.switches,
               list(object([&](auto& w, Switch& each) { describe_switch(w, each, host, order); }), max_known_switches,
                    "alias", [](const Switch& each) { return each.config.alias; }),
               "Absent: none.");
    describe_placement(v, host.placement, host);
    v.optional("balancerIsAutomatic", host.balancer_is_automatic, Flag{},
               "Whether the load balancer alone moves ports' queues and filters. Absent: false.");
    v.optional("timing", host.timing, object([](auto& w, Timing& timing) { describe_timing(w, timing); }),
               "Of flows and of their offload.");
    describe_l3spans(v, host.l3span_records);
    v.optional("smartnic", host.smartnic, object([&](auto& w, SmartNic& nic) { describe_smartnic(w, nic, host); }),
               "Its ports. Absent: none.");
    describe_flows(v, host, order);
    v.optional("pipeline", host.pipeline,
               object([&](auto& w, Pipeline& pipeline) { describe_pipeline(w, pipeline, host.clock); }),
               "Of the SmartNIC.");
    v.optional("hardwareTables", host.hardware_tables,
               object([](auto& w, HardwareTables& tables) { describe_hardware_tables(w, tables); }),
               "What the SmartNIC's tables hold beyond its ports and the flows that it has taken over.");
}

inline const auto whole_host = object([](auto& v, Host& host) { describe_host(v, host); });

}  // namespace host::scenario
