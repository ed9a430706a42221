"""Lists of as many entries as their record's count says, all of whose 32 bits count."""

import struct

import pytest

MANY = (1 << 16) + 3  # whose low half is 3

# Of each method: its arguments, the operation that answers it, and where in the answer the count stands.
COUNTED = {
    "ListSwitches": ((), "Qdp_Get_Switch_List", 0),
    "ListPorts": ((0,), "Qdp_Get_Port_List", 4),
    "ListPortMACTable": ((0, 0), "Qdp_Dump_Port_MAC_Table", 0),
    "ListSwitchMACTable": ((0,), "Qdp_Dump_Switch_MAC_Table", 0),
    "ListRSSEngine": ((0, 0), "Qdp_Get_RSS_Engine_List", 0),
    "ListDevAffinity": ((), "Qdp_List_Dev_Affinity", 0),
    "ListSwitchMuxVLAN": ((0, 0), "Qdp_List_Mux_VLAN_Info", 0),
    "GetFlowStats": ((0, (0,), 0), "Qdp_Get_Flow_Stats", 0),
    "GetFPOStats": ((0, (0,)), "Qdp_Get_FPO_Stats", 0),
    "P4HWTableList": ((), "Qdp_P4_HWTable_List", 4),
    "P4MirrorTableDump": ((), "Qdp_P4_MirrorTable_Dump", 4),
    "P4PortMirrorTableDump": ((0, 0), "Qdp_P4_PortMirrorTable_Dump", 4),
}


@pytest.mark.parametrize("method", COUNTED)
def test_a_count_beyond_16_bits(host, qdp, method):
    arguments, operation, offset = COUNTED[method]
    host.script(operation, outputs=[bytes(offset) + struct.pack("<I", MANY)])
    outcome = qdp.call(method, *arguments)
    assert outcome.printed == ""
    result = outcome.result
    (listed,) = [result] if isinstance(result, list) else [each for each in result.values() if isinstance(each, list)]
    assert len(listed) == MANY
