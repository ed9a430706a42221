"""Calls through the operator layer: results as records, failures as exceptions."""

import pytest

import qdp


def test_result_is_made_of_records(host):
    ports = qdp.call("ListPorts", 0)
    assert type(ports) is list and {type(port) for port in ports} == {qdp.records.PortInfo}
    assert [vars(port) for port in ports] == qdp.call_raw("ListPorts", 0)


def test_printed_text_is_raised(host, capfd):
    with pytest.raises(qdp.Refused) as failure:
        qdp.methods.ListPorts(9)
    assert str(failure.value) == "ListPorts(9): Failed to retrieve list of ports."
    assert capfd.readouterr() == ("", "")
