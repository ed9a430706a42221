// Answers about receive-side scaling engines and L3 SPAN records.
#include <algorithm>

#include "host/host.h"

namespace host {

namespace {

// A port without engines has an empty list.
uint32_t get_rss_engine_list(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* found = host.port(switch_number, port);
    if (!found)
        return not_found;
    RSSEngineList list{};
    list.count = static_cast<uint32_t>(std::min<size_t>(found->rss_engines.size(), max_rss_engines));
    std::copy_n(found->rss_engines.begin(), list.count, list.entries);
    return output.put(list);
}

// A destination that is not known has a record that is not valid.
uint32_t get_l3span_record(Host& host, const L3SPANRequest* request, Output output)
{
    if (!request || !host.datapath_switch(request->switch_number))
        return not_found;
    L3SpanDestination destination{request->switch_number, (request->flag_and_value & 0xff) != 0, {}};
    std::memcpy(destination.address.data(), request->destination, destination.is_ipv6 ? 16 : 4);
    const auto found = host.l3span_records.records.find(destination);
    return output.put(found == host.l3span_records.records.end() ? L3SPANRecord{} : found->second);
}

const Answer answers[] = {
    {"Qdp_Get_RSS_Engine_List", get_rss_engine_list},
    {"Qdp_Get_L3SPAN_Record", get_l3span_record},
};

}  // namespace

}  // namespace host
