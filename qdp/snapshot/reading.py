"""The reading process of a snapshot: writes the lines of the sections that it is asked for to standard output.

It is a process of its own because a call of the platform that hangs holds the interpreter lock: nothing else could end
it, note it, and go on with the next section.
"""

import gc
import os
import sys
import time

from . import lines, sweep


def read(write, wanted, interval, start, flow_pages):
    """Writes the lines of (reading, section) pairs. A reading begins its number of intervals after
    the first; `start` is when that began, where a process before this one has read it."""
    reading, asker = None, None
    for number, name in wanted:
        if number == 1 and reading is None:
            start = time.monotonic()
        if number != reading:
            time.sleep(max(0, start + (number - 1) * interval - time.monotonic()))
            reading, asker = number, sweep.Asker(write, flow_pages)
        write(lines.section_line(number, name))
        sweep.BY_NAME[name](asker)
        write(lines.dumped({"ended": name, "how": "read"}))


def main(interval, start, flow_pages, *wanted):
    """`wanted`: "1/ports" for the ports of the first reading."""
    gc.disable()  # answers hold no cycles
    # What the platform prints must not get between the lines. Each line is written at once: one that hangs loses none.
    out = os.fdopen(os.dup(1), "wb", 0)
    os.dup2(2, 1)
    pairs = [each.split("/") for each in wanted]
    try:
        read(out.write, [(int(number), name) for number, name in pairs], float(interval), float(start), int(flow_pages))
    except (BrokenPipeError, KeyboardInterrupt):
        os._exit(0)  # nobody reads it any more
