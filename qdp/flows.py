"""The flows of the flow caches, lcore by lcore and page by page."""

from . import methods
from .paging import pages
from .records import FlowEntry
from .values import LCORES, ip_address, mac_text, within

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Iterator, Optional, Sequence, Tuple

END = (1 << 32) - 1  # the start index that the module does not take
FILTER_VALUES = 5
INTEGER = range(-(1 << 31), 1 << 31)
OPTIONS = range(256)  # the low 8 bits count


class Flow(FlowEntry):
    """One flow as the module gives it, and the numbers of the switch and the lcore whose cache holds it."""

    __slots__ = ("switch", "lcore")

    switch: int
    lcore: int


def _address_filter(address: "Any") -> "Tuple[int, str]":
    if address is None:
        return 0, ""
    parsed = ip_address(address)
    return parsed.version, str(parsed)


def _mac_filter(mac: "Optional[str]") -> "Tuple[int, str]":
    return (0, "") if mac is None else (1, mac_text(mac))


class FlowFilter:
    """Which flows are wanted: from or to a MAC or an IP address. The option and the five values are the datapath's."""

    def __init__(
        self,
        source_mac: "Optional[str]" = None,
        destination_mac: "Optional[str]" = None,
        source: "Any" = None,
        destination: "Any" = None,
        option: int = 0,
        values: "Sequence[int]" = (0,) * FILTER_VALUES,
    ) -> None:
        self.option = within("an option", option, OPTIONS)
        self.addresses = (
            *_mac_filter(source_mac),
            *_mac_filter(destination_mac),
            *_address_filter(source),
            *_address_filter(destination),
        )
        within("a number of filter values", len(values), range(FILTER_VALUES, FILTER_VALUES + 1))
        self.values = tuple([within("a filter value", value, INTEGER) for value in values])
        self.is_on = bool(any(self.addresses) or any(self.values) or option)


def flows_of(switch: int, lcore: int, wanted: FlowFilter) -> "Iterator[Flow]":
    """The flows of one lcore. Flows that come and go while pages are read may be missing or come twice."""
    within("an lcore", lcore, LCORES)
    arguments = wanted.addresses + wanted.values

    def page(start: int) -> "Any":
        return methods.DumpFlowTable(switch, lcore, start, wanted.option, *arguments)  # type: ignore[arg-type]

    for entry in pages(page, "list", "startIndex", END, passes_empty_pages=wanted.is_on):
        flow = Flow.__new__(Flow)
        flow.__dict__ = vars(entry)
        flow.switch, flow.lcore = switch, lcore
        yield flow
