// What every call keeps to, whatever it was given and told.
#pragma once

#include <Python.h>

namespace fuzz {

// Takes over what a call returned, beside the exception that is set, and clears that. A pair that the module's callers
// do not know, or a result with a hole in it, is a fault. May a call return NULL without an exception?
void check_outcome(const char* name, PyObject* result, bool may_be_null_alone);

}  // namespace fuzz
