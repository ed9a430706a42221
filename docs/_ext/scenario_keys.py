"""The keys of a scenario with type, range and default, as a page: what the schema says of them.

    .. libqdp-scenario-keys::
"""

import json
import pathlib

from docutils.parsers.rst import Directive
from docutils.statemachine import StringList
from docutils import nodes
from sphinx.util.nodes import nested_parse_with_titles

SCHEMA = pathlib.Path(__file__).resolve().parents[2] / "host" / "scenarios" / "schema.json"
TURNS = "#/$defs/takesTurns"
FROM_TURNS = ("comment", "repeat", "turns")  # keys that every entry of a list has
ABSENT = "Absent: "


class Keys:
    """The schema's keys, object by object."""

    def __init__(self, schema):
        self.schema = schema

    def sections(self):
        """Each object: its place, and the rows of its keys; those inside it behind it."""
        return list(self._sections("", self.schema))

    def _sections(self, place, described):
        properties = {
            key: value for key, value in described["properties"].items() if key not in FROM_TURNS and key[0] != "$"
        }
        required = {key for each in [described, *described.get("anyOf", [])] for key in each.get("required", [])}
        yield place, [self.row(key, value, key in required) for key, value in properties.items()]
        for key, value in properties.items():
            inner, is_list = self._object_in(value)
            if inner:
                yield from self._sections(f"{place}/{key}" + ("[]" if is_list else ""), inner)

    def _resolved(self, described):
        """What a value may be, without references, and without that it may take turns."""
        if "$ref" in described:
            own = {key: value for key, value in described.items() if key != "$ref"}
            return self._resolved({**self._definition(described["$ref"]), **own})
        choices = [each for each in described.get("anyOf", []) if each.get("$ref") != TURNS]
        if len(choices) == 1:
            return self._resolved({**choices[0], **{key: value for key, value in described.items() if key != "anyOf"}})
        return {**described, "anyOf": choices} if choices else described

    def _definition(self, reference):
        return self.schema["$defs"][reference.rpartition("/")[2]]

    def _object_in(self, described):
        """The object that a key holds, or a list of which it holds; and whether it is a list."""
        found = self._resolved(described)
        if "items" in found:
            return self._object_in(found["items"])[0], True
        return (found, False) if "properties" in found and "hex" not in found["properties"] else (None, False)

    def row(self, key, described, is_required):
        found = self._resolved(described)
        meaning, _, default = found.get("description", "").partition(ABSENT)
        if "default" in found:
            default = json.dumps(found["default"])
        default = "required" if is_required else default.strip().rstrip(".")
        return key, self.type(found), self.range(found), default, meaning.strip()

    def type(self, described):
        found = self._resolved(described)
        if "enum" in found:
            return "one of " + ", ".join(json.dumps(each) for each in found["enum"])
        if "items" in found:
            return "list of: " + self.type(found["items"])
        if "anyOf" in found:
            return ", or ".join(dict.fromkeys(self.type(each) for each in found["anyOf"]))
        if isinstance(found.get("additionalProperties"), dict):
            return "object of: " + self.type(found["additionalProperties"])
        named = found.get("type", "any")
        return " or ".join(named) if isinstance(named, list) else {"string": "text"}.get(named, named)

    def range(self, described):
        found = self._resolved(described)
        if "items" in found:
            return self.range(found["items"])
        if "anyOf" in found:
            return ", ".join(filter(None, dict.fromkeys(self.range(each) for each in found["anyOf"])))
        low, high = found.get("minimum"), found.get("maximum")
        if low is not None and high is not None:
            return f"{low} to {high}"
        return f"at least {low}" if low is not None else f"at most {high}" if high is not None else ""


def lines_of(schema):
    """The page: a heading and a table for each object."""
    lines = []
    for place, rows in Keys(schema).sections():
        title = place or "The scenario"
        lines += [title, "-" * len(title), "", ".. list-table::", "   :header-rows: 1", ""]
        for row in [("Key", "Type", "Range", "Default", "Meaning"), *rows]:
            cells = [f"``{row[0]}``" if row[0] != "Key" else "Key", *map(escaped, row[1:])]
            lines += [f"   {'*' if i == 0 else ' '} - {cell}" for i, cell in enumerate(cells)]
        lines.append("")
    return lines


def escaped(text):
    return "".join("\\" + letter if letter in "\\*_|<>`" else letter for letter in text)


class ScenarioKeysDirective(Directive):
    """The page's content, made from the schema."""

    def run(self):
        self.state.document.settings.env.note_dependency(str(SCHEMA))
        made = nodes.section()
        made.document = self.state.document
        content = StringList(lines_of(json.loads(SCHEMA.read_text())), source=str(SCHEMA))
        nested_parse_with_titles(self.state, content, made)
        return made.children


def setup(app):
    app.add_directive("libqdp-scenario-keys", ScenarioKeysDirective)
    return {"parallel_read_safe": True}
