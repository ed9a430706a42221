"""The embedded host: stand-ins for the two platform libraries that act like one host, under a script's control.

    import qdp_host

    with qdp_host.running(scenario="mux") as host:
        import _libqdp                          # finds the stand-ins, which are loaded already

        host.fail("Qdp_Get_Port_List", status=7)
        assert _libqdp.ListPorts(0) is None

`qdp-host run script.py` runs a script on it; with pytest, the fixture `qdp_host` is the host of a test. `serving()` is
a host that several processes share.
"""

from ._host import Call, Capacity, EmbeddedHost, NullBuffer, Snapshot, running
from ._places import HostError
from ._shared import VARIABLE, SharedHost, serving

__all__ = [
    "Call",
    "Capacity",
    "EmbeddedHost",
    "HostError",
    "NullBuffer",
    "SharedHost",
    "Snapshot",
    "VARIABLE",
    "running",
    "serving",
]
