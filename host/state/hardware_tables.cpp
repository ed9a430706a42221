// The SmartNIC's hardware tables, read by index and by key.
#include "host/state/hardware_tables.h"

#include "host/host.h"

namespace host {

HardwareTables default_hardware_tables(const Host&)
{
    return {};
}

}  // namespace host
