"""The build folder once more with one source changed: the objects that include it are compiled anew. The module is
linked from them and from the objects of the build; so are the tests' extensions when a test wants them."""

import json
import os
import pathlib
import re
import shlex
import subprocess

MODULE = "_libqdp.abi3.so"
UNCHANGED = ["host", "qdp"]  # folders that hold nothing of the module
EXTENSIONS = {"tortured": "tests/torture.so", "core": "tests/core_under_test.abi3.so"}  # by the fixture that loads them
LINKED = [MODULE, *EXTENSIONS.values()]

# Of how many sources a header may be a part, to be changed without being named.
FEW_SOURCES = 12

# A change is one that a colleague could make: warnings do not keep it out.
WARNINGS = {"-Werror", "-Wall", "-Wextra", "-Wconversion", "-Wshadow"}


class NotBuilt(Exception):
    """A change that does not compile, or that the compiler makes the same code of."""


def _run(command, folder):
    environment = {**os.environ, "CCACHE_DISABLE": "1"}  # no change comes twice
    if subprocess.run(command, cwd=folder, env=environment, capture_output=True, check=False).returncode != 0:
        raise NotBuilt


def _ninja(build, *arguments):
    done = subprocess.run(["ninja", "-C", str(build), *arguments], capture_output=True, text=True, check=True)
    return done.stdout.splitlines()


class Rebuild:
    """Makes changed builds from a build."""

    def __init__(self, build, root):
        self._build = build
        self._root = root
        commands = json.loads((build / "compile_commands.json").read_text())
        self._compile = {
            str(pathlib.Path(each["file"]).relative_to(root)): self._compiler(each["command"])
            for each in commands
            if "module_objects.dir" in each["command"]
        }
        links = {each: _ninja(build, "-t", "commands", "-s", each)[-1] for each in LINKED}
        self._link = {
            each: shlex.split(command.removeprefix(": && ").removesuffix(" && :")) for each, command in links.items()
        }
        self._dependents = self._read_dependents()

    @staticmethod
    def _compiler(command):
        """A source's compiler, without what writes files beside the object and the object itself."""
        words = shlex.split(command)
        first = next(i for i, word in enumerate(words) if not word.endswith("ccache"))
        kept, words = [], iter(words[first:])
        for word in words:
            if word in ("-o", "-MT", "-MF"):
                next(words)
            elif word != "-c" and word != "-MD" and word not in WARNINGS and not word.endswith(".cpp"):
                kept.append(word)
        return kept

    def _read_dependents(self):
        """The sources of which each file under src/ is a part."""
        dependents = {}
        source = None
        for line in _ninja(self._build, "-t", "deps"):
            if object_file := re.match(r"CMakeFiles/module_objects\.dir/(src/\S+\.cpp)\.o:", line):
                source = object_file[1]
            elif not line.startswith(" "):
                source = None
            elif source:
                path = os.path.normpath(os.path.join(self._build, line.strip()))
                if path.startswith(f"{self._root}/src/"):
                    dependents.setdefault(path[len(str(self._root)) + 1 :], []).append(source)
        return dependents

    def dependents(self, file):
        return self._dependents.get(file, [])

    def is_quick(self, file):
        """Whether a change of a file is soon built. What nearly all sources include is inlined into them, where the
        changes of the built module meet it."""
        return 0 < len(self.dependents(file)) <= FEW_SOURCES

    def make(self, mutant, folder):
        """The changed build in a folder; without a change, one linked from the same objects. Gives the module."""
        changed = folder / "src"
        objects = {}
        for name in ("tests", "objects"):
            (folder / name).mkdir(parents=True, exist_ok=True)
        for name in (*UNCHANGED, *(f"tests/{each.name}" for each in (self._build / "tests").iterdir())):
            if name not in LINKED and not (folder / name).exists():
                (folder / name).symlink_to(self._build / name)
        if mutant:
            for source in self.dependents(mutant.files[0]):
                objects[source] = self._compiled(source, mutant, changed, folder)
        for target in LINKED:
            (folder / target).unlink(missing_ok=True)  # of another change
        self._linked(MODULE, objects, folder)
        self._objects, self._folder = objects, folder
        if mutant and (folder / MODULE).read_bytes() == (self._build / MODULE).read_bytes():
            raise NotBuilt
        return folder / MODULE

    def provide(self, item):
        """Links what a test loads beside the module."""
        for fixture in EXTENSIONS.keys() & set(item.fixturenames):
            if not (self._folder / EXTENSIONS[fixture]).exists():
                self._linked(EXTENSIONS[fixture], self._objects, self._folder)

    def _compiled(self, source, mutant, changed, folder):
        file = mutant.files[0]
        lines = (self._root / file).read_text().splitlines()
        lines[mutant.line - 1] = mutant.new
        copy = changed / file.removeprefix("src/")
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text("\n".join(lines) + "\n")
        target = folder / "objects" / (source.replace("/", "-") + ".o")
        compiled = copy if source == file else self._root / source
        compiler, *flags = self._compile[source]
        overlay = [] if source == file else [f"-I{changed}"]
        _run([compiler, *overlay, *flags, "-w", "-g0", "-o", str(target), "-c", str(compiled)], self._build)
        copy.unlink()
        return target

    def _linked(self, target, objects, folder):
        """Other files are named like the build's own; the output is the folder's."""
        words = list(self._link[target])
        words[words.index("-o") + 1] = str(folder / target)
        changed = {f"CMakeFiles/module_objects.dir/{source}.o": str(path) for source, path in objects.items()}
        _run([changed.get(word, word) for word in words], self._build)
