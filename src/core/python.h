// The interpreter's interface, and how the module exports plain functions.
#pragma once

#include <Python.h>

#include <cstdint>

// Marks a plain function that the hosting process and the platform libraries find in the module by its name.
#define QDP_EXPORT extern "C" [[gnu::visibility("default")]]
