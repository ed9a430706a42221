"""The typed functions and the record classes of the operator layer, which are made from the stub."""

import importlib.util
import inspect
import pathlib

import pytest

import qdp
from qdp import records

MAKER = pathlib.Path(__file__).parents[2] / "typings" / "make_qdp.py"


@pytest.fixture(scope="module")
def maker():
    spec = importlib.util.spec_from_file_location("make_qdp", MAKER)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def test_files_are_those_that_the_stub_makes(maker):
    for path, text in maker.files().items():
        assert path.read_text() == text, "run typings/make_qdp.py"


def test_one_function_per_method_with_its_documentation(maker):
    methods = maker.Stub(maker.STUB.read_text()).methods
    assert [method.name for method in methods] == list(records.RESULTS)
    for method in methods:
        function = getattr(qdp.methods, method.name)
        assert list(inspect.signature(function).parameters) == [each.arg for each in method.args.posonlyargs]
        assert function.__doc__ == method.body[0].value.value
