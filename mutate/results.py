"""What became of each mutant, kept from run to run; and the arguments for those that nobody can notice."""

import fnmatch
import hashlib
import json
import re
import sys
import time
import tomllib

PROGRESS_SECONDS = 10


def digest_of(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


class Results:
    """The results of some mutants. What was noticed stays so for the same build while the test that noticed it stays
    as it is; what was not noticed is tried again. Without a file nothing is kept."""

    def __init__(self, file, build, root, mutants, afresh, most=None):
        self._file = file
        self._root = root
        self._digests = {}
        self._build = digest_of(build / "_libqdp.abi3.so")
        self._names = dict(zip(mutants, _names(mutants), strict=True))
        self._noticed = {} if afresh else self._kept()
        self._results = {
            each: True
            for each, name in self._names.items()
            if name in self._noticed and self._holds(self._noticed[name])
        }
        self._tried, self._to_try = 0, len(self._names) - len(self._results) if most is None else most
        self._said = self._saved = time.monotonic()
        if self._results:
            print(f"{len(self._results)} were noticed by an earlier run")

    def _kept(self):
        if not self._file or not self._file.exists():
            return {}
        kept = json.loads(self._file.read_text())
        return kept["noticed"] if kept["build"] == self._build else {}

    def _holds(self, kept):
        path = self._root / kept["test"].split("::")[0]
        if path not in self._digests:
            self._digests[path] = digest_of(path) if path.exists() else None
        return self._digests[path] == kept["digest"]

    def untried(self):
        return [each for each in self._names if each not in self._results]

    def add(self, mutant, result):
        self._results[mutant] = result.noticed
        if result.noticed:
            kept = {"test": result.test, "how": result.how}
            self._holds({**kept, "digest": None})
            kept["digest"] = self._digests[self._root / result.test.split("::")[0]]
            self._noticed[self._names[mutant]] = kept
        self._tried += 1
        self._show(mutant, result)
        if time.monotonic() - self._saved > PROGRESS_SECONDS or self._tried == self._to_try:
            self._save()

    def _show(self, mutant, result):
        if not result.noticed:
            print(f"not noticed: {mutant}", flush=True)
        if time.monotonic() - self._said > PROGRESS_SECONDS:
            self._said = time.monotonic()
            missed = len(self.survivors())
            print(f"{self._tried} of {self._to_try} tried, {missed} not noticed", file=sys.stderr, flush=True)

    def _save(self):
        self._saved = time.monotonic()
        if self._file:
            self._file.parent.mkdir(parents=True, exist_ok=True)
            noticed = {**self._kept(), **self._noticed}  # another run may have added to it
            self._file.write_text(json.dumps({"build": self._build, "noticed": noticed}))

    def survivors(self):
        return [each for each, noticed in self._results.items() if not noticed]

    def of_kind(self, kind):
        return [noticed for each, noticed in self._results.items() if each.kind == kind]

    def total(self):
        return len(self._results)


def _names(mutants):
    """Names that are the same in every run of the same build."""
    seen = {}
    for each in mutants:
        name = f"{each.kind} {each}"
        seen[name] = seen.get(name, 0) + 1
        yield f"{name} {seen[name]}"


class Equivalents:
    """The list of changes that change nothing that can be seen. An entry names a source, the text of its line and the
    changes, `*` for any text in them, and stands for every place where the compiler put that line's code; or it names a
    function or a table of fields in place of a line, and stands for all of it."""

    def __init__(self, path, sources, what="equivalent"):
        listed = tomllib.loads(path.read_text())
        self._arguments = listed["argument"]
        self._sources = sources
        self._because = {}
        for each in listed[what]:
            for change in each["changes"]:
                self._because[each["file"], each.get("line") or each["all_of"], change] = each["because"]
        unknown = set(self._because.values()) - set(self._arguments)
        if unknown:
            raise LookupError(f"{path} has no argument named {', '.join(unknown)}")
        for file, place, _ in self._because:
            there = rf"^\s*{re.escape(place)}$|\b{re.escape(place)}\b"
            if file not in sources or not re.search(there, sources.text(file), re.MULTILINE):
                raise LookupError(f"{path} argues for {place!r}, which {file} does not have; name what it has now")

    def line(self, mutant):
        return self._sources.line(mutant.files[0], mutant.line)

    def _entries(self, mutant):
        """The entries that stand for a mutant."""
        file = mutant.files[0]
        places = [(file, self.line(mutant)), (file, re.match(r"\w*", mutant.function)[0])]
        if mutant.inlined:
            places.append((mutant.inlined[0], self._sources.line(*mutant.inlined)))
        return [
            (*place, change)
            for *place, change in self._because
            if tuple(place) in places and fnmatch.fnmatchcase(mutant.change, change)
        ]

    def reason(self, mutant):
        """Why a change cannot be noticed, or None."""
        return next((self._arguments[self._because[each]] for each in self._entries(mutant)), None)

    def unused(self, survivors):
        used = {entry for each in survivors for entry in self._entries(each)}
        return [": ".join(each) for each in self._because if each not in used]
