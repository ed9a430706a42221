#!/usr/bin/env python3
"""Makes qdp-reference.md, beside this script, from the tables and classes of qdp.

    script/qdp-host run docs/make_qdp_reference.py
"""

import inspect
import pathlib

import qdp
from qdp.nic import TABLES
from qdp.settings import SCOPES, SETTINGS
from qdp.values import described

PAGE = pathlib.Path(__file__).resolve().parent / "qdp-reference.md"

OPENING = """\
# Reference of qdp

This page is made from the package by `docs/make_qdp_reference.py`. [A guide](qdp.md) shows how these things are used,
[another page](failures.md) the exceptions. `qdp.methods` has the module's 147 methods as typed functions; what each
takes and gives is told in [the reference of the methods](reference/index.md).
"""

PATHS = {
    "host": '`host.settings["NAME"]`, path `NAME`',
    "switch": '`switch.settings["NAME"]`, path `SWITCH/NAME`',
    "port": '`port.settings["NAME"]`, path `SWITCH/port/NUMBER/NAME`',
    "uplink": '`switch.named_uplink("UPLINK").settings["NAME"]`, path `SWITCH/uplink/UPLINK/NAME`',
    "device": '`host.device("DEVICE").settings["NAME"]`, path `device/DEVICE/NAME`',
}

SETTINGS_OPENING = """
## Settings

`setting.value` reads, `setting.set(value)` checks the range before any call, writes what differs, reads it back and
returns a `Change`. `host.setting(path)` takes a path, `host.plan({path: value})` several with `.diff()` and
`.apply()`, and `with host.temporarily({path: value}):` sets them for a block. SWITCH is an alias, a name
in the datapath, or a number.
"""

CLASSES = [
    (qdp.Host, "qdp.Host()"),
    (qdp.Switch, "host.switch(...), host.switches()"),
    (qdp.Port, "switch.port(number), switch.ports()"),
    (qdp.Uplink, "switch.uplink(number), switch.uplinks()"),
    (qdp.Lcore, "switch.lcore(number), switch.lcores()"),
    (qdp.Flow, "switch.flows(...), lcore.flows(...)"),
    (qdp.Device, "host.device(name), host.devices()"),
    (qdp.Nic, "host.nic"),
    (qdp.Setting, "host.setting(path), switch.settings[name]"),
    (qdp.Plan, "host.plan({path: value})"),
    (qdp.rates.Reading, "qdp.rates.Reading(counters)"),
    (qdp.rates.PortRates, "sample.ports of host.rates(every=5)"),
]


def cell(text):
    return text.replace("|", "\\|")


def table(headings, rows):
    lines = [headings, ["---"] * len(headings), *rows]
    return "\n".join("| {} |".format(" | ".join(map(cell, line))) for line in lines) + "\n"


def range_of(row):
    if row.type == "flag":
        return "on, off" if False in row.range else "on"
    if row.type == "queue":
        return "none, " + described(row.range)
    if row.type == "lifs":
        return "at most 4, {} each".format(described(row.range))
    return described(row.range)


def remarks_of(row):
    parts = [row.help]
    if row.danger:
        parts.append("**Danger:** " + row.danger)
    if row.caveat:
        parts.append("Beware: " + row.caveat)
    return ". ".join(part[0].upper() + part[1:] for part in parts) + "."


def settings_of(scope):
    rows = [
        [
            "`{}`".format(row.name),
            range_of(row) + (" " + row.unit if row.unit else ""),
            row.stored,
            ", ".join("`{}`".format(method) for method in (row.getter, row.setter) if method),
            remarks_of(row),
        ]
        for row in SETTINGS
        if row.scope == scope
    ]
    headings = ["name", "values", "changes", "methods", "what it is"]
    article = "an" if scope == "uplink" else "a"
    return "\n### Of {} {}\n\n{}\n\n{}".format(article, scope, PATHS[scope], table(headings, rows))


def tables():
    rows = [
        [
            "`{}`".format(row.name),
            ", ".join(
                "`{}` {}".format(
                    each.name, {"mac": "MAC address", "address": "IP address"}.get(each.kind) or described(each.range)
                )
                for each in row.parameters
                if each.kind != "family"
            )
            or "none",
            "`{}`".format(row.method),
            row.help,
        ]
        for row in TABLES
    ]
    opening = (
        "\n## Hardware tables\n\n`host.nic.tables[\"flow_info\"][7]` reads an entry, "
        '`host.nic.tables["mirror"][1, 1]` one with a further parameter, and `.read(...)` takes parameters by name.\n\n'
    )
    return opening + table(["table", "parameters", "method", "what an entry is"], rows)


def members_of(each):
    """The members that a class itself defines, in their order: (how it is used, its documentation)."""
    for name, value in vars(each).items():
        if name.startswith("_") or name == "part":
            continue
        if isinstance(value, property):
            yield name, value.fget.__doc__
        elif inspect.isfunction(value):
            parameters = list(inspect.signature(value).parameters.values())[1:]
            yield "{}({})".format(name, ", ".join(map(written, parameters))), value.__doc__


def written(parameter):
    """A parameter as a caller sees it, without its type."""
    return str(parameter.replace(annotation=parameter.empty))


def first_sentence(documentation):
    text = " ".join((documentation or "").split())
    return text.partition(". ")[0].rstrip(".")


def objects():
    parts = ["\n## Objects\n"]
    for each, source in CLASSES:
        rows = [["`{}`".format(use), first_sentence(said)] for use, said in members_of(each)]
        parts.append("\n### {}\n\n{} From `{}`.\n".format(each.__name__, first_sentence(each.__doc__) + ".", source))
        if rows:
            parts.append("\n" + table(["member", "what it is"], rows))
    return "".join(parts)


def page():
    return OPENING + objects() + SETTINGS_OPENING + "".join(map(settings_of, SCOPES)) + tables()


if __name__ == "__main__":
    PAGE.write_text(page())
