// The interpreter's interface, and the shape of every Python method of the module.
#pragma once

#include <Python.h>

#include <cstdint>

namespace qdp {

// A method gets the module and its positional arguments.
using Method = PyObject*(PyObject* module, PyObject* args);

}  // namespace qdp

// Marks a plain function that the hosting process and the platform libraries find in the module by its name.
#define QDP_EXPORT extern "C" [[gnu::visibility("default")]]
