// Scenarios: JSON files that say what the embedded host has. See host/scenarios/README.md.
#pragma once

#include <string>

#include "host/state/host.h"

namespace host::scenario {

// The host that a scenario describes: a file, or one of the built-in scenarios by its name. Throws std::exception,
// whose text says what is wrong and where.
Host load(const std::string& scenario);

// The host that the text of a scenario describes. What is wrong with it is said of "scenario".
Host load_text(const std::string& text);

inline constexpr char default_scenario[] = "default";

// Throws as load does when the scenario is not valid.
void check(const std::string& scenario);

// A scenario with all that follows from it written out, but for lists whose entries repeat very often. Throws as load
// does.
std::string with_defaults(const std::string& scenario);

// The scenario of a host as it stands. Its counters have no past.
std::string to_text(Host host);

// How many switches, ports, flows and so on it has, as JSON under the words that `qdp-host show` prints.
std::string summary(const Host& host);

}  // namespace host::scenario
