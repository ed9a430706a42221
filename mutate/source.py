"""Changes of the sources, one line at a time: formats, widths, returns, statements and constants, which the built
module does not show as such."""

import re
from dataclasses import dataclass

# The letters of the interpreter's formats, and those that take or make another value.
LETTERS = {"I": "iH", "i": "I", "L": "K", "K": "L", "s": "z"}
FORMAT = re.compile(
    r"\b(PyArg_ParseTuple\(args|Py_BuildValue\(|print_none_format\(|print_format\()"
    r'(?:, )?"((?:[^"\\]|\\.)*)"'
)

WIDTH = re.compile(r"\b(u?)int(8|16|32|64)_t\b")
OTHER_WIDTHS = {"8": "16", "16": "8", "32": "16", "64": "32"}

# What a method returns in place of what it should, by how the statement begins.
RETURNS = [
    (re.compile(r"\breturn print_none\("), "return print_false("),
    (re.compile(r"\breturn print_none\(.*\);"), "return none();"),
    (re.compile(r"\breturn print_none_format\(.*\);"), "return none();"),
    (re.compile(r"\breturn print_false\("), "return print_none("),
    (re.compile(r"\breturn print_null\("), "return print_none("),
    (re.compile(r"\breturn command_result\((.*), [^,]*\);"), r"return (static_cast<void>(\1), none());"),
    (re.compile(r"\breturn none\(\);"), "return PyBool_FromLong(0);"),
    (re.compile(r"\breturn not_built\(\);"), "return nullptr;"),
    (re.compile(r"\breturn nullptr;"), "return none();"),
    (re.compile(r"\breturn PyBool_FromLong\(0\);"), "return none();"),
    (re.compile(r"\breturn PyBool_FromLong\(1\);"), "return none();"),
    (re.compile(r"\breturn true;"), "return false;"),
    (re.compile(r"\breturn false;"), "return true;"),
]

# A statement that stands alone on its line: a call, an assignment, a step, or a way out of a loop.
STATEMENT = re.compile(
    r"\s+(?:(?!return\b|co_|static_assert\b|sizeof\b|if\b|for\b|while\b)[\w:.\->\[\]*]+(?:<[^<>]*>)?\(.*\)"
    r"|[*\w.\->\[\]]+ [-+|&^*]?= .*|(?:\+\+|--)[\w.\->]+|break|continue);$"
)
WHOLE_LINE_BEFORE = re.compile(r"[;{}):]$|^$|\belse$")

NUMBER = re.compile(r"(?<![\w.'])(0x[0-9a-fA-F']+|\d[\d']*)(?=[uUlL]*\b)(?![\w]*[.'])")
TABLE_ROW = re.compile(r"\s*\{\"|.*fields<")  # whose numbers are the built module's rows

TEXT = re.compile(r'"(?:[^"\\]|\\.)*"')


@dataclass(frozen=True)
class SourceMutant:
    """One changed line, as Mutant of mutate/mutants.py: `new` takes its place."""

    kind: str
    files: tuple[str, ...]
    line: int
    function: str
    change: str
    new: str
    inlined: None = None

    def __str__(self):
        return f"{self.files[0]}:{self.line}  {self.function}  {self.change}"


def spliced(line, start, end, new):
    return line[:start] + new + line[end:]


def outside_texts(pattern, code):
    """The matches of a pattern that lie in no text."""
    texts = [each.span() for each in TEXT.finditer(code)]
    for found in pattern.finditer(code):
        if not any(start <= found.start() < end for start, end in texts):
            yield found


def changed_formats(code):
    for call in FORMAT.finditer(code):
        takes_all = not call[1].startswith("print")
        for place, letter in enumerate(call[2]):
            if not takes_all and call[2][place - 1 : place] != "%":
                continue
            for other in LETTERS.get(letter, ""):
                if other in "Hz" and "Parse" not in call[1]:
                    continue  # makes and prints the same
                at = call.start(2) + place
                yield f"'{letter}' made '{other}' in place {place}", spliced(code, at, at + 1, other)


def changed_widths(code):
    if not code.startswith((" ", "constexpr", "inline constexpr")):
        return  # a function's head
    for number, found in enumerate(outside_texts(WIDTH, code), 1):
        is_unsigned, bits = found[1], found[2]
        for other in (f"{is_unsigned}int{OTHER_WIDTHS[bits]}_t", f"{'' if is_unsigned else 'u'}int{bits}_t"):
            yield f"{found[0]} {number} made {other}", spliced(code, *found.span(), other)


def changed_returns(code):
    for pattern, new in RETURNS:
        if found := pattern.search(code):
            yield f"made {new}", spliced(code, *found.span(), found.expand(new))


def dropped_statements(code, before):
    if STATEMENT.fullmatch(code) and WHOLE_LINE_BEFORE.search(before):
        yield "dropped", re.sub(r"\S.*", ";", code)


def moved_constants(code):
    if TABLE_ROW.match(code) or "static_assert" in code:
        return
    for number, found in enumerate(outside_texts(NUMBER, code), 1):
        value = int(found[1].replace("'", ""), 0)
        is_truth = code[: found.start(1)].endswith("PyBool_FromLong(")
        for moved in (value + 1, value - 1):
            if moved >= 0 and not (is_truth and value and moved):  # which are one truth
                new = hex(moved) if found[1].startswith("0x") else str(moved)
                yield f"number {number}: {found[1]} made {moved}", spliced(code, *found.span(1), new)


def changes_of(code, before):
    """(kind, what is changed, the line with it) of a line without its comment, and the line before it."""
    makers = [
        ("formats", changed_formats(code)),
        ("widths", changed_widths(code)),
        ("returns", changed_returns(code)),
        ("statements", dropped_statements(code, before)),
        ("constants", moved_constants(code)),
    ]
    for kind, changes in makers:
        for what, new in changes:
            yield kind, what, new


def without_comment(line):
    """A line's code. What a preprocessor or a comment of its own has is none."""
    if line.lstrip().startswith(("//", "#", "*", "using ", "template")):
        return ""
    end = next((each.start() for each in outside_texts(re.compile("//"), line)), len(line))
    return line[:end].rstrip()


HEAD = re.compile(r"^(?:\[\[[^\]]*\]\] )?(?!namespace|using|static_assert)\w[\w:<>*&, ]*?[ *&](\w+)\(")


def source_mutants(sources):
    """All changes of all sources but the table of methods."""
    for path in sources:
        if path == "src/module.cpp":
            continue
        function, before = "", ""
        for number, line in enumerate(sources.text(path).splitlines(), 1):
            if head := HEAD.match(line):
                function = head[1]
            code = without_comment(line)
            for kind, change, new in changes_of(code, before):
                yield SourceMutant(kind, (path,), number, function, change, new)
            before = code
