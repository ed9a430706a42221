"""Table reads as they go over the command channel."""

import struct

from observe import Call, Capacity

TABLE_READ = 11
FAILED = "Failed to get table data\n"


def read_at(table, index, entry_bytes):
    """The read of an entry by its index."""
    return Call("Qdp_P4_Cmd", [struct.pack("<HHHHI", 12, TABLE_READ, table, 4, index), Capacity(entry_bytes)])


def read_with(table, key, entry_bytes):
    """The read of an entry by its key."""
    request = struct.pack("<HHHH", 8 + len(key), TABLE_READ, table, len(key)) + key
    return Call("Qdp_P4_Cmd", [request, Capacity(entry_bytes)])
