"""What can be changed in the built module, one thing at a time."""

import re
from dataclasses import dataclass


@dataclass(frozen=True)
class Mutant:
    """One change. `files` are the sources whose tests concern it, the first of them the one with `line`; `inlined` is
    the place (file, line) whose code the compiler put there; the edits are (address in the module, old bytes, new
    bytes)."""

    kind: str
    files: tuple[str, ...]
    line: int
    function: str
    change: str
    edits: tuple[tuple[int, bytes, bytes], ...]
    inlined: tuple[str, int] | None = None

    def __str__(self):
        where = f"{self.files[0]}:{self.line}" if self.line else self.files[0]
        return f"{where}  {self.function}  {self.change}"


class Sources:
    """The sources under src/ as the mutants name them: by path from the repository."""

    def __init__(self, root):
        self.root = root
        self._texts = {path.relative_to(root).as_posix(): path.read_text() for path in (root / "src").rglob("*.*")}
        self._by_base_name = {}
        for path in filter(lambda each: each.endswith(".cpp"), self._texts):
            if self._by_base_name.setdefault(path.rsplit("/", 1)[1], path) != path:
                raise LookupError(f"two sources are named like {path}; a symbol is told by its source's base name")

    def __iter__(self):
        return iter(self._texts)

    def text(self, path):
        return self._texts[path]

    def line(self, path, number):
        """A line's text, by which it is known when numbers move."""
        lines = self._texts[path].splitlines()
        return lines[number - 1].strip() if 0 < number <= len(lines) else ""

    def named(self, base_name):
        return self._by_base_name.get(base_name)

    def find(self, path, text, after=0):
        """The number of the first line with a text; 0 when there is none."""
        for number, line in enumerate(self._texts[path].splitlines(), 1):
            if number > after and text in line:
                return number
        return 0

    def table(self, symbol, text):
        """(file, line) of a text in a table of constants: the table's own source or, of a shared one, the header that
        defines it. Its texts stand in the table or, where it is made of parts, before it."""
        own = self.named(symbol.file) if symbol.file else None
        definition = re.compile(rf"\b{symbol.plain_name}(\[\w*\])?( =|{{)")
        for file in [own] if own else self:
            if defined := definition.search(self._texts[file]):
                first = self._texts[file].count("\n", 0, defined.start())
                return file, self.find(file, f'"{text}', first) or self.find(file, f'"{text}')
        raise LookupError(f"no source defines {symbol.plain_name}")

    def place(self, frames):
        """Of an instruction's places in the source (file, line, function): the file is the outermost function's; the
        line is the innermost one in that file. None for code that is not of src/."""
        ours = self._in_sources(frames)
        if not ours:
            return None
        outermost, file = ours[-1]
        line = next(frame.line for frame, path in ours if path == file)
        function = outermost.function.split("(_object*")[0].replace("qdp::", "").replace("(anonymous namespace)::", "")
        return file, line, function

    def inlined(self, frames):
        """The innermost of an instruction's places in the source (file, line)."""
        frame, path = self._in_sources(frames)[0]
        return path, frame.line

    def _in_sources(self, frames):
        """(frame, path from the repository) of the frames of src/."""
        ours = [(each, self._ours(each.file)) for each in frames]
        return [(frame, path) for frame, path in ours if path]

    def _ours(self, path):
        prefix = f"{self.root}/"
        path = path[len(prefix) :] if path.startswith(prefix) else None
        return path if path in self._texts else None
