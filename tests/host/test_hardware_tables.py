"""The embedded host's hardware tables: what they hold hangs together, grows with time, and is read within bounds."""

import ctypes
import ipaddress
import struct

import pytest

# Of each table: its entries' size, and the number of its entries or the length of its key.
INDEXED = {
    0: (384, 1024),
    1: (256, 1024),
    2: (64, 1),
    3: (64, 1),
    4: (64, 4096),
    5: (64, 4096),
    6: (24, 4194304),
    7: (24, 4194304),
    8: (20, 1024),
    9: (16, 4095),
    10: (16, 4095),
    11: (16, 1024),
    13: (4, 65536),
    15: (24, 16),
    16: (64, 8192),
    19: (52, 8192),
    20: (24, 4194304),
    21: (24, 4194304),
    22: (4, 1),
    23: (16, 1),
    25: (32, 4194304),
    26: (56, 4194304),
    27: (296, 1),
}
KEYED = {12: (4, 4), 14: (8, 8), 17: (2, 34), 18: (4, 34), 24: (4, 60)}


def read(host, table, key, capacity, key_length=None):
    """The status of a table read, the buffer, and the length word."""
    key_length = len(key) if key_length is None else key_length
    request = struct.pack("<HHHH", 8 + len(key), 11, table, key_length) + key
    buffer = ctypes.create_string_buffer(b"#" * 512, 512)
    length = ctypes.c_uint32(capacity)
    host.libqdp.Qdp_P4_Cmd.restype = ctypes.c_uint32
    status = host.libqdp.Qdp_P4_Cmd(request, len(request), buffer, ctypes.byref(length))
    return status, buffer.raw, length.value


def mac(number):
    return number.to_bytes(6, "big").hex(":")


@pytest.fixture
def at(host, qdp):
    """Reads an entry through the module, at a frozen time."""
    host.freeze()
    return qdp.result


class TestReads:
    def test_every_table_is_there(self):
        assert sorted([*INDEXED, *KEYED]) == list(range(28))

    @pytest.mark.parametrize("table", INDEXED)
    def test_indexes(self, host, table):
        size, entries = INDEXED[table]
        for index in {0, entries - 1}:
            status, buffer, length = read(host, table, struct.pack("<I", index), size)
            assert (status, length) == (0, size)
            assert buffer[size:] == b"#" * (512 - size)
        for index in (entries, 0xFFFFFFFF):
            assert read(host, table, struct.pack("<I", index), size) == (0xBAD0001, b"#" * 512, size)

    @pytest.mark.parametrize("table", KEYED)
    def test_a_key_that_is_not_there(self, host, table):
        size, key_length = KEYED[table]
        assert read(host, table, b"\xee" * key_length, size) == (0xBAD0003, b"#" * 512, size)

    @pytest.mark.parametrize("table", [*INDEXED, *KEYED])
    def test_keys_of_a_wrong_length(self, host, table):
        expected = KEYED[table][1] if table in KEYED else 4
        for length in {0, expected - 1, expected + 1, 61}:
            assert read(host, table, bytes(length), 384) == (0xBAD0001, b"#" * 512, 384)

    @pytest.mark.parametrize("table", [*INDEXED, *KEYED])
    def test_a_key_length_that_is_not_the_keys(self, host, table):
        expected = KEYED[table][1] if table in KEYED else 4
        for claimed in (expected - 1, expected + 1):
            assert read(host, table, bytes(expected), 384, claimed) == (0xBAD0001, b"#" * 512, 384)

    @pytest.mark.parametrize("table", INDEXED)
    def test_a_buffer_that_is_too_small(self, host, table):
        size, _ = INDEXED[table]
        assert read(host, table, bytes(4), size - 1) == (0xBAD0001, b"#" * 512, size - 1)

    @pytest.mark.parametrize("table", [28, 29, 0xFFFF])
    def test_tables_that_do_not_exist(self, host, table):
        assert read(host, table, bytes(4), 384) == (0xBAD0001, b"#" * 512, 384)

    @pytest.mark.parametrize("length", range(4))
    def test_a_read_without_its_header(self, host, length):
        request = struct.pack("<HH", 4 + length, 11) + bytes(length)
        size = ctypes.c_uint32(384)
        host.libqdp.Qdp_P4_Cmd.restype = ctypes.c_uint32
        buffer = ctypes.create_string_buffer(384)
        assert host.libqdp.Qdp_P4_Cmd(request, len(request), buffer, ctypes.byref(size)) == 0xBAD0001

    @pytest.mark.parametrize("table", [0, 1, 6, 20, 25, 26])
    def test_what_nothing_uses_is_zero(self, host, table):
        size, entries = INDEXED[table]
        assert read(host, table, struct.pack("<I", entries - 1), size)[1][:size] == bytes(size)


class TestAFlow:
    """The first flow: a VM on port 2 to a server behind the first tunnel."""

    KEY = (
        102, 0x021B21020002, 0x0250560A0001, 2, 0, 5102, 6, 1,
        int(ipaddress.ip_address("10.1.0.2")), 0, int(ipaddress.ip_address("10.2.0.5")), 0, 40001, 443,
    )  # fmt: skip

    def test_its_key_leads_to_its_index(self, at):
        assert at("TableFlowKeyGet", *self.KEY) == {"flowIndex": 3}

    @pytest.mark.parametrize("number", [each for each in range(14) if each not in (4, 7)])
    def test_another_key_does_not(self, qdp, number):
        key = list(self.KEY)
        key[number] ^= 1
        outcome = qdp.call("TableFlowKeyGet", *key)
        assert (outcome.result, len(outcome.calls)) == (None, 0 if number in (9, 11) else 1)

    def test_its_index_leads_to_what_happens_to_it(self, host, at):
        host.advance(10)
        info = at("TableFlowInfoGet", 3)
        assert (info["flowIdx"], info["dstPort"], info["encap"], info["decap"], info["drop"]) == (3, 0, 1, 0, 0)
        assert (info["isDstUplink"], info["isSrcUplink"]) == (1, 0)

        rewrite = at("TableFlowRewriteGet", 3)
        assert (rewrite["smac"], rewrite["dmac"]) == (mac(self.KEY[1]), mac(self.KEY[2]))
        assert (rewrite["vlanVid"], rewrite["vni"]) == (102, 5102)

        tunnel = at("TableTunnelRewriteGet", info["encapIdx"])
        assert (tunnel["ipsa"], tunnel["ipda"], tunnel["geneve"]) == ("172.16.0.1", "172.16.0.2", 1)

        assert info["ipfixIngressVld"] == 1
        flow_counters = at("TableIPFixGet", info["ipfixIngressIdx"], 0)
        assert flow_counters["pkts"] == info["count"] >= 9000
        assert flow_counters["bytes"] == flow_counters["pkts"] * 1400

        assert info["ctIngressVld"] == 1
        state = at("TableCTStateGet", info["ctIngressIdx"], 0)
        assert (state["srcState"], state["dstState"]) == (4, 4)
        assert (state["srcSeqhi"] - state["srcSeqlo"]) % (1 << 32) == 65536

        output = at("TableOutputGet", info["dstPort"])
        assert (output["portId"], output["dstTag"]) == (0, info["dstTag"])
        uplinks = at("TableUplinkMapGet")
        assert (uplinks["lport0"], uplinks["lport0_tag"]) == (0, output["dstTag"])

        source = at("TableInputGet", 66)
        assert (source["portId"], source["srcTag"]) == (2, info["srcTag"])

    def test_its_replies_come_back_through_the_tunnel(self, at):
        key = list(self.KEY)
        key[1], key[2], key[3] = key[2], key[1], 0
        key[8], key[10], key[12], key[13] = key[10], key[8], key[13], key[12]
        index = at("TableFlowKeyGet", *key)["flowIndex"]
        info = at("TableFlowInfoGet", index)
        assert (info["dstPort"], info["encap"], info["decap"], info["ctIngressDir"]) == (2, 0, 1, 1)
        assert info["ctIngressIdx"] == at("TableFlowInfoGet", 3)["ctIngressIdx"]

    def test_its_counters_grow_with_time(self, host, at):
        before = at("TableIPFixGet", 1, 0), at("TableCTStateGet", 1, 0), at("TableFlowInfoGet", 3)
        assert before == (at("TableIPFixGet", 1, 0), at("TableCTStateGet", 1, 0), at("TableFlowInfoGet", 3))
        host.advance(10)
        after = at("TableIPFixGet", 1, 0), at("TableCTStateGet", 1, 0), at("TableFlowInfoGet", 3)
        assert after[0]["pkts"] - before[0]["pkts"] == 9000
        assert after[1]["srcSeqlo"] - before[1]["srcSeqlo"] == 9000 * 1400
        assert after[2]["count"] - before[2]["count"] == 9000
        assert after[2]["timeStamp"] - before[2]["timeStamp"] == 10


class TestOtherFlows:
    def flows(self, at):
        infos = [at("TableFlowInfoGet", index) for index in range(100)]
        return [info for info in infos if any(info.values())]

    def test_each_leads_to_its_records(self, host, at):
        host.advance(60)
        flows = self.flows(at)
        assert len(flows) == 9 == at("FlowOpsStatsGet")["entries"]
        for info in flows:
            assert at("TableFlowRewriteGet", info["flowIdx"])["flowCookie"] & 0xFFFF == info["flowIdx"]
            assert at("TableIPFixGet", info["ipfixIngressIdx"], 0)["pkts"] == info["count"] > 0
            assert at("TableOutputGet", info["dstPort"])["portId"] == info["dstPort"]
            if info["encap"]:
                assert at("TableTunnelRewriteGet", info["encapIdx"])["ttl"] == 64
            if info["ctEgressVld"]:
                assert at("TableCTStateGet", info["ctEgressIdx"], 1)["srcState"] != 0

    def test_the_dropped_one_is_counted_as_dropped(self, host, at):
        host.advance(60)
        [dropped] = [info for info in self.flows(at) if info["drop"]]
        assert (dropped["ctIngressVld"], dropped["ipfixEgressVld"]) == (0, 0)
        counters = at("TableCTStatsGet", dropped["ctIngressStatsIdx"], 0)
        assert counters["dropPkts0"] == dropped["count"] > 0

    def test_the_mirrored_one_leads_to_its_session(self, at):
        [mirrored] = [info for info in self.flows(at) if info["ingressMirror"]]
        session = mirrored["ingressMirror"].bit_length() - 1
        entry = at("TableMirrorGet", session, 0)
        assert entry["mirrorL3"] == 1
        headers = at("TableMirrorL3Get", 0, session)
        assert (headers["vlanID"], headers["ipda"]) == (entry["vlanID"], "172.16.0.254")
        assert at("TableMirrorL3Get", 0, 8 + 3)["ipda"] == "fd00:0:0:1::fe"

    def test_an_ipv6_tunnel(self, at):
        assert at("TableTunnelRewriteGet", 18)["ipda"] == "fd00:0:0:1::2"


class TestPortsAndTunnels:
    def test_a_lif_and_its_port_have_the_same_counters(self, host, at):
        host.advance(100)
        lif, port = at("TableLifStatsGet", 66), at("TablePortStatsGet", 2)
        assert list(lif.items())[:24] == list(port.items())
        assert port["rxUcastPkts"] > 0 and port["txUcastBytes"] > 0 and lif["rxQueueEmpty"] > 0
        host.advance(100)
        assert at("TablePortStatsGet", 2)["rxUcastPkts"] > port["rxUcastPkts"]

    def test_the_pipeline_counts_what_its_ports_do(self, host, at):
        host.advance(100)
        ingress, egress = at("TableP4IStatsGet"), at("TableP4EStatsGet")
        ports = [at("TablePortStatsGet", port) for port in (0, 1)]
        received = sum(port[key] for port in ports for key in ("rxUcastPkts", "rxMcastPkts", "rxBcastPkts"))
        assert ingress["rxFromSwitch"] == received > 0
        assert egress["txToHost"] > egress["txToSwitch"] > 0

    def test_an_uplink_has_no_port_of_the_host(self, at):
        uplink = at("TableInputGet", 64)
        assert len(uplink) == 8 and uplink["isUplink"] == 1

    def test_mux_vlans(self, at):
        for selector in (0, 1):
            assert at("TableMuxVlanGet", 2002, selector)["lif0"] == 66
        assert at("TableMuxVlanGet", 2000, 0)["valid"] == 0

    def test_classic_mode(self, at):
        segment = at("TableVlanMapGet", 102, 0)["l2Seg"]
        assert at("TableL2SegGet", segment)["host_rcvr_bcast"] == 1
        assert at("TableL2SegGet", segment + 100)["host_rcvr_bcast"] == 0
        assert at("TableRegMACGet", segment, 0x021B21020002)["dstPort"] == 2

    def test_tunnels_end_where_their_records_say(self, at):
        first, second = at("TableTunnelRewriteGet", 17), at("TableTunnelRewriteGet", 18)
        local = int(ipaddress.ip_address(first["ipsa"]))
        arguments = int(first["smac"].replace(":", ""), 16), 0, 1, 1, first["vlanID"], 4095, local, 0
        assert at("TableTunnelTerminateGet", *arguments) == {"vtepIdx": 1, "valid": 1}
        local = int(ipaddress.ip_address(second["ipsa"]))
        halves = local & ((1 << 64) - 1), (local >> 64) - (1 << 64)  # the upper half as a signed number
        arguments = int(second["smac"].replace(":", ""), 16), 1, 1, 0, second["vlanID"], 4095, *halves
        assert at("TableTunnelTerminateGet", *arguments) == {"vtepIdx": 2, "valid": 1}

    def test_security_associations(self, at):
        remote = int(ipaddress.ip_address(at("TableTunnelRewriteGet", 17)["ipda"]))
        assert at("TableTunnelSAGet", 1, 1, remote, 0) == {"outerFlowId": 501, "valid": 1}

    def test_flow_operations_grow(self, host, at):
        before = at("FlowOpsStatsGet")
        host.advance(100)
        after = at("FlowOpsStatsGet")
        assert after["insert"] - before["insert"] == after["remove"] - before["remove"] == 2000
        assert sum(after["insertLevel"]) == after["insert"]
        assert after["entries"] == before["entries"]
