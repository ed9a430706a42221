// Answers about the datapath's switches and ports.
#include "host/answers/answer.h"

namespace host {

namespace {

uint32_t get_switch_list(Host& host, Output output)
{
    SwitchList list{};
    for (const Switch& each : host.switches)
        if (each.entry && list.count < max_switches)
            list.entries[list.count++] = *each.entry;
    return output.put(list);
}

// Only the header and the entries that there are: the record has room for many more.
uint32_t get_port_list(Host& host, uint32_t switch_number, Output output)
{
    const Switch* owner = host.datapath_switch(switch_number);
    const size_t header = offsetof(PortList, entries);
    if (!owner || header + owner->ports.size() * sizeof(PortListEntry) > output.capacity)
        return status_refused;

    const uint32_t head[] = {0, static_cast<uint32_t>(owner->ports.size()), 0};
    static_assert(sizeof head == header);
    output.write(0, bytes_of(head));
    size_t end = header;
    for (const Port& port : owner->ports) {
        output.write(end, bytes_of(port.entry));
        end += sizeof port.entry;
    }
    output.set_size(end);
    return status_success;
}

const Answer port_answers[] = {
    {"Qdp_Get_Switch_List", get_switch_list},
    {"Qdp_Get_Port_List", get_port_list},
};

}  // namespace

}  // namespace host
