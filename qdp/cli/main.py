"""The command's entry: finds the verb, parses its command line, runs it, and turns what happens into an exit code."""

import sys

from . import load, object_names
from ._output import INTERRUPTED, OK, REFUSED, CommandError, UsageError, report, silence, write_json, write_lines

HEAD = "usage: qdp [--from SNAPSHOT] OBJECT [VERB] [SELECTORS] [OPTIONS]"


def main(arguments=None):
    """Runs a command line, and gives the exit code."""
    arguments = sys.argv[1:] if arguments is None else list(arguments)
    try:
        code = guarded(arguments)
        if sys.stdout is not None:
            sys.stdout.flush()
        return code
    except KeyboardInterrupt:
        silence(sys.stdout)
        return INTERRUPTED
    except BrokenPipeError:
        silence(sys.stdout)  # the reader has seen enough
        return OK
    except OSError as error:
        silence(sys.stdout)
        report(CommandError("cannot write: {}".format(error)), is_json(arguments))
        return REFUSED


def guarded(arguments):
    """Runs a command line; whatever is wrong becomes a line on standard error."""
    from ..errors import QdpError

    try:
        return run(arguments)
    except CommandError as error:
        report(error, is_json(arguments))
        return error.code
    except QdpError as error:
        report(error, is_json(arguments))
        return REFUSED
    except SystemExit as end:  # of --help
        return end.code or OK
    except (BrokenPipeError, KeyboardInterrupt):
        raise
    except Exception as error:  # pylint: disable=broad-except
        if isinstance(error, OSError):
            raise
        text = "internal error: {}: {}; please report this with the command line".format(type(error).__name__, error)
        report(CommandError(text), is_json(arguments))
        return REFUSED


def is_json(arguments):
    """Whether errors are wanted as JSON; known before a command line is understood."""
    return any(
        word in ("--json", "--pretty") or word[:1] == "-" and word[1:2] in ("j", "p") for word in arguments
    )


def run(arguments):
    if not arguments or arguments[0] in ("-h", "--help", "help"):
        write_lines(overview())
        return OK
    if arguments[0] == "--version":
        from .. import __version__

        write_lines(["qdp " + __version__])
        return OK
    snapshot = None
    if arguments[0] == "--from" or arguments[0].startswith("--from="):
        snapshot, arguments = from_file(arguments)
    name, rest = arguments[0], arguments[1:]
    if name not in object_names():
        raise UsageError("there is no object {!r}; there are {}".format(name, ", ".join(object_names())))
    thing = load(name)
    verb, words = thing.find(rest)
    if rest and rest[0] in ("-h", "--help") or verb is None:
        if verb is None and not (rest and rest[0] in ("-h", "--help")):
            raise UsageError("qdp {} needs a verb: {}".format(name, ", ".join(thing.verbs)))
        write_lines(overview_of(thing))
        return OK

    from ._parser import parser_of, prepared

    options = parser_of(thing, verb).parse_args(prepared(rest[words:]))
    options.json = options.json or options.pretty
    options.snapshot = None
    options.default_verb_of = None if words else thing.name
    if snapshot is not None:
        answer_from(snapshot, thing, verb, options)
    return run_verb(verb, options)


def from_file(arguments):
    """The file of --from, and the arguments behind it."""
    _, equals, file = arguments[0].partition("=")
    rest = arguments[1:] if equals else arguments[2:]
    file = file if equals else "".join(arguments[1:2])
    if not file or not rest:
        raise UsageError("--from takes the file of a snapshot, and what to show of it: `qdp --from FILE port show`")
    return file, rest


def answer_from(file, thing, verb, options):
    """Lets a snapshot answer in place of this host."""
    from ..snapshot.read import Snapshot

    if not verb.reads_snapshots or getattr(options, "watch", None) is not None:
        what = "{} {}{}".format(thing.name, verb.name, " --watch" if verb.reads_snapshots else "")
        raise UsageError("`qdp {}` needs a host; a snapshot can only be read".format(what))
    options.snapshot = Snapshot(file)
    options.snapshot.answer()


def run_verb(verb, options):
    from ..errors import QdpError
    from ._declare import Read, Write
    from ._rows import UnknownColumn

    try:
        if isinstance(verb, Read):
            from ._read import run_read

            return run_read(verb, options)
        if isinstance(verb, Write):
            from ._write import run_write

            return run_write(verb, options)
        from ._context import Context

        return verb.run(Context(verb, options))
    except UnknownColumn as error:
        raise UsageError(str(error))
    except (QdpError, CommandError) as error:
        # Whoever reads JSON gets an array, even where nothing could be read. A watch has its own documents.
        if options.json and getattr(options, "watch", None) is None and not isinstance(error, UsageError):
            write_json([], options.pretty)
        raise


def overview():
    """The lines of `qdp --help`."""
    things = [load(name) for name in object_names()]
    widest = max(len(thing.name) for thing in things)
    about = "Shows and steers the host's accelerated packet datapath. The verb is `show` unless one is given."
    lines = [HEAD, "", about, ""]
    for thing in things:
        verbs = ", ".join(thing.verbs)
        lines.append("  {}  {} ({})".format(thing.name.ljust(widest), thing.help, verbs))
    lines += ["", "`qdp OBJECT --help` lists the verbs of an object, `qdp OBJECT VERB --help` the options of a verb."]
    return lines + ["`qdp --version` prints the version."]


def overview_of(thing):
    """The lines of `qdp OBJECT --help`."""
    widest = max(map(len, thing.verbs))
    usage = "usage: qdp {} [VERB] [SELECTORS] [OPTIONS]".format(thing.name)
    lines = [usage, "", thing.help[:1].upper() + thing.help[1:] + ".", ""]
    for name, verb in thing.verbs.items():
        selectors = " ".join(option.usage for option in verb.selectors)
        lines.append("  {}  {}{}".format(name.ljust(widest), verb.help, " (" + selectors + ")" if selectors else ""))
    return lines + ["", "`qdp {} VERB --help` lists the options of a verb.".format(thing.name)]


if __name__ == "__main__":
    sys.exit(main())
