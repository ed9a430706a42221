"""A scenario in a few lines: what it has, and how much of it."""


def summary(scenario):
    """The lines of a summary. A scenario as the host writes it names everything; nothing is left to defaults."""
    switches = scenario.get("switches", [])
    flows = scenario.get("flows", [])
    yield "Switches" if switches else "No switches"
    if switches:
        headings = ["number", "alias", "MTU", "lcores", "ports", "uplinks", "MACs", "flows"]
        yield from table(headings, [switch_row(switch, flows) for switch in switches])

    smartnic, pipeline = scenario.get("smartnic", {}), scenario.get("pipeline", {})
    hardware = scenario.get("hardwareTables", {})
    if any(smartnic.get(key) for key in ("hostPfs", "lifs", "vlanPorts", "muxSwitches")):
        yield "SmartNIC"
        if "switch" in smartnic:
            yield "  behind the uplinks of switch {}".format(smartnic["switch"])
        yield counts(
            ("host PFs", smartnic.get("hostPfs")),
            ("LIFs", smartnic.get("lifs")),
            ("VLAN ports", smartnic.get("vlanPorts")),
            ("switches in mux mode", smartnic.get("muxSwitches")),
        )
        yield counts(
            ("offloaded flows", [flow for flow in flows if flow.get("offloaded")]),
            ("tunnels", hardware.get("tunnels")),
            ("mirror sessions", pipeline.get("mirrorSessions")),
            ("port mirrors", pipeline.get("portMirrors")),
            ("hardware tables", pipeline.get("tables")),
        )
    else:
        yield "No SmartNIC"
    yield "Elsewhere"
    yield counts(("devices", scenario.get("devices")), ("L3 SPAN records", scenario.get("l3span")))


def switch_row(switch, flows):
    """A switch that only the switch state library knows has nothing but its alias."""
    if not switch.get("datapath", True):
        return ["-", switch["alias"]] + ["-"] * 6
    lcores, ports = switch.get("lcores", []), switch.get("ports", [])
    return [
        switch["number"],
        switch["alias"],
        switch["mtu"],
        len(lcores),
        len(ports),
        sum(port.get("client") == "UPLINK" for port in ports),
        len(switch.get("macTable", {}).get("macs", [])),
        sum(flow["lcore"] in lcores for flow in flows),
    ]


def counts(*named):
    return "  " + ", ".join("{} {}".format(len(items or []), name) for name, items in named)


def table(headings, rows):
    """Lines with the texts to the left and the numbers to the right."""
    cells = [[str(cell) for cell in row] for row in [headings] + rows]
    widths = [max(map(len, column)) for column in zip(*cells)]
    for row in cells:
        aligned = [
            cell.ljust(width) if heading == "alias" else cell.rjust(width)
            for heading, cell, width in zip(headings, row, widths)
        ]
        yield "  " + "  ".join(aligned).rstrip()
