"""The stub as it stands: its functions by `ast`, its annotations as Python evaluates them, values held against these,
and what its documentation says of failures."""

import ast
import re
import types
import typing
from collections import namedtuple

UNIONS = (types.UnionType, typing.Union)

# A text of a failure: the heading it stands under, the text with its line breaks, and a pattern of it.
Failure = namedtuple("Failure", "heading text pattern")

HEADINGS = ("Printed", "Raised", "Left set", "None, ", "False, ")


def failures_in(documentation):
    """The failures that a docstring lists. A remark stands behind its text, or below; one text or more share it."""
    found = []  # lists of a heading, a text, and its remark
    heading = ""
    for line in documentation.splitlines():
        if not line.startswith(" "):
            heading = line if line.startswith(HEADINGS) else ""
        if not heading:
            continue
        remark = re.sub(r'"[^"]*"', "", line).strip(" ,") if line != heading else ""
        added = [[heading, text, ""] for text in re.findall(r'"([^"]*)"', line)]
        waiting = [each for each in found if each[0] is heading and not each[2]]  # texts whose remark is to come
        if added:
            found += added
            sharing = waiting + added
        else:
            sharing = waiting or found[-1:]
        for each in sharing:
            each[2] += f" {remark}" if remark else ""
    return [_failure(*each) for each in found]


def _failure(heading, text, remark):
    said = heading + " " + remark
    if heading.startswith("Printed"):
        text += "\n" * (2 if "two line breaks" in said else 0 if "without a line break" in said else 1)
    text = text.replace("\\n", "\n")
    return Failure(heading, text, ".+?".join(map(re.escape, re.split("<[^>]*>", text))))


class Stub:
    """A stub file. `seen` gathers the places of values that have been looked at."""

    def __init__(self, path):
        text = path.read_text()
        self.tree = ast.parse(text)
        self._module = types.ModuleType("libqdp_stub")
        exec(compile(text, str(path), "exec"), vars(self._module))
        self.seen = set()

    def functions(self):
        """The definitions of all functions, in the order of the file."""
        return [node for node in self.tree.body if isinstance(node, ast.FunctionDef)]

    def function(self, name):
        (found,) = [each for each in self.functions() if each.name == name]
        return found

    def annotations(self, name):
        """The annotations of a function's parameters, in order, and of its result."""
        hints = typing.get_type_hints(getattr(self._module, name))
        result = hints.pop("return")
        return list(hints.values()), result

    def documentation(self, name):
        return ast.get_docstring(self.function(name))

    def failures(self, name):
        """The failures that a function's documentation lists, with those of the functions whose texts it refers to."""
        text = self.documentation(name)
        others = re.findall(r"the texts of\s+`(\w+)`", text)
        return failures_in(text) + [each for other in others for each in self.failures(other)]

    def defined(self, name):
        return getattr(self._module, name)

    def annotated_places(self, annotation, place="result"):
        """All places of a value that an annotation speaks of, "result[*]['mtu']", and what it says of each."""
        yield place, annotation
        if typing.is_typeddict(annotation):
            for key, one in typing.get_type_hints(annotation).items():
                yield from self.annotated_places(one, f"{place}[{key!r}]")
        elif typing.get_origin(annotation) in (list, tuple):
            for one in typing.get_args(annotation):
                if one is not Ellipsis:
                    yield from self.annotated_places(one, f"{place}[*]")
        elif typing.get_origin(annotation) is not typing.Literal:
            for one in typing.get_args(annotation):
                yield from self.annotated_places(one, place)

    def places(self, annotation):
        return {place for place, _ in self.annotated_places(annotation)}

    def mismatches(self, value, annotation, place="result"):
        """What keeps a value from being what the annotation says, a text for each."""
        self.seen.add(re.sub(r"\[\d+\]", "[*]", place))
        origin, arguments = typing.get_origin(annotation), typing.get_args(annotation)
        if origin in UNIONS:
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
        hints = typing.get_type_hints(annotation)
        expected = [key for key in hints if key in annotation.__required_keys__ or key in value]
        if list(value) != expected:
            yield f"{place}: its keys are {list(value)}, not {expected}"
        for key in hints:
            if key in value:
                yield from self.mismatches(value[key], hints[key], f"{place}[{key!r}]")
