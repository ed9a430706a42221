// Writes scenarios.
#include "host/scenario/scenario.h"
#include "host/scenario/whole_host.h"

namespace host::scenario {

std::string written(const Host& host)
{
    return whole_host.write(host).dump(2, ' ', true, OrderedJson::error_handler_t::replace) + '\n';
}

}  // namespace host::scenario
