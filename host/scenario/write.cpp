// Writes scenarios.
#include "host/scenario/scenario.h"
#include "host/scenario/whole_host.h"

namespace host::scenario {

std::string to_text(Host host, const Json* source)
{
    JsonText text{true};
    host_format(true).write({text, source}, host);
    return std::move(text.text) + '\n';
}

std::string to_text(Host host)
{
    return to_text(std::move(host), nullptr);
}

}  // namespace host::scenario
