"""The type stub, read for the reference: its sections with their methods, its types with what is said of each key."""

import ast
import io
import re
import tokenize
from dataclasses import dataclass, field

HEADINGS = ("Printed", "Raised", "Left set", "None, ", "False, ")
INDENTATION = 4
PARAMETERS = re.compile(r"([a-z]\w*(?:(?:, | \.\.\. )\w+)*): (.*)")


@dataclass
class Row:
    """A key of a dict, or a value of a choice: its annotation or literal, and what is said of it."""

    name: str
    annotation: ast.expr | None
    meaning: str


@dataclass
class Type:
    """A TypedDict, a choice of texts, or a tuple with a name."""

    name: str
    prose: list[str]
    rows: list[Row]
    optional: frozenset  # the keys that may be missing
    annotation: ast.expr | None = None  # what an alias stands for


@dataclass
class Failure:
    seen: list[str]  # texts, in quotes, and words
    when: str


@dataclass
class Failures:
    """What one heading of a docstring lists; or, in `said`, a sentence that says all."""

    heading: str
    said: str = ""
    rows: list[Failure] = field(default_factory=list)


@dataclass
class Method:
    name: str
    parameters: dict[str, ast.expr]
    result: ast.expr
    prose: list[str]
    arguments: list[tuple[str, str]]  # as the docstring names them, "pf_0 ... pf_3", and their meaning
    failures: list[Failures]

    @property
    def summary(self):
        return re.split(r"(?<=[^.])\.(?:\s|$)| \(`|[:;] ", self.prose[0])[0].rstrip(".") + "."


@dataclass
class Section:
    title: str
    prose: str
    methods: list[Method] = field(default_factory=list)


class Stub:
    """A stub file: `sections` in its order, `types` by name, `prose` of the whole."""

    def __init__(self, path):
        text = path.read_text()
        self._lines = text.splitlines()
        self._comments = _comments(text)
        tree = ast.parse(text)
        self.prose = ast.get_docstring(tree)
        self.types = {}
        self.sections = []
        starts = self._section_starts()
        for node in tree.body:
            while starts and starts[0][0] < node.lineno:
                self.sections.append(starts.pop(0)[1])
            if isinstance(node, ast.FunctionDef):
                self.sections[-1].methods.append(_method(node))
            elif isinstance(node, (ast.ClassDef, ast.Assign)):
                made = self._typed_dict(node) if isinstance(node, ast.ClassDef) else self._alias(node)
                self.types[made.name] = made

    def methods(self):
        return [method for section in self.sections for method in section.methods]

    def types_in(self, *annotations):
        """The types that annotations name, and those that these name, in that order, each once."""
        found = []
        waiting = list(annotations)
        while waiting:
            for node in ast.walk(waiting.pop(0)):
                made = self.types.get(node.id) if isinstance(node, ast.Name) else None
                if made and made not in found:
                    found.append(made)
                    waiting += [row.annotation for row in made.rows if row.annotation]
                    waiting += [made.annotation] if made.annotation else []
        return found

    def _section_starts(self):
        """A comment of its own, that no definition follows directly: its first sentence is a section's title."""
        starts = []
        for block in re.finditer(r"(?<=\n\n)((?:# .*\n)+)\n", "\n".join(self._lines)):
            said = " ".join(line.removeprefix("# ") for line in block[1].splitlines())
            title, _, prose = said.partition(". ")
            starts.append(("\n".join(self._lines)[: block.start()].count("\n") + 1, Section(title, prose)))
        return starts

    def _remark(self, node):
        """The comment behind a node, and the one that stands right above it."""
        above, line = [], node.lineno - 1
        while self._lines[line - 1].lstrip().startswith("#"):
            above.insert(0, self._comments[line])
            line -= 1
        behind = [self._comments[node.end_lineno]] if node.end_lineno in self._comments else []
        return " ".join([" ".join(above).rstrip(".") + ";", *behind] if above and behind else above + behind)

    def _typed_dict(self, node):
        inherited = [self.types[base.id] for base in node.bases if base.id in self.types]
        own = [each for each in node.body if isinstance(each, ast.AnnAssign)]
        rows = [Row(each.target.id, each.annotation, self._remark(each)) for each in own]
        optional = {row.name for row in rows} if any(each.arg == "total" for each in node.keywords) else set()
        prose = [ast.get_docstring(node) or ""]
        for base in inherited:
            prose += [f"The first keys, up to {base.rows[-1].name}: {said}" for said in base.prose if said]
            rows = base.rows + rows
            optional |= base.optional
        return Type(node.name, prose, rows, frozenset(optional))

    def _alias(self, node):
        name, value = node.targets[0].id, node.value
        prose = [self._remark(ast.Pass(lineno=node.lineno, end_lineno=node.lineno))]
        if isinstance(value, ast.Call):  # TypedDict("_Name", {...}), for keys that are no names
            keys = zip(value.args[1].keys, value.args[1].values)
            rows = [Row(key.value, annotation, self._remark(annotation)) for key, annotation in keys]
            return Type(name, prose, rows, frozenset())
        if ast.unparse(value).startswith("Literal["):
            rows = [Row(f'"{each.value}"', None, self._remark(each)) for each in value.slice.elts]
            return Type(name, prose, rows, frozenset())
        return Type(name, prose, [], frozenset(), value)


def _comments(text):
    tokens = tokenize.generate_tokens(io.StringIO(text).readline)
    return {token.start[0]: token.string.lstrip("# ") for token in tokens if token.type == tokenize.COMMENT}


def _method(node):
    parameters = {each.arg: each.annotation for each in node.args.posonlyargs}
    method = Method(node.name, parameters, node.returns, [], [], [])
    for paragraph in re.split(r"\n\n", ast.get_docstring(node)):
        lines = paragraph.splitlines()
        if lines[0].startswith(HEADINGS):
            method.failures += _failures(lines)
        elif (found := PARAMETERS.match(lines[0])) and found[1].split(",")[0].split(" ")[0] in parameters:
            method.arguments += _arguments(lines)
        else:
            method.prose.append(" ".join(lines))
    return method


def _arguments(lines):
    found = []
    for line in lines:
        if named := PARAMETERS.fullmatch(line):
            found.append((named[1], named[2]))
        else:
            found[-1] = (found[-1][0], f"{found[-1][1]} {line.strip()}")
    return found


def _failures(lines):
    """Headings stand at the margin. Below one, what is seen stands in a left column, and when in a right one; lines of
    the left column that end with a comma, or have nothing to their right, share what follows."""
    found = []
    for line in lines:
        text = line.strip()
        if line.startswith(HEADINGS):
            heading, _, said = line.partition(":")
            found.append(Failures(heading, said.strip()))
            continue
        if not line.startswith(" "):
            found[-1].said += " " + text
            continue
        rows = found[-1].rows
        seen, when = _columns(text)
        if len(line) - len(text) > INDENTATION and not text.startswith('"'):
            rows[-1].when = f"{rows[-1].when} {text}".strip()
        elif rows and (rows[-1].seen[-1].endswith(",") or not (rows[-1].when or when)):
            rows[-1].seen.append(seen)
            rows[-1].when = when
        else:
            rows.append(Failure([seen], when))
    return found


def _columns(text):
    """What stands left and right of the first two blanks that are not in quotes."""
    found = re.fullmatch(r'((?:"[^"]*"|[^" ]| (?! ))*?)(?:  +(.*))?', text)
    return found[1], found[2] or ""
