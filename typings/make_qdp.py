"""Makes qdp/records.py and qdp/methods.py from the stub: a record class per dictionary, a typed function per method."""

import ast
import keyword
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
STUB = ROOT / "typings" / "_libqdp-stubs" / "__init__.pyi"
WIDTH = 120

# Records that have more than their keys, by classes of the layer.
EXTENDED = {"FlowEntry": "FlowTexts"}

# Methods for which None means something: the switch has no filter class.
MEANT_NONE = ["GetSwitchFilterTypes"]

RECORDS = '''"""The dictionaries of the module's results as records; typings/make_qdp.py makes this file."""

from .flow_text import FlowTexts
from .record import Record

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import List, Literal, Optional, Tuple

    from _libqdp import {aliases}
{classes}

# What each method returns: None for what holds no record; otherwise a record class, [a shape] for a list or a
# tuple of any length, or a tuple of shapes.
RESULTS = {{
{results}
}}

# The methods that return None when they succeed: all that only set or do something, and those of which a getter has
# nothing to tell.
NONE_IS_NO_FAILURE = frozenset(
    [
{none}
    ]
)
'''

METHODS = '''\
"""The module's methods as typed functions that return records or raise; typings/make_qdp.py makes this file.

The documentation of each is the module's own. What it says of texts that are printed is what the exception holds here:
a text and None of the module is an exception of `qdp.errors` here.
"""

from .call import call

# mypy: disable-error-code="no-any-return"

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import List, Literal, Optional, Tuple

    from _libqdp import {aliases}

    from .records import {records}
{functions}
'''


class Stub:
    """The stub's dictionaries, other types and methods, in its order."""

    def __init__(self, text):
        self.text = text
        self.dictionaries = {}  # name: base, documentation, rows of key and annotation
        self.aliases = []
        self.methods = []
        for node in ast.parse(text).body:
            if isinstance(node, ast.FunctionDef):
                self.methods.append(node)
            elif isinstance(node, ast.ClassDef):
                rows = [(row.target.id, row.annotation) for row in node.body if isinstance(row, ast.AnnAssign)]
                self.dictionaries[node.name] = (node.bases[0].id, ast.get_docstring(node, clean=False), rows)
            elif isinstance(node, ast.Assign) and isinstance(node.value, ast.Call):
                keys, annotations = node.value.args[1].keys, node.value.args[1].values
                rows = [(key.value, annotation) for key, annotation in zip(keys, annotations)]
                self.dictionaries[node.targets[0].id] = ("TypedDict", None, rows)
            elif isinstance(node, ast.Assign):
                self.aliases.append(node.targets[0].id)
        results = [method.returns for method in self.methods]
        self.results = self._named_in(results)
        # Dictionaries that a method takes, and returns nowhere, stay the stub's.
        self.aliases += [name for name in self.dictionaries if name not in self.results]

    def _named_in(self, annotations):
        """The dictionaries that annotations name, with those inside them and the ones they extend."""
        found = set()
        for annotation in annotations:
            for node in ast.walk(annotation):
                if isinstance(node, ast.Name) and node.id in self.dictionaries and node.id not in found:
                    base, _, rows = self.dictionaries[node.id]
                    inside = [ast.Name(base), *(annotation for _, annotation in rows)]
                    found |= {node.id} | self._named_in(inside)
        return found

    def shape(self, annotation):
        """The records in a result: as in RESULTS."""
        if isinstance(annotation, ast.BinOp):
            return self.shape(annotation.left)
        if isinstance(annotation, ast.Name):
            return annotation.id if annotation.id in self.results else None
        if isinstance(annotation, ast.Subscript) and is_of_any_length(annotation):
            item = annotation.slice if annotation.value.id == "list" else annotation.slice.elts[0]
            return f"[{self.shape(item)}]" if self.shape(item) else None
        if isinstance(annotation, ast.Subscript) and isinstance(annotation.slice, ast.Tuple):
            inside = [self.shape(one) for one in annotation.slice.elts]
            return f"({', '.join(map(str, inside))})" if any(inside) else None
        return None


def is_of_any_length(annotation):
    """Whether an annotation is of a list, or of a tuple with any number of items of one type."""
    return annotation.value.id == "list" or ast.unparse(annotation).endswith(", ...]")


def without_none(annotation):
    if isinstance(annotation, ast.BinOp):
        (kept,) = [one for one in (annotation.left, annotation.right) if ast.unparse(one) != "None"]
        return kept
    return annotation


def written(annotation):
    """An annotation as any interpreter reads it: a plain name, or a text for type checkers."""
    text = spelled(annotation)
    return text if text in ("int", "str", "bool", "None") else "'" + text + "'" if '"' in text else f'"{text}"'


def spelled(annotation):
    if isinstance(annotation, ast.BinOp):
        return f"Optional[{spelled(annotation.left)}]"
    if isinstance(annotation, ast.Subscript) and annotation.value.id in ("list", "tuple"):
        inside = annotation.slice.elts if isinstance(annotation.slice, ast.Tuple) else [annotation.slice]
        return f"{annotation.value.id.capitalize()}[{', '.join(map(spelled, inside))}]"
    return ast.unparse(annotation).replace("'", '"')


def row(key, annotation):
    line = f"    {key}: {written(annotation)}"
    return line if len(line) <= WIDTH else f"    {key}: str"  # a choice of texts too long for a line


def record_class(stub, name):
    base, documentation, rows = stub.dictionaries[name]
    lines = ["", "", f"class {name}({base if base in stub.results else EXTENDED.get(name, 'Record')}):"]
    lines += [f'    """{documentation}"""', ""] if documentation else []
    lines += ["    __slots__ = ()"]
    inside = [(key, stub.shape(annotation)) for key, annotation in rows]
    inside = ", ".join(f'"{key}": {shape}' for key, shape in inside if shape)
    lines += [f"    _inside = {{{inside}}}"] if inside else []
    named = [(key, annotation) for key, annotation in rows if key.isidentifier() and not keyword.iskeyword(key)]
    lines += ["", *(row(key, annotation) for key, annotation in named)] if named else []
    return lines


def records(stub):
    names = [name for name in stub.dictionaries if name in stub.results]
    classes = "\n".join(line for name in names for line in record_class(stub, name))
    results = "\n".join(f'    "{method.name}": {stub.shape(method.returns)},' for method in stub.methods)
    silent = [method.name for method in stub.methods if method.name in MEANT_NONE or returns_none(method)]
    return RECORDS.format(
        aliases=imported(stub, stub.aliases, classes),
        classes=classes,
        results=results,
        none="\n".join(f'        "{name}",' for name in silent),
    )


def returns_none(method):
    return isinstance(method.returns, ast.Constant) and method.returns.value is None


def function(stub, method):
    names = [each.arg for each in method.args.posonlyargs]
    parameters = [f"{each.arg}: {written(each.annotation)}" for each in method.args.posonlyargs]
    returns = method.returns if method.name in MEANT_NONE else without_none(method.returns)
    head = f"def {method.name}({', '.join(parameters)}) -> {written(returns)}:"
    if len(head) > WIDTH:
        lines = ["", "", f"def {method.name}(", *(f"    {each}," for each in parameters), f") -> {written(returns)}:"]
    else:
        lines = ["", "", head]
    lines += ["    " + ast.get_source_segment(stub.text, method.body[0])]
    called = f"    return call({', '.join([repr(method.name).replace(chr(39), chr(34)), *names])})"
    if len(called) > WIDTH:
        lines += ["    return call(", f'        "{method.name}",', *(f"        {name}," for name in names), "    )"]
    else:
        lines += [called]
    return lines


def methods(stub):
    functions = "\n".join(line for method in stub.methods for line in function(stub, method))
    names = [name for name in stub.dictionaries if name in stub.results]
    return METHODS.format(
        aliases=imported(stub, stub.aliases, functions), records=imported(stub, names, functions), functions=functions
    )


def imported(stub, names, text):
    """The names that a text uses, as an import lists them."""
    used = {node.id for node in ast.walk(ast.parse(text)) if isinstance(node, ast.Name)}
    for node in ast.walk(ast.parse(text)):
        annotations = [getattr(node, "annotation", None), getattr(node, "returns", None)]
        for one in annotations:
            if isinstance(one, ast.Constant) and isinstance(one.value, str):
                used |= {inner.id for inner in ast.walk(ast.parse(one.value)) if isinstance(inner, ast.Name)}
    return "(\n" + "".join(f"        {name},\n" for name in sorted(set(names) & used)) + "    )"


def files():
    """Each file with its text."""
    stub = Stub(STUB.read_text())
    return {ROOT / "qdp" / "records.py": records(stub), ROOT / "qdp" / "methods.py": methods(stub)}


if __name__ == "__main__":
    for path, text in files().items():
        path.write_text(text)
        sys.stdout.write(f"{path.relative_to(ROOT)}\n")
