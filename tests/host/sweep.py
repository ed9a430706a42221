"""Calls every method and every other exported function that calls the platform, and prints what they return."""

import ctypes
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))

import _libqdp  # noqa: E402
from contract import RECIPES  # noqa: E402
from recipes import is_made_of  # noqa: E402

OTHER_ALIAS = "dvs-storage"  # of a switch without settings of its own, for which the datapath answers


def main():
    ctypes.CDLL("libqdphost.so").qdp_host_freeze_time()
    exported = ctypes.PyDLL(_libqdp.__file__)
    print("LibraryInit", exported.LibraryInit())
    for name, recipe in RECIPES.items():
        # Both go to the same place, so that the order of results and messages is seen.
        print(name, getattr(_libqdp, name)(*is_made_of(recipe, _libqdp)), file=sys.stderr, flush=True)
    for name in ("GetSwitchBurstSize", "GetSwitchOverlayL2Flow"):
        print(name, getattr(_libqdp, name)(OTHER_ALIAS), file=sys.stderr, flush=True)
    for function, argument, size in [
        ("DVSAliasToSwitchId", b"dvs-production", 64),
        ("DVSAliasToSwitchIdAllTypes", b"dvs-production", 64),
        ("DVSAliasToSwitchId", b"no such alias", 64),
        ("DVSPortsetNameToAlias", b"portset-0", 128),
        ("DVSPortsetNameToAlias", b"no such portset", 128),
        ("DVSAliasToPortsetName", b"dvs-production", 128),
    ]:
        buffer = ctypes.create_string_buffer(size)
        print(function, argument, getattr(exported, function)(argument, buffer), buffer.raw)
    print("DVPortExist", exported.DVPortExist(*[ctypes.c_size_t(0)] * 6))


main()
