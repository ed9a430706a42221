// Building results: the interpreter of field tables, dicts and lists.
#include "core/build.h"

namespace qdp {

bool fill(PyObject* dict, Fields fields, Bytes record)
{
    for (const Field& field : fields)
        if (!set_dict_item(dict, field.key, field_object(record, field))) [[unlikely]]
            return false;
    return true;
}

PyObject* dict_of(Fields fields, Bytes record)
{
    PyRef dict{object_or_error(PyDict_New())};
    return dict && fill(dict.get(), fields, record) ? dict.release() : nullptr;
}

SharedKeys::~SharedKeys()
{
    while (count_ != 0)
        PyRef{keys_[--count_]};
}

namespace {

// As set_dict_item, with a key object.
inline bool set_with(PyObject* key, PyObject* dict, PyObject* value)
{
    const PyRef owned{value};
    if (!owned) [[unlikely]]
        return false;
    if (PyDict_SetItem(dict, key, value) != 0) [[unlikely]]
        return building_failed(cannot_set_dict_item);
    return true;
}

}  // namespace

// The key that has just been set is the next of the first dict, unless a collector's callback has changed the dict.
inline void SharedKeys::remember(PyObject* first, const char* key)
{
    PyObject *object, *value;
    if (PyDict_Next(first, &next_, &object, &value) && PyUnicode_CheckExact(object) &&
        PyUnicode_CompareWithASCIIString(object, key) == 0)
        keys_[count_++] = new_reference(object).release();
    else
        is_shared_ = false;
}

bool SharedKeys::set(PyObject* dict, size_t position, const char* key, PyObject* value)
{
    if (position < count_) [[likely]]
        return set_with(keys_[position], dict, value);
    if (!set_dict_item(dict, key, value))
        return false;
    if (is_shared_ && position < max_keys)
        remember(dict, key);
    return true;
}

bool SharedKeys::fill_one_by_one(PyObject* dict, Fields fields, Bytes record)
{
    size_t position = 0;
    for (const Field& field : fields)
        if (!set(dict, position++, field.key, field_object(record, field))) [[unlikely]]
            return false;
    return true;
}

// Inlined into what fills dict after dict: the call would be a tenth of a short dict. Behind all records but the last
// there is room for a word, so that the words that their integers are read from lie in the buffer and need no checks.
[[gnu::always_inline]] inline bool SharedKeys::fill_inline(PyObject* dict, Fields fields, Bytes record)
{
    const bool has_room_behind = record.size() >= fields.record_size + sizeof(uint64_t);
    if (count_ < fields.count || !has_room_behind) [[unlikely]]
        return fill_one_by_one(dict, fields, record);
    PyObject* const* key = keys_;
    for (const Field& field : fields) {
        PyObject* value = field.convert ? field.convert(record, field)
                                        : integer_object(record.word_within(field.where.offset), field.where);
        if (!set_with(*key++, dict, value)) [[unlikely]]
            return false;
    }
    return true;
}

bool SharedKeys::fill(PyObject* dict, Fields fields, Bytes record)
{
    return fill_inline(dict, fields, record);
}

PyObject* SharedKeys::dict_of(Fields fields, Bytes record)
{
    PyRef dict{object_or_error(PyDict_New())};
    return dict && fill_inline(dict.get(), fields, record) ? dict.release() : nullptr;
}

template <class Element>
PyObject* integers(Bytes elements, uint16_t length)
{
    return list_of(length, [elements](size_t i) {
        return object_or_error(PyLong_FromUnsignedLong(elements.load<Element>(i * sizeof(Element))));
    });
}

template PyObject* integers<uint8_t>(Bytes elements, uint16_t length);
template PyObject* integers<uint16_t>(Bytes elements, uint16_t length);

bool fill_dicts(PyObject* list, size_t length, Fields fields, Bytes entries)
{
    SharedKeys keys{length};
    for (size_t i = 0; i < length; ++i) {
        const PyRef dict{object_or_error(PyDict_New())};
        if (is_interrupted(length, i) || !dict || !set_list_item(list, i, new_reference(dict.get()).release()) ||
            !keys.fill_inline(dict.get(), fields, entries.from(i * fields.record_size)))
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
