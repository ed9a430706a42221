"""Where the datapath's work runs: device affinity, lcores, mbuf slabs."""

import struct

import pytest

from observe import Call, Capacity, Outcome, refused

AFFINITY_BYTES = 1156
MARKER = b"com.tarnix.extraconfig.opaqueDvs.qdp"


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
        host.script("Qdp_List_Dev_Affinity", outputs=[devices(device(b"vmnic0", 1), device(b"vmnic9", 0xFFFFFFFF))])
        assert qdp.call("ListDevAffinity") == Outcome(
            [{"devname": "vmnic0", "affinity": 1}, {"devname": "vmnic9", "affinity": 0xFFFFFFFF}], calls=[self.call]
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
        entries = [device(b"vmnic%d" % i, i) for i in range(32)]
        listed = self.listed(host, qdp, devices(*entries, count=34))
        assert listed[:32] == [{"devname": "vmnic%d" % i, "affinity": i} for i in range(32)]
        assert listed[32:] == [{"devname": "", "affinity": 0}] * 2

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, status):
        host.fail("Qdp_List_Dev_Affinity", status)
        assert qdp.call("ListDevAffinity") == Outcome(
            None, "ValueError: Failed to list device affinity.\n", calls=[self.call]
        )

    def test_embedded_host(self, qdp):
        assert qdp.result("ListDevAffinity") == [
            {"devname": f"vmnic{number}", "affinity": node}
            for number, node in [(0, 0), (1, 1), (4, 0), (5, 1), (8, 0), (9, 1)]
        ]


class TestSetDevAffinity:
    @pytest.mark.parametrize("affinity, passed", [(0, 0), (3, 3), (-1, 0xFFFFFFFF), (1 << 31, 1 << 31)])
    def test_passes_both_through(self, host, qdp, affinity, passed):
        host.script("Qdp_Set_Dev_Affinity")
        assert qdp.call("SetDevAffinity", "a nic", affinity) == Outcome(
            None, calls=[Call("Qdp_Set_Dev_Affinity", ["a nic", passed])]
        )

    def test_a_refusing_library(self, host, qdp):
        host.fail("Qdp_Set_Dev_Affinity")
        assert qdp.call("SetDevAffinity", "", 1) == Outcome(
            None, "ValueError: Failed to set device affinity.\n", calls=[Call("Qdp_Set_Dev_Affinity", ["", 1])]
        )

    @pytest.mark.parametrize("arguments", [(), ("a",), ("a", 1, 1), (1, 1), ("a", "1"), (None, 1)])
    def test_a_tuple_that_does_not_parse(self, qdp, arguments):
        assert qdp.call("SetDevAffinity", *arguments) == refused(left_set=TypeError)

    def test_a_name_with_a_nul(self, qdp):
        assert qdp.call("SetDevAffinity", "a\0", 1) == refused(left_set=(ValueError, "embedded null character"))

    def test_embedded_host_lists_what_was_set(self, qdp):
        before = qdp.result("ListDevAffinity")
        qdp.result("SetDevAffinity", "vmnic4", 0xFFFFFFFF)
        before[2]["affinity"] = 0xFFFFFFFF
        assert qdp.result("ListDevAffinity") == before

    def test_embedded_host_has_no_such_device(self, qdp):
        assert qdp.call("SetDevAffinity", "vmnic2", 1).printed == "ValueError: Failed to set device affinity.\n"


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

    @pytest.mark.parametrize("arguments", [(), (0, 0), ("0",), (None,), (1.0,)])
    def test_a_tuple_that_does_not_parse(self, qdp, arguments):
        assert qdp.call("ListLCoreIDs", *arguments) == refused(
            "TypeError: Invalid parameter passed.\n\n", left_set=TypeError
        )

    def test_embedded_host_has_the_lcores_of_its_switches(self, qdp):
        assert qdp.result("ListLCoreIDs", 0) == tuple(range(16))
        of_switches = {
            lcore for each in qdp.result("ListSwitches") for lcore in range(64) if each["lcores"] >> lcore & 1
        }
        assert set(qdp.result("ListLCoreIDs", 1)) == of_switches


class TestInitMbufFastslabs:
    INIT = Call("Qdp_Init_Mbuf_Fastslabs", [])

    # The four global properties that the built-in switches have: two of the first, one each of two others.
    PROPERTIES = 4

    def called(self, qdp, *arguments):
        """An outcome of which only the library's call counts: the walk's calls carry handles."""
        outcome = qdp.call("InitMbufFastslabs", *arguments)
        outcome.calls = [call for call in outcome.calls if call == self.INIT]
        return outcome

    def script_names(self, host, *names):
        for name in [*names, *[b"other"] * (self.PROPERTIES - len(names))]:
            host.script("DVSData_Name", text=name + b"\0")

    def init(self, host, qdp, value, name=MARKER, **script):
        """The result on a host whose first property, and no other, may be the marker."""
        self.script_names(host, name)
        host.script("DVSData_Data", outputs=[value], **script)
        outcome = self.called(qdp)
        found = outcome.result
        assert outcome == Outcome(found, calls=[self.INIT] if found else [])
        return found

    @pytest.mark.parametrize(
        "value, matches",
        [
            *[(word, True) for word in (b"true", b"poll", b"intr")],
            *[(word + b"\0", True) for word in (b"true", b"poll", b"intr")],
            *[(word, True) for word in (b"", b"t", b"po", b"int")],
            *[(word, False) for word in (b"truer", b"pollmode", b"intr0", b"polL", b"True", b"ptrue")],
            *[(word, False) for word in (b"\0", b"po\0", b"po\0\0\0", b"false", b"x", b" ")],
            (b"poll\0mode", True),  # only 5 bytes are compared
        ],
    )
    def test_values(self, configured, qdp, value, matches):
        assert self.init(configured, qdp, value) is matches

    @pytest.mark.parametrize(
        "value, matches", [(b"true\0", True), (b"po\0", True), (b"\0", True), (b"pollmode\0", False), (b"x\0", False)]
    )
    def test_values_of_a_library_that_reports_no_length(self, configured, qdp, value, matches):
        # The word keeps what stood in it before the call.
        assert self.init(configured, qdp, value, sizes={0: 0xFFFFFFFF}) is matches

    @pytest.mark.parametrize(
        "name",
        [
            b"",
            MARKER[:-1],
            MARKER + b".rest",
            b"x" + MARKER,
            MARKER.replace(b"opaque", b"opque"),
            MARKER.upper(),
        ],
    )
    def test_names_that_are_only_alike(self, configured, qdp, name):
        assert self.init(configured, qdp, b"true", name) is False

    def test_a_property_without_a_name(self, configured, qdp):
        for _ in range(self.PROPERTIES):
            configured.script("DVSData_Name", 0)
        assert self.called(qdp) == Outcome(False)

    def test_a_property_without_a_value(self, configured, qdp):
        self.script_names(configured, MARKER)
        configured.script("DVSData_Data")
        assert self.called(qdp) == Outcome(False)

    @pytest.mark.parametrize("place", range(PROPERTIES))
    def test_the_marker_of_any_switch(self, configured, qdp, place):
        self.script_names(configured, *[b"other"] * place, MARKER)
        configured.script("DVSData_Data", outputs=[b"intr"])
        assert self.called(qdp) == Outcome(True, calls=[self.INIT])

    def test_a_marker_that_does_not_match_does_not_end_the_search(self, configured, qdp):
        self.script_names(configured, MARKER, b"other", MARKER)
        configured.script("DVSData_Data", outputs=[b"false"])
        configured.script("DVSData_Data", outputs=[b"poll"])
        assert self.called(qdp) == Outcome(True, calls=[self.INIT])

    def test_each_switch_is_searched_until_its_marker(self, configured, qdp):
        self.script_names(configured, MARKER)
        configured.script("DVSData_Data", outputs=[b"true"])
        calls = qdp.call("InitMbufFastslabs").calls
        walks = [call.operation for call in calls]
        assert walks == [
            "DVSState_SwitchForEach",
            "DVSState_GlobalPropForEach",
            "DVSData_Name",
            "DVSData_Data",
            "DVSState_GlobalPropForEach",
            "DVSData_Name",
            "DVSState_GlobalPropForEach",
            "DVSState_GlobalPropForEach",
            "DVSData_Name",
            "Qdp_Init_Mbuf_Fastslabs",
        ]

    def test_a_refusing_library(self, configured, qdp):
        configured.fail("Qdp_Init_Mbuf_Fastslabs")
        assert self.called(qdp) == Outcome(
            False, "TypeError: Failed to init QDP mbuf fastslabs.\n\n", calls=[self.INIT]
        )

    def test_a_host_whose_switches_lack_the_marker(self, configured, qdp):
        self.script_names(configured)
        outcome = qdp.call("InitMbufFastslabs")
        assert outcome == Outcome(False, calls=outcome.calls)
        assert [call.operation for call in outcome.calls].count("DVSData_Name") == self.PROPERTIES
        assert {call.operation for call in outcome.calls} == {
            "DVSState_SwitchForEach",
            "DVSState_GlobalPropForEach",
            "DVSData_Name",
        }

    def test_arguments_are_ignored(self, configured, qdp):
        assert self.called(qdp, "x", 99) == Outcome(True, calls=[self.INIT])

    def test_embedded_host_before_its_configuration_is_loaded(self, qdp):
        assert self.called(qdp) == Outcome(False)

    def test_embedded_host(self, configured, qdp):
        assert self.called(qdp) == Outcome(True, calls=[self.INIT])
