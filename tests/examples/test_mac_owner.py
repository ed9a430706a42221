"""The example that prints who owns a MAC address."""

import pytest

NAME = "switch-smartnic"


def owner(mac, source, vlan, switch, name, port, client):
    qdp_port = 0x04000000 + switch * 0x10000 + port
    keys = "macAddr knownFrom vlanID swID name qdpPortID portID clientType".split()
    return dict(zip(keys, [mac, source, vlan, switch, name, qdp_port, port, client]))


# Port 3 of a switch has VLAN 103 and three addresses nested in it; an uplink's neighbours are in VLANs from 100 on.
OWNERS = {
    "02:10:00:00:00:03": [
        owner("02:10:00:00:00:03", "own address", None, 0, "portset-0", 3, "VNIC"),
        owner("02:10:00:00:00:03", "MAC table", 103, 0, "portset-0", 3, "VNIC"),
    ],
    "02:20:00:01:03:02": [owner("02:20:00:01:03:02", "MAC table", 103, 1, "dvs-storage", 3, "VNIC")],
    "02:20:00:02:01:0b": [owner("02:20:00:02:01:0b", "MAC table", 103, 2, NAME, 1, "UPLINK")],
    "02:10:00:01:00:00": [owner("02:10:00:01:00:00", "own address", None, 1, "dvs-storage", 0, "UPLINK")],
}


@pytest.mark.parametrize("mac", OWNERS)
def test_json(rows, mac):
    assert rows("mac_owner.py", mac) == OWNERS[mac]


def test_addresses_in_the_order_that_they_are_given_in(rows):
    assert rows("mac_owner.py", *reversed(OWNERS)) == sum(reversed(OWNERS.values()), [])


@pytest.mark.parametrize("text", ["02:20:00:02:01:0B", "02-20-00-02-01-0b", "0220.0002.010b", "02200002010b"])
def test_forms_of_an_address(rows, text):
    assert rows("mac_owner.py", text) == OWNERS["02:20:00:02:01:0b"]


def test_text(printed):
    assert printed("mac_owner.py", "02:20:00:02:01:0b", "02:10:00:00:00:03") == f"""\
MAC address        known from   VLAN  switch  name{' ' * 11}  port  client
02:20:00:02:01:0b  MAC table    103        2  {NAME}     1  UPLINK
02:10:00:00:00:03  own address  -          0  portset-0{' ' * 6}     3  VNIC
02:10:00:00:00:03  MAC table    103        0  portset-0{' ' * 6}     3  VNIC
"""


def test_an_address_that_nobody_owns(run):
    done = run("mac_owner.py", "02:00:00:00:00:01", "02:20:00:01:03:02")
    assert (done.returncode, done.stderr) == (2, "mac_owner.py: no port owns 02:00:00:00:00:01\n")
    assert len(done.stdout.splitlines()) == 2


def test_a_port_that_has_gone_since(rows):
    """Its address is still in the table; which port it was, the datapath's own id tells."""
    prepare = """
import _libqdp
ports = _libqdp.ListPorts
_libqdp.ListPorts = lambda switch: [port for port in ports(switch) if port["portID"] != 3]
"""
    gone = dict(OWNERS["02:20:00:01:03:02"][0], portID=None, clientType=None)
    assert rows("mac_owner.py", "02:20:00:01:03:02", prepare=prepare) == [gone]


@pytest.mark.parametrize("text", ["02:20", "02 20 00 02 01 0b", "02:20:00:01:03:02:04", "0g:20:00:01:03:02", ""])
def test_what_is_no_address(run, text):
    done = run("mac_owner.py", text)
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.endswith(
        f"mac_owner.py: error: argument MAC: '{text}' is not a MAC address such as 02:20:00:00:03:01\n"
    )


def test_an_address_is_needed(run):
    done = run("mac_owner.py", "--json")
    assert (done.returncode, done.stdout) == (1, "")
    assert "the following arguments are required: MAC" in done.stderr
