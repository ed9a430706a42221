"""The command `qdp`, as `python3 -m qdp`."""

import sys

from .cli.main import main

sys.exit(main())
