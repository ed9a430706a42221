"""The conditions that call for a person: one row each, from which the alert rules, the runbook and `qdp check` are
made.

What is measured is written once, as an expression that is rendered as PromQL for a fleet and evaluated over two
readings of one host.
"""

from collections import namedtuple

from . import metrics


class Expression:
    """What is measured. `promql(window)` is its query; `evaluate(before, after)` is {labels: value} of one host, where
    the readings are Samples and values that cannot be told are left out."""

    def promql(self, window):
        raise NotImplementedError

    def evaluate(self, before, after):
        raise NotImplementedError


class Gauge(Expression):
    """The value of a gauge, of the series with these labels."""

    def __init__(self, name, **match):
        self.name, self.match = name, match

    def promql(self, window):
        return self.name + _matchers(self.match)

    def evaluate(self, before, after):
        return after.of(self.name, self.match, None, sum)


class Rate(Expression):
    """The growth of a counter a second, summed over all labels but `by`."""

    def __init__(self, name, by=(), **match):
        self.name, self.by, self.match = name, by, match

    def promql(self, window):
        name = metrics.sample_name(metrics.BY_NAME[self.name])
        by = "".join(", " + label for label in self.by)
        return "sum by (instance{}) (rate({}{}[{}]))".format(by, name, _matchers(self.match), window)

    def evaluate(self, before, after):
        old, new = (each.of(self.name, self.match, self.by, sum) for each in (before, after))
        seconds = after.time - before.time
        return {
            labels: (value - old[labels]) / seconds
            for labels, value in new.items()
            if labels in old and value >= old[labels] and seconds > 0
        }


class Sum(Expression):
    """The sum of expressions with the same labels."""

    def __init__(self, *parts):
        self.parts = parts

    def promql(self, window):
        return "({})".format(" + ".join(part.promql(window) for part in self.parts))

    def evaluate(self, before, after):
        values = [part.evaluate(before, after) for part in self.parts]
        return {
            labels: sum(each[labels] for each in values)
            for labels in values[0]
            if all(labels in each for each in values)
        }


class Share(Expression):
    """One expression as a share of another with the same labels; nothing where the whole is zero."""

    def __init__(self, part, whole):
        self.part, self.whole = part, whole

    def promql(self, window):
        return "{} / ({} > 0)".format(self.part.promql(window), self.whole.promql(window))

    def evaluate(self, before, after):
        whole = self.whole.evaluate(before, after)
        part = self.part.evaluate(before, after)
        return {labels: value / whole[labels] for labels, value in part.items() if whole.get(labels)}


def _matchers(match):
    return "{%s}" % ", ".join('{}="{}"'.format(*each) for each in sorted(match.items())) if match else ""


class Samples:
    """One reading of a host, as {family: [(labels as a dict, value)]}, and its monotonic time."""

    def __init__(self, families, time):
        self.families, self.time = families, time

    def of(self, name, match, by, join):
        """{(label, value) pairs: value} of the matching series, joined over all labels but `by`; None keeps them
        all."""
        groups = {}
        for labels, value in self.families.get(name, ()):
            if all(labels.get(label) == wanted for label, wanted in match.items()):
                kept = labels if by is None else {label: labels[label] for label in by}
                kept = tuple(sorted((label, text) for label, text in kept.items() if label not in match))
                groups.setdefault(kept, []).append(value)
        return {labels: join(values) for labels, values in groups.items()}


# A bound of a condition: the expression is "above" or "below" it.
Bound = namedtuple("Bound", "expression comparison value")
_HOLDS = {">": lambda value, bound: value > bound, "<": lambda value, bound: value < bound}

# alert: its name; bounds: all of them have to hold for the same labels; minutes: how long, before the alert fires;
# severity: "critical" wakes somebody, "warning" waits for the morning; summary: what holds, with {{labels}};
# meaning and action: paragraphs of the runbook.
Condition = namedtuple("Condition", "alert bounds minutes severity summary meaning action")

WINDOW = "5m"


def above(expression, value):
    return Bound(expression, ">", value)


def below(expression, value):
    return Bound(expression, "<", value)


_PORT_DIRECTION = ("switch", "port", "direction")

CONDITIONS = (
    Condition(
        "QdpDown",
        (below(Gauge("qdp_up"), 1),),
        2,
        "critical",
        "The datapath does not answer.",
        "The exporter runs, and the datapath refuses or hangs when it is asked for its switches. Packets may still be "
        "forwarded: what is lost is the way to look at the datapath and to change it.",
        "Run `qdp switch show` on the host. Where it hangs, the datapath's control channel hangs: look for the "
        "datapath's "
        "process and its log, and migrate the guests before it is restarted. Where it is refused, the error line "
        "tells why.",
    ),
    Condition(
        "QdpCollectorFailing",
        (below(Gauge("qdp_collector_success"), 1),),
        10,
        "warning",
        "The collector {{collector}} fails.",
        "Some calls of this part of the datapath are refused, or hang. Its series are missing or old; other alerts "
        "that "
        "stand on them cannot fire.",
        "Compare `qdp_call_failures_total` by method: the method that grows is the one that is refused. Call it with "
        "`qdp call METHOD ARGUMENTS` on the host; the error line tells why. `qdp_reader_restarts_total` grows where "
        "a call "
        "hangs.",
    ),
    Condition(
        "QdpPortDrops",
        (
            above(Rate("qdp_port_drops", _PORT_DIRECTION), 100),
            above(Share(Rate("qdp_port_drops", _PORT_DIRECTION), Rate("qdp_port_packets", _PORT_DIRECTION)), 0.001),
        ),
        5,
        "warning",
        "Port {{port}} of switch {{switch}} drops more than 100 packets a second and 0.1 % ({{direction}}).",
        "Packets are lost at one port. A guest that does not fetch its packets in time, a full queue, or an lcore at "
        "its "
        "limit are the usual reasons.",
        "`qdp port stats` shows whether the slow path drops as well. Look at the load of the lcores that serve the "
        "port's "
        "queues (`qdp port queues`, `qdp balancer show`); `qdp port migrate SWITCH PORT` moves a queue to another "
        "lcore.",
    ),
    Condition(
        "QdpUplinkErrors",
        (above(Rate("qdp_uplink_errors", _PORT_DIRECTION), 1),),
        5,
        "warning",
        "Uplink {{port}} of switch {{switch}} counts errors ({{direction}}).",
        "The device of an uplink counts errors: a bad cable or transceiver, a wrong speed, or packets that find no "
        "buffer.",
        "`qdp_uplink_errors_by_kind_total` names the kind. CRC, length and alignment errors are the link's: replace "
        "cable "
        "or transceiver. Missed packets and overflows are the host's: enlarge the ring "
        "(`qdp setting set SWITCH/uplink/NAME/rx-ring-size ENTRIES`).",
    ),
    Condition(
        "QdpOffloadTableFull",
        (above(Share(Gauge("qdp_offload_flows"), Gauge("qdp_offload_flows_limit")), 0.9),),
        10,
        "warning",
        "The flow table of uplink {{port}} of switch {{switch}} is more than 90 % full.",
        "New flows will soon not be offloaded. They are forwarded by lcores then, which costs CPU time.",
        "`qdp flow top` shows who makes the flows. A scan or an attack shows as many flows of few packets. A shorter "
        "flow "
        "timeout frees places sooner (`qdp setting set flow-timeout SECONDS`).",
    ),
    Condition(
        "QdpOffloadFailing",
        (
            above(Rate("qdp_offload_calls", ("switch", "port"), result="failed"), 1),
            above(
                Share(
                    Rate("qdp_offload_calls", ("switch", "port"), result="failed"),
                    Rate("qdp_offload_calls", ("switch", "port")),
                ),
                0.05,
            ),
        ),
        10,
        "warning",
        "More than 5 % of the offload calls of uplink {{port}} of switch {{switch}} fail.",
        "The uplink's NIC refuses flows. They are forwarded by lcores, which costs CPU time.",
        "`qdp_offload_calls_total` names the call, `qdp_offload_rejects_total` the reason. `qdp uplink offload` "
        "shows what "
        "the NIC supports. Where resources fail (`bulk_res_…`), the NIC's tables are short: see QdpOffloadTableFull.",
    ),
    Condition(
        "QdpSlowPathShare",
        (
            above(Rate("qdp_port_packets", ("switch",), path="slow"), 1000),
            above(
                Share(
                    Rate("qdp_port_packets", ("switch",), path="slow"),
                    Sum(
                        Rate("qdp_port_packets", ("switch",), path="fast"),
                        Rate("qdp_port_packets", ("switch",), path="slow"),
                    ),
                ),
                0.1,
            ),
        ),
        10,
        "warning",
        "More than 10 % of the packets of switch {{switch}} take the slow path.",
        "The fast path cannot handle these packets, or the flow cache does not hold their flows. The slow path costs "
        "many "
        "times the CPU time a packet.",
        "`qdp slowpath show` names the reasons where they are collected; `qdp slowpath on SWITCH` turns the "
        "collection on. "
        "`qdp lcore show` tells whether the flow cache misses.",
    ),
    Condition(
        "QdpFlowCacheFailures",
        (above(Rate("qdp_lcore_failures", ("switch", "lcore", "kind")), 1),),
        10,
        "warning",
        "Lcore {{lcore}} of switch {{switch}} cannot put flows into its cache ({{kind}}).",
        "An lcore has no room for actions or keys of flows. Their packets take the slow path.",
        "`qdp flow top` shows what fills the cache. A shorter flow timeout empties it sooner; `qdp flow clear "
        "SWITCH` empties "
        "it at once, at the price of a slow start of all flows.",
    ),
    Condition(
        "QdpExporterTruncated",
        (above(Gauge("qdp_exporter_omitted_series"), 0),),
        10,
        "warning",
        "The exporter leaves out series of ports.",
        "The host has more ports than `--max-series` allows for. Uplinks are reported first; the alerts of the ports "
        "that "
        "are left out cannot fire.",
        "Raise `--max-series`, or choose the ports that matter with `--include` and `--exclude`.",
    ),
)


def holding(condition, before, after):
    """The label sets for which all bounds of a condition hold between two readings, in order."""
    found = None
    for expression, comparison, value in condition.bounds:
        holds = _HOLDS[comparison]
        labels = {each for each, measured in expression.evaluate(before, after).items() if holds(measured, value)}
        found = labels if found is None else found & labels
    return [dict(each) for each in sorted(found)]


def query(condition, window=WINDOW):
    """The condition as PromQL."""
    return " and ".join(
        "{} {} {:g}".format(expression.promql(window), comparison, value)
        for expression, comparison, value in condition.bounds
    )
