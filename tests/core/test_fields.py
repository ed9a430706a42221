"""Field tables: every kind of place and of converter, on bytes made by hand."""

import re
import struct
import subprocess

import pytest

from observe import Observer, Outcome, exact

MEMBERS = struct.pack(
    "<BHIQbiq8s6sB4H",
    0xFE,
    0xFEDC,
    0xFEDCBA98,
    0xFEDCBA9876543210,
    -2,
    -3,
    -4,
    b"nic0\0xyz",
    bytes([0x02, 0x1B, 0x0A, 0xFF, 0x10, 0x01]),
    3,
    0xFFFF,
    2,
    3,
    4,
)


def test_members_take_their_place_from_the_record(core):
    assert exact(core.members(MEMBERS)) == exact(
        {
            "i64": -4,
            "u8": 0xFE,
            "u16": 0xFEDC,
            "u32": 0xFEDCBA98,
            "u64": 0xFEDCBA9876543210,
            "u64 signed": 0xFEDCBA9876543210 - (1 << 64),
            "u64 low": 0x76543210,
            "i8": -2,
            "i32": -3,
            "u8 twice": 0x1FC,
            "name": "nic0",
            "mac": "02:1b:0a:ff:10:01",
            "numbers": [0xFFFF, 2, 3],
            "second number": 2,
        }
    )


def test_a_text_without_a_nul_ends_with_its_field(core):
    full = MEMBERS.replace(b"nic0\0xyz", b"12345678")
    assert core.members(full)["name"] == "12345678"


def test_a_text_that_is_not_utf_8_is_a_value_that_cannot_be_made(core):
    with pytest.raises(SystemError, match="^Failed to allocate buffer.\n$"):
        core.members(MEMBERS.replace(b"nic0\0xyz", b"ni\xff\xfe\0\0\0\0"))


@pytest.mark.parametrize("result", ["members_or_none", "members_or_null"])
def test_a_dict_as_the_result_of_a_method(core, result):
    assert exact(getattr(core, result)(MEMBERS)) == exact(core.members(MEMBERS))


@pytest.mark.parametrize(
    "result, failure",
    [
        ("members_or_none", Outcome(left_set=(SystemError, "Failed to allocate buffer.\n"))),
        ("members_or_null", Outcome(raised=(SystemError, "Failed to allocate buffer.\n"))),
    ],
)
def test_a_dict_that_cannot_be_filled(core, host, result, failure):
    broken = MEMBERS.replace(b"nic0\0xyz", b"ni\xff\xfe\0\0\0\0")
    assert Observer(core, host).call(result, broken) == failure


def test_a_list_is_as_long_as_its_count_says(core):
    counted = bytearray(MEMBERS)
    counted[42] = 0
    assert core.members(bytes(counted))["numbers"] == []
    # Four numbers are in the record; beyond it there is nothing but zeros.
    counted[42] = 7
    assert core.members(bytes(counted))["numbers"] == [0xFFFF, 2, 3, 4, 0, 0, 0]


def entry(**places):
    made = bytearray(40)
    for place, content in places.items():
        offset = int(place[1:])
        made[offset : offset + len(content)] = content
    return bytes(made)


def test_bits_of_an_empty_entry(core):
    assert exact(core.entry(entry())) == exact(
        {
            "bit 0": 0,
            "bit 7": 0,
            "across bytes": 0,
            "top of word": 0,
            "five bytes": 0,
            "all 64": 0,
            "big 16": 0,
            "big 32": 0,
            "big 64": 0,
            "signed big 16": 0,
            "signed big 64": 0,
            "layer": "L2",
            "is ipv6": 0,
            "address": "0.0.0.0",
            "mac": "00:00:00:00:00:00",
            "last": 0,
        }
    )


def test_bits_of_an_entry_of_ones(core):
    assert exact(core.entry(b"\xff" * 40)) == exact(
        {
            "bit 0": 1,
            "bit 7": 1,
            "across bytes": (1 << 17) - 1,
            "top of word": 63,
            "five bytes": (1 << 33) - 1,
            "all 64": (1 << 64) - 1,
            "big 16": 0xFFFF,
            "big 32": 0xFFFFFFFF,
            "big 64": (1 << 64) - 1,
            "signed big 16": -1,
            "signed big 64": -1,
            "layer": "Unknown",
            "is ipv6": 1,
            "address": "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff",
            "mac": "ff:ff:ff:ff:ff:ff",
            "last": 255,
        }
    )


@pytest.mark.parametrize("bit", range(64))
def test_a_walking_bit_is_seen_in_its_own_fields_only(core, bit):
    decoded = core.entry(entry(b0=(1 << bit).to_bytes(8, "little")))

    def field(lowest, count):
        return 1 << (bit - lowest) if lowest <= bit < lowest + count else 0

    assert decoded["bit 0"] == field(0, 1)
    assert decoded["bit 7"] == field(7, 1)
    assert decoded["across bytes"] == field(5, 17)
    assert decoded["top of word"] == field(26, 6)
    assert decoded["five bytes"] == field(4 * 8 + 3, 33)


def test_network_byte_order(core):
    decoded = core.entry(entry(b8=bytes(range(1, 9))))
    assert decoded["all 64"] == 0x0807060504030201
    assert decoded["big 16"] == 0x0102
    assert decoded["big 32"] == 0x01020304
    assert decoded["big 64"] == 0x0102030405060708
    assert decoded["signed big 16"] == 0x0102
    assert decoded["signed big 64"] == 0x0102030405060708


def test_the_sign_in_network_byte_order_is_in_the_first_byte(core):
    negative = core.entry(entry(b8=b"\x80\0\0\0\0\0\0\x01"))
    assert (negative["signed big 16"], negative["signed big 64"]) == (-0x8000, 1 - (1 << 63))
    positive = core.entry(entry(b8=b"\x7f\x80\0\0\0\0\0\xff"))
    assert (positive["signed big 16"], positive["signed big 64"]) == (0x7F80, 0x7F800000000000FF)


@pytest.mark.parametrize("code, name", [(0, "L2"), (1, "L3"), (2, "L4"), (3, "Unknown"), (7, "Unknown")])
def test_names_of_codes(core, code, name):
    assert core.entry(entry(b16=bytes([code])))["layer"] == name


def test_addresses_follow_their_family(core):
    address = bytes([10, 0, 0, 1]) + bytes(11) + b"\x01"
    assert core.entry(entry(b17=address))["address"] == "10.0.0.1"
    assert core.entry(entry(b16=b"\x08", b17=address))["address"] == "a00:1::1"


def test_macs_are_two_lower_case_digits_a_byte(core):
    assert core.entry(entry(b33=bytes([10, 0, 0xAB, 1, 2, 0xF0])))["mac"] == "0a:00:ab:01:02:f0"


@pytest.mark.parametrize("length", range(40))
def test_bytes_beyond_an_answer_read_as_zero(core, length):
    ones = b"\xff" * length
    assert exact(core.entry(ones)) == exact(core.entry(ones + bytes(40 - length)))


def test_entries_lie_back_to_back(core):
    made = core.entries(entry(b39=b"\x01") + entry(b39=b"\x02"), 2)
    assert [each["last"] for each in made] == [1, 2]


def test_entries_beyond_an_answer_read_as_zero(core):
    made = core.entries(b"\xff" * 50, 3)
    assert exact(made) == exact(
        [core.entry(b"\xff" * 40), core.entry(b"\xff" * 10 + bytes(30)), core.entry(bytes(40))]
    )


@pytest.mark.parametrize("length", range(2 * 40, 3 * 40 + 10))
def test_entries_of_an_answer_that_ends_anywhere(core, length):
    answer = bytes(range(1, 131))[:length]
    whole = answer.ljust(3 * 40, b"\0")
    assert core.entries(answer, 3) == [core.entry(whole[at : at + 40]) for at in (0, 40, 80)]


def test_no_entries(core):
    assert core.entries(b"", 0) == []


# What a compiler says of a table, by the line in which the table stands.
TABLES = """\
#include "core/fields.h"
using namespace qdp;
extern constexpr auto right = fields<8>({{"a", bytes(0, 4)}, {"b", bits(4, 3, 29)}});
extern constexpr auto leaving = fields<8>({{"a", bytes(0, 4)}, {"b", bytes(5, 4)}});
extern constexpr auto without_width = fields<8>({{"a", bits(0, 3, 0)}});
extern constexpr auto too_wide = fields<16>({{"a", bits(0, 1, 64)}});
extern constexpr auto wrong_size = fields<64>({{"a", bytes(0, 8), as_mac}});
extern constexpr auto repeating = fields<8>({{"a", bytes(0, 1)}, {"b", bytes(1, 1)}, {"a", bytes(2, 1)}});
"""
REASONS = {
    4: "a_field_leaves_its_record",
    5: "a_field_has_no_width",
    6: "a_field_is_wider_than_a_word",
    7: "a_field_has_the_wrong_size",
    8: "a_field_repeats_a_key",
}


@pytest.mark.parametrize("compiler", ["g++", "clang++"])
def test_wrong_tables_do_not_compile(root, compiler):
    python = subprocess.run(
        ["/usr/bin/python3-config", "--includes"], capture_output=True, text=True, check=True
    ).stdout.split()
    compiled = subprocess.run(
        [
            compiler,
            "-std=c++20",
            "-fsyntax-only",
            "-DPy_LIMITED_API=0x03060000",
            f"-I{root}/src",
            *python,
            "-xc++",
            "-",
        ],
        input=TABLES,
        capture_output=True,
        text=True,
    )
    assert compiled.returncode != 0
    found, line = {}, None
    for report in compiled.stderr.splitlines():
        place = re.match(r"<stdin>:(\d+):", report)
        line = int(place[1]) if place else line
        reason = re.search(r"non-.?constexpr.? function .(?:void qdp::)?(a_field_\w+)", report)
        if place and line not in found:
            found[line] = set()  # something is said of this line
        if reason:
            found[line].add(reason[1])
    assert found.pop(1, set()) == set()  # g++ says where the header is included
    assert found == {line: {reason} for line, reason in REASONS.items()}
