"""What the command prints: standard output as a whole, and errors as one line each."""

import os
import sys

OK, USAGE, REFUSED, FOUND, INTERRUPTED = 0, 1, 2, 3, 130  # exit codes


class CommandError(Exception):
    """Ends the command with one line, which says what is wrong and what to do."""

    code = REFUSED


class UsageError(CommandError):
    """A command line that cannot be followed."""

    code = USAGE


def write(text):
    """Writes to standard output; what its encoding lacks is escaped."""
    if sys.stdout is None:
        raise CommandError("standard output is closed")
    try:
        sys.stdout.write(text)
    except UnicodeEncodeError:
        encoding = sys.stdout.encoding
        sys.stdout.write(text.encode(encoding, "backslashreplace").decode(encoding))


def write_lines(lines):
    if lines:
        write("\n".join(lines) + "\n")


def write_json(value, is_pretty):
    import json

    write(json.dumps(value, indent=2 if is_pretty else None) + "\n")


def report(error, as_json=False):
    """Says on standard error what went wrong: a line, or with `-j` an object."""
    method = getattr(error, "method", None) or None
    text = getattr(error, "text", None) or str(error) or type(error).__name__
    if as_json:
        import json

        arguments = list(getattr(error, "arguments", ())) if method else None
        about = {"method": method, "arguments": arguments, "text": text.strip(), "class": type(error).__name__}
        line = json.dumps({"error": about}, default=str)
    else:
        hint = getattr(error, "hint", "")
        line = "qdp: " + " ".join((str(error) or type(error).__name__).split()) + ("; " + hint if hint else "")
    complain(line)


def silence(stream):
    """Nothing is written to a stream any more, not even at the interpreter's end."""
    try:
        os.dup2(os.open(os.devnull, os.O_WRONLY), stream.fileno())
    except (OSError, ValueError, AttributeError):
        pass  # it is closed already


def complain(line):
    """Writes a line to standard error, if that can be written to."""
    try:
        clear_progress()
        sys.stderr.write(line.encode("ascii", "backslashreplace").decode() + "\n")
        sys.stderr.flush()
    except (OSError, ValueError, AttributeError):
        silence(sys.stderr)  # it is closed, or its terminal is


_progress = {"shown": False, "since": None}


def progress(text):
    """Says on a terminal how far a long reading has come, from its second second on."""
    import time

    now = time.monotonic()
    if _progress["since"] is None:
        _progress["since"] = now
    elif now - _progress["since"] >= 1 and is_terminal(sys.stderr):
        _progress["shown"] = True
        sys.stderr.write("\r\033[K" + text)
        sys.stderr.flush()


def clear_progress():
    """Takes the line of progress away; the next reading begins anew."""
    if _progress["shown"]:
        _progress["shown"] = False
        sys.stderr.write("\r\033[K")
        sys.stderr.flush()
    _progress["since"] = None


def is_terminal(stream):
    try:
        return stream is not None and stream.isatty()
    except ValueError:
        return False  # closed


def is_bold():
    return is_terminal(sys.stdout) and not os.environ.get("NO_COLOR") and os.environ.get("TERM") != "dumb"


def terminal_size():
    """Columns and lines of the terminal that standard output is."""
    import shutil

    return shutil.get_terminal_size()
