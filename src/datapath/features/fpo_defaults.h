// What flow offload does on a switch whose properties say nothing of it, which follows from the host's kernel.
#pragma once

#include "platform/fpo.h"

namespace qdp {

// Compares two kernel releases ("7.0.3-5-amd64") by their first three numbers: -1, 0 or 1. A number that cannot be read
// is 0, and so are those behind it.
int compare_releases(const char* first, const char* second);

// The models allowed with this kernel release; null when it is not known.
uint32_t default_fpo_models(const char* release);

// The settings on this host.
FpoSettings default_fpo_settings();

}  // namespace qdp
