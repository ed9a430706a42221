"""Says what the layer makes of every method's success and failures; any interpreter that it is for runs this.

calls.py BUILD PACKAGES [python]: the build, the folder of qdp_host, and whether to go without the C helper.
"""

import copy
import ctypes
import json
import os
import pickle
import sys

BUILD, PACKAGES = sys.argv[1:3]
sys.path[:0] = [BUILD, PACKAGES, os.path.join(os.path.dirname(__file__), "..")]
if sys.argv[3:] == ["python"]:
    sys.modules["qdp._call"] = None

from qdp_host import EmbeddedHost  # noqa: E402

host = EmbeddedHost(os.path.join(BUILD, "host"))

import _libqdp  # noqa: E402

import qdp  # noqa: E402
from contract import RECIPES  # noqa: E402
from failure_paths import failure_paths  # noqa: E402
from recipes import is_made_of  # noqa: E402

exported = ctypes.PyDLL(_libqdp.__file__)


def prepare(name, path=None):
    host.reset()
    host.freeze()
    exported.LibraryInit()
    arguments = is_made_of(RECIPES[name], _libqdp)
    if path and path.refused:
        operation, nth, status = path.refused
        host.fail(operation, status, nth=nth)
    return arguments


def outcome(call, *arguments):
    try:
        result = call(*arguments)
    except qdp.QdpError as failure:
        assert pickle.loads(pickle.dumps(failure)).args == failure.args
        return "{}: {!r} from {}".format(type(failure).__name__, failure.text, type(failure.__cause__).__name__)
    assert pickle.loads(pickle.dumps(result)) == copy.deepcopy(result) == result
    return json.dumps(result, default=vars)


for name in RECIPES:
    arguments = prepare(name)
    print(name, "succeeds:", outcome(getattr(qdp.methods, name), *arguments))
    prepare(name)
    with host.recording() as calls:
        outcome(qdp.call_raw, name, *arguments)
    for path in failure_paths(name, arguments, calls):
        prepare(name, path)
        # Texts of the interpreter's own exceptions differ from version to version.
        said = outcome(qdp.call, name, *path.arguments)
        own_text = said.startswith("InvalidArgument") and name == "DumpLBStats"
        print(name, path.what, path.arguments, path.refused, said.partition(":")[0] if own_text else said)

prepare("ListPorts")
flow = qdp.call("DumpFlowTable", 0, 12, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)["list"][0]
print(flow.parsed_key, flow.parsed_actions)
print(sorted(qdp.__all__), qdp.Refused.__mro__[1].__name__, "call" in dir(qdp), hasattr(qdp, "nothing"))
assert sys.modules["qdp.call"]._capture.__name__ == ("qdp._capture" if sys.argv[3:] else "qdp._call")
