"""The command channel: how every command is framed, and which requests the SmartNIC refuses."""

import struct

import pytest

from observe import Capacity, NullBuffer
from smartnic.commands import OPERATION, framed, transmit

# Each method that sends one command: its arguments, its opcode, the length of its request, the capacity for its answer.
COMMANDS = [
    ("HostPFSet", (5, 1, 2, 3, 4), 0, 16, None),
    ("HostPFGet", (), 1, 4, 12),
    ("LifPortCreate", (1, 2, 3, 0, 0, 0, 0, 0), 2, 16, None),
    ("LifPortUpdate", (1, 0, 0, 0), 3, 10, None),
    ("LifPortList", (0,), 4, 6, 1024),
    ("VlanPortCreate", (100, 2, 3, 0, 4, 5, 0), 5, 20, None),
    ("VlanPortUpdate", (100, 0), 6, 8, None),
    ("VlanPortList", (0,), 7, 6, 1024),
    ("PortUpdate", (1, 2), 8, 8, None),
    ("PortDelete", (1,), 9, 6, None),
    ("PortList", (0,), 10, 6, 1024),
    ("P4RssOverrideSet", (2, 64, 1, 3), 12, 10, None),
    ("P4RssOverrideGet", (2, 64), 13, 10, 6),
    ("P4LogLevelSet", (5,), 14, 5, None),
    ("P4LogLevelGet", (), 15, 4, 1),
]
ANSWERED = [row for row in COMMANDS if row[4] is not None]


@pytest.mark.parametrize("method, arguments, opcode, length, capacity", COMMANDS)
class TestFraming:
    def sent(self, host, qdp, method, arguments):
        """The one call of a method, which the embedded host finds in order."""
        outcome = qdp.call(method, *arguments)
        assert outcome.printed == ""
        (call,) = outcome.calls
        assert call.operation == OPERATION
        return call.arguments

    def test_the_header_gives_the_length_argument_and_the_opcode(
        self, host, qdp, method, arguments, opcode, length, capacity
    ):
        request, _ = self.sent(host, qdp, method, arguments)
        assert struct.unpack_from("<HH", request) == (length, opcode)
        assert len(request) == length

    def test_an_answer_has_its_own_capacity_and_a_setting_no_buffer_at_all(
        self, host, qdp, method, arguments, opcode, length, capacity
    ):
        _, response = self.sent(host, qdp, method, arguments)
        expected = NullBuffer(0) if capacity is None else Capacity(capacity)
        assert (type(response), response) == (type(expected), expected)


def test_every_opcode_but_the_table_read_has_its_method():
    assert sorted(opcode for _, _, opcode, _, _ in COMMANDS) == [*range(11), 12, 13, 14, 15]


@pytest.mark.parametrize("method, arguments", [row[:2] for row in COMMANDS])
def test_a_method_sends_once_even_when_it_is_refused(host, qdp, method, arguments):
    host.fail(OPERATION, times=0)
    outcome = qdp.call(method, *arguments)
    assert outcome.result is None
    assert [call.operation for call in outcome.calls] == [OPERATION]
    assert outcome.printed.startswith("Failed to ")


class TestEmbeddedHost:
    """What the SmartNIC refuses, it neither answers nor does."""

    @pytest.fixture
    def requests(self, qdp, host):
        """A good request of every opcode."""
        return [qdp.call(method, *arguments).calls[0].arguments[0] for method, arguments, *_ in COMMANDS]

    def model(self, qdp):
        return [
            qdp.result(method, *arguments)
            for method, arguments in [
                ("HostPFGet", ()),
                ("LifPortList", (0,)),
                ("VlanPortList", (0,)),
                ("PortList", (0,)),
                ("P4RssOverrideGet", (2, 64)),
                ("P4LogLevelGet", ()),
            ]
        ]

    def refuses(self, host, qdp, request, capacity=1024):
        before = self.model(qdp)
        status, buffer = transmit(host, request, capacity)
        assert status != 0
        assert set(buffer) == {ord("#")}
        assert self.model(qdp) == before

    def test_accepts_the_requests_themselves(self, host, qdp):
        for method, arguments, _, _, capacity in COMMANDS:
            host.reset()
            request = qdp.call(method, *arguments).calls[0].arguments[0]
            host.reset()
            assert transmit(host, request, capacity)[0] == 0, method

    def test_payloads_of_another_length(self, host, qdp, requests):
        for request in requests:
            (opcode,) = struct.unpack_from("<H", request, 2)
            self.refuses(host, qdp, framed(opcode, request[4:] + b"\0"))
            if len(request) > 4:
                self.refuses(host, qdp, framed(opcode, request[4:-1]))

    def test_a_header_that_gives_another_length(self, host, qdp, requests):
        for request in requests:
            for length in (0, len(request) - 1, len(request) + 1, 0xFFFF):
                self.refuses(host, qdp, struct.pack("<H", length) + request[2:])

    @pytest.mark.parametrize("length", range(4))
    def test_less_than_a_header(self, host, qdp, length):
        self.refuses(host, qdp, struct.pack("<HH", length, 15)[:length])

    @pytest.mark.parametrize("opcode", [16, 17, 0x100, 0xFFFF])
    def test_unknown_opcodes(self, host, qdp, opcode):
        self.refuses(host, qdp, framed(opcode))
        self.refuses(host, qdp, framed(opcode, bytes(2)))

    @pytest.mark.parametrize("method, arguments, opcode, length, capacity", ANSWERED)
    def test_a_buffer_that_is_too_small(self, host, qdp, method, arguments, opcode, length, capacity):
        request = qdp.call(method, *arguments).calls[0].arguments[0]
        for too_small in (None, 0, capacity - 1):
            self.refuses(host, qdp, request, too_small)
        status, buffer = transmit(host, request, capacity)
        assert status == 0
        assert buffer[capacity:] == b"#" * (1100 - capacity)

    @pytest.mark.parametrize(
        "opcode, payload",
        [
            (0, struct.pack("<6H", 6, 0, 0, 0, 0, 0)),
            *[(0, struct.pack("<6H", 5, *[1024 if i == slot else 0 for i in range(5)])) for slot in range(5)],
            (2, struct.pack("<HHHHBBH", 1024, 0, 0, 0, 0, 0, 0)),
            (2, struct.pack("<HHHHBBH", 0, 1024, 0, 0, 0, 0, 0)),
            (2, struct.pack("<HHHHBBH", 0, 0, 1024, 0, 0, 0, 0)),
            (2, struct.pack("<HHHHBBH", 0, 0, 0, 0, 9, 0, 0)),
            *[(2, struct.pack("<HHHHBBH", 0, 0, 0, 0, 0, flags, 0)) for flags in (0x03, 0x10, 0x40, 0x80)],
            (2, struct.pack("<HHHHBBH", 0, 0, 0, 0, 0, 0, 4095)),
            (3, struct.pack("<H4B", 1, 3, 0, 0, 0)),
            (3, struct.pack("<H4B", 1, 0, 2, 0, 0)),
            (3, struct.pack("<H4B", 1, 0, 0, 2, 0)),
            (3, struct.pack("<H4B", 1023, 0, 0, 0, 0)),
            (5, struct.pack("<6HBBH", 4095, 0, 0, 0, 0, 0, 0, 0, 0)),
            (5, struct.pack("<6HBBH", 0, 1024, 0, 0, 0, 0, 0, 0, 0)),
            (5, struct.pack("<6HBBH", 0, 0, 1024, 0, 0, 0, 0, 0, 0)),
            (5, struct.pack("<6HBBH", 0, 0, 0, 1024, 0, 0, 0, 0, 0)),
            (5, struct.pack("<6HBBH", 0, 0, 0, 0, 0, 1024, 0, 0, 0)),
            (5, struct.pack("<6HBBH", 0, 0, 0, 0, 0, 0, 3, 0, 0)),
            (5, struct.pack("<6HBBH", 0, 0, 0, 0, 0, 0, 0, 0, 4096)),
            (6, struct.pack("<HBB", 100, 3, 0)),
            (6, struct.pack("<HBB", 99, 0, 0)),
            (8, struct.pack("<HH", 16, 4095)),
            (8, struct.pack("<HH", 1023, 1)),
            (9, struct.pack("<H", 1023)),
            (12, struct.pack("<HHBB", 3, 64, 0, 0)),
            (12, struct.pack("<HHBB", 2, 1023, 0, 0)),
            (12, struct.pack("<HHBB", 2, 64, 64, 1)),
            (12, struct.pack("<HHBB", 2, 64, 0, 2)),
            (12, struct.pack("<HHBB", 2, 64, 0, 0xFF)),
            (13, struct.pack("<HHBB", 3, 64, 0, 0)),
            (13, struct.pack("<HHBB", 2, 1023, 0, 0)),
            (14, struct.pack("<B", 6)),
        ],
    )
    def test_objects_out_of_range_or_absent(self, host, qdp, opcode, payload):
        self.refuses(host, qdp, framed(opcode, payload))
