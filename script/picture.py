"""Draws what examples print on the embedded host, whose clock stands still, as the picture of a terminal."""

import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PICTURE = ROOT / "docs" / "examples.svg"
COLUMNS = 100
COMMANDS = [
    ["examples/inventory.py", "--switch", "1"],
    ["examples/port_rates.py", "--switch", "1"],
    ["examples/balancer_load.py", "--switch", "0"],
]


def output(build, script, *arguments):
    """What a script prints on the embedded host of a build, an hour after its start."""
    prepared = [ROOT / "tests" / "examples" / "prepared.py", build / "host", "", ROOT / script]
    return subprocess.run(
        [sys.executable, *map(str, prepared), *arguments],
        env={
            **os.environ,
            "LD_LIBRARY_PATH": str(build / "host"),
            "PYTHONPATH": f"{build}{os.pathsep}{ROOT / 'host' / 'python'}",
            "COLUMNS": str(COLUMNS),
        },
        stdout=subprocess.PIPE,
        check=True,
        text=True,
    ).stdout


def session(build):
    """The lines of a terminal in which the commands are given."""
    lines = []
    for command in COMMANDS:
        lines += [f"$ script/run {' '.join(command)}", *output(build, *command).splitlines(), ""]
    return lines[:-1]


# A terminal drawn with the viewer's own fonts: nothing is fetched from anywhere.
FORMAT = """\
<svg class="rich-terminal" viewBox="0 0 {width} {height}" xmlns="http://www.w3.org/2000/svg">
    <style>
    .{unique_id}-matrix {{
        font-family: "DejaVu Sans Mono", Menlo, Consolas, monospace;
        font-size: {char_height}px;
        line-height: {line_height}px;
        font-variant-east-asian: full-width;
    }}
    .{unique_id}-title {{
        font-family: sans-serif;
        font-size: 18px;
    }}
    {styles}
    </style>
    <defs>
    <clipPath id="{unique_id}-clip-terminal">
      <rect x="0" y="0" width="{terminal_width}" height="{terminal_height}" />
    </clipPath>
    {lines}
    </defs>
    {chrome}
    <g transform="translate({terminal_x}, {terminal_y})" clip-path="url(#{unique_id}-clip-terminal)">
    {backgrounds}
    <g class="{unique_id}-matrix" xml:space="preserve">
    {matrix}
    </g>
    </g>
</svg>
"""


def draw(lines):
    from rich.console import Console
    from rich.text import Text

    if max(map(len, lines)) > COLUMNS:
        sys.exit(f"picture: a line is longer than {COLUMNS} columns; draw other commands, or a wider picture")
    with open(os.devnull, "w") as nowhere:
        console = Console(record=True, width=COLUMNS, file=nowhere, force_terminal=True)
        for line in lines:
            console.print(Text(line, style="bold" if line.startswith("$ ") else ""))
    return console.export_svg(title="The embedded host", code_format=FORMAT)


if __name__ == "__main__":
    PICTURE.parent.mkdir(exist_ok=True)
    PICTURE.write_text(draw(session(pathlib.Path(sys.argv[1]).resolve())))
    print(f"Drew {PICTURE.relative_to(ROOT)}")
