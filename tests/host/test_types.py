"""The types of qdp_host, as the authors of scripts and tests check theirs."""

import shutil

import pytest

import checker


@pytest.fixture(scope="module")
def checked(root, build, tmp_path_factory):
    """Runs mypy, which finds the packages and the stubs as if they were installed."""
    folder = tmp_path_factory.mktemp("types")
    ignored = shutil.ignore_patterns("__pycache__", "other_interpreters")
    for package in (root / "host" / "python" / "qdp_host", root / "typings" / "_libqdp-stubs", build / "qdp"):
        shutil.copytree(package, folder / "installed" / package.name, ignore=ignored)

    def checked(*arguments):
        return checker.checked(build, folder, [folder / "installed"], "--strict", *arguments)

    return checked


def test_typical_uses_pass_the_strict_type_checker(root, checked):
    done = checked(root / "tests" / "host" / "typical_uses.py")
    assert done.stdout + done.stderr == "Success: no issues found in 1 source file\n"


# A wrong use, and what mypy says of it.
WRONG_USES = [
    (
        'host.fail("Qdp_Get_Port_List", status="7")',
        'Argument "status" to "fail" of "EmbeddedHost" has incompatible type "str"',
    ),
    ("host.fail(7)", 'Argument 1 to "fail" of "EmbeddedHost" has incompatible type "int"; expected "str"'),
    ('host.script("Qdp_Get_Port_List", outputs=["text"])', 'List item 0 has incompatible type "str"'),
    ('host.script("Qdp_Get_Port_List", text="text")', 'Argument "text" to "script" of "EmbeddedHost" has incompatible'),
    ('host.advance("5")', 'Argument 1 to "advance" of "EmbeddedHost" has incompatible type "str"; expected "float"'),
    ("host.restore(3)", 'Argument 1 to "restore" of "EmbeddedHost" has incompatible type "int"; expected "Snapshot"'),
    ('host.load(b"mux")', 'Argument 1 to "load" of "EmbeddedHost" has incompatible type "bytes"'),
    ("host.operations().keys()", '"List[str]" has no attribute "keys"'),
    ("host.frieze()", '"EmbeddedHost" has no attribute "frieze"'),
    ('qdp_host.running(capture="file")', 'Unexpected keyword argument "capture" for "running"'),
    ("len(qdp_host.Capacity(4).size)", 'Argument 1 to "len" has incompatible type "int"; expected "Sized"'),
]


def test_wrong_uses_are_found(tmp_path, checked):
    script = tmp_path / "wrong.py"
    script.write_text(
        "import qdp_host\nhost = qdp_host.EmbeddedHost()\n" + "".join(use + "\n" for use, _ in WRONG_USES)
    )
    reports = [line for line in checked(script).stdout.splitlines() if ": error: " in line]
    found = {int(line.split(":")[1]): line.split(": error: ")[1] for line in reports}
    assert list(found) == list(range(3, 3 + len(WRONG_USES)))
    for (use, expected), said in zip(WRONG_USES, found.values()):
        assert expected in said, use


def test_the_package_is_strict_itself(root, checked):
    """Nothing of it lacks a type, the plugin included."""
    package = root / "host" / "python" / "qdp_host"
    done = checked(*("installed/qdp_host/" + path.name for path in sorted(package.glob("*.py"))))
    assert [line for line in done.stdout.splitlines() if line.startswith("installed/qdp_host/")] == []
    assert done.stderr == "" and (package / "py.typed").exists()
