"""Tests of anonymizing: nothing of the original is left, and the same becomes the same."""

import re

import pytest

from qdp.errors import QdpError
from qdp.snapshot import anonymize
from qdp.snapshot.anonymize import IPV4, IPV6, MAC, Anonymizer, Tokens, key_from
from qdp.snapshot.read import Snapshot

KEY = b"k" * 32


@pytest.fixture(scope="module")
def anonymized(written, tmp_path_factory):
    path = str(tmp_path_factory.mktemp("anonymous") / "anonymized.qdp")
    anonymize.anonymize(written, path, KEY)
    return path


def text_of(path, without_capture=False):
    with open(path) as file:
        return "".join(line for line in file if not (without_capture and line.startswith('{"capture')))


def originals(text):
    """Every address in a text, but those that name nothing."""
    import ipaddress

    macs = set(MAC.findall(text)) - anonymize.KEPT_MACS
    ips = set()
    for found in IPV4.findall(text) + [each.group() for each in IPV6.finditer(text)]:
        try:
            if not ipaddress.ip_address(found).is_unspecified:
                ips.add(found)
        except ValueError:
            pass
    return macs, ips


def test_no_original_is_left(written, anonymized):
    before = text_of(written, without_capture=True)
    after = text_of(anonymized)
    macs, ips = originals(before)
    assert len(macs) > 50 and len(ips) > 50
    for original in macs | ips | anonymize.names_in(Snapshot(written)):
        if original in after:  # as a part of a longer word alone
            assert not re.search(r"(?<![\w.:-])" + re.escape(original) + r"(?![\w.:-])", after), original


def test_captures_and_raw_tables_are_left_out_and_listed(anonymized):
    snapshot = Snapshot(anonymized)
    assert list(snapshot.capture()) == []
    assert set(snapshot.head["anonymized"]["leftOut"]) == anonymize.LEFT_OUT | {"capture"}
    assert snapshot.head["anonymized"]["replaced"] == ["ipv4", "ipv6", "mac", "name"]


def test_structure_stays(written, anonymized):
    before, after = Snapshot(written), Snapshot(anonymized)
    assert after.sections == before.sections
    plain = [len(ports) for ports in (before.call("ListPorts", (number,)) for number in range(3))]
    assert [len(after.call("ListPorts", (number,))) for number in range(3)] == plain
    assert before.call("GetPortStats", (0, 3)) == after.call("GetPortStats", (0, 3))
    assert len(set(after.aliases)) == len(before.aliases)


def test_same_key_gives_the_same_tokens(written, anonymized, tmp_path):
    again, other = str(tmp_path / "again"), str(tmp_path / "other")
    anonymize.anonymize(written, again, KEY)
    anonymize.anonymize(written, other, b"o" * 32)
    assert Snapshot(again).call("ListPorts", (0,)) == Snapshot(anonymized).call("ListPorts", (0,))
    assert Snapshot(other).call("ListPorts", (0,)) != Snapshot(anonymized).call("ListPorts", (0,))


def test_anonymized_twice_is_still_a_snapshot(anonymized, tmp_path):
    twice = str(tmp_path / "twice")
    anonymize.anonymize(anonymized, twice, KEY)
    assert Snapshot(twice).readings == 2


def test_tokens_have_the_form_of_what_they_stand_for():
    tokens = Tokens(KEY)
    assert re.fullmatch(r"02(:[0-9a-f]{2}){5}", tokens.mac("02:10:00:00:00:01"))
    assert tokens.mac("02-10-00-00-00-01") == tokens.mac("02:10:00:00:00:01") != tokens.mac("02:10:00:00:00:02")
    assert re.fullmatch(r"10(\.\d+){3}", tokens.ip("192.0.2.1"))
    assert tokens.ip("2001:db8::1") == tokens.ip("2001:db8:0::1")
    assert tokens.ip("2001:db8::1").startswith("fd00:")
    assert (tokens.mac("ff:ff:ff:ff:ff:ff"), tokens.ip("0.0.0.0"), tokens.ip("::")) == (
        "ff:ff:ff:ff:ff:ff",
        "0.0.0.0",
        "::",
    )
    assert (tokens.ip("300.1.1.1"), tokens.ip("1:2")) == ("300.1.1.1", "1:2")


@pytest.mark.parametrize(
    "text, left",
    [
        ("geneve:outer:02:10:00:00:00:00:inner:02:10:00:00:00:01", ["02:10:00:00:00:00", "02:10:00:00:00:01"]),
        ("L4  02:10:00:00:00:00  0  10.0.0.1   2001:db8::5  6", ["02:10", "10.0.0.1", "2001:db8::5"]),
        ("dvs-a/port/3/lro on dvs-a", ["dvs-a"]),
        ("[2001:db8::5]:443", ["2001:db8::5"]),
    ],
)
def test_texts(text, left):
    replaced = Anonymizer(Tokens(KEY), ["dvs-a"]).text(text)
    assert not [each for each in left if each in replaced]


def test_numbers_and_longer_names_stay():
    each = Anonymizer(Tokens(KEY), ["nic", "nic0"])
    assert each.text("nic01 1.2.3 12:30:45 rxDrops") == "nic01 1.2.3 12:30:45 rxDrops"
    assert each.value({"a": 5, "b": [None, True]}) == {"a": 5, "b": [None, True]}


def test_key_file(tmp_path):
    path = str(tmp_path / "key")
    key = key_from(path)
    assert len(key) == 32 and key_from(path) == key
    assert (tmp_path / "key").stat().st_mode & 0o777 == 0o600
    (tmp_path / "short").write_bytes(b"abc")
    with pytest.raises(OSError):
        key_from(str(tmp_path / "short"))
    assert key_from(None) != key_from(None)


def test_damaged_snapshot_is_not_anonymized(tmp_path):
    (tmp_path / "bad").write_text("bad")
    with pytest.raises(QdpError):
        anonymize.anonymize(str(tmp_path / "bad"), str(tmp_path / "out"), KEY)
    assert not (tmp_path / "out").exists()
