"""The lint names its part that fails; its rules of invented names, of layers that import from below, and of widths."""

import importlib.util
import shutil
import subprocess

import pytest


@pytest.fixture(scope="module")
def lint(root):
    spec = importlib.util.spec_from_file_location("lint_sources", root / "script" / "lint_sources.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


# In two pieces each, so that this file holds none.
REAL = {
    "a device": "en" "nic0",
    "a counted device": "en" "nic{4}",
    "a portset": "Net" "Portset-0",
    "an uplink": "Net" "Uplink-1",
    "an id of octets": "0a 1b 2c 3d 4e 5f 60 71-" "82 93 a4 b5 c6 d7 e8 f9",
    "a UUID": "0a1b2c3d-4e5f-6071-" "8293-a4b5c6d7e8f9",
    "an address of a maker": "00:1b" ":21:00:00:01",
    "the same with dashes": "00-1B" "-21-00-00-01",
    "the same made local": "02:1b" ":21:00:00:01",
    "another one made local": "0a:2e" ":8a:00:00:01",
    "groups of four digits": "0250" ".5600.0001",
    "digits alone": "0250" "56000001",
    "a number": "0x0050" "5601CAFE",
    "bytes in an array": "{0x02, 0x50" ", 0x56, number}",
    "bytes in a text": r"\x02\x1b" r"\x21",
    "bytes on lines of their own": "{0x02,0x1b" ",\n    0x21}",
    "half an address": "02:1b" ":21",
    "a universal address": "64:00:09" ":00:00:01",
    "a universal address in a sentence": "outer:10:11:12" ":13:14:15:inner",
}
INVENTED = [
    "nic0",
    "vnic0",
    "portset-0",
    "switch-production",
    "DVSPortsetNameToAlias",
    "00:00:00:00:00:00",
    "ff:ff:ff:ff:ff:ff",
    "01:00:5e:00:00:fb",
    "00:00:5e:00:53:07",
    "00-00-5E-00-53-07",
    "02:10:00:00:00:01",
    "0a:0b:0c:0d:0e:0f",
    "0xFECA01004002",
    "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f",
    "fe80::1:2",
]


@pytest.mark.parametrize("name", REAL.values(), ids=REAL)
def test_a_real_name_is_found_where_it_stands(lint, name):
    found = list(lint.real_names(f"first\nsecond {name} third\n"))
    assert {line for line, _ in found} == {2}
    assert all(" may be the name of something real; " in fault for _, fault in found)


@pytest.mark.parametrize("name", INVENTED)
def test_an_invented_name_passes(lint, name):
    assert list(lint.real_names(f"first {name}\n")) == []


def test_all_files_are_read(lint, root):
    read = {file.relative_to(root).as_posix().rpartition("/")[0] for file in lint.files_of_the_repository()}
    assert {"", "host/scenarios", "docs", "src/platform", "tests", "fuzz/corpus", "typings/_libqdp-stubs"} <= read


def test_the_repository_has_none(lint):
    assert list(lint.names()) == []


class TestLayers:
    FILES = {
        "call.py": "from . import errors\nfrom .record import plan_of\n",
        "errors.py": "",
        "record.py": "",
        "rates.py": "from .call import call\nfrom qdp.errors import QdpError\n",
        "snapshot/__init__.py": "from ..rates import Reading\nfrom . import cli\n",
        "snapshot/cli.py": "",
        "cli/main.py": "from ..snapshot import read\n",
        "__init__.py": "from .call import call\nfrom .cli import main\n",
    }

    @pytest.mark.parametrize(
        "file, line, name",
        [
            ("call.py", "from .rates import Reading", "rates"),
            ("errors.py", "from . import cli", "cli"),
            ("rates.py", "import qdp.snapshot", "snapshot"),
            ("rates.py", "from qdp import snapshot", "snapshot"),
            ("snapshot/__init__.py", "from ..cli.main import main", "cli"),
            ("snapshot/__init__.py", "    from .. import cli", "cli"),
        ],
    )
    def test_import_from_above(self, lint, tmp_path, monkeypatch, file, line, name):
        monkeypatch.setattr(lint, "LAYER", tmp_path)
        for path, text in self.FILES.items():
            (tmp_path / path).parent.mkdir(exist_ok=True)
            (tmp_path / path).write_text(text)
        assert list(lint.layers()) == []
        before = self.FILES[file] + ("def late():\n" if line.startswith(" ") else "")
        (tmp_path / file).write_text(before + line + "\n")
        assert list(lint.layers()) == [
            f"qdp/{file}:{before.count(chr(10)) + 1}: may not import {name}, which stands above it; see LAYERS"
        ]


class TestFailingParts:
    SETUP = "lint: script/setup lint\n"
    FORMAT = SETUP + "lint: script/format --check\n"
    SOURCES = FORMAT + "lint: /usr/bin/python3 -X utf8 script/lint_sources.py\n"
    BUILD = SOURCES + "lint: script/build lint\n"

    @pytest.fixture
    def parts(self, root, tmp_path):
        """A checkout whose parts of the lint do nothing and say nothing."""
        (tmp_path / "script").mkdir()
        for name in ("lint", "common"):
            shutil.copy(root / "script" / name, tmp_path / "script")
        for name in ("setup", "format", "build"):
            self.replace(tmp_path, name, "#!/bin/sh\n")
        self.replace(tmp_path, "lint_sources.py", "")
        return tmp_path

    @staticmethod
    def replace(parts, name, text):
        (parts / "script" / name).write_text(text)
        (parts / "script" / name).chmod(0o755)

    @staticmethod
    def lint(parts):
        done = subprocess.run([parts / "script" / "lint"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        assert done.stderr == ""
        return done.returncode, done.stdout

    def test_all_pass(self, parts):
        assert self.lint(parts) == (0, self.BUILD + "lint passed\n")

    @pytest.mark.parametrize(
        "name, text, told",
        [
            ("setup", "#!/bin/sh\nexit 1\n", SETUP + "lint: script/setup lint failed with exit code 1\n"),
            ("format", "#!/bin/sh\nexit 3\n", FORMAT + "lint: script/format --check failed with exit code 3\n"),
            ("format", "#!/bin/sh\nkill -9 $$\n", FORMAT + "lint: script/format --check was ended by signal 9\n"),
            (
                "lint_sources.py",
                "raise SystemExit(1)",
                SOURCES + "lint: /usr/bin/python3 -X utf8 script/lint_sources.py failed with exit code 1\n",
            ),
            (
                "build",
                "#!/bin/sh\necho why >&2\nexit 1\n",
                BUILD + "why\nlint: script/build lint failed with exit code 1\n",
            ),
        ],
    )
    def test_silent_part(self, parts, name, text, told):
        self.replace(parts, name, text)
        status, output = self.lint(parts)
        # Of a process that a signal ends, the shell itself says more.
        assert status == 1 and [line for line in output.splitlines(True) if "Killed" not in line] == told.splitlines(
            True
        )


class TestListingFiles:
    def test_no_repository(self, lint, tmp_path, monkeypatch):
        monkeypatch.setattr(lint, "ROOT", tmp_path)
        with pytest.raises(
            SystemExit, match="^lint_sources.py: git did not list the files: fatal: not a git repository"
        ):
            lint.files_of_the_repository()

    def test_no_git(self, lint, tmp_path, monkeypatch):
        monkeypatch.setenv("PATH", str(tmp_path))
        with pytest.raises(SystemExit, match="^lint_sources.py: could not run git, which lists the files: .*'git'"):
            lint.files_of_the_repository()


class TestWidths:
    WIDE = "x " * 61  # 122 columns

    @pytest.mark.parametrize(
        "path, text, numbers",
        [
            ("src/module.cpp", f"// first\n{WIDE}\n", [2]),
            ("script/lint", "x" * 120 + "\n" + "x" * 121, [2]),
            ("src/module.cpp", "\u00e9" * 120, []),
            ("README.md", f"{WIDE}\n| {WIDE} |\n", [1]),
            ("README.md", f"```console\n{WIDE}\n```\n{WIDE}\n", [4]),
            ("README.md", f"| a |\n  | {WIDE}|", [2]),
            ("docs/host.md", "[a page](https://host.example/" + "x" * 120 + ")", []),
            ("host/scenarios/mux.json", WIDE, []),
            ("docs/runbook/QdpDown.md", WIDE, []),
        ],
    )
    def test_wide_lines(self, lint, path, text, numbers):
        assert list(lint.wide_lines(path, text)) == numbers

    def test_the_repository_has_none(self, lint):
        assert list(lint.widths()) == []
