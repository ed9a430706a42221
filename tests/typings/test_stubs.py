"""The type stubs in typings/: that they say what the module does, and that a type checker makes use of them."""

import ast
import inspect
import os
import pathlib
import re
import struct
import typing

import pytest

import _libqdp
import checker
from adversity import starved
from observe import Outcome
from contract import RECIPES
from recipes import is_made_of
from typings.arguments import MORE_ARGUMENTS, TEXTS_OF_SUCCESS
from typings.stub import UNIONS, Stub

THE_STUB = Stub(pathlib.Path(__file__).parents[2] / "typings" / "_libqdp-stubs" / "__init__.pyi")


@pytest.fixture
def stub():
    THE_STUB.seen.clear()
    return THE_STUB


def method_names():
    return [name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value)]


def methods_with_parameters():
    return [name for name in method_names() if inspect.signature(getattr(_libqdp, name)).parameters]


class TestSignatures:
    def test_the_methods_of_the_module_in_the_order_of_its_table(self, stub):
        assert [function.name for function in stub.functions()] == method_names()
        assert len(method_names()) == 147

    @pytest.mark.parametrize("name", method_names())
    def test_parameters(self, stub, name):
        function = stub.function(name)
        given = function.args
        shown = inspect.signature(getattr(_libqdp, name)).parameters
        assert [each.arg for each in given.posonlyargs] == list(shown)
        assert all(each.annotation is not None for each in given.posonlyargs) and function.returns is not None
        others = (given.args, given.vararg, given.kwonlyargs, given.kwarg, given.defaults)
        assert others == ([], None, [], None, [])

    @pytest.mark.parametrize("name", method_names())
    def test_documentation_names_every_parameter(self, stub, name):
        function, text = stub.function(name), stub.documentation(name)
        parameters = [each.arg for each in function.args.posonlyargs]
        told = []
        for names in re.findall(r"^([a-z]\w*(?:(?:, | \.\.\. )\w+)*): ", text, re.MULTILINE):
            first, *others = re.split(r", | \.\.\. ", names)
            if "..." in names:  # a run like "pf_0 ... pf_3" names its ends
                told += parameters[parameters.index(first) : parameters.index(others[-1]) + 1]
            else:
                told += [first, *others]
        assert sorted(told) == sorted(parameters)

    def test_package_is_marked_as_typed(self, root):
        files = (root / "typings" / "_libqdp-stubs").iterdir()
        assert sorted(path.name for path in files) == ["__init__.pyi", "py.typed"]


class TestResults:
    def test_arguments_for_every_method(self):
        assert list(RECIPES) == method_names()

    @pytest.mark.parametrize("name", method_names())
    def test_result_is_what_the_annotation_says(self, stub, configured, qdp, name):
        arguments = is_made_of(RECIPES[name], _libqdp)
        parameters, annotation = stub.annotations(name)
        assert list(stub.mismatches(arguments, tuple[tuple(parameters)], "arguments")) == []

        outcome = qdp.call(name, *arguments)
        assert outcome == Outcome(outcome.result, TEXTS_OF_SUCCESS.get(name, ""), calls=outcome.calls)
        assert list(stub.mismatches(outcome.result, annotation)) == []
        assert (outcome.result is None) == (annotation is type(None))

    @pytest.mark.parametrize("name", method_names())
    def test_every_place_is_met(self, stub, configured, qdp, name):
        """Nothing of an annotation goes unchecked because a list of the built-in host is empty."""
        annotation = stub.annotations(name)[1]
        first = is_made_of(RECIPES[name], _libqdp)
        for arguments in (first, MORE_ARGUMENTS.get(name, first)):
            assert list(stub.mismatches(qdp.call(name, *arguments).result, annotation)) == []
        assert stub.seen == stub.places(annotation)

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
        annotation = stub.defined("L3SPANRecord")
        assert list(stub.mismatches(result, annotation)) == []
        keys = [*stub.defined("L3SPANValidity").__annotations__, *annotation.__optional_keys__]
        if absent == "all but isValid":
            absent = [key for key in keys if key != "isValid"]
        assert sorted(result) == sorted(key for key in keys if key not in absent)

    @pytest.mark.parametrize("is_valid", [0, 1])
    def test_optional_keys_of_an_input_entry(self, stub, configured, qdp, is_valid):
        entry = bytearray(20)
        entry[17] = is_valid
        configured.script("Qdp_P4_Cmd", outputs=[bytes(entry)])
        result = qdp.call("TableInputGet", 0).result
        annotation = stub.defined("InputEntry")
        assert list(stub.mismatches(result, annotation)) == []
        assert set(result) == annotation.__required_keys__ | (annotation.__optional_keys__ if is_valid else set())


def methods_with_built_results():
    """Those whose results are more than a number, a flag or a text that the interpreter holds ready."""
    ready = {int, bool, type(None), typing.Literal}
    for name in method_names():
        result = THE_STUB.annotations(name)[1]
        alternatives = typing.get_args(result) if typing.get_origin(result) in UNIONS else [result]
        if any((typing.get_origin(one) or one) not in ready for one in alternatives):
            yield name


def list_of_ports(clients):
    """A port list record: a port for each client type, representor type and flags."""
    entries = b"".join(struct.pack("<18xHII128x", kind, client, flags) for client, kind, flags in clients)
    return struct.pack("<III", 0, len(clients), 0) + entries


CLIENTS = [(client, kind, flags) for client in range(6) for kind in range(17) for flags in (0, 1)]


class TestEnumeratedTexts:
    """A Literal of a result has the texts that the module gives, and no other."""

    INPUT_ENTRIES = [bytes(16) + bytes([i, 1, 0, 0]) for i in range(256)]
    OUTPUT_ENTRIES = [bytes(7) + bytes([i]) + bytes(8) for i in range(256)]
    MUX_VLAN_ENTRIES = [bytes(12) + bytes([i, 0, 0, 0]) for i in range(8)]
    RSS_ENGINES = [struct.pack("<III152x", 1, 0, kind) for kind in range(6)]
    TX_UPLINKS = [bytes([kind]) + bytes(17) for kind in range(7)]
    FILTER_TYPES = [struct.pack("<H", mask) for mask in (1, 4)]

    # Method, arguments, operation, the answers that bring out all texts, and where the text is in the result.
    SOURCES = [
        ("ListPorts", (0,), "Qdp_Get_Port_List", [list_of_ports(CLIENTS)], "[*]['clientType']"),
        ("GetPortTxUplink", (0, 0), "Qdp_Get_Port_Tx_Uplink", TX_UPLINKS, "['txType']"),
        ("ListRSSEngine", (0, 0), "Qdp_Get_RSS_Engine_List", RSS_ENGINES, "[*]['type']"),
        ("GetSwitchFilterTypes", ("dvs-smartnic",), "Qdp_GetSwitchFilterTypes", FILTER_TYPES, "['VLANMAC']"),
        ("TableInputGet", (0,), "Qdp_P4_Cmd", INPUT_ENTRIES, "['flowKeyType']"),
        ("TableInputGet", (0,), "Qdp_P4_Cmd", INPUT_ENTRIES, "['fwdMode']"),
        ("TableMuxVlanGet", (1, 0), "Qdp_P4_Cmd", MUX_VLAN_ENTRIES, "['flowKeyType']"),
        ("TableOutputGet", (0,), "Qdp_P4_Cmd", OUTPUT_ENTRIES, "['p4plusAppId']"),
    ]

    @pytest.mark.parametrize("method, arguments, operation, answers, place", SOURCES)
    def test_texts(self, stub, configured, qdp, method, arguments, operation, answers, place):
        given = set()
        for answer in answers:
            configured.script(operation, outputs=[answer])
            given |= set(self.texts_at(qdp.call(method, *arguments).result, place))
        annotation = stub.annotations(method)[1]
        (literal,) = [one for at, one in stub.annotated_places(annotation) if at == "result" + place]
        assert given == set(typing.get_args(literal))

    def texts_at(self, value, place):
        for item in value if place.startswith("[*]") else [value]:
            yield item[re.search("'(.*)'", place)[1]]

    def test_metrics(self, stub, configured, qdp):
        given = set()
        for metric in range(4):
            configured.script("Qdp_GetLBParams", outputs=[struct.pack("<I", metric) + bytes(92)])
            configured.fail("DVSHCK_HostPropGet", 0xBAD0003)
            given.add(qdp.call("GetLBMetric", "dvs-production").result)
        literal, none = typing.get_args(stub.annotations("GetLBMetric")[1])
        assert given == set(typing.get_args(literal))

    def test_uplink_counters_in_order(self, stub, configured, qdp):
        names = typing.get_args(stub.defined("UplinkCounterName"))
        assert [name for name, _ in qdp.call("GetUplinkStats", 0, 0).result["uplinkStats"]] == list(names)

    def test_texts_that_are_taken(self, stub, configured, qdp):
        for metric in typing.get_args(stub.annotations("SetLBMetric")[0][1]):
            assert qdp.result("SetLBMetric", "dvs-production", metric) is True
            assert qdp.result("GetLBMetric", "dvs-production") == metric
        names = typing.get_args(stub.annotations("SetLBParam")[0][1])
        assert list(names) == list(qdp.result("GetLBParams", "dvs-production"))
        for name in names:
            qdp.result("SetLBParam", "dvs-production", name, 1)
        (filter_class,) = typing.get_args(stub.annotations("SetSwitchFilterTypes")[0][1])
        assert qdp.result("SetSwitchFilterTypes", "dvs-production", filter_class, 1) is True


def texts_in_source(root):
    """Patterns of the texts in the module's source, in which anything may stand for a conversion."""
    for path in sorted((root / "src").rglob("*.*")):
        for literal in re.findall(r'(?:"(?:[^"\\\n]|\\.)*"\s*)+', path.read_text()):
            text = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', literal)).replace("\\n", "\n")
            parts = re.split("%#?l*[a-z]", text)
            if len(max(parts, key=len)) > 8:
                yield re.compile(".+?".join(map(re.escape, parts)))


def is_result_under(heading, result):
    """Whether a result is the one that stands over a text."""
    if "True or False" in heading:
        return type(result) is bool
    named = {"False": False, "True": True, "and 0": 0}
    return result is next((value for name, value in named.items() if name in heading), None)


class TestFailures:
    """What the documentation says of failures."""

    def test_texts_are_in_the_source(self, stub, root):
        patterns = list(texts_in_source(root))
        told = {failure.text for name in method_names() for failure in stub.failures(name)}
        assert len(told) > 150
        assert [text for text in sorted(told) if not any(pattern.fullmatch(text) for pattern in patterns)] == []
        printed = [each for each in patterns if re.fullmatch(r"[A-Z].*\n", each.pattern, re.DOTALL)]
        untold = [pattern.pattern for pattern in printed if not any(map(pattern.fullmatch, told))]
        assert untold == [re.escape("Failed to allocate memory\n")]  # of a list that only the hosting process asks for

    def held_against(self, stub, name, outcome):
        """What is wrong with the documentation of an outcome that failed."""
        failures = stub.failures(name)
        if outcome.raised:
            kind, text = outcome.raised
            shown = re.escape('"' + text.replace("\n", "\\n") + '"')
            told = re.search(rf'{kind.__name__} ("[^"]*",\s+)*{shown}', stub.documentation(name))
            return [] if told else [f"raised {kind.__name__} {text!r}"]
        printed = "|".join(each.pattern for each in failures if each.heading.startswith("Printed")) or "(?!)"
        if not re.fullmatch(f"(?:{printed})+", outcome.printed):
            return [f"printed {outcome.printed!r}"]
        # The last text is that of the method itself; those of what it calls stand before.
        last = [each for each in failures if re.search(f"(?:{each.pattern})$", outcome.printed)]
        if outcome.returned_null:
            return [] if any("gets NULL" in each.heading for each in last) else ["NULL"]
        return [] if any(is_result_under(each.heading, outcome.result) for each in last) else [f"{outcome.result}"]

    def failing_statuses(self, operation):
        """What an operation returns when it fails: a status, of which 1 and "not found" may mean something, or NULL."""
        if operation == "DVSState_SwitchFindByAlias":
            return [0]
        return [1, 2, 0xBAD0003] if operation.startswith(("Qdp_", "DVSHCK_Host", "DVSHCK_Port")) else []

    @pytest.mark.parametrize("name", method_names())
    def test_of_every_platform_call(self, stub, host, exported, qdp, name):
        assert exported.LibraryInit() == 0
        arguments = is_made_of(RECIPES[name], _libqdp)
        operations = list(dict.fromkeys(call.operation for call in qdp.call(name, *arguments).calls))
        for operation in operations:
            for status in self.failing_statuses(operation):
                host.reset()
                assert exported.LibraryInit() == 0
                arguments = is_made_of(RECIPES[name], _libqdp)
                host.fail(operation, status)
                outcome = qdp.call(name, *arguments)
                if outcome.printed or outcome.raised:
                    assert self.held_against(stub, name, outcome) == [], operation
                else:
                    self.silence_is_documented(stub, name, outcome)

    def silence_is_documented(self, stub, name, outcome):
        """The method went on without what it could not have, or the documentation says that it says nothing."""
        annotation = stub.annotations(name)[1]
        assert list(stub.mismatches(outcome.result, annotation)) == []
        if outcome.result in (None, False):
            assert re.search("without a text|is reported", stub.documentation(name))

    @pytest.mark.parametrize("name", methods_with_parameters())
    def test_of_arguments_that_do_not_parse(self, stub, configured, qdp, name):
        outcome = qdp.call(name)
        if name == "DumpLBStats":
            assert outcome == Outcome(raised=TypeError)
        elif outcome.raised:
            assert self.held_against(stub, name, outcome) == []
        else:
            assert outcome.left_set is TypeError
            texts = [each.text for each in stub.failures(name) if re.fullmatch(each.pattern, outcome.printed)]
            assert len(set(texts)) == 1 and texts[0].startswith("TypeError: ")

    # Arguments whose results are small enough to fail at each of their allocations, and whose calls are the same each
    # time.
    SMALL = {"ListPorts": (1,), "DumpLBStats": (0, 5, 1, 0, 1), "GetUplinkRingSize": ("dvs-production", "nic1")}

    BUILDING = {"Failed to allocate buffer.\n", "Failed to set dict item.\n", "Failed to set list item.\n"}

    @pytest.mark.parametrize("name", methods_with_built_results())
    def test_of_a_lack_of_memory(self, stub, configured, qdp, name):
        configured.freeze()
        text = stub.documentation(name)
        tells_of_memory = "no memory" in text or "Failed to allocate" in text
        for outcome in starved(qdp, name, *(self.SMALL.get(name) or is_made_of(RECIPES[name], _libqdp))):
            if outcome.raised == (MemoryError, ""):
                assert not tells_of_memory or "Raised: the interpreter's own exception" in text
            elif outcome.left_set:
                kind, left = outcome.left_set
                told = {each.text.rstrip("\n") for each in stub.failures(name)}
                if kind is SystemError:
                    assert tells_of_memory and (left in self.BUILDING or left.rstrip("\n") in told)
                else:
                    assert kind is MemoryError and (outcome.printed or "leaves MemoryError set" in text)
                assert outcome.printed == "" or outcome.printed.rstrip("\n") in told
            else:
                assert outcome.printed or outcome.raised or outcome.result is None
                assert self.held_against(stub, name, outcome) == []


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
def checked(root, build, tmp_path):
    """Runs mypy or its stubtest. They find the stubs on Python's own path, like an installed package of stubs; in
    MYPYPATH mypy 1.0 looks for no such packages."""

    def run(*arguments, path=(root / "typings",), **options):
        return checker.checked(build, tmp_path, path, *arguments, **options)

    return run


class TestTypeChecker:
    # What a script may get wrong, and what mypy says of it.
    WRONG_USES = [
        ("_libqdp.ListPort(0)", 'Module has no attribute "ListPort"'),
        ("_libqdp.ListPorts()", 'Too few arguments for "ListPorts"'),
        ("_libqdp.ListPorts(switch=0)", 'Unexpected keyword argument "switch" for "ListPorts"'),
        ('_libqdp.ListPorts("0")', 'Argument 1 to "ListPorts" has incompatible type "str"; expected "int"'),
        ("_libqdp.ListSwitches()[0]", 'Value of type "Optional[List[SwitchInfo]]" is not indexable'),
        ('(_libqdp.ListSwitches() or [])[0]["id"]', 'TypedDict "SwitchInfo" has no key "id"'),
        ('len(_libqdp.GetLBParams("a")["run_in_msec"])', 'Argument 1 to "len" has incompatible type "int"'),
        ("_libqdp.GetFlowStats(0, [1, 2], 0)", 'has incompatible type "List[int]"; expected "Tuple[int, ...]"'),
        ("_libqdp.InjectLBTraffic(0, ((0, -1, 5, 0),))", 'Argument 2 to "InjectLBTraffic" has incompatible type'),
        ('_libqdp.EnableFPO("a", {"enabled": 1})', 'TypedDict item "enabled" has type "bool"'),
        ('_libqdp.EnableFPO("a", {"enable": True})', 'Extra key "enable" for TypedDict "FPOSettings"'),
        ('_libqdp.SetLBMetric("a", "CPU")', 'Argument 2 to "SetLBMetric" has incompatible type'),
        ('_libqdp.SetLBParam("a", "cpuload", 1)', 'Argument 2 to "SetLBParam" has incompatible type'),
        ('assert _libqdp.GetLBMetric("a") == "memory"', "Non-overlapping equality check"),
        ("done = _libqdp.ClearSwitchMACTable(0)", '"ClearSwitchMACTable" does not return a value'),
    ]

    def test_typical_uses_pass(self, checked, root):
        done = checked("--strict", root / "tests" / "typings" / "typical_uses.py")
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
        done = checked("--strict", "wrong.py")
        reports = [line for line in done.stdout.splitlines() if ": error: " in line]
        errors = dict(line.removeprefix("wrong.py:").split(": error: ", 1) for line in reports)
        assert len(reports) == len(uses) and list(errors) == [str(line) for line in range(2, len(uses) + 2)], done
        for (use, expected), error in zip(self.WRONG_USES, errors.values()):
            assert expected in error, use

    def stubtest(self, checked, build, typings, tmp_path):
        """mypy's own comparison of the stub with the module, which it imports. The types are the stub's alone."""
        types = [node.name for node in THE_STUB.tree.body if isinstance(node, ast.ClassDef)]
        types += [node.targets[0].id for node in THE_STUB.tree.body if isinstance(node, ast.Assign)]
        allowed = tmp_path / "allowed"
        allowed.write_text("".join(f"_libqdp.{name}\n" for name in types))
        loading = {"LD_LIBRARY_PATH": str(build / "host"), "LD_PRELOAD": os.environ.get("LD_PRELOAD", "")}
        options = ["--allowlist", str(allowed), "_libqdp"]
        return checked(*options, path=(build, typings), module="mypy.stubtest", **loading)

    def test_stubtest_passes(self, checked, build, root, tmp_path):
        done = self.stubtest(checked, build, root / "typings", tmp_path)
        assert done.stdout + done.stderr == "Success: no issues found in 1 module\n"

    def test_stubtest_finds_a_parameter_too_many(self, checked, build, root, tmp_path):
        folder = tmp_path / "changed" / "_libqdp-stubs"
        folder.mkdir(parents=True)
        text = (root / "typings" / "_libqdp-stubs" / "__init__.pyi").read_text()
        changed = text.replace("def ListPorts(switch: int, /)", "def ListPorts(switch: int, port: int, /)")
        assert changed != text
        (folder / "__init__.pyi").write_text(changed)
        done = self.stubtest(checked, build, folder.parent, tmp_path)
        assert done.returncode == 1 and "_libqdp.ListPorts is inconsistent" in done.stdout
