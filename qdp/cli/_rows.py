"""Rows: dicts with the module's keys. How their values are made plain, written, selected and sorted."""

# Masks, physical addresses and cookies, by key, with their bits. They are written as hexadecimal text: 64 bits do not
# survive readers of JSON whose numbers are floating point.
HEX = {
    "lcores": 64,
    "mem affinity mask": 64,
    "pa": 64,
    "actionsSupported": 64,
    "flowCookie": 32,
    "models": 32,
    "mask": 8,
    "ipv4DscpMask": 8,
    "ipv6DscpMask": 8,
}
# Keys whose negative values are meant; any other negative value is a 64-bit counter beyond 2**63.
SIGNED = frozenset(("fid", "isValid", "isGeneve", "rssOverride"))
ABSENT = "-"


def plain(value, key=None):
    """An answer of the module as dicts and lists, with unsigned counters."""
    if isinstance(value, int):
        return value % (1 << 64) if value < 0 and key not in SIGNED else value
    if isinstance(value, (str, float)) or value is None:
        return value
    if isinstance(value, (list, tuple)):
        return [plain(each, key) for each in value]
    if not isinstance(value, dict):
        value = vars(value)
    return {key: plain(each, key) for key, each in value.items()}


def for_json(value, key=None):
    """A plain value as JSON has it."""
    if isinstance(value, dict):
        return {key: for_json(each, key) for key, each in value.items()}
    if isinstance(value, (list, tuple)):
        return [for_json(each) for each in value]
    if key in HEX and isinstance(value, int) and not isinstance(value, bool):
        return hex(value % (1 << HEX[key]))
    return value


def ranges(numbers):
    """Numbers in words: "0-3 8"."""
    parts = []
    for each in numbers:
        if parts and each == parts[-1][1] + 1:
            parts[-1][1] = each
        else:
            parts.append([each, each])
    return " ".join(str(a) if a == b else "{}-{}".format(a, b) for a, b in parts) or ABSENT


def bits(mask):
    """The numbers of the bits that are set."""
    return [bit for bit in range(64) if mask >> bit & 1]


def text_of(value):
    """A value without a kind of its own."""
    if isinstance(value, str):
        return printable(value) or ABSENT
    if isinstance(value, bool):
        return "yes" if value else "no"
    if isinstance(value, float):
        return "{:,.1f}".format(value)
    if isinstance(value, dict):
        return " ".join("{}={}".format(key, text_of(each)) for key, each in value.items()) or ABSENT
    if isinstance(value, (list, tuple)):
        return " ".join(map(text_of, value)) or ABSENT
    return printable(str(value))


def printable(text):
    """The text with what would steer a terminal escaped."""
    return text if text.isprintable() else "".join(
        each if each.isprintable() else each.encode("unicode_escape").decode() for each in text
    )


def counted(value):
    return "{:,.1f}".format(value) if isinstance(value, float) else "{:,}".format(value)


# Kind -> (how a value is written, whether it stands to the right).
WRITTEN = {
    "text": (text_of, False),
    "number": (str, True),
    "count": (counted, True),
    "mask": (lambda value: value if isinstance(value, str) else hex(value % (1 << 64)), True),
    "lcores": (lambda value: ranges(bits(value) if isinstance(value, int) else value), False),
    "flag": (lambda value: "yes" if value else "no", False),
    "rate": ("{:,.1f}".format, True),
}


def value_of(row, column):
    """The value of a column in a row: of counters the sum; None where a key is missing or None."""
    if len(column.keys) == 1:
        return row.get(column.keys[0])
    values = [row.get(key) for key in column.keys]
    return None if None in values else sum(values)


def cell(row, column):
    """The text of a column in a row."""
    return cells([row], column)[0]


def cells(rows, column):
    """The texts of a column in all rows."""
    write, _ = WRITTEN[column.kind]
    values = [value_of(row, column) for row in rows]
    return [ABSENT if value is None else write(value) for value in values]


class UnknownColumn(Exception):
    """A column that the table does not have; the text says which there are."""


def find_column(columns, name):
    """The column of this name or of this key of the module."""
    for column in columns:
        if name.lower() in (column.name.lower(),) + tuple(key.lower() for key in column.keys if len(column.keys) == 1):
            return column
    raise UnknownColumn("there is no column {!r}; there are {}".format(name, ", ".join(each.name for each in columns)))


OPERATORS = ("!=", ">=", "<=", "=", ">", "<", "~")


def condition(text, columns):
    """The function of a row that `--where` gives: COLUMN=VALUE, also with one of != > < >= <= and ~ for a pattern."""
    places = [(text.find(sign), -len(sign), sign) for sign in OPERATORS if sign in text]
    if not places:
        raise UnknownColumn("{!r} is no condition; write COLUMN=VALUE, or one of != > < >= <= ~ for =".format(text))
    place, _, sign = min(places)
    column = find_column(columns, text[:place].strip())
    wanted = text[place + len(sign) :].strip()
    if sign == "~":
        import re

        try:
            pattern = re.compile(wanted, re.IGNORECASE)
        except (re.error, OverflowError, RecursionError) as error:
            raise UnknownColumn("{!r} is no pattern: {}".format(wanted, error))
        return lambda row: pattern.search(cell(row, column)) is not None

    def holds(row):
        value = value_of(row, column)
        if value is None:
            return sign == "!=" or (sign == "=" and wanted in ("", ABSENT))
        shown = cell(row, column).lower()
        if sign in ("=", "!="):
            is_equal = wanted.lower() in (shown, str(value).lower()) or as_number(wanted) == as_number(value)
            return is_equal == (sign == "=")
        mine, other = as_number(value), as_number(wanted)
        if not (mine[0] and other[0]):
            mine, other = shown, wanted.lower()
        return {">": mine > other, "<": mine < other, ">=": mine >= other, "<=": mine <= other}[sign]

    return holds


def as_number(value):
    """(True, number) of what is a number; (False, text) of what is none."""
    if isinstance(value, (int, float)):
        return True, value
    text = str(value).replace(",", "")
    try:
        return True, int(text, 0)
    except ValueError:
        pass
    try:
        return True, float(text)
    except ValueError:
        return False, text.lower()


def order_of(text, columns):
    """The key and the direction that `--sort [-]COLUMN` gives: (function of a row, whether the highest is first)."""
    column = find_column(columns, text.lstrip("-"))

    def key(row):
        value = value_of(row, column)
        if isinstance(value, (list, tuple, dict)):
            value = text_of(value)
        is_number, comparable = as_number(value) if value is not None else (False, "")
        return (value is not None, not is_number, comparable)

    return key, text.startswith("-")
