"""A switch's three names, through the plain functions that the module shows."""

import ctypes

import pytest

from heap import COUNTS_BYTES, bytes_in_use
from observe import Call, standard_error

NOT_FOUND = 0xBAD0003
BAD_PARAMETER = 0xBAD0007
HANDLE = 0x1000  # of a switch that only scripted answers know

PRODUCTION = b"switch-production"
SMARTNIC = b"switch-smartnic"


def filled(text, size):
    return text + bytes(size - len(text))


@pytest.fixture
def resolve(exported):
    """Calls a function (name, output) on an output of '#' bytes: its status and the output's bytes."""

    def call(function, name, size):
        out = ctypes.create_string_buffer(b"#" * size, size)
        entry = getattr(exported, function)
        entry.restype = ctypes.c_uint32
        entry.argtypes = [ctypes.c_char_p, ctypes.c_void_p]
        with standard_error() as error:
            status = entry(name, ctypes.addressof(out))
        assert error.text == ""
        return status, out.raw

    return call


class TestLoadConfig:
    @pytest.fixture(params=["DVSLoadConfig", "LibraryInit"])
    def load(self, request, exported):
        function = getattr(exported, request.param)
        function.restype = ctypes.c_uint32
        return function

    def test_resets_gets_and_loads(self, host, load):
        host.script("DVSHCK_StateGet", outputs=[b"serialised"])
        host.script("DVSState_ConfigDeserialize")
        with host.recording() as calls:
            assert load() == 0
        assert [call.operation for call in calls] == [
            "DVSState_ConfigReset",
            "DVSHCK_StateGet",
            "DVSState_ConfigDeserialize",
        ]
        assert calls[2].arguments == [b"serialised"]

    def test_loads_nothing_of_an_answer_without_a_state(self, host, load):
        host.script("DVSHCK_StateGet")  # which leaves the state and its length as they are
        host.script("DVSState_ConfigDeserialize")
        with host.recording() as calls:
            assert load() == 0
        assert calls[2].arguments == [None]

    @pytest.mark.skipif(not COUNTS_BYTES, reason="the sanitizers bring an allocator that does not count")
    def test_frees_the_buffer(self, host, load):
        before = bytes_in_use()
        for _ in range(10):
            host.script("DVSHCK_StateGet", outputs=[bytes(16 << 20)])
            host.script("DVSState_ConfigDeserialize")
            assert load() == 0
        assert bytes_in_use() - before < 16 << 20

    @pytest.mark.parametrize(
        "operation, made",
        [("DVSState_ConfigReset", 1), ("DVSHCK_StateGet", 2), ("DVSState_ConfigDeserialize", 3)],
    )
    def test_the_first_failing_step_decides(self, host, load, operation, made):
        host.fail(operation, 0xBAD00042)
        with host.recording() as calls:
            assert load() == 0xBAD00042
        assert len(calls) == made

    def test_before_it_no_alias_is_known(self, host, load, resolve):
        assert resolve("DVSAliasToSwitchId", b"dvs-production", 64)[0] == NOT_FOUND
        assert load() == 0
        assert resolve("DVSAliasToSwitchId", b"dvs-production", 64)[0] == 0

    def test_a_broken_state_is_refused(self, host, load, resolve):
        host.script("DVSHCK_StateGet", outputs=[b"\xff\x00broken"])
        assert load() != 0
        assert resolve("DVSAliasToSwitchId", b"dvs-production", 64)[0] == NOT_FOUND


@pytest.mark.parametrize("function", ["DVSAliasToSwitchId", "DVSAliasToSwitchIdAllTypes"])
class TestAliasToSwitchId:
    def test_of_a_vswitch(self, configured, resolve, function):
        assert resolve(function, b"dvs-production", 70) == (0, filled(PRODUCTION, 64) + b"######")

    def test_of_no_switch_leaves_the_output_untouched(self, configured, resolve, function):
        assert resolve(function, b"dvs-prod", 64) == (NOT_FOUND, b"#" * 64)

    def test_of_another_class(self, configured, resolve, function):
        if function == "DVSAliasToSwitchId":
            assert resolve(function, b"legacy-network", 64) == (BAD_PARAMETER, b"#" * 64)
        else:
            assert resolve(function, b"legacy-network", 64) == (0, filled(b"legacy-network-0001", 64))

    @pytest.mark.parametrize(
        "name", [b"vswitch2\0", b"\0", *(b"vswitch\0"[:i] + b"-" + b"vswitch\0"[i + 1 :] + b"\0" for i in range(8))]
    )
    def test_of_a_class_that_is_only_alike(self, host, resolve, function, name):
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.script("DVS_ClassName", text=name)
        host.script("DVS_SwitchId", text=filled(b"an id", 64))
        status = BAD_PARAMETER if function == "DVSAliasToSwitchId" else 0
        assert resolve(function, b"any", 64)[0] == status

    def test_a_long_id_is_cut_to_63_characters(self, host, resolve, function):
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.script("DVS_ClassName", text=b"vswitch\0")
        host.script("DVS_SwitchId", text=b"i" * 64)
        assert resolve(function, b"any", 66) == (0, b"i" * 63 + b"\0##")

    def test_a_switch_without_an_id_is_not_found(self, configured, resolve, function):
        configured.fail("DVS_SwitchId", 0)
        assert resolve(function, b"dvs-production", 64) == (NOT_FOUND, b"#" * 64)

    def test_all_64_bytes_of_the_library_are_copied(self, host, resolve, function):
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.script("DVS_ClassName", text=b"vswitch\0")
        host.script("DVS_SwitchId", text=b"id\0" + b"r" * 61)
        assert resolve(function, b"any", 64) == (0, b"id\0" + b"r" * 60 + b"\0")


class TestAliasToPortsetName:
    function = "DVSAliasToPortsetName"

    @pytest.mark.parametrize(
        "alias, name",
        [
            (b"dvs-production", b"portset-0"),
            (b"dvs-storage", b"dvs-storage"),
            (b"dvs-smartnic", SMARTNIC),
            (b"legacy-network", b"legacy-network"),
        ],
    )
    def test_portset_property_then_alias_property_then_id(self, configured, resolve, alias, name):
        assert resolve(self.function, alias, 130) == (0, filled(name, 128) + b"##")

    def test_the_keys_looked_up(self, configured, resolve):
        with configured.recording() as calls:
            resolve(self.function, b"dvs-smartnic", 128)
        lookups = [Call(call.operation, call.arguments[:2]) for call in calls if "PropLookup" in call.operation]
        assert lookups == [
            Call("DVSState_HostPropLookup", [SMARTNIC.decode(), "com.tarnix.common.host.portset"]),
            Call("DVSState_GlobalPropLookup", [SMARTNIC.decode(), "com.tarnix.common.alias"]),
        ]

    def test_of_no_switch(self, configured, resolve):
        assert resolve(self.function, b"nobody", 128) == (NOT_FOUND, b"\0" + b"#" * 127)

    def scripted(self, host, value, **script):
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.script("DVS_SwitchId", text=filled(b"an id", 64))
        host.script("DVSState_HostPropLookup", outputs=[(1).to_bytes(8, "little")])
        host.script("DVSData_Data", outputs=[value], **script)

    @pytest.mark.parametrize("length", [127, 128, 129, 300])
    def test_a_name_of_full_length_has_no_nul(self, host, resolve, length):
        self.scripted(host, b"p" * length + b"\0")
        name = (b"p" * length)[:128]
        assert resolve(self.function, b"any", 130) == (0, filled(name, 128) + b"##")

    @pytest.mark.parametrize("length", [*range(1, 20), 63, 64, 65, 126, 127])
    def test_a_value_ends_at_its_reported_length(self, host, resolve, length):
        letters = bytes(range(0x41, 0x41 + 130))
        self.scripted(host, letters, sizes={0: length})
        assert resolve(self.function, b"any", 130) == (0, filled(letters[:length], 128) + b"##")

    def test_a_value_ends_at_its_nul(self, host, resolve):
        self.scripted(host, b"portset\0rest")
        assert resolve(self.function, b"any", 128) == (0, filled(b"portset", 128))

    def test_a_library_that_reports_no_length(self, host, resolve):
        # The word keeps what stood in it before the call.
        self.scripted(host, b"portset\0", sizes={0: 0xFFFFFFFF})
        assert resolve(self.function, b"any", 128) == (0, filled(b"portset", 128))

    def test_an_empty_value_is_a_name_too(self, host, resolve):
        self.scripted(host, b"")
        assert resolve(self.function, b"any", 128) == (0, bytes(128))

    def test_a_property_that_is_found_without_data_is_none(self, host, resolve):
        """The library succeeds and hands out nothing: the alias property is next, and then the id."""
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.script("DVS_SwitchId", text=filled(b"an id", 64))
        host.script("DVSState_HostPropLookup")
        host.script("DVSState_GlobalPropLookup")
        with host.recording() as calls:
            assert resolve(self.function, b"any", 128) == (0, filled(b"an id", 128))
        assert [call.operation for call in calls][-2:] == ["DVSState_HostPropLookup", "DVSState_GlobalPropLookup"]

    def test_a_switch_without_an_id_and_properties_has_an_empty_name(self, host, resolve):
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.fail("DVS_SwitchId", 0)
        host.script("DVSState_HostPropLookup", NOT_FOUND)
        host.script("DVSState_GlobalPropLookup", NOT_FOUND)
        assert resolve(self.function, b"any", 130) == (0, bytes(128) + b"##")

    def test_data_without_a_value_are_none(self, host, resolve):
        """Both properties are found, and their data have a length and no value."""
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.script("DVS_SwitchId", text=filled(b"an id", 64))
        for lookup in ("DVSState_HostPropLookup", "DVSState_GlobalPropLookup"):
            host.script(lookup, outputs=[(1).to_bytes(8, "little")])
            host.script("DVSData_Data", sizes={0: 5})
        assert resolve(self.function, b"any", 128) == (0, filled(b"an id", 128))

    def test_an_empty_property_of_the_host_is_a_name_too(self, configured, exported, resolve):
        """The library may have no place for a value without bytes."""
        key = b"com.tarnix.common.host.portset"
        assert configured.libqmtPublic.DVSHCK_HostPropSet(PRODUCTION, key, None, 0, 16) == 0
        assert exported.LibraryInit() == 0
        assert resolve(self.function, b"dvs-production", 128) == (0, bytes(128))

    def test_an_id_beyond_128_bytes_is_cut(self, host, resolve):
        host.script("DVSState_SwitchFindByAlias", HANDLE)
        host.script("DVS_SwitchId", text=b"i" * 200 + b"\0")
        host.fail("DVSState_HostPropLookup", NOT_FOUND)
        host.fail("DVSState_GlobalPropLookup", NOT_FOUND)
        assert resolve(self.function, b"any", 130) == (0, b"i" * 128 + b"##")

    def test_methods_pass_it_on_with_a_nul(self, host, core):
        self.scripted(host, b"p" * 128 + b"\0")
        assert core.portset_name("any") == "p" * 128

    def test_methods_name_the_alias_that_is_unknown(self, configured, core):
        with standard_error() as error:
            assert core.portset_name("nobody") is None
        assert error.text == "Failed to get portset name from dvs nobody.\n"


class TestPortsetNameToAlias:
    function = "DVSPortsetNameToAlias"

    @pytest.mark.parametrize("name", [None, b""])
    def test_of_no_name(self, configured, resolve, name):
        assert resolve(self.function, name, 128) == (BAD_PARAMETER, b"\0" + b"#" * 127)

    def test_of_a_portset(self, configured, resolve):
        assert resolve(self.function, b"portset-0", 130) == (0, filled(b"dvs-production", 128) + b"##")

    @pytest.mark.parametrize("name", [b"portset-", b"nobody", b"ortset-0", b"portset-1"])
    def test_of_an_unknown_name(self, configured, resolve, name):
        assert resolve(self.function, name, 128) == (0, bytes(128))

    def test_a_longer_name_matches_its_beginning(self, configured, resolve):
        assert resolve(self.function, b"portset-01", 128) == (0, filled(b"dvs-production", 128))

    def portset(self, host, value, index=0):
        host.script("DVSState_HostPropLookup", outputs=[(1).to_bytes(8, "little")])
        host.script("DVSData_Data", outputs=[value])

    def test_an_empty_portset_matches_any_name(self, configured, resolve):
        self.portset(configured, b"\0")
        assert resolve(self.function, b"whatever", 128) == (0, filled(b"dvs-production", 128))

    def test_a_name_of_one_character(self, configured, resolve):
        self.portset(configured, b"p\0")
        assert resolve(self.function, b"p", 128) == (0, filled(b"dvs-production", 128))

    def test_without_an_alias_property_the_name_itself(self, configured, resolve):
        self.portset(configured, b"portset-0\0")
        configured.fail("DVSState_GlobalPropLookup", NOT_FOUND)
        assert resolve(self.function, b"portset-0-and-more", 128) == (0, filled(b"portset-0-and-more", 128))

    def test_without_an_alias_property_a_long_name_keeps_room_for_its_nul(self, configured, resolve):
        self.portset(configured, b"n\0")
        configured.fail("DVSState_GlobalPropLookup", NOT_FOUND)
        assert resolve(self.function, b"n" * 200, 130) == (0, b"n" * 127 + b"\0##")

    def test_a_long_alias_is_cut_to_128_bytes(self, configured, resolve):
        self.portset(configured, b"portset-0\0")
        configured.script("DVSState_GlobalPropLookup", outputs=[(1).to_bytes(8, "little")])
        configured.script("DVSData_Data", outputs=[b"a" * 200 + b"\0"])
        assert resolve(self.function, b"portset-0", 130) == (0, b"a" * 128 + b"##")

    def test_every_switch_is_asked_until_one_matches(self, configured, resolve):
        with configured.recording() as calls:
            resolve(self.function, b"nobody", 128)
        asked = [call.arguments[0] for call in calls if call.operation == "DVSState_HostPropLookup"]
        assert len(asked) == 4
        with configured.recording() as calls:
            resolve(self.function, b"portset-0", 128)
        asked = [call.arguments[0] for call in calls if call.operation == "DVSState_HostPropLookup"]
        assert asked == [PRODUCTION.decode()]


class TestPortExist:
    @pytest.fixture
    def port_exist(self, exported):
        function = exported.DVPortExist
        function.restype = ctypes.c_int
        function.argtypes = [ctypes.c_size_t] * 6
        return function

    def test_passes_its_arguments_unchanged(self, host, port_exist):
        arguments = [1, 2, 3, 0xFFFFFFFFFFFFFFFF, 5, 1 << 63]
        host.script("DVSState_PortFind", HANDLE)
        with host.recording() as calls:
            assert port_exist(*arguments) == 1
        assert calls == [Call("DVSState_PortFind", arguments)]

    def test_a_handle_of_high_bits_only_is_a_port(self, host, port_exist):
        host.script("DVSState_PortFind", 1 << 40)
        assert port_exist(0, 0, 0, 0, 0, 0) == 1

    def test_no_port(self, host, port_exist):
        host.script("DVSState_PortFind", 0)
        assert port_exist(1, 2, 3, 4, 5, 6) == 0

    @pytest.mark.parametrize("name, exists", [(b"vnic3", 1), (b"vnic99", 0)])
    def test_embedded_host(self, configured, port_exist, name, exists):
        texts = [ctypes.create_string_buffer(text) for text in (PRODUCTION, name)]
        assert port_exist(*[ctypes.addressof(text) for text in texts], 0, 0, 0, 0) == exists
