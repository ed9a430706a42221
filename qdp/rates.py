"""Readings of counters, how much they have grown, and the rates of all ports."""

import time

from .errors import QdpError
from .methods import GetPortStats
from .named_tuple import NamedTuple
from .values import refuse

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Callable, Container, Dict, Iterator, List, Optional, Tuple

    from .host import Host
    from .switch import Port

    Place = Tuple[int, int]

LONGEST = 24 * 60 * 60.0  # seconds between samples

# Counters of which the module gives the low 32 bits. The other ones have 64, and are shown signed by many methods.
LOW_HALVES = {
    "FlowStats": frozenset(
        "numFlowsCreated hits miss slowpath fpoHits localHits firstLookupHits firstLookupLocalCacheHits "
        "actionAllocFails actionGroupAllocFails keyInsertFailCount latSampleCount fpoCTHwPktQueued fpoCTHwPktDrop "
        "fpoCTPktsInjectedToHW "
        "fpoCTPktsContinuedInSW fpoCTHwContextFailed fpoCTHwFlowInval fpoMarkMismatched fpoPnicMismatched "
        "fpoDelayMarkMatching fpoEphemeralFlows fpoTransientFlows fpoBackoffTimes".split()
    ),
    "FPOStats": frozenset("hits markMismatched pnicMismatched delayMarkMatching ephemeralFlows transientFlows".split()),
}


def growth(old: int, new: int, bits: int = 64) -> "Optional[int]":
    """How much a counter of so many bits has grown, which may have wrapped meanwhile, and be shown signed or unsigned.

    None where it rather went back, as it does when it is set to zero: a step of half the counter's range or more is
    taken for that. A counter of 32 bits that is set back from its upper half looks as if it had wrapped.
    """
    grown = (new - old) % (1 << bits)
    return grown if grown < 1 << (bits - 1) else None


class Reading:
    """Counters as unsigned numbers, and the monotonic time at which they were read. Made right after they were.

    `counters` is a record, another mapping, or a list of (name, counter) pairs. What is no number is left out. `bits`
    is the width of all counters; where it is not given, it follows from the record.
    """

    def __init__(self, counters: "Any", bits: "Optional[int]" = None) -> None:
        self.time = time.monotonic()
        halves = LOW_HALVES.get(type(counters).__name__, frozenset())
        self._bits = bits
        self._halves = halves
        pairs = counters if isinstance(counters, (list, tuple)) else [(key, counters[key]) for key in counters]
        self._counters: Dict[str, int] = {
            key: value % (1 << self.bits(key)) for key, value in pairs if isinstance(value, int)
        }

    def bits(self, key: str) -> int:
        """How many bits that counter has."""
        return self._bits or (32 if key in self._halves else 64)

    def __getitem__(self, key: str) -> int:
        return self._counters[key]

    def __iter__(self) -> "Iterator[str]":
        return iter(self._counters)

    def __len__(self) -> int:
        return len(self._counters)

    def __contains__(self, key: object) -> bool:
        return key in self._counters

    def keys(self) -> "List[str]":
        """The names of the counters."""
        return list(self._counters)

    def growth(self, before: "Reading", *keys: str) -> "Optional[int]":
        """How much these counters have grown together since an earlier reading; None where one went back."""
        total = 0
        for key in keys:
            grown = growth(before[key], self[key], self.bits(key))
            if grown is None:
                return None
            total += grown
        return total

    def rate(self, before: "Reading", *keys: str) -> "Optional[float]":
        """The same a second; None also where no time has passed."""
        grown, seconds = self.growth(before, *keys), self.time - before.time
        return None if grown is None or seconds <= 0 else grown / seconds

    def __repr__(self) -> str:
        return "<Reading of {} counters>".format(len(self))


class PortRates:
    """A port with its readings at the beginning and the end of a sample: `rates["rxPkts"]` is a rate."""

    def __init__(self, port: "Port", before: Reading, after: Reading) -> None:
        self.port = port
        self.before = before
        self.after = after

    def __getitem__(self, key: str) -> "Optional[float]":
        return self.rate(key)

    __iter__ = None

    def keys(self) -> "List[str]":
        """The names of the counters."""
        return self.after.keys()

    def rate(self, *keys: str) -> "Optional[float]":
        """How much these counters have grown a second, together; None where one was set back."""
        return self.after.rate(self.before, *keys)

    def __repr__(self) -> str:
        return "<PortRates of {}>".format(self.port.path)


class Sample(NamedTuple):
    """The rates of the ports that were there all the time. `number` counts from 1. `failures` are the calls that
    failed, of ports that have gone or could not be read."""

    number: int
    ports: "List[PortRates]"
    failures: "List[QdpError]"


class _Readings:
    """Each port with its counters, and the calls that failed. An uplink's counters are those of it as a port."""

    def __init__(self, host: "Host", switches: "Optional[Container[int]]") -> None:
        self.ports: Dict[Place, Tuple["Port", Reading]] = {}
        self.failures: List[QdpError] = []
        for switch in self._read(host.switches) or []:
            if switches is None or switch.number in switches:
                for port in self._read(switch.ports) or []:
                    place = switch.number, port.number
                    reading = self._read(lambda: Reading(GetPortStats(*place)))
                    if reading:
                        self.ports[place] = port, reading

    def _read(self, read: "Callable[[], Any]") -> "Any":
        try:
            return read()
        except QdpError as error:
            self.failures.append(error)
            return None


def samples(
    host: "Host", every: float = 5, count: "Optional[int]" = None, switches: "Optional[Container[int]]" = None
) -> "Iterator[Sample]":
    """The rates of all ports over `every` seconds, `count` times or without end; of those switches only, where their
    numbers are given. Waiting keeps to the beat of the first sample, however long the reading takes."""
    if not 0 < every <= LONGEST:
        refuse("every", "more than 0 and at most {:.0f} seconds".format(LONGEST), every)
    return _samples(host, every, count, switches)


def _samples(
    host: "Host", every: float, count: "Optional[int]", switches: "Optional[Container[int]]"
) -> "Iterator[Sample]":
    start = time.monotonic()
    before = _Readings(host, switches)
    earlier = before.failures
    number = 0
    while count is None or number < count:
        number += 1
        time.sleep(max(start + number * every - time.monotonic(), 0))
        after = _Readings(host, switches)
        ports = [
            PortRates(port, before.ports[place][1], reading)
            for place, (port, reading) in after.ports.items()
            if place in before.ports
        ]
        yield Sample(number, ports, earlier + after.failures)
        before, earlier = after, []
