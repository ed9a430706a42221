"""A shared host and clients that break the rules: they cost the others nothing."""

import random
import re
import signal
import socket
import struct
import subprocess
import sys
import time

import pytest

import qdp_host
from host.command import environment

GREETING = b"qdp-host 1"
ROLES = re.compile(r"^OPERATION\((\w+)((?:, \w+)*)\)", re.MULTILINE)
SECOND = {"count", "capacity", "size", "length"}
HIGHEST_MEMORY = 400 << 20


class Client:
    """The bytes of a client, of which a test chooses each."""

    def __init__(self, path, says_hello=True):
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.connect(str(path))
        self.socket.settimeout(30)
        if says_hello:
            self.send(b"h", struct.pack("=I", len(GREETING)) + GREETING + struct.pack("=Q", 0))
            assert self.receive()[0] == b"h"

    def send(self, kind, parts):
        self.socket.sendall(struct.pack("=Ic", 1 + len(parts), kind) + parts)

    def receive(self):
        """(kind, parts), or None when the host has ended the connection."""
        head = self._exactly(5)
        if head is None:
            return None
        length, kind = struct.unpack("=Ic", head)
        return kind, self._exactly(length - 1)

    def _exactly(self, size):
        found = b""
        while len(found) < size:
            try:
                part = self.socket.recv(size - len(found))
            except ConnectionResetError:
                part = b""
            if not part:
                return None
            found += part
        return found


@pytest.fixture(scope="module")
def operations(root):
    """(name, roles) of each operation, by its number in messages."""
    table = "".join((root / "host" / "call" / f"operations_{each}.def").read_text() for each in ("qdp", "switch_state"))
    return [(name, roles.replace(",", " ").split()) for name, roles in ROLES.findall(table)]


@pytest.fixture
def server(build, tmp_path):
    """The command `qdp-host serve`; after the test it still answers, in little memory, and ends in order."""
    path = tmp_path / "socket"
    process = subprocess.Popen(
        [sys.executable, "-m", "qdp_host", "serve", str(path)], env=environment(build), stdout=subprocess.PIPE
    )
    process.stdout.readline()
    process.path = path
    yield process
    try:
        assert process.poll() is None, "the host has ended"
        expect_answers(path)
        with open(f"/proc/{process.pid}/status") as status:
            highest = int(re.search(r"VmHWM:\s+(\d+) kB", status.read())[1]) * 1024
        assert highest < HIGHEST_MEMORY or build.name == "sanitize"
    finally:
        process.send_signal(signal.SIGTERM)
        assert process.wait(30) == 0
        process.stdout.close()


def expect_answers(path, within=10):
    """Another client is served, soon."""
    begin = time.monotonic()
    host = qdp_host.SharedHost(path)
    assert host.summary()["switches"]
    host.close()
    assert time.monotonic() - begin < within


def optional(part):
    return b"\0" if part is None else b"\1" + struct.pack("=I", len(part)) + part


def call(operations, name, *parts):
    number = [each for each, _ in operations].index(name)
    return struct.pack("=H", number) + b"".join(parts)


def output(capacity, has_size_word=True):
    return struct.pack("=BBQ", 1, has_size_word, capacity) + b"\0"


class TestGarbage:
    def test_bytes_without_a_hello(self, server):
        chance = random.Random(1)
        for size in (1, 4, 5, 100, 10_000):
            client = Client(server.path, says_hello=False)
            client.socket.sendall(chance.randbytes(size))
            client.socket.shutdown(socket.SHUT_WR)
            client.socket.settimeout(30)
            answer = client.receive()
            assert answer is None or answer[0] == b"e"

    def test_length_that_is_beyond_all_bounds(self, server):
        client = Client(server.path)
        client.socket.sendall(struct.pack("=Ic", 0xFFFFFFFF, b"c"))
        assert client.receive() is None

    @pytest.mark.parametrize("length", [0, 1, 2])
    def test_messages_without_parts(self, server, length):
        client = Client(server.path)
        client.socket.sendall(struct.pack("=I", length) + b"c\0"[:length])
        client.socket.shutdown(socket.SHUT_WR)
        answer = client.receive()
        assert answer is None or answer[0] == b"e"

    def test_unknown_kinds_and_operations(self, server):
        for kind, parts in ((b"z", b""), (b"c", struct.pack("=H", 60_000)), (b"h", b"")):
            client = Client(server.path)
            client.send(kind, parts)
            assert client.receive()[0] == b"e"
            assert client.receive() is None

    def test_controls_that_are_none(self, server):
        client = Client(server.path)
        for text in (
            b"", b"nonsense", b"[]", b"{}", b'{"call": 5, "arguments": []}', b'{"call": "serve", "arguments": [1]}',
            b'{"call": "fail", "arguments": []}', b'{"call": "fail", "arguments": ["Qdp_Get_Port_List", -1, 1, 1]}',
            b'{"call": "fail", "arguments": [null, 1, 1, 1]}',
            b'{"call": "script_output", "arguments": ["x", 0, "xyz"]}',
            b'{"call": "record", "arguments": []}', b'{"call": "restore", "arguments": ["x"]}',
            b"\xff\xfe", b"[" * 1_000_000,
        ):  # fmt: skip
            client.send(b"k", struct.pack("=I", len(text)) + text)
            kind, parts = client.receive()
            assert (kind, parts[4:12]) == (b"r", b'{"error"'), text

    def test_calls_of_any_content(self, server, operations):
        """Messages that are right in form: any numbers, handles, texts, sizes."""
        chance = random.Random(2)
        numbers = [0, 1, 2, 3, 7, 64, 255, 2**31, 2**32 - 1, 2**63, 2**64 - 1]
        texts = [None, b"", b"portset-0", b"dvs-production", b"x" * 300, b"\xff" * 9, b"com.tarnix.common.host.portset"]

        def some_bytes():
            return chance.choice(
                [None, b"", chance.randbytes(chance.choice([1, 4, 8, 12, 20, 44, 128, 4096])), b"[" * 9999]
            )

        def part(role):
            if role in ("in", "handle", "callback", "release"):
                return struct.pack("=Q", chance.choice(numbers + [chance.getrandbits(64)]))
            if role in ("text", "host_text"):
                return optional(chance.choice(texts))
            if role in ("mac", "record", "bytes", "items"):
                return optional(some_bytes())
            if role in ("library_value", "caller_value", "released_value"):
                return struct.pack("=I", chance.choice(numbers[:9]))
            if role == "context":
                return b""
            flags = chance.choice([(1, 1), (1, 0), (0, 1), (0, 0)])
            return struct.pack("=BBQ", *flags, chance.choice(numbers)) + optional(some_bytes())

        client = Client(server.path)
        answered = 0
        for _ in range(4000):
            number = chance.randrange(len(operations))
            parts = b"".join(part(role) for role in operations[number][1] if role not in SECOND)
            client.send(b"c", struct.pack("=H", number) + parts)
            answer = client.receive()
            if answer is None or answer[0] == b"e":
                client = Client(server.path)
            else:
                answered += 1
        assert answered > 1000


class TestSilence:
    def test_client_in_the_middle_of_a_message(self, server):
        client = Client(server.path)
        client.socket.sendall(struct.pack("=Ic", 1000, b"c") + b"x")
        expect_answers(server.path)
        client.socket.close()
        expect_answers(server.path)

    def test_client_that_stays_in_the_middle_of_a_message_is_left(self, server):
        client = Client(server.path)
        client.socket.sendall(struct.pack("=Ic", 1000, b"c") + b"x")
        begin = time.monotonic()
        assert client.receive() is None
        assert 3 < time.monotonic() - begin < 25

    def test_client_that_says_nothing_at_first_is_left(self, server):
        client = Client(server.path, says_hello=False)
        assert client.receive() is None

    def test_client_that_is_idle_is_kept(self, server, operations):
        client = Client(server.path)
        time.sleep(7)
        client.send(b"c", call(operations, "Qdp_Get_Flow_Timeout", output(4, False)))
        assert client.receive()[0] == b"a"

    def test_client_that_never_reads(self, server, operations):
        client = Client(server.path)
        client.socket.settimeout(1)
        message = call(operations, "Qdp_Get_Port_List", struct.pack("=Q", 0), output(65536))
        with pytest.raises((socket.timeout, BrokenPipeError, ConnectionResetError)):
            while True:
                client.send(b"c", message)
        expect_answers(server.path)
        time.sleep(6)  # longer than the host waits
        with pytest.raises((BrokenPipeError, ConnectionResetError)):
            client.send(b"c", message)


class TestDeath:
    def test_in_the_middle_of_a_call(self, server):
        host = qdp_host.SharedHost(server.path)
        host.delay("Qdp_Get_Flow_Timeout", 2, times=0)
        line = [sys.executable, "-c", "import _libqdp; _libqdp.GetFlowTimeout()"]
        clients = [subprocess.Popen(line, env=host.environment()) for _ in range(5)]
        time.sleep(1)
        for client in clients:
            client.kill()
            client.wait()
        expect_answers(server.path)

    def test_of_many_clients_at_once(self, server, operations):
        message = call(operations, "Qdp_Get_Port_List", struct.pack("=Q", 0), output(65536))
        for _ in range(20):
            clients = [Client(server.path) for _ in range(20)]
            for client in clients:
                client.send(b"c", message)
            for client in clients:
                client.socket.close()
        expect_answers(server.path)


class TestBounds:
    def test_number_of_clients(self, server):
        clients = [Client(server.path) for _ in range(512)]
        one_more = Client(server.path, says_hello=False)
        assert one_more.receive() == (b"e", struct.pack("=I", 43) + b"the host serves as many processes as it may")
        for client in clients[:10]:
            client.socket.close()
        time.sleep(1)

    def test_rooms_that_clients_claim(self, server, operations):
        """Buffers of 4 GB for answers of some bytes, in 64 processes at once."""
        clients = [Client(server.path) for _ in range(64)]
        message = call(operations, "Qdp_Get_Port_List", struct.pack("=Q", 0), output(0xFFFFFFFF))
        for _ in range(3):
            for client in clients:
                client.send(b"c", message)
            for client in clients:
                assert client.receive()[0] == b"a"

    def test_messages_that_are_never_whole(self, server):
        clients = [Client(server.path) for _ in range(64)]
        for client in clients:
            client.socket.sendall(struct.pack("=Ic", 4_000_000, b"c") + bytes(1_000_000))
        expect_answers(server.path)

    def test_values_that_are_never_given_back(self, server, operations):
        """So much is kept for a client, and no more."""
        client = Client(server.path)
        value = b"v" * 500_000
        switch = optional(self.switch_of(client, operations))
        client.send(b"c", call(operations, "DVSHCK_HostPropSet", switch, optional(b"key"), optional(value), bytes(8)))
        assert client.receive()[1][:4] == bytes(4)
        statuses = set()
        for _ in range(60):
            client.send(b"c", call(operations, "DVSHCK_HostPropGet", switch, optional(b"key"), bytes(4)))
            statuses.add(struct.unpack("=I", client.receive()[1][:4])[0])
        assert statuses == {0, 0xBAD0001}

    def test_values_of_clients_that_have_ended(self, server, operations):
        """15 MB each, of 40 clients: more than the host may take in all."""
        for number in range(40):
            client = Client(server.path)
            switch = optional(self.switch_of(client, operations))
            if number == 0:
                value = optional(b"v" * 500_000)
                client.send(b"c", call(operations, "DVSHCK_HostPropSet", switch, optional(b"key"), value, bytes(8)))
                assert client.receive()[1][:4] == bytes(4)
            for _ in range(30):
                client.send(b"c", call(operations, "DVSHCK_HostPropGet", switch, optional(b"key"), bytes(4)))
                assert client.receive()[1][:4] == bytes(4)
            client.socket.close()

    def test_properties_of_a_switch(self, server, operations):
        client = Client(server.path)
        switch = optional(self.switch_of(client, operations))
        statuses = []
        for number in range(100):
            name = optional(b"key%d" % number)
            client.send(
                b"c", call(operations, "DVSHCK_HostPropSet", switch, name, optional(bytes(100_000)), bytes(8))
            )
            statuses.append(struct.unpack("=I", client.receive()[1][:4])[0])
        assert statuses[:10] == [0] * 10
        assert set(statuses[11:]) == {0xBAD0001}

    @staticmethod
    def switch_of(client, operations):
        """The id of a switch, by way of the library's snapshot."""
        client.send(b"c", call(operations, "DVSHCK_StateGet", bytes(4)))
        parts = client.receive()[1]
        size = struct.unpack_from("=I", parts, 14)[0]
        state = parts[18 : 18 + size]
        client.send(b"c", call(operations, "DVSState_ConfigDeserialize", optional(state)))
        client.receive()
        client.send(b"c", call(operations, "DVSState_SwitchFindByAlias", optional(b"dvs-production")))
        handle = client.receive()[1][:8]
        client.send(b"c", call(operations, "DVS_SwitchId", handle))
        parts = client.receive()[1]
        size = struct.unpack_from("=I", parts, 9)[0]
        return parts[13 : 13 + size]


def test_state_of_any_content_is_no_state(server, operations):
    client = Client(server.path)
    for state in (b"", b"{}", b"[5]", b"[" * 3_000_000, b"\x81" * 3_000_000, b"\x7f" * 3_000_000):
        client.send(b"c", call(operations, "DVSState_ConfigDeserialize", optional(state)))
        assert struct.unpack("=I", client.receive()[1][:4]) == (0xBAD0001,)


def test_names_that_are_no_text_stay_in_their_switch(server, operations):
    """A property's name may be any bytes: the library's state of all switches is still whole."""
    client = Client(server.path)
    switch = optional(TestBounds.switch_of(client, operations))
    client.send(b"c", call(operations, "DVSHCK_HostPropSet", switch, optional(b"\xff\xfe"), optional(b"v"), bytes(8)))
    assert client.receive()[1][:4] == bytes(4)
    assert TestBounds.switch_of(client, operations)


def test_handles_of_another_kind_or_process(server, operations):
    client, other = Client(server.path), Client(server.path)
    TestBounds.switch_of(client, operations)
    client.send(b"c", call(operations, "DVSState_SwitchFindByAlias", optional(b"dvs-production")))
    handle = client.receive()[1][:8]
    assert handle != bytes(8)
    for caller, operation, parts in (
        (other, "DVS_SwitchId", handle),  # of a snapshot that is not its own
        (client, "DVSData_Name", handle),  # no property
        (client, "DVS_SwitchId", struct.pack("=Q", 4096)),
        (client, "DVS_ClassName", bytes(8)),
        (client, "DVSState_GlobalPropForEach", handle[:7] + b"\x7f" + struct.pack("=Q", 1)),
    ):
        caller.send(b"c", call(operations, operation, parts))
        kind, parts = caller.receive()
        if operation == "DVSState_GlobalPropForEach":
            parts = parts[-4:]  # the number of handles that it walks over
        assert (kind, parts[:9]) == (b"a", bytes(9)[: len(parts)])
