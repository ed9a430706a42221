"""The lcores of the host."""

import struct

import pytest

from observe import Call, Capacity, Outcome


class TestListLCoreIDs:
    @staticmethod
    def call(selector):
        return Call("Qdp_Get_LCore_ID_Bitmap", [selector, Capacity(8)])

    @pytest.mark.parametrize(
        "bitmap, ids",
        [
            (0b1011, (0, 1, 3)),
            (0, ()),
            (1 << 63, (63,)),
            (1 << 63 | 1 << 32 | 1 << 31 | 1, (0, 31, 32, 63)),
            ((1 << 64) - 1, tuple(range(64))),
        ],
    )
    def test_the_places_of_the_set_bits(self, host, qdp, bitmap, ids):
        host.script("Qdp_Get_LCore_ID_Bitmap", outputs=[struct.pack("<Q", bitmap)])
        assert qdp.call("ListLCoreIDs", 0) == Outcome(ids, calls=[self.call(0)])

    def test_an_answer_without_bytes_is_an_empty_tuple(self, host, qdp):
        host.script("Qdp_Get_LCore_ID_Bitmap")
        assert qdp.call("ListLCoreIDs", 0) == Outcome((), calls=[self.call(0)])

    @pytest.mark.parametrize("selector, passed", [(1, 1), (16, 16), (-1, 0xFFFFFFFF), ((1 << 32) + 5, 5)])
    def test_passes_its_selector_through(self, host, qdp, selector, passed):
        host.script("Qdp_Get_LCore_ID_Bitmap", outputs=[struct.pack("<Q", 4)])
        assert qdp.call("ListLCoreIDs", selector) == Outcome((2,), calls=[self.call(passed)])

    def test_a_refusing_library(self, host, qdp):
        host.script("Qdp_Get_LCore_ID_Bitmap", 1, outputs=[b"\xff" * 8])
        assert qdp.call("ListLCoreIDs", 3) == Outcome(
            None, "TypeError: Failed to get lcore ID bitmap.\n\n", calls=[self.call(3)]
        )

    def test_embedded_host_has_the_lcores_of_its_switches(self, qdp):
        assert qdp.result("ListLCoreIDs", 0) == tuple(range(16))
        of_switches = {
            lcore for each in qdp.result("ListSwitches") for lcore in range(64) if each["lcores"] >> lcore & 1
        }
        assert set(qdp.result("ListLCoreIDs", 1)) == of_switches
