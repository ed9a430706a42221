"""The dictionaries of the module's results as records; typings/make_qdp.py makes this file."""

from .flow_text import FlowTexts
from .record import Record

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import List, Literal, Optional, Tuple

    from _libqdp import (
        ClientType,
        FlowKeyType,
        UplinkCounter,
    )


class SwitchInfo(Record):
    """One datapath switch."""

    __slots__ = ()

    name: str
    swID: int
    maxPorts: int
    numActivePorts: int
    numPorts: int
    mtu: int
    numLcores: int
    lcores: int


class PortInfo(Record):
    """One port of a switch."""

    __slots__ = ()

    portID: int
    qdpPortID: int
    numTxQ: int
    numRxQ: int
    hwAddr: str
    numMACs: int
    clientType: "ClientType"
    txQLM: "List[int]"
    rxQLM: "List[int]"


class PortCounters(Record):
    """Signed counters of one port: the fast path's, then the slow path's with the prefix sp."""

    __slots__ = ()

    txPkts: int
    txBytes: int
    txMcastPkts: int
    txMcastBytes: int
    txBcastPkts: int
    txBcastBytes: int
    txDrops: int
    txErrors: int
    rxPkts: int
    rxBytes: int
    rxMcastPkts: int
    rxMcastBytes: int
    rxBcastPkts: int
    rxBcastBytes: int
    rxDrops: int
    rxErrors: int
    spTxPkts: int
    spTxBytes: int
    spTxMcastPkts: int
    spTxMcastBytes: int
    spTxBcastPkts: int
    spTxBcastBytes: int
    spTxDrops: int
    spTxErrors: int
    spRxPkts: int
    spRxBytes: int
    spRxMcastPkts: int
    spRxMcastBytes: int
    spRxBcastPkts: int
    spRxBcastBytes: int
    spRxDrops: int
    spRxErrors: int


class MACEntry(Record):
    """One learned or static MAC address."""

    __slots__ = ()

    macAddr: str
    vlanID: int
    qdpPortID: int
    macGenDiff: int


class PortMACTable(Record):
    """The MAC table of one port."""

    __slots__ = ()
    _inside = {"MacTableList": [MACEntry]}

    MacLimit: int
    LimitExceeded: int
    MacTableList: "List[MACEntry]"


class SwitchMACTable(Record):
    """The MAC table of a switch. Other than a port's, it does not tell whether the limit was exceeded."""

    __slots__ = ()
    _inside = {"MacTableList": [MACEntry]}

    MacLimit: int
    MacTableList: "List[MACEntry]"


class FlowStats(Record):
    """The flow cache of one lcore. Every value is the low 32 bits of its counter: a counter wraps at 2**32."""

    __slots__ = ()

    lcoreID: int
    numFlows: int
    numModel2Flows: int
    numFlowsCreated: int
    hits: int
    miss: int
    slowpath: int
    fpoHits: int
    localHits: int
    firstLookupHits: int
    firstLookupLocalCacheHits: int
    actionAllocFails: int
    actionGroupAllocFails: int
    keyInsertFailCount: int
    latSampleCount: int
    fpoCTHwPktQueued: int
    fpoCTHwPktDrop: int
    fpoCTPktsInjectedToHW: int
    fpoCTPktsContinuedInSW: int
    fpoCTHwContextFailed: int
    fpoCTHwFlowInval: int
    fpoMarkMismatched: int
    fpoPnicMismatched: int
    fpoDelayMarkMatching: int
    fpoEphemeralFlows: int
    fpoTransientFlows: int
    fpoBackoffTimes: int


class FlowEntry(FlowTexts):
    """One flow of the cache. The counters are unsigned."""

    __slots__ = ()

    key: str
    actions: str
    swHits: int
    swBytes: int
    hwHits: int
    hwBytes: int


class FlowPage(Record):
    __slots__ = ()
    _inside = {"list": [FlowEntry]}

    startIndex: int
    list: "List[FlowEntry]"


class PortConf(Record):
    """The configuration of one port. Each key from KCP to MirrorFilterOut is a feature bit, 0 or 1."""

    __slots__ = ()

    portID: int
    flags: str
    hwAddr: str
    untaggedVlanID: int
    forgedMACAllowed: int
    numMcastAddrs: int
    vni: int
    mcastAddrList: "List[str]"
    numTaggedVlanRanges: int
    vlanRanges: "List[str]"
    KCP: int
    MirrorIn: int
    LRO: int
    L2ForOverlay: int
    LAT: int
    Spoofguard: int
    VDL2: int
    TxL3: int
    minFlowL3: int
    SWL3: int
    MirrorFilterIn: int
    LTR: int
    TxL4: int
    IPFIX: int
    SI: int
    SWL4: int
    DFW: int
    DLB: int
    HKZFW: int
    minFlowL4: int
    MirrorFilterOut: int
    metaFlow: "List[Optional[str]]"


class TxUplink(Record):
    """The uplinks that a port transmits on."""

    __slots__ = ()

    txType: 'Literal["None", "Single", "LAG", "SrcMAC", "All", "NoTeaming", "Unknown"]'
    txUplinks: "List[int]"


class L3SPANValidity(Record):
    __slots__ = ()

    isValid: int


class L3SPANRecord(L3SPANValidity):
    """The encapsulation of mirrored traffic. All but the geneve keys are there when isValid is not 0."""

    __slots__ = ()

    srcPort: int
    dstPort: int
    mtu: int
    isGeneve: int
    geneve_smac: str
    geneve_dmac: str
    geneve_src: str
    geneve_dst: str
    gre_smac: str
    gre_dmac: str
    gre_src: str
    gre_dst: str


class UplinkStats(Record):
    """The device counters of an uplink, and its private statistics."""

    __slots__ = ()

    uplinkStats: "Optional[List[UplinkCounter]]"
    privStats: str


class RSSEngine(Record):
    """One RSS engine of a port."""

    __slots__ = ()

    id: int
    type: 'Literal["DFTRSS", "DEVRSS", "SHARSS", "OFLRSS", "UNKNOWN"]'
    memAffID: int
    priQ: int
    numQ: int
    hashFunc: int
    hashType: int
    keySize: int
    indSize: int
    secQ: "List[int]"


class NetQQueue(Record):
    """A hardware queue that serves a filter."""

    __slots__ = ()

    qdpPortID: int
    qid: int
    fid: int


class NetQFilter(Record):
    """A receive filter."""

    __slots__ = ()
    _inside = {"qInfo": [NetQQueue]}

    rxf: str
    qInfo: "List[NetQQueue]"


class NetQInfo(Record):
    """How a port's receive traffic is steered to queues."""

    __slots__ = ()
    _inside = {"filters": [NetQFilter]}

    isUplink: int
    isFlowFilter: int
    swID: int
    qdpPortID: int
    filters: "List[NetQFilter]"


class FilterTypes(Record):
    """The receive filter classes that a switch supports."""

    __slots__ = ()

    VLANMAC: 'Literal["TRUE", "FALSE"]'


class DevAffinity(Record):
    """The affinity of one physical NIC."""

    __slots__ = ()

    devname: str
    affinity: int


class LBParams(Record):
    """The balancer's runtime parameters, unsigned 64-bit. Their units are the balancer's."""

    __slots__ = ()

    run_in_msec: int
    cpuload_high: int
    cpuload_low: int
    cpuload_target: int
    cpuload_high_per_unit: int
    cpuload_low_per_unit: int
    min_v2v_pps: int
    min_v2v_pps_bind: int
    pps_var_sensitivity: int
    cpu_var_sensitivity: int


class LBItem(Record):
    __slots__ = ()

    pkts: int
    bytes: int


class LBPort(Record):
    __slots__ = ()
    _inside = {"vnicRxQ": [LBItem], "ofldRSS": [LBItem], "vnicTxQ": [LBItem], "filt": [LBItem]}

    priority: int
    vnicRxQ: "Tuple[LBItem, ...]"
    ofldRSS: "Tuple[LBItem, ...]"
    vnicTxQ: "Tuple[LBItem, ...]"
    filt: "Tuple[LBItem, ...]"


class LBUplinkItem(Record):
    __slots__ = ()

    pkts: int
    bytes: int


class LBUplink(Record):
    __slots__ = ()
    _inside = {"uplinkRx": [LBUplinkItem]}

    uplinkRx: "Tuple[LBUplinkItem, ...]"


class LBContext(Record):
    __slots__ = ()

    pkts: int
    bytes: int


class FPOEnabled(Record):
    """How a switch offloads flows. All but models are flags, 0 or 1."""

    __slots__ = ()

    enabled: int
    geneveCritical: int
    ipDiscoveryDHCP: int
    ipDiscoveryICMP6ND: int
    models: int


class FPOStats(Record):
    """Flow processing offload on one lcore."""

    __slots__ = ()

    lcoreID: int
    hits: int
    markMismatched: int
    pnicMismatched: int
    delayMarkMatching: int
    ephemeralFlows: int
    transientFlows: int
    ctHWPktQueued: int
    ctPktsInjectedtoHW: int
    ctPktsContinuedInSW: int
    ctHwContextFailed: int


class FPOUplinkStatus(Record):
    """What an uplink's device can offload."""

    __slots__ = ()

    models: str
    numGroupSupported: int
    numPrioritySupported: int
    maxMarkActionBits: int
    maxFlowsSupported: int
    maxCountersSupported: int
    maxFlowKeyLengthInBits: int
    maxDecTTLActions: int
    numFlowsOffloaded: int
    actionsSupported: int


class FPOUplinkStats(Record):
    """Signed counters of the calls into an uplink's offload."""

    __slots__ = ()

    ringFull: int
    creationFull: int
    destroyFull: int
    updateFull: int
    genMismatched: int
    limitExceeded: int
    numSucceededValidateCalls: int
    numSucceededCreateCalls: int
    numSucceededDestroyCalls: int
    numSucceededQueryCalls: int
    numSucceededFlushCalls: int
    numFailedValidateCalls: int
    numFailedCreateCalls: int
    numFailedDestroyCalls: int
    numFailedQueryCalls: int
    numFailedFlushCalls: int
    numSucceededBulkResAllocCalls: int
    numSucceededBulkResFreeCalls: int
    numSucceededBulkResQueryCalls: int
    numSucceededBulkResSetCalls: int
    numSucceededBulkResResetCalls: int
    numPendingFpoCallList: int
    numFailedBulkResAllocCalls: int
    numFailedBulkResFreeCalls: int
    numFailedBulkResQueryCalls: int
    numFailedBulkResSetCalls: int
    numFailedBulkResResetCalls: int
    numSucceededCreateCtxCalls: int
    numSucceededDestroyCtxCalls: int
    numSucceededModifyCtxCalls: int
    numSucceededQueryCtxCalls: int
    numFailedCreateCtxCalls: int
    numFailedDestroyCtxCalls: int
    numFailedModifyCtxCalls: int
    numFailedQueryCtxCalls: int
    numFPOUplinkEnableCalls: int
    numFPOUplinkDisableCalls: int
    numFPOCallsInDisabledState: int


class FPORevalConfig(Record):
    """Revalidation of offloaded flows, for the whole host. Interval and quota are in the datapath's own units."""

    __slots__ = ()

    enabled: int
    injectPacket: int
    revalInterval: int
    flowScanQuota: int


class FPODelayCtOlConfig(Record):
    """How long the offload of tracked connections is delayed, for the whole host."""

    __slots__ = ()

    numPkts: int
    enabled: int


class MuxMode(Record):
    __slots__ = ()

    enabled: int


class MuxVLAN(Record):
    """The internal VLAN of one port."""

    __slots__ = ()

    portID: int
    fcPortID: int
    vlanID: int


class MuxVLANPage(Record):
    __slots__ = ()
    _inside = {"portlist": [MuxVLAN]}

    portlist: "List[MuxVLAN]"
    nextFcPort: int


class ShadowPort(Record):
    """What stands behind one port of a mux switch."""

    __slots__ = ()

    fcPortID: int
    muxPFPortID: int
    muxVLANID: int


class ShadowPortPage(Record):
    __slots__ = ()
    _inside = {"portlist": [ShadowPort]}

    portlist: "List[ShadowPort]"
    nextFcPort: int


class LifPort(Record):
    __slots__ = ()

    lifID: int
    srcPort: int
    repPort: int
    flowKeyType: int
    lifType: int
    isMuxPF: int
    fwdMode: int
    status: int


class LifPortPage(Record):
    __slots__ = ()
    _inside = {"liflist": [LifPort]}

    liflist: "List[LifPort]"
    nextIndex: int


class VlanPort(Record):
    __slots__ = ()

    muxVLAN: int
    pfLif0: int
    pfLif1: int
    srcPort: int
    repPort: int
    flowKeyType: int
    status: int


class VlanPortPage(Record):
    __slots__ = ()
    _inside = {"vlanlist": [VlanPort]}

    vlanlist: "List[VlanPort]"
    nextIndex: int


class OutputPort(Record):
    __slots__ = ()

    dstPort: int
    lifID: int
    defaultVLAN: int
    muxVLAN: int
    lifType: int
    status: int
    tag: int


class OutputPortPage(Record):
    __slots__ = ()
    _inside = {"portlist": [OutputPort]}

    portlist: "List[OutputPort]"
    nextIndex: int


class PipelinePortStats(Record):
    """Signed counters of one port of the pipeline."""

    __slots__ = ()

    rxUcastBytes: int
    rxUcastPkts: int
    rxMcastBytes: int
    rxMcastPkts: int
    rxBcastBytes: int
    rxBcastPkts: int
    rxUcastDropBytes: int
    rxUcastDropPkts: int
    rxMcastDropBytes: int
    rxMcastDropPkts: int
    rxBcastDropBytes: int
    rxBcastDropPkts: int
    txUcastBytes: int
    txUcastPkts: int
    txMcastBytes: int
    txMcastPkts: int
    txBcastBytes: int
    txBcastPkts: int
    txUcastDropBytes: int
    txUcastDropPkts: int
    txMcastDropBytes: int
    txMcastDropPkts: int
    txBcastDropBytes: int
    txBcastDropPkts: int


class LifStats(PipelinePortStats):
    """Signed counters of one LIF: those of a port, and those of its queues and descriptors. Transmission has no
    counterpart of rxQueueEmpty."""

    __slots__ = ()

    rxQueueDisabled: int
    rxQueueEmpty: int
    rxQueueError: int
    rxDescFetchError: int
    rxDescDataError: int
    txQueueDisabled: int
    txQueueError: int
    txDescFetchError: int
    txDescDataError: int


class P4IStats(Record):
    """Signed counters of the whole ingress pipeline."""

    __slots__ = ()

    rxFromHost: int
    rxFromSwitch: int
    rxFromCpu: int
    rxUserCsumErr: int
    rxSubstrateCsumErr: int
    rxMalformed: int


class P4EStats(Record):
    """Signed counters of the whole egress pipeline."""

    __slots__ = ()

    txToHost: int
    txToSwitch: int
    txToCpu: int
    flowMiss: int
    connTrackRedir: int
    wrongReinject: int
    drop: int


class CTStats(Record):
    """Signed counters of connection tracking on one port."""

    __slots__ = ()

    txPassBytes: int
    txPassPkts: int
    txDropBytes: int
    txDropPkts: int
    rxPassBytes: int
    rxPassPkts: int
    rxDropBytes: int
    rxDropPkts: int


class P4FlowStats(Record):
    """Counters of one flow."""

    __slots__ = ()

    pcnt: int
    bcnt: int
    tcp_flags: int


class FPOFlowStatsConfig(Record):
    """How the counters of offloaded flows are brought up to date; interval and quota in the datapath's own units."""

    __slots__ = ()

    statsInterval: int
    statsScanQuota: int


class DSCPConf(Record):
    __slots__ = ()

    dscp: int
    mask: int


class HWTable(Record):
    """One table in the SmartNIC's memory."""

    __slots__ = ()

    tableId: int
    pa: int
    numEntries: int
    entrySize: int


class CTContext(Record):
    """The TCP state that the hardware keeps for one connection."""

    __slots__ = ()

    src_seqlo: int
    src_seqhi: int
    src_max_win: int
    src_state: int
    src_wscale: int
    dst_seqlo: int
    dst_seqhi: int
    dst_max_win: int
    dst_state: int
    dst_wscale: int
    sw_state: int
    ct_log: int


class FPOContext(Record):
    """A connection as the offload's context manager sees it, unsigned 32-bit: its two sides, l... and r..."""

    __slots__ = ()

    enable: int
    disableWindowValidation: int
    lseqlo: int
    lseqhi: int
    lseqdiff: int
    lmaxWin: int
    lstate: int
    lwscale: int
    rseqlo: int
    rseqhi: int
    rseqdiff: int
    rmaxWin: int
    rstate: int
    rwscale: int


class LifInput(Record):
    """What a LIF is, 16-bit numbers and flags of 0 or 1."""

    __slots__ = ()

    lifId: int
    portId: int
    pinnedPortId: int
    l2Seg: int
    isUplink: int
    isP2P: int
    skipUkucRepl: int
    isWyxValid: int


class InputEntry(LifInput):
    """What a packet from a LIF is tagged with. The seven keys here are there only when isWyxValid is 1."""

    __slots__ = ()

    wyxPortId: int
    repPortId: int
    srcTag: int
    pktCapture: int
    useVlanMapping: int
    flowKeyType: "FlowKeyType"
    fwdMode: 'Literal["flow", "classic"]'


class OutputEntry(Record):
    """How a packet that leaves by a port is edited, and where it goes."""

    __slots__ = ()

    portId: int
    lifId: int
    dstTag: int
    vlanStrip: int
    pktCapture: int
    rssInner: int
    vlanPush: int
    hckMetadata: int
    nports: int
    egressPort1: int
    egressPort2: int
    vlanPushId: int
    accessVlanId: int
    rssOverride: int
    rssOverrideQid: int
    p4plusAppId: str


class MuxVlanEntry(Record):
    """What stands behind an internal VLAN."""

    __slots__ = ()

    vlanId: int
    valid: int
    lif0: int
    lif1: int
    srcPortId: int
    repPortId: int
    srcTag: int
    pktCapture: int
    flowKeyType: "FlowKeyType"


class VlanMapEntry(Record):
    __slots__ = ()

    rmac_vrf: int
    l2Seg: int


class L2SegEntry(Record):
    """Which packets of a segment the host receives, flags of 0 or 1, and their replication."""

    __slots__ = ()

    host_rcvr_ukuc: int
    host_rcvr_ukmc: int
    host_rcvr_bcast: int
    replicate_idx: int


class RegMACEntry(Record):
    """Where a registered MAC address is."""

    __slots__ = ()

    dstPort: int
    dstPinnedPort: int
    multicastEn: int
    qid: int


class IPFixEntry(Record):
    """Counters of one flow."""

    __slots__ = ()

    pkts: int
    bytes: int
    tcpFlags: int


class CTStatsEntry(Record):
    """Signed counters of connection tracking on one port, in two sets."""

    __slots__ = ()

    passBytes0: int
    passPkts0: int
    dropBytes0: int
    dropPkts0: int
    passBytes1: int
    passPkts1: int
    dropBytes1: int
    dropPkts1: int


class CTStateEntry(Record):
    """The TCP state of one connection."""

    __slots__ = ()

    sloppy: int
    srcSeqlo: int
    srcSeqhi: int
    srcMaxWin: int
    srcState: int
    srcWscale: int
    dstSeqlo: int
    dstSeqhi: int
    dstMaxWin: int
    dstState: int
    dstWscale: int
    swState: int
    ctLog: int


class MirrorEntry(Record):
    """One mirror session."""

    __slots__ = ()

    dstPort: int
    reason: int
    tunnelVNI: int
    geneveOptionVld: int
    tunnelRewriteVld: int
    pktCapture: int
    mirrorSW: int
    mirrorL3: int
    vlanPush: int
    TunnelIdx: int
    vlanID: int
    flowCookie: int
    uplinkLport0: int
    uplinkLport1: int
    geneveOptionDMAC: str


class MirrorL3Entry(Record):
    """The encapsulation of mirrored traffic."""

    __slots__ = ()

    l3Idx: int
    mirrorType: int
    isIpv6: int
    vlanVld: int
    trunVld: int
    cos: int
    l2Type: int
    erspanTSNs: int
    vlanID: int
    trunLen: int
    tc: int
    ttl: int
    erspanHwId: int
    erspanSessionId: int
    greKeySeq: int
    smac: str
    dmac: str
    ipsa: str
    ipda: str


class TunnelTerminateEntry(Record):
    __slots__ = ()

    vtepIdx: int
    valid: int


class TunnelSAEntry(Record):
    __slots__ = ()

    outerFlowId: int
    valid: int


class FlowKeyEntry(Record):
    __slots__ = ()

    flowIndex: int


class FlowInfoEntry(Record):
    """What the pipeline does with a flow. Names that end in Vld, Dir, and those without a comment up to isSrcUplink are
    flags of 0 or 1."""

    __slots__ = ()

    flowIdx: int
    dstPort: int
    count: int
    timeStamp: int
    srcTag: int
    dstTag: int
    vdrTtlCheck: int
    vdrVld: int
    natVld: int
    encap: int
    decap: int
    ctIngressVld: int
    ctIngressDir: int
    ctEgressVld: int
    ctEgressDir: int
    ipfixIngressVld: int
    ipfixEgressVld: int
    drop: int
    isDstUplink: int
    isSrcUplink: int
    dstUplinkIdx: int
    srcUplinkIdx: int
    vdrHops: int
    ingressMirror: int
    egressMirror: int
    encapIdx: int
    ctIngressStatsIdx: int
    ctEgressStatsIdx: int
    natIdx: int
    ctIngressIdx: int
    ctEgressIdx: int
    ipfixIngressIdx: int
    ipfixEgressIdx: int


class FlowRewriteEntry(Record):
    """How a flow's headers are edited. The first eight are flags of 0 or 1."""

    __slots__ = ()

    vlanPop: int
    vlanPush: int
    vlanSet: int
    vlanSetPcp: int
    ipDscpSet: int
    route: int
    rssOverride: int
    kcpVlanPush: int
    vlanPcp: int
    ipDscp: int
    rssOverrideQid: int
    hops: int
    vlanVid: int
    kcpVlanVid: int
    vni: int
    encapSport: int
    flowCookie: int
    smac: str
    dmac: str


class TunnelRewriteEntry(Record):
    """One encapsulation header. The first five are flags of 0 or 1."""

    __slots__ = ()

    isIpv6: int
    geneve: int
    vlanVld: int
    tcCopy: int
    labelOptVld: int
    labelID: int
    l2Type: int
    vlanID: int
    tc: int
    ttl: int
    smac: str
    dmac: str
    ipsa: str
    ipda: str


class DSCPConfEntry(Record):
    """What DSCP traced flows have, 0..255 each."""

    __slots__ = ()

    ipv4DscpMask: int
    ipv4DscpValue: int
    ipv6DscpMask: int
    ipv6DscpValue: int


class UplinkMapEntry(Record):
    """The logical port of each of the four uplinks, and its tag."""

    __slots__ = ()

    lport0: int
    lport0_tag: int
    lport1: int
    lport1_tag: int
    lport2: int
    lport2_tag: int
    lport3: int
    lport3_tag: int


class LatencyHistogram(Record):
    __slots__ = ()

    minLatency: int
    maxLatency: int
    outOfBucket: int
    totalSample: int
    totalTime: int


class FlowOpsStats(Record):
    """Signed counters of the SmartNIC's flow table library."""

    __slots__ = ()

    insert: int
    duplicateInsert: int
    failedInsert: int
    recircFailedInsert: int
    remove: int
    removeNotFound: int
    failedRemove: int
    update: int
    failedUpdate: int
    get: int
    failedGet: int
    release: int
    failedRelease: int
    read: int
    write: int
    entries: int
    collisions: int
    insertLevel: "List[int]"
    removeLevel: "List[int]"


class AdvStats(Record):
    """Signed counters: why packets took the slow path, why no action was made or a packet dropped, and what the parser
    dropped. "spReaonVlanTF" and "spReasonInnerL2Incompt" are spelled like that."""

    __slots__ = ()

    spReasonSpFlags: int
    spReasonL3Incompat: int
    spReasonL4Incompat: int
    spReasonEncapIncompat: int
    spReasonInnerL2Incompt: int
    spReaonVlanTF: int
    spReasonVniZero: int
    spReasonNonUnicast: int
    spReasonInnerNoneUnicast: int
    spReasonNonIP: int
    spReasonInnerNonIP: int
    spReasonGeneveOption: int
    spReasonGeneveLabelType: int
    spReasonIpv6Ext: int
    spReasonL4NotSupported: int
    spReasonLat: int
    actionGenFailSameSrcDst: int
    actionGenFailDoNotCache: int
    actionGenFailDstSpFlags: int
    actionGenFailNonUnicast: int
    actionGenFailInnerFlowParseFailed: int
    actionGenFailMultiDstReval: int
    actionGenFailNonQdpCtxt: int
    actionGenFailFcAttrNull: int
    actionGenFailMirrorPkt: int
    actionGenFailPseudoPkt: int
    actionGenFailSrcPortNotAvail: int
    actionGenFailFlowExpired: int
    actionGenFailActionCtxtInitFail: int
    actionGenFailPktToMbufFail: int
    actionGenDropSpFlowAllocFail: int
    actionGenDropEnqSpFlowFail: int
    actionGenDropInnerOffloadFail: int
    parserDropGvlanSvlan: int
    parserDropInvalidGeneve: int
    parserDropL2Invalid: int
    parserDropL3L4Invalid: int


class RssOverride(Record):
    __slots__ = ()

    swID: int
    fcPortID: int
    rssOverrideQid: int
    rssOverride: int


class LogLevel(Record):
    __slots__ = ()

    level: int

# What each method returns: None for what holds no record; otherwise a record class, [a shape] for a list or a
# tuple of any length, or a tuple of shapes.
RESULTS = {
    "ListSwitches": [SwitchInfo],
    "ListPorts": [PortInfo],
    "GetPortStats": PortCounters,
    "ListPortMACTable": PortMACTable,
    "ClearPortMACTable": None,
    "AddMACEntry": None,
    "DelMACEntry": None,
    "ListSwitchMACTable": SwitchMACTable,
    "ClearSwitchMACTable": None,
    "GetFlowStats": [FlowStats],
    "GetRepPortStats": None,
    "DumpFlowTable": FlowPage,
    "DumpDecapFlowTable": None,
    "DumpDecapSaFlowTable": None,
    "DumpPortFlow": None,
    "GetPortConf": PortConf,
    "MigratePort": None,
    "UnpinPort": None,
    "ResetPort": None,
    "GetPortTxUplink": TxUplink,
    "GetL3SPANRecord": L3SPANRecord,
    "GetUplinkStats": UplinkStats,
    "GetUplinkQueueStats": None,
    "ListRSSEngine": [RSSEngine],
    "SetUplinkMACLearn": None,
    "ClearSwitchFlowTable": None,
    "EnableSwitchFlowCache": None,
    "GetPanicOnTxHang": None,
    "SetPanicOnTxHang": None,
    "GetPortNetQInfo": NetQInfo,
    "MigrateNetQFilter": None,
    "GetUplinkRingSize": None,
    "SetUplinkRingSize": None,
    "GetSwitchFilterTypes": FilterTypes,
    "SetSwitchFilterTypes": None,
    "ListDevAffinity": [DevAffinity],
    "SetDevAffinity": None,
    "DumpLBDebugBuf": None,
    "FlushLBDebugBuf": None,
    "GetLBMetric": None,
    "SetLBMetric": None,
    "SetLBParam": None,
    "GetLBParams": LBParams,
    "InjectLBTraffic": None,
    "DumpLBStats": ([LBPort], [LBUplink], [LBContext]),
    "GetSwitchNUMATeam": None,
    "SetSwitchNUMATeam": None,
    "GetSwitchBurstSize": None,
    "SetSwitchBurstSize": None,
    "GetSwitchOverlayL2Flow": None,
    "SetSwitchOverlayL2Flow": None,
    "GetPortLRO": None,
    "SetPortLRO": None,
    "GetSwitchLRO": None,
    "SetSwitchLRO": None,
    "GetSwitchMinFlowLayer": None,
    "SetSwitchMinFlowLayer": None,
    "GetSwitchMetaFlow": None,
    "SetSwitchMetaFlow": None,
    "GetFPOEnabled": FPOEnabled,
    "EnableFPO": None,
    "GetFPOStats": [FPOStats],
    "GetFPOUplinkStatus": FPOUplinkStatus,
    "GetFPOUplinkStats": FPOUplinkStats,
    "GetFlowTimeout": None,
    "SetFlowTimeout": None,
    "ListLCoreIDs": None,
    "InitMbufFastslabs": None,
    "GetFPORevalConfig": FPORevalConfig,
    "SetFPORevalConfig": None,
    "GetFPODelayCtOlConfig": FPODelayCtOlConfig,
    "SetFPODelayCtOlConfig": None,
    "GetRefreshPktInjectionConfig": None,
    "SetRefreshPktInjectionConfig": None,
    "GetSwitchMuxMode": MuxMode,
    "ListSwitchMuxVLAN": MuxVLANPage,
    "ListSwitchShadowPorts": ShadowPortPage,
    "HostPFSet": None,
    "HostPFGet": None,
    "LifPortCreate": None,
    "LifPortUpdate": None,
    "LifPortList": LifPortPage,
    "VlanPortCreate": None,
    "VlanPortUpdate": None,
    "VlanPortList": VlanPortPage,
    "PortUpdate": None,
    "PortDelete": None,
    "PortList": OutputPortPage,
    "LifStatsGet": LifStats,
    "PortStatsGet": PipelinePortStats,
    "P4IStatsGet": P4IStats,
    "P4EStatsGet": P4EStats,
    "CTStatsGet": CTStats,
    "P4StatsFlowGet": P4FlowStats,
    "GetFPOFlowStatsConfig": FPOFlowStatsConfig,
    "SetFPOFlowStatsConfig": None,
    "SetOffloadFlows": None,
    "GetOffloadFlows": None,
    "SetOffloadICMPEcho": None,
    "GetOffloadICMPEcho": None,
    "DSCPConfSet": None,
    "DSCPConfGet": DSCPConf,
    "P4HWTableList": [HWTable],
    "P4HWTableDump": None,
    "P4CacheInvalidate": None,
    "P4CTContextQuery": CTContext,
    "P4MirrorTableDump": None,
    "P4PortMirrorTableDump": None,
    "FPOQueryContextMgr": [FPOContext],
    "FPOHWDestroy": None,
    "TableLifStatsGet": LifStats,
    "TablePortStatsGet": PipelinePortStats,
    "TableP4IStatsGet": P4IStats,
    "TableP4EStatsGet": P4EStats,
    "TableInputGet": InputEntry,
    "TableOutputGet": OutputEntry,
    "TableMuxVlanGet": MuxVlanEntry,
    "TableVlanMapGet": VlanMapEntry,
    "TableL2SegGet": L2SegEntry,
    "TableRegMACGet": RegMACEntry,
    "TableIPFixGet": IPFixEntry,
    "TableCTStatsGet": CTStatsEntry,
    "TableCTStateGet": CTStateEntry,
    "TableMirrorGet": MirrorEntry,
    "TableMirrorL3Get": MirrorL3Entry,
    "TableTunnelTerminateGet": TunnelTerminateEntry,
    "TableTunnelSAGet": TunnelSAEntry,
    "TableFlowKeyGet": FlowKeyEntry,
    "TableFlowInfoGet": FlowInfoEntry,
    "TableFlowRewriteGet": FlowRewriteEntry,
    "TableTunnelRewriteGet": TunnelRewriteEntry,
    "TableDSCPConfGet": DSCPConfEntry,
    "TableUplinkMapGet": UplinkMapEntry,
    "P4AppSet": None,
    "P4AppGet": None,
    "P4UKLatencySet": None,
    "P4UKLatencyDump": LatencyHistogram,
    "FlowOpsStatsGet": FlowOpsStats,
    "AdvStatsSetEnabled": None,
    "AdvStatsGetEnabled": None,
    "AdvStatsGetCounters": AdvStats,
    "AgingIntervalGet": None,
    "AgingIntervalSet": None,
    "P4RssOverrideSet": None,
    "P4RssOverrideGet": RssOverride,
    "P4LogLevelSet": None,
    "P4LogLevelGet": LogLevel,
}

# The methods that return None when they succeed: all that only set or do something, and those of which a getter has
# nothing to tell.
NONE_IS_NO_FAILURE = frozenset(
    [
        "ClearPortMACTable",
        "AddMACEntry",
        "DelMACEntry",
        "ClearSwitchMACTable",
        "GetRepPortStats",
        "DumpDecapFlowTable",
        "DumpDecapSaFlowTable",
        "DumpPortFlow",
        "MigratePort",
        "UnpinPort",
        "ResetPort",
        "SetUplinkMACLearn",
        "ClearSwitchFlowTable",
        "EnableSwitchFlowCache",
        "SetPanicOnTxHang",
        "MigrateNetQFilter",
        "SetUplinkRingSize",
        "GetSwitchFilterTypes",
        "SetDevAffinity",
        "FlushLBDebugBuf",
        "SetLBParam",
        "InjectLBTraffic",
        "SetSwitchNUMATeam",
        "SetSwitchBurstSize",
        "SetSwitchOverlayL2Flow",
        "SetPortLRO",
        "SetSwitchLRO",
        "SetFlowTimeout",
        "SetFPORevalConfig",
        "SetFPODelayCtOlConfig",
        "SetRefreshPktInjectionConfig",
        "HostPFSet",
        "LifPortCreate",
        "LifPortUpdate",
        "VlanPortCreate",
        "VlanPortUpdate",
        "PortUpdate",
        "PortDelete",
        "SetFPOFlowStatsConfig",
        "SetOffloadFlows",
        "SetOffloadICMPEcho",
        "DSCPConfSet",
        "P4CacheInvalidate",
        "FPOHWDestroy",
        "AdvStatsSetEnabled",
        "AgingIntervalSet",
    ]
)
