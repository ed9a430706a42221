"""Runs a script on an embedded host that has been prepared: python3 prepared.py FOLDER PREPARATION SCRIPT ARGUMENTS...

FOLDER is the embedded host's; its clock stands at an hour. PREPARATION is code that knows it as `host`; with it, what
`sleep` waits for passes on that clock at once, and on the script's own.
"""

import os
import runpy
import sys
import time

from qdp_host import EmbeddedHost

_, folder, preparation, *sys.argv = sys.argv
host = EmbeddedHost(folder)
host.freeze()
now = 0.0


def sleep(seconds):
    global now
    host.advance(seconds)
    now += seconds


time.sleep, time.monotonic = sleep, lambda: now
exec(preparation)
sys.path[0] = os.path.dirname(sys.argv[0])  # as when the script is started
runpy.run_path(sys.argv[0], run_name="__main__")
