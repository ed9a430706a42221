"""CONTRIBUTING.md, and the paths that all pages name: the commands, files and lines that they speak of are there."""

import os
import pathlib
import re

import pytest

from docs.blocks import blocks_of

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = (ROOT / "CONTRIBUTING.md").read_text()
BLOCKS = blocks_of("CONTRIBUTING.md", PAGE)
PAGES = ["README.md", "CONTRIBUTING.md", "CHANGELOG.md", "host/scenarios/README.md"]
PAGES += sorted(str(page.relative_to(ROOT)) for page in (ROOT / "docs").rglob("*.md"))

# Files that a command writes, which need not be there.
WRITTEN = {"docs/performance.md": "script/bench"}


def test_blocks_are_commands_and_then_code():
    commands, *code = BLOCKS
    assert all(line.startswith("script/") for line in commands.text.splitlines())
    assert {block.language for block in code} == {"cpp"}


def test_every_command_is_there_and_none_is_left_out():
    files = [path for path in (ROOT / "script").iterdir() if path.is_file()]
    there = {f"script/{path.name}" for path in files if os.access(path, os.X_OK)}
    assert set(re.findall(r"script/[\w-]+", PAGE)) == there


def without_comment(line):
    return line.partition("//")[0].strip()


def test_the_code_stands_in_the_source():
    files = [
        path for folder in ("src", "host") for path in (ROOT / folder).rglob("*.*") if path.suffix in (".cpp", ".def")
    ]
    source = {without_comment(line) for path in files for line in path.read_text().splitlines()}
    lines = [line for block in BLOCKS[1:] for line in block.text.splitlines() if line]
    assert len(lines) > 8
    assert [line for line in lines if without_comment(line) not in source] == []


@pytest.mark.parametrize("page", PAGES)
def test_paths_lead_somewhere(page):
    folders = [path.name for path in ROOT.iterdir() if path.is_dir() and path.name[0] != "." and path.name != "build"]
    named = re.findall(rf"`((?:{'|'.join(folders)})/[\w./-]*)[` ]", (ROOT / page).read_text())
    missing = [path for path in named if not (ROOT / path).exists()]
    assert [path for path in missing if path not in WRITTEN] == []


@pytest.mark.parametrize("path, command", WRITTEN.items())
def test_what_commands_write(path, command):
    assert path in (ROOT / command).read_text()


def test_the_newest_changes_are_those_of_the_version():
    newest = re.search(r"^## (\S+)", (ROOT / "CHANGELOG.md").read_text(), re.MULTILINE)[1]
    version = re.search(r"^project\(libqdp VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
    assert newest == version
