"""Tests of the comparison of readings."""

import pytest

from qdp.snapshot import lines, write
from qdp.snapshot.compare import COUNTER, INVENTORY, SETTING, Difference, differences
from qdp.snapshot.read import Snapshot


def snapshot(folder, name, time, *content):
    """A snapshot of one reading with these lines, written at that time."""
    path = str(folder / name)
    head = dict(write.head(write.Options(names=["ports"])), time=time)
    with write.replacing(path) as sink:
        sink.write(lines.dumped(head))
        sink.write(lines.dumped({"reading": 1, "section": "ports", "time": time, "clock": time}))
        for line in content:
            sink.write(line)
    return Snapshot(path)


def setting(path, value):
    return lines.dumped({"setting": path, "value": value})


def call(method, arguments, result):
    return lines.call_line(method, arguments, result, 1)


def test_settings(tmp_path):
    a = snapshot(tmp_path, "a", 0, setting("x/burst-size", 32), setting("gone", 1), setting("same", 5))
    b = snapshot(tmp_path, "b", 10, setting("x/burst-size", 64), setting("new", [1]), setting("same", 5))
    assert list(differences(a, b, [SETTING])) == [
        Difference(SETTING, "gone", 1, None, None, None),
        Difference(SETTING, "new", None, [1], None, None),
        Difference(SETTING, "x/burst-size", 32, 64, None, None),
    ]


def test_inventory_by_key_and_not_by_place(tmp_path):
    ports = [{"portID": 1, "clientType": "VNIC", "numMACs": 1}, {"portID": 2, "clientType": "VNIC", "numMACs": 1}]
    turned = [dict(ports[1], numMACs=7), dict(ports[0], clientType="UPLINK")]
    a = snapshot(tmp_path, "a", 0, call("ListPorts", (0,), ports))
    b = snapshot(tmp_path, "b", 10, call("ListPorts", (0,), turned))
    assert list(differences(a, b)) == [Difference(INVENTORY, "port/0/1/clientType", "VNIC", "UPLINK", None, None)]


@pytest.mark.parametrize(
    "before, after, grown, rate",
    [
        (100, 150, 50, 5.0),
        (2**63 - 10, -(2**63), 10, 1.0),  # past what is shown as positive
        (-1, 4, 5, 0.5),  # past its end
        (1000, 10, None, None),  # set to zero
    ],
)
def test_counters_of_64_bits(tmp_path, before, after, grown, rate):
    a = snapshot(tmp_path, "a", 0, call("GetPortStats", (0, 3), {"rxPkts": before, "txPkts": 7}))
    b = snapshot(tmp_path, "b", 10, call("GetPortStats", (0, 3), {"rxPkts": after, "txPkts": 7}))
    assert list(differences(a, b)) == [Difference(COUNTER, "port/0/3/rxPkts", before, after, grown, rate)]


def test_counters_of_32_bits(tmp_path):
    a = snapshot(
        tmp_path, "a", 0, call("GetFlowStats", (0, (4, 5), 0), [{"lcoreID": 4, "hits": 2**32 - 5, "numFlows": 1}])
    )
    b = snapshot(tmp_path, "b", 10, call("GetFlowStats", (0, (4, 5), 0), [{"lcoreID": 4, "hits": 15, "numFlows": 9}]))
    assert list(differences(a, b)) == [Difference(COUNTER, "lcore/0/4/hits", 2**32 - 5, 15, 20, 2.0)]


def test_pages_are_one_list(tmp_path):
    def pages(*split):
        lifs, start = [{"lifID": i, "fwdMode": 0} for i in range(4)], 0
        for end in split:
            yield call("LifPortList", (start,), {"nextIndex": end, "liflist": lifs[start:end]})
            start = end

    a, b = snapshot(tmp_path, "a", 0, *pages(1, 4)), snapshot(tmp_path, "b", 10, *pages(3, 4))
    assert list(differences(a, b)) == []


def test_two_readings_of_one_file(written):
    bundle = Snapshot(written)
    found = list(differences(bundle, bundle, readings=(1, 2)))
    assert {each.kind for each in found} == {COUNTER}
    (port,) = [each for each in found if each.path == "port/0/0/rxPkts"]
    seconds = bundle.clocks[2] - bundle.clocks[1]
    assert port.growth == port.after - port.before and port.rate == pytest.approx(port.growth / seconds)


def test_same_reading_does_not_differ(written):
    bundle = Snapshot(written)
    assert list(differences(bundle, bundle)) == []
