"""Checks what the compiler does not: who includes whom, that the module's map is true, and what each file opens with."""

import pathlib
import re
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
BESIDE_SOURCE = {"host": ["platform/"], "bench": ["platform/", "host/operations_"]}
MAP = "module.cpp"


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
            if not file or not file.exists() or not re.search(rf"^PyObject\* {found[1]}\(", file.read_text(), re.MULTILINE):
                yield f"src/{MAP}: {found[1]} is not in {named}"
    if rows == 0:
        yield f"src/{MAP}: no methods found"


def openings():
    for folder in ("src", "host", "bench"):
        for file in sorted((ROOT / folder).rglob("*")):
            if file.suffix in (".cpp", ".h", ".def") and not file.read_text().startswith("// "):
                yield f"{file.relative_to(ROOT)}: opens without a sentence that says what it holds"


def main():
    faults = [*inclusions(), *map_of_methods(), *openings()]
    for fault in faults:
        print(fault, file=sys.stderr)
    sys.exit(1 if faults else 0)


main()
