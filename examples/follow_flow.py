"""Follows one flow through the SmartNIC's pipeline: where it comes from, how its packets are edited, the tunnel that
they travel in, the counters and the connection that they belong to, and where they leave.

    follow_flow.py               the first flow that the pipeline knows
    follow_flow.py 101           the flow that top_flows.py shows with "hwFlowIdx: 101"
    follow_flow.py --key source=02:10:00:02:00:1c destination=02:40:00:0a:00:c0 port=42 protocol=6 \\
        source_ip=10.2.3.199 destination_ip=10.2.17.137 source_port=35456 destination_port=443
"""

import argparse
import ipaddress
from typing import Any, Callable, Dict, Iterable, Iterator, List, Optional, Tuple

import _libqdp
from command import Datapath, Parser, Row, integer, ip_address, mac_address, run
from display import say

# The pipeline gives its entries away one by one; where no flow is named, so many are looked at.
SEARCHED = 4096
END = 1 << 22  # of the flow indexes

# Which table of a pair is for the way in is up to the pipeline's program; on the embedded host both are the same.
WAY_IN, WAY_OUT = 0, 1

# The parts of a flow's key with what reads each; what is left out is zero.
KEY_PARTS: Dict[str, Callable[[str], Any]] = {
    "vlan": integer(0, 4095),
    "source": lambda text: int(mac_address(text).replace(":", ""), 16),
    "destination": lambda text: int(mac_address(text).replace(":", ""), 16),
    "port": integer(0, (1 << 32) - 1),
    "index": integer(0, (1 << 32) - 1),
    "vni": integer(0, (1 << 24) - 1),
    "protocol": integer(0, 255),
    "source_ip": ip_address,
    "destination_ip": ip_address,
    "source_port": integer(0, 65535),
    "destination_port": integer(0, 65535),
}


def key_part(text: str) -> Tuple[str, Any]:
    name, equals, value = text.partition("=")
    if not equals or name not in KEY_PARTS:
        raise argparse.ArgumentTypeError(f"{text!r} is not PART=VALUE with a PART of {', '.join(KEY_PARTS)}")
    return name, KEY_PARTS[name](value)


def add_options(parser: Parser) -> None:
    named = parser.add_mutually_exclusive_group()
    named.add_argument("index", type=integer(0, END - 1), nargs="?", help="of the flow")
    parts = "of the flow: " + ", ".join(KEY_PARTS)
    named.add_argument("--key", type=key_part, nargs="+", metavar="PART=VALUE", help=parts)


def halves(address: Any) -> List[int]:
    """The low and the high 64 bits of an address, as the signed numbers that the module takes."""
    number = int(address)
    return [half - (1 << 64) if half >> 63 else half for half in (number & (1 << 64) - 1, number >> 64)]


def index_of_key(datapath: Datapath, parts: List[Tuple[str, Any]]) -> Optional[int]:
    values = dict(parts)
    numbers = [values.get(name, 0) for name in KEY_PARTS]
    is_ipv4 = not any(isinstance(value, ipaddress.IPv6Address) for value in numbers)
    arguments = numbers[:7] + [int(is_ipv4)] + halves(numbers[7]) + halves(numbers[8]) + numbers[9:]
    found = datapath.ask(_libqdp.TableFlowKeyGet, *arguments)
    return found["flowIndex"] if found else None


def first_index(datapath: Datapath) -> Optional[int]:
    for index in range(SEARCHED):
        info = datapath.ask(_libqdp.TableFlowInfoGet, index)
        if info is None:
            return None
        if any(info.values()):
            return index
    datapath.refuse(f"none of the first {SEARCHED} entries holds a flow")
    return None


def read(datapath: Datapath, options: argparse.Namespace) -> Iterator[Row]:
    """A row for each entry of a table on the flow's way, in the order of the way."""

    def entry(step: str, method: Callable[..., Any], *arguments: int) -> Iterator[Row]:
        answer = datapath.ask(method, *arguments)
        if answer is not None:
            yield {"step": step, "method": method.__name__, "arguments": list(arguments), "entry": answer}

    def edge(step: str, end: str, way: str, table: int) -> Iterator[Row]:
        """What is alike on the way in and on the way out."""
        if info[f"is{end.capitalize()}Uplink"]:
            for row in entry(step, _libqdp.TableUplinkMapGet):
                yield dict(row, uplink=info[f"{end}UplinkIdx"])
        if info[f"ct{way}Vld"]:
            yield from entry(step, _libqdp.TableCTStateGet, info[f"ct{way}Idx"], table)
        if info[f"ipfix{way}Vld"]:
            yield from entry(step, _libqdp.TableIPFixGet, info[f"ipfix{way}Idx"], table)
        for session in range(8):  # a bit each
            if info[f"{way.lower()}Mirror"] >> session & 1:
                yield from entry(step, _libqdp.TableMirrorGet, session, table)

    index = options.index
    if index is None:
        index = index_of_key(datapath, options.key) if options.key else first_index(datapath)
    if index is None:
        return
    start = list(entry("comes in", _libqdp.TableFlowInfoGet, index))
    info: Row = start[0]["entry"] if start else {}
    if not any(info.values()):
        if start:
            datapath.refuse(f"the pipeline has no flow {index}")
        return
    yield from start
    yield from edge("comes in", "src", "Ingress", WAY_IN)
    yield from entry("is rewritten", _libqdp.TableFlowRewriteGet, index)
    if info["encap"]:
        yield from entry(f"enters tunnel {info['encapIdx']}", _libqdp.TableTunnelRewriteGet, info["encapIdx"])
    if not info["drop"]:
        yield from entry("leaves", _libqdp.TableOutputGet, info["dstPort"])
        yield from edge("leaves", "dst", "Egress", WAY_OUT)


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
