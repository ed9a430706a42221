// The ways a method fails. A method that fails ends in `return` and one of these.
#pragma once

#include "core/owned.h"

namespace qdp {

// Texts that many methods share.
inline constexpr char invalid_parameter[] = "TypeError: Invalid parameter passed.\n";
inline constexpr char invalid_parameter_blank_line[] = "TypeError: Invalid parameter passed.\n\n";  // of some methods
inline constexpr char no_memory[] = "Failed to allocate memory.\n";
inline constexpr char no_buffer[] = "Failed to allocate buffer.\n";
inline constexpr char no_switch_id[] = "Failed to find dvs ID for dvs alias %s.\n";
inline constexpr char no_portset_name[] = "Failed to get portset name from dvs %s.\n";

// Texts of a result that cannot be built.
inline constexpr char cannot_set_dict_item[] = "Failed to set dict item.\n";
inline constexpr char cannot_set_list_item[] = "Failed to set list item.\n";
inline constexpr char cannot_set_tuple_item[] = "Failed to set tuple item.\n";

// A new reference to None.
PyObject* none();

// Writes a text to standard error. An exception that the interpreter has set stays set.
void print(const char* text);
[[gnu::format(printf, 1, 2)]] void print_format(const char* format, ...);

// Print and return None: for refused arguments, refusing libraries and unknown switches.
PyObject* print_none(const char* text);
[[gnu::format(printf, 1, 2)]] PyObject* print_none_format(const char* format, ...);

// The end of a command: None, after printing the refusal when the library's status is one.
PyObject* command_result(uint32_t status, const char* refusal);

// Print and return NULL with no exception of our own.
PyObject* print_null(const char* text);

// Print and return False.
PyObject* print_false(const char* text);

// Raise: set the exception and return NULL.
PyObject* raise(PyObject* exception, const char* text);

// A part of a result that cannot be built: set SystemError with one of the texts above. Every function that builds
// has done so when it returns false or null; what it had built so far is released by its owner.
void set_system_error(const char* text);
inline bool building_failed(const char* text)
{
    set_system_error(text);
    return false;
}

// An object just created, or null after the failure "Failed to allocate buffer.\n".
inline PyObject* object_or_error(PyObject* object)
{
    if (!object) [[unlikely]]
        building_failed(no_buffer);
    return object;
}

// A result that has been built, or None when that failed: SystemError stays set beside None, which is what the
// callers of most methods rely on. NULL with the exception of a signal's handler, which interrupted the building.
PyObject* not_built();
inline PyObject* built_or_none(PyRef result, bool complete)
{
    return complete ? result.release() : not_built();
}

}  // namespace qdp
