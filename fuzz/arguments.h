// Arguments of a method: mostly of the form that it parses, sometimes anything.
#pragma once

#include <Python.h>

#include <string_view>

#include "fuzz/input.h"

namespace fuzz {

// Makes the classes of odd objects, which Python code defines.
void prepare_arguments();

// A new tuple for a method that parses by this format.
PyObject* take_arguments(Input& input, std::string_view format);

}  // namespace fuzz
