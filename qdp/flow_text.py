"""The texts of a flow, taken apart: its key as addresses, ports and numbers, its actions as names and values."""

from .named_tuple import NamedTuple
from .record import Record

TYPE_CHECKING = False
if TYPE_CHECKING:
    from ipaddress import IPv4Address, IPv6Address
    from typing import Any, Callable, List, Optional, Tuple, Union

    Address = Union[IPv4Address, IPv6Address]


class FlowKey(NamedTuple):
    """The key of a flow. A part is None where the key's layer does not have it, and where it cannot be read."""

    layer: "Optional[int]"
    source_mac: "Optional[str]"
    destination_mac: "Optional[str]"
    vlan: "Optional[int]"
    tag: "Optional[int]"
    source: "Optional[Address]"
    destination: "Optional[Address]"
    protocol: "Optional[int]"
    vni: "Optional[int]"
    source_port: "Optional[int]"
    destination_port: "Optional[int]"


def _address(text: str) -> "Address":
    import ipaddress

    return ipaddress.ip_address(text)


def _layer(text: str) -> int:
    return int(text.replace("L", "", 1))


def _mac(text: str) -> str:
    if len(bytes.fromhex(text.replace(":", ""))) != 6 or text.count(":") != 5:
        raise ValueError(text)
    return text


# The columns of a key: how each is read, and the lowest layer that has it.
_COLUMNS = [
    (_layer, 2),
    (_mac, 2),
    (_mac, 2),
    (int, 2),
    (int, 2),
    (_address, 3),
    (_address, 3),
    (int, 4),
    (int, 2),
    (int, 4),
    (int, 4),
]  # type: List[Tuple[Callable[[str], Any], int]]


def parse_key(text: str) -> "FlowKey":
    """A flow's key, of its text. For ICMP, the ports are what the key holds in their place."""
    columns = text.split()
    values = []  # type: List[Any]
    for i, (read, lowest_layer) in enumerate(_COLUMNS):
        has_column = i < len(columns) and (not values or values[0] is None or values[0] >= lowest_layer)
        try:
            values.append(read(columns[i]) if has_column else None)
        except ValueError:
            values.append(None)
    return FlowKey(*values)


def parse_actions(text: str) -> "List[Tuple[str, Any]]":
    """A flow's actions, of their text, in its order: names with numbers, with texts, or with None for no value.

    The head of the text comes first: "bmap", "inval(s)", "cg", "dp" and "len". A number that the end of the text may
    have cut is None.
    """
    *pieces, last = text.split("; ")
    pairs = [pair for piece in pieces for pair in _pairs(piece)]
    if last.startswith("flag ") and " n_dp:" in last:  # of a multicast flow, whose text ends like that
        return pairs + _pairs(last)
    return pairs + [(name, None) for name, _ in _pairs(last)]


def _pairs(piece):
    # type: (str) -> List[Tuple[str, Any]]
    """A piece of the text between two semicolons: one action, with what belongs to it, or a row of numbers."""
    if not piece:
        return []
    if piece.startswith("MC: "):
        return [("MC", None)] + _numbers(piece[len("MC: ") :])
    if piece.startswith("bmap:"):
        return _numbers(piece)
    if piece.startswith("flag "):
        return _numbers(piece.replace("flag ", "flag:", 1))
    if ", " in piece:
        return [pair for part in piece.split(", ") for pair in _pairs(part)]
    name, colon, value = piece.partition(": ")
    return [(name, _value(value) if colon else None)]


def _numbers(row):
    # type: (str) -> List[Tuple[str, Any]]
    pairs = [part.partition(":") for part in row.split()]
    return [(name, _value(value) if colon else None) for name, colon, value in pairs]


def _value(text):
    # type: (str) -> Any
    if text in ("-", "N/A"):
        return None
    if text == "(nil)":
        return 0
    try:
        return int(text, 16 if text.startswith("0x") else 10)
    except ValueError:
        return text


class FlowTexts(Record):
    """What a flow's record adds to its keys: its texts, taken apart."""

    __slots__ = ()

    @property
    def parsed_key(self) -> "FlowKey":
        """The key as addresses, ports, protocol, VLAN and VNI; see `FlowKey`."""
        return parse_key(self["key"])

    @property
    def parsed_actions(self) -> "List[Tuple[str, Any]]":
        """The actions as pairs of a name and a value, None where it has none."""
        return parse_actions(self["actions"])
