"""Uses of qdp as a script makes them. mypy reads this; it is never run."""

from typing import List, Optional

import qdp

host = qdp.Host()
switch: qdp.Switch = host.switch("dvs-production")
number: int = switch.number
alias: Optional[str] = switch.alias
mtu: int = switch.info.mtu
ports: List[qdp.Port] = switch.ports()
drops: int = ports[0].stats().rxDrops
change: qdp.Change = switch.settings["burst-size"].set(64)
changed: bool = change.changes
for flow in switch.flows(source="10.0.0.1"):
    lcore: int = flow.lcore
    vlan = flow.parsed_key.vlan
plan: qdp.Plan = host.plan({"flow-timeout": 20})
with host.temporarily({"flow-timeout": 20}) as changes:
    first: qdp.Change = changes[0]
for sample in host.rates(every=5, count=1):
    rate: Optional[float] = sample.ports[0]["rxPkts"]
index: int = host.nic.tables["flow_info"][7].flowIdx
step: str = next(host.nic.trace(7)).step
lif: int = next(host.nic.lifs()).lifID
try:
    switch.port(5).add_mac("02:00:5e:10:00:01", vlan=100)
except qdp.Refused as refusal:
    text: str = refusal.text
