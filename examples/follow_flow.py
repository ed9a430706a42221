"""Follows one flow through the SmartNIC's pipeline: where it comes from, how its packets are edited, the tunnel that
they travel in, the counters and the connection that they belong to, and where they leave.

    follow_flow.py               the first flow that the pipeline knows
    follow_flow.py 101           the flow that top_flows.py shows with "hwFlowIdx: 101"
    follow_flow.py --key source=02:10:00:02:00:1c destination=02:40:00:0a:00:c0 port=42 protocol=6 \\
        source_ip=10.2.3.199 destination_ip=10.2.17.137 source_port=35456 destination_port=443
"""

import argparse
from typing import Any, Callable, Dict, Iterable, Iterator, List, Tuple

import qdp
from command import Datapath, Parser, Row, integer, ip_address, mac_address, run
from display import say
from qdp.nic import TABLE_ROWS

# The parts of a flow's key with what reads each; what is left out is zero.
READERS = {"mac": mac_address, "address": ip_address}
KEY_PARTS: Dict[str, Callable[[str], Any]] = {
    part.name: READERS.get(part.kind) or integer(part.range[0], part.range[-1])
    for part in TABLE_ROWS["flow_key"].parameters
    if part.kind != "family"
}
FLOWS = TABLE_ROWS["flow_info"].parameters[0].range


def key_part(text: str) -> Tuple[str, Any]:
    name, equals, value = text.partition("=")
    if not equals or name not in KEY_PARTS:
        raise argparse.ArgumentTypeError(f"{text!r} is not PART=VALUE with a PART of {', '.join(KEY_PARTS)}")
    return name, KEY_PARTS[name](value)


def add_options(parser: Parser) -> None:
    named = parser.add_mutually_exclusive_group()
    named.add_argument("index", type=integer(FLOWS[0], FLOWS[-1]), nargs="?", help="of the flow")
    parts = "of the flow: " + ", ".join(KEY_PARTS)
    named.add_argument("--key", type=key_part, nargs="+", metavar="PART=VALUE", help=parts)


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each entry of a table on the flow's way, in the order of the way."""
    refused: List[qdp.QdpError] = []
    trace = datapath.ask(lambda: datapath.host.nic.trace(options.index, refused, **dict(options.key or [])))
    for step in trace or []:
        row: Row = {
            "step": step.step,
            "method": TABLE_ROWS[step.table].method,
            "arguments": list(step.arguments),
            "entry": step.entry,
        }
        yield row if step.uplink is None else dict(row, uplink=step.uplink)
    for failure in refused:
        datapath.fail(failure)


def listed(label: str, names: Iterable[str], is_set: Callable[[int, str], object]) -> str:
    """The names that are set, behind what they are."""
    found = [name for i, name in enumerate(names) if is_set(i, name)]
    return f", {label} {' '.join(found)}" if found else ""


EDITS = "vlanPop vlanPush vlanSet vlanSetPcp ipDscpSet route".split()
TCP_FLAGS = "FIN SYN RST PSH ACK URG ECE CWR".split()  # from the lowest bit on

# How an entry reads, by method; the second argument is the number that it has.
IN_WORDS: Dict[str, Callable[[Any, Any], str]] = {
    "TableFlowInfoGet": lambda e, _: f"tag {e['srcTag']}{', out of a tunnel' if e['decap'] else ''}",
    "TableUplinkMapGet": lambda e, i: f"uplink {i}, logical port {e[f'lport{i}']}",
    "TableCTStateGet": lambda e, i: f"connection {i}: source in state {e['srcState']} from sequence {e['srcSeqlo']}, "
    f"destination in state {e['dstState']} from sequence {e['dstSeqlo']}",
    "TableIPFixGet": lambda e, i: f"counters {i}: {e['pkts']:,} packets, {e['bytes']:,} bytes"
    + listed("TCP flags", TCP_FLAGS, lambda bit, _: e["tcpFlags"] >> bit & 1),
    "TableMirrorGet": lambda e, i: f"mirrored by session {i} to port {e['dstPort']}, VLAN {e['vlanID']}",
    "TableFlowRewriteGet": lambda e, _: f"{e['smac']} -> {e['dmac']}, VLAN {e['vlanVid']}, VNI {e['vni']}"
    + listed("edits", EDITS, lambda _, name: e[name]),
    "TableTunnelRewriteGet": lambda e, _: f"{e['ipsa']} -> {e['ipda']}, TTL {e['ttl']}, "
    f"{e['smac']} -> {e['dmac']}, VLAN {e['vlanID']}",
    "TableOutputGet": lambda e, i: f"port {i}, LIF {e['lifId']}, application {e['p4plusAppId']}",
}


def show(rows: Iterable[Row], options: argparse.Namespace) -> None:
    step = ""
    for row in rows:
        entry, arguments = row["entry"], row["arguments"]
        if row["method"] == "TableFlowInfoGet":
            fate = "dropped" if entry["drop"] else "forwarded"
            say(f"Flow {arguments[0]}: {entry['count']:,} packets, {fate}")
        if row["step"] != step:
            step = row["step"]
            say(f"  {step}")
        number = row["uplink"] if "uplink" in row else arguments[0]
        say(f"      {IN_WORDS[row['method']](entry, number)}")


if __name__ == "__main__":
    run(__doc__, read, show, add_options)
