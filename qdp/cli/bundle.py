"""`qdp bundle`: what support needs of a host, in one file."""

from ._declare import Object, Option, Run, natural, seconds
from ._output import progress
from .snapshot import FILE, PRIVACY, write_file


def run(context):
    options = context.options

    def read(target):
        from ..snapshot import sweep, write

        names = [name for name, _ in sweep.SECTIONS + sweep.MORE_SECTIONS]
        wanted = write.Options(names, 2, options.interval, options.flows, options.timeout)
        write.write(target, wanted, progress)

    return write_file(options.file, options, read)


OBJECT = Object(
    "bundle",
    "what support needs of this host",
    Run(
        "write",
        "a snapshot twice, so that rates can be told, with the balancer's debug buffer and the hardware tables",
        run,
        selectors=[FILE],
        options=[
            Option("--flows", metavar="N", type=natural, default=16, help="pages of flows of each lcore (default: 16)"),
            Option(
                "--interval", metavar="TIME", type=seconds, default=10.0,
                help="between the readings (default: 10s)",
            ),
            Option(
                "--timeout", metavar="TIME", type=seconds, default=30.0,
                help="give up a section that says nothing for so long (default: 30s)",
            ),
        ]
        + list(PRIVACY),
    ),
)  # fmt: skip
