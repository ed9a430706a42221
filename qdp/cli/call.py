"""`qdp call`: any method of the module by its name, for experts and for what has no verb of its own."""

from ._declare import WRITING, Object, Option, Read
from ._output import CommandError, UsageError
from ._rows import plain

# A method with one of these in its name changes nothing.
READING = ("Get", "List", "Dump", "Query", "Table")
WRITING_TABLES = ("Clear",)


def changes(method):
    return method.startswith(WRITING_TABLES) or not any(word in method for word in READING)


def literal(text):
    """An argument: a literal of Python, or else the text as it is."""
    import ast

    try:
        return ast.literal_eval(text)
    except (ValueError, SyntaxError, TypeError, MemoryError, RecursionError):
        return text


def method_names():
    from ..records import RESULTS

    return list(RESULTS)


def call(context):
    from ._write import agreed

    options = context.options
    names = method_names()
    if options.method not in names:
        import difflib

        near = difflib.get_close_matches(options.method, names, 3) or ["help(_libqdp) lists them"]
        raise UsageError("there is no method {!r}; did you mean {}?".format(options.method, ", ".join(near)))
    arguments = [literal(text) for text in options.argument]
    if changes(options.method):
        shown = "{}({})".format(options.method, ", ".join(map(repr, arguments)))
        if options.dry_run:
            yield {"dryRun": shown}
            return
        if not agreed(options, "{} may change the datapath".format(options.method), [shown]):
            context.code = CommandError.code
            return
    result = context.call(options.method, *arguments)
    for each in result if isinstance(result, list) else [] if result is None else [result]:
        yield each if isinstance(each, dict) else {"result": plain(each)}


OBJECT = Object(
    "call",
    "any method of the module",
    Read(
        "call",
        "call a method of the module by its name, with arguments as literals of Python",
        call,
        methods=[
            "DumpDecapFlowTable",
            "DumpDecapSaFlowTable",
            "DumpPortFlow",
            "FPOHWDestroy",
            "GetRepPortStats",
            "InitMbufFastslabs",
            "InjectLBTraffic",
        ],
        selectors=[
            Option("method", metavar="METHOD", completes="method", help="its name, as in help(_libqdp)"),
            Option("argument", metavar="ARGUMENT", nargs="*", help="0, 0x1f, (0, 1), a text; behind -- also -1"),
        ],
        options=WRITING,
        counts=False,
    ),
)
