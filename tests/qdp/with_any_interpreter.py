"""What objects, settings and rates do, as a script that every interpreter runs: it prints a line for each part."""

import qdp

ALIAS = "dvs-production"
host = qdp.Host()

switch = host.switch(ALIAS)
print(switch, [port.number for port in switch.uplinks()], host.switch("dvs-smartnic").alias)
print(switch.settings["burst-size"].set(64), switch.settings["burst-size"].value)
print(len(dict(host.all_settings())))
print(len(list(switch.flows(lcores=[1]))), next(switch.flows()).lcore)

with host.temporarily({"flow-timeout": 77, ALIAS + "/lro": False}) as changes:
    print([tuple(change) for change in changes], host.setting("flow-timeout").value)
print(host.setting("flow-timeout").value, host.setting(ALIAS + "/lro").value)

for wrong in (
    lambda: switch.settings["burst-size"].set(-1),
    lambda: host.switch("no-such-switch"),
    lambda: host.plan({"latency-histogramm": True}),
    lambda: host.setting("latency-histogram").get(),
):
    try:
        wrong()
    except qdp.QdpError as error:
        print(type(error).__name__, error)

print(host.nic.tables["flow_info"][101].flowIdx, [step.table for step in host.nic.trace(101)])
switch.port(3).add_mac("02:00:5e:10:00:01", vlan=100)
print([mac.vlanID for mac in switch.port(3).macs() if mac.macAddr == "02:00:5e:10:00:01"])
print([len(sample.ports) for sample in host.rates(every=0.01, count=2)])
print(repr(qdp.rates.Reading({"a": -1})), sorted(set(dir(qdp)) & {"Host", "Plan", "rates", "settings"}))
