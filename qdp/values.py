"""Values as callers write them, checked before any call and packed as the module takes them."""

import operator

from .errors import InvalidArgument

TYPE_CHECKING = False
if TYPE_CHECKING:
    from ipaddress import IPv4Address, IPv6Address
    from typing import Any, Container, List, NoReturn, Tuple, Union

    Address = Union[IPv4Address, IPv6Address]

MAC_BYTES = 6
WORD = range(1 << 32)  # what a 32-bit argument holds
LONG = range(1 << 64)

SWITCHES = range(16)
PORTS = range(16384)
LCORES = range(64)
VLANS = range(4095)


def refuse(what: str, allowed: str, value: object) -> "NoReturn":
    raise InvalidArgument(
        "{} is {}, not {!r}".format(what, allowed, value), hint="give {}; nothing was changed".format(allowed)
    )


def described(allowed: "Container[Any]") -> str:
    """An allowed range, or allowed values, in words."""
    if isinstance(allowed, range):
        step = " in steps of {}".format(allowed.step) if allowed.step != 1 else ""
        return "{} to {}{}".format(allowed[0], allowed[-1], step)
    if isinstance(allowed, tuple):
        return " or ".join(map(str, allowed))
    return str(allowed)


def within(what: str, value: "Any", allowed: "Container[int]") -> int:
    """A number of that range. The module itself takes numbers modulo 2**32: -1 arrives as 4294967295."""
    if not isinstance(value, bool):
        try:
            number = operator.index(value)
        except TypeError:
            pass
        else:
            if number in allowed:
                return number
    refuse(what, described(allowed), value)


def mac_bytes(mac: str) -> bytes:
    """A MAC address in any usual form: 02:00:5e:10:00:01, 02-00-5E-10-00-01 or 0200.5e10.0001."""
    if isinstance(mac, str):
        try:
            found = bytes.fromhex(mac.translate({ord(sign): None for sign in ":-."}))
        except ValueError:
            found = b""
        if len(found) == MAC_BYTES and " " not in mac:
            return found
    refuse("a MAC address", "six bytes as 02:00:5e:10:00:01", mac)


def mac_text(mac: str) -> str:
    """A MAC address as the module writes it."""
    return ":".join("{:02x}".format(byte) for byte in mac_bytes(mac))


def mac_number(mac: str) -> int:
    """A MAC address as the readers of hardware tables take it: 0x02005e100001 is 02:00:5e:10:00:01."""
    return int.from_bytes(mac_bytes(mac), "big")


def mac_number_reversed(mac: str) -> int:
    """A MAC address as AddMACEntry and DelMACEntry take it: 0x0100105e0002 is 02:00:5e:10:00:01."""
    return int.from_bytes(mac_bytes(mac), "little")


def ip_address(address: "Any") -> "Address":
    """An address, or a text that is one."""
    if not isinstance(address, int):
        import ipaddress

        try:
            return ipaddress.ip_address(address)
        except ValueError:
            pass
    refuse("an address", "an IPv4 or IPv6 address", address)


def address_halves(address: "Address") -> "Tuple[int, int]":
    """The low and the high 64 bits of an address, as the signed numbers that the module takes."""
    number = int(address)
    low, high = (half - (1 << 64) if half >> 63 else half for half in (number & (1 << 64) - 1, number >> 64))
    return low, high


def switch_and_vlan(switch: int, vlan: int) -> "Tuple[int, int]":
    """The switch and the VLAN argument of AddMACEntry and DelMACEntry, which take the switch number from the upper half
    of the VLAN argument and not from the low half of the switch argument."""
    within("a switch number", switch, SWITCHES)
    return 0, switch << 16 | within("a VLAN", vlan, VLANS)


def bits_of(mask: int) -> "List[int]":
    """The numbers of the lcores in a mask, which reads negative when lcore 63 is in it."""
    return [bit for bit in LCORES if mask >> bit & 1]
