// The three names of a virtual switch: its alias, which people type, its switch id and its portset name.
#pragma once

#include "core/fail.h"
#include "platform/switch_state.h"

// Loads the host's switches into the switch state library. The status of the first step that fails, or 0.
QDP_EXPORT uint32_t DVSLoadConfig();
QDP_EXPORT uint32_t LibraryInit();

// The id (64 bytes) of the switch with this alias: 0, 0xbad0003 when there is none, 0xbad0007 when it is not of class
// "vswitch". The output is untouched unless the result is 0. AllTypes takes a switch of any class.
QDP_EXPORT uint32_t DVSAliasToSwitchId(const char* alias, char* switch_id);
QDP_EXPORT uint32_t DVSAliasToSwitchIdAllTypes(const char* alias, char* switch_id);

// The portset name (128 bytes, NUL-terminated when shorter) of the switch with this alias; its alias property or its id
// when it has none. 0, or 0xbad0003 and an empty name.
QDP_EXPORT uint32_t DVSAliasToPortsetName(const char* alias, char* portset_name);

// The alias (128 bytes) of the switch whose portset name the given name begins with; 128 zero bytes when there is none.
// 0, or 0xbad0007 and an empty alias for an empty name.
QDP_EXPORT uint32_t DVSPortsetNameToAlias(const char* portset_name, char* alias);

// Whether the port lookup of the switch state library, which gets the arguments as they are, finds a port: 1 or 0.
QDP_EXPORT int DVPortExist(uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t, uintptr_t);

namespace qdp {

// A switch id; the last byte is always NUL.
struct SwitchId {
    char text[switch_id_bytes];
};

// A portset name, with room for the NUL that a name of full length lacks.
struct PortsetName {
    char text[portset_name_bytes + 1];
};

// Resolve an alias to the id of a switch of class "vswitch", or to a portset name. False when no such switch is known.
inline bool find_switch_id(const char* alias, SwitchId& id)
{
    return DVSAliasToSwitchId(alias, id.text) == status_success;
}
bool find_portset_name(const char* alias, PortsetName& name);

// The same, and the message of the methods that name the alias when they cannot resolve it.
inline bool resolve_switch_id(const char* alias, SwitchId& id)
{
    const bool found = find_switch_id(alias, id);
    if (!found) [[unlikely]]
        print_format(no_switch_id, alias);
    return found;
}
bool resolve_portset_name(const char* alias, PortsetName& name);

}  // namespace qdp
