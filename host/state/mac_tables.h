// The MAC tables of the switches.
#pragma once

namespace host {

struct Host;

struct MacTables {};

// Of the built-in host, whose switches stand already.
MacTables default_mac_tables(const Host& host);

}  // namespace host
