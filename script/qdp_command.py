"""Runs the command qdp of the checkout; script/qdp calls it on the embedded host."""

import sys

try:
    from qdp.cli.main import main
except ImportError as error:
    sys.exit("qdp: the command is not part of this checkout yet: {}".format(error))

if __name__ == "__main__":
    sys.exit(main())
