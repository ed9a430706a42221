"""Reads snapshots: checks the whole file first, and finds answers without holding them all."""

import hashlib
import json
import os
import stat

from .. import errors
from . import lines

# What comes of lines that no writer writes.
_DAMAGE = (ValueError, KeyError, TypeError, AttributeError, RecursionError, IndexError)

CHUNK = 1 << 20
KEY_BYTES = 1 << 12  # of a line, within which a call's method and arguments end
END_BYTES = 200  # the last line is shorter


class SnapshotError(errors.QdpError):
    """A file that is no snapshot, or a damaged one; or a snapshot without what is asked for."""

    default_hint = "write a snapshot anew: `qdp snapshot FILE`"


class Snapshot:
    """A snapshot file. Answers are read from it when they are asked for."""

    def __init__(self, path):
        self.path = os.fspath(path)
        try:
            self._file = open(self.path, "rb", opener=_open_without_waiting)
            if not stat.S_ISREG(os.fstat(self._file.fileno()).st_mode):
                raise self._wrong("it is no regular file")
            self._check()
            self._index()
        except OSError as error:
            raise self._wrong(error.strerror)
        except _DAMAGE as error:
            raise self._damaged(error)

    def _damaged(self, error):
        return self._wrong("it is damaged: {}".format(type(error).__name__))

    def _wrong(self, what):
        return SnapshotError("{}: {}".format(self.path, what))

    def _check(self):
        """That the file is a snapshot of a form that is known, and whole."""
        first = self._file.readline(CHUNK)
        if not first.startswith(lines.MAGIC):
            raise self._wrong("it is no snapshot")
        version = first[len(lines.MAGIC) :].split(b",")[0].strip(b"} \n")
        if not version.isdigit():
            raise self._wrong("it is damaged: its form has no number")
        if int(version) > lines.VERSION:
            raise self._wrong("it is of a newer form ({}); update qdp".format(int(version)))
        size = os.fstat(self._file.fileno()).st_size
        self._file.seek(max(0, size - END_BYTES))
        tail = self._file.read(END_BYTES)
        start = tail.rfind(lines.END)
        if start < 0 or not tail.endswith(b"}\n"):
            raise self._wrong("it is cut off")
        self._end = size - len(tail) + start
        expected = json.loads(tail[start:].decode())["sha256"]
        found, left = hashlib.sha256(), self._end
        self._file.seek(0)
        while left:
            data = self._file.read(min(CHUNK, left))
            if not data:
                raise self._wrong("it is cut off")
            found.update(data)
            left -= len(data)
        if found.hexdigest() != expected:
            raise self._wrong("it is damaged: its checksum is wrong")

    def _index(self):
        """Where each call's line is, by reading and key."""
        self.head = {}
        self.aliases = {}
        self.sections = []  # (reading, section, how it ended)
        self.clocks = {}  # monotonic times of the readings
        self._settings = []
        self._calls = []  # of each reading
        decoder = json.JSONDecoder()
        reading = 0
        for place, line in self.lines():
            if line.startswith(lines.CALL):
                key, _ = decoder.raw_decode(line[len(lines.CALL) : KEY_BYTES].decode())
                method, arguments = key
                if not isinstance(method, str) or not isinstance(arguments, list):
                    raise TypeError(key)
                self._calls[reading - 1].setdefault(json.dumps(key), place)
            elif line.startswith(lines.CAPTURE):
                continue
            else:
                if len(line) > CHUNK:
                    raise ValueError(len(line))
                fields = lines.loaded(line)
                if place == 0:
                    self.head = fields
                elif "section" in fields:
                    reading = int(fields["reading"])
                    while len(self._calls) < reading:
                        self._calls.append({})
                        self._settings.append({})
                    self.clocks.setdefault(reading, fields["clock"])
                    self.sections.append((reading, fields["section"], "not read to its end"))
                elif "alias" in fields:
                    self.aliases[fields["alias"][0]] = fields["alias"][1]
                elif "setting" in fields:
                    self._settings[reading - 1][fields["setting"]] = fields["value"]
                elif "ended" in fields:
                    self.sections[-1] = self.sections[-1][:2] + (fields["how"],)
        if not self._calls:
            raise self._wrong("it holds no reading")

    def lines(self):
        """(offset, line) of all lines but the last."""
        self._file.seek(0)
        place = 0
        while place < self._end:
            line = self._file.readline()
            yield place, line
            place += len(line)

    @property
    def readings(self):
        return len(self._calls)

    def settings(self, reading=1):
        """{path: value} of the settings that were read."""
        return self._settings[reading - 1]

    def calls(self, reading=1):
        """((method, arguments), answer as its line has it) of all calls of a reading, in order."""
        for key, place in self._calls[reading - 1].items():
            method, arguments = json.loads(key)
            yield (method, tuple(arguments)), self._answer(place)

    def _answer(self, place):
        self._file.seek(place)
        try:
            answer = lines.loaded(self._file.readline())
            if "error" in answer:
                error = answer["error"]
                answer["error"] = {key: str(error[key]) for key in ("class", "text", "hint")}
            elif "result" not in answer:
                raise KeyError("result")
        except _DAMAGE as error:
            raise self._damaged(error)
        return answer

    def call(self, method, arguments, reading=None):
        """The result of a call, or the exception that it ended with when the snapshot was written: of that reading, or
        of the last one that holds it."""
        key = lines.key_of(method, list(arguments))
        readings = reversed(self._calls) if reading is None else [self._calls[reading - 1]]
        place = next((calls[key] for calls in readings if key in calls), None)
        if place is None:
            shown = "{}({})".format(method, ", ".join(map(repr, arguments)))
            raise SnapshotError(
                "{} does not hold {}".format(self.path, shown), hint="it holds what `qdp snapshot` reads"
            )
        answer = self._answer(place)
        if "error" in answer:
            about = answer["error"]
            failure = _class_of(about["class"])
            raise failure(about["text"], method, tuple(arguments), about["hint"])
        return answer["result"]

    def answer(self, reading=None):
        """Lets this snapshot answer all calls of this process from now on, with its aliases."""
        from ..aliases import Aliases
        from ..call import answer_from

        Aliases.known = self.aliases
        answer_from(lambda method, arguments: self.call(method, arguments, reading))

    def capture(self):
        """The lines of the capture of the platform's calls; none where the recorder was not there."""
        for _, line in self.lines():
            if line.startswith(lines.CAPTURE):
                yield line[len(lines.CAPTURE) : -2] + b"\n"


def _class_of(name):
    """The exception class of that name; Refused for one that this version does not know."""
    found = getattr(errors, name, None)
    return found if isinstance(found, type) and issubclass(found, errors.QdpError) else errors.Refused


def _open_without_waiting(path, flags):
    """A FIFO does not keep the caller waiting."""
    return os.open(path, flags | os.O_NONBLOCK)
