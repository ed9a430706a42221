// The module's methods as the interpreter sees them, and the formats by which they parse their arguments.
#pragma once

#include <Python.h>

#include <string>
#include <vector>

namespace fuzz {

struct MethodUnderTest {
    std::string name;
    PyObject* object;    // the interpreter's function object
    std::string format;  // of PyArg_ParseTuple; empty when the method does not look at its tuple
};

// In the order of the module's table. The formats are learned by calling each method with an empty tuple.
std::vector<MethodUnderTest> methods_of_module();

}  // namespace fuzz
