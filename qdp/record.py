"""A record: one dictionary of a result, adopted as it is, with its keys as attributes and as items."""


TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Callable, Dict, Iterator, KeysView, Tuple


class Record:
    """A dictionary of the module with its keys as attributes and items; `vars(record)` is the dictionary itself.

    Keys that are no names, as "port ID", go by item: `record["port ID"]`. A key that is missing is an AttributeError or
    a KeyError. `json.dumps(record, default=vars)` writes it, `dict(record)` copies it.
    """

    __slots__ = ("__dict__",)
    __hash__ = None  # type: ignore[assignment]

    _inside = {}  # type: Dict[str, Any]

    def __init__(self, values: "Dict[str, Any]") -> None:
        for key, adopt in _inside_adopters(type(self)):
            if key in values:
                values[key] = adopt(values[key])
        self.__dict__ = values

    def __getitem__(self, key: str) -> "Any":
        return self.__dict__[key]

    def __setitem__(self, key: str, value: "Any") -> None:
        self.__dict__[key] = value

    def __contains__(self, key: object) -> bool:
        return key in self.__dict__

    def __iter__(self) -> "Iterator[str]":
        return iter(self.__dict__)

    def __len__(self) -> int:
        return len(self.__dict__)

    def __bool__(self) -> bool:
        return True

    def keys(self) -> "KeysView[str]":
        return self.__dict__.keys()

    def __eq__(self, other: object) -> bool:
        if isinstance(other, Record):
            return type(self) is type(other) and self.__dict__ == other.__dict__
        return self.__dict__ == other if isinstance(other, dict) else NotImplemented

    def __repr__(self) -> str:
        return "{}({!r})".format(type(self).__name__, self.__dict__)

    def __reduce__(self) -> "Tuple[Any, ...]":
        return _restored, (type(self), self.__dict__)


def _restored(record_class, values):
    record = record_class.__new__(record_class)
    record.__dict__ = values
    return record


def adopter(shape: "Any") -> "Callable[[Any], Any]":
    """The function that makes records of a result, in place. A shape is a record class; a list of one shape, for a list
    or a tuple of any length; or a tuple of shapes. None stands for what holds no record. A value that is not of its
    shape stays as it is."""
    if shape is None:
        return _as_it_is
    if isinstance(shape, list):
        return _adopter_of_list(shape[0])
    if isinstance(shape, tuple):
        adopters = [adopter(one) for one in shape]
        return lambda values: tuple([adopt(value) for adopt, value in zip(adopters, values)])
    return _adopter_of_record(shape)


def _as_it_is(value):
    return value


def _inside_adopters(record_class):
    return [(key, adopter(shape)) for key, shape in record_class._inside.items()]


def _adopter_of_record(record_class):
    new = record_class.__new__
    inside = _inside_adopters(record_class)

    def adopt(values):
        if type(values) is not dict:
            return values
        for key, adopt_value in inside:
            if key in values:
                values[key] = adopt_value(values[key])
        record = new(record_class)
        record.__dict__ = values
        return record

    return adopt


def _adopter_of_list(shape):
    """Lists of plain records are the long ones: they are adopted without a call for each."""
    adopt = adopter(shape)
    is_plain = isinstance(shape, type) and not shape._inside
    new = shape.__new__ if is_plain else None

    def adopt_each(values):
        if type(values) is list:
            values[:] = map(adopt, values)
        return tuple(map(adopt, values)) if type(values) is tuple else values

    def adopt_plain(values):
        if type(values) is list:
            i = 0
            for value in values:
                values[i] = record = new(shape)
                record.__dict__ = value
                i += 1
            return values
        return adopt_each(values)

    return adopt_plain if is_plain else adopt_each
