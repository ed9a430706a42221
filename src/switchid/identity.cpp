// The three names of a virtual switch, resolved through the switch state library.
#include "switchid/identity.h"

#include <cstdio>

#include "core/fail.h"
#include "switchid/property.h"

namespace qdp {

namespace {

// A text of at most portset_name_bytes, which need not end in NUL.
std::string_view name_in(const char* text)
{
    return {text, strnlen(text, portset_name_bytes)};
}

// Fills the portset_name_bytes of the output: zeros follow the name, a name that fills it leaves no NUL.
void copy_name(std::string_view name, char* out)
{
    std::memset(out, 0, portset_name_bytes);
    name.copy(out, portset_name_bytes);
}

uint32_t copy_switch_id(DVSSwitch* handle, char* switch_id)
{
    const char* id = DVS_SwitchId(handle);
    if (!id)
        return status_not_found;
    std::memcpy(switch_id, id, switch_id_bytes);
    switch_id[switch_id_bytes - 1] = '\0';
    return status_success;
}

// Compared inline: a strcmp call costs more than the eight bytes. The terminator counts: a class whose name only begins
// with "vswitch" is another class.
bool is_vswitch(DVSSwitch* handle)
{
    const char* name = DVS_ClassName(handle);
    if (!name)
        return false;
#pragma GCC unroll 8
    for (size_t i = 0; i < sizeof vswitch_class; ++i)
        if (name[i] != vswitch_class[i])
            return false;
    return true;
}

struct PortsetSearch {
    bool found;
    const char* portset_name;
    char alias[portset_name_bytes];
};

// Deliberately compares over the length of the switch's own portset name: a longer wanted name matches its beginning,
// and an empty portset name matches every name.
uint32_t match_portset(DVSSwitch* handle, void* context)
{
    auto* search = static_cast<PortsetSearch*>(context);
    const char* id = DVS_SwitchId(handle);
    const auto portset = host_property_text(id, portset_property);
    if (!portset || std::strncmp(portset->data(), search->portset_name, portset->size()) != 0)
        return 0;

    search->found = true;
    const auto alias = global_property_text(id, alias_property);
    if (alias)
        copy_name(*alias, search->alias);
    else
        std::snprintf(search->alias, sizeof search->alias, "%s", search->portset_name);
    return 1;
}

}  // namespace

bool find_portset_name(const char* alias, PortsetName& name)
{
    name.text[portset_name_bytes] = '\0';
    return DVSAliasToPortsetName(alias, name.text) == status_success;
}

bool resolve_portset_name(const char* alias, PortsetName& name)
{
    if (find_portset_name(alias, name))
        return true;
    print_format(no_portset_name, alias);
    return false;
}

}  // namespace qdp

using namespace qdp;

uint32_t DVSLoadConfig()
{
    if (const uint32_t status = DVSState_ConfigReset(); status != status_success)
        return status;

    void* state = nullptr;
    uint32_t length = 0;
    if (const uint32_t status = DVSHCK_StateGet(&state, &length); status != status_success)
        return status;

    const Owned<void> owned{state};
    return DVSState_ConfigDeserialize(state, length);
}

uint32_t LibraryInit()
{
    return DVSLoadConfig();
}

uint32_t DVSAliasToSwitchId(const char* alias, char* switch_id)
{
    DVSSwitch* handle = DVSState_SwitchFindByAlias(alias);
    if (!handle)
        return status_not_found;
    return is_vswitch(handle) ? copy_switch_id(handle, switch_id) : status_bad_parameter;
}

uint32_t DVSAliasToSwitchIdAllTypes(const char* alias, char* switch_id)
{
    DVSSwitch* handle = DVSState_SwitchFindByAlias(alias);
    return handle ? copy_switch_id(handle, switch_id) : status_not_found;
}

uint32_t DVSAliasToPortsetName(const char* alias, char* portset_name)
{
    DVSSwitch* handle = DVSState_SwitchFindByAlias(alias);
    if (!handle) {
        portset_name[0] = '\0';
        return status_not_found;
    }

    const char* id = DVS_SwitchId(handle);
    auto name = host_property_text(id, portset_property);
    if (!name)
        name = global_property_text(id, alias_property);
    copy_name(name.value_or(name_in(id ? id : "")), portset_name);
    return status_success;
}

uint32_t DVSPortsetNameToAlias(const char* portset_name, char* alias)
{
    if (!portset_name || portset_name[0] == '\0') {
        alias[0] = '\0';
        return status_bad_parameter;
    }

    PortsetSearch search{false, portset_name, {}};
    DVSState_SwitchForEach(match_portset, &search);
    copy_name(search.found ? name_in(search.alias) : "", alias);
    return status_success;
}

int DVPortExist(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d, uintptr_t e, uintptr_t f)
{
    return DVSState_PortFind(a, b, c, d, e, f) != nullptr;
}
