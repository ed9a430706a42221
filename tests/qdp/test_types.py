"""The types of the layer, as users of it check their scripts."""

import shutil

import pytest

import checker

# Modules that are checked strictly themselves.
STRICT = """
    __init__ _capture aliases call errors flow_text flows host methods nic paging rates record records settings switch
    values
""".split()


@pytest.fixture(scope="module")
def checked(root, build, tmp_path_factory):
    """Runs mypy, which finds the package and the stubs as if they were installed."""
    folder = tmp_path_factory.mktemp("types")
    installed = folder / "installed"
    shutil.copytree(build / "qdp", installed / "qdp", ignore=shutil.ignore_patterns("__pycache__"))
    shutil.copytree(root / "typings" / "_libqdp-stubs", installed / "_libqdp-stubs")

    def checked(*arguments):
        return checker.checked(build, folder, [installed], "--strict", *arguments)

    return checked


def test_typical_uses_pass_the_strict_type_checker(root, checked):
    done = checked(str(root / "tests" / "qdp" / "typical_uses.py"))
    assert done.stdout + done.stderr == "Success: no issues found in 1 source file\n"


def test_wrong_uses_do_not(tmp_path, checked):
    script = tmp_path / "wrong.py"
    script.write_text(
        "import qdp\n"
        "number: str = qdp.Host().switch(0).number\n"
        "qdp.Host().switch(0).port('five')\n"
        "qdp.Host().switch(0).portz()\n"
        "drops: str = qdp.Host().switch(0).port(5).stats().rxDrops\n"
    )
    done = checked(str(script))
    assert [line.split(":")[1] for line in done.stdout.splitlines() if ": error: " in line] == ["2", "3", "4", "5"]


def test_objects_settings_and_rates_are_strict_themselves(checked):
    done = checked(*(f"installed/qdp/{name}.py" for name in STRICT))
    of_these = tuple(f"installed/qdp/{name}.py:" for name in STRICT)
    assert [line for line in done.stdout.splitlines() if line.startswith(of_these)] == []
    assert done.returncode in (0, 1) and done.stderr == ""
