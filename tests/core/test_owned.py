"""Clearing of large records: all of a block's bytes, and no others."""

import pytest

PAGE = 4096
BLOCK = 8 * PAGE


@pytest.mark.parametrize("size", [0, 1, PAGE - 1, PAGE, PAGE + 1, 3 * PAGE - 1, 3 * PAGE, 3 * PAGE + 1, 5 * PAGE + 100])
@pytest.mark.parametrize("offset", [0, 1, 16, PAGE - 1, PAGE, PAGE + 16, 2 * PAGE + 1])
@pytest.mark.parametrize("is_locked", [False, True])
def test_all_of_a_block_is_cleared_and_no_more(core, offset, size, is_locked):
    """Also of one whose pages the kernel does not take back."""
    assert core.cleared(offset, size, is_locked) == b"\xff" * offset + bytes(size) + b"\xff" * (BLOCK - offset - size)
