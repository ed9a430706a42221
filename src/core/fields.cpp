// The interpreter of field tables, and the converters that all subsystems use.
#include "core/fields.h"

#include <arpa/inet.h>

#include "core/render.h"

namespace qdp {

namespace {

// The integer whose bits are the highest of a word.
PyObject* highest(uint64_t word, const Place& where)
{
    return made(where.is_signed ? PyLong_FromLong(static_cast<int64_t>(word) >> where.down)
                                : PyLong_FromUnsignedLong(word >> where.down));
}

PyObject* integer(Bytes record, const Place& where)
{
    return highest(record.load<uint64_t>(where.offset) << where.up, where);
}

}  // namespace

PyObject* text_object(std::string_view text)
{
    return made(PyUnicode_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size())));
}

PyObject* big_endian_object(Bytes record, const Field& field)
{
    return highest(__builtin_bswap64(record.unsigned_at(field.where)), field.where);
}

PyObject* field_text_object(Bytes record, const Field& field)
{
    return text_object(record.text(field.where.offset, field.where.size));
}

PyObject* field_mac_object(Bytes record, const Field& field)
{
    return mac_object(record, field.where.offset);
}

PyObject* mac_object(Bytes record, size_t offset)
{
    uint8_t address[mac_bytes];
    record.copy(offset, address, sizeof address);
    char rendered[mac_text_bytes];
    return text_object(MACToStr(address, rendered));
}

PyObject* name_among(const char* const* names, size_t count, const char* otherwise, Bytes record, const Field& field)
{
    const uint64_t code = record.unsigned_at(field.where);
    return text_object(code < count ? names[code] : otherwise);
}

PyObject* address_object(Bytes record, Place is_ipv6, size_t ipv6_offset, size_t ipv4_offset)
{
    const bool shows_ipv6 = record.unsigned_at(is_ipv6) != 0;
    uint8_t address[sizeof(in6_addr)];
    record.copy(shows_ipv6 ? ipv6_offset : ipv4_offset, address, sizeof address);
    char rendered[INET6_ADDRSTRLEN];
    const char* text = inet_ntop(shows_ipv6 ? AF_INET6 : AF_INET, address, rendered, sizeof rendered);
    return text ? text_object(text) : made(nullptr);
}

template <class Element>
PyObject* integers(Bytes elements, uint64_t length)
{
    return list_of(length, [elements](size_t i) {
        return made(PyLong_FromUnsignedLong(elements.load<Element>(i * sizeof(Element))));
    });
}

template PyObject* integers<uint8_t>(Bytes elements, uint64_t length);
template PyObject* integers<uint16_t>(Bytes elements, uint64_t length);

bool fill(PyObject* dict, Fields fields, Bytes record)
{
    for (const Field* field = fields.rows; field != fields.rows + fields.count; ++field) {
        PyObject* value = field->is_integer() ? integer(record, field->where) : field->convert(record);
        if (!set_dict_item(dict, field->key(), value)) [[unlikely]]
            return false;
    }
    return true;
}

PyObject* dict_of(Fields fields, Bytes record)
{
    PyRef dict{made(PyDict_New())};
    return dict && fill(dict.get(), fields, record) ? dict.release() : nullptr;
}

PyObject* whole_dict(Fields fields, Bytes record)
{
    return made(dict_of(fields, record));
}

bool fill_dicts(PyObject* list, size_t length, Fields fields, Bytes entries)
{
    for (size_t i = 0; i < length; ++i) {
        PyObject* dict = made(PyDict_New());  // the list owns it from the next line on
        if (!set_list_item(list, i, dict) || !fill(dict, fields, entries.from(i * fields.record_size)))
            return false;
    }
    return true;
}

PyObject* dict_or_none(Fields fields, Bytes record, const char* no_dict)
{
    PyRef dict{PyDict_New()};
    if (!dict)
        return print_none(no_dict);
    const bool complete = fill(dict.get(), fields, record);
    return built_or_none(std::move(dict), complete);
}

PyObject* dict_or_null(Fields fields, Bytes record)
{
    PyRef dict{PyDict_New()};
    if (!dict)
        return print_none(no_buffer);
    return fill(dict.get(), fields, record) ? dict.release() : nullptr;
}

PyObject* dict_or_no_memory(Fields fields, Bytes record)
{
    PyObject* dict = dict_of(fields, record);
    return dict ? dict : PyErr_NoMemory();
}

}  // namespace qdp
