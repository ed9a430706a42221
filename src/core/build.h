// Building results: objects, dicts of field tables, lists. What fails has set SystemError and gives null or false.
#pragma once

#include <utility>

#include "core/fail.h"
#include "core/fields.h"

namespace qdp {

PyObject* text_object(std::string_view text);

// A MAC address as text.
PyObject* mac_object(Bytes record, size_t offset);

// An IP address as text: IPv6 when the record's flag says so, else IPv4.
PyObject* address_object(Bytes record, Place is_ipv6, size_t ipv6_offset, size_t ipv4_offset);

// --- Items. Each takes the object over, which may be null after a failure of its own. What it is set in is owned by
// the caller meanwhile: the collector may run, and its callbacks may empty what they find. ---

inline bool set_dict_item(PyObject* dict, const char* key, PyObject* value)
{
    const PyRef owned{value};
    if (!owned) [[unlikely]]
        return false;
    if (PyDict_SetItemString(dict, key, value) != 0) [[unlikely]]
        return building_failed(cannot_set_dict_item);
    return true;
}
inline bool set_list_item(PyObject* list, size_t position, PyObject* item)
{
    if (!item) [[unlikely]]
        return false;
    if (PyList_SetItem(list, static_cast<Py_ssize_t>(position), item) != 0) [[unlikely]]
        return building_failed(cannot_set_list_item);
    return true;
}
inline bool set_tuple_item(PyObject* tuple, size_t position, PyObject* item)
{
    if (!item) [[unlikely]]
        return false;
    if (PyTuple_SetItem(tuple, static_cast<Py_ssize_t>(position), item) != 0) [[unlikely]]
        return building_failed(cannot_set_tuple_item);
    return true;
}

// --- Dicts ---

// The integer whose bits are the highest of a word.
inline PyObject* highest_bits(uint64_t word, const Place& where)
{
    return object_or_error(where.is_signed ? PyLong_FromLong(static_cast<int64_t>(word) >> where.down)
                                           : PyLong_FromUnsignedLong(word >> where.down));
}

// The integer at a place, from the word that begins there.
inline PyObject* integer_object(uint64_t word, const Place& where)
{
    return highest_bits(word << where.up, where);
}

// The object of a row.
inline PyObject* field_object(Bytes record, const Field& field)
{
    if (field.convert) [[unlikely]]
        return field.convert(record, field);
    return integer_object(record.load<uint64_t>(field.where.offset), field.where);
}

// Sets a table's keys from the record at the start of `record`.
bool fill(PyObject* dict, Fields fields, Bytes record);

// A new dict of a table's keys.
PyObject* dict_of(Fields fields, Bytes record);

// The keys of `count` dicts of one table in one result: the later dicts take over the key objects of the first.
class SharedKeys {
    friend bool fill_dicts(PyObject* list, size_t length, Fields fields, Bytes entries);

public:
    explicit SharedKeys(uint64_t dicts) : is_shared_{dicts > 1} {}
    SharedKeys(const SharedKeys&) = delete;
    ~SharedKeys();

    // Sets the key that has this position in its dict, as set_dict_item does.
    bool set(PyObject* dict, size_t position, const char* key, PyObject* value);
    bool fill(PyObject* dict, Fields fields, Bytes record);
    PyObject* dict_of(Fields fields, Bytes record);

    // The same in one piece: whatever fails in it is "Failed to allocate buffer.\n".
    PyObject* whole_dict(Fields fields, Bytes record) { return object_or_error(dict_of(fields, record)); }

private:
    static constexpr size_t max_keys = 32;  // keys beyond these are set one by one

    void remember(PyObject* first, const char* key);
    bool fill_inline(PyObject* dict, Fields fields, Bytes record);
    bool fill_one_by_one(PyObject* dict, Fields fields, Bytes record);

    bool is_shared_;
    Py_ssize_t next_ = 0;  // of the first dict
    size_t count_ = 0;
    PyObject* keys_[max_keys];
};

// --- Lists ---

// True, with the exception of its handler set, when a signal has arrived. Only lists that no right library asks for
// are looked at, and these once in a while.
inline bool is_interrupted(uint64_t length, size_t position)
{
    return length > 65536 && position % 4096 == 0 && PyErr_CheckSignals() != 0;
}

// Fills a list, made with its length, with what `make(position)` makes: a new reference, or null with SystemError set.
template <class Make>
[[gnu::always_inline]] inline bool fill_list(PyObject* list, size_t length, Make make)
{
    for (size_t i = 0; i < length; ++i)
        if (is_interrupted(length, i) || !set_list_item(list, i, make(i))) [[unlikely]]
            return false;
    return true;
}

// A new list of `length` items, which `make(position)` makes.
template <class Make>
PyObject* list_of(uint64_t length, Make make)
{
    PyRef list{object_or_error(PyList_New(static_cast<Py_ssize_t>(length)))};
    return list && fill_list(list.get(), length, make) ? list.release() : nullptr;
}

// Fills a list, made with its length, with one dict an entry; the entries lie back to back.
bool fill_dicts(PyObject* list, size_t length, Fields fields, Bytes entries);

// --- Whole results of methods ---

// A table's dict. A dict that cannot be made is a text on standard error and None; a key that cannot be set is
// SystemError, beside None or raised.
PyObject* dict_or_none(Fields fields, Bytes record, const char* no_dict = no_buffer);
PyObject* dict_or_null(Fields fields, Bytes record);

// A table's dict whose making fails as Py_BuildValue does: MemoryError is raised.
PyObject* dict_or_no_memory(Fields fields, Bytes record);

// A list with one dict an entry. A list that cannot be made is a text on standard error and None; what cannot be put
// into it is SystemError beside None.
inline PyObject* dicts_or_none(uint32_t count, Fields fields, Bytes entries, const char* no_list = no_buffer)
{
    PyRef list{PyList_New(count)};
    if (!list)
        return print_none(no_list);
    const bool complete = count == 0 || fill_dicts(list.get(), count, fields, entries);
    return built_or_none(std::move(list), complete);
}

}  // namespace qdp
