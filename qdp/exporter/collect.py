"""The collectors: what the exporter reads of the datapath, method by method. Nothing here writes.

A collector asks through `Platform.ask`, which counts what fails: it goes on after a failure and reports what it could
read.
"""

import re
import time

import qdp

from . import metrics

# Every method that the exporter may call. None of them changes the datapath or turns a collection on.
METHODS = frozenset(metric.method for metric in metrics.METRICS if metric.method) | {
    "AdvStatsGetEnabled",
    "ListPorts",
    "P4AppGet",
}

MOST_LCORES = 32  # as many as an answer of GetFlowStats holds
LCORE_BITS = 64  # of a switch's mask of lcores
ALL_CONTEXTS = (0, LCORE_BITS)  # the first one and their number
NO_PORTS = (0, 0)
UPLINK = "UPLINK"

# What every host has. The other collectors report success only once they have had an answer.
NEEDED = ("switches", "lcores", "port_list", "ports")
DEFAULT_PORTS = r"/(VNIC(\.PT)?|UPLINK)$"
SERIES_OF_A_PORT = 1 + sum(len(metric.keys) for metric in metrics.of_method("GetPortStats"))  # and its description


class Options:
    """What is read: regular expressions over "switch name/port number/client type", and how many series at most."""

    def __init__(self, include=DEFAULT_PORTS, exclude=None, max_series=20000):
        self.include = re.compile(include)
        self.exclude = re.compile(exclude) if exclude else None
        self.max_series = max_series

    def wants(self, switch, port):
        text = "{}/{}/{}".format(switch["name"], port["portID"], port["clientType"])
        return bool(self.include.search(text)) and not (self.exclude and self.exclude.search(text))


class Platform:
    """Calls of the allowed methods, and how many of each have failed."""

    def __init__(self):
        self.failures = dict.fromkeys(sorted(METHODS), 0)
        self.answered = 0  # calls since the collector began
        self.failed = 0

    def ask(self, method, *arguments):
        """The module's own answer; None where the call failed."""
        assert method in METHODS, method
        try:
            answer = qdp.call_raw(method, *arguments)
        except qdp.QdpError:
            answer = None
        if answer is None:
            self.failures[method] += 1
            self.failed += 1
        else:
            self.answered += 1
        return answer


class Sweep:
    """One reading of the host."""

    def __init__(self, platform, series, options):
        self._platform = platform
        self._series = series
        self._options = options
        self._switches = []
        self._ports = []  # (switch number, port), uplinks first
        self._count = 0  # series so far
        self.omitted = 0

    def _ask(self, labels, method, *arguments):
        """Asks, and adds the series of the answer."""
        answer = self._platform.ask(method, *arguments)
        if answer:
            self._series.add(method, labels, answer)
        return answer

    def switches(self):
        """The switches. Without them nothing else of the datapath is read."""
        self._switches = self._platform.ask("ListSwitches") or []
        for switch in self._switches:
            labels = (str(switch["swID"]),)
            self._series.add_one("qdp_switch_info", labels + (switch["name"],), 1)
            self._series.add("ListSwitches", labels, switch)

    def lcores(self):
        for switch in self._switches:
            number, mask = switch["swID"], switch["lcores"]
            lcores = [lcore for lcore in range(LCORE_BITS) if mask >> lcore & 1]
            for first in range(0, len(lcores), MOST_LCORES):
                chunk = tuple(lcores[first : first + MOST_LCORES])
                for answer in self._platform.ask("GetFlowStats", number, chunk, 0) or []:
                    self._series.add("GetFlowStats", (str(number), str(answer["lcoreID"])), answer)

    def balancer(self):
        """The contexts alone: the balancer's dump of all ports takes seconds on a large host."""
        for switch in self._switches:
            number = switch["swID"]
            dump = self._platform.ask("DumpLBStats", number, *(NO_PORTS + ALL_CONTEXTS))
            for context in dump[2] if dump else []:
                self._series.add("DumpLBStats", (str(number), str(context["ctx ID"])), context)

    def port_list(self):
        """The ports that are wanted, read once for all collectors of ports."""
        for switch in self._switches:
            for port in self._platform.ask("ListPorts", switch["swID"]) or []:
                if self._options.wants(switch, port):
                    self._ports.append((switch["swID"], port))
        self._ports.sort(key=lambda each: each[1]["clientType"] != UPLINK)

    def _uplinks(self):
        return ((switch, port["portID"]) for switch, port in self._ports if port["clientType"] == UPLINK)

    def uplinks(self):
        for switch, port in self._uplinks():
            stats = self._platform.ask("GetUplinkStats", switch, port)
            if stats:
                self._series.add("GetUplinkStats", (str(switch), str(port)), dict(stats["uplinkStats"]))

    def offload(self):
        for switch, port in self._uplinks():
            for method in ("GetFPOUplinkStatus", "GetFPOUplinkStats"):
                self._ask((str(switch), str(port)), method, switch, port)

    def slowpath(self):
        """The reasons, of the switches on which they are being collected already."""
        for switch in self._switches:
            if self._platform.ask("AdvStatsGetEnabled", switch["swID"]):
                self._ask((str(switch["swID"]),), "AdvStatsGetCounters", switch["swID"], 0, "")

    def nic(self):
        """The SmartNIC. A host without one refuses the first call, and is not asked further."""
        is_enabled = self._platform.ask("P4AppGet")
        if is_enabled is not None:
            self._series.add_one("qdp_nic_app_enabled", (), int(is_enabled))
            self._ask((), "P4IStatsGet")
            self._ask((), "P4EStatsGet")

    def latency(self):
        """The histogram of the driver; a histogram without samples is not being collected."""
        histogram = self._platform.ask("P4UKLatencyDump", 0)
        if not histogram or not histogram["totalSample"]:
            return
        (metric,) = metrics.of_method("P4UKLatencyDump")
        count = 0
        for key, labels in metric.keys.items():
            count += histogram[key]
            self._series.add_one(metric.name, labels, count, "_bucket")
        self._series.add_one(metric.name, (), count, "_count")
        self._series.add_one(metric.name, (), histogram["totalTime"] * metric.scale, "_sum")

    def ports(self):
        """The counters of ports, uplinks first, as many as there is room for."""
        room = max(self._options.max_series - self._count, 0) // SERIES_OF_A_PORT
        self.omitted = max(len(self._ports) - room, 0) * SERIES_OF_A_PORT
        for switch, port in self._ports[:room]:
            labels = (str(switch), str(port["portID"]))
            self._series.add_one("qdp_port_info", labels + (port["clientType"],), 1)
            self._ask(labels, "GetPortStats", switch, port["portID"])

    # In the order in which they are read: what is cheap and tells most comes first, what is cut comes last.
    COLLECTORS = (
        ("switches", switches),
        ("lcores", lcores),
        ("balancer", balancer),
        ("port_list", port_list),
        ("uplinks", uplinks),
        ("offload", offload),
        ("slowpath", slowpath),
        ("nic", nic),
        ("latency", latency),
        ("ports", ports),
    )

    def read(self):
        """(collector, {family: text}, seconds, calls answered, calls failed) of each collector, one after the other."""
        platform = self._platform
        failed = 0
        for name, collector in self.COLLECTORS:
            platform.answered = platform.failed = 0
            start = time.perf_counter()
            collector(self)
            families, count = self._series.taken()
            self._count += count
            failed += platform.failed
            yield name, families, time.perf_counter() - start, platform.answered, platform.failed
        self._series.end_sweep(is_complete=not failed)
