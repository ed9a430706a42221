"""The entries of the hardware tables, field by field, and what each shows: an account of its own, which shares nothing
with the module's.

One line a key, in the order of the dict: key, byte, lowest bit, number of bits, and how it is shown if not as a number.
"""

import socket
from collections import namedtuple

FLOW_KEY_TYPES = ["L2", "L3", "L4", "Unknown", "Unknown", "Unknown", "Unknown", "Unknown"]
FORWARDING_MODES = ["classic", "flow"] + ["classic"] * 6
APPLICATIONS = [
    "default", "classic nic", "rdma", "tcptls", "ipsec", "storage", "elemetry", "cpu", "raw redir", "p4pt",
    "ipsec transport", "kovnet3 upt",
] + ["unknown"] * 244  # fmt: skip

Field = namedtuple("Field", "key byte bit width kind")


class Layout:
    def __init__(self, size, text, short_unless=None):
        """short_unless: a one-bit key; where it is 0 the dict ends with it."""
        self.size = size
        self.short_unless = short_unless
        self.fields = []
        for line in text.split("\n"):
            if words := line.split():
                key, byte, bit, width, *kind = words
                self.fields.append(Field(key, int(byte), int(bit), int(width), kind[0] if kind else "number"))
        assert all(each.byte * 8 + each.bit + each.width <= size * 8 for each in self.fields)

    def number(self, field, entry):
        return int.from_bytes(entry, "little") >> (field.byte * 8 + field.bit) & ((1 << field.width) - 1)

    def named(self, key):
        return next(each for each in self.fields if each.key == key)

    def shown(self, field, entry):
        number = self.number(field, entry)
        raw = entry[field.byte : field.byte + field.width // 8]
        if field.kind == "number":
            return number
        if field.kind == "signed":
            return number - (1 << 64) if number >= 1 << 63 else number
        if field.kind == "mac":
            return ":".join(f"{byte:02x}" for byte in raw)
        if field.kind == "address":
            is_ipv6 = self.number(self.named("isIpv6"), entry)
            return socket.inet_ntop(socket.AF_INET6, raw) if is_ipv6 else socket.inet_ntop(socket.AF_INET, raw[:4])
        if field.kind == "levels":
            words = [int.from_bytes(raw[i : i + 8], "little", signed=True) for i in range(0, 64, 8)]
            return words
        return {"flow_key_type": FLOW_KEY_TYPES, "forwarding_mode": FORWARDING_MODES, "application": APPLICATIONS}[
            field.kind
        ][number]

    def decoded(self, entry):
        """The dict that a reader makes of an entry; what a short entry lacks is zero."""
        entry = entry.ljust(self.size, b"\0")
        decoded = {}
        for field in self.fields:
            decoded[field.key] = self.shown(field, entry)
            if field.key == self.short_unless and not decoded[field.key]:
                break
        return decoded

    def backgrounds(self):
        """Entries that a bit walks over: the empty one, and one for each flag that other keys depend on."""
        yield bytes(self.size)
        for key in {self.short_unless, "isIpv6"} & {each.key for each in self.fields}:
            flag = self.named(key)
            yield (1 << (flag.byte * 8 + flag.bit)).to_bytes(self.size, "little")


TRAFFIC = """
    rxUcastBytes            0  0  64  signed
    rxUcastPkts             8  0  64  signed
    rxMcastBytes           16  0  64  signed
    rxMcastPkts            24  0  64  signed
    rxBcastBytes           32  0  64  signed
    rxBcastPkts            40  0  64  signed
    rxUcastDropBytes       64  0  64  signed
    rxUcastDropPkts        72  0  64  signed
    rxMcastDropBytes       80  0  64  signed
    rxMcastDropPkts        88  0  64  signed
    rxBcastDropBytes       96  0  64  signed
    rxBcastDropPkts       104  0  64  signed
    txUcastBytes          128  0  64  signed
    txUcastPkts           136  0  64  signed
    txMcastBytes          144  0  64  signed
    txMcastPkts           152  0  64  signed
    txBcastBytes          160  0  64  signed
    txBcastPkts           168  0  64  signed
    txUcastDropBytes      192  0  64  signed
    txUcastDropPkts       200  0  64  signed
    txMcastDropBytes      208  0  64  signed
    txMcastDropPkts       216  0  64  signed
    txBcastDropBytes      224  0  64  signed
    txBcastDropPkts       232  0  64  signed
"""

PORT_STATS = Layout(256, TRAFFIC)

LIF_STATS = Layout(384, TRAFFIC + """
    rxQueueDisabled       256  0  64  signed
    rxQueueEmpty          264  0  64  signed
    rxQueueError          272  0  64  signed
    rxDescFetchError      280  0  64  signed
    rxDescDataError       288  0  64  signed
    txQueueDisabled       320  0  64  signed
    txQueueError          328  0  64  signed
    txDescFetchError      336  0  64  signed
    txDescDataError       344  0  64  signed
""")  # fmt: skip

P4_INGRESS = Layout(64, """
    rxFromHost              0  0  64  signed
    rxFromSwitch            8  0  64  signed
    rxFromCpu              16  0  64  signed
    rxUserCsumErr          24  0  64  signed
    rxSubstrateCsumErr     32  0  64  signed
    rxMalformed            40  0  64  signed
""")  # fmt: skip

P4_EGRESS = Layout(64, """
    txToHost                0  0  64  signed
    txToSwitch              8  0  64  signed
    txToCpu                16  0  64  signed
    flowMiss               24  0  64  signed
    connTrackRedir         32  0  64  signed
    wrongReinject          40  0  64  signed
    drop                   48  0  64  signed
""")  # fmt: skip

INPUT = Layout(20, """
    lifId                   0  0  16
    portId                  2  0  16
    pinnedPortId           10  0  16
    l2Seg                  12  0  16
    isUplink               17  1   1
    isP2P                  17  2   1
    skipUkucRepl           17  3   1
    isWyxValid             17  0   1
    wyxPortId               4  0  16
    repPortId               6  0  16
    srcTag                  8  0  16
    pktCapture             16  4   1
    useVlanMapping         16  3   1
    flowKeyType            16  0   3  flow_key_type
    fwdMode                16  5   3  forwarding_mode
""", short_unless="isWyxValid")  # fmt: skip

OUTPUT = Layout(16, """
    portId                  0  0  16
    lifId                   2  0  16
    dstTag                  4  0  16
    vlanStrip               6  0   1
    pktCapture              6  1   1
    rssInner                6  2   1
    vlanPush                6  3   1
    hckMetadata             6  4   1
    nports                  6  5   3
    egressPort1             8  0   8
    egressPort2             9  0   8
    vlanPushId             10  0  16
    accessVlanId           12  0  16
    rssOverride            14  0   8
    rssOverrideQid         15  0   8
    p4plusAppId             7  0   8  application
""")  # fmt: skip

MUX_VLAN = Layout(16, """
    vlanId                  0  0  16
    valid                  12  4   1
    lif0                    2  0  16
    lif1                    4  0  16
    srcPortId               6  0  16
    repPortId              10  0  16
    srcTag                  8  0  16
    pktCapture             12  3   1
    flowKeyType            12  0   3  flow_key_type
""")  # fmt: skip

VLAN_MAP = Layout(4, """
    rmac_vrf                0  0  16
    l2Seg                   2  0  16
""")  # fmt: skip

L2_SEGMENT = Layout(4, """
    host_rcvr_ukuc          0  0   1
    host_rcvr_ukmc          0  1   1
    host_rcvr_bcast         0  2   1
    replicate_idx           2  0  16
""")  # fmt: skip

REGISTERED_MAC = Layout(8, """
    dstPort                 0  0  16
    dstPinnedPort           2  0  15
    multicastEn             3  7   1
    qid                     4  0  32
""")  # fmt: skip

IPFIX = Layout(24, """
    pkts                    0  0  64  signed
    bytes                   8  0  64  signed
    tcpFlags               16  0   8
""")  # fmt: skip

CT_STATS = Layout(64, """
    passBytes0              0  0  64  signed
    passPkts0               8  0  64  signed
    dropBytes0             16  0  64  signed
    dropPkts0              24  0  64  signed
    passBytes1             32  0  64  signed
    passPkts1              40  0  64  signed
    dropBytes1             48  0  64  signed
    dropPkts1              56  0  64  signed
""")  # fmt: skip

CT_STATE = Layout(24, """
    sloppy                 23  1   1
    srcSeqlo                0  0  32
    srcSeqhi                4  0  32
    srcMaxWin               8  0  16
    srcState               10  0   4
    srcWscale              10  4   4
    dstSeqlo               12  0  32
    dstSeqhi               16  0  32
    dstMaxWin              20  0  16
    dstState               11  0   4
    dstWscale              11  4   4
    swState                22  0   8
    ctLog                  23  0   1
""")  # fmt: skip

MIRROR = Layout(24, """
    dstPort                 0  0  16
    reason                  8  0   8
    tunnelVNI               9  0  24
    geneveOptionVld        12  0   1
    tunnelRewriteVld       12  1   1
    pktCapture             12  2   1
    mirrorSW               12  3   1
    mirrorL3               12  4   1
    vlanPush               12  5   1
    TunnelIdx              12  7  13
    vlanID                 14  4  12
    flowCookie             16  0  32
    uplinkLport0           20  0  16
    uplinkLport1           22  0  16
    geneveOptionDMAC        2  0  48  mac
""")  # fmt: skip

MIRROR_L3 = Layout(64, """
    l3Idx                   0  0  16
    mirrorType              2  0   2
    isIpv6                  2  2   1
    vlanVld                 2  3   1
    trunVld                 2  4   1
    cos                     2  5   3
    l2Type                  3  0   2
    erspanTSNs              3  2   1
    vlanID                 16  0  16
    trunLen                18  0  16
    tc                     20  0   8
    ttl                    21  0   8
    erspanHwId             22  0   6
    erspanSessionId        22  6  10
    greKeySeq              24  0  32
    smac                    4  0  48  mac
    dmac                   10  0  48  mac
    ipsa                   32  0 128  address
    ipda                   48  0 128  address
""")  # fmt: skip

TUNNEL_TERMINATION = Layout(2, """
    vtepIdx                 0  0   8
    valid                   1  0   8
""")  # fmt: skip

TUNNEL_SA = Layout(4, """
    outerFlowId             0  0  16
    valid                   2  0   8
""")  # fmt: skip

TUNNEL_REWRITE = Layout(52, """
    isIpv6                  0  0   1
    geneve                  0  1   1
    vlanVld                 0  2   1
    tcCopy                  0  3   1
    labelOptVld             0  4   1
    labelID                 0  5  17
    l2Type                  2  6   2
    vlanID                  4  0  16
    tc                      6  0   8
    ttl                     7  0   8
    smac                    8  0  48  mac
    dmac                   14  0  48  mac
    ipsa                   20  0 128  address
    ipda                   36  0 128  address
""")  # fmt: skip

DSCP = Layout(4, """
    ipv4DscpMask            0  0   8
    ipv4DscpValue           1  0   8
    ipv6DscpMask            2  0   8
    ipv6DscpValue           3  0   8
""")  # fmt: skip

UPLINK_MAP = Layout(16, """
    lport0                  0  0  16
    lport0_tag              8  0  16
    lport1                  2  0  16
    lport1_tag             10  0  16
    lport2                  4  0  16
    lport2_tag             12  0  16
    lport3                  6  0  16
    lport3_tag             14  0  16
""")  # fmt: skip

FLOW_KEY = Layout(4, """
    flowIndex               0  0  32
""")  # fmt: skip

FLOW_INFO = Layout(56, """
    flowIdx                 0  0  32
    dstPort                 4  0  16
    count                   8  0  64  signed
    timeStamp              16  0  32
    srcTag                 20  0  16
    dstTag                 22  0  16
    vdrTtlCheck            24  0   1
    vdrVld                 24  1   1
    natVld                 24  2   1
    encap                  24  3   1
    decap                  24  4   1
    ctIngressVld           24  5   1
    ctIngressDir           24  6   1
    ctEgressVld            24  7   1
    ctEgressDir            25  0   1
    ipfixIngressVld        25  1   1
    ipfixEgressVld         25  2   1
    drop                   25  3   1
    isDstUplink            25  4   1
    isSrcUplink            25  5   1
    dstUplinkIdx           25  6   2
    srcUplinkIdx           26  0   2
    vdrHops                27  0   8
    ingressMirror          28  0   8
    egressMirror           29  0   8
    encapIdx               30  0  16
    ctIngressStatsIdx      32  0  16
    ctEgressStatsIdx       34  0  16
    natIdx                 36  0  32
    ctIngressIdx           40  0  32
    ctEgressIdx            44  0  32
    ipfixIngressIdx        48  0  32
    ipfixEgressIdx         52  0  32
""")  # fmt: skip

FLOW_REWRITE = Layout(32, """
    vlanPop                 0  0   1
    vlanPush                0  1   1
    vlanSet                 0  2   1
    vlanSetPcp              0  3   1
    ipDscpSet               0  4   1
    route                   0  5   1
    rssOverride             0  6   1
    kcpVlanPush             0  7   1
    vlanPcp                 1  1   3
    ipDscp                  1  4   6
    rssOverrideQid          2  2   6
    hops                    3  0   8
    vlanVid                 4  0  12
    kcpVlanVid              5  4  12
    vni                     8  0  24
    encapSport             12  0  16
    flowCookie             28  0  32
    smac                   14  0  48  mac
    dmac                   20  0  48  mac
""")  # fmt: skip

FLOW_OPERATIONS = Layout(296, """
    insert                136  0  64  signed
    duplicateInsert         8  0  64  signed
    failedInsert           16  0  64  signed
    recircFailedInsert     24  0  64  signed
    remove                144  0  64  signed
    removeNotFound         40  0  64  signed
    failedRemove           48  0  64  signed
    update                 56  0  64  signed
    failedUpdate           64  0  64  signed
    get                    72  0  64  signed
    failedGet              80  0  64  signed
    release               104  0  64  signed
    failedRelease         112  0  64  signed
    read                  152  0  64  signed
    write                 160  0  64  signed
    entries               120  0  64  signed
    collisions            128  0  64  signed
    insertLevel           168  0 512  levels
    removeLevel           232  0 512  levels
""")  # fmt: skip
