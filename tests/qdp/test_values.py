"""Values as callers write them: what is refused, and how they are packed."""

import ipaddress

import pytest

import qdp
from qdp.values import address_halves, bits_of, described, ip_address, mac_number, mac_number_reversed, mac_text
from qdp.values import switch_and_vlan, within


@pytest.mark.parametrize("mac", ["02:00:5e:10:ab:01", "02-00-5E-10-AB-01", "0200.5e10.ab01", "02005e10ab01"])
def test_mac_address_in_any_form(mac):
    assert mac_text(mac) == "02:00:5e:10:ab:01"
    assert mac_number(mac) == 0x02005E10AB01
    assert mac_number_reversed(mac) == 0x01AB105E0002


@pytest.mark.parametrize(
    "mac", ["", "02:00:5e:10:ab", "02:00:5e:10:ab:01:02", "02:00:5e:10:ab:0x", "02 00 5e 10 ab 01", 5, None]
)
def test_text_that_is_no_mac_address_is_refused(mac):
    with pytest.raises(qdp.InvalidArgument, match="a MAC address is six bytes"):
        mac_text(mac)


def test_halves_of_addresses():
    assert address_halves(ip_address("10.0.0.1")) == (0x0A000001, 0)
    assert address_halves(ip_address("255.255.255.255")) == (0xFFFFFFFF, 0)
    # The low half has its highest bit set, and so is negative.
    assert address_halves(ip_address("2001:db8::8000:0:0:1")) == (-(1 << 63) + 1, 0x20010DB800000000)
    assert address_halves(ip_address(ipaddress.ip_address("fe80::"))) == (0, 0xFE80000000000000 - (1 << 64))


@pytest.mark.parametrize("address", ["", "10.0.0", "10.0.0.256", 7, None, "dvs"])
def test_text_that_is_no_address_is_refused(address):
    with pytest.raises(qdp.InvalidArgument):
        ip_address(address)


def test_switch_lies_in_the_upper_half_of_the_vlan_argument():
    assert switch_and_vlan(5, 100) == (0, 0x00050064)
    assert switch_and_vlan(0, 0) == (0, 0)
    for switch, vlan in [(16, 1), (-1, 1), (0, 4095), (0, -1), (0, 1 << 16), (True, 1)]:
        with pytest.raises(qdp.InvalidArgument):
            switch_and_vlan(switch, vlan)


def test_numbers_are_taken_as_they_are():
    class Eight:
        def __index__(self):
            return 8

    assert within("a number", Eight(), range(9)) == 8
    for value in (9, -1, 8.0, "8", None, True):
        with pytest.raises(qdp.InvalidArgument) as failure:
            within("a number", value, range(9))
        assert str(failure.value) == f"a number is 0 to 8, not {value!r}"
        assert failure.value.hint == "give 0 to 8; nothing was changed"


def test_ranges_in_words():
    assert described(range(0, 129, 32)) == "0 to 128 in steps of 32"
    assert described((True, False)) == "True or False"


def test_lcores_of_a_mask():
    assert bits_of(0b1011) == [0, 1, 3]
    assert bits_of(-(1 << 63) + 1) == [0, 63]
