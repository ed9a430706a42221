"""Compares two readings: settings and inventory by key, counters as growth and rate."""

from collections import namedtuple

from ..rates import LOW_HALVES, growth

SETTING, INVENTORY, COUNTER = KINDS = ("setting", "inventory", "counter")

# How the answers of a method are compared. where: the key of the list of entries, "" where the answer is the list, None
# where it is the only entry; identity: the keys that name an entry; kind: of its values; place: how many arguments say
# where the entries are, behind which come indexes of pages and the like; other: keys that are of no interest, since
# they change all the time.
Thing = namedtuple("Thing", "name where identity kind place other")

THINGS = {
    "ListSwitches": Thing("switch", "", ("swID",), INVENTORY, 0, ()),
    "ListPorts": Thing("port", "", ("portID",), INVENTORY, 1, ("numMACs",)),
    "GetPortConf": Thing("port-conf", None, (), INVENTORY, 2, ()),
    "LifPortList": Thing("lif", "liflist", ("lifID",), INVENTORY, 0, ()),
    "PortList": Thing("nic-port", "portlist", ("dstPort",), INVENTORY, 0, ()),
    "VlanPortList": Thing("nic-vlan", "vlanlist", ("muxVLAN",), INVENTORY, 0, ()),
    "GetSwitchMuxMode": Thing("mux", None, (), INVENTORY, 1, ()),
    "GetFPOUplinkStatus": Thing("offload", None, (), INVENTORY, 2, ("numFlowsOffloaded",)),
    "GetPortStats": Thing("port", None, (), COUNTER, 2, ()),
    "GetUplinkStats": Thing("uplink", "uplinkStats", None, COUNTER, 2, ()),
    "GetFPOUplinkStats": Thing("offload", None, (), COUNTER, 2, ("numPendingFpoCallList",)),
    "GetFlowStats": Thing("lcore", "", ("lcoreID",), COUNTER, 1, ("numFlows", "numModel2Flows")),
    "GetFPOStats": Thing("lcore-offload", "", ("lcoreID",), COUNTER, 1, ()),
    "P4IStatsGet": Thing("nic-ingress", None, (), COUNTER, 0, ()),
    "P4EStatsGet": Thing("nic-egress", None, (), COUNTER, 0, ()),
    "LifStatsGet": Thing("lif", None, (), COUNTER, 1, ()),
    "PortStatsGet": Thing("nic-port", None, (), COUNTER, 1, ()),
    "AdvStatsGetCounters": Thing("slowpath", None, (), COUNTER, 1, ()),
    "FlowOpsStatsGet": Thing("nic-flows", None, (), COUNTER, 0, ("entries",)),
}
# How many bits the counters of a method have that have fewer than 64, by the name of its record.
_RECORDS = {"GetFlowStats": "FlowStats", "GetFPOStats": "FPOStats"}

Difference = namedtuple("Difference", "kind path before after growth rate")


def _entries(thing, answer):
    """(name of the entry, its values) of each entry of an answer."""
    if thing.identity is None:  # pairs of a name and a counter
        yield "", dict(answer[thing.where])
        return
    found = answer if not thing.where else answer[thing.where]
    if thing.where is None:
        yield "", found
        return
    for entry in found:
        yield "/".join(str(entry[key]) for key in thing.identity), entry


def values_of(snapshot, reading):
    """{(kind, path): (value, bits)} of all that is compared."""
    found = {(SETTING, path): (value, None) for path, value in snapshot.settings(reading).items()}
    found.update(((INVENTORY, "alias/" + portset), (alias, None)) for portset, alias in snapshot.aliases.items())
    for (method, arguments), answer in snapshot.calls(reading):
        thing = THINGS.get(method)
        if thing is None or "result" not in answer:
            continue
        narrow = LOW_HALVES.get(_RECORDS.get(method), ())
        place = [str(each) for each in arguments[: thing.place]]
        for name, entry in _entries(thing, answer["result"]):
            for key, value in entry.items():
                if key in (thing.identity or ()) or key in thing.other:
                    continue
                if thing.kind == COUNTER and not isinstance(value, int):
                    continue
                path = "/".join([thing.name] + place + [each for each in (name, key) if each])
                found[thing.kind, path] = value, (32 if key in narrow else 64) if thing.kind == COUNTER else None
    return found


def seconds_between(a, b, readings):
    """The time between two readings: by the monotonic clock in one file, by the calendar between two."""
    if a is b:
        return b.clocks[readings[1]] - a.clocks[readings[0]]
    return b.head["time"] - a.head["time"]


def differences(a, b, kinds=KINDS, readings=(1, 1)):
    """What differs between two readings, in order. A counter that has not moved does not differ."""
    old, new = values_of(a, readings[0]), values_of(b, readings[1])
    seconds = seconds_between(a, b, readings)
    for kind, path in sorted(set(old) | set(new)):
        if kind not in kinds:
            continue
        (before, _), (after, bits) = old.get((kind, path), (None, None)), new.get((kind, path), (None, None))
        if before == after:
            continue
        grown = rate = None
        if kind == COUNTER and before is not None and after is not None:
            grown = growth(before, after, bits)
            rate = grown / seconds if grown is not None and seconds > 0 else None
        yield Difference(kind, path, before, after, grown, rate)
