"""What all readers of hardware tables have in common, tested on each of them."""

import random
from collections import namedtuple

import pytest

from observe import Outcome
from smartnic.tables import layouts
from smartnic.tables.requests import FAILED, read_at, read_with

# A reader, arguments that it takes, what it then asks for, and the layout of the entry that it gets.
Reader = namedtuple("Reader", "method arguments call layout")

READERS = [
    Reader("TableLifStatsGet", (5,), read_at(0, 5, 384), layouts.LIF_STATS),
    Reader("TablePortStatsGet", (6,), read_at(1, 6, 256), layouts.PORT_STATS),
    Reader("TableP4EStatsGet", (), read_at(2, 0, 64), layouts.P4_EGRESS),
    Reader("TableP4IStatsGet", (), read_at(3, 0, 64), layouts.P4_INGRESS),
    Reader("TableCTStatsGet", (7, 0), read_at(4, 7, 64), layouts.CT_STATS),
    Reader("TableCTStatsGet", (7, 1), read_at(5, 7, 64), layouts.CT_STATS),
    Reader("TableIPFixGet", (8, 0), read_at(6, 8, 24), layouts.IPFIX),
    Reader("TableIPFixGet", (8, 1), read_at(7, 8, 24), layouts.IPFIX),
    Reader("TableInputGet", (9,), read_at(8, 9, 20), layouts.INPUT),
    Reader("TableMuxVlanGet", (10, 0), read_at(9, 10, 16), layouts.MUX_VLAN),
    Reader("TableMuxVlanGet", (10, 1), read_at(10, 10, 16), layouts.MUX_VLAN),
    Reader("TableOutputGet", (11,), read_at(11, 11, 16), layouts.OUTPUT),
    Reader("TableVlanMapGet", (12, 13), read_with(12, b"\x0c\0\x0d\0", 4), layouts.VLAN_MAP),
    Reader("TableL2SegGet", (14,), read_at(13, 14, 4), layouts.L2_SEGMENT),
    Reader("TableRegMACGet", (15, 0x10), read_with(14, b"\x0f\0\x10\0\0\0\0\0", 8), layouts.REGISTERED_MAC),
    Reader("TableMirrorGet", (6, 0), read_at(15, 6, 24), layouts.MIRROR),
    Reader("TableMirrorL3Get", (1, 2), read_at(16, 17, 64), layouts.MIRROR_L3),
    Reader(
        "TableTunnelTerminateGet", (0, 0, 1, 0, 4095, 4095, 0, 0),
        read_with(17, bytes(14) + b"\x01" + bytes(19), 2), layouts.TUNNEL_TERMINATION,
    ),
    Reader("TableTunnelSAGet", (18, 0, 0, 0), read_with(18, b"\x12" + bytes(33), 4), layouts.TUNNEL_SA),
    Reader("TableTunnelRewriteGet", (19,), read_at(19, 19, 52), layouts.TUNNEL_REWRITE),
    Reader("TableCTStateGet", (20, 0), read_at(20, 20, 24), layouts.CT_STATE),
    Reader("TableCTStateGet", (20, 1), read_at(21, 20, 24), layouts.CT_STATE),
    Reader("TableDSCPConfGet", (), read_at(22, 0, 4), layouts.DSCP),
    Reader("TableUplinkMapGet", (), read_at(23, 0, 16), layouts.UPLINK_MAP),
    Reader("TableFlowKeyGet", (24,) + (0,) * 13, read_with(24, b"\x18" + bytes(59), 4), layouts.FLOW_KEY),
    Reader("TableFlowRewriteGet", (25,), read_at(25, 25, 32), layouts.FLOW_REWRITE),
    Reader("TableFlowInfoGet", (26,), read_at(26, 26, 56), layouts.FLOW_INFO),
    Reader("FlowOpsStatsGet", (), read_at(27, 0, 296), layouts.FLOW_OPERATIONS),
]  # fmt: skip

# Those that look at no argument.
WITHOUT_ARGUMENTS = {"TableP4EStatsGet", "TableP4IStatsGet", "TableDSCPConfGet", "TableUplinkMapGet", "FlowOpsStatsGet"}


def each_of(readers):
    return pytest.mark.parametrize("reader", readers, ids=lambda reader: f"{reader.method}-{reader.arguments}")


each_reader = each_of(READERS)


def test_every_table_is_read():
    tables = [int.from_bytes(reader.call.arguments[0][4:6], "little") for reader in READERS]
    assert sorted(tables) == list(range(28))


@each_reader
def test_every_bit_of_an_entry_lands_where_it_belongs(host, qdp, reader):
    method = getattr(qdp.module, reader.method)
    for background in reader.layout.backgrounds():
        for bit in range(reader.layout.size * 8):
            entry = (int.from_bytes(background, "little") ^ 1 << bit).to_bytes(reader.layout.size, "little")
            host.script("Qdp_P4_Cmd", outputs=[entry])
            assert list(method(*reader.arguments).items()) == list(reader.layout.decoded(entry).items()), f"bit {bit}"


@each_reader
def test_an_entry_of_zeros(host, qdp, reader):
    host.script("Qdp_P4_Cmd", outputs=[bytes(reader.layout.size)])
    expected = reader.layout.decoded(bytes(reader.layout.size))
    assert qdp.call(reader.method, *reader.arguments) == Outcome(expected, calls=[reader.call])


@each_reader
def test_an_entry_of_ones(host, qdp, reader):
    entry = b"\xff" * reader.layout.size
    host.script("Qdp_P4_Cmd", outputs=[entry])
    assert qdp.call(reader.method, *reader.arguments) == Outcome(reader.layout.decoded(entry), calls=[reader.call])


@each_reader
def test_entries_of_any_content(host, qdp, reader):
    seeded = random.Random(reader.method)
    for _ in range(20):
        entry = seeded.randbytes(reader.layout.size)
        host.script("Qdp_P4_Cmd", outputs=[entry])
        assert qdp.call(reader.method, *reader.arguments) == Outcome(reader.layout.decoded(entry), calls=[reader.call])


@each_reader
def test_a_short_answer_decodes_as_zeros_behind_it(host, qdp, reader):
    for written in range(reader.layout.size):
        entry = b"\xff" * written
        host.script("Qdp_P4_Cmd", outputs=[entry])
        assert qdp.result(reader.method, *reader.arguments) == reader.layout.decoded(entry)


@each_reader
@pytest.mark.parametrize("reported", [0, 1, 100_000, 0xFFFFFFFF])
def test_the_reported_length_is_not_looked_at(host, qdp, reader, reported):
    entry = b"\xa5" * reader.layout.size
    host.script("Qdp_P4_Cmd", outputs=[entry], sizes={0: reported})
    assert qdp.result(reader.method, *reader.arguments) == reader.layout.decoded(entry)


@each_reader
@pytest.mark.parametrize("status", [1, 0xBAD0001, 0xFFFFFFFF])
def test_a_refusing_library(host, qdp, reader, status):
    host.script("Qdp_P4_Cmd", status, outputs=[b"\xff" * reader.layout.size])
    assert qdp.call(reader.method, *reader.arguments) == Outcome(None, FAILED, calls=[reader.call])


@each_of([reader for reader in READERS if reader.method in WITHOUT_ARGUMENTS])
def test_arguments_that_nobody_looks_at(host, qdp, reader):
    for arguments in [(1,), ("x", None), (2, 3, 4)]:
        entry = b"\x5a" * reader.layout.size
        host.script("Qdp_P4_Cmd", outputs=[entry])
        assert qdp.call(reader.method, *arguments) == Outcome(reader.layout.decoded(entry), calls=[reader.call])
