// The hostile platform: every operation of both libraries draws its answer from the input.
#pragma once

#include "fuzz/input.h"

namespace fuzz {

// The input that operations draw from, until end_platform.
void begin_platform(Input& input);

// Takes back what the platform handed out for the execution. A value that the module had to release and did not is a
// fault.
void end_platform();

}  // namespace fuzz
