"""How Sphinx builds the documentation; script/docs runs it."""

import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE / "_ext"), str(HERE.parent / "host" / "python")]

project = "_libqdp"
copyright = "the libqdp developers"
author = "the libqdp developers"
release = re.search(r"^project\(libqdp VERSION (\S+)", (HERE.parent / "CMakeLists.txt").read_text(), re.MULTILINE)[1]

extensions = ["myst_parser", "sphinx.ext.autodoc", "libqdp_reference", "scenario_keys", "search_entries"]
autodoc_member_order = "bysource"
autodoc_typehints = "none"  # the text says what a method takes
exclude_patterns = ["_ext"]
myst_enable_extensions = ["deflist"]
myst_heading_anchors = 3
smartquotes = False  # texts are shown as they are printed

html_theme = "furo"
html_title = f"_libqdp {release}"
html_copy_source = False
html_show_sourcelink = False
add_module_names = False
python_use_unqualified_type_names = True

# Every link is to lead somewhere. Python's own types have no page here.
nitpicky = True
nitpick_ignore = [("py:class", name) for name in ("Literal", "bool", "int", "list", "None", "str", "tuple", "...")]


def fields_of_parameters(app, what, name, thing, options, lines):
    """A docstring's lines `name: meaning` become the parameters of a method."""
    lines[:] = [re.sub(r"^([a-z_]+): ", r":param \1: ", line) for line in lines]


def setup(app):
    app.connect("autodoc-process-docstring", fields_of_parameters)
