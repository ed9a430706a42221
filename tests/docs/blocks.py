"""The code blocks of a page of documentation, and how a block is run and compared with what stands below it.

    ```python     runs behind the Python blocks above it, as one script; a ```text block right below is what it prints,
                  standard error included
    ```console    "$ command", and below it what it prints; a command that ends with "&" goes on beside the next ones
    ```sh         commands, of which nothing is shown
    ```json       a scenario of the embedded host
    ```text       elsewhere, a list: each line begins with a path of the repository

"..." in what is shown stands for anything.
"""

import re
import subprocess
import sys
import time
from dataclasses import dataclass

from markdown_it import MarkdownIt

TIMEOUT = 600  # seconds; far more than any of them takes on a machine that has time
RUN = {"python", "console", "sh", "json"}
MARKER = "--- the block under test ---"


@dataclass
class Block:
    page: str
    line: int
    language: str
    text: str
    shown: str | None = None  # what stands below as its output

    @property
    def name(self):
        """The page and the block's first line, by which lists speak of it."""
        return f"{self.page}: {self.text.splitlines()[0]}"


def blocks_of(page, text):
    """All blocks of a page; those that say what another prints go with that one."""
    found = []
    previous_end = None
    for token in MarkdownIt("commonmark").enable("table").parse(text):
        if token.type in ("fence", "code_block"):
            block = Block(page, token.map[0] + 1, token.info.strip(), token.content)
            between = text.splitlines()[previous_end : token.map[0]] if found else None
            if block.language == "text" and between is not None and not "".join(between).strip():
                found[-1].shown = block.text
            elif not block.language.startswith("{"):
                found.append(block)
            previous_end = token.map[1]
    return found


def is_as_shown(printed, shown):
    """Whether a text is what is shown of it. "..." in a line of its own stands for any lines, else for any part of
    one."""
    pattern = "\n".join(map(_pattern, shown.rstrip("\n").split("\n")))
    return re.fullmatch(pattern, printed.rstrip("\n")) is not None


def _pattern(line):
    return r"[\s\S]*" if line == "..." else re.escape(line).replace(r"\.\.\.", ".*")


def run_python(block, before, environment, root, interpreter=sys.executable):
    """What a Python block prints, run behind the ones before it, and its status."""
    script = "\n".join([*(each.text for each in before), f"print({MARKER!r}, flush=True)", block.text])
    everything, status = _run([interpreter, "-u", "-c", script], environment, root)
    _, found, printed = everything.partition(MARKER + "\n")
    assert found, f"a block above {block.name!r} does not pass: {everything}"
    return printed, status


def commands_of(block):
    """The commands of a console or shell block, each with what is shown below it; None where nothing can be."""
    if block.language == "sh":
        return [(block.text, None)]
    found = []
    for part in re.split(r"(?m)^\$ ", block.text)[1:]:
        lines = part.split("\n")
        length = 1
        while lines[length - 1].endswith("\\"):
            length += 1
        found.append(("\n".join(lines[:length]), "\n".join(lines[length:])))
    assert block.text.startswith("$ "), f"{block.name!r} does not begin with a command: $ ..."
    return found


def run_command(command, environment, root):
    return _run(["/bin/bash", "-e", "-c", command], environment, root)


def start_command(command, environment, root, file):
    """A command that goes on in the background, and what it has printed into a file once it has printed a line."""
    line = ["/bin/bash", "-e", "-c", "exec " + command.rstrip("&\n ")]
    with open(file, "w") as output:
        running = subprocess.Popen(line, cwd=root, env=environment, stdout=output, stderr=subprocess.STDOUT)
    deadline = time.monotonic() + TIMEOUT
    while True:
        with open(file) as output:
            printed = output.read()
        if printed.endswith("\n") or running.poll() is not None or time.monotonic() > deadline:
            return running, printed
        time.sleep(0.05)


def _run(command, environment, root):
    """What a command prints, standard error included, and its status."""
    done = subprocess.run(
        command,
        cwd=root,
        env=environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        timeout=TIMEOUT,
    )
    return done.stdout, done.returncode
