"""Changes of the field tables: each row's place, its key and its order.

In the built file a table is its rows, then its converters, then its keys; a row finds the latter two by their distance.
See src/core/fields.h, which this file follows."""

import struct
from dataclasses import dataclass, replace

from mutate.image import CONSTANTS, RELOCATED
from mutate.mutants import Mutant
from mutate.texts import PRINTABLE, altered

LAYOUT = struct.Struct("<HHHHBB?x")
WORD_BITS = 64
ALIGNMENT = 8

TEXT_CONVERTER = "field_text_object"


@dataclass(frozen=True)
class Row:
    key_distance: int
    converter_distance: int
    offset: int
    size: int
    up: int
    down: int
    is_signed: bool

    def packed(self):
        return LAYOUT.pack(*vars(self).values())

    def moved(self, by):
        """The row as it has to stand so many rows further."""
        distance = by * LAYOUT.size
        converter = self.converter_distance and self.converter_distance - distance
        return replace(self, key_distance=self.key_distance - distance, converter_distance=converter)


def rows_at(image, symbol):
    """The rows of the table that a symbol is, with their keys; none when it is no table: the keys lie one behind the
    other up to the table's end."""
    content = image.module.read(symbol.address, symbol.size)
    rows, key_at = [], None
    for at in range(0, len(content) - LAYOUT.size + 1, LAYOUT.size):
        row = Row(*LAYOUT.unpack_from(content, at))
        first = at + row.key_distance
        if key_at not in (None, first) or first >= len(content):
            break
        end = content.find(b"\0", first)
        key = content[first:end]
        if end < 0 or not key or not PRINTABLE.issuperset(key):
            return []
        rows.append((row, key))
        key_at = end + 1
    is_table = rows and len(content) - ALIGNMENT < key_at <= len(content) and len(rows) * LAYOUT.size <= rows[0][0].key_distance
    return rows if is_table else []


def tables(image):
    for symbol in image.module.symbols:
        if image.module.section_of(symbol.address) in (CONSTANTS, RELOCATED):
            if rows := rows_at(image, symbol):
                yield symbol, rows


def changed_places(row, is_text):
    """(what is changed, the row with it). An integer's bits are told by two shifts: `down` by their number, `up` by
    their number and where they begin."""
    yield "offset one higher", replace(row, offset=row.offset + 1)
    if is_text:
        yield "size one higher", replace(row, size=row.size + 1)
    if row.down < WORD_BITS:
        for what, up, down in [
            ("shift one higher", -1, 0),
            ("shift one lower", 1, 0),
            ("width one higher", -1, -1),
            ("width one lower", 1, 1),
        ]:
            if 0 <= row.up + up < WORD_BITS and 0 <= row.down + down < WORD_BITS:
                yield what, replace(row, up=row.up + up, down=row.down + down)
    if row.converter_distance == 0:
        yield "sign changed", replace(row, is_signed=not row.is_signed)


def row_mutants(image, sources):
    for symbol, rows in tables(image):
        for i, (row, key) in enumerate(rows):
            address = symbol.address + i * LAYOUT.size
            converter = row.converter_distance and image.module.pointers[address + row.converter_distance]
            is_text = converter and TEXT_CONVERTER in image.module.symbol_at(converter).name
            changes = [
                (what, ((address, row.packed(), changed.packed()),)) for what, changed in changed_places(row, is_text)
            ]
            changes.append(("key altered", altered(address + row.key_distance, key)))
            if i + 1 < len(rows):
                following, _ = rows[i + 1]
                swapped = following.moved(-1).packed() + row.moved(1).packed()
                changes.append(("swapped with the next", ((address, row.packed() + following.packed(), swapped),)))
            file, line = sources.table(symbol, key.decode())
            for what, edits in changes:
                yield Mutant("rows", (file,), line, f'{symbol.plain_name} "{key.decode()}"', what, edits)
