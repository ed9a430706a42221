"""The type stubs in typings/: that they say what the module does, and that a type checker makes use of them."""

import ast
import importlib.util
import inspect
import os
import subprocess
import sys

import pytest

import _libqdp
from observe import Outcome
from typings.arguments import ARGUMENTS, PRINTED, arguments_of
from typings.stub import Stub

# No result holds these: they are what a caller gives, or what other dicts begin with.
NOT_RETURNED = {"_FPOSettings", "_L3SPANValidity", "_LifInput"}


@pytest.fixture(scope="module")
def stub(root):
    return Stub(root / "typings" / "_libqdp-stubs" / "__init__.pyi")


def method_names():
    return [name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value)]


def admits_only_none(annotation):
    return annotation is type(None)


class TestSignatures:
    def test_the_methods_of_the_module_in_the_order_of_its_table(self, stub):
        assert [function.name for function in stub.functions()] == method_names()
        assert len(method_names()) == 147

    @pytest.mark.parametrize("name", method_names())
    def test_parameters(self, stub, name):
        [function] = [each for each in stub.functions() if each.name == name]
        given = function.args
        shown = inspect.signature(getattr(_libqdp, name)).parameters
        assert [each.arg for each in given.posonlyargs] == list(shown)
        assert all(each.annotation is not None for each in given.posonlyargs) and function.returns is not None
        others = (given.args, given.vararg, given.kwonlyargs, given.kwarg, given.defaults)
        assert others == ([], None, [], None, [])

    @pytest.mark.parametrize("name", method_names())
    def test_documentation_names_every_parameter(self, stub, name):
        [function] = [each for each in stub.functions() if each.name == name]
        text = ast.get_docstring(function)
        told = [line.split(":")[0] for line in text.splitlines() if ":" in line]
        names = {word for part in told for word in part.replace("...", ",").replace(" ", "").split(",")}
        missing = [each.arg for each in function.args.posonlyargs if each.arg not in names]
        # A run like "pf_0 ... pf_3" names its ends.
        runs = [part.replace(" ", "").split("...") for part in told if "..." in part]
        order = [each.arg for each in function.args.posonlyargs]
        for first, last in runs:
            missing = [each for each in missing if each not in order[order.index(first) : order.index(last)]]
        assert missing == []

    def test_package_is_marked_as_typed(self, root):
        assert sorted(path.name for path in (root / "typings" / "_libqdp-stubs").iterdir()) == ["__init__.pyi", "py.typed"]


class TestResults:
    def test_arguments_for_every_method(self):
        assert list(ARGUMENTS) == method_names()

    @pytest.mark.parametrize("name", method_names())
    def test_result_is_what_the_annotation_says(self, stub, configured, qdp, name):
        arguments = arguments_of(name, _libqdp)
        parameters, annotation = stub.annotations(name)
        assert list(stub.mismatches(arguments, tuple[tuple(parameters)] if parameters else tuple[()], "arguments")) == []

        outcome = qdp.call(name, *arguments)
        assert outcome == Outcome(outcome.result, PRINTED.get(name, ""), calls=outcome.calls)
        assert list(stub.mismatches(outcome.result, annotation)) == []
        assert (outcome.result is None) == admits_only_none(annotation)

    def test_every_dict_of_the_stub_is_met(self, root, host, exported, qdp):
        """No annotation goes unchecked because a list of the built-in host is empty."""
        stub = Stub(root / "typings" / "_libqdp-stubs" / "__init__.pyi")
        for name in ARGUMENTS:
            host.reset()
            assert exported.LibraryInit() == 0
            arguments = arguments_of(name, _libqdp)
            list(stub.mismatches(qdp.call(name, *arguments).result, stub.annotations(name)[1]))
        assert stub.typed_dicts() - stub.seen == NOT_RETURNED

    @pytest.mark.parametrize(
        "arguments, absent",
        [
            ((0, 0, "10.20.0.5", 0), []),
            ((0, 1, "2001:db8::5", 0), []),
            ((0, 0, "10.20.0.6", 0), ["geneve_smac", "geneve_dmac", "geneve_src", "geneve_dst"]),
            ((0, 0, "10.99.0.1", 0), "all but isValid"),
        ],
    )
    def test_optional_keys_of_a_span_record(self, stub, configured, qdp, arguments, absent):
        result = qdp.call("GetL3SPANRecord", *arguments).result
        annotation = stub.typed_dict("_L3SPANRecord")
        assert list(stub.mismatches(result, annotation)) == []
        keys = [*stub.typed_dict("_L3SPANValidity").__annotations__, *annotation.__optional_keys__]
        if absent == "all but isValid":
            absent = [key for key in keys if key != "isValid"]
        assert sorted(result) == sorted(key for key in keys if key not in absent)

    @pytest.mark.parametrize("is_valid", [0, 1])
    def test_optional_keys_of_an_input_entry(self, stub, configured, qdp, is_valid):
        entry = bytearray(20)
        entry[17] = is_valid
        configured.script("Qdp_P4_Cmd", outputs=[bytes(entry)])
        result = qdp.call("TableInputGet", 0).result
        annotation = stub.typed_dict("_InputEntry")
        assert list(stub.mismatches(result, annotation)) == []
        assert set(result) == annotation.__required_keys__ | (annotation.__optional_keys__ if is_valid else set())


class TestMismatches:
    """The checker finds what it is there for."""

    SWITCH = dict(name="s", swID=0, maxPorts=1, numActivePorts=1, numPorts=1, mtu=1, numLcores=1, lcores=1)

    def found(self, stub, value, method="ListSwitches"):
        return list(stub.mismatches(value, stub.annotations(method)[1]))

    def test_a_right_value(self, stub):
        assert self.found(stub, [self.SWITCH]) == []
        assert self.found(stub, None) == []

    @pytest.mark.parametrize(
        "value",
        [
            "",
            (SWITCH,),
            [None],
            [{**SWITCH, "mtu": "1"}],
            [{**SWITCH, "mtu": True}],
            [{**SWITCH, "more": 1}],
            [dict(list(SWITCH.items())[1:])],
            [dict(reversed(SWITCH.items()))],
        ],
    )
    def test_wrong_values(self, stub, value):
        assert len(self.found(stub, value)) == 1

    @pytest.mark.parametrize(
        "method, value",
        [
            ("GetLBMetric", "CPU"),
            ("P4AppSet", False),
            ("P4AppSet", 1),
            ("ClearSwitchMACTable", 0),
            ("GetUplinkRingSize", (1,)),
            ("GetUplinkRingSize", [1, 2]),
            ("ListLCoreIDs", [1]),
            ("ListLCoreIDs", (1, "2")),
            ("GetUplinkQueueStats", [("rxPackets", 1)]),
        ],
    )
    def test_wrong_values_of_other_shapes(self, stub, method, value):
        assert len(self.found(stub, value, method)) == 1


@pytest.fixture
def checked(root, tmp_path):
    """Runs mypy or its stubtest. They find the stubs as an installed package of stubs is found, on Python's own path; in
    MYPYPATH mypy 1.0 does not look for such packages."""

    def run(*arguments, path=(root / "typings",), **environment):
        if importlib.util.find_spec("mypy") is None:
            pytest.fail("mypy is not installed; script/setup installs it")
        environment["PYTHONPATH"] = os.pathsep.join(map(str, path))
        environment["MYPY_CACHE_DIR"] = str(tmp_path / "cache")
        return subprocess.run(
            [sys.executable, "-m", *arguments],
            cwd=tmp_path,
            env={**os.environ, **environment},
            capture_output=True,
            text=True,
        )

    return run


class TestTypeChecker:
    # What a script may get wrong, and what mypy says of it.
    WRONG_USES = [
        ("_libqdp.ListPort(0)", 'Module has no attribute "ListPort"'),
        ("_libqdp.ListPorts()", 'Too few arguments for "ListPorts"'),
        ("_libqdp.ListPorts(switch=0)", 'Unexpected keyword argument "switch" for "ListPorts"'),
        ('_libqdp.ListPorts("0")', 'Argument 1 to "ListPorts" has incompatible type "str"; expected "int"'),
        ("_libqdp.ListSwitches()[0]", 'Value of type "Optional[List[_Switch]]" is not indexable'),
        ('(_libqdp.ListSwitches() or [])[0]["id"]', 'TypedDict "_Switch" has no key "id"'),
        ('len(_libqdp.GetLBParams("a")["run_in_msec"])', 'Argument 1 to "len" has incompatible type "int"'),
        ("_libqdp.GetFlowStats(0, [1, 2], 0)", 'has incompatible type "List[int]"; expected "Tuple[int, ...]"'),
        ("_libqdp.InjectLBTraffic(0, ((0, -1, 5, 0),))", 'Argument 2 to "InjectLBTraffic" has incompatible type'),
        ('_libqdp.EnableFPO("a", {"enabled": 1})', 'TypedDict item "enabled" has type "bool"'),
        ('_libqdp.EnableFPO("a", {"enable": True})', 'Extra key "enable" for TypedDict "_FPOSettings"'),
        ('_libqdp.SetLBMetric("a", "CPU")', 'Argument 2 to "SetLBMetric" has incompatible type'),
        ('_libqdp.SetLBParam("a", "cpuload", 1)', 'Argument 2 to "SetLBParam" has incompatible type'),
        ('assert _libqdp.GetLBMetric("a") == "memory"', "Non-overlapping equality check"),
        ("done = _libqdp.ClearSwitchMACTable(0)", '"ClearSwitchMACTable" does not return a value'),
    ]

    def test_typical_uses_pass(self, checked, root):
        done = checked("mypy", "--strict", str(root / "tests" / "typings" / "typical_uses.py"), LD_PRELOAD="")
        assert done.stdout + done.stderr == "Success: no issues found in 1 source file\n"

    def test_typical_uses_run_as_written(self):
        """The names that they use exist in the module too, beside those for type checkers alone."""
        from typings import typical_uses

        tree = ast.parse(inspect.getsource(typical_uses))
        used = {
            node.attr
            for node in ast.walk(tree)
            if isinstance(node, ast.Attribute) and isinstance(node.value, ast.Name) and node.value.id == "_libqdp"
        }
        assert used <= set(method_names()) and len(used) > 15

    def test_wrong_uses_are_found(self, checked, tmp_path):
        uses = [use for use, _ in self.WRONG_USES]
        (tmp_path / "wrong.py").write_text("import _libqdp\n" + "\n".join(uses) + "\n")
        done = checked("mypy", "--strict", "wrong.py", LD_PRELOAD="")
        reports = [line for line in done.stdout.splitlines() if ": error: " in line]
        errors = dict(line.removeprefix("wrong.py:").split(": error: ", 1) for line in reports)
        assert len(reports) == len(uses) and list(errors) == [str(line) for line in range(2, len(uses) + 2)], done
        for (use, expected), error in zip(self.WRONG_USES, errors.values()):
            assert expected in error, use

    def stubtest(self, checked, build, typings):
        """mypy's own comparison of the stub with the module, which it imports."""
        return checked("mypy.stubtest", "_libqdp", path=(build, typings), LD_LIBRARY_PATH=str(build / "host"))

    def test_stubtest_passes(self, checked, build, root):
        done = self.stubtest(checked, build, root / "typings")
        assert done.stdout + done.stderr == "Success: no issues found in 1 module\n"

    def test_stubtest_finds_a_parameter_too_many(self, checked, build, root, tmp_path):
        folder = tmp_path / "changed" / "_libqdp-stubs"
        folder.mkdir(parents=True)
        text = (root / "typings" / "_libqdp-stubs" / "__init__.pyi").read_text()
        changed = text.replace("def ListPorts(switch: int, /)", "def ListPorts(switch: int, port: int, /)")
        assert changed != text
        (folder / "__init__.pyi").write_text(changed)
        done = self.stubtest(checked, build, folder.parent)
        assert done.returncode == 1 and "_libqdp.ListPorts is inconsistent" in done.stdout
