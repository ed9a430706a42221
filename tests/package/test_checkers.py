"""What the field's checkers say of the packages: abi3audit, twine and pyright of the wheel, lintian of the Debian
packages."""

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


@pytest.mark.skipif(not (TOOLS / "pyright").exists(), reason="pyright cannot be had")
class TestPyright:
    """The wheel's types, with the oldest Python whose types it reads."""

    @pytest.fixture
    def checked(self, tmp_path):
        with zipfile.ZipFile(WHEEL) as wheel:
            wheel.extractall(tmp_path)

        def checked(text):
            (tmp_path / "script.py").write_text(text)
            options = {"typeCheckingMode": "standard", "pythonVersion": "3.8", "reportMissingModuleSource": False}
            (tmp_path / "pyrightconfig.json").write_text(json.dumps(options))
            found = ran(
                TOOLS / "pyright", "--outputjson", "--pythonpath", "/usr/bin/python3", "script.py", cwd=tmp_path
            )
            reports = json.loads(found.stdout)["generalDiagnostics"]
            return {each["range"]["start"]["line"]: each["message"] for each in reports if each["severity"] == "error"}

        return checked

    @pytest.mark.parametrize("uses", ["host/typical_uses.py", "qdp/typical_uses.py", "typings/typical_uses.py"])
    def test_typical_uses_pass(self, checked, root, uses):
        assert checked((root / "tests" / uses).read_text()) == {}

    def test_wrong_uses_are_found(self, checked):
        uses = [
            "import qdp_host, _libqdp",
            "qdp_host.EmbeddedHost().advance('5')",
            "qdp_host.EmbeddedHost().frieze()",
            "qdp_host.Call('a', [1]).result.keys()",
            "_libqdp.DumpFlowTable(0, 1)",
        ]
        assert sorted(checked("\n".join(uses) + "\n")) == [1, 2, 3, 4]


def test_twine():
    said = output(TOOLS / "twine", "check", "--strict", *PACKAGES.glob("*.whl"), *PACKAGES.glob("*.tar.gz"))
    assert said.count("PASSED") == 2


def test_lintian():
    packages = list(PACKAGES.glob("*.deb"))
    assert len(packages) == 2
    assert output("lintian", "--fail-on", "error,warning", *packages) == ""
