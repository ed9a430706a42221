"""The operator layer of the datapath: `_libqdp` with results as records and failures as exceptions.

    import qdp

    for port in qdp.call("ListPorts", 0):
        print(port.portID, port.hwAddr)

    for switch in qdp.Host().switches():
        print(switch.path, switch.settings["lro"].value, [port.number for port in switch.uplinks()])
"""

import sys

from .call import call, call_raw
from .errors import (
    BadAnswer,
    BalancerRunning,
    InvalidArgument,
    NotApplied,
    NotFound,
    NotStored,
    OutOfMemory,
    QdpError,
    Refused,
    Unsupported,
)

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, List

    from . import methods, rates, records, settings
    from .flows import Flow
    from .host import Device, Host
    from .nic import Nic
    from .settings import Change, Plan, Setting
    from .switch import Lcore, Port, Switch, Uplink

    __version__: str

__all__ = [
    "BadAnswer",
    "BalancerRunning",
    "Change",
    "Device",
    "Flow",
    "Host",
    "InvalidArgument",
    "Lcore",
    "Nic",
    "NotApplied",
    "NotFound",
    "NotStored",
    "OutOfMemory",
    "Plan",
    "Port",
    "QdpError",
    "Refused",
    "Setting",
    "Switch",
    "Unsupported",
    "Uplink",
    "__version__",
    "call",
    "call_raw",
    "methods",
    "rates",
    "records",
    "settings",
]

# What is loaded when it is first used: a module of the package, or None for one that has the name itself.
_LATER = {
    "Change": "settings",
    "Device": "host",
    "Flow": "flows",
    "Host": "host",
    "Lcore": "switch",
    "Nic": "nic",
    "Plan": "settings",
    "Port": "switch",
    "Setting": "settings",
    "Switch": "switch",
    "Uplink": "switch",
    "__version__": "_version",
    "methods": None,
    "rates": None,
    "settings": None,
}


class _Package(type(sys)):  # type: ignore[misc]
    """The package as a module that loads the rest of itself on use, on every interpreter."""

    def __getattr__(self, name: str) -> "Any":
        if name not in _LATER:
            raise AttributeError("module 'qdp' has no attribute {!r}".format(name))
        import importlib

        module = importlib.import_module("qdp." + (_LATER[name] or name))
        value = getattr(module, name) if _LATER[name] else module
        setattr(self, name, value)
        return value

    def __dir__(self) -> "List[str]":
        return sorted(set(vars(self)) | set(_LATER))


sys.modules[__name__].__class__ = _Package
