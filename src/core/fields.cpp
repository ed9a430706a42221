// The conversions of field tables.
#include <arpa/inet.h>

#include "core/build.h"
#include "core/render.h"

namespace qdp {

PyObject* text_object(std::string_view text)
{
    return object_or_error(PyUnicode_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size())));
}

PyObject* mac_object(Bytes record, size_t offset)
{
    uint8_t address[mac_bytes];
    record.copy(offset, address, sizeof address);
    char rendered[mac_text_bytes];
    MACToStr(address, rendered);
    return text_object({rendered, sizeof rendered - 1});
}

PyObject* address_object(Bytes record, Place is_ipv6, size_t ipv6_offset, size_t ipv4_offset)
{
    const bool shows_ipv6 = record.unsigned_at(is_ipv6) != 0;
    uint8_t address[sizeof(in6_addr)];
    record.copy(shows_ipv6 ? ipv6_offset : ipv4_offset, address, sizeof address);
    char rendered[INET6_ADDRSTRLEN];
    const char* text = inet_ntop(shows_ipv6 ? AF_INET6 : AF_INET, address, rendered, sizeof rendered);
    return text ? text_object(text) : object_or_error(nullptr);
}

PyObject* big_endian_object(Bytes record, const Field& field)
{
    return highest_bits(__builtin_bswap64(record.unsigned_at(field.where)), field.where);
}

PyObject* text_field_object(Bytes record, const Field& field)
{
    return text_object(record.text(field.where.offset, field.where.size));
}

PyObject* mac_field_object(Bytes record, const Field& field)
{
    return mac_object(record, field.where.offset);
}

PyObject* name_object(Bytes record, const Field& field, const char* const* names, size_t count, const char* otherwise)
{
    const uint64_t code = record.unsigned_at(field.where);
    return text_object(code < count ? names[code] : otherwise);
}

PyObject* address_field_object(Bytes record, const Field& field, Place is_ipv6)
{
    return address_object(record, is_ipv6, field.where.offset, field.where.offset);
}

}  // namespace qdp
