"""Writes the man page and the completions of the command qdp into a folder, all from its declarations:

    command_files.py FOLDER
    command_files.py --table     prints the table of docs/command.md

The module has to be found, as a build or an installation has it. Completions are static, so that the key TAB starts no
interpreter; the names of switches and ports are those that the command has shown on a terminal, see qdp/cli/_names.py.
"""

import gzip
import pathlib
import sys

from qdp.cli import load, object_names
from qdp.cli._parser import EXIT_CODES, Parser, parser_of, whole

NAMES = "${XDG_CACHE_HOME:-$HOME/.cache}/qdp"

BASH = """
_qdp_names() { [ -r "%s/$1" ] && compgen -W "$(cat "%s/$1")" -- "$2"; }
_qdp_switch() { _qdp_names switch "$1"; }
_qdp_port() { _qdp_names port "$1"; }
""" % (NAMES, NAMES)

ZSH = """
_qdp_names() { local names; [[ -r "%s/$1" ]] && names=(${(f)"$(<"%s/$1")"}) && compadd -a names }
_qdp_switch() { _qdp_names switch }
_qdp_port() { _qdp_names port }
""" % (NAMES, NAMES)

FISH = """
function __qdp_names
    set -l cache $XDG_CACHE_HOME
    test -n "$cache"; or set cache $HOME/.cache
    test -r $cache/qdp/$argv[1]; and cat $cache/qdp/$argv[1]
end
function __qdp_wants_object
    set -l words (commandline -opc)
    test (count $words) -eq 1; or test (count $words) -eq 3 -a "$words[2]" = --from
end
complete -c qdp -f
"""


# Releases of shtab up to 1.5.5 complete the first of several choices alone.
BASH_OF_ALL_CHOICES = (
    ('="${current_action}_choices"', '="${current_action}_choices[@]"'),
    ('compgen -W "${current_action_choices}"', 'compgen -W "${current_action_choices// /$IFS}"'),
)


def actions_of(parser):
    return [action for action in parser._actions if action.help != "==SUPPRESS=="]  # as shtab reads them


def prepared(parser):
    """The parser with what shtab completes arguments by."""
    verb = getattr(parser, "default_verb", None)
    if verb:
        add_default_verb(parser, verb)
    for action in parser._actions:
        if action.dest == "help":
            continue
        complete(action, getattr(action, "completes", None))
        for each in (getattr(action, "choices", None) or {}).values() if action.nargs == "A..." else ():
            prepared(each)
    return parser


def complete(action, completes):
    """Gives an action what shtab completes it by."""
    import shtab

    if completes in ("switch", "port"):
        action.complete = {"bash": "_qdp_" + completes, "zsh": "_qdp_" + completes}
    elif completes == "file":
        action.complete = shtab.FILE
    elif isinstance(completes, list):
        action.choices = completes


def add_default_verb(parser, verb):
    """An object or a part without a verb takes the options of its default verb, and that one's first selector."""
    for action in Parser("", verb)._actions:
        if action.option_strings and not set(action.option_strings) & set(parser._option_string_actions):
            parser._add_action(action)
    if verb.selectors and verb.selectors[0].completes in ("switch", "port"):
        for action in parser._actions:
            if action.nargs == "A...":
                complete(action, verb.selectors[0].completes)


def shell_files():
    import shtab

    preambles = {"bash": BASH, "zsh": ZSH}
    texts = {shell: shtab.complete(prepared(whole()), shell, preamble=preambles) for shell in preambles}
    for here, there in BASH_OF_ALL_CHOICES:
        if here in texts["bash"]:
            texts["bash"] = texts["bash"].replace(here, there)
    texts["zsh"] = zsh_of_default_verbs(texts["zsh"])
    return texts


def zsh_of_default_verbs(text):
    """The same with what stands in a verb's place: shtab completes verbs alone there, and nothing behind another
    word."""
    for name in object_names():
        thing = load(name)
        parts = {words.split()[0] for words in thing.verbs if " " in words}
        for function, verb in [(name, thing.default)] + [
            ("{}_{}".format(name, part), thing.verbs.get(part + " show")) for part in sorted(parts)
        ]:
            if not verb:
                continue
            function = "_shtab_qdp_" + function
            if verb.selectors and verb.selectors[0].completes in ("switch", "port"):
                verbs, names = "': :{}_commands'".format(function), "_qdp_" + verb.selectors[0].completes
                assert verbs in text, verbs
                text = text.replace(verbs, "': :{{ {}_commands; {} }}'".format(function, names))
            options = "_shtab_qdp_{}_{}_options".format(name, verb.name.replace(" ", "_"))
            start = text.index("\n{}() {{".format(function))
            end = text.index("\n      esac\n", start)
            text = text[:end] + "\n        *) _arguments -C ${} ;;".format(options) + text[end:]
    return text


def quoted(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


def fish():
    """Completions for fish, which shtab does not write."""
    lines = [FISH, "complete -c qdp -n __qdp_wants_object -l from -r -F -d 'show what a snapshot holds'"]
    names = object_names()
    for name in names:
        thing = load(name)
        first = " ".join(sorted({words.split()[0] for words in thing.verbs}))
        line = "complete -c qdp -n __qdp_wants_object -a {} -d {}"
        lines.append(line.format(name, quoted(thing.help)))
        chosen = "__fish_seen_subcommand_from {}".format(name)
        outside = "{}; and not __fish_seen_subcommand_from {}".format(chosen, first)
        if thing.default:
            lines += sorted(set(fish_arguments(outside, parser_of(thing, thing.default))))
        for verb in thing.verbs.values():
            words = verb.name.split()
            about = verb.help if len(words) == 1 else "the {} part".format(words[0])
            line = "complete -c qdp -n {} -a {} -d {}".format(quoted(outside), words[0], quoted(about))
            if line not in lines:
                lines.append(line)
            if words[1:] == ["show"]:
                others = " ".join(each.split()[1] for each in thing.verbs if each.startswith(words[0] + " "))
                inside = "{}; and __fish_seen_subcommand_from {}".format(chosen, words[0])
                alone = "{}; and not __fish_seen_subcommand_from {}".format(inside, others)
                lines += sorted(set(fish_arguments(alone, parser_of(thing, verb))))
            if len(words) > 1:
                inside = "{}; and __fish_seen_subcommand_from {}".format(chosen, words[0])
                lines.append("complete -c qdp -n {} -a {} -d {}".format(quoted(inside), words[1], quoted(verb.help)))
            here = "; and ".join(["__fish_seen_subcommand_from " + word for word in [name] + words])
            lines += sorted(set(fish_arguments(here, parser_of(thing, verb))))
    return "\n".join(lines) + "\n"


def fish_arguments(here, parser):
    for action in actions_of(parser):
        completes = getattr(action, "completes", None)
        values = None
        if completes in ("switch", "port"):
            values = "(__qdp_names {})".format(completes)
        elif isinstance(completes, list) or action.choices:
            values = " ".join(map(str, completes or action.choices))
        start = "complete -c qdp -n {}".format(quoted(here))
        if not action.option_strings:
            if values:
                yield "{} -a {}".format(start, quoted(values))
            elif completes == "file":
                yield start + " -F"
            continue
        flags = " ".join(
            "-l " + each[2:] if each.startswith("--") else "-s " + each[1:] for each in action.option_strings
        )
        wants = " -r" if action.nargs != 0 else ""
        value = " -a " + quoted(values) if values else ""
        yield "{} {}{}{} -d {}".format(start, flags, wants, value, quoted((action.help or "").replace("%%", "%")))


def manual():
    """The man page, by argparse-manpage."""
    from build_manpages.manpage import Manpage

    parser = whole()
    parser.man_short_description = "show and steer the host's accelerated packet datapath"
    parser._manpage = [{"heading": "exit codes", "content": EXIT_CODES.partition(": ")[2]}]
    return str(Manpage(parser))


def table():
    """The table of all verbs, as docs/command.md has it."""
    lines = ["| command | shows or does | methods |", "|---|---|---|"]
    for name in object_names():
        for verb in load(name).verbs.values():
            words = " ".join(["qdp", name, verb.name] + [each.usage for each in verb.selectors])
            methods = ", ".join("`{}`".format(method) for method in verb.methods)
            lines.append("| `{}` | {} | {} |".format(words, verb.help, methods))
    return "\n".join(lines) + "\n"


def main(folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    shells = shell_files()
    (folder / "qdp.bash").write_text(shells["bash"])
    (folder / "_qdp").write_text(shells["zsh"])
    (folder / "qdp.fish").write_text(fish())
    with open(folder / "qdp.1.gz", "wb") as file, gzip.GzipFile("", "wb", 9, file, mtime=0) as page:
        page.write(manual().encode())


if __name__ == "__main__":
    if sys.argv[1:] == ["--table"]:
        sys.stdout.write(table())
    else:
        main(*sys.argv[1:])
