"""The exceptions of failed calls; each text of the module belongs to one class."""

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Dict, List, Optional, Tuple, Type, Union

    Row = Tuple[Type["QdpError"], str]  # the class of a text, and its hint

class QdpError(Exception):
    """A call that failed: `method` with its `arguments`, the platform's `text` as it is, and a `hint`: what to do."""

    default_hint = "see the log of the platform"

    def __init__(self, text="", method="", arguments=(), hint=""):
        # type: (str, str, Tuple[Any, ...], str) -> None
        super().__init__(text, method, arguments, hint)
        self.text = text
        self.method = method
        self.arguments = arguments
        self.hint = hint or self.default_hint

    def __str__(self) -> str:
        said = " ".join(self.text.split()) or "failed without a text"
        if not self.method:
            return said
        return "{}({}): {}".format(self.method, ", ".join(map(repr, self.arguments)), said)


class InvalidArgument(QdpError, ValueError):
    """An argument of a wrong type, or out of its range. Nothing was called, and nothing changed."""

    default_hint = "help() on the method says what each argument may be"


class NotFound(QdpError, LookupError):
    """A switch, a port or another thing that the host does not have."""

    default_hint = "ListSwitches and ListPorts list what there is"


class Refused(QdpError):
    """The platform refuses: what is asked for does not exist, is not possible now, or failed."""

    default_hint = "check that the switch, port or table exists and that the feature is on; see the log of the platform"


class BalancerRunning(Refused):
    """What places ports and filters by hand is refused while the balancer does that."""

    default_hint = "turn the balancer off first: SetLBMetric(alias, 'none')"


class NotStored(Refused):
    """A setting could not be written to the host's store."""

    default_hint = "read the setting again: the running datapath and the store may differ now"


class NotApplied(QdpError):
    """A setting reads back other than it was set."""

    default_hint = "read the setting again: the datapath may apply it later, or not at all"


class Unsupported(QdpError, NotImplementedError):
    """This datapath does not have the method."""

    default_hint = "there is nothing to do about it: no datapath of this version has it"


class BadAnswer(QdpError):
    """The platform's answer cannot be read."""

    default_hint = "the module and the platform may be of different versions"


class OutOfMemory(QdpError, MemoryError):
    """There is no memory for the call or its result."""

    default_hint = "free memory on the host, and try again"


NOT_UTF8 = "a text of the answer is not UTF-8, or there was no memory for it"
ALIAS_LOADED = "aliases are those that LibraryInit has loaded; ListSwitches lists the switches themselves"

# What the module says, on standard error and in its own exceptions, by class: without line breaks, %s, %u, %d and %#x
# for what differs; a text, or a text and a hint of its own. "SystemError: " stands before the one text
# that means another thing when it is not printed, but the text of an exception.
TEXTS = {
    InvalidArgument: [
        "Failed to convert destination IP address to binary form.",
        "Failed to convert destination IPv4 address to binary form.",
        "Failed to convert source IPv4 address to binary form.",
        ("Invalid filter Class provided, only VLANMAC is accepted as input", "give 'VLANMAC'"),
        ("Invalid metric name %s.", "give 'none', 'cpu' or 'count'"),
        "Invalid parameter passed.",
        "Invalid traffic format at traffic %d.",
        "TypeError: Invalid parameter passed.",
        "TypeError: Invalid startIndex passed.",
        ("TypeError: Invalid switch ID passed.", "give a switch number, 0 to 15"),
        ("Unknown parameter name.", "GetLBParams lists the names"),
        ("ValueError: Ring size must be %u aligned.", "give a multiple of that number"),
        "invalid parameter passed.",
    ],
    NotFound: [
        ("Failed to find dvs ID for dvs alias %s.", ALIAS_LOADED),
        ("Failed to get portset name from dvs %s.", "the switch is configured, and not in the datapath"),
        ("cannot find dvs alias.", ALIAS_LOADED),
    ],
    Refused: [
        "Failed clear switch flow table",
        "Failed to %s advanced stats.",
        "Failed to %s panic on Tx hang.",
        "Failed to %s switch flow cache.",
        "Failed to add a MAC entry.",
        "Failed to clear mac table.",
        "Failed to create/update the lif port",
        "Failed to create/update the mux vlan port",
        "Failed to delete MAC entry.",
        "Failed to delete a port",
        "Failed to dump HW table data.",
        "Failed to dump LB stats. Please see hostcore.log",
        "Failed to dump Mirror table data.",
        "Failed to dump ipfix table entry.",
        "Failed to get DVS property com.tarnix.wyx.qdp.fpo",
        "Failed to get FPO flow stats update config",
        "Failed to get FPO revalidation config",
        "Failed to get FPO uplink stats.",
        "Failed to get FPO uplink status.",
        "Failed to get HW CT entry",
        "Failed to get RSS override info.",
        "Failed to get advanced stats counter.",
        "Failed to get aging interval",
        "Failed to get borea log level.",
        "Failed to get current FPO flow stats config",
        "Failed to get current FPO revalidation config",
        (
            "Failed to get current support FilterClasses on switch",
            "the switch has no filter class, or none can be read",
        ),
        "Failed to get dscp conf",
        "Failed to get host pfs",
        "Failed to get lif port list",
        "Failed to get lif stats",
        "Failed to get mux VLAN info",
        "Failed to get p4 egress stats",
        "Failed to get p4 ingress stats",
        "Failed to get p4 table info",
        "Failed to get panic on Tx hang configuration.",
        "Failed to get port TX uplink.",
        "Failed to get port conntrack stats",
        "Failed to get port stats",
        "Failed to get private stats.",
        "Failed to get refresh packet injection config",
        "Failed to get shadow port list",
        "Failed to get supported filter classes for %s.",
        "Failed to get table data",
        "Failed to get uplink stats.",
        "Failed to inject traffic.",
        "Failed to migrate filter of port %d.",
        "Failed to migrate port.",
        "Failed to perform cache invalidation",
        "Failed to reset port.",
        "Failed to retrieve RSS Engine list.",
        "Failed to retrieve flow stats.",
        "Failed to retrieve flow table.",
        ("Failed to retrieve list of ports.", "check the switch number against ListSwitches"),
        "Failed to retrieve list of switches.",
        "Failed to retrieve mac table.",
        "Failed to retrieve port conf.",
        "Failed to retrieve port stats.",
        "Failed to retrieve slowpath port stats.",
        "Failed to retrieve switch mac table.",
        "Failed to set DSCP conf",
        "Failed to set FPO flow stats update config",
        "Failed to set FPO revalidation config",
        "Failed to set RSS override",
        "Failed to set aging interval",
        "Failed to set borea log level.",
        "Failed to set host PFs",
        "Failed to set refresh packet injection config",
        "Failed to set uplink mac learn policy.",
        "Failed to unpin port.",
        "Failed to update mux vlan based port",
        "Failed to update the defaultVLAN of a port",
        "Failed to update the lif port",
        "OSError: Failed to issue FPO offload ICMP Echo command",
        "OSError: Failed to issue QDP command",
        "Query mgr failed.",
        "TypeError: Failed to get lcore ID bitmap.",
        "TypeError: Failed to get mux mode.",
        "TypeError: Failed to init QDP mbuf fastslabs.",
        "ValueError: Failed to dump debug buffer: %#x.",
        "ValueError: Failed to flush debug buffer: %#x.",
        "ValueError: Failed to get LRO.",
        "ValueError: Failed to get advanced stats status.",
        "ValueError: Failed to get flow timeout.",
        "ValueError: Failed to get minimum flow layer of switch %u",
        "ValueError: Failed to list device affinity.",
        "ValueError: Failed to read property data length.",
        "ValueError: Failed to set LRO.",
        "ValueError: Failed to set device affinity.",
        "ValueError: Failed to set flow timeout.",
        "ValueError: Failed to set switch minFlowLayer.",
        "failed to get parameters.",
        "failed to set parameter.",
    ],
    BalancerRunning: [
        "Please disable automatic thread load balancing.",
    ],
    NotStored: [
        "Failed to set DVS property %s",
        "Failed to set DVS property com.tarnix.wyx.qdp.fpo",
        "ValueError: Failed to set port property.",
    ],
    Unsupported: [
        "Dump Decap  Flow Not supported below 2.10.0.0",
        "Dump Port Flow Not supported below 2.10.0.0",
        "Not supported in release build.",
    ],
    BadAnswer: [
        "Error in geting host pfs",
        "Format of property %s value is from unknown version.",
        "Format of property com.tarnix.wyx.qdp.fpo is invalid",
        "Invalid action",
        "Invalid format in LB stats dump",
        "Invalid response returned.",
        "Property %s value length is odd.",
        "Unexpected response size %u, expected: %u",
        "ValueError: Invalid property data length.",
        ("SystemError: Failed to allocate buffer.", NOT_UTF8),
        ("Failed to set list item.", "a list of the answer is longer than it says"),
    ],
    OutOfMemory: [
        "Failed to allocate NetQ Info resp.",
        "Failed to allocate RSS engine list.",
        "Failed to allocate buffer for dict",
        "Failed to allocate buffer for plist",
        "Failed to allocate buffer.",
        "Failed to allocate mac table.",
        "Failed to allocate memory",
        "Failed to allocate memory for contextReq",
        "Failed to allocate memory for contextResp",
        "Failed to allocate memory.",
        "Failed to allocate port list.",
        "Failed to allocate stats tuple.",
        "Failed to allocate switch mac table.",
        "Failed to allocate uplink stats counter.",
        "Failed to allocate uplink stats.",
        "Failed to create dump buffer.",
        "Failed to create tuple.",
        "Failed to list RSS engines.",
        "Failed to set dict item.",
        "Failed to set tuple item.",
        "Failed to set uplink stats counter.",
        "Memory allocation failed.",
    ],
}  # type: Dict[Type[QdpError], List[Union[str, Tuple[str, str]]]]

# The characters that may stand for a number's placeholder; for %s, any text.
NUMBERS = {"%u": "0123456789", "%d": "-0123456789", "%#x": "x0123456789abcdef"}

_exact = {}  # type: Dict[str, Row]
_patterns = []  # type: List[Tuple[List[str], List[str], Row]]


def _prepare() -> None:
    """Makes the table ready for look-ups, when the first text is seen. Other threads may do the same meanwhile. Imports
    nothing: a process that is forked from an import in another thread could never import the same."""
    exact = {}  # type: Dict[str, Row]
    patterns = []
    for failure, rows in TEXTS.items():
        for row in rows:
            text, hint = row if isinstance(row, tuple) else (row, "")
            exact[text] = (failure, hint)
            if "%" in text:
                patterns.append(_pieces(text) + ((failure, hint),))
    _patterns[:] = patterns
    _exact.update(exact)  # the last: from here on the table is whole


def _pieces(text: str) -> "Tuple[List[str], List[str]]":
    """The pieces of a text around its placeholders, and these."""
    pieces = [""]
    placeholders = []  # type: List[str]
    i = 0
    while i < len(text):
        length = 3 if text.startswith("%#x", i) else 2 if text[i] == "%" else 0
        if length:
            placeholders.append(text[i : i + length])
            pieces.append("")
        else:
            pieces[-1] += text[i]
        i += length or 1
    return pieces, placeholders


def _end_of_match(pieces: "List[str]", placeholders: "List[str]", text: str, start: int) -> int:
    """Where a text with placeholders ends that starts there: at a line's end, or the text's; -1 when it does not."""
    if not text.startswith(pieces[0], start):
        return -1
    end = start + len(pieces[0])
    for i, placeholder in enumerate(placeholders):
        is_last = i == len(placeholders) - 1
        found = (text + "\n").find(pieces[i + 1] + ("\n" if is_last else ""), end)
        if found < 0 or text[end:found].strip(NUMBERS.get(placeholder, text)):
            return -1
        end = found + len(pieces[i + 1])
    return end


def _row_at(text: str, start: int) -> "Tuple[Optional[Row], int]":
    """The row of the text that starts there, and where that ends; None and the line's end when it is not known."""
    end = text.find("\n", start)
    end = len(text) if end < 0 else end
    row = _exact.get(text[start:end])
    if row is None:
        for pieces, placeholders, row_of_pattern in _patterns:
            found = _end_of_match(pieces, placeholders, text, start)
            if found >= 0:
                return row_of_pattern, found
    return row, end


def split(text: str) -> "Tuple[str, str, Optional[Row]]":
    """What is known of a text, what is not, and the row of the first that is known."""
    if not _exact:
        _prepare()
    known = []  # type: List[str]
    unknown = []  # type: List[str]
    first = None
    start = 0
    while start < len(text):
        row, end = _row_at(text, start)
        while text[end : end + 1] == "\n":
            end += 1
        (known if row else unknown).append(text[start:end])
        first = first or row
        start = end
    return "".join(known), "".join(unknown), first


def failure(text: str, method: str, arguments: "Tuple[Any, ...]", row: "Optional[Row]" = None) -> QdpError:
    """The exception for a text, or for a failure without one."""
    if row is None:
        row = split(text)[2] or (Refused, "")
    return row[0](text, method, arguments, row[1])


def row_of_exception(exception: Exception, text: str) -> "Optional[Row]":
    """The row of an exception that a method raised, or the interpreter for it; None for one that is none of these."""
    prefix = "SystemError: " if isinstance(exception, SystemError) else ""
    row = split(prefix + text)[2] or split(text)[2]
    if row is not None:
        return row
    if isinstance(exception, UnicodeDecodeError):
        return BadAnswer, NOT_UTF8
    if isinstance(exception, (TypeError, ValueError, OverflowError)):
        return InvalidArgument, ""
    return (OutOfMemory, "") if isinstance(exception, MemoryError) else None
