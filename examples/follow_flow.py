"""Follows one flow through the SmartNIC's pipeline: where it comes from, how its packets are edited, the tunnel that
they travel in, the counters and the connection that they belong to, and where they leave.

    script/run examples/follow_flow.py               the first flow that the pipeline knows
    script/run examples/follow_flow.py 101           the flow that a flow table shows with "hwFlowIdx: 101"
    script/run examples/follow_flow.py --key source=02:1b:21:02:00:1c destination=02:50:56:0a:00:c0 port=42 protocol=6 \\
        source_ip=10.2.3.199 destination_ip=10.2.17.137 source_port=35456 destination_port=443

Runs on a real host, and anywhere on the embedded one.
"""

import ipaddress
import sys

import _libqdp

# The pipeline gives its entries away one by one; where no flow is named, so many are looked at.
SEARCHED = 4096

# Which table of a pair is for the way in is up to the pipeline's program; on the embedded host both are the same.
WAY_IN, WAY_OUT = 0, 1


def mac(text):
    """A MAC address as the number that its text shows."""
    digits = bytes.fromhex(text.replace(":", ""))
    if len(digits) != 6:
        raise ValueError("a MAC address has six bytes")
    return int.from_bytes(digits, "big")


KEY_PARTS = {
    "vlan": int,
    "source": mac,
    "destination": mac,
    "port": int,
    "index": int,
    "vni": int,
    "protocol": int,
    "source_ip": ipaddress.ip_address,
    "destination_ip": ipaddress.ip_address,
    "source_port": int,
    "destination_port": int,
}


def halves(address):
    """The low and the high 64 bits of an address, as the signed numbers that the module takes."""
    number = int(address)
    return [half - (1 << 64) if half >> 63 else half for half in (number & (1 << 64) - 1, number >> 64)]


def index_of_key(words):
    """Looks a flow up by its key, whose parts are given as name=value; what is left out is zero."""
    key = {name: 0 for name in KEY_PARTS}
    key.update(source_ip=ipaddress.ip_address(0), destination_ip=ipaddress.ip_address(0))
    for word in words:
        name, _, text = word.partition("=")
        if name not in KEY_PARTS:
            sys.exit(f"A flow's key has no part {name!r}; it has {', '.join(KEY_PARTS)}")
        try:
            key[name] = KEY_PARTS[name](text)
        except ValueError as error:
            sys.exit(f"{word}: {error}")
    if key["source_ip"].version != key["destination_ip"].version:
        sys.exit("Both addresses of a flow are of one family")
    found = _libqdp.TableFlowKeyGet(
        *(key[name] for name in ("vlan", "source", "destination", "port", "index", "vni", "protocol")),
        1 if key["source_ip"].version == 4 else 0,
        *halves(key["source_ip"]),
        *halves(key["destination_ip"]),
        key["source_port"],
        key["destination_port"],
    )
    if found is None:
        sys.exit("The pipeline knows no such flow")
    return found["flowIndex"]


def first_index():
    for index in range(SEARCHED):
        info = _libqdp.TableFlowInfoGet(index)
        if info is None:
            sys.exit(1)  # the module has said why
        if any(info.values()):
            return index
    sys.exit(f"None of the first {SEARCHED} entries holds a flow")


def step(title, *lines):
    print(f"  {title}")
    for line in lines:
        if line:
            print(f"      {line}")


def port_line(port):
    output = _libqdp.TableOutputGet(port)
    if output is None:
        return f"port {port}"
    return f"port {port}, LIF {output['lifId']}, application {output['p4plusAppId']}"


def uplink_line(index):
    uplinks = _libqdp.TableUplinkMapGet()
    return f"uplink {index}, logical port {uplinks[f'lport{index}']}" if uplinks else f"uplink {index}"


def counters_line(index, table):
    counters = _libqdp.TableIPFixGet(index, table)
    if counters is None:
        return None
    flags = [name for bit, name in enumerate("FIN SYN RST PSH ACK URG ECE CWR".split()) if counters["tcpFlags"] >> bit & 1]
    seen = f", TCP flags {' '.join(flags)}" if flags else ""
    return f"counters {index}: {counters['pkts']:,} packets, {counters['bytes']:,} bytes{seen}"


def connection_line(index, table):
    state = _libqdp.TableCTStateGet(index, table)
    if state is None:
        return None
    return (
        f"connection {index}: source in state {state['srcState']} from sequence {state['srcSeqlo']}, "
        f"destination in state {state['dstState']} from sequence {state['dstSeqlo']}"
    )


def mirror_lines(sessions, table):
    """The sessions of one direction, a bit each."""
    for session in range(8):
        if sessions >> session & 1:
            entry = _libqdp.TableMirrorGet(session, table)
            if entry:
                yield f"mirrored by session {session} to port {entry['dstPort']}, VLAN {entry['vlanID']}"


def follow(index):
    info = _libqdp.TableFlowInfoGet(index)
    rewrite = _libqdp.TableFlowRewriteGet(index)
    if info is None or rewrite is None:
        sys.exit(1)  # the module has said why
    if not any(info.values()):
        sys.exit(f"The pipeline has no flow {index}")

    print(f"Flow {index}: {info['count']:,} packets, {'dropped' if info['drop'] else 'forwarded'}")
    step(
        "comes in",
        f"tag {info['srcTag']}" + (f", {uplink_line(info['srcUplinkIdx'])}" if info["isSrcUplink"] else ""),
        "out of a tunnel" if info["decap"] else None,
        connection_line(info["ctIngressIdx"], WAY_IN) if info["ctIngressVld"] else None,
        counters_line(info["ipfixIngressIdx"], WAY_IN) if info["ipfixIngressVld"] else None,
        *mirror_lines(info["ingressMirror"], WAY_IN),
    )
    edits = [name for name in ("vlanPop", "vlanPush", "vlanSet", "route") if rewrite[name]]
    step(
        "is rewritten",
        f"{rewrite['smac']} -> {rewrite['dmac']}, VLAN {rewrite['vlanVid']}",
        f"edits: {', '.join(edits)}" if edits else None,
    )
    if info["encap"]:
        tunnel = _libqdp.TableTunnelRewriteGet(info["encapIdx"])
        if tunnel:
            step(
                f"enters tunnel {info['encapIdx']}",
                f"{tunnel['ipsa']} -> {tunnel['ipda']}, VNI {rewrite['vni']}, VLAN {tunnel['vlanID']}, TTL {tunnel['ttl']}",
                f"{tunnel['smac']} -> {tunnel['dmac']}",
            )
    if info["drop"]:
        step("is dropped")
        return
    step(
        "leaves",
        port_line(info["dstPort"]) + (f", {uplink_line(info['dstUplinkIdx'])}" if info["isDstUplink"] else ""),
        connection_line(info["ctEgressIdx"], WAY_OUT) if info["ctEgressVld"] else None,
        counters_line(info["ipfixEgressIdx"], WAY_OUT) if info["ipfixEgressVld"] else None,
        *mirror_lines(info["egressMirror"], WAY_OUT),
    )


def main(arguments):
    if not arguments:
        follow(first_index())
    elif arguments[0] == "--key":
        follow(index_of_key(arguments[1:]))
    elif len(arguments) == 1 and arguments[0].isdecimal() and int(arguments[0]) < 1 << 22:
        follow(int(arguments[0]))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
