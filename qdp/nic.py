"""The SmartNIC behind the uplinks: its ports, counters and hardware tables, and the path of a flow through them."""

from . import methods
from .call import call
from .errors import InvalidArgument, NotFound, QdpError
from .named_tuple import NamedTuple
from .paging import pages
from .records import (
    CTContext,
    CTStats,
    FlowOpsStats,
    FPOContext,
    HWTable,
    LatencyHistogram,
    LifPort,
    LifStats,
    OutputPort,
    P4EStats,
    P4FlowStats,
    P4IStats,
    PipelinePortStats,
    VlanPort,
)
from .values import WORD, address_halves, ip_address, mac_number, refuse, within

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Callable, Dict, Iterator, List, Mapping, Optional, Sequence, Set, Tuple

    MappingOfTable = Mapping[str, "Table"]
else:
    from collections.abc import Mapping as MappingOfTable

LIFS = NIC_PORTS = range(1024)
VLANS = range(4095)
MUX_VLANS = range(1, 4095)
OPTIONAL_VLANS = range(4096)  # 4095 for none
FLOWS = range(1 << 22)
HALVES = range(2)  # of a pair of tables
SHORT = range(1 << 16)
LOW_LIFS = range(256)  # the module sends the low 8 bits of a PF's LIF
FLAGS = range(2)

# The pipeline gives its entries one by one; where no flow is named, so many are looked at.
SEARCHED = 4096


class Parameter(NamedTuple):
    """A parameter of a reader: a number of a range, or with `kind` "mac" or "address" what people write for these. One
    with a default may be left out."""

    name: str
    range: "Sequence[int]" = WORD
    default: "Any" = None
    kind: str = "number"


class TableRow(NamedTuple):
    """A hardware table: its reader, and the reader's parameters in order. Where the reader asks for the family of its
    addresses, "is_ipv4" stands in their list."""

    name: str
    method: str
    parameters: "Tuple[Parameter, ...]" = ()
    help: str = ""


HALF = Parameter("half", HALVES, 0)
IS_IPV4 = Parameter("is_ipv4", FLAGS, kind="family")

TABLES = (
    TableRow("lif_stats", "TableLifStatsGet", (Parameter("lif", LIFS),), "counters of a LIF"),
    TableRow("port_stats", "TablePortStatsGet", (Parameter("port", NIC_PORTS),), "counters of a port"),
    TableRow("p4i_stats", "TableP4IStatsGet", help="counters of the ingress pipeline"),
    TableRow("p4e_stats", "TableP4EStatsGet", help="counters of the egress pipeline"),
    TableRow("input", "TableInputGet", (Parameter("lif", LIFS),), "what packets from a LIF are tagged with"),
    TableRow("output", "TableOutputGet", (Parameter("port", NIC_PORTS),), "how packets that leave are edited"),
    TableRow("mux_vlan", "TableMuxVlanGet", (Parameter("vlan", MUX_VLANS), HALF), "what is behind an internal VLAN"),
    TableRow(
        "vlan_map", "TableVlanMapGet", (Parameter("vlan", VLANS), Parameter("value", SHORT, 0)),
        "L2 segment of a VLAN",
    ),
    TableRow("l2_seg", "TableL2SegGet", (Parameter("segment"),), "who receives what of an L2 segment"),
    TableRow("reg_mac", "TableRegMACGet", (Parameter("value", SHORT), Parameter("mac", kind="mac")), "where a MAC is"),
    TableRow("ipfix", "TableIPFixGet", (Parameter("index", FLOWS), HALF), "counters of a flow"),
    TableRow("ct_stats", "TableCTStatsGet", (Parameter("index", range(4096)), HALF), "connection tracking of a port"),
    TableRow("ct_state", "TableCTStateGet", (Parameter("index", FLOWS), HALF), "TCP state of a connection"),
    TableRow("mirror", "TableMirrorGet", (Parameter("session", range(8)), HALF), "a mirror session"),
    TableRow(
        "mirror_l3", "TableMirrorL3Get", (Parameter("first", range(6)), Parameter("second", NIC_PORTS, 0)),
        "encapsulation of mirrored traffic",
    ),
    TableRow(
        "tunnel_terminate", "TableTunnelTerminateGet",
        (
            Parameter("mac", kind="mac"), Parameter("value", range(1024), 0), Parameter("is_first", FLAGS, 1), IS_IPV4,
            Parameter("vlan_1", OPTIONAL_VLANS, 4095), Parameter("vlan_2", OPTIONAL_VLANS, 4095),
            Parameter("address", kind="address"),
        ),
        "where a tunnel ends",
    ),
    TableRow(
        "tunnel_sa", "TableTunnelSAGet",
        (Parameter("value", range(256)), IS_IPV4, Parameter("address", kind="address")), "outer flow of a tunnel",
    ),
    TableRow(
        "flow_key", "TableFlowKeyGet",
        (
            Parameter("vlan", VLANS, 0), Parameter("source", kind="mac", default="00:00:00:00:00:00"),
            Parameter("destination", kind="mac", default="00:00:00:00:00:00"), Parameter("port", NIC_PORTS, 0),
            Parameter("index", SHORT, 0), Parameter("vni", range(1 << 24), 0), Parameter("protocol", range(256), 0),
            IS_IPV4, Parameter("source_ip", kind="address", default=0),
            Parameter("destination_ip", kind="address", default=0), Parameter("source_port", SHORT, 0),
            Parameter("destination_port", SHORT, 0),
        ),
        "index of a flow by its key",
    ),
    TableRow("flow_info", "TableFlowInfoGet", (Parameter("index", FLOWS),), "what the pipeline does with a flow"),
    TableRow("flow_rewrite", "TableFlowRewriteGet", (Parameter("index", FLOWS),), "how a flow's headers are edited"),
    TableRow("tunnel_rewrite", "TableTunnelRewriteGet", (Parameter("index", range(8192)),), "an encapsulation header"),
    TableRow("dscp_conf", "TableDSCPConfGet", help="DSCP of traced flows"),
    TableRow("uplink_map", "TableUplinkMapGet", help="the logical port of each uplink index"),
)  # fmt: skip


TABLE_ROWS = {row.name: row for row in TABLES}


class Table:
    """A hardware table. `table[7]` reads an entry, `table[7, 1]` one with a further parameter, and `table.read()` takes
    the parameters by name, too."""

    def __init__(self, row: TableRow) -> None:
        self.row = row
        self.name = row.name
        self.parameters = tuple([each.name for each in row.parameters if each.kind != "family"])

    def __getitem__(self, arguments: "Any") -> "Any":
        return self.read(*arguments) if isinstance(arguments, tuple) else self.read(arguments)

    # An entry is read by what it is of; the table itself has no order.
    __iter__ = None

    def read(self, *arguments: "Any", **named: "Any") -> "Any":
        """The entry. MAC addresses are texts, IP addresses texts or addresses."""
        return call(self.row.method, *self.packed(*arguments, **named))

    def packed(self, *arguments: "Any", **named: "Any") -> "Tuple[int, ...]":
        """The reader's own arguments."""
        given = dict(zip(self.parameters, arguments), **named)
        unknown = sorted(set(given) - set(self.parameters))
        if len(arguments) > len(self.parameters) or unknown:
            known = "one of " + ", ".join(self.parameters)
            refuse("an argument of table {}".format(self.name), known, unknown or arguments)
        families: Set[int] = set()
        values: List[Any] = []
        for parameter in self.row.parameters:
            value = given.get(parameter.name, parameter.default)
            if parameter.kind == "family":
                values.append(None)
            elif parameter.kind == "mac":
                values.append(mac_number(value))
            elif parameter.kind == "address":
                values += self._halves(parameter, value, families)
            else:
                values.append(within("{} of table {}".format(parameter.name, self.name), value, parameter.range))
        if len(families) > 1:
            raise InvalidArgument(
                "the addresses for table {} are of both families".format(self.name), hint="give all IPv4 or all IPv6"
            )
        is_ipv4 = int(6 not in families)
        return tuple([is_ipv4 if value is None else value for value in values])

    @staticmethod
    def _halves(parameter: Parameter, value: "Any", families: "Set[int]") -> "Tuple[int, int]":
        if value == parameter.default and value is not None:
            return 0, 0
        address = ip_address(value)
        families.add(address.version)
        return address_halves(address)

    def __repr__(self) -> str:
        return "<Table {}({}): {}>".format(self.name, ", ".join(self.parameters), self.row.help)


class Tables(MappingOfTable):
    """The hardware tables by name."""

    _tables = {name: Table(row) for name, row in TABLE_ROWS.items()}

    def __getitem__(self, name: str) -> Table:
        if name not in self._tables:
            raise NotFound("no table {}".format(name), hint="the tables are " + ", ".join(self._tables))
        return self._tables[name]

    def __contains__(self, name: object) -> bool:
        return name in self._tables

    def get(self, name: str, default: "Any" = None) -> "Any":
        return self._tables.get(name, default)

    def __iter__(self) -> "Iterator[str]":
        return iter(self._tables)

    def __len__(self) -> int:
        return len(self._tables)

    def __repr__(self) -> str:
        return "<Tables: {}>".format(", ".join(self))


class TraceStep(NamedTuple):
    """An entry on the way of a flow: the step that it belongs to, its table, the reader's arguments, and the entry.
    `uplink` is the index of the uplink where the entry is the map of uplinks."""

    step: str
    table: str
    arguments: "Tuple[int, ...]"
    entry: "Any" = None
    uplink: "Optional[int]" = None


class Nic:
    """The SmartNIC."""

    tables = Tables()

    # --- Ports ---

    def lifs(self) -> "Iterator[LifPort]":
        """The LIF ports."""
        return pages(methods.LifPortList, "liflist", "nextIndex", len(LIFS))

    def vlan_ports(self) -> "Iterator[VlanPort]":
        """The mux VLAN ports."""
        return pages(methods.VlanPortList, "vlanlist", "nextIndex", len(SHORT) - 1)

    def ports(self) -> "Iterator[OutputPort]":
        """The output ports."""
        return pages(methods.PortList, "portlist", "nextIndex", len(NIC_PORTS))

    def host_pfs(self) -> "List[int]":
        """The LIFs of the host's physical functions."""
        return methods.HostPFGet()

    def create_lif(
        self,
        lif: int,
        source_port: int,
        rep_port: int,
        flow_key_type: int = 0,
        lif_type: int = 0,
        is_mux_pf: int = 0,
        fwd_mode: int = 0,
        status: int = 0,
    ) -> None:
        """Creates or replaces a LIF port."""
        methods.LifPortCreate(
            within("a LIF", lif, LIFS),
            within("a source port", source_port, NIC_PORTS),
            within("a representor port", rep_port, NIC_PORTS),
            within("a flow key type", flow_key_type, range(3)),
            within("a LIF type", lif_type, range(9)),
            within("is_mux_pf", int(is_mux_pf), FLAGS),
            within("a forwarding mode", fwd_mode, FLAGS),
            within("a status", status, range(4095)),
        )

    def update_lif(self, lif: int, flow_key_type: int, is_mux_pf: int, fwd_mode: int) -> None:
        """Changes the settings of a LIF port."""
        methods.LifPortUpdate(
            within("a LIF", lif, LIFS),
            within("a flow key type", flow_key_type, range(3)),
            within("is_mux_pf", int(is_mux_pf), FLAGS),
            within("a forwarding mode", fwd_mode, FLAGS),
        )

    def create_vlan_port(
        self,
        mux_vlan: int,
        source_port: int,
        rep_port: int,
        flow_key_type: int,
        pf_lif_0: int,
        pf_lif_1: int,
        status: int = 0,
    ) -> None:
        """Creates a mux VLAN port. The module sends the low 8 bits of a PF's LIF: higher ones are refused."""
        methods.VlanPortCreate(
            within("an internal VLAN", mux_vlan, VLANS),
            within("a source port", source_port, NIC_PORTS),
            within("a representor port", rep_port, NIC_PORTS),
            within("a flow key type", flow_key_type, range(3)),
            within("a PF's LIF", pf_lif_0, LOW_LIFS),
            within("a PF's LIF", pf_lif_1, LOW_LIFS),
            within("a status", status, range(4096)),
        )

    def update_vlan_port(self, mux_vlan: int, flow_key_type: int) -> None:
        """Changes the flow key type of a mux VLAN port."""
        methods.VlanPortUpdate(
            within("an internal VLAN", mux_vlan, VLANS), within("a flow key type", flow_key_type, range(3))
        )

    def set_default_vlan(self, port: int, vlan: int) -> None:
        """Sets the default VLAN of an output port."""
        methods.PortUpdate(within("a port", port, NIC_PORTS), within("a VLAN", vlan, VLANS))

    def delete_port(self, port: int) -> None:
        """Deletes an output port."""
        methods.PortDelete(within("a port", port, NIC_PORTS))

    # --- Counters ---

    def lif_stats(self, lif: int) -> LifStats:
        """The counters of a LIF."""
        return methods.LifStatsGet(within("a LIF", lif, LIFS))

    def port_stats(self, port: int) -> PipelinePortStats:
        """The counters of a port of the pipeline."""
        return methods.PortStatsGet(within("a port", port, NIC_PORTS))

    def ingress_stats(self) -> P4IStats:
        """The counters of the ingress pipeline."""
        return methods.P4IStatsGet()

    def egress_stats(self) -> P4EStats:
        """The counters of the egress pipeline."""
        return methods.P4EStatsGet()

    def ct_stats(self, index: int) -> CTStats:
        """The connection tracking of a port."""
        return methods.CTStatsGet(within("an index", index, WORD))

    def flow_stats(self, index: int) -> P4FlowStats:
        """The counters of one flow."""
        return methods.P4StatsFlowGet(within("an index", index, WORD))

    def flow_ops(self) -> FlowOpsStats:
        """The counters of the flow table library."""
        return methods.FlowOpsStatsGet()

    def latency(self, selector: int = 0) -> LatencyHistogram:
        """The latency histogram of table programming. The selector is the SmartNIC's."""
        return methods.P4UKLatencyDump(within("a selector", selector, WORD))

    # --- Memory ---

    def hw_tables(self) -> "List[HWTable]":
        """The tables in the SmartNIC's memory."""
        return methods.P4HWTableList()

    def dump(self, table: int, first: int, count: int) -> "List[str]":
        """The bytes of a table's entries, 16 to a line; the module gives at most 2032 of them."""
        return methods.P4HWTableDump(*_words(table, first, count))

    def invalidate_cache(self, table: int, first: int, count: int) -> None:
        """Drops entries of a table from the pipeline's cache."""
        methods.P4CacheInvalidate(*_words(table, first, count))

    def ct_context(self, index: int) -> CTContext:
        """The TCP state that the hardware keeps for a connection."""
        return methods.P4CTContextQuery(within("an index", index, WORD))

    def fpo_context(self, id_1: int, id_2: int, id_3: int) -> FPOContext:
        """A connection as the offload's context manager sees it."""
        return methods.FPOQueryContextMgr(*_words(id_1, id_2, id_3))[0]

    def mirror_sessions(self) -> "List[str]":
        """The mirror sessions, a line each."""
        return methods.P4MirrorTableDump()

    def port_mirrors(self, value_1: int, value_2: int) -> "List[str]":
        """The mirror entries of a port. The values are the SmartNIC's."""
        return methods.P4PortMirrorTableDump(within("a value", value_1, SHORT), within("a value", value_2, SHORT))

    # --- The path of a flow ---

    def first_flow(self) -> int:
        """The index of the first flow that the pipeline knows."""
        for index in range(SEARCHED):
            if _is_there(self.tables["flow_info"][index]):
                return index
        raise NotFound(
            "none of the first {} entries holds a flow".format(SEARCHED),
            hint='offloaded flows have "hwFlowIdx" among their actions',
        )

    def trace(
        self, index: "Optional[int]" = None, failures: "Optional[List[QdpError]]" = None, **key: "Any"
    ) -> "Iterator[TraceStep]":
        """The entries on a flow's way through the pipeline, in their order: where it comes in, how its packets are
        edited, the tunnel that it enters, where it leaves, with its counters and its connection on both sides.

        The flow is the one with that index, or with that key (as of table "flow_key": vlan, source, destination, port,
        vni, protocol, source_ip, destination_ip, source_port, destination_port), or the first one. NotFound where the
        pipeline has no such flow. An entry that is refused ends the path; where a list for `failures` is given, it goes
        there, and the path goes on.
        """
        if key:
            found: int = self.tables["flow_key"].read(**key).flowIndex
        else:
            found = self.first_flow() if index is None else index
        info = self.tables["flow_info"][found]
        if not _is_there(info):
            raise NotFound(
                "the pipeline has no flow {}".format(found), hint='offloaded flows have "hwFlowIdx" among their actions'
            )
        return self._read(self._way(found, info), failures)

    def _read(self, way: "Iterator[TraceStep]", failures: "Optional[List[QdpError]]") -> "Iterator[TraceStep]":
        for step in way:
            try:
                yield step if step.entry else step._replace(entry=self.tables[step.table].read(*step.arguments))
            except QdpError as error:
                if failures is None:
                    raise
                failures.append(error)

    def _way(self, index: int, info: "Any") -> "Iterator[TraceStep]":
        yield TraceStep("comes in", "flow_info", (index,), info)
        for each in self._edge("comes in", info, "src", "Ingress", 0):
            yield each
        yield TraceStep("is rewritten", "flow_rewrite", (index,))
        if info.encap:
            yield TraceStep("enters tunnel {}".format(info.encapIdx), "tunnel_rewrite", (info.encapIdx,))
        if not info.drop:
            yield TraceStep("leaves", "output", (info.dstPort,))
            for each in self._edge("leaves", info, "dst", "Egress", 1):
                yield each

    def _edge(self, step: str, info: "Any", end: str, way: str, half: int) -> "Iterator[TraceStep]":
        """What is alike on the way in and on the way out. Which table of a pair is for which, is up to the pipeline's
        program; the first one stands for the way in."""
        if info["is{}Uplink".format(end.capitalize())]:
            yield TraceStep(step, "uplink_map", (), uplink=info[end + "UplinkIdx"])
        if info["ct{}Vld".format(way)]:
            yield TraceStep(step, "ct_state", (info["ct{}Idx".format(way)], half))
        if info["ipfix{}Vld".format(way)]:
            yield TraceStep(step, "ipfix", (info["ipfix{}Idx".format(way)], half))
        for session in range(8):  # a bit each
            if info[way.lower() + "Mirror"] >> session & 1:
                yield TraceStep(step, "mirror", (session, half))

    def __repr__(self) -> str:
        return "<Nic>"


def _is_there(entry: "Any") -> bool:
    """Whether an entry holds anything; what was never written is zero."""
    return any(vars(entry).values())


def _words(*values: int) -> "Tuple[int, ...]":
    return tuple([within("a value", value, WORD) for value in values])
