"""The typed face of `_libqdp`, the Python binding of the QDP datapath and of the SmartNIC pipeline behind it.

The methods stand in the order of the module's own table. All parameters are positional: the module takes no keywords. A
method that is declared without parameters does not look at what it is given.

How a failure looks

"Printed, and None"
    The text goes to standard error, ended by one line break unless another number is given, and the result is None.
    "Refused" stands for a value out of its range or a call that does not parse (wrong number or wrong types of
    arguments); nothing has been changed then. When the call does not parse, the parser's own exception also stays set,
    and the interpreter reports it: it raises SystemError ("... returned a result with an exception set"), whose
    __cause__ is that exception. The text is printed all the same. So it is with MemoryError when a text tells that
    there is no memory for a list or a dict.
"Left set beside None"
    SystemError is set although the result is None. The interpreter raises its own SystemError, as above, with the
    method's as its __cause__. Unless a method says otherwise, this is how an object of the result fails that cannot be
    made ("Failed to allocate buffer.\\n") or stored ("Failed to set dict item.\\n", "Failed to set list item.\\n"). A
    method whose texts name no lack of memory raises the interpreter's own exception (MemoryError) instead.
"Raised"
    An exception like any other. The texts of printed failures that begin with "TypeError: ", "ValueError: " or
    "OSError: " are only texts: they are raised nowhere.

Names of switches and ports

A switch number (0..15) and a port id (0..16383) are those of `ListSwitches` and `ListPorts`. An alias is the name that
users give a virtual switch; it is resolved against the switch configuration that the hosting process has loaded with
`LibraryInit`. Before that no alias is found.

Integers

Arguments are taken as unsigned 32-bit words unless another width is given: without an overflow check, so that -1
arrives as 0xFFFFFFFF, which some settings take as "keep" or "none". Ranges are those that the module checks; "passed as
given" means that it checks none and that the meaning is the datapath's. A "signed counter" is a 64-bit counter that
comes out negative from 2**63 on.
"""

from typing import Literal, TypedDict

# Switches and ports

class SwitchInfo(TypedDict):
    """One datapath switch."""

    name: str  # the switch's name in the datapath, at most 128 bytes
    swID: int  # switch number, 0..15
    maxPorts: int  # most ports that the switch can have
    numActivePorts: int
    numPorts: int
    mtu: int  # bytes
    numLcores: int
    lcores: int  # mask, one bit per lcore; signed, so negative when bit 63 is set

def ListSwitches() -> list[SwitchInfo] | None:
    """Lists the datapath's switches, with their capacity and lcores (`Qdp_Get_Switch_List`).

    Printed, and None:
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve list of switches."  the library refuses
        "Failed to allocate buffer."            no memory for the list
    """

ClientType = Literal[
    "VNIC",
    "VNIC.PT",  # the suffix .PT marks a pass-through port
    "UPLINK",
    "GENERIC",
    "REP.INV",  # representors, by what they represent
    "REP.M2VF",
    "REP.M2PHY",
    "REP.M2UPT",
    "REP.M2UPT.PT",
    "REP.M3VF",
    "REP.M3PHY",
    "REP.M3PF",
    "REP.M3UPT",
    "REP.M3UPT.PT",
    "REP.M3EMU",
    "REP.M3EMU.PT",
    "REP.M3MUXPF",
    "REP.P4SHRD",
    "REP.P4PHY",
    "REP.P4EMU",
    "REP.P4EMU.PT",
    "REP.P4VF",
    "REP.P4PF",
    "REP.P4NIC",
    "REP.UNKN",  # a representor type above 15
    "UNKNOWN",  # a client type that has no name
]

class PortInfo(TypedDict):
    """One port of a switch."""

    portID: int  # port id, 0..16383
    qdpPortID: int  # the datapath's own id of the port
    numTxQ: int  # transmit queues, length of txQLM
    numRxQ: int  # receive queues, length of rxQLM
    hwAddr: str  # MAC address, "02:11:22:aa:bb:cc"
    numMACs: int
    clientType: ClientType
    txQLM: list[int]  # a byte per transmit queue, 0..255; its meaning is the datapath's
    rxQLM: list[int]  # a byte per receive queue

def ListPorts(switch: int, /) -> list[PortInfo] | None:
    """Lists all ports of a switch (`Qdp_Get_Port_List`).

    switch: switch number, 0..15

    Printed, and None:
        "TypeError: Invalid switch ID passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve list of ports."     the library refuses
        "Failed to allocate port list."         no memory for the list
    """

class PortCounters(TypedDict):
    """Signed counters of one port: the fast path's, then the slow path's with the prefix sp."""

    txPkts: int
    txBytes: int
    txMcastPkts: int
    txMcastBytes: int
    txBcastPkts: int
    txBcastBytes: int
    txDrops: int
    txErrors: int
    rxPkts: int
    rxBytes: int
    rxMcastPkts: int
    rxMcastBytes: int
    rxBcastPkts: int
    rxBcastBytes: int
    rxDrops: int
    rxErrors: int
    spTxPkts: int
    spTxBytes: int
    spTxMcastPkts: int
    spTxMcastBytes: int
    spTxBcastPkts: int
    spTxBcastBytes: int
    spTxDrops: int
    spTxErrors: int
    spRxPkts: int
    spRxBytes: int
    spRxMcastPkts: int
    spRxMcastBytes: int
    spRxBcastPkts: int
    spRxBcastBytes: int
    spRxDrops: int
    spRxErrors: int

def GetPortStats(switch: int, port: int, /) -> PortCounters | None:
    """Reads a port's counters (`Qdp_Get_Port_Stats`, then `Qdp_Get_Port_Stats_Slowpath`).

    Both halves or nothing: when the slow path's counters cannot be had, the fast path's are not returned either.

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."    refused
        "Failed to allocate memory."              no memory for the record
        "Failed to retrieve port stats."          the library refuses the fast path's counters
        "Failed to allocate stats tuple."         no memory for the dict
        "Failed to retrieve slowpath port stats." the library refuses the slow path's counters
    """

# MAC tables

class MACEntry(TypedDict):
    """One learned or static MAC address."""

    macAddr: str  # "02:11:22:aa:bb:cc"
    vlanID: int
    qdpPortID: int  # the datapath's own id of the port that the address is behind
    macGenDiff: int  # generation difference

class PortMACTable(TypedDict):
    """The MAC table of one port."""

    MacLimit: int  # most entries that the table takes
    LimitExceeded: int  # non-zero when the limit was exceeded
    MacTableList: list[MACEntry]

class SwitchMACTable(TypedDict):
    """The MAC table of a switch. Other than a port's, it does not tell whether the limit was exceeded."""

    MacLimit: int
    MacTableList: list[MACEntry]

def ListPortMACTable(switch: int, port: int, /) -> PortMACTable | None:
    """Lists the MAC entries of a port (`Qdp_Dump_Port_MAC_Table`).

    switch: switch number, 0..15
    port: port id, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve mac table."         the library refuses
        "Failed to allocate mac table."         no memory for the dict
    """

def ClearPortMACTable(switch: int, port: int, /) -> None:
    """Forgets the MAC entries of a port (`Qdp_Clear_Port_MAC_Table`).

    switch: switch number, 0..15
    port: port id, passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to clear mac table."            the library refuses
    """

def AddMACEntry(switch: int, port: int, mac: int, vlan: int, /) -> None:
    """Adds a static MAC entry (`Qdp_MAC_Entry_Ops`, operation 1).

    Beware of the switch: its low 16 bits are replaced by the upper 16 bits of `vlan`. With a VLAN below 65536 the
    entry is added to switch 0, whichever switch is named. To reach switch 5, give (5 << 16) | vlan as `vlan`.

    switch: only its upper 16 bits count; the switch number that results must be 0..15
    port: port id, passed as given
    mac: the address as a number (signed 64-bit), least significant byte first: 0x554433221102 is 02:11:22:33:44:55;
        its top 16 bits are ignored
    vlan: VLAN id in the low 16 bits, switch number in the upper 16 bits

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to add a MAC entry."            the library refuses; without a line break
    """

def DelMACEntry(switch: int, port: int, mac: int, vlan: int, /) -> None:
    """Deletes a static MAC entry (`Qdp_MAC_Entry_Ops`, operation 0).

    Beware of the switch: it is taken from the upper 16 bits of `vlan`, as for `AddMACEntry`.

    switch: only its upper 16 bits count; the switch number that results must be 0..15
    port: port id, passed as given
    mac: the address as a number (signed 64-bit), least significant byte first; its top 16 bits are ignored
    vlan: VLAN id in the low 16 bits, switch number in the upper 16 bits

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to delete MAC entry."           the library refuses
    """

def ListSwitchMACTable(switch: int, /) -> SwitchMACTable | None:
    """Lists the MAC entries of a switch (`Qdp_Dump_Switch_MAC_Table`).

    switch: switch number, 0..15

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve switch mac table."  the library refuses
        "Failed to allocate switch mac table."  no memory for the dict
    """

def ClearSwitchMACTable(switch: int, /) -> None:
    """Forgets the MAC entries of a switch (`Qdp_Clear_Switch_MAC_Table`).

    switch: switch number, 0..15

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to clear mac table."            the library refuses
    """

# Lcore statistics

class FlowStats(TypedDict):
    """The flow cache of one lcore. Every value is the low 32 bits of its counter: a counter wraps at 2**32."""

    lcoreID: int
    numFlows: int  # flows held now
    numModel2Flows: int
    numFlowsCreated: int
    hits: int  # lookups
    miss: int
    slowpath: int  # packets handed to the slow path
    fpoHits: int  # fpo...: flow processing offload
    localHits: int
    firstLookupHits: int
    firstLookupLocalCacheHits: int
    actionAllocFails: int
    actionGroupAllocFails: int
    keyInsertFailCount: int
    latSampleCount: int
    fpoCTHwPktQueued: int  # fpoCT...: connection tracking of offloaded flows
    fpoCTHwPktDrop: int
    fpoCTPktsInjectedToHW: int
    fpoCTPktsContinuedInSW: int
    fpoCTHwContextFailed: int
    fpoCTHwFlowInval: int
    fpoMarkMismatched: int
    fpoPnicMismatched: int
    fpoDelayMarkMatching: int
    fpoEphemeralFlows: int
    fpoTransientFlows: int
    fpoBackoffTimes: int

def GetFlowStats(selector: int, lcores: tuple[int, ...], value: int, /) -> list[FlowStats] | None:
    """Reads the flow cache counters of lcores, an item per lcore that the library answers for (`Qdp_Get_Flow_Stats`).

    selector: passed as given, before the lcores
    lcores: at most 64 lcore ids; low 32 bits of each
    value: passed as given, behind the lcores

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused; two line breaks
        "Failed to allocate memory."            no memory for the record or the list
        "Failed to retrieve flow stats."        the library refuses
    """

def GetRepPortStats() -> None:
    """Does nothing: the place is kept for the counters of representor ports. Calls nothing and prints nothing."""

# Flow cache

class FlowEntry(TypedDict):
    """One flow of the cache. The counters are unsigned."""

    key: str  # layer, MACs, VLAN, tag, addresses, protocol, VNI, ports, in fixed columns
    actions: str  # bitmap, counts, and the actions by name, each ended by "; "
    swHits: int  # 56-bit counter
    swBytes: int
    hwHits: int
    hwBytes: int

FlowPage = TypedDict(
    "FlowPage",
    {
        "startIndex": int,  # where the next page starts
        "list": list[FlowEntry],
    },
)

def DumpFlowTable(
    selector: int,
    lcore: int,
    start_index: int,
    option: int,
    source_mac_filter: int,
    source_mac: str,
    destination_mac_filter: int,
    destination_mac: str,
    source_ip_version: int,
    source_ip: str,
    destination_ip_version: int,
    destination_ip: str,
    filter_1: int,
    filter_2: int,
    filter_3: int,
    filter_4: int,
    filter_5: int,
    /,
) -> FlowPage | None:
    """Reads one page of an lcore's flow cache (`Qdp_Dump_Flow_Table`).

    Paging is the caller's: the next page starts at the "startIndex" of this one.

    selector: passed as given
    lcore: lcore id, 0..63
    start_index: 0 for the first page; anything but 4294967295
    option: low 8 bits, passed as given
    source_mac_filter, destination_mac_filter: low 8 bits; non-zero to filter by the MAC that follows
    source_mac, destination_mac: "02:11:22:aa:bb:cc", read only when its filter is on; a text that is no MAC is not
        reported
    source_ip_version, destination_ip_version: 0 no filter, 4 IPv4, any other IPv6
    source_ip, destination_ip: address text of that version, read only when the version is not 0
    filter_1 ... filter_5: signed 32-bit, passed as given; beyond 32 bits is refused

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the records or the dict
        "Failed to convert source IPv4 address to binary form."
        "Failed to convert destination IPv4 address to binary form."
                                                the text is no such address, be it IPv4 or IPv6; two line breaks
        "Failed to retrieve flow table."        the library refuses; two line breaks
        "Invalid response returned."            entries beyond the answer's valid bytes; no partial page is returned
        "Invalid action"                        printed twice: a flow's actions do not fit their text of 512 bytes
    """

def DumpDecapFlowTable() -> None:
    """Is not supported by this datapath. Calls nothing.

    Printed:
        "Dump Decap  Flow Not supported below 2.10.0.0"  always; two blanks behind Decap
    """

def DumpDecapSaFlowTable() -> None:
    """Is not supported by this datapath. Calls nothing.

    Printed:
        "Dump Decap  Flow Not supported below 2.10.0.0"  always; two blanks behind Decap
    """

def DumpPortFlow() -> None:
    """Is not supported by this datapath. Calls nothing.

    Printed:
        "Dump Port Flow Not supported below 2.10.0.0"  always
    """

# Port configuration and commands

class PortConf(TypedDict):
    """The configuration of one port. Each key from KCP to MirrorFilterOut is a feature bit, 0 or 1."""

    portID: int
    # Receive filters by name, each ended by a blank, of "UNICAST MULTICAST ALLMULTI BROADCAST PROMISC USE_LADRF ".
    flags: str
    hwAddr: str  # MAC address
    untaggedVlanID: int
    forgedMACAllowed: int
    numMcastAddrs: int  # length of mcastAddrList
    vni: int
    mcastAddrList: list[str]  # MAC addresses
    numTaggedVlanRanges: int  # length of vlanRanges
    vlanRanges: list[str]  # "100-200", first and last VLAN id
    KCP: int
    MirrorIn: int
    LRO: int
    L2ForOverlay: int
    LAT: int
    Spoofguard: int
    VDL2: int
    TxL3: int
    minFlowL3: int
    SWL3: int
    MirrorFilterIn: int
    LTR: int
    TxL4: int
    IPFIX: int
    SI: int
    SWL4: int
    DFW: int
    DLB: int
    HKZFW: int
    minFlowL4: int
    MirrorFilterOut: int
    metaFlow: list[str | None]  # "10:1 ", slot 0..63 and its second bit; None where fewer slots are on than counted

def GetPortConf(switch: int, port: int, /) -> PortConf | None:
    """Reads a port's configuration (`Qdp_Get_Port_Conf`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record or the dict
        "Failed to retrieve port conf."         the library refuses
    Left set beside None: "Failed to set list item.\\n" also when more metaFlow slots are on than the record counts.
    """

def MigratePort(switch: int, port: int, value_1: int, value_2: int, value_3: int, /) -> None:
    """Moves a port between lcores (`Qdp_Migrate_Port`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value_1, value_2, value_3: passed as given

    Printed:
        "TypeError: Invalid parameter passed."              refused
        "Please disable automatic thread load balancing."   status 1: the balancer runs; two line breaks; then also
        "Failed to migrate port."                           the library refuses
    """

def UnpinPort(switch: int, port: int, value: int, /) -> None:
    """Unpins a port from its lcore (`Qdp_Unpin_Port`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to unpin port."                 the library refuses
    """

def ResetPort(switch: int, port: int, value: int, /) -> None:
    """Resets a port (`Qdp_Reset_Port`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to reset port."                 the library refuses
    """

class TxUplink(TypedDict):
    """The uplinks that a port transmits on."""

    txType: Literal["None", "Single", "LAG", "SrcMAC", "All", "NoTeaming", "Unknown"]
    txUplinks: list[int]  # uplink ids

def GetPortTxUplink(switch: int, port: int, /) -> TxUplink | None:
    """Reads which uplinks a port transmits on (`Qdp_Get_Port_Tx_Uplink`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get port TX uplink."         the library refuses
    Raised: the interpreter's own exception when the list cannot be filled or the dict not be built. A list that cannot
    be made leaves MemoryError set beside None.
    """

# L3 SPAN

class L3SPANValidity(TypedDict):
    isValid: int  # signed 8-bit flag; 0 when the datapath holds no such record: then the only key

class L3SPANRecord(L3SPANValidity, total=False):
    """The encapsulation of mirrored traffic. All but the geneve keys are there when isValid is not 0."""

    srcPort: int
    dstPort: int
    mtu: int  # bytes
    isGeneve: int  # signed 8-bit flag; the four geneve keys are there only when it is not 0
    geneve_smac: str  # outer MAC addresses
    geneve_dmac: str
    geneve_src: str  # outer IP addresses, IPv4 or IPv6
    geneve_dst: str
    gre_smac: str
    gre_dmac: str
    gre_src: str
    gre_dst: str

def GetL3SPANRecord(switch: int, is_ipv6: int, destination: str, value: int, /) -> L3SPANRecord | None:
    """Reads the encapsulation that mirrored traffic gets towards a destination (`Qdp_Get_L3SPAN_Record`).

    switch: switch number, 0..15
    is_ipv6: low 8 bits; 0 for an IPv4 destination, any other value for IPv6
    destination: the address as text, of that family
    value: low 24 bits, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to convert destination IP address to binary form."
                                                no address of that family; two line breaks
        "Failed to allocate memory."            no memory for the record
        "Failed to allocate mac table."         no memory for the dict
    None, without a text: the library refuses.
    """

# Uplinks

# The order of the counters in a list.
UplinkCounterName = Literal[
    "rxPkts",
    "txPkts",
    "rxBytes",
    "txBytes",
    "rxErrors",
    "txErrors",
    "rxDrops",
    "txDrops",
    "rxMulticastPkts",
    "rxBroadcastPkts",
    "txMulticastPkts",
    "txBroadcastPkts",
    "collisions",
    "rxLengthErrors",
    "rxOverflowErrors",
    "rxCRCErrors",
    "rxFrameAlignErrors",
    "rxFifoErrors",
    "rxMissErrors",
    "txAbortedErrors",
    "txCarrierErrors",
    "txFifoErrors",
    "txHeartbeatErrors",
    "txWindowErrors",
]

# A name with its signed counter.
UplinkCounter = tuple[UplinkCounterName, int]

class UplinkStats(TypedDict):
    """The device counters of an uplink, and its private statistics."""

    uplinkStats: list[UplinkCounter] | None  # 24 counters; None when the list could not be made
    privStats: str  # text; "" when the uplink has none

def GetUplinkStats(switch: int, port: int, /) -> UplinkStats | None:
    """Reads an uplink's counters and private statistics (`Qdp_Get_Uplink_Priv_Stats_Len`, `Qdp_Get_Uplink_Priv_Stats`,
    `Qdp_Get_Uplink_Stats`).

    switch: switch number, 0..15
    port: port id of the uplink, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the private text
    Printed, and raised by the interpreter, which gets NULL without an exception and makes it a SystemError:
        "Failed to get private stats."          the library gives the text's length but not the text
        "Failed to get uplink stats."           the library refuses the counters
    Printed, and None in place of the counters:
        "Failed to allocate uplink stats.", "Failed to allocate uplink stats counter.",
        "Failed to set uplink stats counter."   no memory for the list
    Raised: the interpreter's own exception when the dict cannot be built.
    """

def GetUplinkQueueStats(switch: int, port: int, direction: int, queue: int, /) -> list[UplinkCounter] | None:
    """Reads the 24 counters of one queue of an uplink (`Qdp_Get_Uplink_Queue_Stats`).

    switch: switch number, 0..15
    port: port id of the uplink, 0..16383
    direction: 0, or any other value for the other direction
    queue: queue number, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get uplink stats."           the library refuses
        "Failed to allocate uplink stats.", "Failed to allocate uplink stats counter.",
        "Failed to set uplink stats counter."   no memory for the list
    """

class RSSEngine(TypedDict):
    """One RSS engine of a port."""

    id: int
    type: Literal["DFTRSS", "DEVRSS", "SHARSS", "OFLRSS", "UNKNOWN"]
    memAffID: int  # memory affinity id
    priQ: int  # primary queue
    numQ: int
    hashFunc: int  # code, as the datapath has it
    hashType: int  # code, as the datapath has it
    keySize: int  # of the hash key
    indSize: int  # of the indirection table
    secQ: list[int]  # queue ids, numQ of them but at most 64

def ListRSSEngine(switch: int, port: int, /) -> list[RSSEngine] | None:
    """Lists the RSS engines of a port (`Qdp_Get_RSS_Engine_List`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to retrieve RSS Engine list."   the library refuses
        "Failed to allocate RSS engine list."   no memory for the list
        "Failed to list RSS engines."           beside the SystemError of an object that cannot be made or stored
    """

def SetUplinkMACLearn(switch: int, enabled: int, /) -> None:
    """Sets whether the uplinks of a switch learn MAC addresses (`Qdp_Set_Uplink_MAC_Learn`).

    switch: switch number, 0..15
    enabled: 0 off, any other value on

    Printed:
        "TypeError: Invalid parameter passed."     refused
        "Failed to set uplink mac learn policy."   the library refuses
    """

def ClearSwitchFlowTable(switch: int, /) -> None:
    """Empties the flow cache of a switch (`Qdp_Clear_Switch_Flow_Table`).

    switch: switch number, 0..15

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed clear switch flow table"        the library refuses
    """

def EnableSwitchFlowCache(switch: int, enabled: int, /) -> None:
    """Turns the flow cache of a switch on or off (`Qdp_Enable_Switch_Flow_Cache`).

    switch: switch number, 0..15
    enabled: 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to enable switch flow cache.", "Failed to disable switch flow cache."
                                                the library refuses
    """

def GetPanicOnTxHang(switch: int, /) -> int | None:
    """Tells whether the host panics when an uplink of the switch hangs on transmission (`Qdp_Get_Panic_On_Tx_Hang`).

    The result is the library's word, unsigned 32-bit; 0 is no.

    switch: switch number, 0..15

    Printed, and None:
        "TypeError: Invalid parameter passed."           refused
        "Failed to get panic on Tx hang configuration."  the library refuses
    """

def SetPanicOnTxHang(switch: int, enabled: int, /) -> None:
    """Sets whether the host panics when an uplink of the switch hangs on transmission (`Qdp_Set_Panic_On_Tx_Hang`).

    switch: switch number, 0..15
    enabled: 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to enable panic on Tx hang.", "Failed to disable panic on Tx hang."
                                                the library refuses
    """

class NetQQueue(TypedDict):
    """A hardware queue that serves a filter."""

    qdpPortID: int  # the datapath's own id of the port that owns the queue
    qid: int  # queue id
    fid: int  # signed 64-bit; its meaning is the datapath's

class NetQFilter(TypedDict):
    """A receive filter."""

    # "macOnly:<MAC>", "vlanMac:<MAC>:vlanID:<id>", "geneve:outer:<MAC>:inner:<MAC>:vni:<VNI>",
    # "vxlan:outer:<MAC>:inner:<MAC>:vni:<VNI>", or "UnknownFilter"
    rxf: str
    qInfo: list[NetQQueue]

class NetQInfo(TypedDict):
    """How a port's receive traffic is steered to queues."""

    isUplink: int  # flag
    isFlowFilter: int  # flag
    swID: int
    qdpPortID: int
    filters: list[NetQFilter]

def GetPortNetQInfo(switch: int, port: int, /) -> NetQInfo | None:
    """Lists a port's receive filters with their queues (`Qdp_Get_Port_NetQ_Info`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to get uplink stats."           the library refuses
        "Failed to allocate NetQ Info resp."    no memory for the dict
    """

def MigrateNetQFilter(switch: int, port: int, value: int, /) -> None:
    """Moves the receive filter of a vNIC port (`Qdp_Migrate_NetQ_Filter`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."             refused
        "Please disable automatic thread load balancing."  status 1: the balancer runs; two line breaks; then also
        "Failed to migrate filter of port <port>."         the library refuses
    """

def GetUplinkRingSize(switch: str, port: str, /) -> tuple[int, int] | None:
    """Reads an uplink's transmit and receive ring size (`DVSHCK_PortDataGet` of
    "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing"). An uplink without a setting has (2048, 1024).

    switch, port: how the switch state library names them; passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."              refused
        "ValueError: Failed to read property data length."  the library refuses
        "ValueError: Invalid property data length."         the stored value is not 8 bytes long
    """

def SetUplinkRingSize(switch: str, port: str, tx_size: int, rx_size: int, /) -> None:
    """Sets an uplink's transmit and receive ring size (`DVSHCK_PortDataSet` of
    "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing").

    switch, port: how the switch state library names them; passed as given
    tx_size, rx_size: multiples of 32, 0 included

    Printed:
        "TypeError: Invalid parameter passed."         refused
        "ValueError: Ring size must be 32 aligned."    another size
        "ValueError: Failed to set port property."     the library refuses
    """

class FilterTypes(TypedDict):
    """The receive filter classes that a switch supports."""

    VLANMAC: Literal["TRUE", "FALSE"]

def GetSwitchFilterTypes(alias: str, /) -> FilterTypes | None:
    """Reads the filter classes that a switch supports: from its property "com.tarnix.wyx.qdp.filterType", or where it
    has none from the datapath (`Qdp_GetSwitchFilterTypes`).

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."                        refused
        "Failed to find dvs ID for dvs alias <alias>."                no such switch
        "Format of property com.tarnix.wyx.qdp.loadbal value is from unknown version."
                                                                      the property's version is not 0; the key named
                                                                      is the load balancer's
        "Property com.tarnix.wyx.qdp.filterType value length is odd." the property is not 6 bytes long
        "Failed to get portset name from dvs <alias>."                no name of the switch in the datapath
        "Failed to get supported filter classes for <alias>."         the datapath refuses
    None, without a text: the switch supports no class at all.
    """

def SetSwitchFilterTypes(alias: str, filter_class: Literal["VLANMAC"], enabled: int, /) -> bool | None:
    """Adds or removes a filter class of a switch, in its property "com.tarnix.wyx.qdp.filterType".

    The result tells whether the class is now wanted: True or False, also when it could not be stored. Removing the only
    class leaves a switch whose classes can neither be read nor set.

    alias: the switch's alias
    filter_class: "VLANMAC", no other
    enabled: unsigned 64-bit; 0 removes the class, any other value adds it

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Invalid filter Class provided, only VLANMAC is accepted as input"
                                                another class
        "Failed to get current support FilterClasses on switch"
                                                the classes cannot be read; before it stand the texts of
                                                `GetSwitchFilterTypes`
    Printed, and True or False:
        "Failed to find dvs ID for dvs alias <alias>."                     the switch is gone meanwhile
        "Failed to set DVS property com.tarnix.wyx.qdp.filterType"         the library refuses
    """

class DevAffinity(TypedDict):
    """The affinity of one physical NIC."""

    devname: str
    affinity: int

def ListDevAffinity() -> list[DevAffinity] | None:
    """Lists the affinity of all physical NICs (`Qdp_List_Dev_Affinity`).

    Printed, and None:
        "Failed to allocate memory."                    no memory for the record
        "ValueError: Failed to list device affinity."   the library refuses
        "Failed to allocate port list."                 no memory for the list
    """

def SetDevAffinity(device: str, affinity: int, /) -> None:
    """Sets the affinity of a physical NIC (`Qdp_Set_Dev_Affinity`).

    device: its name, as `ListDevAffinity` gives it
    affinity: passed as given

    Printed:
        "TypeError: Invalid parameter passed."          refused
        "ValueError: Failed to set device affinity."    the library refuses
    """

# Thread load balancer

def DumpLBDebugBuf(switch: int, flag: int, /) -> str | None:
    """Reads the text of a switch's load balancer debug buffer, at most 2 MiB (`Qdp_DumpLBDebugBuf`).

    switch: switch number, 0..15
    flag: low 8 bits, passed as given as a signed byte

    Printed, and None:
        "TypeError: Invalid parameter passed."                     refused
        "ValueError: Failed to dump debug buffer: <status, hex>."  the library refuses
    Raised: UnicodeDecodeError when the text is no UTF-8.
    """

def FlushLBDebugBuf(switch: int, /) -> None:
    """Empties a switch's load balancer debug buffer (`Qdp_FlushLBDebugBuf`).

    switch: switch number, 0..15

    Printed:
        "TypeError: Invalid parameter passed."                      refused
        "ValueError: Failed to flush debug buffer: <status, hex>."  the library refuses
    """

def GetLBMetric(alias: str, /) -> Literal["none", "cpu", "count", "invalid"] | None:
    """Reads by what a switch's load is balanced: from its property "com.tarnix.wyx.qdp.loadbal", or where it has none
    from the balancer (`Qdp_GetLBParams`). "invalid" stands for a stored number that has no name.

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."                       refused
        "Failed to find dvs ID for dvs alias <alias>."               no such switch
        "Format of property com.tarnix.wyx.qdp.loadbal value is from unknown version."
                                                                     the property's version is not 0
        "Property com.tarnix.wyx.qdp.loadbal value length is odd."   the property is not 24 bytes long
        "Failed to get portset name from dvs <alias>."               no name of the switch in the datapath
    None, without a text: the balancer refuses.
    """

def SetLBMetric(alias: str, metric: Literal["none", "cpu", "count"], /) -> bool:
    """Sets by what a switch's load is balanced, in its property "com.tarnix.wyx.qdp.loadbal"; the rest of the property
    stays as it is. The balancer itself is not told.

    The result tells whether it was stored. The present setting is read first: what fails there is told before a metric
    that does not exist.

    alias: the switch's alias
    metric: "none", "cpu" or "count", in lower case

    Printed, and False:
        "TypeError: Invalid parameter passed."          refused
        the texts of `GetLBMetric`: the present setting cannot be read
        "Invalid metric name <metric>."                 another metric
        "Failed to find dvs ID for dvs alias <alias>."  the switch is gone meanwhile
        "Failed to set DVS property com.tarnix.wyx.qdp.loadbal"
                                                        the library refuses
    False, without a text: the balancer refuses to tell the present metric.
    """

LBParamName = Literal[
    "run_in_msec",
    "cpuload_high",
    "cpuload_low",
    "cpuload_target",
    "cpuload_high_per_unit",
    "cpuload_low_per_unit",
    "min_v2v_pps",
    "min_v2v_pps_bind",
    "pps_var_sensitivity",
    "cpu_var_sensitivity",
]

class LBParams(TypedDict):
    """The balancer's runtime parameters, unsigned 64-bit. Their units are the balancer's."""

    run_in_msec: int
    cpuload_high: int
    cpuload_low: int
    cpuload_target: int
    cpuload_high_per_unit: int
    cpuload_low_per_unit: int
    min_v2v_pps: int
    min_v2v_pps_bind: int
    pps_var_sensitivity: int
    cpu_var_sensitivity: int

def SetLBParam(alias: str, name: LBParamName, value: int, /) -> None:
    """Sets a runtime parameter of a switch's load balancer (`Qdp_SetLBParam`).

    alias: the switch's alias
    name: a key of `GetLBParams`
    value: unsigned 64-bit, without an overflow check; passed as given

    Raised:
        ValueError "invalid parameter passed."  refused
        ValueError "Unknown parameter name."    no such parameter; told before an alias that is unknown too
        ValueError "cannot find dvs alias."     no such switch
        OSError "failed to set parameter."      the library refuses
    """

def GetLBParams(alias: str, /) -> LBParams:
    """Reads the runtime parameters of a switch's load balancer (`Qdp_GetLBParams`).

    alias: the switch's alias

    Raised:
        ValueError "invalid parameter passed."  refused
        ValueError "cannot find dvs alias."     no such switch
        OSError "failed to get parameters."     the library refuses
        SystemError "Failed to allocate buffer.\\n", "Failed to set dict item.\\n"
                                                the dict cannot be built
    """

# Source port, source queue, destination port, destination queue, load in percent (0..100). The ports are positions in
# `ListPorts`. The queue on an uplink's side is -1; on any other port's side it is a queue of that port.
LBTraffic = tuple[int, int, int, int, int]

def InjectLBTraffic(switch: int, traffic: tuple[LBTraffic, ...], /) -> None:
    """Feeds a switch's load balancer with made-up traffic (`Qdp_Get_Port_List`, then `Qdp_InjectLBTraffic` for every
    100 entries).

    A load of 100 percent is a packet rate of 10000000 and a byte rate of 640000000. Traffic from uplink to uplink is
    refused. What was injected before an entry that is refused stays injected, in whole hundreds.

    switch: switch number, passed as given
    traffic: tuples of exactly five integers; low 32 bits of each

    Printed:
        "TypeError: Invalid parameter passed."        refused; two line breaks
        "Memory allocation failed."                   no memory; two line breaks
        "Failed to retrieve list of ports."           the library refuses the port list
        "Invalid traffic format at traffic <index>."  an entry that is refused; two line breaks
        "Failed to inject traffic."                   the library refuses; two line breaks
    Raised: the exception of a signal handler (KeyboardInterrupt) between two library calls.
    """

LBItem = TypedDict(
    "LBItem",
    {
        "count load": int,
        "feat ID": int,
        "ctx ID": int,  # context that serves it
        "pkts": int,  # unsigned 64-bit, as the next
        "bytes": int,
    },
)

LBPort = TypedDict(
    "LBPort",
    {
        "port ID": int,
        "mem affinity mask": int,  # unsigned 64-bit
        "priority": int,
        "vnicRxQ": tuple[LBItem, ...],  # receive queues
        "ofldRSS": tuple[LBItem, ...],  # offloaded receive-side scaling
        "vnicTxQ": tuple[LBItem, ...],  # transmit queues
        "filt": tuple[LBItem, ...],  # filters
    },
)

LBUplinkItem = TypedDict(
    "LBUplinkItem",
    {
        "count load": int,
        "ctx ID": int,  # context that serves the queue
        "pkts": int,  # unsigned 64-bit, as the next
        "bytes": int,
    },
)

LBUplink = TypedDict(
    "LBUplink",
    {
        "port ID": int,
        "mem affinity ID": int,
        "uplinkRx": tuple[LBUplinkItem, ...],  # receive queues
    },
)

LBContext = TypedDict(
    "LBContext",
    {
        "ctx ID": int,
        "world ID": int,  # a world id of -1 comes out as 18446744073709551615
        "biased CPU": int,
        "raw CPU": int,
        "pkts": int,  # unsigned 64-bit, as the next
        "bytes": int,
        "max pb load": int,
    },
)

def DumpLBStats(
    switch: int, first_port: int, port_count: int, first_context: int, context_count: int, /
) -> tuple[list[LBPort], list[LBUplink], list[LBContext]]:
    """Reads the latest load statistics of ports, uplinks and contexts (`Qdp_DumpLBStats`, for each 4096 bytes of
    answer). With both counts 0 nothing is called, and the lists are empty.

    Each further request repeats both counts and begins where the answers so far end. A dump of more than one answer can
    so hold more ports and contexts than asked for: cut the lists to the counts.

    Between two requests Ctrl-C ends the dump in the main thread alone. In a second thread it cannot be interrupted,
    since the interpreter runs signal handlers in the main thread only.

    switch: switch number, 0..15
    first_port: 0..16383
    port_count: first_port + port_count is at most 16384
    first_context: 0..63
    context_count: first_context + context_count is at most 64

    Raised:
        TypeError and the like                                            the call does not parse
        ValueError "Invalid parameter passed."                            a value out of range
        MemoryError "Failed to create dump buffer.", "Failed to create tuple."
        OSError "Failed to dump LB stats. Please see hostcore.log"        the library refuses
        OSError "Invalid format in LB stats dump"                         an answer that is none
        SystemError "Failed to allocate buffer.\\n", "Failed to set list item.\\n", "Failed to set dict item.\\n",
            "Failed to set tuple item.\\n"                                the result cannot be built
        the exception of a signal handler (KeyboardInterrupt)             between two library calls
    """

# Switch and port settings

def GetSwitchNUMATeam(alias: str, /) -> bool | None:
    """Tells whether a switch's teaming minds NUMA nodes: from its property "com.tarnix.wyx.qdp.teaming", or where it
    has none from the datapath (`Qdp_GetSwitchNUMATeam`).

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."                       refused
        "Failed to find dvs ID for dvs alias <alias>."               no such switch
        "Format of property com.tarnix.wyx.qdp.teaming value is from unknown version."
                                                                     the property's version is not 0
        "Property com.tarnix.wyx.qdp.teaming value length is odd."   the property is not 5 bytes long
        "Failed to get portset name from dvs <alias>."               no name of the switch in the datapath
    None, without a text: the datapath refuses.
    """

def SetSwitchNUMATeam(alias: str, enabled: int, /) -> None:
    """Sets whether a switch's teaming minds NUMA nodes, in its property "com.tarnix.wyx.qdp.teaming".

    alias: the switch's alias
    enabled: low 8 bits, so that 256 is off; 0 off, any other value on

    Printed:
        "TypeError: Invalid parameter passed."                   refused
        "Failed to find dvs ID for dvs alias <alias>."           no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.teaming"  the library refuses
    """

def GetSwitchBurstSize(alias: str, /) -> int | None:
    """Reads the receive burst size of a switch: from its property "com.tarnix.wyx.qdp.burstsize", or where it has none
    from the datapath (`Qdp_GetSwitchBurstSize`).

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."                        refused
        "Failed to find dvs ID for dvs alias <alias>."                no such switch
        "Format of property com.tarnix.wyx.qdp.burstsize value is from unknown version."
                                                                      the property's version is not 0
        "Property com.tarnix.wyx.qdp.burstsize value length is odd."  the property is not 8 bytes long
        "Failed to get portset name from dvs <alias>."                no name of the switch in the datapath
    None, without a text: the datapath refuses.
    """

def SetSwitchBurstSize(alias: str, burst_size: int, /) -> None:
    """Sets the receive burst size of a switch, in its property "com.tarnix.wyx.qdp.burstsize".

    alias: the switch's alias
    burst_size: passed as given

    Printed:
        "TypeError: Invalid parameter passed."                     refused
        "Failed to find dvs ID for dvs alias <alias>."             no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.burstsize"  the library refuses
    """

def GetSwitchOverlayL2Flow(alias: str, /) -> int | None:
    """Reads a switch's setting for overlay L2 flows: from its property "com.tarnix.wyx.qdp.overlayl2flow", or where it
    has none from the datapath (`Qdp_GetSwitchOverlayL2Flow`).

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."                            refused
        "Failed to find dvs ID for dvs alias <alias>."                    no such switch
        "Format of property com.tarnix.wyx.qdp.overlayl2flow value is from unknown version."
                                                                          the property's version is not 0
        "Property com.tarnix.wyx.qdp.overlayl2flow value length is odd."  the property is not 8 bytes long
        "Failed to get portset name from dvs <alias>."                    no name of the switch in the datapath
    None, without a text: the datapath refuses.
    """

def SetSwitchOverlayL2Flow(alias: str, value: int, /) -> None:
    """Sets a switch's setting for overlay L2 flows, in its property "com.tarnix.wyx.qdp.overlayl2flow".

    alias: the switch's alias
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."                         refused
        "Failed to find dvs ID for dvs alias <alias>."                 no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.overlayl2flow"  the library refuses
    """

def GetPortLRO(switch: int, port: int, /) -> bool | None:
    """Tells whether a port uses large receive offload (`Qdp_GetLRO`, scope 0).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to get LRO."        the library refuses
    """

def SetPortLRO(switch: int, port: int, enabled: int, /) -> None:
    """Sets whether a port uses large receive offload (`Qdp_SetLRO`, scope 0).

    switch: switch number, 0..15
    port: port id, 0..16383
    enabled: 0 off, 1 on; passed as given

    Printed, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to set LRO."        the library refuses
    """

def GetSwitchLRO(switch: int, /) -> bool | None:
    """Tells whether a switch uses large receive offload (`Qdp_GetLRO`, scope 1).

    switch: switch number, 0..15

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to get LRO."        the library refuses
    """

def SetSwitchLRO(switch: int, enabled: int, /) -> None:
    """Sets whether a switch uses large receive offload, over what its ports are set to (`Qdp_SetLRO`, scope 1).

    switch: switch number, 0..15
    enabled: 0 off, 1 on; passed as given

    Printed, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to set LRO."        the library refuses
    """

def GetSwitchMinFlowLayer(switch: int, /) -> int | None:
    """Reads the minimum flow layer of a switch, unsigned 32-bit (`Qdp_GetSwitchMinFlowLayer`).

    switch: switch number, 0..15

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."                              refused
        "ValueError: Failed to get minimum flow layer of switch <switch>"   the library refuses
    """

def SetSwitchMinFlowLayer(switch: int, layer: int, /) -> bool:
    """Sets the minimum flow layer of a switch (`Qdp_SetSwitchMinFlowLayer`). True when it was set.

    switch: switch number, 0..15
    layer: passed as given

    Printed, and False, both with two line breaks:
        "TypeError: Invalid parameter passed."             refused
        "ValueError: Failed to set switch minFlowLayer."   the library refuses
    """

def GetSwitchMetaFlow(alias: str, /) -> int | None:
    """Reads a switch's metaflow setting, 0..255, from its property "com.tarnix.wyx.qdp.metaflow". A switch without the
    property has 1.

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."                       refused
        "Failed to find dvs ID for dvs alias <alias>."               no such switch
        "Format of property com.tarnix.wyx.qdp.metaflow value is from unknown version."
                                                                     the property's version is not 0
        "Property com.tarnix.wyx.qdp.metaflow value length is odd."  the property is not 5 bytes long
    """

def SetSwitchMetaFlow(alias: str, value: int, /) -> Literal[0, 1]:
    """Sets a switch's metaflow setting, in its property "com.tarnix.wyx.qdp.metaflow". 1 when it was stored.

    alias: the switch's alias
    value: low 8 bits

    Printed, and 0:
        "TypeError: Invalid parameter passed."                    refused
        "Failed to find dvs ID for dvs alias <alias>."            no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.metaflow"  the library refuses
    """

# Flow processing offload (FPO)

class FPOEnabled(TypedDict):
    """How a switch offloads flows. All but models are flags, 0 or 1."""

    enabled: int
    geneveCritical: int
    ipDiscoveryDHCP: int  # IP addresses are learned from DHCP
    ipDiscoveryICMP6ND: int  # and from ICMPv6 neighbour discovery
    models: int  # mask of those allowed: 1 model 1 level 1, 2 model 1 level 2, 4 model 2A, 16 model 3A, 32 model 3B

class FPOSettings(TypedDict, total=False):
    """What is to change; a key that is missing leaves its setting as it is."""

    enabled: bool  # only True itself sets a flag: 1 clears it, like any other value
    models: int  # mask, low 32 bits
    geneveCritical: bool
    ipDiscoveryDHCP: bool
    ipDiscoveryICMP6ND: bool

def GetFPOEnabled(alias: str, /) -> FPOEnabled | None:
    """Reads how a switch offloads flows, from its property "com.tarnix.wyx.qdp.fpo".

    A switch without the property has the default: enabled, IP discovery by DHCP, and the models that the host's kernel
    release allows: 1 before 7.0.0, 7 before 7.0.3, 23 from then on.

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."                     refused
        "Failed to find dvs ID for dvs alias <alias>."             no such switch
        "Format of property com.tarnix.wyx.qdp.fpo is invalid"     the property is not 8 bytes long
        "Failed to get DVS property com.tarnix.wyx.qdp.fpo"        the library refuses
    """

def EnableFPO(alias: str, settings: FPOSettings, /) -> bool:
    """Changes how a switch offloads flows, in its property "com.tarnix.wyx.qdp.fpo".

    The result is True even when the setting could not be stored, of which only the text tells.

    alias: the switch's alias
    settings: what is to change

    Printed, and False:
        "TypeError: Invalid parameter passed."                     refused, also for settings that are no dict and,
                                                                   when all else is in order, models that are no
                                                                   integer
        "Failed to find dvs ID for dvs alias <alias>."             no such switch
        "Format of property com.tarnix.wyx.qdp.fpo is invalid"     the present property is not 8 bytes long
        "Failed to get DVS property com.tarnix.wyx.qdp.fpo"        the library refuses to read
    Printed, and True:
        "Failed to set DVS property com.tarnix.wyx.qdp.fpo"        the library refuses to write
    """

class FPOStats(TypedDict):
    """Flow processing offload on one lcore."""

    lcoreID: int
    hits: int  # this and the next five: low 32 bits of the counter, which so wraps at 2**32
    markMismatched: int
    pnicMismatched: int
    delayMarkMatching: int
    ephemeralFlows: int
    transientFlows: int
    ctHWPktQueued: int  # this and the next three: signed counters
    ctPktsInjectedtoHW: int
    ctPktsContinuedInSW: int
    ctHwContextFailed: int

def GetFPOStats(switch: int, lcores: tuple[int, ...], /) -> list[FPOStats] | None:
    """Reads the offload counters of lcores, an item per lcore that the library answers for (`Qdp_Get_FPO_Stats`).

    switch: switch number, passed as given
    lcores: at most 64 lcore ids; low 32 bits of each

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused; two line breaks
        "Failed to allocate memory."            no memory for the record or the list
        "Failed to retrieve flow stats."        the library refuses
    """

class FPOUplinkStatus(TypedDict):
    """What an uplink's device can offload."""

    models: str  # "None", or names each ended by ", ": "Model 1 Level 1, Model 2A, "; at most 63 characters
    numGroupSupported: int
    numPrioritySupported: int
    maxMarkActionBits: int
    maxFlowsSupported: int
    maxCountersSupported: int
    maxFlowKeyLengthInBits: int
    maxDecTTLActions: int
    numFlowsOffloaded: int  # flows that are offloaded now
    actionsSupported: int  # signed 64-bit

def GetFPOUplinkStatus(switch: int, port: int, /) -> FPOUplinkStatus | None:
    """Reads what an uplink can offload (`Qdp_Get_FPO_Uplink_Status`).

    switch: switch number, 0..15
    port: port id of the uplink, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get FPO uplink status."      the library refuses
    Raised: the interpreter's own exception when the dict cannot be built.
    """

class FPOUplinkStats(TypedDict):
    """Signed counters of the calls into an uplink's offload."""

    ringFull: int
    creationFull: int
    destroyFull: int
    updateFull: int
    genMismatched: int  # generations
    limitExceeded: int
    numSucceededValidateCalls: int
    numSucceededCreateCalls: int
    numSucceededDestroyCalls: int
    numSucceededQueryCalls: int
    numSucceededFlushCalls: int
    numFailedValidateCalls: int
    numFailedCreateCalls: int
    numFailedDestroyCalls: int
    numFailedQueryCalls: int
    numFailedFlushCalls: int
    numSucceededBulkResAllocCalls: int
    numSucceededBulkResFreeCalls: int
    numSucceededBulkResQueryCalls: int
    numSucceededBulkResSetCalls: int
    numSucceededBulkResResetCalls: int
    numPendingFpoCallList: int
    numFailedBulkResAllocCalls: int
    numFailedBulkResFreeCalls: int
    numFailedBulkResQueryCalls: int
    numFailedBulkResSetCalls: int
    numFailedBulkResResetCalls: int
    numSucceededCreateCtxCalls: int  # contexts of tracked connections
    numSucceededDestroyCtxCalls: int
    numSucceededModifyCtxCalls: int
    numSucceededQueryCtxCalls: int
    numFailedCreateCtxCalls: int
    numFailedDestroyCtxCalls: int
    numFailedModifyCtxCalls: int
    numFailedQueryCtxCalls: int
    numFPOUplinkEnableCalls: int
    numFPOUplinkDisableCalls: int
    numFPOCallsInDisabledState: int

def GetFPOUplinkStats(switch: int, port: int, /) -> FPOUplinkStats | None:
    """Reads the counters of the calls into an uplink's offload (`Qdp_Get_FPO_Uplink_Stats`).

    switch: switch number, 0..15
    port: port id of the uplink, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get FPO uplink stats."       the library refuses
    Raised: the interpreter's own exception when the dict cannot be built.
    """

# Flow timing, lcores and memory

def GetFlowTimeout() -> int | None:
    """Reads the flow timeout, in seconds (`Qdp_Get_Flow_Timeout`).

    Printed, and None:
        "ValueError: Failed to get flow timeout."  the library refuses; two line breaks
    """

def SetFlowTimeout(seconds: int, /) -> None:
    """Sets the flow timeout, in seconds (`Qdp_Set_Flow_Timeout`).

    seconds: passed as given

    Printed, both with two line breaks:
        "TypeError: Invalid parameter passed."     refused
        "ValueError: Failed to set flow timeout."  the library refuses
    """

def ListLCoreIDs(selector: int, /) -> tuple[int, ...] | None:
    """Lists the ids of the lcores, in ascending order (`Qdp_Get_LCore_ID_Bitmap`).

    selector: passed as given

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."         refused
        "TypeError: Failed to get lcore ID bitmap."    the library refuses
    Left set beside None: "Failed to allocate buffer.\\n", "Failed to set tuple item.\\n".
    """

def InitMbufFastslabs() -> bool:
    """Prepares the datapath's packet buffer slabs (`Qdp_Init_Mbuf_Fastslabs`) when a switch of the host runs in the
    fast datapath mode, which its property "com.tarnix.extraconfig.opaqueDvs.qdp" tells ("true", "poll", "intr", or any
    beginning of these).

    True when they are prepared. False without a text: no switch runs in that mode, and nothing is called.

    Printed, and False:
        "TypeError: Failed to init QDP mbuf fastslabs."  the library refuses; two line breaks
    """

class FPORevalConfig(TypedDict):
    """Revalidation of offloaded flows, for the whole host. Interval and quota are in the datapath's own units."""

    enabled: int
    injectPacket: int
    revalInterval: int
    flowScanQuota: int

def GetFPORevalConfig() -> FPORevalConfig | None:
    """Reads how offloaded flows are revalidated (`Qdp_Get_FPO_Reval_Config`).

    Printed, and None:
        "Failed to get FPO revalidation config"  the library refuses
    """

def SetFPORevalConfig(enabled: int, inject_packet: int, reval_interval: int, flow_scan_quota: int, /) -> None:
    """Sets how offloaded flows are revalidated (`Qdp_Get_FPO_Reval_Config`, then `Qdp_Set_FPO_Reval_Config`).

    enabled: passed as given
    inject_packet: passed as given
    reval_interval: -1 keeps the present one
    flow_scan_quota: -1 keeps the present one

    Printed:
        "TypeError: Invalid parameter passed."           refused
        "Failed to get current FPO revalidation config"  the library refuses to read
        "Failed to set FPO revalidation config"          the library refuses to write
    """

class FPODelayCtOlConfig(TypedDict):
    """How long the offload of tracked connections is delayed, for the whole host."""

    numPkts: int  # packets by which it is delayed
    enabled: int

def GetFPODelayCtOlConfig() -> FPODelayCtOlConfig | None:
    """Reads how long the offload of tracked connections is delayed (`Qdp_Get_FPO_DelayCtOl_Config`).

    Printed, and None:
        "Failed to get FPO revalidation config"  the library refuses; the text is that of the revalidation
    """

def SetFPODelayCtOlConfig(enabled: int, num_packets: int, /) -> None:
    """Sets how long the offload of tracked connections is delayed (`Qdp_Set_FPO_DelayCtOl_Config`).

    enabled: passed as given
    num_packets: passed as given

    Printed:
        "TypeError: Invalid parameter passed."   refused
        "Failed to set FPO revalidation config"  the library refuses; the text is that of the revalidation
    """

def GetRefreshPktInjectionConfig() -> int | None:
    """Reads the setting for injected refresh packets (`Qdp_Get_Refresh_Pkt_Injection`).

    Printed, and None:
        "Failed to get refresh packet injection config"  the library refuses
    """

def SetRefreshPktInjectionConfig(value: int, /) -> None:
    """Sets the setting for injected refresh packets (`Qdp_Set_Refresh_Pkt_Injection`).

    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."           refused
        "Failed to set refresh packet injection config"  the library refuses
    """

# SmartNIC: the port model

class MuxMode(TypedDict):
    enabled: int  # 1 in mux mode: ports share PFs and are told apart by internal VLANs

def GetSwitchMuxMode(switch: int, /) -> MuxMode | None:
    """Tells whether a switch runs in mux mode (`Qdp_Get_Mux_Mode`).

    switch: switch number, passed as given

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."   refused
        "TypeError: Failed to get mux mode."     the library refuses
    """

class MuxVLAN(TypedDict):
    """The internal VLAN of one port."""

    portID: int
    fcPortID: int
    vlanID: int

class MuxVLANPage(TypedDict):
    portlist: list[MuxVLAN]
    nextFcPort: int  # where the next page starts

def ListSwitchMuxVLAN(switch: int, start_fc_port: int, /) -> MuxVLANPage | None:
    """Reads one page of a mux switch's internal VLANs, at most 64 (`Qdp_List_Mux_VLAN_Info`).

    switch: switch number, 0..15
    start_fc_port: 0 for the first page, then the "nextFcPort" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get mux VLAN info"           the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class ShadowPort(TypedDict):
    """What stands behind one port of a mux switch."""

    fcPortID: int
    muxPFPortID: int
    muxVLANID: int

class ShadowPortPage(TypedDict):
    portlist: list[ShadowPort]
    nextFcPort: int  # where the next page starts

def ListSwitchShadowPorts(switch: int, start_fc_port: int, /) -> ShadowPortPage | None:
    """Reads one page of a mux switch's shadow ports, at most 85 (`Qdp_List_Shadow_Ports`).

    switch: switch number, 0..15
    start_fc_port: 0 for the first page, then the "nextFcPort" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get shadow port list"        the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def HostPFSet(count: int, pf_0: int, pf_1: int, pf_2: int, pf_3: int, /) -> None:
    """Sets the LIFs of the host's physical functions (`Qdp_P4_Cmd`, opcode 0). Of five slots the fifth is always set
    to 0.

    count: how many slots are valid, 0..5
    pf_0 ... pf_3: LIFs, 0..1023

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set host PFs"                the SmartNIC refuses
    """

def HostPFGet() -> list[int] | None:
    """Reads the LIFs of the host's physical functions, at most five (`Qdp_P4_Cmd`, opcode 1).

    Printed, and None:
        "Failed to get host pfs"      the SmartNIC refuses
        "Error in geting host pfs"    it answers with more than five
        "Failed to allocate buffer."  no memory for the list
    """

def LifPortCreate(
    lif: int,
    source_port: int,
    rep_port: int,
    flow_key_type: int,
    lif_type: int,
    is_mux_pf: int,
    fwd_mode: int,
    status: int,
    /,
) -> None:
    """Creates or replaces a LIF port (`Qdp_P4_Cmd`, opcode 2).

    lif: LIF, 0..1023
    source_port: the pipeline's source port, 0..1023
    rep_port: representor port, 0..1023
    flow_key_type: 0..2
    lif_type: 0..8
    is_mux_pf: 0 or 1
    fwd_mode: 0 or 1
    status: 0..4094

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to create/update the lif port"  the SmartNIC refuses
    """

def LifPortUpdate(lif: int, flow_key_type: int, is_mux_pf: int, fwd_mode: int, /) -> None:
    """Changes the settings of a LIF port (`Qdp_P4_Cmd`, opcode 3).

    lif: LIF, 0..1023
    flow_key_type: 0..2
    is_mux_pf: 0 or 1
    fwd_mode: 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to update the lif port"         the SmartNIC refuses
    """

class LifPort(TypedDict):
    lifID: int
    srcPort: int
    repPort: int
    flowKeyType: int  # three bits, 0..7
    lifType: int
    isMuxPF: int  # 0 or 1
    fwdMode: int  # two bits, 0..3
    status: int

class LifPortPage(TypedDict):
    liflist: list[LifPort]
    nextIndex: int  # where the next page starts

def LifPortList(start_index: int, /) -> LifPortPage | None:
    """Reads one page of the LIF ports, at most 85 (`Qdp_P4_Cmd`, opcode 4).

    start_index: 0..1023; 0 for the first page, then the "nextIndex" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif port list"           the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def VlanPortCreate(
    mux_vlan: int,
    source_port: int,
    rep_port: int,
    flow_key_type: int,
    pf_lif_0: int,
    pf_lif_1: int,
    status: int,
    /,
) -> None:
    """Creates or replaces a mux VLAN port (`Qdp_P4_Cmd`, opcode 5).

    Beware of the PF LIFs: only their low 8 bits are sent, so that 300 becomes LIF 44.

    mux_vlan: internal VLAN, 0..4094
    source_port: the pipeline's source port, 0..1023
    rep_port: representor port, 0..1023
    flow_key_type: 0..2
    pf_lif_0, pf_lif_1: PF LIFs, 0..1023, of which the low 8 bits count
    status: 0..4095

    Printed:
        "TypeError: Invalid parameter passed."        refused
        "Failed to create/update the mux vlan port"   the SmartNIC refuses
    """

def VlanPortUpdate(mux_vlan: int, flow_key_type: int, /) -> None:
    """Changes the flow key type of a mux VLAN port (`Qdp_P4_Cmd`, opcode 6).

    mux_vlan: internal VLAN, 0..4094
    flow_key_type: 0..2

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to update mux vlan based port"  the SmartNIC refuses
    """

class VlanPort(TypedDict):
    muxVLAN: int  # internal VLAN
    pfLif0: int
    pfLif1: int
    srcPort: int
    repPort: int
    flowKeyType: int
    status: int

class VlanPortPage(TypedDict):
    vlanlist: list[VlanPort]
    nextIndex: int  # where the next page starts

def VlanPortList(start_index: int, /) -> VlanPortPage | None:
    """Reads one page of the mux VLAN ports, at most 63 (`Qdp_P4_Cmd`, opcode 7).

    start_index: 0..65534; 0 for the first page, then the "nextIndex" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif port list"           the SmartNIC refuses; the text is that of the LIF ports
        "Failed to allocate buffer."            no memory for the dict
    """

def PortUpdate(port: int, default_vlan: int, /) -> None:
    """Sets the default VLAN of an output port (`Qdp_P4_Cmd`, opcode 8).

    port: destination port, 0..1023
    default_vlan: VLAN id, 0..4094

    Printed:
        "TypeError: Invalid parameter passed."          refused
        "Failed to update the defaultVLAN of a port"    the SmartNIC refuses
    """

def PortDelete(port: int, /) -> None:
    """Deletes an output port (`Qdp_P4_Cmd`, opcode 9).

    port: destination port, 0..1023

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to delete a port"               the SmartNIC refuses
    """

class OutputPort(TypedDict):
    dstPort: int
    lifID: int
    defaultVLAN: int  # 12 bits
    muxVLAN: int  # internal VLAN
    lifType: int
    status: int
    tag: int

class OutputPortPage(TypedDict):
    portlist: list[OutputPort]
    nextIndex: int  # where the next page starts

def PortList(start_index: int, /) -> OutputPortPage | None:
    """Reads one page of the output ports, at most 63 (`Qdp_P4_Cmd`, opcode 10).

    start_index: 0..1023; 0 for the first page, then the "nextIndex" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif port list"           the SmartNIC refuses; the text is that of the LIF ports
        "Failed to allocate buffer."            no memory for the dict
    """

# SmartNIC: counters of the pipeline

class PipelinePortStats(TypedDict):
    """Signed counters of one port of the pipeline."""

    rxUcastBytes: int
    rxUcastPkts: int
    rxMcastBytes: int
    rxMcastPkts: int
    rxBcastBytes: int
    rxBcastPkts: int
    rxUcastDropBytes: int
    rxUcastDropPkts: int
    rxMcastDropBytes: int
    rxMcastDropPkts: int
    rxBcastDropBytes: int
    rxBcastDropPkts: int
    txUcastBytes: int
    txUcastPkts: int
    txMcastBytes: int
    txMcastPkts: int
    txBcastBytes: int
    txBcastPkts: int
    txUcastDropBytes: int
    txUcastDropPkts: int
    txMcastDropBytes: int
    txMcastDropPkts: int
    txBcastDropBytes: int
    txBcastDropPkts: int

class LifStats(PipelinePortStats):
    """Signed counters of one LIF: those of a port, and those of its queues and descriptors. Transmission has no
    counterpart of rxQueueEmpty."""

    rxQueueDisabled: int
    rxQueueEmpty: int
    rxQueueError: int
    rxDescFetchError: int
    rxDescDataError: int
    txQueueDisabled: int
    txQueueError: int
    txDescFetchError: int
    txDescDataError: int

class P4IStats(TypedDict):
    """Signed counters of the whole ingress pipeline."""

    rxFromHost: int
    rxFromSwitch: int
    rxFromCpu: int
    rxUserCsumErr: int  # checksum errors
    rxSubstrateCsumErr: int
    rxMalformed: int

class P4EStats(TypedDict):
    """Signed counters of the whole egress pipeline."""

    txToHost: int
    txToSwitch: int
    txToCpu: int
    flowMiss: int
    connTrackRedir: int  # redirected for connection tracking
    wrongReinject: int
    drop: int

class CTStats(TypedDict):
    """Signed counters of connection tracking on one port."""

    txPassBytes: int
    txPassPkts: int
    txDropBytes: int
    txDropPkts: int
    rxPassBytes: int
    rxPassPkts: int
    rxDropBytes: int
    rxDropPkts: int

class P4FlowStats(TypedDict):
    """Counters of one flow."""

    pcnt: int  # packets, signed counter
    bcnt: int  # bytes, signed counter
    tcp_flags: int  # 0..255

def LifStatsGet(lif: int, /) -> LifStats | None:
    """Reads the counters of a LIF (`Qdp_Lif_Stats_Get`). `TableLifStatsGet` reads the same from the hardware table.

    lif: LIF, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif stats"               the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def PortStatsGet(port: int, /) -> PipelinePortStats | None:
    """Reads the counters of a port of the pipeline (`Qdp_Port_Stats_Get`). `TablePortStatsGet` reads the same from the
    hardware table.

    port: port of the pipeline, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get port stats"              the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def P4IStatsGet() -> P4IStats | None:
    """Reads the counters of the ingress pipeline (`Qdp_P4I_Stats_Get`).

    Printed, and None:
        "Failed to get p4 ingress stats"  the library refuses
        "Failed to allocate buffer."      no memory for the dict
    """

def P4EStatsGet() -> P4EStats | None:
    """Reads the counters of the egress pipeline (`Qdp_P4E_Stats_Get`).

    Printed, and None:
        "Failed to get p4 egress stats"  the library refuses
        "Failed to allocate buffer."     no memory for the dict
    """

def CTStatsGet(index: int, /) -> CTStats | None:
    """Reads the connection tracking counters of a port (`Qdp_CT_Stats_Get`).

    index: of the port's entry, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get port conntrack stats"    the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def P4StatsFlowGet(index: int, /) -> P4FlowStats | None:
    """Reads the counters of one flow, from its entry in hardware table 4 (`Qdp_P4_HWTable_Dump`).

    index: of the entry, passed as given

    Printed, and None:
        "TypeError: Invalid startIndex passed."               refused
        "Failed to dump ipfix table entry."                   the library refuses
        "Unexpected response size <bytes>, expected: 32"      the entry has another size
        "Failed to allocate buffer."                          no memory for the dict
    """

class FPOFlowStatsConfig(TypedDict):
    """How the counters of offloaded flows are brought up to date; interval and quota in the datapath's own units."""

    statsInterval: int
    statsScanQuota: int

def GetFPOFlowStatsConfig() -> FPOFlowStatsConfig | None:
    """Reads how the counters of offloaded flows are brought up to date (`Qdp_Get_FPO_Flow_Stats_Config`).

    Printed, and None:
        "Failed to get FPO flow stats update config"  the library refuses
    """

def SetFPOFlowStatsConfig(interval: int, scan_quota: int, /) -> None:
    """Sets how the counters of offloaded flows are brought up to date (`Qdp_Get_FPO_Flow_Stats_Config`, then
    `Qdp_Set_FPO_Flow_Stats_Config`).

    interval: -1 keeps the present one
    scan_quota: -1 keeps the present one

    Printed:
        "TypeError: Invalid parameter passed."            refused
        "Failed to get current FPO flow stats config"     the library refuses to read
        "Failed to set FPO flow stats update config"      the library refuses to write
    """

# SmartNIC: offload and DSCP settings

def SetOffloadFlows(alias: str, enabled: int, /) -> None:
    """Sets whether a switch's flows are offloaded (`Qdp_Set_Offload_Flows`), and keeps it in the switch's property
    "com.tarnix.wyx.qdp.fpo.offload".

    Beware: neither a refusal of the library nor a property that cannot be stored is reported.

    alias: the switch's alias
    enabled: 0 off, any other value on; passed as given, stored as 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused, or no such switch
    """

def GetOffloadFlows(alias: str, /) -> bool | None:
    """Tells whether a switch's flows are offloaded (`Qdp_Get_Offload_Flows`).

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."    refused, or no such switch
        "OSError: Failed to issue QDP command"    the library refuses
    """

def SetOffloadICMPEcho(enabled: int, /) -> None:
    """Sets whether flows of ICMP echo are offloaded (`Qdp_Set_Offload_ICMP_Echo`).

    enabled: 0 off, 1 on; passed as given

    Printed:
        "TypeError: Invalid parameter passed."                    refused
        "OSError: Failed to issue FPO offload ICMP Echo command"  the library refuses
    """

def GetOffloadICMPEcho() -> bool | None:
    """Tells whether flows of ICMP echo are offloaded (`Qdp_Get_Offload_ICMP_Echo`).

    Printed, and None:
        "OSError: Failed to issue QDP command"  the library refuses
    """

class DSCPConf(TypedDict):
    dscp: int  # 0..255
    mask: int  # 0..255

def DSCPConfSet(selector: int, dscp: int, mask: int, /) -> None:
    """Sets the DSCP configuration (`Qdp_DSCP_Conf_Set`).

    selector: of the entry, passed as given
    dscp: low 8 bits
    mask: low 8 bits

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set DSCP conf"               the library refuses
    """

def DSCPConfGet() -> DSCPConf | None:
    """Reads the DSCP configuration (`Qdp_DSCP_Conf_Get`).

    Printed, and None:
        "Failed to get dscp conf"     the library refuses
        "Failed to allocate buffer."  no memory for the dict
    """

# SmartNIC: raw hardware tables

class HWTable(TypedDict):
    """One table in the SmartNIC's memory."""

    tableId: int  # number for `P4HWTableDump`
    pa: int  # physical address, unsigned 64-bit
    numEntries: int
    entrySize: int  # bytes, rounded down; 0 for a table without entries

def P4HWTableList() -> list[HWTable] | None:
    """Lists the tables in the SmartNIC's memory (`Qdp_P4_HWTable_List`).

    Printed, and None:
        "Failed to get p4 table info"  the library refuses
        "Failed to allocate buffer."   no memory for the list
    """

def P4HWTableDump(table: int, first_index: int, count: int, /) -> list[str] | None:
    """Dumps entries of a table (`Qdp_P4_HWTable_Dump`), at most 2032 bytes: a line per 16 bytes, its address and the
    bytes, "0x1000: 00 01 02 ... 0f ", each byte followed by a blank. An address of 0 reads "0".

    table: "tableId" of `P4HWTableList`, passed as given
    first_index: first entry, passed as given
    count: number of entries, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to dump HW table data."         the library refuses
        "Failed to allocate buffer."            no memory for the list
    """

def P4CacheInvalidate(table: int, first_index: int, count: int, /) -> None:
    """Drops entries of a table from the pipeline's cache (`Qdp_P4_Cache_Invalidate`).

    table: "tableId" of `P4HWTableList`, passed as given
    first_index: first entry, passed as given
    count: number of entries, passed as given

    Printed:
        "TypeError: Invalid parameter passed."    refused
        "Failed to perform cache invalidation"    the library refuses
    """

class CTContext(TypedDict):
    """The TCP state that the hardware keeps for one connection."""

    src_seqlo: int  # TCP sequence numbers, unsigned 32-bit
    src_seqhi: int
    src_max_win: int
    src_state: int  # 0..15
    src_wscale: int  # window scale, 0..15
    dst_seqlo: int
    dst_seqhi: int
    dst_max_win: int
    dst_state: int
    dst_wscale: int
    sw_state: int
    ct_log: int

def P4CTContextQuery(index: int, /) -> CTContext | None:
    """Reads the TCP state of a tracked connection, from its entry in hardware table 6 (`Qdp_P4_HWTable_Dump`).

    index: of the entry, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."              refused
        "Failed to get HW CT entry"                         the library refuses
        "Unexpected response size <bytes>, expected: 32"    the entry has another size
        "Failed to allocate buffer."                        no memory for the dict
    """

def P4MirrorTableDump() -> list[str] | None:
    """Lists the mirror sessions, a line each (`Qdp_P4_MirrorTable_Dump`):
    "OL:1 Idx:0 Dir:0 D-port:3 Tunnel:1 TunnelIdx:2vni:5000:uplinkLport0:1:uplinkLport1:2". No blank stands before vni.

    Printed, and None:
        "Failed to dump Mirror table data."  the library refuses
        "Failed to allocate buffer."         no memory for the list
    """

def P4PortMirrorTableDump(value_1: int, value_2: int, /) -> list[str] | None:
    """Lists the mirror entries of a port, a line each (`Qdp_P4_PortMirrorTable_Dump`): "OL:1 Idx:0 fcPort:3 greKey:7
    ERSPAN2 cos:0 ns:0 hwID:1 snapLen:128 erspanID:9 SA:10.0.0.1 DA:10.0.0.2", with IPv6 addresses where the entry has
    them. The type is "OTHER", "GRE_ONLY", "ERSPAN2" or "ERSPAN3".

    value_1, value_2: low 16 bits, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to dump Mirror table data."     the library refuses
        "Failed to allocate buffer."            no memory for the list
    """

class FPOContext(TypedDict):
    """A connection as the offload's context manager sees it, unsigned 32-bit: its two sides, l... and r..."""

    enable: int
    disableWindowValidation: int
    lseqlo: int  # TCP sequence numbers
    lseqhi: int
    lseqdiff: int
    lmaxWin: int
    lstate: int
    lwscale: int  # window scale
    rseqlo: int
    rseqhi: int
    rseqdiff: int
    rmaxWin: int
    rstate: int
    rwscale: int

def FPOQueryContextMgr(id_1: int, id_2: int, id_3: int, /) -> list[FPOContext] | None:
    """Reads a context of the offload's context manager (`Qdp_FPOQueryMgr`). The list always has one item.

    id_1, id_2, id_3: passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."        refused; two line breaks
        "Failed to allocate memory for contextReq"    no memory for the request
        "Failed to allocate memory for contextResp"   no memory for the response
        "Query mgr failed."                           the library refuses; two line breaks
        "Failed to allocate buffer for plist"         no memory for the list
        "Failed to allocate buffer for dict"          no memory for the dict
    """

def FPOHWDestroy() -> None:
    """Is not supported by this build. Calls nothing.

    Printed:
        "Not supported in release build."  always; two line breaks
    """

# SmartNIC: entries of hardware tables. Each reads one entry (`Qdp_P4_Cmd`, opcode 11). A table's refusal is always
# told by "Failed to get table data".

def TableLifStatsGet(lif: int, /) -> LifStats | None:
    """Reads the counters of a LIF from the hardware (table 0).

    lif: LIF, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def TablePortStatsGet(port: int, /) -> PipelinePortStats | None:
    """Reads the counters of a port of the pipeline from the hardware (table 1).

    port: port of the pipeline, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def TableP4IStatsGet() -> P4IStats | None:
    """Reads the counters of the ingress pipeline from the hardware (table 3).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """

def TableP4EStatsGet() -> P4EStats | None:
    """Reads the counters of the egress pipeline from the hardware (table 2).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """

FlowKeyType = Literal["L2", "L3", "L4", "Unknown"]

class LifInput(TypedDict):
    """What a LIF is, 16-bit numbers and flags of 0 or 1."""

    lifId: int
    portId: int
    pinnedPortId: int
    l2Seg: int  # L2 segment in classic mode
    isUplink: int
    isP2P: int
    skipUkucRepl: int
    isWyxValid: int

class InputEntry(LifInput, total=False):
    """What a packet from a LIF is tagged with. The seven keys here are there only when isWyxValid is 1."""

    wyxPortId: int
    repPortId: int
    srcTag: int
    pktCapture: int
    useVlanMapping: int
    flowKeyType: FlowKeyType
    fwdMode: Literal["flow", "classic"]

def TableInputGet(lif: int, /) -> InputEntry | None:
    """Reads the input table's entry of a LIF (table 8). Where it is not valid, the keys end with isWyxValid.

    lif: LIF, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class OutputEntry(TypedDict):
    """How a packet that leaves by a port is edited, and where it goes."""

    portId: int
    lifId: int
    dstTag: int
    vlanStrip: int  # flags of 0 or 1
    pktCapture: int
    rssInner: int
    vlanPush: int
    hckMetadata: int
    nports: int  # 0..7
    egressPort1: int
    egressPort2: int
    vlanPushId: int
    accessVlanId: int
    rssOverride: int
    rssOverrideQid: int
    # "elemetry" lacks its first letter.
    p4plusAppId: Literal[
        "default",
        "classic nic",
        "rdma",
        "tcptls",
        "ipsec",
        "storage",
        "elemetry",
        "cpu",
        "raw redir",
        "p4pt",
        "ipsec transport",
        "kovnet3 upt",
        "unknown",
    ]

def TableOutputGet(port: int, /) -> OutputEntry | None:
    """Reads the output table's entry of a port (table 11).

    port: port of the pipeline, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class MuxVlanEntry(TypedDict):
    """What stands behind an internal VLAN."""

    vlanId: int
    valid: int  # 0 or 1
    lif0: int
    lif1: int
    srcPortId: int
    repPortId: int
    srcTag: int
    pktCapture: int  # 0 or 1
    flowKeyType: FlowKeyType

def TableMuxVlanGet(vlan: int, selector: int, /) -> MuxVlanEntry | None:
    """Reads an entry of one of the two mux VLAN tables (tables 9 and 10).

    vlan: VLAN id, 1..4094
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class VlanMapEntry(TypedDict):
    rmac_vrf: int
    l2Seg: int  # L2 segment

def TableVlanMapGet(vlan: int, value: int, /) -> VlanMapEntry | None:
    """Reads the classic mode's L2 segment of a VLAN (table 12, by key).

    vlan: VLAN id, of which the low 16 bits count and must be 0..4094, so that 65541 is VLAN 5
    value: low 16 bits, the key's second part

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class L2SegEntry(TypedDict):
    """Which packets of a segment the host receives, flags of 0 or 1, and their replication."""

    host_rcvr_ukuc: int  # unknown unicast
    host_rcvr_ukmc: int  # unknown multicast
    host_rcvr_bcast: int  # broadcast
    replicate_idx: int

def TableL2SegGet(segment: int, /) -> L2SegEntry | None:
    """Reads an L2 segment of the classic mode (table 13).

    segment: L2 segment, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class RegMACEntry(TypedDict):
    """Where a registered MAC address is."""

    dstPort: int
    dstPinnedPort: int  # 15 bits
    multicastEn: int  # 0 or 1
    qid: int  # queue id

def TableRegMACGet(value: int, mac: int, /) -> RegMACEntry | None:
    """Reads a registered MAC address of the classic mode (table 14, by key).

    value: low 16 bits, the key's first part
    mac: the address as a number, as it is read: 0x0a0b0c0d0e0f is 0a:0b:0c:0d:0e:0f; signed 64-bit, low 48 bits

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class IPFixEntry(TypedDict):
    """Counters of one flow."""

    pkts: int  # signed counter
    bytes: int  # signed counter
    tcpFlags: int  # 0..255

def TableIPFixGet(index: int, selector: int, /) -> IPFixEntry | None:
    """Reads the counters of a flow from one of the two flow statistics tables (tables 6 and 7).

    index: 0..4194303
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class CTStatsEntry(TypedDict):
    """Signed counters of connection tracking on one port, in two sets."""

    passBytes0: int
    passPkts0: int
    dropBytes0: int
    dropPkts0: int
    passBytes1: int
    passPkts1: int
    dropBytes1: int
    dropPkts1: int

def TableCTStatsGet(index: int, selector: int, /) -> CTStatsEntry | None:
    """Reads the connection tracking counters of a port from one of the two tables (tables 4 and 5). `CTStatsGet` reads
    the same and names the sets tx and rx.

    index: 0..4095
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class CTStateEntry(TypedDict):
    """The TCP state of one connection."""

    sloppy: int  # 0 or 1
    srcSeqlo: int  # TCP sequence numbers, unsigned 32-bit
    srcSeqhi: int
    srcMaxWin: int
    srcState: int  # 0..15
    srcWscale: int  # window scale, 0..15
    dstSeqlo: int
    dstSeqhi: int
    dstMaxWin: int
    dstState: int
    dstWscale: int
    swState: int
    ctLog: int  # 0 or 1

def TableCTStateGet(index: int, selector: int, /) -> CTStateEntry | None:
    """Reads the TCP state of a connection from one of the two tables (tables 20 and 21).

    index: 0..4194303
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class MirrorEntry(TypedDict):
    """One mirror session."""

    dstPort: int
    reason: int  # 0..255
    tunnelVNI: int  # 24 bits
    geneveOptionVld: int  # flags of 0 or 1
    tunnelRewriteVld: int
    pktCapture: int
    mirrorSW: int
    mirrorL3: int
    vlanPush: int
    TunnelIdx: int  # index for `TableTunnelRewriteGet`; the capital letter is right
    vlanID: int
    flowCookie: int  # unsigned 32-bit
    uplinkLport0: int
    uplinkLport1: int
    geneveOptionDMAC: str  # MAC address

def TableMirrorGet(session: int, selector: int, /) -> MirrorEntry | None:
    """Reads a mirror session (table 15).

    session: 0..7
    selector: 0 the first eight entries, any other value the second eight

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class MirrorL3Entry(TypedDict):
    """The encapsulation of mirrored traffic."""

    l3Idx: int
    mirrorType: int  # 0..3
    isIpv6: int  # family of ipsa and ipda
    vlanVld: int
    trunVld: int  # whether packets are cut to trunLen
    cos: int  # 0..7
    l2Type: int  # 0..3
    erspanTSNs: int
    vlanID: int
    trunLen: int  # bytes
    tc: int  # traffic class
    ttl: int
    erspanHwId: int  # 0..63
    erspanSessionId: int  # 0..1023
    greKeySeq: int  # unsigned 32-bit
    smac: str  # outer MAC addresses
    dmac: str
    ipsa: str  # outer IP addresses
    ipda: str

def TableMirrorL3Get(first: int, second: int, /) -> MirrorL3Entry | None:
    """Reads an encapsulation of mirrored traffic (table 16, index first + 8 * second).

    first: 0..5
    second: 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class TunnelTerminateEntry(TypedDict):
    vtepIdx: int  # tunnel endpoint, 0..255
    valid: int  # 0..255

def TableTunnelTerminateGet(
    mac: int,
    value: int,
    is_first: int,
    is_ipv4: int,
    vlan_1: int,
    vlan_2: int,
    address_low: int,
    address_high: int,
    /,
) -> TunnelTerminateEntry | None:
    """Looks up where a tunnel ends (table 17, by key).

    mac: MAC address as a number, below 2**48
    value: 0..1023
    is_first: any value but 0 sets bit 0 of the key's flags, 0 sets bit 1
    is_ipv4: any value but 0 for IPv4, 0 for IPv6
    vlan_1, vlan_2: 0..4094, or 4095 for none
    address_low, address_high: the halves of the IP address, signed 64-bit; for IPv4 the high half must be 0 and the low
        half below 2**32

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class TunnelSAEntry(TypedDict):
    outerFlowId: int
    valid: int  # 0..255

def TableTunnelSAGet(value: int, is_ipv4: int, address_low: int, address_high: int, /) -> TunnelSAEntry | None:
    """Looks up the outer flow of a tunnel (table 18, by key).

    value: 0..255
    is_ipv4: any value but 0 for IPv4, 0 for IPv6
    address_low, address_high: the halves of the IP address, signed 64-bit; for IPv4 the high half must be 0 and the low
        half below 2**32

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class FlowKeyEntry(TypedDict):
    flowIndex: int  # index for `TableFlowInfoGet` and its like, unsigned 32-bit

def TableFlowKeyGet(
    value: int,
    mac_1: int,
    mac_2: int,
    port: int,
    flow_index: int,
    vni: int,
    protocol: int,
    is_ipv4: int,
    address_1_low: int,
    address_1_high: int,
    address_2_low: int,
    address_2_high: int,
    port_1: int,
    port_2: int,
    /,
) -> FlowKeyEntry | None:
    """Looks up the index of a flow by its key (table 24, by key).

    value: 0..4094
    mac_1, mac_2: MAC addresses as numbers, below 2**48; they lie in the key with the least significant byte first
    port: 0..1023
    flow_index: 0..4194303, of which only the low 16 bits are looked up
    vni: below 2**24
    protocol: 0..255
    is_ipv4: any value but 0 for IPv4, 0 for IPv6
    address_1_low ... address_2_high: the halves of the two IP addresses, signed 64-bit; for IPv4 the high halves must
        be 0 and the low halves below 2**32
    port_1, port_2: 0..65535

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class FlowInfoEntry(TypedDict):
    """What the pipeline does with a flow. Names that end in Vld, Dir, and those without a comment up to isSrcUplink are
    flags of 0 or 1."""

    flowIdx: int
    dstPort: int
    count: int  # signed counter
    timeStamp: int  # unsigned 32-bit
    srcTag: int  # 16 bits
    dstTag: int  # 16 bits
    vdrTtlCheck: int
    vdrVld: int
    natVld: int
    encap: int
    decap: int
    ctIngressVld: int
    ctIngressDir: int
    ctEgressVld: int
    ctEgressDir: int
    ipfixIngressVld: int
    ipfixEgressVld: int
    drop: int
    isDstUplink: int
    isSrcUplink: int
    dstUplinkIdx: int  # 0..3, as in `TableUplinkMapGet`
    srcUplinkIdx: int  # 0..3
    vdrHops: int
    ingressMirror: int  # mirror sessions
    egressMirror: int
    encapIdx: int  # index for `TableTunnelRewriteGet`
    ctIngressStatsIdx: int  # index for `TableCTStatsGet`
    ctEgressStatsIdx: int
    natIdx: int
    ctIngressIdx: int  # index for `TableCTStateGet`
    ctEgressIdx: int
    ipfixIngressIdx: int  # index for `TableIPFixGet`
    ipfixEgressIdx: int

def TableFlowInfoGet(index: int, /) -> FlowInfoEntry | None:
    """Reads what the pipeline does with a flow (table 26).

    index: of the flow, 0..4194303

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class FlowRewriteEntry(TypedDict):
    """How a flow's headers are edited. The first eight are flags of 0 or 1."""

    vlanPop: int
    vlanPush: int
    vlanSet: int
    vlanSetPcp: int
    ipDscpSet: int
    route: int
    rssOverride: int
    kcpVlanPush: int
    vlanPcp: int  # 0..7
    ipDscp: int  # 0..63
    rssOverrideQid: int  # 0..63
    hops: int
    vlanVid: int  # 12 bits
    kcpVlanVid: int  # 12 bits
    vni: int  # 24 bits
    encapSport: int  # outer source port
    flowCookie: int  # unsigned 32-bit
    smac: str  # MAC addresses
    dmac: str

def TableFlowRewriteGet(index: int, /) -> FlowRewriteEntry | None:
    """Reads how a flow's headers are edited (table 25).

    index: 0..4194303

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class TunnelRewriteEntry(TypedDict):
    """One encapsulation header. The first five are flags of 0 or 1."""

    isIpv6: int  # family of ipsa and ipda
    geneve: int
    vlanVld: int
    tcCopy: int
    labelOptVld: int
    labelID: int  # 17 bits
    l2Type: int  # 0..3
    vlanID: int
    tc: int  # traffic class
    ttl: int
    smac: str  # outer MAC addresses
    dmac: str
    ipsa: str  # outer IP addresses
    ipda: str

def TableTunnelRewriteGet(index: int, /) -> TunnelRewriteEntry | None:
    """Reads an encapsulation header (table 19).

    index: 0..8191

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

class DSCPConfEntry(TypedDict):
    """What DSCP traced flows have, 0..255 each."""

    ipv4DscpMask: int
    ipv4DscpValue: int
    ipv6DscpMask: int
    ipv6DscpValue: int

def TableDSCPConfGet() -> DSCPConfEntry | None:
    """Reads the DSCP configuration from the hardware (table 22).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """

class UplinkMapEntry(TypedDict):
    """The logical port of each of the four uplinks, and its tag."""

    lport0: int
    lport0_tag: int
    lport1: int
    lport1_tag: int
    lport2: int
    lport2_tag: int
    lport3: int
    lport3_tag: int

def TableUplinkMapGet() -> UplinkMapEntry | None:
    """Reads which logical port each uplink index stands for (table 23).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """

# SmartNIC: diagnostics

def P4AppSet(enabled: int, /) -> Literal[True] | None:
    """Turns the SmartNIC's P4 user application on or off (`Qdp_P4AppSet`). True when that was done.

    enabled: 0 off, 1 on; passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
    None, without a text: the library refuses.
    """

def P4AppGet() -> bool | None:
    """Tells whether the SmartNIC's P4 user application is on (`Qdp_P4AppGet`).

    None, without a text: the library refuses.
    """

def P4UKLatencySet(enabled: int, /) -> Literal[True] | None:
    """Turns the latency histogram of table programming on or off (`Qdp_P4UKLatencySet`). True when that was done.

    enabled: 0 off, 1 on; passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
    None, without a text: the library refuses.
    """

# A key like "300us" counts the samples of at most 300 microseconds that no key before has counted.
LatencyHistogram = TypedDict(
    "LatencyHistogram",
    {
        "minLatency": int,  # unsigned 32-bit, as the next; the unit is the SmartNIC's
        "maxLatency": int,
        "100us": int,  # signed counters, from here on
        "200us": int,
        "300us": int,
        "400us": int,
        "500us": int,
        "700us": int,
        "900us": int,
        "1100us": int,
        "1300us": int,
        "1500us": int,
        "2000us": int,
        "2500us": int,
        "3000us": int,
        "3500us": int,
        "4000us": int,
        "5000us": int,
        "6000us": int,
        "7000us": int,
        "8000us": int,
        "9000us": int,
        "outOfBucket": int,  # samples beyond
        "totalSample": int,  # number of samples
        "totalTime": int,  # the unit is the SmartNIC's
    },
)

def P4UKLatencyDump(selector: int, /) -> LatencyHistogram | None:
    """Reads the latency histogram of table programming (`Qdp_P4UKLatencyDump`).

    selector: passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate buffer."            no memory for the dict
    None, without a text: the library refuses.
    Raised: SystemError "Failed to allocate buffer.\\n", "Failed to set dict item.\\n" when the dict cannot be filled.
    """

class FlowOpsStats(TypedDict):
    """Signed counters of the SmartNIC's flow table library."""

    insert: int
    duplicateInsert: int
    failedInsert: int
    recircFailedInsert: int
    remove: int
    removeNotFound: int
    failedRemove: int
    update: int
    failedUpdate: int
    get: int
    failedGet: int
    release: int
    failedRelease: int
    read: int
    write: int
    entries: int
    collisions: int
    insertLevel: list[int]  # eight, a counter per level
    removeLevel: list[int]  # eight

def FlowOpsStatsGet() -> FlowOpsStats | None:
    """Reads the counters of the SmartNIC's flow table library (`Qdp_P4_Cmd`, opcode 11, table 27).

    The entry has two counters by the name "insert" and two by the name "remove". The result has the later of each, its
    words 17 and 18.

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """

def AdvStatsSetEnabled(switch: int, mode: int, /) -> None:
    """Turns the advanced statistics of a switch on or off, or clears them (`Qdp_AdvStatsSetEnabled`).

    switch: switch number, 0..15
    mode: 0 off, 1 on, 2 clear

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to disable advanced stats.", "Failed to enable advanced stats.", "Failed to clear advanced stats."
                                                the library refuses
    """

def AdvStatsGetEnabled(switch: int, /) -> bool | None:
    """Tells whether the advanced statistics of a switch are on (`Qdp_AdvStatsGetEnabled`).

    switch: switch number, 0..15

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."                 refused
        "ValueError: Failed to get advanced stats status."     the library refuses
    """

class AdvStats(TypedDict):
    """Signed counters: why packets took the slow path, why no action was made or a packet dropped, and what the parser
    dropped. "spReaonVlanTF" and "spReasonInnerL2Incompt" are spelled like that."""

    spReasonSpFlags: int
    spReasonL3Incompat: int
    spReasonL4Incompat: int
    spReasonEncapIncompat: int
    spReasonInnerL2Incompt: int
    spReaonVlanTF: int
    spReasonVniZero: int
    spReasonNonUnicast: int
    spReasonInnerNoneUnicast: int
    spReasonNonIP: int
    spReasonInnerNonIP: int
    spReasonGeneveOption: int
    spReasonGeneveLabelType: int
    spReasonIpv6Ext: int
    spReasonL4NotSupported: int
    spReasonLat: int
    actionGenFailSameSrcDst: int
    actionGenFailDoNotCache: int
    actionGenFailDstSpFlags: int
    actionGenFailNonUnicast: int
    actionGenFailInnerFlowParseFailed: int
    actionGenFailMultiDstReval: int
    actionGenFailNonQdpCtxt: int
    actionGenFailFcAttrNull: int
    actionGenFailMirrorPkt: int
    actionGenFailPseudoPkt: int
    actionGenFailSrcPortNotAvail: int
    actionGenFailFlowExpired: int
    actionGenFailActionCtxtInitFail: int
    actionGenFailPktToMbufFail: int
    actionGenDropSpFlowAllocFail: int
    actionGenDropEnqSpFlowFail: int
    actionGenDropInnerOffloadFail: int
    parserDropGvlanSvlan: int
    parserDropInvalidGeneve: int
    parserDropL2Invalid: int
    parserDropL3L4Invalid: int

def AdvStatsGetCounters(switch: int, selector: int, text: str, /) -> AdvStats | None:
    """Reads the advanced statistics of a switch (`Qdp_AdvStatsGetCounters`).

    switch: switch number, 0..15
    selector: passed as given
    text: passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."   refused
        "Failed to get advanced stats counter."  the library refuses
        "Failed to allocate buffer."             no memory for the dict
    Raised: SystemError "Failed to allocate buffer.\\n", "Failed to set dict item.\\n" when the dict cannot be filled.
    """

def AgingIntervalGet(selector: int, /) -> int | None:
    """Reads the interval at which flow tables are aged, unsigned 32-bit, in the SmartNIC's own unit
    (`Qdp_GetAgingInterval`).

    selector: passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get aging interval"          the library refuses
    """

def AgingIntervalSet(selector: int, interval: int, /) -> None:
    """Sets the interval at which flow tables are aged (`Qdp_SetAgingInterval`).

    selector: passed as given
    interval: passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set aging interval"          the library refuses
    """

def P4RssOverrideSet(switch: int, port: int, is_override: int, queue: int, /) -> Literal[True] | None:
    """Sets whether a vNIC's packets all go to one queue (`Qdp_P4_Cmd`, opcode 12). True when that was done.

    switch: switch number, 0..15
    port: port id, 0..1022
    is_override: 0 off, any other value on
    queue: 0..63 when it is on; any value when it is off, of which the low 8 bits are sent

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set RSS override"            the SmartNIC refuses
    """

class RssOverride(TypedDict):
    swID: int
    fcPortID: int
    rssOverrideQid: int  # queue, 0..255
    rssOverride: int  # signed 8-bit flag; 0 is off

def P4RssOverrideGet(switch: int, port: int, /) -> RssOverride | None:
    """Reads whether a vNIC's packets all go to one queue (`Qdp_P4_Cmd`, opcode 13).

    switch: switch number, 0..15
    port: port id, 0..1022

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get RSS override info."      the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """

def P4LogLevelSet(level: int, /) -> Literal[True] | None:
    """Sets the log level of the SmartNIC's P4 application (`Qdp_P4_Cmd`, opcode 14). True when that was done.

    level: 0..5

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set borea log level."        the SmartNIC refuses
    """

class LogLevel(TypedDict):
    level: int  # 0..255

def P4LogLevelGet() -> LogLevel | None:
    """Reads the log level of the SmartNIC's P4 application (`Qdp_P4_Cmd`, opcode 15).

    Printed, and None:
        "Failed to get borea log level."  the SmartNIC refuses
        "Failed to allocate buffer."      no memory for the dict
    """
