"""The statistics of the load balancer."""

import ctypes
import functools
import signal
import struct

import pytest

from adversity import Interrupted, interrupted, starved
from observe import Call, Capacity, Outcome

FINISHED = 0xFFFFFFFF
CHUNK_BYTES = 4096
ENTRY_BYTES = 4072  # of a chunk

REFUSED = (ValueError, "Invalid parameter passed.")
MALFORMED = (OSError, "Invalid format in LB stats dump")
NOT_DUMPED = (OSError, "Failed to dump LB stats. Please see hostcore.log")

FEATURE_KEYS = ["count load", "feat ID", "ctx ID", "pkts", "bytes"]
QUEUE_KEYS = ["count load", "ctx ID", "pkts", "bytes"]
CONTEXT_KEYS = ["ctx ID", "world ID", "biased CPU", "raw CPU", "pkts", "bytes", "max pb load"]


def call(*arguments):
    return Call("Qdp_DumpLBStats", [*arguments, Capacity(CHUNK_BYTES)])


def chunk(*entries, next_port=FINISHED, next_context=FINISHED, count=None):
    count = len(entries) if count is None else count
    return struct.pack("<III12s", next_port, next_context, count, b"\xaa" * 12) + b"".join(entries)


def feature(*values):
    load, feat, context, packets, size = values
    return struct.pack("<IIIIQQ", load, feat, context, 0xDEAD, packets, size)


def queue(*values):
    return struct.pack("<IIQQ", *values)


def port_entry(port=0, mask=0, priority=0, groups=((0, 0),) * 4, items=()):
    flat = [word for group in groups for word in group]
    return struct.pack("<IIQII8I", 0, port, mask, priority, 0xDEAD, *flat) + b"".join(items)


def uplink_entry(port=0, affinity=0, group=(0, 0), items=()):
    return struct.pack("<IIIIII", 1, port, affinity, 0xDEAD, *group) + b"".join(items)


def context_entry(*values):
    context, world, biased, raw, packets, size, load = values
    return struct.pack("<IIIIIQQI", 2, context, world, biased, raw, packets, size, load)


A_CONTEXT = context_entry(9, 8, 7, 6, 5, 4, 3)
A_CONTEXT_DICT = dict(zip(CONTEXT_KEYS, [9, 8, 7, 6, 5, 4, 3]))


def feature_dict(*values):
    return dict(zip(FEATURE_KEYS, values))


def port_dict(port=0, mask=0, priority=0, rx=(), rss=(), tx=(), filters=()):
    groups = {"vnicRxQ": rx, "ofldRSS": rss, "vnicTxQ": tx, "filt": filters}
    return {"port ID": port, "mem affinity mask": mask, "priority": priority, **groups}


def uplink_dict(port=0, affinity=0, queues=()):
    return {"port ID": port, "mem affinity ID": affinity, "uplinkRx": queues}


class TestDumpLBStats:
    @pytest.fixture
    def dumped(self, host, qdp):
        """The result of a dump whose only chunk has these entries."""

        def dumped(*entries, **head):
            host.script("Qdp_DumpLBStats", outputs=[chunk(*entries, **head)])
            return qdp.call("DumpLBStats", 3, 0, 1, 0, 1)

        return dumped

    # What a dump of (switch 3, port 0, context 0) calls.
    one_call = [call(3, 0, 1, 0, 1)]

    def test_entries_of_each_type_in_lists_of_their_own(self, dumped):
        items = [(10 * i + 1, 10 * i + 2, 10 * i + 3, 10 * i + 4, 10 * i + 5) for i in range(4)]
        queues = [(21, 22, 23, 24), (31, 32, 33, 34)]
        outcome = dumped(
            A_CONTEXT,
            uplink_entry(4, 1, (0, 2), [queue(*each) for each in queues]),
            port_entry(7, 1 << 63, 2, [(0, 1), (1, 1), (2, 1), (3, 1)], [feature(*item) for item in items]),
            port_entry(8, 5, 6),
            context_entry(1, 2, 3, 4, 5, 6, 7),
        )
        dicts = [feature_dict(*item) for item in items]
        assert outcome == Outcome(
            (
                [
                    port_dict(7, 1 << 63, 2, (dicts[0],), (dicts[1],), (dicts[2],), (dicts[3],)),
                    port_dict(8, 5, 6),
                ],
                [uplink_dict(4, 1, tuple(dict(zip(QUEUE_KEYS, each)) for each in queues))],
                [A_CONTEXT_DICT, dict(zip(CONTEXT_KEYS, [1, 2, 3, 4, 5, 6, 7]))],
            ),
            calls=self.one_call,
        )

    def test_all_numbers_are_unsigned_in_first_and_later_dicts(self, dumped):
        w, q = 0xFFFFFFFF, (1 << 64) - 1
        entries = (
            port_entry(w, q, w, [(0, 1), (0, 0), (0, 0), (0, 0)], [feature(w, w, w, q, q)]),
            uplink_entry(w, w, (0, 1), [queue(w, w, q, q)]),
            context_entry(w, w, w, w, q, q, w),
        )
        assert dumped(*entries, *entries).result == (
            [port_dict(w, q, w, (feature_dict(w, w, w, q, q),))] * 2,
            [uplink_dict(w, w, (dict(zip(QUEUE_KEYS, [w, w, q, q])),))] * 2,
            [dict(zip(CONTEXT_KEYS, [w, q, w, w, q, q, w]))] * 2,
        )

    @pytest.mark.parametrize(
        "world, shown",
        [(0, 0), (0x7FFFFFFF, 0x7FFFFFFF), (0x80000000, (1 << 64) - (1 << 31)), (0xFFFFFFFF, 18446744073709551615)],
    )
    def test_a_world_id_is_widened_with_its_sign(self, dumped, world, shown):
        assert dumped(context_entry(0, world, 0, 0, 0, 0, 0)).result[2][0]["world ID"] == shown

    def test_a_port_entry_is_followed_by_the_items_of_all_its_groups(self, dumped):
        items = [(i, i, i, i, i) for i in range(6)]
        outcome = dumped(
            port_entry(groups=[(0, 2), (2, 0), (2, 1), (3, 3)], items=[feature(*item) for item in items]), A_CONTEXT
        )
        dicts = tuple(feature_dict(*item) for item in items)
        assert outcome.result == ([port_dict(0, 0, 0, dicts[:2], (), dicts[2:3], dicts[3:])], [], [A_CONTEXT_DICT])

    def test_groups_may_share_items(self, dumped):
        items = [feature(i, 0, 0, 0, 0) for i in range(4)]
        (port,), _, contexts = dumped(
            port_entry(groups=[(1, 2), (0, 1), (1, 1), (0, 0)], items=items), A_CONTEXT
        ).result
        loads = [[item["count load"] for item in port[key]] for key in ("vnicRxQ", "ofldRSS", "vnicTxQ", "filt")]
        assert (loads, contexts) == ([[1, 2], [0], [1], []], [A_CONTEXT_DICT])

    def test_a_group_may_begin_behind_the_entry(self, dumped):
        """Item 1 of an entry with one item of its own is what follows the entry."""
        entry = port_entry(groups=[(1, 1), (0, 0), (0, 0), (0, 0)], items=[feature(1, 1, 1, 1, 1)])
        (port,), _, contexts = dumped(entry, A_CONTEXT).result
        load, feat, context, _, packets, size = struct.unpack("<IIIIQQ", A_CONTEXT[:32])
        assert port["vnicRxQ"] == (feature_dict(load, feat, context, packets, size),)
        assert contexts == [A_CONTEXT_DICT]

    def test_an_uplinks_group_may_begin_behind_the_entry(self, dumped):
        """The first item does not enter the entry's length."""
        _, (uplink,), contexts = dumped(uplink_entry(group=(1, 1), items=[queue(1, 1, 1, 1)]), A_CONTEXT).result
        assert uplink["uplinkRx"] == (dict(zip(QUEUE_KEYS, struct.unpack("<IIQQ", A_CONTEXT[:24]))),)
        assert contexts == [A_CONTEXT_DICT]

    # Items from the given one on that reach the chunk's end: the first that reaches beyond it, and the last one of all.
    @pytest.mark.parametrize("first", [126, 1 << 27, 0xFFFFFFFF])
    def test_items_outside_the_chunk_read_as_zero(self, dumped, first):
        filler = b"\xff" * (ENTRY_BYTES - 56 - 64)
        entry = port_entry(groups=[(first, 2), (0, 0), (0, 0), (0, 0)], items=[feature(1, 1, 1, 1, 1)] * 2)
        (port,), _, _ = dumped(entry, filler, count=1).result
        assert port["vnicRxQ"] == (feature_dict(0, 0, 0, 0, 0),) * 2

    def test_an_item_that_the_chunks_end_cuts(self, dumped):
        """Item 125 has its first 16 bytes in the chunk."""
        filler = b"\xff" * (ENTRY_BYTES - 56 - 32)
        entry = port_entry(groups=[(125, 1), (0, 0), (0, 0), (0, 0)], items=[feature(1, 1, 1, 1, 1)])
        (port,), _, _ = dumped(entry, filler, count=1).result
        assert port["vnicRxQ"] == (feature_dict(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0, 0),)

    @pytest.mark.parametrize("kind", [3, 256, 0x10000, 0x01000000, 0xFFFFFFFF])
    @pytest.mark.parametrize("before", [[], [A_CONTEXT, port_entry()]])
    def test_an_unknown_type(self, dumped, kind, before):
        entry = struct.pack("<I", kind) + bytes(100)
        assert dumped(*before, entry) == Outcome(raised=MALFORMED, calls=self.one_call)

    def test_an_unknown_type_in_a_later_chunk(self, host, qdp):
        host.script("Qdp_DumpLBStats", outputs=[chunk(A_CONTEXT, next_port=1)])
        host.script("Qdp_DumpLBStats", outputs=[chunk(struct.pack("<I", 3))])
        assert qdp.call("DumpLBStats", 3, 0, 2, 0, 0) == Outcome(
            raised=MALFORMED, calls=[call(3, 0, 2, 0, 0), call(3, 1, 2, 0, 0)]
        )

    def test_entries_up_to_the_chunks_end(self, dumped):
        # 56 + 123 * 32 + 2 * 40 bytes are all that a chunk has room for.
        items = [feature(i, 0, 0, 0, 0) for i in range(123)]
        entry = port_entry(groups=[(0, 123), (0, 0), (0, 0), (0, 0)], items=items)
        assert len(entry) + 2 * len(A_CONTEXT) == ENTRY_BYTES
        (port,), _, contexts = dumped(entry, A_CONTEXT, A_CONTEXT).result
        assert [item["count load"] for item in port["vnicRxQ"]] == list(range(123))
        assert contexts == [A_CONTEXT_DICT] * 2

    @pytest.mark.parametrize(
        "entries, count",
        [
            # The last entry lacks its last bytes, or all of them.
            ([port_entry(groups=[(0, 124), (0, 0), (0, 0), (0, 0)], items=[bytes(32)] * 124), A_CONTEXT, A_CONTEXT], 3),
            ([A_CONTEXT] * 101, 102),
            ([A_CONTEXT] * 99 + [uplink_entry()] * 4, 104),
            ([port_entry(groups=[(0, 123), (0, 0), (0, 0), (0, 0)], items=[bytes(32)] * 123), A_CONTEXT, A_CONTEXT], 4),
            ([A_CONTEXT] * 101, 0xFFFFFFFF),
            # The items alone lead beyond the chunk, also when their lengths are added up in too few bits.
            ([port_entry(groups=[(0, 126), (0, 0), (0, 0), (0, 0)])], 1),
            ([port_entry(groups=[(0, 32), (0, 32), (0, 32), (0, 32)])], 1),
            ([port_entry(groups=[(0, 1 << 31), (0, 1 << 31), (0, 0), (0, 0)])], 1),
            ([port_entry(groups=[(0, 0), (0, 0), (0, 0), (0, 1 << 27)])], 1),
            ([port_entry(groups=[(0, 0xFFFFFFFF)] * 4)], 1),
            ([uplink_entry(group=(0, 169))], 1),
            ([uplink_entry(group=(0, 0xAAAAAAAB))], 1),
            ([uplink_entry(group=(0, 0xFFFFFFFF))], 1),
        ],
    )
    def test_an_entry_that_leads_outside_the_chunk(self, dumped, entries, count):
        assert dumped(*entries, count=count) == Outcome(raised=MALFORMED, calls=self.one_call)

    def test_the_most_items_of_one_entry(self, dumped):
        (port,), _, _ = dumped(port_entry(groups=[(0, 125), (0, 0), (0, 0), (0, 0)])).result
        assert len(port["vnicRxQ"]) == 125
        _, (uplink,), _ = dumped(uplink_entry(group=(0, 168))).result
        assert len(uplink["uplinkRx"]) == 168

    def test_the_port_range_goes_on_with_its_count(self, host, qdp):
        for next_port, port in [(6, 1), (15, 2), (25, 3)]:
            host.script("Qdp_DumpLBStats", outputs=[chunk(port_entry(port), next_port=next_port)])
        assert qdp.call("DumpLBStats", 3, 0, 10, 2, 4) == Outcome(
            ([port_dict(1), port_dict(2), port_dict(3)], [], []),
            # 25 is the end of ten ports from 15 on.
            calls=[call(3, 0, 10, 2, 4), call(3, 6, 10, 2, 0), call(3, 15, 10, 2, 0)],
        )

    def test_the_context_range_goes_on_with_its_count(self, host, qdp):
        for next_context in (3, 6, 10):
            host.script("Qdp_DumpLBStats", outputs=[chunk(A_CONTEXT, next_context=next_context)])
        assert qdp.call("DumpLBStats", 3, 7, 1, 0, 4) == Outcome(
            ([], [], [A_CONTEXT_DICT] * 3),
            calls=[call(3, 7, 1, 0, 4), call(3, 7, 0, 3, 4), call(3, 7, 0, 6, 4)],
        )

    def test_both_ranges_go_on(self, host, qdp):
        host.script("Qdp_DumpLBStats", outputs=[chunk(port_entry(1), next_port=1, next_context=0)])
        host.script("Qdp_DumpLBStats", outputs=[chunk(port_entry(2), next_port=FINISHED, next_context=1)])
        host.script("Qdp_DumpLBStats", outputs=[chunk(A_CONTEXT)])
        assert qdp.call("DumpLBStats", 3, 0, 2, 0, 2) == Outcome(
            ([port_dict(1), port_dict(2)], [], [A_CONTEXT_DICT]),
            calls=[call(3, 0, 2, 0, 2), call(3, 1, 2, 0, 2), call(3, 1, 0, 1, 2)],
        )

    @pytest.mark.parametrize("next_port", [5 + 3, 5 + 4, 0xFFFFFFFE, FINISHED])
    def test_a_range_ends_with_its_last_index(self, host, qdp, next_port):
        host.script("Qdp_DumpLBStats", outputs=[chunk(next_port=next_port)])
        assert qdp.call("DumpLBStats", 3, 5, 3, 0, 0) == Outcome(([], [], []), calls=[call(3, 5, 3, 0, 0)])

    def test_a_range_may_go_back(self, host, qdp):
        """Also one that has ended: its start moves, and there is still nothing to dump of it."""
        host.script("Qdp_DumpLBStats", outputs=[chunk(next_port=3, next_context=2)])
        host.script("Qdp_DumpLBStats", outputs=[chunk()])
        assert qdp.call("DumpLBStats", 3, 10, 0, 4, 1) == Outcome(
            ([], [], []), calls=[call(3, 10, 0, 4, 1), call(3, 3, 0, 2, 1)]
        )

    def test_the_chunk_is_zeroed_once(self, host, qdp):
        """A first answer without bytes reads as zeros; a later one keeps what stood there before."""
        host.script("Qdp_DumpLBStats")
        host.script("Qdp_DumpLBStats", outputs=[chunk(port_entry(7), next_port=1)])
        host.script("Qdp_DumpLBStats", outputs=[chunk(count=1)])
        assert qdp.call("DumpLBStats", 3, 0, 2, 0, 0) == Outcome(
            ([port_dict(7), port_dict(7)], [], []),
            calls=[call(3, 0, 2, 0, 0), call(3, 0, 2, 0, 0), call(3, 1, 2, 0, 0)],
        )

    def test_nothing_to_dump_calls_nothing(self, qdp):
        assert qdp.call("DumpLBStats", 0, 0, 0, 0, 0) == Outcome(([], [], []))
        assert qdp.call("DumpLBStats", 15, 16383, 0, 63, 0) == Outcome(([], [], []))

    W = 0xFFFFFFFF

    @pytest.mark.parametrize(
        "arguments",
        [
            (15, 0, 16384, 0, 64),
            (0, 16383, 1, 63, 1),
            (0, 1, 16383, 1, 63),
            # Sums wrap at 2^32.
            (0, 1, W, 0, 0),
            (0, 16383, W, 63, W),
            (0, 0, 0, 1, W),
        ],
    )
    def test_ranges_that_are_accepted(self, host, qdp, arguments):
        host.script("Qdp_DumpLBStats", outputs=[chunk()])
        assert qdp.call("DumpLBStats", *arguments) == Outcome(([], [], []), calls=[call(*arguments)])

    @pytest.mark.parametrize(
        "arguments",
        [
            (16, 0, 1, 0, 1),
            (-1, 0, 1, 0, 1),
            (0, 16384, 0, 0, 1),
            (0, -1, 1, 0, 1),
            (0, 16383, 2, 0, 1),
            (0, 0, 16385, 0, 1),
            (0, 0, W, 0, 1),
            (0, 0, 1, 64, 0),
            (0, 0, 1, -1, 1),
            (0, 0, 1, 63, 2),
            (0, 0, 1, 0, 65),
            (0, 0, 1, 0, W),
        ],
    )
    def test_ranges_that_are_refused(self, qdp, arguments):
        assert qdp.call("DumpLBStats", *arguments) == Outcome(raised=REFUSED)

    def test_the_end_of_a_range_wraps(self, host, qdp):
        """Ports from 2 on with a count of 2^32 - 1 end at port 1, so 0 is before the end and 1 is not."""
        host.script("Qdp_DumpLBStats", outputs=[chunk(next_port=0)])
        host.script("Qdp_DumpLBStats", outputs=[chunk(next_port=FINISHED)])
        assert qdp.call("DumpLBStats", 0, 2, self.W, 0, 0) == Outcome(
            ([], [], []), calls=[call(0, 2, self.W, 0, 0), call(0, 0, self.W, 0, 0)]
        )
        host.script("Qdp_DumpLBStats", outputs=[chunk(next_port=1)])
        assert qdp.call("DumpLBStats", 0, 2, self.W, 0, 0) == Outcome(([], [], []), calls=[call(0, 2, self.W, 0, 0)])

    @pytest.mark.parametrize(
        "arguments", [(), (0, 0, 0, 0), (0, 0, 0, 0, 0, 0), ("0", 0, 0, 0, 0), (0, 0, 0, 0, None), (0, 0, 1.0, 0, 0)]
    )
    def test_a_tuple_that_does_not_parse_is_the_parsers_error(self, qdp, arguments):
        assert qdp.call("DumpLBStats", *arguments) == Outcome(raised=TypeError)

    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, status):
        host.fail("Qdp_DumpLBStats", status)
        assert qdp.call("DumpLBStats", 3, 0, 1, 0, 1) == Outcome(raised=NOT_DUMPED, calls=self.one_call)

    def test_a_library_that_refuses_a_later_chunk(self, host, qdp):
        host.script("Qdp_DumpLBStats", outputs=[chunk(port_entry(), next_port=1)])
        host.script("Qdp_DumpLBStats", status=7)
        assert qdp.call("DumpLBStats", 3, 0, 2, 0, 0) == Outcome(
            raised=NOT_DUMPED, calls=[call(3, 0, 2, 0, 0), call(3, 1, 2, 0, 0)]
        )

    def test_a_signal_ends_a_dump_that_the_library_never_finishes(self, host, qdp):
        answers = 3000
        for _ in range(answers):
            host.script("Qdp_DumpLBStats", outputs=[chunk(*[A_CONTEXT] * 101, next_port=0)])
        outcome = interrupted(qdp).call("DumpLBStats", 3, 0, 1, 0, 0)
        assert outcome.raised == (Interrupted, "")
        assert 0 < len(outcome.calls) < answers

    def test_a_signal_during_the_last_chunk_is_left_to_the_interpreter(self, host, tortured):
        """The method gives its result; the handler runs after it."""
        torture, module = tortured
        host.script("Qdp_DumpLBStats", outputs=[chunk()])

        class Signalling:
            """Sends the signal when it is taken, in C, where no handler runs; and is 0."""

            __index__ = functools.partial(getattr(ctypes.PyDLL(None), "raise"), signal.SIGUSR1)

        def handler(number, frame):
            raise Interrupted

        before = signal.signal(signal.SIGUSR1, handler)
        try:
            with pytest.raises(Interrupted):
                torture.invoke(module.DumpLBStats, (Signalling(), 0, 1, 0, 0), 0, False)
        finally:
            signal.signal(signal.SIGUSR1, before)

    def test_lack_of_memory(self, host, qdp):
        """Port 1, an uplink, and port 2, a virtual NIC, in one chunk."""
        host.freeze()
        outcomes = starved(qdp, "DumpLBStats", 0, 1, 2, 0, 1)
        assert {each.raised for each in outcomes} == {
            (MemoryError, "Failed to create tuple."),
            (SystemError, "Failed to allocate buffer.\n"),
            (SystemError, "Failed to set list item.\n"),
            (SystemError, "Failed to set dict item.\n"),
        }
        assert [each for each in outcomes if each != Outcome(raised=each.raised)] == []


class TestEmbeddedHost:
    def test_entries_of_all_ports_and_contexts_in_several_chunks(self, host, qdp):
        outcome = qdp.call("DumpLBStats", 0, 0, 16384, 0, 64)
        ports, uplinks, contexts = outcome.result
        assert [port["port ID"] for port in ports] == list(range(2, 36))
        assert [uplink["port ID"] for uplink in uplinks] == [0, 1]
        assert [context["ctx ID"] for context in contexts] == list(range(8))
        assert len(outcome.calls) > 1

    def test_queues_are_those_of_the_port_list(self, qdp):
        listed = {port["portID"]: port for port in qdp.result("ListPorts", 0)}
        ports, uplinks, _ = qdp.result("DumpLBStats", 0, 0, 16384, 0, 0)
        for port in ports:
            assert [item["ctx ID"] for item in port["vnicRxQ"]] == listed[port["port ID"]]["rxQLM"]
            assert [item["ctx ID"] for item in port["vnicTxQ"]] == listed[port["port ID"]]["txQLM"]
        for uplink in uplinks:
            assert [item["ctx ID"] for item in uplink["uplinkRx"]] == listed[uplink["port ID"]]["rxQLM"]

    def test_a_part_of_the_ranges(self, qdp):
        ports, uplinks, contexts = qdp.result("DumpLBStats", 0, 1, 2, 7, 57)
        assert [port["port ID"] for port in ports] == [2]
        assert [uplink["port ID"] for uplink in uplinks] == [1]
        assert [context["ctx ID"] for context in contexts] == [7]

    def test_ports_of_the_most_queues_fit_into_a_chunk(self, qdp):
        ports, _, _ = qdp.result("DumpLBStats", 2, 0, 16384, 0, 0)
        assert len(ports) == 33  # the ports without queues too
        assert [port for port in ports if port["port ID"] == 34][0]["vnicRxQ"] == ()

    def test_counters_grow_with_time(self, host, qdp):
        def first_queue():
            return qdp.result("DumpLBStats", 0, 5, 1, 0, 0)[0][0]["vnicRxQ"][0]

        host.freeze()
        before = first_queue()
        assert first_queue() == before
        host.advance(10)
        after = first_queue()
        # Port 5 receives 1500 + 53 * 5 packets of 64 + 23 * 5 bytes a second on its four queues.
        assert before["count load"] == after["count load"] == 441
        assert after["pkts"] - before["pkts"] == 4410
        assert after["bytes"] - before["bytes"] == 4410 * 179

    def test_injected_traffic_shows(self, host, qdp):
        host.freeze()
        before = qdp.result("DumpLBStats", 0, 0, 16384, 0, 64)
        # From uplink 0 to queue 1 of port 5; from queue 0 of port 5 to uplink 0; from port 2 to port 3.
        qdp.result("InjectLBTraffic", 0, ((0, -1, 5, 1, 50), (5, 0, 0, -1, 100), (2, 0, 3, 1, 1)))
        host.advance(2)
        after = qdp.result("DumpLBStats", 0, 0, 16384, 0, 64)

        def more(kind, position, group, item):
            was, now = (dump[kind][position][group][item] for dump in (before, after))
            return now["count load"] - was["count load"], now["pkts"] - was["pkts"] - 2 * was["count load"]

        assert more(1, 0, "uplinkRx", 0) == (5_000_000, 10_000_000)
        assert more(1, 0, "uplinkRx", 1) == (0, 0)
        assert more(0, 3, "vnicRxQ", 1) == (5_000_000, 10_000_000)
        assert more(0, 3, "vnicRxQ", 0) == (0, 0)
        assert more(0, 3, "vnicTxQ", 0) == (10_000_000, 20_000_000)
        assert more(0, 0, "vnicTxQ", 0) == (100_000, 200_000)
        assert more(0, 1, "vnicRxQ", 1) == (100_000, 200_000)
        # Queue 1 of port 5 runs on context 7, which is fully busy now.
        assert (before[2][7]["raw CPU"], after[2][7]["raw CPU"], after[2][7]["biased CPU"]) == (0, 100, 100)
        assert after[2][7]["max pb load"] > 5_000_000

    def test_no_such_switch(self, qdp):
        assert qdp.call("DumpLBStats", 3, 0, 1, 0, 1) == Outcome(raised=NOT_DUMPED, calls=[call(3, 0, 1, 0, 1)])

    @pytest.mark.parametrize("size, is_refused", [(4095, True), (4096, False)])
    def test_a_buffer_that_is_too_small(self, host, size, is_refused):
        buffer = ctypes.create_string_buffer(b"#" * 5000, 5000)
        status = host.libqdp.Qdp_DumpLBStats(0, 0, 10, 0, 10, buffer, size)
        assert (status != 0, buffer.raw == b"#" * 5000) == (is_refused, is_refused)
        assert buffer.raw[4096:] == b"#" * 904
