// Mirror sessions and port mirrors as lines of text.
#include <cstdio>

#include "core/arguments.h"
#include "core/build.h"
#include "core/render.h"
#include "platform/mirrors.h"

namespace qdp {

namespace {

constexpr Names<4> mirror_type_names{{"OTHER", "GRE_ONLY", "ERSPAN2", "ERSPAN3"}, ""};

// What separates the last fields is deliberate.
PyObject* session_line(const MirrorSession& session)
{
    char line[256];
    std::snprintf(line, sizeof line,
                  "OL:%u Idx:%u Dir:%u D-port:%d Tunnel:%u TunnelIdx:%dvni:%d:uplinkLport0:%u:uplinkLport1:%u",
                  session.is_offloaded, session.index, session.direction, session.destination_port, session.is_tunnel,
                  session.tunnel_index, session.vni, session.uplink_logical_ports[0], session.uplink_logical_ports[1]);
    return text_object(line);
}

struct AddressText {
    char text[64];
};

// IPv4 as it is, IPv6 as the column of a flow's line, with its blanks.
AddressText address_text(const MirrorAddress& address, bool is_ipv6)
{
    AddressText rendered;
    if (is_ipv6)
        ipv6_column(address.bytes, rendered.text, sizeof rendered.text);
    else
        std::snprintf(rendered.text, sizeof rendered.text, "%u.%u.%u.%u", address.bytes[0], address.bytes[1],
                      address.bytes[2], address.bytes[3]);
    return rendered;
}

PyObject* mirror_line(const PortMirror& mirror)
{
    char line[512];
    std::snprintf(line, sizeof line,
                  "OL:%u Idx:%u fcPort:%d greKey:%d %s cos:%u ns:%u hwID:%u snapLen:%d erspanID:%d SA:%s DA:%s",
                  mirror.is_offloaded, mirror.index, mirror.fc_port, mirror.gre_key, mirror_type_names[mirror.type],
                  mirror.class_of_service, mirror.ns, mirror.hardware_id, mirror.snap_length, mirror.erspan_id,
                  address_text(mirror.source, mirror.is_ipv6).text,
                  address_text(mirror.destination, mirror.is_ipv6).text);
    return text_object(line);
}

// One line an entry. The count is the library's; entries beyond the buffer read as zero.
template <class Entry>
PyObject* lines_of(const MirrorDump<Entry>& dump, PyObject* (*line)(const Entry&))
{
    PyRef lines{PyList_New(dump.count)};
    if (!lines)
        return print_none(no_buffer);
    const Bytes entries = entries_of(dump);
    const bool complete =
        fill_list(lines.get(), dump.count, [&](size_t i) { return line(entries.load<Entry>(i * sizeof(Entry))); });
    return built_or_none(std::move(lines), complete);
}

constexpr char cannot_dump[] = "Failed to dump Mirror table data.\n";

}  // namespace

PyObject* PyQDP_P4MirrorTableDump(PyObject*, PyObject*)
{
    MirrorSessionDump dump{};
    uint32_t size = sizeof dump;
    if (Qdp_P4_MirrorTable_Dump(&dump, &size) != 0)
        return print_none(cannot_dump);
    return lines_of(dump, session_line);
}

PyObject* PyQDP_P4PortMirrorTableDump(PyObject*, PyObject* args)
{
    uint32_t first, second;
    if (!PyArg_ParseTuple(args, "II", &first, &second))
        return print_none(invalid_parameter);

    const PortMirrorRequest request{low_16(first), low_16(second)};
    PortMirrorDump dump{};
    uint32_t size = sizeof dump;
    if (Qdp_P4_PortMirrorTable_Dump(&request, sizeof request, &dump, &size) != 0)
        return print_none(cannot_dump);
    return lines_of(dump, mirror_line);
}

}  // namespace qdp
