"""The module's methods as typed functions that return records or raise; typings/make_qdp.py makes this file.

The documentation of each is the module's own. What it says of texts that are printed is what the exception holds here:
a text and None of the module is an exception of `qdp.errors` here.
"""

from .call import call

# mypy: disable-error-code="no-any-return"

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import List, Literal, Optional, Tuple

    from _libqdp import (
        FPOSettings,
        LBParamName,
        LBTraffic,
        UplinkCounter,
    )

    from .records import (
        AdvStats,
        CTContext,
        CTStateEntry,
        CTStats,
        CTStatsEntry,
        DSCPConf,
        DSCPConfEntry,
        DevAffinity,
        FPOContext,
        FPODelayCtOlConfig,
        FPOEnabled,
        FPOFlowStatsConfig,
        FPORevalConfig,
        FPOStats,
        FPOUplinkStats,
        FPOUplinkStatus,
        FilterTypes,
        FlowInfoEntry,
        FlowKeyEntry,
        FlowOpsStats,
        FlowPage,
        FlowRewriteEntry,
        FlowStats,
        HWTable,
        IPFixEntry,
        InputEntry,
        L2SegEntry,
        L3SPANRecord,
        LBContext,
        LBParams,
        LBPort,
        LBUplink,
        LatencyHistogram,
        LifPortPage,
        LifStats,
        LogLevel,
        MirrorEntry,
        MirrorL3Entry,
        MuxMode,
        MuxVLANPage,
        MuxVlanEntry,
        NetQInfo,
        OutputEntry,
        OutputPortPage,
        P4EStats,
        P4FlowStats,
        P4IStats,
        PipelinePortStats,
        PortConf,
        PortCounters,
        PortInfo,
        PortMACTable,
        RSSEngine,
        RegMACEntry,
        RssOverride,
        ShadowPortPage,
        SwitchInfo,
        SwitchMACTable,
        TunnelRewriteEntry,
        TunnelSAEntry,
        TunnelTerminateEntry,
        TxUplink,
        UplinkMapEntry,
        UplinkStats,
        VlanMapEntry,
        VlanPortPage,
    )


def ListSwitches() -> "List[SwitchInfo]":
    """Lists the datapath's switches, with their capacity and lcores (`Qdp_Get_Switch_List`).

    Printed, and None:
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve list of switches."  the library refuses
        "Failed to allocate buffer."            no memory for the list
    """
    return call("ListSwitches")


def ListPorts(switch: int) -> "List[PortInfo]":
    """Lists all ports of a switch (`Qdp_Get_Port_List`).

    switch: switch number, 0..15

    Printed, and None:
        "TypeError: Invalid switch ID passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve list of ports."     the library refuses
        "Failed to allocate port list."         no memory for the list
    """
    return call("ListPorts", switch)


def GetPortStats(switch: int, port: int) -> "PortCounters":
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
    return call("GetPortStats", switch, port)


def ListPortMACTable(switch: int, port: int) -> "PortMACTable":
    """Lists the MAC entries of a port (`Qdp_Dump_Port_MAC_Table`).

    switch: switch number, 0..15
    port: port id, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve mac table."         the library refuses
        "Failed to allocate mac table."         no memory for the dict
    """
    return call("ListPortMACTable", switch, port)


def ClearPortMACTable(switch: int, port: int) -> None:
    """Forgets the MAC entries of a port (`Qdp_Clear_Port_MAC_Table`).

    switch: switch number, 0..15
    port: port id, passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to clear mac table."            the library refuses
    """
    return call("ClearPortMACTable", switch, port)


def AddMACEntry(switch: int, port: int, mac: int, vlan: int) -> None:
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
    return call("AddMACEntry", switch, port, mac, vlan)


def DelMACEntry(switch: int, port: int, mac: int, vlan: int) -> None:
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
    return call("DelMACEntry", switch, port, mac, vlan)


def ListSwitchMACTable(switch: int) -> "SwitchMACTable":
    """Lists the MAC entries of a switch (`Qdp_Dump_Switch_MAC_Table`).

    switch: switch number, 0..15

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to retrieve switch mac table."  the library refuses
        "Failed to allocate switch mac table."  no memory for the dict
    """
    return call("ListSwitchMACTable", switch)


def ClearSwitchMACTable(switch: int) -> None:
    """Forgets the MAC entries of a switch (`Qdp_Clear_Switch_MAC_Table`).

    switch: switch number, 0..15

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to clear mac table."            the library refuses
    """
    return call("ClearSwitchMACTable", switch)


def GetFlowStats(selector: int, lcores: "Tuple[int, ...]", value: int) -> "List[FlowStats]":
    """Reads the flow cache counters of lcores, an item per lcore that the library answers for (`Qdp_Get_Flow_Stats`).

    selector: passed as given, before the lcores
    lcores: at most 64 lcore ids; low 32 bits of each
    value: passed as given, behind the lcores

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused; two line breaks
        "Failed to allocate memory."            no memory for the record or the list
        "Failed to retrieve flow stats."        the library refuses
    """
    return call("GetFlowStats", selector, lcores, value)


def GetRepPortStats() -> None:
    """Does nothing: the place is kept for the counters of representor ports. Calls nothing and prints nothing."""
    return call("GetRepPortStats")


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
) -> "FlowPage":
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
    return call(
        "DumpFlowTable",
        selector,
        lcore,
        start_index,
        option,
        source_mac_filter,
        source_mac,
        destination_mac_filter,
        destination_mac,
        source_ip_version,
        source_ip,
        destination_ip_version,
        destination_ip,
        filter_1,
        filter_2,
        filter_3,
        filter_4,
        filter_5,
    )


def DumpDecapFlowTable() -> None:
    """Is not supported by this datapath. Calls nothing.

    Printed:
        "Dump Decap  Flow Not supported below 2.10.0.0"  always; two blanks behind Decap
    """
    return call("DumpDecapFlowTable")


def DumpDecapSaFlowTable() -> None:
    """Is not supported by this datapath. Calls nothing.

    Printed:
        "Dump Decap  Flow Not supported below 2.10.0.0"  always; two blanks behind Decap
    """
    return call("DumpDecapSaFlowTable")


def DumpPortFlow() -> None:
    """Is not supported by this datapath. Calls nothing.

    Printed:
        "Dump Port Flow Not supported below 2.10.0.0"  always
    """
    return call("DumpPortFlow")


def GetPortConf(switch: int, port: int) -> "PortConf":
    """Reads a port's configuration (`Qdp_Get_Port_Conf`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record or the dict
        "Failed to retrieve port conf."         the library refuses
    Left set beside None: "Failed to set list item.\\n" also when more metaFlow slots are on than the record counts.
    """
    return call("GetPortConf", switch, port)


def MigratePort(switch: int, port: int, value_1: int, value_2: int, value_3: int) -> None:
    """Moves a port between lcores (`Qdp_Migrate_Port`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value_1, value_2, value_3: passed as given

    Printed:
        "TypeError: Invalid parameter passed."              refused
        "Please disable automatic thread load balancing."   status 1: the balancer runs; two line breaks; then also
        "Failed to migrate port."                           the library refuses
    """
    return call("MigratePort", switch, port, value_1, value_2, value_3)


def UnpinPort(switch: int, port: int, value: int) -> None:
    """Unpins a port from its lcore (`Qdp_Unpin_Port`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to unpin port."                 the library refuses
    """
    return call("UnpinPort", switch, port, value)


def ResetPort(switch: int, port: int, value: int) -> None:
    """Resets a port (`Qdp_Reset_Port`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to reset port."                 the library refuses
    """
    return call("ResetPort", switch, port, value)


def GetPortTxUplink(switch: int, port: int) -> "TxUplink":
    """Reads which uplinks a port transmits on (`Qdp_Get_Port_Tx_Uplink`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get port TX uplink."         the library refuses
    Raised: the interpreter's own exception when the list cannot be filled or the dict not be built. A list that cannot
    be made leaves MemoryError set beside None.
    """
    return call("GetPortTxUplink", switch, port)


def GetL3SPANRecord(switch: int, is_ipv6: int, destination: str, value: int) -> "L3SPANRecord":
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
    return call("GetL3SPANRecord", switch, is_ipv6, destination, value)


def GetUplinkStats(switch: int, port: int) -> "UplinkStats":
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
    return call("GetUplinkStats", switch, port)


def GetUplinkQueueStats(switch: int, port: int, direction: int, queue: int) -> "List[UplinkCounter]":
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
    return call("GetUplinkQueueStats", switch, port, direction, queue)


def ListRSSEngine(switch: int, port: int) -> "List[RSSEngine]":
    """Lists the RSS engines of a port (`Qdp_Get_RSS_Engine_List`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to retrieve RSS Engine list."   the library refuses
        "Failed to allocate RSS engine list."   no memory for the list
        "Failed to list RSS engines."           beside the SystemError of an object that cannot be made or stored
    """
    return call("ListRSSEngine", switch, port)


def SetUplinkMACLearn(switch: int, enabled: int) -> None:
    """Sets whether the uplinks of a switch learn MAC addresses (`Qdp_Set_Uplink_MAC_Learn`).

    switch: switch number, 0..15
    enabled: 0 off, any other value on

    Printed:
        "TypeError: Invalid parameter passed."     refused
        "Failed to set uplink mac learn policy."   the library refuses
    """
    return call("SetUplinkMACLearn", switch, enabled)


def ClearSwitchFlowTable(switch: int) -> None:
    """Empties the flow cache of a switch (`Qdp_Clear_Switch_Flow_Table`).

    switch: switch number, 0..15

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed clear switch flow table"        the library refuses
    """
    return call("ClearSwitchFlowTable", switch)


def EnableSwitchFlowCache(switch: int, enabled: int) -> None:
    """Turns the flow cache of a switch on or off (`Qdp_Enable_Switch_Flow_Cache`).

    switch: switch number, 0..15
    enabled: 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to enable switch flow cache.", "Failed to disable switch flow cache."
                                                the library refuses
    """
    return call("EnableSwitchFlowCache", switch, enabled)


def GetPanicOnTxHang(switch: int) -> int:
    """Tells whether the host panics when an uplink of the switch hangs on transmission (`Qdp_Get_Panic_On_Tx_Hang`).

    The result is the library's word, unsigned 32-bit; 0 is no.

    switch: switch number, 0..15

    Printed, and None:
        "TypeError: Invalid parameter passed."           refused
        "Failed to get panic on Tx hang configuration."  the library refuses
    """
    return call("GetPanicOnTxHang", switch)


def SetPanicOnTxHang(switch: int, enabled: int) -> None:
    """Sets whether the host panics when an uplink of the switch hangs on transmission (`Qdp_Set_Panic_On_Tx_Hang`).

    switch: switch number, 0..15
    enabled: 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to enable panic on Tx hang.", "Failed to disable panic on Tx hang."
                                                the library refuses
    """
    return call("SetPanicOnTxHang", switch, enabled)


def GetPortNetQInfo(switch: int, port: int) -> "NetQInfo":
    """Lists a port's receive filters with their queues (`Qdp_Get_Port_NetQ_Info`).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate memory."            no memory for the record
        "Failed to get uplink stats."           the library refuses
        "Failed to allocate NetQ Info resp."    no memory for the dict
    """
    return call("GetPortNetQInfo", switch, port)


def MigrateNetQFilter(switch: int, port: int, value: int) -> None:
    """Moves the receive filter of a vNIC port (`Qdp_Migrate_NetQ_Filter`).

    switch: switch number, 0..15
    port: port id, 0..16383
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."             refused
        "Please disable automatic thread load balancing."  status 1: the balancer runs; two line breaks; then also
        "Failed to migrate filter of port <port>."         the library refuses
    """
    return call("MigrateNetQFilter", switch, port, value)


def GetUplinkRingSize(switch: str, port: str) -> "Tuple[int, int]":
    """Reads an uplink's transmit and receive ring size (`DVSHCK_PortDataGet` of
    "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing"). An uplink without a setting has (2048, 1024).

    switch, port: how the switch state library names them; passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."              refused
        "ValueError: Failed to read property data length."  the library refuses
        "ValueError: Invalid property data length."         the stored value is not 8 bytes long
    """
    return call("GetUplinkRingSize", switch, port)


def SetUplinkRingSize(switch: str, port: str, tx_size: int, rx_size: int) -> None:
    """Sets an uplink's transmit and receive ring size (`DVSHCK_PortDataSet` of
    "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing").

    switch, port: how the switch state library names them; passed as given
    tx_size, rx_size: multiples of 32, 0 included

    Printed:
        "TypeError: Invalid parameter passed."         refused
        "ValueError: Ring size must be 32 aligned."    another size
        "ValueError: Failed to set port property."     the library refuses
    """
    return call("SetUplinkRingSize", switch, port, tx_size, rx_size)


def GetSwitchFilterTypes(alias: str) -> "Optional[FilterTypes]":
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
    return call("GetSwitchFilterTypes", alias)


def SetSwitchFilterTypes(alias: str, filter_class: 'Literal["VLANMAC"]', enabled: int) -> bool:
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
    return call("SetSwitchFilterTypes", alias, filter_class, enabled)


def ListDevAffinity() -> "List[DevAffinity]":
    """Lists the affinity of all physical NICs (`Qdp_List_Dev_Affinity`).

    Printed, and None:
        "Failed to allocate memory."                    no memory for the record
        "ValueError: Failed to list device affinity."   the library refuses
        "Failed to allocate port list."                 no memory for the list
    """
    return call("ListDevAffinity")


def SetDevAffinity(device: str, affinity: int) -> None:
    """Sets the affinity of a physical NIC (`Qdp_Set_Dev_Affinity`).

    device: its name, as `ListDevAffinity` gives it
    affinity: passed as given

    Printed:
        "TypeError: Invalid parameter passed."          refused
        "ValueError: Failed to set device affinity."    the library refuses
    """
    return call("SetDevAffinity", device, affinity)


def DumpLBDebugBuf(switch: int, flag: int) -> str:
    """Reads the text of a switch's load balancer debug buffer, at most 2 MiB (`Qdp_DumpLBDebugBuf`).

    switch: switch number, 0..15
    flag: low 8 bits, passed as given as a signed byte

    Printed, and None:
        "TypeError: Invalid parameter passed."                     refused
        "ValueError: Failed to dump debug buffer: <status, hex>."  the library refuses
    Raised: UnicodeDecodeError when the text is no UTF-8.
    """
    return call("DumpLBDebugBuf", switch, flag)


def FlushLBDebugBuf(switch: int) -> None:
    """Empties a switch's load balancer debug buffer (`Qdp_FlushLBDebugBuf`).

    switch: switch number, 0..15

    Printed:
        "TypeError: Invalid parameter passed."                      refused
        "ValueError: Failed to flush debug buffer: <status, hex>."  the library refuses
    """
    return call("FlushLBDebugBuf", switch)


def GetLBMetric(alias: str) -> 'Literal["none", "cpu", "count", "invalid"]':
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
    return call("GetLBMetric", alias)


def SetLBMetric(alias: str, metric: 'Literal["none", "cpu", "count"]') -> bool:
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
    return call("SetLBMetric", alias, metric)


def SetLBParam(alias: str, name: "LBParamName", value: int) -> None:
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
    return call("SetLBParam", alias, name, value)


def GetLBParams(alias: str) -> "LBParams":
    """Reads the runtime parameters of a switch's load balancer (`Qdp_GetLBParams`).

    alias: the switch's alias

    Raised:
        ValueError "invalid parameter passed."  refused
        ValueError "cannot find dvs alias."     no such switch
        OSError "failed to get parameters."     the library refuses
        SystemError "Failed to allocate buffer.\\n", "Failed to set dict item.\\n"
                                                the dict cannot be built
    """
    return call("GetLBParams", alias)


def InjectLBTraffic(switch: int, traffic: "Tuple[LBTraffic, ...]") -> None:
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
    return call("InjectLBTraffic", switch, traffic)


def DumpLBStats(
    switch: int,
    first_port: int,
    port_count: int,
    first_context: int,
    context_count: int,
) -> "Tuple[List[LBPort], List[LBUplink], List[LBContext]]":
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
    return call("DumpLBStats", switch, first_port, port_count, first_context, context_count)


def GetSwitchNUMATeam(alias: str) -> bool:
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
    return call("GetSwitchNUMATeam", alias)


def SetSwitchNUMATeam(alias: str, enabled: int) -> None:
    """Sets whether a switch's teaming minds NUMA nodes, in its property "com.tarnix.wyx.qdp.teaming".

    alias: the switch's alias
    enabled: low 8 bits, so that 256 is off; 0 off, any other value on

    Printed:
        "TypeError: Invalid parameter passed."                   refused
        "Failed to find dvs ID for dvs alias <alias>."           no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.teaming"  the library refuses
    """
    return call("SetSwitchNUMATeam", alias, enabled)


def GetSwitchBurstSize(alias: str) -> int:
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
    return call("GetSwitchBurstSize", alias)


def SetSwitchBurstSize(alias: str, burst_size: int) -> None:
    """Sets the receive burst size of a switch, in its property "com.tarnix.wyx.qdp.burstsize".

    alias: the switch's alias
    burst_size: passed as given

    Printed:
        "TypeError: Invalid parameter passed."                     refused
        "Failed to find dvs ID for dvs alias <alias>."             no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.burstsize"  the library refuses
    """
    return call("SetSwitchBurstSize", alias, burst_size)


def GetSwitchOverlayL2Flow(alias: str) -> int:
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
    return call("GetSwitchOverlayL2Flow", alias)


def SetSwitchOverlayL2Flow(alias: str, value: int) -> None:
    """Sets a switch's setting for overlay L2 flows, in its property "com.tarnix.wyx.qdp.overlayl2flow".

    alias: the switch's alias
    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."                         refused
        "Failed to find dvs ID for dvs alias <alias>."                 no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.overlayl2flow"  the library refuses
    """
    return call("SetSwitchOverlayL2Flow", alias, value)


def GetPortLRO(switch: int, port: int) -> bool:
    """Tells whether a port uses large receive offload (`Qdp_GetLRO`, scope 0).

    switch: switch number, 0..15
    port: port id, 0..16383

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to get LRO."        the library refuses
    """
    return call("GetPortLRO", switch, port)


def SetPortLRO(switch: int, port: int, enabled: int) -> None:
    """Sets whether a port uses large receive offload (`Qdp_SetLRO`, scope 0).

    switch: switch number, 0..15
    port: port id, 0..16383
    enabled: 0 off, 1 on; passed as given

    Printed, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to set LRO."        the library refuses
    """
    return call("SetPortLRO", switch, port, enabled)


def GetSwitchLRO(switch: int) -> bool:
    """Tells whether a switch uses large receive offload (`Qdp_GetLRO`, scope 1).

    switch: switch number, 0..15

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to get LRO."        the library refuses
    """
    return call("GetSwitchLRO", switch)


def SetSwitchLRO(switch: int, enabled: int) -> None:
    """Sets whether a switch uses large receive offload, over what its ports are set to (`Qdp_SetLRO`, scope 1).

    switch: switch number, 0..15
    enabled: 0 off, 1 on; passed as given

    Printed, both with two line breaks:
        "TypeError: Invalid parameter passed."  refused
        "ValueError: Failed to set LRO."        the library refuses
    """
    return call("SetSwitchLRO", switch, enabled)


def GetSwitchMinFlowLayer(switch: int) -> int:
    """Reads the minimum flow layer of a switch, unsigned 32-bit (`Qdp_GetSwitchMinFlowLayer`).

    switch: switch number, 0..15

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."                              refused
        "ValueError: Failed to get minimum flow layer of switch <switch>"   the library refuses
    """
    return call("GetSwitchMinFlowLayer", switch)


def SetSwitchMinFlowLayer(switch: int, layer: int) -> bool:
    """Sets the minimum flow layer of a switch (`Qdp_SetSwitchMinFlowLayer`). True when it was set.

    switch: switch number, 0..15
    layer: passed as given

    Printed, and False, both with two line breaks:
        "TypeError: Invalid parameter passed."             refused
        "ValueError: Failed to set switch minFlowLayer."   the library refuses
    """
    return call("SetSwitchMinFlowLayer", switch, layer)


def GetSwitchMetaFlow(alias: str) -> int:
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
    return call("GetSwitchMetaFlow", alias)


def SetSwitchMetaFlow(alias: str, value: int) -> "Literal[0, 1]":
    """Sets a switch's metaflow setting, in its property "com.tarnix.wyx.qdp.metaflow". 1 when it was stored.

    alias: the switch's alias
    value: low 8 bits

    Printed, and 0:
        "TypeError: Invalid parameter passed."                    refused
        "Failed to find dvs ID for dvs alias <alias>."            no such switch
        "Failed to set DVS property com.tarnix.wyx.qdp.metaflow"  the library refuses
    """
    return call("SetSwitchMetaFlow", alias, value)


def GetFPOEnabled(alias: str) -> "FPOEnabled":
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
    return call("GetFPOEnabled", alias)


def EnableFPO(alias: str, settings: "FPOSettings") -> bool:
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
    return call("EnableFPO", alias, settings)


def GetFPOStats(switch: int, lcores: "Tuple[int, ...]") -> "List[FPOStats]":
    """Reads the offload counters of lcores, an item per lcore that the library answers for (`Qdp_Get_FPO_Stats`).

    switch: switch number, passed as given
    lcores: at most 64 lcore ids; low 32 bits of each

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused; two line breaks
        "Failed to allocate memory."            no memory for the record or the list
        "Failed to retrieve flow stats."        the library refuses
    """
    return call("GetFPOStats", switch, lcores)


def GetFPOUplinkStatus(switch: int, port: int) -> "FPOUplinkStatus":
    """Reads what an uplink can offload (`Qdp_Get_FPO_Uplink_Status`).

    switch: switch number, 0..15
    port: port id of the uplink, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get FPO uplink status."      the library refuses
    Raised: the interpreter's own exception when the dict cannot be built.
    """
    return call("GetFPOUplinkStatus", switch, port)


def GetFPOUplinkStats(switch: int, port: int) -> "FPOUplinkStats":
    """Reads the counters of the calls into an uplink's offload (`Qdp_Get_FPO_Uplink_Stats`).

    switch: switch number, 0..15
    port: port id of the uplink, 0..16383

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get FPO uplink stats."       the library refuses
    Raised: the interpreter's own exception when the dict cannot be built.
    """
    return call("GetFPOUplinkStats", switch, port)


def GetFlowTimeout() -> int:
    """Reads the flow timeout, in seconds (`Qdp_Get_Flow_Timeout`).

    Printed, and None:
        "ValueError: Failed to get flow timeout."  the library refuses; two line breaks
    """
    return call("GetFlowTimeout")


def SetFlowTimeout(seconds: int) -> None:
    """Sets the flow timeout, in seconds (`Qdp_Set_Flow_Timeout`).

    seconds: passed as given

    Printed, both with two line breaks:
        "TypeError: Invalid parameter passed."     refused
        "ValueError: Failed to set flow timeout."  the library refuses
    """
    return call("SetFlowTimeout", seconds)


def ListLCoreIDs(selector: int) -> "Tuple[int, ...]":
    """Lists the ids of the lcores, in ascending order (`Qdp_Get_LCore_ID_Bitmap`).

    selector: passed as given

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."         refused
        "TypeError: Failed to get lcore ID bitmap."    the library refuses
    Left set beside None: "Failed to allocate buffer.\\n", "Failed to set tuple item.\\n".
    """
    return call("ListLCoreIDs", selector)


def InitMbufFastslabs() -> bool:
    """Prepares the datapath's packet buffer slabs (`Qdp_Init_Mbuf_Fastslabs`) when a switch of the host runs in the
    fast datapath mode, which its property "com.tarnix.extraconfig.opaqueDvs.qdp" tells ("true", "poll", "intr", or any
    beginning of these).

    True when they are prepared. False without a text: no switch runs in that mode, and nothing is called.

    Printed, and False:
        "TypeError: Failed to init QDP mbuf fastslabs."  the library refuses; two line breaks
    """
    return call("InitMbufFastslabs")


def GetFPORevalConfig() -> "FPORevalConfig":
    """Reads how offloaded flows are revalidated (`Qdp_Get_FPO_Reval_Config`).

    Printed, and None:
        "Failed to get FPO revalidation config"  the library refuses
    """
    return call("GetFPORevalConfig")


def SetFPORevalConfig(enabled: int, inject_packet: int, reval_interval: int, flow_scan_quota: int) -> None:
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
    return call("SetFPORevalConfig", enabled, inject_packet, reval_interval, flow_scan_quota)


def GetFPODelayCtOlConfig() -> "FPODelayCtOlConfig":
    """Reads how long the offload of tracked connections is delayed (`Qdp_Get_FPO_DelayCtOl_Config`).

    Printed, and None:
        "Failed to get FPO revalidation config"  the library refuses; the text is that of the revalidation
    """
    return call("GetFPODelayCtOlConfig")


def SetFPODelayCtOlConfig(enabled: int, num_packets: int) -> None:
    """Sets how long the offload of tracked connections is delayed (`Qdp_Set_FPO_DelayCtOl_Config`).

    enabled: passed as given
    num_packets: passed as given

    Printed:
        "TypeError: Invalid parameter passed."   refused
        "Failed to set FPO revalidation config"  the library refuses; the text is that of the revalidation
    """
    return call("SetFPODelayCtOlConfig", enabled, num_packets)


def GetRefreshPktInjectionConfig() -> int:
    """Reads the setting for injected refresh packets (`Qdp_Get_Refresh_Pkt_Injection`).

    Printed, and None:
        "Failed to get refresh packet injection config"  the library refuses
    """
    return call("GetRefreshPktInjectionConfig")


def SetRefreshPktInjectionConfig(value: int) -> None:
    """Sets the setting for injected refresh packets (`Qdp_Set_Refresh_Pkt_Injection`).

    value: passed as given

    Printed:
        "TypeError: Invalid parameter passed."           refused
        "Failed to set refresh packet injection config"  the library refuses
    """
    return call("SetRefreshPktInjectionConfig", value)


def GetSwitchMuxMode(switch: int) -> "MuxMode":
    """Tells whether a switch runs in mux mode (`Qdp_Get_Mux_Mode`).

    switch: switch number, passed as given

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."   refused
        "TypeError: Failed to get mux mode."     the library refuses
    """
    return call("GetSwitchMuxMode", switch)


def ListSwitchMuxVLAN(switch: int, start_fc_port: int) -> "MuxVLANPage":
    """Reads one page of a mux switch's internal VLANs, at most 64 (`Qdp_List_Mux_VLAN_Info`).

    switch: switch number, 0..15
    start_fc_port: 0 for the first page, then the "nextFcPort" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get mux VLAN info"           the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("ListSwitchMuxVLAN", switch, start_fc_port)


def ListSwitchShadowPorts(switch: int, start_fc_port: int) -> "ShadowPortPage":
    """Reads one page of a mux switch's shadow ports, at most 85 (`Qdp_List_Shadow_Ports`).

    switch: switch number, 0..15
    start_fc_port: 0 for the first page, then the "nextFcPort" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get shadow port list"        the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("ListSwitchShadowPorts", switch, start_fc_port)


def HostPFSet(count: int, pf_0: int, pf_1: int, pf_2: int, pf_3: int) -> None:
    """Sets the LIFs of the host's physical functions (`Qdp_P4_Cmd`, opcode 0). Of five slots the fifth is always set
    to 0.

    count: how many slots are valid, 0..5
    pf_0 ... pf_3: LIFs, 0..1023

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set host PFs"                the SmartNIC refuses
    """
    return call("HostPFSet", count, pf_0, pf_1, pf_2, pf_3)


def HostPFGet() -> "List[int]":
    """Reads the LIFs of the host's physical functions, at most five (`Qdp_P4_Cmd`, opcode 1).

    Printed, and None:
        "Failed to get host pfs"      the SmartNIC refuses
        "Error in geting host pfs"    it answers with more than five
        "Failed to allocate buffer."  no memory for the list
    """
    return call("HostPFGet")


def LifPortCreate(
    lif: int,
    source_port: int,
    rep_port: int,
    flow_key_type: int,
    lif_type: int,
    is_mux_pf: int,
    fwd_mode: int,
    status: int,
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
    return call("LifPortCreate", lif, source_port, rep_port, flow_key_type, lif_type, is_mux_pf, fwd_mode, status)


def LifPortUpdate(lif: int, flow_key_type: int, is_mux_pf: int, fwd_mode: int) -> None:
    """Changes the settings of a LIF port (`Qdp_P4_Cmd`, opcode 3).

    lif: LIF, 0..1023
    flow_key_type: 0..2
    is_mux_pf: 0 or 1
    fwd_mode: 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to update the lif port"         the SmartNIC refuses
    """
    return call("LifPortUpdate", lif, flow_key_type, is_mux_pf, fwd_mode)


def LifPortList(start_index: int) -> "LifPortPage":
    """Reads one page of the LIF ports, at most 85 (`Qdp_P4_Cmd`, opcode 4).

    start_index: 0..1023; 0 for the first page, then the "nextIndex" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif port list"           the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("LifPortList", start_index)


def VlanPortCreate(
    mux_vlan: int,
    source_port: int,
    rep_port: int,
    flow_key_type: int,
    pf_lif_0: int,
    pf_lif_1: int,
    status: int,
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
    return call("VlanPortCreate", mux_vlan, source_port, rep_port, flow_key_type, pf_lif_0, pf_lif_1, status)


def VlanPortUpdate(mux_vlan: int, flow_key_type: int) -> None:
    """Changes the flow key type of a mux VLAN port (`Qdp_P4_Cmd`, opcode 6).

    mux_vlan: internal VLAN, 0..4094
    flow_key_type: 0..2

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to update mux vlan based port"  the SmartNIC refuses
    """
    return call("VlanPortUpdate", mux_vlan, flow_key_type)


def VlanPortList(start_index: int) -> "VlanPortPage":
    """Reads one page of the mux VLAN ports, at most 63 (`Qdp_P4_Cmd`, opcode 7).

    start_index: 0..65534; 0 for the first page, then the "nextIndex" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif port list"           the SmartNIC refuses; the text is that of the LIF ports
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("VlanPortList", start_index)


def PortUpdate(port: int, default_vlan: int) -> None:
    """Sets the default VLAN of an output port (`Qdp_P4_Cmd`, opcode 8).

    port: destination port, 0..1023
    default_vlan: VLAN id, 0..4094

    Printed:
        "TypeError: Invalid parameter passed."          refused
        "Failed to update the defaultVLAN of a port"    the SmartNIC refuses
    """
    return call("PortUpdate", port, default_vlan)


def PortDelete(port: int) -> None:
    """Deletes an output port (`Qdp_P4_Cmd`, opcode 9).

    port: destination port, 0..1023

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to delete a port"               the SmartNIC refuses
    """
    return call("PortDelete", port)


def PortList(start_index: int) -> "OutputPortPage":
    """Reads one page of the output ports, at most 63 (`Qdp_P4_Cmd`, opcode 10).

    start_index: 0..1023; 0 for the first page, then the "nextIndex" of the page before

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif port list"           the SmartNIC refuses; the text is that of the LIF ports
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("PortList", start_index)


def LifStatsGet(lif: int) -> "LifStats":
    """Reads the counters of a LIF (`Qdp_Lif_Stats_Get`). `TableLifStatsGet` reads the same from the hardware table.

    lif: LIF, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get lif stats"               the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("LifStatsGet", lif)


def PortStatsGet(port: int) -> "PipelinePortStats":
    """Reads the counters of a port of the pipeline (`Qdp_Port_Stats_Get`). `TablePortStatsGet` reads the same from the
    hardware table.

    port: port of the pipeline, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get port stats"              the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("PortStatsGet", port)


def P4IStatsGet() -> "P4IStats":
    """Reads the counters of the ingress pipeline (`Qdp_P4I_Stats_Get`).

    Printed, and None:
        "Failed to get p4 ingress stats"  the library refuses
        "Failed to allocate buffer."      no memory for the dict
    """
    return call("P4IStatsGet")


def P4EStatsGet() -> "P4EStats":
    """Reads the counters of the egress pipeline (`Qdp_P4E_Stats_Get`).

    Printed, and None:
        "Failed to get p4 egress stats"  the library refuses
        "Failed to allocate buffer."     no memory for the dict
    """
    return call("P4EStatsGet")


def CTStatsGet(index: int) -> "CTStats":
    """Reads the connection tracking counters of a port (`Qdp_CT_Stats_Get`).

    index: of the port's entry, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get port conntrack stats"    the library refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("CTStatsGet", index)


def P4StatsFlowGet(index: int) -> "P4FlowStats":
    """Reads the counters of one flow, from its entry in hardware table 4 (`Qdp_P4_HWTable_Dump`).

    index: of the entry, passed as given

    Printed, and None:
        "TypeError: Invalid startIndex passed."               refused
        "Failed to dump ipfix table entry."                   the library refuses
        "Unexpected response size <bytes>, expected: 32"      the entry has another size
        "Failed to allocate buffer."                          no memory for the dict
    """
    return call("P4StatsFlowGet", index)


def GetFPOFlowStatsConfig() -> "FPOFlowStatsConfig":
    """Reads how the counters of offloaded flows are brought up to date (`Qdp_Get_FPO_Flow_Stats_Config`).

    Printed, and None:
        "Failed to get FPO flow stats update config"  the library refuses
    """
    return call("GetFPOFlowStatsConfig")


def SetFPOFlowStatsConfig(interval: int, scan_quota: int) -> None:
    """Sets how the counters of offloaded flows are brought up to date (`Qdp_Get_FPO_Flow_Stats_Config`, then
    `Qdp_Set_FPO_Flow_Stats_Config`).

    interval: -1 keeps the present one
    scan_quota: -1 keeps the present one

    Printed:
        "TypeError: Invalid parameter passed."            refused
        "Failed to get current FPO flow stats config"     the library refuses to read
        "Failed to set FPO flow stats update config"      the library refuses to write
    """
    return call("SetFPOFlowStatsConfig", interval, scan_quota)


def SetOffloadFlows(alias: str, enabled: int) -> None:
    """Sets whether a switch's flows are offloaded (`Qdp_Set_Offload_Flows`), and keeps it in the switch's property
    "com.tarnix.wyx.qdp.fpo.offload".

    Beware: neither a refusal of the library nor a property that cannot be stored is reported.

    alias: the switch's alias
    enabled: 0 off, any other value on; passed as given, stored as 0 or 1

    Printed:
        "TypeError: Invalid parameter passed."  refused, or no such switch
    """
    return call("SetOffloadFlows", alias, enabled)


def GetOffloadFlows(alias: str) -> bool:
    """Tells whether a switch's flows are offloaded (`Qdp_Get_Offload_Flows`).

    alias: the switch's alias

    Printed, and None:
        "TypeError: Invalid parameter passed."    refused, or no such switch
        "OSError: Failed to issue QDP command"    the library refuses
    """
    return call("GetOffloadFlows", alias)


def SetOffloadICMPEcho(enabled: int) -> None:
    """Sets whether flows of ICMP echo are offloaded (`Qdp_Set_Offload_ICMP_Echo`).

    enabled: 0 off, 1 on; passed as given

    Printed:
        "TypeError: Invalid parameter passed."                    refused
        "OSError: Failed to issue FPO offload ICMP Echo command"  the library refuses
    """
    return call("SetOffloadICMPEcho", enabled)


def GetOffloadICMPEcho() -> bool:
    """Tells whether flows of ICMP echo are offloaded (`Qdp_Get_Offload_ICMP_Echo`).

    Printed, and None:
        "OSError: Failed to issue QDP command"  the library refuses
    """
    return call("GetOffloadICMPEcho")


def DSCPConfSet(selector: int, dscp: int, mask: int) -> None:
    """Sets the DSCP configuration (`Qdp_DSCP_Conf_Set`).

    selector: of the entry, passed as given
    dscp: low 8 bits
    mask: low 8 bits

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set DSCP conf"               the library refuses
    """
    return call("DSCPConfSet", selector, dscp, mask)


def DSCPConfGet() -> "DSCPConf":
    """Reads the DSCP configuration (`Qdp_DSCP_Conf_Get`).

    Printed, and None:
        "Failed to get dscp conf"     the library refuses
        "Failed to allocate buffer."  no memory for the dict
    """
    return call("DSCPConfGet")


def P4HWTableList() -> "List[HWTable]":
    """Lists the tables in the SmartNIC's memory (`Qdp_P4_HWTable_List`).

    Printed, and None:
        "Failed to get p4 table info"  the library refuses
        "Failed to allocate buffer."   no memory for the list
    """
    return call("P4HWTableList")


def P4HWTableDump(table: int, first_index: int, count: int) -> "List[str]":
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
    return call("P4HWTableDump", table, first_index, count)


def P4CacheInvalidate(table: int, first_index: int, count: int) -> None:
    """Drops entries of a table from the pipeline's cache (`Qdp_P4_Cache_Invalidate`).

    table: "tableId" of `P4HWTableList`, passed as given
    first_index: first entry, passed as given
    count: number of entries, passed as given

    Printed:
        "TypeError: Invalid parameter passed."    refused
        "Failed to perform cache invalidation"    the library refuses
    """
    return call("P4CacheInvalidate", table, first_index, count)


def P4CTContextQuery(index: int) -> "CTContext":
    """Reads the TCP state of a tracked connection, from its entry in hardware table 6 (`Qdp_P4_HWTable_Dump`).

    index: of the entry, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."              refused
        "Failed to get HW CT entry"                         the library refuses
        "Unexpected response size <bytes>, expected: 32"    the entry has another size
        "Failed to allocate buffer."                        no memory for the dict
    """
    return call("P4CTContextQuery", index)


def P4MirrorTableDump() -> "List[str]":
    """Lists the mirror sessions, a line each (`Qdp_P4_MirrorTable_Dump`):
    "OL:1 Idx:0 Dir:0 D-port:3 Tunnel:1 TunnelIdx:2vni:5000:uplinkLport0:1:uplinkLport1:2". No blank stands before vni.

    Printed, and None:
        "Failed to dump Mirror table data."  the library refuses
        "Failed to allocate buffer."         no memory for the list
    """
    return call("P4MirrorTableDump")


def P4PortMirrorTableDump(value_1: int, value_2: int) -> "List[str]":
    """Lists the mirror entries of a port, a line each (`Qdp_P4_PortMirrorTable_Dump`): "OL:1 Idx:0 fcPort:3 greKey:7
    ERSPAN2 cos:0 ns:0 hwID:1 snapLen:128 erspanID:9 SA:10.0.0.1 DA:10.0.0.2", with IPv6 addresses where the entry has
    them. The type is "OTHER", "GRE_ONLY", "ERSPAN2" or "ERSPAN3".

    value_1, value_2: low 16 bits, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to dump Mirror table data."     the library refuses
        "Failed to allocate buffer."            no memory for the list
    """
    return call("P4PortMirrorTableDump", value_1, value_2)


def FPOQueryContextMgr(id_1: int, id_2: int, id_3: int) -> "List[FPOContext]":
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
    return call("FPOQueryContextMgr", id_1, id_2, id_3)


def FPOHWDestroy() -> None:
    """Is not supported by this build. Calls nothing.

    Printed:
        "Not supported in release build."  always; two line breaks
    """
    return call("FPOHWDestroy")


def TableLifStatsGet(lif: int) -> "LifStats":
    """Reads the counters of a LIF from the hardware (table 0).

    lif: LIF, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableLifStatsGet", lif)


def TablePortStatsGet(port: int) -> "PipelinePortStats":
    """Reads the counters of a port of the pipeline from the hardware (table 1).

    port: port of the pipeline, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TablePortStatsGet", port)


def TableP4IStatsGet() -> "P4IStats":
    """Reads the counters of the ingress pipeline from the hardware (table 3).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """
    return call("TableP4IStatsGet")


def TableP4EStatsGet() -> "P4EStats":
    """Reads the counters of the egress pipeline from the hardware (table 2).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """
    return call("TableP4EStatsGet")


def TableInputGet(lif: int) -> "InputEntry":
    """Reads the input table's entry of a LIF (table 8). Where it is not valid, the keys end with isWyxValid.

    lif: LIF, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableInputGet", lif)


def TableOutputGet(port: int) -> "OutputEntry":
    """Reads the output table's entry of a port (table 11).

    port: port of the pipeline, 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableOutputGet", port)


def TableMuxVlanGet(vlan: int, selector: int) -> "MuxVlanEntry":
    """Reads an entry of one of the two mux VLAN tables (tables 9 and 10).

    vlan: VLAN id, 1..4094
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableMuxVlanGet", vlan, selector)


def TableVlanMapGet(vlan: int, value: int) -> "VlanMapEntry":
    """Reads the classic mode's L2 segment of a VLAN (table 12, by key).

    vlan: VLAN id, of which the low 16 bits count and must be 0..4094, so that 65541 is VLAN 5
    value: low 16 bits, the key's second part

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableVlanMapGet", vlan, value)


def TableL2SegGet(segment: int) -> "L2SegEntry":
    """Reads an L2 segment of the classic mode (table 13).

    segment: L2 segment, passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableL2SegGet", segment)


def TableRegMACGet(value: int, mac: int) -> "RegMACEntry":
    """Reads a registered MAC address of the classic mode (table 14, by key).

    value: low 16 bits, the key's first part
    mac: the address as a number, as it is read: 0x0a0b0c0d0e0f is 0a:0b:0c:0d:0e:0f; signed 64-bit, low 48 bits

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableRegMACGet", value, mac)


def TableIPFixGet(index: int, selector: int) -> "IPFixEntry":
    """Reads the counters of a flow from one of the two flow statistics tables (tables 6 and 7).

    index: 0..4194303
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableIPFixGet", index, selector)


def TableCTStatsGet(index: int, selector: int) -> "CTStatsEntry":
    """Reads the connection tracking counters of a port from one of the two tables (tables 4 and 5). `CTStatsGet` reads
    the same and names the sets tx and rx.

    index: 0..4095
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableCTStatsGet", index, selector)


def TableCTStateGet(index: int, selector: int) -> "CTStateEntry":
    """Reads the TCP state of a connection from one of the two tables (tables 20 and 21).

    index: 0..4194303
    selector: 0 the first table, any other value the second

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableCTStateGet", index, selector)


def TableMirrorGet(session: int, selector: int) -> "MirrorEntry":
    """Reads a mirror session (table 15).

    session: 0..7
    selector: 0 the first eight entries, any other value the second eight

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableMirrorGet", session, selector)


def TableMirrorL3Get(first: int, second: int) -> "MirrorL3Entry":
    """Reads an encapsulation of mirrored traffic (table 16, index first + 8 * second).

    first: 0..5
    second: 0..1023

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableMirrorL3Get", first, second)


def TableTunnelTerminateGet(
    mac: int,
    value: int,
    is_first: int,
    is_ipv4: int,
    vlan_1: int,
    vlan_2: int,
    address_low: int,
    address_high: int,
) -> "TunnelTerminateEntry":
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
    return call("TableTunnelTerminateGet", mac, value, is_first, is_ipv4, vlan_1, vlan_2, address_low, address_high)


def TableTunnelSAGet(value: int, is_ipv4: int, address_low: int, address_high: int) -> "TunnelSAEntry":
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
    return call("TableTunnelSAGet", value, is_ipv4, address_low, address_high)


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
) -> "FlowKeyEntry":
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
    return call(
        "TableFlowKeyGet",
        value,
        mac_1,
        mac_2,
        port,
        flow_index,
        vni,
        protocol,
        is_ipv4,
        address_1_low,
        address_1_high,
        address_2_low,
        address_2_high,
        port_1,
        port_2,
    )


def TableFlowInfoGet(index: int) -> "FlowInfoEntry":
    """Reads what the pipeline does with a flow (table 26).

    index: of the flow, 0..4194303

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableFlowInfoGet", index)


def TableFlowRewriteGet(index: int) -> "FlowRewriteEntry":
    """Reads how a flow's headers are edited (table 25).

    index: 0..4194303

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableFlowRewriteGet", index)


def TableTunnelRewriteGet(index: int) -> "TunnelRewriteEntry":
    """Reads an encapsulation header (table 19).

    index: 0..8191

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get table data"              the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("TableTunnelRewriteGet", index)


def TableDSCPConfGet() -> "DSCPConfEntry":
    """Reads the DSCP configuration from the hardware (table 22).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """
    return call("TableDSCPConfGet")


def TableUplinkMapGet() -> "UplinkMapEntry":
    """Reads which logical port each uplink index stands for (table 23).

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """
    return call("TableUplinkMapGet")


def P4AppSet(enabled: int) -> "Literal[True]":
    """Turns the SmartNIC's P4 user application on or off (`Qdp_P4AppSet`). True when that was done.

    enabled: 0 off, 1 on; passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
    None, without a text: the library refuses.
    """
    return call("P4AppSet", enabled)


def P4AppGet() -> bool:
    """Tells whether the SmartNIC's P4 user application is on (`Qdp_P4AppGet`).

    None, without a text: the library refuses.
    """
    return call("P4AppGet")


def P4UKLatencySet(enabled: int) -> "Literal[True]":
    """Turns the latency histogram of table programming on or off (`Qdp_P4UKLatencySet`). True when that was done.

    enabled: 0 off, 1 on; passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
    None, without a text: the library refuses.
    """
    return call("P4UKLatencySet", enabled)


def P4UKLatencyDump(selector: int) -> "LatencyHistogram":
    """Reads the latency histogram of table programming (`Qdp_P4UKLatencyDump`).

    selector: passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to allocate buffer."            no memory for the dict
    None, without a text: the library refuses.
    Raised: SystemError "Failed to allocate buffer.\\n", "Failed to set dict item.\\n" when the dict cannot be filled.
    """
    return call("P4UKLatencyDump", selector)


def FlowOpsStatsGet() -> "FlowOpsStats":
    """Reads the counters of the SmartNIC's flow table library (`Qdp_P4_Cmd`, opcode 11, table 27).

    The entry has two counters by the name "insert" and two by the name "remove". The result has the later of each, its
    words 17 and 18.

    Printed, and None:
        "Failed to get table data"    the SmartNIC refuses
        "Failed to allocate buffer."  no memory for the dict
    """
    return call("FlowOpsStatsGet")


def AdvStatsSetEnabled(switch: int, mode: int) -> None:
    """Turns the advanced statistics of a switch on or off, or clears them (`Qdp_AdvStatsSetEnabled`).

    switch: switch number, 0..15
    mode: 0 off, 1 on, 2 clear

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to disable advanced stats.", "Failed to enable advanced stats.", "Failed to clear advanced stats."
                                                the library refuses
    """
    return call("AdvStatsSetEnabled", switch, mode)


def AdvStatsGetEnabled(switch: int) -> bool:
    """Tells whether the advanced statistics of a switch are on (`Qdp_AdvStatsGetEnabled`).

    switch: switch number, 0..15

    Printed, and None, both with two line breaks:
        "TypeError: Invalid parameter passed."                 refused
        "ValueError: Failed to get advanced stats status."     the library refuses
    """
    return call("AdvStatsGetEnabled", switch)


def AdvStatsGetCounters(switch: int, selector: int, text: str) -> "AdvStats":
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
    return call("AdvStatsGetCounters", switch, selector, text)


def AgingIntervalGet(selector: int) -> int:
    """Reads the interval at which flow tables are aged, unsigned 32-bit, in the SmartNIC's own unit
    (`Qdp_GetAgingInterval`).

    selector: passed as given

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get aging interval"          the library refuses
    """
    return call("AgingIntervalGet", selector)


def AgingIntervalSet(selector: int, interval: int) -> None:
    """Sets the interval at which flow tables are aged (`Qdp_SetAgingInterval`).

    selector: passed as given
    interval: passed as given

    Printed:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set aging interval"          the library refuses
    """
    return call("AgingIntervalSet", selector, interval)


def P4RssOverrideSet(switch: int, port: int, is_override: int, queue: int) -> "Literal[True]":
    """Sets whether a vNIC's packets all go to one queue (`Qdp_P4_Cmd`, opcode 12). True when that was done.

    switch: switch number, 0..15
    port: port id, 0..1022
    is_override: 0 off, any other value on
    queue: 0..63 when it is on; any value when it is off, of which the low 8 bits are sent

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set RSS override"            the SmartNIC refuses
    """
    return call("P4RssOverrideSet", switch, port, is_override, queue)


def P4RssOverrideGet(switch: int, port: int) -> "RssOverride":
    """Reads whether a vNIC's packets all go to one queue (`Qdp_P4_Cmd`, opcode 13).

    switch: switch number, 0..15
    port: port id, 0..1022

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to get RSS override info."      the SmartNIC refuses
        "Failed to allocate buffer."            no memory for the dict
    """
    return call("P4RssOverrideGet", switch, port)


def P4LogLevelSet(level: int) -> "Literal[True]":
    """Sets the log level of the SmartNIC's P4 application (`Qdp_P4_Cmd`, opcode 14). True when that was done.

    level: 0..5

    Printed, and None:
        "TypeError: Invalid parameter passed."  refused
        "Failed to set borea log level."        the SmartNIC refuses
    """
    return call("P4LogLevelSet", level)


def P4LogLevelGet() -> "LogLevel":
    """Reads the log level of the SmartNIC's P4 application (`Qdp_P4_Cmd`, opcode 15).

    Printed, and None:
        "Failed to get borea log level."  the SmartNIC refuses
        "Failed to allocate buffer."      no memory for the dict
    """
    return call("P4LogLevelGet")
