"""A host whose state stays in a file between the runs of commands."""

import contextlib
import fcntl
import json
import os
import signal
import subprocess
import sys
import tempfile
from typing import Any, Dict, Iterator, List, Optional

from . import _shared
from ._places import HostError


@contextlib.contextmanager
def locked(path: str) -> Iterator[bytes]:
    """The content of a file, new ones without any, that no other run uses during the block."""
    is_waiting = False
    while True:
        try:
            file = os.open(path, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o666)
        except OSError as error:
            raise HostError("{}: {}".format(path, error.strerror)) from error
        try:
            try:
                fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except OSError:
                if not is_waiting:
                    print("qdp-host: {}: waiting for the run that uses it".format(path), file=sys.stderr, flush=True)
                is_waiting = True
                fcntl.flock(file, fcntl.LOCK_EX)
            if os.path.exists(path) and os.path.samestat(os.fstat(file), os.stat(path)):
                with open(path, "rb") as content:
                    yield content.read()
                return
            # The run that used it has written another file in its place.
        finally:
            os.close(file)


def load(host: "_shared.SharedHost", path: str, content: bytes) -> None:
    """Make a host the one that a file keeps."""
    try:
        kept = json.loads(content.decode())
        scenario, uptime = kept["scenario"], float(kept["uptime"])
        host.load(dict(scenario))
        host.advance(uptime - host.uptime())
    except (ValueError, KeyError, TypeError) as error:
        raise HostError("{}: keeps no host: {!r}; name another file".format(path, error)) from None


def write(host: "_shared.SharedHost", path: str) -> None:
    """Keep a host; a run that is killed in the middle leaves the file as it was."""
    text = json.dumps({"uptime": host.uptime(), "scenario": host.scenario()}, indent=1)
    try:
        with tempfile.NamedTemporaryFile("w", dir=os.path.dirname(path), delete=False) as file:
            file.write(text + "\n")
            file.flush()
            os.fchmod(file.fileno(), os.stat(path).st_mode & 0o777)
            os.fsync(file.fileno())
        os.replace(file.name, path)
    except OSError as error:
        raise HostError("{}: {}; the host is not kept".format(path, error.strerror)) from error


def run(path: str, scenario: Optional[str], command: List[str], environment: Dict[str, str]) -> int:
    """Run a command on the host that a file keeps, and keep what it has become. The scenario is that of a new file."""
    path = os.path.realpath(path)
    with locked(path) as content, _shared.serving() as host:
        if content:
            load(host, path, content)
        elif scenario:
            host.load(scenario)
        try:
            status = _run_child(command, dict(environment, **{_shared.VARIABLE: host.socket}))
        finally:
            write(host, path)
    if status < 0:
        if -status != signal.SIGKILL:
            signal.signal(-status, signal.SIG_DFL)
        os.kill(os.getpid(), -status)
    return status


def _run_child(command: List[str], environment: Dict[str, str]) -> int:
    """The status of a child, which gets the signals of this process; the terminal's go to both."""
    child = []  # type: List[subprocess.Popen[bytes]]

    def pass_on(number: int, _: Any) -> None:
        for each in child:
            each.send_signal(number)

    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, pass_on)
    for number in (signal.SIGINT, signal.SIGQUIT):
        signal.signal(number, lambda *_: None)
    try:
        child.append(subprocess.Popen(command, env=environment))
    except OSError as error:
        raise HostError("{} cannot be run: {}".format(command[0], error.strerror)) from error
    return child[0].wait()
