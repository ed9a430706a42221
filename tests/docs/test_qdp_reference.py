"""The reference of qdp, which is made from the package."""

import importlib.util
import inspect
import pathlib

import pytest

import qdp
from qdp.nic import TABLES
from qdp.settings import SETTINGS

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"


@pytest.fixture(scope="module")
def maker():
    spec = importlib.util.spec_from_file_location("make_qdp_reference", DOCS / "make_qdp_reference.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def test_page_is_what_the_package_makes_it(maker):
    assert maker.PAGE.read_text() == maker.page(), "script/qdp-host run docs/make_qdp_reference.py"


def test_page_has_every_setting_and_every_table(maker):
    lines = maker.page().splitlines()
    for row in (*SETTINGS, *TABLES):
        assert [line for line in lines if line.startswith(f"| `{row.name}` |")], row.name


def test_page_has_every_class_of_the_package(maker):
    shown = {each for each, _ in maker.CLASSES}
    exported = {getattr(qdp, name) for name in qdp.__all__ if inspect.isclass(getattr(qdp, name))}
    exceptions = {each for each in exported if issubclass(each, Exception)}
    assert exported - exceptions - shown == {qdp.Change}


def test_every_member_is_documented(maker):
    for each, _ in maker.CLASSES:
        assert each.__doc__, each
        for use, documentation in maker.members_of(each):
            assert documentation and documentation.strip(), f"{each.__name__}.{use}"
