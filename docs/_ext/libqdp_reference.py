"""The reference's directives: what the type stub says, as pages.

    .. libqdp-section:: TITLE    the methods of one section of the stub, with their types
    .. libqdp-conventions::      what the stub says of all methods
    .. libqdp-silent::           the methods that can fail without a text
    .. libqdp-texts::            the texts of failures, each with its methods
"""

import ast
import itertools
import pathlib
import re

from docutils import nodes
from docutils.parsers.rst import Directive
from docutils.statemachine import StringList
from sphinx.util import logging
from sphinx.util.nodes import nested_parse_with_titles

from stub import Stub

STUB = pathlib.Path(__file__).resolve().parents[2] / "typings" / "_libqdp-stubs" / "__init__.pyi"
MODULE = "_libqdp"
IN_MODULE = [f".. py:currentmodule:: {MODULE}", ""]
EMBEDDED_HOST = pathlib.Path(__file__).resolve().parent.parent / "reference" / "embedded-host.md"
logger = logging.getLogger(__name__)


def on_the_embedded_host():
    """What the embedded host makes of arguments: {method: [(arguments, meaning)]}, from the table of its page."""
    found = {}
    for methods, arguments, meaning in re.findall(r"^\| (`.*?) \| (.*?) \| (.*?) \|$", EMBEDDED_HOST.read_text(), re.M):
        for method in re.findall(r"`(\w+)`", methods):
            found.setdefault(method, []).append((arguments, meaning))
    return found


class Writer:
    """What the stub says, as lines of reStructuredText."""

    def __init__(self, stub):
        self.stub = stub
        self.embedded = on_the_embedded_host()
        self.methods = {method.name for method in stub.methods()}
        self.homes = {}  # the first method that a type is shown with: links to the type lead there
        for method in stub.methods():
            for each in stub.types_in(*method.parameters.values(), method.result):
                self.homes.setdefault(each.name, method.name)

    def prose(self, text):
        """Text as it is, with links in place of the names in backquotes."""
        parts = re.split(r"`([^`]*)`", text)
        parts[::2] = [re.sub(r"([\\*_|<>])", r"\\\1", part) for part in parts[::2]]
        parts[1::2] = [self._name(part) for part in parts[1::2]]
        return "".join(parts)

    def _name(self, name):
        if name in self.methods:
            return f":py:func:`{name}`"
        return f":py:class:`{name}`" if name in self.stub.types else f"``{name}``"

    def annotation(self, node):
        """An annotation, with links in place of the stub's own types."""
        text = re.sub(r"Literal\[(.*?)\]", lambda choice: choice[1].replace(", ", " | "), ast.unparse(node))
        text = text.replace("'", '"')
        parts = re.split(r"(\b[A-Z]\w+)", text)
        parts = ["".join(group) for _, group in itertools.groupby(parts, lambda part: part in self.stub.types)]
        parts = [
            self._name(part) if part in self.stub.types else f"``{part.strip()}``" for part in parts if part.strip()
        ]
        return r"\ ".join(parts)

    @staticmethod
    def table(headings, rows):
        """A table; without its last column, where that says nothing."""
        shown = len(headings) if any(row[-1] for row in rows) else len(headings) - 1
        lines = [".. list-table::", "   :header-rows: 1", ""]
        for row in [headings, *rows]:
            lines += [f"   {'*' if i == 0 else ' '} - {cell}" for i, cell in enumerate(row[:shown])]
        return [*lines, ""]

    def section(self, section):
        """A page: its methods at a glance, then one by one."""
        lines = [*IN_MODULE, self.prose(section.prose), ""]
        rows = [(self._name(method.name), self.prose(method.summary)) for method in section.methods]
        lines += self.table(("Method", "What it does"), rows)
        for method in section.methods:
            lines += self.method(method)
        return lines

    def method(self, method):
        given = [f"{name}: {ast.unparse(annotation)}" for name, annotation in method.parameters.items()]
        signature = ", ".join(given + ["/"] if given else [])
        lines = [f".. py:function:: {method.name}({signature}) -> {ast.unparse(method.result)}", ""]
        body = []
        for paragraph in method.prose:
            body += [self.prose(paragraph), ""]
        body += self.parameters(method)
        body += self.result(method)
        body += self.failures(method)
        return lines + _indented(body)

    def parameters(self, method):
        if not method.parameters:
            return []
        rows = []
        for names, meaning in method.arguments:
            listed = re.split(r"(, | \.\.\. )", names)
            listed[::2] = [f"``{name}``" for name in listed[::2]]
            kind = self.annotation(method.parameters[listed[0].strip("`")])
            rows.append(("".join(listed), kind, self.prose(meaning)))
        lines = [".. rubric:: Parameters", "", *self.table(("Name", "Type", "Meaning"), rows)]
        embedded = self.embedded.get(method.name)
        if embedded:
            lines += ["What the embedded host makes of them, and promises of no real one:", ""]
            lines += [f"- {self.prose(arguments)}: {self.prose(meaning)}" for arguments, meaning in embedded] + [""]
        for each in self.stub.types_in(*method.parameters.values()):
            lines += self.type(each, method)
        return lines

    def result(self, method):
        lines = [".. rubric:: Result", "", self.annotation(method.result), ""]
        for each in self.stub.types_in(method.result):
            lines += self.type(each, method)
        return lines

    def type(self, described, method):
        lines = [f".. py:class:: {described.name}"]
        lines += [] if self.homes[described.name] == method.name else ["   :noindex:"]
        body = []
        for paragraph in described.prose:
            body += [self.prose(" ".join(paragraph.split())), ""]
        if described.annotation is not None:
            body += [self.annotation(described.annotation), ""]
        elif described.rows and described.rows[0].annotation is None:
            rows = [(f"``{row.name}``", self.prose(row.meaning)) for row in described.rows]
            body += self.table(("Value", "Meaning"), rows)
        else:
            rows = [
                (self.key(row, described), self.annotation(row.annotation), self.prose(row.meaning))
                for row in described.rows
            ]
            body += self.table(("Key", "Type", "Meaning"), rows)
        return [*lines, "", *_indented(body)]

    @staticmethod
    def key(row, described):
        return f'``"{row.name}"``' + (" (not always there)" if row.name in described.optional else "")

    def failures(self, method):
        if not method.failures:
            return []
        lines = [".. rubric:: Failures", ""]
        for failures in method.failures:
            said = f": {self.prose(failures.said)}" if failures.said else ""
            lines += [f"**{failures.heading}**{said}", ""]
            rows = [(self.seen(row.seen), self.prose(row.when)) for row in failures.rows]
            lines += self.table(("What is seen", "When"), rows) if rows else []
        return lines

    def seen(self, texts):
        """Texts as they are printed, without their quotes; words between them as they are."""
        parts = re.split(r'"([^"]*)"', " ".join(texts))
        parts[::2] = [self.prose(part) for part in parts[::2]]
        parts[1::2] = [f"``{part}``" for part in parts[1::2]]
        return "".join(parts)

    def conventions(self):
        """What the stub says of all methods: a line of its own is a heading, one in quotes a term."""
        lines = list(IN_MODULE)
        for paragraph in self.stub.prose.split("\n\n"):
            is_heading = "\n" not in paragraph and not paragraph.endswith(".")
            lines += [f".. rubric:: {paragraph}" if is_heading else self.prose(paragraph), ""]
        return [line for text in lines for line in text.split("\n")]

    def silent(self):
        rows = []
        for method in self.stub.methods():
            for failures in method.failures:
                if "without a text" in failures.heading:
                    rows.append((self._name(method.name), failures.heading.split(",")[0], self.prose(failures.said)))
        return [*IN_MODULE, *self.table(("Method", "Result", "When"), rows)]


    def texts(self):
        """Every text of a failure, with its methods."""
        methods = {}
        for method in self.stub.methods():
            for text in texts_of(method):
                methods.setdefault(text, []).append(self._name(method.name))
        rows = [(f"``{text}``", ", ".join(found)) for text, found in sorted(methods.items())]
        return [*IN_MODULE, *self.table(("Text", "Methods"), rows)]


def texts_of(method):
    """The texts that a method's failures show, as they are printed, without line ends; each once."""
    seen = [text for failures in method.failures for row in failures.rows for text in row.seen]
    seen += [failures.said for failures in method.failures]
    found = [text.replace("\\n", " ").strip() for text in re.findall(r'"([^"]*)"', " ".join(seen))]
    return list(dict.fromkeys(filter(None, found)))


def _indented(lines):
    return ["   " + line if line else "" for line in lines]


class StubDirective(Directive):
    """A directive whose content is made from the stub."""

    def run(self):
        self.state.document.settings.env.note_dependency(str(STUB))
        made = nodes.Element()
        content = StringList(self.lines(Writer(Stub(STUB))), source=str(STUB))
        nested_parse_with_titles(self.state, content, made)
        return made.children

    def lines(self, writer):
        raise NotImplementedError


class SectionDirective(StubDirective):
    required_arguments = 1
    final_argument_whitespace = True

    def lines(self, writer):
        for section in writer.stub.sections:
            if section.title == self.arguments[0]:
                return writer.section(section)
        raise self.error(f"the stub has no section {self.arguments[0]!r}; comments in {STUB.name} name its sections")


class ConventionsDirective(StubDirective):
    def lines(self, writer):
        return writer.conventions()


class SilentDirective(StubDirective):
    def lines(self, writer):
        return writer.silent()


class TextsDirective(StubDirective):
    def lines(self, writer):
        return writer.texts()


def warn_of_missing_methods(app, environment):
    documented = environment.get_domain("py").objects
    for section in Stub(STUB).sections:
        for method in section.methods:
            if f"{MODULE}.{method.name}" not in documented:
                logger.warning("no page has the methods of %r: %s is missing", section.title, method.name)


def setup(app):
    app.add_directive("libqdp-section", SectionDirective)
    app.add_directive("libqdp-conventions", ConventionsDirective)
    app.add_directive("libqdp-silent", SilentDirective)
    app.add_directive("libqdp-texts", TextsDirective)
    app.connect("env-check-consistency", warn_of_missing_methods)
    return {"parallel_read_safe": True}
