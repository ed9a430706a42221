"""The contract of every method, one row each: what it takes, what it asks the platform for, and how it fails. The tests
of arguments, bounds, refusals, failing allocations and failure paths of all methods read these rows."""

import struct
from typing import Any, Callable, Dict, List, NamedTuple, Optional, Tuple

from answers import NO_ENTRY, NOTHING, ONE_BYTE, ONE_CONTEXT, ONE_ENGINE, ONE_FLOW, ONE_OF_EACH, ONES
from qdp_host import Call, Capacity, NullBuffer
from recipes import (
    ALIAS, FLOW, SMARTNIC_PORT, SMARTNIC_SWITCH, UPLINK, VNIC, after, first_tunnel, key_of_a_flow, lif_of_port,
    mac_behind_port, migrated_port, mux_vlan, new_lif, new_vlan, port_away_from_home, port_of_a_lif,
    segment_of_port, static_mac, tunnel_end, tunnel_peer,
)

# --- Texts that several methods print ---

INVALID = "TypeError: Invalid parameter passed.\n"
BLANK_LINE = "TypeError: Invalid parameter passed.\n\n"
NO_TABLE_DATA = "Failed to get table data\n"
NO_MEMORY = "Failed to allocate memory.\n"
NO_BUFFER = "Failed to allocate buffer.\n"
NO_DICT_ITEM = "Failed to set dict item.\n"
NO_LIST_ITEM = "Failed to set list item.\n"
NO_TUPLE_ITEM = "Failed to set tuple item.\n"
UPLINK_COUNTERS = [
    "Failed to allocate uplink stats.\n",
    "Failed to allocate uplink stats counter.\n",
    "Failed to set uplink stats counter.\n",
]

# --- Exceptions that several methods raise ---

INVALID_LB = (ValueError, "invalid parameter passed.")
UNKNOWN_ALIAS = (ValueError, "cannot find dvs alias.")
INTERPRETERS_OWN = [(MemoryError, None)]  # without a text

# --- Bounds: the first value that is refused, by its place in the tuple ---

SWITCH = {0: 16}
PORT = {0: 16, 1: 16384}
FLOWS = 1 << 22

# A switch whose portset property cannot be read goes by another name, which the datapath does not know.
PORTSET = ["DVSState_HostPropLookup", "DVSData_Data", "DVS_SwitchId"]

# The default scenario's first switch, as the platform names it.
PORTSET_NAME = "portset-0"
SWITCH_ID = "switch-production"
RINGS = "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing"


class Method(NamedTuple):
    """A method's contract. What is left out is as most methods have it."""

    name: str
    documentation: str  # it and the parameters are part of the interface, letter by letter
    parameters: str
    takes: str  # the letters of the format that parses its tuple; empty when it looks at none
    arguments: Any  # with which it succeeds on the default scenario, or a function of the module that makes them
    # What it asks the platform for, once it has found the switch of an alias, by its arguments as they arrive.
    sends: Optional[Callable[..., list]] = None
    bounds: Dict[int, int] = {}  # the first value that is refused, by place, beside the other arguments as they are
    accepts: Optional[Callable[..., bool]] = None  # where the bounds do not say which arguments are accepted
    sample: Any = None  # arguments in place of `arguments` where single calls are compared with `sends`
    answer: bytes = b""  # what the first of the platform's answers holds then
    result: Optional[Callable[..., Any]] = None  # of such a call, where that depends on the arguments

    success: Optional[type] = dict  # what it returns then; None for what only acts
    printed: str = ""  # by a success

    invalid: str = INVALID  # printed when the tuple does not parse, or a value is out of range
    out_of_range: Any = None  # printed for a value out of range, where that is another text: it, or a function
    objects: list = []  # values of the place that takes any object, that are refused, and the exception left set
    unknown: List[tuple] = []  # arguments of which a text names nothing
    by_text: bool = False  # whether the first text goes to the platform as it is; otherwise it is an alias
    refused: Optional[str] = None  # printed when the platform refuses the last of what is sent, see methods/
    returns: Any = None  # what each failure returns
    refusal_is_null: bool = False  # whether a refusal of the platform returns NULL, without an exception
    raises: Dict[str, Any] = {}  # for methods that raise: "unparsed", "out of range", "unknown" or "refused" and what
    silent: List[str] = []  # operations whose refusal nothing is printed of
    goes_on: List[str] = []  # operations without which it succeeds, or fails in another way of its own

    answers: Optional[Tuple[str, bytes, bytes]] = None  # for lists: the operation, its answers of no record and of one
    memory: List[str] = []  # printed when memory fails, each text once, in the order of the allocations
    memory_raises: list = []  # what is raised when memory fails, in the order of the allocations
    does_without: tuple = ()  # the exception, or None, beside a result that is there although an allocation failed

    @property
    def by_alias(self):
        return self.takes.startswith("s") and not self.by_text

    @property
    def sent_for(self):
        """Arguments for single calls that are compared with `sends`."""
        return self.arguments if self.sample is None else self.sample

    def printed_out_of_range(self, arguments):
        if callable(self.out_of_range):
            return self.out_of_range(*arguments)
        return self.out_of_range or self.invalid

    def refuses(self, arguments):
        """Whether arguments, as they arrive, are out of range."""
        if self.accepts:
            return not self.accepts(*arguments)
        return any(not 0 <= arguments[place] < bound for place, bound in self.bounds.items())


# --- How the platform is asked ---


def word(value):
    return value % (1 << 32)


def words(*values):
    return struct.pack("<{}I".format(len(values)), *values)


def halves(*values):
    """The low 16 bits of each value."""
    return struct.pack("<{}H".format(len(values)), *(value % (1 << 16) for value in values))


def low_48(value):
    return struct.pack("<q", value)[:6]


def signed_byte(value):
    """The low byte as it lies in a register when it is passed on as a signed one."""
    return ((value % 256 ^ 128) - 128) % (1 << 64)


def kept(value):
    """What is written of a value: of that which means "as it is", the current one, which is 0 without an answer."""
    return 0 if value == 0xFFFFFFFF else value


def set_property(name, value):
    return Call("DVSHCK_HostPropSet", [SWITCH_ID, "com.tarnix.wyx.qdp." + name, value, 16])


def command(opcode, payload, capacity=None):
    request = struct.pack("<HH", 4 + len(payload), opcode) + payload
    return [Call("Qdp_P4_Cmd", [request, NullBuffer(0) if capacity is None else Capacity(capacity)])]


def keyed(table_number, entry_bytes, key):
    """The read of a hardware table's entry by its key."""
    return command(11, struct.pack("<HH", table_number, len(key)) + key, entry_bytes)


def table(table_number, entry_bytes, index):
    return keyed(table_number, entry_bytes, words(index))


def hardware_entry(table_number, index):
    """The dump of one entry."""
    return [Call("Qdp_P4_HWTable_Dump", [words(table_number, index, 1), Capacity(2048)])]


# The switch of a MAC entry: the upper half of the VLAN argument in place of the lower half of the switch argument.


def mac_switch(switch, vlan):
    return switch // (1 << 16) * (1 << 16) + vlan // (1 << 16)


def mac_switch_exists(switch, port, mac, vlan):
    return mac_switch(switch, vlan) < 16


def mac_entry(operation, switch, port, mac, vlan):
    return [Call("Qdp_MAC_Entry_Ops", [mac_switch(switch, vlan), port, low_48(mac), vlan % (1 << 16), operation])]


def flow_table_request(selector, lcore, start, option, *rest):
    """Of a filter that is switched on, the address of the sample: a MAC filter by a byte that is not 0."""
    by_source_mac, _, by_destination_mac, _, source_version, _, destination_version, _ = rest[:8]

    def mac_filter(switched_on, last_byte):
        return bytes([switched_on % 256, *((2, 0, 0, 0, 0, last_byte) if switched_on % 256 else bytes(6))])

    def address(version, last_byte):
        return bytes(15) + bytes([last_byte if version else 0])

    request = words(selector, lcore, start) + bytes([option % 256])
    request += mac_filter(by_source_mac, 5) + mac_filter(by_destination_mac, 6) + bytes(1)
    request += words(source_version) + address(source_version, 7)
    request += words(destination_version, 0) + address(destination_version, 8)
    return [Call("Qdp_Dump_Flow_Table", [request + struct.pack("<5i", *rest[8:]) + bytes(4), Capacity(10264)])]


NO_ADDRESS = "Failed to convert destination IP address to binary form.\n\n"


def span_request(switch, is_ipv6, destination, value):
    """For an IPv4 destination."""
    address = bytes(map(int, destination.split(".")))
    request = words(switch) + bytes([is_ipv6 % 256]) + struct.pack("<I", value % (1 << 24))[:3] + address + bytes(12)
    return [Call("Qdp_Get_L3SPAN_Record", [request, Capacity(120)])]


def lif_port(lif, source, representor, flow_key_type, lif_type, is_mux_pf, fwd_mode, status):
    flags = flow_key_type + 8 * fwd_mode + 32 * is_mux_pf
    return command(2, halves(lif, source, representor, 0) + bytes([lif_type, flags]) + halves(status))


def vlan_port(mux_vlan, source, representor, flow_key_type, pf_lif_0, pf_lif_1, status):
    record = halves(mux_vlan, pf_lif_0 % 256, pf_lif_1 % 256, source, 0, representor)
    return command(5, record + bytes([flow_key_type, 0]) + halves(status))


def tunnel_vlan(vlan):
    return 0 if vlan == 4095 else vlan * 16 + 8


def tunnel_termination(mac, value, is_first, is_ipv4, vlan_1, vlan_2, low, high):
    flags = (1 if is_first else 2) + (4 if is_ipv4 else 0) + tunnel_vlan(vlan_1)
    key = halves(*low_48(mac), value, flags, tunnel_vlan(vlan_2)) + struct.pack("<qq", low, high)
    return keyed(17, 2, key)


def tunnel_sa(value, is_ipv4, low, high):
    return keyed(18, 4, bytes([value, is_ipv4 != 0]) + struct.pack("<q8xq8x", low, high))


def flow_key(value, mac_1, mac_2, port, index, vni, protocol, is_ipv4, *rest):
    addresses, ports = rest[:4], rest[4:]
    key = halves(value) + low_48(mac_1) + low_48(mac_2) + halves(index) + struct.pack("<4q", *addresses)
    return keyed(24, 4, key + halves(port, *ports) + bytes([is_ipv4 != 0, 0]) + words(vni * 256 + protocol))


# --- The methods, in the order of the module's table ---

# fmt: off
METHODS = [
    Method("ListSwitches", "List All QDP switches", "", "", (),
        sends=lambda: [Call("Qdp_Get_Switch_List", [Capacity(2568)])],
        refused="Failed to retrieve list of switches.\n", answers=("Qdp_Get_Switch_List", NOTHING, ONES),
        memory=[NO_MEMORY, NO_BUFFER],
        success=list,
    ),
    Method("ListPorts", "List all ports on a QDP switch.", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_Get_Port_List", [switch, Capacity(2555916)])], bounds=SWITCH,
        invalid="TypeError: Invalid switch ID passed.\n", refused="Failed to retrieve list of ports.\n",
        answers=("Qdp_Get_Port_List", NOTHING, ONES), memory=[NO_MEMORY, "Failed to allocate port list.\n"],
        success=list,
    ),
    Method("GetPortStats", "Get a port's statistics", "switch port",
        "II", VNIC,
        sends=lambda switch, port: [
            Call("Qdp_Get_Port_Stats", [switch, port, Capacity(128)]),
            Call("Qdp_Get_Port_Stats_Slowpath", [switch, port, Capacity(128)]),
        ],
        bounds=PORT, refused="Failed to retrieve slowpath port stats.\n",
        memory=[NO_MEMORY, "Failed to allocate stats tuple.\n"],
    ),
    Method("ListPortMACTable", "List all mac entries for a port", "switch port",
        "II", VNIC,
        sends=lambda switch, port: [Call("Qdp_Dump_Port_MAC_Table", [switch, port, Capacity(327696)])],
        bounds=SWITCH, refused="Failed to retrieve mac table.\n", answers=("Qdp_Dump_Port_MAC_Table", NOTHING, ONES),
        memory=[NO_MEMORY, "Failed to allocate mac table.\n"],
    ),
    Method("ClearPortMACTable", "clear mac entries for a port", "switch port",
        "II", VNIC,
        sends=lambda switch, port: [Call("Qdp_Clear_Port_MAC_Table", [switch, port])], bounds=SWITCH,
        refused="Failed to clear mac table.\n",
        success=None,
    ),
    Method("AddMACEntry", "Add a MAC Entry for a port", "switch port mac vlan",
        "IILI", (*VNIC, 0xFECA01004002, 7),
        sends=lambda *given: mac_entry(1, *given), bounds={0: 1 << 16, 3: 1 << 20}, accepts=mac_switch_exists,
        refused="Failed to add a MAC entry.",
        success=None,
    ),
    Method("DelMACEntry", "Delete a MAC Entry for a port", "switch port mac vlan",
        "IILI", static_mac,
        sends=lambda *given: mac_entry(0, *given), bounds={0: 1 << 16, 3: 1 << 20}, accepts=mac_switch_exists,
        refused="Failed to delete MAC entry.\n",
        success=None,
    ),
    Method("ListSwitchMACTable", "List MAC table for a switch", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_Dump_Switch_MAC_Table", [switch, Capacity(1310736)])], bounds=SWITCH,
        refused="Failed to retrieve switch mac table.\n", answers=("Qdp_Dump_Switch_MAC_Table", NOTHING, ONES),
        memory=[NO_MEMORY, "Failed to allocate switch mac table.\n"],
    ),
    Method("ClearSwitchMACTable", "Clear MAC table for a switch", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_Clear_Switch_MAC_Table", [switch])], bounds=SWITCH,
        refused="Failed to clear mac table.\n",
        success=None,
    ),
    Method("GetFlowStats", "Get flow stats for lcores", "selector lcores value",
        "IOI", (0, (0, 1), 0),
        sends=lambda selector, lcores, value: [
            Call("Qdp_Get_Flow_Stats", [selector, words(*lcores), value, Capacity(7176)]),
        ],
        invalid=BLANK_LINE, refused="Failed to retrieve flow stats.\n",
        objects=[((0, "1"), TypeError), ((0,) * 65, None)], answers=("Qdp_Get_Flow_Stats", NOTHING, ONES),
        memory=[NO_MEMORY],
        success=list,
    ),
    Method("GetRepPortStats", "Get rep port stats for a port in switch", "", "", (), success=None),
    Method("DumpFlowTable", "Dump flow table for a lcore",
        "selector lcore start_index option source_mac_filter source_mac destination_mac_filter "
        "destination_mac source_ip_version source_ip destination_ip_version destination_ip filter_1 filter_2 "
        "filter_3 filter_4 filter_5",
        "IIIIIsIsIsIsiiiii", (0, 1, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0),
        sample=(7, 1, 3, 0, 0, "02:00:00:00:00:05", 0, "02:00:00:00:00:06", 0, "::7", 0, "::8", 1, 2, 3, 4, 5),
        sends=flow_table_request, bounds={1: 64, 2: 0xFFFFFFFF}, refused="Failed to retrieve flow table.\n\n",
        unknown=[
            (0, 1, 0, 0, 0, "", 0, "", 4, "no address", 0, "", 0, 0, 0, 0, 0),
            (0, 1, 0, 0, 0, "", 0, "", 0, "", 6, "no address", 0, 0, 0, 0, 0),
        ],
        answers=("Qdp_Dump_Flow_Table", NOTHING, ONE_FLOW), memory=[INVALID, NO_MEMORY],
    ),
    Method("DumpDecapFlowTable", "Dump decap flow table for a switch", "", "", (),
        success=None, printed="Dump Decap  Flow Not supported below 2.10.0.0\n",
    ),
    Method("DumpDecapSaFlowTable", "Dump decap SA flow table for a switch", "", "", (),
        success=None, printed="Dump Decap  Flow Not supported below 2.10.0.0\n",
    ),
    Method("DumpPortFlow", "Dmo port flows for a switch", "", "", (),
        success=None, printed="Dump Port Flow Not supported below 2.10.0.0\n",
    ),
    Method("GetPortConf", "Get Qdp Port Configuration", "switch port",
        "II", VNIC,
        sends=lambda switch, port: [Call("Qdp_Get_Port_Conf", [switch, port, Capacity(1344)])], bounds=PORT,
        refused="Failed to retrieve port conf.\n", answers=("Qdp_Get_Port_Conf", NOTHING, ONE_OF_EACH),
        memory=[NO_MEMORY],
    ),
    Method("MigratePort", "Migrate port between Lcores", "switch port value_1 value_2 value_3",
        "IIIII", migrated_port,
        sends=lambda *given: [Call("Qdp_Migrate_Port", [*given])], bounds=PORT, refused="Failed to migrate port.\n",
        success=None,
    ),
    Method("UnpinPort", "Unpin port from Lcore", "switch port value",
        "III", port_away_from_home,
        sends=lambda *given: [Call("Qdp_Unpin_Port", [*given])], bounds=PORT, refused="Failed to unpin port.\n",
        success=None,
    ),
    Method("ResetPort", "Reset a port", "switch port value",
        "III", (*VNIC, 1),
        sends=lambda *given: [Call("Qdp_Reset_Port", [*given])], bounds=PORT, refused="Failed to reset port.\n",
        success=None,
    ),
    Method("GetPortTxUplink", "Get the TX uplink of a given port", "switch port",
        "II", VNIC,
        sends=lambda switch, port: [Call("Qdp_Get_Port_Tx_Uplink", [switch, port, Capacity(18)])], bounds=PORT,
        refused="Failed to get port TX uplink.\n", answers=("Qdp_Get_Port_Tx_Uplink", NOTHING, b"\1\1\1\0"),
        memory_raises=INTERPRETERS_OWN,
    ),
    Method("GetL3SPANRecord", "Get L3SPAN record for a destination IP", "switch is_ipv6 destination value",
        "IIsI", (0, 0, "10.20.0.5", 0),
        sends=span_request, bounds=SWITCH,
        accepts=lambda switch, is_ipv6, destination, value: switch < 16 and is_ipv6 % 256 == 0,
        out_of_range=lambda switch, *rest: NO_ADDRESS if switch < 16 else INVALID,
        refused="", unknown=[(0, 0, "no address", 0), (0, 1, "no address", 0)],
        silent=["Qdp_Get_L3SPAN_Record"], memory=[NO_MEMORY, "Failed to allocate mac table.\n"],
    ),
    Method("GetUplinkStats", "Get private stats of an uplink port", "switch port",
        "II", UPLINK,
        sends=lambda switch, port: [
            Call("Qdp_Get_Uplink_Priv_Stats_Len", [switch, port, Capacity(4)]),
            Call("Qdp_Get_Uplink_Stats", [switch, port, Capacity(192)]),
        ],
        bounds=PORT, refused="Failed to get uplink stats.\n", refusal_is_null=True,
        goes_on=["Qdp_Get_Uplink_Priv_Stats_Len"], memory=[NO_MEMORY, *UPLINK_COUNTERS],
        memory_raises=INTERPRETERS_OWN, does_without=(MemoryError,),
    ),
    Method("GetUplinkQueueStats", "Get uplink queue stats", "switch port direction queue",
        "IIII", (*UPLINK, 0, 1),
        sends=lambda switch, port, direction, queue: [
            Call("Qdp_Get_Uplink_Queue_Stats", [switch, port, queue, int(direction != 0), Capacity(192)]),
        ],
        bounds=PORT, refused="Failed to get uplink stats.\n", memory=[*UPLINK_COUNTERS],
        success=list,
    ),
    Method("ListRSSEngine", "List RSS engines", "switch port",
        "II", UPLINK,
        sends=lambda switch, port: [Call("Qdp_Get_RSS_Engine_List", [switch, port, Capacity(10244)])], bounds=PORT,
        refused="Failed to retrieve RSS Engine list.\n", answers=("Qdp_Get_RSS_Engine_List", NOTHING, ONE_ENGINE),
        memory=["Failed to allocate RSS engine list.\n", "Failed to list RSS engines.\n"],
        success=list,
    ),
    Method("SetUplinkMACLearn", "Set uplink MAC Learn policy", "switch enabled",
        "II", (0, 1),
        sends=lambda switch, enabled: [Call("Qdp_Set_Uplink_MAC_Learn", [switch, int(enabled != 0)])], bounds=SWITCH,
        refused="Failed to set uplink mac learn policy.\n",
        success=None,
    ),
    Method("ClearSwitchFlowTable", "Clear flow table for a switch", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_Clear_Switch_Flow_Table", [switch])], bounds=SWITCH,
        refused="Failed clear switch flow table\n",
        success=None,
    ),
    Method("EnableSwitchFlowCache", "Enable flow cache for a switch", "switch enabled",
        "II", (0, 1),
        sends=lambda switch, enabled: [Call("Qdp_Enable_Switch_Flow_Cache", [switch, enabled])],
        bounds={**SWITCH, 1: 2}, refused="Failed to enable switch flow cache.\n",
        success=None,
    ),
    Method("GetPanicOnTxHang", "Get if panic when uplink Tx hang detected on a switch", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_Get_Panic_On_Tx_Hang", [switch, Capacity(4)])], bounds=SWITCH,
        refused="Failed to get panic on Tx hang configuration.\n",
        success=int,
    ),
    Method("SetPanicOnTxHang", "Set if panic when uplink Tx hang detected on a switch", "switch enabled",
        "II", (0, 1),
        sends=lambda switch, enabled: [Call("Qdp_Set_Panic_On_Tx_Hang", [switch, enabled])], bounds={**SWITCH, 1: 2},
        refused="Failed to enable panic on Tx hang.\n",
        success=None,
    ),
    Method("GetPortNetQInfo", "Get port's netq informastion", "switch port",
        "II", UPLINK,
        sends=lambda switch, port: [Call("Qdp_Get_Port_NetQ_Info", [switch, port, Capacity(524288)])], bounds=PORT,
        refused="Failed to get uplink stats.\n", answers=("Qdp_Get_Port_NetQ_Info", NOTHING, ONES),
        memory=[NO_MEMORY, "Failed to allocate NetQ Info resp.\n"],
    ),
    Method("MigrateNetQFilter", "Migrate vNIC port's NetQ filter", "switch port value",
        "III", (*VNIC, 1),
        sends=lambda *given: [Call("Qdp_Migrate_NetQ_Filter", [*given])], bounds=PORT,
        refused="Failed to migrate filter of port 3.\n",
        success=None,
    ),
    Method("GetUplinkRingSize", "Get uplink's Tx and Rx ring size", "switch port",
        "ss",
        after("SetUplinkRingSize", ALIAS, "nic0", 1024, 512, returned=(ALIAS, "nic0")),
        by_text=True, goes_on=["DVSHCK_PortDataGet"], memory_raises=INTERPRETERS_OWN,
        success=tuple,
    ),
    Method("SetUplinkRingSize", "Set uplink's Tx and Rx ring size", "switch port tx_size rx_size",
        "ssII", (ALIAS, "nic0", 1024, 512),
        sends=lambda switch, port, tx, rx: [Call("DVSHCK_PortDataSet", [switch, port, RINGS, words(tx, rx), 8])],
        accepts=lambda switch, port, tx, rx: tx % 32 == rx % 32 == 0,
        out_of_range="ValueError: Ring size must be 32 aligned.\n",
        refused="ValueError: Failed to set port property.\n", by_text=True,
        success=None,
    ),
    Method("GetSwitchFilterTypes", "Get the Filters Supported on the switch", "alias",
        "s", (ALIAS,), goes_on=["DVSHCK_HostPropGet"], memory_raises=INTERPRETERS_OWN),
    Method("SetSwitchFilterTypes", "Set the Filters Supported on the on switch", "alias filter_class enabled",
        "ssK", (ALIAS, "VLANMAC", 1),
        sends=lambda alias, name, enabled: [
            Call("Qdp_GetSwitchFilterTypes", [PORTSET_NAME, Capacity(2)]),
            set_property("filterType", words(0) + halves(0x1008 | 4 * (enabled != 0))),
        ],
        unknown=[(ALIAS, "vlanmac", 1)], answer=halves(0x1008), result=lambda alias, name, enabled: enabled != 0,
        goes_on=[
            "DVSHCK_HostPropGet", "DVSHCK_HostPropSet", "DVSState_SwitchFindByAlias", "DVS_ClassName", "DVS_SwitchId",
        ],
        success=bool,
    ),
    Method("ListDevAffinity", "List device affinity for all the hwnics on this system", "", "", (),
        sends=lambda: [Call("Qdp_List_Dev_Affinity", [Capacity(1156)])],
        refused="ValueError: Failed to list device affinity.\n", answers=("Qdp_List_Dev_Affinity", NOTHING, ONES),
        memory=[NO_MEMORY, "Failed to allocate port list.\n"],
        success=list,
    ),
    Method("SetDevAffinity", "Set device affinity for a given hwnic", "device affinity",
        "sI", ("nic0", 1),
        sends=lambda device, affinity: [Call("Qdp_Set_Dev_Affinity", [device, affinity])],
        refused="ValueError: Failed to set device affinity.\n", by_text=True,
        success=None,
    ),
    Method("DumpLBDebugBuf", "Dump the current state of the TLB debug buffer", "switch flag",
        "II", (0, 0),
        sends=lambda switch, flag: [Call("Qdp_DumpLBDebugBuf", [switch, signed_byte(flag), Capacity(2097152)])],
        bounds=SWITCH, refused="ValueError: Failed to dump debug buffer: 0x{status:x}.\n",
        memory_raises=INTERPRETERS_OWN,
        success=str,
    ),
    Method("FlushLBDebugBuf", "Flush the TLB debug buffer", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_FlushLBDebugBuf", [switch])], bounds=SWITCH,
        refused="ValueError: Failed to flush debug buffer: 0x{status:x}.\n",
        success=None,
    ),
    Method("GetLBMetric", "Get thread load balancing metric", "alias",
        "s", (ALIAS,),
        silent=["Qdp_GetLBParams", *PORTSET], goes_on=["DVSHCK_HostPropGet"], memory_raises=INTERPRETERS_OWN,
        success=str,
    ),
    Method("SetLBMetric", "Set thread load balancing metric", "alias metric",
        "ss", (ALIAS, "count"),
        returns=False, unknown=[(ALIAS, "CPU")], silent=["Qdp_GetLBParams", *PORTSET],
        goes_on=["DVSHCK_HostPropGet"],
        success=bool,
    ),
    Method("SetLBParam", "Set thread load balancing runtime parameter", "alias name value",
        "ssK", (ALIAS, "cpuload_low", 7),
        sends=lambda alias, name, value: [Call("Qdp_SetLBParam", [PORTSET_NAME, 2, value])],
        unknown=[(ALIAS, "no parameter", 1)],
        raises={"unparsed": INVALID_LB, "unknown": UNKNOWN_ALIAS, "refused": (OSError, "failed to set parameter.")},
        success=None,
    ),
    Method("GetLBParams", "Get thread load balancing runtime parameters", "alias",
        "s", (ALIAS,),
        sends=lambda alias: [Call("Qdp_GetLBParams", [PORTSET_NAME, Capacity(96)])],
        raises={"unparsed": INVALID_LB, "unknown": UNKNOWN_ALIAS, "refused": (OSError, "failed to get parameters.")},
        memory_raises=[(SystemError, NO_BUFFER), (SystemError, NO_DICT_ITEM)],
    ),
    Method("InjectLBTraffic", "Inject LB Traffic", "switch traffic",
        "IO", (0, ((0, 0xFFFFFFFF, 5, 0, 1), (3, 0, 7, 0, 2))),
        sends=lambda switch, traffic: [Call("Qdp_Get_Port_List", [switch, Capacity(2555916)])], invalid=BLANK_LINE,
        objects=[(((0, 1, 2, 3, "4"),), None), (((0, 1, 2, 3),), None), ((4,), None)], sample=(0, ()),
        memory=["Memory allocation failed.\n\n"],
        success=None,
    ),
    Method("DumpLBStats", "Dump the latest LB statistics", "switch first_port port_count first_context context_count",
        "IIIII", (0, 0, 4, 0, 2),
        sends=lambda *given: [Call("Qdp_DumpLBStats", [*given, Capacity(4096)])],
        bounds={**PORT, 2: 16385, 3: 64, 4: 65},
        accepts=lambda switch, port, ports, context, contexts: (
            switch < 16 and port < 16384 and word(port + ports) <= 16384
            and context < 64 and word(context + contexts) <= 64
        ),
        raises={
            "unparsed": TypeError, "out of range": (ValueError, "Invalid parameter passed."),
            "refused": (OSError, "Failed to dump LB stats. Please see hostcore.log"),
        },
        answers=("Qdp_DumpLBStats", NO_ENTRY, ONE_CONTEXT),
        memory_raises=[
            (MemoryError, "Failed to create dump buffer."), (MemoryError, "Failed to create tuple."),
            (SystemError, NO_BUFFER), (SystemError, NO_TUPLE_ITEM), (SystemError, NO_LIST_ITEM),
            (SystemError, NO_DICT_ITEM),
        ],
        success=tuple,
    ),
    Method("GetSwitchNUMATeam", "Get the current status NUMA awareness of teaming", "alias",
        "s", (ALIAS,),
        silent=["Qdp_GetSwitchNUMATeam", *PORTSET], goes_on=["DVSHCK_HostPropGet"],
        success=bool,
    ),
    Method("SetSwitchNUMATeam", "Set NUMA awareness of teaming to enabled or disabled", "alias enabled",
        "sI", (ALIAS, 1),
        sends=lambda alias, value: [set_property("teaming", words(0) + bytes([value % 256]))],
        refused="Failed to set DVS property com.tarnix.wyx.qdp.teaming\n",
        success=None,
    ),
    Method("GetSwitchBurstSize", "Get burst size of an QDP switch", "alias",
        "s", after("SetSwitchBurstSize", ALIAS, 1000, returned=(ALIAS,)),
        goes_on=["DVSHCK_HostPropGet"], memory_raises=INTERPRETERS_OWN,
        success=int,
    ),
    Method("SetSwitchBurstSize", "Set burst size of an QDP switch", "alias burst_size",
        "sI", (ALIAS, 32),
        sends=lambda alias, value: [set_property("burstsize", words(0, value))],
        refused="Failed to set DVS property com.tarnix.wyx.qdp.burstsize\n",
        success=None,
    ),
    Method("GetSwitchOverlayL2Flow", "Get OverlayL2Flow flag  of an QDP switch", "alias",
        "s", after("SetSwitchOverlayL2Flow", ALIAS, 1000, returned=(ALIAS,)),
        goes_on=["DVSHCK_HostPropGet"], memory_raises=INTERPRETERS_OWN,
        success=int,
    ),
    Method("SetSwitchOverlayL2Flow", "Set OverlayL2Flow flag  of an QDP switch", "alias value",
        "sI", (ALIAS, 1),
        sends=lambda alias, value: [set_property("overlayl2flow", words(0, value))],
        refused="Failed to set DVS property com.tarnix.wyx.qdp.overlayl2flow\n",
        success=None,
    ),
    Method("GetPortLRO", "Get the current status of LRO of a port", "switch port",
        "II", VNIC,
        sends=lambda switch, port: [Call("Qdp_GetLRO", [0, switch, port, Capacity(4)])], bounds=PORT,
        invalid=BLANK_LINE, refused="ValueError: Failed to get LRO.\n\n",
        success=bool,
    ),
    Method("SetPortLRO", "Enable or Disable LRO for a ort", "switch port enabled",
        "III", (*VNIC, 1),
        sends=lambda switch, port, value: [Call("Qdp_SetLRO", [0, switch, port, value])], bounds=PORT,
        invalid=BLANK_LINE, refused="ValueError: Failed to set LRO.\n\n",
        success=None,
    ),
    Method("GetSwitchLRO", "Get the current status of LRO of a switch", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_GetLRO", [1, switch, 0, Capacity(4)])], bounds=SWITCH, invalid=BLANK_LINE,
        refused="ValueError: Failed to get LRO.\n\n",
        success=bool,
    ),
    Method("SetSwitchLRO", "Enable or Disable LRO for a switch. This overrides per-port setting", "switch enabled",
        "II", (0, 1),
        sends=lambda switch, value: [Call("Qdp_SetLRO", [1, switch, 0, value])], bounds=SWITCH, invalid=BLANK_LINE,
        refused="ValueError: Failed to set LRO.\n\n",
        success=None,
    ),
    Method("GetSwitchMinFlowLayer", "Get the current status switch minimum flow layer", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_GetSwitchMinFlowLayer", [switch, Capacity(4)])], bounds=SWITCH,
        invalid=BLANK_LINE, refused="ValueError: Failed to get minimum flow layer of switch 0\n\n",
        success=int,
    ),
    Method("SetSwitchMinFlowLayer", "Set the minimum flow layer used by a switch", "switch layer",
        "II", (0, 2),
        sends=lambda switch, layer: [Call("Qdp_SetSwitchMinFlowLayer", [switch, layer])], bounds=SWITCH,
        returns=False, invalid=BLANK_LINE, refused="ValueError: Failed to set switch minFlowLayer.\n\n",
        success=bool,
    ),
    Method("GetSwitchMetaFlow", "Get the current status of MetaFlow on a DVS", "alias",
        "s", after("SetSwitchMetaFlow", ALIAS, 1, returned=(ALIAS,)),
        goes_on=["DVSHCK_HostPropGet"],
        success=int,
    ),
    Method("SetSwitchMetaFlow", "Enable/Disable MetaFlow on a DVS", "alias value",
        "sI", (ALIAS, 1),
        sends=lambda alias, value: [set_property("metaflow", words(0) + bytes([value % 256]))], returns=0,
        refused="Failed to set DVS property com.tarnix.wyx.qdp.metaflow\n",
        success=int,
    ),
    Method("GetFPOEnabled", "Get FPO enabled on a DVS", "alias",
        "s", (ALIAS,), goes_on=["DVSHCK_HostPropGet"], memory_raises=INTERPRETERS_OWN),
    Method("EnableFPO", "Enable/Disable FPO on a DVS", "alias settings",
        "sO", (ALIAS, {"enabled": True, "models": 0x36}),
        returns=False, objects=[({"models": "4"}, TypeError)], goes_on=["DVSHCK_HostPropGet", "DVSHCK_HostPropSet"],
        does_without=(None,),
        success=bool,
    ),
    Method("GetFPOStats", "Get FPO stats for lcores", "switch lcores",
        "IO", (0, (0, 1)),
        sends=lambda switch, lcores: [Call("Qdp_Get_FPO_Stats", [switch, words(*lcores), Capacity(2696)])],
        invalid=BLANK_LINE, refused="Failed to retrieve flow stats.\n",
        objects=[((0, "1"), TypeError), ((0,) * 65, None)], answers=("Qdp_Get_FPO_Stats", NOTHING, ONES),
        memory=[NO_MEMORY],
        success=list,
    ),
    Method("GetFPOUplinkStatus", "Get FPO status for an uplink", "switch port",
        "II", UPLINK,
        sends=lambda switch, port: [Call("Qdp_Get_FPO_Uplink_Status", [switch, port, Capacity(60)])], bounds=PORT,
        refused="Failed to get FPO uplink status.\n", memory_raises=INTERPRETERS_OWN,
    ),
    Method("GetFPOUplinkStats", "Get FPO stats for an uplink", "switch port",
        "II", UPLINK,
        sends=lambda switch, port: [Call("Qdp_Get_FPO_Uplink_Stats", [switch, port, Capacity(312)])], bounds=PORT,
        refused="Failed to get FPO uplink stats.\n", memory_raises=INTERPRETERS_OWN,
    ),
    Method("GetFlowTimeout", "Get flow timeout in seconds", "", "", after("SetFlowTimeout", 1000),
        sends=lambda: [Call("Qdp_Get_Flow_Timeout", [Capacity(4)])],
        refused="ValueError: Failed to get flow timeout.\n\n", memory_raises=INTERPRETERS_OWN,
        success=int,
    ),
    Method("SetFlowTimeout", "Set flow timeout in seconds", "seconds",
        "I", (30,),
        sends=lambda seconds: [Call("Qdp_Set_Flow_Timeout", [seconds])], invalid=BLANK_LINE,
        refused="ValueError: Failed to set flow timeout.\n\n",
        success=None,
    ),
    Method("ListLCoreIDs", "List All lcore IDs", "selector",
        "I", (0,),
        sends=lambda selector: [Call("Qdp_Get_LCore_ID_Bitmap", [selector, Capacity(8)])], invalid=BLANK_LINE,
        refused="TypeError: Failed to get lcore ID bitmap.\n\n", answers=("Qdp_Get_LCore_ID_Bitmap", NOTHING, b"\1"),
        success=tuple,
    ),
    Method("InitMbufFastslabs", "Init QDP mbuf fastslabs", "", "", (),
        returns=False, silent=["DVSState_SwitchForEach", "DVSState_GlobalPropForEach", "DVSData_Name", "DVSData_Data"],
        goes_on=["DVSState_GlobalPropForEach", "DVSData_Name"],
        success=bool,
    ),
    Method("GetFPORevalConfig", "Get FPO revaliation config", "", "", (),
        sends=lambda: [Call("Qdp_Get_FPO_Reval_Config", [Capacity(16)])],
        refused="Failed to get FPO revalidation config\n", memory_raises=INTERPRETERS_OWN,
    ),
    Method("SetFPORevalConfig", "Set FPO revaliation config", "enabled inject_packet reval_interval flow_scan_quota",
        "IIII", (1, 1, 10, 1000),
        sends=lambda enabled, inject, interval, quota: [
            Call("Qdp_Get_FPO_Reval_Config", [Capacity(16)]),
            Call("Qdp_Set_FPO_Reval_Config", [words(enabled, inject, kept(quota), kept(interval))]),
        ],
        refused="Failed to set FPO revalidation config\n",
        success=None,
    ),
    Method("GetFPODelayCtOlConfig", "Get FPO CT OL delay config", "", "", (),
        sends=lambda: [Call("Qdp_Get_FPO_DelayCtOl_Config", [Capacity(8)])],
        refused="Failed to get FPO revalidation config\n", memory_raises=INTERPRETERS_OWN,
    ),
    Method("SetFPODelayCtOlConfig", "Set FPO CT OL delay config", "enabled num_packets",
        "II", (1, 5),
        sends=lambda enabled, packets: [Call("Qdp_Set_FPO_DelayCtOl_Config", [words(packets, enabled)])],
        refused="Failed to set FPO revalidation config\n",
        success=None,
    ),
    Method("GetRefreshPktInjectionConfig", "Get refresh packet injection config", "",
        "", after("SetRefreshPktInjectionConfig", 1000),
        sends=lambda: [Call("Qdp_Get_Refresh_Pkt_Injection", [Capacity(4)])],
        refused="Failed to get refresh packet injection config\n", memory_raises=INTERPRETERS_OWN,
        success=int,
    ),
    Method("SetRefreshPktInjectionConfig", "Set refresh packet injection config", "value",
        "I", (1,),
        sends=lambda value: [Call("Qdp_Set_Refresh_Pkt_Injection", [value])],
        refused="Failed to set refresh packet injection config\n",
        success=None,
    ),
    Method("GetSwitchMuxMode", "Get Mux mode of an QDP switch", "switch",
        "I", (SMARTNIC_SWITCH,),
        sends=lambda switch: [Call("Qdp_Get_Mux_Mode", [switch, Capacity(4)])], invalid=BLANK_LINE,
        refused="TypeError: Failed to get mux mode.\n\n", memory_raises=INTERPRETERS_OWN,
    ),
    Method("ListSwitchMuxVLAN", "Get internal VLAN map of a Mux QDP switch", "switch start_fc_port",
        "II", (SMARTNIC_SWITCH, 0),
        sends=lambda *given: [Call("Qdp_List_Mux_VLAN_Info", [words(*given), Capacity(520)])], bounds=SWITCH,
        refused="Failed to get mux VLAN info\n", answers=("Qdp_List_Mux_VLAN_Info", NOTHING, ONES),
        memory=[NO_BUFFER],
    ),
    Method("ListSwitchShadowPorts", "List all shadow port configuartion", "switch start_fc_port",
        "II", (SMARTNIC_SWITCH, 0),
        sends=lambda *given: [Call("Qdp_List_Shadow_Ports", [words(*given), Capacity(520)])], bounds=SWITCH,
        refused="Failed to get shadow port list\n", answers=("Qdp_List_Shadow_Ports", NOTHING, ONES),
        memory=[NO_BUFFER],
    ),
    Method("HostPFSet", "Set host PF lifs", "count pf_0 pf_1 pf_2 pf_3",
        "IIIII", (4, 1, 2, 3, 4),
        sends=lambda *given: command(0, struct.pack("<6H", *given, 0)),
        bounds={0: 6, 1: 1024, 2: 1024, 3: 1024, 4: 1024}, refused="Failed to set host PFs\n",
        success=None,
    ),
    Method("HostPFGet", "Get Host PFs", "", "", (),
        sends=lambda: command(1, b"", 12), refused="Failed to get host pfs\n", answers=("Qdp_P4_Cmd", NOTHING, ONES),
        memory=[NO_BUFFER],
        success=list,
    ),
    Method("LifPortCreate", "create an LIF port",
        "lif source_port rep_port flow_key_type lif_type is_mux_pf fwd_mode status",
        "IIIIIIII", new_lif,
        sends=lif_port, bounds={0: 1024, 1: 1024, 2: 1024, 3: 3, 4: 9, 5: 2, 6: 2, 7: 4095},
        refused="Failed to create/update the lif port\n",
        success=None,
    ),
    Method("LifPortUpdate", "update lif port config", "lif flow_key_type is_mux_pf fwd_mode",
        "IIII", (64, 1, 0, 0),
        sends=lambda *given: command(3, struct.pack("<H4B", *given, 0)), bounds={0: 1024, 1: 3, 2: 2, 3: 2},
        refused="Failed to update the lif port\n",
        success=None,
    ),
    Method("LifPortList", "List lif ports", "start_index",
        "I", (0,),
        sends=lambda start: command(4, struct.pack("<H", start), 1024), bounds={0: 1024},
        refused="Failed to get lif port list\n", answers=("Qdp_P4_Cmd", NOTHING, ONES), memory=[NO_BUFFER],
    ),
    Method("VlanPortCreate", "Create a MUX vlan based port",
        "mux_vlan source_port rep_port flow_key_type pf_lif_0 pf_lif_1 status",
        "IIIIIII", new_vlan,
        sends=vlan_port, bounds={0: 4095, 1: 1024, 2: 1024, 3: 3, 4: 1024, 5: 1024, 6: 4096},
        refused="Failed to create/update the mux vlan port\n",
        success=None,
    ),
    Method("VlanPortUpdate", "Update MUX vlan port config", "mux_vlan flow_key_type",
        "II", (100, 1),
        sends=lambda *given: command(6, struct.pack("<HBB", *given, 0)), bounds={0: 4095, 1: 3},
        refused="Failed to update mux vlan based port\n",
        success=None,
    ),
    Method("VlanPortList", "List EMU ports(MUX VLAN ports)", "start_index",
        "I", (0,),
        sends=lambda start: command(7, struct.pack("<H", start), 1024), bounds={0: 65535},
        refused="Failed to get lif port list\n", answers=("Qdp_P4_Cmd", NOTHING, ONES), memory=[NO_BUFFER],
    ),
    Method("PortUpdate", "Update port default VLAN", "port default_vlan",
        "II", (64, 20),
        sends=lambda *given: command(8, struct.pack("<HH", *given)), bounds={0: 1024, 1: 4095},
        refused="Failed to update the defaultVLAN of a port\n",
        success=None,
    ),
    Method("PortDelete", "Delete a port", "port",
        "I", port_of_a_lif,
        sends=lambda port: command(9, struct.pack("<H", port)), bounds={0: 1024},
        refused="Failed to delete a port\n",
        success=None,
    ),
    Method("PortList", "List p4 output table", "start_index",
        "I", (0,),
        sends=lambda start: command(10, struct.pack("<H", start), 1024), bounds={0: 1024},
        refused="Failed to get lif port list\n", answers=("Qdp_P4_Cmd", NOTHING, ONES), memory=[NO_BUFFER],
    ),
    Method("LifStatsGet", "Get Lif stats", "lif",
        "I", (1,),
        sends=lambda lif: [Call("Qdp_Lif_Stats_Get", [lif, Capacity(384)])], bounds={0: 1024},
        refused="Failed to get lif stats\n", memory=[NO_BUFFER],
    ),
    Method("PortStatsGet", "Get port stats", "port",
        "I", (1,),
        sends=lambda port: [Call("Qdp_Port_Stats_Get", [port, Capacity(256)])], bounds={0: 1024},
        refused="Failed to get port stats\n", memory=[NO_BUFFER],
    ),
    Method("P4IStatsGet", "Get p4 ingress stats", "", "", (),
        sends=lambda: [Call("Qdp_P4I_Stats_Get", [Capacity(64)])], refused="Failed to get p4 ingress stats\n",
        memory=[NO_BUFFER],
    ),
    Method("P4EStatsGet", "Get p4 egress stats", "", "", (),
        sends=lambda: [Call("Qdp_P4E_Stats_Get", [Capacity(64)])], refused="Failed to get p4 egress stats\n",
        memory=[NO_BUFFER],
    ),
    Method("CTStatsGet", "Get ConnTrack Per Port Stats", "index",
        "I", (1,),
        sends=lambda index: [Call("Qdp_CT_Stats_Get", [index, Capacity(256)])],
        refused="Failed to get port conntrack stats\n", memory=[NO_BUFFER],
    ),
    Method("P4StatsFlowGet", "Get P4 flow stats", "index",
        "I", (1,),
        sends=lambda index: hardware_entry(4, index), invalid="TypeError: Invalid startIndex passed.\n",
        refused="Failed to dump ipfix table entry.\n", memory=[NO_BUFFER],
    ),
    Method("GetFPOFlowStatsConfig", "Get FPO stats update config", "", "", (),
        sends=lambda: [Call("Qdp_Get_FPO_Flow_Stats_Config", [Capacity(8)])],
        refused="Failed to get FPO flow stats update config\n", memory_raises=INTERPRETERS_OWN,
    ),
    Method("SetFPOFlowStatsConfig", "Set FPO stats update config", "interval scan_quota",
        "II", (100, 500),
        sends=lambda interval, quota: [
            Call("Qdp_Get_FPO_Flow_Stats_Config", [Capacity(8)]),
            Call("Qdp_Set_FPO_Flow_Stats_Config", [words(kept(quota), kept(interval))]),
        ],
        refused="Failed to set FPO flow stats update config\n",
        success=None,
    ),
    Method("SetOffloadFlows", "Enable/disable offload flows", "alias enabled",
        "sI", (ALIAS, 1),
        sends=lambda alias, enabled: [
            Call("Qdp_Set_Offload_Flows", [PORTSET_NAME, enabled]),
            set_property("fpo.offload", words(enabled != 0)),
        ],
        refused="", silent=["Qdp_Set_Offload_Flows", *PORTSET], goes_on=["DVSHCK_HostPropSet"],
        success=None,
    ),
    Method("GetOffloadFlows", "Get offload flows", "alias",
        "s", (ALIAS,),
        sends=lambda alias: [Call("Qdp_Get_Offload_Flows", [PORTSET_NAME, Capacity(4)])],
        refused="OSError: Failed to issue QDP command\n",
        success=bool,
    ),
    Method("SetOffloadICMPEcho", "Enable/disable offload icmp echo flow", "enabled",
        "I", (1,),
        sends=lambda enabled: [Call("Qdp_Set_Offload_ICMP_Echo", [enabled])],
        refused="OSError: Failed to issue FPO offload ICMP Echo command\n",
        success=None,
    ),
    Method("GetOffloadICMPEcho", "Get offload icmp echo flow", "", "", (),
        sends=lambda: [Call("Qdp_Get_Offload_ICMP_Echo", [Capacity(4)])],
        refused="OSError: Failed to issue QDP command\n",
        success=bool,
    ),
    Method("DSCPConfSet", "Set DSCP configuration", "selector dscp mask",
        "III", (1, 46, 0x3F),
        sends=lambda selector, dscp, mask: [
            Call("Qdp_DSCP_Conf_Set", [words(selector) + bytes([dscp % 256, mask % 256])]),
        ],
        refused="Failed to set DSCP conf\n",
        success=None,
    ),
    Method("DSCPConfGet", "Get DSCP configuration", "", "", (),
        sends=lambda: [Call("Qdp_DSCP_Conf_Get", [Capacity(6)])], refused="Failed to get dscp conf\n",
        memory=[NO_BUFFER],
    ),
    Method("P4HWTableList", "List HBM based p4 tables", "", "", (),
        sends=lambda: [Call("Qdp_P4_HWTable_List", [Capacity(1024)])], refused="Failed to get p4 table info\n",
        answers=("Qdp_P4_HWTable_List", NOTHING, ONES), memory=[NO_BUFFER],
        success=list,
    ),
    Method("P4HWTableDump", "Dump HW table entry data", "table first_index count",
        "III", (0, 0, 2),
        sends=lambda *given: [Call("Qdp_P4_HWTable_Dump", [words(*given), Capacity(2048)])],
        refused="Failed to dump HW table data.\n", answers=("Qdp_P4_HWTable_Dump", struct.pack("<I", 16), ONE_BYTE),
        memory=[NO_BUFFER],
        success=list,
    ),
    Method("P4CacheInvalidate", "Invalidate P4 MPU cache", "table first_index count",
        "III", (0, 0, 2),
        sends=lambda *given: [Call("Qdp_P4_Cache_Invalidate", [words(*given)])],
        refused="Failed to perform cache invalidation\n",
        success=None,
    ),
    Method("P4CTContextQuery", "Print state of a CT Context", "index",
        "I", (0,),
        sends=lambda index: hardware_entry(6, index), refused="Failed to get HW CT entry\n", memory=[NO_BUFFER],
    ),
    Method("P4MirrorTableDump", "Dump Mirror table entry data", "", "", (),
        sends=lambda: [Call("Qdp_P4_MirrorTable_Dump", [Capacity(2048)])],
        refused="Failed to dump Mirror table data.\n", answers=("Qdp_P4_MirrorTable_Dump", NOTHING, ONES),
        memory=[NO_BUFFER],
        success=list,
    ),
    Method("P4PortMirrorTableDump", "Dump Port Mirror table entry data", "value_1 value_2",
        "II", (1, 0),
        sends=lambda first, second: [Call("Qdp_P4_PortMirrorTable_Dump", [halves(first, second), Capacity(2048)])],
        refused="Failed to dump Mirror table data.\n", answers=("Qdp_P4_PortMirrorTable_Dump", NOTHING, ONES),
        memory=[NO_BUFFER],
        success=list,
    ),
    Method("FPOQueryContextMgr", "FPO Query Context Mgr", "id_1 id_2 id_3",
        "III", (SMARTNIC_SWITCH, FLOW, 1),
        sends=lambda *given: [Call("Qdp_FPOQueryMgr", [words(*given, 2), Capacity(64)])], invalid=BLANK_LINE,
        refused="Query mgr failed.\n\n",
        memory=[
            "Failed to allocate memory for contextReq\n", "Failed to allocate memory for contextResp\n",
            "Failed to allocate buffer for plist\n", "Failed to allocate buffer for dict\n",
        ],
        success=list,
    ),
    Method("FPOHWDestroy", "FPO HWFLow destroy", "", "", (),
        success=None, printed="Not supported in release build.\n\n",
    ),
    Method("TableLifStatsGet", "Read lif stats table", "lif",
        "I", lif_of_port,
        sends=lambda lif: table(0, 384, lif), bounds={0: 1024}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TablePortStatsGet", "Read port stats table", "port",
        "I", (SMARTNIC_PORT,),
        sends=lambda port: table(1, 256, port), bounds={0: 1024}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableP4IStatsGet", "Read p4i stats table", "",
        "", (), sends=lambda: table(3, 64, 0), refused=NO_TABLE_DATA, memory=[NO_BUFFER]),
    Method("TableP4EStatsGet", "Read p4e stats table", "",
        "", (), sends=lambda: table(2, 64, 0), refused=NO_TABLE_DATA, memory=[NO_BUFFER]),
    Method("TableInputGet", "Read input table entry", "lif",
        "I", lif_of_port,
        sends=lambda lif: table(8, 20, lif), bounds={0: 1024}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableOutputGet", "Read output table entry", "port",
        "I", (SMARTNIC_PORT,),
        sends=lambda port: table(11, 16, port), bounds={0: 1024}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableMuxVlanGet", "Read mux vlan table entry", "vlan selector",
        "II", mux_vlan,
        sends=lambda vlan, selector: table(9 + (selector != 0), 16, vlan), bounds={0: 4095},
        accepts=lambda vlan, selector: 0 < vlan < 4095, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableVlanMapGet", "Read classic mode VLAN mapping table entr", "vlan value",
        "II", after("PortUpdate", SMARTNIC_PORT, 77, returned=(77, 0)),
        sends=lambda vlan, value: keyed(12, 4, halves(vlan, value)), bounds={0: 4095},
        accepts=lambda vlan, value: vlan % (1 << 16) < 4095, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableL2SegGet", "Read classic mode L2 segment table entry", "segment",
        "I", lambda module: (segment_of_port(module),),
        sends=lambda segment: table(13, 4, segment), refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableRegMACGet", "Read classic mode registered MAC table entry", "value mac",
        "IL", lambda module: (segment_of_port(module), mac_behind_port(module)),
        sends=lambda value, mac: keyed(14, 8, halves(value) + low_48(mac)), refused=NO_TABLE_DATA,
        memory=[NO_BUFFER],
    ),
    Method("TableIPFixGet", "Read ipfix table entry(flow stats table entry)", "index selector",
        "II", (1, 0),
        sends=lambda index, selector: table(6 + (selector != 0), 24, index), bounds={0: FLOWS},
        refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableCTStatsGet", " Read CT stats table (per port) entry", "index selector",
        "II", (2, 0),
        sends=lambda index, selector: table(4 + (selector != 0), 64, index), bounds={0: 4096}, refused=NO_TABLE_DATA,
        memory=[NO_BUFFER],
    ),
    Method("TableCTStateGet", "Read CT state table entry", "index selector",
        "II", (1, 0),
        sends=lambda index, selector: table(20 + (selector != 0), 24, index), bounds={0: FLOWS},
        refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableMirrorGet", "Read mirror table entry", "session selector",
        "II", (0, 0),
        sends=lambda session, selector: table(15, 24, session + 8 * (selector != 0)), bounds={0: 8},
        refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableMirrorL3Get", "Read mirror L3 table entry", "first second",
        "II", (0, 0),
        sends=lambda first, second: table(16, 64, first + 8 * second), bounds={0: 6, 1: 1024}, refused=NO_TABLE_DATA,
        memory=[NO_BUFFER],
    ),
    Method("TableTunnelTerminateGet", "Read tunnel termintate hash table entry",
        "mac value is_first is_ipv4 vlan_1 vlan_2 address_low address_high",
        "LIIIIILL", tunnel_end,
        sends=tunnel_termination, bounds={0: 1 << 48, 1: 1024, 4: 4096, 5: 4096, 6: 1 << 32, 7: 1},
        refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableTunnelSAGet", "Read tunnel SA hash table entry", "value is_ipv4 address_low address_high",
        "IILL", tunnel_peer,
        sends=tunnel_sa, bounds={0: 256, 2: 1 << 32, 3: 1}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableFlowKeyGet", "Read flow key hash table entry",
        "value mac_1 mac_2 port flow_index vni protocol is_ipv4 address_1_low address_1_high address_2_low "
        "address_2_high port_1 port_2",
        "ILLIIIIILLLLII", key_of_a_flow,
        sends=flow_key,
        bounds={
            0: 4095, 1: 1 << 48, 2: 1 << 48, 3: 1024, 4: FLOWS, 5: 1 << 24, 6: 256, 8: 1 << 32, 9: 1, 10: 1 << 32,
            11: 1, 12: 1 << 16, 13: 1 << 16,
        },
        refused=NO_TABLE_DATA, memory=[INVALID, NO_BUFFER],
    ),
    Method("TableFlowInfoGet", "Read flow info table entry", "index",
        "I", (FLOW,),
        sends=lambda index: table(26, 56, index), bounds={0: FLOWS}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableFlowRewriteGet", "Read flow rewrite table entry", "index",
        "I", (FLOW,),
        sends=lambda index: table(25, 32, index), bounds={0: FLOWS}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableTunnelRewriteGet", "Read tunnel rewrite table entry (encap record)", "index",
        "I", first_tunnel,
        sends=lambda index: table(19, 52, index), bounds={0: 8192}, refused=NO_TABLE_DATA, memory=[NO_BUFFER],
    ),
    Method("TableDSCPConfGet", "Get DSCP configuration (trace flow configuration for vlan LS", "",
        "", (), sends=lambda: table(22, 4, 0), refused=NO_TABLE_DATA, memory=[NO_BUFFER]),
    Method("TableUplinkMapGet", "Get Uplink index to port map for Phy port failover support", "",
        "", (), sends=lambda: table(23, 16, 0), refused=NO_TABLE_DATA, memory=[NO_BUFFER]),
    Method("P4AppSet", "Enable/disable p4 user application", "enabled",
        "I", (1,),
        sends=lambda enabled: [Call("Qdp_P4AppSet", [enabled])], refused="", silent=["Qdp_P4AppSet"],
        success=bool,
    ),
    Method("P4AppGet", "check whether p4 user application enabled or not", "", "", (),
        sends=lambda: [Call("Qdp_P4AppGet", [Capacity(4)])], refused="", silent=["Qdp_P4AppGet"],
        success=bool,
    ),
    Method("P4UKLatencySet", "Enable/disable p4 table program latency histogram collection", "enabled",
        "I", (1,),
        sends=lambda enabled: [Call("Qdp_P4UKLatencySet", [enabled])], refused="", silent=["Qdp_P4UKLatencySet"],
        success=bool,
    ),
    Method("P4UKLatencyDump", "Dump p4 table program latency histogram data", "selector",
        "I", after("P4UKLatencySet", 1, returned=(0,)),
        sends=lambda selector: [Call("Qdp_P4UKLatencyDump", [selector, Capacity(192)])], refused="",
        silent=["Qdp_P4UKLatencyDump"], memory=[NO_BUFFER],
        memory_raises=[(SystemError, NO_DICT_ITEM), (SystemError, NO_BUFFER)],
    ),
    Method("FlowOpsStatsGet", "Get flow operation stats maintained by ftl API level", "",
        "", (), sends=lambda: table(27, 296, 0), refused=NO_TABLE_DATA, memory=[NO_BUFFER]),
    Method("AdvStatsSetEnabled", "Enable or disable advanced stats", "switch mode",
        "II", (0, 1),
        sends=lambda switch, mode: [Call("Qdp_AdvStatsSetEnabled", [switch, mode])], bounds={**SWITCH, 1: 3},
        refused="Failed to enable advanced stats.\n",
        success=None,
    ),
    Method("AdvStatsGetEnabled", "Get advanced stats enabled", "switch",
        "I", (0,),
        sends=lambda switch: [Call("Qdp_AdvStatsGetEnabled", [switch, Capacity(1)])], bounds=SWITCH,
        invalid=BLANK_LINE, refused="ValueError: Failed to get advanced stats status.\n\n",
        success=bool,
    ),
    Method("AdvStatsGetCounters", "Get advanced stats counters", "switch selector text",
        "IIs", after("AdvStatsSetEnabled", 0, 1, returned=(0, 0, "")),
        sends=lambda *given: [Call("Qdp_AdvStatsGetCounters", [*given, Capacity(428)])], bounds=SWITCH,
        refused="Failed to get advanced stats counter.\n", memory=[NO_BUFFER],
        memory_raises=[(SystemError, NO_BUFFER), (SystemError, NO_DICT_ITEM)],
    ),
    Method("AgingIntervalGet", "Get flow table aging interval", "selector",
        "I", after("AgingIntervalSet", 0, 1000, returned=(0,)),
        sends=lambda selector: [Call("Qdp_GetAgingInterval", [selector, Capacity(4)])],
        refused="Failed to get aging interval\n", memory_raises=INTERPRETERS_OWN,
        success=int,
    ),
    Method("AgingIntervalSet", "Set flow table aging interval", "selector interval",
        "II", (0, 20),
        sends=lambda *given: [Call("Qdp_SetAgingInterval", [*given])], refused="Failed to set aging interval\n",
        success=None,
    ),
    Method("P4RssOverrideSet", "Set RSS override for a VNIC", "switch port is_override queue",
        "IIII", (SMARTNIC_SWITCH, 3, 1, 2),
        sends=lambda switch, port, is_override, queue: (
            command(12, halves(switch, port) + bytes([queue, is_override != 0]))
        ),
        bounds={**SWITCH, 1: 1023, 3: 64}, refused="Failed to set RSS override\n",
        success=bool,
    ),
    Method("P4RssOverrideGet", "Get RSS override for a VNIC", "switch port",
        "II", (SMARTNIC_SWITCH, 70),
        sends=lambda switch, port: command(13, struct.pack("<2H2x", switch, port), 6), bounds={**SWITCH, 1: 1023},
        refused="Failed to get RSS override info.\n", memory=[NO_BUFFER],
    ),
    Method("P4LogLevelSet", "Set borea app log level", "level",
        "I", (2,),
        sends=lambda level: command(14, bytes([level])), bounds={0: 6}, refused="Failed to set borea log level.\n",
        success=bool,
    ),
    Method("P4LogLevelGet", "Get borea app log level", "", "", (),
        sends=lambda: command(15, b"", 1), refused="Failed to get borea log level.\n", memory=[NO_BUFFER],
    ),
]
# fmt: on

BY_NAME = {method.name: method for method in METHODS}
RECIPES = {method.name: method.arguments for method in METHODS}
LISTS = {method.name: method.answers for method in METHODS if method.answers}


def shape(method):
    """What tells methods apart that fail, own and decode by the same code."""
    return (
        str(method.returns), method.refusal_is_null, str(method.raises), bool(method.answers), bool(method.objects),
        method.by_alias, tuple(method.memory), tuple(method.memory_raises), method.takes == "", method.arguments == (),
    )  # fmt: skip


def one_of_each_shape():
    """The name of the first method of each shape."""
    return [each.name for each in {shape(each): each for each in reversed(METHODS)}.values()]
