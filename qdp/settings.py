"""The settings of hosts, switches, ports, uplinks and devices: one table of them, and how they are read, set and rolled
back."""

from .call import call
from .errors import InvalidArgument, NotApplied, NotFound, QdpError, Unsupported
from .named_tuple import NamedTuple
from .values import LONG, PORTS, WORD, described, refuse, within

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Callable, Container, Dict, Iterable, Iterator, List, Mapping, Optional, Sequence, Tuple

    Part = Callable[[str], Any]  # a part of what names a setting's owner to the module: "alias", "switch", "port", ...
    Undo = List[Tuple["Setting", Any]]

    MappingOfSetting = Mapping[str, "Setting"]
else:
    from collections.abc import Mapping as MappingOfSetting

KEEP = -1  # of a setter with several values: leaves that one as it is
BELOW_KEEP = range((1 << 32) - 1)  # 4294967295 is KEEP, and no value
UNVERIFIED = "cannot be verified: the platform has no method that reads it"


class Row(NamedTuple):
    """One setting. `scope` is what it belongs to, `type` a key of TYPES, `stored` "running", "stored" or "both": what
    the setter changes. `danger` says what setting it can cost, `caveat` what to know of its value; both may be empty.

    `by` lists the parts that name the owner, which getter and setter take first; `get_by` those of the getter where
    they differ. `read` finds the value in the getter's result, `write` makes the setter's further arguments of that
    result and a value. `covers` names the setting of the ports that setting this one resets, `ports` the ports that
    have it.
    """

    name: str
    scope: str
    getter: str  # "" where there is none
    setter: str
    type: str
    unit: str
    range: "Container[Any]"
    stored: str
    danger: str
    caveat: str
    help: str
    by: "Tuple[str, ...]"
    read: "Callable[[Any, Part], Any]"
    write: "Callable[[Any, Any], Tuple[Any, ...]]"
    get_by: "Optional[Tuple[str, ...]]" = None
    covers: str = ""
    ports: "Sequence[int]" = PORTS


# --- Types: what a value may be, and how it is written as a text ---


class Integer:
    """A number of a range."""

    def check(self, what: str, value: "Any", allowed: "Container[Any]") -> "Any":
        return within(what, value, allowed)

    def parse(self, what: str, text: str, allowed: "Container[Any]") -> "Any":
        try:
            value = int(text, 0)
        except ValueError:
            refuse(what, described(allowed), text)
        return self.check(what, value, allowed)

    def show(self, value: "Any") -> str:
        return str(value)


class Flag(Integer):
    """True or False; 1 and 0 stand for them."""

    WORDS = {"on": True, "true": True, "yes": True, "1": True, "off": False, "false": False, "no": False, "0": False}

    def check(self, what: str, value: "Any", allowed: "Container[Any]") -> "Any":
        if isinstance(value, int) and value in (0, 1) and bool(value) in allowed:
            return bool(value)
        refuse(what, described(allowed), value)

    def parse(self, what: str, text: str, allowed: "Container[Any]") -> "Any":
        return self.check(what, self.WORDS.get(text.lower(), text), allowed)

    def show(self, value: "Any") -> str:
        return "on" if value else "off"


class Choice(Integer):
    """One of some words."""

    def check(self, what: str, value: "Any", allowed: "Container[Any]") -> "Any":
        return value if isinstance(value, str) and value in allowed else refuse(what, described(allowed), value)

    def parse(self, what: str, text: str, allowed: "Container[Any]") -> "Any":
        return self.check(what, text, allowed)


class Queue(Integer):
    """The number of a queue; None for none."""

    def check(self, what: str, value: "Any", allowed: "Container[Any]") -> "Any":
        return None if value is None else within(what, value, allowed)

    def parse(self, what: str, text: str, allowed: "Container[Any]") -> "Any":
        return None if text.lower() in ("none", "off") else super().parse(what, text, allowed)

    def show(self, value: "Any") -> str:
        return "none" if value is None else str(value)


class Lifs(Integer):
    """A list of LIFs, for slots of which there are five; the last one is always 0."""

    SLOTS, SETTABLE = 5, 4

    def check(self, what: str, value: "Any", allowed: "Container[Any]") -> "Any":
        if isinstance(value, (list, tuple)) and len(value) <= self.SLOTS and not any(value[self.SETTABLE :]):
            return [within(what, lif, allowed) for lif in value]
        refuse(what, "a list of at most {} LIFs, {} each".format(self.SETTABLE, described(allowed)), value)

    def parse(self, what: str, text: str, allowed: "Container[Any]") -> "Any":
        lifs = [] if text.lower() in ("none", "") else text.split(",")
        return self.check(what, [Integer().parse(what, lif, allowed) for lif in lifs], allowed)

    def show(self, value: "Any") -> str:
        return ",".join(map(str, value)) or "none"


TYPES = {"integer": Integer(), "flag": Flag(), "choice": Choice(), "queue": Queue(), "lifs": Lifs()}


# --- How a value lies in a result, and in a setter's arguments ---


def whole(result: "Any", part: "Part") -> "Any":
    return result


def is_on(result: "Any", part: "Part") -> bool:
    return bool(result)


def key(name: "Any") -> "Callable[[Any, Part], Any]":
    return lambda result, part: result[name]


def key_is_on(name: str) -> "Callable[[Any, Part], Any]":
    return lambda result, part: bool(result[name])


def only(result: "Any", value: "Any") -> "Tuple[Any, ...]":
    return (int(value),)


def word(result: "Any", value: "Any") -> "Tuple[Any, ...]":
    return (value,)


def named(name: str) -> "Callable[[Any, Any], Tuple[Any, ...]]":
    return lambda result, value: (name, value)


def in_dict(name: str) -> "Callable[[Any, Any], Tuple[Any, ...]]":
    """A dict with one key. Its flags are True or False themselves: EnableFPO takes anything but True for off."""
    return lambda result, value: ({name: value},)


def beside(
    name: "Any", order: "Iterable[Any]", kept: "Tuple[Any, ...]" = ()
) -> "Callable[[Any, Any], Tuple[Any, ...]]":
    """The value among others of a setter, which stay as they were read; those in `kept` the setter keeps itself."""
    keys = tuple(order)

    def write(result: "Any", value: "Any") -> "Tuple[Any, ...]":
        return tuple([int(value) if each == name else KEEP if each in kept else result[each] for each in keys])

    return write


def affinity_of(result: "Any", part: "Part") -> "Any":
    for device in result:
        if device["devname"] == part("device"):
            return device["affinity"]
    raise NotFound("no device {}".format(part("device")), hint="ListDevAffinity lists the devices")


def has_class(result: "Any", part: "Part") -> bool:
    """Whether the filter classes have VLANMAC; None stands for a switch without any."""
    return bool(result) and result["VLANMAC"] == "TRUE"


def override_of(result: "Any", part: "Part") -> "Any":
    return result["rssOverrideQid"] if result["rssOverride"] else None


def override(result: "Any", value: "Any") -> "Tuple[Any, ...]":
    return (0, 0) if value is None else (1, value)


def slots(result: "Any", value: "Any") -> "Tuple[Any, ...]":
    return (len(value),) + tuple((list(value) + [0] * Lifs.SETTABLE)[: Lifs.SETTABLE])


# --- The table ---

MEANS_KEEP = "4294967295, which is -1, means keep to the setter"

ON_OFF = (True, False)
RING = range(0, 1 << 32, 32)
NOT_IN_EFFECT = "kept in the switch's configuration, from where the datapath takes it"

RING_GETTER, RING_SETTER, RING_BY = "GetUplinkRingSize", "SetUplinkRingSize", ("alias", "uplink")
REVAL = ("enabled", "injectPacket", "revalInterval", "flowScanQuota")
REVAL_KEPT = ("revalInterval", "flowScanQuota")
FLOW_STATS = ("statsInterval", "statsScanQuota")
DELAY = ("enabled", "numPkts")
DSCP = ("dscp", "mask")
DSCP_CAVEAT = "the getter does not tell which selector's entry it shows; the selector is 0 unless the name has one"


def _host_row(
    name: str,
    getter: str,
    setter: str,
    type: str,
    unit: str,
    allowed: "Container[Any]",
    help: str,
    danger: str = "",
    caveat: str = "",
    by: "Tuple[str, ...]" = (),
    get_by: "Optional[Tuple[str, ...]]" = None,
    read: "Callable[[Any, Part], Any]" = whole,
    write: "Callable[[Any, Any], Tuple[Any, ...]]" = only,
) -> Row:
    return Row(
        name, "host", getter, setter, type, unit, allowed, "running", danger, caveat, help, by, read, write, get_by
    )


def _switch_row(
    name: str,
    getter: str,
    setter: str,
    type: str,
    unit: str,
    allowed: "Container[Any]",
    stored: str,
    help: str,
    danger: str = "",
    caveat: str = "",
    by: "Tuple[str, ...]" = ("alias",),
    read: "Callable[[Any, Part], Any]" = whole,
    write: "Callable[[Any, Any], Tuple[Any, ...]]" = only,
    covers: str = "",
) -> Row:
    if stored == "stored" and not caveat:
        caveat = NOT_IN_EFFECT
    row = Row(name, "switch", getter, setter, type, unit, allowed, stored, danger, caveat, help, by, read, write)
    return row._replace(covers=covers)


def _fpo_row(name: str, member: str, help: str) -> Row:
    read, write = key_is_on(member), in_dict(member)
    methods = "GetFPOEnabled", "EnableFPO"
    return _switch_row(name, *methods, "flag", "", ON_OFF, "stored", help, read=read, write=write)


def _balancer_row(parameter: str, help: str) -> Row:
    name = "balancer-" + parameter.replace("_", "-")
    read, write = key(parameter), named(parameter)
    methods = "GetLBParams", "SetLBParam"
    return _switch_row(name, *methods, "integer", "", LONG, "running", help, read=read, write=write)


def _ring_row(name: str, place: int, help: str) -> Row:
    read, write = key(place), beside(place, (0, 1))
    caveat = "the uplink goes by its name in the switch's configuration, which no method lists"
    methods = RING_GETTER, RING_SETTER
    return Row(
        name, "uplink", *methods, "integer", "entries", RING, "stored", "", caveat, help, RING_BY, read, write
    )


SETTINGS = (
    # Of the host
    _host_row("flow-timeout", "GetFlowTimeout", "SetFlowTimeout", "integer", "seconds", WORD, "flow timeout"),
    _host_row(
        "fpo-reval-enabled", "GetFPORevalConfig", "SetFPORevalConfig", "flag", "", ON_OFF,
        "whether offloaded flows are revalidated",
        read=key_is_on("enabled"), write=beside("enabled", REVAL, REVAL_KEPT),
    ),
    _host_row(
        "fpo-reval-inject-packet", "GetFPORevalConfig", "SetFPORevalConfig", "flag", "", ON_OFF,
        "whether revalidation injects a packet",
        read=key_is_on("injectPacket"), write=beside("injectPacket", REVAL, REVAL_KEPT),
    ),
    _host_row(
        "fpo-reval-interval", "GetFPORevalConfig", "SetFPORevalConfig", "integer", "", BELOW_KEEP,
        "interval of the revalidation, in the datapath's unit", caveat=MEANS_KEEP,
        read=key("revalInterval"), write=beside("revalInterval", REVAL, ("flowScanQuota",)),
    ),
    _host_row(
        "fpo-reval-scan-quota", "GetFPORevalConfig", "SetFPORevalConfig", "integer", "", BELOW_KEEP,
        "flows that a revalidation looks at, in the datapath's unit",
        caveat=MEANS_KEEP,
        read=key("flowScanQuota"), write=beside("flowScanQuota", REVAL, ("revalInterval",)),
    ),
    _host_row(
        "fpo-delay-enabled", "GetFPODelayCtOlConfig", "SetFPODelayCtOlConfig", "flag", "", ON_OFF,
        "whether the offload of tracked connections is delayed",
        read=key_is_on("enabled"), write=beside("enabled", DELAY),
    ),
    _host_row(
        "fpo-delay-packets", "GetFPODelayCtOlConfig", "SetFPODelayCtOlConfig", "integer", "packets", WORD,
        "packets by which the offload of tracked connections is delayed",
        read=key("numPkts"), write=beside("numPkts", DELAY),
    ),
    _host_row(
        "fpo-stats-interval", "GetFPOFlowStatsConfig", "SetFPOFlowStatsConfig", "integer", "", BELOW_KEEP,
        "interval at which the counters of offloaded flows are brought up to date, in the datapath's unit",
        caveat=MEANS_KEEP,
        read=key("statsInterval"), write=beside("statsInterval", FLOW_STATS, ("statsScanQuota",)),
    ),
    _host_row(
        "fpo-stats-scan-quota", "GetFPOFlowStatsConfig", "SetFPOFlowStatsConfig", "integer", "", BELOW_KEEP,
        "flows whose counters one update looks at, in the datapath's unit",
        caveat=MEANS_KEEP,
        read=key("statsScanQuota"), write=beside("statsScanQuota", FLOW_STATS, ("statsInterval",)),
    ),
    _host_row(
        "refresh-packet-injection", "GetRefreshPktInjectionConfig", "SetRefreshPktInjectionConfig", "integer", "", WORD,
        "injection of refresh packets, a number of the datapath's",
    ),
    _host_row(
        "offload-icmp-echo", "GetOffloadICMPEcho", "SetOffloadICMPEcho", "flag", "", ON_OFF,
        "whether flows of ICMP echo are offloaded", read=is_on,
    ),
    _host_row(
        "dscp", "DSCPConfGet", "DSCPConfSet", "integer", "", range(256), "DSCP of traced flows", caveat=DSCP_CAVEAT,
        by=("selector",), get_by=(), read=key("dscp"), write=beside("dscp", DSCP),
    ),
    _host_row(
        "dscp-mask", "DSCPConfGet", "DSCPConfSet", "integer", "", range(256), "mask of that DSCP", caveat=DSCP_CAVEAT,
        by=("selector",), get_by=(), read=key("mask"), write=beside("mask", DSCP),
    ),
    _host_row(
        "aging-interval", "AgingIntervalGet", "AgingIntervalSet", "integer", "", WORD,
        "interval at which flow tables are aged, in the SmartNIC's unit",
        caveat='a name with a number, as "aging-interval:1", gives the SmartNIC that selector; it is 0 otherwise',
        by=("selector",),
    ),
    _host_row(
        "host-pfs", "HostPFGet", "HostPFSet", "lifs", "", range(1024), "LIFs of the host's physical functions",
        caveat="all slots are set at once; the module sets the fifth to 0", write=slots,
    ),
    _host_row(
        "p4-app", "P4AppGet", "P4AppSet", "flag", "", ON_OFF, "the SmartNIC's P4 user application",
        danger="off stops the application",
    ),
    _host_row(
        "p4-log-level", "P4LogLevelGet", "P4LogLevelSet", "integer", "", range(6),
        "log level of the SmartNIC's P4 application", read=key("level"),
    ),
    _host_row(
        "latency-histogram", "", "P4UKLatencySet", "flag", "", ON_OFF,
        "collection of the latency histogram of table programming", caveat=UNVERIFIED,
    ),
    # Of a switch
    _switch_row(
        "burst-size", "GetSwitchBurstSize", "SetSwitchBurstSize", "integer", "packets", WORD, "stored",
        "receive burst size",
    ),
    _switch_row(
        "overlay-l2-flow", "GetSwitchOverlayL2Flow", "SetSwitchOverlayL2Flow", "integer", "", WORD, "stored",
        "handling of overlay L2 flows, a number of the datapath's",
    ),
    _switch_row(
        "metaflow", "GetSwitchMetaFlow", "SetSwitchMetaFlow", "integer", "", range(256), "stored",
        "metaflow, 0 for off", caveat="the setter stores the low 8 bits of a number, so that 256 would be 0",
    ),
    _switch_row(
        "numa-team", "GetSwitchNUMATeam", "SetSwitchNUMATeam", "flag", "", ON_OFF, "stored",
        "whether teaming minds NUMA nodes", read=is_on,
    ),
    _switch_row(
        "filter-vlan-mac", "GetSwitchFilterTypes", "SetSwitchFilterTypes", "flag", "", (True,), "stored",
        "the receive filter class VLANMAC",
        caveat="it can only be added: without its only class, the classes of a switch can neither be read nor set",
        read=has_class, write=lambda result, value: ("VLANMAC", int(value)),
    ),
    _switch_row(
        "balancer-metric", "GetLBMetric", "SetLBMetric", "choice", "", ("none", "cpu", "count"), "stored",
        "by what the load is balanced", write=word,
    ),
    _balancer_row("run_in_msec", "balancer parameter, in milliseconds by its name"),
    _balancer_row("cpuload_high", "balancer parameter: high CPU load"),
    _balancer_row("cpuload_low", "balancer parameter: low CPU load"),
    _balancer_row("cpuload_target", "balancer parameter: CPU load to aim at"),
    _balancer_row("cpuload_high_per_unit", "balancer parameter: high CPU load of a unit"),
    _balancer_row("cpuload_low_per_unit", "balancer parameter: low CPU load of a unit"),
    _balancer_row("min_v2v_pps", "balancer parameter: packets a second between vNICs"),
    _balancer_row("min_v2v_pps_bind", "balancer parameter: packets a second between vNICs that bind them"),
    _balancer_row("pps_var_sensitivity", "balancer parameter: sensitivity to the packet rate"),
    _balancer_row("cpu_var_sensitivity", "balancer parameter: sensitivity to the CPU load"),
    _fpo_row("fpo-enabled", "enabled", "flow processing offload"),
    _switch_row(
        "fpo-models", "GetFPOEnabled", "EnableFPO", "integer", "", WORD, "stored",
        "mask of the offload models that are allowed: 1 model 1 level 1, 2 model 1 level 2, 4 model 2A, 16 model 3A, "
        "32 model 3B", read=key("models"), write=in_dict("models"),
    ),
    _fpo_row("fpo-geneve-critical", "geneveCritical", "whether offload depends on GENEVE"),
    _fpo_row("fpo-ip-discovery-dhcp", "ipDiscoveryDHCP", "whether IP addresses are learned from DHCP"),
    _fpo_row("fpo-ip-discovery-icmp6", "ipDiscoveryICMP6ND", "whether IP addresses are learned from ICMPv6 ND"),
    _switch_row(
        "offload-flows", "GetOffloadFlows", "SetOffloadFlows", "flag", "", ON_OFF, "both",
        "whether flows are offloaded", caveat="the setter reports no refusal; only reading back tells", read=is_on,
    ),
    _switch_row(
        "lro", "GetSwitchLRO", "SetSwitchLRO", "flag", "", ON_OFF, "running", "large receive offload", by=("switch",),
        caveat="setting it resets lro of all ports; a plan that is rolled back restores those, too",
        read=is_on, covers="lro",
    ),
    _switch_row(
        "min-flow-layer", "GetSwitchMinFlowLayer", "SetSwitchMinFlowLayer", "integer", "", WORD, "running",
        "minimum flow layer", by=("switch",),
    ),
    _switch_row(
        "panic-on-tx-hang", "GetPanicOnTxHang", "SetPanicOnTxHang", "flag", "", ON_OFF, "running",
        "whether the host panics when an uplink hangs on transmission", by=("switch",), read=is_on,
        danger="on stops the whole host when an uplink hangs on transmission",
    ),
    _switch_row(
        "advanced-stats", "AdvStatsGetEnabled", "AdvStatsSetEnabled", "flag", "", ON_OFF, "running",
        "collection of advanced statistics", by=("switch",), read=is_on,
    ),
    _switch_row(
        "uplink-mac-learn", "", "SetUplinkMACLearn", "flag", "", ON_OFF, "running",
        "whether uplinks learn MAC addresses", by=("switch",), caveat=UNVERIFIED,
    ),
    _switch_row(
        "flow-cache", "", "EnableSwitchFlowCache", "flag", "", ON_OFF, "running", "the flow cache", by=("switch",),
        caveat=UNVERIFIED, danger="off takes the flow cache out of use for all traffic of the switch",
    ),
    # Of a port
    Row(
        "lro", "port", "GetPortLRO", "SetPortLRO", "flag", "", ON_OFF, "running", "",
        "a port that has no value of its own reads as its switch", "large receive offload", ("switch", "port"),
        is_on, only,
    ),
    Row(
        "rss-override", "port", "P4RssOverrideGet", "P4RssOverrideSet", "queue", "", range(64), "running",
        "all packets of the vNIC go to that one queue", "ports from 1023 on have none",
        "the queue that all packets of a vNIC go to; None for none", ("switch", "port"), override_of, override,
        ports=range(1023),
    ),
    # Of an uplink by its name
    _ring_row("tx-ring-size", 0, "size of the transmit ring"),
    _ring_row("rx-ring-size", 1, "size of the receive ring"),
    # Of a device
    Row(
        "affinity", "device", "ListDevAffinity", "SetDevAffinity", "integer", "", WORD, "running", "", "",
        "affinity of a physical NIC", ("device",), affinity_of, only, get_by=(),
    ),
)  # fmt: skip

ROWS = {(row.scope, row.name): row for row in SETTINGS}
SCOPES = ("host", "switch", "port", "uplink", "device")


def row_of(scope: str, name: str) -> Row:
    """The row of a setting, whose name may end in a selector: "aging-interval:1"."""
    plain = name.partition(":")[0]
    row = ROWS.get((scope, plain))
    if row is None or (":" in name and "selector" not in row.by):
        names = [each.name for each in SETTINGS if each.scope == scope]
        import difflib

        near = difflib.get_close_matches(plain, names, 3)
        raise NotFound(
            "a {} has no setting {!r}".format(scope, name),
            hint="it has " + ", ".join(near or names),
        )
    return row


def check(row: Row, value: "Any") -> "Any":
    """A value as it is set, or InvalidArgument."""
    return TYPES[row.type].check(row.name, value, row.range)


def parse(row: Row, text: str) -> "Any":
    """A value from its text: "64", "on", "cpu", "1,2,3"; "none" for no queue and for no LIFs."""
    return TYPES[row.type].parse(row.name, text, row.range)


def show(row: Row, value: "Any") -> str:
    """The text of a value, as `parse` takes it."""
    return TYPES[row.type].show(value)


# --- Settings ---


class Change(NamedTuple):
    """What setting a value did, or what it would do. `verified` is False where the platform cannot be asked: then
    `before` is None, and `after` is what was set."""

    before: "Any"
    after: "Any"
    path: str = ""
    verified: bool = True

    @property
    def changes(self) -> bool:
        """Whether before and after differ, or may differ."""
        return not self.verified or bool(self.before != self.after)


class Setting:
    """One setting of a host, a switch, a port, an uplink or a device. `value` reads it, `set` sets it."""

    def __init__(
        self, row: Row, path: str, part: "Part", covered: "Callable[[], List[Setting]]" = lambda: []
    ) -> None:
        self.row = row
        self.path = path
        self._part = part
        self._covered = covered

    @property
    def name(self) -> str:
        """The name of the setting."""
        return self.row.name

    @property
    def is_readable(self) -> bool:
        """Whether the platform has a method that reads it."""
        return bool(self.row.getter)

    @property
    def value(self) -> "Any":
        """The value, read now."""
        return self.get()

    def get(self) -> "Any":
        """The value, read now."""
        return self.value_in(self._result())

    def value_in(self, answer: "Any") -> "Any":
        """The value in an answer of its getter."""
        return self.row.read(answer, self._part)

    def check(self, value: "Any") -> "Any":
        """A value as it is set, or InvalidArgument."""
        return check(self.row, value)

    def parse(self, text: str) -> "Any":
        """A value from its text."""
        return parse(self.row, text)

    def set(self, value: "Any") -> Change:
        """Sets the value: checks it before any call, writes it where it differs, and reads it back."""
        return self._change(self.check(value), [])

    def identity(self) -> "Tuple[Any, ...]":
        """What names the setting to the module: two paths of one setting have the same."""
        return (self.row.scope, self.row.name) + self._named_by(self.row.by)

    def _named_by(self, parts: "Tuple[str, ...]") -> "Tuple[Any, ...]":
        return tuple([self._part(part) for part in parts])

    def _result(self) -> "Any":
        if not self.row.getter:
            raise Unsupported("{} {}".format(self.path, UNVERIFIED), self.row.setter, hint="keep what was set last")
        getter, arguments = self.getter_call()
        return call(getter, *arguments)

    def getter_call(self) -> "Tuple[str, Tuple[Any, ...]]":
        """The method that reads the setting, and its arguments."""
        row = self.row
        return row.getter, self._named_by(row.by if row.get_by is None else row.get_by)

    def _write(self, result: "Any", value: "Any") -> None:
        call(self.row.setter, *self._named_by(self.row.by) + self.row.write(result, value))

    def _change(self, value: "Any", undo: "Undo") -> Change:
        """Sets a value that was checked. What brings back the state before goes to `undo`, from which it is to be taken
        in reverse."""
        if not self.is_readable:
            undo.append((self, None))
            self._write(None, value)
            return Change(None, value, self.path, verified=False)
        result = self._result()
        before = self.value_in(result)
        if before == value:
            return Change(before, before, self.path)
        undo += [(each, each.get()) for each in self._covered()]
        undo.append((self, before))
        self._write(result, value)
        after = self.get()
        if after != value:
            raise NotApplied(
                "{}: set to {}, reads back as {}".format(self.path, show(self.row, value), show(self.row, after)),
                self.row.setter,
            )
        return Change(before, after, self.path)

    def __repr__(self) -> str:
        return "<Setting {}>".format(self.path)


class Settings(MappingOfSetting):
    """The settings of one thing, by name."""

    def __init__(
        self,
        scope: str,
        path: str,
        part: "Part",
        port_settings: "Callable[[], List[Settings]]" = lambda: [],
    ) -> None:
        self.scope = scope
        self._path = path
        self._part = part
        self._port_settings = port_settings

    def __getitem__(self, name: str) -> Setting:
        row = row_of(self.scope, name)
        part = self._part
        if "selector" in row.by:
            part = _selecting(part, name)

        def covered() -> "List[Setting]":
            return [settings[row.covers] for settings in self._port_settings()] if row.covers else []

        return Setting(row, "{}/{}".format(self._path, name) if self._path else name, part, covered)

    def __contains__(self, name: object) -> bool:
        try:
            return isinstance(name, str) and bool(row_of(self.scope, name))
        except NotFound:
            return False

    def get(self, name: str, default: "Any" = None) -> "Any":
        return self[name] if name in self else default

    def set(self, name: str, value: "Any") -> Change:
        return self[name].set(value)

    def __iter__(self) -> "Iterator[str]":
        return iter([row.name for row in SETTINGS if row.scope == self.scope])

    def __len__(self) -> int:
        return len(list(iter(self)))

    def __repr__(self) -> str:
        return "<Settings of {}: {}>".format(self._path or "the host", ", ".join(self))


def _selecting(part: "Part", name: str) -> "Part":
    """Parts with the selector that a name ends in, 0 where it ends in none."""
    text = name.partition(":")[2] or "0"
    selector = within("a selector", int(text) if text.isdigit() else text, WORD)
    return lambda wanted: selector if wanted == "selector" else part(wanted)


# --- Plans ---


class Plan:
    """Values for several settings. `diff` shows what would change, `apply` changes it, all or nothing."""

    def __init__(self, wanted: "Iterable[Tuple[Setting, Any]]") -> None:
        checked = [(setting, setting.check(value)) for setting, value in wanted]
        paths: Dict[Tuple[Any, ...], str] = {}
        for setting, _ in checked:
            identity = setting.identity()
            if identity in paths:
                raise InvalidArgument(
                    "{} and {} are the same setting".format(paths[identity], setting.path), hint="name it once"
                )
            paths[identity] = setting.path
        # What cannot be read cannot be rolled back, and comes last.
        self.wanted = sorted(checked, key=lambda pair: not pair[0].is_readable)
        self._undo: Undo = []

    def diff(self) -> "List[Change]":
        """What would change. Settings that cannot be read are in it always."""
        changes = [
            Change(setting.get(), value, setting.path)
            if setting.is_readable
            else Change(None, value, setting.path, verified=False)
            for setting, value in self.wanted
        ]
        return [change for change in changes if change.changes]

    def apply(self) -> "List[Change]":
        """Sets all values and returns what has changed. When one fails, those before it are set back in reverse order,
        and the failure is raised with a hint that says so."""
        self._undo = []
        try:
            changes = [setting._change(value, self._undo) for setting, value in self.wanted]
        except BaseException as error:
            failed = self.restore()
            if isinstance(error, QdpError):
                error.hint += "; " + (
                    "not set back: " + ", ".join(failed) if failed else "what was set before it is set back"
                )
            raise
        return [change for change in changes if change.changes]

    def restore(self) -> "List[str]":
        """Sets back what `apply` has changed, in reverse order. The paths of the settings that could not be."""
        failed = []
        while self._undo:
            setting, before = self._undo.pop()
            try:
                if not setting.is_readable:
                    raise Unsupported("{} {}".format(setting.path, UNVERIFIED))
                setting._change(before, [])
            except QdpError as error:
                import logging

                logging.getLogger("qdp").warning("%s is not set back: %s", setting.path, error)
                failed.append(setting.path)
        return failed

    def __repr__(self) -> str:
        return "<Plan for {}>".format(", ".join(setting.path for setting, _ in self.wanted))


class Temporarily:
    """The values of a plan for the length of a `with` block; then what was there before."""

    def __init__(self, plan: Plan) -> None:
        self._plan = plan

    def __enter__(self) -> "List[Change]":
        for setting, _ in self._plan.wanted:
            if not setting.is_readable:
                raise InvalidArgument(
                    "{} cannot be restored: the platform has no method that reads it".format(setting.path),
                    hint="set it before the block, and set it back behind it",
                )
        return self._plan.apply()

    def __exit__(self, *exception: object) -> None:
        failed = self._plan.restore()
        if failed:
            raise NotApplied("not set back: {}".format(", ".join(failed)), hint="the log of qdp says why")
