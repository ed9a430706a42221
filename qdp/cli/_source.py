"""Where the command reads and writes: the one place that all its calls go through."""

from ._rows import plain


class Live:
    """The datapath of this host."""

    def call(self, method, *arguments):
        """The answer of a method as dicts and lists with unsigned counters; a QdpError where it fails."""
        from ..call import call_raw

        return plain(call_raw(method, *arguments))


def source_of(options):
    """What a command reads from."""
    return Live()
