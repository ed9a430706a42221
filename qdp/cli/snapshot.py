"""`qdp snapshot`: the host's state in one file."""

import os

from ._declare import Object, Option, Run, natural
from ._output import OK, CommandError, UsageError, clear_progress, progress, write_json

FILE = Option("file", metavar="FILE", help="the file to write")
PRIVACY = (
    Option("--anonymize", action="store_true", help="replace addresses and names by tokens; raw captures are left out"),
    Option(
        "--key-file", metavar="KEY", help="tokens are the same in all files of this key; it is made if it is not there"
    ),
)


def write_file(target, options, read):
    """Writes a snapshot, by way of one that is not anonymized where that is wanted. `read` writes that one."""
    try:
        if not options.anonymize:
            if options.key_file:
                raise UsageError("--key-file goes with --anonymize")
            read(target)
        else:
            import tempfile

            from ..snapshot.anonymize import anonymize, key_from

            with tempfile.TemporaryDirectory(dir=os.path.dirname(os.path.abspath(target))) as folder:
                plain = os.path.join(folder, "plain")
                read(plain)
                anonymize(plain, target, key_from(options.key_file))
    except OSError as error:
        raise CommandError("cannot write {}: {}".format(error.filename or target, error.strerror or error))
    finally:
        clear_progress()
    if options.json:
        write_json([{"file": target, "bytes": os.path.getsize(target)}], options.pretty)
    return OK


def run(context):
    options = context.options
    if options.of and options.capture_of:
        raise UsageError("--of and --capture-of exclude each other")
    if options.capture_of:
        return extract_capture(options)

    def read(target):
        from ..snapshot import write

        write.write(target, write.Options(flow_pages=options.flows), progress)

    def copy(target):
        import shutil

        from ..snapshot.read import Snapshot

        Snapshot(options.of)  # it is whole
        shutil.copyfile(options.of, target)

    if options.of and not options.anonymize:
        raise UsageError("--of goes with --anonymize")
    return write_file(options.file, options, copy if options.of else read)


def extract_capture(options):
    from ..snapshot.read import Snapshot

    lines = list(Snapshot(options.capture_of).capture())
    if not lines:
        raise CommandError("{} holds no capture of the platform's calls".format(options.capture_of))
    try:
        with open(options.file, "xb") as file:
            file.writelines(lines)
    except OSError as error:
        raise CommandError("cannot write {}: {}".format(options.file, error.strerror))
    if options.json:
        write_json([{"file": options.file, "bytes": os.path.getsize(options.file)}], options.pretty)
    return OK


OBJECT = Object(
    "snapshot",
    "the host's state in one file",
    Run(
        "write",
        "read everything that can be read into one file, which `qdp --from FILE` shows",
        run,
        selectors=[FILE],
        options=[
            Option("--flows", metavar="N", type=natural, default=4, help="pages of flows of each lcore (default: 4)"),
            Option("--of", metavar="SNAPSHOT", help="anonymize this snapshot instead of reading the host"),
            Option("--capture-of", metavar="SNAPSHOT", help="write the capture that this snapshot holds, for qdp-host"),
        ]
        + list(PRIVACY),
    ),
)
