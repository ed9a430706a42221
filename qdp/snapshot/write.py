"""Writes a snapshot: supervises the reading process, and replaces the file as a whole."""

import contextlib
import errno
import fcntl
import hashlib
import os
import select
import signal
import subprocess
import sys
import time

from . import lines, sweep

SECTION_SECONDS = 30.0  # until a section that says nothing more is taken for hanging
BUFFER = 1 << 20  # of the pipe from the reading process
GATHER_SECONDS = 0.01  # until lines are copied: to wake up for each costs more than the line itself

F_SETPIPE_SZ = 1031  # fcntl has it from CPython 3.10 on

# Starts the reading process with the path of this one, whatever lies in the folder where that is.
_PROGRAM = "import sys; del sys.path[0]; from qdp.snapshot.reading import main; main(*sys.argv[1:])"


class Sink:
    """The lines of a file, with their count and checksum."""

    def __init__(self, file):
        self._file = file
        self._sum = hashlib.sha256()
        self._count = 0

    def write(self, line):
        self._file.write(line)
        self._sum.update(line)
        self._count += 1

    def end(self):
        self._file.write(lines.dumped({"sha256": self._sum.hexdigest(), "lines": self._count}))


def new_file(path, ending=""):
    """A descriptor and the path of a new file beside `path`, which the owner alone may read."""
    folder, name = os.path.split(os.path.abspath(path))
    temporary = os.path.join(folder, ".{}-{}{}".format(name, os.urandom(6).hex(), ending))
    try:
        return os.open(temporary, os.O_RDWR | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o600), temporary
    except OSError as error:
        error.filename = path
        raise


@contextlib.contextmanager
def replacing(path):
    """A Sink whose lines are the file `path` when the block has ended well; else there is the old file, or none. What
    is there and is no regular file stays: to root, even a device could be replaced."""
    if os.path.exists(path) and not os.path.isfile(path):
        raise OSError(errno.EINVAL, "it is no regular file", path)
    handle, temporary = new_file(path)
    try:
        with os.fdopen(handle, "wb") as file:
            sink = Sink(file)
            yield sink
            sink.end()
            file.flush()
            os.fsync(file.fileno())
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise


def head(options):
    """The first line: the form, and where and when it was written."""
    import qdp

    machine = os.uname()
    return {
        lines.MAGIC[2:14].decode(): lines.VERSION,
        "version": qdp.__version__,
        "python": sys.version.split()[0],
        "machine": {
            "name": machine.nodename,
            "system": "-".join([machine.sysname, machine.release, machine.machine]),
        },
        "time": time.time(),
        "sections": options.names,
        "readings": options.readings,
        "interval": options.interval,
    }


def recorder():
    """The path of the recorder of platform calls; None where it is not installed."""
    try:
        from qdp_host import _places

        return _places.library(_places.libraries(), _places.CAPTURE)
    except Exception:  # the embedded host is not there, or not as a whole
        return None


class Supervisor:
    """Runs through sections, in as many reading processes as it takes."""

    def __init__(self, sink, wanted, options, progress, capture):
        self._sink = sink
        self._left = list(wanted)  # (reading, section), the one that is being read first
        self._options = options
        self._progress = progress
        self._capture = capture
        self._start = time.monotonic()
        self._has_begun = False  # the section that is read first

    def run(self):
        while self._left:
            why = self._run_process()
            if self._left:  # it ended too soon: the section is given up, and another process reads the rest
                reading, section = self._left.pop(0)
                if not self._has_begun:
                    self._sink.write(lines.section_line(reading, section))
                self._sink.write(lines.dumped({"ended": section, "how": why}))
                self._progress("{}: {}".format(section, why))
                self._capture = None  # it would be begun anew

    def _environment(self):
        environment = dict(os.environ, PYTHONPATH=os.pathsep.join(filter(None, sys.path)))
        if self._capture:
            shim, file = self._capture
            environment["LD_PRELOAD"] = " ".join(filter(None, [os.environ.get("LD_PRELOAD"), shim]))
            environment["QDP_HOST_CAPTURE"] = file
        return environment

    def _run_process(self):
        """Copies what a process reads. Why it has ended."""
        options = self._options
        process = subprocess.Popen(
            [sys.executable, "-c", _PROGRAM, str(options.interval), str(self._start), str(options.flow_pages)]
            + ["{}/{}".format(*each) for each in self._left],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            env=self._environment(),
            bufsize=0,
        )
        try:
            fcntl.fcntl(process.stdout, F_SETPIPE_SZ, BUFFER)
        except OSError:
            pass  # it stays small
        try:
            if self._copy(process.stdout.fileno()):
                return "the reading process ended with status {}".format(process.wait())
            return "killed after {:g} seconds without an answer".format(options.seconds)
        finally:
            process.send_signal(signal.SIGKILL)
            process.stdout.close()
            process.wait()

    def _copy(self, pipe):
        """Copies lines until the pipe ends. False where a section hangs."""
        rest, self._has_begun = b"", False
        while True:
            # Between two readings the process waits.
            is_next = self._left and self._left[0][1] == self._options.names[0]
            seconds = self._options.seconds + (self._options.interval if is_next else 0)
            if not select.select([pipe], [], [], seconds)[0]:
                return False
            time.sleep(GATHER_SECONDS)
            data = os.read(pipe, BUFFER)
            if not data:
                return True
            whole, newline, rest = (rest + data).rpartition(b"\n")
            for line in (whole + newline).splitlines(True):
                self._sink.write(line)
                if line.startswith(b'{"ended": '):
                    self._left.pop(0)
                    self._has_begun = False
                elif line.startswith(b'{"reading": '):
                    self._has_begun = True
                    self._progress("reading {}".format(self._left[0][1]))


class Options:
    """What is read: these sections, so many times, so many seconds apart, so many pages of each lcore's flows. A
    section that says nothing for so many seconds hangs."""

    def __init__(self, names=None, readings=1, interval=10.0, flow_pages=1, seconds=SECTION_SECONDS):
        self.names = [name for name, _ in sweep.SECTIONS] if names is None else list(names)
        self.readings = readings
        self.interval = interval
        self.flow_pages = flow_pages
        self.seconds = seconds


@contextlib.contextmanager
def captured(path, shim):
    """(recorder, file of its own beside `path`); None without a recorder."""
    if not shim:
        yield None
        return
    handle, temporary = new_file(path, ".capture")
    os.close(handle)
    try:
        yield shim, temporary
    finally:
        os.unlink(temporary)


def write(path, options=None, progress=lambda text: None):
    """Writes a snapshot of this host."""
    options = options or Options()
    shim = recorder()
    first = [(1, name) for name in options.names]
    # What was read once for a bundle is not read again: what counts is in the sections of every snapshot.
    again = [(reading, name) for reading in range(2, options.readings + 1) for name, _ in sweep.SECTIONS]
    with replacing(path) as sink, captured(path, shim) as capture:
        sink.write(lines.dumped(head(options)))
        Supervisor(sink, first + again, options, progress, capture).run()
        if capture:
            with open(capture[1], "rb") as file:
                for line in file:
                    if line.endswith(b"\n"):  # a process that was killed may leave half a line
                        sink.write(lines.CAPTURE + line[:-1] + b"}\n")
