"""`qdp setting`: settings of host, switches, ports, uplinks and devices: shown, set, tried and applied from files."""

import fnmatch
import sys

from ..settings import SETTINGS
from ._declare import WRITING, Column, Object, Option, Read, Run, seconds
from ._output import INTERRUPTED, OK, REFUSED, UsageError, complain, is_terminal, write_json, write_lines
from ._write import agreed, show_table

# The settings that are masks, which JSON shows as hexadecimal text.
MASKS = frozenset(("fpo-models", "dscp-mask"))
COLUMNS = (Column("setting", "path", priority=9), Column("before", priority=8), Column("after", priority=9))


def value_of(setting, value):
    """A setting's value as JSON has it."""
    return hex(value) if setting.name in MASKS and value is not None else value


def text_of(setting, value):
    from ..settings import show

    return "-" if value is None and setting.row.type != "queue" else show(setting.row, value)


def wanted(context):
    """(path, setting) of what the pattern names: a path, or any path that it matches."""
    pattern = context.options.pattern
    host = context.source.host
    if pattern is not None and not set(pattern) & set("*?["):
        from ..errors import QdpError

        try:
            yield pattern, host.setting(pattern)
            return
        except QdpError:
            pattern = "*{}*".format(pattern)
    is_any = False
    for path, setting in host.all_settings():
        if pattern is None or fnmatch.fnmatchcase(path, pattern):
            is_any = True
            yield path, setting
    if not is_any:
        raise UsageError("no setting is named {!r}; `qdp setting show` lists them".format(context.options.pattern))


def show(context):
    from ..errors import QdpError

    for path, setting in wanted(context):
        context.progress(path)
        row = setting.row
        value = None
        if setting.is_readable:
            try:
                value = setting.get()
            except QdpError as error:
                context.refuse(error)
                continue
        yield {
            "path": path,
            "value": value_of(setting, value),
            "text": text_of(setting, value),
            "scope": row.scope,
            "unit": row.unit or None,
            "stored": row.stored,
            "danger": row.danger or None,
            "caveat": row.caveat or None,
            "help": row.help,
        }


def given(host, values):
    """The plan for values by path, of which texts are parsed, and its settings by path."""
    settings = {path: host.setting(path) for path in values}
    wanted = {
        path: settings[path].parse(value) if isinstance(value, str) else value for path, value in values.items()
    }
    return host.plan(wanted), settings


def planned(context, values):
    return given(context.source.host, values)


def named(context):
    return {context.options.path: context.options.value}


def filed(context):
    """The values of a file of desired settings."""
    import json

    name = context.options.file
    try:
        if name == "-":
            text = sys.stdin.read()
        else:
            with open(name, encoding="utf-8") as file:
                text = file.read()
        values = json.loads(text, object_pairs_hook=no_repeats)
    except (OSError, ValueError, RecursionError) as error:
        raise UsageError("{}: {}".format(name, error))
    if not isinstance(values, dict):
        raise UsageError("{}: not an object of paths and values; `qdp setting schema` prints its schema".format(name))
    values.pop("$schema", None)
    return values


def no_repeats(pairs):
    found = dict(pairs)
    if len(found) < len(pairs):
        raise ValueError("a key stands there twice")
    return found


def rows_of(changes, settings, done):
    return [
        {
            "path": change.path,
            "before": value_of(settings[change.path], change.before),
            "after": value_of(settings[change.path], change.after),
            "changed": change.changes,
            "done": done,
        }
        for change in changes
    ]


def show_changes(context, changes, settings, done):
    if context.options.json:
        write_json(rows_of(changes, settings, done), context.options.pretty)
        return
    rows = []
    for change in changes:
        setting = settings[change.path]
        before = text_of(setting, change.before) if change.verified else "(not readable)"
        rows.append({"path": change.path, "before": before, "after": text_of(setting, change.after)})
    if not changes:
        write_lines(["nothing changes" if done is None else "nothing to do: all is as wanted"])
    else:
        show_table(COLUMNS, rows)


def dangers(changes, settings):
    """What the changes can cost, in words."""
    found = ["{}: {}".format(change.path, settings[change.path].row.danger) for change in changes
             if settings[change.path].row.danger]  # fmt: skip
    return "; ".join(found)


def change(values_of):
    def run(context):
        options = context.options
        plan, settings = planned(context, values_of(context))
        expected = plan.diff()
        if options.dry_run:
            show_changes(context, expected, settings, False)
            return context.code
        if not agreed(options, dangers(expected, settings), [each.path for each in expected]):
            return REFUSED
        show_changes(context, plan.apply(), settings, True)
        return context.code

    return run


def plan(context):
    plan, settings = planned(context, filed(context))
    show_changes(context, plan.diff(), settings, False)
    return context.code


class GoBack(Exception):
    """The process is to end, and what it tries to go back."""


def try_(context):
    """Sets a value, waits for its confirmation, and goes back without one, whatever ends the process but SIGKILL."""
    import signal

    options = context.options
    plan, settings = planned(context, named(context))
    unreadable = [path for path, setting in settings.items() if not setting.is_readable]
    if unreadable:
        raise UsageError("{} cannot be read, and so not gone back to; use `qdp setting set`".format(unreadable[0]))
    expected = plan.diff()
    if options.dry_run or not expected:
        show_changes(context, expected, settings, False)
        return OK
    if not agreed(options, dangers(expected, settings), [each.path for each in expected]):
        return REFUSED

    def end(number, frame):
        raise KeyboardInterrupt if number == signal.SIGINT else GoBack(signal.Signals(number).name)

    ending = (signal.SIGTERM, signal.SIGHUP, signal.SIGINT)
    is_kept, reason, changes = False, "not confirmed", expected
    try:
        for each in ending:
            signal.signal(each, end)
        changes = plan.apply()
        texts = [text_of(settings[changes[0].path], value) for value in (changes[0].before, changes[0].after)]
        say("{}: {} -> {}".format(changes[0].path, *texts))
        is_kept = is_confirmed(options.duration)
    except GoBack as error:
        reason = str(error)
    except KeyboardInterrupt:
        reason = "SIGINT"
    finally:
        for each in ending:
            signal.signal(each, signal.SIG_IGN)
        failed = [] if is_kept else plan.restore()
    if is_kept:
        say("kept")
    elif failed:
        say("NOT set back: {}; set it by hand".format(", ".join(failed)))
    else:
        say("set back: {}".format(reason))
    if options.json:
        write_json([dict(row, kept=is_kept) for row in rows_of(changes, settings, True)], options.pretty)
    return context.code if is_kept else INTERRUPTED if reason == "SIGINT" else REFUSED


def say(text):
    """What is no result goes to standard error; nothing is said where it is closed."""
    complain("qdp: " + text)


def is_confirmed(duration):
    """Whether `keep` is written to standard input within so many seconds."""
    import os
    import select
    import time

    was_terminal = is_terminal(sys.stdin)  # one that is closed is none any more
    end = time.monotonic() + duration
    say("goes back in {:g} s; write `keep` and Enter to keep it, `back` to go back now".format(duration))
    try:
        stream = sys.stdin.fileno()
    except (AttributeError, ValueError, OSError):
        stream = None
    written = b""
    while True:
        left = end - time.monotonic()
        if left <= 0:
            return False
        if stream is None:
            time.sleep(left)
            continue
        if not select.select([stream], [], [], left)[0]:
            return False
        try:
            some = os.read(stream, 1024)
        except OSError:
            return False  # the terminal is gone
        if not some:
            if was_terminal:
                return False
            stream = None  # nobody can confirm; the value still gets its time
            continue
        *words, written = (written + some).split(b"\n")
        for word in words:
            if word.strip() in (b"keep", b"back"):
                return word.strip() == b"keep"
            say("write `keep` or `back`")


def schema(context):
    write_json(schema_of(), True)
    return context.code


# Where a setting's path begins, by scope; names of switches may hold any sign.
PATHS = {
    "host": "^",
    "switch": "^(?!device/)(?!.*/(port/[0-9]+|uplink/[^/]+)/[^/]+$).+/",
    "port": "^.+/port/[0-9]+/",
    "uplink": "^.+/uplink/[^/]+/",
    "device": "^device/[^/]+/",
}


def schema_of():
    """The JSON schema of a file of desired settings, from the table of settings."""
    properties = {}
    for row in SETTINGS:
        selector = "(:[0-9]+)?" if "selector" in row.by else ""
        properties["{}{}{}$".format(PATHS[row.scope], row.name, selector)] = dict(
            value_schema(row), description=described(row)
        )
    return {
        "$schema": "http://json-schema.org/draft-07/schema#",
        "title": "Desired settings of a host, by path",
        "type": "object",
        "properties": {"$schema": {"type": "string"}},
        "patternProperties": properties,
        "additionalProperties": False,
    }


def described(row):
    parts = [row.help + (", in " + row.unit if row.unit else ""), row.caveat, row.danger and "danger: " + row.danger]
    return "; ".join(part for part in parts if part)


def value_schema(row):
    allowed = row.range
    if row.type == "flag":
        return {"enum": sorted(allowed)}
    if row.type == "choice":
        return {"enum": list(allowed)}
    number = {"type": "integer", "minimum": allowed[0], "maximum": allowed[-1]}
    if allowed.step != 1:
        number["multipleOf"] = allowed.step
    if row.type == "queue":
        return {"anyOf": [number, {"type": "null"}]}
    if row.type == "lifs":
        return {"type": "array", "items": number, "maxItems": 4}
    if row.name in MASKS:
        return {"anyOf": [number, {"type": "string", "pattern": "^0x[0-9a-f]+$"}]}
    return number


PATH = Option("path", metavar="NAME", completes="setting", help="a setting, as dvs-production/burst-size")
VALUE = Option("value", metavar="VALUE", help="a number, on or off, or a word of the setting's own")
FILE = Option("file", metavar="FILE", completes="file", help="a JSON object of paths and values; - is standard input")

OBJECT = Object(
    "setting",
    "settings of the host, switches, ports, uplinks and devices",
    Read(
        "show",
        "settings with their values",
        show,
        methods=sorted(set(method for row in SETTINGS for method in (row.getter, row.setter) if method)),
        selectors=[
            Option("pattern", metavar="NAME", nargs="?", completes="setting", help="a name, a part of it, or a pattern")
        ],
        identity=["path"],
        columns=[
            Column("setting", "path", "text", 9),
            Column("value", "text", "text", 9),
            Column("unit", "unit", "text", 5),
            Column("stored", "stored", "text", 3, help="whether a setter changes what runs, what is stored, or both"),
            Column("help", "help", "text", 2),
            Column("scope", "scope", "text", 1, "d"),
            Column("danger", "danger", "text", 1, "d"),
            Column("caveat", "caveat", "text", 0, "d"),
        ],
    ),
    Run(
        "set",
        "set one setting; what is as wanted is not written",
        change(named),
        selectors=[PATH, VALUE],
        options=WRITING,
    ),
    Run(
        "try",
        "set one setting for a while: it goes back unless that is confirmed",
        try_,
        selectors=[PATH, VALUE],
        options=(
            Option("--for", dest="duration", metavar="TIME", type=seconds, default=60.0, help="5m, 1h (default: 60s)"),
        )
        + WRITING,
    ),
    Run("plan", "show what a file of desired settings would change", plan, reads_snapshots=True, selectors=[FILE]),
    Run("apply", "apply a file of desired settings, all or nothing", change(filed), selectors=[FILE], options=WRITING),
    Run("schema", "print the JSON schema of a file of desired settings", schema, reads_snapshots=True),
)
