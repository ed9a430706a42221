"""Lists of ports and VLANs, as the hosting process has them made."""

import ctypes
from types import SimpleNamespace

import pytest

from adversity import starved
from observe import Observer, Outcome


@pytest.fixture
def port_list(exported):
    function = exported.PyQDP_CreatePortList
    function.restype = ctypes.py_object
    return lambda count, *ports: function(ctypes.c_uint32(count), bitmap(*ports))


@pytest.fixture
def vlan_list(exported):
    function = exported.PyQDP_CreateVlanList
    function.restype = ctypes.py_object
    return lambda count, *vlans: function(ctypes.c_uint32(count), (ctypes.c_uint16 * len(vlans))(*vlans))


def starved_function(host, function, *arguments):
    """The outcomes of calls that lack memory. An exception that is left set is raised by the caller."""
    return starved(Observer(SimpleNamespace(function=function), host), "function", *arguments)


def bitmap(*ports):
    words = [0, 0]
    for port in ports:
        words[port // 64] |= 1 << port % 64
    return (ctypes.c_uint64 * 2)(*words)


class TestCreatePortList:
    @pytest.mark.parametrize(
        "count, ports, listed",
        [
            (2, [3, 70], [3, 70]),
            (1, [3, 70], [3]),
            (0, [3, 70], []),
            (4, [0, 63, 64, 127], [0, 63, 64, 127]),
            (3, [0, 63, 64, 127], [0, 63, 64]),
            (128, range(128), list(range(128))),
            (127, range(128), list(range(127))),
            (1, [127], [127]),
        ],
    )
    def test_set_bits_in_order(self, port_list, count, ports, listed):
        assert port_list(count, *ports) == listed

    @pytest.mark.parametrize("ports", [[], [3, 70], range(128)])
    def test_where_the_map_has_fewer_ports_none_fills_the_list(self, port_list, ports):
        assert port_list(len(ports) + 3, *ports) == [*ports, None, None, None]

    def test_what_follows_the_map_is_not_looked_at(self, exported):
        function = exported.PyQDP_CreatePortList
        function.restype = ctypes.py_object
        followed = (ctypes.c_uint64 * 3)(1 << 3, 1 << 6, (1 << 64) - 1)
        assert function(ctypes.c_uint32(5), followed) == [3, 70, None, None, None]

    def test_the_count_is_the_low_half_of_its_argument(self, port_list):
        assert port_list(0xABCD0001, 3, 70) == [3]
        assert port_list(0x10000, 3, 70) == []
        assert port_list(0xFFFF, 5) == [5] + [None] * 65534

    def test_the_map_is_not_looked_at_for_no_ports(self, exported):
        function = exported.PyQDP_CreatePortList
        function.restype = ctypes.py_object
        assert function(ctypes.c_uint32(0), None) == []

    def test_lack_of_memory(self, host, port_list):
        no_list = Outcome(None, "Failed to allocate memory\n", raised=(MemoryError, ""))
        assert no_list in starved_function(host, port_list, 2, 3, 70)


class TestCreateVlanList:
    @pytest.mark.parametrize(
        "count, vlans, listed",
        [
            (3, [100, 0, 65535], [100, 0, 65535]),
            (2, [100, 0, 65535], [100, 0]),
            (0, [100], []),
            (0x00070001, [4094, 1], [4094]),
            (0x10000, [4094], []),
        ],
    )
    def test_the_first_ids(self, vlan_list, count, vlans, listed):
        assert vlan_list(count, *vlans) == listed

    def test_as_many_as_can_be(self, vlan_list):
        assert vlan_list(0xFFFF, *range(0xFFFF)) == list(range(0xFFFF))

    def test_lack_of_memory(self, host, vlan_list):
        outcomes = starved_function(host, vlan_list, 2, 4093, 4094)
        assert Outcome(None, "Failed to allocate memory.\n", raised=(MemoryError, "")) in outcomes
        assert outcomes[-1] == Outcome(None, raised=(SystemError, "Failed to allocate buffer.\n"))
