"""Named tuples of annotated classes: what typing's own have, without typing."""

import os
import pickle
import subprocess
import sys
import typing

import pytest

from qdp.named_tuple import NamedTuple


class Way(NamedTuple):
    """A way between two places."""

    start: str
    end: str
    length: "typing.Optional[int]" = None
    toll: int = 0

    UNIT = "km"

    def reversed(self):
        """The same way back."""
        return self._replace(start=self.end, end=self.start)

    @property
    def text(self):
        return "{}-{}".format(self.start, self.end)


def test_fields_and_defaults():
    way = Way("a", "b")
    assert way == ("a", "b", None, 0) and isinstance(way, tuple)
    assert Way("a", "b", toll=3) == ("a", "b", None, 3)
    assert Way._fields == ("start", "end", "length", "toll")
    assert repr(way) == "Way(start='a', end='b', length=None, toll=0)"


def test_wrong_arguments():
    with pytest.raises(TypeError):
        Way("a")
    with pytest.raises(TypeError):
        Way("a", "b", width=1)
    with pytest.raises(AttributeError):
        Way("a", "b").start = "c"


def test_what_else_the_class_has():
    assert Way("a", "b", 5).reversed() == ("b", "a", 5, 0)
    assert Way("a", "b").text == "a-b"
    assert Way.UNIT == "km"


def test_identity():
    assert Way.__doc__ == "A way between two places."
    assert (Way.__module__, Way.__qualname__) == (__name__, "Way")
    assert list(typing.get_type_hints(Way)) == ["start", "end", "length", "toll"]
    assert Way.__annotations__["toll"] is int


def test_pickles():
    way = Way("a", "b", 5, 1)
    assert pickle.loads(pickle.dumps(way)) == way
    assert type(pickle.loads(pickle.dumps(way))) is Way


def test_no_import_of_typing(build):
    code = "import sys, qdp.host; print(sorted({'typing', 'contextlib', 'qdp.flows', 'qdp.nic'} & set(sys.modules)))"
    environment = {**os.environ, "LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build)}
    done = subprocess.run([sys.executable, "-S", "-c", code], env=environment, capture_output=True, text=True)
    assert (done.stdout, done.stderr, done.returncode) == ("[]\n", "", 0)
