"""What the platform answers when there is nothing to list, and when there is one record, for each method that lists
records; the embedded host itself has many."""

import struct

NOTHING = b""  # the module's record stays zeroed

# A record in which every word is 1: so is its count, and so are the fields of its only entry.
ONES = b"\1\0\0\0" * 4096

# A port's configuration with one multicast address, one range of VLANs, and one of its 64 meta flow slots enabled.
ONE_OF_EACH = ONES[:256] + b"\1" + bytes(63) + ONES[:1024]

# An engine with one queue, whose id is no number that the interpreter has ready.
ONE_ENGINE = ONES[:32] + struct.pack("<H", 1000)

# A page of one flow, of which only the length of its actions is not zero.
ONE_FLOW = struct.pack("<8xIIII168xH", 1, 1, 10264, 0, 304)

# A hex dump of one byte behind its header.
ONE_BYTE = struct.pack("<IIQ", 17, 0, 0x1000) + b"\xab"

# Chunks of balancer statistics after which nothing follows: without an entry, and with one of a context.
FINISHED = 0xFFFFFFFF
NO_ENTRY = struct.pack("<III12x", FINISHED, FINISHED, 0)
ONE_CONTEXT = struct.pack("<III12xI", FINISHED, FINISHED, 1, 2) + ONES[:36]

# By method: the operation, and its answers of no record and of one.
LISTS = {
    "ListSwitches": ("Qdp_Get_Switch_List", NOTHING, ONES),
    "ListPorts": ("Qdp_Get_Port_List", NOTHING, ONES),
    "ListPortMACTable": ("Qdp_Dump_Port_MAC_Table", NOTHING, ONES),
    "ListSwitchMACTable": ("Qdp_Dump_Switch_MAC_Table", NOTHING, ONES),
    "GetFlowStats": ("Qdp_Get_Flow_Stats", NOTHING, ONES),
    "DumpFlowTable": ("Qdp_Dump_Flow_Table", NOTHING, ONE_FLOW),
    "GetPortConf": ("Qdp_Get_Port_Conf", NOTHING, ONE_OF_EACH),
    "GetPortTxUplink": ("Qdp_Get_Port_Tx_Uplink", NOTHING, b"\1\1\1\0"),
    "ListRSSEngine": ("Qdp_Get_RSS_Engine_List", NOTHING, ONE_ENGINE),
    "GetPortNetQInfo": ("Qdp_Get_Port_NetQ_Info", NOTHING, ONES),
    "ListDevAffinity": ("Qdp_List_Dev_Affinity", NOTHING, ONES),
    "DumpLBStats": ("Qdp_DumpLBStats", NO_ENTRY, ONE_CONTEXT),
    "GetFPOStats": ("Qdp_Get_FPO_Stats", NOTHING, ONES),
    "ListLCoreIDs": ("Qdp_Get_LCore_ID_Bitmap", NOTHING, b"\1"),
    "ListSwitchMuxVLAN": ("Qdp_List_Mux_VLAN_Info", NOTHING, ONES),
    "ListSwitchShadowPorts": ("Qdp_List_Shadow_Ports", NOTHING, ONES),
    "HostPFGet": ("Qdp_P4_Cmd", NOTHING, ONES),
    "LifPortList": ("Qdp_P4_Cmd", NOTHING, ONES),
    "VlanPortList": ("Qdp_P4_Cmd", NOTHING, ONES),
    "PortList": ("Qdp_P4_Cmd", NOTHING, ONES),
    "P4HWTableList": ("Qdp_P4_HWTable_List", NOTHING, ONES),
    "P4HWTableDump": ("Qdp_P4_HWTable_Dump", struct.pack("<I", 16), ONE_BYTE),
    "P4MirrorTableDump": ("Qdp_P4_MirrorTable_Dump", NOTHING, ONES),
    "P4PortMirrorTableDump": ("Qdp_P4_PortMirrorTable_Dump", NOTHING, ONES),
}
