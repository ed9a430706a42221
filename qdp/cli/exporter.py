"""`qdp exporter`: the host's health for Prometheus."""

from ._declare import Object, Option, Run
from ._output import OK, CommandError, UsageError

DEFAULT_LISTEN = "127.0.0.1:9818"
MOST_PORT = 65535


def address(text):
    """("127.0.0.1", 9818) of "127.0.0.1:9818", ("::1", 9818) of "[::1]:9818"."""
    host, _, port = text.rpartition(":")
    if not host or not port.isdigit() or int(port) > MOST_PORT:
        raise ValueError(text)
    return host.strip("[]"), int(port)


def pattern(text):
    """A regular expression."""
    import re

    try:
        re.compile(text)
    except re.error:
        raise ValueError(text)
    return text


def run(context):
    options = context.options
    if options.listen and options.textfile:
        raise UsageError("--listen and --textfile exclude each other")
    try:
        from ..exporter import collect, main
    except ImportError as error:
        if error.name != "prometheus_client":
            raise
        raise CommandError("the Python package prometheus_client is missing; install python3-prometheus-client")
    wanted = collect.Options(options.include or collect.DEFAULT_PORTS, options.exclude, options.max_series)
    try:
        if options.textfile:
            main.write(options.textfile, wanted)
        else:
            main.serve(options.listen or address(DEFAULT_LISTEN), wanted)
    except main.ExporterError as error:
        raise CommandError(str(error))
    return OK


OBJECT = Object(
    "exporter",
    "the host's health for Prometheus",
    Run(
        "serve",
        "serve the metrics until SIGTERM, or write them into a folder once",
        run,
        options=[
            Option("--listen", metavar="HOST:PORT", type=address, help="serve there (default: " + DEFAULT_LISTEN + ")"),
            Option("--textfile", metavar="DIR", help="write qdp.prom into this folder once, and end"),
            Option(
                "--include",
                metavar="REGEX",
                type=pattern,
                help='ports to report, by "SWITCH NAME/PORT/CLIENT TYPE" (default: VNIC and uplink ports)',
            ),
            Option("--exclude", metavar="REGEX", type=pattern, help="ports to leave out, in the same words"),
            Option(
                "--max-series",
                metavar="N",
                type=int,
                default=20000,
                help="leave out the ports beyond so many series, uplinks last (default: 20000)",
            ),
        ],
    ),
)
