// What the SmartNIC's hardware tables hold beyond its port model and the offloaded flows: tunnels, and headers of
// mirror sessions.
#include "host/state/hardware_tables.h"

namespace host::hardware {

uint32_t mirror_number(const ::MirrorSession& session)
{
    return session.index + (session.direction ? max_mirror_sessions : 0);
}

}  // namespace host::hardware
