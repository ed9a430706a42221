"""The ways in which each method fails, and the pair that is documented for each: what the C function returns, and the
exception that it leaves set."""

from collections import namedtuple

from documented import GOES_ON, RAISED, RETURNED, RETURNING_NULL
from recipes import ALIAS, RECIPES
from refusals import calls_that_may_be_refused

# What a C function returned, NULL for a null pointer; and the type of the exception that is set, or None.
Pair = namedtuple("Pair", "value exception")

NULL = "NULL"
NONE = Pair(None, None)

# One way to fail: how, arguments, the call of an operation that refuses (operation, which call of it, status) if one
# does, and the pair. The pair None stands for that of success.
Path = namedtuple("Path", "what arguments refused pair")

# --- Tuples that do not parse: the parser's TypeError stays set, beside None ---

UNPARSED = {
    "SetLBParam": Pair(NULL, ValueError),
    "GetLBParams": Pair(NULL, ValueError),
    "DumpLBStats": Pair(NULL, TypeError),
    "SetLBMetric": Pair(False, TypeError),
    "SetSwitchMinFlowLayer": Pair(False, TypeError),
    "EnableFPO": Pair(False, TypeError),
    "SetSwitchMetaFlow": Pair(0, TypeError),
}

# Places that take any object, whose form the method itself checks; and objects of that form with a wrong item. The
# interpreter's TypeError for an item that is no integer stays set, save that of traffic.
OBJECT_PLACES = {
    "GetFlowStats": (1, NONE, [((0, "1"), Pair(None, TypeError)), ((0,) * 65, NONE)]),
    "GetFPOStats": (1, NONE, [((0, "1"), Pair(None, TypeError)), ((0,) * 65, NONE)]),
    "InjectLBTraffic": (1, NONE, [(((0, 1, 2, 3, "4"),), NONE), (((0, 1, 2, 3),), NONE), ((4,), NONE)]),
    "EnableFPO": (1, Pair(False, None), [({"models": "4"}, Pair(False, TypeError))]),
}


def unparsed(name, arguments):
    pair = UNPARSED.get(name, Pair(None, TypeError))
    object_place, object_pair, wrong_objects = OBJECT_PLACES.get(name, (None, None, []))
    for place in range(len(arguments)):
        is_object = place == object_place
        yield "wrong type", at(arguments, place, 1.5), object_pair if is_object else pair
    for wrong in wrong_objects:
        yield "wrong item", at(arguments, object_place, wrong[0]), wrong[1]
    if arguments:
        yield "one too few", arguments[:-1], pair
        yield "one too many", (*arguments, 1), pair


def at(arguments, place, value):
    return (*arguments[:place], value, *arguments[place + 1 :])


# --- Values out of range: None, and no exception ---

SWITCH = {0: 16}
PORT = {**SWITCH, 1: 16384}
FLOWS = 1 << 22

# The first value that is refused, by its place in the tuple.
BOUNDS = {
    **dict.fromkeys(
        """
        ListPorts ListPortMACTable ClearPortMACTable AddMACEntry DelMACEntry ListSwitchMACTable ClearSwitchMACTable
        GetL3SPANRecord SetUplinkMACLearn ClearSwitchFlowTable GetPanicOnTxHang DumpLBDebugBuf FlushLBDebugBuf
        GetSwitchLRO SetSwitchLRO GetSwitchMinFlowLayer SetSwitchMinFlowLayer ListSwitchMuxVLAN ListSwitchShadowPorts
        AdvStatsGetEnabled AdvStatsGetCounters
        """.split(),
        SWITCH,
    ),
    **dict.fromkeys(
        """
        GetPortStats GetPortConf MigratePort UnpinPort ResetPort GetPortTxUplink GetUplinkStats GetUplinkQueueStats
        ListRSSEngine GetPortNetQInfo MigrateNetQFilter GetPortLRO SetPortLRO GetFPOUplinkStatus GetFPOUplinkStats
        """.split(),
        PORT,
    ),
    "DumpFlowTable": {1: 64, 2: 0xFFFFFFFF},
    "EnableSwitchFlowCache": {**SWITCH, 1: 2},
    "SetPanicOnTxHang": {**SWITCH, 1: 2},
    "DumpLBStats": {**PORT, 2: 16385, 3: 64, 4: 65},
    "HostPFSet": {0: 6, 1: 1024, 2: 1024, 3: 1024, 4: 1024},
    "LifPortCreate": {0: 1024, 1: 1024, 2: 1024, 3: 3, 4: 9, 5: 2, 6: 2, 7: 4095},
    "LifPortUpdate": {0: 1024, 1: 3, 2: 2, 3: 2},
    "LifPortList": {0: 1024},
    "VlanPortCreate": {0: 4095, 1: 1024, 2: 1024, 3: 3, 4: 1024, 5: 1024, 6: 4096},
    "VlanPortUpdate": {0: 4095, 1: 3},
    "VlanPortList": {0: 65535},
    "PortUpdate": {0: 1024, 1: 4095},
    "PortDelete": {0: 1024},
    "PortList": {0: 1024},
    "LifStatsGet": {0: 1024},
    "PortStatsGet": {0: 1024},
    "TableLifStatsGet": {0: 1024},
    "TablePortStatsGet": {0: 1024},
    "TableInputGet": {0: 1024},
    "TableOutputGet": {0: 1024},
    "TableMuxVlanGet": {0: 4095},
    "TableVlanMapGet": {0: 4095},
    "TableIPFixGet": {0: FLOWS},
    "TableCTStatsGet": {0: 4096},
    "TableCTStateGet": {0: FLOWS},
    "TableMirrorGet": {0: 8},
    "TableMirrorL3Get": {0: 6, 1: 1024},
    "TableTunnelTerminateGet": {0: 1 << 48, 1: 1024, 4: 4096, 5: 4096, 6: 1 << 32, 7: 1},
    "TableTunnelSAGet": {0: 256, 2: 1 << 32, 3: 1},
    "TableFlowKeyGet": {
        **{0: 4095, 1: 1 << 48, 2: 1 << 48, 3: 1024, 4: FLOWS, 5: 1 << 24, 6: 256, 8: 1 << 32, 9: 1, 10: 1 << 32},
        **{11: 1, 12: 1 << 16, 13: 1 << 16},
    },
    "TableFlowInfoGet": {0: FLOWS},
    "TableFlowRewriteGet": {0: FLOWS},
    "TableTunnelRewriteGet": {0: 8192},
    "AdvStatsSetEnabled": {**SWITCH, 1: 3},
    "P4RssOverrideSet": {**SWITCH, 1: 1023, 3: 64},
    "P4RssOverrideGet": {**SWITCH, 1: 1023},
    "P4LogLevelSet": {0: 6},
}

OUT_OF_RANGE = {"DumpLBStats": Pair(NULL, ValueError), "SetSwitchMinFlowLayer": Pair(False, None)}


def out_of_range(name, arguments):
    for place, value in BOUNDS.get(name, {}).items():
        yield "out of range", at(arguments, place, value), OUT_OF_RANGE.get(name, NONE)


# --- Texts that name nothing: None, and no exception ---

UNKNOWN = {
    "SetLBParam": Pair(NULL, ValueError),
    "GetLBParams": Pair(NULL, ValueError),
    "SetLBMetric": Pair(False, None),
    "EnableFPO": Pair(False, None),
    "SetSwitchMetaFlow": Pair(0, None),
}

# Arguments of which a text beside the alias is refused.
NAMED = {
    "DumpFlowTable": [
        (0, 1, 0, 0, 0, "", 0, "", 4, "no address", 0, "", 0, 0, 0, 0, 0),
        (0, 1, 0, 0, 0, "", 0, "", 0, "", 6, "no address", 0, 0, 0, 0, 0),
    ],
    "SetSwitchFilterTypes": [(ALIAS, "vlanmac", 1)],
    "SetLBMetric": [(ALIAS, "CPU")],
    "SetLBParam": [(ALIAS, "no parameter", 1)],
    "GetL3SPANRecord": [(0, 0, "no address", 0), (0, 1, "no address", 0)],
}
NAMED_BY_ALIAS = [name for name, recipe in RECIPES.items() if not callable(recipe) and recipe[:1] == (ALIAS,)]
NAMED_BY_ALIAS += ["GetSwitchBurstSize", "GetSwitchOverlayL2Flow", "GetSwitchMetaFlow"]

# These hand the switch's text to the platform as it is.
NAMED_BY_ANY_TEXT = ["SetUplinkRingSize"]


def unknown(name, arguments):
    pair = UNKNOWN.get(name, NONE)
    if name in NAMED_BY_ALIAS and name not in NAMED_BY_ANY_TEXT:
        yield "unknown switch", at(arguments, 0, "unknown"), pair
    for wrong in NAMED.get(name, []):
        yield "unknown name", wrong, pair


# --- Platform operations that refuse ---


def refused(name, arguments, calls):
    for call in calls_that_may_be_refused(calls):
        operation = call[0]
        if operation in GOES_ON.get(name, []):
            pair = None
        elif name in RAISED:
            pair = Pair(NULL, ValueError if operation == "DVSState_SwitchFindByAlias" else OSError)
        else:
            pair = Pair(NULL if name in RETURNING_NULL else RETURNED.get(name), None)
        yield Path("refused", arguments, call, pair)


def failure_paths(name, arguments, calls):
    """All ways in which a method fails that succeeds with these arguments and platform calls."""
    for wrong in (unparsed, out_of_range, unknown):
        for what, given, pair in wrong(name, arguments):
            yield Path(what, given, None, pair)
    yield from refused(name, arguments, calls)
