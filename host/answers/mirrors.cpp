// Answers about the SmartNIC's mirrors.
#include "host/answers/answer.h"

namespace host {

namespace {

template <class Entry, class Wanted>
uint32_t put_mirrors(const std::vector<Entry>& mirrors, const Output& output, Wanted is_wanted)
{
    MirrorDump<Entry> dump{};
    for (const Entry& mirror : mirrors)
        if (is_wanted(mirror) && dump.count < dump.max_entries)
            dump.entries[dump.count++] = mirror;
    return output.put(dump);
}

uint32_t mirror_table_dump(Host& host, Output output)
{
    return put_mirrors(host.pipeline.mirror_sessions, output, [](const MirrorSession&) { return true; });
}

// The first word selects the mirrors of a port; the second one is not looked at.
uint32_t port_mirror_table_dump(Host& host, ByteSpan request, Output output)
{
    const auto port = record_in<PortMirrorRequest>(request);
    if (!port)
        return status_refused;
    return put_mirrors(host.pipeline.port_mirrors, output,
                       [&](const PortMirror& mirror) { return mirror.fc_port == port->first; });
}

const Answer mirror_answers[] = {
    {"Qdp_P4_MirrorTable_Dump", mirror_table_dump},
    {"Qdp_P4_PortMirrorTable_Dump", port_mirror_table_dump},
};

}  // namespace

}  // namespace host
