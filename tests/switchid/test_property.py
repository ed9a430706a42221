"""Settings that are kept in a switch's host properties."""

import pytest

from observe import Call, standard_error

KEY = "com.tarnix.wyx.qdp.burstsize"
PRODUCTION = "switch-production"


def read(core, *arguments):
    with standard_error() as error:
        value = core.setting("dvs-production", KEY, *arguments)
    return value, error.text


def test_a_setting_that_is_there(configured, core):
    configured.script("DVSHCK_HostPropGet", outputs=[b"\0\0\0\0\x07"])
    with configured.recording() as calls:
        assert read(core, 5) == (b"\0\0\0\0\x07", "")
    get, free = [call for call in calls if call.operation.startswith("DVSHCK")]
    assert get.arguments[:2] == [PRODUCTION, KEY]
    assert free.operation == "DVSHCK_DataFree"


@pytest.mark.parametrize("status", [0xBAD0003, 1, 0xFFFFFFFF])
def test_a_setting_that_is_not_there(configured, core, status):
    configured.fail("DVSHCK_HostPropGet", status)
    with configured.recording() as calls:
        assert read(core, 5) == ("absent", "")
    assert calls[-1].operation == "DVSHCK_HostPropGet"  # and nothing to release


@pytest.mark.parametrize("value", [b"\x01\0\0\0\x07", b"\0\0\0\x80\x07", b"\x01\0\0\0\x07\x08"])
def test_an_unknown_version_is_seen_before_the_length(configured, core, value):
    configured.script("DVSHCK_HostPropGet", outputs=[value])
    assert read(core, 5) == ("malformed", f"Format of property {KEY} value is from unknown version.\n")


def test_the_version_message_can_name_another_key(configured, core):
    configured.script("DVSHCK_HostPropGet", outputs=[b"\x01\0\0\0\x07"])
    assert read(core, 5, "other") == ("malformed", "Format of property other value is from unknown version.\n")


@pytest.mark.parametrize("value", [b"", b"\0", bytes(4), b"\0\0\0\0\x07\x08", bytes(24), bytes(0x10005)], ids=len)
def test_a_wrong_length(configured, core, value):
    configured.script("DVSHCK_HostPropGet", outputs=[value])
    assert read(core, 5, "other") == ("malformed", f"Property {KEY} value length is odd.\n")


def test_a_length_without_a_value(configured, core):
    """The library succeeds with a length and no value: it reads as zeros, and nothing is touched."""
    configured.script("DVSHCK_HostPropGet", sizes={0: 5})
    assert read(core, 5) == (bytes(5), "")
    configured.script("DVSHCK_HostPropGet", sizes={0: 6})
    assert read(core, 5) == ("malformed", f"Property {KEY} value length is odd.\n")


def test_an_unknown_alias(configured, core):
    with standard_error() as error:
        assert core.setting("nobody", KEY, 5) is None
    assert error.text == "Failed to find dvs ID for dvs alias nobody.\n"


def test_a_setting_is_written_with_its_flags_and_read_back(configured, core):
    with configured.recording() as calls:
        assert core.set_setting("dvs-production", KEY, b"\0\0\0\0\x20\0\0\0") is True
    assert calls[-1] == Call("DVSHCK_HostPropSet", [PRODUCTION, KEY, b"\0\0\0\0\x20\0\0\0", 16])
    assert read(core, 8) == (b"\0\0\0\0\x20\0\0\0", "")


def test_a_write_that_is_refused(configured, core):
    configured.fail("DVSHCK_HostPropSet", 9)
    with standard_error() as error:
        assert core.set_setting("dvs-production", KEY, b"\0" * 8) is False
    assert error.text == f"Failed to set DVS property {KEY}\n"
