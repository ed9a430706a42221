"""Runs the command qdp of the checkout; script/qdp calls it on the embedded host. `-m qdp` would prefer the sources of
the current folder to the build."""

import sys

from qdp.cli.main import main

if __name__ == "__main__":
    sys.exit(main())
