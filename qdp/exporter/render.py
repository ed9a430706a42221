"""The text of series: made once, and kept while the series is reported, so that a scrape adds the values alone.

Rendering all labels anew, as the client library does, costs ten times as much.
"""

from collections import defaultdict

from . import metrics


def escaped(text):
    return text.replace("\\", r"\\").replace("\n", r"\n").replace('"', r"\"")


def labelled(name, labels, values):
    """The name of a series with its labels, and the blank before its value."""
    pairs = ",".join('{}="{}"'.format(label, escaped(value)) for label, value in zip(labels, values))
    return "{}{{{}}} ".format(name, pairs) if pairs else name + " "


class Wide:
    """A counter that the module shows narrower than it is: it goes on past its wraps, and past resets."""

    def __init__(self, bits):
        self._span = 1 << bits
        self.last = self.base = 0

    def __call__(self, shown):
        if (shown - self.last) % self._span >= self._span // 2:
            self.base += self.last  # it began anew
        elif shown < self.last:
            self.base += self._span  # it has grown past its end
        self.last = shown
        return self.base + shown


def _scaled(scale):
    return lambda value: value * scale


class Series:
    """Renders the series of answers, one sweep after the other."""

    def __init__(self):
        self._kept = {}  # (method, labels): the rows of an answer
        self._present = {}  # those of this sweep
        self._given = {}  # the state of counters from the process before this one
        self.lines = defaultdict(list)  # by family, of one collector

    def _rows(self, method, labels):
        rows = []
        for metric in metrics.of_method(method):
            for key, added in metric.keys.items():
                text = labelled(metrics.sample_name(metric), metric.labels, labels + added)
                change = None
                if metric.type == metrics.COUNTER and metric.bits < 64:
                    change = Wide(metric.bits)
                    change.last, change.base = self._given.pop(text, (0, 0))
                elif metric.scale != 1:
                    change = _scaled(metric.scale)
                rows.append((metric.name, text, key, change))
        return rows

    def add(self, method, labels, answer):
        """The series of one answer of a method, for the thing that `labels` name."""
        key = method, labels
        rows = self._present[key] = self._kept.get(key) or self._rows(method, labels)
        lines = self.lines
        for family, text, key, change in rows:
            value = answer[key]
            if change:
                value = change(value)
            elif value < 0:  # the module shows it signed
                value += metrics.WORD
            lines[family].append(f"{text}{value}\n")

    def add_one(self, name, labels, value, ending=""):
        """One series whose value is no key of an answer. `ending`: of a histogram's series."""
        metric = metrics.BY_NAME[name]
        names = metric.labels + (("le",) if ending == "_bucket" else ())
        text = labelled(metrics.sample_name(metric) + ending, names, labels)
        self.lines[name].append("%s%s\n" % (text, value))

    def taken(self):
        """The lines since the last time, by family, and how many they are."""
        lines, self.lines = self.lines, defaultdict(list)
        return {family: "".join(each) for family, each in lines.items()}, sum(map(len, lines.values()))

    def end_sweep(self, is_complete):
        """Forgets what was not reported, unless a call failed: it may come back then, and counts on."""
        kept = {} if is_complete else self._kept
        kept.update(self._present)
        self._kept, self._present = kept, {}

    def state(self):
        """{text: (last, base)} of the counters that are shown narrower, for a process after this one."""
        return {
            text: (change.last, change.base)
            for rows in self._kept.values()
            for _, text, _, change in rows
            if isinstance(change, Wide)
        }

    def restore(self, state):
        self._given = dict(state)


def page(families, is_openmetrics):
    """The families of a scrape, {name: text}, in the order of the table and with their heads."""
    return "".join(head + families[name] for name, head in _HEADS[is_openmetrics] if name in families)


def _head(metric, is_openmetrics):
    name = metric.name if is_openmetrics else metrics.sample_name(metric)
    head = "# HELP {0} {1}\n# TYPE {0} {2}\n".format(name, escaped(metric.help), metric.type)
    return head + "# UNIT {} {}\n".format(name, metric.unit) if is_openmetrics and metric.unit else head


_HEADS = {
    is_openmetrics: [(metric.name, _head(metric, is_openmetrics)) for metric in metrics.METRICS]
    for is_openmetrics in (False, True)
}
