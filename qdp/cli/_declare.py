"""What a command is made of: objects with verbs, and verbs with selectors, options and columns."""


class Column:
    """One column of a table.

    keys: the keys of a row that the column shows; counters of several keys are added up. The name, if none are given.
    kind: how a value is written, and whether it is a counter, see `_rows.WRITTEN`
    priority: what fits no terminal is dropped from the lowest priority on; 9 is dropped last
    group: "" is always shown, "d" with --details, "s" with --statistics
    """

    __slots__ = ("name", "keys", "kind", "priority", "group", "unit", "help")

    def __init__(self, name, keys=None, kind="text", priority=5, group="", unit="", help=""):
        self.name = name
        self.keys = (name,) if keys is None else (keys,) if isinstance(keys, str) else tuple(keys)
        self.kind = kind
        self.priority = priority
        self.group = group
        self.unit = unit
        self.help = help


class Option:
    """One option or selector of a verb: the arguments of argparse's add_argument, and what completes it."""

    __slots__ = ("flags", "settings", "completes")

    def __init__(self, *flags, **settings):
        self.flags = flags
        self.completes = settings.pop("completes", None)
        self.settings = settings

    @property
    def usage(self):
        """A selector as a usage line has it."""
        form = {"?": "[{}]", "*": "[{}]...", "+": "{}..."}.get(self.settings.get("nargs"), "{}")
        return form.format(self.settings["metavar"])


class Verb:
    """One verb of an object.

    methods: the methods of the module that this verb is the command for; each method has one
    selectors, options: what the command line names
    reads_snapshots: whether it works with --from
    """

    reads_snapshots = False

    def __init__(self, name, help, methods=(), selectors=(), options=()):
        self.name = name
        self.help = help
        self.methods = tuple(methods)
        self.selectors = tuple(selectors)
        self.options = tuple(options)


class Read(Verb):
    """A verb that shows rows.

    read: a function of the context that gives the rows, dicts with the module's keys
    columns: what a table shows; without columns each row is shown as lines of key and value
    identity: the keys that name a row from one reading to the next
    gauges: of rows without columns, the numbers that are no counters; none is one in a row where
        `counts`, a function of the row or one answer for all, is False
    narrow: the counters of 32 bits, or True for all
    order: the column that the rows are sorted by where nothing else is asked for, with - the highest first
    """

    reads_snapshots = True

    def __init__(
        self, name, help, read, columns=(), identity=(), gauges=(), counts=True, narrow=(), order=None, **settings
    ):
        super(Read, self).__init__(name, help, **settings)
        self.read = read
        self.columns = tuple(columns)
        self.identity = tuple(identity)
        self.gauges = frozenset(gauges)
        self.narrow = narrow
        self.counts = counts if callable(counts) else lambda row: counts
        self.order = order

    @property
    def has_statistics(self):
        return any(column.group == "s" for column in self.columns)

    @property
    def has_details(self):
        return any(column.group == "d" for column in self.columns)


class Write(Verb):
    """A verb that changes something.

    plan: a function of the context that gives the steps, see `_write.Step`
    danger: what is lost, in words; such a verb asks first
    """

    def __init__(self, name, help, plan, danger=None, **settings):
        super(Write, self).__init__(name, help, **settings)
        self.plan = plan
        self.danger = danger


class Run(Verb):
    """A verb with a way of its own: `run` is a function of the context that gives the exit code."""

    def __init__(self, name, help, run, reads_snapshots=False, **settings):
        super(Run, self).__init__(name, help, **settings)
        self.run = run
        self.reads_snapshots = reads_snapshots


class Object:
    """One object of the command. `qdp OBJECT` without a verb is its verb `show`, or its only verb."""

    def __init__(self, name, help, *verbs):
        self.name = name
        self.help = help
        self.verbs = {verb.name: verb for verb in verbs}

    @property
    def default(self):
        """The verb of a command line that names none; None where one has to be named."""
        return self.verbs.get("show") or (next(iter(self.verbs.values())) if len(self.verbs) == 1 else None)

    def find(self, words):
        """The verb that the words begin with, and how many of them name it; (None, 0) when none does.

        The verbs of a part are two words, as in `nic lif add`; the part alone is its `show`.
        """
        if len(words) > 1 and " ".join(words[:2]) in self.verbs:
            return self.verbs[" ".join(words[:2])], 2
        if words and words[0] in self.verbs:
            return self.verbs[words[0]], 1
        if words and words[0] + " show" in self.verbs:
            return self.verbs[words[0] + " show"], 1
        return self.default, 0


# The types of arguments. What they raise becomes one line of error.
def number(text):
    """An integer, decimal or 0x hexadecimal."""
    return int(text, 0) if text.lower().lstrip("-").startswith("0x") else int(text)


def natural(text):
    value = number(text)
    if value < 1:
        raise ValueError(text)
    return value


def seconds(text):
    """A duration: a number of seconds, or with one of the units s, m and h."""
    unit = {"s": 1, "m": 60, "h": 3600}.get(text[-1:])
    value = float(text[:-1] if unit else text) * (unit or 1)
    if not 0 < value <= 86400:
        raise ValueError(text)
    return value


def mac(text):
    """A MAC address in any of its usual forms, as the module writes it."""
    digits = "".join(each for each in text.lower() if each not in ":-.")
    if len(bytes.fromhex(digits)) != 6 or len(digits) != 12:
        raise ValueError(text)
    return ":".join(digits[i : i + 2] for i in range(0, 12, 2))


def address(text):
    """An IPv4 or IPv6 address."""
    import ipaddress

    return ipaddress.ip_address(text)


# The selectors that commands share. A switch is named by its number, its name in the datapath or its alias.
def switch(nargs=None):
    about = "number, portset or alias of a switch"
    return Option("switch", metavar="SWITCH", nargs=nargs, completes="switch", help=about)


def port(nargs=None):
    return Option("port", metavar="PORT", nargs=nargs, type=number, completes="port", help="number of a port")


# The options of what changes something.
WRITING = (
    Option("-n", "--dry-run", action="store_true", help="show what would be done, and do nothing"),
    Option("-y", "--yes", action="store_true", help="do not ask"),
)

ANY_SWITCH, ANY_PORT = switch("?"), port("?")
SWITCH, PORT = switch(), port()
