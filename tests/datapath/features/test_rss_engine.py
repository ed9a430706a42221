"""The RSS engines of a port."""

import struct

import pytest

from adversity import starved
from observe import Call, Capacity, Outcome

LIST_BYTES = 10244


def call(switch=3, port=7):
    return Call("Qdp_Get_RSS_Engine_List", [switch, port, Capacity(LIST_BYTES)])


def engine(number=0, kind=0, primary=0, queues=0, function=0, hashed=0, key=0, indirection=0, ids=(), affinity=0):
    ids = [*ids, *[0] * (64 - len(ids))]
    return struct.pack(
        "<6I2H64HI", number, kind, primary, queues, function, hashed, key, indirection, *ids, affinity
    )


def engine_list(*engines, count=None):
    return struct.pack("<I", len(engines) if count is None else count) + b"".join(engines)


class TestListRSSEngine:
    @pytest.fixture
    def listed(self, host, qdp):
        def listed(*engines, **head):
            host.script("Qdp_Get_RSS_Engine_List", outputs=[engine_list(*engines, **head)])
            return qdp.result("ListRSSEngine", 3, 7)

        return listed

    def test_one_dict_an_engine_in_record_order(self, host, qdp):
        w = 0xFFFFFFFF
        host.script(
            "Qdp_Get_RSS_Engine_List",
            outputs=[
                engine_list(
                    engine(1, 2, 3, 2, 5, 6, 7, 8, [9, 10, 11], 12),
                    engine(w, 4, w, 0, w, w, 0xFFFF, 0xFFFF, [0xFFFF] * 64, w),
                )
            ],
        )
        first = {
            "id": 1,
            "type": "DEVRSS",
            "memAffID": 12,
            "priQ": 3,
            "numQ": 2,
            "hashFunc": 5,
            "hashType": 6,
            "keySize": 7,
            "indSize": 8,
            "secQ": [9, 10],
        }
        second = {
            "id": w,
            "type": "OFLRSS",
            "memAffID": w,
            "priQ": w,
            "numQ": 0,
            "hashFunc": w,
            "hashType": w,
            "keySize": 0xFFFF,
            "indSize": 0xFFFF,
            "secQ": [],
        }
        assert qdp.call("ListRSSEngine", 3, 7) == Outcome([first, second], calls=[call()])

    @pytest.mark.parametrize(
        "kind, name",
        [
            (0, "UNKNOWN"),
            (1, "DFTRSS"),
            (2, "DEVRSS"),
            (3, "SHARSS"),
            (4, "OFLRSS"),
            (5, "UNKNOWN"),
            (257, "UNKNOWN"),
            (0x80000001, "UNKNOWN"),
            (0xFFFFFFFF, "UNKNOWN"),
        ],
    )
    def test_type_names(self, listed, kind, name):
        assert listed(engine(kind=kind))[0]["type"] == name

    @pytest.mark.parametrize("queues", [1, 63, 64])
    def test_as_many_queue_ids_as_there_are_queues(self, listed, queues):
        (shown,) = listed(engine(queues=queues, ids=range(1000, 1064)))
        assert (shown["numQ"], shown["secQ"]) == (queues, list(range(1000, 1000 + queues)))

    @pytest.mark.parametrize("queues", [65, 0x10000, 0xFFFFFFFF])
    def test_at_most_64_queue_ids(self, listed, queues):
        shown, _ = listed(engine(queues=queues, ids=[0xFFFF] * 64, affinity=0xABCD), engine(5))
        assert (shown["numQ"], shown["secQ"]) == (queues, [0xFFFF] * 64)

    def test_no_engines(self, host, qdp):
        host.script("Qdp_Get_RSS_Engine_List", outputs=[engine_list()])
        assert qdp.call("ListRSSEngine", 3, 7) == Outcome([], calls=[call()])

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script("Qdp_Get_RSS_Engine_List")
        assert qdp.call("ListRSSEngine", 3, 7) == Outcome([], calls=[call()])

    def test_engines_that_the_library_leaves_out_are_zero(self, listed):
        listed(*[engine(9, 1, 2, 3, 4, 5, 6, 7, [8], 9)] * 64)
        shown = listed(count=1)[0]
        assert shown == {**dict.fromkeys(shown, 0), "type": "UNKNOWN", "secQ": []}

    def test_engines_beyond_the_record_read_as_zero(self, listed):
        shown = listed(*[engine(i, 1, queues=64) for i in range(64)], count=66)
        assert [each["id"] for each in shown] == [*range(64), 0, 0]
        assert (shown[63]["type"], len(shown[63]["secQ"])) == ("DFTRSS", 64)
        assert shown[64] == shown[65] == {**dict.fromkeys(shown[0], 0), "type": "UNKNOWN", "secQ": []}

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, status):
        host.fail("Qdp_Get_RSS_Engine_List", status)
        text = "Failed to retrieve RSS Engine list.\n"
        assert qdp.call("ListRSSEngine", 3, 7) == Outcome(None, text, calls=[call()])

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_RSS_Engine_List")
        assert qdp.call("ListRSSEngine", switch, port) == Outcome([], calls=[call(switch, port)])

    def test_lack_of_memory(self, qdp):
        failed = "Failed to list RSS engines.\n"
        assert starved(qdp, "ListRSSEngine", 0, 0) == [
            Outcome(None, "Failed to allocate RSS engine list.\n", left_set=(MemoryError, "")),
            Outcome(None, failed, left_set=(SystemError, "Failed to allocate buffer.\n")),
            Outcome(None, failed, left_set=(SystemError, "Failed to set dict item.\n")),
        ]

    def test_embedded_host_has_engines_on_its_uplinks(self, qdp):
        engines = qdp.result("ListRSSEngine", 0, 1)
        assert [each["type"] for each in engines] == ["DFTRSS", "DEVRSS", "SHARSS", "OFLRSS"]
        assert [(each["priQ"], each["secQ"]) for each in engines] == [(0, [1, 2, 3]), (4, [5]), (6, []), (7, [])]
        assert {each["memAffID"] for each in engines} == {1}

    def test_embedded_host_has_none_on_other_ports(self, qdp):
        assert qdp.result("ListRSSEngine", 0, 2) == []

    @pytest.mark.parametrize("switch, port", [(3, 0), (0, 36)])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        text = "Failed to retrieve RSS Engine list.\n"
        assert qdp.call("ListRSSEngine", switch, port) == Outcome(None, text, calls=[call(switch, port)])
