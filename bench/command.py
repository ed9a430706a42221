"""What a start of the command qdp and a snapshot cost, in processor time, beside an interpreter that imports argparse
alone; and the key TAB in a shell. The interpreter's compiled files are kept, as an installation keeps them."""

import os
import pathlib
import resource
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
ARGPARSE = ["-c", "import argparse"]
START = 2  # at most, to the import of argparse
SNAPSHOT = 150 / 22  # 150 ms where that import takes 22
LINES = {
    "qdp switch show": ["switch", "show"],
    "qdp port show": ["port", "show", "0"],
    "qdp port stats": ["port", "stats", "0", "-j"],
    "qdp setting show": ["setting", "show", "flow-timeout"],
}
TAB = """
source "$1"
COMP_WORDS=(qdp port show d); COMP_CWORD=3; COMPREPLY=()
$(complete -p qdp | sed 's/.*-F \\([^ ]*\\).*/\\1/') qdp d show
[ ${#COMPREPLY[@]} -eq 1 ]
"""


def seconds_of(command, environment):
    """Processor time of a process and its own."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, env=environment, stdout=subprocess.DEVNULL, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def measured(build, rounds):
    """The least time of each in rounds that take turns: what comes on top is the machine's other work."""
    command = str(ROOT / "script" / "qdp_command.py")
    with tempfile.TemporaryDirectory() as folder:
        environment = {name: value for name, value in os.environ.items() if name != "PYTHONDONTWRITEBYTECODE"}
        environment.update(LD_LIBRARY_PATH=str(build / "host"), PYTHONPATH=str(build))
        environment.update(PYTHONPYCACHEPREFIX=folder, XDG_CACHE_HOME=folder)
        files = pathlib.Path(folder, "files")
        make_files = ["/usr/bin/python3", str(ROOT / "package" / "command_files.py"), str(files)]
        subprocess.run(make_files, env=environment, check=True)
        pathlib.Path(folder, "qdp").mkdir()
        pathlib.Path(folder, "qdp", "switch").write_text("dvs-production\n")
        commands = {"import argparse": ["/usr/bin/python3", *ARGPARSE]}
        commands.update({name: ["/usr/bin/python3", command, *line] for name, line in LINES.items()})
        commands["qdp snapshot"] = ["/usr/bin/python3", command, "snapshot", str(pathlib.Path(folder, "host.qdp"))]
        commands["TAB"] = ["bash", "--norc", "-c", TAB, "bash", str(files / "qdp.bash")]
        times = {name: [] for name in commands}
        for _ in range(rounds + 1):  # the first one compiles
            for name, line in commands.items():
                times[name].append(seconds_of(line, environment))
    return {name: min(found[1:]) for name, found in times.items()}
