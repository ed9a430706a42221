"""The reading process of the exporter: sweeps the host each time that it is asked, and sends what it finds.

It is a process of its own because a call of the platform that hangs holds the interpreter lock: no thread of the same
process could answer a scrape then. The first frame on standard input restores the counters of the reading process
before this one; each further one asks for a sweep. The answer is one frame a collector, and a last one. A frame is its
length in four bytes and a marshalled object.
"""

import marshal
import os
import struct
import sys

from . import collect, render

LENGTH = struct.Struct("<I")
END = "end"  # the last frame: (END, failures by method, omitted series, state of the counters)


def pack(content):
    data = marshal.dumps(content)
    return LENGTH.pack(len(data)) + data


def frames(file):
    """The contents of the frames of a blocking file, until it ends."""
    while True:
        head = file.read(LENGTH.size)
        if len(head) < LENGTH.size:
            return
        yield marshal.loads(file.read(LENGTH.unpack(head)[0]))


def serve(requests, answers, options):
    """Answers every request with a sweep, until they end."""
    platform, series = collect.Platform(), render.Series()
    series.restore(next(requests, {}))
    for _ in requests:
        sweep = collect.Sweep(platform, series, options)
        for frame in sweep.read():
            answers.write(pack(frame))
            answers.flush()
        answers.write(pack((END, platform.failures, sweep.omitted, series.state())))
        answers.flush()


def main(include, exclude, max_series):
    # What the platform prints must not get between the frames.
    answers = os.fdopen(os.dup(1), "wb")
    os.dup2(2, 1)
    try:
        serve(frames(sys.stdin.buffer), answers, collect.Options(include, exclude or None, int(max_series)))
    except (BrokenPipeError, KeyboardInterrupt):
        os._exit(0)  # the exporter is gone


if __name__ == "__main__":
    main(*sys.argv[1:])
