"""Lists the embedded host, calls every method, or those that are named, as it succeeds and on each of its failure
paths, and prints it all: run by other interpreters, whose output must be the same. The clock is stopped as soon as the
host is made, so that counters are the same too."""

import ctypes
import inspect
import json
import os
import sys

sys.path[:0] = [*sys.argv[1:3], os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")]

from qdp_host import EmbeddedHost  # noqa: E402
from failure_paths import failure_paths  # noqa: E402
from contract import RECIPES  # noqa: E402
from recipes import is_made_of  # noqa: E402

host = EmbeddedHost(sys.argv[1] + "/host")
host.freeze()
host.advance(seconds=1000)

import _libqdp  # noqa: E402

exported = ctypes.PyDLL(_libqdp.__file__)
print(exported.LibraryInit())
NAMES = "dvs-production dvs-storage dvs-smartnic legacy-network portset-0 portset-01 nobody".split()
for function in (exported.DVSAliasToSwitchIdAllTypes, exported.DVSAliasToPortsetName, exported.DVSPortsetNameToAlias):
    for name in NAMES:
        text = ctypes.create_string_buffer(128)
        print(name, function(name.encode(), text), text.value)
for count in range(3):
    for _ in range(count):
        host.script("DVSData_Data", sizes={0: 5})  # a length, and no value
    text = ctypes.create_string_buffer(128)
    print(exported.DVSAliasToPortsetName(b"dvs-production", text), text.value)
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
        print(name, str(inspect.signature(method)), method.__doc__)


def outcome(method, arguments):
    """What a call gives, or the types of the exception and of its cause: their texts are the interpreter's."""
    try:
        return json.dumps(method(*arguments))
    except Exception as failure:
        return type(failure).__name__ + " from " + type(failure.__cause__).__name__


def prepared(name):
    """A host in order, and the arguments with which a method succeeds there."""
    host.reset()
    host.freeze()
    host.advance(seconds=1000)
    exported.LibraryInit()
    return is_made_of(RECIPES[name], _libqdp)


for name in [name for name in RECIPES if name in (sys.argv[3:] or RECIPES)]:
    method = getattr(_libqdp, name)
    arguments = prepared(name)
    with host.recording() as calls:
        print(name, "succeeds:", outcome(method, arguments))
    for path in failure_paths(name, arguments, calls):
        prepared(name)
        if path.refused:
            operation, nth, status = path.refused
            host.fail(operation, status, nth=nth)
        print(f"{name} {path.what} {path.arguments} {path.refused}: {outcome(method, path.arguments)}")
