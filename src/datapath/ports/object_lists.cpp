// Lists that the hosting process has made from its own arrays: ports of a bitmap, VLAN ids.
#include "core/build.h"
#include "datapath/ports/ports.h"

namespace qdp {

namespace {

constexpr unsigned bitmap_words = 2;
constexpr unsigned word_bits = 64;
constexpr unsigned bitmap_ports = bitmap_words * word_bits;

// The first port of the bitmap from this one on; bitmap_ports when there is none.
unsigned next_port(const uint64_t* bitmap, unsigned port)
{
    while (port < bitmap_ports && (bitmap[port / word_bits] >> (port % word_bits) & 1) == 0)
        ++port;
    return port;
}

}  // namespace

}  // namespace qdp

using namespace qdp;

PyObject* PyQDP_CreatePortList(uint32_t count, const uint64_t* bitmap)
{
    const auto length = static_cast<uint16_t>(count);
    PyRef list{PyList_New(length)};
    if (!list)
        return print_none("Failed to allocate memory\n");  // deliberately without a full stop
    unsigned from = 0;
    const bool complete = fill_list(list.get(), length, [&](size_t) {
        const unsigned port = next_port(bitmap, from);
        from = port + 1;
        return port < bitmap_ports ? object_or_error(PyLong_FromUnsignedLong(port)) : none();
    });
    return built_or_none(std::move(list), complete);
}

PyObject* PyQDP_CreateVlanList(uint32_t count, const uint16_t* vlans)
{
    const auto length = static_cast<uint16_t>(count);
    PyRef list{PyList_New(length)};
    if (!list)
        return print_none(no_memory);
    const bool complete =
        fill_list(list.get(), length, [&](size_t i) { return object_or_error(PyLong_FromUnsignedLong(vlans[i])); });
    return built_or_none(std::move(list), complete);
}
