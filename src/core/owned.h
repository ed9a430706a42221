// Ownership: one owner for a Python reference, one for a record from the system allocator.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/python.h"

namespace qdp {

struct DropReference {
    void operator()(PyObject* object) const { Py_DECREF(object); }
};

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

// A reference of our own, taken over from the call that created the object.
using PyRef = std::unique_ptr<PyObject, DropReference>;

// Another reference to an object that somebody else owns.
inline PyRef new_reference(PyObject* object)
{
    Py_INCREF(object);
    return PyRef{object};
}

template <class Record>
using Owned = std::unique_ptr<Record, FreeMemory>;

// A record whose first `cleared` bytes are zero, or null. By malloc, since glibc's calloc goes past the allocator's
// cache of freed blocks; -fno-builtin-malloc keeps the compiler from joining the two lines to a calloc.
template <class Record>
Owned<Record> allocate(size_t cleared = sizeof(Record))
{
    Owned<Record> record{static_cast<Record*>(std::malloc(sizeof(Record)))};
    if (record)
        std::memset(static_cast<void*>(record.get()), 0, cleared);
    return record;
}

// Zeroes a block of many pages without touching them: the kernel gives zero pages when they are first used.
void clear_large(void* memory, size_t size);

// A record of megabytes that is all zero, or null. The library rarely fills it: clearing it by memset would cost more
// than the call.
template <class Record>
Owned<Record> allocate_large()
{
    Owned<Record> record{static_cast<Record*>(std::malloc(sizeof(Record)))};
    if (record)
        clear_large(record.get(), sizeof(Record));
    return record;
}

// A list record of megabytes, of which only the header before `entries` is zeroed, or null: clearing what the library
// rarely fills would cost more than the call. What a wrong library counts and does not write is undefined there.
template <class Record>
Owned<Record> allocate_list()
{
    return allocate<Record>(offsetof(Record, entries));
}

}  // namespace qdp
