"""Where the exporter's answers come from: the reading process, its time limit, and its replacement."""

import marshal
import os
import select
import signal
import subprocess
import sys
import threading
import time

from . import collect, reader

YOUNG = 1.0  # seconds for which an answer is used again
BUFFER = 1 << 16


class Reading:
    """What one sweep found, complete or not."""

    def __init__(self):
        self.collectors = []  # frames, as reader.py sends them
        self.failures = {}  # by method, since the reading process began
        self.omitted = 0
        self.is_complete = False
        self.time = time.monotonic()


class Source:
    """Gives readings. Any number of threads may ask; one sweep runs at a time, and the others wait for its result."""

    def __init__(self, options, timeout, command=None):
        """`timeout`: seconds for a sweep. `command`: what starts the reading process."""
        self._command = command or command_of(options)
        self._timeout = timeout
        self._lock = threading.Lock()
        self._reading = None
        self._process = None
        self._unread = b""
        self._state = {}  # of counters, for a next reading process
        self._failures = {}  # by method, of the present reading process
        self._past_failures = {}  # and of those that are gone
        self.restarts = 0

    def read(self, timeout=None):
        """A reading that is younger than a second. `timeout`: shorter than the usual one, where the caller has less."""
        deadline = time.monotonic() + min(timeout or self._timeout, self._timeout)
        with self._lock:
            if self._reading is None or time.monotonic() - self._reading.time > YOUNG:
                self._reading = self._sweep(deadline)
            return self._reading

    def _sweep(self, deadline):
        reading = Reading()
        try:
            self._start()
            self._process.stdin.write(reader.pack(None))
            while not reading.is_complete:
                frame = self._frame(deadline)
                if frame[0] == reader.END:
                    _, reading.failures, reading.omitted, self._state = frame
                    reading.is_complete = True
                else:
                    reading.collectors.append(frame)
        except (OSError, EOFError, ValueError, TimeoutError):
            self._replace()
        self._count(reading)
        reading.time = time.monotonic()
        return reading

    def _count(self, reading):
        """Failures of reading processes that are gone count on."""
        if reading.is_complete:
            self._failures = reading.failures
        reading.failures = {
            method: self._past_failures.get(method, 0) + self._failures.get(method, 0) for method in collect.METHODS
        }

    def _start(self):
        if self._process is None:
            environment = dict(os.environ, PYTHONPATH=os.pathsep.join(filter(None, sys.path)))
            self._process = subprocess.Popen(
                self._command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0, env=environment
            )
            self._unread = b""
            self._process.stdin.write(reader.pack(self._state))

    def _frame(self, deadline):
        size = reader.LENGTH.size
        length = reader.LENGTH.unpack(self._bytes(size, deadline))[0]
        return marshal.loads(self._bytes(length, deadline))

    def _bytes(self, count, deadline):
        pipe = self._process.stdout.fileno()
        while len(self._unread) < count:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([pipe], [], [], left)[0]:
                raise TimeoutError
            data = os.read(pipe, BUFFER)
            if not data:
                raise EOFError
            self._unread += data
        taken, self._unread = self._unread[:count], self._unread[count:]
        return taken

    def _replace(self):
        """Ends a reading process that hangs or has died; the next sweep starts another."""
        self.restarts += 1
        for method, count in self._failures.items():
            self._past_failures[method] = self._past_failures.get(method, 0) + count
        self._failures = {}
        self.close()

    def close(self):
        process, self._process = self._process, None
        if process:
            process.send_signal(signal.SIGKILL)  # a call of the platform that hangs hears no other
            process.stdin.close()
            process.stdout.close()
            process.wait()


# Starts the reader with the path of this process, whatever lies in the folder where that is.
_PROGRAM = "import sys; del sys.path[0]; from qdp.exporter.reader import main; main(*sys.argv[1:])"


def command_of(options):
    """What starts the reading process."""
    exclude = options.exclude.pattern if options.exclude else ""
    return [sys.executable, "-c", _PROGRAM, options.include.pattern, exclude, str(options.max_series)]
