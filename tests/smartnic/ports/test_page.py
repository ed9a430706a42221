"""What the five lists of the port model share: a page as a dict, and paging through the embedded host."""

import struct
from collections import namedtuple

import pytest

from adversity import starved
from observe import Outcome, exact
from smartnic.commands import OPERATION

# A list: its method, the arguments before the start, the platform operation, the keys of a page, the form of a page's
# header, the bytes of an entry and of a whole answer, and an entry's keys, of which `first` shows its first two bytes.
List = namedtuple("List", "method before operation key next header entry_bytes capacity first keys failure")

LIF_KEYS = "lifID srcPort repPort flowKeyType lifType isMuxPF fwdMode status"
VLAN_KEYS = "muxVLAN pfLif0 pfLif1 srcPort repPort flowKeyType status"
PORT_KEYS = "dstPort lifID defaultVLAN muxVLAN lifType status tag"
NO_PORT_LIST = "Failed to get lif port list\n"
LISTS = [
    List("LifPortList", (), OPERATION, "liflist", "nextIndex", "<HH", 12, 1024, "lifID", LIF_KEYS, NO_PORT_LIST),
    List("VlanPortList", (), OPERATION, "vlanlist", "nextIndex", "<HH", 16, 1024, "muxVLAN", VLAN_KEYS, NO_PORT_LIST),
    List("PortList", (), OPERATION, "portlist", "nextIndex", "<HH", 16, 1024, "dstPort", PORT_KEYS, NO_PORT_LIST),
    List(
        "ListSwitchMuxVLAN", (2,), "Qdp_List_Mux_VLAN_Info", "portlist", "nextFcPort", "<II", 8, 520, "fcPortID",
        "portID fcPortID vlanID", "Failed to get mux VLAN info\n",
    ),
    List(
        "ListSwitchShadowPorts", (2,), "Qdp_List_Shadow_Ports", "portlist", "nextFcPort", "<II", 6, 520, "fcPortID",
        "fcPortID muxPFPortID muxVLANID", "Failed to get shadow port list\n",
    ),
]


def most(each):
    """The count and the next index at the top of their range."""
    return 0xFFFF if each.header == "<HH" else 0xFFFFFFFF


def room(each):
    return (each.capacity - struct.calcsize(each.header)) // each.entry_bytes


@pytest.mark.parametrize("each", LISTS, ids=lambda each: each.method)
class TestPage:
    def listed(self, host, qdp, each, answer):
        host.script(each.operation, outputs=[answer])
        return qdp.result(each.method, *each.before, 0)

    def test_an_empty_page(self, host, qdp, each):
        page = self.listed(host, qdp, each, struct.pack(each.header, 0, most(each)))
        assert exact(page) == exact({each.key: [], each.next: most(each)})

    def test_a_full_page_in_the_order_of_the_answer(self, host, qdp, each):
        entries = [struct.pack("<H", 1000 - i).ljust(each.entry_bytes, b"\0") for i in range(room(each))]
        page = self.listed(host, qdp, each, struct.pack(each.header, len(entries), 7) + b"".join(entries))
        assert list(page) == [each.key, each.next]
        assert page[each.next] == 7
        assert [entry[each.first] for entry in page[each.key]] == [1000 - i for i in range(room(each))]
        assert {tuple(entry) for entry in page[each.key]} == {tuple(each.keys.split())}

    def test_no_more_entries_than_the_count_says(self, host, qdp, each):
        page = self.listed(host, qdp, each, struct.pack(each.header, 2, 0).ljust(each.capacity, b"\xff"))
        assert len(page[each.key]) == 2

    def test_an_answer_without_bytes_is_an_empty_page(self, host, qdp, each):
        assert self.listed(host, qdp, each, b"") == {each.key: [], each.next: 0}

    def test_a_short_answer_decodes_as_zeros(self, host, qdp, each):
        page = self.listed(host, qdp, each, struct.pack(each.header + "H", 2, 3, 0x1FF))
        expected = dict.fromkeys(each.keys.split(), 0)
        assert page == {each.key: [{**expected, each.first: 0x1FF}, expected], each.next: 3}

    def test_entries_beyond_the_buffer_read_as_zero(self, host, qdp, each):
        page = self.listed(host, qdp, each, struct.pack(each.header, 0xFFFF, 0).ljust(each.capacity, b"\xff"))
        entries = page[each.key]
        assert len(entries) == 0xFFFF
        assert all(entry[each.first] == 0xFFFF for entry in entries[: room(each)])
        assert {value for entry in entries[room(each) + 1 :] for value in entry.values()} == {0}

    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, each, status):
        host.script(each.operation, status, outputs=[struct.pack(each.header, 1, 1)])
        outcome = qdp.call(each.method, *each.before, 0)
        assert outcome == Outcome(None, each.failure, calls=outcome.calls)
        assert len(outcome.calls) == 1


@pytest.mark.parametrize(
    "method, arguments",
    [
        ("LifPortList", (195,)),
        ("VlanPortList", (279,)),
        ("PortList", (435,)),
        ("ListSwitchMuxVLAN", (2, 243)),
        ("ListSwitchShadowPorts", (2, 243)),
    ],
)
def test_lack_of_memory_is_printed_for_the_page_itself_and_left_set_for_what_is_in_it(qdp, method, arguments):
    assert starved(qdp, method, *arguments) == [
        Outcome(None, "Failed to allocate buffer.\n", left_set=(MemoryError, "")),
        Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n")),
        Outcome(None, left_set=(SystemError, "Failed to set dict item.\n")),
    ]


def test_an_entry_across_the_end_of_the_buffer_has_what_is_left_of_it(host, qdp):
    host.script(OPERATION, outputs=[struct.pack("<HH", 64, 0).ljust(1024, b"\xff")])
    assert qdp.result("VlanPortList", 0)["vlanlist"][63] == {
        "muxVLAN": 0xFFFF,
        "pfLif0": 0xFFFF,
        "pfLif1": 0xFFFF,
        "srcPort": 0xFFFF,
        "repPort": 0xFFFF,
        "flowKeyType": 0,
        "status": 0,
    }


@pytest.mark.parametrize(
    "method, before, lengths, numbers",
    [
        ("LifPortList", (), [85, 85, 16], [*range(1, 5), 8, 9, *range(16, 196)]),
        ("VlanPortList", (), [63, 63, 54], [*range(100, 280)]),
        ("PortList", (), [63] * 5 + [51], [*range(1, 5), 8, 9, *range(16, 196), *range(256, 436)]),
        ("ListSwitchMuxVLAN", (2,), [64, 64, 52], [*range(64, 244)]),
        ("ListSwitchShadowPorts", (2,), [85, 85, 10], [*range(64, 244)]),
    ],
)
def test_embedded_host_pages_through_its_lists(qdp, method, before, lengths, numbers):
    (each,) = [each for each in LISTS if each.method == method]
    pages = []
    start = 0
    while not pages or start:
        page = qdp.result(method, *before, start)
        start = page[each.next]
        pages.append(page[each.key])
    assert [len(page) for page in pages] == lengths
    assert [entry[each.first] for page in pages for entry in page] == numbers
