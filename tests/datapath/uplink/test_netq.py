"""NetQ receive filters, the queues that serve them, and their migration."""

import ctypes
import struct

import pytest

from heap import COUNTS_BYTES, bytes_in_use
from observe import Call, Capacity, Outcome

INFO_BYTES = 524288
MAC = bytes([0x02, 0x11, 0x22, 0x33, 0x44, 0x55])
INNER = bytes([0xFF, 0x0A, 0x00, 0x80, 0xC0, 0x01])


def info(*filters, switch=3, qdp_port=0x04000007, count=None, uplink=0, flow=0):
    count = len(filters) if count is None else count
    return struct.pack("<3IHBB", switch, qdp_port, 0xDEADBEEF, count, uplink, flow) + b"".join(filters)


def queue_item(port, queue, filter_id):
    return struct.pack("<IIq", port, queue, filter_id)


def netq_filter(kind, key, *queues, key_length=None, num_queues=None):
    key_length = len(key) if key_length is None else key_length
    num_queues = len(queues) if num_queues is None else num_queues
    return struct.pack("<4H", kind, 0xDEAD, key_length, num_queues) + key + b"".join(queues)


def filled(record):
    """A record that takes the whole buffer: what follows the filters is zero."""
    return record.ljust(INFO_BYTES, b"\0")


EMPTY = {"rxf": "macOnly:00:00:00:00:00:00", "qInfo": []}
ZERO_QUEUE = {"qdpPortID": 0, "qid": 0, "fid": 0}


class TestGetPortNetQInfo:
    call = Call("Qdp_Get_Port_NetQ_Info", [3, 7, Capacity(INFO_BYTES)])

    def filters(self, host, qdp, *filters, **head):
        host.script("Qdp_Get_Port_NetQ_Info", outputs=[filled(info(*filters, **head))])
        return qdp.result("GetPortNetQInfo", 3, 7)["filters"]

    def text(self, host, qdp, kind, key):
        (only,) = self.filters(host, qdp, netq_filter(kind, key))
        return only["rxf"]

    def test_keys_in_order_and_filters_with_their_queues(self, host, qdp):
        host.script(
            "Qdp_Get_Port_NetQ_Info",
            outputs=[
                info(
                    netq_filter(0, MAC, queue_item(1, 2, 3)),
                    netq_filter(
                        3, MAC + INNER + struct.pack("<I", 5000), queue_item(4, 5, 6), queue_item(7, 8, 1 << 40)
                    ),
                    netq_filter(1, MAC + b"\x64\0"),
                    uplink=1,
                    flow=2,
                )
            ],
        )
        assert qdp.call("GetPortNetQInfo", 3, 7) == Outcome(
            {
                "isUplink": 1,
                "isFlowFilter": 2,
                "swID": 3,
                "qdpPortID": 0x04000007,
                "filters": [
                    {"rxf": "macOnly:02:11:22:33:44:55", "qInfo": [{"qdpPortID": 1, "qid": 2, "fid": 3}]},
                    {
                        "rxf": "vxlan:outer:02:11:22:33:44:55:inner:ff:0a:00:80:c0:01:vni:5000",
                        "qInfo": [{"qdpPortID": 4, "qid": 5, "fid": 6}, {"qdpPortID": 7, "qid": 8, "fid": 1 << 40}],
                    },
                    {"rxf": "vlanMac:02:11:22:33:44:55:vlanID:100", "qInfo": []},
                ],
            },
            calls=[self.call],
        )

    def test_a_port_without_filters(self, host, qdp):
        host.script("Qdp_Get_Port_NetQ_Info", outputs=[info(switch=0xFFFFFFFF, qdp_port=0xFFFFFFFE, uplink=255)])
        assert qdp.call("GetPortNetQInfo", 3, 7) == Outcome(
            {"isUplink": 255, "isFlowFilter": 0, "swID": 0xFFFFFFFF, "qdpPortID": 0xFFFFFFFE, "filters": []},
            calls=[self.call],
        )

    def test_an_answer_without_bytes_is_a_port_without_filters(self, host, qdp):
        host.script("Qdp_Get_Port_NetQ_Info")
        assert qdp.call("GetPortNetQInfo", 3, 7) == Outcome(
            {"isUplink": 0, "isFlowFilter": 0, "swID": 0, "qdpPortID": 0, "filters": []}, calls=[self.call]
        )

    @pytest.mark.parametrize(
        "kind, key, text",
        [
            (0, MAC, "macOnly:02:11:22:33:44:55"),
            (0, INNER, "macOnly:ff:0a:00:80:c0:01"),
            (1, MAC + struct.pack("<H", 100), "vlanMac:02:11:22:33:44:55:vlanID:100"),
            (1, INNER + b"\xff\xff", "vlanMac:ff:0a:00:80:c0:01:vlanID:65535"),
            (
                2,
                MAC + INNER + struct.pack("<I", 0),
                "geneve:outer:02:11:22:33:44:55:inner:ff:0a:00:80:c0:01:vni:0",
            ),
            (
                2,
                INNER + MAC + b"\xff" * 4,
                "geneve:outer:ff:0a:00:80:c0:01:inner:02:11:22:33:44:55:vni:4294967295",
            ),
            (
                3,
                b"\xff" * 16,
                "vxlan:outer:ff:ff:ff:ff:ff:ff:inner:ff:ff:ff:ff:ff:ff:vni:4294967295",
            ),
            (4, MAC, "UnknownFilter"),
            (7, MAC, "UnknownFilter"),
            (0x100, MAC, "UnknownFilter"),
            (0x8000, MAC, "UnknownFilter"),
            (0xFFFF, MAC, "UnknownFilter"),
        ],
    )
    def test_filter_text(self, host, qdp, kind, key, text):
        assert self.text(host, qdp, kind, key) == text

    def test_a_filter_of_unknown_type_has_its_queues_too(self, host, qdp):
        assert self.filters(
            host, qdp, netq_filter(7, b"12345", queue_item(1, 2, 3)), netq_filter(0, MAC, queue_item(4, 5, 6))
        ) == [
            {"rxf": "UnknownFilter", "qInfo": [{"qdpPortID": 1, "qid": 2, "fid": 3}]},
            {"rxf": "macOnly:02:11:22:33:44:55", "qInfo": [{"qdpPortID": 4, "qid": 5, "fid": 6}]},
        ]

    def test_queues_at_the_extremes(self, host, qdp):
        extremes = [queue_item(0xFFFFFFFF, 0xFFFFFFFE, -1), queue_item(0, 0x80000000, -(1 << 63))]
        (only,) = self.filters(host, qdp, netq_filter(0, MAC, *extremes, queue_item(1, 2, (1 << 63) - 1)))
        assert only["qInfo"] == [
            {"qdpPortID": 0xFFFFFFFF, "qid": 0xFFFFFFFE, "fid": -1},
            {"qdpPortID": 0, "qid": 0x80000000, "fid": -(1 << 63)},
            {"qdpPortID": 1, "qid": 2, "fid": (1 << 63) - 1},
        ]

    @pytest.mark.parametrize("kind", range(4))
    def test_a_key_without_bytes_is_read_from_the_queues(self, host, qdp, kind):
        item = queue_item(0x33221102, 0x00665544, 9)
        first, second = self.filters(host, qdp, netq_filter(kind, b"", item), netq_filter(0, INNER))
        mac = "02:11:22:33:44:55"
        assert first == {
            "rxf": [
                f"macOnly:{mac}",
                f"vlanMac:{mac}:vlanID:102",
                f"geneve:outer:{mac}:inner:66:00:09:00:00:00:vni:0",
                f"vxlan:outer:{mac}:inner:66:00:09:00:00:00:vni:0",
            ][kind],
            "qInfo": [{"qdpPortID": 0x33221102, "qid": 0x00665544, "fid": 9}],
        }
        assert second["rxf"] == "macOnly:ff:0a:00:80:c0:01"

    @pytest.mark.parametrize("kind", [0, 1, 2, 3, 9])
    @pytest.mark.parametrize("padding", [1, 3, 40])
    def test_queues_start_behind_the_stated_key_length_whatever_the_type(self, host, qdp, kind, padding):
        key = (MAC + INNER + bytes(4) + b"\xee" * padding)[: 16 + padding]
        first, second = self.filters(
            host, qdp, netq_filter(kind, key, queue_item(1, 2, 3)), netq_filter(0, INNER, queue_item(4, 5, 6))
        )
        assert first["qInfo"] == [{"qdpPortID": 1, "qid": 2, "fid": 3}]
        assert second == {
            "rxf": "macOnly:ff:0a:00:80:c0:01",
            "qInfo": [{"qdpPortID": 4, "qid": 5, "fid": 6}],
        }

    def test_as_many_queues_as_the_record_holds(self, host, qdp):
        items = [queue_item(i, i + 1, -i) for i in range((INFO_BYTES - 16 - 8 - 8) // 16)]
        assert len(items) == 32766
        (only,) = self.filters(host, qdp, netq_filter(1, MAC + bytes(2), *items))
        assert only["qInfo"] == [{"qdpPortID": i, "qid": i + 1, "fid": -i} for i in range(32766)]

    def test_filters_beyond_the_record_read_as_zero(self, host, qdp):
        # 65534 heads of 8 bytes fill the record; the last filter that is counted is not in it.
        listed = self.filters(host, qdp, *[netq_filter(9, b"")] * 65534, count=65535)
        assert len(listed) == 65535
        assert listed[65533] == {"rxf": "UnknownFilter", "qInfo": []}
        assert listed[65534] == EMPTY

    def test_a_filter_that_leads_out_of_the_record(self, host, qdp):
        first, second, third = self.filters(
            host,
            qdp,
            netq_filter(0, MAC, queue_item(1, 2, 3), num_queues=65535),
            netq_filter(7, b"", queue_item(4, 5, 6)),
            count=3,
        )
        assert len(first["qInfo"]) == 65535
        assert first["qInfo"][0] == {"qdpPortID": 1, "qid": 2, "fid": 3}
        assert first["qInfo"][1] == {"qdpPortID": 7 | 0xDEAD0000, "qid": 1 << 16, "fid": 4 | 5 << 32}
        assert first["qInfo"][32767:] == [ZERO_QUEUE] * (65535 - 32767)
        assert second == third == EMPTY

    def test_lengths_that_all_lie_end_in_a_list(self, host, qdp):
        host.script("Qdp_Get_Port_NetQ_Info", outputs=[b"\xff" * INFO_BYTES])
        outcome = qdp.call("GetPortNetQInfo", 3, 7)
        first, *others = outcome.result.pop("filters")
        assert outcome == Outcome(
            {"isUplink": 255, "isFlowFilter": 255, "swID": 0xFFFFFFFF, "qdpPortID": 0xFFFFFFFF}, calls=[self.call]
        )
        inside = (INFO_BYTES - 16 - 8 - 65535) // 16  # and 9 bytes
        ones = {"qdpPortID": 0xFFFFFFFF, "qid": 0xFFFFFFFF, "fid": -1}
        cut = {"qdpPortID": 0xFFFFFFFF, "qid": 0xFFFFFFFF, "fid": 0xFF}
        assert first == {
            "rxf": "UnknownFilter",
            "qInfo": [ones] * inside + [cut] + [ZERO_QUEUE] * (65535 - inside - 1),
        }
        assert others == [EMPTY] * 65534

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_Port_NetQ_Info", outputs=[info()])
        (call,) = qdp.call("GetPortNetQInfo", switch, port).calls
        assert call.arguments[:2] == [switch, port]

    def test_embedded_host_has_filters_of_every_type(self, qdp):
        ports = [qdp.result("GetPortNetQInfo", 0, port) for port in range(2, 6)]
        assert [port["filters"][0]["rxf"] for port in ports] == [
            "geneve:outer:02:10:00:00:00:00:inner:02:10:00:00:00:02:vni:5002",
            "vxlan:outer:02:10:00:00:00:00:inner:02:10:00:00:00:03:vni:5003",
            "macOnly:02:10:00:00:00:04",
            "vlanMac:02:10:00:00:00:05:vlanID:105",
        ]
        assert [port["isFlowFilter"] for port in ports] == [1, 1, 0, 0]
        assert {port["isUplink"] for port in ports} == {0}

    def test_embedded_host_uplinks_list_what_steers_to_them(self, qdp):
        vnics = [qdp.result("GetPortNetQInfo", 0, port) for port in range(2, 32)]
        assert qdp.result("GetPortNetQInfo", 0, 33)["filters"] == []  # of a port of the kernel
        for port in range(2):
            uplink = qdp.result("GetPortNetQInfo", 0, port)
            assert (uplink["isUplink"], uplink["swID"], uplink["qdpPortID"]) == (1, 0, 0x04000000 + port)
            assert uplink["filters"] == [
                {"rxf": each["rxf"], "qInfo": own}
                for vnic in vnics
                for each in vnic["filters"]
                if (own := [queue for queue in each["qInfo"] if queue["qdpPortID"] == 0x04000000 + port])
            ]

    def test_embedded_host_has_no_such_port(self, qdp):
        assert qdp.call("GetPortNetQInfo", 0, 36).printed == "Failed to get uplink stats.\n"


class TestPortNetQInfo:
    """The plain function, on buffers of the caller that it takes over."""

    @pytest.fixture
    def convert(self, exported):
        libc = ctypes.CDLL(None)
        libc.malloc.restype = ctypes.c_void_p
        libc.malloc.argtypes = [ctypes.c_size_t]
        entry = exported.PyQDP_PortNetQInfo
        entry.restype = ctypes.py_object
        entry.argtypes = [ctypes.c_void_p, ctypes.c_uint32]

        def call(record, size=None):
            buffer = libc.malloc(max(len(record), size or 0))
            ctypes.memmove(buffer, record, len(record))
            return entry(buffer, len(record) if size is None else size)

        return call

    def test_a_record(self, convert):
        assert convert(info(netq_filter(1, INNER + b"\x02\x01", queue_item(1, 2, -3)), uplink=1)) == {
            "isUplink": 1,
            "isFlowFilter": 0,
            "swID": 3,
            "qdpPortID": 0x04000007,
            "filters": [
                {"rxf": "vlanMac:ff:0a:00:80:c0:01:vlanID:258", "qInfo": [{"qdpPortID": 1, "qid": 2, "fid": -3}]}
            ],
        }

    # From the size on, every byte reads as zero, though the memory behind it goes on.
    @pytest.mark.parametrize(
        "size, filters",
        [
            (16, [EMPTY]),
            (17, [{"rxf": "vlanMac:00:00:00:00:00:00:vlanID:0", "qInfo": []}]),
            (22, [{"rxf": "vlanMac:00:00:00:00:00:00:vlanID:0", "qInfo": []}]),
            (23, [{"rxf": "vlanMac:00:00:00:00:00:00:vlanID:0", "qInfo": [ZERO_QUEUE]}]),
            (27, [{"rxf": "vlanMac:ff:0a:00:00:00:00:vlanID:0", "qInfo": [ZERO_QUEUE]}]),
            (31, [{"rxf": "vlanMac:ff:0a:00:80:c0:01:vlanID:2", "qInfo": [ZERO_QUEUE]}]),
            (32, [{"rxf": "vlanMac:ff:0a:00:80:c0:01:vlanID:258", "qInfo": [ZERO_QUEUE]}]),
            (
                41,
                [
                    {
                        "rxf": "vlanMac:ff:0a:00:80:c0:01:vlanID:258",
                        "qInfo": [{"qdpPortID": 0x44332211, "qid": 0x88776655, "fid": 0xFD}],
                    }
                ],
            ),
        ],
    )
    def test_reads_no_further_than_the_size(self, convert, size, filters):
        record = info(netq_filter(1, INNER + b"\x02\x01", queue_item(0x44332211, 0x88776655, -3)))
        assert len(record) == 48
        assert convert(record, size)["filters"] == filters
        assert convert(record[:size])["filters"] == filters

    @pytest.mark.parametrize("kept", range(17))
    @pytest.mark.parametrize("kind", range(5))
    def test_a_key_that_the_size_cuts(self, convert, kind, kept):
        """What lies behind the size reads as zero, though it is there."""
        key = MAC + INNER + b"\x04\x03\x02\x01"
        seen = key[:kept].ljust(16, b"\0")
        first, second = (seen[at : at + 6].hex(":") for at in (0, 6))
        vlan, vni = struct.unpack_from("<H", seen, 6)[0], struct.unpack_from("<I", seen, 12)[0]
        text = [
            f"macOnly:{first}",
            f"vlanMac:{first}:vlanID:{vlan}",
            f"geneve:outer:{first}:inner:{second}:vni:{vni}",
            f"vxlan:outer:{first}:inner:{second}:vni:{vni}",
            "UnknownFilter",
        ][kind]
        assert convert(info(netq_filter(kind, key)), 24 + kept)["filters"] == [{"rxf": text, "qInfo": []}]

    @pytest.mark.parametrize("size, switch, count", [(0, 0, 0), (1, 3, 0), (12, 0x103, 0), (13, 0x103, 1)])
    def test_a_buffer_that_is_shorter_than_its_head(self, convert, size, switch, count):
        converted = convert(info(switch=0x103, count=0x0201)[:size])
        assert converted["swID"] == switch
        assert converted["filters"] == [EMPTY] * count

    @pytest.mark.skipif(not COUNTS_BYTES, reason="the sanitizers bring an allocator that does not count")
    def test_frees_the_buffer(self, convert):
        before = bytes_in_use()
        for _ in range(10):
            convert(info(), 64 << 20)
        assert abs(bytes_in_use() - before) < 1 << 20


class TestMigrateNetQFilter:
    @staticmethod
    def call(value, switch=3, port=7):
        return Call("Qdp_Migrate_NetQ_Filter", [switch, port, value])

    @pytest.mark.parametrize("value, passed", [(0, 0), (5, 5), (-1, 0xFFFFFFFF), (1 << 31, 1 << 31)])
    def test_passes_its_third_argument_through(self, host, qdp, value, passed):
        host.script("Qdp_Migrate_NetQ_Filter")
        assert qdp.call("MigrateNetQFilter", 3, 7, value) == Outcome(None, calls=[self.call(passed)])

    def test_the_balancer_is_automatic(self, host, qdp):
        host.fail("Qdp_Migrate_NetQ_Filter", 1)
        assert qdp.call("MigrateNetQFilter", 3, 7, 0) == Outcome(
            None,
            "Please disable automatic thread load balancing.\n\nFailed to migrate filter of port 7.\n",
            calls=[self.call(0)],
        )

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Migrate_NetQ_Filter")
        assert qdp.call("MigrateNetQFilter", switch, port, 1) == Outcome(None, calls=[self.call(1, switch, port)])

    def test_embedded_host_moves_the_filter_to_another_queue(self, qdp):
        before = qdp.result("GetPortNetQInfo", 0, 4)
        assert qdp.call("MigrateNetQFilter", 0, 4, 7) == Outcome(None, calls=[self.call(7, 0, 4)])
        after = qdp.result("GetPortNetQInfo", 0, 4)
        assert [queue["qid"] for queue in before["filters"][0]["qInfo"]] == [4]
        assert [queue.pop("qid") for queue in after["filters"][0]["qInfo"]] == [7]
        before["filters"][0]["qInfo"][0].pop("qid")
        assert after == before

    @pytest.mark.parametrize("port, queue", [(4, 8), (0, 1), (33, 1), (99, 1)])
    def test_embedded_host_refuses(self, qdp, port, queue):
        """A queue that the uplinks do not have, and ports without a filter of their own."""
        before = qdp.result("GetPortNetQInfo", 0, 0)
        assert qdp.call("MigrateNetQFilter", 0, port, queue) == Outcome(
            None, f"Failed to migrate filter of port {port}.\n", calls=[self.call(queue, 0, port)]
        )
        assert qdp.result("GetPortNetQInfo", 0, 0) == before
