"""Synthetic traffic for the load balancer."""

import struct
from collections import namedtuple

import pytest

from adversity import Interrupted, interrupted
from observe import Call, Capacity, Outcome, refused

REQUEST_BYTES = 4808
NO_QUEUE = 0xFFFFFFFF

NOT_PARSED = "TypeError: Invalid parameter passed.\n\n"
NOT_INJECTED = "Failed to inject traffic.\n\n"

# Positions of the scripted port list, whose port ids are others.
UPLINK, VNIC, SMALL, OTHER_UPLINK = range(4)


def port_entry(port, client, tx, rx):
    return struct.pack("<IIBB6sHHII128s", port, 0, tx, rx, b"", 0, 0, client, 0, b"\xff" * 128)


PORTS = [port_entry(10, 2, 8, 8), port_entry(11, 1, 2, 3), port_entry(12, 4, 1, 1), port_entry(13, 2, 1, 1)]


def port_list(*entries, count=None):
    return struct.pack("<III", 0xDEAD, len(entries) if count is None else count, 0xDEAD) + b"".join(entries)


def list_call(switch):
    return Call("Qdp_Get_Port_List", [switch, Capacity(2555916)])


def traffic(direction, source, source_queue, destination, destination_queue, percent):
    """An entry of a request."""
    words = [direction, 0, source, source_queue, 0, destination, destination_queue, 0]
    return struct.pack("<8I2Q", *words, percent * 100000, percent * 6400000)


def inject(switch, *entries):
    head = struct.pack("<II", switch, len(entries))
    return Call("Qdp_InjectLBTraffic", [(head + b"".join(entries)).ljust(REQUEST_BYTES, b"\0")])


def invalid(position):
    return f"Invalid traffic format at traffic {position}.\n\n"


# A valid tuple, and what it becomes.
def load(percent):
    return VNIC, 0, SMALL, 0, percent


def loaded(percent):
    return traffic(2, VNIC, 0, SMALL, 0, percent)


class TestInjectLBTraffic:
    @pytest.fixture
    def call(self, host, qdp):
        """Injects traffic into switch 3, which has the ports above."""

        def call(loads, observer=qdp):
            host.script("Qdp_Get_Port_List", outputs=[port_list(*PORTS)])
            return observer.call("InjectLBTraffic", 3, loads)

        for _ in range(5):
            host.script("Qdp_InjectLBTraffic")
        return call

    @pytest.mark.parametrize(
        "load, entry",
        [
            ((UPLINK, -1, VNIC, 2, 100), struct.pack("<8I2Q", 0, 0, 0, NO_QUEUE, 0, 1, 2, 0, 10000000, 640000000)),
            ((UPLINK, -1, SMALL, 0, 1), traffic(0, UPLINK, NO_QUEUE, SMALL, 0, 1)),
            ((VNIC, 1, UPLINK, -1, 7), traffic(1, VNIC, 1, UPLINK, NO_QUEUE, 7)),
            ((VNIC, 1, OTHER_UPLINK, -1, 7), traffic(1, VNIC, 1, OTHER_UPLINK, NO_QUEUE, 7)),
            ((VNIC, 1, SMALL, 0, 0), traffic(2, VNIC, 1, SMALL, 0, 0)),
            ((SMALL, 0, VNIC, 2, 99), traffic(2, SMALL, 0, VNIC, 2, 99)),
            ((VNIC, 0, VNIC, 0, 5), traffic(2, VNIC, 0, VNIC, 0, 5)),
            # Of 64 bits the low 32 are kept.
            ((UPLINK, NO_QUEUE, VNIC, 0, 5), traffic(0, UPLINK, NO_QUEUE, VNIC, 0, 5)),
            ((1 << 32, (7 << 32) - 1, VNIC - (1 << 32), 1 << 62, (1 << 32) + 5), traffic(0, 0, NO_QUEUE, VNIC, 0, 5)),
            ((True, False, SMALL, 0, 5), traffic(2, VNIC, 0, SMALL, 0, 5)),
        ],
    )
    def test_what_a_tuple_becomes(self, call, load, entry):
        assert call((load,)) == Outcome(None, calls=[list_call(3), inject(3, entry)])

    @pytest.mark.parametrize(
        "load",
        [
            # Load percent.
            (VNIC, 0, SMALL, 0, 101),
            (VNIC, 0, SMALL, 0, -1),
            (VNIC, 0, SMALL, 0, 0xFFFFFFFF),
            # Ports.
            (4, 0, SMALL, 0, 1),
            (VNIC, 0, 4, 0, 1),
            (-1, 0, SMALL, 0, 1),
            (VNIC, 0, -1, 0, 1),
            (11, 0, 12, 0, 1),  # port ids, not positions
            # From uplink to uplink.
            (UPLINK, -1, OTHER_UPLINK, -1, 1),
            (UPLINK, -1, UPLINK, -1, 1),
            (UPLINK, -1, OTHER_UPLINK, 0, 1),
            # Uplink to port.
            (UPLINK, 0, VNIC, 0, 1),
            (UPLINK, -1, VNIC, -1, 1),
            (UPLINK, -1, VNIC, 3, 1),
            # Port to uplink.
            (VNIC, 0, UPLINK, 0, 1),
            (VNIC, -1, UPLINK, -1, 1),
            (VNIC, 2, UPLINK, -1, 1),
            # Port to port.
            (VNIC, -1, SMALL, 0, 1),
            (VNIC, 2, SMALL, 0, 1),
            (VNIC, 0, SMALL, -1, 1),
            (VNIC, 0, SMALL, 1, 1),
            # The form.
            (VNIC, 0, SMALL, 0),
            (VNIC, 0, SMALL, 0, 1, 1),
            (),
            [VNIC, 0, SMALL, 0, 1],
            None,
            5,
            ("1", 0, SMALL, 0, 1),
            (VNIC, None, SMALL, 0, 1),
            (VNIC, 0, b"2", 0, 1),
            (VNIC, 0, SMALL, (), 1),
            (VNIC, 0, SMALL, 0, "1"),
            (VNIC, 0, SMALL, 0, 1 << 63),
            (VNIC, 0, SMALL, 0, -(1 << 63) - 1),
        ],
    )
    def test_what_is_refused_leaves_no_exception(self, call, load):
        assert call((load,)) == Outcome(None, invalid(0), calls=[list_call(3)])

    def test_a_tuple_of_another_type_is_a_tuple(self, call):
        Load = namedtuple("Load", "source source_queue destination destination_queue percent")
        Loads = type("Loads", (tuple,), {})
        assert call(Loads([Load(*load(1))])) == Outcome(None, calls=[list_call(3), inject(3, loaded(1))])

    def test_an_index_object_is_an_integer(self, call):
        class One:
            def __index__(self):
                return 1

        assert call(((One(), 0, SMALL, 0, One()),)) == Outcome(None, calls=[list_call(3), inject(3, loaded(1))])

    def test_an_item_that_raises_leaves_no_exception(self, call):
        class Odd:
            def __index__(self):
                raise KeyError("odd")

        assert call((load(1), (VNIC, Odd(), SMALL, 0, 1))) == Outcome(None, invalid(1), calls=[list_call(3)])

    @pytest.mark.parametrize("count", [1, 99, 100, 101, 200, 250])
    def test_batches_of_100(self, call, count):
        percents = [i % 101 for i in range(count)]
        batches = [percents[start : start + 100] for start in range(0, count, 100)]
        assert call(tuple(load(percent) for percent in percents)) == Outcome(
            None, calls=[list_call(3)] + [inject(3, *map(loaded, batch)) for batch in batches]
        )

    def test_an_empty_tuple_sends_nothing(self, call):
        assert call(()) == Outcome(None, calls=[list_call(3)])

    @pytest.mark.parametrize("position, batches", [(0, 0), (7, 0), (99, 0), (100, 1), (150, 1), (249, 2)])
    def test_a_wrong_element_drops_what_was_not_sent_yet(self, call, position, batches):
        loads = [load(1)] * 250
        loads[position] = loads[position][:4]
        assert call(tuple(loads)) == Outcome(
            None, invalid(position), calls=[list_call(3)] + [inject(3, *[loaded(1)] * 100)] * batches
        )

    @pytest.mark.parametrize("nth, batches", [(1, [100]), (2, [100, 100]), (3, [100, 100, 50])])
    def test_a_batch_that_is_refused(self, host, call, nth, batches):
        host.fail("Qdp_InjectLBTraffic", 9, nth=nth)
        assert call((load(1),) * 250) == Outcome(
            None, NOT_INJECTED, calls=[list_call(3)] + [inject(3, *[loaded(1)] * size) for size in batches]
        )

    def test_a_refused_port_list(self, host, qdp):
        host.fail("Qdp_Get_Port_List")
        text = "Failed to retrieve list of ports.\n"
        assert qdp.call("InjectLBTraffic", 3, (load(1),)) == Outcome(None, text, calls=[list_call(3)])

    @pytest.mark.parametrize("switch, passed", [(15, 15), (16, 16), (-1, 0xFFFFFFFF)])
    def test_the_switch_number_is_the_librarys_to_check(self, host, qdp, switch, passed):
        host.script("Qdp_Get_Port_List", outputs=[port_list(*PORTS)])
        host.script("Qdp_InjectLBTraffic")
        assert qdp.call("InjectLBTraffic", switch, (load(2),)) == Outcome(
            None, calls=[list_call(passed), inject(passed, loaded(2))]
        )

    def test_a_port_is_found_up_to_the_lists_count(self, host, qdp):
        host.script("Qdp_Get_Port_List", outputs=[port_list(*PORTS, count=2)])
        assert qdp.call("InjectLBTraffic", 3, (load(2),)) == Outcome(None, invalid(0), calls=[list_call(3)])

    def test_the_last_port_of_a_full_list(self, host, qdp):
        host.script("Qdp_Get_Port_List", outputs=[port_list(*[PORTS[VNIC]] * 16384)])
        host.script("Qdp_InjectLBTraffic")
        assert qdp.call("InjectLBTraffic", 3, ((16383, 1, 16383, 2, 1),)) == Outcome(
            None, calls=[list_call(3), inject(3, traffic(2, 16383, 1, 16383, 2, 1))]
        )

    @pytest.mark.parametrize(
        "load", [(16384, 0, 0, 0, 1), (0, 0, 16384, 0, 1), (0, 0, 20000, 0, 1), (0xFFFFFFFE, 0, 0, 0, 1)]
    )
    def test_ports_beyond_the_list_read_as_zero(self, host, qdp, load):
        """They have no queues, whatever the list's count claims."""
        host.script("Qdp_Get_Port_List", outputs=[port_list(*[PORTS[VNIC]] * 16384, count=0xFFFFFFFF)])
        assert qdp.call("InjectLBTraffic", 3, (load,)) == Outcome(None, invalid(0), calls=[list_call(3)])

    @pytest.mark.parametrize("loads", [[load(1)], None, 5, "abc", {}])
    def test_something_that_is_no_tuple(self, qdp, loads):
        assert qdp.call("InjectLBTraffic", 3, loads) == refused(NOT_PARSED)

    def test_a_signal_ends_an_injection_of_many_batches(self, host, qdp, call):
        batches = 3000
        for _ in range(batches):
            host.script("Qdp_InjectLBTraffic")
        outcome = call((load(1),) * 100 * batches, observer=interrupted(qdp))
        assert outcome.raised == (Interrupted, "")
        assert 1 < len(outcome.calls) <= batches

    def test_embedded_host_keeps_it(self, qdp):
        before = qdp.result("DumpLBStats", 0, 6, 1, 0, 0)[0][0]["vnicRxQ"][0]["count load"]
        for sent in (1, 2):
            qdp.result("InjectLBTraffic", 0, ((5, 0, 6, 0, 2),))
            load = qdp.result("DumpLBStats", 0, 6, 1, 0, 0)[0][0]["vnicRxQ"][0]["count load"]
            assert load == before + sent * 200000

    def test_embedded_host_has_no_such_switch(self, qdp):
        text = "Failed to retrieve list of ports.\n"
        assert qdp.call("InjectLBTraffic", 3, ()) == Outcome(None, text, calls=[list_call(3)])

    @pytest.mark.parametrize(
        "switch, count, direction, port",
        [(3, 1, 0, 5), (0, 0, 0, 5), (0, 101, 0, 5), (0, 1, 3, 5), (0, 1, 0, 36)],
    )
    def test_embedded_host_refuses_what_cannot_be(self, host, switch, count, direction, port):
        request = struct.pack("<II", switch, count) + traffic(direction, 0, NO_QUEUE, port, 0, 1)
        assert host.libqdp.Qdp_InjectLBTraffic(request.ljust(REQUEST_BYTES, b"\0")) != 0
