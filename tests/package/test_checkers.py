"""What the field's checkers say of the packages: abi3audit and twine of the wheel, lintian of the Debian packages."""

import json
import os
import pathlib
import re
import zipfile

import pytest

from package.shared import output, ran

PACKAGES = pathlib.Path(os.environ["QDP_PACKAGES"])
TOOLS = PACKAGES / "tools" / "bin"
(WHEEL,) = PACKAGES.glob("*.whl")


def audited(path):
    """abi3audit's finding about each library of a wheel, or about one extension."""
    report = json.loads(ran(TOOLS / "abi3audit", "--report", path).stdout)
    (found,) = report["specs"].values()
    return {each["name"]: each["result"] for each in found.get("wheel", [])}


@pytest.mark.skipif(not (TOOLS / "abi3audit").exists(), reason="abi3audit cannot be had")
class TestABI:
    def test_every_library_keeps_to_the_stable_abi_of_3_6(self):
        found = audited(WHEEL)
        assert "_libqdp.abi3.so" in found
        for name, result in found.items():
            assert result["is_abi3_baseline_compatible"] and result["computed"] == "3.6", name
            assert result["future_abi3_objects"] == {}, name

    def test_no_function_of_the_interpreter_outside_the_stable_abi(self, tmp_path):
        """The module's own functions that a hosting process calls begin with Py as well; these are no imports."""
        with zipfile.ZipFile(WHEEL) as wheel:
            module = wheel.extract("_libqdp.abi3.so", tmp_path)
        own = set(re.findall(r" T (\w+)", output("nm", "--dynamic", "--defined-only", module)))
        for name, result in audited(WHEEL).items():
            foreign = set(result["non_abi3_symbols"]) - (own if name == "_libqdp.abi3.so" else set())
            assert foreign == set(), name


def test_twine():
    said = output(TOOLS / "twine", "check", "--strict", *PACKAGES.glob("*.whl"), *PACKAGES.glob("*.tar.gz"))
    assert said.count("PASSED") == 2


def test_lintian():
    packages = list(PACKAGES.glob("*.deb"))
    assert len(packages) == 2
    assert output("lintian", "--fail-on", "error,warning", *packages) == ""
