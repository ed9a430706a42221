"""The process's memory: the bytes that are allocated, as the C library counts them, and how many there may be."""

import contextlib
import ctypes
import pathlib
import resource

# The sanitizers bring an allocator that does not count, and that no limit suits.
COUNTS_BYTES = "libasan" not in pathlib.Path("/proc/self/maps").read_text()


class _Allocated(ctypes.Structure):
    _fields_ = [(name, ctypes.c_size_t) for name in "arena b c hblks hblkhd d e uordblks f g".split()]


def bytes_in_use():
    mallinfo = ctypes.CDLL(None).mallinfo2
    mallinfo.restype = _Allocated
    allocated = mallinfo()
    return allocated.hblkhd + allocated.uordblks


@contextlib.contextmanager
def at_most(size):
    """The process's address space, in bytes."""
    soft, hard = resource.getrlimit(resource.RLIMIT_AS)
    resource.setrlimit(resource.RLIMIT_AS, (size if hard == resource.RLIM_INFINITY else min(size, hard), hard))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_AS, (soft, hard))
