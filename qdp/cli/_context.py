"""What a verb's functions get: the options, and ways to ask the datapath that go on when it refuses a part."""

from ._output import REFUSED, CommandError, complain, progress, report
from ._source import source_of

NO_MORE = 0xFFFFFFFF  # the index behind the last page


class Context:
    """One run of a verb."""

    def __init__(self, verb, options):
        self.verb = verb
        self.options = options
        self.source = source_of(options)
        self.code = 0
        self.progress = progress

    def refuse(self, error):
        """Reports what could not be had; the command goes on, and ends with the exit code for that."""
        report(error, self.options.json)
        self.code = REFUSED

    def note(self, text):
        """Says on standard error why there is nothing to show, to a reader who looks once."""
        if not self.options.json and self.options.watch is None:
            complain("qdp: " + text)

    def call(self, method, *arguments):
        return self.source.call(method, *arguments)

    def ask(self, method, *arguments):
        """The answer of a method; None where it is refused, which is reported."""
        from ..errors import QdpError

        try:
            return self.source.call(method, *arguments)
        except QdpError as error:
            self.refuse(error)
            return None

    def pages(self, method, entries, following, end, *arguments, **settings):
        """The entries of all pages of a list. `entries` and `following` are keys of a page.

        How the last page is marked is the datapath's own affair: the list ends with an empty page, and where the next
        index does not advance or is none that the method takes, which `end` tells.
        """
        tail = settings.get("tail", ())
        start, next_start, count = -1, 0, 0
        while start < next_start < end:
            start = next_start
            page = self.ask(method, *(arguments + (start,) + tail))
            if not page or not page[entries]:
                return
            for entry in page[entries]:
                yield entry
            count += len(page[entries])
            self.progress("{}: {:,} entries".format(settings.get("title", method), count))
            next_start = page[following]

    def switches(self, wanted=None):
        """The switches; the one that is wanted when one is named."""
        listed = self.call("ListSwitches")
        if wanted is None:
            return listed
        found = [switch for switch in listed if wanted in (str(switch["swID"]), switch["name"])]
        if not found:
            portset = self.source.aliases.portset_of(wanted)
            found = [switch for switch in listed if switch["name"] == portset]
        if found:
            return found[:1]
        text = "there is no switch {!r}; `qdp switch show` lists the switches".format(wanted)
        if self.options.default_verb_of:  # the word may have been meant as a verb
            text += ", `qdp {} --help` the verbs".format(self.options.default_verb_of)
        raise CommandError(text)

    def switch(self, wanted):
        return self.switches(wanted)[0]

    def ports(self, switch, wanted=None, is_uplink=None):
        """The ports of a switch; the one that is wanted when one is named."""
        listed = self.ask("ListPorts", switch["swID"])
        if listed is None:
            return []
        found = [port for port in listed if is_uplink in (None, port["clientType"] == "UPLINK")]
        if wanted is None:
            return found
        found = [port for port in found if port["portID"] == wanted]
        if not found:
            what = "uplink" if is_uplink else "port"
            text = "switch {} ({}) has no {} {}; `qdp {} show {}` lists them"
            raise CommandError(text.format(switch["swID"], switch["name"], what, wanted, what, switch["swID"]))
        return found

    def port(self, switch, wanted):
        """A port that a verb changes."""
        found = self.ports(switch, wanted)
        if not found:
            raise CommandError("the ports of switch {} cannot be listed".format(switch["swID"]))
        return found[0]

    def places(self, is_uplink=None):
        """(switch, port) of every port that the selectors name."""
        for switch in self.switches(self.options.switch):
            for port in self.ports(switch, self.options.port, is_uplink):
                yield switch, port


def lcores(switch):
    """The lcores that forward for a switch."""
    return [lcore for lcore in range(64) if switch["lcores"] >> lcore & 1]


def place(switch, port=None):
    """The keys that say where a row is from."""
    row = {"swID": switch["swID"], "name": switch["name"]}
    if port is not None:
        row["portID"] = port["portID"]
    return row
