"""The command qdp-host: runs scripts on the embedded host, and checks and shows scenarios."""

import argparse
import os
import shutil
import signal
import sys

from . import _host, _places, _summary
from ._places import HostError

USAGE = 1  # a wrong command line
NO_HOST = 2  # a host that cannot be set up, or a scenario that is not valid

EPILOG = (
    "Exit codes: 0; 1 for a wrong command line; 2 for a host that cannot be set up, or a scenario that is not valid. "
    "'run' becomes the script, whose exit code it is then."
)


class Parser(argparse.ArgumentParser):
    """A parser whose error is our usage error."""

    def error(self, message):
        self.print_usage(sys.stderr)
        self.exit(USAGE, "{}: error: {}\n".format(self.prog, message))


def options_of(arguments):
    parser = Parser(prog="qdp-host", description="The embedded host: runs scripts that import _libqdp.", epilog=EPILOG)
    commands = parser.add_subparsers(dest="command", metavar="run|check|show")
    commands.required = True

    command = commands.add_parser("run", help="run a script", description="Runs a script, unchanged.", epilog=EPILOG)
    command.add_argument("--scenario", metavar="FILE", help="what the host has: a file, or a name; " + names())
    command.add_argument("--interpreter", metavar="PYTHON", default=sys.executable, help="the Python that runs it")
    command.add_argument("--capture", metavar="FILE", help="record every platform call into this file")
    command.add_argument("--replay", metavar="FILE", help="answer from this capture instead of a scenario")
    command.add_argument("--real", action="store_true", help="use the libraries of this machine, to capture their calls")
    command.add_argument("-m", dest="is_module", action="store_true", help="SCRIPT names a module, as with python -m")
    command.add_argument("script", metavar="SCRIPT", help="the script")
    command.add_argument("arguments", metavar="...", nargs=argparse.REMAINDER, help="its arguments")
    command.set_defaults(function=run, parser=command)

    command = commands.add_parser("check", help="check that scenarios are valid", epilog=EPILOG)
    command.add_argument("files", metavar="FILE", nargs="+", help="a scenario: a file, or a name")
    command.set_defaults(function=check)

    command = commands.add_parser("show", help="show what a scenario holds", epilog=EPILOG)
    command.add_argument("file", metavar="FILE", nargs="?", help="a scenario: a file, or a name; " + names())
    command.add_argument("--json", action="store_true", help="the whole, as a scenario file")
    command.set_defaults(function=show)
    return parser.parse_args(arguments)


def names():
    return "names are: " + ", ".join(_places.scenario_names())


# --- run ---


def run(options):
    """Becomes the script: its signals, its terminal and its exit code are the script's own."""
    if options.scenario and options.replay:
        options.parser.error("--scenario and --replay exclude each other")
    if options.real and (options.scenario or options.replay):
        options.parser.error("--real excludes --scenario and --replay")
    if not options.is_module and not os.path.exists(options.script):
        options.parser.error("there is no script " + options.script)
    interpreter = shutil.which(options.interpreter)
    if not interpreter:
        raise HostError("there is no interpreter {} that can be run".format(options.interpreter))

    environment = environment_of(options)
    command = [interpreter] + ["-m"] * options.is_module + [options.script] + options.arguments
    sys.stdout.flush()
    try:
        os.execve(interpreter, command, environment)
    except OSError as error:
        raise HostError("{} cannot be run: {}".format(interpreter, error.strerror)) from error


def environment_of(options):
    """The script's environment; a host that could not be set up there is found out here."""
    environment = dict(os.environ)
    folder = _places.libraries()
    if not options.real:
        choose_answers(options, environment)
        _host.EmbeddedHost(folder)  # all that belongs to it is there
        extend(environment, "LD_LIBRARY_PATH", [folder])
        extend(environment, "PYTHONPATH", _places.python_path(folder))
    if options.capture:
        shim = _places.library(folder, _places.CAPTURE)
        environment["QDP_HOST_CAPTURE"] = empty_file(options.capture)
        environment["LD_PRELOAD"] = " ".join(filter(None, [os.environ.get("LD_PRELOAD"), shim]))
    return environment


def choose_answers(options, environment):
    """The scenario or the capture that answers; what the command line says replaces what the environment says."""
    if options.scenario or options.replay:
        for variable in ("QDP_HOST_SCENARIO", "QDP_HOST_REPLAY"):
            environment.pop(variable, None)
    if options.scenario:
        environment["QDP_HOST_SCENARIO"] = _places.scenario_file(options.scenario)
    if options.replay:
        environment["QDP_HOST_REPLAY"] = os.path.abspath(options.replay)
    if environment.get("QDP_HOST_REPLAY"):
        _host.the_host().replay(environment["QDP_HOST_REPLAY"])
    elif environment.get("QDP_HOST_SCENARIO"):
        _host.the_host().load(environment["QDP_HOST_SCENARIO"])


def extend(environment, variable, folders):
    """Puts folders in front of a path."""
    path = os.pathsep.join(folders + list(filter(None, [environment.get(variable)])))
    if path:
        environment[variable] = path


def empty_file(path):
    try:
        open(path, "w").close()
    except OSError as error:
        raise HostError("{}: {}".format(path, error.strerror)) from error
    return os.path.abspath(path)


# --- check, show ---


def check(options):
    """Whether all are valid; what is wrong with the others goes to standard error."""
    host = _host.the_host()
    is_valid = True
    for file in options.files:
        try:
            host.load(file)
            print("{}: ok".format(file))
        except HostError as error:
            is_valid = False
            complain(error)
    return 0 if is_valid else NO_HOST


def show(options):
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # a pager that is closed early ends it without a word
    host = _host.the_host()
    if options.file is not None:
        host.load(options.file)
    sys.stdout.write(host.scenario_text() if options.json else "\n".join(_summary.lines(host.summary())) + "\n")
    return 0


def complain(error):
    sys.stdout.flush()
    print("qdp-host: {}".format(error), file=sys.stderr)


def main(arguments=None):
    options = options_of(arguments)
    try:
        return options.function(options)
    except HostError as error:
        complain(error)
        return NO_HOST


if __name__ == "__main__":
    sys.exit(main())
