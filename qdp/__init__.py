"""The operator layer of the datapath: `_libqdp` with results as records and failures as exceptions.

    import qdp

    for port in qdp.call("ListPorts", 0):
        print(port.portID, port.hwAddr)
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
    from . import methods, records

    __version__: str

__all__ = [
    "BadAnswer",
    "BalancerRunning",
    "InvalidArgument",
    "NotApplied",
    "NotFound",
    "NotStored",
    "OutOfMemory",
    "QdpError",
    "Refused",
    "Unsupported",
    "__version__",
    "call",
    "call_raw",
    "methods",
    "records",
]

# What is loaded when it is first used: a module of the package, or None for one that has the name itself.
_LATER = {
    "__version__": "_version",
    "methods": None,
}


class _Package(type(sys)):  # type: ignore[misc]
    """The package as a module that loads the rest of itself on use, on every interpreter."""

    def __getattr__(self, name):
        if name not in _LATER:
            raise AttributeError("module 'qdp' has no attribute {!r}".format(name))
        import importlib

        module = importlib.import_module("qdp." + (_LATER[name] or name))
        value = getattr(module, name) if _LATER[name] else module
        setattr(self, name, value)
        return value

    def __dir__(self):
        return sorted(set(vars(self)) | set(_LATER))


sys.modules[__name__].__class__ = _Package
