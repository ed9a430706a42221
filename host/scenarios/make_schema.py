#!/usr/bin/env python3
"""Makes schema.json, beside this script, from the descriptions in host/scenario/ as a build has them.

    host/scenarios/make_schema.py [BUILD]
"""

import argparse
import ctypes
import pathlib

HERE = pathlib.Path(__file__).resolve().parent
RELEASE = HERE.parent.parent / "build" / "release"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("build", nargs="?", type=pathlib.Path, default=RELEASE, help="instead of build/release")
    library = ctypes.PyDLL(str(parser.parse_args().build.resolve() / "host" / "libqdphost.so"))
    library.qdp_host_schema.restype = ctypes.c_char_p
    (HERE / "schema.json").write_bytes(library.qdp_host_schema())


if __name__ == "__main__":
    main()
