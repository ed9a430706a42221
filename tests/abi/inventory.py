"""Lists the embedded host, calls every method once with wrong arguments, and prints it all as JSON: run by other
interpreters, whose output must be the same."""

import ctypes
import inspect
import json
import sys

sys.path[:0] = sys.argv[1:3]

from qdp_host import EmbeddedHost  # noqa: E402

host = EmbeddedHost(sys.argv[1] + "/host")
host.freeze()

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
