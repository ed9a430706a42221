"""What the objects' verbs show, held against the module's own answers."""

import collections
import ipaddress
import json

import pytest

import _libqdp
import contract
from qdp.errors import Refused

NO_FILTERS = (0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)


def lcores(mask):
    return [bit for bit in range(64) if mask >> bit & 1]


def flows(switch):
    """(lcore, flow) of a switch, page by page."""
    mask = next(each["lcores"] for each in _libqdp.ListSwitches() if each["swID"] == switch)
    for lcore in lcores(mask):
        start = 0
        while start != 0xFFFFFFFF:
            page = _libqdp.DumpFlowTable(switch, lcore, start, 0, *NO_FILTERS)
            yield from ((lcore, flow) for flow in page["list"])
            start = page["startIndex"]


class TestSwitch:
    @pytest.mark.parametrize("name, number", [("1", 1), ("dvs-storage", 1), ("portset-0", 0), ("dvs-production", 0)])
    def test_is_named_by_number_name_or_alias(self, qdp_command, name, number):
        assert [row["swID"] for row in qdp_command.rows("switch", "show", name)] == [number]

    def test_statistics_are_those_of_its_ports(self, qdp_command):
        (row,) = qdp_command.rows("switch", "show", "1", "-s")
        counters = [_libqdp.GetPortStats(1, port["portID"]) for port in _libqdp.ListPorts(1)]
        for key in counters[0]:
            assert row[key] == sum(each[key] for each in counters)

    def test_without_aliases_the_rest_is_shown(self, qdp_command, monkeypatch):
        from qdp.aliases import Aliases

        def load(self):
            raise Refused("LibraryInit: status 0x7")

        monkeypatch.setattr(Aliases, "load", load)
        code, out, err = qdp_command("switch", "show", "-j")
        assert (code, [row["alias"] for row in json.loads(out)]) == (2, [None, None, None])
        assert json.loads(err)["error"]["text"] == "LibraryInit: status 0x7"


class TestPort:
    def test_rows_are_those_of_the_module(self, qdp_command):
        rows = qdp_command.rows("port", "show", "dvs-production")
        assert rows == [dict(port, swID=0, name="portset-0") for port in _libqdp.ListPorts(0)]

    def test_columns_add_fast_and_slow_path(self, qdp_command):
        counters = _libqdp.GetPortStats(0, 3)
        (line,) = qdp_command.lines(*"port stats 0 3 --columns rx-pkts,tx-bytes --no-header".split())
        assert line.split() == [
            str(counters["rxPkts"] + counters["spRxPkts"]),
            str(counters["txBytes"] + counters["spTxBytes"]),
        ]

    def test_migrate_and_unpin(self, qdp_command):
        before = _libqdp.ListPorts(0)[3]
        source = before["txQLM"][0]
        target = (source + 1) % 8
        (row,) = qdp_command.rows("port", "migrate", "0", "3", source, target, "--queues", "tx")
        assert row["before"] == {"txQLM": before["txQLM"], "rxQLM": before["rxQLM"]}
        after = [target if lcore == source else lcore for lcore in before["txQLM"]]
        assert (row["after"], row["changed"]) == ({"txQLM": after, "rxQLM": before["rxQLM"]}, True)
        qdp_command.rows("port", "unpin", "0", "3")
        assert _libqdp.ListPorts(0)[3] == before

    def test_step_that_changes_nothing_says_so(self, qdp_command):
        (row,) = qdp_command.rows("slowpath", "off", "0")
        assert (row["before"], row["after"], row["changed"], row["done"]) == ("off", "off", False, True)


class TestUplink:
    def test_counters_are_those_of_the_device(self, qdp_command):
        (row,) = qdp_command.rows("uplink", "stats", "0", "0")
        answer = _libqdp.GetUplinkStats(0, 0)
        assert {key: row[key] for key, _ in answer["uplinkStats"]} == dict(answer["uplinkStats"])
        assert row["privStats"] == answer["privStats"]

    def test_only_uplinks_are_listed(self, qdp_command):
        rows = qdp_command.rows("uplink", "show")
        wanted = [
            (number, port["portID"])
            for number in range(3)
            for port in _libqdp.ListPorts(number)
            if port["clientType"] == "UPLINK"
        ]
        assert [(row["swID"], row["portID"]) for row in rows] == wanted
        assert qdp_command.error("uplink", "stats", "0", "3")[0] == 2

    def test_queues_of_both_directions(self, qdp_command):
        rows = qdp_command.rows("uplink", "queue", "0", "0", "--queue", "1")
        assert [(row["direction"], row["queue"]) for row in rows] == [("rx", 1), ("tx", 1)]
        for row, direction in zip(rows, (0, 1)):
            counters = dict(_libqdp.GetUplinkQueueStats(0, 0, direction, 1))
            assert {key: row[key] for key in counters} == counters


class TestMac:
    def test_of_one_port_is_its_own_table(self, qdp_command):
        rows = qdp_command.rows("mac", "show", "0", "3")
        entries = _libqdp.ListPortMACTable(0, 3)["MacTableList"]
        wanted = [(each["macAddr"], each["vlanID"]) for each in entries]
        assert [(row["macAddr"], row["vlanID"]) for row in rows] == wanted
        assert {row["portID"] for row in rows} == {3}

    def test_find_knows_ports_and_what_they_learned(self, qdp_command):
        port = _libqdp.ListPorts(0)[3]
        learned = _libqdp.ListSwitchMACTable(0)["MacTableList"][0]
        rows = qdp_command.rows("mac", "find", port["hwAddr"].upper(), learned["macAddr"].replace(":", "-"))
        assert (rows[0]["knownFrom"], rows[0]["portID"], rows[0]["vlanID"]) == ("port", 3, None)
        assert [row["vlanID"] for row in rows if row["macAddr"] == learned["macAddr"]] == [learned["vlanID"]]


class TestFlow:
    def test_show_has_every_flow_of_every_page(self, qdp_command):
        rows = qdp_command.rows("flow", "show", "0")
        assert [(row["lcoreID"], row["key"], row["hwBytes"]) for row in rows] == [
            (lcore, flow["key"], flow["hwBytes"]) for lcore, flow in flows(0)
        ]
        for row in rows:
            assert [str(row[name]) for name in ("layer", "src", "dport")] == [row["key"].split()[i] for i in (0, 5, 10)]

    def test_top_has_the_flows_with_most_bytes_in_order(self, qdp_command):
        rows = qdp_command.rows("flow", "top", "0", "--top", "5")
        most = sorted((flow["swBytes"] + flow["hwBytes"] for _, flow in flows(0)), reverse=True)[:5]
        assert [row["swBytes"] + row["hwBytes"] for row in rows] == most

    def test_filters_reach_the_datapath(self, qdp_command):
        wanted = next(flow["key"].split() for _, flow in flows(0) if "." in flow["key"].split()[5] > "1")
        rows = qdp_command.rows("flow", "show", "0", "--src", wanted[5])
        assert rows and {row["src"] for row in rows} == {wanted[5]}
        assert len(rows) == sum(flow["key"].split()[5] == wanted[5] for _, flow in flows(0))

    def test_unknown_lcore_is_told(self, qdp_command):
        assert qdp_command("flow", "show", "--lcore", "40", "-j")[:2] == (2, "[]\n")

    def test_trace_follows_the_entries(self, qdp_command):
        rows = qdp_command.rows("flow", "trace", contract.FLOW)
        info = _libqdp.TableFlowInfoGet(contract.FLOW)
        assert rows[0]["entry"]["dstPort"] == info["dstPort"]
        for row in rows:
            answer = getattr(_libqdp, row["method"])(*row["arguments"])
            assert set(row["entry"]) == set(answer)
        assert [row["method"] for row in rows].count("TableTunnelRewriteGet") == info["encap"]


class TestLcore:
    def test_counters_are_those_of_the_lcore(self, qdp_command):
        rows = qdp_command.rows("lcore", "show", "1")
        mask = _libqdp.ListSwitches()[1]["lcores"]
        assert [row["lcoreID"] for row in rows] == lcores(mask)
        for row in rows:
            (stats,) = _libqdp.GetFlowStats(1, (row["lcoreID"],), 0)
            assert {key: row[key] for key in stats} == stats


class TestBalancer:
    def test_loads_are_those_of_the_queues(self, qdp_command):
        ports, uplinks, contexts = _libqdp.DumpLBStats(0, 0, 16384, 0, 64)
        load, number = collections.Counter(), collections.Counter()
        for queues in [p["vnicRxQ"] + p["vnicTxQ"] for p in ports] + [u["uplinkRx"] for u in uplinks]:
            for queue in queues:
                load[queue["ctx ID"]] += queue["count load"]
                number[queue["ctx ID"]] += 1
        rows = qdp_command.rows("balancer", "show", "0")
        assert [(row["ctx ID"], row["count load"], row["queues"]) for row in rows] == [
            (each["ctx ID"], load[each["ctx ID"]], number[each["ctx ID"]]) for each in contexts
        ]

    def test_debug_is_the_text(self, qdp_command):
        assert "\n".join(qdp_command.lines("balancer", "debug", "0")) == _libqdp.DumpLBDebugBuf(0, 0).rstrip("\n")


class TestSlowpath:
    def test_reading_turns_no_collection_on(self, qdp_command):
        _libqdp.AdvStatsSetEnabled(0, 0)
        text = "qdp: switch 0 (portset-0) collects no advanced statistics; `qdp slowpath on 0` turns them on"
        assert qdp_command("slowpath", "show", "0") == (2, "", text + "\n")
        assert _libqdp.AdvStatsGetEnabled(0) is False

    def test_no_switch_collects(self, qdp_command):
        for switch in _libqdp.ListSwitches():
            _libqdp.AdvStatsSetEnabled(switch["swID"], 0)
        text = "qdp: no switch collects advanced statistics; `qdp slowpath on SWITCH` turns them on\n"
        assert qdp_command("slowpath") == (0, "", text)
        assert qdp_command("slowpath", "-j") == (0, "[]\n", "")

    def test_counters_that_count(self, qdp_command):
        _libqdp.AdvStatsSetEnabled(0, 1)
        counters = {key: n for key, n in _libqdp.AdvStatsGetCounters(0, 0, "").items() if n}
        (row,) = [row for row in qdp_command.rows("slowpath") if row["swID"] == 0]
        assert row == dict(counters, swID=0, name="portset-0")


class TestNic:
    def test_drops_are_sorted_and_count(self, qdp_command):
        rows = qdp_command.rows("nic", "drops")
        counts = [row["count"] for row in rows]
        assert counts == sorted(counts, reverse=True) and min(counts) > 0
        found = {row["counter"]: row["count"] for row in rows if row["where"] == "egress"}
        stats = _libqdp.P4EStatsGet()
        assert found == {key: stats[key] for key in ("wrongReinject", "drop") if stats[key]}

    @pytest.mark.parametrize(
        "verb, method, entries, following, end",
        [
            ("lif", "LifPortList", "liflist", "nextIndex", 1024),
            ("port", "PortList", "portlist", "nextIndex", 1024),
            ("vlan", "VlanPortList", "vlanlist", "nextIndex", 65535),
        ],
    )
    def test_lists_have_every_page(self, qdp_command, verb, method, entries, following, end):
        wanted, start = [], 0
        while start < end:
            page = getattr(_libqdp, method)(start)
            if not page[entries] or page[following] <= start:
                wanted += page[entries]
                break
            wanted += page[entries]
            start = page[following]
        assert qdp_command.rows("nic", verb) == wanted and wanted


class TestTable:
    def test_entry_by_index_and_range(self, qdp_command):
        rows = qdp_command.rows("table", "get", "flow-info", "100-102")
        assert qdp_command.rows("table", "get", "flow_info", "100-102") == rows  # the name that the package has
        assert [row["key"] for row in rows] == [{"index": str(i)} for i in (100, 101, 102)]
        assert [row["dstPort"] for row in rows] == [_libqdp.TableFlowInfoGet(i)["dstPort"] for i in (100, 101, 102)]

    def test_entry_by_mac(self, qdp_command):
        segment, number = contract.segment_of_port(_libqdp), contract.mac_behind_port(_libqdp)
        text = ":".join("{:012x}".format(number)[i : i + 2] for i in range(0, 12, 2))
        (row,) = qdp_command.rows("table", "get", "mac", "segment={}".format(segment), "mac=" + text)
        assert row["dstPort"] == _libqdp.TableRegMACGet(segment, number)["dstPort"] != 0

    @pytest.mark.parametrize("text", ["10.1.2.3", "2001:db8::1", "ffff::ffff:ffff:ffff:ffff"])
    def test_addresses_are_given_in_signed_halves(self, qdp_command, text):
        address = ipaddress.ip_address(text)
        number = int(address)
        halves = [half - 2**64 if half >= 2**63 else half for half in (number % 2**64, number // 2**64)]
        with qdp_command.host.recording() as calls:
            qdp_command("table", "get", "tunnel-sa", "value=1", "address=" + text)
        by_command = [call for call in calls if "P4" in call.operation]
        with qdp_command.host.recording() as calls:
            _libqdp.TableTunnelSAGet(1, int(address.version == 4), *halves)
        assert by_command == [call for call in calls if "P4" in call.operation] != []

    def test_dump_has_the_lines_of_every_answer(self, qdp_command):
        table = _libqdp.P4HWTableList()[1]
        rows = qdp_command.rows("table", "dump", table["tableId"], "--first", "5", "--entries", "100")
        lines = _libqdp.P4HWTableDump(table["tableId"], 5, 30) + _libqdp.P4HWTableDump(table["tableId"], 35, 30)
        lines += _libqdp.P4HWTableDump(table["tableId"], 65, 30) + _libqdp.P4HWTableDump(table["tableId"], 95, 10)
        assert ["{}: {} ".format(row["pa"], row["bytes"]) for row in rows] == lines
        assert len(rows) == 100 * table["entrySize"] // 16


class TestCall:
    def test_result_as_rows(self, qdp_command):
        assert qdp_command.rows("call", "ListPorts", "1") == _libqdp.ListPorts(1)
        assert qdp_command.rows("call", "GetFlowTimeout") == [{"result": _libqdp.GetFlowTimeout()}]
        assert qdp_command.rows("call", "GetFlowStats", "0", "(0, 1)", "0") == _libqdp.GetFlowStats(0, (0, 1), 0)

    def test_what_changes_something_is_told_from_what_reads(self):
        from qdp.cli import call, load, object_names
        from qdp.cli._declare import Read, Write
        from qdp.settings import SETTINGS

        verbs = [verb for name in object_names() if name != "setting" for verb in load(name).verbs.values()]
        writers = {method for verb in verbs if isinstance(verb, Write) for method in verb.methods}
        writers |= {row.setter for row in SETTINGS}
        reading = [verb for verb in verbs if isinstance(verb, Read) and verb.name != "call"]
        readers = {method for verb in reading for method in verb.methods}
        readers |= {row.getter for row in SETTINGS if row.getter}
        assert len(writers) > 40 and len(readers) > 80
        assert {method for method in writers if not call.changes(method)} == set()
        assert {method for method in readers if call.changes(method)} == set()

    def test_dry_run_calls_nothing(self, qdp_command):
        before = _libqdp.GetFlowTimeout()
        assert qdp_command.rows("call", "SetFlowTimeout", "33", "-n") == [{"dryRun": "SetFlowTimeout(33)"}]
        assert _libqdp.GetFlowTimeout() == before
        assert qdp_command.rows("call", "SetFlowTimeout", "33", "-y") == []
        assert _libqdp.GetFlowTimeout() == 33
