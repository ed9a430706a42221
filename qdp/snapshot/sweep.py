"""What a snapshot reads: sections in order, the cheap ones first. Nothing here writes to the datapath.

A section is a function of an Asker; it asks with the arguments that the command and the package ask with, so that what
they want is found in the file.
"""

import re
import time

from ..call import call_raw
from ..errors import QdpError
from . import lines

LCORE_BITS = 64
MOST_LCORES = 32  # as many as an answer about lcores holds
UPLINK = "UPLINK"
EVERYTHING = (0, 16384, 0, 64)  # of the balancer: first port and number, first context and number
NO_MORE = 0xFFFFFFFF  # the index behind the last page of a list that has no other end
NO_FILTERS = (0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)  # of a page of flows, behind its index
PAGES_END = 1024  # of LIFs and ports of the SmartNIC
VLANS_END = 4096
DUMP_BYTES = 2032  # of entries in one dump of a hardware table
HARDWARE_FLOW = re.compile(r"\bhwFlowIdx: ([0-9]+)")  # among the actions of a flow that is offloaded
MIRRORS = range(8)
HALVES = (0, 1)  # of a table for the way in, and of that for the way out
FAILED = object()  # in place of the answer of a call that failed
DIRECTIONS = ((0, "numRxQ"), (1, "numTxQ"))  # of an uplink's queues, and the key of their number


class Asker:
    """Asks, and writes each call with its answer."""

    def __init__(self, write, flow_pages=1, table_entries=1024):
        self._write = write
        self.flow_pages = flow_pages  # of each lcore
        self.table_entries = table_entries  # of each hardware table
        self.hardware_flows = []  # indexes of flows that were seen
        self._switches = None
        self._ports = {}

    def attempt(self, method, *arguments):
        """The answer; FAILED where the call failed."""
        start = time.perf_counter()
        try:
            result = call_raw(method, *arguments)
        except QdpError as error:
            self._write(lines.error_line(method, arguments, error, self._since(start)))
            return FAILED
        self._write(lines.call_line(method, arguments, result, self._since(start)))
        return result

    def ask(self, method, *arguments):
        """The answer; None where the call failed."""
        result = self.attempt(method, *arguments)
        return None if result is FAILED else result

    @staticmethod
    def _since(start):
        return int((time.perf_counter() - start) * 1000000)

    def write(self, **fields):
        self._write(lines.dumped(fields))

    @property
    def switches(self):
        if self._switches is None:
            self._switches = self.ask("ListSwitches") or []
        return self._switches

    def ports(self, switch):
        """The ports of a switch, asked for once."""
        number = switch["swID"]
        if number not in self._ports:
            self._ports[number] = self.ask("ListPorts", number) or []
        return self._ports[number]

    def each_port(self):
        for switch in self.switches:
            for port in self.ports(switch):
                yield switch["swID"], port["portID"]

    def pages(self, method, entries, following, end, *arguments):
        """The entries of all pages of a list; it ends where the next index does not advance."""
        start, next_start = -1, 0
        while start < next_start < end:
            start = next_start
            page = self.ask(method, *(arguments + (start,)))
            if not page or not page[entries]:
                return
            for entry in page[entries]:
                yield entry
            next_start = page[following]


def switches(asker):
    from ..aliases import Aliases

    for switch in asker.switches:
        asker.ports(switch)
    known = aliases_of(asker.switches, Aliases())
    for portset, alias in known.items():
        asker.write(alias=[portset, alias])


def aliases_of(switches, aliases):
    """The aliases of switches by portset name; none where the configuration cannot be read."""
    try:
        found = {switch["name"]: aliases.alias_of(switch["name"]) for switch in switches}
    except QdpError:
        return {}
    return {portset: alias for portset, alias in found.items() if alias}


def settings(asker):
    """Every setting that can be read, by path; and the calls behind them, each made once."""
    from ..host import Host

    host, answers = Host(), {}
    host.aliases.known = aliases_of(
        asker.switches, host.aliases
    )  # a look-up for each setting costs as much as the call
    for path, setting in host.all_settings():
        if not setting.is_readable:
            continue
        call = setting.getter_call()
        if call not in answers:
            answers[call] = asker.attempt(call[0], *call[1])
        if answers[call] is not FAILED:
            asker.write(setting=path, value=setting.value_in(answers[call]))


def ports(asker):
    for where in asker.each_port():
        for method in ("GetPortStats", "GetPortConf", "GetPortTxUplink", "GetPortNetQInfo", "ListRSSEngine"):
            asker.ask(method, *where)


def uplinks(asker):
    for switch in asker.switches:
        for port in asker.ports(switch):
            if port["clientType"] == UPLINK:
                where = switch["swID"], port["portID"]
                for method in ("GetUplinkStats", "GetFPOUplinkStatus", "GetFPOUplinkStats"):
                    asker.ask(method, *where)
                for direction, number in DIRECTIONS:
                    for queue in range(port[number]):
                        asker.ask("GetUplinkQueueStats", *(where + (direction, queue)))


def lcores(asker):
    asker.ask("ListLCoreIDs", 0)
    for switch in asker.switches:
        number = switch["swID"]
        wanted = [lcore for lcore in range(LCORE_BITS) if switch["lcores"] >> lcore & 1]
        for first in range(0, len(wanted), MOST_LCORES):
            chunk = tuple(wanted[first : first + MOST_LCORES])
            asker.ask("GetFlowStats", number, chunk, 0)
            asker.ask("GetFPOStats", number, chunk)


def macs(asker):
    for switch in asker.switches:
        asker.ask("ListSwitchMACTable", switch["swID"])
        for port in asker.ports(switch):
            asker.ask("ListPortMACTable", switch["swID"], port["portID"])


def slowpath(asker):
    for switch in asker.switches:
        if asker.ask("AdvStatsGetEnabled", switch["swID"]):
            asker.ask("AdvStatsGetCounters", switch["swID"], 0, "")


def nic(asker):
    for method in ("P4AppGet", "HostPFGet", "P4IStatsGet", "P4EStatsGet", "FlowOpsStatsGet", "P4MirrorTableDump"):
        asker.ask(method)
    for selector in (0, 1):  # the driver, and the application beside it
        asker.ask("P4UKLatencyDump", selector)
    for lif in asker.pages("LifPortList", "liflist", "nextIndex", PAGES_END):
        asker.ask("LifStatsGet", lif["lifID"])
    for port in asker.pages("PortList", "portlist", "nextIndex", PAGES_END):
        asker.ask("PortStatsGet", port["dstPort"])
    for _ in asker.pages("VlanPortList", "vlanlist", "nextIndex", VLANS_END):
        pass
    for switch in asker.switches:
        mode = asker.ask("GetSwitchMuxMode", switch["swID"])
        if mode and mode["enabled"]:
            for method in ("ListSwitchMuxVLAN", "ListSwitchShadowPorts"):
                for _ in asker.pages(method, "portlist", "nextFcPort", NO_MORE, switch["swID"]):
                    pass
    asker.ask("P4HWTableList")


def flows(asker):
    """The first pages of each lcore's flows."""
    for switch in asker.switches:
        for lcore in range(LCORE_BITS):
            if switch["lcores"] >> lcore & 1:
                start = 0
                for _ in range(asker.flow_pages):
                    page = asker.ask("DumpFlowTable", switch["swID"], lcore, start, *NO_FILTERS)
                    for flow in page["list"] if page else ():
                        asker.hardware_flows += map(int, HARDWARE_FLOW.findall(flow["actions"]))
                    if not page or not page["list"] or page["startIndex"] <= start:
                        break
                    start = page["startIndex"]


def contexts(asker):
    """The balancer's contexts alone: its ports take seconds on a large host."""
    for switch in asker.switches:
        asker.ask("DumpLBStats", switch["swID"], 0, 0, 0, LCORE_BITS)


def balancer(asker):
    """All of the balancer, and what it has noted of its decisions."""
    for switch in asker.switches:
        asker.ask("DumpLBDebugBuf", switch["swID"], 0)
        asker.ask("DumpLBStats", switch["swID"], *EVERYTHING)


def entries(asker):
    """Entries of the hardware tables, as `qdp table get` and `qdp flow trace` ask for them."""
    for method in ("TableP4IStatsGet", "TableP4EStatsGet", "TableDSCPConfGet", "TableUplinkMapGet"):
        asker.ask(method)
    for lif in asker.pages("LifPortList", "liflist", "nextIndex", PAGES_END):
        asker.ask("TableInputGet", lif["lifID"])
        asker.ask("TableLifStatsGet", lif["lifID"])
    for port in asker.pages("PortList", "portlist", "nextIndex", PAGES_END):
        asker.ask("TableOutputGet", port["dstPort"])
        asker.ask("TablePortStatsGet", port["dstPort"])
    for session in MIRRORS:
        for half in HALVES:
            asker.ask("TableMirrorGet", session, half)
    for index in sorted(set(asker.hardware_flows)):
        info = asker.ask("TableFlowInfoGet", index)
        asker.ask("TableFlowRewriteGet", index)
        if not info:
            continue
        if info["encap"]:
            asker.ask("TableTunnelRewriteGet", info["encapIdx"])
        for half, way in zip(HALVES, ("Ingress", "Egress")):
            for name, method in (("ct", "TableCTStateGet"), ("ipfix", "TableIPFixGet")):
                if info["{}{}Vld".format(name, way)]:
                    asker.ask(method, info["{}{}Idx".format(name, way)], half)


def tables(asker):
    """The hardware tables, as they are."""
    for table in asker.ask("P4HWTableList") or []:
        at_once = max(DUMP_BYTES // max(table["entrySize"], 1), 1)
        for first in range(0, min(table["numEntries"], asker.table_entries), at_once):
            if asker.ask("P4HWTableDump", table["tableId"], first, min(at_once, table["numEntries"] - first)) is None:
                break


# What every snapshot has, and what a bundle has on top.
SECTIONS = (
    ("switches", switches),
    ("settings", settings),
    ("lcores", lcores),
    ("uplinks", uplinks),
    ("contexts", contexts),
    ("slowpath", slowpath),
    ("nic", nic),
    ("ports", ports),
    ("macs", macs),
    ("flows", flows),
)
MORE_SECTIONS = (("entries", entries), ("tables", tables), ("balancer", balancer))
BY_NAME = dict(SECTIONS + MORE_SECTIONS)
