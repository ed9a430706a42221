"""The aging interval of the flow table."""

import struct

import pytest

from observe import Call, Capacity, Outcome

MAX = 0xFFFFFFFF


class TestAgingIntervalGet:
    @staticmethod
    def call(selector):
        return Call("Qdp_GetAgingInterval", [selector, Capacity(4)])

    @pytest.mark.parametrize("interval", [0, 1, 0x7FFFFFFF, 0x80000000, MAX])
    def test_the_interval_is_not_negative(self, host, qdp, interval):
        host.script("Qdp_GetAgingInterval", outputs=[struct.pack("<I", interval)])
        assert qdp.call("AgingIntervalGet", 7) == Outcome(interval, calls=[self.call(7)])

    @pytest.mark.parametrize("selector", [0, 16, MAX, -1])
    def test_any_selector_goes_to_the_library(self, host, qdp, selector):
        host.script("Qdp_GetAgingInterval", outputs=[struct.pack("<I", 5)])
        assert qdp.call("AgingIntervalGet", selector) == Outcome(5, calls=[self.call(selector & MAX)])

    def test_embedded_host(self, qdp):
        assert qdp.result("AgingIntervalGet", 0) == 10


class TestAgingIntervalSet:
    @pytest.mark.parametrize("selector, interval", [(0, 0), (1, 2), (16, MAX), (MAX, 0), (-1, -1)])
    def test_both_values_go_to_the_library(self, host, qdp, selector, interval):
        host.script("Qdp_SetAgingInterval")
        assert qdp.call("AgingIntervalSet", selector, interval) == Outcome(
            None, calls=[Call("Qdp_SetAgingInterval", [selector & MAX, interval & MAX])]
        )

    def test_embedded_host_keeps_an_interval_for_each_selector(self, qdp):
        qdp.result("AgingIntervalSet", 3, MAX)
        qdp.result("AgingIntervalSet", 4, 0)
        assert [qdp.result("AgingIntervalGet", selector) for selector in (3, 4, 5)] == [MAX, 0, 10]
