// Scenarios: JSON files that say what the embedded host has. See host/scenarios/README.md.
#pragma once

#include <string>

#include "host/host.h"

namespace host::scenario {

// The host that a scenario describes. Throws std::exception, whose text says what is wrong and where.
Host load(const std::string& path);
Host load_default();

// The scenario of a host as it stands. Its counters have no past.
std::string written(const Host& host);

// How many switches, ports, flows and so on it has, as JSON under the words that `qdp-host show` prints.
std::string summary(const Host& host);

// The JSON schema of scenarios.
std::string schema();

}  // namespace host::scenario
