"""`qdp mirror`: mirror sessions of the SmartNIC, and the encapsulation of mirrored traffic."""

from ._context import place
from ._declare import SWITCH, Column, Object, Option, Read, address, number
from ._output import CommandError


def show(context):
    """A row for each session, and with --port for each mirror of a port."""
    if context.options.port is None:
        lines = context.ask("P4MirrorTableDump")
    else:
        lines = context.ask("P4PortMirrorTableDump", context.options.port, context.options.value)
    for line in lines or ():
        yield {"session": line}


def span(context):
    options = context.options
    switch = context.switch(options.switch)
    is_ipv6 = int(options.destination.version == 6)
    record = context.call("GetL3SPANRecord", switch["swID"], is_ipv6, str(options.destination), options.value)
    if not record["isValid"]:
        text = "switch {} ({}) mirrors nothing to {}"
        raise CommandError(text.format(switch["swID"], switch["name"], options.destination))
    yield dict(place(switch), destination=str(options.destination), **record)


VALUE = Option("--value", metavar="N", type=number, default=0, help="passed to the datapath (default: 0)")

OBJECT = Object(
    "mirror",
    "mirrored traffic",
    Read(
        "show",
        "the mirror sessions, or the mirrors of a port of the SmartNIC",
        show,
        methods=["P4MirrorTableDump", "P4PortMirrorTableDump"],
        options=[Option("--port", metavar="N", type=number, help="the mirrors of this port of the SmartNIC"), VALUE],
        identity=["session"],
        columns=[Column("session", priority=9)],
    ),
    Read(
        "span",
        "the encapsulation of traffic that is mirrored to an address",
        span,
        methods=["GetL3SPANRecord"],
        selectors=[SWITCH, Option("destination", metavar="ADDRESS", type=address, help="where it is mirrored to")],
        options=[VALUE],
        identity=["swID", "name", "destination"],
        counts=False,
    ),
)
