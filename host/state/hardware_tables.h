// The SmartNIC's hardware tables, read by index and by key.
#pragma once

namespace host {

struct Host;

struct HardwareTables {};

// Of the built-in host, whose switches stand already.
HardwareTables default_hardware_tables(const Host& host);

}  // namespace host
