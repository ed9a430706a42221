// Ownership: one owner for a Python reference, one for a record from the system allocator.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "module/python.h"

namespace qdp {

struct DropReference {
    void operator()(PyObject* object) const { Py_DECREF(object); }
};

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

// A reference of our own, taken over from the call that created the object.
using PyRef = std::unique_ptr<PyObject, DropReference>;

template <class Record>
using Owned = std::unique_ptr<Record, FreeMemory>;

// A record whose first `cleared` bytes are zero, or null. Not by calloc, which goes without the allocator's cache of freed
// blocks; the build keeps the compiler from putting it here.
template <class Record>
Owned<Record> allocate(size_t cleared = sizeof(Record))
{
    Owned<Record> record{static_cast<Record*>(std::malloc(sizeof(Record)))};
    if (record)
        std::memset(static_cast<void*>(record.get()), 0, cleared);
    return record;
}

// A large record of which only the header before `entries` is zeroed, or null: clearing megabytes that the library
// rarely fills would cost more than the call.
template <class Record>
Owned<Record> allocate_list()
{
    return allocate<Record>(offsetof(Record, entries));
}

}  // namespace qdp
