"""Uses of the module as a script makes them. mypy reads this; it is never run."""

from __future__ import annotations

from typing import TYPE_CHECKING

import _libqdp

if TYPE_CHECKING:
    from _libqdp import FPOSettings, LBContext, LBTraffic, PortInfo


def busiest_port(switch: int) -> tuple[str, int]:
    ports = _libqdp.ListPorts(switch)
    if ports is None:
        raise SystemExit(f"switch {switch} has no ports to list")
    most = 0
    name = ""
    for port in ports:
        counters = _libqdp.GetPortStats(switch, port["portID"])
        if counters is not None and counters["rxBytes"] + counters["spRxBytes"] > most:
            most = counters["rxBytes"] + counters["spRxBytes"]
            name = port["hwAddr"]
    return name, most


def uplinks(switch: int) -> list[PortInfo]:
    return [port for port in _libqdp.ListPorts(switch) or [] if port["clientType"] == "UPLINK"]


def uplink_errors(switch: int, port: int) -> int:
    stats = _libqdp.GetUplinkStats(switch, port)
    if stats is None or stats["uplinkStats"] is None:
        return 0
    return sum(value for name, value in stats["uplinkStats"] if name in ("rxErrors", "txErrors"))


def all_flows(lcore: int) -> list[str]:
    lines: list[str] = []
    start = 0
    while True:
        page = _libqdp.DumpFlowTable(0, lcore, start, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
        if page is None or not page["list"]:
            return lines
        lines += [f"{flow['key']} {flow['actions']} {flow['swHits'] + flow['hwHits']}" for flow in page["list"]]
        start = page["startIndex"]


def span_destination(switch: int, address: str) -> str | None:
    record = _libqdp.GetL3SPANRecord(switch, int(":" in address), address, 0)
    if record is None or not record["isValid"]:
        return None
    return record.get("geneve_dst") or record.get("gre_dst")


def offload(alias: str, enabled: bool) -> bool:
    settings: FPOSettings = {"enabled": enabled}
    before = _libqdp.GetFPOEnabled(alias)
    if before is not None and before["models"] == 0:
        settings["models"] = 7
    return _libqdp.EnableFPO(alias, settings)


def balance(alias: str) -> None:
    if _libqdp.GetLBMetric(alias) != "cpu" and not _libqdp.SetLBMetric(alias, "cpu"):
        raise SystemExit("the metric was not stored")
    _libqdp.SetLBParam(alias, "cpuload_high", _libqdp.GetLBParams(alias)["cpuload_target"] + 10)


def loaded_contexts(switch: int) -> list[LBContext]:
    ports, _, contexts = _libqdp.DumpLBStats(switch, 0, 16384, 0, 64)
    used = {item["ctx ID"] for port in ports for item in port["vnicRxQ"] + port["vnicTxQ"]}
    return [context for context in contexts if context["ctx ID"] in used]


def inject(switch: int, uplink: int, port: int) -> None:
    traffic: tuple[LBTraffic, ...] = tuple((uplink, -1, port, queue, 50) for queue in range(4))
    _libqdp.InjectLBTraffic(switch, traffic)


def all_lifs() -> dict[int, int]:
    found: dict[int, int] = {}
    start = 0
    while (page := _libqdp.LifPortList(start)) is not None and page["liflist"]:
        found.update((lif["lifID"], lif["srcPort"]) for lif in page["liflist"])
        start = page["nextIndex"]
    return found


def flow_is_dropped(index: int) -> bool:
    info = _libqdp.TableFlowInfoGet(index)
    return info is not None and info["drop"] == 1


def forwarding(lif: int) -> str:
    entry = _libqdp.TableInputGet(lif)
    return entry.get("fwdMode", "not valid") if entry is not None else "unknown"


def slow_samples() -> int:
    histogram = _libqdp.P4UKLatencyDump(0)
    return histogram["9000us"] + histogram["outOfBucket"] if histogram is not None else 0


def ring_bytes(switch: str, port: str, entry_bytes: int) -> int:
    sizes = _libqdp.GetUplinkRingSize(switch, port)
    return sum(sizes) * entry_bytes if sizes is not None else 0


def lcore_hits() -> dict[int, int]:
    lcores = _libqdp.ListLCoreIDs(0) or ()
    return {each["lcoreID"]: each["hits"] for each in _libqdp.GetFlowStats(0, lcores, 0) or []}
