// The flow table of a lcore, page by page.
#include <algorithm>
#include <cstdio>

#include "core/arguments.h"
#include "core/build.h"
#include "core/render.h"
#include "datapath/flowcache/flow_actions.h"
#include "datapath/flowcache/flowcache.h"
#include "platform/flowcache.h"

namespace qdp {

namespace {

constexpr size_t actions_text_bytes = 512;
constexpr Place software_hits = bytes(offsetof(FlowEntry, area.software_hits), sizeof FlowActionArea::software_hits);

struct MacFilter {
    uint32_t is_on;
    const char* text;  // any, when the filter is off
};

struct AddressFilter {
    uint32_t version;  // 0 when the filter is off
    const char* text;
};

struct Arguments {
    uint32_t selector, lcore, start_index, option;
    MacFilter source_mac, destination_mac;
    AddressFilter source_ip, destination_ip;
    int32_t filters[5];
};

bool take(PyObject* args, Arguments& wanted)
{
    return PyArg_ParseTuple(args, "IIIIIsIsIsIsiiiii", &wanted.selector, &wanted.lcore, &wanted.start_index,
                            &wanted.option, &wanted.source_mac.is_on, &wanted.source_mac.text,
                            &wanted.destination_mac.is_on, &wanted.destination_mac.text, &wanted.source_ip.version,
                            &wanted.source_ip.text, &wanted.destination_ip.version, &wanted.destination_ip.text,
                            &wanted.filters[0], &wanted.filters[1], &wanted.filters[2], &wanted.filters[3],
                            &wanted.filters[4]) &&
           wanted.lcore < max_lcores && wanted.start_index != no_more_flows;
}

// The library gets the low byte of the argument that switches a filter on. What is no MAC address leaves zeros: the
// text is not checked.
void set_filter(const MacFilter& filter, uint8_t& is_on, uint8_t (&mac)[mac_bytes])
{
    is_on = static_cast<uint8_t>(filter.is_on);
    if (is_on)
        static_cast<void>(std::sscanf(filter.text, "%02hhx:%02hhx:%02hhx:%02hhx:%02hhx:%02hhx", &mac[0], &mac[1],
                                      &mac[2], &mac[3], &mac[4], &mac[5]));
}

bool set_filter(const AddressFilter& filter, uint32_t& version, uint8_t (&address)[ip_address_bytes])
{
    version = filter.version;
    return version == 0 || parse_address(version, filter.text, address) == 1;
}

// Null, or why the request cannot be made. The texts say IPv4 for IPv6 too: deliberate, as are their line breaks.
const char* set_request(FlowTableRequest& request, const Arguments& wanted)
{
    request.selector = wanted.selector;
    request.lcore = wanted.lcore;
    request.start_index = wanted.start_index;
    request.option = static_cast<uint8_t>(wanted.option);
    set_filter(wanted.source_mac, request.filters_source_mac, request.source_mac);
    set_filter(wanted.destination_mac, request.filters_destination_mac, request.destination_mac);
    if (!set_filter(wanted.source_ip, request.source_ip_version, request.source_ip))
        return "Failed to convert source IPv4 address to binary form.\n\n";
    if (!set_filter(wanted.destination_ip, request.destination_ip_version, request.destination_ip))
        return "Failed to convert destination IPv4 address to binary form.\n\n";
    std::ranges::copy(wanted.filters, request.filters);
    return nullptr;
}

// The flow whose entry starts at `offset`. All that its texts show beyond the response reads as zero. Null, having
// said so, when its actions do not fit their text; or with SystemError set.
PyObject* flow_object(FlowTableResponse& response, size_t offset)
{
    const Bytes whole = bytes_of(response);
    const Bytes entry = whole.from(offset);
    const size_t area = offset + offsetof(FlowEntry, area);
    const size_t length = entry.unsigned_at(AT(FlowEntry, area.length));

    // The key goes first: it is cleared in place, and the tail of short actions may reach back into it.
    char key[flow_key_text_bytes];
    FCFlowKeyToStr(reinterpret_cast<char*>(&response) + offset + offsetof(FlowEntry, key), key);

    char actions[actions_text_bytes];
    const FlowActionData flow{whole.from(area), whole.from(area + response.group_offset),
                              whole.from(area + length - sizeof(FlowActionTail)), entry};
    if (!write_actions(flow, actions, sizeof actions)) {
        print("Invalid action\n");  // a second time: deliberate
        return nullptr;
    }
    return object_or_error(Py_BuildValue("{s:s, s:s, s:k, s:k, s:k, s:k}",                                  //
                                         "key", key,                                                        //
                                         "actions", actions,                                                //
                                         "swHits", entry.unsigned_at(software_hits),                        //
                                         "swBytes", entry.unsigned_at(AT(FlowEntry, area.software_bytes)),  //
                                         "hwHits", entry.unsigned_at(AT(FlowEntry, hardware_hits)),         //
                                         "hwBytes", entry.unsigned_at(AT(FlowEntry, hardware_bytes))));
}

// Fills the list with the flows of a page. False, having said so, when the page is not what it should be; or with
// SystemError set.
bool add_flows(PyObject* list, FlowTableResponse& response)
{
    const size_t end = std::min<size_t>(response.valid_bytes, sizeof response);
    size_t offset = offsetof(FlowTableResponse, entries);
    for (uint32_t i = 0; i < response.count; ++i) {
        if (offset + max_flow_entry_bytes > end) {
            print("Invalid response returned.\n");
            return false;
        }
        if (!set_list_item(list, i, flow_object(response, offset)))
            return false;
        offset += offsetof(FlowEntry, area) + bytes_of(response).from(offset).unsigned_at(AT(FlowEntry, area.length));
    }
    return true;
}

}  // namespace

PyObject* PyQDP_Dump_Flow_Table(PyObject*, PyObject* args)
{
    Arguments wanted;
    if (!take(args, wanted))
        return print_none(invalid_parameter);

    const auto response = allocate<FlowTableResponse>();
    const auto request = allocate<FlowTableRequest>();
    if (!response || !request)
        return print_none(no_memory);
    if (const char* reason = set_request(*request, wanted))
        return print_none(reason);

    uint32_t size = sizeof(FlowTableResponse);
    if (Qdp_Dump_Flow_Table(request.get(), response.get(), &size) != 0)
        return print_none("Failed to retrieve flow table.\n\n");  // the doubled line break is deliberate

    PyRef page{PyDict_New()};
    if (!page)
        return print_none(no_memory);
    PyRef list;
    const bool complete =
        set_dict_item(page.get(), "startIndex", object_or_error(PyLong_FromUnsignedLong(response->next_start_index))) &&
        (list = PyRef{object_or_error(PyList_New(response->count))}) &&
        set_dict_item(page.get(), "list", new_reference(list.get()).release()) && add_flows(list.get(), *response);
    return built_or_none(std::move(page), complete);
}

PyObject* PyQDP_Dump_Decap_Flow_Table(PyObject*, PyObject*)
{
    return print_none("Dump Decap  Flow Not supported below 2.10.0.0\n");  // two blanks: deliberate
}

PyObject* PyQDP_Dump_Decap_Sa_Flow_Table(PyObject*, PyObject*)
{
    return print_none("Dump Decap  Flow Not supported below 2.10.0.0\n");
}

PyObject* PyQDP_Dump_Port_Flow(PyObject*, PyObject*)
{
    return print_none("Dump Port Flow Not supported below 2.10.0.0\n");
}

}  // namespace qdp
