"""Parsers: one verb's, built for each run, and that of the whole command, for man page and completions."""

import argparse

from ._declare import WRITING, Option, Read, Write, natural, seconds
from ._output import UsageError

EXIT_CODES = (
    "exit codes: 0; 1 for a wrong command line; 2 where the datapath refuses or lacks something, and what could be "
    "read is printed; 3 where a comparison or check found something; 130 for Ctrl-C"
)


class Parser(argparse.ArgumentParser):
    """A verb's parser. It raises its errors, and makes the text below its help when that is asked for."""

    def __init__(self, prog, verb):
        # Without its own -h, and with all arguments in groups, argparse loads nothing that only its help needs.
        super(Parser, self).__init__(
            prog=prog,
            description=sentence(verb.help),
            formatter_class=argparse.RawDescriptionHelpFormatter,
            allow_abbrev=False,
            add_help=False,
        )
        self.verb = verb
        add_arguments(self, verb)

    def format_help(self):
        self.epilog = epilog_of(self.verb)
        return super(Parser, self).format_help()

    def error(self, message):
        raise UsageError("{}; see `{} --help`".format(message, self.prog))


def sentence(text):
    return text[:1].upper() + text[1:] + "."


def parser_of(thing, verb):
    """The parser of one verb."""
    return Parser("qdp {} {}".format(thing.name, verb.name), verb)


def add_arguments(parser, verb):
    add_options(parser, "selectors", verb.selectors)
    add_options(parser, "options", verb.options)
    output = add_options(parser, "output", OUTPUT)
    if isinstance(verb, Read):
        add_reading(parser, output, verb)
    elif isinstance(verb, Write):
        add_options(parser, "writing", WRITING)


def add_options(parser, title, options):
    group = parser.add_argument_group(title)
    for option in options:
        group.add_argument(*option.flags, **option.settings).completes = option.completes
    return group


OUTPUT = (
    Option("-h", "--help", action="help", help="show this help, and end"),
    Option("-j", "--json", action="store_true", help="one JSON array on standard output, with the module's keys"),
    Option("-p", "--pretty", action="store_true", help="JSON on several lines; implies -j"),
)


def add_reading(parser, output, verb):
    if verb.columns:
        names = ",".join(column.name for column in verb.columns)
    else:
        names = "the keys of the rows"
    output.add_argument("--columns", metavar="A,B", help="these columns: " + names)
    output.add_argument("--sort", metavar="[-]COLUMN", help="sort by this column, with - the highest first")
    output.add_argument(
        "--where", metavar="COLUMN=VALUE", action="append", default=[],
        help="only such rows; != > < >= <= and ~ (a pattern) stand for = too; may be given again",
    )  # fmt: skip
    output.add_argument(
        "--no-header", dest="header", action="store_false", help="no headings, and numbers without separators"
    )
    help = "more columns" if verb.has_details else argparse.SUPPRESS
    output.add_argument("-d", "--details", action="store_true", help=help)
    help = "statistics, too" if verb.has_statistics else argparse.SUPPRESS
    output.add_argument("-s", "--statistics", action="store_true", help=help)
    watching = parser.add_argument_group("watching")
    watching.add_argument(
        "-w", "--watch", metavar="SECONDS", nargs="?", type=seconds, const=2.0,
        help="again and again (every 2 s), with the growth of counters a second in place of totals",
    )  # fmt: skip
    watching.add_argument("--count", metavar="N", type=natural, help="watch so many times")
    watching.add_argument("--delta", action="store_true", help="watch the growth between two frames instead")


def epilog_of(verb):
    import textwrap

    parts = []
    if isinstance(verb, Read) and verb.columns:
        parts.append("columns:")
        widest = max(len(column.name) for column in verb.columns)
        for column in verb.columns:
            group = {"d": ", with -d", "s": ", with -s"}.get(column.group, "")
            unit = " in " + column.unit if column.unit else ""
            about = column.help or " + ".join(column.keys)
            parts.append("  {}  {}{}{}".format(column.name.ljust(widest), about, unit, group))
        parts.append("")
    if verb.methods:
        parts.append(textwrap.fill("calls: " + ", ".join(verb.methods), 100, subsequent_indent="  "))
        parts.append("")
    parts.append(textwrap.fill(EXIT_CODES, 100))
    return "\n".join(parts).replace("%", "%%")


def prepared(arguments):
    """The arguments with `--sort -COLUMN` as one word, and `-w` without a number told from what follows."""
    result, rest = [], list(arguments)
    while rest:
        word = rest.pop(0)
        if word == "--":
            return result + [word] + rest
        if word in ("--sort", "--where") and rest and rest[0].startswith("-") and len(rest[0]) > 1:
            word = "{}={}".format(word, rest.pop(0))
        elif word in ("-w", "--watch") and rest and not is_duration(rest[0]):
            word = "--watch=2"
        result.append(word)
    return result


def is_duration(text):
    try:
        return seconds(text) > 0
    except ValueError:
        return False


def whole():
    """The parser of the whole command; for man page and completions, not for a run."""
    from . import load, object_names

    parser = argparse.ArgumentParser(prog="qdp", description=DESCRIPTION, epilog=EXIT_CODES)
    snapshot = parser.add_argument("--from", metavar="SNAPSHOT", help="show what a file of `qdp snapshot` holds")
    snapshot.completes = "file"
    parser.add_argument("--version", action="store_true", help="print the version")
    objects = parser.add_subparsers(metavar="OBJECT", dest="object")
    for name in object_names():
        thing = load(name)
        own = objects.add_parser(name, help=thing.help, description=sentence(thing.help))
        add_verbs(own, thing)
    return parser


DESCRIPTION = "Shows and steers the host's accelerated packet datapath."


def add_verbs(parser, thing):
    verbs = parser.add_subparsers(metavar="VERB", dest="verb")
    parser.default_verb = thing.default  # what a line without a verb takes, for completions
    parts = {}
    for name, verb in thing.verbs.items():
        words, place = name.split(), verbs
        if len(words) > 1:
            if words[0] not in parts:
                about = "the {} part: {}".format(
                    words[0], ", ".join(each.split()[1] for each in thing.verbs if each.startswith(words[0] + " "))
                )
                part = verbs.add_parser(words[0], help=about, description=about)
                part.default_verb = thing.verbs.get(words[0] + " show")
                parts[words[0]] = part.add_subparsers(metavar="VERB", dest="verb")
            place = parts[words[0]]
        about = verb.help.replace("%", "%%")
        add_arguments(place.add_parser(words[-1], help=about, description=sentence(about), add_help=False), verb)
