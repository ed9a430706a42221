"""The host: its switches and devices, its SmartNIC, and the settings of all of them."""

import re

from . import methods
from .aliases import Aliases
from .errors import NotFound
from .records import DevAffinity
from .settings import Plan, Row, Setting, Settings, Temporarily, check, row_of
from .switch import NamedUplink, Switch, find_number
from .values import PORTS, WORD, within

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Container, Dict, Iterator, List, Mapping, Optional, Tuple

    from .nic import Nic
    from .rates import Sample

PATH = (
    r"device/(?P<device>[^/]+)"
    r"|(?P<port_switch>.+)/port/(?P<port>[0-9]+)"
    r"|(?P<uplink_switch>.+)/uplink/(?P<uplink>[^/]+)"
    r"|(?P<switch>.+)"
)


class Device:
    """A physical NIC."""

    def __init__(self, name: str, info: "Optional[DevAffinity]" = None) -> None:
        self.name = name
        self.info = info
        self.path = "device/" + name

    @property
    def settings(self) -> Settings:
        """The settings of the device."""
        return Settings("device", self.path, lambda part: self.name)

    def __repr__(self) -> str:
        return "<Device {}>".format(self.name)


class Host:
    """The host that the module runs on. It loads nothing before it is asked."""

    def __init__(self) -> None:
        self.aliases = Aliases()
        self._nic = None  # type: Optional[Nic]

    def load_aliases(self) -> None:
        """Loads the snapshot of the switches' aliases again. Looking an unknown alias up does so, too."""
        self.aliases.load()

    # --- What the host consists of ---

    @property
    def nic(self) -> "Nic":
        """The SmartNIC behind the uplinks."""
        if self._nic is None:
            from .nic import Nic

            self._nic = Nic()
        return self._nic

    def switches(self) -> "List[Switch]":
        """The switches of the datapath, in the order of the list."""
        return [Switch(self, info) for info in methods.ListSwitches()]

    def switch(self, which: "Any") -> Switch:
        """A switch by its number, its name in the datapath, or its alias."""
        number = find_number(which)
        switches = self.switches()
        for switch in switches:
            if number == switch.number or which == switch.name:
                return switch
        portset = self.aliases.portset_of(which) if number is None else None
        for switch in switches:
            if switch.name == portset:
                return switch
        raise NotFound(
            "no switch {}".format(which),
            hint="it has " + ", ".join("{} ({})".format(each.number, each.name) for each in switches),
        )

    def devices(self) -> "List[Device]":
        """The physical NICs."""
        return [Device(info.devname, info) for info in methods.ListDevAffinity()]

    def device(self, name: str) -> Device:
        """A physical NIC by its name."""
        for device in self.devices():
            if device.name == name:
                return device
        raise NotFound("no device {}".format(name), hint="Host.devices() lists the devices")

    def lcores(self, selector: int = 0) -> "Tuple[int, ...]":
        """The ids of all lcores. The selector is the datapath's."""
        return methods.ListLCoreIDs(within("a selector", selector, WORD))

    def prepare_buffers(self) -> bool:
        """Prepares the packet buffer slabs. False where no switch runs in the fast mode that needs them."""
        return bool(methods.InitMbufFastslabs())

    # --- Settings ---

    @property
    def settings(self) -> Settings:
        """The settings of the host itself."""
        return Settings("host", "", _no_part)

    def _row(self, path: str) -> "Tuple[Dict[str, Optional[str]], Row]":
        """What a path names, and the row of its setting. Calls nothing."""
        owner, _, name = path.rpartition("/")
        if not owner:
            return {}, row_of("host", name)
        found = re.fullmatch(PATH, owner)
        assert found
        named = found.groupdict()
        for scope in ("device", "port", "uplink"):
            if named[scope] is not None:
                return named, row_of(scope, name)
        return named, row_of("switch", name)

    def setting(self, path: str) -> Setting:
        """A setting by its path: "flow-timeout", "dvs-production/burst-size", "dvs-production/port/3/lro",
        "dvs-production/uplink/nic0/tx-ring-size", "device/nic0/affinity"."""
        named, row = self._row(path)
        if row.scope == "host":
            found = self.settings
        elif row.scope == "device":
            found = Device(str(named["device"])).settings
        elif row.scope == "port":
            port = within("a port number", int(str(named["port"])), PORTS)
            found = self.switch(named["port_switch"]).port_settings(port)
        elif row.scope == "uplink":
            found = NamedUplink(self.switch(named["uplink_switch"]), str(named["uplink"])).settings
        else:
            found = self.switch(named["switch"]).settings
        setting = found[path.rpartition("/")[2]]
        setting.path = path
        return setting

    def all_settings(self) -> "Iterator[Tuple[str, Setting]]":
        """The settings of the host, of all switches, ports and devices, by path.

        Those of uplinks are not among them, since no method lists the names that uplinks have in the configuration. A
        switch whose alias is not known has only the settings that go by its number. A port that has no RSS override by
        its number has none.
        """
        for setting in self.settings.values():
            yield setting.path, setting
        for switch in self.switches():
            has_alias, path = switch.alias is not None, switch.path
            for setting in switch.settings.values():
                if has_alias or "alias" not in setting.row.by:
                    yield setting.path, setting
            for port in switch.ports():
                for setting in switch.port_settings(port.number, path).values():
                    if port.number in setting.row.ports:
                        yield setting.path, setting
        for device in self.devices():
            for setting in device.settings.values():
                yield setting.path, setting

    def plan(self, wanted: "Mapping[str, Any]") -> Plan:
        """A plan of values by path. All names and values are checked before the first call."""
        for path, value in wanted.items():
            check(self._row(path)[1], value)
        return Plan([(self.setting(path), value) for path, value in wanted.items()])

    def temporarily(self, wanted: "Mapping[str, Any]") -> Temporarily:
        """Values by path for the length of a `with` block; behind it is what was there before."""
        return Temporarily(self.plan(wanted))

    # --- Rates ---

    def rates(
        self, every: float = 5, count: "Optional[int]" = None, switches: "Optional[Container[int]]" = None
    ) -> "Iterator[Sample]":
        """The rates of all ports, or of those of some switches, again and again; see `qdp.rates`."""
        from .rates import samples

        return samples(self, every, count, switches)

    def __repr__(self) -> str:
        return "<Host>"


def _no_part(wanted: str) -> "Any":
    raise AssertionError("the host needs no part of a name; asked for {}".format(wanted))
