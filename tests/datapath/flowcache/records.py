"""Flows as the library lays them out, and the texts that they are expected to have."""

import pathlib
import socket
import struct

RESPONSE_BYTES = 10264
ENTRY_ROOM = 688
GROUP_OFFSET = 128
GROUP_BYTES = 176
TAIL_BYTES = 122
OTHER = b"\xee"  # what no text shows

L4, IPV6, L3 = 1, 2, 8
OFFLOADED, HAS_INDEXES, IS_POINTER = 1, 0x1000, 0x4000
MULTICAST = 64


def golden(name):
    """{case: text} of a file: each case is a line with its name and a line with its text, up to a bar."""
    lines = (pathlib.Path(__file__).parent / "golden" / name).read_text().splitlines()
    cases = {}
    for case, text in zip(lines[0::3], lines[1::3]):
        assert text.endswith("|") and case not in cases
        cases[case] = text[:-1]
    return cases


def ipv4(text):
    return socket.inet_pton(socket.AF_INET, text)


def ipv6(text):
    return socket.inet_pton(socket.AF_INET6, text)


def placed(size, fill, *fields):
    """`size` bytes of `fill`, with (offset, bytes) fields set."""
    record = bytearray(fill * size)
    for offset, field in fields:
        record[offset : offset + len(field)] = field
    assert len(record) == size
    return bytes(record)


def key(
    flags=0,
    first_mac=bytes(6),
    second_mac=bytes(6),
    vlan=0,
    tag=0,
    ports=bytes(4),
    vni=0,
    protocol=0,
    addresses=bytes(32),
    top_bit=0,
):
    record = struct.pack(
        "<6s6sBBBB4sHBB32s8s",
        first_mac,
        second_mac,
        flags | (vlan & 15) << 4,
        vlan >> 4,
        tag & 0xFF,
        tag >> 8 | top_bit << 7,
        ports,
        vni & 0xFFFF,
        vni >> 16,
        protocol,
        addresses.ljust(32, OTHER),
        OTHER * 8,
    )
    assert len(record) == 64
    return record


def area(
    generation=0,
    software_hits=0,
    software_bytes=0,
    group_flags=0,
    inval=0,
    length=0,
    n_ag=0,
    n_dp=0,
    offload=0,
    hardware_index=0,
    software_index=0,
):
    return placed(
        GROUP_OFFSET,
        OTHER,
        (8, struct.pack("<Q", generation)),
        (24, software_hits.to_bytes(7, "little")),
        (40, struct.pack("<QIIHBB", software_bytes, group_flags, inval, length, n_ag, n_dp)),
        (92, struct.pack("<I", offload)),
        (116, struct.pack("<IQ", hardware_index, software_index)),
    )


def group(*bits, dp=0, port_index=0, vlan=0, vni=0, mirrors=(0, 0), output_vlan=0, child_port=0):
    return placed(
        GROUP_BYTES,
        OTHER,
        (16, struct.pack("<QH", sum(1 << bit for bit in bits), dp)),
        (48, struct.pack("<BxHIBB", port_index, vlan, vni, *mirrors)),
        (166, struct.pack("<HI", output_vlan, child_port)),
    )


def tail(geneve=0, vxlan=0, instances=(), count=None):
    return placed(
        TAIL_BYTES,
        OTHER,
        (0, geneve.to_bytes(3, "big")),
        (8, vxlan.to_bytes(3, "big")),
        (12, bytes([len(instances) if count is None else count])),
        *[(30 + 32 * i, struct.pack("<I", value)) for i, value in enumerate(instances)],
    )


def contexts(source=None, destination=None):
    """The first 32 bytes of an entry: for each side whether it has a context, and its id."""
    return placed(
        32,
        OTHER,
        (8, bytes([source is not None, destination is not None])),
        (16, struct.pack("<QQ", source or 0, destination or 0)),
    )


def entry(flow_key=None, actions=None, sides=None, hits=(0, 0), room=0):
    """A flow entry, followed by as many bytes as complete its room."""
    actions = area(length=128 + 176) + group() if actions is None else actions
    made = (sides or contexts()) + struct.pack("<QQ", *hits) + (flow_key or key()) + actions
    return made.ljust(room, OTHER)


def response(*entries, next_index=0, count=None, valid=None, group_offset=GROUP_OFFSET):
    body = b"".join(entries)
    header = struct.pack(
        "<QIIII",
        0xEEEEEEEEEEEEEEEE,
        next_index,
        len(entries) if count is None else count,
        24 + len(body) if valid is None else valid,
        group_offset,
    )
    return header + body
