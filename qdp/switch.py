"""Switches, with their ports, uplinks and lcores."""

from . import methods
from .errors import NotFound, Refused
from .paging import pages
from .records import (
    AdvStats,
    FlowStats,
    FPOStats,
    FPOUplinkStats,
    FPOUplinkStatus,
    L3SPANRecord,
    LBContext,
    LBPort,
    LBUplink,
    MACEntry,
    MuxVLAN,
    NetQInfo,
    PortConf,
    PortCounters,
    PortInfo,
    PortMACTable,
    RSSEngine,
    ShadowPort,
    SwitchInfo,
    SwitchMACTable,
    TxUplink,
    UplinkStats,
)
from .settings import Settings
from .values import (
    LCORES,
    PORTS,
    SWITCHES,
    WORD,
    bits_of,
    ip_address,
    mac_number_reversed,
    switch_and_vlan,
    within,
)

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Iterable, Iterator, List, Optional, Sequence, Tuple

    from .flows import Flow
    from .host import Host

UPLINK = "UPLINK"
LCORES_A_CALL = 32  # as many as an answer holds; a call takes 64
ALL_PORTS, ALL_LCORES = len(PORTS), len(LCORES)
FC_PORTS = 1 << 16
DIRECTIONS = range(2)
SPAN_VALUES = range(1 << 24)


class Lcore:
    """One lcore that forwards for a switch."""

    def __init__(self, switch: "Switch", number: int) -> None:
        self.switch = switch
        self.number = number

    def flows(self, **filters: "Any") -> "Iterator[Flow]":
        """The flows of its cache; see `Switch.flows`."""
        from .flows import FlowFilter, flows_of

        return flows_of(self.switch.number, self.number, FlowFilter(**filters))

    def flow_stats(self) -> FlowStats:
        """The counters of its flow cache."""
        return self.switch.flow_stats([self.number])[0]

    def fpo_stats(self) -> FPOStats:
        """The counters of flow processing offload on it."""
        return self.switch.fpo_stats([self.number])[0]

    def __repr__(self) -> str:
        return "<Lcore {} of {}>".format(self.number, self.switch.path)


class Port:
    """One port of a switch. `info` is what the port list says of it."""

    def __init__(self, switch: "Switch", info: PortInfo) -> None:
        self.switch = switch
        self.info = info
        self.number = info.portID
        self._at: Tuple[int, int] = (switch.number, self.number)

    @property
    def path(self) -> str:
        """What names the port: "dvs-production/port/3"."""
        return "{}/port/{}".format(self.switch.path, self.number)

    @property
    def name(self) -> str:
        """The path; the datapath itself has no names of ports."""
        return self.path

    @property
    def settings(self) -> Settings:
        """The settings of the port."""
        return self.switch.port_settings(self.number)

    def stats(self) -> PortCounters:
        """The counters of the fast path and of the slow path."""
        return methods.GetPortStats(*self._at)

    def conf(self) -> PortConf:
        """The configuration: addresses, VLANs and features."""
        return methods.GetPortConf(*self._at)

    def queues(self) -> NetQInfo:
        """The receive filters, each with the queues that serve it."""
        return methods.GetPortNetQInfo(*self._at)

    def tx_uplink(self) -> TxUplink:
        """The uplinks that the port transmits on."""
        return methods.GetPortTxUplink(*self._at)

    def rss_engines(self) -> "List[RSSEngine]":
        """The RSS engines."""
        return methods.ListRSSEngine(*self._at)

    def mac_table(self) -> PortMACTable:
        """The MAC table of the port, with its limit."""
        return methods.ListPortMACTable(*self._at)

    def macs(self) -> "List[MACEntry]":
        """The MAC entries of the port."""
        return self.mac_table().MacTableList

    def add_mac(self, mac: str, vlan: int = 0) -> None:
        """Adds a static MAC entry."""
        switch, packed_vlan = switch_and_vlan(self.switch.number, vlan)
        methods.AddMACEntry(switch, self.number, mac_number_reversed(mac), packed_vlan)

    def delete_mac(self, mac: str, vlan: int = 0) -> None:
        """Deletes a static MAC entry."""
        switch, packed_vlan = switch_and_vlan(self.switch.number, vlan)
        methods.DelMACEntry(switch, self.number, mac_number_reversed(mac), packed_vlan)

    def clear_macs(self) -> None:
        """Forgets the MAC entries of the port."""
        methods.ClearPortMACTable(*self._at)

    def migrate(self, value_1: int, value_2: int, value_3: int) -> None:
        """Moves the port between lcores. The three values are the datapath's."""
        values = [within("a value", value, WORD) for value in (value_1, value_2, value_3)]
        methods.MigratePort(*self._at, *values)

    def unpin(self, value: int = 0) -> None:
        """Unpins the port from its lcore. The value is the datapath's."""
        methods.UnpinPort(*self._at, within("a value", value, WORD))

    def reset(self, value: int = 0) -> None:
        """Resets the port. The value is the datapath's."""
        methods.ResetPort(*self._at, within("a value", value, WORD))

    def migrate_filter(self, value: int) -> None:
        """Moves the receive filter of a vNIC. The value is the datapath's."""
        methods.MigrateNetQFilter(*self._at, within("a value", value, WORD))

    def __repr__(self) -> str:
        return "<{} {}: {}, {}>".format(type(self).__name__, self.path, self.info.clientType, self.info.hwAddr)


class Uplink(Port):
    """A port of client type UPLINK."""

    def stats(self) -> UplinkStats:  # type: ignore[override]
        """The device's 24 counters by name, and its private statistics."""
        return methods.GetUplinkStats(*self._at)

    def port_stats(self) -> PortCounters:
        """The counters of the uplink as a port of the switch."""
        return super().stats()

    def queue(self, number: int, direction: int = 0) -> "List[Tuple[str, int]]":
        """The 24 counters of one queue by name. Which of the directions 0 and 1 is which, is the datapath's affair."""
        within("a direction", direction, DIRECTIONS)
        return list(methods.GetUplinkQueueStats(*self._at, direction, within("a queue", number, WORD)))

    def offload(self) -> FPOUplinkStatus:
        """What the uplink's device can offload."""
        return methods.GetFPOUplinkStatus(*self._at)

    def offload_stats(self) -> FPOUplinkStats:
        """The counters of the calls into the uplink's offload."""
        return methods.GetFPOUplinkStats(*self._at)


class NamedUplink:
    """An uplink by its name in the switch's configuration. Only its ring sizes go by that name, and no method lists the
    names or tells which port has which."""

    def __init__(self, switch: "Switch", name: str) -> None:
        self.switch = switch
        self.name = name

    @property
    def path(self) -> str:
        """What names the uplink: "dvs-production/uplink/nic0"."""
        return "{}/uplink/{}".format(self.switch.path, self.name)

    @property
    def settings(self) -> Settings:
        """The settings that go by that name."""
        def part(wanted: str) -> "Any":
            return self.name if wanted == "uplink" else self.switch.part(wanted)

        return Settings("uplink", self.path, part)

    def __repr__(self) -> str:
        return "<NamedUplink {}>".format(self.path)


class Switch:
    """One switch of the datapath. `info` is what the switch list says of it."""

    def __init__(self, host: "Host", info: SwitchInfo) -> None:
        self.host = host
        self.info = info
        self.number = info.swID
        self.name = info.name

    @property
    def alias(self) -> "Optional[str]":
        """The name that users give the switch; None where it cannot be told from the portset name, or where the switch
        configuration cannot be loaded. A switch that was looked up by its alias knows it always."""
        try:
            return self.host.aliases.alias_of(self.name)
        except Refused:
            return None

    @property
    def path(self) -> str:
        """What names the switch: its alias, or the name that it has in the datapath."""
        return self.alias or self.name

    def part(self, wanted: str) -> "Any":
        """A part of what names the switch to the module: "alias" or "switch"."""
        if wanted == "switch":
            return self.number
        alias = self.host.aliases.alias_of(self.name)
        if alias is None:
            raise NotFound(
                "the alias of switch {}, {}, is not known".format(self.number, self.name),
                hint='look the switch up by its alias: host.switch("alias")',
            )
        return alias

    @property
    def settings(self) -> Settings:
        """The settings of the switch."""
        return Settings("switch", self.path, self.part, lambda: [port.settings for port in self.ports()])

    def port_settings(self, number: int, path: "Optional[str]" = None) -> Settings:
        """The settings of a port by its number, whether or not the port is listed. `path` is the switch's, where the
        caller has it already."""
        within("a port number", number, PORTS)

        def part(wanted: str) -> "Any":
            return number if wanted == "port" else self.part(wanted)

        return Settings("port", "{}/port/{}".format(path or self.path, number), part)

    # --- What the switch consists of ---

    def ports(self) -> "List[Port]":
        """All ports; uplinks among them are of class Uplink."""
        return [self._port(info) for info in methods.ListPorts(self.number)]

    def _port(self, info: PortInfo) -> Port:
        return Uplink(self, info) if info.clientType == UPLINK else Port(self, info)

    def port(self, number: int) -> Port:
        """A port by its number."""
        within("a port number", number, PORTS)
        for port in self.ports():
            if port.number == number:
                return port
        raise NotFound("switch {} has no port {}".format(self.path, number), hint="Switch.ports() lists its ports")

    def uplinks(self) -> "List[Uplink]":
        """The ports of client type UPLINK."""
        return [port for port in self.ports() if isinstance(port, Uplink)]

    def uplink(self, number: int) -> Uplink:
        """An uplink by its number."""
        port = self.port(number)
        if not isinstance(port, Uplink):
            raise NotFound("port {} is no uplink".format(port.path), hint="Switch.uplinks() lists the uplinks")
        return port

    def named_uplink(self, name: str) -> NamedUplink:
        """An uplink by its name in the switch's configuration."""
        return NamedUplink(self, name)

    def lcores(self) -> "List[Lcore]":
        """The lcores that forward for the switch."""
        return [Lcore(self, number) for number in bits_of(self.info.lcores)]

    def lcore(self, number: int) -> Lcore:
        """An lcore of the switch by its number."""
        for lcore in self.lcores():
            if lcore.number == number:
                return lcore
        raise NotFound("switch {} has no lcore {}".format(self.path, number), hint="Switch.lcores() lists its lcores")

    # --- MAC addresses ---

    def mac_table(self) -> SwitchMACTable:
        """The MAC table of the switch, with its limit."""
        return methods.ListSwitchMACTable(self.number)

    def macs(self) -> "List[MACEntry]":
        """The MAC entries of the switch."""
        return self.mac_table().MacTableList

    def clear_macs(self) -> None:
        """Forgets the MAC entries of the switch."""
        methods.ClearSwitchMACTable(self.number)

    # --- Flows ---

    def flows(self, lcores: "Optional[Iterable[int]]" = None, **filters: "Any") -> "Iterator[Flow]":
        """The flows of all its lcores, or of some. Filters: `source_mac` and `destination_mac`, `source` and
        `destination` (IP addresses), `option` and the five `values`, which are the datapath's."""
        from .flows import FlowFilter, flows_of

        wanted = FlowFilter(**filters)
        chosen = self.lcores() if lcores is None else [self.lcore(number) for number in lcores]

        def each() -> "Iterator[Flow]":
            for lcore in chosen:
                for flow in flows_of(self.number, lcore.number, wanted):
                    yield flow

        return each()

    def clear_flows(self) -> None:
        """Empties the flow cache of the switch."""
        methods.ClearSwitchFlowTable(self.number)

    def _by_lcore(self, lcores: "Optional[Sequence[int]]") -> "Iterator[Tuple[int, ...]]":
        """Lcores, as many at once as an answer holds."""
        wanted = bits_of(self.info.lcores) if lcores is None else lcores
        numbers = [within("an lcore", lcore, LCORES) for lcore in wanted]
        for i in range(0, len(numbers), LCORES_A_CALL):
            yield tuple(numbers[i : i + LCORES_A_CALL])

    def flow_stats(self, lcores: "Optional[Sequence[int]]" = None, value: int = 0) -> "List[FlowStats]":
        """The counters of the flow caches of all its lcores, or of some. The value is the datapath's."""
        within("a value", value, WORD)
        return [stats for some in self._by_lcore(lcores) for stats in methods.GetFlowStats(self.number, some, value)]

    def fpo_stats(self, lcores: "Optional[Sequence[int]]" = None) -> "List[FPOStats]":
        """The counters of flow processing offload of all its lcores, or of some."""
        return [stats for some in self._by_lcore(lcores) for stats in methods.GetFPOStats(self.number, some)]

    # --- Balancer ---

    def balancer_stats(
        self, first_port: int = 0, ports: int = ALL_PORTS, first_context: int = 0, contexts: int = ALL_LCORES
    ) -> "Tuple[List[LBPort], List[LBUplink], List[LBContext]]":
        """The load statistics of ports, uplinks and contexts. `first_port` is a place in the port list, `ports` how
        many from there on. The module gives more than that where they fill several answers; here they are cut."""
        found = methods.DumpLBStats(self.number, first_port, ports, first_context, contexts)
        if ports < ALL_PORTS:
            listed = methods.ListPorts(self.number)[first_port : first_port + ports] if ports else []
            wanted = {port.portID for port in listed}
            found = (
                [port for port in found[0] if port["port ID"] in wanted],
                [uplink for uplink in found[1] if uplink["port ID"] in wanted],
                found[2],
            )
        of_contexts = range(first_context, first_context + contexts)
        return found[0], found[1], [context for context in found[2] if context["ctx ID"] in of_contexts]

    def inject_traffic(self, traffic: "Iterable[Tuple[int, int, int, int, int]]") -> None:
        """Feeds the balancer with made-up traffic: places of ports in the port list with a queue each, -1 on the side
        of an uplink, and a load in percent."""
        methods.InjectLBTraffic(self.number, tuple([tuple(each) for each in traffic]))  # type: ignore[misc]

    def debug_buffer(self, flag: int = 0) -> str:
        """The text of the balancer's debug buffer."""
        return methods.DumpLBDebugBuf(self.number, within("a flag", flag, range(256)))

    def flush_debug_buffer(self) -> None:
        """Empties the balancer's debug buffer."""
        methods.FlushLBDebugBuf(self.number)

    # --- Further ---

    def advanced_stats(self, selector: int = 0, text: str = "") -> AdvStats:
        """The advanced statistics. Selector and text are the datapath's."""
        return methods.AdvStatsGetCounters(self.number, within("a selector", selector, WORD), text)

    def clear_advanced_stats(self) -> None:
        """Sets the advanced statistics to zero."""
        methods.AdvStatsSetEnabled(self.number, 2)

    def span_record(self, destination: "Any", value: int = 0) -> L3SPANRecord:
        """The encapsulation of mirrored traffic towards an address. The value, of 24 bits, is the datapath's."""
        address = ip_address(destination)
        is_ipv6 = int(address.version == 6)
        return methods.GetL3SPANRecord(self.number, is_ipv6, str(address), within("a value", value, SPAN_VALUES))

    def is_mux(self) -> bool:
        """Whether the switch runs in mux mode."""
        return bool(methods.GetSwitchMuxMode(self.number).enabled)

    def mux_vlans(self) -> "Iterator[MuxVLAN]":
        """The internal VLANs of a switch in mux mode."""

        def page(start: int) -> "Any":
            return methods.ListSwitchMuxVLAN(self.number, start)

        return pages(page, "portlist", "nextFcPort", FC_PORTS)

    def shadow_ports(self) -> "Iterator[ShadowPort]":
        """What stands behind the ports of a switch in mux mode."""

        def page(start: int) -> "Any":
            return methods.ListSwitchShadowPorts(self.number, start)

        return pages(page, "portlist", "nextFcPort", FC_PORTS)

    def __repr__(self) -> str:
        return "<Switch {}: {}, {} ports>".format(self.number, self.name, self.info.numPorts)


def find_number(which: "Any") -> "Optional[int]":
    """The number of a switch, where it is named by one: 0 or "0"."""
    if isinstance(which, str):
        return int(which) if which.isdigit() and int(which) in SWITCHES else None
    return within("a switch number", which, SWITCHES)
