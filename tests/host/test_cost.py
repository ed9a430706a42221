"""What the embedded host costs on large scenarios: little beside the module, and no more than in proportion."""

import ctypes
import struct
import time

import pytest

FLOW_PAGE = 10264
NO_MORE = 0xFFFFFFFF


pytestmark = pytest.mark.usefixtures("release_only")


def least_seconds(call, times=5):
    seconds = []
    for _ in range(times):
        start = time.process_time()
        call()
        seconds.append(time.process_time() - start)
    return min(seconds)


def test_most_of_list_ports_is_the_modules(control, host, qdp, tmp_path):
    """Of a list of 16384 ports, making it up here takes less than a fifth."""
    path = tmp_path / "ports.json"
    path.write_text('{"switches": [{"alias": "a", "ports": [{"repeat": 16384, "txQueues": 2, "rxQueues": 2}]}]}')
    assert control.load(path) == 0
    capacity = 12 + 16384 * 156
    buffer = ctypes.create_string_buffer(capacity)

    def stand_in():
        size = ctypes.c_uint32(capacity)
        assert host.libqdp.Qdp_Get_Port_List(0, buffer, ctypes.byref(size)) == 0
        assert size.value == capacity

    assert len(qdp.module.ListPorts(0)) == 16384
    assert least_seconds(stand_in) < 0.2 * least_seconds(lambda: qdp.module.ListPorts(0))


def sweep(host, lcore=0):
    """How many flows all pages of an lcore's table have together."""
    buffer, size = ctypes.create_string_buffer(FLOW_PAGE), ctypes.c_uint32()
    start, count = 0, 0
    while start != NO_MORE:
        size.value = FLOW_PAGE
        request = struct.pack("<3I", 0, lcore, start).ljust(96, b"\0")
        assert host.libqdp.Qdp_Dump_Flow_Table(request, buffer, ctypes.byref(size)) == 0
        start, on_page = struct.unpack_from("<2I", buffer, 8)
        count += on_page
    return count


@pytest.fixture
def load_flows(control, tmp_path):
    """Loads a host that has so many flows, all on lcore 0."""

    def load(flows):
        path = tmp_path / "flows.json"
        path.write_text(
            '{"switches": [{"alias": "a", "ports": [{}]}], "flows": [{"repeat": %d, "lcore": 0, '
            '"source": {"from": "10.0.0.1"}, "destination": "10.9.0.1", "protocol": "udp"}]}' % flows
        )
        assert control.load(path) == 0

    return load


def test_a_summary_takes_little_beside_the_load(load_flows, host):
    load = least_seconds(lambda: load_flows(100_000), times=2)
    assert host.summary()["switches"][0]["flows"] == 100_000
    assert least_seconds(host.summary) < 0.2 * load


def test_a_sweep_over_a_flow_table_takes_linear_time(load_flows, host):
    seconds = {}
    for flows in (10_000, 100_000, 1_000_000):
        load_flows(flows)
        assert sweep(host) == flows
        seconds[flows] = least_seconds(lambda: sweep(host), times=3 if flows < 1_000_000 else 1)
        # Of a table that is ten times as long, tenfold. A sweep whose pages looked for their place from the start of
        # the table would take a hundred times as long.
        assert seconds[flows] < 25 * seconds.get(flows // 10, seconds[flows])


@pytest.mark.parametrize("name, most", [("default.json", 0.05), ("mux.json", 0.05), ("large.json", 30)])
def test_loading(control, scenarios, name, most):
    path = scenarios / name
    assert least_seconds(lambda: control.load(path), times=1 if name == "large.json" else 3) < most


def test_balancer_statistics_follow_the_page_and_not_the_switch(control, host, tmp_path):
    """A page about the same few ports costs the same on a switch of sixteen times as many ports."""
    chunk = ctypes.create_string_buffer(4096)
    seconds = {}
    for ports in (1024, 16384):
        path = tmp_path / "ports.json"
        path.write_text(
            '{"switches": [{"alias": "a", "ports": [{"repeat": %d, "txQueues": 4, "rxQueues": 4}]}]}' % ports
        )
        assert control.load(path) == 0

        def pages():
            for _ in range(100):
                assert host.libqdp.Qdp_DumpLBStats(0, ports - 8, 8, 0, 0, chunk, 4096) == 0

        seconds[ports] = least_seconds(pages)
    assert seconds[16384] < 3 * seconds[1024]


@pytest.fixture
def dump_of_balancer(host):
    """Dumps the balancer's statistics of switch 0 from the stand-in, chunk by chunk; returns the calls' seconds."""
    chunk = ctypes.create_string_buffer(4096)

    def dump():
        port, context = 0, 0
        seconds = []
        while port != NO_MORE or context != NO_MORE:
            start = time.process_time()
            assert host.libqdp.Qdp_DumpLBStats(0, port, 16384, context, 64, chunk, 4096) == 0
            seconds.append(time.process_time() - start)
            port, context = struct.unpack_from("<2I", chunk)
        return seconds

    return dump


def test_a_whole_dump_of_balancer_statistics_is_mostly_the_modules(control, dump_of_balancer, qdp, tmp_path):
    path = tmp_path / "ports.json"
    path.write_text('{"switches": [{"alias": "a", "ports": [{"repeat": 16384, "txQueues": 2, "rxQueues": 2}]}]}')
    assert control.load(path) == 0
    assert least_seconds(dump_of_balancer, 2) < least_seconds(lambda: qdp.module.DumpLBStats(0, 0, 16384, 0, 64), 2)


def test_balancer_statistics_of_the_large_scenario(control, dump_of_balancer, scenarios):
    """A dump that sorts all ports anew for every chunk takes seconds: about ten milliseconds a call."""
    assert control.load(scenarios / "large.json") == 0
    dumps = [dump_of_balancer() for _ in range(3)]
    assert min(len(dump) for dump in dumps) > 500
    assert min(max(dump) for dump in dumps) < 0.06
    assert min(sum(dump) for dump in dumps) < 0.7
