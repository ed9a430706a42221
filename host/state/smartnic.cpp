// The SmartNIC's port model: host PFs, LIFs, mux VLAN ports, output ports, mux mode, RSS overrides, log level.
#include "host/state/smartnic.h"

#include "host/host.h"

namespace host {

SmartNic default_smartnic(const Host&)
{
    return {};
}

}  // namespace host
