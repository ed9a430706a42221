// Texts that mean something to the module: they stand in arguments and in answers beside arbitrary ones.
#pragma once

#include <string>

#include "fuzz/input.h"

namespace fuzz {

// A text of arbitrary bytes, NULs among them, or a known one.
std::string take_text(Input& input);

}  // namespace fuzz
