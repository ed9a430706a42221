"""What the ways written in Python share: names, the texts of flows, and requests for them."""

import socket
import struct
import sys

REPRESENTORS = ("REP.INV REP.M2VF REP.M2PHY REP.M2UPT REP.M3VF REP.M3PHY REP.M3PF REP.M3UPT REP.M3EMU REP.M3MUXPF "
                "REP.P4SHRD REP.P4PHY REP.P4EMU REP.P4VF REP.P4PF REP.P4NIC").split()
PASS_THROUGH_REPRESENTORS = [name + ".PT" if name in ("REP.M2UPT", "REP.M3UPT", "REP.M3EMU", "REP.P4EMU") else name
                             for name in REPRESENTORS]


def client_name(client_type, representor_type, flags):
    is_pass_through = flags & 1
    if client_type == 1:
        return "VNIC.PT" if is_pass_through else "VNIC"
    if client_type == 2:
        return "UPLINK"
    if client_type == 3:
        return "GENERIC"
    if client_type == 4:
        names = PASS_THROUGH_REPRESENTORS if is_pass_through else REPRESENTORS
        return names[representor_type] if representor_type < len(names) else "REP.UNKN"
    return "UNKNOWN"


FLOW_KEY = struct.Struct("<6s6sBBBBHHHBB16s16s")


def key_text(key):
    """The text of the 64 bytes of a flow's key."""
    (first, second, flags, vlan_high, tag_low, tag_high, first_port, second_port, vni_low, vni_high, protocol,
     first_address, second_address) = FLOW_KEY.unpack_from(key)
    layer = 4 if flags & 1 else 3 if flags & 8 else 2
    if layer < 3:
        first_address = second_address = bytes(16)
    if layer < 4:
        first_port = second_port = protocol = 0
    if flags & 2:
        addresses = socket.inet_ntop(socket.AF_INET6, first_address), socket.inet_ntop(socket.AF_INET6, second_address)
    else:
        addresses = "%u.%u.%u.%u" % tuple(first_address[:4]), "%u.%u.%u.%u" % tuple(first_address[4:8])
    if protocol not in (1, 58):
        first_port, second_port = socket.ntohs(first_port), socket.ntohs(second_port)
    return "L%u  %s  %s  %-4u  %-7u  %-45s  %-45s  %-5u  %-7u  %-12u  %-12u" % (
        layer, first.hex(":"), second.hex(":"), vlan_high << 4 | flags >> 4, (tag_high & 0x7F) << 8 | tag_low,
        *addresses, protocol, vni_high << 16 | vni_low, first_port, second_port)


NAMED_ACTIONS = {
    3: "LRO; ", 4: "IPFIX Ingress; ", 5: "DROP; ", 8: "SP; ", 11: "VR; ", 13: "PR; ", 16: "GVLAN Insert; ",
    19: "DMAC; ", 23: "GENEVE DECAP; ", 24: "VXLAN DECAP; ", 27: "GVLAN Remove; ", 30: "IPFIX Egress; ",
    34: "InnerLookup; ", 35: "L3 Vlan Routed; ", 36: "LTA; ", 37: "MetaFlow; ",
}
# By bit: the format, and where in the group which kind of number lies.
NUMBERED_ACTIONS = {
    2: ("KCPInputChildPort: %u; ", struct.Struct("<I"), 168),
    10: ("VI: %u; ", struct.Struct("<H"), 50),
    12: ("PI: %u; ", struct.Struct("<B"), 48),
    18: ("Mirror Ingress: %u; ", struct.Struct("<B"), 56),
    22: ("VNI: %u; ", struct.Struct("<I"), 52),
    32: ("Mirror Egress: %u; ", struct.Struct("<B"), 57),
    33: ("KCPOutputVLAN: %u; ", struct.Struct("<H"), 166),
}
AREA = struct.Struct("<8xQ8x7s9xQIIHBB32xI20xIQ")
ENTRY = struct.Struct("<8xBB6xQQQQ64s")
GROUP = struct.Struct("<16xQH")
AREA_OFFSET, TAIL_BYTES, TEXT_BYTES = 112, 122, 512


class DoesNotFit(Exception):
    pass


def flow_dict(page, offset, group_offset):
    """A flow whose entry lies at an offset of a page's bytes, as a dict; and the length of its entry."""
    is_source, is_destination, source, destination, hardware_hits, hardware_bytes, key = ENTRY.unpack_from(page, offset)
    area = offset + AREA_OFFSET
    (generation, software_hits, software_bytes, group_flags, invalidations, length, groups, ports, offload,
     hardware_index, software_index) = AREA.unpack_from(page, area)
    group, tail = area + group_offset, area + length - TAIL_BYTES

    text = ""
    if offload & 1:
        text += "OL; "
        if offload & 1 << 14 and offload & 1 << 12:
            text += "swFlowIdx: %s; hwFlowIdx: N/A; " % (hex(software_index) if software_index else "(nil)")
        elif offload & 1 << 12:
            text += "swFlowIdx: %u; hwFlowIdx: %u; " % (software_index & 0xFFFFFFFF, hardware_index)
    if group_flags & 1 << 6:
        text += "MC: inval(s):%u cg:%u len:%u; flag %#x n_ag:%u n_dp:%u" % (invalidations, generation, length,
                                                                        group_flags, groups, ports)
    else:
        bitmap, port = GROUP.unpack_from(page, group)
        text += "bmap:%s inval(s):%u cg:%u dp:%s len:%u; " % (
            c_hex(bitmap), invalidations, generation, c_hex(port) if bitmap & 1 << 7 else "-", length)
        while bitmap:
            if len(text) >= TEXT_BYTES:
                raise DoesNotFit
            bit = (bitmap & -bitmap).bit_length() - 1
            bitmap &= bitmap - 1
            if bit in NAMED_ACTIONS:
                text += NAMED_ACTIONS[bit]
                if bit == 5:
                    break
            elif bit in NUMBERED_ACTIONS:
                form, number, place = NUMBERED_ACTIONS[bit]
                text += form % number.unpack_from(page, group + place)
            elif bit == 6:
                text += "DFW on srcPort, ctCtxId: %s; " % c_hex(source) if is_source else "DFW on srcPort; "
            elif bit == 31:
                text += "DFW on dstPort, ctCtxId: %s; " % c_hex(destination) if is_destination else "DFW on dstPort; "
            elif bit == 20:
                text += routing(page, tail, text)
            elif bit in (25, 26):
                name, place = ("GENEVE", 0) if bit == 25 else ("VXLAN", 8)
                text += "VNI: %u; " % struct.unpack_from("<I", page, group + 52)
                text += "%s ENCAP VNI: %u; " % (name, int.from_bytes(page[tail + place:tail + place + 3], "big"))
    return {"key": key_text(key), "actions": text[:TEXT_BYTES - 1], "swHits": int.from_bytes(software_hits, "little"),
            "swBytes": software_bytes, "hwHits": hardware_hits, "hwBytes": hardware_bytes}, AREA_OFFSET + length


def c_hex(number):
    return "%#x" % number if number else "0"


def routing(page, tail, before):
    count = page[tail + 12]
    text = "VDR inst: %u; " % count
    for i in range(count):
        if len(before) + len(text) >= TEXT_BYTES:
            raise DoesNotFit
        place = tail + 30 + i * 32
        text += "INST %u: 0x%x; " % (i + 1, int.from_bytes(page[place:min(place + 4, tail + TAIL_BYTES)], "little"))
    return text


def flow_request(request, arguments):
    """Fills a request; the message of what cannot be read."""
    (request.selector, request.lcore, request.start_index, request.option, request.filters_source, source_mac,
     request.filters_destination, destination_mac, source_version, source, destination_version,
     destination) = arguments[:12]
    if request.filters_source:
        request.source_mac[0:6] = bytes.fromhex(source_mac.replace(":", ""))
    if request.filters_destination:
        request.destination_mac[0:6] = bytes.fromhex(destination_mac.replace(":", ""))
    for version, text, out, side in ((source_version, source, request.source_ip, "source"),
                                     (destination_version, destination, request.destination_ip, "destination")):
        if version:
            try:
                address = socket.inet_pton(socket.AF_INET if version == 4 else socket.AF_INET6, text)
            except OSError:
                return f"Failed to convert {side} IPv4 address to binary form.\n\n"
            out[0:len(address)] = address
    request.source_version, request.destination_version = source_version, destination_version
    request.filters[0:5] = arguments[12:17]
    return None


def flow_page(page, count, next_start_index, valid_bytes, group_offset):
    """The page's result from its bytes."""
    flows, offset = [], 24
    for _ in range(count):
        if offset + 688 > min(valid_bytes, len(page)):
            return refuse("Invalid response returned.\n")
        try:
            flow, length = flow_dict(page, offset, group_offset)
        except DoesNotFit:
            return refuse("Invalid action\nInvalid action\n")
        flows.append(flow)
        offset += length
    return {"startIndex": next_start_index, "list": flows}


def refuse(text):
    sys.stderr.write(text)
