"""Which tests concern a source, and in which order they are tried."""

import pathlib
import re

# The folders of tests that call the module in their own process, where a change is made. Others look at the built file,
# at types or at scripts.
FOLDERS = ["core", "datapath", "host", "methods", "smartnic", "switchid", "torture"]

# The fixture of tests that judge times, which trials beside each other spoil.
OF_TIMES = "release_only"

# The embedded host of the test's own process. Tests of the host without it start hosts and scripts as processes, which
# is slow and says little about the module.
IN_PROCESS = "host"

# The table of all methods stands above the rooms; its tests stand with the core's.
ROOF = pathlib.PurePosixPath("module.cpp")
CORE = pathlib.PurePosixPath("core")

# The code that all rooms share, whose functions are also told by who calls them; and how many callers are enough.
SHARED = "src/core/"
ENOUGH_METHODS = 12

# What takes so long that it comes last.
LONG = ["test_leaks.py", "test_scenarios.py", "test_soak.py"]


class Concern:
    """Of each source and of those that include its header, in this order: the tests of their mirrors; those made for
    one of their methods; and those of files that name one of their methods."""

    def __init__(self, sources, items):
        self._sources = sources
        self._methods = _methods_by_file(sources)
        self._items = {}
        for item in items:
            of_processes = item.path.parent.name == "host" and IN_PROCESS not in item.fixturenames
            if OF_TIMES not in item.fixturenames and not of_processes:
                self._items.setdefault(item.path, []).append(item)
        self._texts = {path: path.read_text() for path in self._items}
        self._known = {}

    def items(self, mutant):
        """All tests that concern a mutant, the nearest first."""
        found = dict.fromkeys(self._mirror(mutant.files[0]))
        found.update(dict.fromkeys(self._of_callers(mutant)))
        for file in mutant.files:
            if file not in self._known:
                self._known[file] = self._of(file)
            found.update(dict.fromkeys(self._known[file]))
        return list(found)

    def _of_callers(self, mutant):
        """The tests of some methods of the sources that name a shared function or its class: those made for them, and
        those of the sources' mirrors."""
        function = mutant.function.split("<")[0].split("(")[0].split(" ")[-1]
        if not mutant.files[0].startswith(SHARED) or not function:
            return []
        name = re.compile(rf"\b{function.split('::')[0]}\b")
        callers, methods = [], set()
        for file in self._methods:
            if file != mutant.files[0] and name.search(self._sources.text(file)) and len(methods) < ENOUGH_METHODS:
                callers.append(file)
                methods.update(self._methods[file])
        return [*self._made_for(methods), *(item for file in callers for item in self._mirror(file))]

    def _made_for(self, methods):
        return [item for items in self._items.values() for item in items if methods & _parameters(item)]

    def _of(self, file):
        return sorted(self._in_order(file), key=lambda item: item.path.name in LONG)

    def _in_order(self, file):
        found = {}
        everything = [file, *self._dependents(file)]
        for each in everything:
            found.update(dict.fromkeys(self._mirror(each)))
        methods = {method for each in everything for method in self._methods.get(each, [])}
        found.update(dict.fromkeys(self._made_for(methods)))
        words = re.compile(rf"\b({'|'.join(methods) or 'no method'})\b")
        for path, items in self._items.items():
            if words.search(self._texts[path]):
                found.update(dict.fromkeys(item for item in items if not _names_a_method(item, self._all_methods())))
        return found

    def _all_methods(self):
        return {method for methods in self._methods.values() for method in methods}

    def _mirror(self, file):
        within = pathlib.PurePosixPath(file).relative_to("src")
        room = within.parent if within != ROOF else CORE
        path = self._sources.root / "tests" / room / f"test_{within.stem}.py"
        if path in self._items:
            return self._items[path]
        folder = [items for path, items in self._items.items() if path.parent == self._sources.root / "tests" / room]
        return [item for items in folder for item in items]

    def _dependents(self, file):
        """The sources that include a file's header, at any depth, nearest first."""
        stem = file.removeprefix("src/").rsplit(".", 1)[0]
        found = [f"src/{stem}.h"]
        for header in found:
            inclusion = f'#include "{header.removeprefix("src/")}"'
            found += [each for each in self._sources if inclusion in self._sources.text(each) and each not in found]
            for source in list(found):
                own = source.rsplit(".", 1)[0] + ".h"
                if source.endswith(".cpp") and own in self._sources and own not in found and source != file:
                    found.append(own)
        return [each for each in found if each != "src/module.cpp" and each != file]


def _methods_by_file(sources):
    """The methods of each source, after the map in module.cpp, and what it exports beside them."""
    methods, file = {}, None
    for line in sources.text("src/module.cpp").splitlines():
        if named := re.match(r"\s+// (\S+\.cpp)$", line):
            file = f"src/{named[1]}"
        elif method := re.match(r'\s+METHOD\("(\w+)"', line):
            methods.setdefault(file, []).append(method[1])
    for function in re.findall(r"PyQDP_\w+", sources.text("src/core/exports.map")):  # no methods, but like them
        defines = f"\nPyObject* {function}("
        file = next(each for each in sources if each.endswith(".cpp") and defines in sources.text(each))
        methods.setdefault(file, []).append(function)
    return methods


def _parameters(item):
    """The texts that a test is parametrised with."""
    call = getattr(item, "callspec", None)
    return {each for each in call.params.values() if isinstance(each, str)} if call else set()


def _names_a_method(item, methods):
    return bool(methods & _parameters(item))
