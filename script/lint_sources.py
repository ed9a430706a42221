"""Checks what the compiler does not: who includes and imports whom, that the module's map is true, what each file opens
with, that devices, addresses and switches have invented names, and that no line is too long."""

import ast
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCE = ROOT / "src"

# The rooms that each room may include, beside the file's own folder: platform <- core <- switchid <- datapath, smartnic
# <- module.cpp, which stands in no room.
ALLOWED = {
    "platform": [],
    "core": ["platform"],
    "switchid": ["platform", "core"],
    "datapath": ["platform", "core", "switchid"],
    "smartnic": ["platform", "core", "switchid"],
    "": ["core", "switchid", "datapath", "smartnic"],
}
# Folders that their siblings may include: the named, shared pieces.
SHARED = ["smartnic/channel", "smartnic/counters"]
# Rooms beside src/, which measure and stand in for what is around the module, and what they share with others.
BESIDE_SOURCE = {"host": ["platform/"], "bench": ["platform/", "host/call/"]}
# The rooms of host/ that each of them may include: call <- state <- answers, scenario, capture <- link <- process <-
# share. A capture is recorded on real hosts, where there is no state.
HOST_ROOMS = {
    "call": [],
    "state": ["call"],
    "answers": ["call", "state"],
    "scenario": ["call", "state"],
    "capture": ["call"],
    "link": ["call", "capture"],
    "process": ["call", "state", "answers", "scenario", "capture", "link", "control.h"],
    "share": ["call", "state", "capture", "link", "process", "control.h"],
}
MAP = "module.cpp"

# The layers of qdp/, from the ground up: a file imports from its own and from those below. Every file that is not named
# stands in the layer of objects and settings; the package and its command stand above all.
LAYER = ROOT / "qdp"
GROUND = ["_call", "_capture", "call", "errors", "flow_text", "methods", "named_tuple", "record", "records"]
LAYERS = [GROUND, [], ["snapshot"], ["cli", "exporter"], ["__init__", "__main__"]]
OBJECTS = 1


def folder_of(path):
    """The folder of a file: "core", "datapath/ports", or "" for module.cpp."""
    return "/".join(path.split("/")[:-1])


def room_of(folder):
    return folder.split("/")[0]


def may_include(path, included):
    here, there = folder_of(path), folder_of(included)
    if here == there or there in SHARED and room_of(there) == room_of(here):
        return True
    return room_of(there) in ALLOWED[room_of(here)]


def inclusions():
    for file in sorted(SOURCE.rglob("*.*")):
        path = file.relative_to(SOURCE).as_posix()
        for included in re.findall(r'^#include "(.*)"', file.read_text(), re.MULTILINE):
            if not (SOURCE / included).exists():
                yield f"src/{path}: includes {included}, which is not in src/; name files from there"
            elif not may_include(path, included):
                yield f"src/{path}: may not include {included}; see ALLOWED in script/lint_sources.py"
    for room, shared in BESIDE_SOURCE.items():
        for file in sorted((ROOT / room).rglob("*.*")):
            if file.suffix in (".cpp", ".h", ".def"):
                for included in re.findall(r'^#include "(.*)"', file.read_text(), re.MULTILINE):
                    if not included.startswith((f"{room}/", *shared)):
                        path = file.relative_to(ROOT)
                        yield f"{path}: may not include {included}; {room}/ shares {', '.join(shared)} only"


def host_inclusions():
    for file in sorted((ROOT / "host").rglob("*.*")):
        path = file.relative_to(ROOT)
        if file.suffix not in (".cpp", ".h", ".def", ".in"):
            continue
        room = path.parts[1]
        allowed = [room, *HOST_ROOMS.get(room, [])]
        for included in re.findall(r'^#include "host/([^/"]*)', file.read_text(), re.MULTILINE):
            if included not in allowed:
                yield f"{path}: may not include host/{included}; see HOST_ROOMS in script/lint_sources.py"


def layer_of(name):
    return next((i for i, names in enumerate(LAYERS) if name in names), OBJECTS)


def imported_from_qdp(file):
    """The first names behind `qdp.` of what a file of the package imports, with the lines."""
    inside = len(file.relative_to(LAYER).parts) - 1  # how many folders below qdp/
    for node in ast.walk(ast.parse(file.read_text())):
        if isinstance(node, ast.ImportFrom):
            named = (node.module or "").split(".") if node.module else []
            if node.level == 0 and named[:1] != ["qdp"] or 0 < node.level <= inside:
                continue
            named = named if node.level else named[1:]
            for name in named[:1] or [alias.name for alias in node.names]:
                yield node.lineno, name
        elif isinstance(node, ast.Import):
            for alias in node.names:
                if alias.name.startswith("qdp."):
                    yield node.lineno, alias.name.split(".")[1]


def layers():
    for file in sorted(LAYER.rglob("*.py")):
        path = file.relative_to(LAYER)
        own = layer_of(path.parts[0].replace(".py", ""))
        for line, name in imported_from_qdp(file):
            if (LAYER / name).is_dir() or (LAYER / f"{name}.py").exists():
                if layer_of(name) > own:
                    yield f"qdp/{path}:{line}: may not import {name}, which stands above it; see LAYERS"


def map_of_methods():
    """Each method lives in the file that the comment above its row names."""
    named = None
    rows = 0
    for line in (SOURCE / MAP).read_text().splitlines():
        if found := re.match(r"\s+// (\S+\.cpp)$", line):
            named = found[1]
        elif found := re.match(r"\s+METHOD\(\"\w+\", (\w+),", line):
            rows += 1
            file = SOURCE / named if named else None
            if (
                not file
                or not file.exists()
                or not re.search(rf"^PyObject\* {found[1]}\(", file.read_text(), re.MULTILINE)
            ):
                yield f"src/{MAP}: {found[1]} is not in {named}"
    if rows == 0:
        yield f"src/{MAP}: no methods found"


def openings():
    for folder in ("src", "host", "bench", "qdp"):
        for file in sorted((ROOT / folder).rglob("*")):
            if file.suffix in (".cpp", ".h", ".def") and not file.read_text().startswith("// "):
                yield f"{file.relative_to(ROOT)}: opens without a sentence that says what it holds"


# Names of a real platform's form, and what to write instead.
REAL_NAMES = [
    (re.compile(r"\b(?!vnic|smartnic)[a-z]+nic(?=[0-9{%])", re.IGNORECASE), "name a device nic0, nic1, ..."),
    (re.compile(r"\b[A-Z]\w*(?:Portset|Uplinks?)-(?=[0-9{%])"), "name a portset portset-0, portset-1, ..."),
    (
        re.compile(r"\b[0-9a-f]{2}(?: [0-9a-f]{2}){7}-[0-9a-f]{2}(?: [0-9a-f]{2}){7}\b", re.IGNORECASE),
        "name a switch in words",
    ),
    (re.compile(r"\b[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}\b", re.IGNORECASE), "name a switch in words"),
]
MAC = re.compile(r"(?<![0-9a-z])([0-9a-f]{2})([:-])(?:[0-9a-f]{2}\2){4}[0-9a-f]{2}(?![0-9a-f])", re.IGNORECASE)
DOCUMENTATION_MACS = "00:00:5e:00:53:"
# Prefixes that belong to makers, also with the bit of local addresses set: as a text, a number, or bytes in C++ or
# Python.
BETWEEN = r"(?:[:.-]?|,\s*0x|\\x)"
MAKERS = re.compile(rf"(?<![0-9a-f])0[02a]{BETWEEN}(?:1b{BETWEEN}21|2e{BETWEEN}8a|50{BETWEEN}56)", re.IGNORECASE)


def is_invented(mac):
    """Whether an address can belong to no maker: a group's, a local one, one for documentation, or none at all."""
    first = int(mac[:2], 16)
    plain = mac.lower().replace("-", ":")
    return first & 3 != 0 or plain.startswith(DOCUMENTATION_MACS) or plain == "00:00:00:00:00:00"


def real_names(text):
    """The line and the fault of each name in a text that may be one of a real host's."""
    found = [(match, advice) for pattern, advice in REAL_NAMES for match in pattern.finditer(text)]
    found += [(match, "write a MAC address from 02:...") for match in MAKERS.finditer(text)]
    found += [
        (match, f"write a MAC address from 02:... or {DOCUMENTATION_MACS}..")
        for match in MAC.finditer(text)
        if not is_invented(match[0])
    ]
    for match, advice in sorted(found, key=lambda each: each[0].start()):
        yield text.count("\n", 0, match.start()) + 1, f"{match[0]!r} may be the name of something real; {advice}"


def files_of_the_repository():
    command = ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    try:
        listed = subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=True).stdout
    except OSError as error:
        sys.exit(f"lint_sources.py: could not run git, which lists the files: {error}")
    except subprocess.CalledProcessError as error:
        sys.exit(f"lint_sources.py: git did not list the files: {error.stderr.decode().strip() or error}")
    return [ROOT / name for name in listed.decode().split("\0") if name and (ROOT / name).is_file()]


def names():
    for file in files_of_the_repository():
        for line, fault in real_names(file.read_text(encoding="latin-1")):
            yield f"{file.relative_to(ROOT)}:{line}: {fault}"


MOST_COLUMNS = 120
# A text in JSON, a drawing and a list of reasons or keys have no place to break. Nor have rows of tables and shown
# output in Markdown, see below.
WIDE_FORMATS = (".json", ".svg", ".toml", "golden/keys.txt")
# What programs write, from expressions and sentences of any length.
WRITTEN_FILES = ("docs/performance.md", "docs/qdp-reference.md", "docs/runbook/", "qdp/exporter/files/")
WRITTEN_FILES += ("fuzz/corpus/", "fuzz/files/corpus/")


def wide_lines(path, text):
    """The numbers of the lines that are too long and could be broken."""
    if path.endswith(WIDE_FORMATS) or path.startswith(WRITTEN_FILES):
        return
    is_shown = False
    for number, line in enumerate(text.splitlines(), 1):
        if path.endswith(".md"):
            is_shown ^= line.lstrip().startswith("```")
            if is_shown or line.startswith("|"):
                continue
        if len(line) > MOST_COLUMNS and "://" not in line:
            yield number


def widths():
    for file in files_of_the_repository():
        path = file.relative_to(ROOT).as_posix()
        data = file.read_bytes()
        if b"\0" not in data:
            for number in wide_lines(path, data.decode(errors="replace")):
                yield f"{path}:{number}: is longer than {MOST_COLUMNS} columns"


def main():
    faults = [*inclusions(), *host_inclusions(), *layers(), *map_of_methods(), *openings(), *names(), *widths()]
    for fault in faults:
        print(fault, file=sys.stderr)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
