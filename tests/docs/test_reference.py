"""The reference as it is built: every method on one page, with its parameters, its result's keys and its failures."""

import ast
import collections
import html
import inspect
import json
import pathlib
import re
import shutil
import subprocess
import typing

import bs4
import pytest
from sphinx.search import js_index

import _libqdp
from qdp_host import EmbeddedHost
from typings.stub import Stub, failures_in

STUB_PATH = pathlib.Path(__file__).parents[2] / "typings" / "_libqdp-stubs" / "__init__.pyi"
STUB = Stub(STUB_PATH)


def built(source, folder, builder="html"):
    return subprocess.run(
        ["/usr/bin/python3", "-m", "sphinx", "-q", "-W", "--keep-going", "-b", builder, str(source), str(folder)],
        capture_output=True,
        text=True,
        timeout=1200,
    )


@pytest.fixture(scope="session")
def built_docs(root, tmp_path_factory):
    folder = tmp_path_factory.mktemp("docs")
    done = built(root / "docs", folder)
    assert (done.returncode, done.stderr) == (0, "")
    return folder


@pytest.fixture(scope="session")
def pages(built_docs):
    """The built pages, by name."""
    return {
        str(path.relative_to(built_docs)): bs4.BeautifulSoup(path.read_text(), "html.parser")
        for path in built_docs.rglob("*.html")
    }


def described(pages, kind):
    """What the pages say of the methods, or of the types: heading and description; a list, for there could be more."""
    found = {}
    for page in pages.values():
        for heading in page.select(f"dl.py.{kind} > dt[id]"):
            found.setdefault(heading["id"].split(".")[-1], []).append((heading, heading.find_next_sibling("dd")))
    return found


@pytest.fixture(scope="session")
def entries(pages):
    return described(pages, "function")


@pytest.fixture(scope="session")
def types(pages):
    return described(pages, "class")


def method_names():
    return [name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value)]


def type_definitions():
    """The definitions of the stub's types, by name."""
    classes = {node.name: node for node in STUB.tree.body if isinstance(node, ast.ClassDef)}
    return classes | {node.targets[0].id: node for node in STUB.tree.body if isinstance(node, ast.Assign)}


def cells(entry, *headings):
    """The first cells of an entry's tables that have these headings."""
    found = []
    for table in entry.select("table"):
        if [cell.get_text() for cell in table.select("thead th")][: len(headings)] == list(headings):
            found += [row.find("td").get_text() for row in table.select("tbody tr")]
    return found


def keys_of(annotation):
    """The keys of all dicts in an annotation."""
    if typing.is_typeddict(annotation):
        hints = typing.get_type_hints(annotation)
        return [*hints, *(key for one in hints.values() for key in keys_of(one))]
    return [key for one in typing.get_args(annotation) for key in keys_of(one)]


def lost_words(text, entry):
    """The words of a text that an entry does not have, or not as often."""
    return collections.Counter(re.findall(r"\w+", text)) - collections.Counter(re.findall(r"\w+", entry.get_text()))


def test_every_method_stands_once(entries):
    assert len(method_names()) == 147
    assert sorted(entries) == sorted(method_names())
    assert [name for name, found in entries.items() if len(found) != 1] == []


def test_a_page_a_subsystem(root, pages):
    text = (root / "typings" / "_libqdp-stubs" / "__init__.pyi").read_text()
    titles = re.findall(r"\n\n# (.+?)(?:\. .*)?\n(?:# .*\n)*\n", text)
    assert len(titles) == 17
    shown = [
        page.h1.get_text().rstrip("#") for name, page in pages.items() if page.select("dl.py.function > dt[id]")
    ]
    assert sorted(shown) == sorted(titles)
    listed = [link.get_text() for link in pages["reference/index.html"].select(".toctree-wrapper a")]
    assert listed == [*titles, "What the embedded host makes of arguments"]


@pytest.mark.parametrize("name", method_names())
def test_method(entries, name):
    ((heading, entry),) = entries[name]
    text = STUB.documentation(name)
    assert lost_words(text, entry) == {}
    parameters = [each.arg for each in STUB.function(name).args.posonlyargs]
    shown = [each.get_text().split(":")[0] for each in heading.select("em.sig-param")]
    assert shown == [*parameters, "/"] or (shown, parameters) == ([], [])

    taken, result = STUB.annotations(name)
    keys = {key for annotation in [*taken, result] for key in keys_of(annotation)}
    assert {key.removesuffix(" (not always there)").strip('"') for key in cells(entry, "Key", "Type")} == keys

    printed = [failure.text for failure in failures_in(text)]
    seen = [" ".join(each.split()) for each in cells(entry, "What is seen")]
    told = [each.get_text() for each in entry.find_all("p")]
    for each in printed:
        shown = " ".join(each.replace("\n", "\\n").split()).removesuffix("\\n").removesuffix("\\n")
        assert any(shown in one for one in seen + told)


@pytest.mark.parametrize("name", type_definitions())
def test_type(types, name):
    node = type_definitions()[name]
    if name not in types:  # it only lends its keys
        (name,) = [other for other, each in type_definitions().items() if f"({name}" in ast.unparse(each)]
    ((_, entry),) = types[name]
    lines = STUB_PATH.read_text().splitlines()[node.lineno - 1 : node.end_lineno]
    said = [line.split("# ")[1] for line in lines if "# " in line]
    if isinstance(node, ast.ClassDef):
        said.append(ast.get_docstring(node) or "")
    assert lost_words(" ".join(said), entry) == {}


def test_methods_that_fail_without_a_text_are_listed(pages):
    silent = re.compile(r"^(None|False), without a text", re.MULTILINE)
    said = {name: silent.findall(STUB.documentation(name)) for name in method_names()}
    tables = pages["failures.html"].select("table")
    (table,) = [
        each for each in tables if [cell.get_text() for cell in each.select("th")] == ["Method", "Result", "When"]
    ]
    shown = [[cell.get_text() for cell in row.select("td")[:2]] for row in table.select("tbody tr")]
    assert shown == [[f"{name}()", result] for name, results in said.items() for result in results]
    assert "P4AppGet()" in [name for name, _ in shown]


def test_pages_load_nothing_from_elsewhere(pages):
    for page in pages.values():
        loaded = [each["src"] for each in page.select("[src]")] + [each["href"] for each in page.select("link[href]")]
        assert [each for each in loaded if "//" in each] == []


@pytest.fixture(scope="session")
def search_index(built_docs):
    return js_index.loads((built_docs / "searchindex.js").read_text())


def found_by(index, words):
    """Where the search leads to for these words among the objects: pages with their anchors. As its script does, it
    wants each word in an object's full name or its page's title."""
    found = set()
    for prefix, objects in index["objects"].items():
        for document, kind, _, anchor, name in objects:
            full_name = f"{prefix}.{name}" if prefix else name
            if all(word.lower() in html.unescape(full_name).lower() for word in words.split()):
                found.add((index["docnames"][document], anchor))
    return found


def test_search_knows_every_method(search_index):
    assert [name for name in method_names() if not found_by(search_index, f"_libqdp.{name}")] == []


@pytest.mark.parametrize(
    "words, method",
    [
        ("rxDrops", "GetPortStats"),
        ("spRxDrops", "GetPortStats"),
        ("MacLimit", "ListSwitchMACTable"),
        ("Failed to retrieve list of ports", "ListPorts"),
        ("Not supported below 2.10.0.0", "DumpPortFlow"),
    ],
)
def test_search_finds_a_method_by_a_key_or_a_text(search_index, entries, words, method):
    assert any(words in entry.get_text() for _, entry in entries[method])
    assert method in {anchor.rpartition(".")[2] for _, anchor in found_by(search_index, words)}


@pytest.mark.parametrize("name", method_names())
def test_search_finds_a_method_by_each_key(search_index, name):
    taken, result = STUB.annotations(name)
    missing = {key for key in keys_of(result) if not found_by(search_index, f"{name}.{key}")}
    assert missing == set()


def test_each_text_of_a_failure_leads_to_its_methods(pages):
    (table,) = pages["texts.html"].select("table")
    listed = {}
    for row in table.select("tbody tr"):
        text, methods = row.select("td")
        listed[" ".join(text.get_text().split())] = {link["href"].rpartition(".")[2] for link in methods.select("a")}
    assert listed["Failed to retrieve port stats."] == {"GetPortStats"}
    for name in method_names():
        for failure in failures_in(STUB.documentation(name)):
            shown = " ".join(failure.text.replace("\\n", " ").split())
            assert any(shown in text and name in methods for text, methods in listed.items()), (name, failure.text)


class TestScenarioKeys:
    """The page of all keys, against the schema as it is."""

    @pytest.fixture(scope="class")
    def rows(self, pages):
        page = pages["scenario-keys.html"]
        return {
            heading.get_text().rstrip("#"): [
                [cell.get_text() for cell in row.select("td")] for row in heading.find_next("table").select("tbody tr")
            ]
            for heading in page.select("h2")
        }

    def test_every_key_of_the_schema(self, root, rows):
        schema = json.loads((root / "host" / "scenarios" / "schema.json").read_text())
        keys = set()

        def collect(node):
            if isinstance(node, dict):
                if isinstance(node.get("properties"), dict):
                    keys.update(node["properties"])
                for value in node.values():
                    collect(value)
            elif isinstance(node, list):
                for value in node:
                    collect(value)

        collect({name: value for name, value in schema.items() if name != "$defs"})
        assert {row[0] for table in rows.values() for row in table} == keys - {"$schema", "comment", "repeat", "turns"}
        assert len(keys) > 200

    def test_a_key_has_type_range_default_and_meaning(self, rows):
        of_a_switch = {row[0]: row[1:] for row in rows["/switches[]"]}
        assert of_a_switch["alias"][:3] == ["text", "", "required"]
        assert of_a_switch["number"][:2] == ["integer", "0 to 15"]
        assert of_a_switch["mtu"][:3] == ["integer", "0 to 4294967295", "1500"]
        assert of_a_switch["lcores"][:2] == ["list of: integer", "0 to 63"]
        assert of_a_switch["lcores"][3] == "Those that forward its packets."
        metric = {row[0]: row[1] for row in rows["/switches[]/balancer"]}["metric"]
        assert metric.startswith('one of "none", "cpu", "count"')


# Arguments whose meaning no name and no range tells.
UNTOLD = re.compile(r"selector|direction|flag|text|value(_\d)?|id_\d")


def embedded_host_table(pages):
    """{(method, argument)} of the page about what the embedded host makes of arguments."""
    found = set()
    for row in pages["reference/embedded-host.html"].select("table tbody tr"):
        methods, arguments, _ = (cell.get_text() for cell in row.select("td"))
        found |= {(method, each) for method in re.findall(r"\w+", methods) for each in re.findall(r"\w+", arguments)}
    return found


def test_the_embedded_host_says_what_it_makes_of_each_argument_passed_as_given(pages):
    told = embedded_host_table(pages)
    untold = set()
    for function in STUB.functions():
        for names, meaning in re.findall(r"^([\w, ]+): (.*)$", STUB.documentation(function.name), re.M):
            untold |= {
                (function.name, each)
                for each in names.split(", ")
                if "passed as given" in meaning and UNTOLD.fullmatch(each)
            }
    assert untold - told == set() and len(untold) > 15


def test_a_method_says_what_the_embedded_host_makes_of_its_arguments(pages):
    ((_, description),) = described(pages, "function")["GetUplinkQueueStats"]
    text = " ".join(description.get_text().split())
    assert (
        "What the embedded host makes of them, and promises of no real one: direction: 0 is receive, 1 transmit" in text
    )


def test_the_embedded_hosts_page_has_every_method(pages):
    public = {name for name in vars(EmbeddedHost) if not name.startswith("_")}
    described = pages["embedded-host.html"].select("dl.method > dt[id], dl.property > dt[id], dl.attribute > dt[id]")
    shown = {each["id"].rpartition(".")[2] for each in described}
    assert public - shown == set() and len(public) > 12


STUB_IN_ROOT = "typings/_libqdp-stubs/__init__.pyi"

# A file, what stands in it, what is put there, and what the build says then.
FAULTS = {
    "a link to no method": (
        "docs/index.md",
        "\n\n",
        "\n\n{py:func}`_libqdp.ListPotrs`\n",
        "py:func reference target not found: _libqdp.ListPotrs",
    ),
    "a section without a page": (
        "docs/reference/flow-cache.md",
        ".. libqdp-section:: Flow cache",
        "",
        "no page has the methods of 'Flow cache': DumpFlowTable is missing",
    ),
    "a page for no section": (STUB_IN_ROOT, "# L3 SPAN\n", "# Spans\n", "the stub has no section 'L3 SPAN'"),
    "a type that is not there": (
        STUB_IN_ROOT,
        "-> list[SwitchInfo] | None",
        "-> list[SwichInfo] | None",
        "py:class reference target not found: SwichInfo",
    ),
}


@pytest.fixture(scope="module")
def told_of_faults(root, tmp_path_factory):
    folder = tmp_path_factory.mktemp("faults")
    for part in ("docs", "typings"):
        shutil.copytree(root / part, folder / part)
    shutil.copy(root / "CMakeLists.txt", folder)
    for part in ("host/scenarios", "host/python"):  # of which pages are made
        shutil.copytree(root / part, folder / part)
    for file, old, new, _ in FAULTS.values():
        text = (folder / file).read_text()
        assert old in text
        (folder / file).write_text(text.replace(old, new, 1))
    done = built(folder / "docs", folder / "built", "dummy")
    assert done.returncode != 0
    return done.stderr


@pytest.mark.parametrize("fault", FAULTS)
def test_a_fault_fails_the_build(told_of_faults, fault):
    assert FAULTS[fault][-1] in told_of_faults
