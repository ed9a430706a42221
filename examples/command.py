"""What the examples have in common as commands: their options and exit codes, and how they ask the datapath.

A script gives its own documentation and three functions to `run`: which options it adds, what it reads, and how it
shows what was read. In JSON the rows are what was read, by the keys of the module's answers where these have one.
"""

import argparse
import json
import os
import re
import signal
import sys
from typing import TYPE_CHECKING, Any, Callable, Dict, Iterable, Iterator, List, Optional, TypeVar

import qdp
from qdp import values

if TYPE_CHECKING:
    from typing import NoReturn  # not in the first releases of 3.6

USAGE, REFUSED, UNWRITTEN = 1, 2, 3  # exit codes
DAY = 24 * 60 * 60

Row = Dict[str, Any]
Answer = TypeVar("Answer")


class Datapath:
    """The host, and what of it could not be had: that goes to standard error, a line each."""

    def __init__(self, command: str) -> None:
        self.command = command
        self.host = qdp.Host()
        self.refusals = 0

    def refuse(self, text: str) -> None:
        self.refusals += 1
        print(f"{self.command}: {text}", file=sys.stderr, flush=True)

    def fail(self, error: qdp.QdpError) -> None:
        self.refuse(f"{str(error).rstrip('.')}; {error.hint}")

    def ask(self, read: Callable[..., Answer], *arguments: Any) -> Optional[Answer]:
        """What a call gives; None where it fails."""
        try:
            return read(*arguments)
        except qdp.QdpError as error:
            self.fail(error)
            return None

    def each(self, rows: Iterable[Answer]) -> Iterator[Answer]:
        """What is read one by one, as far as it can be read."""
        try:
            yield from rows
        except qdp.QdpError as error:
            self.fail(error)

    def switches(self, numbers: Optional[List[int]] = None) -> List[qdp.Switch]:
        """The switches of these numbers, or all."""
        listed = self.ask(self.host.switches)
        if listed is None:
            return []
        for number in sorted(set(numbers or []) - {switch.number for switch in listed}):
            self.refuse(f"the datapath has no switch {number}")
        return [switch for switch in listed if not numbers or switch.number in numbers]


class Parser(argparse.ArgumentParser):
    """Parses a script's command line, and says what its documentation says."""

    def __init__(self, documentation: str) -> None:
        super().__init__(
            prog=os.path.basename(sys.argv[0]),
            description=documentation,
            formatter_class=argparse.RawDescriptionHelpFormatter,
            epilog="exit codes: 0, 1 for a wrong command line, 2 where the datapath refuses or lacks something,\n"
            "3 for an output that cannot be written\n"
            "A line that ends in > is longer than the terminal is wide; a pipe or a file gets all of it.",
        )
        self.add_argument("--json", action="store_true", help="one JSON array on standard output")

    def error(self, message: str) -> "NoReturn":
        self.print_usage(sys.stderr)
        self.exit(USAGE, f"{self.prog}: error: {message}\n")
        raise AssertionError("exit returns")  # which it does not

    def add_switches(self) -> None:
        self.add_argument(
            "--switch", type=integer(0), action="append", metavar="NUMBER", help="this switch only; may be given again"
        )


def mac_address(text: str) -> str:
    """The type of an option that takes a MAC address, in any of its usual forms; as the module writes it."""
    try:
        return values.mac_text(text)
    except qdp.InvalidArgument:
        raise argparse.ArgumentTypeError(f"{text!r} is not a MAC address such as 02:20:00:00:03:01") from None


def ip_address(text: str) -> "values.Address":
    """The type of an option that takes an IP address."""
    try:
        return values.ip_address(text)
    except qdp.InvalidArgument:
        raise argparse.ArgumentTypeError(f"{text!r} is not an IP address such as 10.0.0.1 or 2001:db8::1") from None


def seconds(text: str) -> float:
    """The type of an option that takes a duration."""
    try:
        value = float(text)
    except ValueError:
        value = 0.0
    if not 0 < value <= DAY:
        raise argparse.ArgumentTypeError(f"{text!r} is not a number of seconds above 0 and up to {DAY}")
    return value


def integer(lowest: int, highest: Optional[int] = None) -> Callable[[str], int]:
    """The type of an option that takes an integer from the lowest to the highest that makes sense."""
    allowed = f"of at least {lowest}" if highest is None else f"from {lowest} to {highest}"

    def parse(text: str) -> int:
        value = int(text) if re.fullmatch("-?[0-9]+", text) else lowest - 1
        if value < lowest or highest is not None and value > highest:
            raise argparse.ArgumentTypeError(f"{text!r} is not an integer {allowed}")
        return value

    return parse


def print_json(rows: Iterable[Row]) -> None:
    """Prints one array, each row as soon as it is read."""
    before = "["
    for row in rows:
        text = json.dumps(row, indent=2, default=vars).replace("\n", "\n  ")
        print(f"{before}\n  {text}", end="", flush=True)
        before = ","
    print("[]" if before == "[" else "\n]")


def run(
    documentation: Optional[str],
    read: Callable[[Datapath, argparse.Namespace], Iterable[Row]],
    show: Callable[[Iterable[Row], argparse.Namespace], None],
    add_options: Callable[[Parser], object] = lambda parser: None,
) -> "NoReturn":
    """Runs a script from its command line to its exit code. What could be read is shown, whatever else is refused."""
    # A pager that is closed before the end, and Ctrl-C, end the script without a word.
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    parser = Parser(documentation or "")
    add_options(parser)
    options = parser.parse_args()
    if sys.stdout is None:
        parser.exit(UNWRITTEN, f"{parser.prog}: standard output is closed; open it, or write to /dev/null\n")
    datapath = Datapath(parser.prog)
    rows = read(datapath, options)
    try:
        if options.json:
            print_json(rows)
        else:
            show(rows, options)
        sys.stdout.flush()
    except OSError as error:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())  # the interpreter writes what is left at its end
        parser.exit(UNWRITTEN, f"{parser.prog}: cannot write to standard output: {error.strerror}\n")
    sys.exit(REFUSED if datapath.refusals else 0)
