"""The stub as it stands: its functions by `ast`, its annotations as Python evaluates them, and values held against them."""

import ast
import types
import typing


class Stub:
    """A stub file. `seen` gathers the TypedDicts that values have been held against."""

    def __init__(self, path):
        text = path.read_text()
        self.tree = ast.parse(text)
        self._module = types.ModuleType("libqdp_stub")
        exec(compile(text, str(path), "exec"), vars(self._module))
        self.seen = set()

    def functions(self):
        """The definitions of all functions, in the order of the file."""
        return [node for node in self.tree.body if isinstance(node, ast.FunctionDef)]

    def annotations(self, name):
        """The annotations of a function's parameters, in order, and of its result."""
        hints = typing.get_type_hints(getattr(self._module, name))
        result = hints.pop("return")
        return list(hints.values()), result

    def typed_dicts(self):
        return {name for name, value in vars(self._module).items() if typing.is_typeddict(value)}

    def typed_dict(self, name):
        return getattr(self._module, name)

    def mismatches(self, value, annotation, place="result"):
        """What keeps a value from being what the annotation says, a text for each."""
        origin, arguments = typing.get_origin(annotation), typing.get_args(annotation)
        if origin in (types.UnionType, typing.Union):
            each = [list(self.mismatches(value, one, place)) for one in arguments]
            if all(each):
                # The choice that a value of its type was meant for, rather than None.
                yield from max(each, key=lambda found: (found[0].count("["), len(found)))
        elif origin is typing.Literal:
            if not any(type(value) is type(one) and value == one for one in arguments):
                yield f"{place}: {value!r} is none of {arguments}"
        elif typing.is_typeddict(annotation):
            yield from self._typed_dict_mismatches(value, annotation, place)
        elif origin is tuple and arguments[-1:] != (Ellipsis,):
            if type(value) is not tuple or len(value) != len(arguments):
                yield f"{place}: {value!r} is no tuple of {len(arguments)}"
            else:
                for i, (item, one) in enumerate(zip(value, arguments)):
                    yield from self.mismatches(item, one, f"{place}[{i}]")
        elif origin in (list, tuple):
            if type(value) is not origin:
                yield f"{place}: {value!r} is no {origin.__name__}"
            else:
                for i, item in enumerate(value):
                    yield from self.mismatches(item, arguments[0], f"{place}[{i}]")
        elif annotation in (int, str, bool, type(None)):
            if type(value) is not annotation:
                yield f"{place}: {value!r} is no {annotation.__name__}"
        else:
            raise NotImplementedError(f"{place}: {annotation} is not known here")

    def _typed_dict_mismatches(self, value, annotation, place):
        if type(value) is not dict:
            yield f"{place}: {value!r} is no dict"
            return
        self.seen.add(annotation.__name__)
        hints = typing.get_type_hints(annotation)
        expected = [key for key in hints if key in annotation.__required_keys__ or key in value]
        if list(value) != expected:
            yield f"{place}: its keys are {list(value)}, not {expected}"
        for key in hints:
            if key in value:
                yield from self.mismatches(value[key], hints[key], f"{place}[{key!r}]")
