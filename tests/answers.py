"""What the platform answers when there is nothing to list, and when there is one record, for each method that lists
records; the embedded host itself has many."""

import struct

NOTHING = b""  # the module's record stays zeroed

# A record in which every word is 1: so is its count, and so are the fields of its only entry.
ONES = b"\1\0\0\0" * 4096

# A port's configuration with one multicast address, one range of VLANs, and one of its 64 meta flow slots enabled.
ONE_OF_EACH = ONES[:256] + b"\1" + bytes(63) + ONES[:1024]

# An engine with one queue, whose id is no number that the interpreter has ready.
ONE_ENGINE = ONES[:32] + struct.pack("<H", 1000)

# A page of one flow, of which only the length of its actions is not zero.
ONE_FLOW = struct.pack("<8xIIII168xH", 1, 1, 10264, 0, 304)

# A hex dump of one byte behind its header.
ONE_BYTE = struct.pack("<IIQ", 17, 0, 0x1000) + b"\xab"

# Chunks of balancer statistics after which nothing follows: without an entry, and with one of a context.
FINISHED = 0xFFFFFFFF
NO_ENTRY = struct.pack("<III12x", FINISHED, FINISHED, 0)
ONE_CONTEXT = struct.pack("<III12xI", FINISHED, FINISHED, 1, 2) + ONES[:36]
