"""Where the command reads and writes: the one place that all its calls go through."""

from ._rows import plain


class Live:
    """The datapath of this host."""

    def __init__(self):
        self._aliases = None

    def call(self, method, *arguments):
        """The answer of a method as dicts and lists with unsigned counters; a QdpError where it fails."""
        from ..call import call_raw

        return plain(call_raw(method, *arguments))

    @property
    def aliases(self):
        """Aliases of switches by portset name, and the other way round; loaded when they are first asked for."""
        if self._aliases is None:
            from ..aliases import Aliases

            self._aliases = Aliases()
        return self._aliases

    @property
    def host(self):
        """The objects of the package, for what has identity there: settings."""
        from ..host import Host

        return Host()


def source_of(options):
    """What a command reads from."""
    return Live()
