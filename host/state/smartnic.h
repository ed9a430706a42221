// The SmartNIC's port model: host PFs, LIFs, mux VLAN ports, output ports, mux mode, RSS overrides, log level.
#pragma once

namespace host {

struct Host;

struct SmartNic {};

// Of the built-in host, whose switches stand already.
SmartNic default_smartnic(const Host& host);

}  // namespace host
