"""Every code block of the documentation does what stands on the page: it runs, and prints what is shown."""

import os
import pathlib

import pytest

from docs.blocks import RUN, Block, blocks_of, commands_of, is_as_shown, run_command, run_python, start_command
from interpreters import oldest_and_newest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [
    "README.md",
    "host/scenarios/README.md",
    *sorted(str(page.relative_to(ROOT)) for page in (ROOT / "docs").rglob("*.md")),
]
BLOCKS = [block for page in PAGES for block in blocks_of(page, (ROOT / page).read_text())]

# Blocks that are not run, by page and first line, and why.
NOT_RUN = {
    "README.md: script/run      # builds all, and shows an embedded host's switches and ports with the command qdp": (
        "all tests, this one too"
    ),
    "README.md: CXX=clang++ CC=clang script/build          # before the first build in build/release": "script/lint",
    "docs/install.md: script/package           # builds all of them into build/package; --test tests them as well": (
        "needs PyPI, and takes minutes"
    ),
    "docs/exporter.md: qdp exporter                                     # serves http://127.0.0.1:9818/metrics": (
        "runs until it is stopped; tests/qdp/exporter does, at ports of its own"
    ),
    "docs/install.md: pip install .": "tests/package does, where there is a wheel",
    "docs/install.md: apt install ./build/package/python3-libqdp_*.deb     # the module and its stubs: all that a real "
    "host needs": "would install here; tests/package unpacks them",
}

# Python blocks that end the script, and with which status.
ENDS = {"README.md: import sys": 1}


def named(block):
    return f"{block.page}:{block.line}"


def runs(*languages):
    return [
        pytest.param(block, id=named(block))
        for block in BLOCKS
        if block.language in languages and block.name not in NOT_RUN
    ]


@pytest.fixture
def environment(root, build, tmp_path):
    """A shell in the repository, with the embedded host, the module and the commands in reach."""
    for name, started in (("qdp-host", "-m qdp_host"), ("qdp", root / "script" / "qdp_command.py")):
        command = tmp_path / name
        command.write_text(f'#!/bin/sh\nexec /usr/bin/python3 {started} "$@"\n')
        command.chmod(0o755)
    return dict(
        os.environ,
        PATH=f"{tmp_path}:/usr/bin:/bin",
        LD_LIBRARY_PATH=str(build / "host"),
        PYTHONPATH=f"{build}:{root / 'host' / 'python'}",
        QDP_HOST_LIBRARIES=str(build / "host"),
        PYTHONDONTWRITEBYTECODE="1",
    )


@pytest.fixture(scope="module")
def background():
    """The commands that go on in the background, until the last block has run; each ends in order."""
    running = []
    yield running
    for each in running:
        each.terminate()
        assert each.wait(30) == 0


@pytest.mark.parametrize("block", runs("python"))
def test_python(block, environment, root):
    before = [
        each
        for each in BLOCKS
        if each.page == block.page and each.line < block.line and each.language == "python"
        and each.name not in {**NOT_RUN, **ENDS}
    ]
    printed, status = run_python(block, before, environment, root)
    assert status == ENDS.get(block.name, 0), printed
    assert block.shown is None or is_as_shown(printed, block.shown), printed


@pytest.mark.parametrize("interpreter", oldest_and_newest())
def test_the_first_failure_shows_alike_on_every_python(environment, root, interpreter):
    block = next(block for block in BLOCKS if block.page == "docs/failures.md" and block.language == "python")
    assert "qdp.call(" in block.text and "except qdp.QdpError" in block.text
    printed, status = run_python(block, [], environment, root, interpreter)
    assert (is_as_shown(printed, block.shown), status) == (True, 0), printed


@pytest.fixture(scope="module")
def files(tmp_path_factory):
    """A folder in the place of /tmp, empty at the first command."""
    return tmp_path_factory.mktemp("files")


@pytest.mark.xdist_group("commands")  # one after the other: some read what others write
@pytest.mark.parametrize("block", runs("console", "sh"))
def test_commands(block, environment, root, files, background):
    for command, shown in commands_of(block):
        command = command.replace("/tmp/", f"{files}/")
        if command.endswith("&"):
            running, printed = start_command(command, environment, root, files / "printed")
            background.append(running)
            status = running.poll() or 0
        else:
            printed, status = run_command(command, environment, root)
        assert status == 0, printed
        assert shown is None or is_as_shown(printed.replace(f"{files}/", "/tmp/"), shown), printed


@pytest.mark.parametrize("block", runs("json"))
def test_scenarios(block, environment, root, tmp_path):
    (tmp_path / "shown.json").write_text(block.text)
    printed, status = run_command(f"cd {tmp_path} && qdp-host check shown.json", environment, root)
    assert (printed, status) == ("shown.json: ok\n", 0)


@pytest.mark.parametrize("block", runs("text"))
def test_lists_of_paths(block, root):
    paths = [line.split()[0] for line in block.text.splitlines()]
    assert [path for path in paths if not (root / path).exists()] == []


@pytest.mark.parametrize("page", PAGES)
def test_every_block_says_what_it_is(page):
    for block in blocks_of(page, (ROOT / page).read_text()):
        assert block.language in {*RUN, "text"} or block.name in NOT_RUN, (
            f"{named(block)}: name the language with a fence: {sorted(RUN)} or text, see docs/blocks.py; or in NOT_RUN"
        )


@pytest.mark.parametrize("listed", [*NOT_RUN, *ENDS])
def test_lists_speak_of_blocks_that_exist(listed):
    assert [block.name for block in BLOCKS].count(listed) == 1


class TestTheCollector:
    PAGE = """
Text

```python
print(1)
```

```text
1
```

    indented

```console
$ echo a; echo b
a
...
$ true
```
"""

    def test_finds_fences_with_what_they_print_and_indented_blocks(self):
        python, indented, console = blocks_of("page", self.PAGE)
        assert python == Block("page", 4, "python", "print(1)\n", "1\n")
        assert (indented.language, indented.text) == ("", "indented\n")
        assert commands_of(console) == [("echo a; echo b", "a\n...\n"), ("true", "")]

    @pytest.mark.parametrize(
        "printed, shown, expected",
        [
            ("a\nb\n", "a\nb\n", True),
            ("a\nb\n", "a\n", False),
            ("a\nb\nc\n", "a\n...\n", True),
            ("a\nb\nc\n", "a\n...\nc\n", True),
            ("a\nb\n\nb\nc\n", "a\n...\nc\n", True),
            ("a\nb\nd\n", "a\n...\nc\n", False),
            ("0x7f\n", "0x...\n", True),
            ("0\n1\n", "0...\n", False),
            ("a.b\n", "a+b\n", False),
        ],
    )
    def test_comparison(self, printed, shown, expected):
        assert is_as_shown(printed, shown) is expected

    def test_a_block_runs_behind_the_ones_before(self, environment, root):
        first = Block("page", 1, "python", "x = 1\nprint(0)")
        second = Block("page", 4, "python", "print(x)")
        assert run_python(second, [first], environment, root) == ("1\n", 0)

    def test_standard_error_and_status_show(self, environment, root):
        block = Block("page", 1, "python", "import sys; sys.exit('no')")
        assert run_python(block, [], environment, root) == ("no\n", 1)
        assert run_command("echo no >&2; exit 3", environment, root) == ("no\n", 3)
