"""One host for several processes: the process that serves it, and its control from other processes."""

import contextlib
import ctypes
import json
import os
import socket
import struct
import subprocess
import sys
import tempfile
from typing import Any, Callable, Dict, Iterator, Optional, Tuple, Union

from . import _host, _places
from ._places import HostError

VARIABLE = "QDP_HOST"  # names the socket of the host that answers a process

# Messages as host/link/message.h has them.
HELLO, CONTROL, REPLY, ERROR = b"h", b"k", b"r", b"e"
GREETING = b"qdp-host 1"
HEAD = struct.Struct("=Ic")
TEXT = struct.Struct("=I")

# What a process answers by itself, without a host: facts of the build and of files.
WITHOUT_HOST = {"operation", "operations", "version", "check", "completed", "check_capture"}

SECONDS_TO_END = 10
NANOSECONDS_A_SECOND = 1000000000


class Connection:
    """A connection to the host that serves at a socket."""

    def __init__(self, path: str) -> None:
        self.path = path
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        try:
            self._socket.connect(path)
        except (ConnectionRefusedError, FileNotFoundError):
            raise self._closed("no host serves there; qdp-host serve starts one") from None
        except OSError as error:
            raise self._closed(error.strerror or str(error)) from None
        self._exchange(HELLO, TEXT.pack(len(GREETING)) + GREETING + struct.pack("=Q", 0), HELLO)

    def close(self) -> None:
        self._socket.close()

    def _closed(self, reason: str) -> HostError:
        self.close()
        return HostError("{}: {}".format(self.path, reason))

    def _receive(self, size: int) -> bytes:
        parts = []
        while size > 0:
            part = self._socket.recv(min(size, 1 << 20))
            if not part:
                raise ConnectionResetError
            parts.append(part)
            size -= len(part)
        return b"".join(parts)

    def _exchange(self, kind: bytes, parts: bytes, expected: bytes) -> bytes:
        try:
            self._socket.sendall(HEAD.pack(len(kind) + len(parts), kind) + parts)
            length, answered = HEAD.unpack(self._receive(HEAD.size))
            answer = self._receive(length - len(kind))
        except OSError:
            raise self._closed("the host has ended") from None
        if answered == ERROR:
            raise self._closed(answer[TEXT.size :].decode(errors="replace"))
        if answered != expected:
            raise self._closed("what answers is no host")
        return answer

    def call(self, function: str, arguments: Tuple[Any, ...]) -> Any:
        """The result of a control function of the host."""
        request = json.dumps({"call": function, "arguments": list(arguments)}).encode()
        answer = self._exchange(CONTROL, TEXT.pack(len(request)) + request, REPLY)
        reply = json.loads(answer[TEXT.size :].decode())
        if "error" in reply:
            raise HostError("{}: {}: {}".format(self.path, function, reply["error"]))
        return reply["result"]


def _sent(argument: Any) -> Any:
    return argument.decode(errors="surrogateescape") if isinstance(argument, bytes) else argument


class SharedControl:
    """The functions of control.h, as ctypes gives them, of the host at a socket."""

    def __init__(self, own: Any, connection: Connection) -> None:
        self._own = own
        self._connection = connection

    def __getattr__(self, name: str) -> Callable[..., Any]:
        function = name[len("qdp_host_") :]
        if function in WITHOUT_HOST:
            return getattr(self._own, name)  # type: ignore[no-any-return]

        def call(*arguments: Any) -> Any:
            result = self._connection.call(function, tuple(map(_sent, arguments)))
            return result.encode() if isinstance(result, str) else result

        return call

    def qdp_host_forget(self, snapshot: int) -> None:
        with contextlib.suppress(HostError):  # the host has forgotten it with the connection
            self._connection.call("forget", (snapshot,))

    def qdp_host_script_output(self, operation: bytes, output: int, content: bytes, _: int) -> Any:
        return self._connection.call("script_output", (_sent(operation), output, content.hex()))

    def qdp_host_script_text(self, operation: bytes, content: bytes, _: int) -> Any:
        return self._connection.call("script_text", (_sent(operation), content.hex()))


class SharedHost(_host.EmbeddedHost):
    """The host that serves at a socket: what this changes, all its processes see.

    It has no functions of the stand-ins, which are those of a process that QDP_HOST attaches. Snapshots and a recording
    end with the process that has made them.
    """

    def __init__(self, path: "_places.Path", folder: Optional[str] = None) -> None:
        self.socket = os.path.abspath(os.fspath(path))
        self._folder = os.path.abspath(folder or _places.libraries())
        self._connection = Connection(self.socket)
        self._declare(_host._loaded(self._folder, _places.CONTROL))
        self._control = SharedControl(self._control, self._connection)

    def close(self) -> None:
        """Let the host go on without this process."""
        self._connection.close()

    def environment(self, interpreter: str = sys.executable) -> Dict[str, str]:
        """The environment of a process that the host answers: this one's, the stand-ins, and QDP_HOST."""
        made = _places.environment(self._folder, interpreter)
        made[VARIABLE] = self.socket
        return made


def check(path: "_places.Path") -> str:
    """The absolute path of a socket at which a host serves; a HostError says why not."""
    absolute = os.path.abspath(os.fspath(path))
    Connection(absolute).close()
    return absolute


def serve(path: "_places.Path", is_child: bool) -> None:
    """Serve the host of this process until it is told to end, or, as a child, until its parent has gone."""
    control = _host.the_host()._control
    wrong = control.qdp_host_listen(os.fsencode(os.path.abspath(os.fspath(path))))
    if wrong is not None:
        raise HostError(wrong.decode(errors="replace"))
    print("serving at {}".format(path), flush=True)
    control.qdp_host_serve(sys.stdin.fileno() if is_child else -1)


@contextlib.contextmanager
def serving(scenario: "Union[_places.Path, Dict[str, Any], None]" = None) -> Iterator[SharedHost]:
    """A host in a process of its own, for the processes that its `environment()` is given to, until the block ends.

    scenario: a file, the name of a scenario that comes along, or a dict.
    """
    with tempfile.TemporaryDirectory(prefix="qdp-host-") as folder:
        path = os.path.join(folder, "socket")
        environment = dict(os.environ)
        _places.extend(environment, "PYTHONPATH", [os.path.dirname(_places.PACKAGE)])
        environment.pop(VARIABLE, None)
        command = [sys.executable, "-m", __package__, "serve", "--child", path]
        # A session of its own, so that Ctrl-C reaches those who use the host first.
        server = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment, start_new_session=True
        )
        assert server.stdin and server.stdout
        try:
            if not server.stdout.readline():
                raise HostError("the host could not be started; what is wrong stands on standard error")
            host = SharedHost(path)
            try:
                if scenario is not None:
                    host.load(scenario)
                yield host
            finally:
                host.close()
        finally:
            server.stdin.close()
            try:
                server.wait(SECONDS_TO_END)
            except subprocess.TimeoutExpired:
                server.kill()
                server.wait()
            server.stdout.close()
