"""The slabs that a fast datapath takes its packets from."""

import pytest

from observe import Call, Outcome

MARKER = b"com.tarnix.extraconfig.opaqueDvs.qdp"


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
