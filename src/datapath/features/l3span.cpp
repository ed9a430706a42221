// How mirrored (L3 SPAN) traffic towards a destination address is encapsulated.
#include "platform/l3span.h"
#include "core/arguments.h"
#include "core/build.h"
#include "core/render.h"
#include "platform/qdp_control.h"

namespace qdp {

namespace {

using R = L3SPANRecord;

// The field's place is that of the IPv6 form.
template <Place ipv4, Place is_ipv6>
PyObject* address(Bytes record, const Field& field)
{
    return address_object(record, is_ipv6, field.where.offset, ipv4.offset);
}

constexpr auto validity_fields = fields<sizeof(R)>({
    {"isValid", AT(R, is_valid)},
});

constexpr auto common_fields = fields<sizeof(R)>({
    {"srcPort", AT(R, source_port)},
    {"dstPort", AT(R, destination_port)},
    {"mtu", AT(R, mtu)},
    {"isGeneve", AT(R, is_geneve)},
});

constexpr auto geneve_fields = fields<sizeof(R)>({
    {"geneve_smac", AT(R, geneve.source_mac), as_mac},
    {"geneve_dmac", AT(R, geneve.destination_mac), as_mac},
    {"geneve_src", AT(R, geneve.addresses.ipv6.source),
     address<AT(R, geneve.addresses.ipv4.source), AT(R, geneve_is_ipv6)>},
    {"geneve_dst", AT(R, geneve.addresses.ipv6.destination),
     address<AT(R, geneve.addresses.ipv4.destination), AT(R, geneve_is_ipv6)>},
});

constexpr auto gre_fields = fields<sizeof(R)>({
    {"gre_smac", AT(R, gre.source_mac), as_mac},
    {"gre_dmac", AT(R, gre.destination_mac), as_mac},
    {"gre_src", AT(R, gre.addresses.ipv6.source), address<AT(R, gre.addresses.ipv4.source), AT(R, gre_is_ipv6)>},
    {"gre_dst", AT(R, gre.addresses.ipv6.destination),
     address<AT(R, gre.addresses.ipv4.destination), AT(R, gre_is_ipv6)>},
});

// A record that is not valid shows nothing but that.
bool fill_record(PyObject* dict, const L3SPANRecord& record)
{
    const Bytes answer = bytes_of(record);
    if (!fill(dict, validity_fields, answer))
        return false;
    if (!record.is_valid)
        return true;
    return fill(dict, common_fields, answer) && (!record.is_geneve || fill(dict, geneve_fields, answer)) &&
           fill(dict, gre_fields, answer);
}

}  // namespace

PyObject* PyQDP_Get_L3SPAN_Record(PyObject*, PyObject* args)
{
    uint32_t switch_number, is_ipv6, value;
    const char* destination;
    if (!PyArg_ParseTuple(args, "IIsI", &switch_number, &is_ipv6, &destination, &value) || !is_switch(switch_number))
        return print_none(invalid_parameter);

    // Of the flag the library gets the low byte, which alone decides here too; of the value the low 24 bits, right
    // behind that byte.
    is_ipv6 &= 0xff;
    L3SPANRequest request{switch_number, is_ipv6 | value << 8, {}};
    if (parse_address(is_ipv6 ? 6 : 4, destination, request.destination) != 1)
        return print_none("Failed to convert destination IP address to binary form.\n\n");

    const auto record = allocate<L3SPANRecord>();
    if (!record)
        return print_none(no_memory);
    uint32_t size = sizeof(L3SPANRecord);
    if (Qdp_Get_L3SPAN_Record(&request, record.get(), &size) != 0)
        return none();

    PyRef dict{PyDict_New()};
    if (!dict)
        return print_none("Failed to allocate mac table.\n");  // the text of another table, deliberately
    const bool complete = fill_record(dict.get(), *record);
    return built_or_none(std::move(dict), complete);
}

}  // namespace qdp
