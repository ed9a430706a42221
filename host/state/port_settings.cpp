// How ports and switches are configured beyond the inventory: filters, features, pins, flow cache switches.
#include "host/state/port_settings.h"

#include "host/host.h"

namespace host {

PortSettings default_port_settings(const Host&)
{
    return {};
}

}  // namespace host
