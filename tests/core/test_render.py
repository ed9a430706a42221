"""Rendering of addresses, and reading them back."""

import ctypes
import socket

import pytest

MARGIN = b"#" * 8


def buffer_with(text, size):
    """A buffer of `size` bytes that a text is written into, and its margins."""
    written = text[: size - 1].encode() + b"\0" if size else b""
    return MARGIN + written.ljust(size, b"#") + MARGIN


class TestIPv4Column:
    def test_is_two_blanks_and_45_characters(self, core):
        assert core.column(bytes([10, 0, 0, 1]), 64) == (47, buffer_with("  10.0.0.1" + " " * 37, 64))

    def test_longest(self, core):
        assert core.column(b"\xff" * 4, 64) == (47, buffer_with("  255.255.255.255" + " " * 30, 64))

    @pytest.mark.parametrize("size", range(49))
    def test_is_cut_and_says_what_it_needed(self, core, size):
        whole = "  255.254.253.252" + " " * 30
        assert core.column(bytes([255, 254, 253, 252]), size) == (47, buffer_with(whole, size))


class TestIPv6Column:
    def test_of_the_unspecified_address(self, core):
        assert core.column(bytes(16), 64) == (47, buffer_with("  ::" + " " * 43, 64))

    def test_longest(self, core):
        assert core.column(b"\xab" * 16, 64) == (47, buffer_with("  " + "abab:" * 7 + "abab" + " " * 6, 64))

    def test_is_cut_and_says_what_it_needed(self, core):
        assert core.column(bytes(15) + b"\x01", 4) == (47, buffer_with("  ::1", 4))


class TestAddressParse:
    @pytest.mark.parametrize(
        "version, text, result, address",
        [
            (4, "10.1.2.3", 1, bytes([10, 1, 2, 3]) + bytes(12)),
            (6, "2001:db8::1", 1, socket.inet_pton(socket.AF_INET6, "2001:db8::1")),
            (0, "::1", 1, bytes(15) + b"\x01"),
            (6, "10.1.2.3", 0, bytes(16)),
            (4, "2001:db8::1", 0, bytes(16)),
            (4, "", 0, bytes(16)),
            (4, "10.1.2", 0, bytes(16)),
        ],
    )
    def test_family_follows_version(self, core, version, text, result, address):
        assert core.parsed_address(version, text) == (result, address)


class TestMACToStr:
    def test_writes_17_characters_and_a_nul_and_returns_the_output(self, exported):
        function = exported.MACToStr
        function.restype = ctypes.c_void_p
        function.argtypes = [ctypes.c_char_p, ctypes.c_void_p]
        out = ctypes.create_string_buffer(b"#" * 20, 20)
        assert function(bytes([0x0A, 0, 0xFF, 1, 2, 0xBC]), ctypes.addressof(out)) == ctypes.addressof(out)
        assert out.raw == b"0a:00:ff:01:02:bc\0##"


@pytest.mark.parametrize("word, count", [(0, 0), (1, 1), (1 << 63, 1), ((1 << 64) - 1, 64), (0xF0F0, 8)])
def test_bit_count(core, word, count):
    assert core.counted_bits(word) == count
