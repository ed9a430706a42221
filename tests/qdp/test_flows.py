"""The flows of the flow caches: how their pages are asked for, and what is filtered."""

import itertools
import struct

import pytest
from qdp_host import Capacity

import qdp
from qdp.paging import pages

NO_FILTER = [0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0]


@pytest.fixture
def layer(host):
    host.freeze()
    return qdp.Host()


def requests(calls):
    """The requests for flows: selector, lcore, start index."""
    return [struct.unpack_from("<III", call.arguments[0]) for call in calls if call.operation == "Qdp_Dump_Flow_Table"]


def test_flows_of_a_switch_come_lcore_by_lcore_and_page_by_page(layer, host):
    """The 290 flows of the first switch are on 8 lcores: 24, 35, 46, 27, 38, 49, 30 and 41."""
    switch = layer.switch(0)
    with host.recording() as calls:
        found = list(switch.flows())
    counts = [len(list(some)) for _, some in itertools.groupby(found, lambda flow: flow.lcore)]
    assert counts == [24, 35, 46, 27, 38, 49, 30, 41]
    assert {flow.switch for flow in found} == {0}
    asked = requests(calls)
    assert [lcore for (_, lcore, start) in asked if start == 0] == list(range(8))
    raw = qdp.call_raw("DumpFlowTable", 0, 2, 0, 0, *NO_FILTER)
    assert len(raw["list"]) < 46 and (0, 2, raw["startIndex"]) in asked
    assert [vars(flow) for flow in found if flow.lcore == 2][: len(raw["list"])] == raw["list"]


def test_flow_is_the_record_of_the_module_with_its_place(layer):
    flow = next(layer.switch(0).flows())
    assert isinstance(flow, qdp.Flow) and isinstance(flow, qdp.records.FlowEntry)
    assert list(vars(flow)) == ["key", "actions", "swHits", "swBytes", "hwHits", "hwBytes"]
    assert (flow.switch, flow.lcore) == (0, 0)
    assert str(flow.parsed_key.source) == "10.0.0.1"


def test_flows_of_some_lcores(layer):
    switch = layer.switch(0)
    assert [flow.lcore for flow in switch.flows(lcores=[3, 1])] == [3] * 27 + [1] * 35
    assert len(list(switch.lcore(4).flows())) == 38
    with pytest.raises(qdp.NotFound):
        switch.flows(lcores=[8])


def test_filters_are_packed_as_the_platform_takes_them(layer, host):
    with host.recording() as calls:
        list(
            layer.switch(0).flows(
                lcores=[5],
                source_mac="02:00:5e:10:ab:01",
                destination_mac="0200.5e10.ab02",
                source="10.0.0.1",
                destination="2001:db8::1",
                option=7,
                values=(1, -1, 2, 0, 3),
            )
        )
    (request,) = [call.arguments[0] for call in calls if call.operation == "Qdp_Dump_Flow_Table"]
    assert request == struct.pack(
        "<3IBB6sB6sxI16sI4x16s5i4x",
        *(0, 5, 0, 7, 1, bytes.fromhex("02005e10ab01"), 1, bytes.fromhex("02005e10ab02")),
        *(4, bytes([10, 0, 0, 1]) + bytes(12), 6, bytes.fromhex("20010db8000000000000000000000001")),
        *(1, -1, 2, 0, 3),
    )


def test_filter_finds_what_it_names(layer):
    key = layer.switch(0).flows()
    wanted = next(flow.parsed_key for flow in key if flow.parsed_key.layer == 4)
    found = list(layer.switch(0).flows(source=wanted.source, destination=wanted.destination))
    assert found
    assert {(flow.parsed_key.source, flow.parsed_key.destination) for flow in found} == {
        (wanted.source, wanted.destination)
    }


@pytest.mark.parametrize(
    "filters",
    [
        {"source_mac": "02:00"},
        {"source": "10.0.0"},
        {"option": 256},
        {"values": (1, 2)},
        {"values": (1 << 31, 0, 0, 0, 0)},
    ],
)
def test_filter_that_is_none_is_refused_before_any_call(layer, host, filters):
    switch = layer.switch(0)
    with host.recording() as calls, pytest.raises(qdp.QdpError):
        list(switch.flows(**filters))
    assert calls == []


def test_page_that_fails_ends_the_iteration_with_the_failure(layer, host):
    host.fail("Qdp_Dump_Flow_Table", nth=2)
    found = []
    with pytest.raises(qdp.Refused, match="Failed to retrieve flow table."):
        for flow in layer.switch(0).flows():
            found.append(flow.lcore)
    assert found and set(found) == {0}


PAGES = [
    ({0: ("ab", 2), 2: ("c", 3), 3: ("", 3)}, [0, 2, 3], [0, 2, 3]),  # complete when empty
    ({0: ("ab", 2), 2: ("c", 0)}, [0, 2], [0, 2]),  # complete when 0
    ({0: ("ab", 2), 2: ("c", 2)}, [0, 2], [0, 2]),  # complete when the same again
    ({0: ("ab", 5), 5: ("c", 2)}, [0, 5], [0, 5]),  # backwards
    ({0: ("ab", 9), 9: ("c", 10)}, [0, 9], [0, 9]),  # the last index at which a page may start
    ({0: ("ab", 10)}, [0], [0]),  # the end
    ({0: ("ab", 65535)}, [0], [0]),
    ({0: ("", 9), 9: ("a", 10)}, [0], [0, 9]),  # a filter may leave a page empty
]


@pytest.mark.parametrize("answers, starts, starts_with_filter", PAGES)
def test_how_a_list_ends(answers, starts, starts_with_filter):
    for is_filtered, expected in ((False, starts), (True, starts_with_filter)):
        asked = []

        def read(start):
            asked.append(start)
            return {"list": list(answers[start][0]), "next": answers[start][1]}

        found = list(pages(read, "list", "next", 10, passes_empty_pages=is_filtered))
        assert asked == expected
        assert found == [letter for start in expected for letter in answers[start][0]]


def test_request_is_as_long_as_the_platform_expects(layer, host):
    with host.recording() as calls:
        next(layer.switch(0).flows())
    (call,) = [call for call in calls if call.operation == "Qdp_Dump_Flow_Table"]
    assert len(call.arguments[0]) == 96 and call.arguments[1:] == [Capacity(size=10264)]


@pytest.mark.parametrize("filters, starts", [({}, [0]), ({"source": "10.0.0.1"}, [0, 5])])
def test_empty_page_ends_the_list_unless_a_filter_is_on(layer, host, filters, starts):
    """The response has the next start index at 8, the number of flows at 12 and the number of valid bytes at 16."""
    host.script("Qdp_Dump_Flow_Table", outputs=[struct.pack("<8xIIII", 5, 0, 24, 0)])
    with host.recording() as calls:
        list(layer.switch(0).flows(lcores=[0], **filters))
    assert [start for _, _, start in requests(calls)] == starts
