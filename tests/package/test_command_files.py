"""What is made of the command's declarations for its package: the man page, the completions of three shells, and the
table of the documentation."""

import gzip
import os
import pty
import re
import select
import shutil
import signal
import subprocess
import sys
import time

import pytest

from qdp.cli import load, object_names


def made(root, build, *arguments):
    environment = {**os.environ, "LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build)}
    return subprocess.run(
        [sys.executable, str(root / "package" / "command_files.py"), *map(str, arguments)],
        env=environment, check=True, text=True, stdout=subprocess.PIPE,
    ).stdout  # fmt: skip


@pytest.fixture(scope="module")
def folder(root, build, tmp_path_factory):
    folder = tmp_path_factory.mktemp("files")
    made(root, build, folder)
    (folder / "qdp").mkdir()
    (folder / "qdp" / "switch").write_text("0\ndvs-production\ndvs-storage\n")
    (folder / "qdp" / "port").write_text("0\n3\n")
    return folder


def test_table_of_the_documentation(root, build):
    table = made(root, build, "--table")
    assert (root / "docs" / "command.md").read_text().endswith("\n\n" + table), (
        "package/command_files.py --table prints the table of docs/command.md"
    )


def test_manual_has_every_object_and_verb(folder):
    page = gzip.decompress((folder / "qdp.1.gz").read_bytes()).decode()
    for name in object_names():
        for verb in load(name).verbs:
            assert "'qdp {} {}'".format(name, verb) in page
    done = subprocess.run(
        ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(folder / "qdp.1.gz")],
        env={**os.environ, "MANROFFSEQ": "", "LC_ALL": "C.UTF-8"}, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
    )  # fmt: skip
    # Long words leave lines that cannot be justified, which is no mistake of the page.
    warnings = [line for line in done.stderr.decode().splitlines() if not line.endswith(("adjust line", "break line"))]
    assert (done.returncode, warnings) == (0, [])


BASH = """
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMPREPLY=()
function=$(complete -p qdp | sed 's/.*-F \\([^ ]*\\).*/\\1/')
$function qdp "${COMP_WORDS[COMP_CWORD]}" ""
printf '%s\\n' "${COMPREPLY[@]}"
"""
FISH = "source $argv[1]; complete -C $argv[2] | cut -f1"
COMPLETED = [
    ("qdp sw", {"switch"}),
    ("qdp port st", {"stats"}),
    ("qdp nic lif ", {"show", "add", "set"}),
    ("qdp port show ", {"0", "dvs-production", "dvs-storage"}),
    ("qdp port show dvs-s", {"dvs-storage"}),
    ("qdp port show --no", {"--no-header"}),
    ("qdp port --no", {"--no-header"}),
    ("qdp port dvs-p", {"dvs-production"}),
    ("qdp port 0 --so", {"--sort"}),
    ("qdp nic lif --no", {"--no-header"}),
    ("qdp snapshot --ano", {"--anonymize"}),
    ("qdp diff --onl", {"--only"}),
    ("qdp --fr", {"--from"}),
    ("qdp --from host.qdp swi", {"switch"}),
    ("qdp table get flow-i", {"flow-info"}),
    ("qdp port unpin 0 3 --queues ", {"both", "rx", "tx"}),
]


def completed(folder, line, *arguments):
    done = subprocess.run(
        [*line, *arguments], env={**os.environ, "XDG_CACHE_HOME": str(folder), "HOME": str(folder)}, cwd=folder / "qdp",
        text=True, check=True, stdout=subprocess.PIPE,
    )  # fmt: skip
    return set(done.stdout.split())


@pytest.mark.parametrize("line, found", COMPLETED)
def test_bash(folder, line, found):
    assert completed(folder, ["bash", "-c", BASH, "bash", folder / "qdp.bash"], *line.split(" ")) == found


@pytest.mark.skipif(shutil.which("fish") is None, reason="there is no fish")
@pytest.mark.parametrize("line, found", COMPLETED)
def test_fish(folder, line, found):
    shown = completed(folder, ["fish", "-c", FISH], folder / "qdp.fish", line)
    assert shown >= found
    if "show " not in line and "--queues" not in line:  # fish does not count what stands before
        assert shown == found


ZSH = """
unsetopt zle_bracketed_paste 2>/dev/null
fpath=({0} $fpath); autoload -U compinit; compinit -u -d {0}/dump
show() {{ print -r -- "<$BUFFER>" }}; zle -N show; bindkey '^X' show; bindkey '^I' complete-word
print re''ady
""".strip()


class Zsh:
    """An interactive zsh on a pseudo-terminal, in which one types."""

    def __init__(self, folder):
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            try:
                os.chdir(folder / "qdp")
                os.environ.update(XDG_CACHE_HOME=str(folder), HOME=str(folder), TERM="dumb", PS1="> ")
                os.execvp("zsh", ["zsh", "-f", "-i"])
            finally:
                os._exit(127)
        self.type(ZSH.format(folder).replace("\n", "; ") + "\n")
        self.read_until("ready\r")

    def type(self, text):
        os.write(self.master, text.encode())

    def read_until(self, pattern):
        """What a pattern finds first in what zsh writes from now on."""
        text, end = "", time.monotonic() + 60
        while time.monotonic() < end:
            if select.select([self.master], [], [], 1)[0]:
                text += os.read(self.master, 65536).decode()
            found = re.search(pattern, text)
            if found:
                return found
        raise AssertionError(text)

    def completed(self, line):
        """The line after the key TAB."""
        self.type(line + "\t\x18")
        shown = self.read_until("<([^<>]*)>")[1]
        self.type("\x15")  # clears the line
        return shown

    def end(self):
        os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)
        os.close(self.master)


@pytest.fixture(scope="module")
def zsh(folder):
    each = Zsh(folder)
    yield each
    each.end()


@pytest.mark.skipif(shutil.which("zsh") is None, reason="there is no zsh")
@pytest.mark.parametrize("line, found", [each for each in COMPLETED if len(each[1]) == 1])
def test_zsh(zsh, line, found):
    """What is the only completion is put into the line."""
    (word,) = found
    assert zsh.completed(line).rstrip() == line.rpartition(" ")[0] + " " + word
    assert zsh.completed(line + "-nosuch") == line + "-nosuch"
