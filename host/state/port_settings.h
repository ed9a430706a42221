// How ports and switches are configured beyond the inventory: filters, features, pins, flow cache switches.
#pragma once

namespace host {

struct Host;

struct PortSettings {};

// Of the built-in host, whose switches stand already.
PortSettings default_port_settings(const Host& host);

}  // namespace host
