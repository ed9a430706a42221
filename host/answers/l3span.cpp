// Answers about L3 SPAN records.
#include "host/answers/answer.h"

namespace host {

namespace {

// A destination that is not known has a record that is not valid.
uint32_t get_l3span_record(Host& host, const L3SPANRequest* request, Output output)
{
    if (!request || !host.datapath_switch(request->switch_number))
        return status_not_found;
    L3SpanDestination destination{request->switch_number, (request->flag_and_value & 0xff) != 0, {}};
    std::memcpy(destination.address.data(), request->destination, destination.is_ipv6 ? 16 : 4);
    const auto found = host.l3span_records.records.find(destination);
    return output.put(found == host.l3span_records.records.end() ? L3SPANRecord{} : found->second);
}

const Answer l3span_answers[] = {{"Qdp_Get_L3SPAN_Record", get_l3span_record}};

}  // namespace

}  // namespace host
