"""The command qdp-host: runs scripts on the embedded host, and checks and shows scenarios."""

import argparse
import os
import shutil
import sys
from typing import TYPE_CHECKING, Any, Callable, Dict, List, Optional, Sequence, Tuple

from . import _host, _kept, _places, _shared, _summary
from ._places import HostError

if TYPE_CHECKING:
    from typing import NoReturn  # not in the first releases of 3.6

USAGE = 1  # a wrong command line
NO_HOST = 2  # a host that cannot be set up, or a scenario that is not valid

EPILOG = (
    "Exit codes: 0; 1 for a wrong command line; 2 for a host that cannot be set up, a scenario that is not valid, or "
    "an "
    "output that cannot be written. 'run' becomes the script, whose exit code it is then."
)

# What `run` knows itself; the first argument of another form begins Python's command line.
RUN_OPTIONS_WITH_VALUE = ("--scenario", "--interpreter", "--capture", "--replay", "--attach", "--keep")
RUN_USAGE = "qdp-host run [OPTIONS] [SCRIPT | -c CODE | -m MODULE | -i | -] [ARGUMENTS]"


class Parser(argparse.ArgumentParser):
    """A parser whose error is our usage error."""

    def error(self, message: str) -> "NoReturn":
        self.print_usage(sys.stderr)
        self.exit(USAGE, "{}: error: {}\n".format(self.prog, message))
        raise AssertionError("exit returns to nobody")


class Version(argparse.Action):
    """Prints the version of the stand-ins, which is that of the whole."""

    def __call__(self, parser: argparse.ArgumentParser, *_: object, **__: object) -> None:
        try:
            print("qdp-host {}".format(_host.the_host().version()))
        except HostError as error:
            complain(error)
            parser.exit(NO_HOST)
        parser.exit()


def options_of(arguments: Sequence[str]) -> argparse.Namespace:
    parser = Parser(prog="qdp-host", description="The embedded host: runs scripts that import _libqdp.", epilog=EPILOG)
    parser.add_argument("--version", action=Version, nargs=0, help="print the version, and exit")
    commands = parser.add_subparsers(dest="command", metavar="run|check|show|serve|ctl")
    commands.required = True

    command = commands.add_parser(
        "run",
        help="run a script",
        usage=RUN_USAGE,
        description="Runs a script, unchanged. What follows the options is Python's own command line.",
        epilog=EPILOG,
    )
    command.add_argument("--scenario", metavar="FILE", help="what the host has: a file, or a name; " + names())
    command.add_argument("--interpreter", metavar="PYTHON", default=sys.executable, help="the Python that runs it")
    command.add_argument("--capture", metavar="FILE", help="record every platform call into this new file")
    command.add_argument("--overwrite", action="store_true", help="let the capture replace a file that is there")
    command.add_argument("--replay", metavar="FILE", help="answer from this capture instead of a scenario")
    command.add_argument(
        "--attach", metavar="SOCKET", help="let the host answer that serves there; see 'qdp-host serve'"
    )
    command.add_argument("--keep", metavar="FILE", help="begin with the host that this file keeps, and keep it there")
    command.add_argument(
        "--real", action="store_true", help="use the libraries of this machine, to capture their calls"
    )
    command.set_defaults(function=run, parser=command)

    command = commands.add_parser("check", help="check that scenarios are valid", epilog=EPILOG)
    command.add_argument("files", metavar="FILE", nargs="+", help="a scenario: a file, or a name")
    command.set_defaults(function=check)

    command = commands.add_parser("show", help="show what a scenario holds", epilog=EPILOG)
    command.add_argument("file", metavar="FILE", nargs="?", help="a scenario: a file, or a name; " + names())
    command.add_argument("--json", action="store_true", help="the whole, as a scenario file")
    command.set_defaults(function=show)

    add_serve(commands)
    add_ctl(commands)

    own, python = split(arguments)
    options = parser.parse_args(own)
    options.python = python
    return options


def split(arguments: Sequence[str]) -> Tuple[List[str], List[str]]:
    """The arguments of qdp-host, and the command line of Python that `run` is given."""
    index = 1
    if list(arguments[:1]) != ["run"]:
        return list(arguments), []
    while index < len(arguments) and (arguments[index] == "-h" or arguments[index].startswith("--")):
        if arguments[index] == "--":
            return list(arguments[:index]), list(arguments[index + 1 :])
        index += 2 if arguments[index] in RUN_OPTIONS_WITH_VALUE else 1
    return list(arguments[:index]), list(arguments[index:])


def names() -> str:
    return "names are: " + ", ".join(_places.scenario_names())


# --- run ---


def run(options: argparse.Namespace) -> int:
    """Becomes the script: its signals, its terminal and its exit code are the script's own."""
    if options.scenario and options.replay:
        options.parser.error("--scenario and --replay exclude each other")
    if options.real and (options.scenario or options.replay):
        options.parser.error("--real excludes --scenario and --replay")
    if options.attach and (options.scenario or options.replay or options.real or options.keep):
        options.parser.error("--attach excludes --scenario, --replay, --real and --keep")
    if options.keep and (options.replay or options.real):
        options.parser.error("--keep excludes --replay and --real")
    if options.overwrite and not options.capture:
        options.parser.error("--overwrite needs --capture")
    if not options.python:
        options.parser.error("the following arguments are required: SCRIPT")
    if not options.python[0].startswith("-") and not os.path.exists(options.python[0]):
        options.parser.error("there is no script " + options.python[0])
    interpreter = shutil.which(options.interpreter)
    if not interpreter:
        raise HostError("there is no interpreter {} that can be run".format(options.interpreter))

    environment = environment_of(options, interpreter)
    sys.stdout.flush()
    if options.keep:
        scenario = environment.get("QDP_HOST_SCENARIO")
        return _kept.run(options.keep, scenario, [interpreter] + options.python, environment)
    try:
        os.execve(interpreter, [interpreter] + options.python, environment)
    except OSError as error:
        raise HostError("{} cannot be run: {}".format(interpreter, error.strerror)) from error


def environment_of(options: argparse.Namespace, interpreter: str) -> Dict[str, str]:
    """The script's environment; a host that could not be set up there is found out here."""
    environment = dict(os.environ)
    folder = _places.libraries()
    if not options.real:
        _host.EmbeddedHost(folder)  # all that belongs to it is there
        environment = _places.environment(folder, interpreter)
        choose_answers(options, environment)
    if options.capture:
        shim = _places.library(folder, _places.CAPTURE)
        environment["QDP_HOST_CAPTURE"] = empty_file(options.capture, options.overwrite)
        environment["LD_PRELOAD"] = " ".join(filter(None, [os.environ.get("LD_PRELOAD"), shim]))
    return environment


def choose_answers(options: argparse.Namespace, environment: Dict[str, str]) -> None:
    """The scenario or the capture that answers; what the command line says replaces what the environment says."""
    if options.scenario or options.replay or options.attach or options.keep:
        for variable in ("QDP_HOST_SCENARIO", "QDP_HOST_REPLAY", _shared.VARIABLE):
            environment.pop(variable, None)
    if options.scenario:
        environment["QDP_HOST_SCENARIO"] = _places.scenario_file(options.scenario)
    if options.replay:
        environment["QDP_HOST_REPLAY"] = os.path.abspath(options.replay)
    if options.attach:
        environment[_shared.VARIABLE] = options.attach
    if environment.get(_shared.VARIABLE):
        environment[_shared.VARIABLE] = _shared.check(environment[_shared.VARIABLE])
    elif environment.get("QDP_HOST_REPLAY"):
        _host.the_host().check_capture(environment["QDP_HOST_REPLAY"])
    elif environment.get("QDP_HOST_SCENARIO"):
        _host.the_host().check(environment["QDP_HOST_SCENARIO"])


def empty_file(path: str, may_replace: bool) -> str:
    try:
        open(path, "w" if may_replace else "x").close()
    except FileExistsError:
        raise HostError("{} is there already; give --overwrite, or another name".format(path)) from None
    except OSError as error:
        raise HostError("{}: {}".format(path, error.strerror)) from error
    return os.path.abspath(path)


# --- check, show ---


def check(options: argparse.Namespace) -> int:
    """Whether all are valid; what is wrong with the others goes to standard error."""
    host = _host.the_host()
    is_valid = True
    for file in options.files:
        try:
            host.check(file)
            print("{}: ok".format(file))
        except HostError as error:
            is_valid = False
            complain(error)
    return 0 if is_valid else NO_HOST


def show(options: argparse.Namespace) -> int:
    host = _host.the_host()
    file = options.file
    if file is None and not os.environ.get("QDP_HOST_REPLAY"):
        file = os.environ.get("QDP_HOST_SCENARIO") or "default"
    if options.json:
        text = host.scenario_text().encode() if file is None else host.completed(file)
    else:
        if file is not None:
            host.load(file)
        text = "".join(line + "\n" for line in _summary.lines(host.summary())).encode()
    sys.stdout.flush()
    sys.stdout.buffer.write(text)
    return 0


def print_summary(host: _host.EmbeddedHost) -> None:
    for line in _summary.lines(host.summary()):
        print(line)


# --- serve, ctl ---


def add_serve(commands: Any) -> None:
    command = commands.add_parser(
        "serve",
        help="serve a host to several processes",
        description="Keeps one host alive, for the processes whose variable QDP_HOST names the socket and for "
        "'qdp-host run --attach'. SIGTERM and Ctrl-C end it.",
        epilog=EPILOG,
    )
    command.add_argument("socket", metavar="SOCKET", help="the path of a socket, which is made for its owner alone")
    command.add_argument("--scenario", metavar="FILE", help="what the host has: a file, or a name; " + names())
    command.add_argument("--replay", metavar="FILE", help="answer from this capture instead of a scenario")
    command.add_argument("--child", action="store_true", help=argparse.SUPPRESS)
    command.set_defaults(function=serve, parser=command, attach=None, keep=None)


def serve(options: argparse.Namespace) -> int:
    if options.scenario and options.replay:
        options.parser.error("--scenario and --replay exclude each other")
    os.environ.pop(_shared.VARIABLE, None)
    environment = dict(os.environ)
    choose_answers(options, environment)
    for variable in ("QDP_HOST_SCENARIO", "QDP_HOST_REPLAY"):
        os.environ.pop(variable, None)
    os.environ.update(environment)
    _shared.serve(options.socket, options.child)
    return 0


def add_ctl(commands: Any) -> None:
    command = commands.add_parser("ctl", help="control a host that is served", epilog=EPILOG)
    command.add_argument("socket", metavar="SOCKET", help="where the host serves")
    verbs = command.add_subparsers(dest="verb", metavar="VERB")
    verbs.required = True

    def add(name: str, function: Callable[[_host.EmbeddedHost, argparse.Namespace], None], text: str) -> Any:
        verb = verbs.add_parser(name, help=text, description=text[0].upper() + text[1:] + ".", epilog=EPILOG)
        verb.set_defaults(function=ctl, act=function, parser=verb)
        return verb

    def add_calls(verb: Any) -> None:
        verb.add_argument("--nth", type=int, default=1, metavar="N", help="from the nth call on; 1 is the next")
        verb.add_argument("--times", type=int, default=1, metavar="N", help="so many calls; 0 is for ever")

    verb = add("show", ctl_show, "show what the host has at present")
    verb.add_argument("--json", action="store_true", help="the whole, as a scenario file")
    verb = add("load", lambda host, options: host.load(options.scenario), "become the host of a scenario")
    verb.add_argument("scenario", metavar="FILE", help="a file, or a name; " + names())
    add("reset", lambda host, _: host.reset(), "be the host again that it began as, without plans for its calls")
    add("freeze", lambda host, _: host.freeze(), "stop the clock")
    verb = add("advance", lambda host, options: host.advance(options.seconds), "move the clock on")
    verb.add_argument("seconds", metavar="SECONDS", type=float)
    verb = add(
        "fail",
        lambda host, options: host.fail(options.operation, options.status, options.nth, options.times),
        "fail calls of an operation",
    )
    verb.add_argument("operation", metavar="OPERATION", help="a platform operation; 'operations' lists them")
    verb.add_argument("--status", type=lambda text: int(text, 0), default=1, metavar="N", help="what it returns; 1")
    add_calls(verb)
    verb = add(
        "delay",
        lambda host, options: host.delay(options.operation, options.seconds, options.nth, options.times),
        "let calls of an operation take longer",
    )
    verb.add_argument("operation", metavar="OPERATION", help="a platform operation; 'operations' lists them")
    verb.add_argument("seconds", metavar="SECONDS", type=float)
    add_calls(verb)
    add("operations", lambda host, _: print("\n".join(host.operations())), "list the platform operations")


def ctl(options: argparse.Namespace) -> int:
    host = _shared.SharedHost(options.socket)
    try:
        options.act(host, options)
    except (LookupError, ValueError) as error:
        raise HostError(error.args[0]) from None
    finally:
        host.close()
    return 0


def ctl_show(host: _host.EmbeddedHost, options: argparse.Namespace) -> None:
    if options.json:
        sys.stdout.write(host.scenario_text())
    else:
        print_summary(host)


def complain(error: Exception) -> None:
    print("qdp-host: {}".format(error), file=sys.stderr)


def with_output(command: Callable[[], int]) -> int:
    """The command's exit code once all that it prints is written; a reader that went away ends it without a word."""
    try:
        try:
            return command()
        finally:
            sys.stdout.flush()
    except BrokenPipeError:
        give_up_output()
        return 0
    except OSError as error:
        give_up_output()
        complain(HostError("standard output: {}".format(error.strerror)))
        return NO_HOST


def give_up_output() -> None:
    """Lets the interpreter end without an attempt to write what is left."""
    nowhere = os.open(os.devnull, os.O_WRONLY)
    os.dup2(nowhere, 1)


def main(arguments: Optional[Sequence[str]] = None) -> int:
    if sys.stdout is None:  # it was closed when the process began
        sys.stdout = open(os.devnull, "w")

    def command() -> int:
        options = options_of(sys.argv[1:] if arguments is None else arguments)
        try:
            exit_code = options.function(options)  # type: int
            return exit_code
        except HostError as error:
            complain(error)
            return NO_HOST

    return with_output(command)


if __name__ == "__main__":
    sys.exit(main())
