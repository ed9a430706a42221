"""Lists the embedded host, calls every method with wrong arguments and as it succeeds, and prints it all as JSON: run
by other interpreters, whose output must be the same. The clock is stopped as soon as the host is made, so that counters
are the same too."""

import ctypes
import inspect
import json
import os
import sys

sys.path[:0] = [*sys.argv[1:3], os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")]

from qdp_host import EmbeddedHost  # noqa: E402
from recipes import RECIPES, is_made_of  # noqa: E402

host = EmbeddedHost(sys.argv[1] + "/host")
host.freeze()
host.advance(seconds=1000)

import _libqdp  # noqa: E402

print(ctypes.PyDLL(_libqdp.__file__).LibraryInit())
switches = _libqdp.ListSwitches()
print(json.dumps(switches))
for switch in switches:
    ports = _libqdp.ListPorts(switch["swID"])
    print(json.dumps(ports))
    print(json.dumps([_libqdp.GetPortStats(switch["swID"], port["portID"]) for port in ports]))
for lcore in range(16):
    page = _libqdp.DumpFlowTable(0, lcore, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
    print(json.dumps([(flow["key"], flow["actions"]) for flow in page["list"]]), page["startIndex"])
for name, method in vars(_libqdp).items():
    if inspect.isbuiltin(method):
        try:
            result = json.dumps(method(None))
        except Exception as failure:
            result = type(failure).__name__, type(failure.__cause__).__name__
        print(name, str(inspect.signature(method)), method.__doc__, result)
for name, recipe in RECIPES.items():
    arguments = is_made_of(recipe, _libqdp)
    print(name, json.dumps(getattr(_libqdp, name)(*arguments)))
