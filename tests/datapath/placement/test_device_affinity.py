"""The affinity of the physical NICs."""

import struct

import pytest

from observe import Call, Capacity, Outcome, refused

AFFINITY_BYTES = 1156


def device(name, affinity):
    return struct.pack("<32sI", name, affinity)


def devices(*entries, count=None):
    return struct.pack("<I", len(entries) if count is None else count) + b"".join(entries)


class TestListDevAffinity:
    call = Call("Qdp_List_Dev_Affinity", [Capacity(AFFINITY_BYTES)])

    def listed(self, host, qdp, record):
        host.script("Qdp_List_Dev_Affinity", outputs=[record])
        return qdp.result("ListDevAffinity")

    def test_one_dict_a_device_in_record_order(self, host, qdp):
        host.script("Qdp_List_Dev_Affinity", outputs=[devices(device(b"nic0", 1), device(b"nic9", 0xFFFFFFFF))])
        assert qdp.call("ListDevAffinity") == Outcome(
            [{"devname": "nic0", "affinity": 1}, {"devname": "nic9", "affinity": 0xFFFFFFFF}], calls=[self.call]
        )

    @pytest.mark.parametrize("record", [devices(), b""])
    def test_no_devices(self, host, qdp, record):
        assert self.listed(host, qdp, record) == []

    def test_arguments_are_ignored(self, host, qdp):
        host.script("Qdp_List_Dev_Affinity", outputs=[devices()])
        assert qdp.call("ListDevAffinity", "x", 99) == Outcome([], calls=[self.call])

    def test_a_name_of_full_length_ends_with_its_field(self, host, qdp):
        record = devices(device(b"n" * 32, 0x41414141))
        assert self.listed(host, qdp, record) == [{"devname": "n" * 32, "affinity": 0x41414141}]

    def test_a_name_that_is_not_utf_8(self, host, qdp):
        host.script("Qdp_List_Dev_Affinity", outputs=[devices(device(b"ok", 0), device(b"vm\xff", 0))])
        assert qdp.call("ListDevAffinity") == Outcome(
            left_set=(SystemError, "Failed to allocate buffer.\n"), calls=[self.call]
        )

    def test_devices_beyond_the_record_read_as_zero(self, host, qdp):
        entries = [device(b"nic%d" % i, i) for i in range(32)]
        listed = self.listed(host, qdp, devices(*entries, count=34))
        assert listed[:32] == [{"devname": "nic%d" % i, "affinity": i} for i in range(32)]
        assert listed[32:] == [{"devname": "", "affinity": 0}] * 2

    def test_embedded_host(self, qdp):
        assert qdp.result("ListDevAffinity") == [
            {"devname": f"nic{number}", "affinity": node}
            for number, node in [(0, 0), (1, 1), (4, 0), (5, 1), (8, 0), (9, 1)]
        ]


class TestSetDevAffinity:
    @pytest.mark.parametrize("affinity, passed", [(0, 0), (3, 3), (-1, 0xFFFFFFFF), (1 << 31, 1 << 31)])
    def test_passes_both_through(self, host, qdp, affinity, passed):
        host.script("Qdp_Set_Dev_Affinity")
        assert qdp.call("SetDevAffinity", "a nic", affinity) == Outcome(
            None, calls=[Call("Qdp_Set_Dev_Affinity", ["a nic", passed])]
        )

    def test_a_name_with_a_nul(self, qdp):
        assert qdp.call("SetDevAffinity", "a\0", 1) == refused(left_set=(ValueError, "embedded null character"))

    def test_embedded_host_lists_what_was_set(self, qdp):
        before = qdp.result("ListDevAffinity")
        qdp.result("SetDevAffinity", "nic4", 0xFFFFFFFF)
        before[2]["affinity"] = 0xFFFFFFFF
        assert qdp.result("ListDevAffinity") == before

    def test_embedded_host_has_no_such_device(self, qdp):
        assert qdp.call("SetDevAffinity", "nic2", 1).printed == "ValueError: Failed to set device affinity.\n"
