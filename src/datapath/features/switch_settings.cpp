// Settings that a switch keeps in its host properties: NUMA-aware teaming, burst size, overlay L2 flow and metaflow.
#include "core/fail.h"
#include "platform/settings.h"
#include "platform/switch_state.h"
#include "switchid/property.h"

namespace qdp {

namespace {

// A setting: its property, whose record is a Record, what holds where the host has no such property, and how a value
// is shown. Values are words here, whatever their width in the record.
template <class Record>
struct PropertySetting {
    using RecordType = Record;

    const char* key;
    bool (*fallback)(const char* alias, uint32_t& value);  // false when it has none; it has printed why, or nothing
    PyObject* (*object)(uint32_t value);
};

// The datapath's own value, found by the switch's portset name. Nothing is printed when the datapath refuses. Not
// inlined: most switches have the property and never come here.
template <uint32_t (*get_value)(const char* portset_name, uint32_t* value)>
[[gnu::noinline]] bool ask_datapath(const char* alias, uint32_t& value)
{
    PortsetName name;
    return resolve_portset_name(alias, name) && get_value(name.text, &value) == 0;
}

uint32_t get_numa_team(const char* portset_name, uint32_t* value)
{
    uint8_t enabled = 0;
    const uint32_t status = Qdp_GetSwitchNUMATeam(portset_name, portset_name_bytes, &enabled);
    *value = enabled;
    return status;
}

bool on_by_default(const char*, uint32_t& value)
{
    value = 1;
    return true;
}

PyObject* number(uint32_t value)
{
    return PyLong_FromUnsignedLong(value);
}

PyObject* truth(uint32_t value)
{
    return PyBool_FromLong(value != 0);
}

constexpr PropertySetting<ByteSetting> numa_team{numa_team_property, ask_datapath<get_numa_team>, truth};
constexpr PropertySetting<WordSetting> burst_size{burst_size_property, ask_datapath<Qdp_GetSwitchBurstSize>, number};
constexpr PropertySetting<WordSetting> overlay_l2_flow{overlay_l2_flow_property,
                                                       ask_datapath<Qdp_GetSwitchOverlayL2Flow>, number};
constexpr PropertySetting<ByteSetting> meta_flow{meta_flow_property, on_by_default, number};

template <const auto& setting>
PyObject* get(PyObject* args)
{
    const char* alias;
    if (!PyArg_ParseTuple(args, "s", &alias))
        return print_none(invalid_parameter);

    SwitchId id;
    if (!resolve_switch_id(alias, id))
        return none();

    typename std::remove_cvref_t<decltype(setting)>::RecordType record;  // set when the setting is present
    const SettingStatus found = read_setting(id, setting.key, record);
    if (found == SettingStatus::present) [[likely]]
        return setting.object(record.value);

    uint32_t value = 0;
    return found == SettingStatus::absent && setting.fallback(alias, value) ? setting.object(value) : none();
}

// Whether the value has been written; it has printed what kept it from that. A byte setting takes the low byte.
template <class Record>
bool set(const PropertySetting<Record>& setting, PyObject* args)
{
    const char* alias;
    uint32_t value;
    if (!PyArg_ParseTuple(args, "sI", &alias, &value)) {
        print(invalid_parameter);
        return false;
    }

    SwitchId id;
    return resolve_switch_id(alias, id) &&
           write_setting(id, setting.key, Record{setting_version, static_cast<decltype(Record::value)>(value)});
}

}  // namespace

PyObject* PyQDP_GetSwitchNUMATeam(PyObject*, PyObject* args)
{
    return get<numa_team>(args);
}

PyObject* PyQDP_SetSwitchNUMATeam(PyObject*, PyObject* args)
{
    set(numa_team, args);
    return none();
}

PyObject* PyQDP_GetSwitchBurstSize(PyObject*, PyObject* args)
{
    return get<burst_size>(args);
}

PyObject* PyQDP_SetSwitchBurstSize(PyObject*, PyObject* args)
{
    set(burst_size, args);
    return none();
}

PyObject* PyQDP_GetSwitchOverlayL2Flow(PyObject*, PyObject* args)
{
    return get<overlay_l2_flow>(args);
}

PyObject* PyQDP_SetSwitchOverlayL2Flow(PyObject*, PyObject* args)
{
    set(overlay_l2_flow, args);
    return none();
}

PyObject* PyQDP_GetSwitchMetaFlow(PyObject*, PyObject* args)
{
    return get<meta_flow>(args);
}

// The one setter that says how it went, as 1 or 0, even beside an exception of the parser.
PyObject* PyQDP_SetSwitchMetaFlow(PyObject*, PyObject* args)
{
    return PyLong_FromLong(set(meta_flow, args));
}

}  // namespace qdp
