"""What the rows of contract.py say arguments with: names of the default scenario, and functions of the module that ask
the host for what it has, or put a value there first."""

from ipaddress import ip_address

ALIAS = "dvs-production"
UPLINK = (0, 0)
VNIC = (0, 3)
SMARTNIC_SWITCH = 2
SMARTNIC_PORT = 17  # of the SmartNIC, before a port of that switch
SMARTNIC_LCORE = 12  # of that switch
FLOW = 101  # offloaded; its connection is number 1


def is_made_of(recipe, module):
    """The arguments of a recipe. To be asked for before every call: what a call takes away, its recipe puts there."""
    return recipe(module) if callable(recipe) else recipe


def number(mac):
    return int(mac.replace(":", ""), 16)


def static_mac(module):
    entry = (*VNIC, 0xFECA01004002, 7)
    module.AddMACEntry(*entry)
    return entry


def migrated_port(module):
    lcores = [port["txQLM"] for port in module.ListPorts(0) if port["portID"] == VNIC[1]][0]
    return (*VNIC, lcores[0], (lcores[0] + 1) % 8, 1)


def port_away_from_home(module):
    module.MigratePort(*migrated_port(module))
    return (*VNIC, 1)


def new_lif(module):
    module.PortDelete(40)
    return (40, 40, 41, 1, 2, 0, 0, 1)


def port_of_a_lif(module):
    module.LifPortCreate(*new_lif(module))
    return (40,)


def new_vlan(module):
    module.PortDelete(50)
    return (900, 50, 51, 1, 5, 6, 0)


def after(setter, *arguments, returned=()):
    """A recipe that puts a value there first, for a getter whose arguments are `returned`."""

    def recipe(module):
        getattr(module, setter)(*arguments)
        return returned

    return recipe


def mux_vlan(module):
    return next((vlan, 0) for vlan in range(1, 4095) if module.TableMuxVlanGet(vlan, 0)["valid"])


def segment_of_port(module):
    return module.TableInputGet(SMARTNIC_PORT)["l2Seg"]


def mac_behind_port(module):
    """The MAC address of the switch's port that the SmartNIC's port leads to."""
    return number(module.ListPorts(SMARTNIC_SWITCH)[3]["hwAddr"])


def lif_of_port(module):
    return (module.TableOutputGet(SMARTNIC_PORT)["lifId"],)


def first_tunnel(module):
    return next((i,) for i in range(8192) if module.TableTunnelRewriteGet(i)["geneve"])


def tunnel_end(module):
    tunnel = module.TableTunnelRewriteGet(*first_tunnel(module))
    return number(tunnel["smac"]), 8, 1, 1, tunnel["vlanID"], 4095, int(ip_address(tunnel["ipsa"])), 0


def tunnel_peer(module):
    return 1, 1, int(ip_address(module.TableTunnelRewriteGet(*first_tunnel(module))["ipda"])), 0


def key_of_a_flow(module):
    """The key of the first offloaded flow over IPv4, as its line in the flow table shows it."""
    page = module.DumpFlowTable(0, SMARTNIC_LCORE, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
    lines = [flow["key"].split() for flow in page["list"] if "hwFlowIdx: " in flow["actions"]]
    _, source_mac, destination_mac, vlan, tag, source, destination, protocol, vni, source_port, destination_port = next(
        line for line in lines if "." in line[5]
    )
    return (
        *(int(vlan), number(source_mac), number(destination_mac), int(tag) - 2048, 0, int(vni), int(protocol), 1),
        *(int(ip_address(source)), 0, int(ip_address(destination)), 0, int(source_port), int(destination_port)),
    )
