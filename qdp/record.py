"""A record: one dictionary of a result, adopted as it is, with its keys as attributes and as items."""


TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Dict, Iterator, KeysView, Tuple


class Record:
    """A dictionary of the module with its keys as attributes and items; `vars(record)` is the dictionary itself.

    Keys that are no names, as "port ID", go by item: `record["port ID"]`. A key that is missing is an AttributeError or
    a KeyError. `json.dumps(record, default=vars)` writes it, `dict(record)` copies it.
    """

    __slots__ = ("__dict__",)
    __hash__ = None  # type: ignore[assignment]

    _inside = {}  # type: Dict[str, Any]

    def __init__(self, values: "Dict[str, Any]") -> None:
        for key, inside in self._inside.items():
            if key in values:
                values[key] = as_records(plan_of(inside), values[key])
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
            return type(self) is type(other) and bool(self.__dict__ == other.__dict__)
        if isinstance(other, dict):
            return bool(self.__dict__ == other)
        return NotImplemented

    def __repr__(self) -> str:
        return "{}({!r})".format(type(self).__name__, self.__dict__)

    def __reduce__(self) -> "Tuple[Any, ...]":
        return _restored, (type(self), self.__dict__)


def _restored(record_class: "Any", values: "Dict[str, Any]") -> "Any":
    record = record_class.__new__(record_class)
    record.__dict__ = values
    return record


def plan_of(shape: "Any") -> "Any":
    """How `as_records` goes through a result of that shape.

    A shape is a record class; a list of one shape, for a list or a tuple of any length; a tuple of shapes; or None for
    what holds no record. In a plan, a record class with dictionaries inside is {None: class, key: plan}.
    """
    if isinstance(shape, list):
        return [plan_of(shape[0])]
    if isinstance(shape, tuple):
        return tuple([plan_of(one) for one in shape])
    if shape is None or not shape._inside:
        return shape
    plan = {key: plan_of(inside) for key, inside in shape._inside.items()}
    plan[None] = shape
    return plan


def as_records(plan: "Any", value: "Any") -> "Any":
    """A result with its dictionaries as records, in place where it can be; what is not of its plan stays as it is.

    The C helper has a quicker one.
    """
    if type(value) is dict:
        if isinstance(plan, dict):
            for key in plan:
                if key in value:
                    value[key] = as_records(plan[key], value[key])
            return _restored(plan[None], value)
        return _restored(plan, value) if isinstance(plan, type) else value
    if isinstance(plan, list):
        if type(value) is list:
            value[:] = [as_records(plan[0], item) for item in value]
        return tuple([as_records(plan[0], item) for item in value]) if type(value) is tuple else value
    if isinstance(plan, tuple) and type(value) is tuple and len(plan) == len(value):
        return tuple([as_records(one, item) for one, item in zip(plan, value)])
    return value
