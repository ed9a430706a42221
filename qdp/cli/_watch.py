"""Watching: a verb's rows again and again, with the growth of their counters in place of totals."""

import signal
import sys
import time

from ._output import is_terminal, terminal_size, write, write_json, write_lines
from ._read import View, counters_of, read_rows
from ._rows import for_json

AROUND = 3  # the title, a blank line and the cursor


def grown_rows(verb, old, new, seconds, is_delta):
    """The rows with growth a second in place of counters, or with the growth itself; None after a reset, and for a row
    that was not there before."""
    from ..rates import growth

    before = {name_of(verb, row): row for row in old}
    for row in new:
        earlier = before.get(name_of(verb, row), {})
        row = dict(row)
        for key in counters_of(verb, row):
            if earlier.get(key) is None or row[key] is None:
                row[key] = None
                continue
            bits = 32 if verb.narrow is True or key in (verb.narrow or ()) else 64
            grown = growth(earlier[key], row[key], bits)
            row[key] = grown if grown is None or is_delta else grown / seconds
        yield row


def name_of(verb, row):
    """What names a row from one frame to the next."""
    return repr([row.get(key) for key in verb.identity])


def watch(context):
    """Shows frames until they were counted, the reader has gone, or Ctrl-C."""
    options, verb = context.options, context.verb
    is_live = is_terminal(sys.stdout) and not options.json
    # On a terminal the first frame comes soon, however long the others take.
    start = time.monotonic() - (max(options.watch - 1, 0) if is_live else 0)
    old, old_time = read_rows(context), time.monotonic()
    frame = 0
    while options.count is None or frame < options.count:
        frame += 1
        show_again = wait_until(start + frame * options.watch, is_live)
        for _ in show_again:  # each time that the terminal is resized
            if frame > 1:
                draw(view, rows, frame - 1, options)
        new, new_time = read_rows(context), time.monotonic()
        seconds = max(new_time - old_time, 1e-9)
        rows = list(grown_rows(verb, old, new, seconds, options.delta))
        view = View(context, new)
        rows = view.select(rows)
        if options.json:
            now = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())
            document = {"time": now, "seconds": round(seconds, 6), "rows": [view.for_json(row) for row in rows]}
            write_json(for_json(document), False)
        elif is_live:
            draw(view, rows, frame, options)
        else:
            write_lines([""] * (frame > 1) + view.lines(rows, suffix_of(options)))
        sys.stdout.flush()
        old, old_time = new, new_time
    return context.code


def suffix_of(options):
    return "+" if options.delta else "/s"


def draw(view, rows, frame, options):
    """Draws a frame from the top of the terminal."""
    title = "every {:g} s, frame {}, {}".format(options.watch, frame, time.strftime("%H:%M:%S"))
    size = terminal_size()
    lines = view.lines(rows, suffix_of(options), max(size.lines - AROUND, 2))
    write("\033[H\033[J" + "\n".join([title[: size.columns], ""] + lines) + "\n")
    sys.stdout.flush()


def wait_until(end, is_live):
    """Waits; yields each time that the terminal is resized meanwhile."""
    if is_live:
        signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGWINCH])
    while True:
        left = end - time.monotonic()
        if left <= 0:
            return
        if not is_live:
            time.sleep(left)
        elif signal.sigtimedwait([signal.SIGWINCH], left) is not None:
            yield
