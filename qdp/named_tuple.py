"""Named tuples of annotated classes without the module typing, whose import takes a fifth of a command's start."""

from collections import namedtuple

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import NamedTuple
else:

    class _Annotated(type):
        """Makes a class into a named tuple, as typing does: an annotation a field, with the value behind it as its
        default. What else the class has stays."""

        def __new__(mcs, name, bases, namespace):
            annotated = super().__new__(mcs, name, bases, namespace)
            if not bases:
                return annotated
            fields = annotated.__annotations__
            made = namedtuple(name, fields)
            made.__new__.__defaults__ = tuple(namespace[field] for field in fields if field in namespace)
            made.__annotations__ = fields
            for key, value in namespace.items():
                if key in ("__doc__", "__module__", "__qualname__") or not key.startswith("__") and key not in fields:
                    setattr(made, key, value)
            return made

    class NamedTuple(metaclass=_Annotated):
        """The base of such a class."""


__all__ = ["NamedTuple"]
